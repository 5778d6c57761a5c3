/// File objects: the catalogue's calls under names that say what they do, and what takes several of
/// them.
///
/// A file object is an FSRef; all zero is none. Outputs marked optional may be null. Volumes are in
/// MF_Volumes.h. All functions trace through the debug log under the tag `mofX`. Statuses: 0, those
/// of the files family (file_references.h), and
///
/// | -50   | a parameter is missing          | -1302 | a folder where a file is needed |
/// | -120  | a file where a folder is needed | -1303 | two volumes are concerned       |
#pragma once

#include "base_types.h"
#include "catalogue.h"
#include "file_references.h"
#include "file_specifications.h"
#include "forks.h"
#include "memory_handles.h"
#include "text_encodings.h"

/// The encoding of a name is not known.
inline constexpr TextEncoding kTextEncodingUnknown = 0xFFFF;

// What an object is.

/// 1 if the reference names an object that exists; an all-zero one does not.
Boolean MF_FSRefValid(const FSRef* reference);
/// The folder that holds the object; the root of a volume gets an all-zero parent and status 0.
SInt32 MF_FSGetParentRef(const FSRef* reference, FSRef* parent);
/// The object's name.
SInt32 MF_FSGetFileDirName(const FSRef* reference, HFSUniStr255* name);
/// The object's number on its volume, 2 for the root of one; `is_directory` is optional.
SInt32 MF_FSGetNodeID(const FSRef* reference, UInt64* node_id, Boolean* is_directory);
/// The number of the volume that holds the object.
SInt32 MF_FSGetVRefNum(const FSRef* reference, FSVolumeRefNum* volume);
/// Bytes of both forks of a file, each output optional.
SInt32 MF_FSGetForkSizes(const FSRef* reference, UInt64* data_size, UInt64* resource_size);
/// Sums over all forks: bytes, bytes on the disk, and their number; each output optional.
SInt32 MF_FSGetTotalForkSizes(const FSRef* reference, UInt64* logical, UInt64* physical,
                              ItemCount* fork_count);
/// The object of an open fork.
SInt32 MF_FileRefNumGetFSRef(FSIORefNum fork, FSRef* reference);

// References, specifications, paths and file numbers.

/// The specification of an object.
SInt32 MF_FSRefMakeFSSpec(const FSRef* reference, FSSpec* spec);
/// The object called `name` (a Pascal string in MacRoman) in the folder of number `directory` of a
/// volume; see PBMakeFSRefSync.
SInt32 MF_FSMakeFSRef(FSVolumeRefNum volume, UInt64 directory, const UInt8* name, FSRef* reference);
/// The path of the object of a specification in UTF-8 with a zero byte, in a buffer of `capacity`
/// bytes; errFSNameTooLong if it does not fit.
SInt32 MF_FSMakePath(const FSSpec* spec, UInt8* path, UInt32 capacity);
/// The specification of the object at a path; `is_directory` is optional.
SInt32 MF_FSPathMakeFSSpec(const UInt8* path, FSSpec* spec, Boolean* is_directory);
/// The number of a file; one that has a number already counts as success.
SInt32 MF_FSCreateFileIDRef(const FSRef* file, UInt64* file_id);
/// The file of a number.
SInt32 MF_FSResolveFileIDRef(FSVolumeRefNum volume, UInt64 file_id, FSRef* reference);
/// A Unicode name as a Pascal string of at most 31 bytes, 27 for a volume's, in a text encoding,
/// kTextEncodingUnknown being that of the system's script and region. An empty name gives an empty
/// string. `out` has 32 bytes. What does not fit is cut off between characters; a character that
/// the encoding does not have becomes "?".
SInt32 MF_UnicodeNameGetHFSName(UInt32 length, const UniChar* name, TextEncoding encoding,
                                Boolean is_volume_name, UInt8* out);
/// The other way.
SInt32 MF_HFSNameGetUnicodeName(const UInt8* hfs_name, TextEncoding encoding, HFSUniStr255* out);

// Finder information.

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

inline constexpr UInt16 kIsInvisible = 0x4000;
inline constexpr UInt16 kNameLocked = 0x1000;
inline constexpr UInt16 kIsStationery = 0x0800;
inline constexpr UInt16 kHasCustomIcon = 0x0400;
inline constexpr UInt16 kHasBeenInited = 0x0100;

/// Reads what is wanted; each output is optional. A folder's `info` holds its window's data in the
/// same bytes.
SInt32 MF_FSGetFinderInfo(const FSRef* reference, MF_FinderInfo* info,
                          MF_ExtendedFinderInfo* extended, Boolean* is_directory);
/// Sets what is given; each is optional.
SInt32 MF_FSSetFinderInfo(const FSRef* reference, const MF_FinderInfo* info,
                          const MF_ExtendedFinderInfo* extended);
/// Sets a file's creator and type; 0 leaves one as it is. The folder's date is bumped.
SInt32 MF_FSChangeCreatorType(const FSRef* reference, OSType creator, OSType type);
/// Sets or clears the bits `flags` of the Finder flags. The folder's date is bumped.
SInt32 MF_FSChangeFinderFlags(const FSRef* reference, Boolean set_bits, UInt16 flags);
/// The same for one flag each.
SInt32 MF_FSSetInvisible(const FSRef* reference);
SInt32 MF_FSClearInvisible(const FSRef* reference);
SInt32 MF_FSSetNameLocked(const FSRef* reference);
SInt32 MF_FSClearNameLocked(const FSRef* reference);
SInt32 MF_FSSetIsStationery(const FSRef* reference);
SInt32 MF_FSClearIsStationery(const FSRef* reference);
SInt32 MF_FSSetHasCustomIcon(const FSRef* reference);
SInt32 MF_FSClearHasCustomIcon(const FSRef* reference);
SInt32 MF_FSClearHasBeenInited(const FSRef* reference);
/// Sets all settable information of `destination` to that of `source`, but for the flag
/// kHasBeenInited and, unless `copy_lock_bit` is set, the lock.
SInt32 MF_FSCopyFileMgrAttributes(const FSRef* source, const FSRef* destination,
                                  Boolean copy_lock_bit);
/// Sets the object's date of content to now, or one second later if it has that date, so that it
/// changes, and tells observers of the folder.
SInt32 MF_FSBumpDate(const FSRef* reference);

// Moving, exchanging and copying.

/// Exchanges the content of two files with the dates of the content; names, folders and all other
/// information stay. Natively where the volume can, else by renaming and moving both; a failure
/// puts everything back. `*new_source` takes the file that lies at the source's place then, and
/// `*new_destination` the other. While the second way is under way others see two temporary names.
SInt32 MF_FSExchangeObjectsCompat(const FSRef* source, const FSRef* destination, FSRef* new_source,
                                  FSRef* new_destination);
/// Moves an object into a folder of its volume, under the name of `length` units, or its own if
/// `name` is null or `length` 0; a failure puts it back. `new_reference` is required.
SInt32 MF_FSMoveRenameObjectUnicode(const FSRef* reference, const FSRef* destination, UInt32 length,
                                    const UniChar* name, TextEncoding encoding,
                                    FSRef* new_reference);
/// The same in one step of the volume; `new_reference` is optional. -50 if the volume can't.
SInt32 MF_FSMoveRename(const FSRef* reference, const FSRef* destination, UInt32 length,
                       const UniChar* name, TextEncoding encoding, FSRef* new_reference);
/// Has the volume copy a file with all its forks and information; arguments and -50 as above.
SInt32 MF_FSCopyFile(const FSRef* source, const FSRef* destination, UInt32 length,
                     const UniChar* name, TextEncoding encoding, FSRef* new_reference);
/// A name of eight hexadecimal digits, from `*seed` up, that is free in both folders. `*seed`
/// becomes the number behind it.
SInt32 MF_GenerateUniqueHFSUniStr(UInt32* seed, const FSRef* folder1, const FSRef* folder2,
                                  HFSUniStr255* name);
/// Makes an open fork the copy of another, through a buffer of the caller's; both stay open.
SInt32 MF_FSCopyFork(FSIORefNum source, FSIORefNum destination, void* buffer,
                     ByteCount buffer_size);
/// A buffer of the wanted size rounded down to a multiple of 4096, at least 4096; the caller frees
/// it with GL_DisposePtr. Null, with `*actual` 0, without memory.
Ptr MF_FSGetTempBuffer(ByteCount wanted, ByteCount* actual);

// Folders.

/// Makes a folder the default one; `*old_folder` takes the one before.
SInt32 MF_FSSetDefault(const FSRef* folder, FSRef* old_folder);
SInt32 MF_FSRestoreDefault(const FSRef* old_folder);
/// References of all objects of a folder in a new handle, the caller's; on a failure it is null and
/// the count 0. `container_changed` is optional.
SInt32 MF_FSGetDirectoryItems(const FSRef* folder, Handle* items, ItemCount* count,
                              Boolean* container_changed);

/// Deletes a folder with all that is in it, locked objects too. Links are deleted themselves, and a
/// folder on which another volume is mounted is not entered: fBsyErr. What was deleted before a
/// failure is gone.
SInt32 MF_FSDeleteContainer(const FSRef* folder);
/// The same for what is in the folder, which stays.
SInt32 MF_FSDeleteContainerContents(const FSRef* folder);
/// The state of a deletion, one for all its levels.
struct MF_DeleteContainerState {
  SInt32 result;
  ItemCount actualObjects;
  FSCatalogInfo catalogInfo;
};
/// One level of it and those below; the status is in `state->result`.
void MF_FSDeleteContainerLevel(const FSRef* folder, MF_DeleteContainerState* state);

/// What a walk calls for each object: whether the folder has changed, the level from 1, the
/// information asked for, the object, its name or null, and the caller's value. Any result but 0
/// ends the walk.
using MF_IterateFilter = Boolean (*)(Boolean container_changed, ItemCount current_level,
                                     const FSCatalogInfo* info, const FSRef* reference,
                                     const HFSUniStr255* name, void* your_data);
/// The state of a walk, one for all its levels.
struct MF_IterateState {
  MF_IterateFilter iterateFilter;
  FSCatalogInfoBitmap whichInfo;  ///< with node flags
  FSCatalogInfo catalogInfo;
  FSRef ref;
  HFSUniStr255 name;
  HFSUniStr255* namePtr;  ///< `name`, or null for no names
  void* yourDataPtr;
  ItemCount maxLevels;  ///< 0 for no limit
  ItemCount currentLevel;
  Boolean quitFlag;
  Boolean containerChanged;
  SInt32 result;
  ItemCount actualObjects;
};
/// Calls `filter` for every object in a folder and, `max_levels` deep (0 for all), in the folders
/// in it, an object before what it holds; no link is followed. Folders that the user may not read
/// are passed over. `want_spec` has no effect. -50 without a filter.
SInt32 MF_FSIterateContainer(const FSRef* container, ItemCount max_levels,
                             FSCatalogInfoBitmap which_info, Boolean want_spec, Boolean want_name,
                             MF_IterateFilter filter, void* your_data);
/// One level of it and those below; the status is in `state->result`.
void MF_FSIterateContainerLevel(const FSRef* container, MF_IterateState* state);
