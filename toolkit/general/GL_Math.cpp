#include "GL_Math.h"

namespace {

/// a += sign * b, from the last digit to the first.
void Accumulate(SInt8* a, const SInt8* b, SInt16 length, int sign) {
  int carry = 0;
  for (int i = length - 1; i >= 0; --i) {
    const int digit = a[i] + sign * b[i] + carry;
    carry = digit > 9 ? 1 : digit < 0 ? -1 : 0;
    a[i] = static_cast<SInt8>(digit - 10 * carry);
  }
}

}  // namespace

void GL_AddDigitArrays(SInt8* a, const SInt8* b, SInt16 length) {
  Accumulate(a, b, length, 1);
}

void GL_SubtractDigitArrays(SInt8* a, const SInt8* b, SInt16 length) {
  Accumulate(a, b, length, -1);
}

void GL_MultiplyDigitArray(SInt8* array, SInt16 length, UInt8 factor) {
  int carry = 0;
  for (int i = length - 1; i >= 0; --i) {
    const int value = factor * array[i] + carry;
    array[i] = static_cast<SInt8>(value % 10);
    carry = value / 10;
  }
}

SInt16 GL_CompareDigitArrays(const SInt8* a, const SInt8* b, SInt16 length) {
  for (int i = 0; i < length; ++i) {
    if (a[i] != b[i]) return a[i] > b[i] ? 1 : -1;
  }
  return 0;
}

void GL_DivideDigitArray(SInt8* array, SInt16 length, UInt8 divisor, UInt8* remainder) {
  if (divisor == 0) return;
  int rest = 0;
  for (int i = 0; i < length; ++i) {
    const int current = array[i] + 10 * rest;
    array[i] = static_cast<SInt8>(current / divisor);
    rest = current % divisor;
  }
  if (remainder != nullptr) *remainder = static_cast<UInt8>(rest);
}
