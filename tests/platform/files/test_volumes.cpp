/// Volumes, their folders and trashes, and who may do what on them; mount tables that hold servers
/// are made up.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>

#include "folders.h"
#include "test_files.h"
#include "volume_access.h"
#include "volume_mounting.h"
#include "volumes.h"

namespace {

namespace fs = std::filesystem;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;

std::string Text(const HFSUniStr255& name) {
  const quillmere::Owned<CFStringRef> string(FSCreateStringFromHFSUniStr(nullptr, &name));
  return quillmere::ToUtf8(string.get());
}

FSRef Reference(const fs::path& path) {
  FSRef reference{};
  EXPECT_EQ(noErr, quillmere::files::ReferenceOf(path, &reference)) << path;
  return reference;
}

std::string Place(const FSRef& reference) {
  fs::path path;
  const OSStatus status = quillmere::files::PathOf(reference, &path);
  return status ? "status " + std::to_string(status) : path.string();
}

FSVolumeRefNum VolumeOf(const fs::path& path) {
  FSVolumeRefNum volume = 0;
  EXPECT_EQ(noErr, quillmere::files::VolumeOfPath(path, &volume)) << path;
  return volume;
}

/// Sets a variable of the environment for a test's time.
class Variable {
 public:
  Variable(const char* name, const std::string& value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    setenv(name, value.c_str(), 1);
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;
  ~Variable() { old_ ? setenv(name_, old_->c_str(), 1) : unsetenv(name_); }

 private:
  const char* name_;
  std::optional<std::string> old_;
};

TEST(Volumes, WalkAgreesWithTheSystem) {
  FSVolumeRefNum number = 0;
  FSVolumeInfo info{};
  HFSUniStr255 name{};
  FSRef root{};
  const FSVolumeInfoBitmap all = kFSVolInfoCreateDate | kFSVolInfoSizes | kFSVolInfoFlags |
                                 kFSVolInfoFSInfo | kFSVolInfoDriveInfo;
  ASSERT_EQ(noErr, FSGetVolumeInfo(0, 1, &number, all, &info, &name, &root));
  EXPECT_EQ("/", Place(root));
  EXPECT_LT(number, 0);
  EXPECT_EQ(number, VolumeOf("/"));
  EXPECT_NE(number, VolumeOf("/proc/self/stat"));
  EXPECT_GT(name.length, 0);
  EXPECT_EQ(kVolumeSignature, info.signature);
  EXPECT_GE(info.driveNumber, 1);
  struct statvfs sizes;
  ASSERT_EQ(0, statvfs("/", &sizes));
  EXPECT_EQ(sizes.f_blocks * sizes.f_frsize, info.totalBytes);
  EXPECT_LE(info.freeBytes, info.totalBytes);
  EXPECT_EQ((sizes.f_flag & ST_RDONLY) != 0, (info.flags & kFSVolFlagSoftwareLockedMask) != 0);

  ItemCount index = 0;
  OSErr status = noErr;
  while (!status) {
    FSVolumeRefNum again = 0;
    status = FSGetVolumeInfo(0, ++index, &number, kFSVolInfoNone, nullptr, nullptr, nullptr);
    if (status) break;
    EXPECT_EQ(noErr, FSGetVolumeInfo(number, 0, &again, 0, nullptr, nullptr, &root));
    EXPECT_EQ(number, again);
    EXPECT_EQ(number, VolumeOf(Place(root)));
  }
  EXPECT_EQ(nsvErr, status);
  EXPECT_EQ(nsvErr, FSGetVolumeInfo(0, 0, &number, 0, nullptr, nullptr, nullptr));
  EXPECT_EQ(static_cast<OSErr>(paramErr),
            FSGetVolumeInfo(0, 1, &number, 0x10, &info, nullptr, nullptr));
  EXPECT_EQ(noErr, FSFlushVolume(VolumeOf(fs::temp_directory_path())));
  EXPECT_EQ(nsvErr, FSFlushVolume(5));
}

TEST(Volumes, ParametersFillAsMuchAsThereIsRoomFor) {
  GetVolParmsInfoBuffer parameters;
  std::memset(&parameters, 0x55, sizeof(parameters));
  ByteCount actual = 0;
  const FSVolumeRefNum volume = VolumeOf("/");
  EXPECT_EQ(noErr, PBHGetVolParmsSync(volume, 12, &parameters, &actual));
  EXPECT_EQ(12U, actual);
  EXPECT_EQ(5, parameters.vMVersion);
  EXPECT_EQ(0, parameters.vMServerAdr);
  EXPECT_EQ(0x55555555, parameters.vMExtendedAttributes);
  EXPECT_EQ(noErr, PBHGetVolParmsSync(volume, 99, &parameters, &actual));
  EXPECT_EQ(32U, actual);
  EXPECT_TRUE(parameters.vMExtendedAttributes & kSupportsHFSPlusAPIs);
  EXPECT_EQ(nsvErr, PBHGetVolParmsSync(-99, 32, &parameters, &actual));
}

/// A table of made-up volumes at real folders.
class MadeUpVolumes : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string lines;
    Add(&lines, 1, "/", "ext4", "/dev/sda1", "rw");
    Add(&lines, 2, "/proc", "proc", "proc", "rw");
    Add(&lines, 3, "/run/lock", "tmpfs", "tmpfs", "rw");
    for (const auto& [folder, type, source, options] : kVolumes) {
      fs::create_directory(home / folder);
      Add(&lines, 10 + static_cast<int>(lines.size()), home / folder, type, source, options);
    }
    fs::create_directory(home / "cache");
    Add(&lines, 5, home / "cache", "tmpfs", "tmpfs", "rw");
    Add(&lines, 6, home / "cache", "ext4", "/dev/sda3", "rw");
    WriteFile(home / "table", lines);
    quillmere::files::UseMountTable(home / "table");
  }
  void TearDown() override { quillmere::files::UseMountTable({}); }

  static void Add(std::string* lines, int id, const std::string& place, const std::string& type,
                  const std::string& source, const std::string& options) {
    *lines += std::to_string(id) + " 1 250:" + std::to_string(id) + " / " + place + ' ' + options +
              ",relatime - " + type + ' ' + source + ' ' + options + '\n';
  }

  struct Row {
    const char* folder;
    const char* type;
    const char* source;
    const char* options;
  };
  static constexpr Row kVolumes[] = {
      {"share", "cifs", "//server/share", "rw"}, {"other", "cifs", "//server/other", "rw"},
      {"work", "nfs4", "far:/export", "ro"},     {"apple", "fuse.afpfs", "afp", "rw"},
      {"disc", "iso9660", "/dev/sr0", "ro"},     {"stick", "vfat", "/dev/sdb1", "rw"}};
  TemporaryFolder home;
};

TEST_F(MadeUpVolumes, AreWalkedNamedAndJudged) {
  const struct {
    const char* folder;
    bool network;
    OSType signature;
    UInt16 flags;
    bool foreign;
  } rows[] = {{"share", true, kMountSMB, 0, true},
              {"other", true, kMountSMB, 0, true},
              {"work", true, kMountOther, 0x8000, true},
              {"apple", true, kMountAFP, 0, true},
              {"disc", false, 0, 0x8080, true},
              {"stick", false, 0, 0, true},
              {"cache", false, 0, 0, false}};
  ItemCount index = 1;
  std::vector<SInt32> servers;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.folder);
    FSVolumeRefNum volume = 0;
    HFSUniStr255 name{};
    FSVolumeInfo info{};
    FSRef root{};
    ASSERT_EQ(noErr, FSGetVolumeInfo(0, ++index, &volume, kFSVolInfoFlags | kFSVolInfoFSInfo, &info,
                                     &name, &root));
    EXPECT_EQ(row.folder, Text(name));
    EXPECT_EQ(home / row.folder, Place(root));
    EXPECT_EQ(row.flags, info.flags);
    EXPECT_EQ(row.foreign, info.filesystemID != 0);
    GetVolParmsInfoBuffer parameters{};
    ASSERT_EQ(noErr, FSGetVolumeParms(volume, &parameters, sizeof(parameters)));
    EXPECT_EQ(row.network, parameters.vMServerAdr != 0);
    servers.push_back(parameters.vMServerAdr);
    WriteFile(home / row.folder / "file", "");
    EXPECT_EQ(volume, VolumeOf(home / row.folder / "file"));
    const fs::path neighbour = home / (std::string(row.folder) + "x");
    WriteFile(neighbour, "");
    EXPECT_NE(volume, VolumeOf(neighbour));

    UInt16 size = 99;
    EXPECT_EQ(row.network ? noErr : static_cast<OSErr>(paramErr),
              PBGetVolMountInfoSize(volume, &size));
    if (!row.network) continue;
    quillmere::test::Bytes record(size);
    ASSERT_EQ(noErr, PBGetVolMountInfo(volume, record.data(), record.size()));
    EXPECT_EQ(static_cast<OSErr>(paramErr), PBGetVolMountInfo(volume, record.data(), size - 1U));
    OSType signature = 0;
    std::memcpy(&signature, record.data() + 2, sizeof(signature));
    EXPECT_EQ(row.signature, signature);
    FSVolumeRefNum mounted = 0;
    EXPECT_EQ(volOnLinErr, PBVolumeMount(record.data(), record.size(), &mounted));
    EXPECT_EQ(volume, mounted);
    for (std::size_t length = 0; length < record.size(); ++length) {
      EXPECT_EQ(static_cast<OSErr>(paramErr), PBVolumeMount(record.data(), length, &mounted));
    }
  }
  EXPECT_EQ(servers[0], servers[1]);
  EXPECT_NE(servers[0], servers[2]);
  EXPECT_EQ(nsvErr, FSGetVolumeInfo(0, ++index, nullptr, 0, nullptr, nullptr, nullptr));
}

TEST_F(MadeUpVolumes, KeepTheirNumbersWhileOthersComeAndGo) {
  const FSVolumeRefNum share = VolumeOf(home / "share");
  const FSVolumeRefNum stick = VolumeOf(home / "stick");
  std::string lines;
  Add(&lines, 1, "/", "ext4", "/dev/sda1", "rw");
  Add(&lines, 7, home / "stick", "vfat", "/dev/sdb1", "rw");
  WriteFile(home / "table", lines);
  EXPECT_EQ(stick, VolumeOf(home / "stick"));
  EXPECT_EQ(nsvErr, FSGetVolumeInfo(share, 0, nullptr, 0, nullptr, nullptr, nullptr));
  // Another medium at the same place is another volume.
  lines.clear();
  Add(&lines, 1, "/", "ext4", "/dev/sda1", "rw");
  Add(&lines, 8, home / "stick", "exfat", "/dev/sdc1", "rw");
  WriteFile(home / "table", lines);
  EXPECT_NE(stick, VolumeOf(home / "stick"));
  WriteFile(home / "table", "no table \x01\n");
  EXPECT_EQ(nsvErr, FSGetVolumeInfo(0, 1, nullptr, 0, nullptr, nullptr, nullptr));
}

TEST_F(MadeUpVolumes, EachHasItsTrash) {
  const Variable data("XDG_DATA_HOME", home / "data/share");
  const std::string user = std::to_string(getuid());
  const FSVolumeRefNum stick = VolumeOf(home / "stick");
  const FSVolumeRefNum system = VolumeOf(home.path());
  FSRef trash{};
  EXPECT_EQ(fnfErr, FSFindFolder(system, kTrashFolderType, 0, &trash));
  EXPECT_EQ(fnfErr, FSFindFolder(stick, kTrashFolderType, 0, &trash));
  ASSERT_EQ(noErr, FSFindFolder(system, kTrashFolderType, 1, &trash));
  EXPECT_EQ(home / "data/share/Trash/files", Place(trash));
  EXPECT_TRUE(fs::is_directory(home / "data/share/Trash/info"));
  ASSERT_EQ(noErr, FSFindFolder(kUserDomain, kTrashFolderType, 0, &trash));
  EXPECT_EQ(home / "data/share/Trash/files", Place(trash));

  // A link, or a folder without the sticky bit, is no shared trash.
  const fs::path shared = home / "stick/.Trash";
  fs::create_directory_symlink(home / "share", shared);
  ASSERT_EQ(noErr, FSFindFolder(stick, kTrashFolderType, 1, &trash));
  const fs::path own = home / ("stick/.Trash-" + user);
  EXPECT_EQ(own / "files", Place(trash));
  EXPECT_TRUE(fs::is_directory(own / "info"));
  struct stat found;
  ASSERT_EQ(0, stat(own.c_str(), &found));
  EXPECT_EQ(0700U, found.st_mode & 07777);
  fs::remove(shared);
  fs::create_directory(shared);
  ASSERT_EQ(noErr, FSFindFolder(stick, kTrashFolderType, 1, &trash));
  EXPECT_EQ(own / "files", Place(trash));
  ASSERT_EQ(0, chmod(shared.c_str(), 01777));
  ASSERT_EQ(noErr, FSFindFolder(stick, kTrashFolderType, 1, &trash));
  EXPECT_EQ(shared / user / "files", Place(trash));

  // Nor is a link the user's own one.
  fs::remove_all(shared);
  fs::remove_all(own);
  fs::create_directory_symlink(home / "share", own);
  EXPECT_NE(noErr, FSFindFolder(stick, kTrashFolderType, 1, &trash));
  EXPECT_FALSE(fs::exists(home / "share/files"));
  EXPECT_EQ(fnfErr, FSFindFolder(kClassicDomain, kTrashFolderType, 1, &trash));
  EXPECT_EQ(nsvErr, FSFindFolder(7, kTrashFolderType, 1, &trash));
  EXPECT_EQ(fnfErr, FSFindFolder(stick, kPreferencesFolderType, 1, &trash));
}

TEST(Folders, FollowTheVariables) {
  const TemporaryFolder home;
  const Variable home_variable("HOME", home.path());
  const Variable data("XDG_DATA_HOME", "relative");
  const Variable config("XDG_CONFIG_HOME", home / "config");
  const Variable temporary("TMPDIR", home / "tmp");
  const struct {
    FSVolumeRefNum domain;
    OSType type;
    fs::path path;
  } rows[] = {{kUserDomain, "asup"_4cc, home / ".local/share"},
              {kUserDomain, "pref"_4cc, home / "config"},
              {kUserDomain, "mdoc"_4cc, home / "Videos"},
              {kUserDomain, "utmp"_4cc, home / "tmp"},
              {kSystemDomain, "macs"_4cc, "/"},
              {kOnSystemDisk, "macs"_4cc, "/"},
              {kSystemDomain, "fram"_4cc, fs::canonical("/usr/lib")},
              {kLocalDomain, "asup"_4cc, fs::canonical("/usr/local/share")}};
  for (const auto& row : rows) {
    FSRef folder{};
    SCOPED_TRACE(row.path);
    if (row.domain == kUserDomain) {
      EXPECT_EQ(fnfErr, FSFindFolder(row.domain, row.type, 0, &folder));
      EXPECT_FALSE(fs::exists(row.path));
    }
    ASSERT_EQ(noErr, FSFindFolder(row.domain, row.type, 1, &folder));
    EXPECT_EQ(row.path, Place(folder));
  }
  FSRef folder{};
  fs::create_directory(home / "Films");
  WriteFile(home / "config/user-dirs.dirs", "XDG_VIDEOS_DIR=\"$HOME/Films\"\n");
  EXPECT_EQ(noErr, FSFindFolder(kUserDomain, "mdoc"_4cc, 0, &folder));
  EXPECT_EQ(home / "Films", Place(folder));
  fs::remove(home / "Films");
  WriteFile(home / "Films", "a file");
  EXPECT_NE(noErr, FSFindFolder(kUserDomain, "mdoc"_4cc, 1, &folder));
}

TEST(Folders, UserDirsFileIsReadAsTheShellWould) {
  const struct {
    const char* text;
    const char* folder;
  } rows[] = {{"", ""},
              {"XDG_VIDEOS_DIR=\"$HOME/V\"", "/h/V"},
              {"# XDG_VIDEOS_DIR=\"$HOME/V\"\n", ""},
              {"  XDG_VIDEOS_DIR = \"/v\\\"x\\\\\" # x\n", "/v\"x\\"},
              {"XDG_VIDEOS_DIR=\"/one\"\nXDG_VIDEOS_DIR=\"/two\"\n", "/two"},
              {"XDG_VIDEOS_DIR_OLD=\"/one\"\n", ""},
              {"XDG_VIDEOS_DIR=\"relative\"\n", ""},
              {"XDG_VIDEOS_DIR=\"$HOMELAND\"\n", ""},
              {"XDG_VIDEOS_DIR=\"/unclosed\n", ""},
              {"XDG_VIDEOS_DIR=\"$HOME\"", "/h"}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.folder, quillmere::files::UserFolderIn(row.text, "XDG_VIDEOS_DIR", "/h"))
        << row.text;
  }
}

TEST(VolumeAccess, RightsRoundTripThroughTheMode) {
  const TemporaryFolder home;
  fs::create_directory(home / "folder");
  WriteFile(home / "file", "");
  const FSRef folder = Reference(home / "folder");
  const FSRef file = Reference(home / "file");
  UInt32 owner = 0;
  UInt32 group = 0;
  UInt32 rights = 0;
  const struct {
    UInt32 rights;
    mode_t mode;
  } rows[] = {{0x000007, 0700}, {0x030307, 0755}, {0x070003, 0507}, {0x000207, 0740}};
  for (const auto& row : rows) {
    ASSERT_EQ(noErr, PBHGetDirAccessSync(&folder, &owner, &group, nullptr));
    EXPECT_EQ(getuid(), owner);
    ASSERT_EQ(noErr, PBHSetDirAccessSync(&folder, owner, group, row.rights));
    struct stat found;
    ASSERT_EQ(0, stat((home / "folder").c_str(), &found));
    EXPECT_EQ(row.mode, found.st_mode & 07777);
    ASSERT_EQ(noErr, PBHGetDirAccessSync(&folder, nullptr, nullptr, &rights));
    EXPECT_EQ(row.rights, rights & 0x00FFFFFF);
    EXPECT_TRUE(rights & kAccessUserIsOwner);
  }
  EXPECT_EQ(dirNFErr, PBHGetDirAccessSync(&file, &owner, &group, &rights));
  EXPECT_EQ(dirNFErr, PBHSetDirAccessSync(&file, owner, group, 7));
}

TEST(VolumeAccess, NamesAndNumbersOfUsersAndGroups) {
  const FSVolumeRefNum volume = VolumeOf("/");
  for (const Boolean is_group : {Boolean{0}, Boolean{1}}) {
    HFSUniStr255 name{};
    UInt32 id = 9;
    ASSERT_EQ(noErr, PBHMapIDSync(volume, is_group, 0, &name));
    EXPECT_EQ("root", Text(name));
    EXPECT_EQ(noErr, PBHMapNameSync(volume, is_group, &name, &id));
    EXPECT_EQ(0U, id);
    EXPECT_EQ(afpItemNotFound, PBHMapIDSync(volume, is_group, 4242424242U, &name));
    EXPECT_EQ(0, name.length);
    EXPECT_NE(noErr, PBHMapNameSync(volume, is_group, &name, &id));
    EXPECT_EQ(nsvErr, PBHMapIDSync(1, is_group, 0, &name));
  }
}

TEST(FileDates, RoundTripAndKnownMoments) {
  using quillmere::files::DateOfUnixTime;
  const struct {
    SInt64 seconds;
    SInt64 nanoseconds;
    UTCDateTime date;
  } rows[] = {{0, 0, {0, 0x7C25B080, 0}},
              {-2082844800, 0, {0, 0, 0}},
              {-2082844801, 5, {0, 0, 0}},
              {2212122496, 500'000'000, {1, 0, 0x8000}},
              {0, 999'999'999, {0, 0x7C25B080, 0xFFFF}}};
  for (const auto& row : rows)
    EXPECT_TRUE(row.date == DateOfUnixTime(row.seconds, row.nanoseconds)) << row.seconds;
  for (UInt32 fraction = 0; fraction < 65536; ++fraction) {
    const UTCDateTime date{0, 0x80000000, static_cast<UInt16>(fraction)};
    SInt64 seconds = 0;
    SInt64 nanoseconds = 0;
    quillmere::files::UnixTimeOfDate(date, &seconds, &nanoseconds);
    ASSERT_LT(nanoseconds, 1'000'000'000);
    ASSERT_TRUE(date == DateOfUnixTime(seconds, nanoseconds)) << fraction;
  }
}

}  // namespace
