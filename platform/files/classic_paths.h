/// Classic paths: names with colons between them, the volume's first ("Disk:Folder:File").
#pragma once

#include <filesystem>
#include <string_view>

namespace quillmere::files {

/// The POSIX path that a classic path in UTF-8 stands for. The first name is that of a mounted
/// volume, without regard to case, which may itself hold colons; a path that begins with a colon is
/// relative to the working directory. Each further colon in a row goes up one folder. A slash in a
/// classic name is a colon in a POSIX one. Empty for an empty path and for a volume that is not
/// there.
std::filesystem::path PathOfClassicPath(std::string_view path);

}  // namespace quillmere::files
