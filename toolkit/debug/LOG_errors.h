/// The status number of logging, 22001, and its error key.
#pragma once

#include "base_types.h"
#include "cf_strings.h"

/// A log could not be saved.
inline constexpr SInt32 LOG_CouldNotSaveLogErr = 22001;

/// Sets the constant key of a code of this library; "GL UnknownErr" if it has none. A null
/// `outKey` takes nothing.
void LOG_GetLibErrorKey(SInt32 code, CFStringRef* outKey);
