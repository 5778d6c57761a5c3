#include "file_numbers.h"

#include <mutex>
#include <optional>

#include "catalogue.h"
#include "file_specifications.h"
#include "object_place.h"

namespace {

struct DefaultFolder {
  std::mutex mutex;
  std::optional<FSRef> reference;  ///< none until it was set
};

DefaultFolder& Default() {
  static DefaultFolder folder;
  return folder;
}

/// The number of a file; notAFileErr for a folder.
OSErr NumberOfFile(const FSRef& reference, UInt64* number) {
  FSCatalogInfo info{};
  const OSErr status = FSGetCatalogInfo(&reference, kFSCatInfoNodeFlags | kFSCatInfoNodeID, &info,
                                        nullptr, nullptr, nullptr);
  if (status) return status;
  *number = info.nodeID;
  return info.nodeFlags & kFSNodeIsDirectoryMask ? notAFileErr : OSErr{noErr};
}

}  // namespace

OSErr PBCreateFileIDRefSync(const FSRef* file, UInt64* file_id) {
  if (!file || !file_id) return static_cast<OSErr>(paramErr);
  return NumberOfFile(*file, file_id);
}

OSErr PBResolveFileIDRefSync(FSVolumeRefNum volume, UInt64 file_id, FSRef* file) {
  if (!file) return static_cast<OSErr>(paramErr);
  const OSStatus status = quillmere::files::ObjectOfNumber(volume, file_id, file);
  UInt64 number = 0;
  return status ? static_cast<OSErr>(status) : NumberOfFile(*file, &number);
}

OSErr HGetVol(FSRef* folder) {
  if (!folder) return static_cast<OSErr>(paramErr);
  DefaultFolder& current = Default();
  const std::lock_guard lock(current.mutex);
  if (current.reference) {
    *folder = *current.reference;
    return noErr;
  }
  return static_cast<OSErr>(quillmere::files::ReferenceOf(".", folder));
}

OSErr HSetVol(const FSRef* folder) {
  if (!folder) return static_cast<OSErr>(paramErr);
  quillmere::files::ObjectPlace place;
  const OSStatus status = quillmere::files::FindObject(*folder, &place);
  if (status) return static_cast<OSErr>(status);
  if (!place.IsFolder()) return dirNFErr;
  DefaultFolder& current = Default();
  const std::lock_guard lock(current.mutex);
  current.reference = *folder;
  return noErr;
}
