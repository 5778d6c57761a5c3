/// Lists of volumes, of the form of LL_Linked_Lists.h.
#pragma once

#include "base_types.h"
#include "file_references.h"
#include "volumes.h"

/// A volume in a list; lists belong to the caller, who disposes of them with LL_DisposeLinkedList.
struct GL_VolumeElement {
  GL_VolumeElement* next;
  FSVolumeRefNum vRefNum;
  HFSUniStr255 name;
};

/// Disposes of the list given and makes one of all mounted volumes in mount order. On a failure it
/// has those made so far.
SInt32 GL_MakeVolumeList(GL_VolumeElement** list);
/// The first element of the name, upper and lower case alike, or, without a name (null or empty),
/// of the number; null if there is none.
GL_VolumeElement* GL_FindInVolumeList(FSVolumeRefNum volume, const HFSUniStr255* name,
                                      GL_VolumeElement* list);
Boolean GL_IsInVolumeList(FSVolumeRefNum volume, const HFSUniStr255* name, GL_VolumeElement* list);
/// Sorts by free space, largest first; volumes of equal space keep their order.
SInt32 GL_SortVolumeListByFreeSize(GL_VolumeElement** list);
/// Deletes the volumes that are locked, have fewer than `min_free` bytes, or, unless
/// `allow_network` is set, are a server's. A failure ends the walk; what is deleted stays so.
SInt32 GL_ReduceToSaveableVolumesList(GL_VolumeElement** list, UInt64 min_free,
                                      Boolean allow_network);
