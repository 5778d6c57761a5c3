#include <array>
#include <vector>

#include "multiprocessing.h"
#include "waiting.h"

using namespace quillmere::tasks;

namespace {

using Message = std::array<void*, 3>;

/// Messages in a ring that grows by doubling and keeps its room.
class MessageRing {
 public:
  bool empty() const { return count_ == 0; }

  /// May throw std::bad_alloc, leaving the ring as it was.
  void Push(const Message& message) {
    if (count_ == room_.size()) Grow();
    room_[(first_ + count_) & (room_.size() - 1)] = message;
    ++count_;
  }

  Message Pop() {
    const Message message = room_[first_];
    first_ = (first_ + 1) & (room_.size() - 1);
    --count_;
    return message;
  }

 private:
  void Grow() {
    std::vector<Message> larger(room_.empty() ? 16 : room_.size() * 2);
    for (std::size_t i = 0; i < count_; ++i)
      larger[i] = room_[(first_ + i) & (room_.size() - 1)];
    room_ = std::move(larger);
    first_ = 0;
  }

  std::vector<Message> room_;  ///< its size is 0 or a power of two
  std::size_t first_ = 0;
  std::size_t count_ = 0;
};

struct Queue : Slot {
  static constexpr UInt32 kKind = 2;
  MessageRing messages;

  void Clear() { messages = {}; }
};

}  // namespace

OSStatus MPCreateQueue(MPQueueID* queue) {
  if (!queue) return paramErr;
  *queue = Table<Queue>().Create([](Queue&) {});
  return *queue ? noErr : kMPInsufficientResourcesErr;
}

OSStatus MPDeleteQueue(MPQueueID queue) {
  return DeleteObject<Queue>(queue);
}

OSStatus MPNotifyQueue(MPQueueID queue, void* param1, void* param2, void* param3) {
  Locked<Queue> found = Table<Queue>().Find(queue);
  if (!found) return kMPInvalidIDErr;
  try {
    found->messages.Push({param1, param2, param3});
  } catch (const std::bad_alloc&) {
    return kMPInsufficientResourcesErr;
  }
  found.UnlockAndNotify();
  return noErr;
}

OSStatus MPWaitOnQueue(MPQueueID queue, void** param1, void** param2, void** param3,
                       Duration timeout) {
  Message message = {};
  const OSStatus status = WaitOn<Queue>(
      queue, timeout, [](const Queue& object) { return !object.messages.empty(); },
      [&](Queue& object) { message = object.messages.Pop(); });
  if (status) return status;
  if (param1) *param1 = message[0];
  if (param2) *param2 = message[1];
  if (param3) *param3 = message[2];
  return noErr;
}
