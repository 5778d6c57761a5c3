#include "GL_QuickDraw_deprecated.h"

#include "matrices.h"
#include "rectangles.h"

void QDD_SetRect(Rect* rect, SInt16 left, SInt16 top, SInt16 right, SInt16 bottom) {
  SetRect(rect, left, top, right, bottom);
}

Boolean QDD_EqualRect(const Rect* a, const Rect* b) {
  return EqualRect(a, b);
}

Boolean QDD_PtInRect(Point point, const Rect* rect) {
  return PtInRect(point, rect);
}

void QDD_OffsetRect(Rect* rect, SInt16 dh, SInt16 dv) {
  OffsetRect(rect, dh, dv);
}

Boolean QDD_SectRect(const Rect* a, const Rect* b, Rect* out) {
  return SectRect(a, b, out);
}

void QDD_SectRgn(RgnHandle a, RgnHandle b, RgnHandle out) {
  SectRgn(a, b, out);
}

Boolean QDD_IsRegionRectangular(RgnHandle region) {
  return IsRegionRectangular(region);
}

Boolean QDD_TransformRect(const MatrixRecord* matrix, Rect* rect) {
  return TransformRect(matrix, rect);
}

Boolean QDD_TransformFixedRect(const MatrixRecord* matrix, FixedRect* rect) {
  return TransformFixedRect(matrix, rect);
}
