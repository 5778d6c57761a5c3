#include "GL_File_Attributes.h"

#include "GL_Strings_Unicode.h"
#include "MF_FileObjects.h"
#include "catalogue.h"
#include "folders.h"
#include "forks.h"
#include "launch_services.h"
#include "unicode_collation.h"

namespace {

using quillmere::Owned;

SInt32 ReadCatalogue(const FSRef* reference, FSCatalogInfoBitmap mask, FSCatalogInfo* info) {
  return FSGetCatalogInfo(reference, mask, info, nullptr, nullptr, nullptr);
}

/// Calls `visit(name, size)` for each fork of a file until it returns false.
template <class Visit>
SInt32 WalkForks(const FSRef* reference, Visit visit) {
  CatPositionRec position{};
  for (;;) {
    HFSUniStr255 name;
    SInt64 size = 0;
    const SInt32 status = FSIterateForks(reference, &position, &name, &size, nullptr);
    if (status == errFSNoMoreItems) return noErr;
    if (status || !visit(name, size)) return status;
  }
}

/// Calls `visit(parent)` for each folder above an object, the innermost first, until it gives a
/// status or sets `*done`.
template <class Visit>
SInt32 WalkParents(const FSRef* reference, const bool* done, Visit visit) {
  FSRef object = *reference;
  for (;;) {
    FSRef parent;
    SInt32 status = MF_FSGetParentRef(&object, &parent);
    if (status) return status;
    if (!MF_FSRefValid(&parent)) return noErr;
    status = visit(parent);
    if (status || *done) return status;
    object = parent;
  }
}

SInt32 IsInTrashOf(FSVolumeRefNum volume, const FSRef* reference, Boolean* in_trash) {
  FSRef trash;
  const SInt32 status = FSFindFolder(volume, kTrashFolderType, 0, &trash);
  if (status == fnfErr) return noErr;  // no trash to be in
  if (status) return status;
  bool is_in = false;
  const SInt32 walked = WalkParents(reference, &is_in, [&](const FSRef& parent) {
    is_in = FSCompareFSRefs(&parent, &trash) == 0;
    return SInt32{noErr};
  });
  *in_trash = !walked && is_in;
  return walked;
}

bool AreSameName(const HFSUniStr255& a, const HFSUniStr255& b) {
  Boolean equivalent = 0;
  UCCompareTextNoLocale(kUCCollateTypeHFSExtended, a.unicode, a.length, b.unicode, b.length,
                        &equivalent, nullptr);
  return equivalent != 0;
}

}  // namespace

SInt32 GL_GetObjectDefaultCatInfo(const FSRef* reference, HFSUniStr255* name,
                                  FSVolumeRefNum* volume, FSRef* parent) {
  if (!reference || !name || !parent) return paramErr;
  FSCatalogInfo info{};
  const SInt32 status = FSGetCatalogInfo(reference, kFSCatInfoVolume, &info, name, nullptr, parent);
  if (!status && volume) *volume = info.volume;
  return status;
}

SInt32 GL_GetCreatorAndFileType(const FSRef* reference, OSType* creator, OSType* type) {
  MF_FinderInfo info{};
  Boolean is_folder = 0;
  const SInt32 status = MF_FSGetFinderInfo(reference, &info, nullptr, &is_folder);
  if (status) return status;
  if (is_folder) return notAFileErr;
  if (creator) *creator = info.fileCreator;
  if (type) *type = info.fileType;
  return noErr;
}

SInt32 GL_GetEOF(const FSRef* reference, UInt64* data_logical, UInt64* data_physical,
                 UInt64* resource_logical, UInt64* resource_physical) {
  FSCatalogInfo info{};
  const SInt32 status = ReadCatalogue(reference, kFSCatInfoDataSizes | kFSCatInfoRsrcSizes, &info);
  if (status) return status;
  if (data_logical) *data_logical = info.dataLogicalSize;
  if (data_physical) *data_physical = info.dataPhysicalSize;
  if (resource_logical) *resource_logical = info.rsrcLogicalSize;
  if (resource_physical) *resource_physical = info.rsrcPhysicalSize;
  return noErr;
}

SInt32 GL_GetLargeFileSize(const FSRef* reference, UInt64* size) {
  if (!reference || !size) return paramErr;
  return MF_FSGetTotalForkSizes(reference, size, nullptr, nullptr);
}

SInt32 GL_CountForks(const FSRef* reference, UInt32* count) {
  if (!reference || !count) return paramErr;
  ItemCount forks = 0;
  const SInt32 status = MF_FSGetTotalForkSizes(reference, nullptr, nullptr, &forks);
  if (!status) *count = static_cast<UInt32>(forks);
  return status;
}

SInt32 GL_FileHasNamedForks(const FSRef* reference, Boolean* has) {
  if (!has) return paramErr;
  *has = 0;
  HFSUniStr255 data_fork;
  HFSUniStr255 resource_fork;
  SInt32 status = FSGetDataForkName(&data_fork);
  if (!status) status = FSGetResourceForkName(&resource_fork);
  if (status) return status;
  return WalkForks(reference, [&](const HFSUniStr255& name, SInt64) {
    *has = !AreSameName(name, data_fork) && !AreSameName(name, resource_fork);
    return !*has;
  });
}

SInt32 GL_GetFileObjectTimes(const FSRef* reference, UTCDateTime* create,
                             UTCDateTime* content_modification, UTCDateTime* attribute_modification,
                             UTCDateTime* access, UTCDateTime* backup) {
  FSCatalogInfo info{};
  const SInt32 status = ReadCatalogue(reference, kFSCatInfoAllDates, &info);
  if (status) return status;
  if (create) *create = info.createDate;
  if (content_modification) *content_modification = info.contentModDate;
  if (attribute_modification) *attribute_modification = info.attributeModDate;
  if (access) *access = info.accessDate;
  if (backup) *backup = info.backupDate;
  return noErr;
}

SInt32 GL_SetFileObjectTimes(const FSRef* reference, const UTCDateTime* create,
                             const UTCDateTime* content_modification,
                             const UTCDateTime* attribute_modification, const UTCDateTime* access,
                             const UTCDateTime* backup) {
  FSCatalogInfo info{};
  FSCatalogInfoBitmap mask = kFSCatInfoNone;
  const auto take = [&](FSCatalogInfoBitmap bit, const UTCDateTime* date, UTCDateTime* field) {
    if (!date) return;
    mask |= bit;
    *field = *date;
  };
  take(kFSCatInfoCreateDate, create, &info.createDate);
  take(kFSCatInfoContentMod, content_modification, &info.contentModDate);
  take(kFSCatInfoAttrMod, attribute_modification, &info.attributeModDate);
  take(kFSCatInfoAccessDate, access, &info.accessDate);
  take(kFSCatInfoBackupDate, backup, &info.backupDate);
  return FSSetCatalogInfo(reference, mask, &info);
}

SInt32 GL_GetFolderValence(const FSRef* reference, UInt32* count) {
  if (!count) return paramErr;
  *count = 0;
  FSCatalogInfo info{};
  const SInt32 status = ReadCatalogue(reference, kFSCatInfoNodeFlags | kFSCatInfoValence, &info);
  if (status) return status;
  if (!(info.nodeFlags & kFSNodeIsDirectoryMask)) return kGL_NotAFolderErr;
  *count = info.valence;
  return noErr;
}

SInt32 GL_IsFileWritable(const FSRef* reference, Boolean* writable) {
  if (!writable) return paramErr;
  *writable = 1;
  FSIORefNum fork = 0;
  const SInt32 status = FSOpenFork(reference, 0, nullptr, fsRdWrPerm, &fork);
  switch (status) {
    case noErr:
      FSCloseFork(fork);
      return noErr;
    case wPrErr:
    case fLckdErr:
    case vLckdErr:
    case permErr:
      *writable = 0;
      return noErr;
    case opWrErr:
      return noErr;
    default:
      return status;
  }
}

SInt32 GL_IsFileOpen(const FSRef* reference, Boolean* open) {
  if (!open) return paramErr;
  *open = 0;
  FSCatalogInfo info{};
  const SInt32 status = ReadCatalogue(reference, kFSCatInfoNodeFlags, &info);
  if (!status) *open = (info.nodeFlags & kFSNodeForkOpenMask) != 0;
  return status;
}

SInt32 GL_FileInTrash(const FSRef* reference, Boolean* in_trash) {
  if (!reference || !in_trash) return paramErr;
  *in_trash = 0;
  FSVolumeRefNum volume = 0;
  const SInt32 status = MF_FSGetVRefNum(reference, &volume);
  return status ? status : IsInTrashOf(volume, reference, in_trash);
}

SInt32 GL_FileInClassicTrash(const FSRef* reference, Boolean* in_trash) {
  if (!reference || !in_trash) return paramErr;
  *in_trash = 0;
  return IsInTrashOf(kClassicDomain, reference, in_trash);
}

Boolean GL_FSRefValid(const FSRef* reference) {
  if (!reference || !MF_FSRefValid(reference)) return 0;
  Boolean in_trash = 0;
  return GL_FileInTrash(reference, &in_trash) != noErr || !in_trash;
}

SInt32 GL_GetEnvelopingPackage(const FSRef* reference, FSRef* package) {
  if (!reference || !package) return paramErr;
  const FSRef object = *reference;
  *package = {};
  bool is_found = false;
  return WalkParents(&object, &is_found, [&](const FSRef& parent) {
    LSItemInfoRecord info;
    const SInt32 status = LSCopyItemInfoForRef(&parent, kLSRequestBasicFlagsOnly, &info);
    is_found = !status && (info.flags & kLSItemInfoIsPackage);
    if (is_found) *package = parent;
    return status;
  });
}

SInt32 GL_GetExtensionHiddenForRef(const FSRef* reference, Boolean* hidden) {
  if (!hidden) return paramErr;
  LSItemInfoRecord info;
  const SInt32 status = LSCopyItemInfoForRef(reference, kLSRequestAllFlags, &info);
  *hidden = !status && (info.flags & kLSItemInfoExtensionIsHidden);
  return status;
}

Boolean GL_IsHTML_File(CFStringRef name) {
  constexpr SInt32 kLongestEnd = 5;
  const Owned<CFStringRef> end(
      GL_CopyCFNameEndString(name, nullptr, kLongestEnd, kNameEndAtFullStop));
  return GL_EqualCFStr(end.get(), CFSTR(".htm")) || GL_EqualCFStr(end.get(), CFSTR(".html"));
}
