/// The status numbers of navigation, 25001 and 25002, and their error keys.
#pragma once

#include "base_types.h"
#include "cf_strings.h"

/// There are no dialogs for choosing files.
inline constexpr SInt32 NS_NoNavServicesErr = 25001;
/// A navigation dialog without an event procedure.
inline constexpr SInt32 NS_NoEventProcErr = 25002;

/// Sets the constant key of a code of this library; "GL UnknownErr" if it has none. A null
/// `outKey` takes nothing.
void NS_GetLibErrorKey(SInt32 code, CFStringRef* outKey);
