#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "CO_Basic.h"
#include "CO_Basic_Colors.h"

namespace {

constexpr double kCoefficients[] = {0.299, 0.587, 0.114};
constexpr float kFloatCoefficients[] = {0.299F, 0.587F, 0.114F};

/// Calls `visit` with every third code of each component and both ends.
template <class Visit>
void ForEachTriple(Visit visit) {
  for (int x = 0; x < 256; x += 3)
    for (int y = 0; y < 256; y += 3)
      for (int z = 0; z < 256; z += 3)
        visit(static_cast<UInt8>(x), static_cast<UInt8>(y), static_cast<UInt8>(z));
}

TEST(IntegerColors, AreTheRealFormulasRounded) {
  ForEachTriple([](UInt8 r, UInt8 g, UInt8 b) {
    const double rgb[] = {r / 255.0, g / 255.0, b / 255.0};
    double exact[3];
    CO_RGBToYCbCr(rgb, kCoefficients, exact);
    const CO_RGB8 in = {r, g, b};
    CO_YCbCr8 full;
    CO_YCbCrU8 video;
    CO_RGB8ToYCbCr8(&in, &full);
    CO_RGB8_ToYCbCrU8(&in, &video);
    ASSERT_NEAR(full.y, exact[0] * 255, 0.51);
    ASSERT_NEAR(full.cb, exact[1] * 255, 0.52);
    ASSERT_NEAR(full.cr, exact[2] * 255, 0.52);
    ASSERT_NEAR(video.y, exact[0] * 219 + 16, 0.51);
    ASSERT_NEAR(video.cb, exact[1] * 224 + 128, 0.52);
    ASSERT_NEAR(video.cr, exact[2] * 224 + 128, 0.52);
    CO_RGB8 back;
    CO_YCbCr8ToRGB8(&full, &back);
    for (const int error : {back.r - r, back.g - g, back.b - b})
      ASSERT_LE(std::abs(error), 2);
    CO_YCbCrU8ToRGB8(&video, &back);
    for (const int error : {back.r - r, back.g - g, back.b - b})
      ASSERT_LE(std::abs(error), 2);
  });
  ForEachTriple([](UInt8 y, UInt8 cb, UInt8 cr) {
    const double color[] = {static_cast<double>(y), cb - 128.0, cr - 128.0};
    double rgb[3];
    CO_YCbCrToRGB(color, kCoefficients, rgb);
    const CO_YCbCr8 in = {y, static_cast<SInt8>(cb - 128), static_cast<SInt8>(cr - 128)};
    CO_RGB8 out;
    CO_YCbCr8ToRGB8(&in, &out);
    ASSERT_NEAR(out.r, std::clamp(rgb[0], 0.0, 255.0), 0.52);
    ASSERT_NEAR(out.g, std::clamp(rgb[1], 0.0, 255.0), 0.52);
    ASSERT_NEAR(out.b, std::clamp(rgb[2], 0.0, 255.0), 0.52);
    const double video[] = {(y - 16) / 219.0 * 255, (cb - 128) / 224.0 * 255,
                            (cr - 128) / 224.0 * 255};
    CO_YCbCrToRGB(video, kCoefficients, rgb);
    const CO_YCbCrU8 in_video = {y, cb, cr};
    CO_YCbCrU8ToRGB8(&in_video, &out);
    ASSERT_NEAR(out.r, std::clamp(rgb[0], 0.0, 255.0), 0.52);
    ASSERT_NEAR(out.g, std::clamp(rgb[1], 0.0, 255.0), 0.52);
    ASSERT_NEAR(out.b, std::clamp(rgb[2], 0.0, 255.0), 0.52);
  });
}

TEST(IntegerColors, ChangeRanges) {
  for (int code = 0; code < 256; ++code) {
    const auto byte = static_cast<UInt8>(code);
    const auto chroma = static_cast<SInt8>(code - 128);
    const CO_YCbCr8 full = {byte, chroma, chroma};
    CO_YCbCrU8 video, offset, narrowed;
    CO_YCbCrToYCbCrU8(&full, &video);
    EXPECT_NEAR(video.y, code * 219 / 255.0 + 16, 0.51);
    EXPECT_NEAR(video.cb, chroma * 224 / 255.0 + 128, 1.0);
    CO_YCbCr8 back;
    CO_YCbCrU8ToYCbCr(&video, &back);
    EXPECT_LE(std::abs(back.y - code), 1);
    CO_YCbCrToYCbCrU8_FR(&full, &offset);
    EXPECT_EQ(offset.cr, code);
    CO_YCbCrU8_FRtoVR(&offset, &narrowed);
    // A division by 256 in the place of 255.
    EXPECT_NEAR(narrowed.y, code * 219 / 256.0 + 16, 0.51);
    CO_YCbCrU8_VRtoFR(&narrowed, &offset);
    EXPECT_LE(std::abs(offset.y - code), 3);
    EXPECT_LE(std::abs(offset.cb - code), 3);
  }
  const CO_YCbCrU8 beyond = {255, 0, 255};
  CO_YCbCrU8 out;
  CO_YCbCrU8_VRtoFR(&beyond, &out);
  EXPECT_EQ(out.y, 255);
  EXPECT_EQ(out.cb, 0);
  EXPECT_EQ(out.cr, 255);
}

TEST(FloatColors, StayWithinBytes) {
  std::mt19937 random(3);
  std::uniform_real_distribution<float> wide(-200, 500);
  for (int round = 0; round < 5000; ++round) {
    const CO_YCbCrF32 in = {wide(random), wide(random), wide(random)};
    CO_YCbCrU8 out;
    CO_YCbCrF32toU8(&in, &out);
    if (in.y < 0) {
      EXPECT_EQ(out.y, 0);
      EXPECT_EQ(out.cb, 128);
    } else if (in.y <= 255 && std::min(in.cb, in.cr) >= 0 && std::max(in.cb, in.cr) <= 255) {
      EXPECT_NEAR(out.cb, in.cb, 0.51);
      EXPECT_NEAR(out.y, in.y, 0.51);
    } else {
      // The hue stays: both chroma are drawn by one factor.
      EXPECT_NEAR((out.cb - 128.0F) * (in.cr - 128), (out.cr - 128.0F) * (in.cb - 128), 600);
    }
  }
  const float nan = std::nanf("");
  const CO_YCbCrF32 nothing = {nan, nan, nan};
  CO_YCbCrU8 out;
  CO_YCbCrF32toU8(&nothing, &out);
  EXPECT_EQ(out.y, 0);
  const float infinite = std::numeric_limits<float>::infinity();
  const CO_YCbCrF32 far = {100, infinite, -infinite};
  CO_YCbCrF32toU8(&far, &out);
  EXPECT_EQ(out.cb, 255);
  EXPECT_EQ(out.cr, 0);
  const CO_RGB_F32 rgb = {-5, 127.6F, 300};
  CO_ARGB8 argb;
  CO_RGB_F32toARGB8(9, &rgb, &argb);
  EXPECT_EQ(argb.a * 1000 + argb.r + argb.g + argb.b, 9000 + 0 + 128 + 255);

  const CO_RGB_F32 color = {200, 100, 50};
  CO_YCbCrF32 made;
  CO_RGB_F32 back;
  CO_RGB_F32toYCbCrF32(&color, kFloatCoefficients, &made);
  CO_YCbCrF32toRGB_F32(&made, kFloatCoefficients, &back);
  EXPECT_NEAR(back.g, 100, 1e-3);
  EXPECT_NEAR(back.b, 50, 1e-3);
}

TEST(WideColors, GoThroughBytesAndBack) {
  UInt8 bytes[3];
  CO_RGB16ToYCbCr8({0, 0, 0}, kCoefficients, 1, bytes);
  EXPECT_EQ(bytes[0] * 65536 + bytes[1] * 256 + bytes[2], 16 * 65536 + 128 * 256 + 128);
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    const RGBColor in = {static_cast<UInt16>(random()), static_cast<UInt16>(random()),
                         static_cast<UInt16>(random())};
    for (const SInt32 range : {1, 2}) {
      RGBColor out;
      CO_RGB16ToYCbCr8(in, kCoefficients, range, bytes);
      CO_YCbCr8ToRGB16(bytes[0], bytes[1], bytes[2], kCoefficients, range, &out);
      for (const int error : {out.red - in.red, out.green - in.green, out.blue - in.blue})
        ASSERT_LE(std::abs(error), range == 1 ? 500 : 900);
    }
  }
}

TEST(BasicColors, AreTheirTable) {
  const struct {
    SInt32 index, code;
    float r, g, b;
  } colors[] = {{1, 33, 0, 0, 0},  {2, 30, 1, 1, 1},  {3, 34, 0.5F, 0.5F, 0.5F},
                {4, 341, 0, 1, 0}, {5, 273, 0, 1, 1}, {6, 409, 0, 0, 1},
                {7, 137, 1, 0, 1}, {8, 205, 1, 0, 0}, {9, 69, 1, 1, 0}};
  for (const auto& c : colors) {
    SCOPED_TRACE(c.code);
    EXPECT_EQ(CO_GetIndexedBasicColor(c.index), c.code);
    CO_RGB_F32 norm, half, simple;
    RGBColor color;
    CO_RGB_BasicColorToNormRGB_F32(c.code, &norm);
    CO_RGB_BasicColorToRGBColor(c.code, &color);
    CO_RGB_BasicColorToSimpleRGB_F32(c.code, 1, &simple);
    CO_RGB_BasicColor50PercToNormRGB_F32(c.code, &half);
    EXPECT_EQ(norm.r * 4 + norm.g * 2 + norm.b, c.r * 4 + c.g * 2 + c.b);
    EXPECT_EQ(color.green, static_cast<UInt16>(c.g * 65535));
    EXPECT_EQ(simple.b, 16 + 224 * c.b);
    if (c.code != 30 && c.code != 33) {
      EXPECT_NEAR(half.r * 0.299 + half.g * 0.587 + half.b * 0.114, 0.5, 1e-6);
    }
    CO_YCbCrU8 bytes;
    CO_RGB_BasicColorToSimpleYCbCrU8(c.code, 1, &bytes);
    EXPECT_NEAR(bytes.y, 16 + 219 * (c.r * 0.299 + c.g * 0.587 + c.b * 0.114), 0.51);
  }
  EXPECT_EQ(CO_GetIndexedBasicColor(0), 33);
  EXPECT_EQ(CO_GetIndexedBasicColor(10), 33);
  RGBColor kept = {1, 2, 3};
  CO_RGB_BasicColorToRGBColor(31, &kept);
  EXPECT_EQ(kept.blue, 3);
}

TEST(Brightness, IsReachedOrMixedWithWhite) {
  for (int brightness = 0; brightness < 256; brightness += 5) {
    ForEachTriple([=](UInt8 r, UInt8 g, UInt8 b) {
      if ((r + g + b) % 7 != 0) return;
      const CO_RGB8 in = {r, g, b};
      CO_RGB8 out;
      CO_SetRGB8_Br(&in, static_cast<UInt8>(brightness), &out);
      const double luma = 0.299 * out.r + 0.587 * out.g + 0.114 * out.b;
      // Dark colours hardly say what they are a multiple of.
      const double dark = 0.299 * r + 0.587 * g + 0.114 * b;
      if (dark > 20) {
        ASSERT_NEAR(luma, brightness, 3 + brightness / dark);
      }
    });
  }
  const CO_RGB8 black = {0, 0, 0};
  CO_RGB8 out;
  CO_SetRGB8_Br(&black, 90, &out);
  EXPECT_EQ(out.g, 90);
  const CO_RGB8 red = {255, 0, 0};
  CO_YCbCrU8 color;
  CO_BrRGB8toYCbCrU8(&red, 200, &color);
  EXPECT_NEAR(color.y, 16 + 200 * 219 / 255.0, 1.5);
  EXPECT_EQ(CO_ColorDiff(0xFF102030, 0x00112233), 1U + 2 + 3);

  const CO_YCbCr8 in = {200, -100, 127};
  CFDictionaryRef dictionary = CO_CopyYCbCr8ToDict(&in);
  CO_YCbCr8 read = {1, 2, 3};
  CO_GetYCbCr8FromDict(dictionary, &read);
  CFRelease(dictionary);
  EXPECT_TRUE(CO_EqualColor8(&in, &read));
  const CO_YCbCrU8 a = {16, 128, 240}, b = {235, 16, 128};
  CO_YCbCrU8 mixed;
  CO_BlendYCbCrU8(&a, &b, 0.5F, &mixed);
  EXPECT_EQ(mixed.y * 65536 + mixed.cb * 256 + mixed.cr, 125 * 65536 + 72 * 256 + 184);
  CO_ScaleYCbCrU8(&b, 3, &mixed);
  EXPECT_EQ(mixed.y + mixed.cb + mixed.cr, 255 + 0 + 128);
}

}  // namespace
