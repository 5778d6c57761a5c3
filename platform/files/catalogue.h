/// The catalogue: what is known of files and folders, and the walk over what a folder holds.
///
/// Where the information lies: sizes, the dates of content and access, owner, group and mode are
/// the file system's own; type, creator, flags and label lie in one extended attribute
/// (finder_information.h); creation, backup and attribute dates that were set, and the hint of the
/// name's encoding, in another (catalogue_record.h).
///
/// An object is locked if nobody may write to it (no write permission at all) or the system holds
/// it immutable. A locked object is not renamed, moved, exchanged or deleted by this layer, whoever
/// runs it. Locking takes all write permissions away and remembers them; unlocking gives them back,
/// and at least the owner's.
///
/// A walk gives the objects of a folder in the order of their names by Unicode code points, the
/// same on every run. Sidecars ("._name") that hold another file's extra data are not listed. No
/// call follows a link: a link is an object of its own, with the Finder flag 0x8000 of an alias.
#pragma once

#include "base_types.h"
#include "file_dates.h"
#include "file_references.h"
#include "volumes.h"

struct FSSpec;
struct FolderIterator;
using FSIterator = FolderIterator*;
using FSCatalogInfoBitmap = UInt32;

inline constexpr FSCatalogInfoBitmap kFSCatInfoNone = 0;
inline constexpr FSCatalogInfoBitmap kFSCatInfoTextEncoding = 0x0001;
inline constexpr FSCatalogInfoBitmap kFSCatInfoNodeFlags = 0x0002;
inline constexpr FSCatalogInfoBitmap kFSCatInfoVolume = 0x0004;
inline constexpr FSCatalogInfoBitmap kFSCatInfoParentDirID = 0x0008;
inline constexpr FSCatalogInfoBitmap kFSCatInfoNodeID = 0x0010;
inline constexpr FSCatalogInfoBitmap kFSCatInfoCreateDate = 0x0020;
inline constexpr FSCatalogInfoBitmap kFSCatInfoContentMod = 0x0040;
inline constexpr FSCatalogInfoBitmap kFSCatInfoAttrMod = 0x0080;
inline constexpr FSCatalogInfoBitmap kFSCatInfoAccessDate = 0x0100;
inline constexpr FSCatalogInfoBitmap kFSCatInfoBackupDate = 0x0200;
inline constexpr FSCatalogInfoBitmap kFSCatInfoAllDates = 0x03E0;
inline constexpr FSCatalogInfoBitmap kFSCatInfoPermissions = 0x0400;
inline constexpr FSCatalogInfoBitmap kFSCatInfoFinderInfo = 0x0800;
inline constexpr FSCatalogInfoBitmap kFSCatInfoFinderXInfo = 0x1000;
inline constexpr FSCatalogInfoBitmap kFSCatInfoValence = 0x2000;
inline constexpr FSCatalogInfoBitmap kFSCatInfoDataSizes = 0x4000;
inline constexpr FSCatalogInfoBitmap kFSCatInfoRsrcSizes = 0x8000;
inline constexpr FSCatalogInfoBitmap kFSCatInfoUserPrivs = 0x20000;
/// What FSSetCatalogInfo can set.
inline constexpr FSCatalogInfoBitmap kFSCatInfoSettableInfo = 0x1FE3;
/// What FSGetCatalogInfo can read.
inline constexpr FSCatalogInfoBitmap kFSCatInfoGettableInfo = 0x2FFFF;

inline constexpr UInt16 kFSNodeLockedMask = 0x0001;
inline constexpr UInt16 kFSNodeResOpenMask = 0x0004;   ///< this process has the resource fork open
inline constexpr UInt16 kFSNodeDataOpenMask = 0x0008;  ///< this process has the data fork open
inline constexpr UInt16 kFSNodeIsDirectoryMask = 0x0010;
inline constexpr UInt16 kFSNodeForkOpenMask = 0x0080;  ///< this process has any fork open

/// What the user may not do with a folder's content: see folders in it, see files in it, change it;
/// for a file, the second bit is reading, the third writing.
inline constexpr UInt8 kioACUserNoSeeFolderMask = 0x01;
inline constexpr UInt8 kioACUserNoSeeFilesMask = 0x02;
inline constexpr UInt8 kioACUserNoMakeChangesMask = 0x04;

/// Owner and permissions of an object.
struct FSPermissionInfo {
  UInt32 userID;
  UInt32 groupID;
  UInt8 userAccess;  ///< what the calling user may do: read 4, write 2, execute or enter 1
  UInt16 mode;       ///< permission bits as chmod takes them
};

/// Catalogue information; a call fills the fields that its mask names.
struct FSCatalogInfo {
  UInt16 nodeFlags;
  FSVolumeRefNum volume;
  UInt64 parentDirID;  ///< `nodeID` of the folder; 1 for the root of a volume
  UInt64 nodeID;       ///< number on the volume; 2 for the root of a volume and nothing else
  UTCDateTime createDate;
  UTCDateTime contentModDate;
  UTCDateTime attributeModDate;
  UTCDateTime accessDate;
  UTCDateTime backupDate;  ///< zero if never set
  FSPermissionInfo permissions;
  UInt8 finderInfo[16];  ///< type, creator, flags (big-endian), location
  UInt8 extFinderInfo[16];
  UInt64 dataLogicalSize;   ///< bytes of the data fork; 0 for a folder
  UInt64 dataPhysicalSize;  ///< bytes that it takes on the disk
  UInt64 rsrcLogicalSize;   ///< bytes of the resource fork; 0 for a folder
  UInt64 rsrcPhysicalSize;
  UInt32 valence;           ///< number of objects in a folder; 0 for a file
  UInt32 textEncodingHint;  ///< 65535 (unknown) if never set
  UInt8 userPrivileges;     ///< kioACUser bits
};

/// Reads what `mask` names into `info`, the object's name, and its folder; each output may be null.
/// The root of a volume has an all-zero parent. `spec` (may be null) takes the classic
/// specification (file_specifications.h). paramErr for bits that are not named above.
OSErr FSGetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap mask, FSCatalogInfo* info,
                       HFSUniStr255* name, FSSpec* spec, FSRef* parent);
/// Sets what `mask` names, of kFSCatInfoSettableInfo, all or, on a failure, nothing. Of the node
/// flags only the lock is taken; owner and group are only set for the superuser. An attribute date
/// holds until the object changes again.
OSErr FSSetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap mask, const FSCatalogInfo* info);

/// How an iterator walks: over one level; over all levels, for FSCatalogSearch only; over one level
/// while the caller deletes what it gets.
inline constexpr UInt32 kFSIterateFlat = 0;
inline constexpr UInt32 kFSIterateSubtree = 1;
inline constexpr UInt32 kFSIterateDelete = 2;

/// Starts a walk; dirNFErr if the object is not a folder, afpAccessDenied if it may not be read.
/// The folder is the very one that the reference names, whatever has taken its path since. The
/// caller closes the iterator.
OSErr FSOpenIterator(const FSRef* container, UInt32 flags, FSIterator* iterator);
/// Gives up to `maximum` further objects of one level. errFSNoMoreItems at the end of the folder,
/// then with the `actual` objects of the last batch. `infos`, `references`, `specs` and `names` are
/// arrays of `maximum` entries or null; `container_changed` (may be null) tells whether the folder
/// has changed since it was opened, up to some milliseconds ago. An object that has gone since the
/// walk began is passed over; where only names are asked for, the objects are not looked at.
OSErr FSGetCatalogInfoBulk(FSIterator iterator, ItemCount maximum, ItemCount* actual,
                           Boolean* container_changed, FSCatalogInfoBitmap mask,
                           FSCatalogInfo* infos, FSRef* references, FSSpec* specs,
                           HFSUniStr255* names);
OSErr FSCloseIterator(FSIterator iterator);
