#include "subtree_walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include "file_references.h"
#include "sidecars.h"

namespace quillmere::files {
namespace {

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, FolderCloser>;

OpenFolder OpenWithoutLinks(const std::string& path) {
  const int descriptor =
      open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return nullptr;
  OpenFolder folder(fdopendir(descriptor));
  if (!folder) close(descriptor);
  return folder;
}

/// Whether an entry is a folder; a file system that does not tell is asked for the object.
bool IsFolder(int folder, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat found;
  return fstatat(folder, entry.d_name, &found, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(found.st_mode);
}

}  // namespace

OSStatus SubtreeWalk::VolumeOf(int folder, Volume* volume) {
  unsigned mask = STATX_TYPE;
#ifdef STATX_MNT_ID
  mask |= STATX_MNT_ID;
#endif
  struct statx found;
  if (statx(folder, "", AT_EMPTY_PATH, mask, &found) != 0) return StatusOfErrno(errno);
  volume->mount = (UInt64{found.stx_dev_major} << 32) | found.stx_dev_minor;
#ifdef STATX_MNT_ID
  if (found.stx_mask & STATX_MNT_ID) volume->mount = found.stx_mnt_id;
#endif
  return noErr;
}

OSStatus SubtreeWalk::Enter(std::string path) {
  const OpenFolder folder = OpenWithoutLinks(path);
  if (!folder) return StatusOfErrno(errno);
  const int descriptor = dirfd(folder.get());
  Volume volume{};
  const OSStatus status = VolumeOf(descriptor, &volume);
  if (status) return status;
  if (levels_.empty()) volume_ = volume;
  if (volume != volume_) return noErr;
  Level level;
  while (const dirent* entry = readdir(folder.get())) {
    const char* name = entry->d_name;
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
    if (IsSidecar(descriptor, name)) continue;
    level.entries.push_back({name, entry->d_ino, IsFolder(descriptor, *entry)});
  }
  std::sort(level.entries.begin(), level.entries.end(),
            [](const Entry& a, const Entry& b) { return a.name < b.name; });
  if (path.back() != '/') path += '/';
  level.path = std::move(path);
  levels_.push_back(std::move(level));
  return noErr;
}

OSStatus SubtreeWalk::Open(const std::filesystem::path& root) {
  levels_.clear();
  last_is_folder_ = false;
  return Enter(root.native());
}

const SubtreeWalk::Entry* SubtreeWalk::Next() {
  // One that has gone or that the user may not read is passed over.
  if (std::exchange(last_is_folder_, false)) Enter(Path());
  while (!levels_.empty() && levels_.back().next == levels_.back().entries.size())
    levels_.pop_back();
  if (levels_.empty()) return nullptr;
  Level& level = levels_.back();
  const Entry& entry = level.entries[level.next++];
  last_is_folder_ = entry.is_folder;
  return &entry;
}

std::string SubtreeWalk::Path() const {
  const Level& level = levels_.back();
  return level.path + level.entries[level.next - 1].name;
}

}  // namespace quillmere::files
