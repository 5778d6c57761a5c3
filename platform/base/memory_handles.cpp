#include "memory_handles.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

using quillmere::SetMemError;

namespace {

thread_local OSErr memory_status = noErr;

struct Free {
  void operator()(char* block) const { std::free(block); }
};

/// What a handle points to: its block's address comes first, so that `*handle` is the block.
struct HandleRecord {
  std::unique_ptr<char, Free> block;
  Size size = 0;
  Size room = 0;  ///< bytes that the block has, at least `size`
  SInt8 state = 0;
};
static_assert(sizeof(std::unique_ptr<char, Free>) == sizeof(Ptr));

HandleRecord* RecordOf(Handle handle) {
  return reinterpret_cast<HandleRecord*>(handle);
}

/// A block of at least one byte, so that an empty handle still has an address.
std::unique_ptr<char, Free> NewBlock(Size size, bool clear) {
  const auto bytes = static_cast<std::size_t>(size > 0 ? size : 1);
  return std::unique_ptr<char, Free>(
      static_cast<char*>(clear ? std::calloc(bytes, 1) : std::malloc(bytes)));
}

Handle MakeHandle(Size size, bool clear) {
  if (size < 0) {
    SetMemError(paramErr);
    return nullptr;
  }
  auto record = std::unique_ptr<HandleRecord>(new (std::nothrow) HandleRecord);
  if (record) record->block = NewBlock(size, clear);
  if (!record || !record->block) {
    SetMemError(memFullErr);
    return nullptr;
  }
  record->size = record->room = size;
  SetMemError(noErr);
  return reinterpret_cast<Handle>(record.release());
}

void SetStateBit(Handle handle, SInt8 bit, bool on) {
  if (!handle) {
    SetMemError(nilHandleErr);
    return;
  }
  SInt8& state = RecordOf(handle)->state;
  state = static_cast<SInt8>(on ? (state | bit) : (state & ~bit));
  SetMemError(noErr);
}

}  // namespace

OSErr MemError() {
  return memory_status;
}

OSErr quillmere::SetMemError(OSStatus status) {
  memory_status = static_cast<OSErr>(status);
  return memory_status;
}

Handle NewHandle(Size size) {
  return MakeHandle(size, false);
}

Handle NewHandleClear(Size size) {
  return MakeHandle(size, true);
}

void DisposeHandle(Handle handle) {
  delete RecordOf(handle);
  SetMemError(noErr);
}

Size GetHandleSize(Handle handle) {
  SetMemError(handle ? noErr : nilHandleErr);
  return handle ? RecordOf(handle)->size : 0;
}

void SetHandleSize(Handle handle, Size size) {
  if (!handle) {
    SetMemError(nilHandleErr);
    return;
  }
  if (size < 0) {
    SetMemError(paramErr);
    return;
  }
  HandleRecord* record = RecordOf(handle);
  if ((record->state & kHandleLockedMask) != 0) {
    if (size <= record->room) record->size = size;
    SetMemError(size <= record->room ? noErr : memFullErr);
    return;
  }
  auto* block = static_cast<char*>(
      std::realloc(record->block.get(), static_cast<std::size_t>(size > 0 ? size : 1)));
  if (!block) {
    SetMemError(memFullErr);
    return;
  }
  static_cast<void>(record->block.release());
  record->block.reset(block);
  record->size = record->room = size;
  SetMemError(noErr);
}

void HLock(Handle handle) {
  SetStateBit(handle, kHandleLockedMask, true);
}

void HUnlock(Handle handle) {
  SetStateBit(handle, kHandleLockedMask, false);
}

SInt8 HGetState(Handle handle) {
  SetMemError(handle ? noErr : nilHandleErr);
  return handle ? RecordOf(handle)->state : SInt8{0};
}

void HSetState(Handle handle, SInt8 state) {
  SetMemError(handle ? noErr : nilHandleErr);
  if (handle) RecordOf(handle)->state = state;
}

OSErr PtrToHand(const void* source, Handle* handle, Size size) {
  if (!handle || size < 0 || (!source && size > 0)) return SetMemError(paramErr);
  *handle = NewHandle(size);
  if (!*handle) return MemError();
  if (size > 0) std::memcpy(**handle, source, static_cast<std::size_t>(size));
  return SetMemError(noErr);
}

OSErr HandToHand(Handle* handle) {
  if (!handle) return SetMemError(paramErr);
  if (!*handle) return SetMemError(nilHandleErr);
  Handle original = *handle;
  return PtrToHand(*original, handle, RecordOf(original)->size);
}

OSErr PtrAndHand(const void* source, Handle destination, Size size) {
  if (!destination) return SetMemError(nilHandleErr);
  if (size < 0 || (!source && size > 0)) return SetMemError(paramErr);
  const Size old_size = RecordOf(destination)->size;
  if (size > std::numeric_limits<Size>::max() - old_size) return SetMemError(memFullErr);
  SetHandleSize(destination, old_size + size);
  if (MemError() != noErr) return MemError();
  if (size > 0) std::memcpy(*destination + old_size, source, static_cast<std::size_t>(size));
  return SetMemError(noErr);
}

OSErr HandAndHand(Handle source, Handle destination) {
  if (!source || !destination) return SetMemError(nilHandleErr);
  const Size size = RecordOf(source)->size;
  if (source != destination) return PtrAndHand(*source, destination, size);
  // Appending a handle to itself: the block moves before it is read.
  SetHandleSize(destination, size + size);
  if (MemError() != noErr) return MemError();
  std::memcpy(*destination + size, *destination, static_cast<std::size_t>(size));
  return SetMemError(noErr);
}
