#include "file_references.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "file_names.h"
#include "object_place.h"
#include "place_table.h"

namespace {

namespace fs = std::filesystem;
using quillmere::files::ObjectIdentity;
using quillmere::files::Sighting;

/// The content of an FSRef that names an object.
struct ReferenceRecord {
  UInt64 mark;
  ObjectIdentity identity;
  Sighting sighting;
  UInt8 unused[32];
};
static_assert(sizeof(ReferenceRecord) == sizeof(FSRef));
constexpr UInt64 kMark = 0x66696c6572656601;

ReferenceRecord RecordOf(const FSRef& reference) {
  ReferenceRecord record;
  std::memcpy(&record, &reference, sizeof(record));
  return record;
}

FSRef ReferenceFor(const ObjectIdentity& identity, Sighting sighting) {
  ReferenceRecord record{};
  record.mark = kMark;
  record.identity = identity;
  record.sighting = sighting;
  FSRef reference;
  std::memcpy(&reference, &record, sizeof(record));
  return reference;
}

/// An absolute path without "." and "..", and without a slash at its end.
OSStatus Normalized(const fs::path& path, fs::path* normalized) {
  std::error_code error;
  *normalized = fs::absolute(path, error).lexically_normal();
  if (error) return quillmere::files::StatusOfErrno(error.value());
  if (!normalized->has_filename() && normalized->has_relative_path()) {
    *normalized = normalized->parent_path();
  }
  return noErr;
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
  std::string text;
  const OSErr name_status = quillmere::files::BytesOfName(length, name, &text);
  if (name_status) return name_status;
  fs::path folder;
  OSStatus status = quillmere::files::PathOf(*parent, &folder);
  if (!status) status = quillmere::files::ReferenceOf(folder / text, reference);
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

OSStatus FSRefMakePath(const FSRef* reference, UInt8* path, UInt32 capacity) {
  if (!reference || !path) return paramErr;
  fs::path place;
  const OSStatus status = quillmere::files::PathOf(*reference, &place);
  if (status) return status;
  const std::string& text = place.native();
  if (text.size() >= capacity) return errFSNameTooLong;
  std::memcpy(path, text.c_str(), text.size() + 1);
  return noErr;
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
  OSStatus first_failure = noErr;
  for (std::string& place : Places().Candidates(record.identity, record.sighting)) {
    struct statx there;
    const OSStatus status = ReadObject(AT_FDCWD, place.c_str(), &there);
    if (!status && Places().ObjectOf(IdentityOf(there)) == record.identity) {
      *path = std::move(place);
      return noErr;
    }
    if (!first_failure) first_failure = status;
  }
  return first_failure ? first_failure : OSStatus{fnfErr};
}

OSStatus ReferenceOf(const fs::path& path, FSRef* reference) {
  *reference = {};
  fs::path place;
  struct statx there;
  OSStatus status = Normalized(path, &place);
  if (!status) status = ReadObject(AT_FDCWD, place.c_str(), &there);
  if (status) return status;
  const UInt32 folder = Places().NumberOfFolder(place.parent_path().native());
  *reference = ReferenceOfSeen(IdentityOf(there), folder, place.filename().native());
  return noErr;
}

FSRef ReferenceOfSeen(const ObjectIdentity& inode, UInt32 folder_number, std::string_view name) {
  const ObjectIdentity object = Places().ObjectOf(inode);
  return ReferenceFor(object, Places().See(object, folder_number, name));
}

OSStatus ReferenceOfObject(const ObjectIdentity& object, FSRef* reference) {
  // The sighting in it is any; the table tells where the object was seen last.
  const FSRef found = ReferenceFor(object, {});
  fs::path path;
  const OSStatus status = PathOf(found, &path);
  return status ? status : ReferenceOf(path, reference);
}

ObjectIdentity IdentityIn(const FSRef& reference) {
  return RecordOf(reference).identity;
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
  fs::path place;
  if (record.mark != kMark || Normalized(new_path, &place)) return;
  std::error_code error;
  const bool is_folder = fs::symlink_status(place, error).type() == fs::file_type::directory;
  Places().Move(record.identity, place.native(), is_folder);
}

}  // namespace quillmere::files
