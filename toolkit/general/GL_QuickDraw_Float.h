/// Plane geometry in single and double precision. Pure functions; results may stand in the place of
/// arguments.
#pragma once

#include "base_types.h"

struct GL_FloatRect {
  float top, left, bottom, right;
};
struct GL_DoubleRect {
  double top, left, bottom, right;
};
struct GL_FloatPoint {
  float x, y;
};
/// A rectangle after a rotation; p1 and p3 are the neighbours of p0.
struct GL_SlopedFloatRect {
  GL_FloatPoint p0, p1, p2, p3;
};

// Rectangles.

void GL_RectToFloat(const Rect* rect, GL_FloatRect* out);
void GL_RectToDouble(const Rect* rect, GL_DoubleRect* out);
/// Each field plus 0.49, cut toward zero and held to 16 bits; 0 for not-a-number.
void GL_DoubleToRect(const GL_DoubleRect* rect, Rect* out);
void GL_SetFloatRectTlbr(GL_FloatRect* rect, float top, float left, float bottom, float right);
void GL_SetDoubleRectTlbr(GL_DoubleRect* rect, double top, double left, double bottom,
                          double right);
void GL_DoubleRectSetZero(GL_DoubleRect* rect);
/// `size` takes width and height.
void GL_GetDoubleRectSize(const GL_DoubleRect* rect, double* size);
/// The intersection; where there is none, the low edge of that axis is the high one too.
void GL_SectFloatRect(const GL_FloatRect* a, const GL_FloatRect* b, GL_FloatRect* out);
void GL_SectDoubleRect(const GL_DoubleRect* a, const GL_DoubleRect* b, GL_DoubleRect* out);
/// The same for a y axis that points up; without an intersection the top is the bottom.
void GL_SectDoubleRectFlipped(const GL_DoubleRect* a, const GL_DoubleRect* b, GL_DoubleRect* out);
float GL_GetFloatRectArea(const GL_FloatRect* rect);
float GL_GetSlopedFloatRectArea(const GL_SlopedFloatRect* rect);
/// The square of the distance from a point to a rectangle, 0 inside and on its edges.
float GL_GetFloatPtRectDistSq(const GL_FloatPoint* point, const GL_FloatRect* rect);
/// x and y of the four corners, clockwise from the top left: eight numbers.
void GL_FloatRectToPoints(const GL_FloatRect* rect, float* points);

// Points as vectors.

void GL_SetFloatPt(GL_FloatPoint* point, float x, float y);
void GL_AddFloatPt(const GL_FloatPoint* a, const GL_FloatPoint* b, GL_FloatPoint* sum);
/// a less b.
void GL_DiffFloatPt(const GL_FloatPoint* a, const GL_FloatPoint* b, GL_FloatPoint* difference);
void GL_ScaleFloatPt(float scale, const GL_FloatPoint* point, GL_FloatPoint* out);
/// The linear combination a p + b q.
void GL_FloatPtLC(float a, const GL_FloatPoint* p, float b, const GL_FloatPoint* q,
                  GL_FloatPoint* out);
float GL_DotProductF(const GL_FloatPoint* a, const GL_FloatPoint* b);
/// Cosine and sine of the angle from p to q; not-a-number if one has no length.
void GL_GetFloatPtsAngle(const GL_FloatPoint* p, const GL_FloatPoint* q, float* cosine,
                         float* sine);
/// Turns a point about the origin, by an angle of that cosine and sine.
void GL_RotatePt(const GL_FloatPoint* point, float cosine, float sine, GL_FloatPoint* out);

// Texts as those of GL_QuickDraw.h, with two decimals. A number may take 320 bytes.

void GL_PrintFloatRectWithName(const GL_FloatRect* rect, const char* name);
void GL_PrintDoubleRectWithName(const GL_DoubleRect* rect, const char* name);
void GL_SPrintFloatRectWithName(char* text, const GL_FloatRect* rect, const char* name);
void GL_SPrintDoubleRectWithName(char* text, const GL_DoubleRect* rect, const char* name);
