/// Finder information: 32 bytes that hold a file's type, creator, flags and label.
///
/// It lives in the extended attribute "user.com.apple.FinderInfo"; where a file has none, that of a
/// sidecar
/// ("._name", AppleDouble form, RFC 1740) from another system is read.
#pragma once

#include <filesystem>
#include <span>

#include "base_types.h"

namespace quillmere::files {

struct FinderInformation {
  UInt8 bytes[32] = {};
  /// The file's type and creator; 0 when they are not set.
  OSType Type() const;
  OSType Creator() const;
};

/// Reads an object's information; all zero when it has none.
void ReadFinderInformation(const std::filesystem::path& path, FinderInformation* information);
/// Stores an object's information; all zero removes it.
OSStatus WriteFinderInformation(const std::filesystem::path& path,
                                const FinderInformation& information);
/// Finds the Finder information in the bytes of an AppleDouble file; false if there is none or the
/// bytes are damaged.
bool FinderInformationInSidecar(std::span<const UInt8> sidecar, FinderInformation* information);

}  // namespace quillmere::files
