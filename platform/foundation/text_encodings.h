/// Script codes, text encodings and conversion between encodings.
///
/// Old text is marked with a script (a writing system), a language and a region (a country's form
/// of a language), each a small number. A text encoding is a 32-bit number; CFStringEncoding has
/// the same numbers. Statuses: paramErr for null pointers and for codes that do not belong
/// together.
#pragma once

#include "base_types.h"

using TextEncoding = UInt32;
using LangCode = SInt16;
using RegionCode = SInt16;

inline constexpr TextEncoding kTextEncodingMacRoman = 0;
inline constexpr TextEncoding kTextEncodingMacJapanese = 1;
inline constexpr TextEncoding kTextEncodingMacChineseTrad = 2;
inline constexpr TextEncoding kTextEncodingMacKorean = 3;
inline constexpr TextEncoding kTextEncodingMacArabic = 4;
inline constexpr TextEncoding kTextEncodingMacHebrew = 5;
inline constexpr TextEncoding kTextEncodingMacGreek = 6;
inline constexpr TextEncoding kTextEncodingMacCyrillic = 7;
inline constexpr TextEncoding kTextEncodingMacDevanagari = 9;
inline constexpr TextEncoding kTextEncodingMacGurmukhi = 10;
inline constexpr TextEncoding kTextEncodingMacGujarati = 11;
inline constexpr TextEncoding kTextEncodingMacThai = 21;
inline constexpr TextEncoding kTextEncodingMacChineseSimp = 25;
inline constexpr TextEncoding kTextEncodingMacCentralEurRoman = 29;
inline constexpr TextEncoding kTextEncodingMacTurkish = 35;
inline constexpr TextEncoding kTextEncodingMacCroatian = 36;
inline constexpr TextEncoding kTextEncodingMacIcelandic = 37;
inline constexpr TextEncoding kTextEncodingMacRomanian = 38;
inline constexpr TextEncoding kTextEncodingMacFarsi = 140;
inline constexpr TextEncoding kTextEncodingMacUkrainian = 152;
inline constexpr TextEncoding kTextEncodingUnicode = 0x0100;  ///< UTF-16 in native byte order
inline constexpr TextEncoding kTextEncodingISOLatin1 = 0x0201;
inline constexpr TextEncoding kTextEncodingWindowsLatin1 = 0x0500;
inline constexpr TextEncoding kTextEncodingASCII = 0x0600;
inline constexpr TextEncoding kTextEncodingUTF8 = 0x08000100;
inline constexpr TextEncoding kTextEncodingUTF16BE = 0x10000100;
inline constexpr TextEncoding kTextEncodingUTF16LE = 0x14000100;

/// A code that is not given.
inline constexpr ScriptCode kTextScriptDontCare = -128;
inline constexpr LangCode kTextLanguageDontCare = -128;
inline constexpr RegionCode kTextRegionDontCare = -128;

inline constexpr ScriptCode smRoman = 0;

/// Variables of the script manager.
inline constexpr SInt16 smSysScript = 18;
inline constexpr SInt16 smRegionCode = 40;

inline constexpr OSStatus kTECNoConversionPathErr = -8749;
inline constexpr OSStatus kTECPartialCharErr = -8753;
inline constexpr OSStatus kTECUnmappableElementErr = -8754;
inline constexpr OSStatus kTECOutputBufferFullStatus = -8785;
inline constexpr OSStatus kTextMalformedInputErr = -8739;

/// The encoding of text with these codes, each its DontCare value where it is not given.
/// The script (or else that of the region, or else of the language) decides; a language or region
/// with a variant of that script's set, such as Turkish, selects the variant. A language of another
/// script is passed over, as every set holds Latin letters. paramErr for no code at all, for an
/// unknown script or region, and for a region of another script. `font` is null.
OSStatus UpgradeScriptInfoToTextEncoding(ScriptCode script, LangCode language, RegionCode region,
                                         const UInt8* font, TextEncoding* encoding);

/// A variable of the script manager: smSysScript and smRegionCode of the user's locale, 0 (Roman,
/// United States) where that has no code of its own; 0 for any other selector.
SInt32 GetScriptManagerVariable(SInt16 selector);

/// Which bytes begin a two-byte character in a script's encoding: 1 for these, else 0. False, with
/// a table of zeros, for a script that is not known. `table` has 256 bytes.
Boolean FillParseTable(UInt8* table, ScriptCode script);

struct TextConverter;
/// A converter between two encodings; used by one thread at a time.
using TECObjectRef = TextConverter*;

/// Makes a converter, which the caller gives up with TECDisposeConverter. kTECNoConversionPathErr,
/// with a null converter, if one of the encodings is not known.
OSStatus TECCreateConverter(TECObjectRef* converter, TextEncoding input, TextEncoding output);
/// Converts whole characters from `input` to `output` as far as they go; `used` and `written` take
/// the bytes read and written. kTECOutputBufferFullStatus when the output is full,
/// kTECUnmappableElementErr at a character that the output encoding does not have,
/// kTextMalformedInputErr at bytes that are not valid, kTECPartialCharErr at a character that the
/// input cuts off.
OSStatus TECConvertText(TECObjectRef converter, const UInt8* input, ByteCount input_length,
                        ByteCount* used, UInt8* output, ByteCount output_capacity,
                        ByteCount* written);
/// Frees a converter; paramErr for null.
OSStatus TECDisposeConverter(TECObjectRef converter);

namespace quillmere::text {

/// The language code of the user's locale, English (0) for one without a code.
LangCode SystemLanguage();

}  // namespace quillmere::text
