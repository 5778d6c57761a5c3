#include "CO_Patterns.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "CO_Basic_Colors.h"
#include "CO_Ranges.h"

namespace {

constexpr CO_YCbCrU8 kGrey = {128, 128, 128};

UInt8 ChromaOf(const CO_YCbCrU8& color, SInt32 column) {
  return column % 2 == 0 ? color.cb : color.cr;
}

/// Calls `draw(row, column, pixel)` for each pixel of a rectangle, `size` bytes each.
template <class Draw>
void ForEachPixel(std::ptrdiff_t stride, std::ptrdiff_t size, UInt8* frame, const Rect& rect,
                  Draw draw) {
  for (SInt32 row = rect.top; row < rect.bottom; ++row) {
    UInt8* const line = frame + row * stride;
    for (SInt32 column = rect.left; column < rect.right; ++column)
      draw(row, column, line + column * size);
  }
}

/// The colour of a code; false if there is none, which leaves what stands there as it is.
bool FindColor(SInt32 code, SInt32 range, CO_YCbCrU8* color) {
  constexpr CO_YCbCrU8 kNoColor = {0, 0, 0};  // as low as no colour's chroma
  *color = kNoColor;
  CO_RGB_BasicColorToSimpleYCbCrU8(code, range, color);
  return color->cb != kNoColor.cb || color->cr != kNoColor.cr;
}

UInt8 Cut(float value) {
  return static_cast<UInt8>(std::clamp(value, 0.0F, 255.0F));
}

CO_YCbCrU8 HueAt(SInt32 index) {
  constexpr SInt32 kHues[] = {kCO_Red, kCO_Yellow, kCO_Green, kCO_Cyan, kCO_Blue, kCO_Magenta};
  constexpr CO_YCbCrU8 kWhite = {255, 128, 128};
  const SInt32 code = kHues[index % 6];
  CO_YCbCrU8 color = {};
  FindColor(code, kCO_VideoRange, &color);
  if (code == kCO_Blue) CO_BlendYCbCrU8(&color, &kWhite, 0.25F, &color);
  return color;
}

/// A place of the ramp of hues, `across` of a row of `width`, before it fades.
CO_YCbCrU8 RampColor(SInt32 across, SInt32 width, float chroma_scale) {
  const SInt32 sixth = width / 6;
  const CO_YCbCrU8 from = HueAt(across / sixth);
  const CO_YCbCrU8 to = HueAt(across / sixth + 1);
  const float part =
      sixth > 1 ? static_cast<float>(across % sixth) / static_cast<float>(sixth - 1) : 0;
  CO_YCbCrU8 color = {};
  CO_BlendYCbCrU8(&from, &to, part, &color);
  for (UInt8* chroma : {&color.cb, &color.cr})
    *chroma = Cut(static_cast<float>(*chroma - 128) * chroma_scale + 128);
  return color;
}

/// Draws grey bars below each other: `draw(level)` draws the rectangle.
template <class Draw>
SInt32 DrawGreys(Rect* rect, SInt32 last_row, SInt32 range, const GammaData* gamma,
                 const QT_Nclc* nclc, SInt32 count, Draw draw) {
  if (count < 2) return paramErr;
  const SInt32 height = rect->bottom - rect->top;
  for (SInt32 i = 0; i < count; ++i) {
    if (i > 0) {
      if (rect->bottom + height > last_row) break;
      rect->top = static_cast<SInt16>(rect->top + height);
      rect->bottom = static_cast<SInt16>(rect->bottom + height);
    } else if (rect->bottom > last_row) {
      break;
    }
    float level = 0;
    const SInt32 status = CO_BrightnessOfStep(range, gamma, nclc, count, i, &level);
    if (status != noErr) return status;
    draw(Cut(level + 0.5F));
  }
  return noErr;
}

}  // namespace

void CO_DrawRectangleColor(SInt32 stride, UInt8* frame, const Rect* rect, const CO_YCbCrU8* color) {
  ForEachPixel(stride, 2, frame, *rect, [color](SInt32, SInt32 column, UInt8* pixel) {
    pixel[0] = ChromaOf(*color, column);
    pixel[1] = color->y;
  });
}

void CO_DrawRectangleBasicColor(SInt32 width, UInt8* frame, const Rect* rect, SInt32 rangeType,
                                SInt32 code) {
  CO_YCbCrU8 color;
  if (FindColor(code, rangeType, &color)) CO_DrawRectangleColor(width * 2, frame, rect, &color);
}

void CO_DrawRectangleColorARGB(SInt32 stride, UInt8* frame, const Rect* rect,
                               const CO_ARGB8* color) {
  ForEachPixel(stride, 4, frame, *rect, [color](SInt32, SInt32, UInt8* pixel) {
    pixel[0] = color->a;
    pixel[1] = color->r;
    pixel[2] = color->g;
    pixel[3] = color->b;
  });
}

void CO_DrawRectangleBasicColorARGB(SInt32 stride, UInt8* frame, const Rect* rect, SInt32 rangeType,
                                    SInt32 code) {
  CO_RGB_F32 rgb = {-1, 0, 0};
  CO_RGB_BasicColorToSimpleRGB_F32(code, rangeType, &rgb);
  if (rgb.r < 0) return;
  CO_ARGB8 color;
  CO_RGB_F32toARGB8(255, &rgb, &color);
  CO_DrawRectangleColorARGB(stride, frame, rect, &color);
}

void CO_DrawPlanarYF_Rectangle(SInt32 width, float* plane, const Rect* rect, SInt32 rangeType,
                               SInt32 code) {
  CO_YCbCrU8 color;
  if (!FindColor(code, rangeType, &color)) return;
  for (SInt32 row = rect->top; row < rect->bottom; ++row) {
    float* const line = plane + std::ptrdiff_t{row} * width;
    for (SInt32 column = rect->left; column < rect->right; ++column)
      line[column] = static_cast<float>(color.y);
  }
}

void CO_DrawHorizRampBasicColor(SInt32 width, UInt8* frame, const Rect* rect, SInt32 rangeType,
                                SInt32 code) {
  CO_YCbCrU8 color;
  if (!FindColor(code, rangeType, &color)) return;
  const auto whole = static_cast<float>(rect->right - rect->left);
  ForEachPixel(std::ptrdiff_t{width} * 2, 2, frame, *rect,
               [&](SInt32, SInt32 column, UInt8* pixel) {
                 const float f = static_cast<float>(column - rect->left) / whole;
                 pixel[0] = Cut(f * static_cast<float>(ChromaOf(color, column) - 128) + 128);
                 pixel[1] = Cut(static_cast<float>(color.y - 16) * f + 16.49F);
               });
}

SInt32 CO_MakeColorRamp(SInt32 width, UInt8* frame, const Rect* rect, float chromaScale) {
  const SInt32 columns = rect->right - rect->left;
  const SInt32 rows = rect->bottom - rect->top;
  if (columns < 6 || columns % 6 != 0 || rows < 2) return paramErr;
  std::vector<CO_YCbCrU8> hues;
  hues.reserve(static_cast<std::size_t>(columns));
  for (SInt32 i = 0; i < columns; ++i)
    hues.push_back(RampColor(i, columns, chromaScale));
  ForEachPixel(
      std::ptrdiff_t{width} * 2, 2, frame, *rect, [&](SInt32 row, SInt32 column, UInt8* pixel) {
        const float fade = static_cast<float>(row - rect->top) / static_cast<float>(rows - 1);
        CO_YCbCrU8 color = {};
        CO_BlendYCbCrU8(&hues[static_cast<std::size_t>(column - rect->left)], &kGrey, fade, &color);
        pixel[0] = ChromaOf(color, column);
        pixel[1] = color.y;
      });
  return noErr;
}

SInt32 CO_BrightnessOfStep(SInt32 rangeType, const GammaData* gamma, const QT_Nclc* nclc,
                           SInt32 count, SInt32 step, float* value) {
  *value = static_cast<float>(step) / static_cast<float>(count - 1);
  const SInt32 status = CO_ConvertGammaNormF32(*value, kCO_Gamma2_2, kCO_TransferByData, gamma,
                                               nclc->transferFunction, value);
  *value = rangeType == kCO_FullRange ? *value * 255 : *value * 219 + 16;
  return status;
}

SInt32 CO_CreateBrightnessRamp(SInt32 rangeType, const GammaData* gamma, const QT_Nclc* nclc,
                               SInt32 count, float* values) {
  if (count < 2) return paramErr;
  for (SInt32 i = 0; i < count; ++i) {
    const SInt32 status = CO_BrightnessOfStep(rangeType, gamma, nclc, count, i, &values[i]);
    if (status != noErr) return status;
  }
  return noErr;
}

SInt32 CO_DrawVertGreyScaleRamp(SInt32 width, SInt32 height, UInt8* frame, Rect* rect,
                                SInt32 rangeType, const GammaData* gamma, const QT_Nclc* nclc,
                                SInt32 count) {
  return DrawGreys(rect, height, rangeType, gamma, nclc, count, [&](UInt8 level) {
    const CO_YCbCrU8 color = {level, 128, 128};
    CO_DrawRectangleColor(width * 2, frame, rect, &color);
  });
}

SInt32 CO_DrawVertGreyScaleRampARGB(SInt32 stride, UInt8* frame, Rect* rect, SInt32 rangeType,
                                    const GammaData* gamma, const QT_Nclc* nclc, SInt32 count) {
  constexpr SInt32 kNoEnd = 32768;
  return DrawGreys(rect, kNoEnd, rangeType, gamma, nclc, count, [&](UInt8 level) {
    const CO_ARGB8 color = {255, level, level, level};
    CO_DrawRectangleColorARGB(stride, frame, rect, &color);
  });
}
