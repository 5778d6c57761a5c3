/// Resources and aliases in files, as the toolkit adds, shifts, updates and compares them.
#include "GL_Resources.h"

#include <gtest/gtest.h>

#include <string>

#include "GL_Aliases.h"
#include "GL_File.h"
#include "GL_Memory.h"
#include "GL_Resource_Files.h"
#include "cf_strings.h"
#include "file_objects.h"
#include "reference_counted.h"
#include "test_files.h"

namespace {

namespace fs = std::filesystem;
using quillmere::Owned;
using quillmere::test::NameRecord;
using quillmere::test::ReferenceTo;

constexpr ResType kType = "TEXT"_4cc;

class ResourcesInFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    const FSRef parent = ReferenceTo(folder.path());
    const HFSUniStr255 name = NameRecord(u"r");
    ASSERT_EQ(noErr, GL_CreateResFile(&parent, &name, "abcd"_4cc, "rsrc"_4cc, &file));
  }
  /// Adds a text under `id`; the ID that it got.
  SInt16 Add(std::string_view text, SInt16 id) const {
    EXPECT_EQ(noErr, GL_AddPtrResourceToFile(0, &file, text.data(), static_cast<Size>(text.size()),
                                             kType, &id));
    return id;
  }
  /// The text of an ID, or by index; the status if there is none.
  std::string Text(SInt16 id, SInt16 index = 0) const {
    void* bytes = nullptr;
    Size size = 0;
    const SInt32 status = GL_Get1PtrResourceFromFile(0, &file, kType, index, &id, &bytes, &size);
    if (status != noErr) return std::to_string(status);
    const std::string text(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
    GL_DisposePtr(&bytes);
    return text;
  }
  SInt16 Count() const {
    SInt16 count = -1;
    EXPECT_EQ(noErr, GL_CountResourcesInFile(0, &file, kType, &count));
    return count;
  }

  quillmere::test::TemporaryFolder folder;
  FSRef file{};
};

TEST_F(ResourcesInFiles, TakeFreeNumbersOrReplace) {
  const SInt16 first = Add("one", -1);
  EXPECT_GE(first, 128);
  EXPECT_NE(first, Add("two", 0));
  EXPECT_EQ(5, Add("three", 5));
  EXPECT_EQ(5, Add("four", 5));
  EXPECT_EQ(3, Count());
  EXPECT_EQ("one", Text(first));
  EXPECT_EQ("four", Text(5));
  EXPECT_EQ("one", Text(0));  // no usable ID: the first
  EXPECT_EQ("two", Text(0, 2));
  EXPECT_EQ("-192", Text(6));
  EXPECT_EQ("-192", Text(0, 4));
  EXPECT_EQ("-192", Text(0, -1));

  SInt16 id = 0;
  EXPECT_EQ(noErr, GL_RemoveResourceFromFile(0, &file, kType, 2, &id));
  EXPECT_EQ(2, Count());
  EXPECT_EQ(resNotFound, GL_RemoveResourceFromFile(0, &file, "none"_4cc, 1, &id));
  EXPECT_EQ(nilHandleErr, GL_AddResourceToFile(0, &file, nullptr, kType, &id));
  EXPECT_EQ(paramErr, GL_CountResourcesInFile(0, &file, kType, nullptr));
}

TEST_F(ResourcesInFiles, LeaveTheCurrentFileAsItIs) {
  Add("one", 5);
  const ResFileRefNum other = FSOpenResFile(&file, fsRdPerm);
  Boolean was_there = GL_ResourceExists(other, kType, 1, nullptr, nullptr);
  EXPECT_EQ(1, was_there);
  was_there = GL_ResourceExists(other, "none"_4cc, 1, nullptr, nullptr);
  EXPECT_EQ(0, was_there);
  UseResFile(0);
  SInt16 id = 5;
  Handle handle = nullptr;
  ASSERT_EQ(noErr, GL_Get1Resource(other, kType, 0, &id, &handle));
  EXPECT_EQ(0, CurResFile());
  // A handle that is a resource already is not added again.
  SInt16 another = 9;
  EXPECT_EQ(noErr, GL_AddResource(other, handle, kType, &another));
  EXPECT_EQ(9, another);
  EXPECT_EQ(0, GL_ResourceExists(other, kType, 0, &another, nullptr));
  EXPECT_EQ(resFNotFound, GL_Get1Resource(999, kType, 1, &id, &handle));
  EXPECT_EQ(nullptr, handle);
  EXPECT_EQ(0, CurResFile());
  CloseResFile(other);
}

TEST_F(ResourcesInFiles, ShiftWithTheNewestFirst) {
  const auto shift = [&](std::string_view text) {
    return GL_ShiftResourcesInFile(0, &file, text.data(), static_cast<Size>(text.size()), kType,
                                   200, 3);
  };
  const char* expected[][3] = {
      {"a", "-192", "-192"}, {"b", "a", "-192"}, {"c", "b", "a"}, {"d", "c", "b"}};
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(noErr, shift(std::string(1, static_cast<char>('a' + i))));
    for (SInt16 k = 0; k < 3; ++k)
      EXPECT_EQ(expected[i][k], Text(static_cast<SInt16>(200 + k))) << i;
  }
  EXPECT_EQ(3, Count());
}

TEST_F(ResourcesInFiles, VersionsAreRead) {
  const char record[] =
      "\x01\x02\x80\x03\x00\x07\x05"
      "1.2b3"
      "\x0A"
      "1.2b3 long";
  SInt16 id = 1;
  ASSERT_EQ(noErr, GL_AddPtrResourceToFile(0, &file, record, sizeof(record) - 1, "vers"_4cc, &id));
  UInt32 version = 0;
  SInt16 country = 0;
  UInt8 short_string[256];
  UInt8 long_string[256];
  ASSERT_EQ(noErr, GL_GetFileVersion(&file, 1, &version, &country, short_string, long_string));
  EXPECT_EQ(0x01028003U, version);
  EXPECT_EQ(7, country);
  EXPECT_EQ("1.2b3", std::string(short_string + 1, short_string + 1 + short_string[0]));
  EXPECT_EQ("1.2b3 long", std::string(long_string + 1, long_string + 1 + long_string[0]));
  EXPECT_EQ(resNotFound, GL_GetFileVersion(&file, 2, &version, nullptr, nullptr, nullptr));
  EXPECT_EQ(paramErr, GL_GetFileVersion(&file, 3, &version, nullptr, nullptr, nullptr));
  EXPECT_EQ(noErr, GL_GetFileVersion(&file, 2, nullptr, nullptr, nullptr, nullptr));
  // One that ends inside a string.
  ASSERT_EQ(noErr, GL_AddPtrResourceToFile(0, &file, record, 9, "vers"_4cc, &id));
  EXPECT_NE(noErr, GL_GetFileVersion(&file, 1, nullptr, nullptr, short_string, nullptr));
}

TEST_F(ResourcesInFiles, AliasesAreUpdatedWhenTheirTargetsMove) {
  quillmere::test::WriteFile(folder / "target", "t");
  const FSRef target = ReferenceTo(folder / "target");
  SInt16 id = 3;
  ASSERT_EQ(noErr, GL_AddAliasResource(0, &file, &target, &id));
  const auto stored = [&] {
    SInt16 wanted = 3;
    Handle alias = nullptr;
    EXPECT_EQ(noErr, GL_Get1ResourceFromFile(0, &file, "alis"_4cc, 0, &wanted, &alias));
    Owned<CFStringRef> name;
    EXPECT_EQ(noErr, GL_GetAliasNameAsCFStr(alias, name.out()));
    GL_DisposeHandle(&alias);
    return quillmere::ToUtf8(name.get());
  };
  EXPECT_EQ("target", stored());
  fs::rename(folder / "target", folder / "moved");
  FSRef found{};
  ASSERT_EQ(noErr, GL_UpdateAliasResource(0, &file, 3, &found));
  EXPECT_TRUE(GL_EqualFileObjects(&found, &target));
  EXPECT_EQ("moved", stored());
  EXPECT_EQ(resNotFound, GL_UpdateAliasResource(0, &file, 4, &found));
}

TEST_F(ResourcesInFiles, AFileWithoutResourcesIsDeleted) {
  SInt16 id = Add("one", 5);
  ASSERT_EQ(noErr, GL_DeleteEmptyResourceFile(0, &file));
  EXPECT_TRUE(fs::exists(folder / "r"));
  ResFileRefNum number = FSOpenResFile(&file, fsRdWrPerm);
  EXPECT_EQ(noErr, GL_RemoveResourcesOfType(kType, number, 1));
  CloseResFile(number);
  EXPECT_EQ("-192", Text(id));
  ASSERT_EQ(noErr, GL_DeleteEmptyResourceFile(0, &file));
  EXPECT_FALSE(fs::exists(folder / "r"));
  EXPECT_EQ(noErr, GL_DeleteEmptyResourceFile(0, &file));  // cleared, so not valid
}

TEST(AliasNames, AreReadComparedAndBroughtUpToDate) {
  const quillmere::test::TemporaryFolder folder;
  fs::create_directory(folder / "inner");
  quillmere::test::WriteFile(folder / "inner/one", "1");
  quillmere::test::WriteFile(folder / "inner/two", "2");
  AliasHandle one = nullptr;
  AliasHandle same = nullptr;
  AliasHandle two = nullptr;
  const FSRef first = ReferenceTo(folder / "inner/one");
  const FSRef second = ReferenceTo(folder / "inner/two");
  ASSERT_EQ(noErr, FSNewAlias(nullptr, &first, &one));
  ASSERT_EQ(noErr, FSNewAlias(&second, &first, &same));
  ASSERT_EQ(noErr, FSNewAlias(nullptr, &second, &two));

  GL_AliasNames names{};
  ASSERT_EQ(noErr, GL_GetAliasNames(one, &names));
  EXPECT_EQ(u"one", std::u16string(names.targetName.unicode,
                                   names.targetName.unicode + names.targetName.length));
  EXPECT_EQ(u"inner", std::u16string(names.parentName.unicode,
                                     names.parentName.unicode + names.parentName.length));
  SInt32 status = -1;
  EXPECT_EQ(1, GL_EqualAlias(one, same, &status));
  EXPECT_EQ(noErr, status);
  EXPECT_EQ(0, GL_EqualAlias(one, two, &status));
  EXPECT_EQ(noErr, status);
  EXPECT_EQ(0, GL_EqualAlias(one, nullptr, &status));
  EXPECT_NE(noErr, status);
  Boolean on_same = 0;
  EXPECT_EQ(noErr, GL_AliasesOnSameSystem(one, two, &on_same));
  EXPECT_EQ(1, on_same);

  fs::rename(folder / "inner/one", folder / "three");
  FSRef found{};
  ASSERT_EQ(noErr, GL_ResolveAliasSilently(one, &found));
  EXPECT_TRUE(GL_EqualFileObjects(&found, &first));
  EXPECT_EQ(0, GL_EqualAlias(one, same, &status));
  for (AliasHandle* alias : {&one, &same, &two})
    GL_DisposeHandle(alias);
}

}  // namespace
