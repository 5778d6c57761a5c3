/// Reference-counted values: Booleans, numbers, bytes, arrays and dictionaries.
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
  kCFNumberFloat64Type = 6
};
/// A number of the kind that `value` points to.
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);
/// Stores the number as `type` at `value`; false when the value does not fit without loss (it is
/// then stored narrowed or rounded all the same).
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
CFIndex CFDataGetLength(CFDataRef data);
const UInt8* CFDataGetBytePtr(CFDataRef data);

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator);
CFIndex CFArrayGetCount(CFArrayRef array);
/// The object at `index` from 0, lent; null outside the array.
CFTypeRef CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
/// Appends; the array keeps a reference of its own.
void CFArrayAppendValue(CFMutableArrayRef array, CFTypeRef value);

/// A dictionary with string keys in the order of their first setting. It keeps references of its
/// own to keys and values.
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator);
void CFDictionarySetValue(CFMutableDictionaryRef dictionary, CFStringRef key, CFTypeRef value);
/// The value under `key`, lent; null if there is none.
CFTypeRef CFDictionaryGetValue(CFDictionaryRef dictionary, CFStringRef key);
void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, CFStringRef key);
CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary);

namespace quillmere {

/// The object as the kind asked for, or null if it is of another.
CFNumberRef AsNumber(CFTypeRef object);
CFBooleanRef AsBoolean(CFTypeRef object);
CFDictionaryRef AsDictionary(CFTypeRef object);

}  // namespace quillmere
