#include "ORW_MP.h"

#include <algorithm>
#include <limits>

#include "LL_Linked_Lists.h"

namespace {

constexpr ByteCount kTaskStack = 0x80000;
constexpr UInt64 kNanosecondsPerMillisecond = 1000000;
constexpr UInt32 kMillisecondsPerTick = 17;

/// The queues of a record with their flags, in the order in which they are made.
struct QueueField {
  UInt32 flag;
  MPQueueID MP_Task::*queue;
};
constexpr QueueField kQueues[] = {
    {kMP_QueueA, &MP_Task::queueA},
    {kMP_CommandQueue, &MP_Task::commandQueue},
    {kMP_CommandQueue2, &MP_Task::commandQueue2},
    {kMP_QueueD, &MP_Task::queueD},
    {kMP_TerminationQueue, &MP_Task::terminationQueue},
    {kMP_QueueE, &MP_Task::queueE},
};
constexpr MPQueueID MP_Task::*kCommandQueues[] = {&MP_Task::commandQueue, &MP_Task::commandQueue2};

void* ToParam(UInt32 value) {
  return reinterpret_cast<void*>(std::uintptr_t{value});
}

UInt32 Word(const void* param) {
  return static_cast<UInt32>(reinterpret_cast<std::uintptr_t>(param));
}

/// The status that a message's parameter carries.
SInt32 StatusOf(const void* param) {
  return static_cast<SInt32>(reinterpret_cast<std::intptr_t>(param));
}

SInt32 MakeObjects(MP_Task* task) {
  SInt32 status = noErr;
  for (const auto& [flag, queue] : kQueues) {
    if (!status && (task->objects & flag) != 0) status = MPCreateQueue(&(task->*queue));
  }
  if (!status && (task->objects & kMP_Event) != 0) status = MPCreateEvent(&task->event);
  if (!status && (task->objects & kMP_Semaphore) != 0) {
    status = MPCreateSemaphore(1, 0, &task->semaphore);
  }
  if (!status && (task->objects & kMP_CriticalRegion) != 0) {
    status = MPCreateCriticalRegion(&task->criticalRegion);
  }
  return status;
}

/// The sub-task elements of a parent, for range loops.
class SubTasks {
 public:
  explicit SubTasks(const MP_Task* parent) : head_(parent->subTasks) {}

  struct Iterator {
    MP_SubTaskElement* at;
    MP_Task& operator*() const { return at->task; }
    Iterator& operator++() {
      at = at->next;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return at != other.at; }
  };
  Iterator begin() const { return {static_cast<MP_SubTaskElement*>(head_)}; }
  Iterator end() const { return {nullptr}; }

 private:
  void* head_;
};

/// The first sub-task for which `test(task)` holds, or null.
template <class Test>
MP_Task* FindSubTask(const MP_Task* parent, Test test) {
  for (MP_Task& task : SubTasks(parent)) {
    if (test(task)) return &task;
  }
  return nullptr;
}

template <class Test>
SInt32 CountSubTasks(const MP_Task* parent, Test test) {
  SInt32 count = 0;
  for (const MP_Task& task : SubTasks(parent))
    count += test(task) ? 1 : 0;
  return count;
}

template <class Test>
void InvalidateFirst(const MP_Task* parent, Test test) {
  if (MP_Task* task = FindSubTask(parent, test)) task->taskID = 0;
}

/// Sends the nil message to the sub-tasks for which `test(task)` holds.
template <class Test>
SInt32 SendNilMessage(const MP_Task* parent, void* param, Test test) {
  for (const MP_Task& task : SubTasks(parent)) {
    if (!test(task)) continue;
    for (const auto queue : kCommandQueues) {
      if (!(task.*queue)) continue;
      const SInt32 status = MPNotifyQueue(task.*queue, ToParam(parent->type), param, nullptr);
      if (status) return status;
    }
  }
  return noErr;
}

/// Disposes of the sub-tasks for which `test(task)` holds and deletes their elements.
template <class Test>
void DisposeSubTasks(MP_Task* parent, Test test) {
  auto* element = static_cast<MP_SubTaskElement*>(parent->subTasks);
  while (element) {
    void* disposed = element;
    MP_Task* task = &element->task;
    element = element->next;
    if (!test(*task)) continue;
    MP_DisposeTask(task);
    LL_DeletePtr(&parent->subTasks, &disposed);
  }
}

/// Waits until `pending()` is 0, taking messages that have `done` as their first parameter and
/// calling `invalidate()` for each.
template <class Pending, class Invalidate>
SInt32 AwaitReports(const MP_Task* parent, UInt32 done, Pending pending, Invalidate invalidate) {
  while (pending() > 0) {
    void* message = nullptr;
    const SInt32 status =
        MPWaitOnQueue(parent->commandQueue, &message, nullptr, nullptr, kDurationForever);
    if (status) return status;
    if (Word(message) == done) invalidate();
  }
  return noErr;
}

/// Deletes by `destroy(*id)` and clears, if there is something.
SInt32 DeleteAndClear(UInt32* id, OSStatus (*destroy)(UInt32)) {
  if (!id || *id == 0) return noErr;
  const SInt32 status = destroy(*id);
  *id = 0;
  return status;
}

SInt32 AddElement(MP_Task* parent, void** added) {
  return LL_AddNewPtr(sizeof(MP_SubTaskElement), nullptr, &parent->subTasks, added);
}

bool IsValid(const MP_Task& task) {
  return task.taskID != 0;
}

bool Any(const MP_Task&) {
  return true;
}

SInt32 DelayNanoseconds(UInt64 nanoseconds) {
  const AbsoluteTime until = UpTime() + NanosecondsToAbsolute(nanoseconds);
  return MPDelayUntil(&until);
}

}  // namespace

SInt32 MP_CreateTask(MP_Task* task) {
  const SInt32 status = MakeObjects(task);
  if (status) return status;
  return MPCreateTask(task->entry, task, kTaskStack, task->terminationQueue,
                      ToParam(task->terminationParam1), ToParam(task->terminationParam2), 0,
                      &task->taskID);
}

SInt32 MP_CloseTask(MP_Task* task, UInt32 message, void* param, UInt32 expected1, UInt32 expected2,
                    SInt32 timeoutSeconds) {
  if (task->taskID == 0 || task->closed) return noErr;
  for (const auto queue : kCommandQueues) {
    if (!(task->*queue)) continue;
    SInt32 status = MP_EmptyQueue(task->*queue);
    if (!status) status = MPNotifyQueue(task->*queue, ToParam(message), nullptr, param);
    if (status) return status;
  }
  const auto timeout = static_cast<Duration>(
      std::clamp<SInt64>(SInt64{timeoutSeconds} * kDurationSecond, 0, kDurationForever));
  while (true) {
    void* param1 = nullptr;
    void* param2 = nullptr;
    void* result = nullptr;
    if (MPWaitOnQueue(task->terminationQueue, &param1, &param2, &result, timeout)) {
      return MP_NoAnswerErr;
    }
    if (expected1 != 0 && Word(param1) != expected1) continue;
    if (expected2 != 0 && Word(param2) != expected2) continue;
    task->taskID = 0;
    task->closed = 1;
    MP_DisposeTask(task);
    return StatusOf(result);
  }
}

SInt32 MP_TerminateTask(MP_Task* task, Boolean wait, SInt32 terminationStatus) {
  if (task->taskID == 0) return noErr;
  SInt32 status = MPTerminateTask(task->taskID, terminationStatus);
  task->taskID = 0;
  if (status == kMPInsufficientResourcesErr) status = noErr;
  if (!wait || status) return status == kMPTimeoutErr ? MP_NoAnswerErr : status;
  void* result = nullptr;
  status = MPWaitOnQueue(task->terminationQueue, nullptr, nullptr, &result, kDurationForever);
  MP_DisposeTask(task);
  return status ? MP_NoAnswerErr : StatusOf(result);
}

void MP_DisposeTask(MP_Task* task) {
  for (const auto& [flag, queue] : kQueues) {
    if ((task->objects & flag) != 0) MP_DeleteQueue(&(task->*queue));
  }
  MP_DeleteSemaphore(&task->semaphore);
  MP_DeleteEvent(&task->event);
  MP_DeleteCriticalRegion(&task->criticalRegion);
  if (task->disposeProc) task->disposeProc(task->userData);
  task->userData = nullptr;
  MP_DisposeSubTasks(task);
}

SInt32 MP_AddSubTask(MP_Task* parent, MP_Task** task) {
  void* added = nullptr;
  const SInt32 status = AddElement(parent, &added);
  *task = status ? nullptr : &static_cast<MP_SubTaskElement*>(added)->task;
  return status;
}

SInt32 MP_AddSubTaskPtr(MP_Task* parent, MP_Task* task) {
  void* added = nullptr;
  const SInt32 status = AddElement(parent, &added);
  if (!status) static_cast<MP_SubTaskPtrElement*>(added)->task = task;
  return status;
}

SInt32 MP_CountValidSubTasks(const MP_Task* parent) {
  return CountSubTasks(parent, IsValid);
}

SInt32 MP_CountValidSubTasksOfType(const MP_Task* parent, OSType type) {
  return CountSubTasks(parent,
                       [&](const MP_Task& task) { return IsValid(task) && task.type == type; });
}

MP_Task* MP_GetSubTaskByNumber(const MP_Task* parent, SInt32 number) {
  return FindSubTask(parent,
                     [&](const MP_Task& task) { return IsValid(task) && task.number == number; });
}

MP_Task* MP_GetSubTaskByTypeAndIndex(const MP_Task* parent, OSType type, UInt32 subType,
                                     SInt32 index) {
  return FindSubTask(parent, [&](const MP_Task& task) {
    return task.type == type && task.subType == subType && index-- == 0;
  });
}

MP_Task* MP_GetSubTaskPtrByTypeAndIndex(const MP_Task* parent, OSType type, UInt32 subType,
                                        SInt32 index) {
  for (auto* at = static_cast<MP_SubTaskPtrElement*>(parent->subTasks); at; at = at->next) {
    if (at->task->type == type && at->task->subType == subType && index-- == 0) return at->task;
  }
  return nullptr;
}

MP_SubTaskElement* MP_FindSubTaskLE_ByTypeAndNumber(const MP_Task* parent, OSType type,
                                                    SInt32 number) {
  auto* at = static_cast<MP_SubTaskElement*>(parent->subTasks);
  while (at && (at->task.type != type || at->task.number != number))
    at = at->next;
  return at;
}

SInt32 MP_SendNilMessageToAllSubTasks(const MP_Task* parent, void* param) {
  return SendNilMessage(parent, param, Any);
}

SInt32 MP_SendNilMessageToAllSubTasksOfType(const MP_Task* parent, OSType type, void* param) {
  return SendNilMessage(parent, param, [&](const MP_Task& task) { return task.type == type; });
}

void MP_InvalidateAnySubTask(MP_Task* parent) {
  InvalidateFirst(parent,
                  [&](const MP_Task& task) { return IsValid(task) && task.type != parent->type; });
}

void MP_InvalidateAnySubTaskOfType(MP_Task* parent, OSType type) {
  InvalidateFirst(parent, [&](const MP_Task& task) { return IsValid(task) && task.type == type; });
}

void MP_InvalidateSubTaskByTypeAndNumber(MP_Task* parent, OSType type, SInt32 number) {
  if (auto* element = MP_FindSubTaskLE_ByTypeAndNumber(parent, type, number)) {
    element->task.taskID = 0;
  }
}

void MP_RemoveSubTaskFromList(MP_Task* parent, MP_Task* task) {
  for (auto* at = static_cast<MP_SubTaskElement*>(parent->subTasks); at; at = at->next) {
    if (&at->task != task) continue;
    void* element = at;
    LL_DeletePtr(&parent->subTasks, &element);
    return;
  }
}

void MP_RemoveSubTaskPtrFromList(MP_Task* parent, MP_Task* task) {
  for (auto* at = static_cast<MP_SubTaskPtrElement*>(parent->subTasks); at; at = at->next) {
    if (at->task != task) continue;
    void* element = at;
    LL_DeletePtr(&parent->subTasks, &element);
    return;
  }
}

void MP_DisposeSubTasks(MP_Task* parent) {
  DisposeSubTasks(parent, Any);
}

void MP_DisposeSubTasksOfType(MP_Task* parent, OSType type) {
  DisposeSubTasks(parent, [&](const MP_Task& task) { return task.type == type; });
}

void MP_DisposeSubTaskPtrs(MP_Task* parent) {
  for (auto* at = static_cast<MP_SubTaskPtrElement*>(parent->subTasks); at; at = at->next)
    MP_DisposeTask(at->task);
  LL_DisposeLinkedList(&parent->subTasks);
}

SInt32 MP_CloseAllSubTasks(MP_Task* parent, void* param, UInt32 doneMessage) {
  SInt32 status = MP_SendNilMessageToAllSubTasks(parent, param);
  if (status) return status;
  status = AwaitReports(
      parent, doneMessage, [&] { return MP_CountValidSubTasks(parent); },
      [&] {
        const SInt32 before = MP_CountValidSubTasks(parent);
        MP_InvalidateAnySubTask(parent);
        // Sub-tasks of the parent's own type have to be counted off too.
        if (MP_CountValidSubTasks(parent) == before) InvalidateFirst(parent, IsValid);
      });
  MP_DisposeSubTasks(parent);
  return status;
}

SInt32 MP_CloseAllSubTasksOfType(MP_Task* parent, OSType type, void* param) {
  SInt32 status = MP_SendNilMessageToAllSubTasksOfType(parent, type, param);
  if (status) return status;
  status = AwaitReports(
      parent, type, [&] { return MP_CountValidSubTasksOfType(parent, type); },
      [&] { MP_InvalidateAnySubTaskOfType(parent, type); });
  MP_DisposeSubTasksOfType(parent, type);
  return status;
}

SInt32 MP_EmptyQueue(MPQueueID queue) {
  SInt32 status = noErr;
  while (!status)
    status = MPWaitOnQueue(queue, nullptr, nullptr, nullptr, kDurationImmediate);
  return status == kMPTimeoutErr ? noErr : status;
}

SInt32 MP_DeleteQueue(MPQueueID* queue) {
  return DeleteAndClear(queue, MPDeleteQueue);
}

SInt32 MP_DeleteEvent(MPEventID* event) {
  return DeleteAndClear(event, MPDeleteEvent);
}

SInt32 MP_DeleteSemaphore(MPSemaphoreID* semaphore) {
  return DeleteAndClear(semaphore, MPDeleteSemaphore);
}

SInt32 MP_DeleteCriticalRegion(MPCriticalRegionID* region) {
  return DeleteAndClear(region, MPDeleteCriticalRegion);
}

SInt32 MP_RecreateQueue(MPQueueID* queue) {
  MP_DeleteQueue(queue);
  return MPCreateQueue(queue);
}

SInt32 MP_RecreateEvent(MPEventID* event) {
  MP_DeleteEvent(event);
  return MPCreateEvent(event);
}

SInt32 MP_RecreateCriticalRegion(MPCriticalRegionID* region) {
  MP_DeleteCriticalRegion(region);
  return MPCreateCriticalRegion(region);
}

SInt32 MP_RecreateSemaphore(MPSemaphoreCount maximum, MPSemaphoreCount initial,
                            MPSemaphoreID* semaphore) {
  MP_DeleteSemaphore(semaphore);
  return MPCreateSemaphore(maximum, initial, semaphore);
}

void* MP_NewPtrClear(ByteCount size) {
  return MPAllocateAligned(size, kMPAllocate32ByteAligned, kMPAllocateClearMask);
}

UInt64 MP_AbsoluteToMilliSecond(AbsoluteTime time) {
  return AbsoluteToNanoseconds(time) / kNanosecondsPerMillisecond;
}

UInt64 MP_DurationToMilliSecond(Duration duration) {
  return DurationToNanoseconds(duration) / kNanosecondsPerMillisecond;
}

AbsoluteTime MP_MilliSecondToAbsolute(UInt64 milliseconds) {
  constexpr UInt64 kMost = std::numeric_limits<UInt64>::max();
  if (milliseconds > kMost / kNanosecondsPerMillisecond) return kMost;
  return NanosecondsToAbsolute(milliseconds * kNanosecondsPerMillisecond);
}

Duration MP_MilliSecondToDuration(UInt64 milliseconds) {
  return AbsoluteToDuration(MP_MilliSecondToAbsolute(milliseconds));
}

SInt32 MP_DelayMillisec(UInt32 milliseconds) {
  return DelayNanoseconds(milliseconds * kNanosecondsPerMillisecond);
}

SInt32 MP_DelaySec(UInt32 seconds) {
  return DelayNanoseconds(seconds * UInt64{1000} * kNanosecondsPerMillisecond);
}

SInt32 MP_DelayTicks(UInt32 ticks) {
  return DelayNanoseconds(ticks * UInt64{kMillisecondsPerTick} * kNanosecondsPerMillisecond);
}
