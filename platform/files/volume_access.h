/// Who may do what on a volume: access to folders, and the names and numbers of users and groups.
#pragma once

#include "base_types.h"
#include "file_references.h"
#include "volumes.h"

/// Access rights to a folder: a byte each for the calling user, everyone, the group and the owner,
/// from the highest to the lowest. In each byte 1 is to search, 2 to read and 4 to write; the
/// highest bit of all says that the calling user is the owner.
inline constexpr UInt32 kAccessSearch = 1;
inline constexpr UInt32 kAccessRead = 2;
inline constexpr UInt32 kAccessWrite = 4;
inline constexpr UInt32 kAccessUserIsOwner = 0x80000000;

/// Reads a folder's owner, group and access rights; each output may be null. dirNFErr for a file.
OSErr PBHGetDirAccessSync(const FSRef* folder, UInt32* owner, UInt32* group, UInt32* rights);
/// Sets them; of `rights` the lower three bytes count. What stays as it is takes no permission to
/// change it. afpAccessDenied or permErr for what the user may not set; owner and group are set
/// first, so that nothing has changed then.
OSErr PBHSetDirAccessSync(const FSRef* folder, UInt32 owner, UInt32 group, UInt32 rights);

/// The name of a user, or of a group; afpItemNotFound if there is none of that number.
OSErr PBHMapIDSync(FSVolumeRefNum volume, Boolean is_group, UInt32 id, HFSUniStr255* name);
/// The other way.
OSErr PBHMapNameSync(FSVolumeRefNum volume, Boolean is_group, const HFSUniStr255* name, UInt32* id);
