/// Pixels of a map, filled, blended and copied through a region.
#pragma once

#include "graphics_ports.h"
#include "regions.h"
#include "text_masks_private.h"

namespace quillmere::drawing {

/// Fills the region, which lies within the map's bounds.
void FillRegion(const PixMap& map, RgnHandle region, const RGBColor& color);
/// Lays a colour over the region where a mask, whose top left lies at h, v, covers it.
void FillMask(const PixMap& map, RgnHandle region, const TextMask& mask, SInt32 h, SInt32 v,
              const RGBColor& color);
/// Copies as CopyBits tells, into the region.
void CopyPixels(const PixMap& from, const PixMap& to, const Rect& source, const Rect& destination,
                RgnHandle region);
/// Whether the pixel of a one-bit map is black; `h` counts from the map's left edge.
inline bool IsBlack(const UInt8* line, SInt32 h) {
  return (line[h / 8] & (0x80 >> h % 8)) != 0;
}

}  // namespace quillmere::drawing
