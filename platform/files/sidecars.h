/// Sidecars: files "._name" in AppleDouble form (RFC 1740) beside "name" that hold what does not
/// fit into its extended attributes. They belong to their file: no walk shows them, and they are
/// renamed, moved and deleted with it.
#pragma once

#include <string>
#include <string_view>

#include "base_types.h"

namespace quillmere::files {

/// The name of the sidecar of `name`.
std::string SidecarName(std::string_view name);
/// What a name in a folder may be. A user's own file may have the name of a sidecar; its first
/// bytes tell, which are the AppleDouble number in a sidecar.
enum class SidecarKind {
  kNone,     ///< another name, no regular file, or other bytes
  kUnknown,  ///< the name of a sidecar, but its bytes can't be read
  kSidecar
};
SidecarKind KindOfSidecar(int folder, const char* name);
/// Whether what is called `name` in the open folder `folder` is, or has to be taken for, a sidecar.
/// Only what is one for certain may be deleted.
bool IsSidecar(int folder, const char* name);
/// Whether the object `name` in an open folder has a sidecar.
bool HasSidecar(int folder, std::string_view name);
/// Removes a sidecar of `name`, if there is one for certain, whose object has gone or is new.
OSStatus RemoveStraySidecar(int folder, std::string_view name);

}  // namespace quillmere::files
