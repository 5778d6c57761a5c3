#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "GL_CF.h"
#include "GL_Errors.h"
#include "GL_Memory.h"
#include "test_files.h"

namespace {

namespace fs = std::filesystem;
using quillmere::Owned;
using quillmere::test::ReadFile;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;
using Dictionary = Owned<CFMutableDictionaryRef>;

CFStringRef Key() {
  return CFSTR("key");
}

FSRef Reference(const fs::path& path) {
  FSRef reference{};
  EXPECT_EQ(quillmere::files::ReferenceOf(path, &reference), noErr) << path;
  return reference;
}

/// Where a dictionary goes before its values are read: nowhere, through an XML file, through the
/// preferences.
enum class Way { kMemory, kFile, kPreferences };

class ValueForms : public testing::TestWithParam<Way> {
 protected:
  ValueForms() { setenv("XDG_CONFIG_HOME", folder_.path().c_str(), 1); }
  ~ValueForms() override {
    CF_RemoveValueFromPrefs(CFSTR("values"));
    CF_SavePreferencesToDisk();
  }

  /// The dictionary as it comes back.
  Owned<CFDictionaryRef> Back() {
    if (GetParam() == Way::kMemory)
      return Owned<CFDictionaryRef>(CF_DictCreateMutCopy(dictionary_.get()));
    if (GetParam() == Way::kPreferences) {
      CF_SaveValueInPrefs(CFSTR("values"), dictionary_.get());
      EXPECT_TRUE(CF_SavePreferencesToDisk());
      return Owned<CFDictionaryRef>(CF_CopyMutDictFromPrefs(CFSTR("values")));
    }
    const Owned<CFURLRef> url(quillmere::CreateUrlOfPath(folder_ / "values.plist"));
    EXPECT_EQ(CF_WritePropertyListToXMLFile(dictionary_.get(), url.get()), noErr);
    CFPropertyListRef list = nullptr;
    EXPECT_EQ(CF_ReadPropertyListFromXMLFile(url.get(), &list), noErr);
    EXPECT_NE(quillmere::AsDictionary(list), nullptr);
    return Owned<CFDictionaryRef>(quillmere::AsDictionary(list));
  }

  template <class T, class Add, class Get>
  void RoundTrip(Add add, Get get, std::initializer_list<T> values) {
    for (const T value : values) {
      add(dictionary_.get(), Key(), value);
      const Owned<CFDictionaryRef> back = Back();
      T read{};
      get(back.get(), Key(), &read);
      EXPECT_EQ(std::memcmp(&read, &value, sizeof(T)), 0) << +value << " became " << +read;
      T untouched = value;
      get(back.get(), CFSTR("none"), &untouched);
      get(nullptr, Key(), &untouched);
      EXPECT_EQ(std::memcmp(&untouched, &value, sizeof(T)), 0);
    }
  }

  TemporaryFolder folder_;
  Dictionary dictionary_{CF_DictCreateMut()};
};

INSTANTIATE_TEST_SUITE_P(Ways, ValueForms,
                         testing::Values(Way::kMemory, Way::kFile, Way::kPreferences));

template <class T>
std::initializer_list<T> Limits() {
  static constexpr T kLowest = std::numeric_limits<T>::lowest();
  static constexpr T kMost = std::numeric_limits<T>::max();
  static const std::initializer_list<T> limits = {T{0}, T{1}, kLowest, kMost,
                                                  static_cast<T>(kMost / 2 + 1)};
  return limits;
}

TEST_P(ValueForms, NumbersOfEveryWidth) {
  RoundTrip<SInt8>(CF_AddSInt8ToDict, CF_GetSInt8FromDict, Limits<SInt8>());
  RoundTrip<SInt16>(CF_AddSInt16ToDict, CF_GetSInt16FromDict, Limits<SInt16>());
  RoundTrip<SInt32>(CF_AddSInt32ToDict, CF_GetSInt32FromDict, Limits<SInt32>());
  RoundTrip<SInt64>(CF_AddSInt64ToDict, CF_GetSInt64FromDict, Limits<SInt64>());
  RoundTrip<UInt8>(CF_AddSInt8ToDict, CF_GetUInt8FromDict, Limits<UInt8>());
  RoundTrip<UInt16>(CF_AddSInt16ToDict, CF_GetUInt16FromDict, Limits<UInt16>());
  RoundTrip<UInt32>(CF_AddSInt32ToDict, CF_GetUInt32FromDict, Limits<UInt32>());
  RoundTrip<UInt64>(CF_AddSInt64ToDict, CF_GetUInt64FromDict, Limits<UInt64>());
  RoundTrip<Float32>(
      CF_AddFloat32ToDict, CF_GetFloat32FromDict,
      {0.1F, -0.0F, std::numeric_limits<float>::max(), std::numeric_limits<float>::denorm_min(),
       std::numeric_limits<float>::infinity()});
  RoundTrip<Float64>(
      CF_AddFloat64ToDict, CF_GetFloat64FromDict,
      {0.1, -0.0, std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min(),
       -std::numeric_limits<double>::infinity()});
}

TEST_P(ValueForms, EnumerationsBooleansAndCodes) {
  for (const SInt32 value : Limits<SInt32>()) {
    CF_AddEnumToDict(dictionary_.get(), Key(), value);
    EXPECT_EQ(CF_GetEnumFromDict(Back().get(), Key()), value);
  }
  EXPECT_EQ(CF_GetEnumFromDict(Back().get(), CFSTR("none")), -1);
  for (const Boolean value : {Boolean{0}, Boolean{1}, Boolean{200}}) {
    CF_AddBooleanToDict(dictionary_.get(), Key(), value);
    Boolean read = 77;
    CF_GetBooleanFromDict(Back().get(), Key(), &read);
    EXPECT_EQ(read, value ? 1 : 0);
    CF_GetBooleanFromDict(Back().get(), CFSTR("none"), &read);
    EXPECT_EQ(read, value ? 1 : 0);
  }
  for (const OSType code :
       {"moov"_4cc, "a  \x20"_4cc, "\xA9nam"_4cc, OSType{0}, OSType{32}, OSType{0x0D0A0001}}) {
    CF_AddOSTypeToDict(dictionary_.get(), Key(), code);
    const Owned<CFDictionaryRef> back = Back();
    EXPECT_EQ(CF_GetOSTypeFromDict(back.get(), Key()), code);
    EXPECT_EQ(CFStringGetLength(quillmere::AsString(CFDictionaryGetValue(back.get(), Key()))), 4);
  }
  EXPECT_EQ(CF_GetOSTypeFromDict(Back().get(), CFSTR("none")), 0U);
}

TEST_P(ValueForms, RecordsAndArrays) {
  const Rect rect = {-32768, 2, 32767, -4};
  const Point point = {.v = 5, .h = 9};
  const MatrixRecord matrix = {
      {{0x10000, 1, 2}, {3, -0x10000, 4}, {INT32_MIN, INT32_MAX, 1 << 30}}};
  const SInt32 numbers[] = {INT32_MIN, 0, INT32_MAX};
  const Boolean truths[] = {0, 1, 255};
  const OSType codes[] = {"abcd"_4cc, 1, "\xFF\x80xy"_4cc};
  CF_AddRectToDict(dictionary_.get(), CFSTR("rect"), &rect);
  const std::pair<CFStringRef, CFArrayRef> arrays[] = {
      {CFSTR("point"), CF_CreatePointCFArray(&point)},
      {CFSTR("matrix"), CF_CreateMatrixCFArray(&matrix)},
      {CFSTR("numbers"), CF_CreateSInt32Array(numbers, 3)},
      {CFSTR("truths"), CF_CreateBooleanArray(truths, 3)},
      {CFSTR("codes"), CF_CreateOSTypeArray(codes, 3)}};
  for (const auto& [key, array] : arrays) {
    CFDictionarySetValue(dictionary_.get(), key, array);
    CFRelease(array);
  }
  const Owned<CFDictionaryRef> back = Back();
  const auto array = [&back](const char* key) {
    return quillmere::AsArray(CFDictionaryGetValue(back.get(), CFSTR(key)));
  };
  SInt16 first = 0;
  CFNumberGetValue(quillmere::AsNumber(CFArrayGetValueAtIndex(array("point"), 0)),
                   kCFNumberShortType, &first);
  EXPECT_EQ(first, point.h);

  Rect read_rect{};
  CF_GetRectFromDict(back.get(), CFSTR("rect"), &read_rect);
  EXPECT_EQ(std::memcmp(&read_rect, &rect, sizeof rect), 0);
  CF_GetRectFromDict(back.get(), CFSTR("point"), &read_rect);  // another count
  EXPECT_EQ(std::memcmp(&read_rect, &rect, sizeof rect), 0);
  Point read_point{};
  CF_GetPointFromDict(back.get(), CFSTR("point"), &read_point);
  EXPECT_EQ(std::memcmp(&read_point, &point, sizeof point), 0);
  MatrixRecord read_matrix{};
  CF_GetMatrixFromCFArray(array("matrix"), &read_matrix);
  EXPECT_EQ(std::memcmp(&read_matrix, &matrix, sizeof matrix), 0);
  CF_GetMatrixFromCFArray(array("numbers"), &read_matrix);
  EXPECT_EQ(std::memcmp(&read_matrix, &matrix, sizeof matrix), 0);

  SInt32 read_numbers[3] = {};
  Boolean read_truths[3] = {9, 9, 9};
  OSType read_codes[3] = {};
  CFIndex count = 0;
  CF_GetSInt32ValuesFromArray(array("numbers"), read_numbers, &count);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(std::memcmp(read_numbers, numbers, sizeof numbers), 0);
  CF_GetBooleanValuesFromArray(array("truths"), read_truths, &count);
  EXPECT_EQ(std::vector<int>(read_truths, read_truths + 3), (std::vector<int>{0, 1, 1}));
  CF_GetOSTypesFromArray(array("codes"), read_codes, &count);
  EXPECT_EQ(std::memcmp(read_codes, codes, sizeof codes), 0);
  CF_GetOSTypesFromArray(nullptr, read_codes, &count);
  EXPECT_EQ(count, 0);
}

TEST_P(ValueForms, ColoursDurationsAndDates) {
  const RGBColor color = {0xFFFF, 0x8000, 1};
  const Owned<CFDictionaryRef> rgb(CF_CreateRGBDict(&color));
  CFDictionarySetValue(dictionary_.get(), CFSTR("rgb"), rgb.get());
  for (const SInt64 seconds : {SInt64{90000}, SInt64{-1}, std::numeric_limits<SInt64>::min()}) {
    CF_AddDurationToDict(dictionary_.get(), Key(), seconds);
    SInt64 read = 7;
    CF_GetDurationFromDict(Back().get(), Key(), &read);
    EXPECT_EQ(read, seconds);
    CF_GetDurationFromDict(Back().get(), CFSTR("none"), &read);
    EXPECT_EQ(read, 0);
  }
  CF_AddDurationToDict(dictionary_.get(), Key(), 93600);
  CF_AddDateToDict(dictionary_.get(), CFSTR("date"), -123456789);
  const Owned<CFDictionaryRef> back = Back();
  const auto* duration = quillmere::AsDictionary(CFDictionaryGetValue(back.get(), Key()));
  EXPECT_EQ(quillmere::ToUtf8(quillmere::AsString(CFDictionaryGetValue(duration, CFSTR("Descr")))),
            "1days2h");
  CFAbsoluteTime time = 0;
  CF_GetDateFromDict(back.get(), CFSTR("date"), &time);
  CF_GetDateFromDict(back.get(), CFSTR("none"), &time);
  EXPECT_EQ(time, -123456789);

  RGBColor read = {1, 2, 3};
  CF_GetRGBFromDict(back.get(), CFSTR("rgb"), &read);
  EXPECT_EQ(std::memcmp(&read, &color, sizeof color), 0);
  const Dictionary partial(CF_CopyMutDictFromDict(back.get(), CFSTR("rgb")));
  CFDictionaryRemoveValue(partial.get(), CFSTR("Green"));
  read = {4, 5, 6};
  CF_GetRGBFromRGBDict(partial.get(), &read);
  EXPECT_EQ(read.green, 5);
  EXPECT_EQ(read.red, 0xFFFF);
  CF_GetRGBFromDict(back.get(), CFSTR("none"), &read);
  EXPECT_EQ(read.red | read.green | read.blue, 0);
}

TEST_P(ValueForms, TextsAndBytes) {
  for (const std::string& text :
       {std::string(), std::string("abc"), std::string("\xFF\x01\r"), std::string(300, 'x')}) {
    CF_AddCStringToDict(dictionary_.get(), Key(), text.c_str());
    const Owned<CFDictionaryRef> back = Back();
    const CFDataRef data = quillmere::AsData(CFDictionaryGetValue(back.get(), Key()));
    EXPECT_EQ(CFDataGetLength(data), std::ssize(text));
    std::vector<char> read(text.size() + 1, 'z');
    CF_GetCStringFromDict(back.get(), Key(), read.data());
    EXPECT_EQ(std::string(read.data()), text);

    CF_AddMacRomanCStringToDict(dictionary_.get(), Key(), text.c_str());
    std::vector<char> roman(256, 'z');
    CF_GetMacRomanCStringFromDict(Back().get(), Key(), roman.data());
    EXPECT_EQ(std::string(roman.data()), text.substr(0, 255));
    CF_GetMacRomanCStringFromDict(Back().get(), CFSTR("none"), roman.data());
    EXPECT_STREQ(roman.data(), "");
    CF_GetCStringFromDict(Back().get(), CFSTR("none"), read.data());
    EXPECT_STREQ(read.data(), "");

    const Owned<CFDataRef> bytes(
        CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(text.data()), std::ssize(text)));
    Handle handle = CF_DataRefToHandle(bytes.get());
    CF_AddDataToDictFromHandle(dictionary_.get(), Key(), handle);
    const Owned<CFDictionaryRef> again = Back();
    EXPECT_TRUE(CFEqual(CFDictionaryGetValue(again.get(), Key()), bytes.get()));
    void* block = nullptr;
    Size size = -1;
    CF_GetDataFromDict(again.get(), Key(), &block, &size);
    EXPECT_EQ(std::string(static_cast<char*>(block), static_cast<std::size_t>(size)), text);
    GL_DisposePtr(&block);
    Handle copy = nullptr;
    CF_GetDataFromDictAsHandle(again.get(), Key(), &copy, &size);
    EXPECT_EQ(size, std::ssize(text));
    EXPECT_TRUE(GL_EqualHandles(handle, copy));
    GL_DisposeHandle(&copy);
    GL_DisposeHandle(&handle);
    CF_GetDataFromDictAsHandle(again.get(), CFSTR("none"), &copy, &size);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(size, 0);
  }
  EXPECT_EQ(CF_DataRefToHandle(nullptr), nullptr);
  EXPECT_EQ(CF_HandleToDataRef(nullptr), nullptr);
}

TEST_P(ValueForms, FileNamesAndFiles) {
  HFSUniStr255 name = {};
  for (const UInt16 length : {UInt16{0}, UInt16{1}, UInt16{255}}) {
    name.length = length;
    for (UInt16 i = 0; i < length; ++i)
      name.unicode[i] = static_cast<UniChar>(0xD7F0 + i);  // among them unpaired surrogates
    CF_AddHFSNameToDict(dictionary_.get(), Key(), &name);
    HFSUniStr255 read = {};
    CF_GetHFSNameFromDict(Back().get(), Key(), &read);
    EXPECT_EQ(std::memcmp(&read, &name, sizeof read), 0);
  }
  const Dictionary longer(CF_DictCreateMut());
  const Owned<CFStringRef> long_name(quillmere::CreateFromUtf8(std::string(256, 'n')));
  CFDictionarySetValue(longer.get(), Key(), long_name.get());
  CF_GetHFSNameFromDict(longer.get(), Key(), &name);
  EXPECT_EQ(name.length, 0);

  WriteFile(folder_ / "file", "x");
  const FSRef file = Reference(folder_ / "file");
  ASSERT_EQ(CF_AddFileObjectToDict(dictionary_.get(), CFSTR("file"), &file), noErr);
  FSRef found{};
  Boolean was_changed = 9;
  const Owned<CFDictionaryRef> back = Back();
  EXPECT_EQ(CF_ResolveAliasInDict(back.get(), CFSTR("file"), &found, nullptr), noErr);
  EXPECT_EQ(CF_ResolveAliasInDict(back.get(), CFSTR("file"), &found, &was_changed), noErr);
  EXPECT_EQ(FSCompareFSRefs(&file, &found), noErr);
  EXPECT_EQ(was_changed, 0);

  fs::remove(folder_ / "file");
  const FSRef none{};
  EXPECT_NE(CF_ResolveAliasInDict(back.get(), CFSTR("file"), &found, nullptr), noErr);
  EXPECT_EQ(std::memcmp(&found, &none, sizeof none), 0);
  found = file;
  EXPECT_EQ(CF_ResolveAliasInDict(back.get(), CFSTR("none"), &found, nullptr), fnfErr);
  EXPECT_EQ(std::memcmp(&found, &none, sizeof none), 0);
  CFDataRef data = nullptr;
  EXPECT_NE(CF_FileToAliasDataRef(&file, &data), noErr);
  EXPECT_EQ(data, nullptr);
}

TEST(DictionaryValues, AnAliasIsRenewedOnlyWhenItsTargetHasMoved) {
  const TemporaryFolder folder;
  WriteFile(folder / "file", "x");
  const FSRef file = Reference(folder / "file");
  const Dictionary dictionary(CF_DictCreateMut());
  ASSERT_EQ(CF_AddFileObjectToDict(dictionary.get(), Key(), &file), noErr);
  const CFTypeRef stored = CFDictionaryGetValue(dictionary.get(), Key());
  FSRef found{};
  Boolean was_changed = 9;
  EXPECT_EQ(CF_UpdateAliasInDict(dictionary.get(), Key(), &found, &was_changed), noErr);
  EXPECT_EQ(was_changed, 0);
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), Key()), stored);
  fs::rename(folder / "file", folder / "renamed");
  EXPECT_EQ(CF_UpdateAliasInDict(dictionary.get(), Key(), &found, &was_changed), noErr);
  EXPECT_EQ(was_changed, 1);
  EXPECT_EQ(FSCompareFSRefs(&found, &file), noErr);
  EXPECT_EQ(CF_UpdateAliasInDict(dictionary.get(), Key(), &found, &was_changed), noErr);
  EXPECT_EQ(was_changed, 0);  // the new alias leads straight there
  EXPECT_EQ(CF_UpdateAliasInDict(dictionary.get(), Key(), &found, nullptr), paramErr);
  EXPECT_EQ(CF_UpdateAliasInDict(dictionary.get(), CFSTR("none"), &found, &was_changed), fnfErr);
}

TEST(DictionaryValues, UnsignedNumbersKeepTheirBitsInSignedOnes) {
  const Owned<CFNumberRef> byte(CF_CreateUInt8Ref(200));
  const Owned<CFNumberRef> word(CF_CreateUInt16Ref(40000));
  const Owned<CFNumberRef> number(CF_CreateUInt32Ref(4000000000U));
  const Owned<CFNumberRef> large(CF_CreateUInt64Ref(~UInt64{0}));
  const Owned<CFNumberRef> enumeration(CF_NumberCreateFromEnum(-3));
  EXPECT_EQ(CFNumberGetType(byte.get()), kCFNumberSInt8Type);
  EXPECT_EQ(CFNumberGetType(word.get()), kCFNumberSInt16Type);
  EXPECT_EQ(CFNumberGetType(number.get()), kCFNumberSInt32Type);
  EXPECT_EQ(CFNumberGetType(large.get()), kCFNumberSInt64Type);
  SInt64 value = 0;
  EXPECT_TRUE(CFNumberGetValue(byte.get(), kCFNumberSInt64Type, &value));
  EXPECT_EQ(value, -56);
  UInt8 read_byte = 0;
  UInt16 read_word = 0;
  UInt32 read_number = 0;
  UInt64 read_large = 0;
  CF_GetUInt8FromNumberRef(byte.get(), &read_byte);
  CF_GetUInt16FromNumberRef(word.get(), &read_word);
  CF_GetUInt32FromNumberRef(number.get(), &read_number);
  CF_GetUInt64FromNumberRef(large.get(), &read_large);
  EXPECT_EQ(read_byte, 200);
  EXPECT_EQ(read_word, 40000);
  EXPECT_EQ(read_number, 4000000000U);
  EXPECT_EQ(read_large, ~UInt64{0});
  EXPECT_EQ(CF_GetEnumFromNumberRef(enumeration.get()), -3);
}

TEST(DictionaryValues, OfAnotherKindCountAsMissing) {
  const Dictionary dictionary(CF_DictCreateMut());
  CF_AddBooleanToDict(dictionary.get(), Key(), 1);
  SInt32 number = 5;
  CF_GetSInt32FromDict(dictionary.get(), Key(), &number);
  EXPECT_EQ(number, 5);
  EXPECT_EQ(CF_GetEnumFromDict(dictionary.get(), Key()), -1);
  EXPECT_EQ(CF_GetOSTypeFromDict(dictionary.get(), Key()), 0U);
  char text[256] = "x";
  CF_GetCStringFromDict(dictionary.get(), Key(), text);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(CF_CopyMutDictFromDict(dictionary.get(), Key()), nullptr);
  EXPECT_FALSE(CF_ArrayValueExists(dictionary.get(), kCFBooleanTrue));
}

TEST(Creators, MakeWhatMayBeChangedAndReleaseWhatTheyAreGiven) {
  const CFStringRef keys[] = {CFSTR("a"), CFSTR("b")};
  const CFTypeRef values[] = {kCFBooleanTrue, CFSTR("text")};
  CFDictionaryRef source = CF_DictCreate(keys, values, 2);
  CFRetain(source);
  const Dictionary changed(CF_DictMakeMutable(source));
  EXPECT_EQ(CFGetRetainCount(source), 1);
  CF_AddSInt32ToDict(changed.get(), CFSTR("c"), 1);
  EXPECT_EQ(CFDictionaryGetCount(source), 2);
  CFRelease(source);

  CFStringRef* names = nullptr;
  CFIndex count = 0;
  CF_DictGetKeys(changed.get(), &names, &count);
  ASSERT_EQ(count, 3);
  EXPECT_EQ(quillmere::ToUtf8(names[2]), "c");
  void* block = names;
  GL_DisposePtr(&block);
  const Dictionary empty(CF_DictCreateMutWithValues(nullptr, nullptr, 0));
  CF_DictGetKeys(empty.get(), &names, &count);
  EXPECT_EQ(names, nullptr);
  EXPECT_EQ(count, 0);

  const Owned<CFMutableArrayRef> array(CF_ArrayCreateMut());
  CFArrayAppendValue(array.get(), CFSTR("x"));
  const Owned<CFMutableArrayRef> copy(CF_ArrayCreateMutCopy(array.get()));
  const Owned<CFStringRef> equal(quillmere::CreateFromUtf8("x"));
  EXPECT_TRUE(CF_ArrayValueExists(copy.get(), equal.get()));
  EXPECT_FALSE(CF_ArrayValueExists(copy.get(), CFSTR("y")));

  const Owned<CFMutableStringRef> text(CF_StringCreateMutableWithFormat(CFSTR("%@-%d"), Key(), 5));
  CFStringAppend(text.get(), CFSTR("!"));
  EXPECT_EQ(quillmere::ToUtf8(text.get()), "key-5!");
  EXPECT_EQ(CF_UnknownError(text.get()), noErr);
  EXPECT_EQ(CF_UnknownError(nullptr), -4960);
  const SInt32 ports[] = {10035, 10036, 10037, 10038};
  for (SInt32 i = -6; i < 3; ++i)
    EXPECT_EQ(CF_MapMessagePortErr(i), i < 0 && i >= -4 ? ports[-1 - i] : 0) << i;
}

TEST(Creators, AttributedStringsKeepTheirRuns) {
  const Dictionary red(CF_DictCreateMut());
  CF_AddSInt32ToDict(red.get(), CFSTR("colour"), 1);
  const Owned<CFMutableAttributedStringRef> text(CF_AttrStrCreateMutWithStr(CFSTR("abcdef")));
  const auto run_at = [&text](CFIndex index) {
    CFRange range{};
    CFAttributedStringGetAttributes(text.get(), index, &range);
    return std::pair{range.location, range.length};
  };
  CFAttributedStringSetAttributes(text.get(), {2, 2}, red.get(), 0);
  EXPECT_EQ(run_at(0), std::pair(CFIndex{0}, CFIndex{2}));
  EXPECT_EQ(run_at(3), std::pair(CFIndex{2}, CFIndex{2}));
  EXPECT_EQ(run_at(5), std::pair(CFIndex{4}, CFIndex{2}));
  CFAttributedStringReplaceString(text.get(), {3, 2}, CFSTR("XYZ"));  // takes the first one's
  EXPECT_EQ(quillmere::ToUtf8(CFAttributedStringGetString(text.get())), "abcXYZf");
  EXPECT_EQ(run_at(3), std::pair(CFIndex{2}, CFIndex{4}));
  CFAttributedStringSetAttributes(text.get(), {0, 100}, nullptr, 1);
  EXPECT_EQ(run_at(6), std::pair(CFIndex{0}, CFIndex{7}));
  CFAttributedStringReplaceString(text.get(), {0, 7}, nullptr);
  EXPECT_EQ(CFAttributedStringGetLength(text.get()), 0);
  EXPECT_EQ(CFAttributedStringGetAttributes(text.get(), 0, nullptr), nullptr);
  const Owned<CFAttributedStringRef> fixed(CF_AttrStrCreate(CFSTR("abc"), red.get()));
  EXPECT_TRUE(CFEqual(CFAttributedStringGetAttributes(fixed.get(), 2, nullptr), red.get()));
}

TEST(PropertyListFiles, TellEmptyDamagedAndMissingOnesApart) {
  const TemporaryFolder folder;
  const struct {
    const char* name;
    const char* content;
    SInt32 status;
  } cases[] = {{"empty", "", noErr}, {"text", "no list", 10032}, {"cut", "<plist><dict>", 10032}};
  for (const auto& test : cases) {
    WriteFile(folder / test.name, test.content);
    const Owned<CFURLRef> url(quillmere::CreateUrlOfPath(folder / test.name));
    CFPropertyListRef list = kCFBooleanTrue;
    EXPECT_EQ(CF_ReadPropertyListFromXMLFile(url.get(), &list), test.status) << test.name;
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(CF_WritePropertyListToXMLFile(url.get(), url.get()), paramErr);  // no list
    EXPECT_EQ(ReadFile(folder / test.name).size(), std::strlen(test.content));
  }
  const Owned<CFURLRef> missing(quillmere::CreateUrlOfPath(folder / "none/file"));
  CFPropertyListRef list = kCFBooleanTrue;
  EXPECT_EQ(CF_ReadPropertyListFromXMLFile(missing.get(), &list), fnfErr);
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(CF_WritePropertyListToXMLFile(kCFBooleanTrue, missing.get()), fnfErr);
}

TEST(BundleFiles, SettingsGoIntoFilesThatAreThere) {
  const TemporaryFolder folder;
  quillmere::SetBundleResourceFolder(folder.path());
  const auto add = [](const char* file, CFStringRef section, std::string_view bytes) {
    return CF_AddDataToResourceFileInAppBundle(CFSTR(file), section, bytes.data(),
                                               std::ssize(bytes), Key());
  };
  EXPECT_EQ(add("none.plist", nullptr, "x"), 10023);
  EXPECT_TRUE(fs::is_empty(folder.path()));
  WriteFile(folder / "codec.plist",
            "<plist><dict><key>keep</key><true/><key>s</key><dict><key>too</key><true/></dict>"
            "</dict></plist>");
  WriteFile(folder / "damaged.plist", "<plist>");
  EXPECT_EQ(CF_AddDataToResourceFileInAppBundle(CFSTR("codec.plist"), nullptr, nullptr, 3, Key()),
            4008);
  EXPECT_EQ(add("codec.plist", nullptr, "top"), noErr);
  EXPECT_EQ(add("codec.plist", CFSTR("s"), "inner"), noErr);
  EXPECT_EQ(add("codec.plist", CFSTR("new"), ""), noErr);
  EXPECT_EQ(add("damaged.plist", nullptr, "x"), noErr);
  EXPECT_EQ(quillmere::test::RunOrFail(
                {"python3", "-c",
                 "import plistlib, sys\n"
                 "for p in sys.argv[1:]: print(plistlib.load(open(p, 'rb')))",
                 (folder / "codec.plist").string(), (folder / "damaged.plist").string()}),
            "{'keep': True, 's': {'too': True, 'key': b'inner'}, 'key': b'top', "
            "'new': {'key': b''}}\n{'key': b'x'}\n");
  FSRef file{};
  EXPECT_EQ(CF_GetNamedFileInAppBundle(CFSTR("codec.plist"), &file), noErr);
  EXPECT_EQ(CF_GetNamedFileInAppBundle(CFSTR("codec"), &file), fnfErr);
  CFURLRef url = nullptr;
  EXPECT_EQ(CF_CopyNamedFileUrlInAppBundle(CFSTR("none"), &url), fnfErr);
  EXPECT_EQ(url, nullptr);
  CFBundleRef bundle = nullptr;
  EXPECT_NE(CF_LoadSystemFrameworkByName(CFSTR("No such framework"), &bundle), noErr);
  EXPECT_EQ(bundle, nullptr);
  quillmere::SetBundleResourceFolder(QUILLMERE_RESOURCES);
}

TEST(Preferences, CopyOrCreate) {
  const TemporaryFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  EXPECT_EQ(CF_CopyMutDictFromPrefs(Key()), nullptr);
  const Dictionary made(CF_CopyOrCreateMutDictFromPrefs(Key()));
  ASSERT_NE(made.get(), nullptr);
  CF_SaveDataInPrefs(Key(), "ab", 2);
  const Owned<CFPropertyListRef> value(CF_CopyValueFromPrefs(Key()));
  EXPECT_EQ(CFDataGetLength(quillmere::AsData(value.get())), 2);
  CF_RemoveValueFromPrefs(Key());
  EXPECT_EQ(CF_CopyValueFromPrefs(Key()), nullptr);
  EXPECT_TRUE(CF_SavePreferencesToDisk());
}

TEST(Printing, PutsTheTimeInFront) {
  testing::internal::CaptureStdout();
  CF_PrintWithTime(CFSTR("%@ %d"), CFSTR("x"), 7);
  CF_PrintDate();
  CF_PrintTime();
  const Owned<CFStringRef> text(quillmere::CreateFromUtf8("a" + std::string(300, 'b')));
  CF_PrintWithTime(CFSTR("%@"), text.get());
  std::string output = testing::internal::GetCapturedStdout();
  for (char& character : output) {
    if (character >= '0' && character <= '9') character = '0';
  }
  EXPECT_EQ(output, "00:00:00 x 0\nDate = 0000-00-00\nTime = 00:00:00\n00:00:00 a" +
                        std::string(245, 'b') + "\n");
}

}  // namespace
