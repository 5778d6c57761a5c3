#include <gtest/gtest.h>

#include <cstdint>

#include "ORW_MP.h"

namespace {

constexpr UInt32 kQuit = 7;
constexpr UInt32 kDone = 8;

void* Param(std::intptr_t value) {
  return reinterpret_cast<void*>(value);
}

/// Ends when it is told to, with the third parameter of the message as its result.
OSStatus Obedient(void* record) {
  const auto& task = *static_cast<MP_Task*>(record);
  void* message = nullptr;
  void* result = nullptr;
  while (message != Param(kQuit)) {
    const OSStatus status =
        MPWaitOnQueue(task.commandQueue, &message, nullptr, &result, kDurationForever);
    if (status) return status;
  }
  return static_cast<OSStatus>(reinterpret_cast<std::intptr_t>(result));
}

/// Never looks at its messages.
OSStatus Deaf(void* record) {
  return MPWaitOnSemaphore(static_cast<MP_Task*>(record)->semaphore, kDurationForever);
}

/// Reports to the queue in `userData` when it gets any message.
OSStatus Reporting(void* record) {
  const auto& task = *static_cast<MP_Task*>(record);
  MPWaitOnQueue(task.commandQueue, nullptr, nullptr, nullptr, kDurationForever);
  const auto parent = static_cast<MPQueueID>(reinterpret_cast<std::uintptr_t>(task.userData));
  MPNotifyQueue(parent, Param(99), nullptr, nullptr);  // of no interest
  return MPNotifyQueue(parent, Param(kDone), nullptr, nullptr);
}

MP_Task NewTask(TaskProc entry, UInt32 objects) {
  MP_Task task = {};
  task.entry = entry;
  task.objects = objects;
  task.terminationParam1 = 21;
  task.terminationParam2 = 0x80000022;
  return task;
}

TEST(TaskObjects, AreMadeByFlagAndDisposedOf) {
  for (UInt32 flag = 1; flag <= kMP_CriticalRegion; flag <<= 1) {
    MP_Task task = NewTask(Obedient, flag);
    task.entry = nullptr;  // the objects are made, then there is nothing to run
    EXPECT_EQ(MP_CreateTask(&task), paramErr);
    const std::pair<UInt32, UInt32> made[] = {{kMP_QueueA, task.queueA},
                                              {kMP_CommandQueue, task.commandQueue},
                                              {kMP_QueueD, task.queueD},
                                              {kMP_CommandQueue2, task.commandQueue2},
                                              {kMP_QueueE, task.queueE},
                                              {kMP_TerminationQueue, task.terminationQueue},
                                              {kMP_Event, task.event},
                                              {kMP_Semaphore, task.semaphore},
                                              {kMP_CriticalRegion, task.criticalRegion}};
    for (const auto& [own_flag, id] : made)
      EXPECT_EQ(id != 0, own_flag == flag) << own_flag;
    int disposals = 0;
    task.userData = &disposals;
    task.disposeProc = [](void* data) {
      if (data) ++*static_cast<int*>(data);
    };
    MP_DisposeTask(&task);
    MP_DisposeTask(&task);
    EXPECT_EQ(disposals, 1);
    for (const auto& [own_flag, id] : made) {
      if (own_flag != flag) continue;
      EXPECT_EQ(MPDeleteQueue(id), kMPInvalidIDErr);
      EXPECT_EQ(MPDeleteEvent(id), kMPInvalidIDErr);
      EXPECT_EQ(MPDeleteSemaphore(id), kMPInvalidIDErr);
      EXPECT_EQ(MPDeleteCriticalRegion(id), kMPInvalidIDErr);
    }
  }
}

TEST(TaskObjects, CloseAndPassOverOthersMessages) {
  MP_Task task = NewTask(Obedient, kMP_CommandQueue | kMP_TerminationQueue | kMP_Semaphore);
  EXPECT_EQ(MP_CloseTask(&task, kQuit, Param(5), 0, 0, 1), noErr);  // not running
  EXPECT_EQ(MP_TerminateTask(&task, 1, 0), noErr);
  ASSERT_EQ(MP_CreateTask(&task), noErr);
  MPNotifyQueue(task.terminationQueue, Param(20), Param(0), Param(1));
  MPNotifyQueue(task.terminationQueue, Param(21), Param(1), Param(2));
  EXPECT_EQ(MP_CloseTask(&task, kQuit, Param(-5), 21, 0x80000022, 600), -5);
  EXPECT_EQ(task.taskID, 0U);
  EXPECT_EQ(task.commandQueue + task.terminationQueue + task.semaphore, 0U);
  EXPECT_EQ(MP_CloseTask(&task, kQuit, nullptr, 0, 0, 1), noErr);
}

TEST(TaskObjects, SaySoWhenATaskDoesNotAnswer) {
  MP_Task task = NewTask(Deaf, kMP_CommandQueue | kMP_TerminationQueue | kMP_Semaphore);
  ASSERT_EQ(MP_CreateTask(&task), noErr);
  EXPECT_EQ(MP_CloseTask(&task, kQuit, nullptr, 0, 0, 0), MP_NoAnswerErr);
  EXPECT_NE(task.taskID, 0U);
  // Another close removes what the first has left in the queue.
  EXPECT_EQ(MP_CloseTask(&task, kQuit, nullptr, 0, 0, -1), MP_NoAnswerErr);
  EXPECT_EQ(MPWaitOnQueue(task.commandQueue, nullptr, nullptr, nullptr, 0), noErr);
  EXPECT_EQ(MPWaitOnQueue(task.commandQueue, nullptr, nullptr, nullptr, 0), kMPTimeoutErr);
  EXPECT_EQ(MP_TerminateTask(&task, 1, -77), -77);
  EXPECT_EQ(task.taskID, 0U);
  EXPECT_EQ(task.semaphore, 0U);
}

TEST(TaskObjects, TerminateATaskThatHasEnded) {
  MP_Task task = NewTask([](void*) -> OSStatus { return 3; }, kMP_TerminationQueue);
  ASSERT_EQ(MP_CreateTask(&task), noErr);
  void* result = nullptr;
  ASSERT_EQ(MPWaitOnQueue(task.terminationQueue, nullptr, nullptr, &result, kDurationForever),
            noErr);
  MPNotifyQueue(task.terminationQueue, nullptr, nullptr, result);
  EXPECT_EQ(MP_TerminateTask(&task, 1, 9), 3);

  // A number that never was, and no queue to wait on.
  MP_Task stranger = NewTask(Deaf, 0);
  stranger.taskID = 0x3FFFFFFF;
  EXPECT_EQ(MP_TerminateTask(&stranger, 1, 0), kMPInvalidIDErr);
  EXPECT_EQ(stranger.taskID, 0U);
}

/// A parent with sub-tasks that report to it.
class SubTasks : public testing::Test {
 protected:
  void SetUp() override {
    parent_.type = "PARE"_4cc;
    ASSERT_EQ(MPCreateQueue(&parent_.commandQueue), noErr);
    parent_.objects = kMP_CommandQueue;
  }
  void TearDown() override { MP_DisposeTask(&parent_); }

  MP_Task* Start(OSType type, SInt32 number) {
    MP_Task* task = nullptr;
    EXPECT_EQ(MP_AddSubTask(&parent_, &task), noErr);
    *task = NewTask(Reporting, kMP_CommandQueue);
    task->type = type;
    task->number = number;
    task->userData = Param(parent_.commandQueue);
    EXPECT_EQ(MP_CreateTask(task), noErr);
    return task;
  }

  MP_Task parent_ = {};
};

TEST_F(SubTasks, CloseAll) {
  EXPECT_EQ(MP_CloseAllSubTasks(&parent_, nullptr, kDone), noErr);
  for (SInt32 i = 0; i < 4; ++i)
    Start(i < 3 ? "WORK"_4cc : parent_.type, i);
  EXPECT_EQ(MP_CountValidSubTasks(&parent_), 4);
  EXPECT_EQ(MP_CloseAllSubTasks(&parent_, nullptr, kDone), noErr);
  EXPECT_EQ(parent_.subTasks, nullptr);
}

TEST_F(SubTasks, CloseThoseOfAType) {
  Start(kDone, 1);
  Start("WORK"_4cc, 2);
  Start(kDone, 3);
  EXPECT_EQ(MP_CloseAllSubTasksOfType(&parent_, kDone, nullptr), noErr);
  EXPECT_EQ(MP_CountValidSubTasks(&parent_), 1);
  EXPECT_NE(MP_GetSubTaskByNumber(&parent_, 2), nullptr);
  EXPECT_EQ(MP_CloseAllSubTasks(&parent_, nullptr, kDone), noErr);
}

TEST_F(SubTasks, AreFoundAndInvalidated) {
  MP_Task* tasks[4];
  for (SInt32 i = 0; i < 4; ++i) {
    ASSERT_EQ(MP_AddSubTask(&parent_, &tasks[i]), noErr);
    tasks[i]->taskID = 1;
    tasks[i]->number = 10 + i;
    tasks[i]->type = i == 0 ? parent_.type : "WORK"_4cc;
    tasks[i]->subType = static_cast<UInt32>(i / 2);
  }
  const auto work = "WORK"_4cc;
  EXPECT_EQ(MP_GetSubTaskByNumber(&parent_, 12), tasks[2]);
  EXPECT_EQ(MP_GetSubTaskByTypeAndIndex(&parent_, work, 1, 0), tasks[2]);
  EXPECT_EQ(MP_GetSubTaskByTypeAndIndex(&parent_, work, 1, 1), tasks[3]);
  EXPECT_EQ(MP_GetSubTaskByTypeAndIndex(&parent_, work, 1, 2), nullptr);
  EXPECT_EQ(MP_GetSubTaskByTypeAndIndex(&parent_, work, 1, -1), nullptr);
  EXPECT_EQ(&MP_FindSubTaskLE_ByTypeAndNumber(&parent_, work, 13)->task, tasks[3]);
  EXPECT_EQ(MP_FindSubTaskLE_ByTypeAndNumber(&parent_, work, 10), nullptr);
  MP_InvalidateAnySubTask(&parent_);
  EXPECT_EQ(tasks[1]->taskID, 0U);
  MP_InvalidateSubTaskByTypeAndNumber(&parent_, work, 13);
  EXPECT_EQ(MP_CountValidSubTasksOfType(&parent_, work), 1);
  EXPECT_EQ(MP_GetSubTaskByNumber(&parent_, 13), nullptr);
  MP_InvalidateAnySubTaskOfType(&parent_, parent_.type);
  EXPECT_EQ(tasks[0]->taskID, 0U);
  MP_RemoveSubTaskFromList(&parent_, tasks[2]);
  EXPECT_EQ(MP_CountValidSubTasks(&parent_), 0);
}

TEST_F(SubTasks, MayLiveElsewhere) {
  MP_Task first = NewTask(Obedient, kMP_CommandQueue);
  MP_Task second = NewTask(Obedient, kMP_CommandQueue);
  ASSERT_EQ(MPCreateQueue(&first.commandQueue), noErr);
  for (MP_Task* task : {&first, &second})
    ASSERT_EQ(MP_AddSubTaskPtr(&parent_, task), noErr);
  EXPECT_EQ(MP_GetSubTaskPtrByTypeAndIndex(&parent_, 0, 0, 1), &second);
  EXPECT_EQ(MP_CountValidSubTasks(&parent_), 0);
  MP_RemoveSubTaskPtrFromList(&parent_, &second);
  EXPECT_EQ(MP_GetSubTaskPtrByTypeAndIndex(&parent_, 0, 0, 1), nullptr);
  MP_DisposeSubTaskPtrs(&parent_);
  EXPECT_EQ(parent_.subTasks, nullptr);
  EXPECT_EQ(first.commandQueue, 0U);
}

TEST(TaskHelpers, RecreateAndEmpty) {
  MPQueueID queue = 0;
  EXPECT_EQ(MP_DeleteQueue(&queue), noErr);
  EXPECT_EQ(MP_EmptyQueue(queue), kMPInvalidIDErr);
  ASSERT_EQ(MP_RecreateQueue(&queue), noErr);
  const MPQueueID old = queue;
  MPNotifyQueue(queue, nullptr, nullptr, nullptr);
  MPNotifyQueue(queue, nullptr, nullptr, nullptr);
  EXPECT_EQ(MP_EmptyQueue(queue), noErr);
  EXPECT_EQ(MPWaitOnQueue(queue, nullptr, nullptr, nullptr, 0), kMPTimeoutErr);
  ASSERT_EQ(MP_RecreateQueue(&queue), noErr);
  EXPECT_EQ(MPDeleteQueue(old), kMPInvalidIDErr);
  EXPECT_EQ(MP_DeleteQueue(&queue), noErr);
  EXPECT_EQ(queue, 0U);
}

TEST(TaskHelpers, ConvertTime) {
  EXPECT_EQ(MP_AbsoluteToMilliSecond(5999999), 5U);
  EXPECT_EQ(MP_DurationToMilliSecond(-2500), 2U);
  EXPECT_EQ(MP_MilliSecondToAbsolute(3), 3000000U);
  EXPECT_EQ(MP_MilliSecondToAbsolute(~UInt64{0}), ~UInt64{0});
  EXPECT_EQ(MP_MilliSecondToDuration(1020), 1020);
  EXPECT_EQ(MP_MilliSecondToDuration(~UInt64{0}), kDurationForever);
  const AbsoluteTime start = UpTime();
  EXPECT_EQ(MP_DelayTicks(1), noErr);
  EXPECT_GE(UpTime() - start, 17000000U);
}

TEST(TaskTemplates, ShareOutWorkAndStop) {
  MP_TemplTask* records = nullptr;
  SInt32 count = 0;
  MPQueueID ended = 0;
  ASSERT_EQ(MP_CreateTasksTempl(&records, &count, &ended), noErr);
  EXPECT_EQ(count, static_cast<SInt32>(MPProcessorsScheduled()));
  for (int round = 0; round < 3; ++round)
    EXPECT_EQ(MP_NotifyTasksTempl(records, 100, 10 * count, count), noErr);
  for (SInt32 i = 0; i < count; ++i) {
    EXPECT_EQ(records[i].start, 100 + 10 * i);
    EXPECT_EQ(records[i].count, 10);
  }
  EXPECT_EQ(MP_NotifyTasksTempl(records, 0, 1, 0), paramErr);
  EXPECT_EQ(MP_NotifyTasksTempl(records, 0x7FFFFFFF, 1, count), paramErr);
  // An unknown request is answered with -1 and ends the task.
  MPNotifyQueue(records[0].requestQueue, Param(3), nullptr, nullptr);
  void* answer = nullptr;
  EXPECT_EQ(MPWaitOnQueue(records[0].resultQueue, &answer, nullptr, nullptr, kDurationForever),
            noErr);
  EXPECT_EQ(answer, Param(-1));
  MP_StopTasksTempl(records, count, ended);
  EXPECT_EQ(MPDeleteQueue(ended), kMPInvalidIDErr);
}

TEST(TaskTemplates, TickAndTakeTurnsUntilTheyAreStopped) {
  MPQueueID ended = 0;
  ASSERT_EQ(MPCreateQueue(&ended), noErr);
  MPTaskID ticking = 0;
  ASSERT_EQ(MPCreateTask(MP_PeriodicTaskTempl, nullptr, 0, ended, nullptr, nullptr, 0, &ticking),
            noErr);
  EXPECT_EQ(MPTerminateTask(ticking, 4), noErr);
  void* result = nullptr;
  EXPECT_EQ(MPWaitOnQueue(ended, nullptr, nullptr, &result, kDurationForever), noErr);
  EXPECT_EQ(result, Param(4));

  MP_ThreadPair pair = {};
  ASSERT_EQ(MPCreateSemaphore(1, 0, &pair.highTurn), noErr);
  ASSERT_EQ(MPCreateSemaphore(1, 0, &pair.lowTurn), noErr);
  ASSERT_EQ(MPCreateTask(MP_high_thread, &pair, 0, ended, nullptr, nullptr, 0, &pair.highTask),
            noErr);
  ASSERT_EQ(MPCreateTask(MP_low_thread, &pair, 0, ended, nullptr, nullptr, 0, &pair.lowTask),
            noErr);
  MPDeleteSemaphore(pair.highTurn);
  MPDeleteSemaphore(pair.lowTurn);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(MPWaitOnQueue(ended, nullptr, nullptr, &result, kDurationForever), noErr);
    EXPECT_TRUE(result == Param(kMPDeletedErr) || result == Param(kMPInvalidIDErr));
  }
  MPDeleteQueue(ended);
}

}  // namespace
