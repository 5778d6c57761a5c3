/// Comparing runs of UTF-16 units.
#pragma once

#include "base_types.h"
#include "cf_strings.h"

using UniCharCount = UInt64;

/// Compares as file names are compared, upper and lower case alike; the only option there is.
inline constexpr UInt32 kUCCollateTypeHFSExtended = 0x1000000;

/// Compares two runs of units without regard to a language. `*equivalent` tells whether they are
/// equal, `*order` is -1, 0 or 1; either may be null. paramErr for other options and for a null
/// pointer to units of a run that is not empty.
OSStatus UCCompareTextNoLocale(UInt32 options, const UniChar* text1, UniCharCount length1,
                               const UniChar* text2, UniCharCount length2, Boolean* equivalent,
                               SInt32* order);
