/// Exact fractions of 32-bit numbers.
///
/// No operation fails. A result is first computed exactly in 64 bits and reduced; if it does not
/// fit the record, the nearest fraction that a fixed scan finds (GL_GetBestN_OverD) takes its place
/// and the operation's result is false. Operands are read before the result is written, so a result
/// may be one of the operands.
///
/// A numerator fits if its magnitude is at most 2147483646, a denominator if it is at most
/// 4294967294, and in GL_CreateLongRatio, GL_LongRatioInvert and the divisions 2147483646.
///
/// A record with a denominator of 0, which nothing here makes, counts as the infinity of its
/// numerator's sign in arithmetic and stores as 2147483647/1 or its negative; 0/0 stores as 0/1.
/// Nothing allocates. Greatest common divisors are Euclid's (Knuth, The Art of Computer Programming
/// 2, 1997, 4.5.2, algorithm A), sums and products as in 4.5.1.
#pragma once

#include "base_types.h"

/// n / d. The numerator carries the sign; records need not be reduced, but all results of
/// multiplication, addition, construction and the scan are. Zero is 0/1.
struct LongRatio {
  SInt32 n;
  UInt32 d;
};

/// The greatest common divisor; that of a and 0 is a.
UInt64 GL_GetGCD(UInt64 a, UInt64 b);
/// The least common multiple, 0 if it is above 2^63 - 1; if one value is 0, the other.
UInt64 GL_GetLCM(UInt64 a, UInt64 b);

/// Divides numerator and denominator by their greatest common divisor; 0/0 stays.
void GL_ReduceLongRatio(LongRatio* ratio);

/// A fraction close to `value`: the best of those that a scan of numerators tries, reduced.
///
/// The scan makes passes until it has tried `max_tests` numerators. It starts with the step
/// `max_numerator` / (`max_tests` / 10), lowers the step by one before each pass and tries the
/// multiples of the step below `max_numerator`, from 0 on. For each numerator n it tries the
/// denominators d and d + 1, where d is n / |value| cut to 32 bits; d = 0 and what lies beyond 32
/// bits are left out. The first of the fractions whose error |(|value| - n/d)|, in double
/// precision, is least wins.
/// The scan is not carried out: its winner is found directly in about `max_tests` / 100000 searches
/// of a few dozen divisions each (see GL_Math_Best_Fraction.cpp).
///
/// Magnitudes below 1 / `max_numerator` give 0/1, those above `max_numerator` give it over 1 with
/// the sign of `value`, not-a-number gives 0/1. The other operations all use a `max_numerator` of
/// 2147483647 and a `max_tests` of 1000000. A greater `max_numerator` counts as 2147483647, a
/// `max_tests` below 10 as 10; a start step below 2 counts as 2 and the scan ends after step 1.
void GL_GetBestN_OverD(double value, UInt32 max_numerator, UInt32 max_tests, SInt32* n, UInt32* d);

/// Makes the reduced n / d. True if it is exact, false if it was approximated or `d` is 0; then a
/// positive `n` gives 2147483647/1, a negative one -2147483648/1, and 0 gives 1/1. The second form
/// takes denominators to 4294967294.
Boolean GL_CreateLongRatio(SInt64 n, SInt64 d, LongRatio* out);
Boolean GL_SetLongRatioFromSInt64(SInt64 n, SInt64 d, LongRatio* out);
/// GL_GetBestN_OverD of `value`.
void GL_SetLongRatioFromDouble(double value, LongRatio* out);

/// a b, reduced. True if exact.
Boolean GL_LongRatioMul2(const LongRatio* a, const LongRatio* b, LongRatio* out);
Boolean GL_LongRatioMulLong(const LongRatio* a, SInt32 value, LongRatio* out);
/// a / b: a times the inverse of b. True if both steps are exact.
Boolean GL_LongRatioDiv2(const LongRatio* a, const LongRatio* b, LongRatio* out);
Boolean GL_LongRatioDivByLong(const LongRatio* a, SInt32 value, LongRatio* out);
/// value / b.
Boolean GL_LongDivByLongRatio(SInt32 value, const LongRatio* b, LongRatio* out);
/// The whole part of a / b, for quotients that are not negative (the quotient's numerator is read
/// as unsigned); `remainder` (may be null) takes the rest of the numerator over the quotient's
/// denominator, not reduced. True if the division is exact.
Boolean GL_LongRatioDiv2ToLong(const LongRatio* a, const LongRatio* b, UInt32* whole,
                               LongRatio* remainder);
/// 1 / a, by GL_CreateLongRatio. True if exact.
Boolean GL_LongRatioInvert(const LongRatio* a, LongRatio* out);

/// a + b, reduced. True if exact.
Boolean GL_LongRatioAdd2(const LongRatio* a, const LongRatio* b, LongRatio* out);
Boolean GL_LongRatioAddLong(const LongRatio* a, SInt32 value, LongRatio* out);
/// a - b, reduced. True if exact.
Boolean GL_LongRatioSubtract2(const LongRatio* a, const LongRatio* b, LongRatio* out);
Boolean GL_LongRatioSubtractLong(const LongRatio* a, SInt32 value, LongRatio* out);
/// b minus value, not value minus b. True if exact.
Boolean GL_LongSubtractLongRatio(SInt32 value, const LongRatio* b, LongRatio* out);

/// |a|, not reduced; the magnitude of -2147483648 is stored as 2147483647.
void GL_AbsLongRatio(const LongRatio* a, LongRatio* out);
/// True if the reduced values are the same.
Boolean GL_EqualLongRatio(const LongRatio* a, const LongRatio* b);
/// True if a > b, where of two negative values the one of larger magnitude counts as greater.
Boolean GL_GreaterLongRatio(const LongRatio* a, const LongRatio* b);
/// The value in single precision.
float GL_LongRatioToFloat(const LongRatio* a);
/// How far the smaller magnitude falls short of the larger, as a fraction of it: 0 for equal
/// values, 0.5 for 1 and 2 in either order, 1 for different signs.
float GL_LongRatioPercDiff(const LongRatio* a, const LongRatio* b);
/// The four coordinates, each over 1.
void GL_RectToLongRatio(const Rect* rect, LongRatio* left, LongRatio* right, LongRatio* top,
                        LongRatio* bottom);

/// Factors that bring the product of two positive numbers down to at most 2147483647: only the
/// larger number is scaled while it stays the larger one, else both. `factor_a` is written only if
/// `reduce_a` becomes true, `factor_b` only with `reduce_b`.
///
/// r = 2147483647 / (a b), lim = 0.9 r, q = the smaller over the larger number. If lim > q, the
/// larger number's factor is lim (b's if the numbers are equal); else b's factor is
/// s = sqrt(lim / q) and a's is r s.
void GL_Reduce32bitFactors(SInt32 a, SInt32 b, Boolean* reduce_a, Boolean* reduce_b,
                           double* factor_a, double* factor_b);
