/// Catalogue information of an object whose place is known: reading it, setting it, and noting it
/// to put it back later.
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "catalogue.h"
#include "object_place.h"

namespace quillmere::files {

/// An object by its name in an open folder, and what the system told of it.
struct ObjectView {
  int folder;
  std::string_view name;
  const std::filesystem::path& folder_path;
  const struct statx& info;

  bool IsRoot() const { return IsVolumeRoot(info, name == "." ? folder_path : Path()); }
  std::filesystem::path Path() const { return folder_path / name; }
};

/// Fills the fields of `out` that `mask` names.
OSStatus ReadCatalogue(const ObjectView& object, FSCatalogInfoBitmap mask, FSCatalogInfo* out);
/// Sets what `mask` names, all or, on a failure, nothing.
OSStatus SetCatalogue(const ObjectPlace& place, FSCatalogInfoBitmap mask,
                      const FSCatalogInfo& info);
/// A path through an open folder, for the calls on extended attributes.
std::string AttributePath(int folder, std::string_view name);
/// The number that a folder's inode or a file's has in the catalogue.
UInt64 NodeIdOf(UInt64 inode, bool is_volume_root);

}  // namespace quillmere::files
