#include "file_dates.h"

#include <algorithm>
#include <ctime>

namespace {

/// Seconds from 1904 to 1970: 66 years, 17 of them leap years.
constexpr SInt64 kUnixEpoch = (66 * 365 + 17) * SInt64{86400};
constexpr SInt64 kLatest = (SInt64{1} << 48) - 1;
constexpr SInt64 kNanoseconds = 1'000'000'000;

}  // namespace

OSStatus GetUTCDateTime(UTCDateTime* now, UInt32 options) {
  if (!now || options != 0) return paramErr;
  timespec time{};
  clock_gettime(CLOCK_REALTIME, &time);
  *now = quillmere::files::DateOfUnixTime(time.tv_sec, time.tv_nsec);
  return noErr;
}

namespace quillmere::files {

UTCDateTime DateOfUnixTime(SInt64 seconds, SInt64 nanoseconds) {
  if (seconds < -kUnixEpoch) return {};
  const SInt64 all = std::min(seconds, kLatest - kUnixEpoch) + kUnixEpoch;
  return {static_cast<UInt16>(all >> 32), static_cast<UInt32>(all & 0xFFFFFFFF),
          static_cast<UInt16>(nanoseconds * 65536 / kNanoseconds)};
}

void UnixTimeOfDate(const UTCDateTime& date, SInt64* seconds, SInt64* nanoseconds) {
  *seconds = ((SInt64{date.highSeconds} << 32) | date.lowSeconds) - kUnixEpoch;
  // Rounded up, so that cutting it to a fraction again gives this one.
  *nanoseconds = (date.fraction * kNanoseconds + 65535) / 65536;
}

}  // namespace quillmere::files
