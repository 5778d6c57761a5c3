/// The status numbers of audio import and export, 19001 and 19002, and their error keys.
#pragma once

#include "base_types.h"
#include "cf_strings.h"

/// There is no component that exports sound in that form.
inline constexpr SInt32 IA_SoundExportCompNotFoundErr = 19001;
/// There is no component that imports that sound.
inline constexpr SInt32 IA_SoundImportCompNotFoundErr = 19002;

/// Sets the constant key of a code of this library; "GL UnknownErr" if it has none. A null
/// `outKey` takes nothing.
void IA_GetLibErrorKey(SInt32 code, CFStringRef* outKey);
