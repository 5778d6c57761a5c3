// The vertical filters of CO_Frames.h. Those by taps work on many columns side by side and give the
// same bytes as the filters of single columns.

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "CO_Frames.h"
#include "CO_filter.h"
#include "ORW_NR_double.h"
#include "column_private.h"
#include "vector_clones.h"

namespace {

using namespace quillmere::color;

constexpr SInt32 kLeastLines = 5;
/// Columns side by side; their lines and sums stay in the nearest cache.
constexpr SInt32 kStripe = 64;
using Line = UInt8[kStripe];

QUILLMERE_VECTOR_CLONES void SmoothLine(const UInt8* before, const UInt8* at, const UInt8* behind,
                                        UInt8* out) {
  for (SInt32 i = 0; i < kStripe; ++i)
    out[i] = ToSample(Smoothed(before[i], at[i], behind[i]));
}

QUILLMERE_VECTOR_CLONES void MeanLine(const UInt8* a, const UInt8* b, UInt8* out) {
  for (SInt32 i = 0; i < kStripe; ++i)
    out[i] = ToSample(Mean(a[i], b[i]));
}

QUILLMERE_VECTOR_CLONES void AddWeighted(double weight, const UInt8* line, double* sums) {
  for (SInt32 i = 0; i < kStripe; ++i)
    sums[i] += weight * line[i];
}

QUILLMERE_VECTOR_CLONES void LimitLine(const double* sums, UInt8* out) {
  for (SInt32 i = 0; i < kStripe; ++i)
    out[i] = ToLimitedSample(sums[i]);
}

/// Keeps each sample within the three lines around it.
QUILLMERE_VECTOR_CLONES void ClampLine(const UInt8* before, const UInt8* at, const UInt8* behind,
                                       UInt8* out) {
  for (SInt32 i = 0; i < kStripe; ++i) {
    const UInt8 least = std::min(std::min(before[i], at[i]), behind[i]);
    const UInt8 most = std::max(std::max(before[i], at[i]), behind[i]);
    out[i] = std::min(std::max(out[i], least), most);
  }
}

/// Filters up to kStripe columns by an odd number of taps, through a ring of unchanged lines.
template <SInt32 taps, bool stays_within>
class StripeFilter {
 public:
  StripeFilter(const double* weights, SInt32 lines, UInt8* first, std::ptrdiff_t stride,
               SInt32 columns)
      : weights_(weights),
        lines_(lines),
        first_(first),
        stride_(stride),
        columns_(static_cast<std::size_t>(columns)) {}

  void Run() {
    for (SInt32 i = 0; i < lines_; ++i) {
      std::memcpy(ring_[i % taps], first_ + i * stride_, columns_);
      if (i == 1) Put(0, [&](UInt8* out) { MeanLine(Read(0), Read(1), out); });
      if (i > 1 && i <= kHalf) Smooth(i - 1);
      if (i >= taps - 1) Weigh(i - kHalf);
    }
    for (SInt32 line = std::max(lines_ - kHalf, SInt32{1}); line < lines_ - 1; ++line)
      Smooth(line);
    Put(lines_ - 1, [&](UInt8* out) { MeanLine(Read(lines_ - 1), Read(lines_ - 2), out); });
  }

 private:
  static constexpr SInt32 kHalf = taps / 2;

  const UInt8* Read(SInt32 line) const { return ring_[line % taps]; }
  template <class Make>
  void Put(SInt32 line, Make make) {
    Line out;
    make(out);
    std::memcpy(first_ + line * stride_, out, columns_);
  }
  void Smooth(SInt32 line) {
    Put(line, [&](UInt8* out) { SmoothLine(Read(line - 1), Read(line), Read(line + 1), out); });
  }
  void Weigh(SInt32 line) {
    double sums[kStripe] = {};
    for (SInt32 k = 0; k < taps; ++k)
      AddWeighted(weights_[k], Read(line - kHalf + k), sums);
    Put(line, [&](UInt8* out) {
      LimitLine(sums, out);
      if (stays_within) ClampLine(Read(line - 1), Read(line), Read(line + 1), out);
    });
  }

  const double* weights_;
  SInt32 lines_;
  UInt8* first_;
  std::ptrdiff_t stride_;
  std::size_t columns_;
  Line ring_[taps] = {};
};

template <SInt32 taps, bool stays_within>
void FilterFrame(const double* weights, SInt32 width, SInt32 height, UInt8* frame) {
  if (height < kLeastLines) return;
  const SInt32 bytes = width * 2;
  for (SInt32 column = 0; column < bytes; column += kStripe)
    StripeFilter<taps, stays_within>(weights, height, frame + column, bytes,
                                     std::min(kStripe, bytes - column))
        .Run();
}

}  // namespace

void CO_VertLowPassFilterFrame(SInt32 width, SInt32 height, UInt8* frame) {
  for (SInt32 column = 0; column < width * 2; ++column)
    CO_LowPassFilterVertLine(height, frame + column, width * 2);
}

void CO_VertLowPassFilterFrame7(SInt32 width, SInt32 height, UInt8* frame) {
  double taps[7];
  if (NR_MakeLowPassFilter7_d(taps) == noErr) FilterFrame<7, true>(taps, width, height, frame);
}

void CO_VertLowPassFilterFrame9(SInt32 width, SInt32 height, UInt8* frame) {
  double taps[9];
  if (NR_MakeLowPassFilter9_d(taps) == noErr) FilterFrame<9, false>(taps, width, height, frame);
}

void CO_FilterFrameVertBr(SInt32 width, SInt32 height, UInt8* frame, UInt8* scratch) {
  for (SInt32 column = 0; column < width; ++column)
    CO_FilterVertBrLine(width, height, frame, column, scratch);
}

void CO_FilterFrameVertChroma(SInt32 width, SInt32 height, UInt8* frame, UInt8* scratch) {
  for (SInt32 column = 0; column < width; ++column)
    CO_FilterVertChromaLine(width, height, frame, column, scratch);
}
