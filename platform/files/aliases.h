/// Aliases: handles that remember a file or folder and find it again.
///
/// The handle holds a record of the classic alias format, version 2: a fixed part with volume,
/// parent and file names, then tagged items, among them the Unicode name (14), the volume's (15),
/// and the POSIX path relative to the volume (18) with the volume's mount point (19). All numbers
/// are big-endian. Records of other systems are read the same way.
#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "base_types.h"
#include "file_references.h"
#include "memory_handles.h"

/// A handle whose block is an alias record.
using AliasHandle = Handle;

/// Makes an alias of `target`, relative to `from` when that is not null. The caller owns the handle
/// and gives it back with DisposeHandle. fnfErr when the target is not valid.
OSErr FSNewAlias(const FSRef* from, const FSRef* target, AliasHandle* alias);
/// Finds the alias's target; fnfErr if it is gone. `was_changed` (may be null) becomes 1 when the
/// record was brought up to date.
OSErr FSResolveAlias(const FSRef* from, AliasHandle alias, FSRef* target, Boolean* was_changed);

namespace quillmere::files {

/// What an alias record says of its target, each part empty if the record does not hold it. Text is
/// UTF-8.
struct AliasContent {
  std::filesystem::path absolute_path;  ///< mount point and POSIX path
  std::filesystem::path
      relative_path;  ///< from the folder of the file that holds the alias to the target
  std::string file_name;
};
/// Reads an alias record from bytes that nobody vouches for; false if it is damaged.
bool ReadAlias(std::span<const UInt8> record, AliasContent* content);
/// Makes an alias of a file that need not exist; its folder has to. The caller owns the handle.
OSErr MakeAliasOfPath(const std::filesystem::path& path, AliasHandle* alias);
/// The path that an alias leads to, whether there is something or not; fnfErr if the record tells
/// none.
OSErr PathOfAlias(AliasHandle alias, std::filesystem::path* path);

}  // namespace quillmere::files
