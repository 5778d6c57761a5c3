#include "volume_access.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

namespace {

using quillmere::files::StatusOfErrno;

constexpr std::size_t kMostRecord = 1 << 20;

/// Runs one of the C library's look-ups of users or groups, with more room as long as it asks for
/// it. Gives the record's number and name through `take`.
template <class Record, class LookUp, class Take>
OSErr LookUpRecord(LookUp look_up, Take take) {
  for (std::size_t size = 4096; size <= kMostRecord; size *= 4) {
    std::vector<char> room(size);
    Record record{};
    Record* found = nullptr;
    const int error = look_up(&record, room.data(), room.size(), &found);
    if (error == ERANGE) continue;
    if (!found) return afpItemNotFound;
    take(*found);
    return noErr;
  }
  return afpItemNotFound;
}

OSErr CheckVolume(FSVolumeRefNum volume) {
  std::filesystem::path ignored;
  return static_cast<OSErr>(quillmere::files::MountPointOfVolume(volume, &ignored));
}

/// Three permission bits of Unix as a byte of rights, and back.
constexpr UInt32 RightsOf(mode_t bits) {
  return (bits & S_IXOTH ? kAccessSearch : 0U) | (bits & S_IROTH ? kAccessRead : 0U) |
         (bits & S_IWOTH ? kAccessWrite : 0U);
}

constexpr mode_t BitsOf(UInt32 rights) {
  return (rights & kAccessSearch ? mode_t{S_IXOTH} : 0U) |
         (rights & kAccessRead ? mode_t{S_IROTH} : 0U) |
         (rights & kAccessWrite ? mode_t{S_IWOTH} : 0U);
}

UInt32 RightsOfCaller(const std::filesystem::path& path, uid_t owner) {
  const auto may = [&path](int what) { return eaccess(path.c_str(), what) == 0; };
  const UInt32 rights = (may(X_OK) ? kAccessSearch : 0U) | (may(R_OK) ? kAccessRead : 0U) |
                        (may(W_OK) ? kAccessWrite : 0U);
  return (rights << 24) | (owner == geteuid() ? kAccessUserIsOwner : 0U);
}

OSErr FindFolder(const FSRef* folder, std::filesystem::path* path, struct stat* found) {
  if (!folder) return static_cast<OSErr>(paramErr);
  const OSStatus status = quillmere::files::PathOf(*folder, path);
  if (status) return static_cast<OSErr>(status);
  if (lstat(path->c_str(), found) != 0) return StatusOfErrno(errno);
  return S_ISDIR(found->st_mode) ? OSErr{noErr} : dirNFErr;
}

}  // namespace

OSErr PBHGetDirAccessSync(const FSRef* folder, UInt32* owner, UInt32* group, UInt32* rights) {
  std::filesystem::path path;
  struct stat found;
  const OSErr status = FindFolder(folder, &path, &found);
  if (status) return status;
  if (owner) *owner = found.st_uid;
  if (group) *group = found.st_gid;
  if (rights) {
    *rights = RightsOfCaller(path, found.st_uid) | (RightsOf(found.st_mode) << 16) |
              (RightsOf(found.st_mode >> 3) << 8) | RightsOf(found.st_mode >> 6);
  }
  return noErr;
}

OSErr PBHSetDirAccessSync(const FSRef* folder, UInt32 owner, UInt32 group, UInt32 rights) {
  std::filesystem::path path;
  struct stat found;
  const OSErr status = FindFolder(folder, &path, &found);
  if (status) return status;
  if ((owner != found.st_uid || group != found.st_gid) && lchown(path.c_str(), owner, group) != 0) {
    return StatusOfErrno(errno);
  }
  constexpr mode_t kAccessBits = S_IRWXU | S_IRWXG | S_IRWXO;
  const mode_t bits = (BitsOf(rights) << 6) | (BitsOf(rights >> 8) << 3) | BitsOf(rights >> 16);
  if ((found.st_mode & kAccessBits) == bits) return noErr;
  const mode_t mode = (found.st_mode & static_cast<mode_t>(07000)) | bits;
  return chmod(path.c_str(), mode) == 0 ? OSErr{noErr} : StatusOfErrno(errno);
}

OSErr PBHMapIDSync(FSVolumeRefNum volume, Boolean is_group, UInt32 id, HFSUniStr255* name) {
  if (!name) return static_cast<OSErr>(paramErr);
  *name = {};
  OSErr status = CheckVolume(volume);
  if (status) return status;
  std::string text;
  if (is_group) {
    status = LookUpRecord<group>([id](auto... rest) { return getgrgid_r(id, rest...); },
                                 [&text](const group& record) { text = record.gr_name; });
  } else {
    status = LookUpRecord<passwd>([id](auto... rest) { return getpwuid_r(id, rest...); },
                                  [&text](const passwd& record) { text = record.pw_name; });
  }
  if (status) return status;
  const quillmere::Owned<CFStringRef> string(quillmere::CreateFromUtf8(text));
  return static_cast<OSErr>(FSGetHFSUniStrFromString(string.get(), name));
}

OSErr PBHMapNameSync(FSVolumeRefNum volume, Boolean is_group, const HFSUniStr255* name,
                     UInt32* id) {
  if (!name || name->length > 255 || !id) return static_cast<OSErr>(paramErr);
  *id = 0;
  const OSErr status = CheckVolume(volume);
  if (status) return status;
  const quillmere::Owned<CFStringRef> string(FSCreateStringFromHFSUniStr(nullptr, name));
  const std::string text = quillmere::ToUtf8(string.get());
  if (is_group) {
    return LookUpRecord<group>([&text](auto... rest) { return getgrnam_r(text.c_str(), rest...); },
                               [id](const group& record) { *id = record.gr_gid; });
  }
  return LookUpRecord<passwd>([&text](auto... rest) { return getpwnam_r(text.c_str(), rest...); },
                              [id](const passwd& record) { *id = record.pw_uid; });
}
