#include "GL_QuickDraw_deprecated.h"

#include "drawing.h"
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

void QDD_ForeColor(SInt32 code) {
  ForeColor(code);
}

void QDD_RGBForeColor(const RGBColor* color) {
  RGBForeColor(color);
}

void QDD_PenNormal() {
  PenNormal();
}

void QDD_PenSize(SInt16 width, SInt16 height) {
  PenSize(width, height);
}

void QDD_MoveTo(SInt16 h, SInt16 v) {
  MoveTo(h, v);
}

void QDD_FrameRect(const Rect* rect) {
  FrameRect(rect);
}

void QDD_PaintRect(const Rect* rect) {
  PaintRect(rect);
}

void QDD_ClipRect(const Rect* rect) {
  ClipRect(rect);
}

OSErr QDD_NewGWorld(GWorldPtr* world, SInt16 depth, const Rect* bounds, CTabHandle colors,
                    GDHandle device, GWorldFlags flags) {
  return NewGWorld(world, depth, bounds, colors, device, flags);
}

PicHandle QDD_OpenCPicture(const OpenCPicParams* header) {
  return OpenCPicture(header);
}

void QDD_DrawPicture(PicHandle picture, const Rect* destination) {
  DrawPicture(picture, destination);
}

OSErr QDD_GetPictInfo(PicHandle picture, PictInfo* info) {
  return GetPictInfo(picture, info);
}
