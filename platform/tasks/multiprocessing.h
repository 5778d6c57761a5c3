/// Tasks, and what they talk through: message queues, semaphores, events, critical regions.
///
/// A task is a thread of its own that runs one function. Every object is named by a 32-bit number,
/// 0 meaning none, so that a number can travel in a message or in an event's parameter. A number
/// that names nothing, that named an object which has been deleted since, or that names an object
/// of another kind gives kMPInvalidIDErr. All operations may be called from any thread, tasks or
/// not.
///
/// Deleting an object is safe at any time: whoever waits on it wakes with kMPDeletedErr. There can
/// be 16384 objects of a kind at a time.
///
/// A time to wait is a Duration: 0 does not wait, kDurationForever has no limit, other positive
/// numbers are milliseconds, negative ones microseconds. A wait that ran out gives kMPTimeoutErr.
///
/// Ending a task from outside. A thread cannot be stopped wherever it happens to be, so a task that
/// was terminated goes on until it next calls one of the operations that wait (MPWaitOnQueue,
/// MPWaitOnSemaphore, MPWaitForEvent, MPEnterCriticalRegion, MPDelayUntil), or ends at once if it
/// waits in one. There its stack is unwound: local objects are destroyed, critical regions that it
/// still holds are left, and the operation does not return. Code that runs in tasks must not call
/// these operations from destructors or functions declared noexcept.
#pragma once

#include "base_types.h"
#include "up_time.h"

using MPTaskID = UInt32;
using MPQueueID = UInt32;
using MPSemaphoreID = UInt32;
using MPEventID = UInt32;
using MPCriticalRegionID = UInt32;

using MPSemaphoreCount = UInt32;
using MPEventFlags = UInt32;
using MPTaskWeight = UInt32;
using MPTaskOptions = UInt32;

/// A task's function; the result is the third parameter of its termination message.
using TaskProc = OSStatus (*)(void* parameter);

inline constexpr OSStatus kMPDeletedErr = -29295;
inline constexpr OSStatus kMPTimeoutErr = -29296;
/// No memory or no thread; a semaphore at its maximum; a region that the caller does not hold; a
/// task that had ended before it was terminated.
inline constexpr OSStatus kMPInsufficientResourcesErr = -29298;
inline constexpr OSStatus kMPInvalidIDErr = -29299;

// Queues. Messages of three pointer-sized parameters come out in the order in which they went in.

/// Makes an empty queue. -50 for a null output.
OSStatus MPCreateQueue(MPQueueID* queue);
/// Deletes a queue with the messages in it.
OSStatus MPDeleteQueue(MPQueueID queue);
/// Appends a message and wakes one waiting thread. Never waits.
OSStatus MPNotifyQueue(MPQueueID queue, void* param1, void* param2, void* param3);
/// Takes the first message, waiting for one if there is none. Outputs may be null; they are written
/// at status 0 only.
OSStatus MPWaitOnQueue(MPQueueID queue, void** param1, void** param2, void** param3,
                       Duration timeout);

// Semaphores.

/// Makes a semaphore that stands at `initial` and counts up to `maximum`. -50 for a null output, a
/// maximum of 0 or an initial value above the maximum.
OSStatus MPCreateSemaphore(MPSemaphoreCount maximum, MPSemaphoreCount initial,
                           MPSemaphoreID* semaphore);
OSStatus MPDeleteSemaphore(MPSemaphoreID semaphore);
/// Counts up by 1; kMPInsufficientResourcesErr at the maximum, which stays.
OSStatus MPSignalSemaphore(MPSemaphoreID semaphore);
/// Counts down by 1, waiting while the semaphore stands at 0.
OSStatus MPWaitOnSemaphore(MPSemaphoreID semaphore, Duration timeout);

// Events: 32 flags.

/// Makes an event with no flag set. -50 for a null output.
OSStatus MPCreateEvent(MPEventID* event);
OSStatus MPDeleteEvent(MPEventID event);
/// Sets the flags of `flags` and leaves the others.
OSStatus MPSetEvent(MPEventID event, MPEventFlags flags);
/// Waits until any flag is set, gives all that are (`flags` may be null) and clears them.
OSStatus MPWaitForEvent(MPEventID event, MPEventFlags* flags, Duration timeout);

// Critical regions: held by one thread at a time, which may enter again.

/// Makes a region that nobody holds. -50 for a null output.
OSStatus MPCreateCriticalRegion(MPCriticalRegionID* region);
/// Deletes a region, held or not.
OSStatus MPDeleteCriticalRegion(MPCriticalRegionID region);
/// Enters, waiting while another thread holds the region.
OSStatus MPEnterCriticalRegion(MPCriticalRegionID region, Duration timeout);
/// Leaves once; the region is free when every entry has been left. kMPInsufficientResourcesErr if
/// the calling thread does not hold it.
OSStatus MPExitCriticalRegion(MPCriticalRegionID region);

// Tasks.

/// Starts a task that calls `entry` with `parameter` on a stack of `stack_size` bytes (0: the
/// system's usual size). `*task` is written before the task runs. When the task has ended, and its
/// number means nothing any more, the message (`termination_param1`, `termination_param2`, its
/// result) is put into `notify_queue`, unless that is 0. No option has a meaning. -50 for a null
/// function or output; kMPInsufficientResourcesErr without a thread; on failure `*task` is 0.
OSStatus MPCreateTask(TaskProc entry, void* parameter, ByteCount stack_size, MPQueueID notify_queue,
                      void* termination_param1, void* termination_param2, MPTaskOptions options,
                      MPTaskID* task);
/// Asks a task to end with `status` as its result, as told at the head of this page, and returns at
/// once; the termination message tells when it has. A task that ended by itself before gives
/// kMPInsufficientResourcesErr: its message has been sent. On the calling task it is MPExit.
OSStatus MPTerminateTask(MPTaskID task, OSStatus status);
/// Ends the calling task with `status` as its result, unwinding its stack, and does not return.
/// Does nothing on a thread that is no task.
void MPExit(OSStatus status);
/// Sets a task's share of the processors beside others: 1 to 10000, 100 being that of a new task. A
/// hint: what the system does not allow is left out; raising the share above 100, or again after
/// lowering it, needs a privilege. 0 counts as 1; above 10000 gives -50.
OSStatus MPSetTaskWeight(MPTaskID task, MPTaskWeight weight);

/// Number of processors that this process may run on, at least 1.
ItemCount MPProcessorsScheduled();
/// 1: tasks can be made.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the service's own name
Boolean _MPIsFullyInitialized();

/// Waits until UpTime has reached `time`; a time in the past returns at once.
OSStatus MPDelayUntil(const AbsoluteTime* time);

// Memory for tasks.

/// Alignments of MPAllocateAligned as powers of two, up to kMPAllocateMaxAlignment.
inline constexpr UInt8 kMPAllocateDefaultAligned = 0;
inline constexpr UInt8 kMPAllocate32ByteAligned = 5;
inline constexpr UInt8 kMPAllocateMaxAlignment = 16;
/// Option of MPAllocateAligned: the block is zeroed.
inline constexpr UInt32 kMPAllocateClearMask = 1;

/// A block of `size` bytes at a multiple of 2 to the power of `alignment` (0: fit for anything), to
/// be freed with MPFree. Null without memory or for an alignment above the maximum. A size of 0 has
/// an address too.
void* MPAllocateAligned(ByteCount size, UInt8 alignment, UInt32 options);
/// Frees a block of MPAllocateAligned; null does nothing.
void MPFree(void* block);
