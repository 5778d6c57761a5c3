/// Toolkit values as property lists: in dictionaries and arrays, in the application's preferences,
/// and in XML files; and files of the application's bundle.
///
/// One form for each type of value, so that what one program of the toolkit has stored reads back
/// in another. An unsigned number is stored as the signed one of the same width and bits.
///
/// Ownership. What a function with Create, Copy or Make in its name gives, the caller releases with
/// CFRelease. An Add function leaves the dictionary as the only owner of the value. Heap blocks are
/// freed with GL_DisposePtr, handles with GL_DisposeHandle.
///
/// A null dictionary, array or key is one without a value; to add to it, or to store at a null
/// target, does nothing. A value of another kind than a function reads counts as missing. A
/// dictionary is used by one thread at a time.
#pragma once

#include <cstdarg>

#include "base_types.h"
#include "cf_attributed_strings.h"
#include "cf_bundle.h"
#include "cf_dates.h"
#include "cf_urls.h"
#include "cf_values.h"
#include "file_references.h"
#include "memory_handles.h"
#include "property_lists.h"
#include "regions.h"

// Strings, dictionaries and arrays.

/// An empty, or copied, string that may be changed; null for a null source.
CFMutableStringRef CF_StringCreateMut();
CFMutableStringRef CF_StringCreateMutCopy(CFStringRef string);
/// A copy that may be changed; the string passed in is released.
CFMutableStringRef CF_StringMakeMutable(CFStringRef string);
/// A formatted string; the format is that of CFStringCreateWithFormat.
CFStringRef CF_StringCreateWithFormat(CFStringRef format, ...);
CFMutableStringRef CF_StringCreateMutableWithFormat(CFStringRef format, ...);

/// Strings with attributes. The last makes one that may be changed and holds `string`.
CFAttributedStringRef CF_AttrStrCreate(CFStringRef string, CFDictionaryRef attributes);
CFMutableAttributedStringRef CF_AttrStrCreateMut();
CFMutableAttributedStringRef CF_AttrStrCreateMutWithStr(CFStringRef string);

/// A dictionary of `count` keys and values; empty for a count that is not above 0.
CFDictionaryRef CF_DictCreate(const CFStringRef* keys, const CFTypeRef* values, CFIndex count);
CFMutableDictionaryRef CF_DictCreateMutWithValues(const CFStringRef* keys, const CFTypeRef* values,
                                                  CFIndex count);
CFMutableDictionaryRef CF_DictCreateMut();
/// A copy that may be changed, of the same keys and values; null for a null source.
CFMutableDictionaryRef CF_DictCreateMutCopy(CFDictionaryRef dictionary);
/// The same; the dictionary passed in is released.
CFMutableDictionaryRef CF_DictMakeMutable(CFDictionaryRef dictionary);
/// A copy, which may be changed, of the dictionary under `key`; null for a missing key.
CFMutableDictionaryRef CF_CopyMutDictFromDict(CFDictionaryRef dictionary, CFStringRef key);
/// A heap block of the keys, which are lent, and their count; null and 0 for an empty dictionary.
void CF_DictGetKeys(CFDictionaryRef dictionary, CFStringRef** keys, CFIndex* count);

CFMutableArrayRef CF_ArrayCreateMut();
CFMutableArrayRef CF_ArrayCreateMutCopy(CFArrayRef array);
CFMutableArrayRef CF_ArrayMakeMutable(CFArrayRef array);
/// 1 if the object is an array with an element that equals `value`.
Boolean CF_ArrayValueExists(CFTypeRef object, CFTypeRef value);

// Numbers outside a dictionary. Reading does nothing for a null number.

CFNumberRef CF_CreateUInt8Ref(UInt8 value);
CFNumberRef CF_CreateUInt16Ref(UInt16 value);
CFNumberRef CF_CreateUInt32Ref(UInt32 value);
CFNumberRef CF_CreateUInt64Ref(UInt64 value);
CFNumberRef CF_NumberCreateFromEnum(SInt32 value);
void CF_GetUInt8FromNumberRef(CFNumberRef number, UInt8* value);
void CF_GetUInt16FromNumberRef(CFNumberRef number, UInt16* value);
void CF_GetUInt32FromNumberRef(CFNumberRef number, UInt32* value);
void CF_GetUInt64FromNumberRef(CFNumberRef number, UInt64* value);
/// The number's value; -1 for a null one.
SInt32 CF_GetEnumFromNumberRef(CFNumberRef number);

// Values in a dictionary. Where nothing else is said, a missing key leaves the target as it was.

void CF_AddSInt8ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt8 value);
void CF_AddSInt16ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt16 value);
void CF_AddSInt32ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt32 value);
void CF_AddSInt64ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt64 value);
void CF_AddFloat32ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Float32 value);
void CF_AddFloat64ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Float64 value);
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

/// An enumeration's value as a 32-bit number; -1 for a missing key.
void CF_AddEnumToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt32 value);
SInt32 CF_GetEnumFromDict(CFDictionaryRef dictionary, CFStringRef key);
/// Any byte but 0 is true.
void CF_AddBooleanToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Boolean value);
void CF_GetBooleanFromDict(CFDictionaryRef dictionary, CFStringRef key, Boolean* value);
/// A string of the code's four MacRoman characters. Of any string the first four count, zero-filled
/// behind its end; 0 for a missing key and for characters that MacRoman does not have.
void CF_AddOSTypeToDict(CFMutableDictionaryRef dictionary, CFStringRef key, OSType value);
OSType CF_GetOSTypeFromDict(CFDictionaryRef dictionary, CFStringRef key);

/// An array of top, left, bottom and right.
void CF_AddRectToDict(CFMutableDictionaryRef dictionary, CFStringRef key, const Rect* rect);
void CF_GetRectFromDict(CFDictionaryRef dictionary, CFStringRef key, Rect* rect);
void CF_GetPointFromDict(CFDictionaryRef dictionary, CFStringRef key, Point* point);

/// A dictionary of the 16-bit numbers "Red", "Green" and "Blue"; null for a null colour.
CFDictionaryRef CF_CreateRGBDict(const RGBColor* color);
/// A missing channel is left as it was.
void CF_GetRGBFromRGBDict(CFDictionaryRef rgb, RGBColor* color);
/// The colour of the dictionary under `key`; all 0 if that is missing.
void CF_GetRGBFromDict(CFDictionaryRef dictionary, CFStringRef key, RGBColor* color);

/// A dictionary of the seconds as "Value", and as a text for the file's reader as "Descr". 0 for a
/// missing key.
void CF_AddDurationToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt64 seconds);
void CF_GetDurationFromDict(CFDictionaryRef dictionary, CFStringRef key, SInt64* seconds);
/// In a file a date is kept to the whole second.
void CF_AddDateToDict(CFMutableDictionaryRef dictionary, CFStringRef key, CFAbsoluteTime time);
void CF_GetDateFromDict(CFDictionaryRef dictionary, CFStringRef key, CFAbsoluteTime* time);

/// A string; length 0 for a missing key and for a string of more than 255 units.
void CF_AddHFSNameToDict(CFMutableDictionaryRef dictionary, CFStringRef key,
                         const HFSUniStr255* name);
void CF_GetHFSNameFromDict(CFDictionaryRef dictionary, CFStringRef key, HFSUniStr255* name);
/// Data of the bytes without the zero byte. The buffer holds the stored length and one byte more;
/// the empty string for a missing key.
void CF_AddCStringToDict(CFMutableDictionaryRef dictionary, CFStringRef key, const char* text);
void CF_GetCStringFromDict(CFDictionaryRef dictionary, CFStringRef key, char* text);
/// A string. The buffer has 256 bytes: longer text is cut, "?" stands for a character that MacRoman
/// does not have; the empty string for a missing key.
void CF_AddMacRomanCStringToDict(CFMutableDictionaryRef dictionary, CFStringRef key,
                                 const char* text);
void CF_GetMacRomanCStringFromDict(CFDictionaryRef dictionary, CFStringRef key, char* text);

/// Bytes. Without a key, and when there is no memory, null and size 0; for no bytes a null block,
/// but a handle of size 0.
void CF_AddDataToDict(CFMutableDictionaryRef dictionary, CFStringRef key, const void* bytes,
                      Size size);
void CF_AddDataToDictFromHandle(CFMutableDictionaryRef dictionary, CFStringRef key, Handle handle);
void CF_GetDataFromDict(CFDictionaryRef dictionary, CFStringRef key, void** bytes, Size* size);
void CF_GetDataFromDictAsHandle(CFDictionaryRef dictionary, CFStringRef key, Handle* handle,
                                Size* size);
/// Copies between data and handles; null for null, and when there is no memory.
Handle CF_DataRefToHandle(CFDataRef data);
CFDataRef CF_HandleToDataRef(Handle handle);

// Arrays. Reading stores as many entries as the array holds, for which the caller has room; an
// entry of another kind leaves its place as it was.

/// Top, left, bottom, right. An array of any other count leaves the target as it was.
CFArrayRef CF_CreateRectCFArray(const Rect* rect);
void CF_GetRectFromCFArray(CFArrayRef array, Rect* rect);
/// First h, then v.
CFArrayRef CF_CreatePointCFArray(const Point* point);
void CF_GetPointFromCFArray(CFArrayRef array, Point* point);
/// Nine numbers, row after row.
CFArrayRef CF_CreateMatrixCFArray(const MatrixRecord* matrix);
void CF_GetMatrixFromCFArray(CFArrayRef array, MatrixRecord* matrix);
CFArrayRef CF_CreateSInt32Array(const SInt32* values, CFIndex count);
void CF_GetSInt32ValuesFromArray(CFArrayRef array, SInt32* values, CFIndex* count);
CFArrayRef CF_CreateBooleanArray(const Boolean* values, CFIndex count);
void CF_GetBooleanValuesFromArray(CFArrayRef array, Boolean* values, CFIndex* count);
CFArrayRef CF_CreateOSTypeArray(const OSType* codes, CFIndex count);
void CF_GetOSTypesFromArray(CFArrayRef array, OSType* codes, CFIndex* count);

/// A dictionary of a region, which the caller releases: its bounds as a rectangle's array under
/// "Bounds", and for one that is no rectangle its flat form (GL_FlattenRgnBitMap) under "Bits".
/// Null without memory.
CFDictionaryRef CF_CreateRgnDict(RgnHandle region);
/// A new region of such a dictionary, the caller's to dispose of. Without bounds `*region` stays as
/// it was; bits that are damaged are left out as far as they go wrong.
void CF_GetRgnFromDict(CFDictionaryRef dictionary, RgnHandle* region);

// Files and folders, kept as alias records.

/// Data of a new alias of the object; null after a failure, which is a status of the files family.
SInt32 CF_FileToAliasDataRef(const FSRef* file, CFDataRef* data);
/// Finds the object of an alias. -43 for null data; the reference is cleared after any failure.
/// `was_changed` (may be null) tells whether the record should be made anew.
SInt32 CF_AliasDataRefToFile(CFDataRef data, FSRef* file, Boolean* was_changed);
SInt32 CF_AddFileObjectToDict(CFMutableDictionaryRef dictionary, CFStringRef key,
                              const FSRef* file);
SInt32 CF_ResolveAliasInDict(CFDictionaryRef dictionary, CFStringRef key, FSRef* file,
                             Boolean* was_changed);
/// The same, and stores a new alias where the old one should be made anew. `was_changed` is not
/// null.
SInt32 CF_UpdateAliasInDict(CFMutableDictionaryRef dictionary, CFStringRef key, FSRef* file,
                            Boolean* was_changed);

// Preferences of the application. Nothing reaches the disk before CF_SavePreferencesToDisk.

void CF_SaveValueInPrefs(CFStringRef key, CFPropertyListRef value);
void CF_SaveDataInPrefs(CFStringRef key, const void* bytes, Size size);
void CF_RemoveValueFromPrefs(CFStringRef key);
/// The value, or null if there is none.
CFPropertyListRef CF_CopyValueFromPrefs(CFStringRef key);
/// A copy, which may be changed, of the dictionary that is stored; without one null, or an empty
/// dictionary.
CFMutableDictionaryRef CF_CopyMutDictFromPrefs(CFStringRef key);
CFMutableDictionaryRef CF_CopyOrCreateMutDictFromPrefs(CFStringRef key);
/// 0 if that fails; what was not written is tried again the next time.
Boolean CF_SavePreferencesToDisk();

// Property-list files, and the bundle.

/// Replaces the file by the list as XML. A status of the files family; -50 for a list that has no
/// XML form.
SInt32 CF_WritePropertyListToXMLFile(CFPropertyListRef list, CFURLRef url);
/// The list of a file. Null with 0 for an empty file, 10032 for one that holds no property list;
/// else a status of the files family.
SInt32 CF_ReadPropertyListFromXMLFile(CFURLRef url, CFPropertyListRef* list);
/// Puts bytes under `key` into the property-list file of that name in the bundle, in the dictionary
/// under `section` if that is not null. A file that cannot be read counts as empty. 4008 if there
/// are no bytes to store, 10023 for a file that the bundle does not have, else the status of
/// writing.
SInt32 CF_AddDataToResourceFileInAppBundle(CFStringRef file_name, CFStringRef section,
                                           const void* bytes, Size size, CFStringRef key);
/// The bundle's resource of that whole name: its reference, or its URL, which the caller owns. -43
/// if it isn't there.
SInt32 CF_GetNamedFileInAppBundle(CFStringRef name, FSRef* file);
SInt32 CF_CopyNamedFileUrlInAppBundle(CFStringRef name, CFURLRef* url);
/// The bundle of a system framework, which the caller owns, by its name without ".framework". A
/// status of the files family if it isn't there; 10028 or 10029 if it is no bundle.
SInt32 CF_LoadSystemFrameworkByName(CFStringRef name, CFBundleRef* bundle);

/// A creation that failed.
inline constexpr SInt32 coreFoundationUnknownErr = -4960;
/// 0 for an object, coreFoundationUnknownErr for null.
SInt32 CF_UnknownError(CFTypeRef object);
/// The statuses 10035 to 10038 for the results -1 to -4 of a message port; 0 for all else.
SInt32 CF_MapMessagePortErr(SInt32 result);

// Lines on standard output. Text above 255 bytes is cut.

/// The formatted text behind the local time.
void CF_PrintWithTime(CFStringRef format, ...);
void CF_PrintWithTimeVA(CFStringRef format, std::va_list arguments);
/// Today's date, and the time.
void CF_PrintDate();
void CF_PrintTime();
