#include "folders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <vector>

#include "whole_files.h"

namespace fs = std::filesystem;

namespace quillmere::files {
namespace {

constexpr std::size_t kLargestUserDirs = 1 << 20;

/// The user's home; empty if there is none.
fs::path Home() {
  if (const char* home = std::getenv("HOME"); home && home[0] == '/') return home;
  std::vector<char> room(16384);
  passwd record{};
  passwd* found = nullptr;
  getpwuid_r(getuid(), &record, room.data(), room.size(), &found);
  return found && found->pw_dir ? fs::path(found->pw_dir) : fs::path();
}

/// A base folder of the user; a variable that holds no absolute path counts as not set.
fs::path UserFolder(const char* variable, const char* beneath_home) {
  if (const char* path = std::getenv(variable); path && path[0] == '/') return path;
  const fs::path home = Home();
  return home.empty() ? fs::path() : home / beneath_home;
}

fs::path DataFolder() {
  return UserFolder("XDG_DATA_HOME", ".local/share");
}

fs::path PreferencesFolder() {
  return UserFolder("XDG_CONFIG_HOME", ".config");
}

fs::path LogsFolder() {
  const fs::path base = UserFolder("XDG_STATE_HOME", ".local/state");
  return base.empty() ? base : base / "quillmere" / "logs";
}

fs::path VideosFolder() {
  const fs::path home = Home();
  if (home.empty()) return {};
  std::vector<UInt8> bytes;
  std::string folder;
  if (ReadWholeFile(PreferencesFolder() / "user-dirs.dirs", kLargestUserDirs, &bytes) == noErr) {
    folder = UserFolderIn({reinterpret_cast<const char*>(bytes.data()), bytes.size()},
                          "XDG_VIDEOS_DIR", home.native());
  }
  return folder.empty() ? home / "Videos" : fs::path(folder);
}

fs::path TemporaryFolder() {
  const char* path = std::getenv("TMPDIR");
  return path && path[0] == '/' ? path : "/tmp";
}

fs::path HomeTrash() {
  const fs::path data = DataFolder();
  return data.empty() ? data : data / "Trash" / "files";
}

/// A folder of every domain; null where the domain does not have it.
struct FolderRow {
  OSType type;
  fs::path (*user)();
  const char* local;
  const char* system;
};
constexpr FolderRow kFolders[] = {
    {kApplicationSupportFolderType, &DataFolder, "/usr/local/share", "/usr/share"},
    {kFrameworksFolderType, nullptr, "/usr/local/lib", "/usr/lib"},
    {kLogsFolderType, &LogsFolder, nullptr, nullptr},
    {kSystemFolderType, nullptr, nullptr, "/"},
    {kMovieDocumentsFolderType, &VideosFolder, nullptr, nullptr},
    {kPreferencesFolderType, &PreferencesFolder, "/etc/xdg", "/etc/xdg"},
    {kSystemSoundsFolderType, nullptr, nullptr, "/usr/share/sounds/freedesktop/stereo"},
    {kTrashFolderType, &HomeTrash, nullptr, nullptr},
    {kTemporaryFolderType, &TemporaryFolder, nullptr, nullptr},
};

/// Makes a folder and those that it lies in, for the user alone.
OSErr MakeFolders(const fs::path& path) {
  fs::path folder;
  for (const fs::path& part : path) {
    folder /= part;
    if (mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST) continue;
    std::error_code error;
    const int failure = errno;
    if (!fs::is_directory(folder, error)) return StatusOfErrno(failure);
  }
  return noErr;
}

/// Whether a folder is there, is no link, and belongs to the user.
bool IsOwnFolder(const fs::path& path) {
  struct stat found;
  return lstat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode) && found.st_uid == getuid();
}

/// Whether an administrator's folder for the trash of all users is there and safe: no link, and
/// nobody can delete what is another user's.
bool IsSharedTrash(const fs::path& path) {
  struct stat found;
  return lstat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode) && (found.st_mode & S_ISVTX);
}

/// The trash for a volume, or one of the user's own there that must not be trusted: fnfErr.
OSErr TrashOnVolume(const fs::path& mount_point, bool create, fs::path* files) {
  const std::string user = std::to_string(getuid());
  std::vector<fs::path> places;
  if (IsSharedTrash(mount_point / ".Trash")) places.push_back(mount_point / ".Trash" / user);
  places.push_back(mount_point / (".Trash-" + user));
  OSErr status = fnfErr;
  for (const fs::path& place : places) {
    if (create && mkdir(place.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
      status = StatusOfErrno(errno);
      continue;
    }
    if (!IsOwnFolder(place)) continue;
    *files = place / "files";
    return noErr;
  }
  return status;
}

/// The nearest folder above that is there.
fs::path ExistingFolder(fs::path path) {
  std::error_code error;
  while (!fs::exists(path, error) && path.has_relative_path())
    path = path.parent_path();
  return path;
}

OSErr FindTrash(FSVolumeRefNum volume, bool create, fs::path* files) {
  fs::path mount_point;
  OSStatus status = MountPointOfVolume(volume, &mount_point);
  if (status) return static_cast<OSErr>(status);
  const fs::path home_trash = HomeTrash();
  FSVolumeRefNum home_volume = 0;
  if (!home_trash.empty() && VolumeOfPath(ExistingFolder(home_trash), &home_volume) == noErr &&
      home_volume == volume) {
    *files = home_trash;
    return noErr;
  }
  return TrashOnVolume(mount_point, create, files);
}

/// A trash has the folder `info` beside that for the files.
OSErr MakeTrash(const fs::path& files) {
  const OSErr status = MakeFolders(files);
  return status ? status : MakeFolders(files.parent_path() / "info");
}

/// The path that a domain and a type stand for; empty if the domain does not have it.
fs::path PathInDomain(FSVolumeRefNum domain, const FolderRow& row) {
  if (domain == kUserDomain) return row.user ? row.user() : fs::path();
  const char* path = domain == kLocalDomain ? row.local : row.system;
  return path && domain != kClassicDomain ? path : fs::path();
}

bool IsDomain(FSVolumeRefNum volume) {
  static constexpr std::array kDomains = {kOnSystemDisk, kSystemDomain, kLocalDomain, kUserDomain,
                                          kClassicDomain};
  return std::find(kDomains.begin(), kDomains.end(), volume) != kDomains.end();
}

/// Looks a path up, links followed, so that the folder itself is named.
OSErr ReferenceOfFolder(const fs::path& path, FSRef* folder) {
  std::error_code error;
  const fs::path real = fs::canonical(path, error);
  if (error) return StatusOfErrno(error.value());
  if (!fs::is_directory(real, error)) return fnfErr;
  return static_cast<OSErr>(ReferenceOf(real, folder));
}

}  // namespace

std::string UserFolderIn(std::string_view text, std::string_view key, std::string_view home) {
  std::string folder;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (!line.starts_with(key)) continue;
    line.remove_prefix(key.size());
    const std::size_t opening = line.find('"');
    if (opening == std::string_view::npos) continue;
    const std::string_view before = line.substr(0, opening);
    if (before.find_first_not_of(" \t=") != std::string_view::npos) continue;
    line.remove_prefix(opening + 1);
    std::string path;
    if (line.starts_with("$HOME") && (line.size() == 5 || line[5] == '/' || line[5] == '"')) {
      path = home;
      line.remove_prefix(5);
    }
    std::size_t i = 0;
    for (; i < line.size() && line[i] != '"'; ++i) {
      if (line[i] == '\\' && i + 1 < line.size()) ++i;
      path += line[i];
    }
    if (i < line.size() && path.starts_with('/')) folder = std::move(path);
  }
  return folder;
}

}  // namespace quillmere::files

OSErr FSFindFolder(FSVolumeRefNum volume, OSType type, Boolean create, FSRef* folder) {
  using namespace quillmere::files;
  if (!folder) return static_cast<OSErr>(paramErr);
  *folder = {};
  const auto* const row = std::find_if(std::begin(kFolders), std::end(kFolders),
                                       [type](const FolderRow& one) { return one.type == type; });
  if (row == std::end(kFolders)) return static_cast<OSErr>(paramErr);
  const bool on_volume = !IsDomain(volume);
  fs::path path;
  if (on_volume) {
    const OSErr status = type == kTrashFolderType ? FindTrash(volume, create != 0, &path) : fnfErr;
    if (status) return status;
  } else {
    path = PathInDomain(volume, *row);
    if (path.empty()) return fnfErr;
  }
  if (create && (on_volume || volume == kUserDomain)) {
    const OSErr status = type == kTrashFolderType ? MakeTrash(path) : MakeFolders(path);
    if (status) return status;
  }
  return ReferenceOfFolder(path, folder);
}
