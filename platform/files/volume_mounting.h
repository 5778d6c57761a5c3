/// Mount information: what it takes to mount a volume of a server again.
///
/// The record is the caller's to keep. It starts with its own length and a signature, and goes on
/// with four texts, each closed by a zero byte: source, mount point, file system type, options.
/// Local volumes have none.
#pragma once

#include <span>
#include <string>

#include "base_types.h"
#include "volumes.h"

/// The start of the mount information.
#pragma pack(push, 2)
struct VolumeMountInfoHeader {
  UInt16 length;  ///< of the whole record in bytes
  OSType media;   ///< the kind of server: one of the signatures
};
#pragma pack(pop)
static_assert(sizeof(VolumeMountInfoHeader) == 6);

/// Signatures: an AFP server, an SMB server, any other.
inline constexpr OSType kMountAFP = "afpm"_4cc;
inline constexpr OSType kMountSMB = "cifs"_4cc;
inline constexpr OSType kMountOther = "crbm"_4cc;

/// The size in bytes of a volume's mount information; paramErr for a volume that has none, nsvErr
/// for no volume.
OSErr PBGetVolMountInfoSize(FSVolumeRefNum volume, UInt16* size);
/// Copies it to `buffer` of `buffer_size` bytes, paramErr if that is too small. The buffer need not
/// be aligned.
OSErr PBGetVolMountInfo(FSVolumeRefNum volume, void* buffer, ByteCount buffer_size);
/// Mounts the volume of a record of `size` bytes at its mount point; `*volume` takes its number.
/// volOnLinErr if it is mounted already, its number given all the same; paramErr for a damaged
/// record; permErr where the user may not mount.
OSErr PBVolumeMount(const void* record, ByteCount size, FSVolumeRefNum* volume);

namespace quillmere::files {

/// The content of mount information.
struct MountInfo {
  OSType media = 0;
  std::string source;
  std::string mount_point;
  std::string type;
  std::string options;
};
/// Reads a record from bytes that nobody vouches for; false if it is damaged.
bool ReadMountInfo(std::span<const UInt8> record, MountInfo* info);

}  // namespace quillmere::files
