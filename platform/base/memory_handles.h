/// Handles: resizable memory blocks addressed through a pointer to their start.
///
/// A handle stays the same when its block is resized; the block's address (`*handle`) may change
/// then, unless the handle is locked. A null handle gives nilHandleErr, a failed allocation
/// memFullErr. Each call sets the calling thread's MemError. There is no protection between
/// threads: one thread at a time uses one handle.
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

namespace quillmere {
/// Sets the calling thread's MemError, for memory calls of other modules, and gives it back.
OSErr SetMemError(OSStatus status);
}  // namespace quillmere

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
/// the handle is as before. A locked handle's block does not move: where it has no room to grow the
/// status is memFullErr.
void SetHandleSize(Handle handle, Size size);

/// Sets or clears kHandleLockedMask.
void HLock(Handle handle);
void HUnlock(Handle handle);
/// The state bits, 0 for null.
SInt8 HGetState(Handle handle);
/// Sets all state bits at once, usually to what HGetState gave before.
void HSetState(Handle handle, SInt8 state);

/// Makes a new handle with a copy of `size` bytes at `source`. On failure `*handle` is null.
OSErr PtrToHand(const void* source, Handle* handle, Size size);
/// Replaces `*handle` by a new handle with a copy of its content. On failure `*handle` is null.
OSErr HandToHand(Handle* handle);
/// Appends `size` bytes at `source` to `destination`.
OSErr PtrAndHand(const void* source, Handle destination, Size size);
/// Appends the content of `source` to `destination`.
OSErr HandAndHand(Handle source, Handle destination);
