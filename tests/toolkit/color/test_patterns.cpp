/// Test patterns, read back as numbers.
#include "CO_Patterns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "CO_Basic_Colors.h"
#include "CO_Color_Conversions.h"
#include "CO_Errors.h"
#include "CO_Measure.h"
#include "guarded.h"

namespace {

using quillmere::test::Guarded;

constexpr SInt32 kWidth = 90;
constexpr SInt32 kHeight = 40;
constexpr QT_Nclc kOpen = {kQT_NclcType, 2, 2, 6};
constexpr QT_Nclc kHD = {kQT_NclcType, 1, 1, 1};

Guarded<UInt8> Frame(SInt32 bytes_per_pixel = 2) {
  Guarded<UInt8> frame(static_cast<std::size_t>(kWidth * kHeight * bytes_per_pixel));
  std::fill_n(frame.data(), frame.size(), UInt8{77});
  return frame;
}

const UInt8* At(const Guarded<UInt8>& frame, SInt32 row, SInt32 column, SInt32 size = 2) {
  return frame.data() + (row * kWidth + column) * size;
}

/// The average colour of a rectangle, whose columns are even.
CO_YCbCrU8 Measured(const Guarded<UInt8>& frame, const Rect& rect) {
  const Rect measuring = {rect.top, rect.left, static_cast<SInt16>(rect.right - rect.left),
                          static_cast<SInt16>(rect.bottom - rect.top)};
  SInt32 cb = 0, cr = 0;
  DBG_CalcAverageC(kWidth, frame.data(), &measuring, &cb, &cr);
  return {static_cast<UInt8>(DBG_CalcAverageY(kWidth, frame.data(), &measuring)),
          static_cast<UInt8>(cb), static_cast<UInt8>(cr)};
}

TEST(Patterns, RectanglesHaveTheirColourAndNoOther) {
  for (const SInt32 code : {kCO_White, kCO_Black, kCO_Grey, kCO_Yellow, kCO_Magenta, kCO_Red,
                            kCO_Cyan, kCO_Green, kCO_Blue}) {
    for (const SInt32 range : {1, 2}) {
      Guarded<UInt8> frame = Frame();
      const Rect rect = {3, 6, 13, 20};
      CO_DrawRectangleBasicColor(kWidth, frame.data(), &rect, range, code);
      CO_YCbCrU8 color = {};
      CO_RGB_BasicColorToSimpleYCbCrU8(code, range, &color);
      const CO_YCbCrU8 measured = Measured(frame, rect);
      EXPECT_EQ(measured.y, color.y) << code;
      EXPECT_EQ(measured.cb, color.cb) << code;
      EXPECT_EQ(measured.cr, color.cr) << code;
      EXPECT_EQ(At(frame, 2, 6)[1], 77);
      EXPECT_EQ(At(frame, 12, 20)[0], 77);
      std::vector<float> plane(kWidth * kHeight, -1);
      CO_DrawPlanarYF_Rectangle(kWidth, plane.data(), &rect, range, code);
      EXPECT_EQ(plane[12 * kWidth + 19], static_cast<float>(color.y));
      EXPECT_EQ(plane[12 * kWidth + 20], -1);
    }
  }
  Guarded<UInt8> untouched = Frame();
  const Rect all = {0, 0, kHeight, kWidth};
  CO_DrawRectangleBasicColor(kWidth, untouched.data(), &all, 1, 35);
  EXPECT_EQ(untouched, Frame());
  Guarded<UInt8> argb = Frame(4);
  CO_DrawRectangleBasicColorARGB(kWidth * 4, argb.data(), &all, 2, kCO_Yellow);
  const UInt8* pixel = At(argb, kHeight - 1, kWidth - 1, 4);
  EXPECT_EQ(std::vector<UInt8>(pixel, pixel + 4), (std::vector<UInt8>{255, 255, 255, 0}));
}

TEST(Patterns, RampsRiseToTheirColours) {
  Guarded<UInt8> frame = Frame();
  const Rect rect = {0, 0, 4, kWidth};
  CO_DrawHorizRampBasicColor(kWidth, frame.data(), &rect, 1, kCO_White);
  for (SInt32 x = 1; x < kWidth; ++x)
    ASSERT_LE(At(frame, 0, x - 1)[1], At(frame, 0, x)[1]);
  EXPECT_EQ(At(frame, 0, 0)[1], 16);
  EXPECT_NEAR(At(frame, 0, kWidth / 2)[1], 16 + 219 / 2.0, 1.5);

  const Rect hues = {10, 0, 30, 84};
  ASSERT_EQ(CO_MakeColorRamp(kWidth, frame.data(), &hues, 1.0F), noErr);
  CO_YCbCrU8 red = {};
  CO_RGB_BasicColorToSimpleYCbCrU8(kCO_Red, 1, &red);
  EXPECT_EQ(At(frame, 10, 0)[1], red.y);
  EXPECT_EQ(At(frame, 10, 0)[0], red.cb);
  EXPECT_EQ(At(frame, 29, 50)[0], 128);
  EXPECT_EQ(At(frame, 29, 50)[1], 128);
  const Rect odd = {10, 0, 30, 80};
  EXPECT_EQ(CO_MakeColorRamp(kWidth, frame.data(), &odd, 1.0F), paramErr);

  float values[5];
  ASSERT_EQ(CO_CreateBrightnessRamp(1, kCO_Gamma2_2, &kOpen, 2, values), noErr);
  EXPECT_NEAR(values[0], 16, 1e-3);
  EXPECT_NEAR(values[1], 235, 1e-3);
  ASSERT_EQ(CO_CreateBrightnessRamp(2, nullptr, &kHD, 5, values), noErr);
  EXPECT_NEAR(values[2], 255 * (1.099 * std::pow(std::pow(0.5, 2.2), 0.45) - 0.099), 0.01);
  Rect bar = {0, 2, 6, 10};
  ASSERT_EQ(
      CO_DrawVertGreyScaleRamp(kWidth, kHeight, frame.data(), &bar, 1, kCO_Gamma2_2, &kOpen, 9),
      noErr);
  EXPECT_EQ(bar.top, 30);  // the last that the frame has room for
  EXPECT_EQ(Measured(frame, {30, 2, 36, 10}).y, static_cast<int>(16 + 219 * 5 / 8.0 + 0.5));
  EXPECT_EQ(Measured(frame, {30, 2, 36, 10}).cb, 128);
  Guarded<UInt8> argb = Frame(4);
  Rect grey = {0, 2, 6, 10};
  ASSERT_EQ(
      CO_DrawVertGreyScaleRampARGB(kWidth * 4, argb.data(), &grey, 2, kCO_Gamma2_2, &kOpen, 5),
      noErr);
  EXPECT_EQ(At(argb, 29, 9, 4)[2], 255);
}

TEST(Patterns, CirclesHaveHueByAngle) {
  float primaries[9];
  ASSERT_EQ(CO_IndexToPrimariesXYZ_F2(1, primaries), noErr);
  CO_YCbCrF32 color = {};
  ASSERT_EQ(
      CO_CirclePosToColor(primaries, kCO_Gamma2_2, &kOpen, 2, 0, 0, 10, 0.4F, 0.6F, 0.2F, &color),
      noErr);
  EXPECT_NEAR(color.y, 0.4 * 255, 0.2);
  EXPECT_NEAR(color.cb, 128, 0.2);
  ASSERT_EQ(
      CO_CirclePosToColor(primaries, kCO_Gamma2_2, &kOpen, 2, 10, 0, 10, 0.4F, 0.6F, 0.1F, &color),
      noErr);
  EXPECT_GT(color.cb, 140);
  EXPECT_EQ(
      CO_CirclePosToColor(primaries, kCO_Gamma2_2, &kOpen, 2, 0, 0, 10, 0.6F, 0.4F, 0.2F, &color),
      paramErr);
  EXPECT_EQ(
      CO_CirclePosToColor(primaries, kCO_Gamma2_2, &kOpen, 4, 0, 0, 10, 0.4F, 0.6F, 0.2F, &color),
      paramErr);
  Guarded<UInt8> frame = Frame();
  const Rect rect = {2, 4, 36, 38};
  ASSERT_EQ(CO_DrawColorCircle(kWidth, frame.data(), &rect, 0.5F, 0.5F, 0.2F, primaries,
                               kCO_Gamma2_2, &kOpen, 2),
            noErr);
  EXPECT_EQ(At(frame, 2, 4)[1], 77);  // the corner lies outside
  EXPECT_NEAR(At(frame, 19, 21)[1], 127, 3);
  EXPECT_GT(At(frame, 19, 36)[0], At(frame, 19, 6)[0]);
  Guarded<UInt8> argb = Frame(4);
  ASSERT_EQ(CO_DrawColorCircleARGB(kWidth * 4, argb.data(), &rect, 0.5F, 0.5F, 0.2F, primaries,
                                   kCO_Gamma2_2, &kOpen, 2),
            noErr);
  EXPECT_GT(At(argb, 19, 36, 4)[3], At(argb, 19, 6, 4)[3]);
}

TEST(Patterns, BarsReadAsTheirColours) {
  float primaries[9];
  ASSERT_EQ(CO_IndexToPrimariesXYZ_F2(1, primaries), noErr);
  const float d65[] = {0.31271F, 0.32902F, 0.35827F};
  Guarded<UInt8> frame = Frame();
  const Rect rect = {0, 0, kHeight, kWidth};
  // The same primaries, white and gamma on both sides: the colours themselves.
  ASSERT_EQ(
      DBG_DrawSMPTE_BarsYUV(kWidth, frame.data(), &rect, primaries, d65, kCO_Gamma2_2, &kOpen, 1),
      noErr);
  EXPECT_EQ(Measured(frame, {0, 0, 40, 10}).y, 16);
  EXPECT_NEAR(Measured(frame, {0, 80, 40, 90}).y, 235, 1);
  for (SInt16 left = 10; left < 70; left = static_cast<SInt16>(left + 10))
    EXPECT_NEAR(Measured(frame, {0, left, 40, static_cast<SInt16>(left + 10)}).y, 16 + 219 * 0.5,
                1.5);
  EXPECT_NEAR(Measured(frame, {0, 40, 40, 50}).cb, 128, 1);
  Guarded<UInt8> argb = Frame(4);
  ASSERT_EQ(DBG_DrawSMPTE_BarsARGB(kWidth * 4, argb.data(), &rect, primaries, d65, kCO_Gamma2_2,
                                   &kOpen, 2),
            noErr);
  EXPECT_NEAR(At(argb, 5, 15, 4)[1], 255 * 0.94, 1.5);
  testing::internal::CaptureStdout();
  EXPECT_EQ(DBG_PrintColorBars(kCO_Gamma2_2, 3, 0), noErr);
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(printed.rfind("Expected brightness ramp: 0.0, 127.5, 255.0, \nExpected color bars: "
                          "(0.0,0.0,0.0), (239.7,",
                          0),
            0U)
      << printed;
}

TEST(Patterns, EdgesAreSoftenedWhereTheyAreAlone) {
  Guarded<UInt8> frame = Frame();
  constexpr Rect right = {0, 40, kHeight, kWidth};
  const CO_YCbCrU8 color = {177, 77, 77};
  CO_DrawRectangleColor(kWidth * 2, frame.data(), &right, &color);
  ASSERT_EQ(CO_BlurVerticalEdge(frame.data(), kWidth, {2, 40}, {30, 40}, 5, 8), noErr);
  SInt32 largest = 0;
  for (SInt32 x = 30; x < 50; ++x) {
    EXPECT_LE(At(frame, 10, x)[1], At(frame, 10, x + 1)[1]);
    largest = std::max(largest, At(frame, 10, x + 1)[1] - At(frame, 10, x)[1]);
  }
  EXPECT_LT(largest, 50);
  EXPECT_EQ(At(frame, 1, 39)[1], 77);  // rows beside stay
  EXPECT_EQ(At(frame, 30, 40)[1], 177);
  EXPECT_EQ(At(frame, 10, 31)[1], 77);
  // Detail right beside the edge.
  Guarded<UInt8> busy = Frame();
  CO_DrawRectangleColor(kWidth * 2, busy.data(), &right, &color);
  constexpr Rect line = {0, 41, kHeight, 42};
  const CO_YCbCrU8 other = {20, 77, 77};
  CO_DrawRectangleColor(kWidth * 2, busy.data(), &line, &other);
  const Guarded<UInt8> before = busy;
  EXPECT_EQ(CO_BlurVerticalEdge(busy.data(), kWidth, {2, 40}, {30, 40}, 5, 8), CO_NoRoomForBlurErr);
  EXPECT_EQ(busy, before);
  EXPECT_EQ(CO_BlurVerticalEdge(busy.data(), kWidth, {2, 4}, {30, 4}, 5, 8), paramErr);
  EXPECT_EQ(CO_BlurVerticalEdge(busy.data(), kWidth, {30, 40}, {30, 40}, 5, 8), paramErr);
}

TEST(Patterns, TheTestImageIsMadeOfItsParts) {
  constexpr std::size_t kRow = 720 * 2;
  Guarded<UInt8> frame(576 * kRow);
  ASSERT_EQ(DBG_CreateTestImage720x576_2vuy(frame.data()), noErr);
  const auto luma = [&](std::size_t row, std::size_t column) {
    return static_cast<int>(frame[row * kRow + column * 2 + 1]);
  };
  // White's ramp, from black to nearly 235, and blue's.
  EXPECT_EQ(luma(0, 0), 16);
  EXPECT_NEAR(luma(15, 719), 235, 1);
  EXPECT_NEAR(luma(111, 719), 41, 1);
  for (const std::size_t top : {112U, 256U}) {
    for (std::size_t box = 0; box < 18; ++box) {
      int darkest = 255;
      std::size_t left = 40, right = 0;
      for (std::size_t row = top; row < top + 32; ++row) {
        for (std::size_t column = 0; column < 40; ++column) {
          const int value = luma(row, box * 40 + column);
          darkest = std::min(darkest, value);
          if (value > 100) continue;
          left = std::min(left, column);
          right = std::max(right, column);
        }
      }
      EXPECT_LT(darkest, 30) << box;  // a number
      EXPECT_GE(left, 11U) << box;
      EXPECT_LT(right, 30U) << box;
      EXPECT_NEAR(luma(top, box * 40), 125.5, 0.5) << box;
    }
  }
  // Steps of yellow, k / 17 of the way from black.
  for (std::size_t k = 0; k < 18; ++k)
    EXPECT_NEAR(luma(165, k * 40 + 5), 16 + 194 * static_cast<double>(k) / 17, 1.01) << k;
  // Strong hues at the left, weak ones at the right, and no step between them.
  const auto chroma = [&](std::size_t row, std::size_t column) {
    return std::abs(frame[row * kRow + column * 2] - 128);
  };
  EXPECT_GT(chroma(290, 0) + chroma(290, 1), 100);
  EXPECT_LT(chroma(290, 500) + chroma(290, 501), 100);
  EXPECT_NEAR(luma(560, 719), 16 + 25 * 0.75, 1.5);  // the last bar reaches the edge
}

}  // namespace
