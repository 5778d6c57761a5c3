/// Events without a window system: the main queue between threads, targets, timers, display links.
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <thread>
#include <vector>

#include "display_link.h"
#include "event_queue.h"
#include "event_targets.h"
#include "event_timers.h"

namespace {

constexpr OSType kClass = "test"_4cc;
constexpr OSType kNumber = "numb"_4cc;

EventRef NumberedEvent(UInt32 kind, SInt32 number) {
  EventRef event = nullptr;
  EXPECT_EQ(noErr, CreateEvent(nullptr, kClass, kind, 0, 0, &event));
  EXPECT_EQ(noErr, SetEventParameter(event, kNumber, typeEventLong, sizeof number, &number));
  return event;
}

SInt32 NumberOf(EventRef event) {
  SInt32 number = -1;
  GetEventParameter(event, kNumber, typeEventLong, nullptr, sizeof number, nullptr, &number);
  return number;
}

void Post(UInt32 kind, SInt32 number, SInt16 priority) {
  EventRef event = NumberedEvent(kind, number);
  EXPECT_EQ(noErr, PostEventToQueue(GetMainEventQueue(), event, priority));
  ReleaseEvent(event);
}

TEST(Events, ParametersKeepTheirBytesAndTellTheirWholeSize) {
  EventRef event = NumberedEvent(1, 5);
  const char text[] = "0123456789";
  EXPECT_EQ(noErr, SetEventParameter(event, kNumber, typeCString, sizeof text, text));
  SInt32 number = 0;
  EXPECT_EQ(eventParameterNotFoundErr,
            GetEventParameter(event, kNumber, typeEventLong, nullptr, 4, nullptr, &number));
  char part[5] = "xxxx";
  Size size = 0;
  EXPECT_EQ(noErr, GetEventParameter(event, kNumber, typeCString, nullptr, 3, &size, part));
  EXPECT_STREQ("012x", part);
  EXPECT_EQ(11, size);
  EXPECT_EQ(paramErr, SetEventParameter(event, kNumber, typeCString, 3, nullptr));
  EXPECT_EQ(paramErr, SetEventParameter(event, kNumber, typeCString, -1, text));
  ReleaseEvent(event);
}

TEST(Events, TheQueueOrdersByPriorityAndThenByTime) {
  const struct {
    SInt32 number;
    SInt16 priority;
  } posts[] = {{4, kEventPriorityLow},
               {2, kEventPriorityStandard},
               {1, kEventPriorityHigh},
               {3, kEventPriorityStandard},
               {5, kEventPriorityLow}};
  for (const auto& post : posts)
    Post(1, post.number, post.priority);
  EventRef event = nullptr;
  for (SInt32 expected = 1; expected <= 5; ++expected) {
    ASSERT_EQ(noErr, ReceiveNextEvent(0, nullptr, 0, 1, &event));
    EXPECT_EQ(expected, NumberOf(event));
    ReleaseEvent(event);
  }
  EXPECT_EQ(eventLoopTimedOutErr, ReceiveNextEvent(0, nullptr, 0, 1, &event));
  EXPECT_EQ(nullptr, event);
  EXPECT_EQ(paramErr, ReceiveNextEvent(0, nullptr, 0, 0, &event));
}

TEST(Events, EventsOfManyThreadsArriveOnceAndInTheirOrder) {
  constexpr SInt32 kThreads = 8;
  constexpr SInt32 kEach = 500;
  std::vector<std::thread> threads;
  for (UInt32 t = 0; t < kThreads; ++t) {
    threads.emplace_back([t] {
      for (SInt32 i = 0; i < kEach; ++i)
        Post(t, i, kEventPriorityStandard);
    });
  }
  std::vector<SInt32> next(kThreads, 0);
  for (SInt32 i = 0; i < kThreads * kEach; ++i) {
    EventRef event = nullptr;
    ASSERT_EQ(noErr, ReceiveNextEvent(0, nullptr, kEventDurationForever, 1, &event));
    EXPECT_EQ(next[GetEventKind(event)]++, NumberOf(event));
    ReleaseEvent(event);
  }
  for (std::thread& thread : threads)
    thread.join();
  EventRef event = NumberedEvent(1, 1);
  EXPECT_EQ(noErr, PostEventToQueue(GetMainEventQueue(), event, kEventPriorityLow));
  EXPECT_EQ(eventAlreadyPostedErr, PostEventToQueue(GetMainEventQueue(), event, 0));
  ReleaseEvent(event);
  ASSERT_EQ(noErr, ReceiveNextEvent(0, nullptr, 0, 1, &event));
  EXPECT_EQ(noErr, PostEventToQueue(GetMainEventQueue(), event, 0));
  ReleaseEvent(event);
  ReceiveNextEvent(0, nullptr, 0, 1, &event);
  ReleaseEvent(event);
}

OSStatus CountEvent(EventHandlerCallRef, EventRef event, void* user_data) {
  *static_cast<SInt32*>(user_data) += NumberOf(event);
  return noErr;
}

TEST(Events, TheDispatcherSendsToTheApplication) {
  static SInt32 sum = 0;
  constexpr EventTypeSpec kWanted{kClass, 7};
  ASSERT_EQ(noErr, InstallEventHandler(GetApplicationEventTarget(), CountEvent, 1, &kWanted, &sum));
  for (const UInt32 kind : {7U, 8U}) {
    EventRef event = NumberedEvent(kind, 20);
    EXPECT_EQ(kind == 7 ? noErr : eventNotHandledErr,
              SendEventToEventTarget(event, GetEventDispatcherTarget()));
    ReleaseEvent(event);
  }
  EXPECT_EQ(20, sum);
  EXPECT_EQ(paramErr,
            InstallEventHandler(GetEventDispatcherTarget(), CountEvent, 1, &kWanted, &sum));
}

/// A timer's procedure that posts an event at its third firing, and removes itself.
struct Firings {
  int count = 0;
  bool remove = true;
};

void Fire(EventLoopTimerRef timer, void* user_data) {
  auto* firings = static_cast<Firings*>(user_data);
  // A loop that runs in a timer's procedure does not fire it again.
  const int before = firings->count;
  quillmere::events::FireDueTimers();
  EXPECT_EQ(before, firings->count);
  if (++firings->count == 3) {
    EXPECT_EQ(noErr, RemoveEventLoopTimer(timer));
    Post(3, firings->count, kEventPriorityStandard);
  }
}

TEST(Events, TimersFireWithinTheWaitAndCanRemoveThemselves) {
  Firings firings;
  EventLoopTimerRef timer = nullptr;
  ASSERT_EQ(noErr, InstallEventLoopTimer(GetMainEventLoop(), 0, 0.001, Fire, &firings, &timer));
  EventRef event = nullptr;
  ASSERT_EQ(noErr, ReceiveNextEvent(0, nullptr, kEventDurationForever, 1, &event));
  EXPECT_EQ(3, NumberOf(event));
  ReleaseEvent(event);
  EXPECT_EQ(paramErr, RemoveEventLoopTimer(timer));
  quillmere::events::FireDueTimers();
  EXPECT_EQ(3, firings.count);
}

void RemoveOther(EventLoopTimerRef, void* user_data) {
  auto* other = static_cast<EventLoopTimerRef*>(user_data);
  RemoveEventLoopTimer(*other);
  *other = nullptr;
}

void CountFiring(EventLoopTimerRef, void* user_data) {
  ++*static_cast<int*>(user_data);
}

TEST(Events, ATimerThatIsRemovedInItsRoundDoesNotFireAndOneShotsFireOnce) {
  int count = 0;
  EventLoopTimerRef first = nullptr;
  EventLoopTimerRef second = nullptr;
  InstallEventLoopTimer(GetMainEventLoop(), 0, 0, RemoveOther, &second, &first);
  InstallEventLoopTimer(GetMainEventLoop(), 0, 0, CountFiring, &count, &second);
  quillmere::events::FireDueTimers();
  EXPECT_EQ(0, count);
  EXPECT_EQ(nullptr, second);
  EXPECT_EQ(noErr, RemoveEventLoopTimer(first));
  InstallEventLoopTimer(GetMainEventLoop(), 0, 0, CountFiring, &count, &first);
  quillmere::events::FireDueTimers();
  quillmere::events::FireDueTimers();
  EXPECT_EQ(1, count);
  EXPECT_EQ(noErr, RemoveEventLoopTimer(first));
  const double bad[] = {-1.0, std::numeric_limits<double>::quiet_NaN()};
  for (const double time : bad) {
    EXPECT_EQ(paramErr,
              InstallEventLoopTimer(GetMainEventLoop(), time, 0, CountFiring, &count, &first));
    EXPECT_EQ(paramErr,
              InstallEventLoopTimer(GetMainEventLoop(), 0, time, CountFiring, &count, &first));
  }
}

struct Ticks {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<UInt64> frames;
};

CVReturn NoteTick(CVDisplayLinkRef, const CVTimeStamp* now, const CVTimeStamp* output,
                  CVOptionFlags, CVOptionFlags*, void* user_data) {
  auto* ticks = static_cast<Ticks*>(user_data);
  const std::lock_guard lock(ticks->mutex);
  EXPECT_EQ(now->frame + 1, output->frame);
  ticks->frames.push_back(now->frame);
  ticks->changed.notify_all();
  return kCVReturnSuccess;
}

TEST(DisplayLinks, TickUntilTheyAreStopped) {
  Ticks ticks;
  CVDisplayLinkRef link = nullptr;
  ASSERT_EQ(kCVReturnSuccess, CVDisplayLinkCreateWithActiveCGDisplays(&link));
  EXPECT_EQ(kCVReturnDisplayLinkCallbacksNotSet, CVDisplayLinkStart(link));
  EXPECT_EQ(kCVReturnSuccess, CVDisplayLinkSetOutputCallback(link, NoteTick, &ticks));
  for (int round = 1; round <= 2; ++round) {
    EXPECT_EQ(kCVReturnSuccess, CVDisplayLinkStart(link));
    EXPECT_EQ(1, CVDisplayLinkIsRunning(link));
    EXPECT_EQ(kCVReturnDisplayLinkAlreadyRunning, CVDisplayLinkStart(link));
    {
      std::unique_lock lock(ticks.mutex);
      ticks.changed.wait(lock, [&] { return ticks.frames.size() >= 3; });
    }
    EXPECT_EQ(kCVReturnSuccess, CVDisplayLinkStop(link));
    EXPECT_EQ(0, CVDisplayLinkIsRunning(link));
    EXPECT_EQ(kCVReturnDisplayLinkNotRunning, CVDisplayLinkStop(link));
    for (std::size_t i = 1; i < ticks.frames.size(); ++i)
      EXPECT_LT(ticks.frames[i - 1], ticks.frames[i]);
    ticks.frames.clear();
  }
  CVDisplayLinkStart(link);
  CVDisplayLinkRelease(link);
}

}  // namespace
