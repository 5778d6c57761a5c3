#include "GL_Memory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "resources.h"

using quillmere::SetMemError;

namespace {

std::size_t Bytes(Size size) {
  return static_cast<std::size_t>(size);
}

/// Sets MemError and gives it back.
SInt32 Status(SInt32 status) {
  SetMemError(status);
  return status;
}

/// A block of at least one byte, so that an empty one has an address too.
SInt32 Allocate(Size size, void** ptr, bool clear) {
  if (ptr) *ptr = nullptr;
  if (!ptr || size < 0) return Status(paramErr);
  const std::size_t bytes = Bytes(size > 0 ? size : 1);
  *ptr = clear ? std::calloc(bytes, 1) : std::malloc(bytes);
  return Status(*ptr ? noErr : memFullErr);
}

/// A scratch size rounded up to a multiple of 16; -1 if it is negative or would pass 31 bits.
SInt32 RoundScratchSize(SInt32 size) {
  if (size < 0 || size > std::numeric_limits<SInt32>::max() - 15) return -1;
  return (size + 15) & ~15;
}

/// The byte size of 32-bit words; -1 if it would pass 31 bits.
SInt32 WordsToBytes(SInt32 count) {
  return count < 0 || count > std::numeric_limits<SInt32>::max() / 4 ? -1 : count * 4;
}

}  // namespace

SInt32 GL_NewPtr(Size size, void** ptr) {
  return Allocate(size, ptr, false);
}

SInt32 GL_NewPtrClear(Size size, void** ptr) {
  return Allocate(size, ptr, true);
}

void GL_DisposePtr(void** ptr) {
  if (!ptr) return;
  std::free(*ptr);
  *ptr = nullptr;
}

SInt32 GL_CopyPtr(const void* source, Size size, void** copy) {
  if (!source || !copy) return noErr;
  if (size < 0) return paramErr;
  if (!*copy) {
    const SInt32 status = GL_NewPtrClear(size, copy);
    if (status) return status;
  }
  std::memcpy(*copy, source, Bytes(size));
  return noErr;
}

SInt32 GL_SetPtrSizeClear(Size old_size, Size new_size, void** ptr) {
  if (!ptr || old_size < 0 || new_size < 0) return paramErr;
  if (!*ptr) return GL_NewPtrClear(new_size, ptr);
  if (new_size <= old_size) return noErr;
  void* grown = std::realloc(*ptr, Bytes(new_size));
  if (!grown) return Status(memFullErr);
  std::memset(static_cast<char*>(grown) + old_size, 0, Bytes(new_size - old_size));
  *ptr = grown;
  return Status(noErr);
}

SInt32 GL_PtrAndPtr(void** source, Size source_size, void** dest, Size dest_size, Size offset,
                    Boolean dispose_source) {
  if (!source || !*source || source_size == 0) return noErr;
  if (!dest || source_size < 0 || dest_size < 0 || offset < 0 ||
      source_size > std::numeric_limits<Size>::max() - offset) {
    return paramErr;
  }
  const Size needed = source_size + offset;
  // The copy starts behind the old content, so a smaller offset would write past the block.
  if (offset < dest_size) return paramErr;
  if (needed > dest_size || !*dest) {
    const SInt32 status = GL_SetPtrSizeClear(dest_size, needed, dest);
    if (status) return status;
  }
  std::memcpy(static_cast<char*>(*dest) + dest_size, *source, Bytes(source_size));
  if (dispose_source) GL_DisposePtr(source);
  return noErr;
}

SInt32 GL_ConvertPtrToHandle(void** ptr, Size size, Handle* handle, Boolean dispose_ptr) {
  if (!ptr) return paramErr;
  const SInt32 status = PtrToHand(*ptr, handle, size);
  if (!status && dispose_ptr) GL_DisposePtr(ptr);
  return status;
}

SInt32 GL_HdlToPtr(Handle* handle, void** ptr, Boolean dispose_handle) {
  SInt32 status = ptr ? noErr : paramErr;
  if (ptr) *ptr = nullptr;
  if (ptr && handle && *handle) {
    const Size size = GetHandleSize(*handle);
    status = GL_NewPtr(size, ptr);
    if (!status) std::memcpy(*ptr, **handle, Bytes(size));
  }
  if (dispose_handle) GL_DisposeHandle(handle);
  return status;
}

void GL_DisposeHandle(Handle* handle) {
  if (!handle) return;
  if ((HGetState(*handle) & kHandleResourceMask) != 0) {
    ReleaseResource(*handle);
  } else {
    DisposeHandle(*handle);
  }
  *handle = nullptr;
}

SInt32 GL_CopyHandle(Handle source, Handle* copy) {
  if (!copy) return paramErr;
  *copy = source;
  return source ? HandToHand(copy) : noErr;
}

SInt32 GL_HandAndHand(Handle* source, Handle dest, Boolean dispose_source) {
  if (!source) return paramErr;
  const SInt32 status = HandAndHand(*source, dest);
  if (!status && dispose_source) GL_DisposeHandle(source);
  return status;
}

void GL_ClearHandle(Handle handle) {
  if (handle) GL_ClearBytes(*handle, GetHandleSize(handle));
}

Boolean GL_EqualHandles(Handle a, Handle b) {
  if (!a || !b) return a == b;
  const Size size = GetHandleSize(a);
  return size == GetHandleSize(b) && GL_EqualBytes(*a, *b, size);
}

void GL_ClearBytes(void* ptr, Size size) {
  GL_SetBytes(ptr, size, 0);
}

void GL_SetBytes(void* ptr, Size size, UInt8 value) {
  if (ptr && size > 0) std::memset(ptr, value, Bytes(size));
}

Boolean GL_EqualBytes(const void* a, const void* b, Size size) {
  return size <= 0 || std::memcmp(a, b, Bytes(size)) == 0;
}

Boolean GL_AreBytesClear(const void* ptr, Size size) {
  const auto* bytes = static_cast<const UInt8*>(ptr);
  return size <= 0 || std::all_of(bytes, bytes + size, [](UInt8 byte) { return byte == 0; });
}

void* GL_AllocateFromScratch(GL_ScratchArea* scratch, SInt32 size, Boolean* from_heap,
                             Boolean clear) {
  const SInt32 rounded = RoundScratchSize(size);
  if (rounded < 0) return nullptr;
  if (rounded >= scratch->capacity - scratch->used) {
    *from_heap = 1;
    scratch->error = memFullErr;
    void* block = nullptr;
    Allocate(rounded, &block, clear);
    return block;
  }
  void* block = static_cast<char*>(scratch->base) + scratch->used;
  if (clear) GL_ClearBytes(block, rounded);
  scratch->used += rounded;
  *from_heap = 0;
  return block;
}

void* GL_AllocateFromScratch32(GL_ScratchArea* scratch, SInt32 count, Boolean* from_heap,
                               Boolean clear) {
  return GL_AllocateFromScratch(scratch, WordsToBytes(count), from_heap, clear);
}

void GL_DeAllocateFromScratch(GL_ScratchArea* scratch, SInt32 size, Boolean from_heap, void* ptr) {
  const SInt32 rounded = RoundScratchSize(size);
  if (from_heap) {
    std::free(ptr);
  } else if (rounded >= 0) {
    scratch->used = std::max(scratch->used - rounded, 0);
  }
}

void GL_DeAllocateFromScratch32(GL_ScratchArea* scratch, SInt32 count, Boolean from_heap,
                                void* ptr) {
  GL_DeAllocateFromScratch(scratch, WordsToBytes(count), from_heap, ptr);
}
