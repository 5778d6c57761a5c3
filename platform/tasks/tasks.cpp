#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <thread>

#include "multiprocessing.h"
#include "waiting.h"

using namespace quillmere::tasks;

namespace {

/// Room for the least that a thread and what it calls need, in bytes.
constexpr ByteCount kLeastStack = 0x10000;
constexpr MPTaskWeight kUsualWeight = 100;
constexpr MPTaskWeight kMostWeight = 10000;

/// Applies a running task's weight. The system's scheduler gives a thread 1.25 times the share with
/// each step that its nice value goes down; 0 is the usual one.
void ApplyWeight(const Task& task) {
  if (task.thread == 0 || task.weight == 0) return;
  const double share = static_cast<double>(task.weight) / kUsualWeight;
  const long nice = std::clamp(std::lround(-std::log(share) / std::log(1.25)), -20L, 19L);
  static_cast<void>(
      setpriority(PRIO_PROCESS, static_cast<id_t>(task.thread), static_cast<int>(nice)));
}

/// Runs the task's function to its end, one way or the other, and gives its result.
OSStatus RunEntry(TaskProc entry, void* parameter) {
  try {
    EndIfTerminated();
    return entry(parameter);
  } catch (const TaskEnd& end) {
    return end.status;
  }
}

/// What a task's thread runs; its argument is the task.
void* RunTask(void* argument) {
  Task& task = *static_cast<Task*>(argument);
  CurrentTask() = &task;
  MPTaskID id = 0;
  {
    const std::lock_guard lock(task.mutex);
    id = task.id;
    task.thread = gettid();
    ApplyWeight(task);
  }
  OSStatus result = RunEntry(task.entry, task.parameter);
  LeaveHeldRegions();
  CurrentTask() = nullptr;

  Locked<Task> found = Table<Task>().Find(id);
  if (found->terminated.load()) result = found->termination_status;
  const MPQueueID queue = found->notify_queue;
  void* const param1 = found->termination_params[0];
  void* const param2 = found->termination_params[1];
  Table<Task>().Delete(std::move(found));
  if (queue) {
    // A queue that was deleted meanwhile, or is full, has nobody who waits for this message.
    static_cast<void>(MPNotifyQueue(queue, param1, param2,
                                    reinterpret_cast<void*>(static_cast<std::intptr_t>(result))));
  }
  return nullptr;
}

/// Starts a detached thread for a task.
bool StartThread(Task* task, ByteCount stack_size) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  bool started = true;
  if (stack_size != 0) {
    started = pthread_attr_setstacksize(&attributes, std::max(stack_size, kLeastStack)) == 0;
  }
  pthread_t thread = {};
  started = started && pthread_create(&thread, &attributes, RunTask, task) == 0;
  pthread_attr_destroy(&attributes);
  return started;
}

}  // namespace

namespace quillmere::tasks {

void Task::Clear() {
  entry = nullptr;
  parameter = nullptr;
  notify_queue = 0;
  termination_params[0] = termination_params[1] = nullptr;
  termination_status = noErr;
  thread = 0;
  weight = 0;
  terminated.store(false);
  waits_in.store(nullptr);
}

Task*& CurrentTask() {
  thread_local Task* current = nullptr;
  return current;
}

void EndIfTerminated() {
  const Task* task = CurrentTask();
  // The status that counts is the task's own; see RunTask.
  if (task && task->terminated.load()) throw TaskEnd{noErr};
}

std::chrono::steady_clock::time_point DeadlineOf(Duration timeout) {
  return std::chrono::steady_clock::now() +
         std::chrono::nanoseconds(static_cast<SInt64>(DurationToNanoseconds(timeout)));
}

}  // namespace quillmere::tasks

OSStatus MPCreateTask(TaskProc entry, void* parameter, ByteCount stack_size, MPQueueID notify_queue,
                      void* termination_param1, void* termination_param2, MPTaskOptions,
                      MPTaskID* task) {
  if (!task) return paramErr;
  *task = 0;
  if (!entry) return paramErr;
  Task* made = nullptr;
  *task = Table<Task>().Create([&](Task& object) {
    object.entry = entry;
    object.parameter = parameter;
    object.notify_queue = notify_queue;
    object.termination_params[0] = termination_param1;
    object.termination_params[1] = termination_param2;
    made = &object;
  });
  if (*task == 0) return kMPInsufficientResourcesErr;
  const MPTaskID id = *task;
  if (StartThread(made, stack_size)) return noErr;
  Table<Task>().Delete(Table<Task>().Find(id));
  *task = 0;
  return kMPInsufficientResourcesErr;
}

OSStatus MPTerminateTask(MPTaskID task, OSStatus status) {
  Slot* waits_in = nullptr;
  bool itself = false;
  {
    const Locked<Task> found = Table<Task>().Find(task);
    if (!found) {
      return Table<Task>().WasDeleted(task) ? kMPInsufficientResourcesErr : kMPInvalidIDErr;
    }
    if (!found->terminated.load()) found->termination_status = status;
    found->terminated.store(true);
    waits_in = found->waits_in.load();
    itself = found.object == CurrentTask();
  }
  if (waits_in) {
    const std::lock_guard lock(waits_in->mutex);
    waits_in->changed.notify_all();
  }
  if (itself) EndIfTerminated();
  return noErr;
}

void MPExit(OSStatus status) {
  if (CurrentTask()) throw TaskEnd{status};
}

OSStatus MPSetTaskWeight(MPTaskID task, MPTaskWeight weight) {
  if (weight > kMostWeight) return paramErr;
  const Locked<Task> found = Table<Task>().Find(task);
  if (!found) return kMPInvalidIDErr;
  found->weight = std::max<MPTaskWeight>(weight, 1);
  ApplyWeight(*found);
  return noErr;
}

ItemCount MPProcessorsScheduled() {
  cpu_set_t processors;
  if (sched_getaffinity(0, sizeof(processors), &processors) == 0) {
    return static_cast<ItemCount>(std::max(CPU_COUNT(&processors), 1));
  }
  return std::max(std::thread::hardware_concurrency(), 1U);
}

// NOLINTNEXTLINE(bugprone-reserved-identifier): the service's own name
Boolean _MPIsFullyInitialized() {
  return 1;
}

OSStatus MPDelayUntil(const AbsoluteTime* time) {
  if (!time) return paramErr;
  // Beyond the clock's range there is no difference between late and never.
  const auto nanoseconds =
      static_cast<SInt64>(std::min<Nanoseconds>(AbsoluteToNanoseconds(*time), INT64_MAX));
  const std::chrono::steady_clock::time_point deadline{std::chrono::nanoseconds(nanoseconds)};
  Task* task = CurrentTask();
  if (!task) {
    std::this_thread::sleep_until(deadline);
    return noErr;
  }
  EndIfTerminated();
  std::unique_lock lock(task->mutex);
  static_cast<void>(WaitUntil(*task, lock, &deadline, [] { return false; }));
  return noErr;
}
