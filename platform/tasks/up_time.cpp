#include "up_time.h"

#include <chrono>
#include <limits>

#include "multiprocessing.h"

namespace {

constexpr UInt64 kPerMicrosecond = 1000;
constexpr UInt64 kPerMillisecond = 1000 * kPerMicrosecond;
/// Microseconds go down to the most negative Duration.
constexpr UInt64 kMostMicroseconds = UInt64{1} << 31;

}  // namespace

AbsoluteTime UpTime() {
  const auto since_start = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<AbsoluteTime>(
      std::chrono::duration_cast<std::chrono::nanoseconds>(since_start).count());
}

UInt32 TickCount() {
  // A sixtieth of a second is 50,000,000 / 3 nanoseconds.
  return static_cast<UInt32>(AbsoluteToNanoseconds(UpTime()) * 3 / 50'000'000);
}

void Delay(UInt32 ticks, UInt32* final_ticks) {
  const AbsoluteTime end = UpTime() + NanosecondsToAbsolute(UInt64{ticks} * 50'000'000 / 3);
  MPDelayUntil(&end);
  if (final_ticks) *final_ticks = TickCount();
}

Nanoseconds AbsoluteToNanoseconds(AbsoluteTime time) {
  return time;
}

AbsoluteTime NanosecondsToAbsolute(Nanoseconds time) {
  return time;
}

Nanoseconds DurationToNanoseconds(Duration duration) {
  if (duration == kDurationForever) return std::numeric_limits<Nanoseconds>::max();
  if (duration >= 0) return static_cast<UInt64>(duration) * kPerMillisecond;
  return static_cast<UInt64>(-SInt64{duration}) * kPerMicrosecond;
}

AbsoluteTime DurationToAbsolute(Duration duration) {
  return NanosecondsToAbsolute(DurationToNanoseconds(duration));
}

Duration NanosecondsToDuration(Nanoseconds time) {
  const UInt64 microseconds = time / kPerMicrosecond;
  if (time % kPerMillisecond != 0 && microseconds <= kMostMicroseconds) {
    return static_cast<Duration>(-static_cast<SInt64>(microseconds));
  }
  const UInt64 milliseconds = time / kPerMillisecond;
  return milliseconds < kDurationForever ? static_cast<Duration>(milliseconds) : kDurationForever;
}

Duration AbsoluteToDuration(AbsoluteTime time) {
  return NanosecondsToDuration(AbsoluteToNanoseconds(time));
}
