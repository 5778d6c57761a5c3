/// Text between its forms: C strings, platform strings, UTF-16 units and file names; and the
/// strings that a user sees: sizes, durations, shortened names.
///
/// Encodings. The system encoding of C strings is UTF-8 (CFStringGetSystemEncoding); the operations
/// with MacRoman or UTF8 in their name take that one. Conversions to bytes that may lose characters
/// put "?" for each one that the encoding does not have.
///
/// Ownership. Functions that give a platform string give a reference that the caller releases with
/// CFRelease; a failed conversion gives null. Heap blocks that are handed out are freed by the
/// caller (GL_DisposePtr). A mutable copy has no limit of length.
///
/// A null string or pointer is a failed conversion; a null output does nothing. Where an operation
/// changes something, that comes first among its arguments. Nothing here keeps state.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "file_references.h"
#include "text_encodings.h"

// Into platform strings.

/// A string of a C string in the system encoding, in MacRoman, or in UTF-8.
CFStringRef GL_CStrToCFStr(const char* text);
CFStringRef GL_MacRomanCStrToCFStr(const char* text);
CFStringRef GL_UTF8_CStrToCFStr(const char* text);
/// A string of `count` UTF-16 units.
CFStringRef GL_UnicodePtrToCFStr(const UniChar* characters, UInt16 count);
/// A string of `count` bytes in MacRoman.
CFStringRef GL_MacRomanTextPtrToCFStr(const void* text, SInt32 count);
/// A string of `count` bytes of old text marked with a script, language and region, each -128 where
/// it is not given. The first of these that gives a string: the encoding of the three codes; the
/// coercion of a descriptor of `TEXT` to `itxt` with that one's script and language; its coercion
/// to `ut16`. As C strings are, text is read up to its first zero byte in the first two ways.
CFStringRef GL_TextPtrToCFStr(const void* text, SInt32 count, ScriptCode script, LangCode language,
                              RegionCode region);
/// The same as mutable copies.
CFMutableStringRef GL_CStrToCFMutStr(const char* text);
CFMutableStringRef GL_MacRomanCStrToCFMutStr(const char* text);
CFMutableStringRef GL_UnicodePtrToCFMutStr(const UniChar* characters, UInt16 count);
CFMutableStringRef GL_HFSUniStr255ToCFMutStr(const HFSUniStr255* name);
/// A number as "%ld", and as "%.2f".
CFStringRef GL_NumToCFStr(SInt64 number);
CFStringRef GL_DoubleToCFStr(double number);
/// A number with that many decimals, 0 to 99.
CFStringRef GL_DoubleToCFStrPrecise(double number, SInt32 decimals);
/// A four-character code as MacRoman text: plain up to its first zero byte; in single quotes up to
/// the first character that is not printable.
CFStringRef GL_OSTypeToCFStr(OSType code);
CFStringRef GL_QuotedOSTypeToCFStr(OSType code);

// Out of platform strings.

/// Copies the string and a zero byte to a buffer of `size` bytes, in the system encoding or
/// MacRoman; 0, and an empty buffer, when it does not fit or does not convert.
Boolean GL_CFStrToCStr(CFStringRef string, char* buffer, SInt32 size);
Boolean GL_CFStrToMacRomanCStr(CFStringRef string, char* buffer, SInt32 size);
/// The same to a buffer of 256 bytes, in the system encoding, MacRoman and UTF-8.
Boolean GL_CFStrToStr255(CFStringRef string, char* buffer);
Boolean GL_CFStrToMacRomanStr255(CFStringRef string, char* buffer);
Boolean GL_CFStrToUTF8(CFStringRef string, char* buffer);
/// A new heap string in `encoding`. For a null string and for one that does not convert the result
/// is 0 and `*text` a new empty string. `*text` is null only when there is no memory.
Boolean GL_CFStrToCStrNew(CFStringRef string, CFStringEncoding encoding, char** text);
/// The code of the string's first four characters, of at most 15 bytes in MacRoman; 0 when one of
/// these does not convert.
OSType GL_CFStrToOSType(CFStringRef string);
/// A heap copy of the units, and their count; text above 65535 units is cut at a whole character.
/// Null and 0 for a null string.
void GL_CFStrToUnicodePtr(CFStringRef string, UniChar** characters, UInt16* count);
/// A heap copy of the units with a zero behind them; null for a null string.
void GL_CFStrToUnicodeStr(CFStringRef string, UniChar** text);
/// A heap copy of the units of a C string in the system encoding or MacRoman, and their count; null
/// and 0 if it does not convert.
void GL_CStrToUnicodePtr(const char* text, UniChar** characters, UInt16* count);
void GL_MacRomanCStrToUnicodePtr(const char* text, UniChar** characters, UInt16* count);
/// Re-encodes a C string into a buffer of `size` bytes, the zero byte included. What does not fit
/// is left out by whole characters. An empty string if the source is not valid in its encoding or
/// an encoding is not known.
void GL_CStrToCStr(const char* source, CFStringEncoding source_encoding, char* destination,
                   CFStringEncoding destination_encoding, SInt32 size);

// File names. A record that counts more than 255 units is taken as a failed conversion.

/// A C string as a name; count 0 if it does not convert or is longer than 255 units.
void GL_CStrToHFSUniStr255(const char* text, HFSUniStr255* name);
void GL_MacRomanCStrToHFSUniStr255(const char* text, HFSUniStr255* name);
/// A name as a C string in the system encoding in a buffer of `size` bytes; empty if it does not
/// fit.
void GL_HFSUniStr255ToCStr(const HFSUniStr255* name, char* buffer, SInt32 size);
/// Appends to a mutable string.
void GL_AppendHFSUniStr255ToCFStr(CFMutableStringRef string, const HFSUniStr255* name);
void GL_AppendCStrToCFStr(CFMutableStringRef string, const char* text);
void GL_AppendMacRomanCStrToCFStr(CFMutableStringRef string, const char* text);
/// Appends to a name; a name that would pass 255 units stays as it was.
void GL_AppendCFStrToHFSUniStr255(HFSUniStr255* name, CFStringRef string);
void GL_AppendHFSUniStr255(HFSUniStr255* name, const HFSUniStr255* appended);
void GL_AppendCStrToHFSUniStr255(HFSUniStr255* name, const char* text);
/// Compare without regard to case. A null string equals nothing, not even another null.
Boolean GL_EqualCFStr(CFStringRef a, CFStringRef b);
Boolean GL_EqualHFSUniStr255(const HFSUniStr255* a, const HFSUniStr255* b);
Boolean GL_EqualHFSUniStr255CFStr(const HFSUniStr255* name, CFStringRef string);
/// Compares count and units exactly.
Boolean GL_EqualHFSStringMP(const HFSUniStr255* a, const HFSUniStr255* b);
/// Copies the count and that many units, nothing behind them.
void GL_CopyHFSUniStr255(HFSUniStr255* destination, const HFSUniStr255* source);
/// Byte-swaps the count and its units, from native to big-endian order and back.
void GL_FlipHFSUniStr255_NtoB(HFSUniStr255* name);
void GL_FlipHFSUniStr255_BtoN(HFSUniStr255* name);
/// GL_CFStrTruncMiddle and GL_RemoveCFEndString on a name.
void GL_HFSUniStr255TruncMiddle(HFSUniStr255* name, SInt32 limit);
void GL_RemoveHFSUniStr255EndString(HFSUniStr255* name, SInt32 largest_length, UInt32 flags);

// What a user sees.

/// A count of bytes: "%lld bytes" up to 1023, then with two decimals in kB (2^10), MB (2^20) and GB
/// (2^30), the quotient in single precision.
CFStringRef GL_GetByteSizeString(SInt64 count);
/// Appends that.
void GL_AddByteSizeString(CFMutableStringRef string, SInt64 count);
/// A duration by its two largest units: "1days2h", "2h3m", "3m4s" or "4s". A negative one has "-"
/// in front of the text of its magnitude.
CFStringRef GL_DurationToCFStr(SInt64 seconds);
/// The ellipsis: by way of the system encoding, and as the character U+2026.
CFStringRef GL_MakeEllipsisCFStr();
CFStringRef GL_MakeUnicodeEllipsisCFStr();
void GL_AppendEllipsisToCFStr(CFMutableStringRef string);
/// Shortens a string of more than `limit` units by putting the ellipsis for its middle. Composed
/// characters (a letter with its marks, an emoji with modifiers or joined ones) go whole, so that
/// the result may be shorter than `limit`.
void GL_CFStrTruncMiddle(CFMutableStringRef string, SInt32 limit);
/// Appends a space and the number.
void GL_CFAppendSpaceNumber(CFMutableStringRef string, SInt64 number);

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
/// Puts `text` in front of the extension, a full stop and up to 15 characters; at the end of a name
/// without one.
void GL_AppendCFStrBeforeSuffix(CFMutableStringRef name, CFStringRef text);

/// The file's extension without its full stop; null and status 0 if it has none.
SInt32 GL_GetFileNameExtension(const FSRef* file, CFStringRef* extension);
/// Deletes the file's extension and the full stop before it from the end of `name`; a name that
/// does not end so stays.
SInt32 GL_RemoveFileNameExtension(const FSRef* file, CFMutableStringRef name);
/// The extension of a name with its full stop; the empty string if it has none. -50 for a null
/// argument or a count above 255.
SInt32 GL_GetExtensionFromFileName(const HFSUniStr255* name, CFStringRef* extension);
/// The encoding of the system's script and region; 0 (MacRoman) if they have none.
void GL_GetSystemTextEncoding(TextEncoding* encoding);
