/// Dates and times as text, in the form that the user's locale gives them.
#pragma once

#include "absolute_time.h"
#include "cf_strings.h"
#include "reference_counted.h"

struct CFLocale;
struct CFDateFormatter;
using CFLocaleRef = const CFLocale*;
using CFDateFormatterRef = const CFDateFormatter*;

enum CFDateFormatterStyle : SInt32 {
  kCFDateFormatterNoStyle = 0,
  kCFDateFormatterShortStyle = 1,
  kCFDateFormatterMediumStyle = 2,
  kCFDateFormatterLongStyle = 3,
  kCFDateFormatterFullStyle = 4
};

/// The locale of the process's environment (LC_ALL, LC_TIME, LANG); the caller owns it.
CFLocaleRef CFLocaleCopyCurrent();
/// A locale by its identifier, such as "en_US"; the caller owns it.
CFLocaleRef CFLocaleCreate(CFAllocatorRef allocator, CFStringRef identifier);

/// A formatter of dates and times in the local time zone; a null locale is the current one. The
/// caller owns it; null if the locale has no such form. A formatter is used by one thread at a
/// time.
CFDateFormatterRef CFDateFormatterCreate(CFAllocatorRef allocator, CFLocaleRef locale,
                                         CFDateFormatterStyle date_style,
                                         CFDateFormatterStyle time_style);
/// The text of a time; the caller owns it. Null for a null formatter.
CFStringRef CFDateFormatterCreateStringWithAbsoluteTime(CFAllocatorRef allocator,
                                                        CFDateFormatterRef formatter,
                                                        CFAbsoluteTime time);
