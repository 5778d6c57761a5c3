/// Reading a small file at once, and replacing one so that no failure damages it.
#pragma once

#include <filesystem>
#include <span>
#include <vector>

#include "base_types.h"

namespace quillmere {

/// Reads the whole regular file at `path`, at most `limit` bytes. The status is of the files
/// family: fnfErr if there is none, memFullErr for a longer one, paramErr for what is no regular
/// file.
OSStatus ReadWholeFile(const std::filesystem::path& path, std::size_t limit,
                       std::vector<UInt8>* bytes);

/// Gives the file at `path` this content, making it if it is not there. The bytes are written to a
/// new file beside it and are on the disk before that takes the name, so that after a failure, a
/// crash or a loss of power the name holds either the old content or the new one, whole. A link is
/// followed; permissions and the user's extended attributes are kept. A new file may be read and
/// written by its user alone if `is_private`. The status is of the files family.
OSStatus ReplaceWholeFile(const std::filesystem::path& path, std::span<const UInt8> bytes,
                          bool is_private);

}  // namespace quillmere
