/// The catalogue: what is known of files and folders, and the walk over one folder.
///
/// A walk gives the objects of a folder in the order of their names by Unicode code points, the
/// same on every run. Sidecars ("._name") that hold another file's extra data are not listed.
#pragma once

#include "base_types.h"
#include "file_references.h"

struct FSSpec;
struct FolderIterator;
using FSIterator = FolderIterator*;
using FSCatalogInfoBitmap = UInt32;

inline constexpr FSCatalogInfoBitmap kFSCatInfoNone = 0;
inline constexpr FSCatalogInfoBitmap kFSCatInfoNodeFlags = 0x0002;
inline constexpr FSCatalogInfoBitmap kFSCatInfoNodeID = 0x0010;
inline constexpr FSCatalogInfoBitmap kFSCatInfoFinderInfo = 0x0800;
inline constexpr FSCatalogInfoBitmap kFSCatInfoFinderXInfo = 0x1000;
inline constexpr FSCatalogInfoBitmap kFSCatInfoDataSizes = 0x4000;

inline constexpr UInt16 kFSNodeLockedMask = 0x0001;
inline constexpr UInt16 kFSNodeIsDirectoryMask = 0x0010;

/// Catalogue information; a call fills the fields that its mask names.
struct FSCatalogInfo {
  UInt16 nodeFlags;
  UInt64 nodeID;         ///< the inode's number; 2 for the root of the file system
  UInt8 finderInfo[16];  ///< type, creator, flags (big-endian), location
  UInt8 extFinderInfo[16];
  UInt64 dataLogicalSize;  ///< bytes of the data fork; 0 for a folder
};

/// Reads what `mask` names into `info`, the object's name, and its folder; each output may be null.
/// The root's parent is all zero. `spec` is null.
OSErr FSGetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap mask, FSCatalogInfo* info,
                       HFSUniStr255* name, FSSpec* spec, FSRef* parent);

/// Starts a walk over the objects of a folder; dirNFErr if it is not a folder. `flags` is 0: one
/// level.
OSErr FSOpenIterator(const FSRef* container, UInt32 flags, FSIterator* iterator);
/// Gives up to `maximum` further objects. errFSNoMoreItems at the end of the folder, then with the
/// `actual` objects of the last batch. `infos`, `references` and `names` are arrays of `maximum`
/// entries or null; `specs` is null; `container_changed` may be null. An object that has gone since
/// the walk began is passed over.
OSErr FSGetCatalogInfoBulk(FSIterator iterator, ItemCount maximum, ItemCount* actual,
                           Boolean* container_changed, FSCatalogInfoBitmap mask,
                           FSCatalogInfo* infos, FSRef* references, FSSpec* specs,
                           HFSUniStr255* names);
OSErr FSCloseIterator(FSIterator iterator);

/// Makes an empty file called `name` (`length` UTF-16 units) in the folder `parent`. `mask` names
/// what of `info` the file gets, Finder information only; `reference` (may be null) takes the new
/// file; `spec` is null. dupFNErr if the name is taken, bdNamErr for a name that no file can have.
/// A file whose information could not be stored is removed again.
OSErr FSCreateFileUnicode(const FSRef* parent, UInt32 length, const UniChar* name,
                          FSCatalogInfoBitmap mask, const FSCatalogInfo* info, FSRef* reference,
                          FSSpec* spec);
/// Makes a folder in the same way; `directory_id` (may be null) takes the low 32 bits of its number
/// on the volume.
OSErr FSCreateDirectoryUnicode(const FSRef* parent, UInt32 length, const UniChar* name,
                               FSCatalogInfoBitmap mask, const FSCatalogInfo* info,
                               FSRef* reference, FSSpec* spec, UInt32* directory_id);
