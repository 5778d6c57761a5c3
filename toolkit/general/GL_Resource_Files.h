/// Files that hold resources: making them, and deleting those that hold none.
#pragma once

#include "base_types.h"
#include "file_references.h"

/// Makes a file with an empty resource map and bumps the folder's date, whose status is the result.
SInt32 GL_CreateResFile(const FSRef* folder, const HFSUniStr255* name, OSType creator, OSType type,
                        FSRef* file);
/// Closes the resource file `resource_file`, or opens and closes that of `file` for 0, and deletes
/// `file` and clears it if it holds no resources. An invalid reference gives 0.
SInt32 GL_DeleteEmptyResourceFile(SInt16 resource_file, FSRef* file);
