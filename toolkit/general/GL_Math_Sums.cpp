// The sums of GL_Math_Lists.h that search: rounding to an exact sum, and the closest sum.

#include <algorithm>
#include <memory>
#include <new>
#include <span>

#include "GL_Math_Lists.h"
#include "fixed_point.h"

namespace {

constexpr SInt32 kZeroDenominator = 4;

/// An entry and by how much it was rounded up, in sixteenths of its last place.
struct RoundingError {
  SInt64 error;
  SInt16 index;
};

/// The depth-first search for the greatest sum below a target: every list of ascending indices is a
/// node, its children append a later index, and the first node of the greatest sum wins.
class ClosestSumSearch {
 public:
  ClosestSumSearch(std::span<const SInt32> values, SInt64 target)
      : values_(values),
        target_(target),
        size_(values.size()),
        reach_(new (std::nothrow) SInt64[size_ + 1]),
        path_(new (std::nothrow) std::size_t[size_]),
        best_path_(new (std::nothrow) std::size_t[size_]) {}

  bool HasMemory() const { return reach_ && path_ && best_path_; }
  SInt64 Best() const { return best_; }
  std::span<const std::size_t> BestPath() const { return {best_path_.get(), best_length_}; }

  void Run(SInt64 sum) {
    best_ = sum;
    reach_[size_] = 0;
    for (std::size_t i = size_; i-- > 0;)
      reach_[i] = reach_[i + 1] + std::max<SInt64>(values_[i], 0);
    std::size_t length = 0;
    std::size_t next = 0;
    while (best_ < target_ - 1) {
      // What is left cannot raise the sum above the best: back to the last chosen index.
      if (sum + reach_[next] <= best_) {
        if (length == 0) return;
        next = path_[--length];
        sum -= values_[next++];
        continue;
      }
      const SInt64 new_sum = sum + values_[next];
      if (new_sum >= target_) {
        ++next;
        continue;
      }
      sum = new_sum;
      path_[length++] = next++;
      if (sum > best_) {
        best_ = sum;
        best_length_ = length;
        std::copy_n(path_.get(), length, best_path_.get());
      }
    }
  }

 private:
  std::span<const SInt32> values_;
  SInt64 target_;
  std::size_t size_;
  std::unique_ptr<SInt64[]> reach_;  ///< the greatest sum of the values from an index on
  std::unique_ptr<std::size_t[]> path_;
  std::unique_ptr<std::size_t[]> best_path_;
  SInt64 best_ = 0;
  std::size_t best_length_ = 0;
};

}  // namespace

SInt32 GL_RoundFixedNumberListToExactSum(const SInt32* numerators, const SInt32* denominators,
                                         SInt16 count, Fixed target, Fixed* out) {
  SInt64 difference = -static_cast<SInt64>(target);
  for (SInt16 i = 0; i < count; ++i) {
    if (denominators[i] == 0) return kZeroDenominator;
    out[i] = FixDiv(numerators[i], denominators[i]);
    difference += out[i];
  }
  if (difference == 0 || count <= 0) return noErr;

  const auto size = static_cast<std::size_t>(count);
  const std::unique_ptr<RoundingError[]> errors(new (std::nothrow) RoundingError[size]);
  if (!errors) return noErr;
  const SInt64 unit = difference > 0 ? -1 : 1;
  for (SInt16 i = 0; i < count; ++i) {
    const SInt64 exact = WideFixDiv(SInt64{16} * numerators[i], denominators[i]);
    errors[static_cast<std::size_t>(i)] = {SInt64{16} * out[i] - exact, i};
  }
  // The worst first: the largest errors when units are to be taken away, else the most negative.
  std::stable_sort(errors.get(), errors.get() + size,
                   [unit](const RoundingError& a, const RoundingError& b) {
                     return unit < 0 ? a.error > b.error : a.error < b.error;
                   });
  for (const RoundingError& entry : std::span(errors.get(), size)) {
    if (difference == 0 || entry.error * unit >= 0) break;
    out[entry.index] = SaturateToSInt32(out[entry.index] + unit);
    difference += unit;
  }
  return noErr;
}

void GL_GetClosestSum(const SInt32* values, SInt32 count, SInt32 target, SInt32* sum,
                      SInt32* chosen) {
  if (count <= 0) return;
  const std::span list(values, static_cast<std::size_t>(count));
  ClosestSumSearch search(list, target);
  if (!search.HasMemory()) return;
  search.Run(*sum);
  if (search.BestPath().empty()) return;
  std::fill_n(chosen, count, 0);
  for (const std::size_t index : search.BestPath())
    *chosen++ = list[index];
  *sum = static_cast<SInt32>(search.Best());
}
