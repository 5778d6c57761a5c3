#include "event_queue.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <limits>
#include <mutex>
#include <optional>

#include "event_host.h"
#include "event_record_private.h"
#include "event_timers.h"

struct EventQueue {
  struct Entry {
    EventRef event;
    SInt16 priority;
  };
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Entry> entries;
  bool woken = false;  ///< something other than an event wants the main thread
};

namespace {

using quillmere::events::EventHost;
using quillmere::events::Host;
using quillmere::events::SecondsToNextTimer;

std::atomic<const EventHost*> current_host = nullptr;

EventQueue& Queue() {
  // Never destroyed: threads may post until the process ends.
  static auto* queue = std::make_unique<EventQueue>().release();
  return *queue;
}

/// A deadline may be longer than clocks count.
constexpr EventTimeout kLongestWait = 1e6;

/// Waits in a process without a window system.
void WaitForWork(EventTimeout seconds) {
  EventQueue& queue = Queue();
  std::unique_lock lock(queue.mutex);
  queue.changed.wait_for(lock, std::chrono::duration<double>(std::min(seconds, kLongestWait)),
                         [&queue] { return queue.woken || !queue.entries.empty(); });
  queue.woken = false;
}

/// Lets the window system, or time, bring work; false when there is no sense in asking again.
bool ServeOnce(EventTimeout seconds) {
  const EventTimeout wait = std::max(0.0, std::min(seconds, SecondsToNextTimer()));
  if (const EventHost* host = Host()) return host->serve(wait);
  if (wait > 0) WaitForWork(wait);
  return true;
}

}  // namespace

namespace quillmere::events {

void SetEventHost(const EventHost* host) {
  current_host.store(host, std::memory_order_release);
}

const EventHost* Host() {
  return current_host.load(std::memory_order_acquire);
}

EventRef TakeFromMainQueue() {
  EventQueue& queue = Queue();
  const std::lock_guard lock(queue.mutex);
  if (queue.entries.empty()) return nullptr;
  EventRef event = queue.entries.front().event;
  queue.entries.pop_front();
  event->queued = false;
  return event;
}

bool MainQueueIsEmpty() {
  EventQueue& queue = Queue();
  const std::lock_guard lock(queue.mutex);
  return queue.entries.empty();
}

void WakeMainThread() {
  EventQueue& queue = Queue();
  {
    const std::lock_guard lock(queue.mutex);
    queue.woken = true;
  }
  queue.changed.notify_one();
  if (const EventHost* host = Host()) host->wake();
}

}  // namespace quillmere::events

EventQueueRef GetMainEventQueue() {
  return &Queue();
}

OSStatus PostEventToQueue(EventQueueRef queue, EventRef event, SInt16 priority) {
  if (queue != GetMainEventQueue() || event == nullptr) return paramErr;
  {
    const std::lock_guard lock(queue->mutex);
    if (event->queued) return eventAlreadyPostedErr;
    auto place = std::find_if(queue->entries.begin(), queue->entries.end(),
                              [priority](const auto& entry) { return entry.priority < priority; });
    queue->entries.insert(place, {RetainEvent(event), priority});
    event->queued = true;
  }
  quillmere::events::WakeMainThread();
  return noErr;
}

OSStatus ReceiveNextEvent(ItemCount type_count, const EventTypeSpec* types, EventTimeout timeout,
                          Boolean pull, EventRef* event) {
  using Clock = std::chrono::steady_clock;
  if (event == nullptr || type_count != 0 || types != nullptr || pull == 0) return paramErr;
  constexpr EventTimeout kEndless = std::numeric_limits<EventTimeout>::infinity();
  const EventTimeout limit = timeout < 0 ? kEndless : timeout;
  const Clock::time_point start = Clock::now();
  EventTimeout left = limit;
  bool useful = true;
  while ((*event = quillmere::events::TakeFromMainQueue()) == nullptr && useful) {
    useful = ServeOnce(left);
    quillmere::events::FireDueTimers();
    if (left <= 0) useful = false;  // one service without a wait, and a last look
    left = limit - std::chrono::duration<double>(Clock::now() - start).count();
  }
  return *event != nullptr ? noErr : eventLoopTimedOutErr;
}
