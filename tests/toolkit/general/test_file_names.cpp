/// Lists of folders, free names, and files that are made, renamed and removed under them.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "GL_File.h"
#include "GL_File_Creation.h"
#include "cf_strings.h"
#include "file_calls.h"
#include "file_objects.h"
#include "reference_counted.h"
#include "test_files.h"

namespace {

namespace fs = std::filesystem;
using quillmere::Owned;
using quillmere::test::NameRecord;
using quillmere::test::PlaceOf;
using quillmere::test::ReferenceTo;
using quillmere::test::WriteFile;

class NamesInFolders : public ::testing::Test {
 protected:
  void SetUp() override { top = ReferenceTo(folder.path()); }
  void Make(std::initializer_list<const char*> names) const {
    for (const char* name : names)
      WriteFile(folder / name, name);
  }
  std::string Content(const char* name) const {
    const std::vector<UInt8> bytes = quillmere::test::ReadFile(folder / name);
    return {bytes.begin(), bytes.end()};
  }

  quillmere::test::TemporaryFolder folder;
  FSRef top{};
};

TEST_F(NamesInFolders, ObjectsAreFoundOrMade) {
  Make({"Straße", "plain"});
  FSRef found{};
  Boolean is_there = 9;
  HFSUniStr255 name = NameRecord(u"PLAIN");
  ASSERT_EQ(noErr, GL_IsFileInFolder(&top, &name, &found, &is_there));
  EXPECT_EQ(1, is_there);  // names are compared without regard to case
  EXPECT_EQ(PlaceOf(found), (folder / "plain").string());
  name = NameRecord(u"absent");
  ASSERT_EQ(noErr, GL_IsFileInFolder(&top, &name, nullptr, &is_there));
  EXPECT_EQ(0, is_there);
  EXPECT_EQ(0, GL_IsFileNameInFolder(&top, &name));

  Boolean created = 9;
  EXPECT_EQ(fnfErr, GL_FindFolderInFolder(&top, CFSTR("plain"), &found, 1, &created));
  EXPECT_EQ(fnfErr, GL_FindFolderInFolder(&top, CFSTR("new"), &found, 0, &created));
  EXPECT_EQ(noErr, GL_FindFolderInFolder(&top, CFSTR("new"), &found, 1, &created));
  EXPECT_EQ(1, created);
  EXPECT_TRUE(fs::is_directory(folder / "new"));
  EXPECT_EQ(fnfErr, GL_FindCreateFileInFolder(&top, CFSTR("f"), &found, 1, 2, 0, &created));
  EXPECT_EQ(noErr, GL_FindCreateFileInFolder(&top, CFSTR("f"), &found, "crea"_4cc, "type"_4cc, 1,
                                             &created));
  EXPECT_EQ(1, created);
  EXPECT_EQ(0, std::memcmp(quillmere::test::SettableInfo(found).finderInfo, "typecrea", 8));
}

TEST_F(NamesInFolders, SameNamesOfOtherKindsAreFound) {
  Make({"shot.mov", "Shot.JPG", "shot", "shot2.mov", "shot.toolongextension"});
  const FSRef file = ReferenceTo(folder / "shot.mov");
  FSRef found[3];
  SInt32 count = -1;
  ASSERT_EQ(noErr, GL_FindFilesWithSameNameInSameFolder(&file, found, 3, &count));
  ASSERT_EQ(2, count);
  EXPECT_EQ(PlaceOf(found[0]), (folder / "Shot.JPG").string());
  EXPECT_EQ(PlaceOf(found[1]), (folder / "shot").string());
  ASSERT_EQ(noErr, GL_FindFilesWithSameNameInSameFolder(&file, found, 1, &count));
  EXPECT_EQ(1, count);
}

TEST_F(NamesInFolders, TheFirstFreeNameIsTaken) {
  const auto free_name = [&](CFStringRef base, CFStringRef extension) {
    Owned<CFStringRef> name;
    EXPECT_EQ(noErr, GL_CreateIndexedNameWithExtInFolder(&top, base, extension, name.out()));
    return quillmere::ToUtf8(name.get());
  };
  EXPECT_EQ("Name.ext", free_name(CFSTR("Name"), CFSTR(".ext")));
  Make({"Name.ext", "Name 2.ext", "Name 4.ext"});
  EXPECT_EQ("Name 3.ext", free_name(CFSTR("Name"), CFSTR(".ext")));
  FSRef object = ReferenceTo(folder / "Name.ext");
  ASSERT_EQ(noErr, GL_RenameIndexed(&object, CFSTR("Name"), CFSTR(".ext")));
  EXPECT_EQ(PlaceOf(object), (folder / "Name 3.ext").string());
  const Owned<CFStringRef> long_name(quillmere::CreateFromUtf8(std::string(256, 'x')));
  Owned<CFStringRef> none;
  EXPECT_NE(noErr, GL_CreateIndexedNameInFolder(&top, long_name.get(), none.out()));
  EXPECT_EQ(nullptr, none.get());
}

TEST_F(NamesInFolders, FilesAreReplacedOnlyWhenAsked) {
  Make({"old"});
  const HFSUniStr255 name = NameRecord(u"old");
  FSRef file{};
  for (const auto create : {GL_CreateFile, GL_CreateFileNew}) {
    WriteFile(folder / "old", "content");
    EXPECT_EQ(dupFNErr, create(&top, &name, 1, 2, 0, &file));
    EXPECT_EQ(PlaceOf(file), (folder / "old").string());
    EXPECT_EQ("content", Content("old"));
    EXPECT_EQ(noErr, create(&top, &name, 1, 2, 1, &file));
    EXPECT_EQ("", Content("old"));
  }
  FSRef made{};
  EXPECT_EQ(noErr, GL_CreateFolder(&top, &name, &made));  // taken by a file: that is given
  EXPECT_TRUE(GL_EqualFileObjects(&file, &made));
}

TEST_F(NamesInFolders, WhatIsInTheWayOfANameGoes) {
  Make({"one", "two"});
  FSRef object = ReferenceTo(folder / "one");
  const HFSUniStr255 name = NameRecord(u"two");
  // Nothing is lost while a step fails: the renaming, the deletion, the second renaming.
  bool has_failed = true;
  for (SInt64 step = 0; has_failed && step < 20; ++step) {
    SInt32 status = noErr;
    {
      const quillmere::files::FailingCall failing(step, EACCES);
      status = GL_RenameDelete(&object, &name);
      has_failed = failing.HasFailed();
    }
    if (!has_failed) break;
    EXPECT_NE(noErr, status) << step;
    EXPECT_TRUE(fs::exists(folder / "one")) << step;
    if (!fs::exists(folder / "two")) Make({"two"});
  }
  EXPECT_FALSE(fs::exists(folder / "one"));
  EXPECT_EQ("one", Content("two"));
  EXPECT_EQ(PlaceOf(object), (folder / "two").string());
}

TEST_F(NamesInFolders, BusyFilesStayUntilTheyAreLetGo) {
  Make({"busy"});
  const FSRef file = ReferenceTo(folder / "busy");
  int ready[2];
  ASSERT_EQ(0, pipe(ready));
  const pid_t holder = fork();
  if (holder == 0) {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    const int descriptor = open((folder / "busy").c_str(), O_RDWR);
    const bool is_held = fcntl(descriptor, F_SETLK, &lock) == 0;
    if (write(ready[1], is_held ? "y" : "n", 1) == 1) pause();
    _exit(0);
  }
  char answer = 0;
  ASSERT_EQ(1, read(ready[0], &answer, 1));
  ASSERT_EQ('y', answer);
  EXPECT_EQ(fBsyErr, GL_DeletePotentiallyBusyFileObject(&file, 2));
  EXPECT_TRUE(fs::exists(folder / "busy"));
  kill(holder, SIGKILL);
  waitpid(holder, nullptr, 0);
  close(ready[0]);
  close(ready[1]);
  EXPECT_EQ(noErr, GL_DeletePotentiallyBusyFileObject(&file, 1));
  EXPECT_FALSE(fs::exists(folder / "busy"));
  EXPECT_EQ(fnfErr, GL_DeletePotentiallyBusyFileObject(&file, 3));
}

}  // namespace
