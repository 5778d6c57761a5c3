/// Plane geometry of whole-pixel rectangles. All functions depend on their arguments alone.
#pragma once

#include "base_types.h"

/// The size as one word: width in the high 16 bits, height in the low ones.
UInt32 GL_GetRectSize(const Rect* rect);
/// Width times height, in 32 bits.
SInt32 GL_GetRectArea(const Rect* rect);
/// The rectangle at 0,0 of a size word.
void GL_SizeToRect(UInt32 size, Rect* rect);
void GL_SetRectTlbr(Rect* rect, SInt16 top, SInt16 left, SInt16 bottom, SInt16 right);
void GL_ClearRect(Rect* rect);
/// Moves the rectangle, keeping its size, so that its top left lies at the point.
void GL_MoveRectTopLeft(Rect* rect, Point point);
void GL_MoveRectTopLeftToOrigin(Rect* rect);
/// 1 if all four fields are equal.
Boolean GL_RectsCoincide(const Rect* a, const Rect* b);
/// The intersection, 0,0,0,0 if it is empty, in `out` (may be null); 1 if it is not empty.
Boolean GL_SectRect(const Rect* a, const Rect* b, Rect* out);
/// 1 if `inner` is empty or lies wholly in `outer`.
Boolean GL_IsRectInRect(const Rect* inner, const Rect* outer);
/// 1 if `inner`, moved to the top left of `outer`, lies in it.
Boolean GL_RectFitsInsideRect(const Rect* inner, const Rect* outer);
/// Moves `inner` by the least amounts that bring it inside `outer`, if it fits there.
void GL_MoveRectInsideRect(const Rect* outer, Rect* inner);
/// Moves each side inward by the like-named field of `borders`; 0,0,0,0 if nothing is left.
void GL_InsetRectByRect(Rect* rect, const Rect* borders);

/// The largest rectangle of the source's proportions inside the box, centred in it. New sides are
/// rounded to nearest, (a b + c / 2) / c; the insets (box side - new side) / 2 are cut toward zero,
/// so that an odd remainder makes the result one pixel larger. `out` and `scale` (new side / old
/// side) may be null. An empty source leaves both alone.
void GL_FitRectInBox(const Rect* source, const Rect* box, Rect* out, Float32* scale);
/// The smallest rectangle of the source's proportions that covers the box, centred on it, by the
/// same rounding.
void GL_CoverBoxWithRect(const Rect* source, const Rect* box, Rect* out, Float32* scale);
