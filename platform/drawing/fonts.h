/// Fonts by number and by name.
///
/// The classic families have their fixed numbers (text_style.h), every other family of the system
/// one from 1024 on that stays the same while the process lives.
#pragma once

#include "base_types.h"

/// The number of a family (a Pascal string; case does not count); 0 if there is none.
void GetFNum(const UInt8* name, SInt16* number);
/// The name of the family of a number, a Pascal string of up to 255 bytes; empty if there is none.
void GetFontName(SInt16 number, UInt8* name);
