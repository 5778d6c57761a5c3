#include "GL_Volume_Lists.h"

#include <cstring>

#include "GL_Memory.h"
#include "GL_Strings_Unicode.h"
#include "GL_Volumes.h"
#include "LL_Linked_Lists.h"
#include "MF_FileObjects.h"
#include "MF_Volumes.h"

namespace {

using quillmere::ListHead;

/// Appends a volume to a list.
SInt32 AppendVolume(const FSRef& root, GL_VolumeElement** list) {
  GL_VolumeElement volume{};
  SInt32 status = MF_FSGetVRefNum(&root, &volume.vRefNum);
  if (status == noErr) status = GL_GetVolumeName(volume.vRefNum, &volume.name);
  if (status != noErr) return status;
  void* added = nullptr;
  return LL_CopyPtrFromListToList(&volume, sizeof(volume), nullptr, ListHead(list), &added);
}

/// The first volume from `first` on with the most free space.
SInt32 FindLargest(GL_VolumeElement* first, GL_VolumeElement** largest) {
  UInt64 most = 0;
  *largest = nullptr;
  for (GL_VolumeElement* element = first; element != nullptr; element = element->next) {
    UInt64 free_bytes = 0;
    const SInt32 status = MF_FSGetVInfo(element->vRefNum, nullptr, &free_bytes, nullptr);
    if (status != noErr) return status;
    if (*largest != nullptr && free_bytes <= most) continue;
    most = free_bytes;
    *largest = element;
  }
  return noErr;
}

/// Whether a volume can take a file.
SInt32 CanSave(FSVolumeRefNum volume, UInt64 min_free, Boolean allow_network, bool* can) {
  *can = false;
  SInt32 status = GL_IsVolumeLocked(volume);
  if (status == wPrErr || status == vLckdErr) return noErr;
  if (status != noErr) return status;
  UInt64 free_bytes = 0;
  status = MF_FSGetVInfo(volume, nullptr, &free_bytes, nullptr);
  if (status != noErr || free_bytes < min_free) return status;
  Boolean is_network = 0;
  status = GL_IsNetworkVolume(nullptr, volume, &is_network);
  if (status == noErr) *can = allow_network || !is_network;
  return status;
}

}  // namespace

SInt32 GL_MakeVolumeList(GL_VolumeElement** list) {
  if (list == nullptr) return paramErr;
  LL_DisposeLinkedList(ListHead(list));
  Handle roots = nullptr;
  ItemCount count = 0;
  SInt32 status = MF_FSGetMountedVolumes(&roots, &count);
  for (ItemCount i = 0; i < count && status == noErr; ++i) {
    FSRef root{};
    std::memcpy(&root, *roots + i * sizeof(root), sizeof(root));
    status = AppendVolume(root, list);
  }
  GL_DisposeHandle(&roots);
  return status;
}

GL_VolumeElement* GL_FindInVolumeList(FSVolumeRefNum volume, const HFSUniStr255* name,
                                      GL_VolumeElement* list) {
  const bool by_name = name != nullptr && name->length != 0;
  for (GL_VolumeElement* element = list; element != nullptr; element = element->next) {
    if (by_name ? GL_EqualHFSUniStr255(&element->name, name) : element->vRefNum == volume) {
      return element;
    }
  }
  return nullptr;
}

Boolean GL_IsInVolumeList(FSVolumeRefNum volume, const HFSUniStr255* name, GL_VolumeElement* list) {
  return GL_FindInVolumeList(volume, name, list) != nullptr;
}

SInt32 GL_SortVolumeListByFreeSize(GL_VolumeElement** list) {
  if (list == nullptr) return paramErr;
  for (GL_VolumeElement* element = *list; element != nullptr;) {
    GL_VolumeElement* largest = nullptr;
    const SInt32 status = FindLargest(element, &largest);
    if (status != noErr) return status;
    if (largest != element) LL_SwapPointers(element, largest, ListHead(list));
    element = largest->next;
  }
  return noErr;
}

SInt32 GL_ReduceToSaveableVolumesList(GL_VolumeElement** list, UInt64 min_free,
                                      Boolean allow_network) {
  if (list == nullptr) return paramErr;
  for (GL_VolumeElement* element = *list; element != nullptr;) {
    GL_VolumeElement* const next = element->next;
    bool can_save = false;
    const SInt32 status = CanSave(element->vRefNum, min_free, allow_network, &can_save);
    if (status != noErr) return status;
    void* unwanted = element;
    if (!can_save) LL_DeletePtr(ListHead(list), &unwanted);
    element = next;
  }
  return noErr;
}
