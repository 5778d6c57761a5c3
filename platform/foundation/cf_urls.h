/// URLs of files.
#pragma once

#include <filesystem>

#include "base_types.h"
#include "cf_strings.h"
#include "reference_counted.h"

struct CFURL;
using CFURLRef = const CFURL*;

/// A file URL of a POSIX path in UTF-8.
CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path,
                                       Boolean is_directory);
/// `url` with one more path component; null if the component is empty or holds a slash.
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                               CFStringRef component, Boolean is_directory);
/// The POSIX path of a file URL.
CFStringRef CFURLCopyFileSystemPath(CFURLRef url);

namespace quillmere {

/// The path of a file URL as the system calls take it (bytes, not necessarily UTF-8).
const std::filesystem::path& PathOf(CFURLRef url);
CFURLRef CreateUrlOfPath(const std::filesystem::path& path);

}  // namespace quillmere
