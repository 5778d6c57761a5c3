#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "GL_Math.h"
#include "GL_Strings.h"
#include "GL_Strings_Numbers.h"
#include "GL_Strings_Reports.h"
#include "GL_Strings_Words.h"

namespace {

/// A classic string with its room and guard bytes behind.
class Text {
 public:
  explicit Text(const std::string& text, std::size_t room = 256) : room_(room) {
    std::memset(bytes_, '#', sizeof bytes_);
    std::memcpy(bytes_, text.c_str(), text.size() + 1);
  }
  ~Text() {
    for (std::size_t i = room_; i < sizeof bytes_; ++i)
      EXPECT_EQ(bytes_[i], '#') << "written past the room";
  }
  operator char*() { return bytes_; }
  std::string str() const { return bytes_; }

 private:
  std::size_t room_;
  char bytes_[600];
};

TEST(Classic, CutInTheMiddle) {
  const struct {
    const char* text;
    SInt16 shortest, count;
    const char* result;
  } cases[] = {{"abcdefghij", 3, 4, "abc\xC9ij"},
               {"abcdefghij", 3, 0, "abcdefghij"},
               {"abcdefghij", 2, 4, "abcdefghij"},
               {"abcdefghij", 3, 99, "a\xC9j"},
               {"abcdefghij", 9, 4, "abcd\xC9ghij"},
               {"abc", 3, 1, "abc"},
               {"", 3, 1, ""},
               {"abcd", 3, -1, "abcd"}};
  for (const auto& c : cases) {
    Text text(c.text);
    GL_TruncStringMiddle(text, c.shortest, c.count);
    EXPECT_EQ(text.str(), c.result) << c.text << c.shortest << " " << c.count;
  }
  Text text("abcdefgh");
  for (const char* step : {"abcd\xC9"
                           "fgh",
                           "abc\xC9"
                           "fgh",
                           "abc\xC9gh", "ab\xC9gh", "ab\xC9h", "a\xC9h", "a\xC9h"}) {
    GL_TruncStringMiddleByOneChar(text, kEllipsisCharacter);
    EXPECT_EQ(text.str(), step);
  }
}

TEST(Classic, AppendWithinLimits) {
  Text postfix("abcdefgh");
  GL_AddPostfix(postfix, "XY", 8, 0);
  EXPECT_EQ(postfix.str(), "abcde\xC9XY");
  Text middle("abcdefgh");
  GL_AddPostfix(middle, "XY", 8, 1);
  EXPECT_EQ(middle.str(), "abc\xC9ghXY");
  Text stays("abc");
  GL_AddPostfix(stays, "XYZ", 5, 0);
  GL_AddPostfix(stays, "X", 256, 0);
  EXPECT_EQ(stays.str(), "abc");
  for (std::size_t length : {0U, 30U, 31U, 32U, 254U, 255U}) {
    const std::string text(length, 'x');
    Text appended(text);
    GL_AppendCharacter31(appended, 'Q');
    EXPECT_EQ(appended.str().size(), std::min<std::size_t>(length + 1, 31));
    EXPECT_EQ(appended.str().back(), 'Q');
    Text number(text);
    GL_AppendSpaceNumber(number, -7);
    EXPECT_EQ(number.str(), length + 3 <= 255 ? text + " -7" : text);
    Text quoted(text);
    GL_PutInParentheses(quoted);
    EXPECT_EQ(quoted.str(), length + 2 <= 255 ? "\"" + text + "\"" : text);
    Text prepended(text);
    GL_PrependString(prepended, "abc");
    EXPECT_EQ(prepended.str(), std::string("abc").substr(0, 255 - length) + text);
  }
  Text overwritten("abcdefgh");
  GL_SafeAppendString(overwritten, "XYZ", 9);
  EXPECT_EQ(overwritten.str(), "abcdefXYZ");
  Text numbered("abcdefghijklmnopqrst");
  GL_SafeAppendSpaceNumberTruncEnd(numbered, 5, 31);
  EXPECT_EQ(numbered.str(), "abcdefghij 5");
}

TEST(Classic, NameEndIndices) {
  const struct {
    const char* name;
    SInt32 status;
    const char* text;
    SInt32 number;
    const char* increased;
  } cases[] = {{"movie 12", 0, "12", 12, "movie 13"},
               {"movie", 10008, "", 0, "movie"},
               {"movie x", 10009, "", 0, "movie x"},
               {"movie ", 0, "", 0, "movie 1"},
               {"a 3", 10008, "", 0, "a 3"},
               {"ab 9", 0, "9", 9, "ab 10"},
               {"", 0, "", 0, "1"},
               {"m", 0, "", 0, "m1"},
               {"ab -1", 0, "-1", -1, "ab 0"},
               {"ab 99999999999", 0, "99999999999", 2147483647, "ab 2147483648"}};
  for (const auto& c : cases) {
    Text text("?");
    SInt32 number = -1;
    EXPECT_EQ(GL_GetNameEndIndex(c.name, text, &number), c.status) << c.name;
    EXPECT_EQ(text.str(), c.text);
    EXPECT_EQ(number, c.number);
    Text changed(c.name, 64);
    EXPECT_EQ(GL_ChangeNameEndIndex(changed, 1), c.status);
    EXPECT_EQ(changed.str(), c.increased);
  }
  const std::string longest = std::string(61, 'n') + " 9";
  Text name(longest, 64);
  EXPECT_EQ(GL_ChangeNameEndIndex(name, 1), 10005);
  EXPECT_EQ(name.str(), longest);
  EXPECT_EQ(GL_RemoveNameEndIndex(name), 0);
  EXPECT_EQ(name.str(), std::string(61, 'n'));
}

TEST(Classic, WordsAreFoundBetweenSpaces) {
  const struct {
    const char* text;
    const char* word;
    SInt32 status;
    SInt16 position;
    const char* inserted;
  } cases[] = {
      {"one two", "one", 0, 0, "one X two"},
      {"one two", "two", 0, 4, "one two X"},
      {"onetwo two", "two", 0, 7, "onetwo two X"},
      {"one two", "tw", 10001, 0, "one two"},
      {"one", "longer", 10006, 0, "one"},
      {"a very long line of text", "abcdefghijklmnop", 10003, 0, "a very long line of text"},
      {"one", "", 0, 0, "X one"}};
  for (const auto& c : cases) {
    SInt16 position = -1;
    EXPECT_EQ(GL_FindWord(c.text, c.word, &position), c.status) << c.word;
    EXPECT_EQ(position, c.position);
    Text text(c.text);
    EXPECT_EQ(GL_InsertWordBehind(text, c.word, "X"), c.status);
    EXPECT_EQ(text.str(), c.inserted);
  }
  Text full(std::string(250, 'x'));
  EXPECT_EQ(GL_InsertWord(full, "abcde", 3), 10005);
  EXPECT_EQ(GL_InsertWord(full, "abcd", 999), 0);
  EXPECT_EQ(full.str(), std::string(250, 'x') + " abcd");
  Text shorter("x");
  EXPECT_EQ(GL_InsertWord(shorter, std::string(32, 'w').c_str(), 1), 10003);
}

TEST(Classic, Codes) {
  Text text("");
  GL_OSTypeToCStringWithQuo("rle "_4cc, text);
  EXPECT_EQ(text.str(), "'rle '");
  GL_OSTypeToCStringWithQuo("ab\xA9z"_4cc, text);
  EXPECT_EQ(text.str(), "'ab'");
  EXPECT_EQ(GL_CStrToOSType("ab"), 0x61620000U);
  EXPECT_EQ(GL_CStrToOSType("\xA9namx"), "\xA9nam"_4cc);
  GL_SPrintOSTypeWithName(text, "moov"_4cc, std::string(300, 'n').c_str());
  EXPECT_EQ(text.str().size(), 255U);
  EXPECT_TRUE(text.str().ends_with(": 'moov'"));
}

TEST(Numbers, WideAgreesWithTheLibrary) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 3000; ++i) {
    const auto value = static_cast<SInt64>(random()) >> (random() % 64);
    const SInt64 number = i == 0 ? INT64_MIN : i == 1 ? INT64_MAX : i == 2 ? -1 : value;
    char expected[32];
    std::snprintf(expected, sizeof expected, "%lld", static_cast<long long>(number));
    Text text("", 22);
    GL_WideNumToString(number, text);
    EXPECT_EQ(text.str(), number == 0 ? "" : expected);
    SInt64 back = 1;
    GL_StringToWideNum(expected, &back);
    EXPECT_EQ(back, number);
  }
  const struct {
    const char* text;
    SInt64 value;
  } cases[] = {{"  -42\t", -42},
               {"+ 7", 7},
               {"12a", 0},
               {"--1", 0},
               {"", 0},
               {"-", 0},
               {"00000000000000000000000000000012", 12},
               {"1 2", 0},
               {"18446744073709551615", -1},
               {"99999999999999999999999", -1}};
  for (const auto& c : cases) {
    SInt64 value = 99;
    GL_StringToWideNum(c.text, &value);
    EXPECT_EQ(value, c.value) << c.text;
  }
}

TEST(Numbers, DigitArraysAgreeWithWideArithmetic) {
  const auto number = [](const SInt8* digits) {
    SInt64 value = 0;
    for (int i = 0; i < 12; ++i)
      value = value * 10 + digits[i];
    return value;
  };
  constexpr SInt64 kModulus = 1000000000000;
  std::mt19937_64 random(3);
  for (int round = 0; round < 500; ++round) {
    SInt8 a[12], b[12];
    for (int i = 0; i < 12; ++i) {
      a[i] = static_cast<SInt8>(random() % 10);
      b[i] = static_cast<SInt8>(random() % 10);
    }
    const SInt64 x = number(a), y = number(b);
    EXPECT_EQ(GL_CompareDigitArrays(a, b, 12), x > y ? 1 : x < y ? -1 : 0);
    GL_AddDigitArrays(a, b, 12);
    EXPECT_EQ(number(a), (x + y) % kModulus);
    GL_SubtractDigitArrays(a, b, 12);
    GL_SubtractDigitArrays(a, b, 12);
    EXPECT_EQ(number(a), ((x - y) % kModulus + kModulus) % kModulus);
    const auto factor = static_cast<UInt8>(random() % 14 + 1);
    UInt8 rest = 0;
    GL_DivideDigitArray(b, 12, factor, &rest);
    EXPECT_EQ(number(b), y / factor);
    EXPECT_EQ(rest, y % factor);
    GL_MultiplyDigitArray(b, 12, factor);
    EXPECT_EQ(number(b), y - rest);
  }
}

TEST(Numbers, Texts) {
  const auto text = [](auto operation, auto... arguments) {
    Text out("?");
    operation(out, arguments...);
    return out.str();
  };
  EXPECT_EQ(text([](char* out) { GL_NumToHex(255, out); }), "0x000000FF");
  EXPECT_EQ(GL_HexToNum("0x000000FF"), 255U);
  EXPECT_EQ(GL_HexToNum("0xff"), 0U);
  EXPECT_EQ(GL_HexToNum("0"), 0U);
  EXPECT_EQ(text([](char* out) { GL_NumToVersion(0x0153, out); }), "1.5.3");
  EXPECT_EQ(text([](char* out) { GL_NumToVersion(0x1234, out); }), "12.3.4");
  EXPECT_EQ(text([](char* out) { GL_FixedToString(0x10800, 3, out); }), "1.031");
  EXPECT_EQ(text([](char* out) { GL_FixedToString(-0x18000, 2, out); }), "-1.50");
  EXPECT_EQ(text([](char* out) { GL_FixedToString(INT32_MIN, 1, out); }), "-32768.0");
  EXPECT_EQ(text([](char* out) { GL_FixedToPercentageAsText(INT32_MAX, out); }), "3276800%");
  EXPECT_EQ(text([](char* out) { GL_FloatToStr(1e308, out); }).size(), 255U);
  const struct {
    SInt64 count;
    const char* text;
  } sizes[] = {{INT64_MIN, "-9223372036854775808 bytes"},
               {1023, "1023 bytes"},
               {1024, "1.00 kB"},
               {0xFFFFF, "1024.00 kB"},
               {0x100000, "1.00 MB"},
               {0x40000000, "1.00 GB"},
               {SInt64{1} << 40, "1.00 TB"},
               {INT64_MAX, "8388608.00 TB"}};
  for (const auto& c : sizes)
    EXPECT_EQ(text([&](char* out) { GL_NumBytesToStr(c.count, out); }), c.text);
  EXPECT_EQ(text([](char* out) { GL_TimeInSecToTimeCodeStr1(3661.5, out, 25); }), "1:1:1:12");
  EXPECT_EQ(text([](char* out) { GL_TimeInSecToTimeCodeStr1_Alt(2, out, 49); }), "0:0:2:0");
  EXPECT_EQ(text([](char* out) { GL_TimeInSecToTimeCodeStr2(3661.25, out); }), "1h,1m,1.25s");
  EXPECT_EQ(text([](char* out) { GL_TimeInSecToTimeCodeStr3(59.9, out); }), "0h,0m,59s");
  double seconds = 0;
  EXPECT_EQ(GL_TimeCodeStrToSec("1:1:1:12", &seconds, 25), 0);
  EXPECT_DOUBLE_EQ(seconds, 3661.48);
  EXPECT_EQ(GL_TimeCodeStrToSec("1:1:1", &seconds, 25), -50);
}

TEST(Numbers, FieldsKeepOnlyNumbers) {
  const struct {
    const char* typed;
    const char* whole;
    bool whole_changed;
    const char* decimal;
    bool decimal_changed;
  } cases[] = {{"-12a3", "-123", true, "-123", true},
               {"12345", "12345", false, "12345", false},
               {"1-2", "12", true, "12", true},
               {".5", "5", true, "0.5", true},
               {"5.", "5", true, "5.0", true},
               {"", "", false, "", false},
               {"12345678901", "1234567890", true, "1234567890", true},
               {"-12345678901", "-12345678901", true, "-12345678901", true},
               {"123456789012345678", "1234567890", true, "1234567890", true}};
  for (const auto& c : cases) {
    Text whole(c.typed);
    EXPECT_EQ(GL_RemoveAnyNonDigitInString(whole) != 0, c.whole_changed) << c.typed;
    EXPECT_EQ(whole.str(), c.whole);
    Text decimal(c.typed);
    EXPECT_EQ(GL_RemoveAnyNonDigitInFloatString(decimal) != 0, c.decimal_changed) << c.typed;
    EXPECT_EQ(decimal.str(), c.decimal);
  }
  Text bounded("1x50");
  EXPECT_TRUE(GL_EnforceTextValueBounds(bounded, -3, 100));
  EXPECT_EQ(bounded.str(), "100");
  Text even("-7");
  GL_EnforceEvenTextValue(even);
  EXPECT_EQ(even.str(), "-6");
  Text decimal("2.499");
  EXPECT_TRUE(GL_EnforceTextFloatValueBounds(decimal, 0, 2.25));
  EXPECT_EQ(decimal.str(), "2.25");
}

TEST(Reports, WriteFieldsBehindEachOther) {
  char buffer[512];
  SInt32 offset = 0;
  GL_AddByteFieldDescrToTextPtr(buffer, &offset, "size", 1024);
  GL_AddBooleanFieldDescrToTextPtr(buffer, &offset, "on", 1);
  GL_AddOSTypeFieldDescrToTextPtr(buffer, &offset, "type", "moov"_4cc);
  GL_AddPointFieldDescrToTextPtr(buffer, &offset, "at", {-1, 2});
  GL_AddLongFieldDescrToTextPtr2(buffer, &offset, "width", 7, CFSTR(" px"));
  GL_AddFloatFieldDescrToTextPtr(buffer, &offset, "rate", 2.5, 3);
  EXPECT_EQ(std::string(buffer, static_cast<std::size_t>(offset)),
            "size: 1.02 kB\non: yes\ntype: 'moov'\nat: vert -1, horiz 2\nwidth: 7 px\n"
            "rate: 2.500\n");
}

TEST(Lines, SpreadStringsOverTheBox) {
  GL_StringElement* list = nullptr;
  for (const char* word : {"one", "two", "three"})
    ASSERT_EQ(GL_AddStringToList(&list, word), 0);
  GL_TextStyle style = {1, 0, 14};
  Text out("?");
  const Rect wide = {0, 0, 20, 400};
  for (const SInt16 alignment : {kAlignEven, kAlignFull}) {
    ASSERT_EQ(GL_FitStringsInLineBox(list, &wide, 2, alignment, &style, out), 0);
    EXPECT_LE(GL_GetStringWidth(out, 1, 14, 0), 398 + 14);
    EXPECT_LT(out.str().find("one"), out.str().find("two"));
  }
  EXPECT_EQ(style.size, 14);
  const Rect narrow = {0, 0, 20, 12};
  EXPECT_EQ(GL_FitStringsInLineBox(list, &narrow, 2, kAlignEven, &style, out), 10004);
  EXPECT_EQ(style.size, 9);
  EXPECT_EQ(GL_FitStringsInLineBox(list, &wide, 123, kAlignEven, &style, out), 10003);
  EXPECT_EQ(GL_FitStringsInLineBox(nullptr, &wide, 1, kAlignEven, &style, out), 0);
  EXPECT_EQ(out.str(), "");
  while (list != nullptr)
    std::free(std::exchange(list, list->next));
  Text widest("?");
  EXPECT_EQ(GL_GetWidestWordInLine("a iiii mmmm W", widest), GL_CStringWidth("mmmm"));
  EXPECT_EQ(widest.str(), "mmmm");
  Text line("x " + std::string(200, 'm') + " end", 600);
  GL_TruncWordsInLine(line, 1000, 1, 12, 0);
  EXPECT_TRUE(line.str().starts_with("x mmm") && line.str().ends_with("m end"));
  EXPECT_NE(line.str().find('\xC9'), std::string::npos);
}

}  // namespace
