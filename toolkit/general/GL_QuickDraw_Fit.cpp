#include "GL_QuickDraw_Fit.h"

#include <algorithm>

#include "GL_QuickDraw.h"
#include "GL_QuickDraw_Fixed.h"
#include "fixed_point.h"

namespace {

enum class Goal { kFit, kCover };

struct WideSize {
  SInt64 width;
  SInt64 height;
};

/// What a fit makes of a size: the new one, and the quotient of two sides.
struct Fitted {
  WideSize size;
  SInt64 numerator;
  SInt64 denominator;
};

WideSize SizeOf(const Rect& rect) {
  return {rect.right - rect.left, rect.bottom - rect.top};
}

WideSize SizeOf(const FixedRect& rect) {
  FixedPoint size;
  GL_GetFixedRectSize(&rect, &size);
  return {size.x, size.y};
}

/// Of two equal proportions the height fills in a fit, the width in a cover. `scale_other(a, b, c)`
/// is a b / c, rounded.
template <class ScaleOther>
Fitted FitSize(const WideSize& from, const WideSize& box, Goal goal, ScaleOther scale_other) {
  if (from.width <= 0 || from.height <= 0) return {box, 0, 1};
  const bool is_narrower = from.width * box.height <= box.width * from.height;
  if (is_narrower == (goal == Goal::kFit))
    return {
        {scale_other(from.width, box.height, from.height), box.height}, box.height, from.height};
  return {{box.width, scale_other(from.height, box.width, from.width)}, box.width, from.width};
}

/// a b / c, half rounded up for positive values.
SInt64 ScaleRounded(SInt64 a, SInt64 b, SInt64 c) {
  return (a * b + c / 2) / c;
}

SInt64 ScaleFixed(SInt64 a, SInt64 b, SInt64 c) {
  return FixMul(FixDiv(static_cast<Fixed>(a), static_cast<Fixed>(c)), static_cast<Fixed>(b));
}

void StoreScale(const Fitted& fitted, float* scale, LongRatio* ratio) {
  if (scale != nullptr)
    *scale = static_cast<float>(fitted.numerator) / static_cast<float>(fitted.denominator);
  if (ratio != nullptr) GL_CreateLongRatio(fitted.numerator, fitted.denominator, ratio);
}

/// Borders that leave a size in the middle of a box.
template <class AnyRect>
AnyRect BordersAround(const WideSize& size, const WideSize& box) {
  using Number = decltype(AnyRect::top);
  AnyRect borders;
  borders.top = borders.bottom = static_cast<Number>((box.height - size.height) / 2);
  borders.left = borders.right = static_cast<Number>((box.width - size.width) / 2);
  return borders;
}

/// Fits a rectangle of either kind; `inset` removes borders.
template <class AnyRect, class ScaleOther>
void FitRect(const AnyRect& source, const AnyRect& box, Goal goal, ScaleOther scale_other,
             void (*inset)(AnyRect*, const AnyRect*), AnyRect* out, float* scale,
             LongRatio* ratio) {
  const WideSize outer = SizeOf(box);
  const Fitted fitted = FitSize(SizeOf(source), outer, goal, scale_other);
  StoreScale(fitted, scale, ratio);
  if (out == nullptr) return;
  const auto borders = BordersAround<AnyRect>(fitted.size, outer);
  *out = box;
  inset(out, &borders);
}

/// Toward zero, with a hundredth for what rounding took; 0 for what isn't a number of pixels.
SInt32 ToPixels(float value) {
  const float raised = value + 0.01F;
  return raised > -65536 && raised < 65536 ? static_cast<SInt32>(raised) : 0;
}

SInt16 Pixel(SInt32 value) {
  return static_cast<SInt16>(value);
}

}  // namespace

void GL_FitRectInBox(const Rect* source, const Rect* box, Rect* out, float* scale,
                     LongRatio* ratio) {
  FitRect(*source, *box, Goal::kFit, ScaleRounded, GL_RemoveRectBorders, out, scale, ratio);
}

void GL_CoverBoxWithRect(const Rect* source, const Rect* box, Rect* out, float* scale,
                         LongRatio* ratio) {
  FitRect(*source, *box, Goal::kCover, ScaleRounded, GL_RemoveRectBorders, out, scale, ratio);
}

void GL_FitFixedRectInBox(const FixedRect* source, const FixedRect* box, FixedRect* out,
                          float* scale, LongRatio* ratio) {
  FitRect(*source, *box, Goal::kFit, ScaleFixed, GL_InsetFixedRectByFixedRect, out, scale, ratio);
}

void GL_CoverBoxWithFixedRect(const FixedRect* source, const FixedRect* box, FixedRect* out,
                              float* scale, LongRatio* ratio) {
  FitRect(*source, *box, Goal::kCover, ScaleFixed, GL_InsetFixedRectByFixedRect, out, scale, ratio);
}

void GL_ScaleRect(Rect* rect, Fixed scaleH, Fixed scaleV) {
  const auto scaled = [](SInt32 side, Fixed scale) {
    return Fix2Long(FixMul(Long2Fix(side), scale));
  };
  rect->right = Pixel(rect->left + scaled(rect->right - rect->left, scaleH));
  rect->bottom = Pixel(rect->top + scaled(rect->bottom - rect->top, scaleV));
}

void GL_GetScaledPictureLetterbox(SInt32 pictureWidth, SInt32 pictureHeight, const Rect* box,
                                  Rect* out) {
  const float aspect = static_cast<float>(pictureWidth) / static_cast<float>(pictureHeight);
  const SInt32 width = box->right - box->left;
  const SInt32 height = box->bottom - box->top;
  Rect boxed = *box;
  if (static_cast<float>(width) / static_cast<float>(height) > aspect) {
    const SInt32 narrower = ToPixels(aspect * static_cast<float>(height));
    boxed.left = Pixel(box->left + (width - narrower) / 2);
    boxed.right = Pixel(boxed.left + narrower);
  } else {
    const SInt32 lower = ToPixels(static_cast<float>(width) / aspect);
    boxed.top = Pixel(box->top + (height - lower) / 2);
    boxed.bottom = Pixel(boxed.top + lower);
  }
  *out = boxed;
}

void GL_SplitRect(const Rect* rect, Rect* q1, Rect* q2, Rect* q3, Rect* q4) {
  if (q1 == nullptr && q2 == nullptr && q3 == nullptr) return;
  const auto first_half = [](SInt32 size) { return size % 2 != 0 ? (size + 1) / 2 : size / 2; };
  const Rect whole = *rect;
  const SInt16 middle_v = Pixel(whole.top + first_half(whole.bottom - whole.top));
  const SInt16 middle_h = Pixel(whole.left + first_half(whole.right - whole.left));
  if (q1 != nullptr) *q1 = {whole.top, whole.left, middle_v, middle_h};
  if (q2 != nullptr) *q2 = {whole.top, middle_h, middle_v, whole.right};
  if (q3 != nullptr) *q3 = {middle_v, whole.left, whole.bottom, middle_h};
  if (q4 != nullptr) *q4 = {middle_v, middle_h, whole.bottom, whole.right};
}
