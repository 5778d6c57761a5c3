/// Regions (regions.h): questions to them, their scaling and their flat form.
#pragma once

#include "base_types.h"
#include "regions.h"

/// The intersection, into `out` unless that is null; true if it is not empty.
Boolean GL_SectRgn(RgnHandle a, RgnHandle b, RgnHandle out);
/// The intersection of a rectangle and a region, in the same way.
Boolean GL_SectRectRgn(const Rect* rect, RgnHandle region, RgnHandle out);
/// The number of its pixels.
UInt32 GL_GetRgnArea(RgnHandle region);
/// True if all of `a`, or of a rectangle, lies in a region.
Boolean GL_IsRgnInRgn(RgnHandle a, RgnHandle b);
Boolean GL_IsRectInRgn(const Rect* rect, RgnHandle region);
/// Disposes of a region, if there is one, and clears the variable.
void GL_DisposeRgn(RgnHandle* region);
/// Adds or takes away the pixel at a point.
void GL_AddPtToRgn(Point point, RgnHandle region);
void GL_RemovePtFromRgn(Point point, RgnHandle region);

/// Scales a region so that its bounds fill `target`: each pixel is that which lies under its
/// centre. The region itself is moved to the origin. An empty region or target gives an empty one.
void GL_ScaleRgn(RgnHandle region, const Rect* target, RgnHandle out);

/// Adds the pixels of a flat form to a region. The form is native 32-bit words: how many runs there
/// are, then their lengths, of pixels outside and inside by turns, outside first, row after row
/// through `rect`. What goes beyond the rectangle is left out.
void GL_UnflattenRgnBitMap(const UInt32* flat, const Rect* rect, RgnHandle region);
/// The flat form of a region over its bounds, `*byteSize` bytes that come from malloc and are the
/// caller's. memFullErr, and null, if there is no memory for them.
SInt32 GL_FlattenRgnBitMap(RgnHandle region, UInt32** flat, UInt32* byteSize);

/// White or one of the six full colours at random, by their codes: 30, 69, 137, 205, 273,
/// 341 or 409 (CO_Basic_Colors.h).
void GL_GetRandomBasicColor(SInt32* code);
