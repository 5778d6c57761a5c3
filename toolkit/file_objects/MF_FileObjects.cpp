#include "MF_FileObjects.h"

#include <cstring>

#include "catalogue.h"

namespace {

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
  return reference &&
         FSGetCatalogInfo(reference, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr) == noErr;
}

SInt32 MF_FSGetParentRef(const FSRef* reference, FSRef* parent) {
  if (!parent) return paramErr;
  return FSGetCatalogInfo(reference, kFSCatInfoNone, nullptr, nullptr, nullptr, parent);
}

SInt32 MF_FSGetFileDirName(const FSRef* reference, HFSUniStr255* name) {
  if (!name) return paramErr;
  return FSGetCatalogInfo(reference, kFSCatInfoNone, nullptr, name, nullptr, nullptr);
}

SInt32 MF_FSGetNodeID(const FSRef* reference, UInt64* node_id, Boolean* is_directory) {
  if (!node_id) return paramErr;
  FSCatalogInfo info{};
  const SInt32 status = FSGetCatalogInfo(reference, kFSCatInfoNodeFlags | kFSCatInfoNodeID, &info,
                                         nullptr, nullptr, nullptr);
  if (status) return status;
  *node_id = info.nodeID;
  if (is_directory) *is_directory = (info.nodeFlags & kFSNodeIsDirectoryMask) != 0;
  return noErr;
}

SInt32 MF_FSGetFinderInfo(const FSRef* reference, MF_FinderInfo* info,
                          MF_ExtendedFinderInfo* extended, Boolean* is_directory) {
  const FSCatalogInfoBitmap mask = (info ? kFSCatInfoFinderInfo : kFSCatInfoNone) |
                                   (extended ? kFSCatInfoFinderXInfo : kFSCatInfoNone) |
                                   (is_directory ? kFSCatInfoNodeFlags : kFSCatInfoNone);
  FSCatalogInfo found{};
  const SInt32 status = FSGetCatalogInfo(reference, mask, &found, nullptr, nullptr, nullptr);
  if (status) return status;
  if (info) *info = NativeInfo(found.finderInfo);
  if (extended) std::memcpy(extended->bytes, found.extFinderInfo, sizeof(extended->bytes));
  if (is_directory) *is_directory = (found.nodeFlags & kFSNodeIsDirectoryMask) != 0;
  return noErr;
}
