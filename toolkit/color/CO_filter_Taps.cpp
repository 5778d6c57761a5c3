// Filters by taps, of CO_filter.h.

#include <algorithm>

#include "CO_filter.h"
#include "column_private.h"

namespace {

using namespace quillmere::color;

constexpr SInt32 kLeastLines = 5;

/// Filters a column by an odd number of taps from a ring of as many unchanged lines; `limit(ring,
/// line, sum)` makes the sample.
template <SInt32 taps, class Limit>
void FilterByTaps(SInt32 lines, const double* weights, UInt8* first, SInt32 stride, Limit limit) {
  constexpr SInt32 kHalf = taps / 2;
  if (lines < kLeastLines) return;
  const Column<UInt8> column(first, stride);
  UInt8 ring[taps] = {};
  const auto read = [&](SInt32 line) { return ring[line % taps]; };
  const auto smooth = [&](SInt32 line) {
    column[line] = ToSample(Smoothed(read(line - 1), read(line), read(line + 1)));
  };
  for (SInt32 i = 0; i < lines; ++i) {
    ring[i % taps] = column[i];
    if (i == 1) column[0] = ToSample(Mean(read(0), read(1)));
    if (i > 1 && i <= kHalf) smooth(i - 1);
    if (i < taps - 1) continue;
    double sum = 0;
    for (SInt32 k = 0; k < taps; ++k)
      sum += weights[k] * read(i - taps + 1 + k);
    column[i - kHalf] = limit(read, i - kHalf, sum);
  }
  for (SInt32 line = std::max(lines - kHalf, SInt32{1}); line < lines - 1; ++line)
    smooth(line);
  column[lines - 1] = ToSample(Mean(read(lines - 1), read(lines - 2)));
}

}  // namespace

void CO_LowPassFilterVertLine7(SInt32 lineCount, const double* taps, UInt8* column, SInt32 stride) {
  FilterByTaps<7>(lineCount, taps, column, stride, [](auto read, SInt32 line, double sum) {
    const auto [least, most] = std::minmax({read(line - 1), read(line), read(line + 1)});
    return std::clamp(ToLimitedSample(sum), least, most);
  });
}

void CO_LowPassFilterVertLine9(SInt32 lineCount, const double* taps, UInt8* column, SInt32 stride) {
  FilterByTaps<9>(lineCount, taps, column, stride,
                  [](auto, SInt32, double sum) { return ToLimitedSample(sum); });
}

void CO_SubsampleVertLineTent(SInt32 lineCount, const UInt8* source, SInt32 sourceStride,
                              UInt8* destination, SInt32 destinationStride) {
  if (lineCount < 2) return;
  const Column<const UInt8> from(source, sourceStride);
  const Column<UInt8> to(destination, destinationStride);
  to[0] = ToSample(Mean(from[0], from[1]));
  for (SInt32 row = 1; 2 * row + 2 < lineCount; ++row) {
    const SInt32 line = 2 * row - 1;
    to[row] = ToSample(0.125 * from[line] + 0.375 * from[line + 1] + 0.375 * from[line + 2] +
                       0.125 * from[line + 3]);
  }
  if (lineCount % 2 == 0)
    to[lineCount / 2 - 1] = ToSample(Mean(from[lineCount - 2], from[lineCount - 1]));
}

void CO_SubsampleVertLine8(SInt32 lineCount, const double* taps, const UInt8* source,
                           SInt32 sourceStride, UInt8* destination, SInt32 destinationStride) {
  constexpr SInt32 kTaps = 8;
  const Column<const UInt8> from(source, sourceStride);
  const Column<UInt8> to(destination, destinationStride);
  const SInt32 rows = lineCount / 2;
  for (SInt32 row = 0; row < rows; ++row) {
    const SInt32 line = 2 * row - 3;
    if (row < 2 || line + kTaps > lineCount) {
      to[row] = ToSample(Mean(from[2 * row], from[2 * row + 1]));
      continue;
    }
    double sum = 0;
    for (SInt32 k = 0; k < kTaps; ++k)
      sum += taps[k] * from[line + k];
    to[row] = ToLimitedSample(sum);
  }
}
