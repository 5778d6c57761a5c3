#include "catalogue.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "catalogue_changes.h"
#include "catalogue_record.h"
#include "file_names.h"
#include "file_specifications.h"
#include "finder_information.h"
#include "folder_names.h"
#include "forks.h"

namespace fs = std::filesystem;

namespace quillmere::files {
namespace {

/// The Finder flag of an alias, in the upper byte of the flags.
constexpr std::size_t kFlagsByte = 8;
constexpr UInt8 kAliasFlag = 0x80;
constexpr UInt64 kRootNode = 2;
constexpr UInt64 kParentOfRoot = 1;
constexpr UInt64 kDiskBlock = 512;
/// How long after an attribute date was set the same call may still have changed the object.
constexpr UInt64 kSettleTime = UInt64{2} << 16;

UTCDateTime DateOf(const struct statx_timestamp& time) {
  return DateOfUnixTime(time.tv_sec, time.tv_nsec);
}

UInt64 Fractions(const UTCDateTime& date) {
  return (UInt64{date.highSeconds} << 48) | (UInt64{date.lowSeconds} << 16) | date.fraction;
}

UTCDateTime CreationOf(const struct statx& info, const CatalogueRecord& record) {
  if (record.create_date != UTCDateTime{}) return record.create_date;
  if (info.stx_mask & STATX_BTIME) return DateOf(info.stx_btime);
  const UTCDateTime content = DateOf(info.stx_mtime);
  const UTCDateTime attributes = DateOf(info.stx_ctime);
  return Fractions(content) < Fractions(attributes) ? content : attributes;
}

UTCDateTime AttributeDateOf(const struct statx& info, const CatalogueRecord& record) {
  const UTCDateTime changed = DateOf(info.stx_ctime);
  const bool holds = record.attribute_date != UTCDateTime{} &&
                     Fractions(changed) <= Fractions(record.attribute_date_set) + kSettleTime;
  return holds ? record.attribute_date : changed;
}

/// Whether the user may do what `mode` (R_OK ...) says.
bool May(const ObjectView& object, int mode) {
  return faccessat(object.folder, std::string(object.name).c_str(), mode,
                   AT_EACCESS | AT_SYMLINK_NOFOLLOW) == 0;
}

UInt8 PrivilegesOf(const ObjectView& object) {
  const bool can_read = May(object, S_ISDIR(object.info.stx_mode) ? R_OK | X_OK : R_OK);
  return static_cast<UInt8>((can_read ? 0 : kioACUserNoSeeFolderMask | kioACUserNoSeeFilesMask) |
                            (May(object, W_OK) ? 0 : kioACUserNoMakeChangesMask));
}

FSPermissionInfo PermissionsOf(const ObjectView& object) {
  const int access = (May(object, R_OK) ? R_OK : 0) | (May(object, W_OK) ? W_OK : 0) |
                     (May(object, X_OK) ? X_OK : 0);
  return {object.info.stx_uid, object.info.stx_gid, static_cast<UInt8>(access),
          static_cast<UInt16>(object.info.stx_mode & 07777)};
}

OSStatus ReadNumbers(const ObjectView& object, FSCatalogInfoBitmap mask, FSCatalogInfo* out) {
  const bool is_root = object.IsRoot();
  if (mask & kFSCatInfoNodeID) out->nodeID = NodeIdOf(object.info.stx_ino, is_root);
  if (mask & kFSCatInfoVolume) {
    const OSStatus status = VolumeOfPath(object.Path(), &out->volume);
    if (status) return status;
  }
  if (!(mask & kFSCatInfoParentDirID)) return noErr;
  out->parentDirID = kParentOfRoot;
  if (is_root) return noErr;
  struct statx parent;
  const OSStatus status = ReadObject(AT_FDCWD, object.folder_path.c_str(), &parent);
  if (!status) {
    out->parentDirID = NodeIdOf(parent.stx_ino, IsVolumeRoot(parent, object.folder_path));
  }
  return status;
}

void ReadDates(const ObjectView& object, const CatalogueRecord& record, FSCatalogInfoBitmap mask,
               FSCatalogInfo* out) {
  const struct statx& info = object.info;
  if (mask & kFSCatInfoCreateDate) out->createDate = CreationOf(info, record);
  if (mask & kFSCatInfoContentMod) out->contentModDate = DateOf(info.stx_mtime);
  if (mask & kFSCatInfoAttrMod) out->attributeModDate = AttributeDateOf(info, record);
  if (mask & kFSCatInfoAccessDate) out->accessDate = DateOf(info.stx_atime);
  if (mask & kFSCatInfoBackupDate) out->backupDate = record.backup_date;
  if (mask & kFSCatInfoTextEncoding) out->textEncodingHint = record.text_encoding;
}

void ReadFinder(const ObjectView& object, FSCatalogInfo* out) {
  FinderInformation finder;
  ReadFinderInformation(AttributePath(object.folder, object.name), &finder);
  if (S_ISLNK(object.info.stx_mode)) finder.bytes[kFlagsByte] |= kAliasFlag;
  std::memcpy(out->finderInfo, finder.bytes, 16);
  std::memcpy(out->extFinderInfo, finder.bytes + 16, 16);
}

OSStatus ReadSizes(const ObjectView& object, FSCatalogInfoBitmap mask, FSCatalogInfo* out) {
  const bool is_folder = S_ISDIR(object.info.stx_mode);
  if (mask & kFSCatInfoDataSizes) {
    out->dataLogicalSize = is_folder ? 0 : object.info.stx_size;
    out->dataPhysicalSize = is_folder ? 0 : object.info.stx_blocks * kDiskBlock;
  }
  if (mask & kFSCatInfoRsrcSizes) {
    out->rsrcLogicalSize = 0;
    out->rsrcPhysicalSize = 0;
    FSRef file;
    OSStatus status = S_ISREG(object.info.stx_mode) ? ReferenceOf(object.Path(), &file) : fnfErr;
    if (!status) status = SizesOfResourceFork(file, &out->rsrcLogicalSize, &out->rsrcPhysicalSize);
    if (status && status != fnfErr) return status;
  }
  if (!(mask & kFSCatInfoValence)) return noErr;
  out->valence = 0;
  if (!is_folder) return noErr;
  FolderNames names;
  const Descriptor folder(openat(object.folder, std::string(object.name).c_str(),
                                 O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  const OSStatus status = names.Read(folder.get());
  out->valence = static_cast<UInt32>(names.size());
  return status;
}

}  // namespace

std::string AttributePath(int folder, std::string_view name) {
  return "/proc/self/fd/" + std::to_string(folder) + "/" + std::string(name);
}

UInt64 NodeIdOf(UInt64 inode, bool is_volume_root) {
  if (is_volume_root) return kRootNode;
  // Some file systems give their first file the number that means the root.
  return inode == kRootNode ? inode | (UInt64{1} << 63) : inode;
}

OSStatus ReadCatalogue(const ObjectView& object, FSCatalogInfoBitmap mask, FSCatalogInfo* out) {
  if (mask & kFSCatInfoNodeFlags) {
    out->nodeFlags = static_cast<UInt16>(
        (S_ISDIR(object.info.stx_mode) ? kFSNodeIsDirectoryMask : 0) |
        (IsLocked(object.info) ? kFSNodeLockedMask : 0) | OpenForksOf(IdentityOf(object.info)));
  }
  constexpr FSCatalogInfoBitmap kNumbers =
      kFSCatInfoNodeID | kFSCatInfoVolume | kFSCatInfoParentDirID;
  OSStatus status = mask & kNumbers ? ReadNumbers(object, mask, out) : OSStatus{noErr};
  constexpr FSCatalogInfoBitmap kRecorded =
      kFSCatInfoCreateDate | kFSCatInfoAttrMod | kFSCatInfoBackupDate | kFSCatInfoTextEncoding;
  const CatalogueRecord record =
      mask & kRecorded ? ReadCatalogueRecord(AttributePath(object.folder, object.name))
                       : CatalogueRecord{};
  ReadDates(object, record, mask, out);
  if (mask & kFSCatInfoPermissions) out->permissions = PermissionsOf(object);
  if (mask & kFSCatInfoUserPrivs) out->userPrivileges = PrivilegesOf(object);
  if (mask & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo)) ReadFinder(object, out);
  constexpr FSCatalogInfoBitmap kSizes =
      kFSCatInfoDataSizes | kFSCatInfoRsrcSizes | kFSCatInfoValence;
  return !status && (mask & kSizes) ? ReadSizes(object, mask, out) : status;
}

}  // namespace quillmere::files

OSErr FSGetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap mask, FSCatalogInfo* info,
                       HFSUniStr255* name, FSSpec* spec, FSRef* parent) {
  namespace files = quillmere::files;
  if (!reference || (mask != kFSCatInfoNone && !info) || (mask & ~kFSCatInfoGettableInfo)) {
    return static_cast<OSErr>(paramErr);
  }
  fs::path path;
  OSStatus status = noErr;
  bool is_root = false;
  if (mask != kFSCatInfoNone || parent || spec) {
    files::ObjectPlace place;
    status = files::FindObject(*reference, &place);
    if (status) return static_cast<OSErr>(status);
    path = place.path;
    const fs::path folder_path = path.parent_path();
    const files::ObjectView view = {place.folder.get(), place.name, folder_path, place.info};
    is_root = view.IsRoot();
    status = files::ReadCatalogue(view, mask, info);
    if (!status && spec) status = files::MakeSpecification(view, spec);
  } else {
    status = files::PathOf(*reference, &path);
  }
  if (status) return static_cast<OSErr>(status);
  if (name) files::UnitsOfName(path.filename().native(), name);
  if (parent) {
    *parent = {};
    if (!is_root) status = files::ReferenceOf(path.parent_path(), parent);
  }
  return static_cast<OSErr>(status);
}

OSErr FSSetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap mask,
                       const FSCatalogInfo* info) {
  if (!reference || !info || (mask & ~kFSCatInfoSettableInfo)) return static_cast<OSErr>(paramErr);
  quillmere::files::ObjectPlace place;
  OSStatus status = quillmere::files::FindObject(*reference, &place);
  if (!status) status = quillmere::files::SetCatalogue(place, mask, *info);
  return static_cast<OSErr>(status);
}
