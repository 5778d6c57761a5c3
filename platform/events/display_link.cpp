#include "display_link.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::nanoseconds kRefresh{1'000'000'000 / 60};

CVTimeStamp StampOf(UInt64 frame, Clock::time_point time) {
  return {frame, std::chrono::duration<double>(time.time_since_epoch()).count()};
}

}  // namespace

struct DisplayLink {
  std::atomic<SInt32> references = 1;
  std::mutex mutex;
  std::condition_variable changed;
  CVDisplayLinkOutputCallback callback = nullptr;
  void* user_data = nullptr;
  bool running = false;
  std::thread thread;

  void Run() {
    const Clock::time_point start = Clock::now();
    UInt64 frame = 0;
    std::unique_lock lock(mutex);
    while (running) {
      lock.unlock();
      const Clock::time_point now = Clock::now();
      const Clock::time_point next = start + kRefresh * static_cast<SInt64>(frame + 1);
      const CVTimeStamp current = StampOf(frame, now);
      const CVTimeStamp output = StampOf(frame + 1, next);
      CVOptionFlags flags_out = 0;
      callback(this, &current, &output, 0, &flags_out, user_data);
      const auto passed = static_cast<UInt64>((Clock::now() - start) / kRefresh);
      frame = passed > frame ? passed : frame;
      lock.lock();
      ++frame;
      changed.wait_until(lock, start + kRefresh * static_cast<SInt64>(frame),
                         [this] { return !running; });
    }
  }
};

CVReturn CVDisplayLinkCreateWithActiveCGDisplays(CVDisplayLinkRef* link) {
  if (!link) return kCVReturnInvalidArgument;
  *link = std::make_unique<DisplayLink>().release();
  return kCVReturnSuccess;
}

CVReturn CVDisplayLinkSetOutputCallback(CVDisplayLinkRef link, CVDisplayLinkOutputCallback callback,
                                        void* user_data) {
  if (!link || !callback) return kCVReturnInvalidArgument;
  const std::lock_guard lock(link->mutex);
  if (link->running) return kCVReturnDisplayLinkAlreadyRunning;
  link->callback = callback;
  link->user_data = user_data;
  return kCVReturnSuccess;
}

CVReturn CVDisplayLinkStart(CVDisplayLinkRef link) {
  if (!link) return kCVReturnInvalidArgument;
  const std::lock_guard lock(link->mutex);
  if (link->running) return kCVReturnDisplayLinkAlreadyRunning;
  if (!link->callback) return kCVReturnDisplayLinkCallbacksNotSet;
  link->running = true;
  link->thread = std::thread([link] { link->Run(); });
  return kCVReturnSuccess;
}

CVReturn CVDisplayLinkStop(CVDisplayLinkRef link) {
  if (!link) return kCVReturnInvalidArgument;
  std::thread ended;
  {
    const std::lock_guard lock(link->mutex);
    if (!link->running) return kCVReturnDisplayLinkNotRunning;
    link->running = false;
    ended = std::move(link->thread);
  }
  link->changed.notify_all();
  ended.join();
  return kCVReturnSuccess;
}

Boolean CVDisplayLinkIsRunning(CVDisplayLinkRef link) {
  if (!link) return 0;
  const std::lock_guard lock(link->mutex);
  return link->running ? 1 : 0;
}

CVDisplayLinkRef CVDisplayLinkRetain(CVDisplayLinkRef link) {
  if (link) link->references.fetch_add(1, std::memory_order_relaxed);
  return link;
}

void CVDisplayLinkRelease(CVDisplayLinkRef link) {
  if (!link || link->references.fetch_sub(1, std::memory_order_acq_rel) > 1) return;
  CVDisplayLinkStop(link);
  const std::unique_ptr<DisplayLink> last(link);
}
