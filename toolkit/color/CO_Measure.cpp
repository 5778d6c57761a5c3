#include "CO_Measure.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <numeric>

#include "CO_Basic.h"
#include "CO_Gamma.h"
#include "measuring_private.h"

namespace {

using namespace quillmere::color;

constexpr SInt32 kLevels = 256;

struct Sums {
  SInt64 y, cb, cr;
};

Sums SumsOf(SInt32 width, const UInt8* frame, const Measured& rect) {
  Sums sums = {};
  ForEachPixel(frame, width, rect, [&sums](SInt32 column, const UInt8* pixel) {
    (column % 2 == 0 ? sums.cb : sums.cr) += pixel[0];
    sums.y += pixel[1];
  });
  return sums;
}

SInt32 Average(SInt64 sum, SInt64 count) {
  return count == 0 ? 0 : static_cast<SInt32>((sum + count / 2 - 1) / count);
}

void Count(UInt16* counter) {
  if (*counter < std::numeric_limits<UInt16>::max()) ++*counter;
}

/// Fills the levels between two whose entries are known, `a` and `b`.
void FillBetween(SInt32 a, SInt32 p, SInt32 b, SInt32 q, UInt8* table) {
  const SInt32 count = b - a - 1;
  for (SInt32 j = 0; j < count; ++j) {
    const SInt32 level = a + 1 + j;
    SInt32 entry = p;
    if (q == p + 1)
      entry = level < (a + b) / 2 + 1 ? p : q;
    else if (q != p)
      entry = p + 1 + static_cast<SInt32>(static_cast<double>(j) / count * (q - p - 1));
    table[level] = static_cast<UInt8>(entry);
  }
}

UInt32 HighOf(UInt32 color) {
  return (color >> 16) & 0xFF;
}

}  // namespace

SInt32 DBG_CalcAverageY(SInt32 width, const UInt8* frame, const Rect* rect) {
  const Measured measured(*rect);
  return Average(SumsOf(width, frame, measured).y, measured.Pixels());
}

void DBG_CalcAverageC(SInt32 width, const UInt8* frame, const Rect* rect, SInt32* cb, SInt32* cr) {
  const Measured measured(*rect);
  const Sums sums = SumsOf(width, frame, measured);
  *cb = Average(sums.cb, measured.Pixels() / 2);
  *cr = Average(sums.cr, measured.Pixels() / 2);
}

void CO_MakeYCbCr_Histogram(const UInt8* frame, SInt32 width, const Rect* rect, UInt16* y,
                            UInt16* cb, UInt16* cr) {
  for (UInt16* histogram : {y, cb, cr})
    std::fill_n(histogram, kLevels, UInt16{0});
  ForEachPixel(frame, width, Measured(*rect), [=](SInt32 column, const UInt8* pixel) {
    Count(&(column % 2 == 0 ? cb : cr)[pixel[0]]);
    Count(&y[pixel[1]]);
  });
}

void CO_MatchHistograms(const UInt32* first, const UInt32* second, UInt8* table) {
  constexpr double kTolerance = 0.0001;
  const auto total = static_cast<double>(std::accumulate(first, first + kLevels, UInt64{0}));
  SInt32 level = static_cast<SInt32>(
      std::find_if(second, second + kLevels, [](UInt32 count) { return count > 0; }) - second);
  if (total == 0 || level == kLevels) return std::iota(table, table + kLevels, UInt8{0});
  double reached = second[level];
  double sum = 0;
  double before = 0;
  SInt32 last = -1;
  SInt32 last_entry = 0;
  for (SInt32 i = 0; i < kLevels; ++i) {
    if (first[i] == 0) continue;
    sum += first[i];
    const double fraction = sum / total;
    const double middle = 0.5 * (fraction + before);
    before = fraction;
    while (level < kLevels - 1 && reached / total < middle - kTolerance)
      reached += second[++level];
    table[i] = static_cast<UInt8>(level);
    FillBetween(last, last_entry, i, level, table);
    last = i;
    last_entry = level;
  }
  FillBetween(last, last_entry, kLevels, kLevels - 1, table);
}

void CO_MakeY_HistogramPrintRange(const char* label, const UInt8* frame, SInt32 width,
                                  const Rect* rect, SInt32 from, SInt32 to) {
  UInt16 y[kLevels];
  UInt16 cb[kLevels];
  UInt16 cr[kLevels];
  CO_MakeYCbCr_Histogram(frame, width, rect, y, cb, cr);
  std::printf("%s: y histogram, top = %hd, left = %hd, height = %hd, width = %hd\n", label,
              rect->top, rect->left, rect->right, rect->bottom);
  for (SInt32 i = std::max(from, 0); i <= std::min(to, kLevels - 1); ++i)
    std::printf("(%ld,%hu),\n", static_cast<long>(i), y[i]);
}

void CO_CalcAvYCbCrPrint(const char* label, const UInt8* frame, SInt32 width, const Rect* rect) {
  const Measured measured(*rect);
  const Sums sums = SumsOf(width, frame, measured);
  const auto pixels = static_cast<double>(std::max<SInt64>(measured.Pixels(), 1));
  std::printf("%s: average YCbCr, top = %hd, left = %hd, height = %hd, width = %hd:  ", label,
              rect->top, rect->left, rect->right, rect->bottom);
  std::printf("y=%.2f,cb=%.2f,cr=%.2f\n", static_cast<double>(sums.y) / pixels,
              static_cast<double>(sums.cb) / (0.5 * pixels),
              static_cast<double>(sums.cr) / (0.5 * pixels));
}

void CO_EqualizeLinearY(double limit, double target, double r, double g, double b, double kr,
                        double kg, double kb, double gamma, SInt32 rangeType, SInt32 gammaIndex,
                        double* luma) {
  constexpr double kPrecision = 0.001;
  constexpr int kMostHalvings = 64;  // more change nothing in doubles
  const auto luminance = [&](double red, double green, double blue) {
    double linear[3];
    CO_ConvertRGBtoLinear(red, green, blue, gamma, rangeType, gammaIndex, &linear[0], &linear[1],
                          &linear[2]);
    return kr * linear[0] + kg * linear[1] + kb * linear[2];
  };
  double y = 0;
  double cb = 0;
  double cr = 0;
  CO_RGBToYCbCrD(r, g, b, kr, kg, kb, &y, &cb, &cr);
  const bool is_above = target > luminance(r, g, b);
  double low = is_above ? y : 0;
  double high = is_above ? limit : y;
  for (int i = 0; i < kMostHalvings && high - low > kPrecision; ++i) {
    const double middle = 0.5 * (low + high);
    double red = 0;
    double green = 0;
    double blue = 0;
    CO_YCbCrToRGB_D(middle, cb, cr, kr, kg, kb, &red, &green, &blue);
    const bool is_low =
        std::min({red, green, blue}) < 0 ||
        (std::max({red, green, blue}) <= limit && luminance(red, green, blue) < target);
    (is_low ? low : high) = middle;
  }
  *luma = low;
}

SInt32 CO_FindMatchForPixel(UInt32 pixel, const UInt32* table, SInt32 count, SInt32 start) {
  if (count < 1) return -1;
  SInt32 candidate = std::clamp(start + 1, 0, count - 1);
  while (candidate < count - 1 && table[candidate] > pixel)
    ++candidate;
  SInt32 best = candidate;
  auto best_distance = static_cast<SInt32>(CO_ColorDiff(pixel, table[candidate]));
  // The high component falls along the table: once it alone is farther away than the best, no
  // entry beyond comes nearer.
  const auto above = [&](SInt32 i) {
    return static_cast<SInt32>(HighOf(table[i])) - static_cast<SInt32>(HighOf(pixel));
  };
  for (SInt32 i = candidate - 1; i >= 0 && above(i) <= best_distance; --i) {
    const auto distance = static_cast<SInt32>(CO_ColorDiff(pixel, table[i]));
    if (distance > best_distance) continue;
    best = i;
    best_distance = distance;
  }
  for (SInt32 i = candidate + 1; i < count && -above(i) <= best_distance; ++i) {
    const auto distance = static_cast<SInt32>(CO_ColorDiff(pixel, table[i]));
    if (distance >= best_distance) continue;
    best = i;
    best_distance = distance;
  }
  return best;
}
