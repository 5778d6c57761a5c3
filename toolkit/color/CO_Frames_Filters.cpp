// The vertical filters of CO_Frames.h. Those by taps work on many columns side by side and give the
// same bytes as the filters of single columns.

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "CO_Frames.h"
#include "CO_filter.h"
#include "vector_clones.h"

namespace {

constexpr SInt32 kLeastLines = 5;
/// Columns side by side; their lines stay in the nearest cache.
constexpr SInt32 kStripe = 128;
using Line = UInt8[kStripe];

// The sums of the column filters are multiples of a quarter, a 21st and a 462nd, to which 0.49 is
// added before they are cut: in integers that is 1, 10 and 226 of these parts.

QUILLMERE_VECTOR_CLONES void SmoothLine(const UInt8* before, const UInt8* at, const UInt8* behind,
                                        UInt8* __restrict out) {
  for (SInt32 i = 0; i < kStripe; ++i)
    out[i] = static_cast<UInt8>((before[i] + 2 * at[i] + behind[i] + 1) >> 2);
}

QUILLMERE_VECTOR_CLONES void MeanLine(const UInt8* a, const UInt8* b, UInt8* __restrict out) {
  for (SInt32 i = 0; i < kStripe; ++i)
    out[i] = static_cast<UInt8>((a[i] + b[i]) >> 1);
}

/// Seven taps of NR_MakeLowPassFilter7_d. All sums fit into 16 bits; 3121 / 65536 is a 21st, close
/// enough for these.
QUILLMERE_VECTOR_CLONES void Weigh7(const UInt8* a, const UInt8* b, const UInt8* c, const UInt8* d,
                                    const UInt8* e, const UInt8* f, const UInt8* g,
                                    UInt8* __restrict out) {
  for (SInt32 i = 0; i < kStripe; ++i) {
    const auto sum = static_cast<SInt16>(7 * d[i] + 6 * (c[i] + e[i]) + 3 * (b[i] + f[i]) -
                                         2 * (a[i] + g[i]) + 10);
    const auto raised = static_cast<UInt16>(sum > 0 ? sum : 0);
    const auto cut = static_cast<UInt16>((raised * UInt32{3121}) >> 16);
    out[i] = static_cast<UInt8>(cut < 255 ? cut : 255);
  }
}

/// Nine taps of NR_MakeLowPassFilter9_d. The sums are whole numbers that floats hold; with half a
/// part more no multiple of 462 is cut to the one below.
QUILLMERE_VECTOR_CLONES void Weigh9(const UInt8* a, const UInt8* b, const UInt8* c, const UInt8* d,
                                    const UInt8* e, const UInt8* f, const UInt8* g, const UInt8* h,
                                    const UInt8* k, UInt8* __restrict out) {
  for (SInt32 i = 0; i < kStripe; ++i) {
    // An eighth of the seven inner taps fits into 16 bits.
    const auto inner =
        static_cast<SInt16>(17 * e[i] + 15 * (d[i] + f[i]) + 9 * (c[i] + g[i]) - (b[i] + h[i]));
    const auto outer = static_cast<SInt16>(21 * (a[i] + k[i]));
    const float parts = (static_cast<float>(8 * inner - outer) + 226.5F) * (1.0F / 462);
    const float positive = parts > 0 ? parts : 0;
    out[i] = static_cast<UInt8>(static_cast<SInt32>(positive < 255 ? positive : 255));
  }
}

/// Keeps each sample within the three lines around it.
QUILLMERE_VECTOR_CLONES void ClampLine(const UInt8* before, const UInt8* at, const UInt8* behind,
                                       UInt8* __restrict out) {
  for (SInt32 i = 0; i < kStripe; ++i) {
    const UInt8 least = std::min(std::min(before[i], at[i]), behind[i]);
    const UInt8 most = std::max(std::max(before[i], at[i]), behind[i]);
    out[i] = std::min(std::max(out[i], least), most);
  }
}

/// Filters up to kStripe columns by 7 or 9 taps, through a ring of unchanged lines.
template <SInt32 taps>
class StripeFilter {
 public:
  StripeFilter(SInt32 lines, UInt8* first, std::ptrdiff_t stride, SInt32 columns)
      : lines_(lines),
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
    const auto at = [&](SInt32 distance) { return Read(line + distance); };
    Put(line, [&](UInt8* out) {
      if constexpr (taps == 7) {
        Weigh7(at(-3), at(-2), at(-1), at(0), at(1), at(2), at(3), out);
        ClampLine(at(-1), at(0), at(1), out);
      } else {
        Weigh9(at(-4), at(-3), at(-2), at(-1), at(0), at(1), at(2), at(3), at(4), out);
      }
    });
  }

  SInt32 lines_;
  UInt8* first_;
  std::ptrdiff_t stride_;
  std::size_t columns_;
  Line ring_[taps] = {};
};

template <SInt32 taps>
void FilterFrame(SInt32 width, SInt32 height, UInt8* frame) {
  if (height < kLeastLines) return;
  const SInt32 bytes = width * 2;
  for (SInt32 column = 0; column < bytes; column += kStripe)
    StripeFilter<taps>(height, frame + column, bytes, std::min(kStripe, bytes - column)).Run();
}

}  // namespace

void CO_VertLowPassFilterFrame(SInt32 width, SInt32 height, UInt8* frame) {
  for (SInt32 column = 0; column < width * 2; ++column)
    CO_LowPassFilterVertLine(height, frame + column, width * 2);
}

void CO_VertLowPassFilterFrame7(SInt32 width, SInt32 height, UInt8* frame) {
  FilterFrame<7>(width, height, frame);
}

void CO_VertLowPassFilterFrame9(SInt32 width, SInt32 height, UInt8* frame) {
  FilterFrame<9>(width, height, frame);
}

void CO_FilterFrameVertBr(SInt32 width, SInt32 height, UInt8* frame, UInt8* scratch) {
  for (SInt32 column = 0; column < width; ++column)
    CO_FilterVertBrLine(width, height, frame, column, scratch);
}

void CO_FilterFrameVertChroma(SInt32 width, SInt32 height, UInt8* frame, UInt8* scratch) {
  for (SInt32 column = 0; column < width; ++column)
    CO_FilterVertChromaLine(width, height, frame, column, scratch);
}
