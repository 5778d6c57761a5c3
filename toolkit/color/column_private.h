/// A vertical column of samples, for the sources of CO_filter.h.
#pragma once

#include <cstddef>

#include "base_types.h"

namespace quillmere::color {

template <class Byte>
class Column {
 public:
  Column(Byte* first, SInt32 stride) : first_(first), stride_(stride) {}
  Byte& operator[](SInt32 line) const { return first_[std::ptrdiff_t{line} * stride_]; }

 private:
  Byte* first_;
  std::ptrdiff_t stride_;
};

/// What a filter's sum becomes in a sample.
inline UInt8 ToSample(double sum) {
  return static_cast<UInt8>(sum + 0.49);
}
/// The same for one that may leave 0 to 255.
inline UInt8 ToLimitedSample(double sum) {
  const double raised = sum + 0.49;
  return static_cast<UInt8>(raised < 0 ? 0 : raised > 255 ? 255 : raised);
}

inline double Mean(double a, double b) {
  return 0.5 * a + 0.5 * b;
}
inline double Smoothed(double before, double at, double after) {
  return 0.25 * before + 0.5 * at + 0.25 * after;
}

}  // namespace quillmere::color
