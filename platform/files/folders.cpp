#include "folders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace fs = std::filesystem;

namespace {

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
  return home.empty() ? home : home / beneath_home;
}

}  // namespace

OSErr FSFindFolder(FSVolumeRefNum domain, OSType type, Boolean create, FSRef* folder) {
  if (!folder || domain != kUserDomain || type != kLogsFolderType) {
    return static_cast<OSErr>(paramErr);
  }
  const fs::path base = UserFolder("XDG_STATE_HOME", ".local/state");
  if (base.empty()) return fnfErr;
  const fs::path path = base / "quillmere" / "logs";
  std::error_code error;
  if (create) fs::create_directories(path, error);
  if (error) return quillmere::files::StatusOfErrno(error.value());
  return static_cast<OSErr>(quillmere::files::ReferenceOf(path, folder));
}
