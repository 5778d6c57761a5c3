/// Drawing in bitmap contexts.
///
/// A context's coordinates begin at the bottom left and point up, one unit a pixel, until they are
/// moved or scaled. Drawing lies over what is there; calls with a null context do nothing.
#pragma once

#include "base_types.h"
#include "graphics_types.h"
#include "images.h"

/// Colour and alpha for what is filled, 0 to 1; opaque black at first.
void CGContextSetRGBFillColor(CGContextRef context, CGFloat red, CGFloat green, CGFloat blue,
                              CGFloat alpha);
/// Moves the origin, in coordinates as they are, or scales both axes.
void CGContextTranslateCTM(CGContextRef context, CGFloat x, CGFloat y);
void CGContextScaleCTM(CGContextRef context, CGFloat x, CGFloat y);
/// Fills every pixel that the rectangle touches.
void CGContextFillRect(CGContextRef context, CGRect rect);

namespace quillmere::imaging {

/// A place of the context as pixels from the left and the top, and how much a unit is there.
struct DevicePlace {
  double x;
  double y;
  double scale_x;
  double scale_y;
};
DevicePlace DevicePlaceOf(CGContextRef context, CGFloat x, CGFloat y);

/// Lays the fill colour over a block of pixels, left and top from the top left, through coverage of
/// 0 to 255, `width` by `height`. What lies outside the context is left out.
void FillThroughMask(CGContextRef context, SInt32 left, SInt32 top, SInt32 width, SInt32 height,
                     const UInt8* coverage);

}  // namespace quillmere::imaging
