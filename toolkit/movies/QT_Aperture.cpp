#include "QT_Aperture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "GL_QuickDraw.h"
#include "GL_QuickDraw_Fixed.h"
#include "QT_Ide_Descriptions.h"
#include "QT_Matrices.h"
#include "fixed_point.h"
#include "matrices.h"
#include "rectangles.h"

namespace {

constexpr UInt32 kOne = 65536;

bool IsUsable(const QT_Clap* clap) {
  return clap != nullptr && clap->cleanApertureWidthD != 0 && clap->cleanApertureHeightD != 0 &&
         clap->horizOffD != 0 && clap->vertOffD != 0;
}
bool IsUsable(const QT_Pasp* pasp) {
  return pasp != nullptr && QT_ValidPasp(pasp);
}

template <class Numerator>
double Quotient(Numerator numerator, UInt32 denominator) {
  return static_cast<double>(numerator) / static_cast<double>(denominator);
}

/// Edges in double precision.
struct Edges {
  double left, top, right, bottom;
};

Edges CleanEdges(double width, double height, const QT_Clap* clap) {
  if (!IsUsable(clap)) return {0, 0, width, height};
  const double clean_width = Quotient(clap->cleanApertureWidthN, clap->cleanApertureWidthD);
  const double clean_height = Quotient(clap->cleanApertureHeightN, clap->cleanApertureHeightD);
  const double left = (width - clean_width) * 0.5 + Quotient(clap->horizOffN, clap->horizOffD);
  const double top = (height - clean_height) * 0.5 + Quotient(clap->vertOffN, clap->vertOffD);
  return {left, top, left + clean_width, top + clean_height};
}

SInt16 Whole(double value) {
  return static_cast<SInt16>(std::clamp(value, -32768.0, 32767.0));
}

void Reduce(UInt32* numerator, UInt32* denominator) {
  const auto divisor = static_cast<UInt32>(GL_GetGCD(*numerator, *denominator));
  if (divisor == 0) return;
  *numerator /= divisor;
  *denominator /= divisor;
}

void Reduce(SInt32* numerator, UInt32* denominator) {
  UInt32 magnitude = static_cast<UInt32>(std::abs(SInt64{*numerator}));
  const bool is_negative = *numerator < 0;
  Reduce(&magnitude, denominator);
  *numerator = static_cast<SInt32>(is_negative ? -SInt64{magnitude} : SInt64{magnitude});
}

/// What is below 0 counts as 0, what leaves 32 bits as their end.
UInt32 Unsigned(SInt64 value) {
  return static_cast<UInt32>(std::clamp<SInt64>(value, 0, 0xFFFFFFFF));
}
SInt32 Signed(SInt64 value) {
  return static_cast<SInt32>(std::clamp<SInt64>(value, -0x7FFFFFFF - 1, 0x7FFFFFFF));
}

/// A ratio of two sizes; both positive.
LongRatio RatioOf(SInt64 numerator, SInt64 denominator) {
  LongRatio ratio = {0, 1};
  GL_SetLongRatioFromSInt64(numerator, denominator, &ratio);
  return ratio;
}

void StorePasp(const LongRatio& ratio, QT_Pasp* pasp) {
  *pasp = {static_cast<UInt32>(std::max(ratio.n, 0)), ratio.d};
}

struct SnappedFormat {
  Rect rect;
  QT_Pasp pasp;
  QT_Clap clap;
};
constexpr SnappedFormat kSnapped[] = {{{0, 0, 576, 720}, {59, 54}, {41472, 59, 576, 1, 0, 1, 0, 1}},
                                      {{0, 0, 1080, 1280}, {3, 2}, {3776, 3, 1062, 1, 0, 1, 0, 1}}};

UInt32 Scaled(UInt32 value, double factor) {
  return static_cast<UInt32>(std::clamp(value * factor + 0.5, 0.0, 4294967295.0));
}

}  // namespace

void QT_GetScaledClip(Fixed width, Fixed height, const QT_Pasp* pasp, const QT_Clap* clap,
                      Rect* rect, FixedRect* fixedRect, Boolean scaleHorizontally) {
  constexpr double kMost = 32767;
  Edges edges = CleanEdges(Fix2X(width), Fix2X(height), clap);
  if (IsUsable(pasp)) {
    const double scale = scaleHorizontally ? Quotient(pasp->hSpacing, pasp->vSpacing)
                                           : Quotient(pasp->vSpacing, pasp->hSpacing);
    (scaleHorizontally ? edges.left : edges.top) *= scale;
    (scaleHorizontally ? edges.right : edges.bottom) *= scale;
  }
  const double end = std::max(edges.right, edges.bottom);
  if (end > kMost) {
    const double scale = kMost / end;
    edges = {edges.left * scale, edges.top * scale, edges.right * scale, edges.bottom * scale};
  }
  if (rect != nullptr)
    *rect = {Whole(edges.top + 0.5), Whole(std::round(edges.left)), Whole(edges.bottom + 0.5),
             Whole(std::round(edges.right))};
  if (fixedRect != nullptr)
    *fixedRect = {X2Fix(edges.left), X2Fix(edges.top), X2Fix(edges.right), X2Fix(edges.bottom)};
}

void QT_CalcFixedApertureRects(const Rect* rect, const QT_Pasp* pasp, const QT_Clap* clap,
                               FixedRect* clean, FixedRect* production, FixedRect* encodedClean) {
  const Fixed width = Long2Fix(rect->right - rect->left);
  const Fixed height = Long2Fix(rect->bottom - rect->top);
  QT_GetScaledClip(width, height, pasp, clap, nullptr, clean, 1);
  QT_GetScaledClip(width, height, pasp, nullptr, nullptr, production, 1);
  QT_GetScaledClip(width, height, nullptr, clap, nullptr, encodedClean, 1);
  GL_OffsetFixedRect(encodedClean, Long2Fix(rect->left), Long2Fix(rect->top));
}

void QT_ReducePaspAndClap(QT_Pasp* pasp, QT_Clap* clap) {
  if (pasp != nullptr) Reduce(&pasp->hSpacing, &pasp->vSpacing);
  if (clap == nullptr) return;
  Reduce(&clap->cleanApertureWidthN, &clap->cleanApertureWidthD);
  Reduce(&clap->cleanApertureHeightN, &clap->cleanApertureHeightD);
  Reduce(&clap->horizOffN, &clap->horizOffD);
  Reduce(&clap->vertOffN, &clap->vertOffD);
}

void QT_FixedClipToClap(const FixedRect* frame, const FixedRect* clip, QT_Clap* clap) {
  const SInt64 left = SInt64{clip->left} - frame->left;
  const SInt64 right = SInt64{clip->right} - frame->left;
  const SInt64 top = SInt64{clip->top} - frame->top;
  const SInt64 bottom = SInt64{clip->bottom} - frame->top;
  const SInt64 width = SInt64{frame->right} - frame->left;
  const SInt64 height = SInt64{frame->bottom} - frame->top;
  *clap = {Unsigned(right - left),       kOne,     Unsigned(bottom - top),        kOne,
           Signed(left + right - width), 2 * kOne, Signed(top + bottom - height), 2 * kOne};
  QT_ReducePaspAndClap(nullptr, clap);
}

void QT_ClipToClap(const Rect* frame, const Rect* clip, QT_Clap* clap) {
  FixedRect fixed_frame;
  FixedRect fixed_clip;
  GL_RectToFixed(frame, &fixed_frame);
  GL_RectToFixed(clip, &fixed_clip);
  QT_FixedClipToClap(&fixed_frame, &fixed_clip, clap);
}

void QT_InitDefaultClap(Fixed width, Fixed height, QT_Clap* clap) {
  *clap = {Unsigned(width), kOne, Unsigned(height), kOne, 0, 1, 0, 1};
  QT_ReducePaspAndClap(nullptr, clap);
}

Boolean QT_ClapExtToLongRatio(const QT_Clap* clap, LongRatio* width, LongRatio* height,
                              LongRatio* horizontalOffset, LongRatio* verticalOffset) {
  const Boolean exact[] = {
      GL_SetLongRatioFromSInt64(clap->cleanApertureWidthN, clap->cleanApertureWidthD, width),
      GL_SetLongRatioFromSInt64(clap->cleanApertureHeightN, clap->cleanApertureHeightD, height),
      GL_SetLongRatioFromSInt64(clap->horizOffN, clap->horizOffD, horizontalOffset),
      GL_SetLongRatioFromSInt64(clap->vertOffN, clap->vertOffD, verticalOffset)};
  return exact[0] && exact[1] && exact[2] && exact[3];
}

Boolean QT_ClapHasEffect(const QT_Clap* clap, SInt32 height, SInt32 width) {
  const Rect picture = {0, 0, Whole(height), Whole(width)};
  Rect clip;
  QT_GetScaledClip(Long2Fix(width), Long2Fix(height), nullptr, clap, &clip, nullptr, 1);
  return !GL_IsRectInRect(&picture, &clip);
}

void QT_ScaleClap(Fixed width, Fixed height, Fixed scaleX, Fixed scaleY, QT_Clap* clap) {
  FixedRect clip;
  QT_GetScaledClip(width, height, nullptr, clap, nullptr, &clip, 1);
  GL_ScaleFixedRect(scaleX, scaleY, &clip);
  FixedRect frame;
  GL_SizeToFixedRect(FixMul(width, scaleX), FixMul(height, scaleY), &frame);
  QT_FixedClipToClap(&frame, &clip, clap);
}

void QT_TransformClap(const QT_Clap* clap, const Rect* from, const Rect* to, QT_Clap* out) {
  const auto fixed = [](SInt32 size) { return Long2Fix(size); };
  const Fixed width = fixed(from->right - from->left);
  const Fixed height = fixed(from->bottom - from->top);
  *out = *clap;
  QT_ScaleClap(width, height, FixDiv(fixed(to->right - to->left), width),
               FixDiv(fixed(to->bottom - to->top), height), out);
}

void QT_TransformPasp(const QT_Pasp* pasp, const Rect* from, const Rect* to, QT_Pasp* out) {
  LongRatio ratio = RatioOf(pasp->hSpacing, pasp->vSpacing);
  const LongRatio of_from = RatioOf(from->right - from->left, from->bottom - from->top);
  const LongRatio of_to = RatioOf(to->right - to->left, to->bottom - to->top);
  GL_LongRatioMul2(&ratio, &of_from, &ratio);
  GL_LongRatioDiv2(&ratio, &of_to, &ratio);
  StorePasp(ratio, out);
}

void QT_GeneratePasp(const FixedPoint* encoded, const FixedPoint* production, QT_Pasp* pasp) {
  LongRatio ratio = RatioOf(production->x, encoded->x);
  const LongRatio vertical = RatioOf(encoded->y, production->y);
  GL_LongRatioMul2(&ratio, &vertical, &ratio);
  StorePasp(ratio, pasp);
}

void QT_GeneratePaspAndClapFromApertureDims(const FixedPoint* production, const FixedPoint* clean,
                                            const FixedPoint* encoded, QT_Clap* clap,
                                            QT_Pasp* pasp) {
  QT_GeneratePasp(encoded, production, pasp);
  const FixedRect production_rect = {0, 0, production->x, production->y};
  const FixedRect encoded_rect = {0, 0, encoded->x, encoded->y};
  MatrixRecord matrix;
  QT_FixedRectMatrix(&matrix, &production_rect, &encoded_rect);
  FixedRect clip = {0, 0, clean->x, clean->y};
  TransformFixedRect(&matrix, &clip);
  const Fixed width = clip.right - clip.left;
  const Fixed height = clip.bottom - clip.top;
  GL_MoveFixedRectTopLeft(&clip, (encoded->x - width) / 2, (encoded->y - height) / 2);
  QT_FixedClipToClap(&encoded_rect, &clip, clap);
}

void QT_SnapClap(const Rect* rect, const QT_Pasp* pasp, QT_Clap* clap) {
  for (const SnappedFormat& format : kSnapped) {
    const bool is_format = EqualRect(rect, &format.rect) && QT_EqualPasp(pasp, &format.pasp) &&
                           QT_EqualClap2(clap, &format.clap);
    if (!is_format) continue;
    *clap = format.clap;
    return;
  }
}

SInt32 QT_CheckPaspAndClapForOverflow(ImageDescriptionHandle description) {
  constexpr UInt64 kMost = 2147483647;
  QT_Pasp pasp;
  QT_Clap clap;
  SInt32 status = QT_GetPaspFromImageDesc(description, &pasp);
  if (!status) status = QT_GetClapFromImageDesc(description, &clap);
  if (status) return status == codecExtensionNotFoundErr ? noErr : status;
  if (UInt64{pasp.hSpacing} * clap.cleanApertureWidthN <= kMost) return noErr;
  Boolean reduces_pasp = 0;
  Boolean reduces_clap = 0;
  double pasp_factor = 1;
  double clap_factor = 1;
  GL_Reduce32bitFactors(Signed(pasp.hSpacing), Signed(clap.cleanApertureWidthN), &reduces_pasp,
                        &reduces_clap, &pasp_factor, &clap_factor);
  if (reduces_pasp) {
    pasp = {Scaled(pasp.hSpacing, pasp_factor), Scaled(pasp.vSpacing, pasp_factor)};
    status = QT_SetPaspInImageDesc(description, &pasp);
  }
  if (!status && reduces_clap) {
    clap.cleanApertureWidthN = Scaled(clap.cleanApertureWidthN, clap_factor);
    clap.cleanApertureWidthD = Scaled(clap.cleanApertureWidthD, clap_factor);
    status = QT_SetClapInImageDesc(description, &clap);
  }
  return status;
}
