/// Where an object is: its folder, held open, and its name there. What is done through both can't
/// be led elsewhere by somebody who puts a link in the place of a folder on the way.
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "base_types.h"
#include "descriptor.h"
#include "file_references.h"
#include "place_table.h"

namespace quillmere::files {

struct ObjectPlace {
  std::filesystem::path path;  ///< absolute
  Descriptor folder;
  std::string name;   ///< in the folder; "." for the root of the file system
  struct statx info;  ///< what the system told when the object was found

  bool IsFolder() const { return S_ISDIR(info.stx_mode); }
  bool IsLink() const { return S_ISLNK(info.stx_mode); }
};

/// Reads what the system knows of `name` in an open folder (AT_FDCWD for paths), a link not
/// followed.
OSStatus ReadObject(int folder, const char* name, struct statx* info);
ObjectIdentity IdentityOf(const struct statx& info);
/// Finds an object and opens its folder; the statuses of PathOf, and those of opening.
OSStatus FindObject(const FSRef& reference, ObjectPlace* place);
/// Opens the very folder that a reference names; dirNFErr if it is none. `*path` takes its path.
OSStatus OpenFolder(const FSRef& reference, Descriptor* folder, std::filesystem::path* path);

/// The catalogue's view of an object: locked, and the root of a volume.
bool IsLocked(const struct statx& info);
bool IsVolumeRoot(const struct statx& info, const std::filesystem::path& path);

}  // namespace quillmere::files
