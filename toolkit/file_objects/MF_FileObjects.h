/// One catalogue question each about a file or folder. Statuses are those of the files family.
#pragma once

#include "base_types.h"
#include "catalogue.h"
#include "file_references.h"

/// 1 if the reference still names an object; an all-zero one does not.
Boolean MF_FSRefValid(const FSRef* reference);
/// The folder that holds the object; all zero, with status 0, for a volume's root.
SInt32 MF_FSGetParentRef(const FSRef* reference, FSRef* parent);
/// The object's name.
SInt32 MF_FSGetFileDirName(const FSRef* reference, HFSUniStr255* name);
/// The object's number on its volume, 2 for the volume's root; `is_directory` may be null.
SInt32 MF_FSGetNodeID(const FSRef* reference, UInt64* node_id, Boolean* is_directory);
/// Sizes of the data and resource forks in bytes, each output optional; notAFileErr for a folder.
SInt32 MF_FSGetForkSizes(const FSRef* reference, UInt64* data_size, UInt64* resource_size);
/// Finder information, each output optional: type, creator and flags of a file, or the window and
/// flags of a folder, and the extended part.
SInt32 MF_FSGetFinderInfo(const FSRef* reference, FinderInfo* info, ExtendedFinderInfo* extended,
                          Boolean* is_directory);
