/// The folders that every user has, by domain and type.
#pragma once

#include "base_types.h"
#include "file_references.h"
#include "volumes.h"

inline constexpr FSVolumeRefNum kUserDomain = -32763;

/// The folder for log files: `$XDG_STATE_HOME/quillmere/logs`, `~/.local/state/quillmere/logs`
/// where that variable is not set.
inline constexpr OSType kLogsFolderType = "logs"_4cc;

/// Finds a well-known folder, making it and what it lies in if `create` is set. fnfErr for one that
/// is not there, or if the user has no home; paramErr for a domain or type that is not known.
OSErr FSFindFolder(FSVolumeRefNum domain, OSType type, Boolean create, FSRef* folder);
