#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "cf_bundle.h"
#include "strings_table.h"

namespace {

using quillmere::Owned;
using quillmere::StringsTable;

StringsTable Parse(std::string_view text) {
  return quillmere::ParseStringsTable({reinterpret_cast<const UInt8*>(text.data()), text.size()});
}

TEST(StringsTable, ReadsEntriesAmongBlanksAndComments) {
  const StringsTable expected = {
      {u"a b", u"one"}, {u"word_1.x/y:z-$", u"two"}, {u"same", u"same"}, {u"", u""}};
  EXPECT_EQ(Parse("/* head ; \" */\"a b\"=\"one\";// \"gone\" = \"gone\";\n"
                  "  word_1.x/y:z-$ = 'two' ;\r\n\"same\";\t\"\" = /**/ \"\" /* x */ ; // end"),
            expected);
  EXPECT_EQ(Parse("k = first; k = last;"), (StringsTable{{u"k", u"last"}}));
}

TEST(StringsTable, KnowsTheEscapes) {
  const struct {
    std::string_view written;
    std::u16string_view meant;
  } cases[] = {
      {R"("\n\r\t\\\"\'\q")", u"\n\r\t\\\"'q"},
      {R"("\U00e9\u20AC\Ud83d\uDE00x")", u"\u00e9\u20ac\U0001F600x"},
      {R"("\ud800")", std::u16string_view(u"\xd800", 1)},
      {R"('a"b\'c')", u"a\"b'c"},
      {"\"two\nlines // and /* no */ comment\"", u"two\nlines // and /* no */ comment"},
      {"\"Grüße\U0001F600\"", u"Grüße\U0001F600"},
  };
  for (const auto& c : cases) {
    const StringsTable table = Parse("k = " + std::string(c.written) + ";");
    ASSERT_EQ(table.size(), 1U) << c.written;
    EXPECT_EQ(table.begin()->second, c.meant) << c.written;
  }
}

TEST(StringsTable, ReadsUtf16OfBothByteOrders) {
  const StringsTable expected = {{u"k", u"\u20ac"}};
  const std::u16string_view text = u"k=\"\u20ac\";";
  std::string big = "\xFE\xFF";
  std::string little = "\xFF\xFE";
  for (const UniChar unit : text) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    big.append({high, low});
    little.append({low, high});
  }
  EXPECT_EQ(Parse(big), expected);
  EXPECT_EQ(Parse(little), expected);
  EXPECT_EQ(Parse("\xEF\xBB\xBFk=\"\xE2\x82\xAC\";"), expected);
  EXPECT_TRUE(Parse(big + "x").empty());
}

TEST(StringsTable, IsEmptyForABadFile) {
  const std::string good = "\"a\" = \"b\";\n";
  EXPECT_EQ(Parse(good).size(), 1U);
  for (const std::string bad :
       {"c",         "c =",      "c = d",      "= d;",      "c d;",           "c = d e;",
        ";",         "\"c = d;", "c = \"d;",   "c = \"d\\", "c = \"\\U12\";", "c = \"\\u12G4\";",
        "/* no end", "/*/",      "c = \"d' ;", "c = d;; ",  "{ c = d; }",     "c = \xFF;",
        "/",         "\xC3"}) {
    EXPECT_TRUE(Parse(good + bad).empty()) << bad;
  }
  EXPECT_TRUE(Parse("").empty());
}

class LocalizedStrings : public testing::Test {
 protected:
  LocalizedStrings() {
    std::string name = (std::filesystem::temp_directory_path() / "stringsXXXXXX").string();
    folder_ = mkdtemp(name.data());
    std::filesystem::create_directory(folder_ / "en.lproj");
    quillmere::SetBundleResourceFolder(folder_);
  }
  ~LocalizedStrings() override {
    quillmere::SetBundleResourceFolder("");
    std::error_code error;
    std::filesystem::remove_all(folder_, error);
  }
  void Write(const char* name, const char* text) const { std::ofstream(folder_ / name) << text; }
  static std::string Text(CFStringRef key, CFStringRef value, CFStringRef table) {
    const Owned<CFStringRef> text(
        CFBundleCopyLocalizedString(CFBundleGetMainBundle(), key, value, table));
    return quillmere::ToUtf8(text.get());
  }
  std::filesystem::path folder_;
};

TEST_F(LocalizedStrings, ComeFromTheTableThenFromTheValueThenFromTheKey) {
  Write("en.lproj/Localizable.strings", "k = default;");
  Write("en.lproj/Some Table.strings", "k = some; empty = \"\";");
  Write("Some Table.strings", "k = outer; only = outer;");
  Write("en.lproj/Bad.strings", "k = bad; oops");
  const CFStringRef some = CFSTR("Some Table");
  EXPECT_EQ(Text(CFSTR("k"), nullptr, nullptr), "default");
  EXPECT_EQ(Text(CFSTR("k"), CFSTR("v"), CFSTR("")), "default");
  EXPECT_EQ(Text(CFSTR("k"), CFSTR("v"), some), "some");
  EXPECT_EQ(Text(CFSTR("empty"), CFSTR("v"), some), "");
  EXPECT_EQ(Text(CFSTR("missing"), CFSTR("v"), some), "v");
  EXPECT_EQ(Text(CFSTR("missing"), CFSTR(""), some), "missing");
  EXPECT_EQ(Text(CFSTR("k"), CFSTR("v"), CFSTR("Bad")), "v");
  EXPECT_EQ(Text(CFSTR("k"), nullptr, CFSTR("No Table")), "k");
  EXPECT_EQ(Text(nullptr, CFSTR("v"), some), "v");
  EXPECT_EQ(Text(nullptr, nullptr, some), "");
}

TEST_F(LocalizedStrings, AreKeptOnceRead) {
  Write("en.lproj/Kept.strings", "k = first;");
  EXPECT_EQ(Text(CFSTR("k"), nullptr, CFSTR("Kept")), "first");
  Write("en.lproj/Kept.strings", "k = second;");
  EXPECT_EQ(Text(CFSTR("k"), nullptr, CFSTR("Kept")), "first");
  std::filesystem::create_directory(folder_ / "en.lproj/Folder.strings");
  EXPECT_EQ(Text(CFSTR("k"), nullptr, CFSTR("Folder")), "k");
}

}  // namespace
