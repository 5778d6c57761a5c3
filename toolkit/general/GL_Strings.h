/// Classic strings: zero-terminated bytes, one byte a character, worked on in place.
///
/// A classic string holds at most 255 characters, a name at most 63; buffers are the caller's and
/// have that room (256 and 64 bytes) unless a line says otherwise. An operation whose result would
/// pass its limit leaves the string as it was. The ellipsis is the single byte 0xC9, as in
/// MacRoman; other bytes above 127 are neither letters nor printable.
///
/// Lengths and indices count bytes from 0 where no other start is named. A null string counts as
/// empty; a null output does nothing. GL_Strings_Numbers.h has the numbers in text,
/// GL_Strings_Words.h words and lines, GL_Strings_Reports.h the text reports.
#pragma once

#include "base_types.h"

/// The ellipsis in classic strings.
inline constexpr char kEllipsisCharacter = static_cast<char>(0xC9);
inline constexpr SInt32 kLongestCString = 255;
inline constexpr SInt32 kLongestNameCString = 63;

// Copies, comparisons, parts.

/// Copies with the zero byte; the destination has the source's room.
void GL_CopyStringMP(const char* source, char* destination);
/// True if the strings are equal.
Boolean GL_EqualCStr(const char* a, const char* b);
/// True if they are equal up to and including `last_index`, or up to an earlier end of both.
Boolean GL_EqualCStringMP(const char* a, const char* b, SInt16 last_index);
/// Cuts `count` characters from the end, at most all.
void GL_RemoveStringEnd(char* string, SInt16 count);
/// Copies the last `count` characters, at most all.
void GL_GetStringEnd(const char* string, SInt16 count, char* out);
/// Removes the character at `position` from 1; a position outside the string removes nothing.
void GL_RemoveCharacterFromString(char* string, SInt16 position);
/// Wraps the string in double quote characters.
void GL_PutInParentheses(char* string);

// Appending.

/// Appends a character within 31, cutting the string in the middle where needed.
void GL_AppendCharacter31(char* string, char character);
/// Appends `text` whole. If the result would pass `limit`, at most 255, the text takes the place of
/// the string's end so that the total is `limit`. A text above `limit` changes nothing.
void GL_SafeAppendString(char* string, const char* text, SInt16 limit);
/// Puts `text` first, cut so that the total stays within 255.
void GL_PrependString(char* string, const char* text);
/// Append a full stop, a space, or nothing, and the number.
void GL_AppendPeriodNumber(char* string, SInt32 number);
void GL_AppendSpaceNumber(char* string, SInt32 number);
void GL_AddNumToStr(char* string, SInt32 number);
/// Appends a space and the number. With L the string's length, a string longer than `limit` - L - 1
/// is first cut to that many characters.
void GL_SafeAppendSpaceNumberTruncEnd(char* string, SInt32 number, SInt16 limit);
/// Appends `postfix`, so that the result has at most `limit` characters. A string that is too long
/// ends in the ellipsis (`mode` 0), or is cut in its middle (any other mode). Nothing happens if
/// the postfix is longer than `limit` - 3 or `limit` is above 255.
void GL_AddPostfix(char* string, const char* postfix, SInt16 limit, SInt16 mode);

// Cutting in the middle.

/// Puts the ellipsis for the middle of a string, so that it loses `count` characters but keeps at
/// least `shortest_length`. Nothing happens if that is below 3.
void GL_TruncStringMiddle(char* string, SInt16 shortest_length, SInt16 count);
/// Makes one more character disappear from a string that may hold the ellipsis already: it replaces
/// the middle character, or the character beside it on its longer side goes. Strings below 4
/// characters stay.
void GL_TruncStringMiddleByOneChar(char* string, char ellipsis);

// Names that carry a number behind a last space.

/// The number behind the last space, which is looked for from index 2 on. `text` (may be null)
/// takes its characters, `number` (may be null) its value, at the limits of 32 bits when it is
/// outside. GL_NoNameEndErr (10008) without such a space, GL_NoNameIndexErr (10009) if anything but
/// digits,
/// "+" and "-" stands behind it; the outputs are then empty and 0. A string of 0 or 1 characters
/// and one that ends in the space give 0 with empty outputs.
SInt32 GL_GetNameEndIndex(const char* string, char* text, SInt32* number);
/// Cuts the space and the number. Statuses of GL_GetNameEndIndex.
SInt32 GL_RemoveNameEndIndex(char* string);
/// Adds `delta` to the number in its place. GL_StringWouldGrowTooLongErr (10005) if the string
/// would pass 63 characters, which then stays; statuses of GL_GetNameEndIndex.
SInt32 GL_ChangeNameEndIndex(char* string, SInt32 delta);
/// The string's end from its last space behind the first character on, that included, at most 15
/// characters of it; empty if there is none. `out` has 16 bytes.
void GL_GetNameEndString(const char* string, char* out);

// Characters.

/// True for the empty string.
Boolean GL_IsStringEmpty(const char* string);
/// True for a byte outside "!" to "~".
Boolean GL_IsInvisibleAsciiCharacter(char character);
/// 0 to 9; A to Z and a to z; neither of these.
Boolean GL_IsDigit(char character);
Boolean GL_IsLetter(char character);
Boolean GL_IsWordDelimiter(char character);
/// A digit, "+" or "-"; the same or ".".
Boolean GL_IsNumericCharacter(char character);
Boolean GL_IsNumericCharacterFloat(char character);
/// True if every character is a hexadecimal digit; "0" or "1". The empty string is both.
Boolean GL_CStringIsPureHex(const char* string);
Boolean GL_CStringIsPureBinary(const char* string);
/// True if a character is neither a digit nor "+" or "-".
Boolean GL_AnyNonDigitInTextString(const char* string);
/// Clears the top bit of every byte above 127.
void GL_ReduceTextToLowerASCII(char* text, SInt32 count);
/// The characters from `start` up to `end`, a two-byte character of the script counted as one.
SInt32 GL_CountCharParamsInText(const char* text, SInt32 start, SInt32 end, ScriptCode script);
/// The place behind the next carriage return from `position` on, or `end`.
const char* GL_FindNextLine(const char* position, const char* end);
/// A new heap string of `count` bytes, which the caller frees; null without memory or for a
/// negative count.
char* GL_TextToCStr(const void* text, SInt32 count);
/// The same into `out` of 256 bytes, at most 255 characters.
void GL_TextToCStr255(const void* text, SInt32 count, char* out);

// Four-character codes.

/// The first four characters as a code, the first one in the top byte, zero-filled behind the end.
OSType GL_CStrToOSType(const char* string);
/// A code's four characters; `out` has 5 bytes.
void GL_OSTypeToCString(OSType code, char* out);
/// The code in single quotes up to the first character that is not printable ASCII; `out` has 7
/// bytes.
void GL_OSTypeToCStringWithQuo(OSType code, char* out);
/// "%s: %s": the name, then the quoted code; to `out`, the name cut so that it stays within 255, or
/// as a line to standard output.
void GL_SPrintOSTypeWithName(char* out, OSType code, const char* name);
void GL_PrintOSTypeWithName(OSType code, const char* name);
/// True if the code is among the `count` codes of the list.
Boolean GL_IsOSTypeInList(const OSType* list, SInt32 count, OSType code);
