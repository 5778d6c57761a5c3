/// Conversions of 16.16 fixed-point numbers.
#pragma once

#include "base_types.h"

/// A whole number as 16.16. Numbers outside -32768 to 32767 give the nearest limit
/// (0x7FFFFFFF or 0x80000000).
constexpr Fixed Long2Fix(SInt32 number) {
  if (number > 32767) return 0x7FFFFFFF;
  if (number < -32768) return static_cast<Fixed>(0x80000000U);
  return number * 65536;
}

/// The value of a 16.16 number, exactly.
constexpr double Fix2X(Fixed number) {
  return static_cast<double>(number) / 65536.0;
}

/// The nearest 16.16 number to `value`, halves away from zero; out of range gives the nearest
/// limit, not-a-number gives 0.
constexpr Fixed X2Fix(double value) {
  if (!(value == value)) return 0;
  const double scaled = value * 65536.0 + (value < 0 ? -0.5 : 0.5);
  if (scaled >= 2147483647.0) return 0x7FFFFFFF;
  if (scaled <= -2147483648.0) return static_cast<Fixed>(0x80000000U);
  return static_cast<Fixed>(scaled);
}
