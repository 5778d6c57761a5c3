/// What a folder holds and what the file system knows of an object.
#pragma once

#include "base_types.h"
#include "file_references.h"

inline constexpr OSErr notAFileErr = -1302;
inline constexpr OSErr errFSNotAFolder = -1407;

/// What FSGetCatalogInfo is asked for.
using FSCatalogInfoBitmap = UInt32;
inline constexpr FSCatalogInfoBitmap kFSCatInfoNone = 0;
inline constexpr FSCatalogInfoBitmap kFSCatInfoNodeFlags = 0x0002;
inline constexpr FSCatalogInfoBitmap kFSCatInfoParentDirID = 0x0008;
inline constexpr FSCatalogInfoBitmap kFSCatInfoNodeID = 0x0010;
inline constexpr FSCatalogInfoBitmap kFSCatInfoCreateDate = 0x0020;
inline constexpr FSCatalogInfoBitmap kFSCatInfoContentMod = 0x0040;
inline constexpr FSCatalogInfoBitmap kFSCatInfoAttrMod = 0x0080;
inline constexpr FSCatalogInfoBitmap kFSCatInfoAccessDate = 0x0100;
inline constexpr FSCatalogInfoBitmap kFSCatInfoFinderInfo = 0x0800;
inline constexpr FSCatalogInfoBitmap kFSCatInfoFinderXInfo = 0x1000;
inline constexpr FSCatalogInfoBitmap kFSCatInfoDataSizes = 0x4000;
inline constexpr FSCatalogInfoBitmap kFSCatInfoRsrcSizes = 0x8000;

/// Node flags.
inline constexpr UInt16 kFSNodeLockedMask = 0x0001;
inline constexpr UInt16 kFSNodeIsDirectoryMask = 0x0010;

/// A date: seconds since 1904-01-01 00:00 UTC in 48 bits, and 1/65536 seconds.
#pragma pack(push, 2)
struct UTCDateTime {
  UInt16 highSeconds;
  UInt32 lowSeconds;
  UInt16 fraction;
};
#pragma pack(pop)
static_assert(sizeof(UTCDateTime) == 8);

/// Finder information of a file. That of a folder has other fields in the same 16 bytes, the flags
/// at the same place.
struct FinderInfo {
  OSType fileType;
  OSType fileCreator;
  UInt16 finderFlags;
  Point location;
  UInt16 reservedField;
};
static_assert(sizeof(FinderInfo) == 16);
/// The second half of the Finder information, as stored.
struct ExtendedFinderInfo {
  UInt8 bytes[16];
};

struct FSCatalogInfo {
  UInt16 nodeFlags;
  UInt64 parentDirID;  ///< the parent's node number; 1 for a volume's root
  UInt64 nodeID;       ///< the object's node number; 2 for a volume's root
  UTCDateTime createDate;
  UTCDateTime contentModDate;
  UTCDateTime attributeModDate;
  UTCDateTime accessDate;
  FinderInfo finderInfo;
  ExtendedFinderInfo extFinderInfo;
  UInt64 dataLogicalSize;   ///< bytes
  UInt64 dataPhysicalSize;  ///< bytes on the disk
  UInt64 rsrcLogicalSize;
  UInt64 rsrcPhysicalSize;
};

/// Answers what `which` asks for in `info` (other fields stay as they are), the name and the
/// parent; outputs may be null. The parent of a volume's root is all zero. fnfErr if the object has
/// gone.
OSErr FSGetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap which, FSCatalogInfo* info,
                       HFSUniStr255* name, FSRef* parent);

/// A walk through a folder.
struct FSIteratorRecord;
using FSIterator = FSIteratorRecord*;
/// Opens a walk through the objects of one folder, files and folders alike, by name in Unicode code
/// point order. The names are those at this moment. AppleDouble sidecars ("._name") are left out.
/// `flags` is 0, or 2 for walks that delete. errFSNotAFolder for a file. Closed by FSCloseIterator.
OSErr FSOpenIterator(const FSRef* folder, UInt32 flags, FSIterator* iterator);
OSErr FSCloseIterator(FSIterator iterator);
/// The next objects, at most `maximum`, their number in `actual`; errFSNoMoreItems at the end,
/// together with the last objects or alone. Objects that have gone meanwhile are left out. `info`,
/// `references` and `names` are arrays of `maximum`, or null; `changed` may be null and becomes 0.
OSErr FSGetCatalogInfoBulk(FSIterator iterator, ItemCount maximum, ItemCount* actual,
                           Boolean* changed, FSCatalogInfoBitmap which, FSCatalogInfo* info,
                           FSRef* references, HFSUniStr255* names);

/// Makes a folder; dupFNErr if the name is taken. `reference` may be null.
OSErr FSCreateDirectoryUnicode(const FSRef* parent, UInt32 length, const UniChar* name,
                               FSRef* reference);
/// Deletes a file or an empty folder; fBsyErr for a folder that is not empty.
OSErr FSDeleteObject(const FSRef* reference);
/// Renames within the folder; dupFNErr if the name is taken. `new_reference` may be null.
OSErr FSRenameUnicode(const FSRef* reference, UInt32 length, const UniChar* name, UInt32 encoding,
                      FSRef* new_reference);
