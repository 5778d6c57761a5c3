#include <cstring>

#include "MF_FileObjects.h"
#include "MF_trace_private.h"
#include "notifications.h"

using quillmere::file_objects::Checked;
using quillmere::file_objects::kCatalogFailed;
using quillmere::file_objects::kSetCatalogFailed;
using quillmere::file_objects::Trace;

namespace {

UInt16 Big16(const UInt8* bytes) {
  return static_cast<UInt16>((bytes[0] << 8) | bytes[1]);
}

UInt32 Big32(const UInt8* bytes) {
  return (UInt32{Big16(bytes)} << 16) | Big16(bytes + 2);
}

void PutBig16(UInt16 value, UInt8* bytes) {
  bytes[0] = static_cast<UInt8>(value >> 8);
  bytes[1] = static_cast<UInt8>(value);
}

void PutBig32(UInt32 value, UInt8* bytes) {
  PutBig16(static_cast<UInt16>(value >> 16), bytes);
  PutBig16(static_cast<UInt16>(value), bytes + 2);
}

MF_FinderInfo NativeInfo(const UInt8* bytes) {
  return {Big32(bytes),
          Big32(bytes + 4),
          Big16(bytes + 8),
          {static_cast<SInt16>(Big16(bytes + 10)), static_cast<SInt16>(Big16(bytes + 12))},
          Big16(bytes + 14)};
}

void StoreInfo(const MF_FinderInfo& info, UInt8* bytes) {
  PutBig32(info.fileType, bytes);
  PutBig32(info.fileCreator, bytes + 4);
  PutBig16(info.finderFlags, bytes + 8);
  PutBig16(static_cast<UInt16>(info.location.v), bytes + 10);
  PutBig16(static_cast<UInt16>(info.location.h), bytes + 12);
  PutBig16(info.reserved, bytes + 14);
}

/// Lets `change(FSCatalogInfo*)` change the Finder information of an object and bumps its folder's
/// date. The change has been made when only the bump fails.
template <class Change>
SInt32 ChangeFinderInfo(const FSRef* reference, Change change) {
  FSCatalogInfo info{};
  FSRef parent;
  SInt32 status = Checked(FSGetCatalogInfo(reference, kFSCatInfoNodeFlags | kFSCatInfoFinderInfo,
                                           &info, nullptr, nullptr, &parent),
                          kCatalogFailed);
  if (!status) status = change(&info);
  if (status) return status;
  status = Checked(FSSetCatalogInfo(reference, kFSCatInfoFinderInfo, &info), kSetCatalogFailed);
  if (!status) MF_FSBumpDate(&parent);
  return status;
}

}  // namespace

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

SInt32 MF_FSSetFinderInfo(const FSRef* reference, const MF_FinderInfo* info,
                          const MF_ExtendedFinderInfo* extended) {
  const Trace trace("MF_FSSetFinderInfo");
  const FSCatalogInfoBitmap mask = (info ? kFSCatInfoFinderInfo : kFSCatInfoNone) |
                                   (extended ? kFSCatInfoFinderXInfo : kFSCatInfoNone);
  FSCatalogInfo wanted{};
  if (info) StoreInfo(*info, wanted.finderInfo);
  if (extended) std::memcpy(wanted.extFinderInfo, extended->bytes, sizeof(extended->bytes));
  return Checked(FSSetCatalogInfo(reference, mask, &wanted), kSetCatalogFailed);
}

SInt32 MF_FSChangeCreatorType(const FSRef* reference, OSType creator, OSType type) {
  const Trace trace("MF_FSChangeCreatorType");
  return ChangeFinderInfo(reference, [&](FSCatalogInfo* info) -> SInt32 {
    if (info->nodeFlags & kFSNodeIsDirectoryMask) return notAFileErr;
    if (type) PutBig32(type, info->finderInfo);
    if (creator) PutBig32(creator, info->finderInfo + 4);
    return noErr;
  });
}

SInt32 MF_FSChangeFinderFlags(const FSRef* reference, Boolean set_bits, UInt16 flags) {
  const Trace trace("MF_FSChangeFinderFlags");
  return ChangeFinderInfo(reference, [&](FSCatalogInfo* info) -> SInt32 {
    const UInt16 old = Big16(info->finderInfo + 8);
    PutBig16(static_cast<UInt16>(set_bits ? old | flags : old & ~flags), info->finderInfo + 8);
    return noErr;
  });
}

SInt32 MF_FSSetInvisible(const FSRef* reference) {
  return MF_FSChangeFinderFlags(reference, 1, kIsInvisible);
}

SInt32 MF_FSClearInvisible(const FSRef* reference) {
  return MF_FSChangeFinderFlags(reference, 0, kIsInvisible);
}

SInt32 MF_FSSetNameLocked(const FSRef* reference) {
  return MF_FSChangeFinderFlags(reference, 1, kNameLocked);
}

SInt32 MF_FSClearNameLocked(const FSRef* reference) {
  return MF_FSChangeFinderFlags(reference, 0, kNameLocked);
}

SInt32 MF_FSSetIsStationery(const FSRef* reference) {
  return MF_FSChangeFinderFlags(reference, 1, kIsStationery);
}

SInt32 MF_FSClearIsStationery(const FSRef* reference) {
  return MF_FSChangeFinderFlags(reference, 0, kIsStationery);
}

SInt32 MF_FSSetHasCustomIcon(const FSRef* reference) {
  return MF_FSChangeFinderFlags(reference, 1, kHasCustomIcon);
}

SInt32 MF_FSClearHasCustomIcon(const FSRef* reference) {
  return MF_FSChangeFinderFlags(reference, 0, kHasCustomIcon);
}

SInt32 MF_FSClearHasBeenInited(const FSRef* reference) {
  return MF_FSChangeFinderFlags(reference, 0, kHasBeenInited);
}

SInt32 MF_FSBumpDate(const FSRef* reference) {
  const Trace trace("MF_FSBumpDate");
  FSCatalogInfo info{};
  FSRef parent;
  SInt32 status = Checked(FSGetCatalogInfo(reference, kFSCatInfoNodeFlags | kFSCatInfoContentMod,
                                           &info, nullptr, nullptr, &parent),
                          kCatalogFailed);
  UTCDateTime now{};
  if (!status) status = Checked(GetUTCDateTime(&now, 0), "GetUTCDateTime failed");
  if (status) return status;
  if (now == info.contentModDate && ++now.lowSeconds == 0) ++now.highSeconds;
  info.contentModDate = now;
  status = Checked(FSSetCatalogInfo(reference, kFSCatInfoContentMod, &info), kSetCatalogFailed);
  if (status) return status;
  const bool is_folder = (info.nodeFlags & kFSNodeIsDirectoryMask) != 0;
  Checked(FNNotify(is_folder ? reference : &parent, kFNDirectoryModifiedMessage, 0),
          "FNNotify failed");
  return noErr;
}
