/// What a sample description of MPEG-4 holds for the decoder.
#pragma once

#include <span>

#include "base_types.h"

namespace quillmere::movies {

/// The decoder's own part of the content of an `esds` (ISO/IEC 14496-1, 7.2.6); empty if there is
/// none.
std::span<const UInt8> DecoderSetupOf(std::span<const UInt8> esds);

}  // namespace quillmere::movies
