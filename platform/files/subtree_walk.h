/// A walk over all that a folder holds, at any depth.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "base_types.h"
#include "descriptor.h"

struct FolderIterator;

namespace quillmere::files {

/// Goes folder by folder, names in the order of their bytes, an object before what it holds. It
/// follows no link, stays on the volume of its root, and passes over folders that it may not read.
/// Each folder is opened through the one that holds it, so that nobody can lead the walk elsewhere
/// by putting a link in the place of a folder, and depth has no limit but memory.
class SubtreeWalk {
 public:
  /// An object on the way.
  struct Entry {
    std::string name;
    UInt64 inode;
    bool is_folder;
  };

  /// Starts in a folder; a status of the files family if it can't be read.
  OSStatus Open(const std::filesystem::path& root);
  /// The next object, null at the end. It stays valid until the next call.
  const Entry* Next();
  /// Has Next pass over what the folder that it gave last holds.
  void SkipFolder() { last_is_folder_ = false; }
  /// The path of the object that Next gave last.
  std::string Path() const;

 private:
  /// What tells one folder from another.
  struct Identity {
    UInt64 device;
    UInt64 inode;
    UInt64 mount;  ///< the kernel's number of the mount; where it does not tell, of the device
    bool operator==(const Identity&) const = default;
  };
  struct Level {
    Descriptor folder;  ///< closed for all but the innermost few
    Identity identity{};
    std::string path;  ///< with a slash at its end
    std::vector<Entry> entries;
    std::size_t next = 0;
  };
  static OSStatus Identify(int folder, Identity* identity);
  OSStatus Enter(Descriptor folder, std::string path);
  void EnterLast();
  void Leave();

  std::vector<Level> levels_;
  UInt64 mount_ = 0;
  bool last_is_folder_ = false;
};

/// The walk of an iterator that was opened with kFSIterateSubtree; null for any other.
SubtreeWalk* SubtreeOf(FolderIterator* iterator);

}  // namespace quillmere::files
