#include "MF_FileObjects.h"

#include "MF_trace_private.h"

using quillmere::file_objects::Checked;
using quillmere::file_objects::kCatalogFailed;
using quillmere::file_objects::kSetCatalogFailed;
using quillmere::file_objects::Trace;

namespace {

SInt32 ReadInfo(const FSRef* reference, FSCatalogInfoBitmap mask, FSCatalogInfo* info) {
  return Checked(FSGetCatalogInfo(reference, mask, info, nullptr, nullptr, nullptr),
                 kCatalogFailed);
}

}  // namespace

Boolean MF_FSRefValid(const FSRef* reference) {
  const Trace trace("MF_FSRefValid");
  return reference &&
         FSGetCatalogInfo(reference, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr) == noErr;
}

SInt32 MF_FSGetParentRef(const FSRef* reference, FSRef* parent) {
  const Trace trace("MF_FSGetParentRef");
  if (!parent) return paramErr;
  return Checked(FSGetCatalogInfo(reference, kFSCatInfoNone, nullptr, nullptr, nullptr, parent),
                 kCatalogFailed);
}

SInt32 MF_FSGetFileDirName(const FSRef* reference, HFSUniStr255* name) {
  const Trace trace("MF_FSGetFileDirName");
  if (!name) return paramErr;
  return Checked(FSGetCatalogInfo(reference, kFSCatInfoNone, nullptr, name, nullptr, nullptr),
                 kCatalogFailed);
}

SInt32 MF_FSGetNodeID(const FSRef* reference, UInt64* node_id, Boolean* is_directory) {
  const Trace trace("MF_FSGetNodeID");
  if (!node_id) return paramErr;
  FSCatalogInfo info{};
  const SInt32 status = ReadInfo(reference, kFSCatInfoNodeFlags | kFSCatInfoNodeID, &info);
  if (status) return status;
  *node_id = info.nodeID;
  if (is_directory) *is_directory = (info.nodeFlags & kFSNodeIsDirectoryMask) != 0;
  return noErr;
}

SInt32 MF_FSGetVRefNum(const FSRef* reference, FSVolumeRefNum* volume) {
  const Trace trace("MF_FSGetVRefNum");
  if (!volume) return paramErr;
  FSCatalogInfo info{};
  const SInt32 status = ReadInfo(reference, kFSCatInfoVolume, &info);
  if (!status) *volume = info.volume;
  return status;
}

SInt32 MF_FSCopyFileMgrAttributes(const FSRef* source, const FSRef* destination,
                                  Boolean copy_lock_bit) {
  const Trace trace("MF_FSCopyFileMgrAttributes");
  FSCatalogInfo info{};
  const SInt32 status = ReadInfo(source, kFSCatInfoSettableInfo, &info);
  if (status) return status;
  constexpr std::size_t kUpperFlags = 8;  // in the Finder information
  info.finderInfo[kUpperFlags] &= static_cast<UInt8>(~(kHasBeenInited >> 8));
  if (!copy_lock_bit) info.nodeFlags &= static_cast<UInt16>(~kFSNodeLockedMask);
  return Checked(FSSetCatalogInfo(destination, kFSCatInfoSettableInfo, &info), kSetCatalogFailed);
}
