/// Text between C strings, platform strings, UTF-16 arrays and file names, and texts for display.
///
/// Functions that hand out a string hand out a reference that the caller releases; those that hand
/// out a block, one that the caller frees with GL_DisposePtr. A conversion that fails gives null,
/// an empty string, a count of 0 or false. "System encoding" is UTF-8. Bytes that can't be
/// expressed are replaced by "?".
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "file_references.h"

CFStringRef GL_CStrToCFStr(const char* text);
CFStringRef GL_MacRomanCStrToCFStr(const char* text);
CFStringRef GL_UTF8_CStrToCFStr(const char* text);
CFStringRef GL_UnicodePtrToCFStr(const UniChar* characters, UInt16 count);
CFStringRef GL_MacRomanTextPtrToCFStr(const UInt8* bytes, CFIndex count);
CFMutableStringRef GL_CStrToCFMutStr(const char* text);
CFMutableStringRef GL_MacRomanCStrToCFMutStr(const char* text);
CFMutableStringRef GL_UnicodePtrToCFMutStr(const UniChar* characters, UInt16 count);
CFMutableStringRef GL_HFSUniStr255ToCFMutStr(const HFSUniStr255* name);
/// The number in decimal.
CFStringRef GL_NumToCFStr(SInt64 number);
/// The number with two, or `decimals`, digits behind the point.
CFStringRef GL_DoubleToCFStr(double number);
CFStringRef GL_DoubleToCFStrPrecise(double number, SInt32 decimals);
/// The four characters of a code, read as MacRoman, plain or in single quotes.
CFStringRef GL_OSTypeToCFStr(OSType code);
CFStringRef GL_QuotedOSTypeToCFStr(OSType code);

/// The string with a zero byte in `buffer` of `size` bytes; false if it does not fit.
Boolean GL_CFStrToCStr(CFStringRef string, char* buffer, CFIndex size);
Boolean GL_CFStrToMacRomanCStr(CFStringRef string, char* buffer, CFIndex size);
/// The string in UTF-8 with a zero byte, in a buffer of 256 bytes.
Boolean GL_CFStrToUTF8(CFStringRef string, char* buffer);
/// A new C string; an empty one, and false, for a null string or one that does not convert.
Boolean GL_CFStrToCStrNew(CFStringRef string, CFStringEncoding encoding, char** text);
/// A new array of the string's units; without, or with, a zero unit behind them.
void GL_CFStrToUnicodePtr(CFStringRef string, UniChar** characters, UInt16* count);
void GL_CFStrToUnicodeStr(CFStringRef string, UniChar** characters);
/// A new array of the text's units; null if it does not convert.
void GL_CStrToUnicodePtr(const char* text, UniChar** characters, UInt16* count);
void GL_MacRomanCStrToUnicodePtr(const char* text, UniChar** characters, UInt16* count);
/// Re-encodes `source` to at most `size` bytes, the zero byte included.
void GL_CStrToCStr(const char* source, CFStringEncoding source_encoding, char* destination,
                   CFStringEncoding destination_encoding, CFIndex size);

void GL_CStrToHFSUniStr255(const char* text, HFSUniStr255* name);
void GL_MacRomanCStrToHFSUniStr255(const char* text, HFSUniStr255* name);
Boolean GL_HFSUniStr255ToCStr(const HFSUniStr255* name, char* buffer, CFIndex size);
void GL_AppendHFSUniStr255ToCFStr(CFMutableStringRef string, const HFSUniStr255* name);
void GL_AppendCFStrToHFSUniStr255(HFSUniStr255* name, CFStringRef string);
void GL_AppendHFSUniStr255(HFSUniStr255* name, const HFSUniStr255* appended);
void GL_AppendCStrToHFSUniStr255(HFSUniStr255* name, const char* text);
void GL_AppendCStrToCFStr(CFMutableStringRef string, const char* text);
void GL_AppendMacRomanCStrToCFStr(CFMutableStringRef string, const char* text);
/// 1 if equal, ignoring case.
Boolean GL_EqualHFSUniStr255(const HFSUniStr255* a, const HFSUniStr255* b);
Boolean GL_EqualHFSUniStr255CFStr(const HFSUniStr255* a, CFStringRef b);
/// 1 if equal, unit for unit.
Boolean GL_EqualHFSStringMP(const HFSUniStr255* a, const HFSUniStr255* b);
/// 1 if equal, ignoring case; 0 if either is null.
Boolean GL_EqualCFStr(CFStringRef a, CFStringRef b);
/// Copies the count and that many units, nothing behind them.
void GL_CopyHFSUniStr255(HFSUniStr255* destination, const HFSUniStr255* source);
/// Swaps the bytes of count and units, from native to big-endian order and back.
void GL_FlipHFSUniStr255_NtoB(HFSUniStr255* name);
void GL_FlipHFSUniStr255_BtoN(HFSUniStr255* name);
/// GL_CFStrTruncMiddle and GL_RemoveCFEndString on a name.
void GL_HFSUniStr255TruncMiddle(HFSUniStr255* name, CFIndex limit);
void GL_RemoveHFSUniStr255EndString(HFSUniStr255* name, CFIndex limit, UInt32 flags);

/// A size for display: "5 bytes", "1.00 kB", "1.00 MB", "1.00 GB" (powers of 1024).
CFStringRef GL_GetByteSizeString(SInt64 count);
void GL_AddByteSizeString(CFMutableStringRef string, SInt64 count);
/// A duration for display by its two largest units: "1days2h", "2h3m", "3m4s", "4s".
CFStringRef GL_DurationToCFStr(SInt64 seconds);
/// The ellipsis character.
CFStringRef GL_MakeEllipsisCFStr();
CFStringRef GL_MakeUnicodeEllipsisCFStr();
void GL_AppendEllipsisToCFStr(CFMutableStringRef string);
/// Shortens the string to at most `limit` units by an ellipsis in its middle; composed characters
/// are never split.
void GL_CFStrTruncMiddle(CFMutableStringRef string, CFIndex limit);
/// Appends a blank and the number.
void GL_CFAppendSpaceNumber(CFMutableStringRef string, SInt64 number);

/// Characters at which the end of a name starts.
inline constexpr UInt32 kGL_StopAtPeriod = 1;
inline constexpr UInt32 kGL_StopAtSpace = 2;
/// The end of a name from its last stop character on, that included; an empty string and length 0
/// when there is none or the end has more than `largest_length` units. `length` may be null.
CFStringRef GL_CopyCFNameEndString(CFStringRef string, CFIndex* length, CFIndex largest_length,
                                   UInt32 flags);
/// Deletes that end.
void GL_RemoveCFEndString(CFMutableStringRef string, CFIndex largest_length, UInt32 flags);
/// Inserts text before the name's extension of up to 16 units.
void GL_AppendCFStrBeforeSuffix(CFMutableStringRef string, CFStringRef text);
/// The extension of the file's name without its period; null, with status 0, if it has none.
SInt32 GL_GetFileNameExtension(const FSRef* file, CFStringRef* extension);
/// Deletes the file's extension and the period before it from the end of `name`.
SInt32 GL_RemoveFileNameExtension(const FSRef* file, CFMutableStringRef name);
/// The extension of a name with its period; an empty string if it has none.
SInt32 GL_GetExtensionFromFileName(CFStringRef name, CFStringRef* extension);
/// The encoding of text in system encoding.
SInt32 GL_GetSystemTextEncoding(CFStringEncoding* encoding);
