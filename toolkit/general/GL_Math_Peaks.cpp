// Peaks of histograms, of GL_Math_Curves.h.

#include <algorithm>

#include "GL_Math_Curves.h"
#include "fixed_point.h"

namespace {

/// A window that slides through a histogram.
class Window {
 public:
  Window(const SInt32* histogram, SInt32 start, SInt32 width)
      : histogram_(histogram), end_(start), width_(width) {
    for (; end_ < start + width; ++end_)
      sum_ += histogram[end_];
  }

  /// One past the window's last entry.
  SInt32 End() const { return end_; }
  SInt64 Sum() const { return sum_; }

  /// Slides until the sum is about to fall from at least the threshold, or the window ends at
  /// `end`.
  void SlideToPeak(SInt64 threshold, SInt32 end) {
    while (end_ < end) {
      const SInt64 next = sum_ + histogram_[end_] - histogram_[end_ - width_];
      if (sum_ >= threshold && sum_ > next) return;
      sum_ = next;
      ++end_;
    }
  }

 private:
  const SInt32* histogram_;
  SInt32 end_;
  SInt32 width_;
  SInt64 sum_ = 0;
};

SInt64 ThresholdOrShare(SInt32 first, SInt32 last, const SInt32* histogram, SInt32 threshold,
                        Fixed fraction) {
  if (threshold == 0) {
    SInt64 sum = 0;
    for (SInt32 i = first; i <= last; ++i)
      sum += histogram[i];
    threshold = FixMul(SaturateToSInt32(sum), fraction);
  }
  return std::max<SInt64>(threshold, 1);
}

}  // namespace

void GL_GetNextPeak(SInt32 first, SInt32 last, const SInt32* histogram, SInt32* position,
                    SInt32* width, Boolean narrow, SInt32 threshold, Fixed fraction,
                    SInt32* window_sum) {
  *window_sum = 0;
  const SInt32 start = std::max(*position, first);
  if (*width <= 0 || start > last) return;
  const SInt64 least = ThresholdOrShare(first, last, histogram, threshold, fraction);
  SInt32 found_width = std::min(*width, last - start + 1);
  Window window(histogram, start, found_width);
  window.SlideToPeak(least, last + 1);
  *position = window.End();
  if (window.Sum() < least) return;
  SInt64 found_sum = window.Sum();
  if (narrow != 0) {
    const SInt32 found_start = window.End() - found_width;
    for (; found_width > 1; --found_width) {
      Window narrower(histogram, found_start, found_width - 1);
      narrower.SlideToPeak(least, *position);
      if (narrower.Sum() < least) break;
      found_sum = narrower.Sum();
      *position = narrower.End();
    }
    *width = found_width;
  }
  *window_sum = SaturateToSInt32(found_sum);
}
