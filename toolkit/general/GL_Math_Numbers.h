/// Small operations on numbers: rounding, comparing within a tolerance, bits, powers, intervals.
///
/// Nothing allocates and nothing fails but GL_Diff and GL_GetBestBinaryInverse. Results beyond
/// their type's range are held at its limits where no comment says otherwise.
#pragma once

#include "base_types.h"

// Rounding.

/// The largest power of two that is not above `value`, but at least 2^`least_exponent` (0 to 31),
/// and the remainder of `value` by it.
void GL_RoundToPowerOf2(UInt32 least_exponent, UInt32 value, UInt32* power, UInt32* remainder);
/// `x` cut toward zero, plus 1 if it is at most `tolerance` below the next integer.
SInt32 GL_RoundDownFloatToNearestInteger(float x, float tolerance);
/// `x` cut toward zero, an odd result moved one further from zero: 3.7 gives 4, -3.2 gives -4.
SInt32 GL_RoundToEven(float x);

// Comparing.

/// True if the larger magnitude times `fraction` is above |a - b|; so two zeros are not equal.
Boolean GL_FloatsEqualByPerc(float a, float b, float fraction);
/// True if `limit` is above |a - b|.
Boolean GL_FloatsEqualByAbsDiff(float a, float b, float limit);
/// True if `b` lies outside a (1 - tolerance) to a (1 + tolerance). False, and -50 in `error` (may
/// be null; 0 otherwise), if `a` is not above 0, `b` is below 0 or `tolerance` is not from 0 to 1.
Boolean GL_Diff(double a, double b, double tolerance, SInt32* error);
/// How far the smaller magnitude falls short of the larger, as a fraction of it: 0 for equal
/// values, 1 for different signs.
float GL_FloatPercDiff(float a, float b);

// Products and quotients.

/// a b / c by the 64-bit product, cut toward zero, and its remainder (may be null); see WideDivide.
SInt32 GL_MultiplyDivide(SInt32 a, SInt32 b, SInt32 c, SInt32* remainder);
/// Fixed numbers near n / d and d / n whose product is as near to 1.0 as changing one of them by
/// one unit of its last place allows. 0, or 4 (with nothing written) if `n` or `d` is 0.
///
/// The quotients are rounded; if their product is above 1.0, one unit is taken from the one that
/// was rounded up by the larger part of itself, if below, one is added to the one that was rounded
/// down further; the change stays only if it brings the product nearer.
SInt32 GL_GetBestBinaryInverse(SInt32 n, SInt32 d, Fixed* a, Fixed* b);

// Bits, logarithms and powers.

/// Bits that hold the values 0 to `max`; 0 for 0.
SInt32 GL_GetNumBitsFromMaxValue(UInt32 max);
/// The smallest k with 2^k > `max` and 2^k >= -`min`, plus 1 if `min` is negative.
SInt32 GL_GetNumBitsFromMaxMinValue(SInt32 max, SInt32 min);
double GL_Log2(double x);
/// log2 cut down; 0 for values up to 1.
SInt32 GL_IntLog2(SInt32 value);
/// The low `bits` (0 to 32) of `value` in reverse order.
UInt32 GL_BitReverse(UInt32 bits, UInt32 value);
/// pow with the sign of the base: a negative base gives -pow(-base, exponent).
double GL_PowExt(double base, double exponent);
/// n! in 32 bits, where products above 12! wrap; 1 for numbers below 2.
SInt32 GL_factorial(SInt32 n);
/// n! / (k! (n - k)!), the quotient of GL_factorial's values as doubles: exact up to n = 12. 0 for
/// a k below 0 or above n.
double GL_binomial(SInt32 n, SInt32 k);

// Intervals.

/// The length of the intersection of a0 to a1 and b0 to b1; 0 if there is none.
SInt32 GL_GetOverlapS32(SInt32 a0, SInt32 a1, SInt32 b0, SInt32 b1);
double GL_GetOverlapF64(double a0, double a1, double b0, double b1);
/// low <= value <= high.
Boolean GL_IsNumberInInterval(SInt32 low, SInt32 value, SInt32 high);
/// Brings `value` into the bounds; of crossed bounds the high one wins.
void GL_ClampIntToBounds(SInt32 low, SInt32 high, SInt32* value);
void GL_ClampShortToBounds(SInt16 low, SInt16 high, SInt16* value);
void GL_ClampFloatToBounds(float low, float high, float* value);

// Three numbers.

void GL_GetMinMaxFrom3_U8(UInt8 a, UInt8 b, UInt8 c, UInt8* min, UInt8* max);
/// The median.
UInt8 GL_GetMedianFilteredValue3_U8(UInt8 a, UInt8 b, UInt8 c);
/// How far `b` lies outside the range of `a` and `c`: negative below it, 0 within.
SInt32 GL_GetAntiMedianValue3(SInt32 a, SInt32 b, SInt32 c);
