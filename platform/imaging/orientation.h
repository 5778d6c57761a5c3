/// Placing rows of a picture by its orientation tag.
#pragma once

#include "base_types.h"
#include "image_decoder.h"

namespace quillmere::imaging {

/// True for orientations 5 to 8, which exchange width and height.
constexpr bool SwapsSides(UInt8 orientation) {
  return orientation >= 5;
}

/// Puts `rows` whole rows of a picture, the first of which is its row `first_row` as encoded, where
/// they belong in the upright picture `target`. `rows` is a block of ARGB pixels as encoded, as
/// wide as the encoded picture; orientation 1 to 8 as in TIFF. The two must not overlap.
void PlaceRows(const PixelBlock& rows, UInt32 first_row, UInt8 orientation,
               const PixelBlock& target);

}  // namespace quillmere::imaging
