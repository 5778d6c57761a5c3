/// Reference-counted values: Booleans, numbers, bytes, arrays and dictionaries.
///
/// Null arguments are allowed everywhere: a null container is empty, nothing is put into it, and a
/// null value is not stored. A container is used by one thread at a time.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "reference_counted.h"

struct CFBoolean;
struct CFNumber;
struct CFDictionary;
struct CFData;
struct CFArray;
using CFBooleanRef = const CFBoolean*;
using CFNumberRef = const CFNumber*;
using CFDataRef = const CFData*;
using CFArrayRef = const CFArray*;
using CFMutableArrayRef = CFArray*;
using CFDictionaryRef = const CFDictionary*;
using CFMutableDictionaryRef = CFDictionary*;

/// Equal values: the same units, bytes, truth or date; numbers of equal value whatever their kinds;
/// arrays of equal elements in the same order; dictionaries with equal values under the same keys,
/// in any order. Objects of other kinds equal only themselves.
Boolean CFEqual(CFTypeRef a, CFTypeRef b);

/// The two Booleans; they live for ever and may be released like any object.
extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;
Boolean CFBooleanGetValue(CFBooleanRef value);

/// Kinds of numbers, by the platform's numbering.
enum CFNumberType : SInt32 {
  kCFNumberSInt8Type = 1,
  kCFNumberSInt16Type = 2,
  kCFNumberSInt32Type = 3,
  kCFNumberSInt64Type = 4,
  kCFNumberFloat32Type = 5,
  kCFNumberFloat64Type = 6,
  kCFNumberShortType = 8  ///< an SInt16
};
/// A number of the kind that `value` points to.
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);
/// Stores the number as `type` at `value`; false when the value does not fit without loss (it is
/// then stored narrowed or rounded all the same).
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);
/// The kind that the number was made of; 0 for null.
CFNumberType CFNumberGetType(CFNumberRef number);

/// A copy of `length` bytes; null for a negative length or missing bytes.
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
CFIndex CFDataGetLength(CFDataRef data);
const UInt8* CFDataGetBytePtr(CFDataRef data);

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator);
/// A new array of the same elements; null for null.
CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef allocator, CFArrayRef array);
CFIndex CFArrayGetCount(CFArrayRef array);
/// The object at `index` from 0, lent; null outside the array.
CFTypeRef CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
/// Appends; the array keeps a reference of its own.
void CFArrayAppendValue(CFMutableArrayRef array, CFTypeRef value);
/// 1 if an element equals the value.
Boolean CFArrayContainsValue(CFArrayRef array, CFTypeRef value);

/// A dictionary with string keys in the order of their first setting. It keeps references of its
/// own to keys and values.
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator);
/// A new dictionary of the same keys and values; null for null.
CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef allocator,
                                                     CFDictionaryRef dictionary);
void CFDictionarySetValue(CFMutableDictionaryRef dictionary, CFStringRef key, CFTypeRef value);
/// The value under `key`, lent; null if there is none.
CFTypeRef CFDictionaryGetValue(CFDictionaryRef dictionary, CFStringRef key);
void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, CFStringRef key);
CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary);
/// Stores all keys and values, lent and in the dictionary's order, at arrays with room for its
/// count; each array may be null.
void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, CFStringRef* keys, CFTypeRef* values);

namespace quillmere {

/// The object as the kind asked for, or null if it is of another.
CFNumberRef AsNumber(CFTypeRef object);
CFBooleanRef AsBoolean(CFTypeRef object);
CFDataRef AsData(CFTypeRef object);
CFArrayRef AsArray(CFTypeRef object);
CFDictionaryRef AsDictionary(CFTypeRef object);

/// A number of an unsigned value, kept whole above the largest SInt64 too. The caller owns it.
CFNumberRef CreateUnsignedNumber(UInt64 value);
/// True if the number is an integer; with `magnitude` and `is_negative` its value.
bool IsInteger(CFNumberRef number, UInt64* magnitude, bool* is_negative);

}  // namespace quillmere
