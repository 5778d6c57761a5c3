/// Plane geometry on whole pixels: points, rectangles and borders.
///
/// Width is right minus left, height bottom minus top; right and bottom lie outside. Pure
/// functions: no failure, no shared state. A coordinate or difference that leaves 16 bits wraps
/// around. Results may stand in the place of arguments. See GL_QuickDraw_Fixed.h and
/// GL_QuickDraw_Float.h for the other kinds of rectangles, and GL_QuickDraw_Fit.h for fitting and
/// splitting.
#pragma once

#include "base_types.h"

/// A size as one word: width in the high 16 bits, height in the low 16 bits.
using GL_SizeWord = UInt32;

/// Width and height of a size word, in pixels.
constexpr SInt16 GL_WidthOfSize(GL_SizeWord size) {
  return static_cast<SInt16>(size >> 16);
}
constexpr SInt16 GL_HeightOfSize(GL_SizeWord size) {
  return static_cast<SInt16>(size & 0xFFFF);
}
GL_SizeWord GL_GetRectSize(const Rect* rect);
/// Width times height, also of a rectangle whose edges are exchanged.
SInt32 GL_GetRectArea(const Rect* rect);

// Making points and rectangles.

Point GL_TopLeft(const Rect* rect);
Point GL_TopRight(const Rect* rect);
Point GL_BottomLeft(const Rect* rect);
Point GL_BottomRight(const Rect* rect);
void GL_ClearPoint(Point* point);
Boolean GL_IsPtClear(const Point* point);
void GL_SetRectFromPoints(Point topLeft, Point bottomRight, Rect* rect);
void GL_SetRectTlbr(Rect* rect, SInt16 top, SInt16 left, SInt16 bottom, SInt16 right);
/// Stores a measuring rectangle: the third and fourth fields are its width and height.
void GL_SetRectTlwh(Rect* rect, SInt16 top, SInt16 left, SInt16 width, SInt16 height);
void GL_ClearRect(Rect* rect);
/// A rectangle of that size at the origin.
void GL_SizeToRect(GL_SizeWord size, Rect* rect);
/// The pixel at a point.
void GL_PtToRect(Point point, Rect* rect);

// Borders: a Rect whose fields are the widths at the four sides, positive inward.

/// Lets a rectangle grow by borders, or shrink by them.
void GL_AddRectBorders(Rect* rect, const Rect* borders);
void GL_RemoveRectBorders(Rect* rect, const Rect* borders);
void GL_AddBorders(const Rect* a, const Rect* b, Rect* sum);
/// The borders that lead from the outer to the inner rectangle.
void GL_GetRectBorders(const Rect* outer, const Rect* inner, Rect* borders);
/// GL_RemoveRectBorders, but borders that leave nothing give 0, 0, 0, 0.
void GL_InsetRectByRect(Rect* rect, const Rect* borders);
/// What of `a` lies outside of `b`, as borders.
void GL_DiffRect(const Rect* a, const Rect* b, Rect* borders);

// Moving. The size is kept.

/// Corner codes of GL_MoveRectToPoint; any other is the top right.
enum GL_Corner : SInt32 { kGL_TopLeft = 0, kGL_BottomLeft = 1, kGL_BottomRight = 2 };
/// Moves a rectangle so that a corner lies at the point.
void GL_MoveRectToPoint(Point point, SInt32 corner, Rect* rect);
void GL_MoveRectTopLeft(Rect* rect, Point point);
void GL_MoveRectTopLeftToOrigin(Rect* rect);
/// Moves `inner` by the least that brings it inside `outer`; false, with nothing moved, if it is
/// larger.
Boolean GL_MoveRectInsideRect(const Rect* outer, Rect* inner);

// Comparing.

/// All four edges count as inside.
Boolean GL_PointInRectInclusive(Point point, const Rect* rect);
/// True for an `inner` without area, wherever it lies.
Boolean GL_IsRectInRect(const Rect* inner, const Rect* outer);
/// Tells if `inner` could be moved into `outer`.
Boolean GL_RectFitsInsideRect(const Rect* inner, const Rect* outer);
/// Tells if no field of `a` is above that of `b`.
Boolean GL_IsEdgeRectInEdgeRect(const Rect* a, const Rect* b);
/// a <= b and c <= d.
Boolean GL_IsInterval1InInterval2(SInt32 a, SInt32 b, SInt32 c, SInt32 d);
Boolean GL_RectsCoincide(const Rect* a, const Rect* b);
/// The intersection, into `out` unless that is null: 0, 0, 0, 0 and false if it is empty.
Boolean GL_SectRect(const Rect* a, const Rect* b, Rect* out);
/// The magnitudes of the differences, field by field.
void GL_GetRectAbsDiff(const Rect* a, const Rect* b, Rect* out);

// Through a matrix: the bounds of the transformed corners.

void GL_TransformRect(const MatrixRecord* matrix, const Rect* source, Rect* target);

// Texts, on standard output with a newline, or into a C string without: a name and the numbers take
// less than 100 bytes more than the name.

void GL_PrintRect(const Rect* rect);
void GL_PrintRectWithName(const Rect* rect, const char* name);
void GL_SPrintRectWithName(char* text, const Rect* rect, const char* name);
void GL_SPrintRectWithNameNoWH(char* text, const Rect* rect, const char* name);
void GL_PrintPointWithName(Point point, const char* name);
void GL_PrintEdgeWithName(const Rect* rect, const char* name);
