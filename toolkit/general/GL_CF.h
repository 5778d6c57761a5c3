/// Values in dictionaries and files in the application's bundle.
///
/// Functions with Create, Copy or Make in their name hand out what the caller releases. An Add
/// function leaves the dictionary as the only owner of the value. A Get function leaves its target
/// as it was when the key is missing, where its text does not say otherwise. Unsigned values are
/// stored as signed ones of the same width and bits.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "cf_urls.h"
#include "cf_values.h"
#include "file_references.h"

CFMutableStringRef CF_StringCreateMut();
CFMutableStringRef CF_StringCreateMutCopy(CFStringRef string);
/// A changeable copy; the string passed in is released.
CFMutableStringRef CF_StringMakeMutable(CFStringRef string);
/// A string by CFStringCreateWithFormat's rules.
CFStringRef CF_StringCreateWithFormat(CFStringRef format, ...);
CFMutableDictionaryRef CF_DictCreateMut();
CFMutableArrayRef CF_ArrayCreateMut();

void CF_AddSInt8ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt8 value);
void CF_AddSInt16ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt16 value);
void CF_AddSInt32ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt32 value);
void CF_AddSInt64ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt64 value);
void CF_AddFloat32ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Float32 value);
void CF_AddFloat64ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Float64 value);
void CF_AddEnumToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt32 value);
/// Any value but 0 is true.
void CF_AddBooleanToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Boolean value);
/// Stored as a string of the four characters, in MacRoman.
void CF_AddOSTypeToDict(CFMutableDictionaryRef dictionary, CFStringRef key, OSType value);

void CF_GetSInt8FromDict(CFDictionaryRef dictionary, CFStringRef key, SInt8* value);
void CF_GetSInt16FromDict(CFDictionaryRef dictionary, CFStringRef key, SInt16* value);
void CF_GetSInt32FromDict(CFDictionaryRef dictionary, CFStringRef key, SInt32* value);
void CF_GetSInt64FromDict(CFDictionaryRef dictionary, CFStringRef key, SInt64* value);
void CF_GetUInt8FromDict(CFDictionaryRef dictionary, CFStringRef key, UInt8* value);
void CF_GetUInt16FromDict(CFDictionaryRef dictionary, CFStringRef key, UInt16* value);
void CF_GetUInt32FromDict(CFDictionaryRef dictionary, CFStringRef key, UInt32* value);
void CF_GetUInt64FromDict(CFDictionaryRef dictionary, CFStringRef key, UInt64* value);
void CF_GetFloat32FromDict(CFDictionaryRef dictionary, CFStringRef key, Float32* value);
void CF_GetFloat64FromDict(CFDictionaryRef dictionary, CFStringRef key, Float64* value);
/// The value; -1 for a missing key.
SInt32 CF_GetEnumFromDict(CFDictionaryRef dictionary, CFStringRef key);
void CF_GetBooleanFromDict(CFDictionaryRef dictionary, CFStringRef key, Boolean* value);
/// The code; 0 for a missing key.
OSType CF_GetOSTypeFromDict(CFDictionaryRef dictionary, CFStringRef key);

/// The resource of that whole name in the main bundle; fnfErr (and a null URL, or a zeroed
/// reference) if there is none.
SInt32 CF_CopyNamedFileUrlInAppBundle(CFStringRef name, CFURLRef* url);
SInt32 CF_GetNamedFileInAppBundle(CFStringRef name, FSRef* file);

/// 0 for an object, coreFoundationUnknownErr (-4960) for null.
SInt32 CF_UnknownError(CFTypeRef object);
inline constexpr OSStatus coreFoundationUnknownErr = -4960;
