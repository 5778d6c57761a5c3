#include "CO_Preprocess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "CO_Basic.h"
#include "CO_Ranges.h"
#include "guarded.h"

namespace {

using quillmere::test::Guarded;

constexpr double kLuma[] = {0.299, 0.587, 0.114};

struct Colour {
  double r, g, b;
};
Colour ToRGB(double y, double cb, double cr) {
  Colour c = {};
  CO_YCbCrToRGB_D(y, cb, cr, kLuma[0], kLuma[1], kLuma[2], &c.r, &c.g, &c.b);
  return c;
}
double Least(const Colour& c) {
  return std::min({c.r, c.g, c.b});
}
double Most(const Colour& c) {
  return std::max({c.r, c.g, c.b});
}

TEST(ChromaPreprocessing, BisectionsFindTheirLimits) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> luma(0, 255);
  std::uniform_real_distribution<double> chroma(-120, 120);
  for (int i = 0; i < 5000; ++i) {
    const double y = luma(random), cb = chroma(random), cr = chroma(random);
    double low = y, high = y;
    CO_SetMinimalY(255, &low, cb, cr, kLuma[0], kLuma[1], kLuma[2]);
    EXPECT_GE(low, y);
    if (low < 255) {
      EXPECT_GE(Least(ToRGB(low, cb, cr)), -1e-9);
    }
    if (low > y + 0.002) {
      EXPECT_LT(Least(ToRGB(low - 0.002, cb, cr)), 0);
    }
    CO_SetMaximalY(255, &high, cb, cr, kLuma[0], kLuma[1], kLuma[2]);
    EXPECT_LE(high, y);
    if (high > 0) {
      EXPECT_LE(Most(ToRGB(high, cb, cr)), 255 + 1e-9);
    }
    double u = cb, v = cr;
    CO_SetMaximalC(255, y, &u, &v, kLuma[0], kLuma[1], kLuma[2]);
    const Colour scaled = ToRGB(y, u, v);
    EXPECT_GE(Least(scaled), -0.5);
    EXPECT_LE(Most(scaled), 255.5);
    EXPECT_NEAR(u * cr, v * cb, 1e-6);
  }
  double endless = -INFINITY;
  CO_SetMinimalY(255, &endless, 1, 1, kLuma[0], kLuma[1], kLuma[2]);
  double bright = 192;
  CO_CorrectLumaRB(kLuma, 100, 100, 100, &bright, 0, 0);
  EXPECT_EQ(bright, 192);
  // Half a pure blue's brightness lost gives four fifths of it back.
  double dark = 29;
  CO_CorrectLumaRB(kLuma, 29.07, 127.5, -20.7, &dark, 0, 0);
  EXPECT_GT(dark, 29);
}

TEST(ChromaPreprocessing, ConstantLinesStayAndPairsShare) {
  for (SInt32 width = 1; width <= 12; ++width) {
    const auto count = static_cast<std::size_t>(width);
    Guarded<float> y(count), cb(count), cr(count);
    std::fill_n(y.data(), count, 0.4F);
    std::fill_n(cb.data(), count, 0.1F);
    std::fill_n(cr.data(), count, -0.3F);
    CO_PreprocessYUV_Chroma(width, y.data(), cb.data(), cr.data(), kLuma);
    for (std::size_t i = 0; i < count; ++i) {
      ASSERT_NEAR(y[i], 0.4F, 1e-7F);
      ASSERT_NEAR(cb[i], 0.1F, 1e-7F);
      ASSERT_NEAR(cr[i], -0.3F, 1e-7F);
    }
    std::mt19937 random(static_cast<UInt32>(width));
    std::uniform_real_distribution<float> any(-0.5F, 0.5F);
    for (std::size_t i = 0; i < count; ++i) {
      y[i] = any(random) + 0.5F;
      cb[i] = any(random) * 0.1F;
      cr[i] = any(random) * 0.05F;  // no strong edge
    }
    const std::vector<float> before(cb.data(), cb.data() + count);
    const std::vector<float> lumas(y.data(), y.data() + count);
    CO_PreprocessYUV_Chroma(width, y.data(), cb.data(), cr.data(), kLuma);
    for (std::size_t i = 0; i + 1 < count; i += 2)
      ASSERT_EQ(cb[i], cb[i + 1]);
    for (std::size_t i = 0; i < count; ++i)
      ASSERT_NEAR(y[i], lumas[i], 1e-6F);
    // The first pair and the last have the mean, the others the tent.
    const auto at = [&](std::size_t i) { return before[std::min(i, count - 1)]; };
    for (std::size_t i = 0; i < count; i += 2) {
      const bool has_tent = i >= 2 && i + 2 < count;
      const float expected = has_tent
                                 ? 0.125F * (at(i - 1) + at(i + 2)) + 0.375F * (at(i) + at(i + 1))
                                 : 0.5F * (at(i) + at(i + 1));
      ASSERT_NEAR(cb[i], expected, 1e-6F) << width << ' ' << i;
    }
  }
}

TEST(ChromaPreprocessing, StrongEdgesStayWithinRGB) {
  // Random colours side by side, none so dark or bright that a luma has to move.
  std::mt19937 random(2);
  constexpr std::size_t kWidth = 400;
  Guarded<float> y(kWidth), cb(kWidth), cr(kWidth);
  for (std::size_t i = 0; i < kWidth;) {
    const auto component = [&] { return static_cast<double>(random() % 256) / 255; };
    double yuv[3];
    CO_RGBToYCbCrD(component(), component(), component(), kLuma[0], kLuma[1], kLuma[2], &yuv[0],
                   &yuv[1], &yuv[2]);
    if (yuv[0] < 0.2 || yuv[0] > 0.8) continue;
    y[i] = static_cast<float>(yuv[0]);
    cb[i] = static_cast<float>(yuv[1]);
    cr[i] = static_cast<float>(yuv[2]);
    ++i;
  }
  const auto outside = [&] {
    double most = 0;
    for (std::size_t i = 0; i < kWidth; ++i) {
      const Colour c = ToRGB(255 * static_cast<double>(y[i]), 255 * static_cast<double>(cb[i]),
                             255 * static_cast<double>(cr[i]));
      most = std::max({most, -Least(c), Most(c) - 255});
    }
    return most;
  };
  const Guarded<float> first_cb = cb, first_cr = cr;
  for (std::size_t i = 0; i < kWidth; i += 2) {
    cb[i] = cb[i + 1] = (cb[i] + cb[i + 1]) / 2;
    cr[i] = cr[i + 1] = (cr[i] + cr[i + 1]) / 2;
  }
  EXPECT_GT(outside(), 50);  // what shared chroma does without the corrections
  cb = first_cb;
  cr = first_cr;
  CO_PreprocessYUV_Chroma(kWidth, y.data(), cb.data(), cr.data(), kLuma);
  EXPECT_LT(outside(), 0.1);
  // Bytes of full colours keep their alpha and stay in their range.
  for (const SInt32 range : {kCO_FullRange, kCO_VideoRange}) {
    const UInt8 full = range == kCO_VideoRange ? 219 : 255;
    Guarded<UInt8> line(33 * 4);
    for (std::size_t i = 0; i < line.size(); ++i)
      line[i] = i % 4 == 0 ? static_cast<UInt8>(i) : (random() % 2 == 0 ? UInt8{0} : full);
    CO_PreprocessRGB_Chroma(33, line.data(), kLuma, range);
    for (std::size_t i = 0; i < line.size(); i += 4) {
      ASSERT_EQ(line[i], static_cast<UInt8>(i));
      ASSERT_LE(*std::max_element(line.data() + i + 1, line.data() + i + 4), full);
    }
  }
  // The same colour everywhere comes back.
  Guarded<UInt8> flat(16 * 4);
  for (std::size_t i = 0; i < flat.size(); ++i)
    flat[i] = static_cast<UInt8>(10 + 50 * (i % 4));
  const Guarded<UInt8> before = flat;
  CO_PreprocessRGB_Chroma(16, flat.data(), kLuma, kCO_FullRange);
  EXPECT_EQ(flat, before);
}

TEST(ChromaPreprocessing, LumaMovesOnlyInTheDarkAndTheBright) {
  double dark[5] = {10, 10, 10, 10, 10};
  double middle[5] = {100, 100, 100, 100, 100};
  double first = 5, second = 100;
  EXPECT_TRUE(CO_MinimalAdjustY_Pair(kLuma, dark, 4, &first, &second, 60, 60));
  EXPECT_GE(Least(ToRGB(first, 60, 60)), 0);
  EXPECT_EQ(second, 100);
  first = 5;
  EXPECT_FALSE(CO_MinimalAdjustY_Pair(kLuma, middle, 4, &first, &second, 60, 60));
  EXPECT_EQ(first, 5);
  first = 100;
  second = 5;
  EXPECT_TRUE(CO_MinimalAdjustY_Pair(kLuma, dark, 2, &first, &second, 60, 60));
  EXPECT_GE(Least(ToRGB(second, 60, 60)), 0);
  EXPECT_EQ(first, 100);
}

}  // namespace
