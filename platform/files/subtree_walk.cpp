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

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
/// Folders on the way to the innermost one that are held open.
constexpr std::size_t kMostOpen = 32;

/// Whether an entry is a folder; a file system that does not tell is asked for the object.
bool IsFolder(int folder, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat found;
  return fstatat(folder, entry.d_name, &found, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(found.st_mode);
}

}  // namespace

OSStatus SubtreeWalk::Identify(int folder, Identity* identity) {
  unsigned mask = STATX_INO;
#ifdef STATX_MNT_ID
  mask |= STATX_MNT_ID;
#endif
  struct statx found;
  if (statx(folder, "", AT_EMPTY_PATH, mask, &found) != 0) return StatusOfErrno(errno);
  const UInt64 device = (UInt64{found.stx_dev_major} << 32) | found.stx_dev_minor;
  *identity = {device, found.stx_ino, device};
#ifdef STATX_MNT_ID
  if (found.stx_mask & STATX_MNT_ID) identity->mount = found.stx_mnt_id;
#endif
  return noErr;
}

OSStatus SubtreeWalk::Enter(Descriptor folder, std::string path) {
  if (!folder.IsOpen()) return StatusOfErrno(errno);
  Level level;
  const OSStatus status = Identify(folder.get(), &level.identity);
  if (status) return status;
  if (levels_.empty()) mount_ = level.identity.mount;
  if (level.identity.mount != mount_) return noErr;
  // Reading goes through a descriptor of its own, which closedir takes away.
  const OpenFolder entries(fdopendir(fcntl(folder.get(), F_DUPFD_CLOEXEC, 0)));
  if (!entries) return StatusOfErrno(errno);
  while (const dirent* entry = readdir(entries.get())) {
    const char* name = entry->d_name;
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
    if (IsSidecar(folder.get(), name)) continue;
    level.entries.push_back({name, entry->d_ino, IsFolder(folder.get(), *entry)});
  }
  std::sort(level.entries.begin(), level.entries.end(),
            [](const Entry& a, const Entry& b) { return a.name < b.name; });
  if (path.back() != '/') path += '/';
  level.folder = std::move(folder);
  level.path = std::move(path);
  levels_.push_back(std::move(level));
  if (levels_.size() > kMostOpen) levels_[levels_.size() - 1 - kMostOpen].folder = Descriptor();
  return noErr;
}

OSStatus SubtreeWalk::Open(const std::filesystem::path& root) {
  levels_.clear();
  last_is_folder_ = false;
  return Enter(Descriptor(open(root.c_str(), kFolderFlags)), root.native());
}

/// Enters the folder that Next gave last. One that has gone or that the user may not read is passed
/// over.
void SubtreeWalk::EnterLast() {
  const Level& level = levels_.back();
  const std::string& name = level.entries[level.next - 1].name;
  Enter(Descriptor(openat(level.folder.get(), name.c_str(), kFolderFlags)), level.path + name);
}

/// Leaves the innermost folder. The one that held it is opened again if it was closed; when that
/// has become another one, the rest of it is passed over.
void SubtreeWalk::Leave() {
  const Level left = std::move(levels_.back());
  levels_.pop_back();
  if (levels_.empty() || levels_.back().folder.IsOpen()) return;
  Level& level = levels_.back();
  level.folder = Descriptor(openat(left.folder.get(), "..", kFolderFlags));
  Identity found{};
  const bool is_same = level.folder.IsOpen() && Identify(level.folder.get(), &found) == noErr &&
                       found == level.identity;
  if (!is_same) level.next = level.entries.size();
}

const SubtreeWalk::Entry* SubtreeWalk::Next() {
  if (std::exchange(last_is_folder_, false)) EnterLast();
  while (!levels_.empty() && levels_.back().next == levels_.back().entries.size())
    Leave();
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
