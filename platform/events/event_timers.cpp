#include "event_timers.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <memory>
#include <mutex>
#include <vector>

#include "event_queue.h"

namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

struct EventLoopTimer {
  UInt64 serial;  ///< tells it from a later timer at the same address
  Clock::time_point due;
  Clock::duration interval;  ///< 0: fires once
  EventLoopTimerProcPtr procedure;
  void* user_data;
  bool waiting;  ///< a firing is to come
  bool firing;   ///< its procedure runs
};

struct EventLoop {
  std::mutex mutex;
  std::vector<std::unique_ptr<EventLoopTimer>> timers;
  UInt64 next_serial = 1;
};

namespace {

EventLoop& Loop() {
  // Never destroyed: threads may still use it while the process ends.
  static auto* loop = std::make_unique<EventLoop>().release();
  return *loop;
}

/// Longer times are taken for this, so that sums stay within the clock's range.
constexpr EventTimerInterval kLongest = 1e9;

Clock::duration Ticks(EventTimerInterval seconds) {
  return std::chrono::duration_cast<Clock::duration>(
      std::chrono::duration<double>(std::min(seconds, kLongest)));
}

EventLoopTimer* Find(const EventLoop& loop, UInt64 serial) {
  const auto found = std::find_if(loop.timers.begin(), loop.timers.end(),
                                  [serial](const auto& timer) { return timer->serial == serial; });
  return found != loop.timers.end() ? found->get() : nullptr;
}

/// The serials of the timers that are due at `now`, in the order of their times.
std::vector<UInt64> DueAt(const EventLoop& loop, Clock::time_point now) {
  std::vector<const EventLoopTimer*> due;
  for (const auto& timer : loop.timers) {
    if (timer->waiting && !timer->firing && timer->due <= now) due.push_back(timer.get());
  }
  std::stable_sort(due.begin(), due.end(),
                   [](const auto* a, const auto* b) { return a->due < b->due; });
  std::vector<UInt64> serials(due.size());
  std::ranges::transform(due, serials.begin(), &EventLoopTimer::serial);
  return serials;
}

void Fire(EventLoop& loop, UInt64 serial, Clock::time_point now) {
  EventLoopTimer copy{};
  EventLoopTimer* timer = nullptr;
  {
    const std::lock_guard lock(loop.mutex);
    timer = Find(loop, serial);
    if (timer == nullptr || timer->firing) return;  // an earlier one of this round took care of it
    timer->firing = true;
    timer->waiting = timer->interval > Clock::duration::zero();
    timer->due += timer->interval;
    if (timer->due <= now) timer->due = now + timer->interval;
    copy = *timer;
  }
  copy.procedure(timer, copy.user_data);
  const std::lock_guard lock(loop.mutex);
  if (EventLoopTimer* still = Find(loop, serial)) still->firing = false;
}

}  // namespace

EventLoopRef GetMainEventLoop() {
  return &Loop();
}

OSStatus InstallEventLoopTimer(EventLoopRef loop, EventTimerInterval fire_delay,
                               EventTimerInterval interval, EventLoopTimerProcPtr procedure,
                               void* user_data, EventLoopTimerRef* timer) {
  if (timer != nullptr) *timer = nullptr;
  if (loop != GetMainEventLoop() || procedure == nullptr || timer == nullptr ||
      !(fire_delay >= 0) || !(interval >= 0)) {
    return paramErr;
  }
  {
    const std::lock_guard lock(loop->mutex);
    loop->timers.push_back(std::make_unique<EventLoopTimer>(
        EventLoopTimer{loop->next_serial++, Clock::now() + Ticks(fire_delay), Ticks(interval),
                       procedure, user_data, true, false}));
    *timer = loop->timers.back().get();
  }
  quillmere::events::WakeMainThread();
  return noErr;
}

OSStatus RemoveEventLoopTimer(EventLoopTimerRef timer) {
  EventLoop& loop = Loop();
  const std::lock_guard lock(loop.mutex);
  const auto found = std::find_if(loop.timers.begin(), loop.timers.end(),
                                  [timer](const auto& entry) { return entry.get() == timer; });
  if (found == loop.timers.end()) return paramErr;
  loop.timers.erase(found);
  return noErr;
}

namespace quillmere::events {

void FireDueTimers() {
  EventLoop& loop = Loop();
  const Clock::time_point now = Clock::now();
  std::vector<UInt64> due;
  {
    const std::lock_guard lock(loop.mutex);
    due = DueAt(loop, now);
  }
  for (const UInt64 serial : due)
    Fire(loop, serial, now);
}

EventTimerInterval SecondsToNextTimer() {
  EventLoop& loop = Loop();
  const std::lock_guard lock(loop.mutex);
  EventTimerInterval seconds = std::numeric_limits<EventTimerInterval>::infinity();
  for (const auto& timer : loop.timers) {
    if (!timer->waiting || timer->firing) continue;
    const std::chrono::duration<double> left = timer->due - Clock::now();
    seconds = std::min(seconds, std::max(0.0, left.count()));
  }
  return seconds;
}

}  // namespace quillmere::events
