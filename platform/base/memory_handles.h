/// Handles: resizable memory blocks addressed through a pointer to their start.
///
/// A handle stays the same when its block is resized; the block's address (`*handle`) may change
/// then. A null handle gives nilHandleErr, a failed allocation memFullErr. Each call sets the
/// calling thread's MemError. Handles are not locked: one thread at a time uses one handle.
#pragma once

#include "base_types.h"

using Ptr = char*;
using Handle = Ptr*;

/// State bits of a handle.
inline constexpr SInt8 kHandleLockedMask = static_cast<SInt8>(0x80);
inline constexpr SInt8 kHandlePurgeableMask = 0x40;
inline constexpr SInt8 kHandleResourceMask = 0x20;

/// The status of the calling thread's last memory call.
OSErr MemError();

/// A new block of `size` bytes, its content undefined; null on failure (see MemError). The caller
/// gives it back with DisposeHandle.
Handle NewHandle(Size size);
/// The same, zeroed.
Handle NewHandleClear(Size size);
/// Frees a handle; null is allowed.
void DisposeHandle(Handle handle);

/// The block's size in bytes; 0 for null.
Size GetHandleSize(Handle handle);
/// Changes the size, keeping the content up to the smaller one; new bytes are undefined. On failure
/// the handle is as before.
void SetHandleSize(Handle handle, Size size);

void HLock(Handle handle);
void HUnlock(Handle handle);
/// The state bits, 0 for null.
SInt8 HGetState(Handle handle);
void HSetState(Handle handle, SInt8 state);

/// Makes a new handle with a copy of `size` bytes at `source`. On failure `*handle` is null.
OSErr PtrToHand(const void* source, Handle* handle, Size size);
/// Replaces `*handle` by a new handle with a copy of its content. On failure `*handle` is null.
OSErr HandToHand(Handle* handle);
/// Appends `size` bytes at `source` to `destination`.
OSErr PtrAndHand(const void* source, Handle destination, Size size);
/// Appends the content of `source` to `destination`.
OSErr HandAndHand(Handle source, Handle destination);
