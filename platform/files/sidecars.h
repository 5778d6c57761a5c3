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
/// Whether what is called `name` in the open folder `folder` is a sidecar: its name starts with
/// "._" and its bytes with the AppleDouble number. A user's own file may have such a name too. One
/// that can't be read counts as a sidecar.
bool IsSidecar(int folder, const char* name);
/// Whether the object `name` in an open folder has a sidecar.
bool HasSidecar(int folder, std::string_view name);
/// Removes a sidecar of `name`, if there is one, whose object has gone or is new.
OSStatus RemoveStraySidecar(int folder, std::string_view name);

}  // namespace quillmere::files
