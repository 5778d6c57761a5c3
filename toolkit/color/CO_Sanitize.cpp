#include "CO_Sanitize.h"

#include <algorithm>

#include "CO_Basic.h"

namespace {

constexpr float kLeast = 0.00001F;
constexpr float kMost = 0.9999F;

/// The part of `distance`, from a luma, that fits into `room`.
float PartOf(float room, float distance) {
  return room / std::max(room, distance);
}

/// The largest factor of the chroma that keeps red, green and blue within 0 to 1.
float LargestFactor(const float* yCbCr, const float* k) {
  const float y = yCbCr[0];
  const float above = 1 - y;
  const float red = 2 * (1 - k[0]) * yCbCr[2];
  const float blue = 2 * (1 - k[2]) * yCbCr[1];
  const float green = -(k[0] / k[1] * red + k[2] / k[1] * blue);
  return std::min({PartOf(y, -red), PartOf(y, -blue), PartOf(y, -green), PartOf(above, red),
                   PartOf(above, blue), PartOf(above, green)});
}

}  // namespace

void CO_SanitizeNormYCbCrF32(float* yCbCr, const float* coefficients) {
  if (!(yCbCr[0] >= kLeast)) {  // not-a-number is black too
    std::fill_n(yCbCr, 3, 0.0F);
    return;
  }
  if (yCbCr[0] > kMost) {
    yCbCr[0] = kMost;
    yCbCr[1] = yCbCr[2] = 0;
    return;
  }
  float factor = LargestFactor(yCbCr, coefficients);
  if (factor > kLeast) factor -= kLeast;
  yCbCr[1] *= factor;
  yCbCr[2] *= factor;
}

void CO_PullInto255(float* yCbCr, float margin) {
  constexpr float kZero = 128;
  constexpr float kTop = 255;
  constexpr float kFar = 1e30F;  // infinity can't be drawn in
  const auto pull = [yCbCr](float factor) {
    for (int i = 1; i < 3; ++i)
      yCbCr[i] = (yCbCr[i] - kZero) * factor + kZero;
  };
  if (!(yCbCr[0] >= 0)) {  // not-a-number is black too
    yCbCr[0] = 0;
    yCbCr[1] = yCbCr[2] = kZero;
    return;
  }
  for (int i = 1; i < 3; ++i)
    yCbCr[i] = std::clamp(yCbCr[i], -kFar, kFar);
  if (yCbCr[0] > kTop) {
    pull(kTop / yCbCr[0]);
    yCbCr[0] = kTop;
  }
  const auto factor_of = [](float c) {
    return c < 0 ? -kZero / (c - kZero) : c > kTop ? kZero / (c - kZero) : 1.0F;
  };
  float factor = std::min(factor_of(yCbCr[1]), factor_of(yCbCr[2]));
  if (factor >= 1) return;
  if (factor > margin) factor -= margin;
  pull(factor);
}

void CO_SanitizeYCbCrF32_255(float* yCbCr) {
  constexpr float kMargin = 0.0001F;
  CO_PullInto255(yCbCr, kMargin);
}

void CO_SanitizeNormRGB_F32(float* rgb, const float* coefficients) {
  CO_RGB_F32 color = {rgb[0], rgb[1], rgb[2]};
  CO_YCbCrF32 luma_chroma = {};
  CO_RGB_F32toYCbCrF32(&color, coefficients, &luma_chroma);
  float triple[] = {luma_chroma.y, luma_chroma.cb, luma_chroma.cr};
  CO_SanitizeNormYCbCrF32(triple, coefficients);
  luma_chroma = {triple[0], triple[1], triple[2]};
  CO_YCbCrF32toRGB_F32(&luma_chroma, coefficients, &color);
  rgb[0] = color.r;
  rgb[1] = color.g;
  rgb[2] = color.b;
}
