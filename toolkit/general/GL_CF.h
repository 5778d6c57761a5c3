/// Dictionaries of toolkit values, and files of the application's bundle.
#pragma once

#include "base_types.h"
#include "cf_urls.h"
#include "cf_values.h"
#include "file_references.h"

/// A new empty dictionary; the caller owns it.
CFMutableDictionaryRef CF_DictCreateMut();

/// Put a number under a key; the dictionary is the only owner of the value. 4008 for a null
/// dictionary or key.
SInt32 CF_AddSInt32ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt32 value);
SInt32 CF_AddSInt64ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt64 value);
SInt32 CF_AddFloat32ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Float32 value);
SInt32 CF_AddFloat64ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Float64 value);

/// The bundle's resource of that whole name: its reference, or its URL, which the caller owns. -43
/// if it isn't there.
SInt32 CF_GetNamedFileInAppBundle(CFStringRef name, FSRef* file);
SInt32 CF_CopyNamedFileUrlInAppBundle(CFStringRef name, CFURLRef* url);
