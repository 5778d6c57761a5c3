/// Reference-counted Unicode strings.
///
/// A string is a sequence of UTF-16 units; lengths and ranges count units. Functions with Create or
/// Copy in their name hand out a reference that the caller gives up with CFRelease. A null string
/// argument is treated as an empty string where the function's text does not say otherwise.
#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

#include "base_types.h"
#include "reference_counted.h"

struct CFString;
using CFStringRef = const CFString*;
/// A string made by CFStringCreateMutable or CFStringCreateMutableCopy; the functions that change a
/// string do nothing to any other.
using CFMutableStringRef = CFString*;
using CFIndex = SInt64;
using CFStringEncoding = UInt32;
using CFOptionFlags = UInt64;

/// A span of UTF-16 units.
struct CFRange {
  CFIndex location;
  CFIndex length;
};

enum CFComparisonResult : SInt32 {
  kCFCompareLessThan = -1,
  kCFCompareEqualTo = 0,
  kCFCompareGreaterThan = 1
};

/// Encodings, by number; every number of text_encodings.h is one.
inline constexpr CFStringEncoding kCFStringEncodingMacRoman = 0;
inline constexpr CFStringEncoding kCFStringEncodingUnicode = 0x0100;
inline constexpr CFStringEncoding kCFStringEncodingUTF8 = 0x08000100;

/// Options of comparisons.
inline constexpr CFOptionFlags kCFCompareCaseInsensitive = 1;

/// The one allocator there is; null means the same.
using CFAllocatorRef = const void*;
inline constexpr CFAllocatorRef kCFAllocatorDefault = nullptr;

/// The encoding of C strings: UTF-8.
CFStringEncoding CFStringGetSystemEncoding();

/// A string of `text`, which ends with a zero byte; null for a null pointer or text that is not
/// valid in the encoding.
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text,
                                      CFStringEncoding encoding);
/// A string of `count` bytes; null if they are not valid in the encoding.
CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean is_external_representation);
/// A string of `count` UTF-16 units, unpaired surrogates included; null for a negative count.
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* characters,
                                         CFIndex count);
/// A string by a printf format; "%@" takes a CFObject: a string, or a number in decimal. "%ld" and
/// "%lu" take a 64-bit value, "%d" and "%u" an int. `options` is null.
CFStringRef CFStringCreateWithFormat(CFAllocatorRef allocator, CFTypeRef options,
                                     CFStringRef format, ...);
CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef allocator, CFTypeRef options,
                                                 CFStringRef format, std::va_list arguments);
CFStringRef CFStringCreateCopy(CFAllocatorRef allocator, CFStringRef string);
/// A new empty string that can be changed. `capacity` is a hint and no limit.
CFMutableStringRef CFStringCreateMutable(CFAllocatorRef allocator, CFIndex capacity);
/// A changeable copy; null for a null string.
CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                             CFStringRef string);

CFIndex CFStringGetLength(CFStringRef string);
UniChar CFStringGetCharacterAtIndex(CFStringRef string, CFIndex index);
/// Copies the units of `range`, which must lie within the string, to `buffer`.
void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer);
/// Copies the string and a zero byte to `buffer` of `size` bytes; false (and an empty C string, if
/// there is room) when it does not fit or does not convert.
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex size,
                           CFStringEncoding encoding);
/// Converts units of `range` to at most `capacity` bytes at `buffer` (null: only counts), putting
/// `loss_byte` for each character that does not convert (0: stops there). `used` may be null.
/// Returns the number of units converted; characters are never split.
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding,
                         UInt8 loss_byte, Boolean is_external_representation, UInt8* buffer,
                         CFIndex capacity, CFIndex* used);
/// The largest number of bytes that `length` units can take in the encoding.
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

CFComparisonResult CFStringCompare(CFStringRef a, CFStringRef b, CFOptionFlags options);
/// Case-sensitive test of the string's last units; an empty suffix matches.
Boolean CFStringHasSuffix(CFStringRef string, CFStringRef suffix);
Boolean CFStringHasPrefix(CFStringRef string, CFStringRef prefix);
/// The range of the composed character (a base with its marks, an emoji with its modifiers) that
/// holds the unit at `index`.
CFRange CFStringGetRangeOfComposedCharactersAtIndex(CFStringRef string, CFIndex index);
/// The number at the string's start behind blanks; 0 for none, the limits when out of range.
SInt32 CFStringGetIntValue(CFStringRef string);
double CFStringGetDoubleValue(CFStringRef string);

void CFStringAppend(CFMutableStringRef string, CFStringRef appended);
void CFStringAppendCString(CFMutableStringRef string, const char* text, CFStringEncoding encoding);
void CFStringAppendCharacters(CFMutableStringRef string, const UniChar* characters, CFIndex count);
void CFStringInsert(CFMutableStringRef string, CFIndex index, CFStringRef inserted);
/// Removes `range`, cut to the string.
void CFStringDelete(CFMutableStringRef string, CFRange range);

/// A constant string of ASCII text, made once for each text and never freed.
CFStringRef CFSTR(const char* ascii);

namespace quillmere {

/// The string in UTF-8, unpaired surrogates as U+FFFD. Null gives an empty string.
std::string ToUtf8(CFStringRef string);
/// A new string of UTF-8 text; bytes that are not valid become U+FFFD. The caller owns it.
CFStringRef CreateFromUtf8(std::string_view text);
/// The string's units, valid while it lives and is not changed.
std::u16string_view UnitsOf(CFStringRef string);
/// The object as a string, or null if it is of another kind.
CFStringRef AsString(CFTypeRef object);

}  // namespace quillmere
