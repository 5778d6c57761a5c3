#include "GL_Math_Ratios.h"

#include <cmath>
#include <numeric>

#include "GL_Math_Numbers.h"

namespace {

constexpr UInt64 kLargestNumerator = 2147483646;
constexpr UInt64 kLargestDenominator = 4294967294;
constexpr UInt64 kLargestCreatedDenominator = 2147483646;
constexpr UInt32 kScanCeiling = 2147483647;
constexpr UInt32 kScanTests = 1000000;

UInt64 Magnitude(SInt64 value) {
  return value < 0 ? 0U - static_cast<UInt64>(value) : static_cast<UInt64>(value);
}

/// The nearest fraction; the operation that ends here is not exact.
Boolean StoreApproximation(double value, LongRatio* out) {
  GL_GetBestN_OverD(value, kScanCeiling, kScanTests, &out->n, &out->d);
  return 0;
}

/// Stores the reduced n / d with a sign if it fits; else the fraction nearest to it.
Boolean StoreReduced(bool negative, UInt64 n, UInt64 d, UInt64 largest_d, LongRatio* out) {
  const UInt64 divisor = GL_GetGCD(n, d);
  if (divisor > 1) {
    n /= divisor;
    d /= divisor;
  }
  if (d == 0 || n > kLargestNumerator || d > largest_d) {
    const double quotient = static_cast<double>(n) / static_cast<double>(d);
    return StoreApproximation(negative ? -quotient : quotient, out);
  }
  const auto numerator = static_cast<SInt32>(n);
  *out = {negative ? -numerator : numerator, static_cast<UInt32>(d)};
  return 1;
}

Boolean StoreQuotient(SInt64 n, SInt64 d, UInt64 largest_d, LongRatio* out) {
  if (d == 0) {
    *out = {n > 0 ? 2147483647 : n < 0 ? static_cast<SInt32>(0x80000000U) : 1, 1};
    return 0;
  }
  return StoreReduced((n < 0) != (d < 0), Magnitude(n), Magnitude(d), largest_d, out);
}

/// an/ad + bn/bd; the numerators have magnitudes to 2^31, so that differences come here too.
Boolean Add(SInt64 an, UInt32 ad, SInt64 bn, UInt32 bd, LongRatio* out) {
  const UInt64 multiple = ad == 0 || bd == 0 ? 0 : GL_GetLCM(ad, bd);
  if (multiple != 0) {
    const SInt64 a = an * static_cast<SInt64>(multiple / ad);
    const SInt64 b = bn * static_cast<SInt64>(multiple / bd);
    const double estimate = static_cast<double>(a) + static_cast<double>(b);
    if (std::fabs(estimate) <= 9223372036854775808.0) {
      // An estimate rounded down to 2^63 can stand for a sum beyond the signed range.
      SInt64 sum = 0;
      const bool overflown = __builtin_add_overflow(a, b, &sum);
      const bool negative = overflown ? a < 0 : sum < 0;
      const auto bits = static_cast<UInt64>(sum);
      return StoreReduced(negative, negative ? 0U - bits : bits, multiple, kLargestDenominator,
                          out);
    }
  }
  return StoreApproximation(static_cast<double>(an) / ad + static_cast<double>(bn) / bd, out);
}

}  // namespace

UInt64 GL_GetGCD(UInt64 a, UInt64 b) {
  while (b != 0) {
    const UInt64 rest = a % b;
    a = b;
    b = rest;
  }
  return a;
}

UInt64 GL_GetLCM(UInt64 a, UInt64 b) {
  if (a == 0) return b;
  if (b == 0) return a;
  const UInt64 quotient = a / GL_GetGCD(a, b);
  if (0x7FFFFFFFFFFFFFFFU / b < quotient) return 0;
  return quotient * b;
}

void GL_ReduceLongRatio(LongRatio* ratio) {
  const UInt64 n = Magnitude(ratio->n);
  const UInt64 divisor = GL_GetGCD(n, ratio->d);
  if (divisor < 2) return;
  ratio->n = static_cast<SInt32>(ratio->n / static_cast<SInt64>(divisor));
  ratio->d = static_cast<UInt32>(ratio->d / divisor);
}

Boolean GL_CreateLongRatio(SInt64 n, SInt64 d, LongRatio* out) {
  return StoreQuotient(n, d, kLargestCreatedDenominator, out);
}

Boolean GL_SetLongRatioFromSInt64(SInt64 n, SInt64 d, LongRatio* out) {
  return StoreQuotient(n, d, kLargestDenominator, out);
}

void GL_SetLongRatioFromDouble(double value, LongRatio* out) {
  StoreApproximation(value, out);
}

Boolean GL_LongRatioMul2(const LongRatio* a, const LongRatio* b, LongRatio* out) {
  const SInt64 n = static_cast<SInt64>(a->n) * b->n;
  const UInt64 d = static_cast<UInt64>(a->d) * b->d;
  return StoreReduced(n < 0, Magnitude(n), d, kLargestDenominator, out);
}

Boolean GL_LongRatioMulLong(const LongRatio* a, SInt32 value, LongRatio* out) {
  const LongRatio factor = {value, 1};
  return GL_LongRatioMul2(a, &factor, out);
}

Boolean GL_LongRatioInvert(const LongRatio* a, LongRatio* out) {
  return GL_CreateLongRatio(a->d, a->n, out);
}

Boolean GL_LongRatioDiv2(const LongRatio* a, const LongRatio* b, LongRatio* out) {
  LongRatio inverse;
  const Boolean inverted = GL_LongRatioInvert(b, &inverse);
  const Boolean multiplied = GL_LongRatioMul2(a, &inverse, out);
  return static_cast<Boolean>(inverted && multiplied);
}

Boolean GL_LongRatioDivByLong(const LongRatio* a, SInt32 value, LongRatio* out) {
  const LongRatio divisor = {value, 1};
  return GL_LongRatioDiv2(a, &divisor, out);
}

Boolean GL_LongDivByLongRatio(SInt32 value, const LongRatio* b, LongRatio* out) {
  const LongRatio dividend = {value, 1};
  return GL_LongRatioDiv2(&dividend, b, out);
}

Boolean GL_LongRatioDiv2ToLong(const LongRatio* a, const LongRatio* b, UInt32* whole,
                               LongRatio* remainder) {
  LongRatio quotient;
  const Boolean exact = GL_LongRatioDiv2(a, b, &quotient);
  const auto n = static_cast<UInt32>(quotient.n);
  *whole = n / quotient.d;
  if (remainder != nullptr) *remainder = {static_cast<SInt32>(n % quotient.d), quotient.d};
  return exact;
}

Boolean GL_LongRatioAdd2(const LongRatio* a, const LongRatio* b, LongRatio* out) {
  return Add(a->n, a->d, b->n, b->d, out);
}

Boolean GL_LongRatioAddLong(const LongRatio* a, SInt32 value, LongRatio* out) {
  return Add(a->n, a->d, value, 1, out);
}

Boolean GL_LongRatioSubtract2(const LongRatio* a, const LongRatio* b, LongRatio* out) {
  return Add(a->n, a->d, -static_cast<SInt64>(b->n), b->d, out);
}

Boolean GL_LongRatioSubtractLong(const LongRatio* a, SInt32 value, LongRatio* out) {
  return Add(a->n, a->d, -static_cast<SInt64>(value), 1, out);
}

Boolean GL_LongSubtractLongRatio(SInt32 value, const LongRatio* b, LongRatio* out) {
  return Add(-static_cast<SInt64>(value), 1, b->n, b->d, out);
}

void GL_AbsLongRatio(const LongRatio* a, LongRatio* out) {
  const UInt64 magnitude = Magnitude(a->n);
  *out = {magnitude > 2147483647 ? 2147483647 : static_cast<SInt32>(magnitude), a->d};
}

Boolean GL_EqualLongRatio(const LongRatio* a, const LongRatio* b) {
  LongRatio first = *a;
  LongRatio second = *b;
  GL_ReduceLongRatio(&first);
  GL_ReduceLongRatio(&second);
  return first.n == second.n && first.d == second.d;
}

Boolean GL_GreaterLongRatio(const LongRatio* a, const LongRatio* b) {
  const SInt64 x = static_cast<SInt64>(a->n) * b->d;
  const SInt64 y = static_cast<SInt64>(b->n) * a->d;
  if (x >= 0 && y >= 0) return x > y;
  if (x < 0 && y < 0) return x < y;
  return x > 0;
}

float GL_LongRatioToFloat(const LongRatio* a) {
  const float denominator =
      static_cast<float>(a->d >> 16) * 65536.0F + static_cast<float>(a->d & 0xFFFFU);
  return static_cast<float>(a->n) / denominator;
}

float GL_LongRatioPercDiff(const LongRatio* a, const LongRatio* b) {
  return GL_FloatPercDiff(GL_LongRatioToFloat(a), GL_LongRatioToFloat(b));
}

void GL_RectToLongRatio(const Rect* rect, LongRatio* left, LongRatio* right, LongRatio* top,
                        LongRatio* bottom) {
  *left = {rect->left, 1};
  *right = {rect->right, 1};
  *top = {rect->top, 1};
  *bottom = {rect->bottom, 1};
}

void GL_Reduce32bitFactors(SInt32 a, SInt32 b, Boolean* reduce_a, Boolean* reduce_b,
                           double* factor_a, double* factor_b) {
  const double ratio = 2147483647.0 / static_cast<double>(static_cast<SInt64>(a) * b);
  const double limit = ratio * 0.9;
  const double quotient = a > b ? static_cast<double>(b) / a : static_cast<double>(a) / b;
  const bool one_is_enough = limit > quotient;
  *reduce_a = !one_is_enough || a > b;
  *reduce_b = !one_is_enough || a <= b;
  if (!one_is_enough) {
    const double root = std::sqrt(limit / quotient);
    *factor_b = root;
    *factor_a = ratio * root;
  } else if (a > b) {
    *factor_a = limit;
  } else {
    *factor_b = limit;
  }
}
