#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include "multiprocessing.h"
#include "thread_data.h"

namespace {

void* Param(std::intptr_t value) {
  return reinterpret_cast<void*>(value);
}

std::intptr_t Value(void* param) {
  return reinterpret_cast<std::intptr_t>(param);
}

/// The first parameter of the queue's next message, waiting for it.
std::intptr_t Next(MPQueueID queue) {
  void* param = nullptr;
  EXPECT_EQ(MPWaitOnQueue(queue, &param, nullptr, nullptr, kDurationForever), noErr);
  return Value(param);
}

/// A queue that is deleted at the end of the test.
class OwnQueue {
 public:
  OwnQueue() { EXPECT_EQ(MPCreateQueue(&id_), noErr); }
  ~OwnQueue() { EXPECT_EQ(MPDeleteQueue(id_), noErr); }
  OwnQueue(const OwnQueue&) = delete;
  OwnQueue& operator=(const OwnQueue&) = delete;
  operator MPQueueID() const { return id_; }

 private:
  MPQueueID id_ = 0;
};

/// Waits for a task's termination message and gives its third parameter.
std::intptr_t ResultOf(MPQueueID notify_queue) {
  void* result = nullptr;
  EXPECT_EQ(MPWaitOnQueue(notify_queue, nullptr, nullptr, &result, kDurationForever), noErr);
  return Value(result);
}

TEST(Queues, KeepOrderWhileTheRingGrowsAndTurns) {
  const OwnQueue queue;
  std::intptr_t sent = 0;
  std::intptr_t taken = 0;
  for (int round = 1; round < 60; ++round) {
    for (int i = 0; i < round; ++i, ++sent)
      ASSERT_EQ(MPNotifyQueue(queue, Param(sent), Param(-sent), Param(sent * 3)), noErr);
    for (int i = 0; i < round - round / 4; ++i, ++taken) {
      void* p1 = nullptr;
      void* p2 = nullptr;
      void* p3 = nullptr;
      ASSERT_EQ(MPWaitOnQueue(queue, &p1, &p2, &p3, kDurationImmediate), noErr);
      ASSERT_EQ(Value(p1), taken);
      ASSERT_EQ(Value(p2), -taken);
      ASSERT_EQ(Value(p3), taken * 3);
    }
  }
}

TEST(Queues, TimeOutWithoutTouchingTheOutputs) {
  const OwnQueue queue;
  for (const Duration timeout : {kDurationImmediate, Duration{2}, Duration{-500}}) {
    void* p1 = Param(7);
    EXPECT_EQ(MPWaitOnQueue(queue, &p1, nullptr, nullptr, timeout), kMPTimeoutErr);
    EXPECT_EQ(Value(p1), 7);
  }
}

TEST(Queues, GiveEveryMessageToExactlyOneOfManyReaders) {
  constexpr int kReaders = 4;
  constexpr int kMessages = 20000;
  const OwnQueue queue;
  std::vector<std::atomic<int>> seen(kMessages + 1);
  std::vector<std::thread> readers;
  for (int i = 0; i < kReaders; ++i) {
    readers.emplace_back([&] {
      while (const auto number = Next(queue))
        ++seen[static_cast<std::size_t>(number)];
    });
  }
  for (int i = 1; i <= kMessages; ++i)
    MPNotifyQueue(queue, Param(i), nullptr, nullptr);
  for (int i = 0; i < kReaders; ++i)
    MPNotifyQueue(queue, nullptr, nullptr, nullptr);
  for (auto& reader : readers)
    reader.join();
  for (int i = 1; i <= kMessages; ++i)
    ASSERT_EQ(seen[static_cast<std::size_t>(i)], 1) << i;
}

TEST(Objects, RefuseNumbersThatNameNothing) {
  MPQueueID queue = 0;
  MPSemaphoreID semaphore = 0;
  ASSERT_EQ(MPCreateQueue(&queue), noErr);
  ASSERT_EQ(MPCreateSemaphore(1, 1, &semaphore), noErr);
  ASSERT_EQ(MPDeleteQueue(queue), noErr);
  const UInt32 ids[] = {0, 1, 0xFFFFFFFF, 0x40003FFF, queue, semaphore ^ 0x4000};
  for (const UInt32 id : ids) {
    EXPECT_EQ(MPDeleteQueue(id), kMPInvalidIDErr) << id;
    EXPECT_EQ(MPNotifyQueue(id, nullptr, nullptr, nullptr), kMPInvalidIDErr) << id;
    EXPECT_EQ(MPWaitOnQueue(id, nullptr, nullptr, nullptr, kDurationForever), kMPInvalidIDErr);
    EXPECT_EQ(MPSignalSemaphore(id), kMPInvalidIDErr);
    EXPECT_EQ(MPWaitOnSemaphore(id, kDurationForever), kMPInvalidIDErr);
    EXPECT_EQ(MPSetEvent(id, 1), kMPInvalidIDErr);
    EXPECT_EQ(MPWaitForEvent(id, nullptr, kDurationForever), kMPInvalidIDErr);
    EXPECT_EQ(MPEnterCriticalRegion(id, kDurationForever), kMPInvalidIDErr);
    EXPECT_EQ(MPExitCriticalRegion(id), kMPInvalidIDErr);
    EXPECT_EQ(MPTerminateTask(id, noErr), kMPInvalidIDErr);
    EXPECT_EQ(MPSetTaskWeight(id, 100), kMPInvalidIDErr);
  }
  // An object of another kind.
  EXPECT_EQ(MPNotifyQueue(semaphore, nullptr, nullptr, nullptr), kMPInvalidIDErr);
  EXPECT_EQ(MPDeleteEvent(semaphore), kMPInvalidIDErr);
  EXPECT_EQ(MPDeleteSemaphore(semaphore), noErr);
}

TEST(Objects, OldNumbersStayInvalidWhileSlotsAreUsedAgain) {
  MPQueueID old = 0;
  ASSERT_EQ(MPCreateQueue(&old), noErr);
  ASSERT_EQ(MPNotifyQueue(old, Param(1), nullptr, nullptr), noErr);
  ASSERT_EQ(MPDeleteQueue(old), noErr);
  for (int i = 0; i < 5000; ++i) {
    MPQueueID queue = 0;
    ASSERT_EQ(MPCreateQueue(&queue), noErr);
    ASSERT_NE(queue, old);
    ASSERT_EQ(MPWaitOnQueue(queue, nullptr, nullptr, nullptr, kDurationImmediate), kMPTimeoutErr);
    ASSERT_EQ(MPNotifyQueue(old, nullptr, nullptr, nullptr), kMPInvalidIDErr);
    ASSERT_EQ(MPDeleteQueue(queue), noErr);
  }
}

TEST(Objects, RunOutWithAStatusAndComeBack) {
  std::vector<MPEventID> events;
  OSStatus status = noErr;
  while (status == noErr && events.size() < 100000) {
    MPEventID event = 0;
    status = MPCreateEvent(&event);
    if (!status) events.push_back(event);
  }
  EXPECT_EQ(status, kMPInsufficientResourcesErr);
  EXPECT_EQ(events.size(), 16384U);
  for (const MPEventID event : events)
    ASSERT_EQ(MPDeleteEvent(event), noErr);
  MPEventID event = 0;
  EXPECT_EQ(MPCreateEvent(&event), noErr);
  EXPECT_EQ(MPDeleteEvent(event), noErr);
}

/// Deleting while others wait: all of them wake with a status, whichever comes first.
TEST(Objects, DeletionWakesEveryWaiter) {
  for (int round = 0; round < 50; ++round) {
    MPQueueID queue = 0;
    MPSemaphoreID semaphore = 0;
    MPEventID event = 0;
    MPCriticalRegionID region = 0;
    ASSERT_EQ(MPCreateQueue(&queue), noErr);
    ASSERT_EQ(MPCreateSemaphore(1, 0, &semaphore), noErr);
    ASSERT_EQ(MPCreateEvent(&event), noErr);
    ASSERT_EQ(MPCreateCriticalRegion(&region), noErr);
    ASSERT_EQ(MPEnterCriticalRegion(region, kDurationForever), noErr);
    std::vector<OSStatus> results(8, 1);
    std::vector<std::thread> waiters;
    for (std::size_t i = 0; i < 2; ++i) {
      waiters.emplace_back([&, i] {
        results[i] = MPWaitOnQueue(queue, nullptr, nullptr, nullptr, kDurationForever);
      });
      waiters.emplace_back(
          [&, i] { results[2 + i] = MPWaitOnSemaphore(semaphore, kDurationForever); });
      waiters.emplace_back(
          [&, i] { results[4 + i] = MPWaitForEvent(event, nullptr, kDurationForever); });
      waiters.emplace_back(
          [&, i] { results[6 + i] = MPEnterCriticalRegion(region, kDurationForever); });
    }
    EXPECT_EQ(MPDeleteQueue(queue), noErr);
    EXPECT_EQ(MPDeleteSemaphore(semaphore), noErr);
    EXPECT_EQ(MPDeleteEvent(event), noErr);
    EXPECT_EQ(MPDeleteCriticalRegion(region), noErr);
    for (auto& waiter : waiters)
      waiter.join();
    for (const OSStatus result : results)
      EXPECT_TRUE(result == kMPDeletedErr || result == kMPInvalidIDErr) << result;
    EXPECT_EQ(MPExitCriticalRegion(region), kMPInvalidIDErr);
  }
}

TEST(Semaphores, CountBetweenTheirBounds) {
  MPSemaphoreID semaphore = 0;
  EXPECT_EQ(MPCreateSemaphore(2, 3, &semaphore), paramErr);
  EXPECT_EQ(MPCreateSemaphore(0, 0, &semaphore), paramErr);
  ASSERT_EQ(MPCreateSemaphore(2, 1, &semaphore), noErr);
  EXPECT_EQ(MPSignalSemaphore(semaphore), noErr);
  EXPECT_EQ(MPSignalSemaphore(semaphore), kMPInsufficientResourcesErr);
  EXPECT_EQ(MPWaitOnSemaphore(semaphore, kDurationForever), noErr);
  EXPECT_EQ(MPWaitOnSemaphore(semaphore, kDurationImmediate), noErr);
  EXPECT_EQ(MPWaitOnSemaphore(semaphore, kDurationImmediate), kMPTimeoutErr);
  EXPECT_EQ(MPDeleteSemaphore(semaphore), noErr);
}

TEST(Events, CollectFlagsAndClearThem) {
  MPEventID event = 0;
  ASSERT_EQ(MPCreateEvent(&event), noErr);
  EXPECT_EQ(MPSetEvent(event, 0), noErr);
  EXPECT_EQ(MPWaitForEvent(event, nullptr, kDurationImmediate), kMPTimeoutErr);
  EXPECT_EQ(MPSetEvent(event, 0x80000001), noErr);
  EXPECT_EQ(MPSetEvent(event, 0x10), noErr);
  MPEventFlags flags = 0;
  EXPECT_EQ(MPWaitForEvent(event, &flags, kDurationForever), noErr);
  EXPECT_EQ(flags, 0x80000011);
  EXPECT_EQ(MPWaitForEvent(event, &flags, kDurationImmediate), kMPTimeoutErr);
  EXPECT_EQ(MPDeleteEvent(event), noErr);
}

TEST(CriticalRegions, AreHeldByOneThreadThatMayEnterAgain) {
  MPCriticalRegionID region = 0;
  ASSERT_EQ(MPCreateCriticalRegion(&region), noErr);
  const auto elsewhere = [&](auto call) {
    OSStatus status = 1;
    std::thread([&] { status = call(); }).join();
    return status;
  };
  const auto try_enter = [&] { return MPEnterCriticalRegion(region, kDurationImmediate); };
  EXPECT_EQ(MPExitCriticalRegion(region), kMPInsufficientResourcesErr);
  EXPECT_EQ(MPEnterCriticalRegion(region, kDurationForever), noErr);
  EXPECT_EQ(MPEnterCriticalRegion(region, kDurationForever), noErr);
  EXPECT_EQ(elsewhere(try_enter), kMPTimeoutErr);
  EXPECT_EQ(elsewhere([&] { return MPExitCriticalRegion(region); }), kMPInsufficientResourcesErr);
  EXPECT_EQ(MPExitCriticalRegion(region), noErr);
  EXPECT_EQ(elsewhere(try_enter), kMPTimeoutErr);
  EXPECT_EQ(MPExitCriticalRegion(region), noErr);
  EXPECT_EQ(elsewhere([&] { return try_enter() ? 1 : MPExitCriticalRegion(region); }), noErr);
  EXPECT_EQ(MPDeleteCriticalRegion(region), noErr);
}

TEST(CriticalRegions, ExcludeEachOther) {
  constexpr int kThreads = 4;
  constexpr int kSteps = 5000;
  MPCriticalRegionID region = 0;
  ASSERT_EQ(MPCreateCriticalRegion(&region), noErr);
  int counter = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int step = 0; step < kSteps; ++step) {
        ASSERT_EQ(MPEnterCriticalRegion(region, kDurationForever), noErr);
        ++counter;
        ASSERT_EQ(MPExitCriticalRegion(region), noErr);
      }
    });
  }
  for (auto& thread : threads)
    thread.join();
  EXPECT_EQ(counter, kThreads * kSteps);
  EXPECT_EQ(MPDeleteCriticalRegion(region), noErr);
}

TEST(Tasks, SendTheirParametersAndResultWhenTheyEnd) {
  const OwnQueue done;
  MPTaskID task = 1;
  EXPECT_EQ(MPCreateTask(nullptr, nullptr, 0, 0, nullptr, nullptr, 0, &task), paramErr);
  EXPECT_EQ(task, 0U);
  const TaskProc entry = [](void* parameter) -> OSStatus {
    *static_cast<int*>(parameter) = 5;
    return -43;
  };
  int value = 0;
  ASSERT_EQ(MPCreateTask(entry, &value, 0x80000, done, Param(11), Param(-12), 0, &task), noErr);
  void* p1 = nullptr;
  void* p2 = nullptr;
  void* p3 = nullptr;
  ASSERT_EQ(MPWaitOnQueue(done, &p1, &p2, &p3, kDurationForever), noErr);
  EXPECT_EQ(Value(p1), 11);
  EXPECT_EQ(Value(p2), -12);
  EXPECT_EQ(Value(p3), -43);
  EXPECT_EQ(value, 5);
  // It has ended, which is not the same as never having been.
  EXPECT_EQ(MPTerminateTask(task, 1), kMPInsufficientResourcesErr);
  EXPECT_EQ(MPSetTaskWeight(task, 100), kMPInvalidIDErr);
}

TEST(Tasks, RefuseImpossibleStacks) {
  MPTaskID task = 1;
  const TaskProc entry = [](void*) -> OSStatus { return 0; };
  EXPECT_EQ(MPCreateTask(entry, nullptr, ByteCount{1} << 62, 0, nullptr, nullptr, 0, &task),
            kMPInsufficientResourcesErr);
  EXPECT_EQ(task, 0U);
}

/// Where a task waits when it is terminated.
struct Station {
  MPQueueID started;
  MPQueueID queue;
  MPSemaphoreID semaphore;
  MPEventID event;
  MPCriticalRegionID region;
  MPCriticalRegionID held;
  int where;
  std::shared_ptr<int> unwound;
};

OSStatus WaitAtStation(void* parameter) {
  const auto& station = *static_cast<Station*>(parameter);
  const auto kept = station.unwound;  // released by unwinding alone
  MPEnterCriticalRegion(station.held, kDurationForever);
  MPNotifyQueue(station.started, nullptr, nullptr, nullptr);
  const AbsoluteTime never = ~AbsoluteTime{0};
  switch (station.where) {
    case 0:
      return MPWaitOnQueue(station.queue, nullptr, nullptr, nullptr, kDurationForever);
    case 1:
      return MPWaitOnSemaphore(station.semaphore, kDurationForever);
    case 2:
      return MPWaitForEvent(station.event, nullptr, kDurationForever - 1);
    case 3:
      return MPEnterCriticalRegion(station.region, kDurationForever);
    case 4:
      return MPDelayUntil(&never);
    default:  // never stands still, but calls an operation that waits
      while (true)
        MPWaitOnQueue(station.queue, nullptr, nullptr, nullptr, kDurationImmediate);
  }
}

TEST(Tasks, EndWhereverTheyWaitWhenTerminated) {
  const OwnQueue done;
  const OwnQueue started;
  const OwnQueue queue;
  Station station = {started, queue, 0, 0, 0, 0, 0, std::make_shared<int>(0)};
  ASSERT_EQ(MPCreateSemaphore(1, 0, &station.semaphore), noErr);
  ASSERT_EQ(MPCreateEvent(&station.event), noErr);
  ASSERT_EQ(MPCreateCriticalRegion(&station.region), noErr);
  ASSERT_EQ(MPCreateCriticalRegion(&station.held), noErr);
  ASSERT_EQ(MPEnterCriticalRegion(station.region, kDurationForever), noErr);
  for (int round = 0; round < 20; ++round) {
    for (station.where = 0; station.where < 6; ++station.where) {
      MPTaskID task = 0;
      ASSERT_EQ(MPCreateTask(WaitAtStation, &station, 0, done, nullptr, nullptr, 0, &task), noErr);
      Next(started);
      EXPECT_EQ(MPTerminateTask(task, 77 + station.where), noErr);
      EXPECT_EQ(ResultOf(done), 77 + station.where);
      EXPECT_EQ(station.unwound.use_count(), 1);
      EXPECT_EQ(MPEnterCriticalRegion(station.held, kDurationImmediate), noErr);
      EXPECT_EQ(MPExitCriticalRegion(station.held), noErr);
    }
  }
  MPDeleteCriticalRegion(station.region);
  MPDeleteCriticalRegion(station.held);
  MPDeleteEvent(station.event);
  MPDeleteSemaphore(station.semaphore);
}

/// A wake-up that a dying task got is handed on: the message reaches the reader that lives.
TEST(Tasks, DyingReadersLoseNoMessage) {
  const OwnQueue done;
  const OwnQueue work;
  const OwnQueue answers;
  struct Queues {
    MPQueueID work;
    MPQueueID answers;
  } queues = {work, answers};
  const TaskProc read_forever = [](void* parameter) -> OSStatus {
    const Queues& both = *static_cast<Queues*>(parameter);
    while (true)
      MPNotifyQueue(both.answers, Param(Next(both.work)), nullptr, nullptr);
  };
  for (std::intptr_t round = 0; round < 300; ++round) {
    MPTaskID dying = 0;
    MPTaskID living = 0;
    ASSERT_EQ(MPCreateTask(read_forever, &queues, 0, done, nullptr, nullptr, 0, &dying), noErr);
    ASSERT_EQ(MPCreateTask(read_forever, &queues, 0, done, nullptr, nullptr, 0, &living), noErr);
    std::thread killer([&] { EXPECT_EQ(MPTerminateTask(dying, 0), noErr); });
    for (std::intptr_t i = 0; i < 4; ++i)
      MPNotifyQueue(work, Param(i), nullptr, nullptr);
    std::intptr_t sum = 0;
    killer.join();
    ResultOf(done);
    for (std::intptr_t i = 4; i < 8; ++i)
      MPNotifyQueue(work, Param(i), nullptr, nullptr);
    for (std::intptr_t last = 0; last != 7; sum += last)
      last = Next(answers);
    EXPECT_EQ(sum, 28);
    EXPECT_EQ(MPTerminateTask(living, 0), noErr);
    ResultOf(done);
  }
}

TEST(Tasks, ExitUnwindsWithItsStatus) {
  const OwnQueue done;
  const auto kept = std::make_shared<int>(0);
  const TaskProc entry = [](void* parameter) -> OSStatus {
    const auto copy = *static_cast<const std::shared_ptr<int>*>(parameter);
    MPExit(-5);
    return 3;
  };
  MPTaskID task = 0;
  auto shared = kept;
  ASSERT_EQ(MPCreateTask(entry, &shared, 0, done, nullptr, nullptr, 0, &task), noErr);
  EXPECT_EQ(ResultOf(done), -5);
  EXPECT_EQ(kept.use_count(), 2);
  MPExit(1);  // not a task: nothing happens
}

TEST(Tasks, SurviveTerminationFromManySides) {
  const OwnQueue done;
  const TaskProc entry = [](void*) -> OSStatus {
    MPDelayUntil(nullptr);
    return 0;
  };
  for (int round = 0; round < 200; ++round) {
    MPTaskID task = 0;
    ASSERT_EQ(MPCreateTask(entry, nullptr, 0, done, nullptr, nullptr, 0, &task), noErr);
    std::vector<std::thread> killers;
    for (int i = 0; i < 3; ++i) {
      killers.emplace_back([&] {
        MPSetTaskWeight(task, 50);
        const OSStatus status = MPTerminateTask(task, 0);
        EXPECT_TRUE(status == noErr || status == kMPInsufficientResourcesErr) << status;
      });
    }
    for (auto& killer : killers)
      killer.join();
    EXPECT_EQ(ResultOf(done), 0);
    EXPECT_EQ(MPWaitOnQueue(done, nullptr, nullptr, nullptr, kDurationImmediate), kMPTimeoutErr);
  }
}

TEST(Memory, IsAlignedClearedAndRefused) {
  for (UInt8 alignment = 0; alignment <= kMPAllocateMaxAlignment; ++alignment) {
    auto* block =
        static_cast<unsigned char*>(MPAllocateAligned(100, alignment, kMPAllocateClearMask));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % (std::uintptr_t{1} << alignment), 0U);
    EXPECT_EQ(std::accumulate(block, block + 100, 0), 0);
    std::memset(block, 1, 100);
    MPFree(block);
  }
  EXPECT_EQ(MPAllocateAligned(1, 17, 0), nullptr);
  EXPECT_EQ(MPAllocateAligned(~ByteCount{0}, 5, kMPAllocateClearMask), nullptr);
  EXPECT_EQ(MPAllocateAligned(ByteCount{1} << 60, 5, 0), nullptr);
  void* empty = MPAllocateAligned(0, 5, kMPAllocateClearMask);
  EXPECT_NE(empty, nullptr);
  MPFree(empty);
  MPFree(nullptr);
}

TEST(Time, ConvertsBetweenItsUnits) {
  const struct {
    Nanoseconds time;
    Duration duration;
  } rows[] = {{0, 0},
              {5000000, 5},
              {5000999, -5000},
              {1000, -1},
              {999, 0},
              {2147483648000, -2147483647 - 1},
              {2147483649000, 2147483},
              {2147483646000000, 2147483646},
              {2147483647000000, kDurationForever},
              {~Nanoseconds{0}, kDurationForever}};
  for (const auto& row : rows)
    EXPECT_EQ(NanosecondsToDuration(row.time), row.duration) << row.time;
  EXPECT_EQ(DurationToNanoseconds(-2147483647 - 1), 2147483648000U);
  EXPECT_EQ(DurationToNanoseconds(kDurationForever), ~Nanoseconds{0});
  EXPECT_EQ(DurationToAbsolute(3), 3000000U);
  EXPECT_EQ(AbsoluteToDuration(NanosecondsToAbsolute(7000000)), 7);
}

TEST(Time, DelayReachesItsTime) {
  const AbsoluteTime until = UpTime() + DurationToAbsolute(2);
  EXPECT_EQ(MPDelayUntil(&until), noErr);
  EXPECT_GE(UpTime(), until);
  EXPECT_EQ(MPDelayUntil(&until), noErr);
  EXPECT_EQ(MPDelayUntil(nullptr), paramErr);
}

TEST(ThreadData, IsEachThreadsOwn) {
  pthread_key_t key = {};
  ASSERT_EQ(pthread_key_create(&key, nullptr), 0);
  int here = 0;
  ASSERT_EQ(pthread_setspecific(key, &here), 0);
  std::thread([&] { EXPECT_EQ(pthread_getspecific(key), nullptr); }).join();
  EXPECT_EQ(pthread_getspecific(key), &here);
  EXPECT_EQ(pthread_key_delete(key), 0);
}

}  // namespace
