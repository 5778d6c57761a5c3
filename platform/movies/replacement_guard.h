/// Files that an older output's removal must not touch.
///
/// A job protects its sources for as long as it runs. An output whose name belongs to a protected
/// file, or to a file that a protected movie's media lies in, is refused instead of replacing it.
#pragma once

#include <filesystem>

#include "file_references.h"

namespace quillmere::movies {

/// Starts (`protect` true) or ends the protection of a file: a movie, a still or any other. Calls
/// nest. A status of the files family when the file is not there. May be called from any thread.
OSStatus ProtectFromReplacement(const FSRef& file, bool protect);
/// True when the file at `path`, seen through symbolic links, is protected or holds media of a
/// protected movie. Movies are looked into at the first call after the set of files has changed.
bool IsProtectedFromReplacement(const std::filesystem::path& path);

}  // namespace quillmere::movies
