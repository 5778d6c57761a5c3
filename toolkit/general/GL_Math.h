/// Numbers as arrays of decimal digits, the most significant digit first, each 0 to 9.
///
/// They carry numbers between text and binary beyond the machine's ranges. The caller owns the
/// arrays, which all have `length` digits.
#pragma once

#include "base_types.h"

/// a += b and a -= b. A carry or borrow out of the first digit is dropped.
void GL_AddDigitArrays(SInt8* a, const SInt8* b, SInt16 length);
void GL_SubtractDigitArrays(SInt8* a, const SInt8* b, SInt16 length);
/// array *= factor; the carry out of the first digit is dropped. Any factor up to 14 fits the
/// 8-bit steps; larger ones are multiplied just as exactly.
void GL_MultiplyDigitArray(SInt8* array, SInt16 length, UInt8 factor);
/// 1 if a is the larger, -1 if b is, 0 if they are equal.
SInt16 GL_CompareDigitArrays(const SInt8* a, const SInt8* b, SInt16 length);
/// array /= divisor, the quotient cut to a whole number; `remainder` (may be null) takes the rest.
/// A divisor of 0 changes nothing.
void GL_DivideDigitArray(SInt8* array, SInt16 length, UInt8 divisor, UInt8* remainder);
