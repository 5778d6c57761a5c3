#include "CO_Measure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "CO_Basic.h"
#include "CO_Gamma.h"
#include "CO_Sanitize.h"
#include "guarded.h"

namespace {

using quillmere::test::Guarded;

constexpr SInt32 kWidth = 40;
constexpr SInt32 kHeight = 30;

Guarded<UInt8> FrameOf(const std::function<double(int, int)>& luma) {
  Guarded<UInt8> frame(kWidth * kHeight * 2);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      frame[static_cast<std::size_t>(y * kWidth + x) * 2 + 1] = static_cast<UInt8>(luma(x, y));
  return frame;
}

TEST(Measuring, AveragesAndHistogramsCountTheRectangle) {
  const Guarded<UInt8> frame(kWidth * kHeight * 2, 3);
  const Rect rect = {5, 7, 9, 4};  // top, left, width, height
  UInt16 y[256], cb[256], cr[256];
  CO_MakeYCbCr_Histogram(frame.data(), kWidth, &rect, y, cb, cr);
  SInt32 sum = 0;
  std::vector<int> expected(256);
  SInt64 blue = 0, blues = 0;
  for (int row = 5; row < 9; ++row) {
    for (int x = 7; x < 16; ++x) {
      const UInt8* pixel = frame.data() + (row * kWidth + x) * 2;
      sum += pixel[1];
      ++expected[pixel[1]];
      if (x % 2 == 0) {
        blue += pixel[0];
        ++blues;
      }
    }
  }
  for (std::size_t i = 0; i < 256; ++i)
    ASSERT_EQ(y[i], expected[i]);
  SInt64 counted = 0;
  for (const UInt16 count : cb)
    counted += count;
  EXPECT_EQ(counted, blues);
  EXPECT_EQ(DBG_CalcAverageY(kWidth, frame.data(), &rect), (sum + 18 - 1) / 36);
  SInt32 average_cb = 0, average_cr = 0;
  DBG_CalcAverageC(kWidth, frame.data(), &rect, &average_cb, &average_cr);
  EXPECT_EQ(average_cb, (blue + 9 - 1) / 18);
  const Guarded<UInt8> flat = FrameOf([](int, int) { return 90; });
  EXPECT_EQ(DBG_CalcAverageY(kWidth, flat.data(), &rect), 90);
  const Rect pixel = {0, 0, 1, 1};
  EXPECT_EQ(DBG_CalcAverageY(kWidth, flat.data(), &pixel), 89);
  const Rect none = {3, 3, 0, 5};
  EXPECT_EQ(DBG_CalcAverageY(kWidth, flat.data(), &none), 0);
  testing::internal::CaptureStdout();
  CO_CalcAvYCbCrPrint("flat", flat.data(), kWidth, &pixel);
  CO_MakeY_HistogramPrintRange("flat", flat.data(), kWidth, &rect, 89, 90);
  DBG_PrintRectY("box", 7, kWidth, flat.data(), &pixel);
  const SInt32 numbers[] = {1, -2, 3, 4};
  DGB_PrintArrayS32_WithIndex("a", 2, numbers);
  DGB_PrintMatrixS32("m", 2, 2, numbers);
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_NE(printed.find("flat: average YCbCr, top = 0, left = 0, height = 1, width = 1:  y=90.00"),
            std::string::npos);
  EXPECT_NE(printed.find("height = 4, width = 9\n(89,0),\n(90,36),\n"), std::string::npos);
  EXPECT_NE(
      printed.find("Printing Y in rect box (frameNum=7, top=0, left=0, width=1, height=1)\n 90,\n"),
      std::string::npos);
  EXPECT_NE(printed.find("array a: (0,1),(1,-2)\nmatrix m: \n1,-2\n3,4\n"), std::string::npos);
}

TEST(Measuring, MatchedHistogramsHaveAsManySamplesBelow) {
  std::mt19937 random(4);
  for (int round = 0; round < 50; ++round) {
    std::vector<UInt32> first(256), second(256);
    for (int i = 0; i < 20; ++i)
      first[random() % 256] += 1 + static_cast<UInt32>(random() % 50);
    UInt8 table[256];
    CO_MatchHistograms(first.data(), first.data(), table);
    for (std::size_t i = 0; i < 256; ++i) {
      if (first[i] > 0) {
        ASSERT_EQ(table[i], i);
      }
    }
    // Any two: the table rises, and the middle of a level lies at its image.
    double total = 0, below = 0;
    for (const UInt32 count : first)
      total += count;
    for (std::size_t left = static_cast<std::size_t>(total); left > 0; --left)
      ++second[random() % 200 + 20];
    CO_MatchHistograms(first.data(), second.data(), table);
    ASSERT_TRUE(std::is_sorted(table, table + 256));
    for (std::size_t i = 0; i < 256; ++i) {
      if (first[i] == 0) continue;
      const double middle = (below + first[i] * 0.5) / total;
      below += first[i];
      double reached = 0;
      std::size_t level = 0;
      while ((reached += second[level]) / total < middle - 0.0001 || reached == 0)
        ++level;
      ASSERT_EQ(table[i], level);
    }
  }
  const std::vector<UInt32> none(256);
  UInt8 table[256];
  CO_MatchHistograms(none.data(), none.data(), table);
  EXPECT_EQ(table[77], 77);
}

TEST(Measuring, NearestColoursAreThoseOfAFullSearch) {
  std::mt19937 random(5);
  for (int round = 0; round < 300; ++round) {
    std::vector<UInt32> table(1 + random() % 60);
    for (UInt32& color : table)
      color = static_cast<UInt32>(random()) & (round % 2 == 0 ? 0xFFFFFFU : 0x3F3F3FU);
    std::sort(table.begin(), table.end(), std::greater<>());
    const auto count = static_cast<SInt32>(table.size());
    for (int i = 0; i < 20; ++i) {
      const UInt32 pixel = static_cast<UInt32>(random()) & 0xFFFFFF;
      const auto nearest = std::min_element(table.begin(), table.end(), [&](UInt32 a, UInt32 b) {
        return CO_ColorDiff(a, pixel) < CO_ColorDiff(b, pixel);
      });
      const SInt32 found =
          CO_FindMatchForPixel(pixel, table.data(), count, static_cast<SInt32>(random() % 80) - 10);
      ASSERT_EQ(found, nearest - table.begin());
    }
  }
  EXPECT_EQ(CO_FindMatchForPixel(1, nullptr, 0, 0), -1);
}

TEST(Measuring, EqualizedLumaHasTheLuminance) {
  constexpr double k[] = {0.2126, 0.7152, 0.0722};
  std::mt19937 random(6);
  std::uniform_real_distribution<double> component(60, 160);
  for (int i = 0; i < 200; ++i) {
    const double r = component(random), g = component(random), b = component(random);
    const auto luminance = [&](double red, double green, double blue) {
      double linear[3];
      CO_ConvertRGBtoLinear(red, green, blue, 2.2, 2, 2, &linear[0], &linear[1], &linear[2]);
      return k[0] * linear[0] + k[1] * linear[1] + k[2] * linear[2];
    };
    const double target = luminance(r, g, b) * (i % 2 == 0 ? 1.1 : 0.9);
    double luma = 0;
    CO_EqualizeLinearY(255, target, r, g, b, k[0], k[1], k[2], 2.2, 2, 2, &luma);
    double y = 0, cb = 0, cr = 0, red = 0, green = 0, blue = 0;
    CO_RGBToYCbCrD(r, g, b, k[0], k[1], k[2], &y, &cb, &cr);
    CO_YCbCrToRGB_D(luma, cb, cr, k[0], k[1], k[2], &red, &green, &blue);
    EXPECT_NEAR(luminance(red, green, blue), target, 0.01);
  }
}

TEST(Measuring, SanitizedBytesKeepTheirHue) {
  const float rows[][6] = {
      {-1, 3, 4, 0, 128, 128}, {510, 328, 128, 255, 228, 128}, {100, 200, 30, 100, 200, 30}};
  for (const auto& row : rows) {
    float triple[] = {row[0], row[1], row[2]};
    CO_SanitizeYCbCrF32_255(triple);
    for (int i = 0; i < 3; ++i)
      EXPECT_NEAR(triple[i], row[3 + i], 1e-4);
  }
  float far[] = {100, 428, -22};
  CO_SanitizeYCbCrF32_255(far);
  EXPECT_NEAR(far[1], 256, 0.1);
  EXPECT_NEAR((far[1] - 128) / 300, (far[2] - 128) / -150, 1e-5);
}

TEST(Banding, IsFoundWhereRampsHaveSteps) {
  const Rect rect = {0, 0, kHeight, kWidth};
  double gx = 9, gy = 9;
  const Guarded<UInt8> smooth = FrameOf([](int x, int) { return 20 + 4 * x; });
  const double even = DBG_DetectBanding2vuyY(kWidth, smooth.data(), &rect, &gx, &gy, 1);
  EXPECT_NEAR(gx, 4, 1e-9);
  EXPECT_NEAR(gy, 0, 1e-9);
  EXPECT_NEAR(even, 2, 0.01);
  const Guarded<UInt8> steps = FrameOf([](int x, int) { return 20 + 4 * (x / 8 * 8); });
  EXPECT_GT(DBG_DetectBanding2vuyY(kWidth, steps.data(), &rect, &gx, &gy, 1), 3.5);
  const Guarded<UInt8> down = FrameOf([](int, int y) { return 20 + 5 * y; });
  EXPECT_NEAR(DBG_DetectBanding2vuyY(kWidth, down.data(), &rect, &gx, &gy, 1), 2, 0.01);
  const Guarded<UInt8> tilted = FrameOf([](int x, int y) { return 200 - 2 * x - 2 * y; });
  EXPECT_NEAR(DBG_DetectBanding2vuyY(kWidth, tilted.data(), &rect, &gx, &gy, 1), 2, 0.05);
  EXPECT_NEAR(gx, 2, 1e-9);
  EXPECT_NEAR(gy, 2, 1e-9);
  const Guarded<UInt8> flat = FrameOf([](int, int) { return 90; });
  EXPECT_EQ(DBG_DetectBanding2vuyY(kWidth, flat.data(), &rect, &gx, &gy, 1), 0);
  EXPECT_EQ(DBG_DetectBanding2vuyY(kWidth, smooth.data(), &rect, &gx, &gy, 0), 0);
  EXPECT_EQ(gx, 0);
  EXPECT_NEAR(DBG_PointYValue(kWidth, tilted.data(), 3.5, 4.25), 200 - 7 - 8.5, 1e-9);
  EXPECT_EQ(DBG_PointYValue(kWidth, tilted.data(), kWidth - 1, kHeight - 1), 64);
}

}  // namespace
