/// Colour spaces that an ICC profile tells; on lcms2.
#pragma once

#include "base_types.h"
#include "cf_values.h"
#include "images.h"

/// The space of an RGB profile, which is copied; null for bytes that are none. The caller owns it.
CGColorSpaceRef CGColorSpaceCreateWithICCProfile(CFDataRef profile);
/// The space's profile, the caller's; null for one without, as the named spaces are.
CFDataRef CGColorSpaceCopyICCProfile(CGColorSpaceRef space);

namespace quillmere::imaging {

/// The space of primaries and a transfer function by the indices of a colour parameter record
/// (ISO/IEC 23091-2): primaries 1, 5 or 6, all under D65, and transfer function 1 or 7. Null for
/// others. The caller owns it.
CGColorSpaceRef CreateVideoColorSpace(UInt16 primaries, UInt16 transfer_function);

}  // namespace quillmere::imaging
