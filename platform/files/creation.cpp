#include "creation.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "catalogue_changes.h"
#include "file_calls.h"
#include "file_names.h"
#include "file_specifications.h"
#include "folder_names.h"
#include "moves.h"
#include "sidecars.h"

namespace fs = std::filesystem;

namespace quillmere::files {
namespace {

/// A folder held open, and a name for a new object in it.
struct NewPlace {
  Descriptor folder;
  fs::path folder_path;
  std::string name;
};

OSStatus PlaceFor(const FSRef* parent, UInt32 length, const UniChar* name, NewPlace* place) {
  if (!parent) return paramErr;
  const OSStatus status = BytesOfName(length, name, &place->name);
  return status ? status : OpenFolder(*parent, &place->folder, &place->folder_path);
}

/// Gives a new object its information and says what it is. A sidecar that an object of this name
/// left behind is not its own.
OSStatus Complete(NewPlace place, FSCatalogInfoBitmap mask, const FSCatalogInfo* info,
                  FSRef* reference, FSSpec* spec, UInt32* directory_id) {
  OSStatus status = RemoveStraySidecar(place.folder.get(), place.name);
  ObjectPlace object;
  object.path = place.folder_path / place.name;
  object.name = place.name;
  object.folder = std::move(place.folder);
  if (!status) status = ReadObject(object.folder.get(), object.name.c_str(), &object.info);
  if (!status && mask) {
    status = SetCatalogue(object, mask, *info);
    if (status == StatusOfErrno(EOPNOTSUPP)) status = noErr;
  }
  const ObjectView view = {object.folder.get(), object.name, place.folder_path, object.info};
  if (!status && spec) status = MakeSpecification(view, spec);
  if (status) {
    // Made by this call and still empty.
    UnlinkAt(object.folder.get(), object.name, object.IsFolder() ? AT_REMOVEDIR : 0);
    return status;
  }
  if (directory_id) *directory_id = static_cast<UInt32>(object.info.stx_ino);
  if (reference) {
    *reference = ReferenceOfSeen(IdentityOf(object.info),
                                 Places().NumberOfFolder(place.folder_path.native()), object.name);
  }
  return noErr;
}

bool AreValid(FSCatalogInfoBitmap mask, const FSCatalogInfo* info) {
  return (mask & ~kFSCatInfoSettableInfo) == 0 && (mask == kFSCatInfoNone || info);
}

/// Removes a folder. Sidecars whose objects have gone are nothing that it holds.
OSStatus RemoveFolder(const ObjectPlace& place) {
  if (UnlinkAt(place.folder.get(), place.name, AT_REMOVEDIR) == 0) return noErr;
  const int error = errno;
  if (error != ENOTEMPTY && error != EEXIST) return StatusOfErrno(error);
  const Descriptor folder(openat(place.folder.get(), place.name.c_str(),
                                 O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct statx now;
  FolderNames strays;
  if (!folder.IsOpen() || ReadObject(folder.get(), ".", &now) != noErr ||
      IdentityOf(now) != IdentityOf(place.info) ||
      strays.Read(folder.get(), FolderNames::kAll) != noErr) {
    return fBsyErr;
  }
  for (std::size_t i = 0; i < strays.size(); ++i) {
    if (KindOfSidecar(folder.get(), strays[i].data()) != SidecarKind::kSidecar) return fBsyErr;
  }
  for (std::size_t i = 0; i < strays.size(); ++i) {
    if (UnlinkAt(folder.get(), strays[i].data(), 0) != 0) return StatusOfErrno(errno);
  }
  return UnlinkAt(place.folder.get(), place.name, AT_REMOVEDIR) == 0 ? OSStatus{noErr}
                                                                     : StatusOfErrno(errno);
}

/// Whether somebody holds a lock on bytes of a file, as each writer of a fork does.
bool IsBusy(const ObjectPlace& place) {
  if (!S_ISREG(place.info.stx_mode)) return false;
  const Descriptor file(openat(place.folder.get(), place.name.c_str(),
                               O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  return file.IsOpen() && fcntl(file.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

OSStatus Remove(const ObjectPlace& place) {
  if (IsVolumeRoot(place.info, place.path)) return fBsyErr;
  if (IsLocked(place.info)) return fLckdErr;
  if (place.IsFolder()) {
    const OSStatus status = RemoveFolder(place);
    if (status) return status;
  } else if (UnlinkAt(place.folder.get(), place.name, 0) != 0) {
    return StatusOfErrno(errno);
  }
  // The object has gone; a sidecar that stays behind is shown nowhere and taken for no other's.
  RemoveStraySidecar(place.folder.get(), place.name);
  return noErr;
}

enum class BusyFiles { kStay, kGo };

OSErr FindAndRemove(const FSRef* reference, BusyFiles busy) {
  if (!reference) return static_cast<OSErr>(paramErr);
  ObjectPlace place;
  OSStatus status = FindObject(*reference, &place);
  if (!status && busy == BusyFiles::kStay && IsBusy(place)) status = fBsyErr;
  if (!status) status = Remove(place);
  return static_cast<OSErr>(status);
}

}  // namespace
}  // namespace quillmere::files

OSErr FSCreateFileUnicode(const FSRef* parent, UInt32 length, const UniChar* name,
                          FSCatalogInfoBitmap mask, const FSCatalogInfo* info, FSRef* reference,
                          FSSpec* spec) {
  namespace files = quillmere::files;
  if (!files::AreValid(mask, info)) return static_cast<OSErr>(paramErr);
  files::NewPlace place;
  OSStatus status = files::PlaceFor(parent, length, name, &place);
  if (status) return static_cast<OSErr>(status);
  const files::Descriptor file(files::MakeFileAt(place.folder.get(), place.name, 0666));
  if (!file.IsOpen()) return files::StatusOfErrno(errno);
  status = files::Complete(std::move(place), mask, info, reference, spec, nullptr);
  return static_cast<OSErr>(status);
}

OSErr FSCreateDirectoryUnicode(const FSRef* parent, UInt32 length, const UniChar* name,
                               FSCatalogInfoBitmap mask, const FSCatalogInfo* info,
                               FSRef* reference, FSSpec* spec, UInt32* directory_id) {
  namespace files = quillmere::files;
  if (!files::AreValid(mask, info)) return static_cast<OSErr>(paramErr);
  files::NewPlace place;
  OSStatus status = files::PlaceFor(parent, length, name, &place);
  if (status) return static_cast<OSErr>(status);
  if (files::MakeFolderAt(place.folder.get(), place.name, 0777) != 0) {
    return files::StatusOfErrno(errno);
  }
  status = files::Complete(std::move(place), mask, info, reference, spec, directory_id);
  return static_cast<OSErr>(status);
}

OSErr FSDeleteObject(const FSRef* reference) {
  return quillmere::files::FindAndRemove(reference, quillmere::files::BusyFiles::kStay);
}

OSErr FSUnlinkObject(const FSRef* reference) {
  return quillmere::files::FindAndRemove(reference, quillmere::files::BusyFiles::kGo);
}
