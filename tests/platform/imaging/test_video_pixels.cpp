/// Pixels of video against the formulas in double precision.
#include "video_pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

using namespace quillmere::imaging;

/// Y', Cb or Cr of the video range from R'G'B' of 8 bits (ITU-R BT.601).
double Component(int which, double red, double green, double blue) {
  const double luma = 0.299 * red + 0.587 * green + 0.114 * blue;
  if (which == 0) return 16 + luma * 219 / 255;
  const double chroma = which == 1 ? (blue - luma) / 1.772 : (red - luma) / 1.402;
  return 128 + chroma * 224 / 255;
}

PixelBlock BlockOf(std::vector<UInt8>* bytes, UInt32 width, UInt32 height, std::size_t row_bytes) {
  bytes->assign(row_bytes * height, 7);
  return {bytes->data(), row_bytes, width, height};
}

TEST(VideoPixels, FollowTheFormulasAndComeBack) {
  std::vector<UInt8> argb_bytes, video_bytes, back_bytes;
  const PixelBlock argb = BlockOf(&argb_bytes, 9, 3, 40);
  const PixelBlock video = BlockOf(&video_bytes, 9, 3, 24);
  std::mt19937 random(1);
  for (UInt8& byte : argb_bytes)
    byte = static_cast<UInt8>(random());
  for (UInt32 y = 0; y < 3; ++y)  // pairs of one colour, which can come back
    for (UInt32 i = 4; i < 36; i += 8)
      std::copy_n(argb.Row(y) + i - 4, 4, argb.Row(y) + i);
  ArgbTo2vuy(argb, 0, 0, video);
  for (UInt32 y = 0; y < 3; ++y) {
    for (UInt32 x = 0; x < 9; ++x) {
      const UInt8* const color = argb.Row(y) + 4 * x + 1;
      const UInt8* const pair = video.Row(y) + 4 * (x / 2);
      EXPECT_NEAR(pair[1 + x % 2 * 2], Component(0, color[0], color[1], color[2]), 0.51);
      EXPECT_NEAR(pair[0], Component(1, color[0], color[1], color[2]), 0.51);
      EXPECT_NEAR(pair[2], Component(2, color[0], color[1], color[2]), 0.51);
    }
    EXPECT_EQ(video.Row(y)[20], 7) << "nothing behind the last pixel's pair";
  }
  const PixelBlock back = BlockOf(&back_bytes, 9, 3, 36);
  ArgbFrom2vuy(video, back);
  for (UInt32 y = 0; y < 3; ++y)
    for (UInt32 i = 0; i < 36; ++i)
      EXPECT_NEAR(back.Row(y)[i], i % 4 == 0 ? 255 : argb.Row(y)[i], 2.5) << y << ' ' << i;
}

TEST(VideoPixels, ArePlacedAndCut) {
  std::vector<UInt8> argb_bytes, video_bytes;
  const PixelBlock white = BlockOf(&argb_bytes, 8, 8, 32);
  const PixelBlock video = BlockOf(&video_bytes, 6, 4, 12);
  std::fill(argb_bytes.begin(), argb_bytes.end(), UInt8{255});
  ArgbTo2vuy(white, 3, 2, video);
  for (UInt32 y = 0; y < 4; ++y)
    for (UInt32 x = 0; x < 6; ++x)
      EXPECT_EQ(video.Row(y)[2 * x + 1], y >= 2 && x >= 3 ? 235 : 7) << x << ' ' << y;
  ArgbTo2vuy(white, 6, 4, video);  // outside
}

}  // namespace
