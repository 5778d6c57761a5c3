/// The ways in which a pair of lines of 2vuy is taken apart; CO_Y420_Frames.h takes the fastest
/// that the processor has.
#pragma once

#include <cstddef>

#include "base_types.h"

namespace quillmere::color {

/// A pair of lines of any width, whole pairs of pixels: their lumas, and the means of their chroma,
/// cut. yA and yB may be the same.
void SplitLinePair(SInt32 width, const UInt8* lineA, const UInt8* lineB, UInt8* yA, UInt8* yB,
                   UInt8* cb, UInt8* cr);

/// Pixels of a step of SplitLinePairWide.
inline constexpr std::ptrdiff_t kWidePixels = 64;

/// Whether the processor has AVX-512 with VBMI.
bool CanSplitWide();
/// The same of `count` times 64 pixels.
void SplitLinePairWide(std::ptrdiff_t count, const UInt8* lineA, const UInt8* lineB, UInt8* yA,
                       UInt8* yB, UInt8* cb, UInt8* cr);

}  // namespace quillmere::color
