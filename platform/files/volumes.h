/// Volumes: the mounted file systems that hold files of the user or of the system.
///
/// A volume is known by a number below 0, which it keeps as long as the process lives. The walk by
/// index gives the root's volume first and then the others in the order in which they were mounted;
/// it leaves out what only the kernel uses (proc, cgroup and their like), though objects there have
/// a volume too. Any thread may call. Every call looks at the mount table as it is now.
#pragma once

#include <filesystem>

#include "base_types.h"
#include "file_dates.h"
#include "file_references.h"

/// The number of a volume; 0 is none. The domains of folders.h are numbers of this type as well.
using FSVolumeRefNum = SInt16;
using FSVolumeInfoBitmap = UInt32;

/// Statuses of volumes: it is mounted already; there is no such user or group.
inline constexpr OSErr volOnLinErr = -55;
inline constexpr OSErr afpItemNotFound = -5012;

inline constexpr FSVolumeInfoBitmap kFSVolInfoNone = 0;
inline constexpr FSVolumeInfoBitmap kFSVolInfoCreateDate = 0x0001;
inline constexpr FSVolumeInfoBitmap kFSVolInfoSizes = 0x0040;
inline constexpr FSVolumeInfoBitmap kFSVolInfoFlags = 0x2000;
inline constexpr FSVolumeInfoBitmap kFSVolInfoFSInfo = 0x4000;
inline constexpr FSVolumeInfoBitmap kFSVolInfoDriveInfo = 0x8000;

/// Flags of a volume: the medium cannot be written; it is mounted for reading only.
inline constexpr UInt16 kFSVolFlagHardwareLockedMask = 0x0080;
inline constexpr UInt16 kFSVolFlagSoftwareLockedMask = 0x8000;

/// The signature of every volume: names of Unicode and files with forks.
inline constexpr UInt16 kVolumeSignature = 0x482B;

/// Information of a volume; a call fills the fields that its mask names.
struct FSVolumeInfo {
  UTCDateTime createDate;  ///< the birth of its root folder; zero where that is not known
  UInt64 totalBytes;
  UInt64 freeBytes;     ///< what the calling user can still write
  UInt16 flags;         ///< kFSVolFlagHardwareLockedMask, kFSVolFlagSoftwareLockedMask
  UInt16 filesystemID;  ///< 0 for the system's own disk formats, else a number for each format
  UInt16 signature;     ///< kVolumeSignature
  SInt16 driveNumber;   ///< from 1; volumes of one device have the same
};

/// Information of a volume: of number `volume` if `index` is 0, else of the volume
/// `index` of the walk, from 1. Each output may be null; `root` takes the volume's
/// root folder. nsvErr for a number or an index that no volume has, paramErr for a mask without
/// `info` or with bits that are not named here.
OSErr FSGetVolumeInfo(FSVolumeRefNum volume, ItemCount index, FSVolumeRefNum* actual_volume,
                      FSVolumeInfoBitmap mask, FSVolumeInfo* info, HFSUniStr255* name, FSRef* root);
/// Has the system put all that was written to a volume on its disk.
OSErr FSFlushVolume(FSVolumeRefNum volume);

/// Bits of `vMAttrib`: copies and moves files by itself; can search its catalogue; has file IDs.
inline constexpr SInt32 kHasFileIDs = 1 << 6;
inline constexpr SInt32 kHasCatSearch = 1 << 7;
inline constexpr SInt32 kHasMoveRename = 1 << 13;
inline constexpr SInt32 kHasCopyFile = 1 << 14;
/// Bits of `vMExtendedAttributes`: Unicode names and forks; exchanges the content of files by
/// itself (FSExchangeObjects).
inline constexpr SInt32 kSupportsHFSPlusAPIs = 0x2;
inline constexpr SInt32 kSupportsExchangeFiles = 0x8;

/// What a volume can do.
struct GetVolParmsInfoBuffer {
  SInt16 vMVersion;  ///< 5: all fields are there
  SInt16 vMForeignPrivID;
  SInt32 vMAttrib;
  SInt32 vMServerAdr;  ///< 0 for a local volume, else a number of its server
  SInt32 vMExtendedAttributes;
  const char* vMDeviceID;  ///< name of its device node in /dev; null if there is none. Stays valid.
  SInt32 vMVolumeGrade;    ///< unknown: 0
  UInt32 vMMaxNameLength;  ///< of a file, in UTF-16 units
};
static_assert(sizeof(GetVolParmsInfoBuffer) == 32);

/// Fills the first `buffer_size` bytes of a volume's parameters; `actual_size` (may be null) takes
/// how many that were. nsvErr for no volume.
OSErr PBHGetVolParmsSync(FSVolumeRefNum volume, ByteCount buffer_size,
                         GetVolParmsInfoBuffer* buffer, ByteCount* actual_size);
/// The same without the size.
OSStatus FSGetVolumeParms(FSVolumeRefNum volume, GetVolParmsInfoBuffer* buffer,
                          ByteCount buffer_size);

namespace quillmere::files {

/// The number of the volume that holds the object at a path, a link not followed; a status of the
/// files family.
OSStatus VolumeOfPath(const std::filesystem::path& path, FSVolumeRefNum* volume);
/// Where a volume is mounted; nsvErr for no volume.
OSStatus MountPointOfVolume(FSVolumeRefNum volume, std::filesystem::path* mount_point);
/// True if a normalized absolute path is where a volume is mounted.
bool IsMountPoint(const std::filesystem::path& path);
/// Takes volumes from a file in the form of /proc/self/mountinfo; an empty path goes back to the
/// system's table.
void UseMountTable(const std::filesystem::path& table);

}  // namespace quillmere::files
