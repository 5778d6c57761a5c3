#include <gtest/gtest.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cf_strings.h"
#include "text_encodings.h"

namespace {

using String = quillmere::Owned<CFStringRef>;

std::string Decoded(std::string_view bytes, CFStringEncoding encoding) {
  const String text(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(bytes.data()),
                                            std::ssize(bytes), encoding, 0));
  return text ? quillmere::ToUtf8(text.get()) : "(invalid)";
}

TEST(Encodings, DecodeAndEncodeEveryScript) {
  const struct {
    CFStringEncoding encoding;
    std::string bytes;
    const char* text;
  } cases[] = {
      // Made with Python's codecs of the same names.
      {kTextEncodingMacRoman, "\x80\xC9\xDB\xF0", "Ä…€\xEF\xA3\xBF"},
      {kTextEncodingMacJapanese, "\x83\x65\x83\x58\x83\x67\xB1", "テストｱ"},
      {kTextEncodingMacChineseTrad, "\xA4\xA4\xA4\xE5", "中文"},
      {kTextEncodingMacKorean, "\xC7\xD1\xB1\xDB", "한글"},
      {kTextEncodingMacArabic, "\xE3\xB1 \x93",
       "ك"
       "١ …"},
      {kTextEncodingMacFarsi, "\xB1\xF3", "۱پ"},
      {kTextEncodingMacHebrew, "\xF9\xEC\xE5\xED\xA6", "שלום₪"},
      {kTextEncodingMacGreek, "\xE5\xEA", "εξ"},
      {kTextEncodingMacCyrillic, "\x8F\xF0", "Пр"},
      {kTextEncodingMacThai, "\xA1\xD2", "กา"},
      {kTextEncodingMacChineseSimp, "\xD6\xD0\xCE\xC4", "中文"},
      {kTextEncodingMacCentralEurRoman, "\x8E\x90", "éź"},
      {kTextEncodingMacTurkish, "\xDA\xDD", "Ğı"},
      {kTextEncodingMacCroatian, "\xA9\xF0", "Šđ"},
      {kTextEncodingMacIcelandic, "\xDC\xDF", "Ðþ"},
      {kTextEncodingMacRomanian, "\xAF\xDF", "Șț"},
      {kTextEncodingWindowsLatin1, "\x80\x85", "€…"},
      {kTextEncodingISOLatin1, "\xE9", "é"},
      {kTextEncodingUTF16BE, std::string("\x20\x26\xD8\x3D\xDE\x00", 6), "…\U0001F600"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Decoded(c.bytes, c.encoding), c.text) << c.encoding;
    const String text(quillmere::CreateFromUtf8(c.text));
    std::vector<UInt8> bytes(64);
    CFIndex used = 0;
    CFStringGetBytes(text.get(), {0, CFStringGetLength(text.get())}, c.encoding, '?', 0,
                     bytes.data(), std::ssize(bytes), &used);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + used), c.bytes) << c.encoding;
    EXPECT_LE(used, CFStringGetMaximumSizeForEncoding(CFStringGetLength(text.get()), c.encoding));
  }
}

TEST(Encodings, RefuseWhatASetDoesNotHave) {
  EXPECT_EQ(Decoded("\x81", kTextEncodingMacHebrew), "(invalid)");
  EXPECT_EQ(Decoded("\x83", kTextEncodingMacJapanese), "(invalid)");
  EXPECT_EQ(Decoded("\x80", kTextEncodingASCII), "(invalid)");
  const String text(quillmere::CreateFromUtf8("aж\U0001F600z"));
  UInt8 bytes[8];
  CFIndex used = 0;
  EXPECT_EQ(CFStringGetBytes(text.get(), {0, 5}, kTextEncodingMacJapanese, '?', 0, bytes, 8, &used),
            5);
  EXPECT_EQ(std::string(bytes, bytes + used), "a\x84w?z");
  EXPECT_EQ(CFStringGetBytes(text.get(), {0, 5}, 12345, '?', 0, bytes, 8, &used), 0);
}

TEST(Encodings, FollowScriptLanguageAndRegion) {
  constexpr SInt16 kNone = -128;
  const struct {
    SInt16 script, language, region;
    OSStatus status;
    TextEncoding encoding;
  } cases[] = {
      {0, kNone, kNone, 0, kTextEncodingMacRoman},
      {0, 0, 0, 0, kTextEncodingMacRoman},
      {1, 11, 14, 0, kTextEncodingMacJapanese},
      {1, 0, kNone, 0, kTextEncodingMacJapanese},  // English within Japanese text
      {0, 17, kNone, 0, kTextEncodingMacTurkish},
      {kNone, 15, kNone, 0, kTextEncodingMacIcelandic},
      {kNone, kNone, 24, 0, kTextEncodingMacTurkish},
      {0, kNone, 68, 0, kTextEncodingMacCroatian},
      {4, kNone, 48, 0, kTextEncodingMacFarsi},
      {29, kNone, kNone, 0, kTextEncodingMacCentralEurRoman},
      {25, 33, 52, 0, kTextEncodingMacChineseSimp},
      {kNone, kNone, kNone, paramErr, 0},
      {0, kNone, 14, paramErr, 0},  // Japan does not write Roman
      {77, kNone, kNone, paramErr, 0},
      {0, kNone, 999, paramErr, 0},
      {-5, kNone, kNone, paramErr, 0},
  };
  for (const auto& c : cases) {
    TextEncoding encoding = 0;
    EXPECT_EQ(UpgradeScriptInfoToTextEncoding(c.script, c.language, c.region, nullptr, &encoding),
              c.status)
        << c.script << " " << c.language << " " << c.region;
    EXPECT_EQ(encoding, c.encoding) << c.script << " " << c.language << " " << c.region;
  }
}

TEST(Encodings, TellTheScriptOfTheLocale) {
  const std::string before = uloc_getDefault();
  const struct {
    const char* locale;
    SInt32 script, region;
  } cases[] = {{"en_US", 0, 0},  {"ja_JP", 1, 14}, {"de_AT", 0, 92}, {"ru_UA", 7, 49},
               {"zh_TW", 2, 53}, {"C", 0, 0},      {"xx_YY", 0, 0},  {"no_NO", 0, 12}};
  for (const auto& c : cases) {
    UErrorCode error = U_ZERO_ERROR;
    uloc_setDefault(c.locale, &error);
    EXPECT_EQ(GetScriptManagerVariable(smSysScript), c.script) << c.locale;
    EXPECT_EQ(GetScriptManagerVariable(smRegionCode), c.region) << c.locale;
  }
  UErrorCode error = U_ZERO_ERROR;
  uloc_setDefault(before.c_str(), &error);
}

TEST(Encodings, KnowTheLeadBytesOfEachScript) {
  UInt8 table[256];
  EXPECT_TRUE(FillParseTable(table, 1));
  EXPECT_TRUE(table[0x83] && table[0xE0]);
  EXPECT_FALSE(table['A'] || table[0xB1] || table[0xFF]);
  EXPECT_TRUE(FillParseTable(table, 25));
  EXPECT_TRUE(table[0xD6]);
  for (const ScriptCode script : {ScriptCode{0}, ScriptCode{7}, ScriptCode{99}}) {
    EXPECT_EQ(FillParseTable(table, script), script != 99);
    EXPECT_EQ(std::count(std::begin(table), std::end(table), 0), 256);
  }
}

TEST(Converters, StopAtWholeCharacters) {
  const struct {
    TextEncoding from, to;
    std::string input;
    std::size_t room;
    OSStatus status;
    std::size_t used;
    std::string output;
  } cases[] = {
      {0, kTextEncodingUTF8, "a\xC9z", 9, 0, 3, "a…z"},
      {0, kTextEncodingUTF8, "a\xC9z", 3, kTECOutputBufferFullStatus, 1, "a"},
      {0, kTextEncodingUTF8, "\xC9", 4, 0, 1, "…"},
      {kTextEncodingUTF8, 0, "é…ж", 9, kTECUnmappableElementErr, 5, "\x8E\xC9"},
      {kTextEncodingUTF8, 0, "a\xE2\x80", 9, kTECPartialCharErr, 1, "a"},
      {kTextEncodingUTF8, 0, "a\xE2\x80z", 9, kTextMalformedInputErr, 1, "a"},
      {kTextEncodingUTF8, 0, "\xED\xA0", 9, kTextMalformedInputErr, 0, ""},
      {1, 25, "\x83\x65", 9, 0, 2, "\xA5\xC6"},
      {1, 25, "\x83", 9, kTECPartialCharErr, 0, ""},
      {kTextEncodingUTF16BE, kTextEncodingUTF8, std::string("\0A\xD8", 3), 9, kTECPartialCharErr, 2,
       "A"},
  };
  for (const auto& c : cases) {
    TECObjectRef converter = nullptr;
    ASSERT_EQ(TECCreateConverter(&converter, c.from, c.to), noErr);
    std::vector<UInt8> output(c.room);
    ByteCount used = 99;
    ByteCount written = 99;
    EXPECT_EQ(TECConvertText(converter, reinterpret_cast<const UInt8*>(c.input.data()),
                             c.input.size(), &used, output.data(), c.room, &written),
              c.status)
        << c.input;
    EXPECT_EQ(used, c.used) << c.input;
    EXPECT_EQ(std::string(output.begin(), output.begin() + static_cast<std::ptrdiff_t>(written)),
              c.output);
    EXPECT_EQ(TECDisposeConverter(converter), noErr);
  }
  TECObjectRef none = nullptr;
  EXPECT_EQ(TECCreateConverter(&none, 0, 4711), kTECNoConversionPathErr);
  EXPECT_EQ(none, nullptr);
}

}  // namespace
