/// Where the forks of a file lie that are not its data fork.
///
/// A fork of up to 3,800 bytes lies in an extended attribute: the resource fork, as it is, in
/// "user.com.apple.ResourceFork", one called NAME in "user.quillmere.fork.NAME" behind a byte 1, so
/// that an empty one is there as well. A larger one, or any where the volume takes no such
/// attributes, lies in the file's sidecar (apple_double.h): the resource fork in its entry, others
/// as attributes "quillmere.fork.NAME". A file without extra forks has neither.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "apple_double.h"
#include "base_types.h"
#include "object_place.h"

namespace quillmere::files {

/// What the resource fork is called among fork names.
inline constexpr std::string_view kResourceForkName = "RESOURCE_FORK";
/// Bytes of UTF-8 that a fork's name may have.
inline constexpr std::size_t kMostForkNameBytes = 100;

/// Reads a fork. errFSForkNotFound if there is no such; the resource fork is there, if only with no
/// bytes.
OSStatus ReadExtraFork(const ObjectPlace& file, const std::string& name, ForkBytes* bytes);
/// Replaces a fork's bytes in one step; on a failure the old ones stay. A resource fork without
/// bytes leaves no trace.
OSStatus WriteExtraFork(const ObjectPlace& file, const std::string& name, const ForkBytes& bytes);
/// Takes a fork away; errFSForkNotFound if there is none.
OSStatus RemoveExtraFork(const ObjectPlace& file, const std::string& name);

struct ExtraFork {
  std::string name;
  UInt64 size;
};
/// The forks that there are, the resource fork first if it has bytes, then by name.
OSStatus ListExtraForks(const ObjectPlace& file, std::vector<ExtraFork>* forks);

}  // namespace quillmere::files
