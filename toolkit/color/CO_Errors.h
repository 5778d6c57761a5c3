/// The colour library's status numbers, 14001 to 14019, and their error keys.
#pragma once

#include "base_types.h"
#include "cf_strings.h"

/// CO_BlurVerticalEdge: detail leaves no room for the blur.
inline constexpr SInt32 CO_NoRoomForBlurErr = 14019;

/// Sets the constant key of a code of this library; "GL UnknownErr" if it has none. A null
/// `outKey` takes nothing.
void CO_GetLibErrorKey(SInt32 code, CFStringRef* outKey);
