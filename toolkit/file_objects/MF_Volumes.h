/// Volumes: the platform's calls under names that say what they do. A volume is its number;
/// nsvErr (-35) for one that no volume has, as for 0.
#pragma once

#include "base_types.h"
#include "catalogue.h"
#include "file_references.h"
#include "memory_handles.h"
#include "volumes.h"

/// A volume's name and its bytes, free and in all; each output may be null.
SInt32 MF_FSGetVInfo(FSVolumeRefNum volume, HFSUniStr255* name, UInt64* free_bytes,
                     UInt64* total_bytes);
/// A volume's file system: 0 or the number of a foreign format, and the signature; each output may
/// be null.
SInt32 MF_FSGetVolFileSystemID(FSVolumeRefNum volume, UInt16* id, UInt16* signature);
/// Fills the first `buffer_size` bytes of a volume's parameters; `actual_size` may be null.
SInt32 MF_FSGetVolParms(FSVolumeRefNum volume, ByteCount buffer_size, GetVolParmsInfoBuffer* buffer,
                        ByteCount* actual_size);
/// The roots of all volumes in a new handle of `*count` references, in mount order. The caller
/// disposes of it; on a failure it is null and the count 0.
SInt32 MF_FSGetMountedVolumes(Handle* roots, ItemCount* count);
/// 0 if an object and its volume can be written: -45 for an object that is locked, -44 for a volume
/// that is locked in hardware, -46 for one in software.
SInt32 MF_FSCheckLock(const FSRef* reference);
/// -44 or -46 for a volume's flags, 0 for none of the two.
SInt32 MF_FSLockOfVolume(FSVolumeRefNum volume);

/// What the calling user may not do with an object, kioACUser bits, and its owner and mode; each
/// output may be null.
SInt32 MF_FSGetUserPrivilegesPermissions(const FSRef* reference, UInt8* privileges,
                                         FSPermissionInfo* permissions);
/// A folder's owner, group and access rights (volume_access.h); each output may be null.
SInt32 MF_FSGetDirAccess(const FSRef* folder, UInt32* owner, UInt32* group, UInt32* rights);
SInt32 MF_FSSetDirAccess(const FSRef* folder, UInt32 owner, UInt32 group, UInt32 rights);
/// The name of a user or a group, and the other way.
SInt32 MF_FSMapID(FSVolumeRefNum volume, Boolean is_group, UInt32 id, HFSUniStr255* name);
SInt32 MF_FSMapName(FSVolumeRefNum volume, Boolean is_group, const HFSUniStr255* name, UInt32* id);

/// What it takes to mount a volume again (volume_mounting.h): its size in bytes, -50 for a local
/// volume; itself; and mounting by it.
SInt32 MF_FSGetVolMountInfoSize(FSVolumeRefNum volume, UInt16* size);
SInt32 MF_FSGetVolMountInfo(FSVolumeRefNum volume, void* buffer, ByteCount buffer_size);
SInt32 MF_FSVolumeMount(const void* record, ByteCount size, FSVolumeRefNum* volume);
