/// Dates of files and volumes.
#pragma once

#include "base_types.h"

/// A moment as 64 bits: 48 bits of seconds since 1 January 1904, 0:00 UTC, then 16 bits of 1/65536
/// second. All zero means that the date is not known.
struct UTCDateTime {
  UInt16 highSeconds;  ///< the seconds' upper 16 bits
  UInt32 lowSeconds;   ///< the seconds' lower 32 bits
  UInt16 fraction;
  friend bool operator==(const UTCDateTime&, const UTCDateTime&) = default;
};

/// Now, by the system's clock. `options` is 0. paramErr for a null output.
OSStatus GetUTCDateTime(UTCDateTime* now, UInt32 options);

namespace quillmere::files {

/// The date of a time of Unix, seconds and nanoseconds (0 to 999,999,999) since 1970. Times before
/// 1904 become 1904.
UTCDateTime DateOfUnixTime(SInt64 seconds, SInt64 nanoseconds);
/// The other way; the nanoseconds are those that come back to the same fraction.
void UnixTimeOfDate(const UTCDateTime& date, SInt64* seconds, SInt64* nanoseconds);

}  // namespace quillmere::files
