#include "GL_Volume_Search.h"

#include "GL_Volumes.h"
#include "catalogue_search.h"
#include "reference_counted.h"

namespace {

constexpr SInt32 kSearchTime = 5000;  // milliseconds
constexpr UInt16 kAnyPosition = 0x8000;
constexpr UInt16 kPositionMask = 0x7FFF;
constexpr UTCDateTime kLastDate = {0xFFFF, 0xFFFFFFFF, 0xFFFF};

/// Searches a volume for the first object that fulfils the terms.
SInt32 FindFirst(FSVolumeRefNum volume, FSSearchParams terms, FSRef* found) {
  FSRef root{};
  SInt32 status = GL_GetVolumeRef(volume, &root);
  if (status != noErr) return status;
  FSIterator iterator = nullptr;
  status = FSOpenIterator(&root, kFSIterateSubtree, &iterator);
  if (status != noErr) return status;
  const quillmere::AtExit close([iterator] { FSCloseIterator(iterator); });
  terms.searchTime = kSearchTime;
  ItemCount count = 0;
  status = FSCatalogSearch(iterator, &terms, 1, &count, nullptr, kFSCatInfoNone, nullptr, found,
                           nullptr, nullptr);
  // The time ran out.
  return status == noErr && count == 0 ? SInt32{fnfErr} : status;
}

void Put16(UInt16 value, UInt8* bytes) {
  bytes[0] = static_cast<UInt8>(value >> 8);
  bytes[1] = static_cast<UInt8>(value);
}

/// Writes type, creator, no flags and a position as Finder information holds them.
void PutFinderInfo(OSType type, OSType creator, UInt16 position, UInt8 (&bytes)[16]) {
  const UInt16 values[] = {static_cast<UInt16>(type >> 16),
                           static_cast<UInt16>(type),
                           static_cast<UInt16>(creator >> 16),
                           static_cast<UInt16>(creator),
                           0,
                           position,
                           position};
  UInt8* next = bytes;
  for (const UInt16 value : values) {
    Put16(value, next);
    next += sizeof(value);
  }
}

OSType MaskOf(OSType code) {
  return code == 0 ? ~OSType{0} : code;
}

}  // namespace

SInt32 GL_FindObjectByName(FSVolumeRefNum volume, const HFSUniStr255* name, FSRef* found) {
  if (name == nullptr || found == nullptr) return paramErr;
  *found = {};
  return FindFirst(volume, {0, fsSBFullName, name->length, name->unicode, nullptr, nullptr}, found);
}

SInt32 GL_FindObjectByNodeID(FSVolumeRefNum volume, UInt64 node_id, FSRef* found) {
  if (found == nullptr) return paramErr;
  *found = {};
  FSCatalogInfo sought{};
  sought.nodeID = node_id;
  return FindFirst(volume, {0, fsSBNodeID, 0, nullptr, &sought, &sought}, found);
}

SInt32 GL_FindFile(FSVolumeRefNum volume, const HFSUniStr255* name, OSType creator, OSType type,
                   const UTCDateTime* create_date, const UTCDateTime* modification_date,
                   FSRef* found) {
  if (name == nullptr || found == nullptr) return paramErr;
  *found = {};
  FSCatalogInfo lower{};
  FSCatalogInfo upper{};
  upper.createDate = kLastDate;
  upper.contentModDate = kLastDate;
  if (create_date != nullptr) lower.createDate = upper.createDate = *create_date;
  if (modification_date != nullptr) {
    lower.contentModDate = upper.contentModDate = *modification_date;
  }
  PutFinderInfo(type, creator, kAnyPosition, lower.finderInfo);
  PutFinderInfo(MaskOf(type), MaskOf(creator), kPositionMask, upper.finderInfo);
  return FindFirst(volume,
                   {0, fsSBFullName | fsSBFlFndrInfo | fsSBFlCrDat | fsSBFlMdDat, name->length,
                    name->unicode, &lower, &upper},
                   found);
}
