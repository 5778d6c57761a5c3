#include "moves.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "catalogue_changes.h"
#include "catalogue_record.h"
#include "file_calls.h"
#include "file_names.h"
#include "sidecars.h"

namespace fs = std::filesystem;

namespace quillmere::files {
namespace {

/// Where an object goes: a folder held open and a name.
struct Target {
  int folder;
  const fs::path& folder_path;
  const std::string& name;
};

bool Exists(int folder, const std::string& name) {
  struct stat found;
  return fstatat(folder, name.c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0;
}

/// Renames what never replaces anything, where the file system can't promise that as well.
int RenameToFreeName(int from_folder, const std::string& from, int to_folder,
                     const std::string& to) {
  if (RenameAt(from_folder, from, to_folder, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL) return -1;
  if (Exists(to_folder, to)) {
    errno = EEXIST;
    return -1;
  }
  return RenameAt(from_folder, from, to_folder, to, 0);
}

/// Whether two names are one entry: a volume that does not tell upper and lower case apart finds an
/// object in its own way.
bool IsSameEntry(int folder_a, const std::string& a, int folder_b, const std::string& b) {
  struct statx info_a;
  struct statx info_b;
  return ReadObject(folder_a, a.c_str(), &info_a) == noErr &&
         ReadObject(folder_b, b.c_str(), &info_b) == noErr && info_a.stx_nlink == 1 &&
         IdentityOf(info_a) == IdentityOf(info_b);
}

/// Renames what replaces nothing but itself in another spelling.
int RenameEntry(int from_folder, const std::string& from, int to_folder, const std::string& to) {
  if (RenameToFreeName(from_folder, from, to_folder, to) == 0) return 0;
  const int error = errno;
  if (error == EEXIST && IsSameEntry(from_folder, from, to_folder, to) &&
      RenameAt(from_folder, from, to_folder, to, 0) == 0) {
    return 0;
  }
  errno = error;
  return -1;
}

OSStatus RenameObject(const ObjectPlace& from, const Target& to) {
  if (RenameEntry(from.folder.get(), from.name, to.folder, to.name) == 0) return noErr;
  const int error = errno;
  if (error == EXDEV) return diffVolErr;
  return error == EINVAL && from.IsFolder() ? OSStatus{badMovErr} : StatusOfErrno(error);
}

/// Brings the sidecar after its object. A sidecar in its way has no object and goes, unless it is
/// the same in another spelling; a file of the user's that has its name stays, and is a failure.
OSStatus MoveSidecar(const ObjectPlace& from, const Target& to) {
  const std::string own = SidecarName(from.name);
  const std::string wanted = SidecarName(to.name);
  const bool has_sidecar = HasSidecar(from.folder.get(), from.name);
  if (!has_sidecar || !IsSameEntry(from.folder.get(), own, to.folder, wanted)) {
    const OSStatus status = RemoveStraySidecar(to.folder, to.name);
    if (status || !has_sidecar) return status;
  }
  return RenameEntry(from.folder.get(), own, to.folder, wanted) == 0 ? OSStatus{noErr}
                                                                     : StatusOfErrno(errno);
}

OSStatus Move(const FSRef& reference, const ObjectPlace& from, const Target& to) {
  if (IsVolumeRoot(from.info, from.path)) return fBsyErr;
  if (IsLocked(from.info)) return fLckdErr;
  const fs::path new_path = to.folder_path / to.name;
  if (new_path == from.path) return noErr;
  OSStatus status = RenameObject(from, to);
  if (status) return status;
  status = MoveSidecar(from, to);
  if (status) {
    RenameToFreeName(to.folder, to.name, from.folder.get(), from.name);
    return status;
  }
  NoteMoved(reference, new_path);
  return noErr;
}

OSStatus GiveReference(const FSRef& reference, FSRef* new_reference) {
  if (!new_reference) return noErr;
  fs::path path;
  const OSStatus status = PathOf(reference, &path);
  return status ? status : ReferenceOf(path, new_reference);
}

/// Into the folder `destination`, or the object's own if that is null, under the name of `length`
/// units, or the object's own.
OSStatus MoveAndRename(const FSRef& reference, const FSRef* destination, UInt32 length,
                       const UniChar* name, FSRef* new_reference) {
  std::string bytes;
  OSStatus status = length > 0 ? BytesOfName(length, name, &bytes) : OSErr{noErr};
  ObjectPlace from;
  if (!status) status = FindObject(reference, &from);
  if (status) return status;
  if (bytes.empty()) bytes = from.name;
  fs::path folder_path = from.path.parent_path();
  Descriptor folder;
  if (destination) status = OpenFolder(*destination, &folder, &folder_path);
  if (status) return status;
  const int folder_number = destination ? folder.get() : from.folder.get();
  status = Move(reference, from, {folder_number, folder_path, bytes});
  return status ? status : GiveReference(reference, new_reference);
}

/// What stays at a file's place when its content goes: all but the dates of the content and of the
/// attributes.
constexpr FSCatalogInfoBitmap kStays =
    kFSCatInfoSettableInfo & ~(kFSCatInfoContentMod | kFSCatInfoAttrMod);

/// Two files on their way to be exchanged; what was done is undone unless all was kept.
class Exchange {
 public:
  Exchange(ObjectPlace& a, ObjectPlace& b) : a_(a), b_(b) {}
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;
  ~Exchange() {
    for (auto undo = undos_.rbegin(); undo != undos_.rend(); ++undo)
      (*undo)();
  }

  OSStatus Run() {
    FSCatalogInfo info_a{};
    FSCatalogInfo info_b{};
    OSStatus status = Read(a_, &info_a);
    if (!status) status = Read(b_, &info_b);
    if (!status) status = Swap(a_.name, b_.name);
    if (!status) status = SwapSidecars();
    if (status) return status;
    std::swap(a_.info, b_.info);  // each place has the other's file now
    status = Set(a_, info_a, info_b);
    if (!status) status = Set(b_, info_b, info_a);
    if (!status) undos_.clear();
    return status;
  }

 private:
  static OSStatus Read(const ObjectPlace& place, FSCatalogInfo* info) {
    const fs::path folder_path = place.path.parent_path();
    return ReadCatalogue({place.folder.get(), place.name, folder_path, place.info}, kStays, info);
  }

  OSStatus Swap(const std::string& name_a, const std::string& name_b) {
    const auto swap = [this, name_a, name_b] {
      return RenameAt(a_.folder.get(), name_a, b_.folder.get(), name_b, RENAME_EXCHANGE);
    };
    if (swap() != 0) return StatusOfErrno(errno);
    undos_.emplace_back([swap] { swap(); });
    return noErr;
  }

  OSStatus SwapSidecars() {
    const bool has_a = HasSidecar(a_.folder.get(), a_.name);
    const bool has_b = HasSidecar(b_.folder.get(), b_.name);
    if (has_a && has_b) return Swap(SidecarName(a_.name), SidecarName(b_.name));
    if (!has_a && !has_b) return noErr;
    const ObjectPlace& from = has_a ? a_ : b_;
    const ObjectPlace& to = has_a ? b_ : a_;
    const auto move = [](const ObjectPlace& source, const ObjectPlace& target) {
      return RenameToFreeName(source.folder.get(), SidecarName(source.name), target.folder.get(),
                              SidecarName(target.name));
    };
    if (move(from, to) != 0) return StatusOfErrno(errno);
    undos_.emplace_back([move, &from, &to] { move(to, from); });
    return noErr;
  }

  /// Gives a place its information; `own` is that of the file which has come there.
  OSStatus Set(const ObjectPlace& place, const FSCatalogInfo& info, const FSCatalogInfo& own) {
    const OSStatus status = SetCatalogue(place, kStays, info);
    if (!status) {
      undos_.emplace_back([&place, own] {
        ObjectPlace now;
        now.path = place.path;
        now.folder = Descriptor(dup(place.folder.get()));
        now.name = place.name;
        if (ReadObject(now.folder.get(), now.name.c_str(), &now.info) == noErr) {
          SetCatalogue(now, kStays, own);
        }
      });
    }
    return status;
  }

  ObjectPlace& a_;
  ObjectPlace& b_;
  std::vector<std::function<void()>> undos_;
};

}  // namespace

void KeepEncoding(const FSRef& reference, UInt32 encoding) {
  if (encoding == kUnknownTextEncoding) return;
  FSCatalogInfo info{};
  info.textEncodingHint = encoding;
  ObjectPlace place;
  if (FindObject(reference, &place) != noErr) return;
  const std::string attributes = AttributePath(place.folder.get(), place.name);
  if (ReadCatalogueRecord(attributes).text_encoding != encoding) {
    SetCatalogue(place, kFSCatInfoTextEncoding, info);
  }
}

bool FormatExchangesFiles(std::string_view format) {
  static constexpr std::string_view kFormats[] = {"ext4",  "xfs",   "btrfs",   "f2fs",
                                                  "tmpfs", "ubifs", "bcachefs"};
  return std::find(std::begin(kFormats), std::end(kFormats), format) != std::end(kFormats);
}

}  // namespace quillmere::files

OSErr FSRenameUnicode(const FSRef* reference, UInt32 length, const UniChar* name, UInt32 encoding,
                      FSRef* new_reference) {
  namespace files = quillmere::files;
  if (!reference) return static_cast<OSErr>(paramErr);
  if (length == 0) return errFSMissingName;
  const FSRef object = *reference;
  const OSStatus status = files::MoveAndRename(object, nullptr, length, name, new_reference);
  if (!status) files::KeepEncoding(object, encoding);
  return static_cast<OSErr>(status);
}

OSErr FSMoveObject(const FSRef* reference, const FSRef* destination, FSRef* new_reference) {
  if (!reference || !destination) return static_cast<OSErr>(paramErr);
  return static_cast<OSErr>(
      quillmere::files::MoveAndRename(*reference, destination, 0, nullptr, new_reference));
}

OSErr PBHMoveRenameSync(const FSRef* reference, const FSRef* destination, UInt32 length,
                        const UniChar* name, UInt32 encoding, FSRef* new_reference) {
  namespace files = quillmere::files;
  if (!reference || !destination) return static_cast<OSErr>(paramErr);
  const FSRef object = *reference;
  const OSStatus status = files::MoveAndRename(object, destination, length, name, new_reference);
  if (!status && length > 0) files::KeepEncoding(object, encoding);
  return static_cast<OSErr>(status);
}

OSErr FSExchangeObjects(const FSRef* source, const FSRef* destination) {
  namespace files = quillmere::files;
  if (!source || !destination) return static_cast<OSErr>(paramErr);
  files::ObjectPlace a;
  files::ObjectPlace b;
  OSStatus status = files::FindObject(*source, &a);
  if (!status) status = files::FindObject(*destination, &b);
  if (status) return static_cast<OSErr>(status);
  if (a.IsFolder() || b.IsFolder()) return notAFileErr;
  const files::ObjectIdentity inode_a = files::IdentityOf(a.info);
  const files::ObjectIdentity inode_b = files::IdentityOf(b.info);
  if (inode_a.device != inode_b.device) return diffVolErr;
  if (inode_a == inode_b) return noErr;
  if (files::IsLocked(a.info) || files::IsLocked(b.info)) return fLckdErr;
  status = files::Exchange(a, b).Run();
  if (!status) files::Places().Exchange(inode_a, inode_b);
  return static_cast<OSErr>(status);
}
