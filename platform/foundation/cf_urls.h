/// URLs of files, and the application's bundle.
#pragma once

#include <filesystem>

#include "base_types.h"
#include "cf_strings.h"
#include "reference_counted.h"

struct CFURL;
struct CFBundle;
using CFURLRef = const CFURL*;
using CFBundleRef = const CFBundle*;

/// A file URL of a POSIX path in UTF-8.
CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path,
                                       Boolean is_directory);
/// `url` with one more path component; null if the component is empty or holds a slash.
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                               CFStringRef component, Boolean is_directory);
/// The POSIX path of a file URL.
CFStringRef CFURLCopyFileSystemPath(CFURLRef url);

/// The bundle: the folder that holds the program's resources. In the build tree and in an installed
/// program it is found beside or above the executable.
CFBundleRef CFBundleGetMainBundle();
/// The URL of a resource file by its name, or null if there is none. The caller owns it.
CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name, CFStringRef type,
                                 CFStringRef sub_folder);

namespace quillmere {

/// The path of a file URL as the system calls take it (bytes, not necessarily UTF-8).
const std::filesystem::path& PathOf(CFURLRef url);
CFURLRef CreateUrlOfPath(const std::filesystem::path& path);
/// Where CFBundleCopyResourceURL looks first, for tests and tools that run elsewhere.
void SetBundleResourceFolder(const std::filesystem::path& folder);

}  // namespace quillmere
