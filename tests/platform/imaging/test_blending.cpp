// Laying pictures over each other: the stated formulas, guard bytes, and ImageMagick.

#include <random>

#include "blending.h"
#include "orientation.h"
#include "placement.h"
#include "test_pictures.h"

namespace quillmere::imaging {
namespace {

using namespace quillmere::test;

/// A quotient rounded to the nearest, halves up, of numbers that may be below 0.
SInt64 Rounded(SInt64 number, SInt64 divisor) {
  return (2 * number + divisor) / (2 * divisor);
}

/// The stated formula for one channel.
SInt64 Expected(const Blend& blend, const UInt8* s, const UInt8* d, std::size_t c) {
  const SInt64 color = s[c], below = d[c], alpha = s[0], weight = blend.weight[c - 1];
  const SInt64 whole = 255 * 65535;
  switch (blend.mode) {
    case BlendMode::kCopy:
      return color;
    case BlendMode::kWeighted:
      return Rounded(color * weight + below * (65535 - weight), 65535);
    case BlendMode::kTransparent:
      return std::equal(blend.key, blend.key + 3, s + 1) ? below : color;
    case BlendMode::kStraightAlpha:
      return Rounded(color * alpha + below * (255 - alpha), 255);
    case BlendMode::kPremultipliedWhite:
      return std::clamp<SInt64>(color - (255 - alpha) + Rounded(below * (255 - alpha), 255), 0,
                                255);
    case BlendMode::kPremultipliedBlack:
      return std::min<SInt64>(color + Rounded(below * (255 - alpha), 255), 255);
    case BlendMode::kWeightedStraightAlpha:
      return Rounded(color * alpha * weight + below * (whole - alpha * weight), whole);
  }
  return -1;
}

constexpr BlendMode kModes[] = {BlendMode::kCopy,
                                BlendMode::kWeighted,
                                BlendMode::kTransparent,
                                BlendMode::kStraightAlpha,
                                BlendMode::kPremultipliedWhite,
                                BlendMode::kPremultipliedBlack,
                                BlendMode::kWeightedStraightAlpha};

TEST(Blending, FollowsItsFormulasAtEveryLengthAndTouchesNothingElse) {
  std::mt19937 random(11);
  constexpr std::size_t kGuard = 32;
  for (const BlendMode mode : kModes) {
    for (std::size_t count = 0; count < 80; ++count) {
      Bytes upper(count * 4 + 1);
      Bytes lower(count * 4 + 2 * kGuard);
      for (UInt8& byte : upper)
        byte = static_cast<UInt8>(random() % 5 == 0 ? 255 : random());
      for (UInt8& byte : lower)
        byte = static_cast<UInt8>(random());
      for (std::size_t i = 0; i < count; ++i)
        lower[kGuard + i * 4] = 255;
      Blend blend = {mode, {0, 65535, static_cast<UInt16>(random())}, {255, 255, 255}};
      const Bytes before = lower;
      BlendRow(blend, upper.data(), lower.data() + kGuard, count);
      for (std::size_t i = 0; i < lower.size(); ++i) {
        SInt64 expected = before[i];
        if (i >= kGuard && i < kGuard + count * 4) {
          const std::size_t pixel = (i - kGuard) / 4 * 4;
          const std::size_t c = (i - kGuard) % 4;
          expected = c == 0 ? 255 : Expected(blend, &upper[pixel], &before[kGuard + pixel], c);
        }
        ASSERT_EQ(lower[i], expected) << static_cast<int>(mode) << " " << count << " " << i;
      }
    }
  }
}

TEST(Blending, StraightAlphaIsExactForEveryTriple) {
  const Blend blend = {BlendMode::kStraightAlpha, {}, {}};
  Bytes upper(256 * 4), lower(256 * 4);
  for (int alpha = 0; alpha < 256; ++alpha) {
    for (int color = 0; color < 256; ++color) {
      for (std::size_t below = 0; below < 256; ++below) {
        UInt8* const s = &upper[below * 4];
        s[0] = static_cast<UInt8>(alpha);
        s[1] = s[2] = s[3] = static_cast<UInt8>(color);
        std::fill_n(&lower[below * 4], 4, static_cast<UInt8>(below));
      }
      BlendRow(blend, upper.data(), lower.data(), 256);
      for (int below = 0; below < 256; ++below) {
        const int expected = (color * alpha + below * (255 - alpha) + 127) / 255;
        const UInt8* const d = &lower[static_cast<std::size_t>(below) * 4];
        ASSERT_TRUE(d[0] == 255 && d[1] == expected && d[2] == expected && d[3] == expected)
            << color << " " << alpha << " " << below;
      }
    }
  }
}

TEST(Placement, AMaskOverAPictureAgreesWithAnIndependentComposite) {
  const TemporaryFolder folder;
  MakePicture("90x70", {}, (folder / "base.jpg").string());
  for (const char* size : {"90x70", "50x120", "130x20"}) {
    MakePicture(size,
                {"-negate", "-alpha", "set", "-channel", "A", "-fx", "(i+j)/(w+h)", "-define",
                 "png:bit-depth=8"},
                (folder / "mask.png").string());
    const DecodedImage frame = Decode(folder / "base.jpg");
    const DecodedImage mask = Decode(folder / "mask.png");
    DrawPicture(mask.block, mask.opaque, {}, {BlendMode::kStraightAlpha, {}, {}}, frame.block);
    const Bytes expected = PeerPixels(
        folder / "base.jpg", {(folder / "mask.png").string(), "-compose", "over", "-composite"});
    EXPECT_LE(LargestDifference(PixelsOf(frame.block), expected), 1) << size;
  }
}

/// A picture whose pixels all differ.
DecodedImage CountedPicture(UInt32 width, UInt32 height) {
  DecodedImage image;
  EXPECT_EQ(AllocateImage(width, height, &image), noErr);
  for (UInt32 y = 0; y < height; ++y) {
    for (UInt32 x = 0; x < width; ++x) {
      UInt8* const pixel = image.block.Row(y) + std::size_t{x} * 4;
      pixel[0] = 255;
      pixel[1] = static_cast<UInt8>(x * 7);
      pixel[2] = static_cast<UInt8>(y * 11);
      pixel[3] = static_cast<UInt8>(x + y);
    }
  }
  return image;
}

TEST(Placement, QuarterTurnsAndMirrorsMovePixelsExactly) {
  const UInt32 w = 13, h = 7;
  const DecodedImage picture = CountedPicture(w, h);
  for (UInt8 orientation = 1; orientation <= 8; ++orientation) {
    DecodedImage expected, drawn;
    const bool swap = SwapsSides(orientation);
    ASSERT_EQ(AllocateImage(swap ? h : w, swap ? w : h, &expected), noErr);
    ASSERT_EQ(AllocateImage(swap ? h : w, swap ? w : h, &drawn), noErr);
    PlaceRows(picture.block, 0, orientation, expected.block);
    FillBlack(drawn.block);
    DrawPicture(picture.block, true, MapOfOrientation(orientation, w, h), {}, drawn.block);
    EXPECT_EQ(PixelsOf(drawn.block), PixelsOf(expected.block)) << int{orientation};
  }
}

TEST(Placement, CutsToTheFrameAndKeepsTheRestAsItWas) {
  const DecodedImage picture = CountedPicture(10, 10);
  for (const AffineMap& map : {AffineMap{1, 0, 0, 1, -4, 7}, AffineMap{1, 0, 0, 1, 1e8, 0},
                               AffineMap{2.5, 0.3, -0.7, 1.9, -3.25, 4},
                               AffineMap{0, 0, 0, 0, 2, 2}, AffineMap{1e-9, 0, 0, 1e9, 0, 0}}) {
    Bytes memory(16 * 16 * 4, 0xA5);
    // The frame is the inner 8 by 8 pixels.
    const PixelBlock frame = {memory.data() + (4 * 16 + 4) * 4, 16 * 4, 8, 8};
    DrawPicture(picture.block, true, map, {}, frame);
    for (std::size_t i = 0; i < memory.size(); ++i) {
      const std::size_t x = i / 4 % 16, y = i / 64;
      if (x < 4 || x >= 12 || y < 4 || y >= 12) {
        ASSERT_EQ(memory[i], 0xA5) << i;
      }
    }
  }
}

TEST(Placement, ScalingAFlatPictureKeepsItsColour) {
  DecodedImage picture, frame;
  ASSERT_EQ(AllocateImage(9, 5, &picture), noErr);
  ASSERT_EQ(AllocateImage(31, 23, &frame), noErr);
  for (UInt32 y = 0; y < 5; ++y) {
    for (std::size_t x = 0; x < 9 * 4; ++x)
      picture.block.Row(y)[x] = x % 4 == 0 ? 255 : 77;
  }
  FillBlack(frame.block);
  DrawPicture(picture.block, true, {31.0 / 9, 0, 0, 23.0 / 5, 0, 0}, {}, frame.block);
  Bytes expected(31 * 23 * 4, 77);
  for (std::size_t i = 3; i < expected.size(); i += 4)
    expected[i] = 255;
  EXPECT_EQ(PixelsOf(frame.block), expected);
}

}  // namespace
}  // namespace quillmere::imaging
