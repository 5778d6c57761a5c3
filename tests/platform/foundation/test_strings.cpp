#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cf_strings.h"
#include "cf_values.h"

namespace {

using quillmere::Owned;
using String = Owned<CFStringRef>;

String Utf8(std::string_view text) {
  return String(quillmere::CreateFromUtf8(text));
}

TEST(Strings, RefuseBytesThatAreNotValid) {
  const char* const bad[] = {"\xC3",         "\xC3(",        "\xA0\xA1",
                             "\xE2\x28\xA1", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                             "\xC0\x80",     "a\xFF"};
  for (const char* text : bad) {
    EXPECT_EQ(CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8), nullptr) << text;
  }
  EXPECT_EQ(CFStringCreateWithCString(nullptr, nullptr, kCFStringEncodingUTF8), nullptr);
  EXPECT_EQ(CFStringCreateWithCString(nullptr, "a", 12345), nullptr);
  EXPECT_EQ(CFStringGetLength(Utf8("a\xFFz").get()), 3);
}

TEST(Strings, ConvertToAndFromEachEncoding) {
  const String text = Utf8("Grüße…\U0001F600");
  EXPECT_EQ(CFStringGetLength(text.get()), 8);
  char buffer[32];
  ASSERT_TRUE(CFStringGetCString(text.get(), buffer, sizeof(buffer), kCFStringEncodingUTF8));
  EXPECT_STREQ(buffer, "Grüße…\U0001F600");
  EXPECT_FALSE(CFStringGetCString(text.get(), buffer, sizeof(buffer), kCFStringEncodingMacRoman));
  EXPECT_STREQ(buffer, "");

  UInt8 roman[32];
  CFIndex used = 0;
  EXPECT_EQ(
      CFStringGetBytes(text.get(), {0, 8}, kCFStringEncodingMacRoman, '?', 0, roman, 32, &used), 8);
  EXPECT_EQ(std::string(roman, roman + used),
            "Gr\x9F\xA7"
            "e\xC9?");
  const String back(CFStringCreateWithBytes(nullptr, roman, 6, kCFStringEncodingMacRoman, 0));
  EXPECT_EQ(quillmere::ToUtf8(back.get()), "Grüße…");
}

TEST(Strings, NeverWritePastTheRoom) {
  const String text = Utf8("aé\U0001F600z");
  for (CFIndex room = 0; room <= 9; ++room) {
    std::vector<char> buffer(static_cast<std::size_t>(room) + 1, '#');
    const Boolean fits = CFStringGetCString(text.get(), buffer.data(), room, kCFStringEncodingUTF8);
    EXPECT_EQ(fits, room >= 9) << room;
    EXPECT_EQ(buffer.back(), '#');
    CFIndex used = -1;
    CFStringGetBytes(text.get(), {0, 99}, kCFStringEncodingUTF8, 0, 0,
                     reinterpret_cast<UInt8*>(buffer.data()), room, &used);
    EXPECT_TRUE(used == 0 || used == 1 || used == 3 || used == 7 || used == 8) << used;
    EXPECT_EQ(buffer.back(), '#');
  }
}

TEST(Strings, MacRomanIsAPermutation) {
  for (int byte = 1; byte < 256; ++byte) {
    const UInt8 in = static_cast<UInt8>(byte);
    const String string(CFStringCreateWithBytes(nullptr, &in, 1, kCFStringEncodingMacRoman, 0));
    ASSERT_TRUE(string);
    UInt8 out = 0;
    CFStringGetBytes(string.get(), {0, 1}, kCFStringEncodingMacRoman, 0, 0, &out, 1, nullptr);
    EXPECT_EQ(out, in);
  }
}

TEST(Strings, UnpairedSurrogatesSurviveAndConvertLossily) {
  const UniChar units[] = {u'a', 0xD800, u'b'};
  const String string(CFStringCreateWithCharacters(nullptr, units, 3));
  EXPECT_EQ(CFStringGetCharacterAtIndex(string.get(), 1), 0xD800);
  EXPECT_EQ(quillmere::ToUtf8(string.get()),
            "a\xEF\xBF\xBD"
            "b");
  char buffer[8];
  EXPECT_FALSE(CFStringGetCString(string.get(), buffer, 8, kCFStringEncodingUTF8));
}

TEST(Strings, CompareFoldAndMatchEnds) {
  EXPECT_EQ(CFStringCompare(Utf8("STRASSE").get(), Utf8("straße").get(), kCFCompareCaseInsensitive),
            kCFCompareEqualTo);
  EXPECT_EQ(CFStringCompare(Utf8(".MOV").get(), Utf8(".mov").get(), 0), kCFCompareLessThan);
  // Code point order, not unit order: U+FF5E is below U+1F600.
  EXPECT_EQ(CFStringCompare(Utf8("～").get(), Utf8("\U0001F600").get(), 0), kCFCompareLessThan);
  EXPECT_TRUE(CFStringHasSuffix(Utf8("photojpg").get(), CFSTR("jpg")));
  EXPECT_FALSE(CFStringHasSuffix(Utf8("PHOTO.JPG").get(), CFSTR("jpg")));
  EXPECT_FALSE(CFStringHasSuffix(Utf8("pg").get(), CFSTR("jpg")));
}

TEST(Strings, ComposedCharactersStayWhole) {
  const String text = Utf8("e\u0301x\U0001F469\u200D\U0001F680\U0001F3FD.");
  const CFIndex length = CFStringGetLength(text.get());
  const CFRange accent = CFStringGetRangeOfComposedCharactersAtIndex(text.get(), 1);
  EXPECT_EQ(accent.location, 0);
  EXPECT_EQ(accent.length, 2);
  const CFRange emoji = CFStringGetRangeOfComposedCharactersAtIndex(text.get(), 5);
  EXPECT_EQ(emoji.location, 3);
  EXPECT_EQ(emoji.location + emoji.length, length - 1);
  EXPECT_EQ(CFStringGetRangeOfComposedCharactersAtIndex(text.get(), length).length, 0);
}

TEST(Strings, FormatsTakeEveryArgument) {
  const String inner = Utf8("näme");
  const String made(CFStringCreateWithFormat(nullptr, nullptr,
                                             CFSTR("%@-clean.mov %ld|%5.2f|%-4d|%s|%u%%"),
                                             inner.get(), -5000000000L, 2.005, 7, "s", 8U));
  EXPECT_EQ(quillmere::ToUtf8(made.get()), "näme-clean.mov -5000000000| 2.00|7   |s|8%");
  const String odd(CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%"), 0));
  EXPECT_EQ(CFStringGetLength(odd.get()), 0);
}

TEST(Strings, OnlyMutableOnesChange) {
  const Owned<CFMutableStringRef> text(
      CFStringCreateMutableCopy(nullptr, 256, Utf8("clip.mov").get()));
  CFStringDelete(text.get(), {4, 99});
  CFStringAppend(text.get(), CFSTR("-clean.mov"));
  CFStringInsert(text.get(), -3, CFSTR("a "));
  EXPECT_EQ(quillmere::ToUtf8(text.get()), "a clip-clean.mov");
  const String fixed = Utf8("fixed");
  CFStringAppend(const_cast<CFMutableStringRef>(fixed.get()), CFSTR("x"));
  EXPECT_EQ(quillmere::ToUtf8(fixed.get()), "fixed");
}

TEST(Strings, NumbersAtTheStart) {
  EXPECT_EQ(CFStringGetIntValue(Utf8(" 12 apples").get()), 12);
  EXPECT_EQ(CFStringGetIntValue(Utf8("99999999999").get()), 2147483647);
  EXPECT_EQ(CFStringGetIntValue(nullptr), 0);
  EXPECT_EQ(CFStringGetDoubleValue(Utf8("\t-2.5e3x").get()), -2500.0);
  EXPECT_EQ(CFStringGetDoubleValue(Utf8("apples").get()), 0.0);
}

TEST(Values, NumbersTellWhenTheyDoNotFit) {
  const SInt64 large = 300;
  const Owned<CFNumberRef> integer(CFNumberCreate(nullptr, kCFNumberSInt64Type, &large));
  SInt8 small = 0;
  EXPECT_FALSE(CFNumberGetValue(integer.get(), kCFNumberSInt8Type, &small));
  float single = 0;
  EXPECT_TRUE(CFNumberGetValue(integer.get(), kCFNumberFloat32Type, &single));
  EXPECT_EQ(single, 300.0F);
  const double huge = 1e300;
  const Owned<CFNumberRef> real(CFNumberCreate(nullptr, kCFNumberFloat64Type, &huge));
  SInt32 clamped = 0;
  EXPECT_FALSE(CFNumberGetValue(real.get(), kCFNumberSInt32Type, &clamped));
  EXPECT_EQ(clamped, 2147483647);
}

TEST(Values, DictionariesOwnTheirValues) {
  const Owned<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(nullptr));
  const String value = Utf8("value");
  CFDictionarySetValue(dictionary.get(), CFSTR("a"), value.get());
  EXPECT_EQ(CFGetRetainCount(value.get()), 2);
  CFDictionarySetValue(dictionary.get(), Utf8("a").get(), kCFBooleanTrue);
  EXPECT_EQ(CFGetRetainCount(value.get()), 1);
  EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 1);
  EXPECT_EQ(quillmere::AsString(CFDictionaryGetValue(dictionary.get(), CFSTR("a"))), nullptr);
  EXPECT_TRUE(
      CFBooleanGetValue(quillmere::AsBoolean(CFDictionaryGetValue(dictionary.get(), CFSTR("a")))));
  CFDictionaryRemoveValue(dictionary.get(), CFSTR("a"));
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), CFSTR("a")), nullptr);
}

}  // namespace
