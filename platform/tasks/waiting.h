/// How the task service waits, and how a task ends while it does.
#pragma once

#include <atomic>
#include <chrono>

#include "multiprocessing.h"
#include "object_table.h"

namespace quillmere::tasks {

/// A task. The two atomics are shared without the lock.
struct Task : Slot {
  static constexpr UInt32 kKind = 1;

  TaskProc entry = nullptr;
  void* parameter = nullptr;
  MPQueueID notify_queue = 0;
  void* termination_params[2] = {};
  OSStatus termination_status = noErr;
  int thread = 0;           ///< the system's number of the running thread, 0 before it runs
  MPTaskWeight weight = 0;  ///< 0: as the system has it
  std::atomic<bool> terminated = false;
  std::atomic<Slot*> waits_in = nullptr;  ///< where the task waits, if it does

  void Clear();
};

/// Unwinds the stack of a task that is to end; caught where the task began.
struct TaskEnd {
  OSStatus status;
};

/// The task that the calling thread is; null for other threads.
Task*& CurrentTask();

/// Ends the calling task if it has been terminated.
void EndIfTerminated();

/// The time point at which a timeout that has a limit, and is not 0, runs out.
std::chrono::steady_clock::time_point DeadlineOf(Duration timeout);

/// Waits, with the slot locked, until `ready()` or the deadline; no deadline for null. False if it
/// passed. A task that is terminated ends here.
template <class Ready>
bool WaitUntil(Slot& slot, std::unique_lock<std::mutex>& lock,
               const std::chrono::steady_clock::time_point* deadline, Ready ready) {
  Task* task = CurrentTask();
  // Announced before the flag is looked at: who sets the flag looks here afterwards.
  if (task) task->waits_in.store(&slot);
  const auto awake = [&] { return ready() || (task && task->terminated.load()); };
  bool woken = true;
  if (deadline) {
    woken = slot.changed.wait_until(lock, *deadline, awake);
  } else {
    slot.changed.wait(lock, awake);
  }
  if (task) {
    task->waits_in.store(nullptr);
    if (task->terminated.load()) {
      // The signal that this thread may have had was meant for a thread that takes something.
      slot.changed.notify_one();
      EndIfTerminated();
    }
  }
  return woken;
}

/// The same with a timeout; a timeout of 0 only asks.
template <class Ready>
bool WaitFor(Slot& slot, std::unique_lock<std::mutex>& lock, Duration timeout, Ready ready) {
  EndIfTerminated();
  if (ready()) return true;
  if (timeout == kDurationImmediate) return false;
  if (timeout == kDurationForever) return WaitUntil(slot, lock, nullptr, ready);
  const auto deadline = DeadlineOf(timeout);
  return WaitUntil(slot, lock, &deadline, ready);
}

/// Waits on the object that `id` names until it has what `has(object)` asks for, and lets
/// `take(object)` take it. The statuses of the operations that wait.
template <class Object, class Has, class Take>
OSStatus WaitOn(UInt32 id, Duration timeout, Has has, Take take) {
  EndIfTerminated();
  Locked<Object> found = Table<Object>().Find(id);
  if (!found) return kMPInvalidIDErr;
  const bool woken =
      WaitFor(*found, found.lock, timeout, [&] { return found->id != id || has(*found); });
  if (!woken) return kMPTimeoutErr;
  if (found->id != id) return kMPDeletedErr;
  take(*found);
  return noErr;
}

/// Deletes the object that `id` names.
template <class Object>
OSStatus DeleteObject(UInt32 id) {
  Locked<Object> found = Table<Object>().Find(id);
  if (!found) return kMPInvalidIDErr;
  Table<Object>().Delete(std::move(found));
  return noErr;
}

/// Leaves every critical region that the calling thread still holds.
void LeaveHeldRegions();

}  // namespace quillmere::tasks
