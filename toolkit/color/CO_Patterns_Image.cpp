// The patterns of CO_Patterns.h that have text, and the image of them all.

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "CO_Basic_Colors.h"
#include "CO_Patterns.h"
#include "CO_Ranges.h"
#include "GL_Quartz_Contexts.h"
#include "context_text.h"

namespace {

constexpr SInt32 kWidth = 720;
constexpr SInt32 kRampRows = 16;
constexpr SInt32 kBoxes = 18;
constexpr SInt32 kBoxWidth = kWidth / kBoxes;
constexpr std::array<SInt32, 7> kColors = {kCO_White,   kCO_Yellow, kCO_Cyan, kCO_Green,
                                           kCO_Magenta, kCO_Red,    kCO_Blue};

struct Free {
  void operator()(void* bytes) const { std::free(bytes); }
};

Rect Box(SInt32 top, SInt32 left, SInt32 height, SInt32 width) {
  return {static_cast<SInt16>(top), static_cast<SInt16>(left), static_cast<SInt16>(top + height),
          static_cast<SInt16>(left + width)};
}

CO_YCbCrU8 Scaled(SInt32 code, float factor) {
  CO_YCbCrU8 color = {};
  CO_RGB_BasicColorToSimpleYCbCrU8(code, kCO_VideoRange, &color);
  CO_ScaleYCbCrU8(&color, factor, &color);
  return color;
}

/// A grey bar with the numbers of its boxes.
SInt32 DrawNumbers(UInt8* frame, SInt32 top) {
  constexpr SInt32 kRows = 32;
  const Rect bar = Box(top, 0, kRows, kWidth);
  CO_DrawRectangleBasicColor(kWidth, frame, &bar, kCO_VideoRange, kCO_Grey);
  for (SInt32 i = 0; i < kBoxes; ++i) {
    const Rect box = Box(top, i * kBoxWidth, kRows, kBoxWidth);
    const SInt32 status = CO_DrawTextIn2vuyBox(frame, kWidth, &box, "Monaco", 12,
                                               std::to_string(i + 1).c_str(), {12, 12});
    if (status != noErr) return status;
  }
  return noErr;
}

void DrawRamps(UInt8* frame) {
  SInt32 top = 0;
  for (const SInt32 code : kColors) {
    const Rect ramp = Box(top, 0, kRampRows, kWidth);
    CO_DrawHorizRampBasicColor(kWidth, frame, &ramp, kCO_VideoRange, code);
    top += kRampRows;
  }
}

void DrawSteps(UInt8* frame, SInt32 top) {
  for (const SInt32 code : kColors) {
    for (SInt32 k = 0; k < kBoxes; ++k) {
      const CO_YCbCrU8 color = Scaled(code, static_cast<float>(k) / (kBoxes - 1));
      const Rect box = Box(top, k * kBoxWidth, kRampRows, kBoxWidth);
      CO_DrawRectangleColor(kWidth * 2, frame, &box, &color);
    }
    top += kRampRows;
  }
}

SInt32 DrawHues(UInt8* frame, SInt16 top, SInt16 bottom) {
  constexpr SInt16 kEdge = 480;
  const Rect strong = {top, 0, bottom, kEdge};
  const Rect weak = {top, kEdge, bottom, kWidth};
  SInt32 status = CO_MakeColorRamp(kWidth, frame, &strong, 1.0F);
  if (status == noErr) status = CO_MakeColorRamp(kWidth, frame, &weak, 0.6F);
  if (status != noErr) return status;
  return CO_BlurVerticalEdge(frame, kWidth, {top, kEdge}, {bottom, kEdge}, 10, 12);
}

void DrawBars(UInt8* frame, SInt32 top) {
  constexpr SInt32 kBarWidth = 102;
  SInt32 left = 0;
  for (const SInt32 code : kColors) {
    const CO_YCbCrU8 color = Scaled(code, 0.75F);
    const SInt32 width = code == kColors.back() ? kWidth - left : kBarWidth;
    const Rect bar = Box(top, left, 32, width);
    CO_DrawRectangleColor(kWidth * 2, frame, &bar, &color);
    left += kBarWidth;
  }
}

}  // namespace

SInt32 CO_DrawTextIn2vuyBox(UInt8* frame, SInt32 width, const Rect* rect, const char* fontName,
                            float fontSize, const char* text, Point point) {
  constexpr RGBColor kWhite = {65535, 65535, 65535};
  const SInt32 columns = rect->right - rect->left;
  const CGRect box = {
      {0, 0}, {static_cast<CGFloat>(columns), static_cast<CGFloat>(rect->bottom - rect->top)}};
  void* buffer = nullptr;
  const quillmere::Owned<CGContextRef> context(GL_CreateStdCGContext(box, &buffer));
  const std::unique_ptr<void, Free> pixels(buffer);
  if (!context) return memFullErr;
  GL_FillRectWithColor(context.get(), box, kWhite, 255);
  CGContextSelectFont(context.get(), fontName, fontSize, kCGEncodingMacRoman);
  CGContextSetRGBFillColor(context.get(), 0, 0, 0, 1);
  CGContextShowTextAtPoint(context.get(), point.h, point.v, text, std::strlen(text));
  const auto* mask = static_cast<const UInt8*>(buffer) + 1;  // red
  for (SInt32 row = rect->top; row < rect->bottom; ++row) {
    UInt8* pixel = frame + (std::ptrdiff_t{row} * width + rect->left) * 2;
    for (SInt32 i = 0; i < columns; ++i, pixel += 2, mask += 4) {
      const float part = static_cast<float>(*mask) / 255;
      pixel[0] = static_cast<UInt8>(part * static_cast<float>(pixel[0] - 128) + 128);
      pixel[1] = static_cast<UInt8>(static_cast<float>(pixel[1]) * part);
    }
  }
  return noErr;
}

SInt32 DBG_CreateTestImage720x576_2vuy(UInt8* frame) {
  DrawRamps(frame);
  SInt32 status = DrawNumbers(frame, 112);
  DrawSteps(frame, 144);
  if (status == noErr) status = DrawNumbers(frame, 256);
  if (status == noErr) status = DrawHues(frame, 288, 544);
  DrawBars(frame, 544);
  return status;
}
