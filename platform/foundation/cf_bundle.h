/// Bundles: folders that hold resources and string tables; above all the application's own.
///
/// In the build tree and in an installed program the application's folder is found beside or above
/// the executable. Any other bundle's resources lie in its folder "Resources", or in itself. A
/// string table is the file TABLE.strings (see strings_table.h) in the bundle's folder "en.lproj",
/// or in the bundle itself. Everything here may be called from any thread.
#pragma once

#include <filesystem>

#include "base_types.h"
#include "cf_strings.h"
#include "cf_urls.h"
#include "reference_counted.h"

struct CFBundle;
using CFBundleRef = const CFBundle*;

/// The program's own bundle, lent.
CFBundleRef CFBundleGetMainBundle();
/// The bundle in an existing folder, which the caller owns; null if there is no folder.
CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef url);
/// Where a bundle lies: its folder, or the executable file for the program's own, which has none.
/// The caller owns the URL; null if it can't be told.
CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle);
/// The URL of a resource file by its name, or null if there is none. The caller owns it.
CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name, CFStringRef type,
                                 CFStringRef sub_folder);
/// The text under `key` in the bundle's string table `table` (null or empty: "Localizable"). If the
/// table or the entry is missing: `value`, or `key` if `value` is null or empty. Never null; the
/// caller owns it. A table is read when it is first used and kept.
CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef table);

namespace quillmere {

/// Where CFBundleCopyResourceURL looks first, for tests and tools that run elsewhere.
void SetBundleResourceFolder(const std::filesystem::path& folder);

}  // namespace quillmere
