/// The tables in which the task service keeps its objects.
///
/// An object lies in a slot whose memory is never given back, so a thread may lock a slot at any
/// time, whatever has been deleted meanwhile; only under the slot's lock does it learn whether the
/// slot still holds the object that it means. Slots are used again, the longest free first, under a
/// new generation.
///
/// An object's number is made of its kind (3 bits), the slot's generation (15) and the slot's index
/// (14).
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <new>

#include "base_types.h"

namespace quillmere::tasks {

inline constexpr UInt32 kIndexBits = 14;
inline constexpr UInt32 kGenerationBits = 15;
inline constexpr UInt32 kGenerationMask = (1U << kGenerationBits) - 1;

/// What every slot has; kinds derive from it. All fields are guarded by `mutex`, but for the last
/// two, which are the table's.
struct Slot {
  std::mutex mutex;
  std::condition_variable changed;  ///< notified when what a thread may wait for has happened
  UInt32 id = 0;                    ///< the number of the object in here, 0 if there is none
  UInt32 generation = 0;            ///< of the last object in here
  UInt32 index = 0;
  Slot* next_free = nullptr;
};

/// An object found by its number, its slot locked; empty if the number names none.
template <class Object>
struct Locked {
  Object* object = nullptr;
  std::unique_lock<std::mutex> lock;

  explicit operator bool() const { return object != nullptr; }
  Object* operator->() const { return object; }
  Object& operator*() const { return *object; }

  /// Unlocks the slot and wakes one thread that waits on it, in this order, so that the thread does
  /// not run into the lock.
  void UnlockAndNotify() {
    lock.unlock();
    object->changed.notify_one();
  }
};

/// The objects of one kind. `Object` derives from Slot and has `static constexpr UInt32 kKind`, 1
/// to 7, and `void Clear()`, which makes it as new when it is deleted.
template <class Object>
class ObjectTable {
 public:
  /// Takes a slot, lets `prepare(object)` fill it under its lock and gives its number; 0 if there
  /// are too many objects or there is no memory.
  template <class Prepare>
  UInt32 Create(Prepare prepare) {
    Object* object = TakeSlot();
    if (!object) return 0;
    const std::lock_guard lock(object->mutex);
    prepare(*object);
    object->generation = (object->generation + 1) & kGenerationMask;
    object->id = (Object::kKind << (kIndexBits + kGenerationBits)) |
                 (object->generation << kIndexBits) | object->index;
    return object->id;
  }

  Locked<Object> Find(UInt32 id) {
    Object* object = SlotOf(id);
    if (!object) return {};
    std::unique_lock lock(object->mutex);
    if (object->id != id) return {};
    return {object, std::move(lock)};
  }

  /// Deletes a locked object: its number means nothing from here on, and whoever waits wakes.
  void Delete(Locked<Object> found) {
    found->id = 0;
    found->Clear();
    found->changed.notify_all();
    found.lock.unlock();
    GiveBack(found.object);
  }

  /// Whether `id` was the number of an object that has been deleted.
  bool WasDeleted(UInt32 id) {
    Object* object = SlotOf(id);
    if (!object) return false;
    const std::lock_guard lock(object->mutex);
    const UInt32 generation = (id >> kIndexBits) & kGenerationMask;
    const UInt32 age = (object->generation - generation) & kGenerationMask;
    return object->id != id && age <= kGenerationMask / 2;
  }

  /// Calls `visit(object)` for each object there is, under its lock.
  template <class Visit>
  void ForEach(Visit visit) {
    const UInt32 used = used_.load(std::memory_order_acquire);
    for (UInt32 index = 0; index < used; ++index) {
      Object& object = SlotAt(index);
      const std::lock_guard lock(object.mutex);
      if (object.id) visit(object);
    }
  }

 private:
  static constexpr UInt32 kMost = 1U << kIndexBits;
  static constexpr UInt32 kChunk = 64;
  /// As long as fewer slots were used, new ones are: numbers recur the later, the more slots there
  /// are to go round.
  static constexpr UInt32 kFewSlots = 256;
  using Chunk = std::array<Object, kChunk>;

  Object& SlotAt(UInt32 index) {
    return (*chunks_[index / kChunk].load(std::memory_order_acquire))[index % kChunk];
  }

  /// The slot that `id` points at, whatever it holds; null if the kind is another or there is none.
  Object* SlotOf(UInt32 id) {
    const UInt32 index = id & (kMost - 1);
    if (id >> (kIndexBits + kGenerationBits) != Object::kKind) return nullptr;
    return index < used_.load(std::memory_order_acquire) ? &SlotAt(index) : nullptr;
  }

  Object* TakeSlot() {
    const std::lock_guard lock(mutex_);
    const UInt32 used = used_.load(std::memory_order_relaxed);
    if (first_free_ && used >= kFewSlots) return TakeFree();
    if (used == kMost) return nullptr;
    if (used % kChunk == 0) {
      auto chunk = std::unique_ptr<Chunk>(new (std::nothrow) Chunk);
      if (!chunk) return first_free_ ? TakeFree() : nullptr;
      chunks_[used / kChunk].store(chunk.release(), std::memory_order_release);
    }
    Object& object = SlotAt(used);
    object.index = used;
    used_.store(used + 1, std::memory_order_release);
    return &object;
  }

  Object* TakeFree() {
    Slot* slot = first_free_;
    first_free_ = slot->next_free;
    if (!first_free_) last_free_ = nullptr;
    slot->next_free = nullptr;
    return static_cast<Object*>(slot);
  }

  void GiveBack(Slot* slot) {
    const std::lock_guard lock(mutex_);
    (last_free_ ? last_free_->next_free : first_free_) = slot;
    last_free_ = slot;
  }

  std::mutex mutex_;  ///< guards the free slots and the making of chunks
  std::atomic<UInt32> used_ = 0;
  Slot* first_free_ = nullptr;
  Slot* last_free_ = nullptr;
  std::array<std::atomic<Chunk*>, kMost / kChunk> chunks_ = {};
};

/// The one table of a kind. It is never destroyed: tasks may still run when the process ends.
template <class Object>
ObjectTable<Object>& Table() {
  union Immortal {
    constexpr Immortal() : table() {}
    ~Immortal() {}
    ObjectTable<Object> table;
  };
  static constinit Immortal immortal;
  return immortal.table;
}

}  // namespace quillmere::tasks
