// Descriptors: lists, records, coercions, and the formats that build them.
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>
#include <string>
#include <utility>

#include "aliases.h"
#include "descriptors.h"
#include "event_builder.h"
#include "file_references.h"
#include "test_files.h"
#include "text_coercions.h"

namespace {

using quillmere::OwnedDescriptor;

/// A descriptor in letters: its type, and its bytes in hexadecimal digits or what it holds.
std::string Told(const AEDesc& descriptor) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8)
    text += static_cast<char>(descriptor.descriptorType >> shift);
  SInt32 count = 0;
  if (AECountItems(&descriptor, &count) != noErr) {
    std::string bytes(static_cast<std::size_t>(AEGetDescDataSize(&descriptor)), '\0');
    AEGetDescData(&descriptor, bytes.data(), static_cast<Size>(bytes.size()));
    constexpr char kDigits[] = "0123456789ABCDEF";
    text += '(';
    for (const char byte : bytes) {
      text += kDigits[(byte >> 4) & 15];
      text += kDigits[byte & 15];
    }
    return text + ')';
  }
  text += '[';
  for (SInt32 index = 1; index <= count; ++index) {
    OwnedDescriptor item;
    AEKeyword keyword = 0;
    EXPECT_EQ(noErr, AEGetNthDesc(&descriptor, index, typeWildCard, &keyword, item.get()));
    if (index > 1) text += ',';
    for (int shift = 24; keyword != 0 && shift >= 0; shift -= 8)
      text += static_cast<char>(keyword >> shift);
    text += Told(*item.get());
  }
  return text + ']';
}

/// What a format with its arguments builds.
std::string Build(const char* format, ...) {
  OwnedDescriptor built;
  AEBuildError error{};
  va_list arguments;
  va_start(arguments, format);
  const OSStatus status = vAEBuildDesc(built.get(), &error, format, arguments);
  va_end(arguments);
  if (status == noErr) return Told(*built.get());
  return std::to_string(status) + ":" + std::to_string(error.fError) + "@" +
         std::to_string(error.fErrorPos);
}

TEST(EventBuilder, BuildsValuesListsAndRecords) {
  EXPECT_EQ("list[]", Build(" [ ] "));
  EXPECT_EQ("reco[]", Build("{}"));
  EXPECT_EQ("long(07000000)", Build("7"));
  EXPECT_EQ("long(00000080)", Build("-2147483648"));
  EXPECT_EQ("comp(0000008000000000)", Build("2147483648"));
  EXPECT_EQ("shor(FFFF)", Build("shor(-1)"));
  EXPECT_EQ("enum(20206261)", Build("ab"));  // native order of 'ab  '
  EXPECT_EQ("type(64636261)", Build("type('abcd')"));
  EXPECT_EQ("TEXT(C3A45D)", Build("\xE2\x80\x9C\xC3\xA4]\xE2\x80\x9D"));
  EXPECT_EQ("TEXT(78)", Build("\xD2x\xD3"));
  EXPECT_EQ("abcd(00FF)", Build("abcd(\xC2\xAB 00 fF \xC2\xBB)"));
  EXPECT_EQ("abcd(0A)", Build("abcd($0a$)"));
  EXPECT_EQ("list[list[long(01000000)],reco[a b long(02000000),k   list[]]]",
            Build("[[1],{'a b':2,k:[]}]"));
  EXPECT_EQ("rang[starlong(01000000),stoplong(03000000)]", Build("rang{star:1,stop:3}"));
  EXPECT_EQ("reco[k   long(02000000)]", Build("{k:1,k:2}"));
}

TEST(EventBuilder, TakesArgumentsInTheirOrder) {
  const SInt64 wide = -2;
  Handle handle = nullptr;
  ASSERT_EQ(noErr, PtrToHand("xyz", &handle, 3));
  OwnedDescriptor given;
  AECreateDesc("abcd"_4cc, "q", 1, given.get());
  EXPECT_EQ(
      "list[shor(FEFF),long(01000000),comp(FEFFFFFFFFFFFFFF),bool(01),sing(0000003F),"
      "doub(000000000000E0BF),TEXT(6162),type(64636261),alis(78797A),fsrf(6869),abcd(71)]",
      Build("[shor(@),long(@),comp(@),bool(@),sing(@),doub(@),TEXT(@),type(@),alis(@@),"
            "fsrf(@),@]",
            -2, SInt32{1}, wide, 256, 0.5, -0.5, "ab", "abcd"_4cc, handle, Size{2}, "hi",
            given.get()));
  EXPECT_EQ("-50:12@1", Build("(@)", nullptr));
  EXPECT_EQ("-50:12@5", Build("abcd(@)", Size{-1}, "x"));
  DisposeHandle(handle);
}

TEST(EventBuilder, TellsWhatIsWrongAndWhere) {
  const std::pair<const char*, std::pair<UInt32, UInt32>> cases[] = {
      {"[1 \x01]", {14, 3}},
      {"\x01", {1, 0}},
      {"", {2, 0}},
      {"[1,", {2, 3}},
      {"1 2", {3, 2}},
      {"[-x]", {4, 1}},
      {"'abc", {5, 0}},
      {"abcd($0g$)", {6, 7}},
      {"abcd($012$)", {7, 6}},
      {"abcd($01", {8, 8}},
      {"$01$", {9, 1}},
      {"TEXT(\xD2x", {10, 7}},
      {"[,]", {11, 1}},
      {"long()", {12, 5}},
      {"long(1", {13, 6}},
      {"(1]", {13, 2}},
      {"[1 2]", {14, 3}},
      {"[1", {14, 2}},
      {"{a:1 b:2}", {15, 5}},
      {"{a:1", {15, 4}},
      {"{1:2}", {16, 1}},
      {"{a 1}", {17, 3}},
      {"list[1]", {18, 4}},
      {"@@", {19, 0}},
      {"99999999999999999999", {12, 0}},
  };
  for (const auto& [format, error] : cases) {
    EXPECT_EQ("-50:" + std::to_string(error.first) + "@" + std::to_string(error.second),
              Build(format))
        << format;
  }
  EXPECT_EQ("-1700:12@5", Build("shor(65536)"));  // a status of the coercion
  EXPECT_EQ("-50:11@64", Build(std::string(100000, '[').c_str()));
}

TEST(EventBuilder, BuildsEvents) {
  const UInt32 self[] = {0, 2};
  OwnedDescriptor event;
  AEBuildError error{};
  ASSERT_EQ(noErr,
            AEBuildAppleEvent("ascr"_4cc, "psbr"_4cc, typeProcessSerialNumber, self, sizeof self,
                              -1, 5, event.get(), &error, "'----':[1],'snam':TEXT(@)", "name"));
  EXPECT_EQ("aevt[----list[long(01000000)],snamTEXT(6E616D65)]", Told(*event.get()));
  for (const auto& [keyword, told] : {std::pair{"evcl"_4cc, "type(72637361)"},
                                      {"evid"_4cc, "type(72627370)"},
                                      {"addr"_4cc, "psn (0000000002000000)"},
                                      {"tran"_4cc, "long(05000000)"}}) {
    OwnedDescriptor attribute;
    EXPECT_EQ(noErr, AEGetAttributeDesc(event.get(), keyword, typeWildCard, attribute.get()));
    EXPECT_EQ(told, Told(*attribute.get()));
  }
  OwnedDescriptor none;
  EXPECT_EQ(noErr, AEBuildAppleEvent("aevt"_4cc, "quit"_4cc, "sign"_4cc, "MACS", 4, -1, 0,
                                     none.get(), nullptr, ""));
  EXPECT_EQ("aevt[]", Told(*none.get()));
  AEDisposeDesc(none.get());
  EXPECT_EQ(paramErr, AEBuildAppleEvent("aevt"_4cc, "quit"_4cc, "sign"_4cc, "MACS", 4, -1, 0,
                                        none.get(), &error, "a:1 2"));
  EXPECT_EQ(aeBuildSyntaxNoEOF, error.fError);
  EXPECT_EQ(4U, error.fErrorPos);
  EXPECT_EQ(nullptr, none.get()->dataHandle);
}

/// Coerces what a format builds; the status where that fails.
std::string Coerced(const char* format, OSType type) {
  OwnedDescriptor built;
  OwnedDescriptor coerced;
  EXPECT_EQ(noErr, AEBuildDesc(built.get(), nullptr, format)) << format;
  const OSErr status = AECoerceDesc(built.get(), type, coerced.get());
  return status == noErr ? Told(*coerced.get()) : std::to_string(status);
}

TEST(Descriptors, CoerceBetweenTypes) {
  struct Case {
    const char* format;
    OSType type;
    const char* told;
  };
  const Case cases[] = {
      {"32767", "shor"_4cc, "shor(FF7F)"},
      {"32768", "shor"_4cc, "-1700"},
      {"-1", "magn"_4cc, "-1700"},
      {"magn($FFFFFFFF$)", "long"_4cc, "-1700"},
      {"magn($FFFFFFFF$)", "comp"_4cc, "comp(FFFFFFFF00000000)"},
      {"doub(3)", "utf8"_4cc, "utf8(33)"},
      {"doub($0000000000000440$)", "long"_4cc, "long(02000000)"},  // 2.5 to the even number
      {"doub($000000000000F07F$)", "comp"_4cc, "-1700"},           // infinity
      {"doub($000000000000E043$)", "comp"_4cc, "-1700"},           // 2 to the 63
      {"TEXT(\xD2 -12\xD3)", "long"_4cc, "long(F4FFFFFF)"},
      {"TEXT(\xD2 12x\xD3)", "long"_4cc, "-1700"},
      {"TEXT(\xD2\xD3)", "long"_4cc, "-1700"},
      {"TEXT(\xD2true\xD3)", "bool"_4cc, "bool(01)"},
      {"bool(1)", "utf8"_4cc, "utf8(74727565)"},
      {"bool(1)", "true"_4cc, "true()"},
      {"bool(1)", "fals"_4cc, "-1700"},
      {"true($$)", "long"_4cc, "long(01000000)"},
      {"2", "bool"_4cc, "-1700"},
      {"long($00$)", "shor"_4cc, "-1700"},  // too few bytes
      {"-5", "ut16"_4cc, "ut16(002D0035)"},
      {"ut16($FFFE3500$)", "long"_4cc, "long(05000000)"},
      {"abcd", "type"_4cc, "type(64636261)"},
      {"[7]", "shor"_4cc, "shor(0700)"},
      {"[7,8]", "shor"_4cc, "-1700"},
      {"7", "list"_4cc, "list[long(07000000)]"},
      {"{a:1}", "list"_4cc, "list[long(01000000)]"},
      {"{a:1}", "rang"_4cc, "rang[a   long(01000000)]"},
      {"{a:1}", "TEXT"_4cc, "-1700"},
      {"abcd($00$)", "efgh"_4cc, "-1700"},
  };
  for (const Case& one : cases)
    EXPECT_EQ(one.told, Coerced(one.format, one.type)) << one.format;
}

TEST(Descriptors, FilesBecomeEachOther) {
  const quillmere::test::TemporaryFolder folder;
  const auto path = folder / "a file";
  quillmere::test::WriteFile(path, std::string_view("x"));
  FSRef file{};
  ASSERT_EQ(noErr, quillmere::files::ReferenceOf(path, &file));
  OwnedDescriptor reference;
  OwnedDescriptor alias;
  OwnedDescriptor url;
  OwnedDescriptor back;
  AECreateDesc(typeFSRef, &file, sizeof file, reference.get());
  ASSERT_EQ(noErr, AECoerceDesc(reference.get(), typeAlias, alias.get()));
  ASSERT_EQ(noErr, AECoerceDesc(alias.get(), typeFileURL, url.get()));
  ASSERT_EQ(noErr, AECoerceDesc(url.get(), typeFSRef, back.get()));
  FSRef found{};
  AEGetDescData(back.get(), &found, sizeof found);
  EXPECT_EQ(0, FSCompareFSRefs(&file, &found));

  std::filesystem::remove(path);
  OwnedDescriptor gone;
  EXPECT_NE(noErr, AECoerceDesc(alias.get(), typeFSRef, gone.get()));
  AECreateDesc(typeAlias, "short", 5, gone.get());
  OwnedDescriptor none;
  EXPECT_NE(noErr, AECoerceDesc(gone.get(), typeFSRef, none.get()));
}

TEST(Descriptors, InstalledCoercionsComeFirst) {
  const auto to_bar = [](const AEDesc* from, OSType type, SInt64 refcon, AEDesc* to) {
    if (AEGetDescDataSize(from) == 0) return errAECoercionFail;
    return AECreateDesc(type, &refcon, 1, to);
  };
  EXPECT_EQ(paramErr, AEInstallCoercionHandler("TEXT"_4cc, "bar!"_4cc, nullptr, 0, 1, 0));
  ASSERT_EQ(noErr, AEInstallCoercionHandler("TEXT"_4cc, "bar!"_4cc, to_bar, 0x42, 1, 0));
  EXPECT_EQ("bar!(42)", Coerced("TEXT(\xD2x\xD3)", "bar!"_4cc));
  EXPECT_EQ("-1700", Coerced("TEXT(\xD2\xD3)", "bar!"_4cc));
}

TEST(Descriptors, ParametersAreReplacedAndFound) {
  OwnedDescriptor record;
  ASSERT_EQ(noErr, AECreateList(record.get(), true));
  const SInt32 number = 7;
  OSType type = 0;
  Size size = 0;
  SInt16 narrow = 0;
  EXPECT_EQ(noErr, AEPutParamPtr(record.get(), "a   "_4cc, typeText, "xx", 2));
  EXPECT_EQ(noErr, AEPutParamPtr(record.get(), "a   "_4cc, typeSInt32, &number, sizeof number));
  EXPECT_EQ(noErr, AESizeOfParam(record.get(), "a   "_4cc, &type, &size));
  EXPECT_EQ(typeSInt32, type);
  EXPECT_EQ(Size{4}, size);
  EXPECT_EQ(noErr, AEGetParamPtr(record.get(), "a   "_4cc, typeSInt16, nullptr, &narrow,
                                 sizeof narrow, nullptr));
  EXPECT_EQ(7, narrow);
  EXPECT_EQ(errAEDescNotFound, AESizeOfParam(record.get(), "b   "_4cc, &type, &size));
  OwnedDescriptor list;
  AECreateList(list.get());
  EXPECT_EQ(errAEWrongDataType, AEPutParamDesc(list.get(), "a   "_4cc, record.get()));
  EXPECT_EQ(errAEWrongDataType, AEPutDesc(record.get(), 0, list.get()));
  // A copy is independent of what it was made of, also of itself.
  ASSERT_EQ(noErr, AEPutDesc(list.get(), 0, record.get()));
  ASSERT_EQ(noErr, AEPutDesc(list.get(), 0, list.get()));
  AEDisposeDesc(record.get());
  EXPECT_EQ("list[reco[a   long(07000000)],list[reco[a   long(07000000)]]]", Told(*list.get()));
  EXPECT_EQ(errAEDescNotFound, AEPutDesc(list.get(), 4, list.get()));
  EXPECT_EQ(errAEDescNotFound, AEGetNthDesc(list.get(), 0, typeWildCard, nullptr, record.get()));
}

}  // namespace
