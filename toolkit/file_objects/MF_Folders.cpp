#include "MF_FileObjects.h"
#include "MF_trace_private.h"
#include "creation.h"
#include "file_numbers.h"

using quillmere::file_objects::Checked;
using quillmere::file_objects::kCatalogFailed;
using quillmere::file_objects::kSetCatalogFailed;
using quillmere::file_objects::Trace;

namespace {

constexpr ItemCount kBatch = 10;
constexpr UInt64 kVolumeRoot = 2;

bool IsFolder(const FSCatalogInfo& info) {
  return (info.nodeFlags & kFSNodeIsDirectoryMask) != 0;
}

SInt32 SetLock(const FSRef& object, bool is_locked) {
  FSCatalogInfo info{};
  info.nodeFlags = is_locked ? kFSNodeLockedMask : 0;
  return Checked(FSSetCatalogInfo(&object, kFSCatInfoNodeFlags, &info), kSetCatalogFailed);
}

/// Empties a folder. A lock, under which nothing in it can be deleted, is taken away first and put
/// back if the folder stays.
SInt32 Empty(const FSRef& folder, UInt16 node_flags, MF_DeleteContainerState* state) {
  const bool is_locked = (node_flags & kFSNodeLockedMask) != 0;
  state->result = is_locked ? SetLock(folder, false) : noErr;
  if (state->result) return state->result;
  MF_FSDeleteContainerLevel(&folder, state);
  if (state->result && is_locked) SetLock(folder, true);
  return state->result;
}

/// Deletes an object whose lock was taken away; the lock comes back if the object stays.
SInt32 DeleteUnlocked(const FSRef& object, UInt16 node_flags) {
  const SInt32 status = Checked(FSDeleteObject(&object), "FSDeleteObject failed");
  if (status && (node_flags & kFSNodeLockedMask)) SetLock(object, true);
  return status;
}

/// Deletes an object with all that it holds.
SInt32 DeleteObject(const FSRef& object, MF_DeleteContainerState* state) {
  const FSCatalogInfo info = state->catalogInfo;  // a level below uses the state too
  SInt32 status = noErr;
  if (IsFolder(info)) {
    // Another volume is mounted here.
    if (info.nodeID == kVolumeRoot) return fBsyErr;
    status = Empty(object, info.nodeFlags, state);
  } else if (info.nodeFlags & kFSNodeLockedMask) {
    status = SetLock(object, false);
  }
  return status ? status : DeleteUnlocked(object, info.nodeFlags);
}

SInt32 ReadNodeFlags(const FSRef* folder, UInt16* node_flags) {
  FSCatalogInfo info{};
  const SInt32 status =
      Checked(FSGetCatalogInfo(folder, kFSCatInfoNodeFlags, &info, nullptr, nullptr, nullptr),
              kCatalogFailed);
  *node_flags = info.nodeFlags;
  return !status && !IsFolder(info) ? SInt32{dirNFErr} : status;
}

}  // namespace

void MF_FSDeleteContainerLevel(const FSRef* folder, MF_DeleteContainerState* state) {
  const Trace trace("MF_FSDeleteContainerLevel");
  FSIterator iterator = nullptr;
  state->result =
      Checked(FSOpenIterator(folder, kFSIterateDelete, &iterator), "FSOpenIterator failed");
  if (state->result) return;
  bool is_last = false;
  SInt32 status = noErr;
  while (!status && !is_last) {
    FSRef object;
    status = FSGetCatalogInfoBulk(iterator, 1, &state->actualObjects, nullptr,
                                  kFSCatInfoNodeFlags | kFSCatInfoNodeID, &state->catalogInfo,
                                  &object, nullptr, nullptr);
    is_last = status == errFSNoMoreItems;
    if (is_last) status = noErr;
    if (!status && state->actualObjects > 0) status = DeleteObject(object, state);
  }
  const SInt32 close_status = FSCloseIterator(iterator);
  state->result = status ? status : close_status;
}

SInt32 MF_FSDeleteContainerContents(const FSRef* folder) {
  const Trace trace("MF_FSDeleteContainerContents");
  if (!folder) return paramErr;
  UInt16 node_flags = 0;
  MF_DeleteContainerState state{};
  SInt32 status = ReadNodeFlags(folder, &node_flags);
  if (status) return status;
  status = Empty(*folder, node_flags, &state);
  return !status && (node_flags & kFSNodeLockedMask) ? SetLock(*folder, true) : status;
}

SInt32 MF_FSDeleteContainer(const FSRef* folder) {
  const Trace trace("MF_FSDeleteContainer");
  if (!folder) return paramErr;
  UInt16 node_flags = 0;
  MF_DeleteContainerState state{};
  SInt32 status = ReadNodeFlags(folder, &node_flags);
  if (!status) status = Empty(*folder, node_flags, &state);
  return status ? status : DeleteUnlocked(*folder, node_flags);
}

void MF_FSIterateContainerLevel(const FSRef* container, MF_IterateState* state) {
  const Trace trace("MF_FSIterateContainerLevel");
  if (state->maxLevels != 0 && state->currentLevel >= state->maxLevels) return;
  FSIterator iterator = nullptr;
  state->result = FSOpenIterator(container, kFSIterateFlat, &iterator);
  if (!state->result) {
    ++state->currentLevel;
    do {
      state->result = FSGetCatalogInfoBulk(
          iterator, 1, &state->actualObjects, &state->containerChanged, state->whichInfo,
          &state->catalogInfo, &state->ref, nullptr, state->namePtr);
      const bool has_object =
          state->actualObjects > 0 && (!state->result || state->result == errFSNoMoreItems);
      if (!has_object) continue;
      const SInt32 batch_status = state->result;
      const bool is_folder = IsFolder(state->catalogInfo);
      const FSRef object = state->ref;
      state->quitFlag =
          state->iterateFilter(state->containerChanged, state->currentLevel, &state->catalogInfo,
                               &state->ref, state->namePtr, state->yourDataPtr);
      state->result = noErr;
      if (is_folder && !state->quitFlag) MF_FSIterateContainerLevel(&object, state);
      if (!state->result) state->result = batch_status;
    } while (!state->result && !state->quitFlag);
    --state->currentLevel;
    const SInt32 close_status = FSCloseIterator(iterator);
    if (!state->result) state->result = close_status;
  }
  if (state->result == errFSNoMoreItems || state->result == afpAccessDenied) state->result = noErr;
  Checked(state->result, "walk of a folder failed");
}

SInt32 MF_FSIterateContainer(const FSRef* container, ItemCount max_levels,
                             FSCatalogInfoBitmap which_info, Boolean /*want_spec*/,
                             Boolean want_name, MF_IterateFilter filter, void* your_data) {
  const Trace trace("MF_FSIterateContainer");
  if (!container || !filter) return paramErr;
  MF_IterateState state{};
  state.iterateFilter = filter;
  state.whichInfo = which_info | kFSCatInfoNodeFlags;
  state.namePtr = want_name ? &state.name : nullptr;
  state.yourDataPtr = your_data;
  state.maxLevels = max_levels;
  MF_FSIterateContainerLevel(container, &state);
  return state.result;
}

SInt32 MF_FSGetDirectoryItems(const FSRef* folder, Handle* items, ItemCount* count,
                              Boolean* container_changed) {
  const Trace trace("MF_FSGetDirectoryItems");
  if (!folder || !items || !count) return paramErr;
  *count = 0;
  *items = NewHandle(0);
  SInt32 status = Checked(MemError(), "NewHandle failed");
  FSIterator iterator = nullptr;
  if (!status) {
    status = Checked(FSOpenIterator(folder, kFSIterateFlat, &iterator), "FSOpenIterator failed");
  }
  while (!status) {
    FSRef references[kBatch];
    ItemCount actual = 0;
    status = FSGetCatalogInfoBulk(iterator, kBatch, &actual, container_changed, kFSCatInfoNone,
                                  nullptr, references, nullptr, nullptr);
    if (status && status != errFSNoMoreItems) break;
    const SInt32 added = PtrAndHand(references, *items, static_cast<Size>(actual * sizeof(FSRef)));
    if (added) {
      status = added;
    } else {
      *count += actual;
    }
  }
  if (iterator) FSCloseIterator(iterator);
  if (status == errFSNoMoreItems) return noErr;
  DisposeHandle(*items);
  *items = nullptr;
  *count = 0;
  return status;
}

SInt32 MF_FSSetDefault(const FSRef* folder, FSRef* old_folder) {
  const Trace trace("MF_FSSetDefault");
  if (!folder || !old_folder) return paramErr;
  const FSRef wanted = *folder;
  const SInt32 status = Checked(HGetVol(old_folder), "HGetVol failed");
  return status ? status : Checked(HSetVol(&wanted), "HSetVol failed");
}

SInt32 MF_FSRestoreDefault(const FSRef* old_folder) {
  const Trace trace("MF_FSRestoreDefault");
  return Checked(HSetVol(old_folder), "HSetVol failed");
}
