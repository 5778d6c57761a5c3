/// The time of day as seconds.
#pragma once

#include "base_types.h"

/// Seconds since 1 January 2001, 0:00 UTC.
using CFAbsoluteTime = double;

/// Now, by the system's clock, which may be set.
CFAbsoluteTime CFAbsoluteTimeGetCurrent();
