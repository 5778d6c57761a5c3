/// Time since the machine started, and conversions between its units.
///
/// An AbsoluteTime counts nanoseconds of a clock that never goes back. A Duration is a time span of
/// 32 bits: positive numbers are milliseconds, negative ones microseconds, the largest means no
/// limit.
#pragma once

#include "base_types.h"

using AbsoluteTime = UInt64;
using Nanoseconds = UInt64;
using Duration = SInt32;

inline constexpr Duration kDurationImmediate = 0;
inline constexpr Duration kDurationMillisecond = 1;
inline constexpr Duration kDurationSecond = 1000;
inline constexpr Duration kDurationForever = 0x7FFFFFFF;

/// Time since the machine started, sleep left out.
AbsoluteTime UpTime();
/// The same in ticks, sixtieths of a second; goes on with 0 after 2^32 - 1.
UInt32 TickCount();
/// Waits for that many ticks; `final_ticks` (may be null) takes TickCount at the end.
void Delay(UInt32 ticks, UInt32* final_ticks);

Nanoseconds AbsoluteToNanoseconds(AbsoluteTime time);
AbsoluteTime NanosecondsToAbsolute(Nanoseconds time);
/// kDurationForever gives the largest value.
Nanoseconds DurationToNanoseconds(Duration duration);
AbsoluteTime DurationToAbsolute(Duration duration);
/// Whole milliseconds where the time is some, else microseconds rounded down; from 2^31
/// microseconds (36 minutes) on milliseconds rounded down; kDurationForever for what does not fit.
Duration NanosecondsToDuration(Nanoseconds time);
Duration AbsoluteToDuration(AbsoluteTime time);
