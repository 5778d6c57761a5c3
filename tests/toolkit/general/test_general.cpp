#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "GL_File.h"
#include "GL_Strings_Unicode.h"
#include "LL_Linked_Lists.h"
#include "MF_FileObjects.h"
#include "test_files.h"

namespace {

namespace fs = std::filesystem;
using quillmere::Owned;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;

FSRef Reference(const fs::path& path) {
  FSRef reference{};
  EXPECT_EQ(quillmere::files::ReferenceOf(path, &reference), noErr) << path;
  return reference;
}

TEST(Text, NameEndsAndExtensions) {
  const struct {
    const char* name;
    SInt32 largest;
    const char* end;
  } cases[] = {{"clip.mov", 5, ".mov"}, {"clip.mov", 4, ".mov"}, {"clip.mov", 3, ""},
               {"a.quicktime", 5, ""},  {"clip", 5, ""},         {"", 5, ""},
               {"a.b.c", 5, ".c"}};
  for (const auto& test : cases) {
    const Owned<CFStringRef> name(GL_UTF8_CStrToCFStr(test.name));
    SInt32 length = -1;
    const Owned<CFStringRef> end(
        GL_CopyCFNameEndString(name.get(), &length, test.largest, kNameEndAtFullStop));
    EXPECT_EQ(quillmere::ToUtf8(end.get()), test.end) << test.name;
    EXPECT_EQ(length, static_cast<SInt32>(std::string(test.end).size()));
  }
  EXPECT_FALSE(GL_EqualCFStr(nullptr, nullptr));

  const TemporaryFolder folder;
  for (const auto& [file, stem] :
       {std::pair{"a.b.mov", "a.b"}, {"photojpg", "photojpg"}, {".mov", ".mov"}}) {
    WriteFile(folder / file, "x");
    const FSRef reference = Reference(folder / file);
    Owned<CFMutableStringRef> name;
    ASSERT_EQ(GL_CopyFileDirNameAsCFMutStr(&reference, name.out()), noErr);
    EXPECT_EQ(GL_RemoveFileNameExtension(&reference, name.get()), noErr);
    EXPECT_EQ(quillmere::ToUtf8(name.get()), stem);
  }
}

TEST(Folders, ListsAndCountsAgree) {
  const TemporaryFolder folder;
  const FSRef top = Reference(folder.path());
  SInt32 count = -1;
  EXPECT_EQ(GL_CountFilesWithExtension(&top, CFSTR("jpg"), &count), noErr);
  EXPECT_EQ(count, 0);
  for (int i = 0; i < 23; ++i)
    WriteFile(folder / (std::to_string(100 + i) + ".jpg"), "x");
  for (const char* other : {"photojpg", "PHOTO.JPG", "x.jpeg"})
    WriteFile(folder / other, "x");
  fs::create_directory(folder / "folder.jpg");
  EXPECT_EQ(GL_CountFilesWithExtension(&top, CFSTR("jpg"), &count), noErr);
  EXPECT_EQ(count, 25);

  std::vector<FSRef> found(26);
  ASSERT_EQ(GL_ListFilesWithExtension(&top, CFSTR("jpg"), found.data(), 25), noErr);
  EXPECT_TRUE(MF_FSRefValid(&found[24]));
  EXPECT_FALSE(MF_FSRefValid(&found[25]));
  const FSRef first = Reference(folder / "100.jpg");
  EXPECT_TRUE(GL_EqualFileObjects(&found[0], &first));
  std::vector<FSRef> few(4);
  ASSERT_EQ(GL_ListFilesWithExtension(&top, CFSTR("jpg"), few.data(), 3), noErr);
  EXPECT_FALSE(MF_FSRefValid(&few[3]));

  GL_FileObjectElement* list = nullptr;
  ASSERT_EQ(GL_MakeFolderFileObjList(&top, &list), noErr);
  EXPECT_EQ(LL_PtrListCount(list), 27);
  EXPECT_TRUE(GL_EqualFileObjects(&list->fileRef, &first));
  ASSERT_EQ(GL_MakeFolderFileObjList(&top, &list), noErr);
  EXPECT_EQ(LL_PtrListCount(list), 54);
  LL_RemoveIdenticalElements(list, GL_EqualFileRefLEPtrs, 1);
  EXPECT_EQ(LL_PtrListCount(list), 27);
  EXPECT_EQ(GL_FindFileInList(&first, list), list);
  LL_DisposeLinkedList(quillmere::ListHead(&list));

  const FSRef file = Reference(folder / "x.jpeg");
  EXPECT_NE(GL_CountFilesWithExtension(&file, CFSTR("jpg"), &count), noErr);
  EXPECT_NE(GL_CountFilesWithExtension(nullptr, CFSTR("jpg"), &count), noErr);
}

}  // namespace
