/// What the machine has, by selectors of four characters.
#pragma once

#include "base_types.h"

inline constexpr OSErr gestaltUndefSelectorErr = -5551;

/// | selector | response |
/// |---|---|
/// | sys1, sys2, sys3 | the three numbers of the system's release |
/// | qtim | version of the movie toolbox: 16 bits of major, minor and bug-fix number, and 16 more |
/// | qtrs | features of it; bit 0: it can be called by any program |
///
/// gestaltUndefSelectorErr for others, which leave the response alone.
OSErr Gestalt(OSType selector, SInt32* response);
