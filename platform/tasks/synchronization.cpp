// Semaphores, events and critical regions.
#include <utility>

#include "multiprocessing.h"
#include "waiting.h"

using namespace quillmere::tasks;

namespace {

struct Semaphore : Slot {
  static constexpr UInt32 kKind = 3;
  MPSemaphoreCount maximum = 0;
  MPSemaphoreCount count = 0;

  void Clear() { maximum = count = 0; }
};

struct Event : Slot {
  static constexpr UInt32 kKind = 4;
  MPEventFlags flags = 0;

  void Clear() { flags = 0; }
};

struct Region : Slot {
  static constexpr UInt32 kKind = 5;
  UInt64 holder = 0;  ///< the holding thread's number, 0 if there is none
  UInt64 entries = 0;

  void Clear() { holder = entries = 0; }
};

/// A number of the calling thread that no other thread has, before it or after.
UInt64 ThreadNumber() {
  static std::atomic<UInt64> last = 0;
  thread_local const UInt64 number = ++last;
  return number;
}

}  // namespace

OSStatus MPCreateSemaphore(MPSemaphoreCount maximum, MPSemaphoreCount initial,
                           MPSemaphoreID* semaphore) {
  if (!semaphore || maximum == 0 || initial > maximum) return paramErr;
  *semaphore = Table<Semaphore>().Create([&](Semaphore& object) {
    object.maximum = maximum;
    object.count = initial;
  });
  return *semaphore ? noErr : kMPInsufficientResourcesErr;
}

OSStatus MPDeleteSemaphore(MPSemaphoreID semaphore) {
  return DeleteObject<Semaphore>(semaphore);
}

OSStatus MPSignalSemaphore(MPSemaphoreID semaphore) {
  Locked<Semaphore> found = Table<Semaphore>().Find(semaphore);
  if (!found) return kMPInvalidIDErr;
  if (found->count == found->maximum) return kMPInsufficientResourcesErr;
  ++found->count;
  found.UnlockAndNotify();
  return noErr;
}

OSStatus MPWaitOnSemaphore(MPSemaphoreID semaphore, Duration timeout) {
  return WaitOn<Semaphore>(
      semaphore, timeout, [](const Semaphore& object) { return object.count > 0; },
      [](Semaphore& object) { --object.count; });
}

OSStatus MPCreateEvent(MPEventID* event) {
  if (!event) return paramErr;
  *event = Table<Event>().Create([](Event&) {});
  return *event ? noErr : kMPInsufficientResourcesErr;
}

OSStatus MPDeleteEvent(MPEventID event) {
  return DeleteObject<Event>(event);
}

OSStatus MPSetEvent(MPEventID event, MPEventFlags flags) {
  Locked<Event> found = Table<Event>().Find(event);
  if (!found) return kMPInvalidIDErr;
  found->flags |= flags;
  if (found->flags) found.UnlockAndNotify();
  return noErr;
}

OSStatus MPWaitForEvent(MPEventID event, MPEventFlags* flags, Duration timeout) {
  MPEventFlags taken = 0;
  const OSStatus status = WaitOn<Event>(
      event, timeout, [](const Event& object) { return object.flags != 0; },
      [&](Event& object) { taken = std::exchange(object.flags, 0); });
  if (!status && flags) *flags = taken;
  return status;
}

OSStatus MPCreateCriticalRegion(MPCriticalRegionID* region) {
  if (!region) return paramErr;
  *region = Table<Region>().Create([](Region&) {});
  return *region ? noErr : kMPInsufficientResourcesErr;
}

OSStatus MPDeleteCriticalRegion(MPCriticalRegionID region) {
  return DeleteObject<Region>(region);
}

OSStatus MPEnterCriticalRegion(MPCriticalRegionID region, Duration timeout) {
  const UInt64 self = ThreadNumber();
  return WaitOn<Region>(
      region, timeout,
      [&](const Region& object) { return object.entries == 0 || object.holder == self; },
      [&](Region& object) {
        object.holder = self;
        ++object.entries;
      });
}

OSStatus MPExitCriticalRegion(MPCriticalRegionID region) {
  Locked<Region> found = Table<Region>().Find(region);
  if (!found) return kMPInvalidIDErr;
  if (found->entries == 0 || found->holder != ThreadNumber()) return kMPInsufficientResourcesErr;
  if (--found->entries == 0) found.UnlockAndNotify();
  return noErr;
}

void quillmere::tasks::LeaveHeldRegions() {
  Table<Region>().ForEach([self = ThreadNumber()](Region& region) {
    if (region.entries == 0 || region.holder != self) return;
    region.Clear();
    region.changed.notify_one();
  });
}
