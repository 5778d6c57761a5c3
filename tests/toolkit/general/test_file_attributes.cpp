#include "GL_File_Attributes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <string>

#include "GL_Errors.h"
#include "GL_File_Creation.h"
#include "GL_File_Paths.h"
#include "MF_FileObjects.h"
#include "catalogue.h"
#include "file_objects.h"
#include "folders.h"
#include "forks.h"
#include "launch_services.h"
#include "test_files.h"

namespace fs = std::filesystem;
using namespace quillmere::test;
using quillmere::Owned;

namespace {

constexpr UTCDateTime kDate = {0, 3300000000U, 0x4000};

/// Adds a fork of `size` bytes to a file.
void AddFork(const FSRef& file, std::u16string_view name, std::size_t size) {
  FSIORefNum fork = 0;
  const HFSUniStr255 record = NameRecord(name);
  const OSErr made = FSCreateFork(&file, record.length, record.unicode);
  ASSERT_TRUE(made == noErr || made == errFSForkExists) << made;
  ASSERT_EQ(FSOpenFork(&file, record.length, record.unicode, fsRdWrPerm, &fork), noErr);
  const std::string bytes(size, 'x');
  EXPECT_EQ(FSWriteFork(fork, fsFromStart, 0, size, bytes.data(), nullptr), noErr);
  EXPECT_EQ(FSCloseFork(fork), noErr);
}

TEST(FileAttributes, SizesForksAndTypes) {
  const TemporaryFolder folder;
  WriteFile(folder / "file", "1234567");
  const FSRef file = ReferenceTo(folder / "file");
  const FSRef top = ReferenceTo(folder.path());
  UInt64 sizes[4] = {9, 9, 9, 9};
  UInt32 count = 9;
  Boolean answer = 9;
  EXPECT_EQ(GL_CountForks(&file, &count), noErr);
  EXPECT_EQ(count, 1U);
  AddFork(file, u"RESOURCE_FORK", 5000);
  EXPECT_EQ(GL_FileHasNamedForks(&file, &answer), noErr);
  EXPECT_FALSE(answer);
  AddFork(file, u"notes", 11);
  EXPECT_EQ(GL_FileHasNamedForks(&file, &answer), noErr);
  EXPECT_TRUE(answer);
  EXPECT_EQ(GL_CountForks(&file, &count), noErr);
  EXPECT_EQ(count, 3U);
  // The resource fork's sizes alone, and all of them.
  EXPECT_EQ(GL_GetEOF(&file, nullptr, nullptr, &sizes[2], nullptr), noErr);
  EXPECT_EQ(sizes[2], 5000U);
  EXPECT_EQ(GL_GetEOF(&file, &sizes[0], &sizes[1], &sizes[2], &sizes[3]), noErr);
  EXPECT_EQ(sizes[0], 7U);
  EXPECT_GE(sizes[3], sizes[2]);
  FSCatalogInfo info{};
  EXPECT_EQ(FSGetCatalogInfo(&file, kFSCatInfoRsrcSizes, &info, nullptr, nullptr, nullptr), noErr);
  EXPECT_EQ(info.rsrcLogicalSize, 5000U);
  UInt64 whole = 0;
  EXPECT_EQ(GL_GetLargeFileSize(&file, &whole), noErr);
  EXPECT_EQ(whole, 7U + 5000U + 11U);
  EXPECT_EQ(GL_GetLargeFileSize(nullptr, &whole), paramErr);

  OSType creator = 0;
  OSType type = 0;
  EXPECT_EQ(MF_FSChangeCreatorType(&file, "TVOD"_4cc, "MooV"_4cc), noErr);
  EXPECT_EQ(GL_GetCreatorAndFileType(&file, &creator, &type), noErr);
  EXPECT_EQ(creator, "TVOD"_4cc);
  EXPECT_EQ(type, "MooV"_4cc);
  EXPECT_EQ(GL_GetCreatorAndFileType(&top, &creator, &type), notAFileErr);
  EXPECT_EQ(GL_GetFolderValence(&file, &count), kGL_NotAFolderErr);
  EXPECT_EQ(GL_GetFolderValence(&top, &count), noErr);
  EXPECT_EQ(count, 1U);  // no sidecar
}

TEST(FileAttributes, DatesAreSetOneByOne) {
  const TemporaryFolder folder;
  WriteFile(folder / "file", "");
  const FSRef file = ReferenceTo(folder / "file");
  UTCDateTime before[5];
  UTCDateTime after[5];
  ASSERT_EQ(
      GL_GetFileObjectTimes(&file, &before[0], &before[1], &before[2], &before[3], &before[4]),
      noErr);
  for (int i = 0; i < 5; ++i) {
    const UTCDateTime* given[5] = {};
    given[i] = &kDate;
    ASSERT_EQ(GL_SetFileObjectTimes(&file, given[0], given[1], given[2], given[3], given[4]),
              noErr);
    ASSERT_EQ(GL_GetFileObjectTimes(&file, &after[0], &after[1], &after[2], &after[3], &after[4]),
              noErr);
    EXPECT_EQ(after[i], kDate) << i;
    // The change of another date is a change of the attributes.
    for (int k = i + 1; k < 5; ++k) {
      if (k != 2) {
        EXPECT_EQ(after[k], before[k]) << i << ' ' << k;
      }
    }
  }
}

TEST(FileAttributes, WritableOpenAndLocked) {
  const TemporaryFolder folder;
  WriteFile(folder / "file", "");
  const FSRef file = ReferenceTo(folder / "file");
  Boolean writable = 9;
  Boolean open = 9;
  EXPECT_EQ(GL_IsFileWritable(&file, &writable), noErr);
  EXPECT_TRUE(writable);
  EXPECT_EQ(GL_IsFileOpen(&file, &open), noErr);
  EXPECT_FALSE(open);
  FSIORefNum fork = 0;
  ASSERT_EQ(FSOpenFork(&file, 0, nullptr, fsRdWrPerm, &fork), noErr);
  EXPECT_EQ(GL_IsFileWritable(&file, &writable), noErr);
  EXPECT_TRUE(writable);
  EXPECT_EQ(GL_IsFileOpen(&file, &open), noErr);
  EXPECT_TRUE(open);
  FSCloseFork(fork);
  EXPECT_EQ(GL_IsFileOpen(&file, &open), noErr);
  EXPECT_FALSE(open);
  fs::permissions(folder / "file", fs::perms::owner_read);
  EXPECT_EQ(GL_IsFileWritable(&file, &writable), noErr);
  EXPECT_FALSE(writable);
  fs::remove(folder / "file");
  EXPECT_EQ(GL_IsFileWritable(&file, &writable), fnfErr);
  EXPECT_TRUE(writable);
}

TEST(FileAttributes, TrashAndPackages) {
  const TemporaryFolder home;
  const char* const old_home = std::getenv("XDG_DATA_HOME");
  const std::string kept = old_home ? old_home : "";
  setenv("XDG_DATA_HOME", home.path().c_str(), 1);
  FSRef trash;
  ASSERT_EQ(FSFindFolder(kUserDomain, kTrashFolderType, 1, &trash), noErr);
  const fs::path files = PlaceOf(trash);
  fs::create_directories(files / "old");
  WriteFile(files / "old/file", "");
  WriteFile(home / "file", "");
  const FSRef thrown = ReferenceTo(files / "old/file");
  const FSRef kept_file = ReferenceTo(home / "file");
  Boolean answer = 9;
  EXPECT_EQ(GL_FileInTrash(&thrown, &answer), noErr);
  EXPECT_TRUE(answer);
  EXPECT_FALSE(GL_FSRefValid(&thrown));
  EXPECT_EQ(GL_FileInClassicTrash(&thrown, &answer), noErr);
  EXPECT_FALSE(answer);
  EXPECT_EQ(GL_FileInTrash(&kept_file, &answer), noErr);
  EXPECT_FALSE(answer);
  EXPECT_TRUE(GL_FSRefValid(&kept_file));
  const FSRef none{};
  EXPECT_FALSE(GL_FSRefValid(&none));
  if (old_home) {
    setenv("XDG_DATA_HOME", kept.c_str(), 1);
  } else {
    unsetenv("XDG_DATA_HOME");
  }

  fs::create_directories(home / "outer.app/inner.bundle/Resources");
  WriteFile(home / "outer.app/inner.bundle/Resources/text", "");
  const FSRef text = ReferenceTo(home / "outer.app/inner.bundle/Resources/text");
  FSRef package;
  EXPECT_EQ(GL_GetEnvelopingPackage(&text, &package), noErr);
  EXPECT_EQ(PlaceOf(package), home / "outer.app/inner.bundle");
  EXPECT_EQ(GL_GetEnvelopingPackage(&package, &package), noErr);
  EXPECT_EQ(PlaceOf(package), home / "outer.app");
  EXPECT_EQ(GL_GetEnvelopingPackage(&kept_file, &package), noErr);
  EXPECT_FALSE(MF_FSRefValid(&package));
}

TEST(FileAttributes, NamesAndWhatTheyAreShownAs) {
  const TemporaryFolder folder;
  WriteFile(folder / "Ä b.mov", "");
  const FSRef file = ReferenceTo(folder / "Ä b.mov");
  HFSUniStr255 name;
  EXPECT_EQ(GL_GetParentFolderName(&file, &name), noErr);
  const Owned<CFStringRef> parent(FSCreateStringFromHFSUniStr(nullptr, &name));
  EXPECT_EQ(quillmere::ToUtf8(parent.get()), folder.path().filename());
  FSRef parent_ref;
  FSVolumeRefNum volume = 0;
  EXPECT_EQ(GL_GetObjectDefaultCatInfo(&file, &name, &volume, &parent_ref), noErr);
  EXPECT_NE(volume, 0);
  EXPECT_EQ(PlaceOf(parent_ref), folder.path());

  char* text = nullptr;
  ASSERT_EQ(GL_CopyFileDirNameAsCString(&file, &text), noErr);
  EXPECT_STREQ(text, "Ä b.mov");
  std::free(text);
  Boolean hidden = 9;
  EXPECT_EQ(GL_GetExtensionHiddenForRef(&file, &hidden), noErr);
  EXPECT_FALSE(hidden);
  ASSERT_EQ(MF_FSChangeFinderFlags(&file, 1, 0x10), noErr);
  EXPECT_EQ(GL_GetExtensionHiddenForRef(&file, &hidden), noErr);
  EXPECT_TRUE(hidden);
  ASSERT_EQ(GL_CopyFileDirDisplayNameAsCString(&file, &text), noErr);
  EXPECT_STREQ(text, "Ä b");
  std::free(text);
  for (const auto& [html, is_html] : {std::pair{CFSTR("index.HTML"), true},
                                      {CFSTR("a.htm"), true},
                                      {CFSTR("ahtml"), false},
                                      {CFSTR("a.xhtml"), false},
                                      {CFSTR(""), false}}) {
    EXPECT_EQ(GL_IsHTML_File(html) != 0, is_html) << quillmere::ToUtf8(html);
  }
}

TEST(FilePaths, LeadToReferencesAndBack) {
  const TemporaryFolder folder;
  WriteFile(folder / "a b.mov", "");
  const std::string path = folder / "a b.mov";
  FSRef file;
  ASSERT_EQ(GL_FilePathToFSRef(path.c_str(), &file), noErr);
  char* text = nullptr;
  ASSERT_EQ(GL_FSRefToPosixPath(&file, &text), noErr);
  EXPECT_EQ(text, path);
  std::free(text);
  FSRef other;
  for (const std::string& form : {folder.path().string(), folder.path().string() + "/"}) {
    ASSERT_EQ(GL_FolderPathFileNameToFSRef(form.c_str(), "a b.mov", &other), noErr);
    EXPECT_EQ(FSCompareFSRefs(&file, &other), 0);
  }
  EXPECT_EQ(GL_FilePathToFSRef("", &other), GL_NoURLErr);
  EXPECT_EQ(GL_FilePathToFSRef((path + "x").c_str(), &other), GL_NoFSRefErr);
  CFStringRef string = nullptr;
  EXPECT_EQ(GL_FSRefToPosixStr(&other, &string), GL_NoURLErr);

  HFSUniStr255 name;
  EXPECT_EQ(GL_FullPathToFileNameAndParentRef((folder / "new.mov/").c_str(), &name, &other), noErr);
  EXPECT_EQ(PlaceOf(other), folder.path());
  EXPECT_EQ(name.length, 7);
  EXPECT_EQ(GL_FullPathToFileNameAndParentRef("/", &name, &other), GL_NoFileNameInPathErr);
  EXPECT_EQ(GL_FullPathToFileNameAndParentRef("/no such folder/x", &name, &other), GL_NoFSRefErr);

  char buffer[kGL_NameBufferSize];
  EXPECT_EQ(GL_PosixPathToFileNameNoExt("/x/clip.one.mov", buffer), noErr);
  EXPECT_STREQ(buffer, "clip.one");
  std::string long_name;
  while (long_name.size() < 256)
    long_name += "ä";
  EXPECT_EQ(GL_PosixPathToFileNameNoExt(long_name.c_str(), buffer), kGL_ConversionErr);
  EXPECT_STREQ(buffer, "");
  EXPECT_EQ(GL_PosixPathToFileNameNoExt("/", buffer), kGL_ConversionErr);

  FSRef by_process;
  FSRef by_bundle;
  EXPECT_EQ(GL_CurrentProcessRef(&by_process), noErr);
  EXPECT_EQ(GL_GetAppRef(&by_bundle), noErr);
  EXPECT_EQ(FSCompareFSRefs(&by_process, &by_bundle), 0);
  EXPECT_EQ(PlaceOf(by_process), fs::read_symlink("/proc/self/exe"));
}

TEST(FilePaths, ClassicOnesNameAMountedVolume) {
  const TemporaryFolder folder;
  WriteFile(folder / "table",
            "30 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
            "31 30 8:2 / " +
                (folder / "My:Disk").string() + " rw - ext4 /dev/sdb1 rw\n");
  fs::create_directory(folder / "My:Disk");
  quillmere::files::UseMountTable(folder / "table");
  const std::string disk = folder / "My:Disk";
  const struct {
    const char* classic;
    std::string posix;
  } rows[] = {{"my:disk:Clips:a/b.mov", disk + "/Clips/a:b.mov"},
              {"My:Disk:", disk},
              {"My:Disk:Clips:x::y", disk + "/Clips/y"},
              {":Clips:\x8A.mov", "Clips/ä.mov"},
              {"Nowhere:x", ""},
              {"", ""}};
  for (const auto& row : rows) {
    char* const text = GL_HFS_StrToPosixStr(row.classic);
    std::string posix = text ? text : "";
    if (posix.ends_with('/')) posix.pop_back();
    EXPECT_EQ(posix, row.posix) << row.classic;
    std::free(text);
  }
  quillmere::files::UseMountTable({});
}

}  // namespace
