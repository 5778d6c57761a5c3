/// Volumes: which are mounted, which holds an object, what they can do and how much room they have.
///
/// A volume is named by its number (0 is none), by its name, or by its root folder. All functions
/// give 0 or a status, that of the failed call of the platform unless something else is said; what
/// they give out means something at status 0 only.
#pragma once

#include "base_types.h"
#include "catalogue.h"
#include "cf_strings.h"
#include "cf_urls.h"
#include "file_dates.h"
#include "file_references.h"
#include "volumes.h"

/// Kinds of file objects.
enum GL_FileObjectType : UInt16 {
  kGL_UnknownObject = 0,
  kGL_VolumeObject = 1,
  kGL_FolderObject = 2,
  kGL_FileObject = 3,
  kGL_AliasObject = 4,  ///< an alias file or a link
};

/// Kinds of volumes.
enum GL_VolumeKind : SInt32 {
  kGL_NoVolume = 0,  ///< none, or its mount information can't be read or is of an unknown kind
  kGL_AFPVolume = 1,
  kGL_SMBVolume = 2,
  kGL_LocalVolume = 3,  ///< one of the system's own formats
  kGL_OtherVolume = 4,  ///< a foreign format, or another kind of server
};

/// Bytes of a buffer for the name of a device node.
inline constexpr Size kGL_NodeNameSize = 256;

// Looking for a volume.

/// True if the object is the root of a volume.
SInt32 GL_IsVolume(const FSRef* reference, Boolean* is_volume);
/// The kind of an object, kGL_UnknownObject on a failure.
SInt32 GL_GetFileObjectType(const FSRef* reference, UInt16* kind);
/// The root of a volume.
SInt32 GL_GetVolumeRef(FSVolumeRefNum volume, FSRef* root);
/// The first volume of a name, upper and lower case alike. Where the walk over the volumes ends
/// without it the number is 0 and the status what ended the walk, errFSNoMoreItems counting as 0.
SInt32 GL_GetVolumeByName(const HFSUniStr255* name, FSVolumeRefNum* volume);
/// The first volume created at a moment; number 0 and status 0 if there is none.
SInt32 GL_GetVolumeByCreateDate(const UTCDateTime* date, FSVolumeRefNum* volume);
/// The root of the volume of a name; nsvErr if there is none.
SInt32 GL_GetVolumeRefByNameAsCFString(CFStringRef name, FSRef* root);
SInt32 GL_GetVolumeName(FSVolumeRefNum volume, HFSUniStr255* name);
/// The name of the volume that holds an object; the second gives a new string that the caller owns.
SInt32 GL_GetVolumeNameFromFSRef(const FSRef* reference, HFSUniStr255* name);
SInt32 GL_GetVolumeNameFromFSRefAsCFStr(const FSRef* reference, CFStringRef* name);
/// The volume that the system lies on; each output may be null.
SInt32 GL_GetStartupVolume(FSRef* root, HFSUniStr255* name);
SInt32 GL_GetStartupVolumeRefNum(FSVolumeRefNum* volume);
/// The number of a volume's drive, and the first volume on a drive: number 0 and nsvErr if there is
/// none.
SInt32 GL_GetDriveNumber(FSVolumeRefNum volume, SInt16* drive);
SInt32 GL_GetDriveVolume(SInt16 drive, FSVolumeRefNum* volume);
/// The name of a volume's device in /dev into a buffer of kGL_NodeNameSize bytes. An empty one and
/// GL_NoNodeNameErr if it has none or it does not fit; GL_BadSystemErr if the system does not tell.
/// Both are the same.
SInt32 GL_VolumeToBSDNodeName(FSVolumeRefNum volume, char* node_name);
SInt32 GL_GetDiskName(FSVolumeRefNum volume, char* node_name);

// Properties.

/// Has all that was written to the object's volume put on its disk.
SInt32 GL_FlushVol(const FSRef* reference);
SInt32 GL_GetFreeSpace(FSVolumeRefNum volume, UInt64* free_bytes);
/// Number and bytes of the volume of a name; nsvErr if there is none.
SInt32 GL_XGetVInfoByName(const HFSUniStr255* name, FSVolumeRefNum* volume, UInt64* free_bytes,
                          UInt64* total_bytes);
/// Whether a volume has Unicode names and forks; `extended_attributes` (may be null) takes the
/// parameter of that name.
SInt32 GL_IsHFSPlusVolume(FSVolumeRefNum volume, Boolean* is_plus, SInt32* extended_attributes);
/// Whether a volume is a server's. With number 0 the volume is taken by name, -50 without one.
SInt32 GL_IsNetworkVolume(const HFSUniStr255* name, FSVolumeRefNum volume, Boolean* is_network);
/// wPrErr (-44) for a volume locked in hardware, vLckdErr (-46) for one locked in software, else 0.
SInt32 GL_IsVolumeLocked(FSVolumeRefNum volume);
/// The kind of the volume that holds an object.
GL_VolumeKind GL_GetVolumeKind(const FSRef* reference);
/// What the user may not do with an object: kioACUser bits (catalogue.h).
SInt32 GL_GetDirAccess(const FSRef* reference, UInt8* rights);
SInt32 GL_FileHasCustomIcon(const FSRef* reference, Boolean* has);
/// The uniform type of a file, by its extension, or else its file type; null if neither leads to
/// one. The caller releases it.
SInt32 GL_GetFileUTI(CFURLRef url, CFStringRef* type);

// Comparisons.

SInt32 GL_FileObjectsOnSameVolume(const FSRef* a, const FSRef* b, Boolean* same);
/// By the names of their device nodes.
SInt32 GL_VolumesOnSameDisk(FSVolumeRefNum a, FSVolumeRefNum b, Boolean* same);
/// Whether both objects are local, or lie in the same file system of a server.
SInt32 GL_FileObjectsOnSameSystem(const FSRef* a, const FSRef* b, Boolean* same);

// Others.

/// Whether the user may write into some folder at most `max_levels` levels (0: any number) beneath
/// `folder`. A walk that takes longer than the time is given up with the answer no.
SInt32 GL_UserHasWritePrivilegeToSomeFolder(const FSRef* folder, UInt32 max_levels,
                                            UInt32 timeout_seconds, Boolean* has);
/// The state of that walk, in ticks of 1/60 second.
struct GL_WriteSearch {
  UInt32 start;
  UInt64 limit;
  bool found;
};
/// Its filter, for MF_FSIterateContainer with a GL_WriteSearch: 1 once a folder that the user may
/// write into is found or the time is over.
Boolean GL_UserHasWritePrivilegeToSomeFolderIterateFilter(
    Boolean container_changed, ItemCount current_level, const FSCatalogInfo* info,
    const FSRef* reference, const HFSUniStr255* name, void* write_search);
/// Prints a short form of the object's path on standard output, "/volume/.../folder/name", and a
/// line end.
SInt32 GL_PrintFileObjNameDirVol(const FSRef* reference);
