// CO_BlurVerticalEdge of CO_Patterns.h.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <vector>

#include "CO_Errors.h"
#include "CO_Patterns.h"

namespace {

/// One row of 2vuy by pixels.
class Row {
 public:
  explicit Row(UInt8* line) : line_(line) {}
  UInt8& Luma(std::ptrdiff_t pixel) const { return line_[2 * pixel + 1]; }
  UInt8& Chroma(std::ptrdiff_t pixel) const { return line_[2 * pixel]; }
  SInt32 LumaStep(std::ptrdiff_t pixel) const { return std::abs(Luma(pixel + 1) - Luma(pixel)); }
  /// To the next pixel with the same component.
  SInt32 ChromaStep(std::ptrdiff_t pixel) const {
    return std::abs(Chroma(pixel + 2) - Chroma(pixel));
  }

 private:
  UInt8* line_;
};

/// The half width that stays in front of any detail beside the edge at `x`.
SInt32 LimitedHalf(Row row, SInt32 x, SInt32 threshold, SInt32 half) {
  for (SInt32 o = -half; o <= half - 2; ++o) {
    if (o == -1) continue;  // the edge itself
    const bool has_chroma = o != -2 && o < half - 2;
    const bool is_detail =
        row.LumaStep(x + o) > threshold || (has_chroma && row.ChromaStep(x + o) > threshold);
    if (is_detail) half = std::min(half, o > 0 ? o + 2 : -o);
  }
  return half;
}

/// The largest step in the pixels from x - 1 - r to x + r, for chroma one pixel more on both sides.
SInt32 LargestStep(Row row, SInt32 x, SInt32 r, SInt32 half) {
  SInt32 largest = 0;
  for (SInt32 p = x - 1 - r; p < x + r; ++p)
    largest = std::max(largest, row.LumaStep(p));
  for (SInt32 p = std::max(x - 2 - r, x - half); p + 2 <= std::min(x + r + 1, x + half - 1); ++p)
    largest = std::max(largest, row.ChromaStep(p));
  return largest;
}

UInt8 Smoothed(int before, int at, int behind) {
  return static_cast<UInt8>((before + 2 * at + behind + 2) >> 2);
}

/// Smooths the pixels from x - 1 - r to x + r by those of a copy of the span.
void Smooth(Row row, SInt32 x, SInt32 r, SInt32 half, std::vector<UInt8>* span) {
  const SInt32 first = x - half;
  const SInt32 end = x + half;
  std::copy_n(&row.Chroma(first), span->size(), span->data());
  const Row copy(span->data());
  for (SInt32 p = x - 1 - r; p <= x + r; ++p) {
    const SInt32 at = p - first;
    if (p - 1 >= first && p + 1 < end)
      row.Luma(p) = Smoothed(copy.Luma(at - 1), copy.Luma(at), copy.Luma(at + 1));
    if (p - 2 >= first && p + 2 < end)
      row.Chroma(p) = Smoothed(copy.Chroma(at - 2), copy.Chroma(at), copy.Chroma(at + 2));
  }
}

}  // namespace

SInt32 CO_BlurVerticalEdge(UInt8* frame, SInt32 width, Point top, Point bottom, SInt32 threshold,
                           SInt32 halfWidth) {
  const SInt32 x = top.h;
  if (threshold < 1 || halfWidth < 2 || width < 8 || frame == nullptr || top.h != bottom.h ||
      top.v < 0 || top.v >= bottom.v || x - halfWidth < 0 || x + halfWidth > width) {
    return paramErr;
  }
  const auto row_at = [&](SInt32 row) { return Row(frame + std::ptrdiff_t{row} * width * 2); };
  SInt32 half = halfWidth;
  for (SInt32 row = top.v; row < bottom.v; ++row)
    half = LimitedHalf(row_at(row), x, threshold, half);
  if (half < 2) return CO_NoRoomForBlurErr;
  std::vector<UInt8> span(static_cast<std::size_t>(half) * 4);
  for (SInt32 row = top.v; row < bottom.v; ++row) {
    for (SInt32 r = 0; r <= half - 2; ++r) {
      if (LargestStep(row_at(row), x, r, half) < threshold) break;
      Smooth(row_at(row), x, r, half, &span);
    }
  }
  return noErr;
}
