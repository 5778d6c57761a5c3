/// Dates as values, and absolute times as days and hours of a time zone.
#pragma once

#include "absolute_time.h"
#include "base_types.h"
#include "cf_strings.h"
#include "reference_counted.h"

struct CFDate;
using CFDateRef = const CFDate*;

/// A date of an absolute time; the caller owns it.
CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime time);
/// The date's time; 0 for null.
CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef date);

struct CFTimeZone;
using CFTimeZoneRef = const CFTimeZone*;

/// The time zone of the environment (TZ) or of the machine; the caller owns it.
CFTimeZoneRef CFTimeZoneCopySystem();

/// A time by the Gregorian calendar, also before its introduction. Months and days count from 1.
struct CFGregorianDate {
  SInt32 year;
  SInt8 month;
  SInt8 day;
  SInt8 hour;
  SInt8 minute;
  double second;  ///< with its fraction, below 60
};

/// The calendar's view of a time in a zone; null is UTC. All zero for a time that is not finite or
/// lies more than 28,000 years away.
CFGregorianDate CFAbsoluteTimeGetGregorianDate(CFAbsoluteTime time, CFTimeZoneRef zone);
/// The time of a date in UTC. Years are -32767 to 32767 and months 1 to 12; days and smaller parts
/// may lie outside their ranges and count on.
CFAbsoluteTime CFGregorianDateGetAbsoluteTime(CFGregorianDate date);

namespace quillmere {

/// The object as a date, or null if it is of another kind.
CFDateRef AsDate(CFTypeRef object);

}  // namespace quillmere
