// Messages between two threads: round trips through two queues of the task service, beside the same
// through two bare queues of a mutex, a condition variable and a deque.
//
// Usage: queue_benchmark   Prints round trips a second of both, and the ratio of the times of pairs
// of runs that follow each other (median).

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "multiprocessing.h"
#include "timing.h"

namespace {

using namespace quillmere::benchmarks;

constexpr int kTrips = 20000;
constexpr int kPairs = 15;

using Message = std::array<void*, 3>;

/// What one writes without a task service.
class BareQueue {
 public:
  void Send(void* param) {
    {
      const std::lock_guard lock(mutex_);
      messages_.push_back({param, nullptr, nullptr});
    }
    changed_.notify_one();
  }

  void* Take() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !messages_.empty(); });
    void* param = messages_.front()[0];
    messages_.pop_front();
    return param;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Message> messages_;
};

/// The same operations on a queue of the task service.
class TaskQueue {
 public:
  TaskQueue() { MPCreateQueue(&id_); }
  ~TaskQueue() { MPDeleteQueue(id_); }
  TaskQueue(const TaskQueue&) = delete;
  TaskQueue& operator=(const TaskQueue&) = delete;

  void Send(void* param) { MPNotifyQueue(id_, param, nullptr, nullptr); }
  void* Take() {
    void* param = nullptr;
    MPWaitOnQueue(id_, &param, nullptr, nullptr, kDurationForever);
    return param;
  }

 private:
  MPQueueID id_ = 0;
};

/// Seconds that a number of round trips take; `flight` messages are under way at a time.
template <class Queue>
double TripTime(int flight) {
  Queue there;
  Queue back;
  std::thread echo([&] {
    while (void* param = there.Take())
      back.Send(param);
  });
  int token = 0;
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < flight; ++i)
    there.Send(&token);
  for (int i = 0; i < kTrips - flight; ++i)
    there.Send(back.Take());
  for (int i = 0; i < flight; ++i)
    back.Take();
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  there.Send(nullptr);
  echo.join();
  return time.count();
}

void Measure(const char* name, int flight) {
  std::vector<double> ours;
  std::vector<double> bare;
  std::vector<double> ratios;
  for (int i = 0; i < kPairs; ++i) {
    ours.push_back(TripTime<TaskQueue>(flight));
    bare.push_back(TripTime<BareQueue>(flight));
    ratios.push_back(ours.back() / bare.back());
  }
  std::printf("%-28s %9.0f trips/s   bare %9.0f trips/s   ratio of times %.2f\n", name,
              kTrips / Median(ours), kTrips / Median(bare), Median(ratios));
}

}  // namespace

int main() {
  Measure("one message under way", 1);
  Measure("64 messages under way", 64);
}
