// The patterns of CO_Patterns.h whose colours are converted: circles and bars.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "CO_Basic_Colors.h"
#include "CO_Color_Conversions.h"
#include "CO_Patterns.h"
#include "CO_Ranges.h"
#include "GL_Math_Curves.h"

namespace {

constexpr SInt32 kCircleMatrix = 2;

/// What the patterns' own colours are in: gamma 2.2, and custom primaries unless the record's are
/// of the display.
QT_Nclc SourceRecord(const QT_Nclc& nclc) {
  const bool is_standard = QT_StandardNclcPrimaries(nclc.primaries) != 0;
  return {kQT_NclcType, is_standard ? kQT_NclcUnspecified : nclc.primaries, kCO_TransferPower2_2,
          kQT_NclcUnspecified};
}

UInt8 Blended(UInt8 old, float value, double weight) {
  const double sum = old * (1 - weight) + static_cast<double>(value) * weight;
  return static_cast<UInt8>(std::clamp(sum, 0.0, 255.0));
}

/// Calls `blend(row, column, color, weight)` for each pixel of a circle.
template <class Blend>
SInt32 DrawCircle(const Rect& rect, float inner_luma, float outer_luma, float chroma_radius,
                  const float* primaries, const GammaData* gamma, const QT_Nclc* nclc, SInt32 range,
                  Blend blend) {
  const SInt32 radius = (rect.bottom - rect.top) / 2;
  if (radius < 1) return paramErr;
  const SInt32 size = 2 * radius;
  std::vector<double> weights(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
  GL_GetPixelWeightsInCircle2(size, weights.data());
  const double* weight = weights.data();
  for (SInt32 y = -radius; y < radius; ++y) {
    for (SInt32 x = -radius; x < radius; ++x, ++weight) {
      CO_YCbCrF32 color = {};
      const SInt32 status = CO_CirclePosToColor(
          primaries, gamma, nclc, range, static_cast<float>(x), static_cast<float>(y),
          static_cast<float>(radius), inner_luma, outer_luma, chroma_radius, &color);
      if (status != noErr) return status;
      blend(rect.top + radius + y, rect.left + radius + x, color, *weight);
    }
  }
  return noErr;
}

constexpr SInt32 kBars[] = {kCO_Black, kCO_Red,     kCO_Green,  kCO_Blue, kCO_Grey,
                            kCO_Cyan,  kCO_Magenta, kCO_Yellow, kCO_White};
constexpr SInt32 kBarCount = 9;

CO_RGB_F32 BarColor(SInt32 code) {
  CO_RGB_F32 color = {};
  CO_RGB_BasicColor50PercToNormRGB_F32(code, &color);
  if (code == kCO_Yellow) CO_ScaleRGB_F32(&color, 1.3F);
  return color;
}

/// Calls `draw(rect, color)` for each bar with its colour in the record's space.
template <class Draw>
SInt32 DrawBars(const Rect& rect, const float* primaries, const float* white,
                const GammaData* gamma, const QT_Nclc* nclc, Draw draw) {
  const QT_Nclc source = SourceRecord(*nclc);
  // A record would stand in the way of a white of one's own.
  const QT_Nclc* const record = source.primaries == kQT_NclcUnspecified ? nullptr : &source;
  const SInt32 width = rect.right - rect.left;
  for (SInt32 i = 0; i < kBarCount; ++i) {
    CO_RGB_F32 color = BarColor(kBars[i]);
    float rgb[] = {color.r, color.g, color.b};
    const SInt32 status = CO_ConvertNormRGB_F32_indexed(
        rgb, record, 0, kCO_Gamma2_2, kCO_TransferByData, kCO_WhiteCustom, white,
        kQT_NclcUnspecified, primaries, kCO_ConesBradford, nclc, 0, gamma, kCO_TransferByData,
        kCO_WhiteD65, nullptr, kQT_NclcUnspecified, primaries, rgb);
    if (status != noErr) return status;
    color = {rgb[0], rgb[1], rgb[2]};
    const Rect bar = {rect.top, static_cast<SInt16>(rect.left + i * width / kBarCount), rect.bottom,
                      static_cast<SInt16>(rect.left + (i + 1) * width / kBarCount)};
    draw(bar, color);
  }
  return noErr;
}

}  // namespace

SInt32 CO_CirclePosToColor(const float* primaries, const GammaData* gamma, const QT_Nclc* nclc,
                           SInt32 rangeType, float x, float y, float radius, float innerLuma,
                           float outerLuma, float chromaRadius, CO_YCbCrF32* color) {
  const bool is_valid = innerLuma >= 0 && innerLuma <= outerLuma && outerLuma <= 1 &&
                        chromaRadius >= 0 && chromaRadius <= 0.5F && radius >= 1 &&
                        rangeType >= kCO_VideoRange && rangeType <= kCO_WideRange &&
                        (gamma == nullptr || (gamma[0].gamma >= 1 && gamma[0].gamma <= 3));
  if (!is_valid) return paramErr;
  const float distance = std::sqrt((x * x + y * y) / (radius * radius));
  const CO_YCbCrF32 place = {innerLuma + (outerLuma - innerLuma) * distance,
                             x * chromaRadius / radius, y * chromaRadius / radius};
  float luma[3];
  CO_IndexToMatrixF(kCircleMatrix, luma);
  CO_RGB_F32 rgb = {};
  CO_YCbCrF32toRGB_F32(&place, luma, &rgb);
  const QT_Nclc source = SourceRecord(*nclc);
  float triple[] = {rgb.r, rgb.g, rgb.b};
  const SInt32 status = CO_ConvertNormRGB_F32_indexed(
      triple, &source, 0, kCO_Gamma2_2, kCO_TransferByData, kCO_WhiteD50, nullptr,
      kQT_NclcUnspecified, primaries, kCO_ConesBradford, nclc, 0, gamma, kCO_TransferByData,
      kCO_WhiteD65, nullptr, kQT_NclcUnspecified, primaries, triple);
  if (status != noErr) return status;
  rgb = {triple[0], triple[1], triple[2]};
  CO_RGB_F32toYCbCrF32(&rgb, luma, color);
  const bool is_video = rangeType == kCO_VideoRange;
  const float chroma_scale = is_video ? 224 : 255;
  *color = {is_video ? color->y * 219 + 16 : color->y * 255, color->cb * chroma_scale + 128,
            color->cr * chroma_scale + 128};
  return noErr;
}

SInt32 CO_DrawColorCircle(SInt32 width, UInt8* frame, const Rect* rect, float innerLuma,
                          float outerLuma, float chromaRadius, const float* primaries,
                          const GammaData* gamma, const QT_Nclc* nclc, SInt32 rangeType) {
  return DrawCircle(*rect, innerLuma, outerLuma, chromaRadius, primaries, gamma, nclc, rangeType,
                    [&](SInt32 row, SInt32 column, const CO_YCbCrF32& color, double weight) {
                      UInt8* const pixel = frame + (std::ptrdiff_t{row} * width + column) * 2;
                      pixel[0] = Blended(pixel[0], column % 2 == 0 ? color.cb : color.cr, weight);
                      pixel[1] = Blended(pixel[1], color.y, weight);
                    });
}

SInt32 CO_DrawColorCircleARGB(SInt32 stride, UInt8* frame, const Rect* rect, float innerLuma,
                              float outerLuma, float chromaRadius, const float* primaries,
                              const GammaData* gamma, const QT_Nclc* nclc, SInt32 rangeType) {
  float luma[3];
  CO_IndexToMatrixF(nclc->matrix, luma);
  const float black = rangeType == kCO_VideoRange ? 16 : 0;
  return DrawCircle(
      *rect, innerLuma, outerLuma, chromaRadius, primaries, gamma, nclc, rangeType,
      [&](SInt32 row, SInt32 column, const CO_YCbCrF32& color, double weight) {
        UInt8* const pixel = frame + std::ptrdiff_t{row} * stride + std::ptrdiff_t{column} * 4;
        const CO_YCbCrF32 signed_color = {color.y - black, color.cb - 128, color.cr - 128};
        CO_RGB_F32 rgb = {};
        CO_YCbCrF32toRGB_F32(&signed_color, luma, &rgb);
        pixel[0] = Blended(pixel[0], 255, weight);
        pixel[1] = Blended(pixel[1], rgb.r, weight);
        pixel[2] = Blended(pixel[2], rgb.g, weight);
        pixel[3] = Blended(pixel[3], rgb.b, weight);
      });
}

SInt32 DBG_DrawSMPTE_BarsYUV(SInt32 width, UInt8* frame, const Rect* rect, const float* primaries,
                             const float* white, const GammaData* gamma, const QT_Nclc* nclc,
                             SInt32 rangeType) {
  float luma[3];
  CO_IndexToMatrixF(nclc->matrix, luma);
  return DrawBars(*rect, primaries, white, gamma, nclc, [&](const Rect& bar, CO_RGB_F32 color) {
    CO_YCbCrU8 code;
    CO_ScaleRGB_F32(&color, 255);
    CO_RGB_F32toYCbCrU8(&color, luma, rangeType, &code);
    CO_DrawRectangleColor(width * 2, frame, &bar, &code);
  });
}

SInt32 DBG_DrawSMPTE_BarsARGB(SInt32 stride, UInt8* frame, const Rect* rect, const float* primaries,
                              const float* white, const GammaData* gamma, const QT_Nclc* nclc,
                              SInt32 rangeType) {
  return DrawBars(*rect, primaries, white, gamma, nclc, [&](const Rect& bar, CO_RGB_F32 color) {
    CO_ARGB8 code;
    CO_RGB_F32_NormTo8bit(&color, rangeType);
    CO_RGB_F32toARGB8(255, &color, &code);
    CO_DrawRectangleColorARGB(stride, frame, &bar, &code);
  });
}

SInt32 DBG_PrintColorBars(const GammaData* gamma, SInt32 count, Boolean as1961) {
  const QT_Nclc nclc = {kQT_NclcType, kQT_NclcUnspecified,
                        static_cast<UInt16>(as1961 ? kCO_TransferBT709 : kCO_TransferUnspecified),
                        kQT_NclcUnspecified};
  if (count < 2) return paramErr;
  float value = 0;
  SInt32 status = CO_BrightnessOfStep(kCO_FullRange, gamma, &nclc, count, 0, &value);
  if (status != noErr) return status;
  std::printf("Expected brightness ramp: ");
  for (SInt32 i = 0; i < count; ++i) {
    status = CO_BrightnessOfStep(kCO_FullRange, gamma, &nclc, count, i, &value);
    if (status != noErr) return status;
    std::printf("%.1f, ", static_cast<double>(value));
  }
  std::printf("\nExpected color bars: ");
  for (const SInt32 code : kBars) {
    const CO_RGB_F32 color = BarColor(code);
    float rgb[] = {color.r, color.g, color.b};
    SInt32 index = kCO_TransferPower2_2;
    if (as1961) {
      CO_ConvertGammaNormRGB_F32_indexed(rgb, kCO_TransferPower2_2, rgb, kCO_TransferBT709);
      index = kCO_TransferPower1_961;
    }
    status = CO_ConvertGammaNormRGB_F32(rgb, nullptr, index, gamma, kCO_TransferByData, rgb);
    if (status != noErr) return status;
    std::printf("(%.1f,%.1f,%.1f), ", static_cast<double>(rgb[0]) * 255,
                static_cast<double>(rgb[1]) * 255, static_cast<double>(rgb[2]) * 255);
  }
  std::printf("\n");
  return noErr;
}
