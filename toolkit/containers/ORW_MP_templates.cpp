// Patterns for tasks: one for each processor, one that ticks, a pair that takes turns.
#include <limits>

#include "GL_Memory.h"
#include "ORW_MP.h"

namespace {

constexpr SInt32 kUnknownRequest = -1;
constexpr Duration kTick = 10;  ///< milliseconds
constexpr MPTaskWeight kHighWeight = 9999;
constexpr MPTaskWeight kLowWeight = 0;

void* ToParam(SInt32 value) {
  return reinterpret_cast<void*>(std::intptr_t{value});
}

SInt32 FromParam(const void* param) {
  return static_cast<SInt32>(reinterpret_cast<std::intptr_t>(param));
}

/// A semaphore that goes with its scope, also when the task is terminated.
class ScopedSemaphore {
 public:
  ScopedSemaphore() : status_(MPCreateSemaphore(1, 0, &id_)) {}
  ~ScopedSemaphore() { MP_DeleteSemaphore(&id_); }
  ScopedSemaphore(const ScopedSemaphore&) = delete;
  ScopedSemaphore& operator=(const ScopedSemaphore&) = delete;
  SInt32 status() const { return status_; }
  MPSemaphoreID id() const { return id_; }

 private:
  MPSemaphoreID id_ = 0;
  SInt32 status_;
};

SInt32 StartTask(MP_TemplTask* record, MPQueueID notification_queue) {
  SInt32 status = MPCreateQueue(&record->requestQueue);
  if (!status) status = MPCreateQueue(&record->resultQueue);
  if (status) return status;
  return MPCreateTask(MP_MyTaskTempl, record, 0, notification_queue, nullptr, nullptr, 0,
                      &record->taskID);
}

/// Hands the turn on and waits for its own again and again.
SInt32 TakeTurns(MPSemaphoreID own, MPSemaphoreID other, bool begins) {
  SInt32 status = begins ? MPSignalSemaphore(other) : noErr;
  while (!status) {
    status = MPWaitOnSemaphore(own, kDurationForever);
    if (!status) status = MPSignalSemaphore(other);
  }
  return status;
}

}  // namespace

SInt32 MP_CreateTasksTempl(MP_TemplTask** records, SInt32* taskCount,
                           MPQueueID* notificationQueue) {
  if (!records || !taskCount || !notificationQueue) return paramErr;
  *records = nullptr;
  *taskCount = 0;
  *notificationQueue = 0;
  if (!_MPIsFullyInitialized()) return kMPInsufficientResourcesErr;
  const auto count = static_cast<SInt32>(MPProcessorsScheduled());
  void* block = nullptr;
  SInt32 status = GL_NewPtrClear(count * Size{sizeof(MP_TemplTask)}, &block);
  if (status) return status;
  auto* made = static_cast<MP_TemplTask*>(block);
  MPQueueID queue = 0;
  status = MPCreateQueue(&queue);
  for (SInt32 i = 0; !status && i < count; ++i)
    status = StartTask(&made[i], queue);
  if (status) {
    MP_StopTasksTempl(made, count, queue);
    return status;
  }
  *records = made;
  *taskCount = count;
  *notificationQueue = queue;
  return noErr;
}

OSStatus MP_MyTaskTempl(void* record) {
  const auto& task = *static_cast<const MP_TemplTask*>(record);
  while (true) {
    void* param = nullptr;
    SInt32 status = MPWaitOnQueue(task.requestQueue, &param, nullptr, nullptr, kDurationForever);
    if (status) return status;
    const SInt32 request = FromParam(param);
    // The work on items `start` to `start + count - 1` of the record goes here; its status is the
    // answer.
    const bool known = request == kMP_TemplWork || request == kMP_TemplStop;
    const SInt32 answer = known ? noErr : kUnknownRequest;
    status = MPNotifyQueue(task.resultQueue, ToParam(answer), nullptr, nullptr);
    if (status || request != kMP_TemplWork) return status ? status : answer;
  }
}

SInt32 MP_NotifyTasksTempl(MP_TemplTask* records, SInt32 start, SInt32 total, SInt32 taskCount) {
  if (!records || taskCount < 1 || total < 0) return paramErr;
  if (SInt64{start} + total > std::numeric_limits<SInt32>::max()) return paramErr;
  const SInt32 share = total / taskCount;
  SInt32 status = noErr;
  SInt32 notified = 0;
  for (; !status && notified < taskCount; ++notified, start += share) {
    MP_TemplTask& task = records[notified];
    task.start = start;
    task.count = share;
    status = MPNotifyQueue(task.requestQueue, ToParam(kMP_TemplWork), nullptr, nullptr);
    if (status) break;
  }
  // Whoever got a request is waited for, so that no answer is left over for the next round.
  for (SInt32 i = 0; i < notified; ++i) {
    void* answer = nullptr;
    SInt32 result =
        MPWaitOnQueue(records[i].resultQueue, &answer, nullptr, nullptr, kDurationForever);
    if (!result) result = FromParam(answer);
    if (!status) status = result;
  }
  return status;
}

void MP_StopTasksTempl(MP_TemplTask* records, SInt32 taskCount, MPQueueID notificationQueue) {
  // The messages do not tell whose they are: a record may go when there is one for each task.
  for (SInt32 i = 0; records && i < taskCount; ++i) {
    if (records[i].taskID == 0) continue;
    const SInt32 status = MPTerminateTask(records[i].taskID, noErr);
    // A task that ended by itself has sent its message too.
    if (!status || status == kMPInsufficientResourcesErr) {
      MPWaitOnQueue(notificationQueue, nullptr, nullptr, nullptr, kDurationForever);
    }
  }
  for (SInt32 i = 0; records && i < taskCount; ++i) {
    MP_DeleteQueue(&records[i].requestQueue);
    MP_DeleteQueue(&records[i].resultQueue);
  }
  MP_DeleteQueue(&notificationQueue);
  void* block = records;
  GL_DisposePtr(&block);
}

OSStatus MP_PeriodicTaskTempl(void*) {
  const ScopedSemaphore semaphore;
  SInt32 status = semaphore.status();
  while (!status) {
    status = MPWaitOnSemaphore(semaphore.id(), kTick);
    // Nobody signals: a wait that ran out is a tick, and what is done at each tick goes here.
    if (status == kMPTimeoutErr) status = noErr;
  }
  return status;
}

OSStatus MP_high_thread(void* pair) {
  const auto& both = *static_cast<const MP_ThreadPair*>(pair);
  MPSetTaskWeight(both.highTask, kHighWeight);
  return TakeTurns(both.highTurn, both.lowTurn, false);
}

OSStatus MP_low_thread(void* pair) {
  const auto& both = *static_cast<const MP_ThreadPair*>(pair);
  MPSetTaskWeight(both.lowTask, kLowWeight);
  return TakeTurns(both.lowTurn, both.highTurn, true);
}
