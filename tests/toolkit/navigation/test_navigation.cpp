/// The user's choice of files and folders, with answers given in advance.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "NS_Navigation.h"
#include "automation.h"
#include "descriptors.h"
#include "test_files.h"

namespace {

namespace fs = std::filesystem;
using namespace quillmere::windows;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;

bool SameBytes(const FSRef& one, const FSRef& other) {
  return std::memcmp(&one, &other, sizeof one) == 0;
}
bool IsZero(const FSRef& reference) {
  return SameBytes(reference, FSRef{});
}

class NavigationTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { UseNoDisplay(); }
  void SetUp() override {
    fs::create_directory(folder / "inner.png");
    for (const char* name : {"a.png", "B.PNG", "apng", "a.png.txt", "a.b.png", ".png", "a.pngx"})
      WriteFile(folder / name, std::string_view("x"));
  }
  void TearDown() override { EXPECT_EQ(0U, QueuedPickerAnswers()); }

  FSRef Reference(const fs::path& path) const {
    FSRef reference{};
    EXPECT_EQ(noErr, quillmere::files::ReferenceOf(path, &reference)) << path;
    return reference;
  }
  fs::path Path(const FSRef& reference) const {
    fs::path path;
    EXPECT_EQ(noErr, quillmere::files::PathOf(reference, &path));
    return path;
  }
  SInt32 GetFile(FSRef* file, NavEventProcPtr procedure = NS_EventProcPrototype) const {
    return NS_GetSingleFileFromUser(procedure, NS_FileExtensionFilter, CFSTR(".png"),
                                    CFSTR("Tests"), CFSTR("A file"), file);
  }
  SInt32 GetFolder(FSRef* chosen, NavEventProcPtr procedure = NS_EventProcPrototype) const {
    return NS_GetSingleFolderFromUser(procedure, nullptr, nullptr, CFSTR("A folder"), chosen);
  }
  Boolean Shows(OSType type, const FSRef& reference, bool is_folder, CFStringRef extension) const {
    AEDesc item{};
    EXPECT_EQ(noErr, AECreateDesc(type, &reference, sizeof reference, &item));
    NavFileOrFolderInfo info{1, is_folder, 1};
    NS_CallbackRec record{};
    record.filterData = extension;
    const Boolean shown = NS_FileExtensionFilter(&item, &info, &record, 0);
    AEDisposeDesc(&item);
    return shown;
  }

  TemporaryFolder folder;
};

TEST_F(NavigationTest, WithoutAnEventProcedureNoDialogRuns) {
  const FSRef before = Reference(folder.path());
  FSRef object = before;
  QueuePickerCancel();
  EXPECT_EQ(25002, GetFile(&object, nullptr));
  EXPECT_EQ(25002, GetFolder(&object, nullptr));
  EXPECT_TRUE(SameBytes(before, object));
  EXPECT_EQ(1U, QueuedPickerAnswers()) << "the answer is still there";
  EXPECT_EQ(userCanceledErr, GetFile(&object));
}

TEST_F(NavigationTest, AChoiceIsGivenBackAndACancelChangesNothing) {
  FSRef object{};
  QueuePickerAnswer(folder / "a.png");
  EXPECT_EQ(noErr, GetFile(&object));
  EXPECT_TRUE(fs::equivalent(folder / "a.png", Path(object)));
  EXPECT_EQ("A file", LastPickerMessage());
  const FSRef chosen = object;
  QueuePickerCancel();
  EXPECT_EQ(-128, GetFile(&object));
  EXPECT_TRUE(SameBytes(chosen, object));

  FSRef place{};
  QueuePickerAnswer(folder / "inner.png");
  EXPECT_EQ(noErr, GetFolder(&place));
  EXPECT_TRUE(fs::equivalent(folder / "inner.png", Path(place)));
  EXPECT_EQ("A folder", LastPickerMessage());
  QueuePickerCancel();
  EXPECT_EQ(-128, GetFolder(&place));
  EXPECT_TRUE(fs::equivalent(folder / "inner.png", Path(place)));
}

TEST_F(NavigationTest, WhatTheFilterHidesCantBeChosen) {
  FSRef object{};
  for (const char* name : {"apng", "a.png.txt", "a.pngx", "inner.png", "none.png"}) {
    QueuePickerAnswer(folder / name);
    EXPECT_EQ(userCanceledErr, GetFile(&object)) << name;
    EXPECT_TRUE(IsZero(object));
  }
}

TEST_F(NavigationTest, AFolderDialogOpensInTheFolderThatWasGiven) {
  FSRef object{};
  QueuePickerCancel();
  GetFolder(&object);
  EXPECT_EQ(fs::path(), LastPickerFolder());
  object = Reference(folder / "inner.png");
  QueuePickerCancel();
  GetFolder(&object);
  EXPECT_TRUE(fs::equivalent(folder / "inner.png", LastPickerFolder()));
  fs::remove(folder / "inner.png");
  QueuePickerCancel();
  EXPECT_EQ(userCanceledErr, GetFolder(&object)) << "a folder that has gone is passed over";
  EXPECT_EQ(fs::path(), LastPickerFolder());
}

/// Runs the shared event procedure on a record that says where to open.
void OpenInRecordsFolder(SInt32 selector, NavCBRec* parameters, void* user_data) {
  auto* record = static_cast<NS_CallbackRec*>(user_data);
  if (selector == kNavCBStart) {
    const auto* name = static_cast<const fs::path*>(record->filterData);
    ASSERT_EQ(noErr, quillmere::files::ReferenceOf(*name, &record->startLocation));
  }
  NS_EventProcPrototype(selector, parameters, user_data);
  EXPECT_EQ(selector != kNavCBStart, record->done != 0);
}

TEST_F(NavigationTest, TheRecordsStartLocationIsWhereADialogOpens) {
  const fs::path inner = folder / "inner.png";
  FSRef object{};
  QueuePickerAnswer(folder / "a.png");
  EXPECT_EQ(noErr, NS_GetSingleFileFromUser(OpenInRecordsFolder, nullptr, &inner, nullptr, nullptr,
                                            &object));
  EXPECT_TRUE(fs::equivalent(inner, LastPickerFolder()));
  EXPECT_TRUE(fs::equivalent(folder / "a.png", Path(object)));
}

TEST_F(NavigationTest, TheExtensionFilterGoesByTheNamesEnd) {
  const struct {
    const char* name;
    CFStringRef extension;
    bool shown;
  } cases[] = {{"a.png", CFSTR(".png"), true},      {"B.PNG", CFSTR(".png"), true},
               {"a.png", CFSTR(".PNG"), true},      {"a.b.png", CFSTR(".png"), true},
               {".png", CFSTR(".png"), true},       {"apng", CFSTR(".png"), false},
               {"a.png.txt", CFSTR(".png"), false}, {"a.pngx", CFSTR(".png"), false},
               {"a.png", CFSTR("png"), false},      {"a.b.png", CFSTR(".b.png"), false},
               {"a.png", CFSTR(""), false},         {"a.png", nullptr, false}};
  for (const auto& test : cases) {
    EXPECT_EQ(test.shown,
              Shows(typeFSRef, Reference(folder / test.name), false, test.extension) != 0)
        << test.name;
  }
}

TEST_F(NavigationTest, TheExtensionFilterShowsFoldersAndNoOtherKindsOfItems) {
  const FSRef inner = Reference(folder.path());
  EXPECT_TRUE(Shows(typeFSRef, inner, true, CFSTR(".png")));
  EXPECT_FALSE(Shows(typeFSRef, inner, true, nullptr));
  EXPECT_FALSE(Shows(typeFSRef, inner, true, CFSTR("")));
  EXPECT_FALSE(Shows("TEXT"_4cc, inner, true, CFSTR(".png")));
  const FSRef gone = Reference(folder / "a.png");
  fs::remove(folder / "a.png");
  EXPECT_FALSE(Shows(typeFSRef, gone, false, CFSTR(".png")));
}

TEST_F(NavigationTest, ItemsOfAListAreFileReferencesOrCleared) {
  const FSRef file = Reference(folder / "a.png");
  AEDescList list{};
  ASSERT_EQ(noErr, AECreateList(&list));
  FSRef object = file;
  EXPECT_EQ(noErr, NS_GetSingleFileObjectFromAEDescList(&list, &object));
  EXPECT_TRUE(IsZero(object)) << "an empty list";
  const FSRef second = Reference(folder / "B.PNG");
  ASSERT_EQ(noErr, AEPutPtr(&list, 1, typeFSRef, &file, sizeof file));
  ASSERT_EQ(noErr, AEPutPtr(&list, 2, typeFSRef, &second, sizeof second));
  EXPECT_EQ(noErr, NS_GetSingleFileObjectFromAEDescList(&list, &object));
  EXPECT_TRUE(SameBytes(file, object));
  EXPECT_EQ(noErr, NS_GetNthFileObjectFromAEDescList(&list, 2, &object));
  EXPECT_TRUE(SameBytes(second, object));
  for (const SInt32 index : {0, 3, -1}) {
    object = file;
    EXPECT_NE(noErr, NS_GetNthFileObjectFromAEDescList(&list, index, &object)) << index;
    EXPECT_TRUE(IsZero(object));
  }
  AEDisposeDesc(&list);
}

TEST_F(NavigationTest, ACopiedReplyOutlivesItsOriginal) {
  const FSRef file = Reference(folder / "a.png");
  NavReplyRecord reply{};
  reply.version = 2;
  reply.replacing = 1;
  ASSERT_EQ(noErr, AECreateList(&reply.selection));
  ASSERT_EQ(noErr, AEPutPtr(&reply.selection, 1, typeFSRef, &file, sizeof file));
  reply.saveFileName = CFStringCreateCopy(kCFAllocatorDefault, CFSTR("Name"));
  reply.fileTranslation = NewHandle(3);
  std::memcpy(*reply.fileTranslation, "abc", 3);
  NavReplyRecord copy{};
  ASSERT_EQ(noErr, NS_CopyReply(&reply, &copy));
  EXPECT_EQ(noErr, NavDisposeReply(&reply));
  FSRef object{};
  EXPECT_EQ(noErr, NS_GetSingleFileObjectFromAEDescList(&copy.selection, &object));
  EXPECT_TRUE(SameBytes(file, object));
  EXPECT_EQ("Name", quillmere::ToUtf8(copy.saveFileName));
  ASSERT_EQ(3, GetHandleSize(copy.fileTranslation));
  EXPECT_EQ(0, std::memcmp(*copy.fileTranslation, "abc", 3));
  EXPECT_EQ(1, copy.replacing);
  EXPECT_EQ(noErr, NavDisposeReply(&copy));
}

}  // namespace
