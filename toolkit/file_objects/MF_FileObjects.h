/// File objects: the catalogue's calls under names that say what they do. A file object is an
/// FSRef; all zero is none.
#pragma once

#include "base_types.h"
#include "file_references.h"

/// 1 if the reference names an object that exists; an all-zero one does not.
Boolean MF_FSRefValid(const FSRef* reference);
/// The folder that holds the object; the root of the file system gets an all-zero parent and status
/// 0.
SInt32 MF_FSGetParentRef(const FSRef* reference, FSRef* parent);
/// The object's name.
SInt32 MF_FSGetFileDirName(const FSRef* reference, HFSUniStr255* name);
/// The object's number on its volume; `is_directory` may be null.
SInt32 MF_FSGetNodeID(const FSRef* reference, UInt64* node_id, Boolean* is_directory);

/// Type, creator and flags of a file, in native order.
struct MF_FinderInfo {
  OSType fileType;
  OSType fileCreator;
  UInt16 finderFlags;
  Point location;
  UInt16 reserved;
};
/// The extended Finder information, as stored.
struct MF_ExtendedFinderInfo {
  UInt8 bytes[16];
};
/// Reads what is wanted; each output may be null. A folder's `info` holds its window's data in the
/// same bytes.
SInt32 MF_FSGetFinderInfo(const FSRef* reference, MF_FinderInfo* info,
                          MF_ExtendedFinderInfo* extended, Boolean* is_directory);
