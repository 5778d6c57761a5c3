#include "GL_QuickDraw.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "GL_QuickDraw_deprecated.h"

namespace {

SInt16 Wrapped(SInt32 value) {
  return static_cast<SInt16>(value);
}

SInt32 WidthOf(const Rect& rect) {
  return rect.right - rect.left;
}

SInt32 HeightOf(const Rect& rect) {
  return rect.bottom - rect.top;
}

/// The rectangle of that size as `rect` with its top left at a place.
Rect At(const Rect& rect, SInt32 top, SInt32 left) {
  return {Wrapped(top), Wrapped(left), Wrapped(top + HeightOf(rect)),
          Wrapped(left + WidthOf(rect))};
}

/// The least shift that brings low to high into limits.
SInt32 ShiftInto(SInt32 low, SInt32 high, SInt32 least, SInt32 most) {
  const SInt32 up = low < least ? least - low : 0;
  return high + up > most ? most - high : up;
}

}  // namespace

GL_SizeWord GL_GetRectSize(const Rect* rect) {
  return (static_cast<UInt32>(WidthOf(*rect) & 0xFFFF) << 16) |
         static_cast<UInt32>(HeightOf(*rect) & 0xFFFF);
}

SInt32 GL_GetRectArea(const Rect* rect) {
  return static_cast<SInt32>(SInt64{WidthOf(*rect)} * HeightOf(*rect));
}

Point GL_TopLeft(const Rect* rect) {
  return {rect->top, rect->left};
}

Point GL_TopRight(const Rect* rect) {
  return {rect->top, rect->right};
}

Point GL_BottomLeft(const Rect* rect) {
  return {rect->bottom, rect->left};
}

Point GL_BottomRight(const Rect* rect) {
  return {rect->bottom, rect->right};
}

void GL_ClearPoint(Point* point) {
  *point = {0, 0};
}

Boolean GL_IsPtClear(const Point* point) {
  return point->v == 0 && point->h == 0;
}

void GL_SetRectFromPoints(Point topLeft, Point bottomRight, Rect* rect) {
  *rect = {topLeft.v, topLeft.h, bottomRight.v, bottomRight.h};
}

void GL_SetRectTlbr(Rect* rect, SInt16 top, SInt16 left, SInt16 bottom, SInt16 right) {
  *rect = {top, left, bottom, right};
}

void GL_SetRectTlwh(Rect* rect, SInt16 top, SInt16 left, SInt16 width, SInt16 height) {
  *rect = {top, left, width, height};
}

void GL_ClearRect(Rect* rect) {
  *rect = {0, 0, 0, 0};
}

void GL_SizeToRect(GL_SizeWord size, Rect* rect) {
  *rect = {0, 0, GL_HeightOfSize(size), GL_WidthOfSize(size)};
}

void GL_PtToRect(Point point, Rect* rect) {
  *rect = {point.v, point.h, Wrapped(point.v + 1), Wrapped(point.h + 1)};
}

void GL_AddRectBorders(Rect* rect, const Rect* borders) {
  *rect = {Wrapped(rect->top - borders->top), Wrapped(rect->left - borders->left),
           Wrapped(rect->bottom + borders->bottom), Wrapped(rect->right + borders->right)};
}

void GL_RemoveRectBorders(Rect* rect, const Rect* borders) {
  *rect = {Wrapped(rect->top + borders->top), Wrapped(rect->left + borders->left),
           Wrapped(rect->bottom - borders->bottom), Wrapped(rect->right - borders->right)};
}

void GL_AddBorders(const Rect* a, const Rect* b, Rect* sum) {
  *sum = {Wrapped(a->top + b->top), Wrapped(a->left + b->left), Wrapped(a->bottom + b->bottom),
          Wrapped(a->right + b->right)};
}

void GL_GetRectBorders(const Rect* outer, const Rect* inner, Rect* borders) {
  *borders = {Wrapped(inner->top - outer->top), Wrapped(inner->left - outer->left),
              Wrapped(outer->bottom - inner->bottom), Wrapped(outer->right - inner->right)};
}

void GL_InsetRectByRect(Rect* rect, const Rect* borders) {
  GL_RemoveRectBorders(rect, borders);
  if (rect->right <= rect->left || rect->bottom <= rect->top) GL_ClearRect(rect);
}

void GL_DiffRect(const Rect* a, const Rect* b, Rect* borders) {
  Rect common;
  QDD_SectRect(a, b, &common);
  GL_GetRectBorders(a, &common, borders);
}

void GL_MoveRectToPoint(Point point, SInt32 corner, Rect* rect) {
  const bool is_bottom = corner == kGL_BottomLeft || corner == kGL_BottomRight;
  const bool is_left = corner == kGL_TopLeft || corner == kGL_BottomLeft;
  *rect = At(*rect, is_bottom ? point.v - HeightOf(*rect) : point.v,
             is_left ? point.h : point.h - WidthOf(*rect));
}

void GL_MoveRectTopLeft(Rect* rect, Point point) {
  GL_MoveRectToPoint(point, kGL_TopLeft, rect);
}

void GL_MoveRectTopLeftToOrigin(Rect* rect) {
  *rect = At(*rect, 0, 0);
}

Boolean GL_MoveRectInsideRect(const Rect* outer, Rect* inner) {
  if (!GL_RectFitsInsideRect(inner, outer)) return 0;
  const SInt32 dv = ShiftInto(inner->top, inner->bottom, outer->top, outer->bottom);
  const SInt32 dh = ShiftInto(inner->left, inner->right, outer->left, outer->right);
  *inner = At(*inner, inner->top + dv, inner->left + dh);
  return 1;
}

Boolean GL_PointInRectInclusive(Point point, const Rect* rect) {
  return rect->top <= point.v && point.v <= rect->bottom && rect->left <= point.h &&
         point.h <= rect->right;
}

Boolean GL_IsRectInRect(const Rect* inner, const Rect* outer) {
  if (WidthOf(*inner) == 0 || HeightOf(*inner) == 0) return 1;
  Rect common;
  QDD_SectRect(inner, outer, &common);
  return QDD_EqualRect(&common, inner);
}

Boolean GL_RectFitsInsideRect(const Rect* inner, const Rect* outer) {
  const Rect moved = At(*inner, outer->top, outer->left);
  return GL_IsRectInRect(&moved, outer);
}

Boolean GL_IsEdgeRectInEdgeRect(const Rect* a, const Rect* b) {
  return a->top <= b->top && a->bottom <= b->bottom && a->left <= b->left && a->right <= b->right;
}

Boolean GL_IsInterval1InInterval2(SInt32 a, SInt32 b, SInt32 c, SInt32 d) {
  return a <= b && c <= d;
}

Boolean GL_RectsCoincide(const Rect* a, const Rect* b) {
  return QDD_EqualRect(a, b);
}

Boolean GL_SectRect(const Rect* a, const Rect* b, Rect* out) {
  Rect common;
  return QDD_SectRect(a, b, out != nullptr ? out : &common);
}

void GL_GetRectAbsDiff(const Rect* a, const Rect* b, Rect* out) {
  *out = {Wrapped(std::abs(a->top - b->top)), Wrapped(std::abs(a->left - b->left)),
          Wrapped(std::abs(a->bottom - b->bottom)), Wrapped(std::abs(a->right - b->right))};
}

void GL_TransformRect(const MatrixRecord* matrix, const Rect* source, Rect* target) {
  *target = *source;
  QDD_TransformRect(matrix, target);
}

void GL_PrintRect(const Rect* rect) {
  std::printf("Rectangle: top %hd, left %hd, bottom %hd, right %hd, width %" PRId32
              ", height %" PRId32 "\n",
              rect->top, rect->left, rect->bottom, rect->right, WidthOf(*rect), HeightOf(*rect));
}

void GL_PrintRectWithName(const Rect* rect, const char* name) {
  std::printf("%s: {t,l,b,r = %hd,%hd,%hd,%hd}, {w,h = %" PRId32 ",%" PRId32 "}\n", name, rect->top,
              rect->left, rect->bottom, rect->right, WidthOf(*rect), HeightOf(*rect));
}

void GL_SPrintRectWithName(char* text, const Rect* rect, const char* name) {
  std::sprintf(text, "%s: {t,l,b,r = %hd,%hd,%hd,%hd}, {w,h = %" PRId32 ",%" PRId32 "}", name,
               rect->top, rect->left, rect->bottom, rect->right, WidthOf(*rect), HeightOf(*rect));
}

void GL_SPrintRectWithNameNoWH(char* text, const Rect* rect, const char* name) {
  std::sprintf(text, "%s: {t,l,b,r = %hd,%hd,%hd,%hd}", name, rect->top, rect->left, rect->bottom,
               rect->right);
}

void GL_PrintPointWithName(Point point, const char* name) {
  std::printf("%s: {h,v = %hd,%hd}\n", name, point.h, point.v);
}

void GL_PrintEdgeWithName(const Rect* rect, const char* name) {
  std::printf("%s: {t,l,b,r = %hd,%hd,%hd,%hd}\n", name, rect->top, rect->left, rect->bottom,
              rect->right);
}
