#include "CO_Basic_Colors.h"

#include <algorithm>
#include <iterator>

#include "CO_Color_Conversions.h"
#include "CO_Ranges.h"
#include "CO_Sanitize.h"

namespace {

struct BasicColor {
  SInt32 code;
  CO_RGB_F32 norm;
  RGBColor color;
};

constexpr UInt16 kFull = 65535;
constexpr UInt16 kHalf = 32767;

/// In the order of their indices, from 1.
constexpr BasicColor kColors[] = {{kCO_Black, {0, 0, 0}, {0, 0, 0}},
                                  {kCO_White, {1, 1, 1}, {kFull, kFull, kFull}},
                                  {kCO_Grey, {0.5F, 0.5F, 0.5F}, {kHalf, kHalf, kHalf}},
                                  {kCO_Green, {0, 1, 0}, {0, kFull, 0}},
                                  {kCO_Cyan, {0, 1, 1}, {0, kFull, kFull}},
                                  {kCO_Blue, {0, 0, 1}, {0, 0, kFull}},
                                  {kCO_Magenta, {1, 0, 1}, {kFull, 0, kFull}},
                                  {kCO_Red, {1, 0, 0}, {kFull, 0, 0}},
                                  {kCO_Yellow, {1, 1, 0}, {kFull, kFull, 0}}};

const BasicColor* Find(SInt32 code) {
  const auto* found = std::find_if(std::begin(kColors), std::end(kColors),
                                   [=](const BasicColor& color) { return color.code == code; });
  return found != std::end(kColors) ? found : nullptr;
}

/// What the other component or components are when `fixed` of the luma is spoken for and those that
/// are free weigh `weight`.
constexpr float RestOfHalf(float fixed, float weight) {
  return (0.5F - fixed) / weight;
}

CO_RGB_F32 HalfBright(const BasicColor& color) {
  constexpr float kNearlyAll = 0.95F;
  float luma[3];
  CO_IndexToMatrixF(kCO_MatrixBT601, luma);
  const auto [red, green, blue] = luma;
  switch (color.code) {
    case kCO_Yellow: {
      const float v = RestOfHalf(0, red + green + 0.3F * blue);
      return {v, v, 0.3F * v};
    }
    case kCO_Magenta:
      return {kNearlyAll, RestOfHalf(kNearlyAll * (red + blue), green), kNearlyAll};
    case kCO_Red: {
      const float v = RestOfHalf(0.94F * red, green + blue);
      return {0.94F, v, v};
    }
    case kCO_Cyan: {
      const float v = RestOfHalf(0, green + blue + 0.4F * red);
      return {0.4F * v, v, v};
    }
    case kCO_Green: {
      const float v = RestOfHalf(0, green + 0.36F * (red + blue));
      return {0.36F * v, v, 0.36F * v};
    }
    case kCO_Blue: {
      const float v = RestOfHalf(kNearlyAll * blue, red + green);
      return {v, v, kNearlyAll};
    }
    default:
      return color.norm;
  }
}

}  // namespace

SInt32 CO_GetIndexedBasicColor(SInt32 index) {
  const bool is_listed = index >= 1 && index <= static_cast<SInt32>(std::size(kColors));
  return is_listed ? kColors[index - 1].code : SInt32{kCO_Black};
}

void CO_RGB_BasicColorToRGBColor(SInt32 code, RGBColor* out) {
  if (const BasicColor* color = Find(code)) *out = color->color;
}

void CO_RGB_BasicColorToNormRGB_F32(SInt32 code, CO_RGB_F32* out) {
  if (const BasicColor* color = Find(code)) *out = color->norm;
}

void CO_RGB_BasicColorToSimpleRGB_F32(SInt32 code, SInt32 rangeType, CO_RGB_F32* out) {
  const BasicColor* color = Find(code);
  if (color == nullptr) return;
  *out = color->norm;
  CO_RGB_F32_NormTo8bit(out, rangeType);
}

void CO_RGB_BasicColorToSimpleYCbCrU8(SInt32 code, SInt32 rangeType, CO_YCbCrU8* out) {
  if (Find(code) == nullptr) return;
  CO_RGB_F32 rgb = {};
  float luma[3];
  CO_IndexToMatrixF(kCO_MatrixBT601, luma);
  CO_RGB_BasicColorToSimpleRGB_F32(code, kCO_FullRange, &rgb);
  CO_RGB_F32toYCbCrU8(&rgb, luma, rangeType, out);
}

SInt32 CO_RGB_BasicColorToRGB_F32(SInt32 code, const float* primaries, const GammaData* gamma,
                                  const QT_Nclc* nclc, SInt32 rangeType, CO_RGB_F32* out) {
  const BasicColor* color = Find(code);
  if (color == nullptr) return noErr;
  constexpr QT_Nclc kOwn = {kQT_NclcType, kQT_NclcUnspecified, kCO_TransferPower2_2,
                            kQT_NclcUnspecified};
  float rgb[] = {color->norm.r, color->norm.g, color->norm.b};
  const SInt32 status = CO_ConvertNormRGB_F32_indexed(
      rgb, &kOwn, 0, kCO_Gamma2_2, kCO_TransferByData, kCO_WhiteD50, nullptr, kQT_NclcUnspecified,
      primaries, kCO_ConesBradford, nclc, 0, gamma, kCO_TransferByData, kCO_WhiteD65, nullptr,
      kQT_NclcUnspecified, primaries, rgb);
  if (status != noErr) return status;
  float luma[3];
  CO_IndexToMatrixF(nclc->matrix, luma);
  CO_SanitizeNormRGB_F32(rgb, luma);
  *out = {rgb[0], rgb[1], rgb[2]};
  CO_RGB_F32_NormTo8bit(out, rangeType);
  return noErr;
}

SInt32 CO_RGB_BasicColorToYCbCrU8(SInt32 code, const float* primaries, const GammaData* gamma,
                                  const QT_Nclc* nclc, SInt32 rangeType, CO_YCbCrU8* out) {
  if (Find(code) == nullptr) return noErr;
  CO_RGB_F32 rgb = {};
  const SInt32 status =
      CO_RGB_BasicColorToRGB_F32(code, primaries, gamma, nclc, kCO_FullRange, &rgb);
  if (status != noErr) return status;
  float luma[3];
  CO_IndexToMatrixF(nclc->matrix, luma);
  CO_RGB_F32toYCbCrU8(&rgb, luma, rangeType, out);
  return noErr;
}

void CO_RGB_BasicColor50PercToNormRGB_F32(SInt32 code, CO_RGB_F32* out) {
  if (const BasicColor* color = Find(code)) *out = HalfBright(*color);
}
