/// Plane geometry in 16.16 fixed point. Pure functions; results may stand in the place of
/// arguments, and coordinates that leave 32 bits wrap around.
///
/// Mind the order of a FixedRect's fields: left, top, right, bottom.
#pragma once

#include "GL_QuickDraw_Float.h"
#include "base_types.h"

// Between kinds.

void GL_RectToFixed(const Rect* rect, FixedRect* out);
/// Each field rounded to the nearest pixel, halves up; held to 16 bits only by wrapping.
void GL_FixedToRect(const FixedRect* rect, Rect* out);
void GL_FixedRectToFloat(const FixedRect* rect, GL_FloatRect* out);
void GL_FixedRectToDouble(const FixedRect* rect, GL_DoubleRect* out);
void GL_PointToFixed(Point point, FixedPoint* out);
/// Each coordinate rounded to the nearest pixel, halves away from zero.
void GL_FixedToPoint(const FixedPoint* point, Point* out);
void GL_SetFixedRectTlbr(FixedRect* rect, Fixed top, Fixed left, Fixed bottom, Fixed right);
/// A rectangle of that size at the origin.
void GL_SizeToFixedRect(Fixed width, Fixed height, FixedRect* rect);

// Sizes, borders, places.

/// Width and height.
void GL_GetFixedRectSize(const FixedRect* rect, FixedPoint* size);
void GL_FixedTopLeft(const FixedRect* rect, FixedPoint* point);
/// Shrinks a rectangle by borders, whose fields are positive inward; edges may cross.
void GL_InsetFixedRectByFixedRect(FixedRect* rect, const FixedRect* borders);
void GL_GetFixedRectBorders(const FixedRect* outer, const FixedRect* inner, FixedRect* borders);
/// The intersection; where there is none, the low edge of that axis is the high one too.
void GL_SectFixedRect(const FixedRect* a, const FixedRect* b, FixedRect* out);
void GL_GetFixedRectAbsDiff(const FixedRect* a, const FixedRect* b, FixedRect* out);
void GL_OffsetFixedRect(FixedRect* rect, Fixed dh, Fixed dv);
/// Moves a rectangle, its size kept.
void GL_MoveFixedRectTopLeft(FixedRect* rect, Fixed x, Fixed y);

// Through a matrix: the bounds of the transformed corners.

void GL_TransformFixedRect(const MatrixRecord* matrix, const FixedRect* source, FixedRect* target);
/// Scales a rectangle about the origin.
void GL_ScaleFixedRect(Fixed scaleH, Fixed scaleV, FixedRect* rect);

// Texts as those of GL_QuickDraw.h, in pixels with two decimals.

void GL_PrintFixedRectWithName(const FixedRect* rect, const char* name);
void GL_SPrintFixedRectWithName(char* text, const FixedRect* rect, const char* name);
