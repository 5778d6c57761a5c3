#include "GL_QuickDraw_Fixed.h"

#include <algorithm>

#include "GL_QuickDraw_deprecated.h"
#include "matrices.h"

namespace {

constexpr SInt32 kHalf = 0x8000;

Fixed Wrapped(SInt64 value) {
  return static_cast<Fixed>(value);
}

Fixed Sum(Fixed a, Fixed b) {
  return Wrapped(SInt64{a} + b);
}

Fixed Difference(Fixed a, Fixed b) {
  return Wrapped(SInt64{a} - b);
}

Fixed Distance(Fixed a, Fixed b) {
  return Wrapped(a > b ? SInt64{a} - b : SInt64{b} - a);
}

Fixed FromPixel(SInt16 value) {
  return value * 0x10000;
}

SInt16 ToPixelUp(Fixed value) {
  return static_cast<SInt16>((SInt64{value} + kHalf) >> 16);
}

SInt16 ToPixelAway(Fixed value) {
  return static_cast<SInt16>((SInt64{value} + (value > 0 ? kHalf : -kHalf)) / 0x10000);
}

template <class Number>
Number ToNumber(Fixed value) {
  return static_cast<Number>(static_cast<double>(value) / 65536);
}

}  // namespace

void GL_RectToFixed(const Rect* rect, FixedRect* out) {
  *out = {FromPixel(rect->left), FromPixel(rect->top), FromPixel(rect->right),
          FromPixel(rect->bottom)};
}

void GL_FixedToRect(const FixedRect* rect, Rect* out) {
  *out = {ToPixelUp(rect->top), ToPixelUp(rect->left), ToPixelUp(rect->bottom),
          ToPixelUp(rect->right)};
}

void GL_FixedRectToFloat(const FixedRect* rect, GL_FloatRect* out) {
  *out = {ToNumber<float>(rect->top), ToNumber<float>(rect->left), ToNumber<float>(rect->bottom),
          ToNumber<float>(rect->right)};
}

void GL_FixedRectToDouble(const FixedRect* rect, GL_DoubleRect* out) {
  *out = {ToNumber<double>(rect->top), ToNumber<double>(rect->left), ToNumber<double>(rect->bottom),
          ToNumber<double>(rect->right)};
}

void GL_PointToFixed(Point point, FixedPoint* out) {
  *out = {FromPixel(point.h), FromPixel(point.v)};
}

void GL_FixedToPoint(const FixedPoint* point, Point* out) {
  *out = {ToPixelAway(point->y), ToPixelAway(point->x)};
}

void GL_SetFixedRectTlbr(FixedRect* rect, Fixed top, Fixed left, Fixed bottom, Fixed right) {
  *rect = {left, top, right, bottom};
}

void GL_SizeToFixedRect(Fixed width, Fixed height, FixedRect* rect) {
  *rect = {0, 0, width, height};
}

void GL_GetFixedRectSize(const FixedRect* rect, FixedPoint* size) {
  *size = {Difference(rect->right, rect->left), Difference(rect->bottom, rect->top)};
}

void GL_FixedTopLeft(const FixedRect* rect, FixedPoint* point) {
  *point = {rect->left, rect->top};
}

void GL_InsetFixedRectByFixedRect(FixedRect* rect, const FixedRect* borders) {
  *rect = {Sum(rect->left, borders->left), Sum(rect->top, borders->top),
           Difference(rect->right, borders->right), Difference(rect->bottom, borders->bottom)};
}

void GL_GetFixedRectBorders(const FixedRect* outer, const FixedRect* inner, FixedRect* borders) {
  *borders = {Difference(inner->left, outer->left), Difference(inner->top, outer->top),
              Difference(outer->right, inner->right), Difference(outer->bottom, inner->bottom)};
}

void GL_SectFixedRect(const FixedRect* a, const FixedRect* b, FixedRect* out) {
  FixedRect common = {std::max(a->left, b->left), std::max(a->top, b->top),
                      std::min(a->right, b->right), std::min(a->bottom, b->bottom)};
  common.left = std::min(common.left, common.right);
  common.top = std::min(common.top, common.bottom);
  *out = common;
}

void GL_GetFixedRectAbsDiff(const FixedRect* a, const FixedRect* b, FixedRect* out) {
  *out = {Distance(a->left, b->left), Distance(a->top, b->top), Distance(a->right, b->right),
          Distance(a->bottom, b->bottom)};
}

void GL_OffsetFixedRect(FixedRect* rect, Fixed dh, Fixed dv) {
  *rect = {Sum(rect->left, dh), Sum(rect->top, dv), Sum(rect->right, dh), Sum(rect->bottom, dv)};
}

void GL_MoveFixedRectTopLeft(FixedRect* rect, Fixed x, Fixed y) {
  GL_OffsetFixedRect(rect, Difference(x, rect->left), Difference(y, rect->top));
}

void GL_TransformFixedRect(const MatrixRecord* matrix, const FixedRect* source, FixedRect* target) {
  *target = *source;
  QDD_TransformFixedRect(matrix, target);
}

void GL_ScaleFixedRect(Fixed scaleH, Fixed scaleV, FixedRect* rect) {
  MatrixRecord matrix;
  SetIdentityMatrix(&matrix);
  ScaleMatrix(&matrix, scaleH, scaleV, 0, 0);
  GL_TransformFixedRect(&matrix, rect, rect);
}

void GL_PrintFixedRectWithName(const FixedRect* rect, const char* name) {
  GL_FloatRect wide;
  GL_FixedRectToFloat(rect, &wide);
  GL_PrintFloatRectWithName(&wide, name);
}

void GL_SPrintFixedRectWithName(char* text, const FixedRect* rect, const char* name) {
  GL_FloatRect wide;
  GL_FixedRectToFloat(rect, &wide);
  GL_SPrintFloatRectWithName(text, &wide, name);
}
