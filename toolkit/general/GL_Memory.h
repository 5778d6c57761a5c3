/// Heap blocks, handles and scratch space.
///
/// A "Ptr" is a plain block of the C heap. A dispose function takes the address of the variable and
/// clears it, so that a second dispose does nothing. Allocation failures come back as MemError,
/// normally -108, with the output null. Nothing here prints.
#pragma once

#include "base_types.h"
#include "memory_handles.h"

/// Allocates `size` bytes, undefined or zeroed. `-108` when there is no memory, `-50` for a
/// negative size or a null output.
SInt32 GL_NewPtr(Size size, void** ptr);
SInt32 GL_NewPtrClear(Size size, void** ptr);
/// Frees and clears; a null block does nothing.
void GL_DisposePtr(void** ptr);
/// Copies `size` bytes of `source` to `*copy`, which is allocated zeroed if it is null. A null
/// source or output does nothing and gives 0.
SInt32 GL_CopyPtr(const void* source, Size size, void** copy);
/// Grows a block from `old_size` to `new_size` bytes, the new tail zeroed. A null block is
/// allocated zeroed; a block never shrinks. A null output gives -50.
SInt32 GL_SetPtrSizeClear(Size old_size, Size new_size, void** ptr);
/// Makes sure that `*dest` holds `source_size + offset` bytes and copies the source to `*dest +
/// dest_size`. With `dispose_source` the source is freed and cleared. A null source block or a size
/// of 0 does nothing; a null output gives -50. The caller sees to it that `offset` is at least
/// `dest_size`.
SInt32 GL_PtrAndPtr(void** source, Size source_size, void** dest, Size dest_size, Size offset,
                    Boolean dispose_source);
/// A handle with a copy of the block, which is freed and cleared on success if asked.
SInt32 GL_ConvertPtrToHandle(void** ptr, Size size, Handle* handle, Boolean dispose_ptr);
/// A block with a copy of the handle's content. A null handle gives a null block and 0. The handle
/// goes if asked, on failure too.
SInt32 GL_HdlToPtr(Handle* handle, void** ptr, Boolean dispose_handle);
/// Disposes of a handle, a resource (kHandleResourceMask) through ReleaseResource, and clears the
/// variable; null does nothing.
void GL_DisposeHandle(Handle* handle);
/// A copy of a handle, null for a null source and on failure.
SInt32 GL_CopyHandle(Handle source, Handle* copy);
/// Appends the source's content to `dest`; on success the source goes if asked.
SInt32 GL_HandAndHand(Handle* source, Handle dest, Boolean dispose_source);
/// Zeroes a handle's content; null does nothing.
void GL_ClearHandle(Handle handle);
/// Two null handles are equal, one null is not; otherwise sizes and bytes decide.
Boolean GL_EqualHandles(Handle a, Handle b);
/// Sets bytes to 0 or to `value`. A null block or a size that is not above 0 does nothing.
void GL_ClearBytes(void* ptr, Size size);
void GL_SetBytes(void* ptr, Size size, UInt8 value);
/// 1 if the bytes are the same, also if there are none.
Boolean GL_EqualBytes(const void* a, const void* b, Size size);
/// 1 if all bytes are 0, also if there are none.
Boolean GL_AreBytesClear(const void* ptr, Size size);

/// A caller's memory from which short-lived blocks are taken like from a stack. Used by one thread.
struct GL_ScratchArea {
  void* base;       ///< start of the memory
  SInt32 capacity;  ///< its size in bytes
  SInt32 used;      ///< bytes handed out, a multiple of 16
  SInt32 error;     ///< -108 once a block had to come from the heap
};

/// Takes `size` bytes, rounded up to a multiple of 16. A request that is not below the free space
/// comes from the heap: `from_heap` is set and the area's `error` becomes -108. Null when the heap
/// has none either, or for a negative size.
void* GL_AllocateFromScratch(GL_ScratchArea* scratch, SInt32 size, Boolean* from_heap,
                             Boolean clear);
/// The same for a count of 32-bit words.
void* GL_AllocateFromScratch32(GL_ScratchArea* scratch, SInt32 count, Boolean* from_heap,
                               Boolean clear);
/// Gives a block back, in the reverse order of allocation: with `from_heap` it is freed, else
/// `used` goes down by the rounded size, to 0 at most.
void GL_DeAllocateFromScratch(GL_ScratchArea* scratch, SInt32 size, Boolean from_heap, void* ptr);
void GL_DeAllocateFromScratch32(GL_ScratchArea* scratch, SInt32 count, Boolean from_heap,
                                void* ptr);
