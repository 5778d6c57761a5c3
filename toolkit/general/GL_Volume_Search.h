/// Searches of a whole volume. Each gives the first object found, in the order of FSCatalogSearch,
/// and an all-zero reference with errFSNoMoreItems if there is none. A search ends after five
/// seconds, with fnfErr if it has found nothing by then.
#pragma once

#include "base_types.h"
#include "file_dates.h"
#include "file_references.h"
#include "volumes.h"

/// By name, upper and lower case alike.
SInt32 GL_FindObjectByName(FSVolumeRefNum volume, const HFSUniStr255* name, FSRef* found);
/// By the number on the volume.
SInt32 GL_FindObjectByNodeID(FSVolumeRefNum volume, UInt64 node_id, FSRef* found);
/// By name, creator, type and, unless null, the exact dates of creation and of the content. A
/// creator or type of 0 finds objects that have none.
SInt32 GL_FindFile(FSVolumeRefNum volume, const HFSUniStr255* name, OSType creator, OSType type,
                   const UTCDateTime* create_date, const UTCDateTime* modification_date,
                   FSRef* found);
