#include "MF_FileObjects.h"

#include <cstring>

#include "MF_trace_private.h"
#include "catalogue.h"

namespace {

using quillmere::file_objects::Checked;
using quillmere::file_objects::Trace;

constexpr const char kCatalogFailed[] = "FSGetCatalogInfo failed";

UInt16 Big16(const UInt8* bytes) {
  return static_cast<UInt16>((bytes[0] << 8) | bytes[1]);
}

UInt32 Big32(const UInt8* bytes) {
  return (UInt32{Big16(bytes)} << 16) | Big16(bytes + 2);
}

MF_FinderInfo NativeInfo(const UInt8* bytes) {
  return {Big32(bytes),
          Big32(bytes + 4),
          Big16(bytes + 8),
          {static_cast<SInt16>(Big16(bytes + 10)), static_cast<SInt16>(Big16(bytes + 12))},
          Big16(bytes + 14)};
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
  const SInt32 status = Checked(FSGetCatalogInfo(reference, kFSCatInfoNodeFlags | kFSCatInfoNodeID,
                                                 &info, nullptr, nullptr, nullptr),
                                kCatalogFailed);
  if (status) return status;
  *node_id = info.nodeID;
  if (is_directory) *is_directory = (info.nodeFlags & kFSNodeIsDirectoryMask) != 0;
  return noErr;
}

SInt32 MF_FSGetVRefNum(const FSRef* reference, FSVolumeRefNum* volume) {
  const Trace trace("MF_FSGetVRefNum");
  if (!volume) return paramErr;
  FSCatalogInfo info{};
  const SInt32 status =
      Checked(FSGetCatalogInfo(reference, kFSCatInfoVolume, &info, nullptr, nullptr, nullptr),
              kCatalogFailed);
  if (!status) *volume = info.volume;
  return status;
}

SInt32 MF_FSGetFinderInfo(const FSRef* reference, MF_FinderInfo* info,
                          MF_ExtendedFinderInfo* extended, Boolean* is_directory) {
  const Trace trace("MF_FSGetFinderInfo");
  const FSCatalogInfoBitmap mask = (info ? kFSCatInfoFinderInfo : kFSCatInfoNone) |
                                   (extended ? kFSCatInfoFinderXInfo : kFSCatInfoNone) |
                                   (is_directory ? kFSCatInfoNodeFlags : kFSCatInfoNone);
  FSCatalogInfo found{};
  const SInt32 status =
      Checked(FSGetCatalogInfo(reference, mask, &found, nullptr, nullptr, nullptr), kCatalogFailed);
  if (status) return status;
  if (info) *info = NativeInfo(found.finderInfo);
  if (extended) std::memcpy(extended->bytes, found.extFinderInfo, sizeof(extended->bytes));
  if (is_directory) *is_directory = (found.nodeFlags & kFSNodeIsDirectoryMask) != 0;
  return noErr;
}
