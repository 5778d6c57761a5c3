/// Numbers in classic strings: decimal, hexadecimal, versions, sizes, 64-bit integers, time codes,
/// and text fields into which a user types a number.
///
/// Texts end with a zero byte and stay within 255 characters. Room: 12 bytes do for a 32-bit
/// number, 22 for a 64-bit one, 32 for a size or time; operations on floating-point values may need
/// up to 256. The decimal point is a full stop whatever the locale. A null string counts as empty;
/// a null output does nothing.
#pragma once

#include "base_types.h"

/// "%ld", and "%.2f".
void GL_NumToCString(SInt32 number, char* out);
void GL_FloatToStr(double number, char* out);
/// A value with `decimals`, 0 to 9, behind the point.
void GL_FloatRoundToStr(double value, char* out, SInt16 decimals);
/// A value rounded by way of that text.
double GL_RoundFloat(double value, SInt16 decimals);
/// The value in percent, rounded to a whole number, and "%": 0x8000 gives "50%".
void GL_FixedToPercentageAsText(Fixed value, char* out);
/// The value with `decimals`, 0 to 200, behind a full stop, leading zeros among them; further ones
/// are cut off. The sign stands only where the whole part is not 0.
void GL_FixedToString(Fixed value, SInt16 decimals, char* out);
/// "0x" and eight upper-case digits.
void GL_NumToHex(UInt32 value, char* out);
/// The number of the upper-case hexadecimal digits behind the first two characters; 0 if there is
/// another character among them. Of more than eight digits the last eight count.
UInt32 GL_HexToNum(const char* string);
/// A new heap string of "0X" and two upper-case digits a byte, which the caller frees; null without
/// memory and for a negative count.
char* GL_DataToHexCStr(const void* data, SInt32 count);
/// The packed version in the low four hexadecimal digits: 0x0153 gives "1.5.3", 0x1234 "12.3.4".
void GL_NumToVersion(UInt32 value, char* out);
/// Three numbers joined by full stops.
void GL_NumToVersion2(SInt32 major, SInt32 minor, SInt32 patch, char* out);
/// A count of bytes: "%ld bytes" up to 1023, then with two decimals in kB (2^10), MB (2^20), GB
/// (2^30) and, from 2^40 on, TB, the quotient in single precision.
void GL_NumBytesToStr(SInt64 count, char* out);

/// A 64-bit integer in decimal; 0 gives the empty string.
void GL_WideNumToString(SInt64 value, char* out);
/// The number of a string whose first byte counts the digits behind it, each a character or a value
/// 0 to 9. Anything else among them gives 0. A number above 2^63 - 1 gives the pattern of its low
/// 64 bits, one above 2^64 - 1 that of the largest.
void GL_TrueNumberStringToWide(const UInt8* digits, SInt64* value);
/// The number of a decimal text: what is not printable at both ends is passed over, one sign may
/// stand in front, with white space behind it. 0 if anything but digits is left.
void GL_StringToWideNum(const char* string, SInt64* value);

// Time codes. Times are in seconds; hours, minutes and seconds come from the whole seconds, cut
// down. What is not a number counts as 0, what is beyond 2^53 as that.

/// "h:m:s:f" without leading zeros, f = `frames_per_second` times the fraction, cut to a whole
/// number.
void GL_TimeInSecToTimeCodeStr1(double seconds, char* out, double frames_per_second);
/// The same with the rate `frame_count` / seconds, rounded; 0 for a time that is not above 0.
void GL_TimeInSecToTimeCodeStr1_Alt(double seconds, char* out, SInt32 frame_count);
/// "%ldh,%ldm,%.2fs", the fraction with the seconds; and "%ldh,%ldm,%lds".
void GL_TimeInSecToTimeCodeStr2(double seconds, char* out);
void GL_TimeInSecToTimeCodeStr3(double seconds, char* out);
/// The seconds of a text "h:m:s:f". -50, and 0 seconds, if it does not hold three colons. At a rate
/// of 0 the frames count nothing.
SInt32 GL_TimeCodeStrToSec(const char* text, double* seconds, double frames_per_second);

// Text fields. The text has room for 16 bytes, or for the number within the bounds.

/// The number of the text, made even towards 0.
void GL_EnforceEvenTextValue(char* text);
/// Keeps the digits among the first 15 characters, and a sign in the first place. Text without a
/// sign is cut to 10 characters. True if the text changed, or has a sign and passes 11 characters.
Boolean GL_RemoveAnyNonDigitInString(char* text);
/// Does that and writes the number, held between `low` and `high`. True if the text changed.
Boolean GL_EnforceTextValueBounds(char* text, SInt32 low, SInt32 high);
/// The same with full stops allowed. One at the start gets a "0" before it, one at the end a "0"
/// behind it, as long as the text stays within 15 characters.
Boolean GL_RemoveAnyNonDigitInFloatString(char* text);
/// Does that and writes the number, held between the bounds, as "%.2f". True if the text changed.
Boolean GL_EnforceTextFloatValueBounds(char* text, double low, double high);
