#include "file_references.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <system_error>
#include <unordered_map>

namespace {

namespace fs = std::filesystem;

/// What identifies an object for as long as it exists. An inode's number is used again after a
/// deletion, its number with its birth time is not.
struct ObjectIdentity {
  UInt64 device;
  UInt64 inode;
  SInt64 birth_seconds;
  UInt64 birth_nanoseconds;
  friend bool operator==(const ObjectIdentity&, const ObjectIdentity&) = default;
};

/// The content of an FSRef that names an object.
struct ReferenceRecord {
  UInt64 mark;
  ObjectIdentity identity;
  UInt8 unused[40];
};
static_assert(sizeof(ReferenceRecord) == sizeof(FSRef));
constexpr UInt64 kMark = 0x66696c6572656601;

struct IdentityHash {
  std::size_t operator()(const ObjectIdentity& identity) const {
    UInt64 hash = identity.inode * 0x9E3779B97F4A7C15U;
    hash ^= identity.device + (hash >> 29);
    hash ^= identity.birth_nanoseconds * 0xBF58476D1CE4E5B9U;
    return hash ^ (hash >> 32);
  }
};

/// Where each object that a reference was made of was last seen.
struct PlaceTable {
  std::mutex mutex;
  std::unordered_map<ObjectIdentity, fs::path, IdentityHash> places;
};

PlaceTable& Places() {
  static auto* table = new PlaceTable;
  return *table;
}

ReferenceRecord RecordOf(const FSRef& reference) {
  ReferenceRecord record;
  std::memcpy(&record, &reference, sizeof(record));
  return record;
}

/// Identity of what stands at a path, the path's last component not followed if it is a link.
OSStatus IdentityAt(const fs::path& path, ObjectIdentity* identity) {
  struct statx info;
  if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_INO | STATX_BTIME, &info) != 0) {
    return quillmere::files::StatusOfErrno(errno);
  }
  const bool has_birth = (info.stx_mask & STATX_BTIME) != 0;
  *identity = {makedev(info.stx_dev_major, info.stx_dev_minor), info.stx_ino,
               has_birth ? info.stx_btime.tv_sec : 0, has_birth ? info.stx_btime.tv_nsec : 0};
  return noErr;
}

void Remember(const ObjectIdentity& identity, const fs::path& path) {
  PlaceTable& table = Places();
  const std::lock_guard lock(table.mutex);
  table.places.insert_or_assign(identity, path);
}

}  // namespace

OSErr FSCompareFSRefs(const FSRef* a, const FSRef* b) {
  if (!a || !b) return static_cast<OSErr>(paramErr);
  const ReferenceRecord left = RecordOf(*a);
  const ReferenceRecord right = RecordOf(*b);
  if (left.mark != kMark || right.mark != kMark) return errFSBadFSRef;
  return left.identity == right.identity ? OSErr{0} : OSErr{-1};
}

OSErr FSMakeFSRefUnicode(const FSRef* parent, UInt32 length, const UniChar* name, UInt32,
                         FSRef* reference) {
  if (!parent || !name || !reference) return static_cast<OSErr>(paramErr);
  if (length == 0) return errFSMissingName;
  fs::path folder;
  OSStatus status = quillmere::files::PathOf(*parent, &folder);
  if (status) return static_cast<OSErr>(status);
  const quillmere::Owned<CFStringRef> string(
      CFStringCreateWithCharacters(kCFAllocatorDefault, name, length));
  const std::string text = quillmere::ToUtf8(string.get());
  if (text.find('/') != std::string::npos || text == "." || text == "..") return bdNamErr;
  status = quillmere::files::ReferenceOf(folder / text, reference);
  return static_cast<OSErr>(status);
}

OSStatus FSPathMakeRef(const UInt8* path, FSRef* reference, Boolean* is_directory) {
  if (!path || !reference) return paramErr;
  const fs::path place(reinterpret_cast<const char*>(path));
  const OSStatus status = quillmere::files::ReferenceOf(place, reference);
  if (!status && is_directory) {
    std::error_code error;
    *is_directory = fs::is_directory(place, error) ? 1 : 0;
  }
  return status;
}

OSStatus FSGetHFSUniStrFromString(CFStringRef string, HFSUniStr255* name) {
  if (!name) return paramErr;
  const std::u16string_view units = quillmere::UnitsOf(string);
  if (units.size() > 255) return errFSNameTooLong;
  name->length = static_cast<UInt16>(units.size());
  units.copy(name->unicode, units.size());
  return noErr;
}

CFStringRef FSCreateStringFromHFSUniStr(CFAllocatorRef allocator, const HFSUniStr255* name) {
  return name && name->length <= 255
             ? CFStringCreateWithCharacters(allocator, name->unicode, name->length)
             : nullptr;
}

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef* reference) {
  fs::path path;
  if (!reference || quillmere::files::PathOf(*reference, &path)) return nullptr;
  return quillmere::CreateUrlOfPath(path);
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* reference) {
  return url && reference &&
                 quillmere::files::ReferenceOf(quillmere::PathOf(url), reference) == noErr
             ? 1
             : 0;
}

namespace quillmere::files {

OSStatus PathOf(const FSRef& reference, fs::path* path) {
  const ReferenceRecord record = RecordOf(reference);
  if (record.mark != kMark) return errFSBadFSRef;
  fs::path place;
  {
    PlaceTable& table = Places();
    const std::lock_guard lock(table.mutex);
    const auto found = table.places.find(record.identity);
    if (found == table.places.end()) return fnfErr;
    place = found->second;
  }
  ObjectIdentity there;
  const OSStatus status = IdentityAt(place, &there);
  if (status) return status;
  if (!(there == record.identity)) return fnfErr;
  *path = std::move(place);
  return noErr;
}

OSStatus ReferenceOf(const fs::path& path, FSRef* reference) {
  std::error_code error;
  const fs::path absolute = fs::absolute(path, error).lexically_normal();
  if (error) return StatusOfErrno(error.value());
  ReferenceRecord record{};
  record.mark = kMark;
  const OSStatus status = IdentityAt(absolute, &record.identity);
  if (status) {
    *reference = {};
    return status;
  }
  Remember(record.identity, absolute);
  std::memcpy(reference, &record, sizeof(record));
  return noErr;
}

OSErr StatusOfErrno(int error_number) {
  static constexpr struct {
    int error;
    OSErr status;
  } kStatuses[] = {
      {0, 0},
      {ENOENT, fnfErr},
      {ENOTDIR, fnfErr},
      {ELOOP, fnfErr},
      {EACCES, afpAccessDenied},
      {EPERM, permErr},
      {EROFS, wPrErr},
      {ENOSPC, dskFulErr},
      {EDQUOT, dskFulErr},
      {EFBIG, dskFulErr},
      {EEXIST, dupFNErr},
      {ENOTEMPTY, fBsyErr},
      {EBUSY, fBsyErr},
      {ETXTBSY, fBsyErr},
      {EMFILE, tmfoErr},
      {ENFILE, tmfoErr},
      {ENAMETOOLONG, errFSNameTooLong},
      {EINVAL, static_cast<OSErr>(paramErr)},
      {ENOMEM, static_cast<OSErr>(memFullErr)},
      {ENODEV, nsvErr},
      {ENXIO, nsvErr},
  };
  for (const auto& entry : kStatuses) {
    if (entry.error == error_number) return entry.status;
  }
  return ioErr;
}

void NoteMoved(const FSRef& reference, const fs::path& new_path) {
  const ReferenceRecord record = RecordOf(reference);
  if (record.mark == kMark) Remember(record.identity, new_path);
}

}  // namespace quillmere::files
