/// Drawing a picture into a frame through an affine map.
#pragma once

#include "base_types.h"
#include "blending.h"
#include "image_decoder.h"

namespace quillmere::imaging {

/// x' = xx x + yx y + x0, y' = xy x + yy y + y0, in pixels.
struct AffineMap {
  double xx = 1, xy = 0;
  double yx = 0, yy = 1;
  double x0 = 0, y0 = 0;

  /// True if the map moves by whole pixels and does nothing else.
  bool IsWholeMove() const;
  friend bool operator==(const AffineMap&, const AffineMap&) = default;
};

/// The map that stands a picture of that size as encoded upright, its corner at 0, 0; orientation 1
/// to 8 as in TIFF.
AffineMap MapOfOrientation(UInt8 orientation, UInt32 width, UInt32 height);

/// Draws the picture into the frame, cut to it. Maps that only move by whole pixels, mirror or turn
/// by quarters move pixels exactly. All others take a pixel whose centre falls into the picture by
/// bilinear interpolation, weights in 1/256, edges repeated, colours weighted with their alpha.
/// `opaque` tells that no alpha of the picture is below 255. A map without an inverse draws
/// nothing.
void DrawPicture(const PixelBlock& picture, bool opaque, const AffineMap& map, const Blend& blend,
                 const PixelBlock& frame);

/// Makes the whole frame opaque black.
void FillBlack(const PixelBlock& frame);

}  // namespace quillmere::imaging
