#include "object_place.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

#include <cerrno>

namespace quillmere::files {
namespace {

/// Whether the object that was found is the one that the reference names.
bool IsSame(const FSRef& reference, const struct statx& info) {
  return Places().ObjectOf(IdentityOf(info)) == IdentityIn(reference);
}

}  // namespace

OSStatus ReadObject(int folder, const char* name, struct statx* info) {
  if (statx(folder, name, AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME, info) != 0) {
    return StatusOfErrno(errno);
  }
  return noErr;
}

ObjectIdentity IdentityOf(const struct statx& info) {
  const bool has_birth = (info.stx_mask & STATX_BTIME) != 0;
  return {makedev(info.stx_dev_major, info.stx_dev_minor), info.stx_ino,
          has_birth ? info.stx_btime.tv_sec : 0, has_birth ? info.stx_btime.tv_nsec : 0};
}

OSStatus FindObject(const FSRef& reference, ObjectPlace* place) {
  OSStatus status = PathOf(reference, &place->path);
  if (status) return status;
  place->name = place->path.has_filename() ? place->path.filename().native() : ".";
  place->folder = Descriptor(
      open(place->path.parent_path().c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!place->folder.IsOpen()) return StatusOfErrno(errno);
  status = ReadObject(place->folder.get(), place->name.c_str(), &place->info);
  return !status && !IsSame(reference, place->info) ? OSStatus{fnfErr} : status;
}

OSStatus OpenFolder(const FSRef& reference, Descriptor* folder, std::filesystem::path* path) {
  OSStatus status = PathOf(reference, path);
  if (status) return status;
  *folder =
      Descriptor(open(path->c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!folder->IsOpen()) {
    // A link here is an object that is not a folder.
    return errno == ENOTDIR || errno == ELOOP ? OSStatus{dirNFErr} : StatusOfErrno(errno);
  }
  struct statx info;
  if (statx(folder->get(), "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_BTIME, &info) != 0) {
    return StatusOfErrno(errno);
  }
  return IsSame(reference, info) ? OSStatus{noErr} : OSStatus{fnfErr};
}

bool IsLocked(const struct statx& info) {
  const bool is_immutable = (info.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
  constexpr unsigned kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
  return is_immutable || (!S_ISLNK(info.stx_mode) && (info.stx_mode & kAnyWrite) == 0);
}

bool IsVolumeRoot(const struct statx& info, const std::filesystem::path& path) {
  if (!S_ISDIR(info.stx_mode)) return false;
  if (info.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) {
    return (info.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
  }
  return path == path.root_path();
}

}  // namespace quillmere::files
