#include "GL_Math_Numbers.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "fixed_point.h"

namespace {

constexpr SInt32 kZeroArgument = 4;
constexpr Fixed kOne = 0x10000;

/// Cut toward zero; not-a-number gives 0.
SInt64 Truncate(double x) {
  if (!(x == x)) return 0;
  return static_cast<SInt64>(std::clamp(x, -2147483648.0, 2147483647.0));
}

template <typename T>
void Clamp(T low, T high, T* value) {
  if (*value < low) *value = low;
  if (*value > high) *value = high;
}

/// Changes one of two inverses by a unit of its last place if that brings their product nearer
/// to 1. `a_error` and `b_error` are their rounding errors in sixteenths of the last place.
void AdjustInverse(SInt64 a_error, SInt64 b_error, Fixed* a, Fixed* b) {
  const Fixed product = FixMul(*a, *b);
  SInt64 a_trial = *a;
  SInt64 b_trial = *b;
  if (product > kOne) {
    if (a_error > 0 && WideFixDiv(a_error, *a) >= WideFixDiv(b_error, *b)) {
      --a_trial;
    } else if (b_error > 0) {
      --b_trial;
    }
  } else if (product < kOne) {
    if (a_error < 0 && a_error <= b_error) {
      ++a_trial;
    } else if (b_error < 0) {
      ++b_trial;
    }
  }
  const Fixed new_a = SaturateToSInt32(a_trial);
  const Fixed new_b = SaturateToSInt32(b_trial);
  const auto distance = [](Fixed x) { return std::abs(static_cast<SInt64>(x) - kOne); };
  if (distance(FixMul(new_a, new_b)) >= distance(product)) return;
  *a = new_a;
  *b = new_b;
}

}  // namespace

void GL_RoundToPowerOf2(UInt32 least_exponent, UInt32 value, UInt32* power, UInt32* remainder) {
  *power = std::max(std::bit_floor(value), UInt32{1} << std::min<UInt32>(least_exponent, 31));
  *remainder = value % *power;
}

SInt32 GL_RoundDownFloatToNearestInteger(float x, float tolerance) {
  const SInt64 whole = Truncate(x);
  const double next = static_cast<double>(whole) + 1.0;
  return SaturateToSInt32(
      next - static_cast<double>(x) <= static_cast<double>(tolerance) ? whole + 1 : whole);
}

SInt32 GL_RoundToEven(float x) {
  const SInt64 whole = Truncate(x);
  if (whole % 2 == 0) return static_cast<SInt32>(whole);
  return SaturateToSInt32(whole < 0 ? whole - 1 : whole + 1);
}

Boolean GL_FloatsEqualByPerc(float a, float b, float fraction) {
  return std::max(std::fabs(a), std::fabs(b)) * fraction > std::fabs(a - b);
}

Boolean GL_FloatsEqualByAbsDiff(float a, float b, float limit) {
  return limit > std::fabs(a - b);
}

Boolean GL_Diff(double a, double b, double tolerance, SInt32* error) {
  const bool valid = a > 0 && b >= 0 && tolerance >= 0 && tolerance <= 1;
  if (error != nullptr) *error = valid ? noErr : paramErr;
  return valid && (b < a * (1 - tolerance) || b > a * (1 + tolerance));
}

float GL_FloatPercDiff(float a, float b) {
  if (a == b) return 0;
  float quotient = a / b;
  if (quotient < 0) return 1;
  if (quotient > 1) quotient = 1 / quotient;
  return 1 - quotient;
}

SInt32 GL_MultiplyDivide(SInt32 a, SInt32 b, SInt32 c, SInt32* remainder) {
  return WideDivide(WideMultiply(a, b), c, remainder);
}

SInt32 GL_GetBestBinaryInverse(SInt32 n, SInt32 d, Fixed* a, Fixed* b) {
  if (n == 0 || d == 0) return kZeroArgument;
  const SInt64 numerator = std::abs(static_cast<SInt64>(n));
  const SInt64 denominator = std::abs(static_cast<SInt64>(d));
  Fixed quotient = SaturateToSInt32(WideFixDiv(numerator, denominator));
  Fixed inverse = SaturateToSInt32(WideFixDiv(denominator, numerator));
  if (FixMul(quotient, inverse) != kOne) {
    AdjustInverse(SInt64{16} * quotient - WideFixDiv(16 * numerator, denominator),
                  SInt64{16} * inverse - WideFixDiv(16 * denominator, numerator), &quotient,
                  &inverse);
  }
  const bool negative = (n < 0) != (d < 0);
  *a = negative ? -quotient : quotient;
  *b = negative ? -inverse : inverse;
  return noErr;
}

SInt32 GL_GetNumBitsFromMaxValue(UInt32 max) {
  return static_cast<SInt32>(std::bit_width(max));
}

SInt32 GL_GetNumBitsFromMaxMinValue(SInt32 max, SInt32 min) {
  const SInt64 lowest = -static_cast<SInt64>(min);
  SInt32 bits = 0;
  while ((SInt64{1} << bits) <= max || (SInt64{1} << bits) < lowest)
    ++bits;
  return min < 0 ? bits + 1 : bits;
}

double GL_Log2(double x) {
  return std::log2(x);
}

SInt32 GL_IntLog2(SInt32 value) {
  return value <= 1 ? 0 : static_cast<SInt32>(std::bit_width(static_cast<UInt32>(value))) - 1;
}

UInt32 GL_BitReverse(UInt32 bits, UInt32 value) {
  UInt32 reversed = 0;
  for (UInt32 i = 0; i < std::min<UInt32>(bits, 32); ++i)
    reversed = (reversed << 1) | ((value >> i) & 1U);
  return reversed;
}

double GL_PowExt(double base, double exponent) {
  return base < 0 ? -std::pow(-base, exponent) : std::pow(base, exponent);
}

SInt32 GL_factorial(SInt32 n) {
  // From 34! on the product is a multiple of 2^32.
  if (n > 33) return 0;
  UInt32 product = 1;
  for (SInt32 i = 2; i <= n; ++i)
    product *= static_cast<UInt32>(i);
  return static_cast<SInt32>(product);
}

double GL_binomial(SInt32 n, SInt32 k) {
  if (k < 0 || k > n) return 0;
  return static_cast<double>(GL_factorial(n)) /
         (static_cast<double>(GL_factorial(k)) * static_cast<double>(GL_factorial(n - k)));
}

SInt32 GL_GetOverlapS32(SInt32 a0, SInt32 a1, SInt32 b0, SInt32 b1) {
  const SInt64 length = static_cast<SInt64>(std::min(a1, b1)) - std::max(a0, b0);
  return SaturateToSInt32(std::max<SInt64>(length, 0));
}

double GL_GetOverlapF64(double a0, double a1, double b0, double b1) {
  return std::max(std::min(a1, b1) - std::max(a0, b0), 0.0);
}

Boolean GL_IsNumberInInterval(SInt32 low, SInt32 value, SInt32 high) {
  return low <= value && value <= high;
}

void GL_ClampIntToBounds(SInt32 low, SInt32 high, SInt32* value) {
  Clamp(low, high, value);
}

void GL_ClampShortToBounds(SInt16 low, SInt16 high, SInt16* value) {
  Clamp(low, high, value);
}

void GL_ClampFloatToBounds(float low, float high, float* value) {
  Clamp(low, high, value);
}

void GL_GetMinMaxFrom3_U8(UInt8 a, UInt8 b, UInt8 c, UInt8* min, UInt8* max) {
  *min = std::min({a, b, c});
  *max = std::max({a, b, c});
}

UInt8 GL_GetMedianFilteredValue3_U8(UInt8 a, UInt8 b, UInt8 c) {
  return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

SInt32 GL_GetAntiMedianValue3(SInt32 a, SInt32 b, SInt32 c) {
  return SaturateToSInt32(static_cast<SInt64>(b) - std::clamp(b, std::min(a, c), std::max(a, c)));
}
