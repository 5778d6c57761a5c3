#include <gtest/gtest.h>
#include <unicode/brkiter.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <string>

#include "GL_Strings_Unicode.h"

namespace {

using String = quillmere::Owned<CFStringRef>;
using MutableString = quillmere::Owned<CFMutableStringRef>;

std::string Take(CFStringRef string) {
  const String owned(string);
  return owned ? quillmere::ToUtf8(owned.get()) : "(null)";
}

MutableString Mutable(std::string_view text) {
  const String string(quillmere::CreateFromUtf8(text));
  return MutableString(CFStringCreateMutableCopy(nullptr, 256, string.get()));
}

TEST(Unicode, CutsBetweenWholeCharactersOnly) {
  const std::string texts[] = {
      "abcdefghijklmnopqrstuvwxyz", "e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301z",
      "ab\U0001F469\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466yz\U0001F44D\U0001F3FDend",
      "\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7\U0001F1EA\U0001F1F8-flags", "한국어 이름과 확장자"};
  for (const std::string& text : texts) {
    const String source(quillmere::CreateFromUtf8(text));
    const std::u16string units(quillmere::UnitsOf(source.get()));
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
    const icu::UnicodeString characters(units.data(), static_cast<int32_t>(units.size()));
    breaks->setText(characters);
    for (SInt32 limit = -1; limit <= std::ssize(units) + 1; ++limit) {
      const MutableString cut = Mutable(text);
      GL_CFStrTruncMiddle(cut.get(), limit);
      const std::u16string result(quillmere::UnitsOf(cut.get()));
      if (std::ssize(units) <= limit) {
        EXPECT_EQ(result, units);
        continue;
      }
      EXPECT_LE(std::ssize(result), std::max(limit, 1));
      const std::size_t ellipsis = result.find(u'\u2026');
      ASSERT_NE(ellipsis, result.npos);
      const std::size_t tail = result.size() - ellipsis - 1;
      EXPECT_EQ(result.substr(0, ellipsis), units.substr(0, ellipsis));
      EXPECT_EQ(result.substr(ellipsis + 1), units.substr(units.size() - tail));
      EXPECT_TRUE(breaks->isBoundary(static_cast<int32_t>(ellipsis)));
      EXPECT_TRUE(breaks->isBoundary(static_cast<int32_t>(units.size() - tail)));
    }
  }
}

TEST(Unicode, SizesAndDurations) {
  const struct {
    SInt64 count;
    const char* size;
    const char* duration;
  } cases[] = {{0, "0 bytes", "0s"},
               {59, "59 bytes", "59s"},
               {1023, "1023 bytes", "17m3s"},
               {1024, "1.00 kB", "17m4s"},
               {90061, "87.95 kB", "1days1h"},
               {86399, "84.37 kB", "23h59m"},
               {0xFFFFF, "1024.00 kB", "12days3h"},
               {0x100000, "1.00 MB", "12days3h"},
               {SInt64{1} << 40, "1024.00 GB", "12725829days0h"},
               {-65, "-65 bytes", "-1m5s"},
               {INT64_MIN, "-9223372036854775808 bytes", "-106751991167300days15h"}};
  for (const auto& c : cases) {
    EXPECT_EQ(Take(GL_GetByteSizeString(c.count)), c.size);
    EXPECT_EQ(Take(GL_DurationToCFStr(c.count)), c.duration);
  }
}

TEST(Unicode, NameEnds) {
  const struct {
    const char* name;
    SInt32 largest;
    UInt32 flags;
    const char* end;
  } cases[] = {
      {"a.mov", 4, 1, ".mov"},  {"a.mov", 3, 1, ""}, {"amov", 16, 1, ""}, {"a.b c", 16, 3, " c"},
      {"a.b c", 16, 1, ".b c"}, {"a.b", 16, 0, ""},  {".", 1, 1, "."},    {"", 9, 3, ""}};
  for (const auto& c : cases) {
    const MutableString name = Mutable(c.name);
    SInt32 length = -1;
    EXPECT_EQ(Take(GL_CopyCFNameEndString(name.get(), &length, c.largest, c.flags)), c.end);
    EXPECT_EQ(length, std::ssize(std::string(c.end)));
  }
  const MutableString name = Mutable("film.mov");
  GL_AppendCFStrBeforeSuffix(name.get(), CFSTR("-clean"));
  GL_CFAppendSpaceNumber(name.get(), -3);
  EXPECT_EQ(quillmere::ToUtf8(name.get()), "film-clean.mov -3");
  EXPECT_EQ(Take(GL_MakeEllipsisCFStr()), "…");
  EXPECT_EQ(Take(GL_MakeUnicodeEllipsisCFStr()), "…");
}

TEST(Unicode, ScriptCodedText) {
  EXPECT_EQ(Take(GL_TextPtrToCFStr("\x83\x65", 2, 1, -128, -128)), "テ");
  EXPECT_EQ(Take(GL_TextPtrToCFStr("Gr\x9F\xA7"
                                   "e",
                                   5, -128, -128, -128)),
            "Grüße");
  EXPECT_EQ(Take(GL_TextPtrToCFStr("\x83", 1, 1, -128, -128)), "É");  // no Japanese character
  EXPECT_EQ(Take(GL_TextPtrToCFStr(nullptr, 0, 0, 0, 0)), "");
  EXPECT_EQ(GL_TextPtrToCFStr("a", -1, 0, 0, 0), nullptr);
  EXPECT_EQ(GL_CStrToCFStr("\xC3("), nullptr);
}

TEST(Unicode, HeapCopiesAndReencoding) {
  char* text = nullptr;
  EXPECT_FALSE(GL_CFStrToCStrNew(nullptr, kCFStringEncodingUTF8, &text));
  EXPECT_STREQ(text, "");
  std::free(text);
  EXPECT_FALSE(GL_CFStrToCStrNew(CFSTR("a"), 12345, &text));
  EXPECT_STREQ(text, "");
  std::free(text);
  const char16_t lone[] = {u'a', 0xD800, u'b'};
  const String broken(GL_UnicodePtrToCFStr(lone, 3));
  EXPECT_FALSE(GL_CFStrToCStrNew(broken.get(), kCFStringEncodingUTF8, &text));
  std::free(text);
  UniChar* units = nullptr;
  UInt16 count = 9;
  GL_CFStrToUnicodePtr(broken.get(), &units, &count);
  EXPECT_EQ(std::u16string(units, count), std::u16string(lone, 3));
  std::free(units);
  GL_CStrToUnicodePtr("\xFF", &units, &count);
  EXPECT_EQ(units, nullptr);
  const String longest(
      CFStringCreateWithCharacters(nullptr, std::u16string(70000, u'x').data(), 70000));
  GL_CFStrToUnicodePtr(longest.get(), &units, &count);
  EXPECT_EQ(count, 65535);
  std::free(units);
  char out[6];
  GL_CStrToCStr("é…ж!", kCFStringEncodingUTF8, out, kCFStringEncodingMacRoman, 6);
  EXPECT_STREQ(out, "\x8E\xC9?!");
  GL_CStrToCStr("\x8E\xC9", kCFStringEncodingMacRoman, out, kCFStringEncodingUTF8, 5);
  EXPECT_STREQ(out, "é");
  GL_CStrToCStr("\xFF", kCFStringEncodingUTF8, out, kCFStringEncodingUTF8, 6);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(GL_CFStrToOSType(CFSTR("moov and more than fifteen")), "moov"_4cc);
  EXPECT_EQ(Take(GL_QuotedOSTypeToCFStr("rle "_4cc)), "'rle '");
}

TEST(Unicode, FileNames) {
  HFSUniStr255 name;
  GL_CStrToHFSUniStr255(std::string(250, 'n').c_str(), &name);
  GL_AppendCStrToHFSUniStr255(&name, "123456");  // would pass 255
  EXPECT_EQ(name.length, 250);
  GL_AppendCStrToHFSUniStr255(&name, "1.mov");
  EXPECT_EQ(name.length, 255);
  HFSUniStr255 copy;
  GL_CopyHFSUniStr255(&copy, &name);
  GL_FlipHFSUniStr255_NtoB(&copy);
  EXPECT_EQ(copy.unicode[0], u'n' << 8);
  GL_FlipHFSUniStr255_BtoN(&copy);
  EXPECT_TRUE(GL_EqualHFSStringMP(&name, &copy));
  copy.unicode[254] = u'V';
  EXPECT_TRUE(GL_EqualHFSUniStr255(&name, &copy));
  EXPECT_FALSE(GL_EqualHFSStringMP(&name, &copy));
  CFStringRef extension = nullptr;
  EXPECT_EQ(GL_GetExtensionFromFileName(&copy, &extension), 0);
  EXPECT_EQ(Take(extension), ".moV");
  GL_HFSUniStr255TruncMiddle(&name, 31);
  EXPECT_EQ(name.length, 31);
  GL_RemoveHFSUniStr255EndString(&name, 16, 1);
  EXPECT_EQ(name.length, 27);
  GL_CStrToHFSUniStr255(std::string(256, 'n').c_str(), &name);
  EXPECT_EQ(name.length, 0);
  name.length = 60000;
  char text[8] = "kept";
  GL_HFSUniStr255ToCStr(&name, text, 8);
  EXPECT_STREQ(text, "");
  EXPECT_FALSE(GL_EqualHFSUniStr255(&name, &name));
  EXPECT_FALSE(GL_EqualCFStr(nullptr, nullptr));
  const String big(GL_CStrToCFStr("STRASSE"));
  const String small(GL_CStrToCFStr("Straße"));
  EXPECT_TRUE(GL_EqualCFStr(big.get(), small.get()));
}

}  // namespace
