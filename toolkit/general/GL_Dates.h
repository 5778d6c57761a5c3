/// Dates of files.
#pragma once

#include "base_types.h"
#include "file_dates.h"

/// True if all fields are equal; false if either is null.
Boolean GL_EqualUTCDateTime(const UTCDateTime* a, const UTCDateTime* b);
