#include "GL_QuickDraw_Float.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>

namespace {

template <class To, class Number>
To Converted(const Rect& rect) {
  return {static_cast<Number>(rect.top), static_cast<Number>(rect.left),
          static_cast<Number>(rect.bottom), static_cast<Number>(rect.right)};
}

template <class AnyRect>
AnyRect Intersection(const AnyRect& a, const AnyRect& b) {
  AnyRect common = {std::max(a.top, b.top), std::max(a.left, b.left), std::min(a.bottom, b.bottom),
                    std::min(a.right, b.right)};
  common.top = std::min(common.top, common.bottom);
  common.left = std::min(common.left, common.right);
  return common;
}

SInt16 ToPixel(double value) {
  const double shifted = value + 0.49;
  if (!(shifted == shifted)) return 0;
  return static_cast<SInt16>(std::clamp(shifted, -32768.0, 32767.0));
}

/// How far a coordinate lies outside of low to high.
float Outside(float value, float low, float high) {
  if (value < low) return low - value;
  return value > high ? value - high : 0;
}

float LengthSquared(const GL_FloatPoint& p) {
  return p.x * p.x + p.y * p.y;
}

float DistanceSquared(const GL_FloatPoint& a, const GL_FloatPoint& b) {
  return LengthSquared({b.x - a.x, b.y - a.y});
}

GL_DoubleRect Widened(const GL_FloatRect& rect) {
  return {static_cast<double>(rect.top), static_cast<double>(rect.left),
          static_cast<double>(rect.bottom), static_cast<double>(rect.right)};
}

}  // namespace

void GL_RectToFloat(const Rect* rect, GL_FloatRect* out) {
  *out = Converted<GL_FloatRect, float>(*rect);
}

void GL_RectToDouble(const Rect* rect, GL_DoubleRect* out) {
  *out = Converted<GL_DoubleRect, double>(*rect);
}

void GL_DoubleToRect(const GL_DoubleRect* rect, Rect* out) {
  *out = {ToPixel(rect->top), ToPixel(rect->left), ToPixel(rect->bottom), ToPixel(rect->right)};
}

void GL_SetFloatRectTlbr(GL_FloatRect* rect, float top, float left, float bottom, float right) {
  *rect = {top, left, bottom, right};
}

void GL_SetDoubleRectTlbr(GL_DoubleRect* rect, double top, double left, double bottom,
                          double right) {
  *rect = {top, left, bottom, right};
}

void GL_DoubleRectSetZero(GL_DoubleRect* rect) {
  *rect = {0, 0, 0, 0};
}

void GL_GetDoubleRectSize(const GL_DoubleRect* rect, double* size) {
  size[0] = rect->right - rect->left;
  size[1] = rect->bottom - rect->top;
}

void GL_SectFloatRect(const GL_FloatRect* a, const GL_FloatRect* b, GL_FloatRect* out) {
  *out = Intersection(*a, *b);
}

void GL_SectDoubleRect(const GL_DoubleRect* a, const GL_DoubleRect* b, GL_DoubleRect* out) {
  *out = Intersection(*a, *b);
}

void GL_SectDoubleRectFlipped(const GL_DoubleRect* a, const GL_DoubleRect* b, GL_DoubleRect* out) {
  GL_DoubleRect common = {std::min(a->top, b->top), std::max(a->left, b->left),
                          std::max(a->bottom, b->bottom), std::min(a->right, b->right)};
  common.top = std::max(common.top, common.bottom);
  common.left = std::min(common.left, common.right);
  *out = common;
}

float GL_GetFloatRectArea(const GL_FloatRect* rect) {
  return (rect->right - rect->left) * (rect->bottom - rect->top);
}

float GL_GetSlopedFloatRectArea(const GL_SlopedFloatRect* rect) {
  return std::sqrt(DistanceSquared(rect->p0, rect->p3) * DistanceSquared(rect->p0, rect->p1));
}

float GL_GetFloatPtRectDistSq(const GL_FloatPoint* point, const GL_FloatRect* rect) {
  return LengthSquared(
      {Outside(point->x, rect->left, rect->right), Outside(point->y, rect->top, rect->bottom)});
}

void GL_FloatRectToPoints(const GL_FloatRect* rect, float* points) {
  const float corners[] = {rect->left,  rect->top,    rect->right, rect->top,
                           rect->right, rect->bottom, rect->left,  rect->bottom};
  std::copy(std::begin(corners), std::end(corners), points);
}

void GL_SetFloatPt(GL_FloatPoint* point, float x, float y) {
  *point = {x, y};
}

void GL_AddFloatPt(const GL_FloatPoint* a, const GL_FloatPoint* b, GL_FloatPoint* sum) {
  GL_FloatPtLC(1, a, 1, b, sum);
}

void GL_DiffFloatPt(const GL_FloatPoint* a, const GL_FloatPoint* b, GL_FloatPoint* difference) {
  GL_FloatPtLC(1, a, -1, b, difference);
}

void GL_ScaleFloatPt(float scale, const GL_FloatPoint* point, GL_FloatPoint* out) {
  *out = {scale * point->x, scale * point->y};
}

void GL_FloatPtLC(float a, const GL_FloatPoint* p, float b, const GL_FloatPoint* q,
                  GL_FloatPoint* out) {
  *out = {a * p->x + b * q->x, a * p->y + b * q->y};
}

float GL_DotProductF(const GL_FloatPoint* a, const GL_FloatPoint* b) {
  return a->x * b->x + a->y * b->y;
}

void GL_GetFloatPtsAngle(const GL_FloatPoint* p, const GL_FloatPoint* q, float* cosine,
                         float* sine) {
  const float lengths = std::sqrt(LengthSquared(*p)) * std::sqrt(LengthSquared(*q));
  *cosine = GL_DotProductF(p, q) / lengths;
  *sine = (p->x * q->y - p->y * q->x) / lengths;
}

void GL_RotatePt(const GL_FloatPoint* point, float cosine, float sine, GL_FloatPoint* out) {
  *out = {cosine * point->x - sine * point->y, cosine * point->y + sine * point->x};
}

void GL_PrintFloatRectWithName(const GL_FloatRect* rect, const char* name) {
  const GL_DoubleRect wide = Widened(*rect);
  GL_PrintDoubleRectWithName(&wide, name);
}

void GL_PrintDoubleRectWithName(const GL_DoubleRect* rect, const char* name) {
  std::printf("%s: {t,l,b,r = %.2f,%.2f,%.2f,%.2f}, {w,h = %.2f,%.2f}\n", name, rect->top,
              rect->left, rect->bottom, rect->right, rect->right - rect->left,
              rect->bottom - rect->top);
}

void GL_SPrintFloatRectWithName(char* text, const GL_FloatRect* rect, const char* name) {
  const GL_DoubleRect wide = Widened(*rect);
  GL_SPrintDoubleRectWithName(text, &wide, name);
}

void GL_SPrintDoubleRectWithName(char* text, const GL_DoubleRect* rect, const char* name) {
  std::sprintf(text, "%s: {t,l,b,r = %.2f,%.2f,%.2f,%.2f}, {w,h = %.2f,%.2f}", name, rect->top,
               rect->left, rect->bottom, rect->right, rect->right - rect->left,
               rect->bottom - rect->top);
}
