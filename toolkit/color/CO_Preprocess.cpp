#include "CO_Preprocess.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "CO_Basic.h"
#include "CO_Ranges.h"

namespace {

constexpr SInt32 kRing = 5;
constexpr double kTop = 255;
constexpr double kStrongEdge = 40;
constexpr double kPrecision = 0.001;
/// More halvings change nothing in doubles; they end a search whose ends are infinite.
constexpr int kMostHalvings = 64;
constexpr double kVideoScale = 1.1643835616438356;  // 255 / 219

struct RGB {
  double r, g, b;
  double Least() const { return std::min({r, g, b}); }
  double Most() const { return std::max({r, g, b}); }
};

RGB ToRGB(double y, double cb, double cr, double kr, double kg, double kb) {
  RGB rgb = {};
  CO_YCbCrToRGB_D(y, cb, cr, kr, kg, kb, &rgb.r, &rgb.g, &rgb.b);
  return rgb;
}
RGB ToRGB(double y, double cb, double cr, const double* k) {
  return ToRGB(y, cb, cr, k[0], k[1], k[2]);
}

/// An interval that is halved until it is small.
struct Interval {
  double low, high;
  double middle;

  /// `is_above(middle)` tells if what is sought lies below the middle.
  template <class IsAbove>
  void Halve(IsAbove is_above) {
    for (int i = 0; i < kMostHalvings && high - low > kPrecision; ++i) {
      middle = 0.5 * (low + high);
      (is_above(middle) ? high : low) = middle;
    }
  }
};

/// The last pixels of a line, on a scale of 255.
struct Rings {
  double luma[kRing] = {};
  double cb[kRing] = {};
  double cr[kRing] = {};
};

struct Pair {
  double first_luma, second_luma, cb, cr;
};

/// The pair i - 2, i - 1 with the plain mean of its chroma.
Pair MeanPair(const Rings& rings, SInt32 i) {
  const SInt32 a = (i - 2) % kRing;
  const SInt32 b = (i - 1) % kRing;
  return {rings.luma[a], rings.luma[b], 0.5 * (rings.cb[a] + rings.cb[b]),
          0.5 * (rings.cr[a] + rings.cr[b])};
}

double Tent(const double* ring, SInt32 i) {
  return 0.125 * (ring[(i - 3) % kRing] + ring[i % kRing]) +
         0.375 * (ring[(i - 2) % kRing] + ring[(i - 1) % kRing]);
}

double EdgeOf(const double* ring, SInt32 i) {
  return std::abs(ring[(i - 2) % kRing] - ring[(i - 1) % kRing]);
}

/// Goes along a line: `read(pixel, &y, &cb, &cr)` gives a pixel on a scale of 255, `write(pixel, y,
/// cb, cr)` takes one. An edge counts from `strong` on.
template <class Read, class Write>
void Preprocess(SInt32 width, const double* coefficients, double strong, Read read, Write write) {
  if (width < 1) return;
  Rings rings;
  const auto take = [&](SInt32 pixel) {
    const SInt32 place = pixel % kRing;
    read(std::min(pixel, width - 1), &rings.luma[place], &rings.cb[place], &rings.cr[place]);
  };
  const auto put = [&](SInt32 i, const Pair& pair) {
    write(i - 2, pair.first_luma, pair.cb, pair.cr);
    if (i - 1 < width) write(i - 1, pair.second_luma, pair.cb, pair.cr);
  };
  SInt32 i = 0;
  for (; i < width; i += 2) {
    take(i);
    take(i + 1);
    if (i < 2) continue;
    Pair pair = MeanPair(rings, i);
    if (i >= 4) {
      pair.cb = Tent(rings.cb, i);
      pair.cr = Tent(rings.cr, i);
    }
    if (EdgeOf(rings.cb, i) + EdgeOf(rings.cr, i) > strong)
      CO_SubsampleChromaAdjustYC(coefficients, rings.luma, rings.cb, rings.cr, i, &pair.first_luma,
                                 &pair.second_luma, &pair.cb, &pair.cr);
    put(i, pair);
  }
  put(i, MeanPair(rings, i));
}

}  // namespace

void CO_PreprocessYUV_Chroma(SInt32 width, float* luma, float* cb, float* cr,
                             const double* coefficients) {
  // The edge is measured on the scale of chroma in video range.
  constexpr double kStrong = kStrongEdge * kTop / 224;
  Preprocess(
      width, coefficients, kStrong,
      [&](SInt32 pixel, double* y, double* u, double* v) {
        *y = static_cast<double>(luma[pixel]) * kTop;
        *u = static_cast<double>(cb[pixel]) * kTop;
        *v = static_cast<double>(cr[pixel]) * kTop;
      },
      [&](SInt32 pixel, double y, double u, double v) {
        luma[pixel] = static_cast<float>(y / kTop);
        cb[pixel] = static_cast<float>(u / kTop);
        cr[pixel] = static_cast<float>(v / kTop);
      });
}

void CO_PreprocessRGB_Chroma(SInt32 width, UInt8* line, const double* coefficients,
                             SInt32 rangeType) {
  const double scale = rangeType == kCO_VideoRange ? kVideoScale : 1;
  const auto at = [line](SInt32 pixel) { return line + std::ptrdiff_t{pixel} * 4; };
  Preprocess(
      width, coefficients, kStrongEdge,
      [&](SInt32 pixel, double* y, double* cb, double* cr) {
        const UInt8* const bytes = at(pixel);
        CO_RGBToYCbCrD(bytes[1] * scale, bytes[2] * scale, bytes[3] * scale, coefficients[0],
                       coefficients[1], coefficients[2], y, cb, cr);
      },
      [&](SInt32 pixel, double y, double cb, double cr) {
        CO_WriteYCbCrToRGB_Line(y, cb, cr, coefficients, rangeType, at(pixel));
      });
}

void CO_SubsampleChromaAdjustYC(const double* coefficients, const double* lumaRing,
                                const double* cbRing, const double* crRing, SInt32 i,
                                double* firstLuma, double* secondLuma, double* cb, double* cr) {
  if (CO_MinimalAdjustY_Pair(coefficients, lumaRing, i, firstLuma, secondLuma, *cb, *cr)) return;
  for (const double* luma : {firstLuma, secondLuma})
    CO_SetMaximalC(kTop, *luma, cb, cr, coefficients[0], coefficients[1], coefficients[2]);
  const auto correct = [&](SInt32 pixel, double* luma) {
    const SInt32 place = pixel % kRing;
    CO_CorrectLumaRB(coefficients, lumaRing[place], cbRing[place], crRing[place], luma, *cb, *cr);
  };
  correct(i - 2, firstLuma);
  correct(i - 1, secondLuma);
}

Boolean CO_MinimalAdjustY_Pair(const double* coefficients, const double* lumaRing, SInt32 i,
                               double* firstLuma, double* secondLuma, double cb, double cr) {
  constexpr double kDark = 30;
  constexpr double kBright = 225;
  const double kr = coefficients[0];
  const double kg = coefficients[1];
  const double kb = coefficients[2];
  double* const lumas[] = {firstLuma, secondLuma};
  const SInt32 neighbours[] = {i, std::max(i - 3, 0)};
  for (int k = 0; k < 2; ++k) {
    const RGB rgb = ToRGB(*lumas[k], cb, cr, coefficients);
    const double beside = lumaRing[neighbours[k] % kRing];
    if (rgb.Least() < 0) {
      if (beside >= kDark) return 0;
      CO_SetMinimalY(kTop, lumas[k], cb, cr, kr, kg, kb);
      return 1;
    }
    if (rgb.Most() > kTop) {
      if (beside <= kBright) return 0;
      CO_SetMaximalY(kTop, lumas[k], cb, cr, kr, kg, kb);
      return 1;
    }
  }
  return 0;
}

void CO_CorrectLumaRB(const double* coefficients, double oldLuma, double oldCb, double oldCr,
                      double* luma, double cb, double cr) {
  constexpr double kBright = 192;
  if (!(*luma < kBright)) return;
  const auto contribution = [coefficients](const RGB& rgb) {
    return coefficients[0] * rgb.r + coefficients[2] * rgb.b;
  };
  const double before = contribution(ToRGB(oldLuma, oldCb, oldCr, coefficients));
  const double now = contribution(ToRGB(*luma, cb, cr, coefficients));
  if (before > 0.5 * oldLuma && before > now) {
    *luma += 0.8 * (before - now) * std::min(1.0, (kBright - *luma) / 128);
  }
}

void CO_SetMinimalY(double limit, double* luma, double cb, double cr, double kr, double kg,
                    double kb) {
  Interval interval = {*luma, limit, *luma};
  interval.Halve([&](double y) { return ToRGB(y, cb, cr, kr, kg, kb).Least() >= 0; });
  *luma = interval.high;
}

void CO_SetMaximalY(double limit, double* luma, double cb, double cr, double kr, double kg,
                    double kb) {
  Interval interval = {0, *luma, *luma};
  interval.Halve([&](double y) { return ToRGB(y, cb, cr, kr, kg, kb).Most() > limit; });
  *luma = interval.low;
}

void CO_SetMaximalC(double limit, double luma, double* cb, double* cr, double kr, double kg,
                    double kb) {
  Interval interval = {0, 1, 1};
  interval.Halve([&](double scale) {
    const RGB rgb = ToRGB(luma, scale * *cb, scale * *cr, kr, kg, kb);
    return rgb.Least() < 0 || rgb.Most() > limit;
  });
  *cb *= interval.middle;
  *cr *= interval.middle;
}

void CO_WriteYCbCrToRGB_Line(double luma, double cb, double cr, const double* coefficients,
                             SInt32 rangeType, UInt8* pixel) {
  const RGB rgb = ToRGB(luma, cb, cr, coefficients);
  const double scale = rangeType == kCO_VideoRange ? 1 / kVideoScale : 1;
  const auto code = [scale](double component) {
    const double limited = component > 0 ? std::min(component, kTop) : 0;  // not a number is 0
    return static_cast<UInt8>(limited * scale + 0.49);
  };
  pixel[1] = code(rgb.r);
  pixel[2] = code(rgb.g);
  pixel[3] = code(rgb.b);
}
