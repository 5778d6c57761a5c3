/// Copies of files, made by the system.
#pragma once

#include "base_types.h"
#include "file_references.h"

/// Copies a file, all its forks and its information, into a folder of its volume, under the name of
/// `length` units or its own if that is 0; a link is copied as a link. `new_reference` (may be
/// null) takes the copy, which appears under its name when it is complete. dupFNErr if the name is
/// taken, notAFileErr for a folder, diffVolErr for another volume; nothing is left of a copy that
/// failed.
OSErr PBHCopyFileSync(const FSRef* source, const FSRef* destination, UInt32 length,
                      const UniChar* name, UInt32 encoding, FSRef* new_reference);
