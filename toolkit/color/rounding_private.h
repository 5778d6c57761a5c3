/// How colours become integers, for the sources of this folder.
#pragma once

#include <limits>

namespace quillmere::color {

/// Cut toward zero and limited to the type; 0 for not-a-number.
template <class Integer>
Integer Cut(double value) {
  constexpr double kLeast = std::numeric_limits<Integer>::min();
  constexpr double kMost = std::numeric_limits<Integer>::max();
  if (!(value == value)) return 0;
  return static_cast<Integer>(value < kLeast ? kLeast : value > kMost ? kMost : value);
}

}  // namespace quillmere::color
