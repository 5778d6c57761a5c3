/// Text between its forms: C strings, platform strings, UTF-16 units and file names.
///
/// Functions that hand out a platform string give a reference that the caller releases; a failed
/// conversion gives null.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "file_references.h"

/// A string of a C string in the system encoding, in MacRoman, or in UTF-8.
CFStringRef GL_CStrToCFStr(const char* text);
CFStringRef GL_MacRomanCStrToCFStr(const char* text);
CFStringRef GL_UTF8_CStrToCFStr(const char* text);
/// A string of `count` UTF-16 units.
CFStringRef GL_UnicodePtrToCFStr(const UniChar* characters, UInt16 count);
/// A number as "%ld", and as "%.2f".
CFStringRef GL_NumToCFStr(SInt64 number);
CFStringRef GL_DoubleToCFStr(double number);
/// A number with that many decimals, 0 to 99.
CFStringRef GL_DoubleToCFStrPrecise(double number, SInt32 decimals);

/// Copies the string and a zero byte to a buffer of `size` bytes, in the system encoding or
/// MacRoman; 0 when it does not fit or does not convert.
Boolean GL_CFStrToCStr(CFStringRef string, char* buffer, SInt32 size);
Boolean GL_CFStrToMacRomanCStr(CFStringRef string, char* buffer, SInt32 size);

/// Compare without regard to case. A null string equals nothing, not even another null.
Boolean GL_EqualCFStr(CFStringRef a, CFStringRef b);
Boolean GL_EqualHFSUniStr255(const HFSUniStr255* a, const HFSUniStr255* b);

/// Stop characters of a name's end.
inline constexpr UInt32 kNameEndAtFullStop = 1;
inline constexpr UInt32 kNameEndAtSpace = 2;

/// The end of a name from the last stop character on, that included, if it stands within the last
/// `largest_length` characters; otherwise the empty string. `length` (may be null) takes its
/// length.
CFStringRef GL_CopyCFNameEndString(CFStringRef name, SInt32* length, SInt32 largest_length,
                                   UInt32 flags);
/// Deletes that end from `name`.
void GL_RemoveCFEndString(CFMutableStringRef name, SInt32 largest_length, UInt32 flags);

/// The file's extension without its full stop; null and status 0 if it has none.
SInt32 GL_GetFileNameExtension(const FSRef* file, CFStringRef* extension);
/// Deletes the file's extension and the full stop before it from the end of `name`; a name without
/// one stays.
SInt32 GL_RemoveFileNameExtension(const FSRef* file, CFMutableStringRef name);
