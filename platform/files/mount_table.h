/// The mount table: what is mounted where, read through libmount and kept until it changes.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "volumes.h"

namespace quillmere::files {

/// One mounted file system.
struct Mount {
  int id;  ///< the kernel's number of the mount
  dev_t device;
  std::string source;  ///< device node, share of a server, or a name
  std::string mount_point;
  std::string root;  ///< what part of the file system is mounted
  std::string type;
  std::string options;
  bool is_read_only;
  bool is_network;
  bool is_listed;  ///< belongs to the walk by index
  FSVolumeRefNum number;
};

using MountTable = std::vector<Mount>;

/// The table as it is now, the root first; mounts that others hide are left out. Null if it can't
/// be read.
std::shared_ptr<const MountTable> Mounts();
/// The mount of a volume; null if there is none.
const Mount* FindMount(const MountTable& table, FSVolumeRefNum number);
/// True if volumes come from the system's own table.
bool IsSystemMountTable();

/// A number of a text by FNV-1a, 32 bits, never 0; the same on every run.
UInt32 NumberOfText(std::string_view text);

}  // namespace quillmere::files
