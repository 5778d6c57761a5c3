/// Lines of 2vuy against lines of floats, by the rules sample by sample.
#include <gtest/gtest.h>

#include <cmath>

#include "CO_Float_Lines.h"
#include "CO_Ranges.h"
#include "guarded.h"

namespace {

using quillmere::test::Guarded;
using Line = Guarded<UInt8>;
using Floats = Guarded<float>;

/// An edit with three lines.
struct Edit {
  explicit Edit(SInt32 width, SInt32 range)
      : y(static_cast<std::size_t>(width)), cb(y.size()), cr(y.size()) {
    std::fill_n(y.data(), y.size(), 0.0F);
    std::fill_n(cb.data(), y.size(), 0.0F);
    std::fill_n(cr.data(), y.size(), 0.0F);
    data.lineY = y.data();
    data.lineCb = cb.data();
    data.lineCr = cr.data();
    data.sourceRange = data.destRange = range;
  }
  Floats y, cb, cr;
  EditData data = {};
};

std::vector<SInt32> Widths() {
  std::vector<SInt32> widths = {1023, 1024, 1025, 1920};
  for (SInt32 width = 1; width <= 64; ++width)
    widths.push_back(width);
  return widths;
}

Line RandomLine(SInt32 width, UInt32 seed) {
  return Line(static_cast<std::size_t>(width) * 2, seed);
}

TEST(FloatLines, ReadingFollowsTheRules) {
  for (const SInt32 range : {kCO_VideoRange, kCO_FullRange}) {
    for (const bool interpolate : {false, true}) {
      for (const SInt32 width : Widths()) {
        const Line line = RandomLine(width, static_cast<UInt32>(width));
        Edit edit(width, range);
        CO_2vuyLineToYUV(width, line.data(), &edit.data, interpolate);
        const bool is_full = range == kCO_FullRange;
        for (SInt32 i = 0; i < width; ++i) {
          const auto k = static_cast<std::size_t>(i);
          const double y = line[2 * k + 1];
          ASSERT_NEAR(edit.y[k], is_full ? y / 255 : (y - 16) / 219, 1e-6);
          // By components: the chroma of even pixels, and from those that of odd ones.
          for (const int c : {0, 2}) {
            const Floats& lane = c == 0 ? edit.cb : edit.cr;
            const bool has_own = i + (c == 2 ? 1 : 0) < width;
            if (i % 2 == 0 && has_own) {
              const double code = line[2 * k + static_cast<std::size_t>(c)];
              ASSERT_NEAR(lane[k], is_full ? (code - 128) / 255 : (code - 128) / 224, 1e-6);
            } else if (i % 2 == 0) {
              ASSERT_EQ(lane[k], width == 1 ? 0.0F : lane[k - 1]);
            } else {
              const SInt32 next =
                  i + 1 + (c == 2 ? 1 : 0);  // the pixel whose byte the next one has
              const bool has_next = next < width;
              const float behind = has_next ? lane[k + 1] : lane[k - 1];
              ASSERT_EQ(lane[k], interpolate ? (lane[k - 1] + behind) * 0.5F : behind)
                  << width << ' ' << i;
            }
          }
        }
      }
    }
  }
}

TEST(FloatLines, EveryCodeComesBack) {
  for (const SInt32 range : {kCO_VideoRange, kCO_FullRange}) {
    for (const SInt32 width : Widths()) {
      for (UInt32 seed = 0; seed < (width > 1000 ? 20U : 2U); ++seed) {
        const Line line = RandomLine(width, seed);
        Edit edit(width, range);
        Line back = RandomLine(width, 99);
        CO_2vuyLineToYUV(width, line.data(), &edit.data, 1);
        CO_YUVF_LinesTo2vuy(width, &edit.data, back.data(), 0);
        ASSERT_EQ(back, line) << width << " range " << range;
        const auto samples = static_cast<std::size_t>((width + 1) / 2);
        Floats cb(samples), cr(samples);
        Line planar = RandomLine(width, 98);
        CO_2vuyLineToPlanarYCbCr422F(width, line.data(), &edit.data, edit.y.data(), cb.data(),
                                     cr.data());
        CO_PlanarYCbCr422F_LineTo2vuy(width, &edit.data, edit.y.data(), cb.data(), cr.data(),
                                      planar.data());
        ASSERT_EQ(planar, line) << width << " range " << range;
        Edit wide(width, range);
        float* const lines[] = {wide.y.data(), wide.cb.data(), wide.cr.data()};
        CO_PlanarYCbCr422F_LinesToYUVF(width, edit.y.data(), cb.data(), cr.data(), lines);
        Edit read(width, range);
        CO_2vuyLineToYUV(width, line.data(), &read.data, 1);
        ASSERT_EQ(wide.cb, read.cb);
        ASSERT_EQ(wide.y, read.y);
      }
    }
  }
}

TEST(FloatLines, WritingRoundsAveragesAndLimits) {
  constexpr SInt32 kWidth = 6;
  Edit edit(kWidth, kCO_VideoRange);
  const float luma[] = {-9, 0, 1, 9, NAN, 0.5F};
  const float chroma[] = {-0.5F, 0.5F, -3, 3, NAN, 0};
  std::copy_n(luma, kWidth, edit.y.data());
  std::copy_n(chroma, kWidth, edit.cb.data());
  std::copy_n(chroma, kWidth, edit.cr.data());
  Line line(kWidth * 2);
  CO_YUVF_LinesTo2vuy(kWidth, &edit.data, line.data(), 0);
  EXPECT_EQ((std::vector<UInt8>(line.data(), line.data() + 12)),
            (std::vector<UInt8>{16, 0, 16, 16, 0, 235, 0, 255, 0, 0, 0, 126}));
  CO_YUVF_LinesTo2vuy(kWidth, &edit.data, line.data(), 1);
  EXPECT_EQ(line[0], (16 + 240) / 2);
  EXPECT_EQ(line[4], 255 / 2);
  EXPECT_EQ(line[8], 128 / 2);
}

TEST(FloatLines, DitherFollowsItsGenerators) {
  constexpr SInt32 kWidth = 1501;
  std::mt19937 random(3);
  std::uniform_real_distribution<float> value(-0.2F, 1.2F);
  for (const SInt32 range : {kCO_VideoRange, kCO_FullRange}) {
    Edit edit(kWidth, range);
    for (std::size_t i = 0; i < edit.y.size(); ++i) {
      edit.y[i] = value(random);
      edit.cb[i] = value(random) - 0.5F;
      edit.cr[i] = value(random) - 0.5F;
    }
    UInt32 seeds[] = {1234, 54321};
    UInt32 states[] = {1234, 54321};
    const auto dither = [&](float code, int which) {
      const float whole = std::trunc(code);
      const bool is_above = code - whole > static_cast<float>(states[which]) / 65536;
      const UInt32 next =
          which == 0 ? states[0] * 1103515245U + 12345U : states[1] * 1664525U + 1013904223U;
      states[which] = next >> 16;
      return static_cast<UInt8>(std::clamp(whole + (is_above ? 1 : 0), 0.0F, 255.0F));
    };
    const bool is_video = range == kCO_VideoRange;
    for (int round = 0; round < 2; ++round) {
      Line line = RandomLine(kWidth, 5);
      CO_YUVF_LinesToUInt8withDitherLCG(kWidth, &edit.data, &seeds[0], &seeds[1], line.data());
      for (std::size_t i = 0; i < edit.y.size(); ++i) {
        const float y = is_video ? 219 * edit.y[i] + 16 : 255 * edit.y[i];
        ASSERT_EQ(line[2 * i + 1], dither(y, 0)) << i;
        const float c = i % 2 == 0 ? edit.cb[i] : edit.cr[i - 1];
        ASSERT_EQ(line[2 * i], dither((is_video ? 224.0F : 255.0F) * c + 128, 1)) << i;
        if (i % 2 == 0 && i + 1 == edit.y.size()) break;
      }
      EXPECT_EQ(seeds[0], states[0]);
      EXPECT_EQ(seeds[1], states[1]);
    }
  }
}

TEST(FloatLines, LimitsKeepWhatTheyPromise) {
  float y[] = {2.0F, 0.5F, 0.000001F, 0.3F, 0.5F};
  float cb[] = {0.4F, 0.1F, 0.2F, 0.3F, 0.1F};
  float cr[] = {-0.4F, 0.1F, 0.2F, 0.3F, 0.1F};
  float* const lines[] = {y, cb, cr};
  CO_YUVF_LinesSanityCheck(5, lines);
  EXPECT_EQ(y[0], 0.9999F);
  EXPECT_EQ(cb[0], 0.2F);
  EXPECT_EQ(cr[2], 0.0F);
  EXPECT_EQ(cb[3], 0.3F);
  std::mt19937 random(8);
  std::uniform_real_distribution<float> luma(0, 255);
  std::uniform_real_distribution<float> chroma(-128, 128);
  for (int i = 0; i < 20'000; ++i) {
    float triple[] = {luma(random), chroma(random), chroma(random)};
    const float before[] = {triple[1], triple[2]};
    float* const pixel[] = {&triple[0], &triple[1], &triple[2]};
    CO_YUVF_LinesLimitIRE(1, pixel, 1.1F);
    const float peak = triple[0] + std::hypot(triple[1] * 0.87202066F, triple[2] * 1.2299507F);
    ASSERT_LT(peak, 1.1F * 255 + 0.01F);
    ASSERT_NEAR(triple[1] * before[1], triple[2] * before[0], 0.01);
  }
  const float a[] = {0.5F, 64, 256, 128};
  const float b[] = {128, 64, 128, 1000};
  float scaled[] = {10, 10, 10, 10};
  CO_ScaleLineCwithY(4, a, b, scaled);
  EXPECT_FLOAT_EQ(scaled[0], 20);
  EXPECT_FLOAT_EQ(scaled[1], 10);
  EXPECT_FLOAT_EQ(scaled[2], 20);
  EXPECT_FLOAT_EQ(scaled[3], 1.28F);
}

TEST(ByteSwaps, TurnEveryWidthThereAndBackInPlace) {
  for (const SInt32 width : Widths()) {
    const Line line = RandomLine(width, 4);
    Line swapped = line;
    CO_ByteSwap2vuyLine(width, swapped.data(), swapped.data());
    for (std::size_t i = 0; i < line.size(); i += 2) {
      ASSERT_EQ(swapped[i], line[i + 1]);
      ASSERT_EQ(swapped[i + 1], static_cast<UInt8>(line[i] - 128));
    }
    CO_ByteSwapYuv2Frame(width, 1, swapped.data(), swapped.data(), 0, 0);
    EXPECT_EQ(swapped, line);
  }
}

}  // namespace
