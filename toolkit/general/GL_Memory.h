/// Heap blocks ("Ptr"), handles and a scratch area.
///
/// A dispose function takes the address of the variable and clears it, so that a second dispose
/// does nothing. Sizes are in bytes. Allocation failures give memFullErr (-108) and a null output.
#pragma once

#include "base_types.h"
#include "memory_handles.h"

/// A new block; the caller frees it with GL_DisposePtr. Its bytes are undefined, or 0 with Clear.
SInt32 GL_NewPtr(Size size, void** ptr);
SInt32 GL_NewPtrClear(Size size, void** ptr);
template <class T>
SInt32 GL_NewPtr(Size size, T** ptr) {
  void* block = nullptr;
  const SInt32 status = GL_NewPtr(size, &block);
  *ptr = static_cast<T*>(block);
  return status;
}
template <class T>
SInt32 GL_NewPtrClear(Size size, T** ptr) {
  void* block = nullptr;
  const SInt32 status = GL_NewPtrClear(size, &block);
  *ptr = static_cast<T*>(block);
  return status;
}
/// Frees and clears; null does nothing.
void GL_DisposePtr(void** ptr);
template <class T>
void GL_DisposePtr(T** ptr) {
  if (!ptr) return;
  void* block = *ptr;
  *ptr = nullptr;
  GL_DisposePtr(&block);
}
/// Copies `size` bytes to `*copy`, which is allocated when null. A null source or output does
/// nothing and gives 0.
SInt32 GL_CopyPtr(const void* source, Size size, void** copy);
/// Grows a block, zeroing the new tail; it never shrinks. A null block is allocated, zeroed. A null
/// output gives paramErr. On failure the block is as before.
SInt32 GL_SetPtrSizeClear(Size old_size, Size new_size, void** ptr);
/// Copies the source behind the `dest_size` bytes of `*dest`, growing it to at least `source_size`
/// + `offset` bytes; that must leave room, so `offset` is normally `dest_size`, and paramErr is the
/// answer where it does not. An empty source gives 0, a null output paramErr. On request the source
/// is freed and its variable cleared.
SInt32 GL_PtrAndPtr(void** source, Size source_size, void** dest, Size dest_size, Size offset,
                    Boolean dispose_source);

/// A new handle with the block's content; the block is freed on success if asked.
SInt32 GL_ConvertPtrToHandle(void** ptr, Size size, Handle* handle, Boolean dispose_ptr);
/// A new block with the handle's content; null and 0 for a null handle. The handle goes if asked,
/// on failure too.
SInt32 GL_HdlToPtr(Handle* handle, void** ptr, Boolean dispose_handle);
/// Disposes of a handle and clears the variable.
void GL_DisposeHandle(Handle* handle);
/// A copy of the handle; a null source gives a null copy and 0.
SInt32 GL_CopyHandle(Handle source, Handle* copy);
/// Appends the source's content to `dest`; disposes of the source if asked, when that succeeded.
SInt32 GL_HandAndHand(Handle* source, Handle dest, Boolean dispose_source);
/// Zeroes a handle's content.
void GL_ClearHandle(Handle handle);
/// 1 if both are null or both hold the same bytes.
Boolean GL_EqualHandles(Handle a, Handle b);

void GL_ClearBytes(void* ptr, Size size);
void GL_SetBytes(void* ptr, Size size, UInt8 value);
/// 1 if the two blocks hold the same `size` bytes.
Boolean GL_EqualBytes(const void* a, const void* b, Size size);
/// 1 if all bytes of the block are 0.
Boolean GL_AreBytesClear(const void* ptr, Size size);

/// A caller's memory from which short-lived blocks are taken like from a stack: they are released
/// in the reverse order of allocation. Sizes are rounded up to multiples of 16 bytes. One thread
/// uses one scratch area.
struct GL_Scratch {
  void* base;
  SInt32 capacity;  ///< bytes
  SInt32 used;      ///< bytes handed out
  SInt32 error;     ///< memFullErr once a block had to come from the heap
};
/// A block of `size` bytes, zeroed if `clear` is set. A request that is not smaller than the free
/// space comes from the heap, with `*from_heap` 1. Null when the heap has none either.
void* GL_AllocateFromScratch(GL_Scratch* scratch, SInt32 size, Boolean* from_heap, Boolean clear);
/// The same for a count of 32-bit words.
void* GL_AllocateFromScratch32(GL_Scratch* scratch, SInt32 count, Boolean* from_heap,
                               Boolean clear);
/// Releases what the allocating call of the same size handed out.
void GL_DeAllocateFromScratch(GL_Scratch* scratch, SInt32 size, Boolean from_heap, void* ptr);
void GL_DeAllocateFromScratch32(GL_Scratch* scratch, SInt32 count, Boolean from_heap, void* ptr);
