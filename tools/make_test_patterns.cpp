// make-test-patterns OUT.png: draws the test patterns on one sheet, to be looked at. See
// docs/images/test-patterns.png.

#include <algorithm>
#include <cstdio>
#include <vector>

#include "CO_Basic_Colors.h"
#include "CO_Color_Conversions.h"
#include "CO_Frames.h"
#include "CO_Patterns.h"
#include "CO_Ranges.h"
#include "png_writer.h"

namespace {

constexpr SInt32 kWidth = 720;
constexpr SInt32 kImageTop = 608;
constexpr SInt32 kHeight = kImageTop + 576;
constexpr SInt32 kColors[] = {kCO_White,   kCO_Yellow, kCO_Cyan, kCO_Green,
                              kCO_Magenta, kCO_Red,    kCO_Blue};
constexpr QT_Nclc kSpace = {kQT_NclcType, 1, 1, 6};

Rect Box(int top, int left, int height, int width) {
  return {static_cast<SInt16>(top), static_cast<SInt16>(left), static_cast<SInt16>(top + height),
          static_cast<SInt16>(left + width)};
}

/// The sheet in 2vuy.
class Sheet {
 public:
  Sheet() : frame_(std::size_t{kWidth} * kHeight * 2) {
    CO_PaintFrameBlack(kHeight, kWidth, frame_.data());
    CO_IndexToPrimariesXYZ_F2(1, primaries_);
  }

  /// Ramps from black to each colour, and the colours at full strength.
  void DrawColors() {
    int top = 0;
    for (const SInt32 code : kColors) {
      const Rect ramp = Box(top, 0, 16, 560);
      const Rect full = Box(top, 576, 16, 144);
      CO_DrawHorizRampBasicColor(kWidth, frame_.data(), &ramp, kCO_VideoRange, code);
      CO_DrawRectangleBasicColor(kWidth, frame_.data(), &full, kCO_VideoRange, code);
      top += 16;
    }
  }
  /// Two ramps of hues beside each other, the edge between them softened in its lower half.
  SInt32 DrawHues() {
    const Rect strong = Box(120, 0, 160, 480);
    const Rect weak = Box(120, 480, 160, 240);
    SInt32 status = CO_MakeColorRamp(kWidth, frame_.data(), &strong, 1.0F);
    if (status == noErr) status = CO_MakeColorRamp(kWidth, frame_.data(), &weak, 0.6F);
    if (status != noErr) return status;
    return CO_BlurVerticalEdge(frame_.data(), kWidth, {200, 480}, {280, 480}, 10, 12);
  }
  SInt32 DrawGreys() {
    Rect bar = Box(288, 0, 12, 160);
    return CO_DrawVertGreyScaleRamp(kWidth, 480, frame_.data(), &bar, kCO_VideoRange, nullptr,
                                    &kSpace, 16);
  }
  SInt32 DrawCircles() {
    const Rect even = Box(288, 184, 192, 192);
    const Rect rising = Box(288, 400, 192, 192);
    SInt32 status = CO_DrawColorCircle(kWidth, frame_.data(), &even, 0.5F, 0.5F, 0.25F, primaries_,
                                       nullptr, &kSpace, kCO_VideoRange);
    if (status != noErr) return status;
    return CO_DrawColorCircle(kWidth, frame_.data(), &rising, 0.1F, 0.9F, 0.15F, primaries_,
                              nullptr, &kSpace, kCO_VideoRange);
  }
  SInt32 DrawBars() {
    constexpr float kD65[] = {0.31271F, 0.32902F, 0.35827F};
    const Rect bars = Box(496, 0, 104, kWidth);
    return DBG_DrawSMPTE_BarsYUV(kWidth, frame_.data(), &bars, primaries_, kD65, nullptr, &kSpace,
                                 kCO_VideoRange);
  }

  SInt32 DrawTestImage() {
    return DBG_CreateTestImage720x576_2vuy(frame_.data() + std::ptrdiff_t{kImageTop} * kWidth * 2);
  }

  OSStatus Write(const char* path) const {
    std::vector<UInt8> rgb;
    rgb.reserve(std::size_t{kWidth} * kHeight * 3);
    for (std::size_t i = 0; i < frame_.size(); i += 4) {
      for (const std::size_t luma : {i + 1, i + 3}) {
        const CO_YCbCrU8 color = {std::clamp<UInt8>(frame_[luma], 16, 235), frame_[i],
                                  frame_[i + 2]};
        CO_RGB8 pixel = {};
        CO_YCbCrU8ToRGB8(&color, &pixel);
        rgb.insert(rgb.end(), {pixel.r, pixel.g, pixel.b});
      }
    }
    return quillmere::imaging::WritePngFile(rgb, kWidth, kHeight, path);
  }

 private:
  std::vector<UInt8> frame_;
  float primaries_[9] = {};
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: make-test-patterns OUT.png\n");
    return 2;
  }
  Sheet sheet;
  sheet.DrawColors();
  SInt32 status = sheet.DrawHues();
  if (status == noErr) status = sheet.DrawGreys();
  if (status == noErr) status = sheet.DrawCircles();
  if (status == noErr) status = sheet.DrawBars();
  if (status == noErr) status = sheet.DrawTestImage();
  if (status == noErr) status = sheet.Write(arguments[1]);
  if (status != noErr) std::fprintf(stderr, "make-test-patterns: status %d\n", status);
  return status == noErr ? 0 : 1;
}
