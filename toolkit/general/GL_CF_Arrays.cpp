#include <algorithm>
#include <span>

#include "GL_CF.h"
#include "GL_CF_private.h"

namespace {

using quillmere::Owned;

template <class Ref>
void Append(CFMutableArrayRef array, Ref made) {
  const Owned<Ref> value(made);
  CFArrayAppendValue(array, value.get());
}

template <class T>
CFArrayRef CreateNumbers(CFNumberType type, std::span<const T> values) {
  CFMutableArrayRef array = CF_ArrayCreateMut();
  for (const T& value : values)
    Append(array, CFNumberCreate(kCFAllocatorDefault, type, &value));
  return array;
}

/// The values, empty for a null pointer or a count below 1.
template <class T>
std::span<const T> ValuesOf(const T* values, CFIndex count) {
  if (!values || count < 1) return {};
  return {values, static_cast<std::size_t>(count)};
}

/// Stores the numbers of an array of exactly so many.
template <class T>
bool GetNumbers(CFArrayRef array, CFNumberType type, std::span<T> values) {
  if (CFArrayGetCount(array) != std::ssize(values)) return false;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const CFTypeRef entry = CFArrayGetValueAtIndex(array, static_cast<CFIndex>(i));
    CFNumberGetValue(quillmere::AsNumber(entry), type, &values[i]);
  }
  return true;
}

/// Calls `store` with each entry and its index; tells the number of entries.
template <class Store>
void ForEach(CFArrayRef array, const void* values, CFIndex* count, Store store) {
  const CFIndex number = CFArrayGetCount(array);
  for (CFIndex i = 0; values && i < number; ++i)
    store(CFArrayGetValueAtIndex(array, i), i);
  if (count) *count = number;
}

}  // namespace

namespace quillmere::cf {

CFStringRef CreateStringOfOSType(OSType code) {
  const UInt8 bytes[4] = {static_cast<UInt8>(code >> 24), static_cast<UInt8>(code >> 16),
                          static_cast<UInt8>(code >> 8), static_cast<UInt8>(code)};
  return CFStringCreateWithBytes(kCFAllocatorDefault, bytes, 4, kCFStringEncodingMacRoman, 0);
}

OSType OSTypeOfString(CFStringRef string) {
  const CFIndex length = std::min<CFIndex>(CFStringGetLength(string), 4);
  UInt8 bytes[4] = {};
  CFIndex used = 0;
  CFStringGetBytes(string, {0, length}, kCFStringEncodingMacRoman, 0, 0, bytes, 4, &used);
  if (used != length) return 0;
  return OSType{bytes[0]} << 24 | OSType{bytes[1]} << 16 | OSType{bytes[2]} << 8 | bytes[3];
}

}  // namespace quillmere::cf

CFArrayRef CF_CreateRectCFArray(const Rect* rect) {
  if (!rect) return nullptr;
  const SInt16 values[] = {rect->top, rect->left, rect->bottom, rect->right};
  return CreateNumbers<SInt16>(kCFNumberShortType, values);
}

void CF_GetRectFromCFArray(CFArrayRef array, Rect* rect) {
  if (!rect) return;
  SInt16 values[] = {rect->top, rect->left, rect->bottom, rect->right};
  if (GetNumbers<SInt16>(array, kCFNumberShortType, values))
    *rect = {values[0], values[1], values[2], values[3]};
}

CFArrayRef CF_CreatePointCFArray(const Point* point) {
  if (!point) return nullptr;
  const SInt16 values[] = {point->h, point->v};
  return CreateNumbers<SInt16>(kCFNumberShortType, values);
}

void CF_GetPointFromCFArray(CFArrayRef array, Point* point) {
  if (!point) return;
  SInt16 values[] = {point->h, point->v};
  if (GetNumbers<SInt16>(array, kCFNumberShortType, values))
    *point = {.v = values[1], .h = values[0]};
}

CFArrayRef CF_CreateMatrixCFArray(const MatrixRecord* matrix) {
  if (!matrix) return nullptr;
  return CreateNumbers<SInt32>(kCFNumberSInt32Type, std::span(&matrix->matrix[0][0], 9));
}

void CF_GetMatrixFromCFArray(CFArrayRef array, MatrixRecord* matrix) {
  if (matrix) GetNumbers<SInt32>(array, kCFNumberSInt32Type, std::span(&matrix->matrix[0][0], 9));
}

CFArrayRef CF_CreateSInt32Array(const SInt32* values, CFIndex count) {
  return CreateNumbers(kCFNumberSInt32Type, ValuesOf(values, count));
}

void CF_GetSInt32ValuesFromArray(CFArrayRef array, SInt32* values, CFIndex* count) {
  ForEach(array, values, count, [values](CFTypeRef entry, CFIndex i) {
    CFNumberGetValue(quillmere::AsNumber(entry), kCFNumberSInt32Type, &values[i]);
  });
}

CFArrayRef CF_CreateBooleanArray(const Boolean* values, CFIndex count) {
  CFMutableArrayRef array = CF_ArrayCreateMut();
  for (const Boolean value : ValuesOf(values, count))
    CFArrayAppendValue(array, value ? kCFBooleanTrue : kCFBooleanFalse);
  return array;
}

void CF_GetBooleanValuesFromArray(CFArrayRef array, Boolean* values, CFIndex* count) {
  ForEach(array, values, count, [values](CFTypeRef entry, CFIndex i) {
    const CFBooleanRef truth = quillmere::AsBoolean(entry);
    if (truth) values[i] = CFBooleanGetValue(truth);
  });
}

CFArrayRef CF_CreateOSTypeArray(const OSType* codes, CFIndex count) {
  CFMutableArrayRef array = CF_ArrayCreateMut();
  for (const OSType code : ValuesOf(codes, count))
    Append(array, quillmere::cf::CreateStringOfOSType(code));
  return array;
}

void CF_GetOSTypesFromArray(CFArrayRef array, OSType* codes, CFIndex* count) {
  ForEach(array, codes, count, [codes](CFTypeRef entry, CFIndex i) {
    const CFStringRef string = quillmere::AsString(entry);
    if (string) codes[i] = quillmere::cf::OSTypeOfString(string);
  });
}
