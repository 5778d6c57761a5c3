/// Questions about volumes, lists of them and searches, on made-up mount tables and real folders.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "GL_Errors.h"
#include "GL_Memory.h"
#include "GL_Volume_Lists.h"
#include "GL_Volume_Search.h"
#include "GL_Volumes.h"
#include "LL_Linked_Lists.h"
#include "MF_Volumes.h"
#include "as_nobody.h"
#include "catalogue.h"
#include "test_files.h"

namespace {

namespace fs = std::filesystem;
using quillmere::Owned;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;

HFSUniStr255 Name(const char* text) {
  HFSUniStr255 name{};
  const Owned<CFStringRef> string(quillmere::CreateFromUtf8(text));
  EXPECT_EQ(noErr, FSGetHFSUniStrFromString(string.get(), &name));
  return name;
}

FSRef Reference(const fs::path& path) {
  FSRef reference{};
  EXPECT_EQ(noErr, quillmere::files::ReferenceOf(path, &reference)) << path;
  return reference;
}

class VolumesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string lines = "1 0 8:1 / / rw - ext4 /dev/no-such-1 rw\n";
    const struct {
      const char* folder;
      const char* options;
      const char* type;
      const char* source;
    } rows[] = {{"share", "rw", "cifs", "//server/share"}, {"apple", "rw", "afpfs", "afp://far"},
                {"work", "ro", "nfs", "near:/work"},       {"disc", "ro", "iso9660", "/dev/sr9"},
                {"stick", "rw", "vfat", "/dev/no-such-2"}, {"bind", "rw", "ext4", "/dev/no-such-1"},
                {"memory", "rw", "tmpfs", "tmpfs"}};
    int id = 2;
    for (const auto& row : rows) {
      fs::create_directory(home / row.folder);
      lines += std::to_string(id) + " 1 0:" + std::to_string(90 + id) + " / " +
               (home / row.folder).string() + ' ' + row.options + " - " + row.type + ' ' +
               row.source + ' ' + row.options + '\n';
      ++id;
    }
    WriteFile(home / "table", lines);
    quillmere::files::UseMountTable(home / "table");
  }
  void TearDown() override {
    LL_DisposeLinkedList(quillmere::ListHead(&list));
    quillmere::files::UseMountTable({});
  }
  FSVolumeRefNum Volume(const char* name) const {
    const HFSUniStr255 record = Name(name);
    FSVolumeRefNum volume = 0;
    EXPECT_EQ(noErr, GL_GetVolumeByName(&record, &volume)) << name;
    return volume;
  }
  std::vector<FSVolumeRefNum> Numbers() const {
    std::vector<FSVolumeRefNum> numbers;
    for (const GL_VolumeElement* element = list; element; element = element->next)
      numbers.push_back(element->vRefNum);
    return numbers;
  }

  TemporaryFolder home;
  GL_VolumeElement* list = nullptr;
};

TEST_F(VolumesTest, KindsLocksAndServers) {
  const struct {
    const char* name;
    GL_VolumeKind kind;
    SInt32 lock;
    Boolean network;
  } rows[] = {{"SHARE", kGL_SMBVolume, noErr, 1},     {"apple", kGL_AFPVolume, noErr, 1},
              {"work", kGL_OtherVolume, vLckdErr, 1}, {"disc", kGL_OtherVolume, wPrErr, 0},
              {"stick", kGL_OtherVolume, noErr, 0},   {"memory", kGL_LocalVolume, noErr, 0},
              {"bind", kGL_LocalVolume, noErr, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const FSVolumeRefNum volume = Volume(row.name);
    FSRef root{};
    HFSUniStr255 name{};
    Boolean answer = 9;
    ASSERT_EQ(noErr, GL_GetVolumeRef(volume, &root));
    EXPECT_EQ(row.kind, GL_GetVolumeKind(&root));
    EXPECT_EQ(row.lock, GL_IsVolumeLocked(volume));
    EXPECT_EQ(row.lock, MF_FSCheckLock(&root));
    EXPECT_EQ(noErr, GL_IsNetworkVolume(nullptr, volume, &answer));
    EXPECT_EQ(row.network, answer);
    EXPECT_EQ(noErr, GL_GetVolumeNameFromFSRef(&root, &name));
    EXPECT_EQ(volume,
              Volume(quillmere::ToUtf8(
                         Owned<CFStringRef>(FSCreateStringFromHFSUniStr(nullptr, &name)).get())
                         .c_str()));
    EXPECT_EQ(noErr, GL_IsHFSPlusVolume(volume, &answer, nullptr));
    EXPECT_EQ(1, answer);
  }
  const FSRef nothing{};
  EXPECT_EQ(kGL_NoVolume, GL_GetVolumeKind(&nothing));
  Boolean answer = 9;
  EXPECT_EQ(paramErr, GL_IsNetworkVolume(nullptr, 0, &answer));
  const HFSUniStr255 none = Name("none such");
  EXPECT_EQ(nsvErr, GL_IsNetworkVolume(&none, 0, &answer));
  EXPECT_EQ(nsvErr, GL_IsNetworkVolume(nullptr, 1, &answer));
  EXPECT_EQ(0, answer);
  FSVolumeRefNum volume = 7;
  EXPECT_EQ(nsvErr, GL_GetVolumeByName(&none, &volume));
  EXPECT_EQ(0, volume);
  const UTCDateTime never = {0xFFFF, 1, 1};
  volume = 7;
  EXPECT_EQ(noErr, GL_GetVolumeByCreateDate(&never, &volume));
  EXPECT_EQ(0, volume);
}

TEST_F(VolumesTest, DrivesDisksAndTheStartupVolume) {
  const FSVolumeRefNum bind = Volume("bind");
  FSVolumeRefNum startup = 0;
  FSVolumeRefNum volume = 0;
  FSRef root{};
  ASSERT_EQ(noErr, GL_GetStartupVolumeRefNum(&startup));
  ASSERT_EQ(noErr, GL_GetStartupVolume(&root, nullptr));
  Boolean answer = 0;
  EXPECT_EQ(noErr, GL_IsVolume(&root, &answer));
  EXPECT_EQ(1, answer);
  SInt16 drive = 0;
  ASSERT_EQ(noErr, GL_GetDriveNumber(bind, &drive));
  EXPECT_EQ(noErr, GL_GetDriveVolume(drive, &volume));
  EXPECT_EQ(startup, volume);
  EXPECT_EQ(nsvErr, GL_GetDriveVolume(-1, &volume));
  EXPECT_EQ(0, volume);
  char node[kGL_NodeNameSize];
  EXPECT_EQ(noErr, GL_GetDiskName(Volume("stick"), node));
  EXPECT_STREQ("no-such-2", node);
  EXPECT_EQ(GL_NoNodeNameErr, GL_GetDiskName(Volume("share"), node));
  EXPECT_STREQ("", node);
  EXPECT_EQ(noErr, GL_VolumesOnSameDisk(bind, Volume("stick"), &answer));
  EXPECT_EQ(0, answer);
  EXPECT_EQ(noErr, GL_VolumesOnSameDisk(bind, bind, &answer));
  EXPECT_EQ(1, answer);
  const FSRef here = Reference(home.path());
  const FSRef there = Reference(home / "stick");
  EXPECT_EQ(noErr, GL_FileObjectsOnSameVolume(&here, &there, &answer));
  EXPECT_EQ(0, answer);
  EXPECT_EQ(noErr, GL_FileObjectsOnSameVolume(&here, &root, &answer));
  EXPECT_EQ(1, answer);
}

TEST_F(VolumesTest, ListsAreMadeSearchedSortedAndReduced) {
  ASSERT_EQ(noErr, GL_MakeVolumeList(&list));
  ASSERT_EQ(noErr, GL_MakeVolumeList(&list));  // the first one goes
  EXPECT_EQ(8U, Numbers().size());
  const HFSUniStr255 stick = Name("Stick");
  const HFSUniStr255 empty{};
  EXPECT_EQ(Volume("stick"), GL_FindInVolumeList(Volume("disc"), &stick, list)->vRefNum);
  EXPECT_TRUE(GL_IsInVolumeList(Volume("disc"), &empty, list));
  EXPECT_FALSE(GL_IsInVolumeList(1, nullptr, list));

  // All lie in the same file system here. Others may write to it between two looks at its space,
  // so that any order can be right; none is lost.
  const std::vector<FSVolumeRefNum> before = Numbers();
  EXPECT_EQ(noErr, GL_SortVolumeListByFreeSize(&list));
  EXPECT_TRUE(std::ranges::is_permutation(before, Numbers()));

  EXPECT_EQ(noErr, GL_ReduceToSaveableVolumesList(&list, 0, 1));
  EXPECT_EQ(6U, Numbers().size());
  EXPECT_EQ(nullptr, GL_FindInVolumeList(Volume("work"), nullptr, list));
  EXPECT_EQ(nullptr, GL_FindInVolumeList(Volume("disc"), nullptr, list));
  EXPECT_EQ(noErr, GL_ReduceToSaveableVolumesList(&list, 0, 0));
  EXPECT_EQ(4U, Numbers().size());
  EXPECT_EQ(noErr, GL_ReduceToSaveableVolumesList(&list, ~UInt64{0}, 1));
  EXPECT_EQ(nullptr, list);
  EXPECT_EQ(noErr, GL_ReduceToSaveableVolumesList(&list, 0, 0));
}

TEST(VolumeOrder, LargestFreeSpaceComesFirst) {
  GL_VolumeElement* list = nullptr;
  ASSERT_EQ(noErr, GL_MakeVolumeList(&list));
  ASSERT_EQ(noErr, GL_SortVolumeListByFreeSize(&list));
  UInt64 last = ~UInt64{0} >> 1;
  for (const GL_VolumeElement* element = list; element; element = element->next) {
    UInt64 free_bytes = 0;
    ASSERT_EQ(noErr, GL_GetFreeSpace(element->vRefNum, &free_bytes));
    EXPECT_LE(free_bytes, last + (1U << 30));  // others write meanwhile
    last = free_bytes;
  }
  LL_DisposeLinkedList(quillmere::ListHead(&list));
}

TEST_F(VolumesTest, ObjectsAndSearches) {
  fs::create_directories(home / "stick/a/b");
  WriteFile(home / "stick/a/b/Film.mov", "x");
  fs::create_symlink("b", home / "stick/a/link");
  const FSRef film = Reference(home / "stick/a/b/Film.mov");
  const struct {
    FSRef reference;
    UInt16 kind;
    SInt32 status;
  } kinds[] = {{Reference("/"), kGL_VolumeObject, noErr},
               {Reference(home / "stick/a"), kGL_FolderObject, noErr},
               {film, kGL_FileObject, noErr},
               {Reference(home / "stick/a/link"), kGL_AliasObject, noErr},
               {FSRef{}, kGL_UnknownObject, errFSBadFSRef}};
  for (const auto& row : kinds) {
    UInt16 kind = 9;
    EXPECT_EQ(row.status, GL_GetFileObjectType(&row.reference, &kind));
    EXPECT_EQ(row.kind, kind);
  }

  const FSVolumeRefNum stick = Volume("stick");
  const HFSUniStr255 name = Name("film.MOV");
  FSRef found{};
  EXPECT_EQ(noErr, GL_FindObjectByName(stick, &name, &found));
  EXPECT_EQ(0, FSCompareFSRefs(&film, &found));
  FSCatalogInfo info{};
  ASSERT_EQ(noErr, FSGetCatalogInfo(&film, kFSCatInfoNodeID | kFSCatInfoAllDates, &info, nullptr,
                                    nullptr, nullptr));
  EXPECT_EQ(noErr, GL_FindObjectByNodeID(stick, info.nodeID, &found));
  EXPECT_EQ(0, FSCompareFSRefs(&film, &found));

  EXPECT_EQ(noErr, GL_FindFile(stick, &name, 0, 0, nullptr, &info.contentModDate, &found));
  EXPECT_EQ(errFSNoMoreItems, GL_FindFile(stick, &name, 0, "MooV"_4cc, nullptr, nullptr, &found));
  EXPECT_TRUE(GL_AreBytesClear(&found, sizeof(found)));
  std::memcpy(info.finderInfo, "MooVTVOD", 8);
  ASSERT_EQ(noErr, FSSetCatalogInfo(&film, kFSCatInfoFinderInfo, &info));
  EXPECT_EQ(noErr,
            GL_FindFile(stick, &name, "TVOD"_4cc, "MooV"_4cc, &info.createDate, nullptr, &found));
  EXPECT_EQ(errFSNoMoreItems, GL_FindFile(stick, &name, 0, 0, nullptr, nullptr, &found));
  ++info.createDate.lowSeconds;
  EXPECT_EQ(errFSNoMoreItems,
            GL_FindFile(stick, &name, "TVOD"_4cc, "MooV"_4cc, &info.createDate, nullptr, &found));
  EXPECT_EQ(nsvErr, GL_FindObjectByName(0, &name, &found));
}

TEST(ShortPaths, ArePrinted) {
  const TemporaryFolder home;
  const FSRef root = Reference("/");
  const FSRef folder = Reference(home.path());
  Boolean same = 0;
  ASSERT_EQ(noErr, GL_FileObjectsOnSameVolume(&root, &folder, &same));
  if (!same || home.path().parent_path() != "/tmp")
    GTEST_SKIP() << "the temporary folder is not /tmp";
  Owned<CFStringRef> name;
  ASSERT_EQ(noErr, GL_GetVolumeNameFromFSRefAsCFStr(&root, name.out()));
  const std::string volume = "/" + quillmere::ToUtf8(name.get()) + "/";
  const std::string own = home.path().filename();
  fs::create_directory(home / "one");
  WriteFile(home / "one/file", "");
  WriteFile(home / "file", "");
  WriteFile(home.path().native() + "-file", "");
  const struct {
    fs::path path;
    std::string printed;
  } rows[] = {{"/", volume},
              {"/tmp", volume + "tmp/"},
              {home.path(), volume + own + "/"},
              {home.path().native() + "-file", volume + "tmp/" + own + "-file"},
              {home / "file", volume + ".../" + own + "/file"},
              {home / "one", volume + ".../one/"},
              {home / "one/file", volume + ".../one/file"}};
  for (const auto& row : rows) {
    const FSRef reference = Reference(row.path);
    testing::internal::CaptureStdout();
    EXPECT_EQ(noErr, GL_PrintFileObjNameDirVol(&reference));
    EXPECT_EQ(row.printed + "\n", testing::internal::GetCapturedStdout());
  }
  fs::remove(home.path().native() + "-file");
}

TEST(WritableFolders, AreFoundAtTheDepthAskedFor) {
  const TemporaryFolder home;
  const quillmere::test::AsNobody as_nobody(home.path());
  fs::create_directories(home / "a/b");
  const FSRef folder = Reference(home.path());
  fs::permissions(home / "a", fs::perms::owner_read | fs::perms::owner_exec);
  Boolean has = 9;
  EXPECT_EQ(noErr, GL_UserHasWritePrivilegeToSomeFolder(&folder, 1, 60, &has));
  EXPECT_EQ(0, has);
  EXPECT_EQ(noErr, GL_UserHasWritePrivilegeToSomeFolder(&folder, 0, 60, &has));
  EXPECT_EQ(1, has);
  fs::permissions(home / "a", fs::perms::owner_all);
}

TEST(UniformTypes, ComeFromTheExtensionOrElseTheFileType) {
  const TemporaryFolder home;
  const struct {
    const char* name;
    const char* type;
    const char* uniform;
  } rows[] = {{"a.MOV", "", "com.apple.quicktime-movie"},
              {"b.jpeg", "PNGf", "public.jpeg"},
              {"c.unknown", "PNGf", "public.png"},
              {"d", "TEXT", "public.plain-text"},
              {"e.unknown", "", ""},
              {"f", "????", ""}};
  for (const auto& row : rows) {
    WriteFile(home / row.name, "");
    const FSRef reference = Reference(home / row.name);
    FSCatalogInfo info{};
    std::memcpy(info.finderInfo, row.type, std::strlen(row.type));
    ASSERT_EQ(noErr, FSSetCatalogInfo(&reference, kFSCatInfoFinderInfo, &info));
    const Owned<CFURLRef> url(CFURLCreateFromFSRef(nullptr, &reference));
    Owned<CFStringRef> type;
    EXPECT_EQ(noErr, GL_GetFileUTI(url.get(), type.out()));
    EXPECT_EQ(row.uniform, type ? quillmere::ToUtf8(type.get()) : std::string()) << row.name;
  }
}

TEST_F(VolumesTest, SystemsAreCompared) {
  const struct {
    const char* a;
    const char* b;
    Boolean same;
  } rows[] = {
      {"stick", "memory", 1}, {"stick", "share", 0}, {"share", "work", 0}, {"share", "share", 1}};
  for (const auto& row : rows) {
    const FSRef a = Reference(home / row.a);
    const FSRef b = Reference(home / row.b);
    Boolean same = 9;
    EXPECT_EQ(noErr, GL_FileObjectsOnSameSystem(&a, &b, &same));
    EXPECT_EQ(row.same, same) << row.a << ' ' << row.b;
  }
}

}  // namespace
