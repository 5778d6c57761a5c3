#include "cf_dates.h"

#include <chrono>
#include <cmath>
#include <ctime>

struct CFDate final : CFObject {
  explicit CFDate(CFAbsoluteTime when) : time(when) {}
  CFAbsoluteTime time;
};

struct CFTimeZone final : CFObject {};

namespace {

namespace chrono = std::chrono;

constexpr chrono::sys_days kEpoch = chrono::sys_days{chrono::year{2001} / 1 / 1};
constexpr SInt64 kEpochInUnixTime = chrono::seconds{kEpoch.time_since_epoch()}.count();
/// Seconds from the epoch to the ends of the years that the calendar's type counts, about 32767.
constexpr double kFarthestTime = 9.0e11;

/// Seconds that local time is ahead of UTC at a time.
SInt64 OffsetFromUtc(SInt64 seconds_of_epoch) {
  const auto time = static_cast<std::time_t>(seconds_of_epoch + kEpochInUnixTime);
  std::tm local{};
  tzset();
  return localtime_r(&time, &local) ? SInt64{local.tm_gmtoff} : 0;
}

}  // namespace

CFDateRef CFDateCreate(CFAllocatorRef, CFAbsoluteTime time) {
  return new CFDate(time);
}

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef date) {
  return date ? date->time : 0;
}

CFTimeZoneRef CFTimeZoneCopySystem() {
  return new CFTimeZone;
}

CFGregorianDate CFAbsoluteTimeGetGregorianDate(CFAbsoluteTime time, CFTimeZoneRef zone) {
  if (!(std::fabs(time) < kFarthestTime)) return {};
  const double whole = std::floor(time);
  auto seconds = static_cast<SInt64>(whole);
  if (zone) seconds += OffsetFromUtc(seconds);
  const chrono::sys_seconds moment = kEpoch + chrono::seconds{seconds};
  const auto days = chrono::floor<chrono::days>(moment);
  const chrono::year_month_day date{days};
  const chrono::hh_mm_ss clock{moment - days};
  return {int{date.year()},
          static_cast<SInt8>(unsigned{date.month()}),
          static_cast<SInt8>(unsigned{date.day()}),
          static_cast<SInt8>(clock.hours().count()),
          static_cast<SInt8>(clock.minutes().count()),
          static_cast<double>(clock.seconds().count()) + (time - whole)};
}

CFAbsoluteTime CFGregorianDateGetAbsoluteTime(CFGregorianDate date) {
  const chrono::month in_year{static_cast<unsigned>(date.month)};
  const chrono::sys_days month = chrono::year{date.year} / in_year / 1;
  const SInt64 days = (month - kEpoch).count() + date.day - 1;
  const SInt64 minutes = (days * 24 + date.hour) * 60 + date.minute;
  return static_cast<double>(minutes) * 60 + date.second;
}

namespace quillmere {

CFDateRef AsDate(CFTypeRef object) {
  return dynamic_cast<const CFDate*>(ObjectOf(object));
}

}  // namespace quillmere
