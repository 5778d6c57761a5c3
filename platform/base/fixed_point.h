/// 16.16 fixed-point numbers: conversions, products and quotients; and the 64-bit product and
/// quotient of 32-bit numbers.
///
/// Every result is rounded to the nearest number, halves away from zero, unless its comment says
/// otherwise, and held at the limits of its type (0x7FFFFFFF or 0x80000000 for a Fixed).
#pragma once

#include "base_types.h"

/// A whole number as 16.16. Numbers outside -32768 to 32767 give the nearest limit
/// (0x7FFFFFFF or 0x80000000).
constexpr Fixed Long2Fix(SInt32 number) {
  if (number > 32767) return 0x7FFFFFFF;
  if (number < -32768) return static_cast<Fixed>(0x80000000U);
  return number * 65536;
}

/// A 64-bit number held at the limits of 32 bits.
constexpr SInt32 SaturateToSInt32(SInt64 number) {
  if (number > 2147483647) return 2147483647;
  if (number < -2147483647) return static_cast<SInt32>(0x80000000U);
  return static_cast<SInt32>(number);
}

/// The whole number nearest to a 16.16 number: -32768 to 32768.
constexpr SInt32 Fix2Long(Fixed number) {
  const SInt64 magnitude = number < 0 ? -static_cast<SInt64>(number) : number;
  const auto rounded = static_cast<SInt32>((magnitude + 0x8000) >> 16);
  return number < 0 ? -rounded : rounded;
}

/// The product of two 16.16 numbers, or of a whole number and a 16.16 fraction as a whole number.
constexpr Fixed FixMul(Fixed a, Fixed b) {
  const SInt64 product = static_cast<SInt64>(a) * b;
  const SInt64 magnitude = ((product < 0 ? -product : product) + 0x8000) >> 16;
  return SaturateToSInt32(product < 0 ? -magnitude : magnitude);
}

/// n / d as 16.16 in 64 bits, unlimited, for |n| below 2^46 and a `d` other than 0.
constexpr SInt64 WideFixDiv(SInt64 n, SInt64 d) {
  const bool negative = (n < 0) != (d < 0);
  const SInt64 dividend = (n < 0 ? -n : n) * 65536;
  const SInt64 divisor = d < 0 ? -d : d;
  const SInt64 rest = dividend % divisor;
  const SInt64 magnitude = dividend / divisor + (rest >= divisor - rest ? 1 : 0);
  return negative ? -magnitude : magnitude;
}

/// The quotient of two whole or two 16.16 numbers as a 16.16 number. Division by 0 gives the
/// lowest number for a negative dividend, else the highest.
constexpr Fixed FixDiv(SInt32 n, SInt32 d) {
  if (d == 0) return n < 0 ? static_cast<Fixed>(0x80000000U) : 0x7FFFFFFF;
  return SaturateToSInt32(WideFixDiv(n, d));
}

/// The exact product.
constexpr SInt64 WideMultiply(SInt32 a, SInt32 b) {
  return static_cast<SInt64>(a) * b;
}

/// The quotient cut toward zero; `remainder` (may be null) takes the rest, with the dividend's
/// sign. Division by 0 or a quotient beyond 32 bits gives the limit of the quotient's sign and rest
/// 0.
constexpr SInt32 WideDivide(SInt64 dividend, SInt32 divisor, SInt32* remainder) {
  SInt32 rest = 0;
  SInt32 quotient = 0;
  const UInt64 magnitude =
      dividend < 0 ? 0U - static_cast<UInt64>(dividend) : static_cast<UInt64>(dividend);
  const auto divisor_magnitude =
      static_cast<UInt64>(divisor < 0 ? -static_cast<SInt64>(divisor) : divisor);
  const bool negative = (dividend < 0) != (divisor < 0);
  const UInt64 limit = negative ? 0x80000000U : 0x7FFFFFFFU;
  if (divisor == 0 || magnitude / divisor_magnitude > limit) {
    quotient = SaturateToSInt32(negative ? -0x80000000LL : 0x7FFFFFFF);
  } else {
    const auto whole = static_cast<SInt64>(magnitude / divisor_magnitude);
    const auto left = static_cast<SInt64>(magnitude % divisor_magnitude);
    quotient = static_cast<SInt32>(negative ? -whole : whole);
    rest = static_cast<SInt32>(dividend < 0 ? -left : left);
  }
  if (remainder != nullptr) *remainder = rest;
  return quotient;
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
