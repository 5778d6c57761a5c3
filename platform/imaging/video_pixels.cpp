#include "video_pixels.h"

#include <algorithm>

namespace quillmere::imaging {

namespace {

/// Coefficients in 65536ths: full-range R'G'B' of 8 bits to Y'CbCr of the video range, by the luma
/// of ITU-R BT.601, 0.299 and 0.114, and back.
constexpr int kHalf = 1 << 15;
constexpr int kLuma[3] = {16829, 33039, 6416};
constexpr int kCb[3] = {-9714, -19071, 28785};
constexpr int kCr[3] = {28784, -24103, -4681};
constexpr int kLumaBack = 76309;
constexpr int kRedOfCr = 104597;
constexpr int kGreenOfCb = 25675;
constexpr int kGreenOfCr = 53279;
constexpr int kBlueOfCb = 132201;

int Weighted(const int (&weights)[3], const int (&components)[3]) {
  return weights[0] * components[0] + weights[1] * components[1] + weights[2] * components[2];
}

UInt8 Limited(int value) {
  return static_cast<UInt8>(std::clamp((value + kHalf) >> 16, 0, 255));
}

/// Chroma of the sum of two pixels.
UInt8 ChromaOf(const int (&weights)[3], const int (&sums)[3]) {
  return static_cast<UInt8>(128 + ((Weighted(weights, sums) + 2 * kHalf) >> 17));
}

/// Writes the one or two pixels of a pair from `first` on.
void WritePair(const UInt8* argb, UInt32 count, UInt32 first, UInt8* pair) {
  int sums[3] = {};
  for (UInt32 i = 0; i < count; ++i) {
    const UInt8* const color = argb + std::size_t{4} * i + 1;
    const int components[3] = {color[0], color[1], color[2]};
    pair[2 * (first + i) + 1] =
        static_cast<UInt8>(16 + ((Weighted(kLuma, components) + kHalf) >> 16));
    for (int k = 0; k < 3; ++k)
      sums[k] += components[k] * (count == 1 ? 2 : 1);
  }
  pair[0] = ChromaOf(kCb, sums);
  pair[2] = ChromaOf(kCr, sums);
}

}  // namespace

void ArgbTo2vuy(const PixelBlock& picture, UInt32 left, UInt32 top, const PixelBlock& video) {
  const UInt32 width = left < video.width ? std::min(picture.width, video.width - left) : 0;
  const UInt32 height = top < video.height ? std::min(picture.height, video.height - top) : 0;
  for (UInt32 y = 0; y < height; ++y) {
    const UInt8* const argb = picture.Row(y);
    UInt8* const line = video.Row(top + y);
    for (UInt32 x = 0; x < width;) {
      const UInt32 first = (left + x) % 2;
      const UInt32 count = std::min(2 - first, width - x);
      WritePair(argb + std::size_t{4} * x, count, first, line + std::size_t{4} * ((left + x) / 2));
      x += count;
    }
  }
}

void ArgbFrom2vuy(const PixelBlock& video, const PixelBlock& picture) {
  for (UInt32 y = 0; y < picture.height; ++y) {
    const UInt8* const line = video.Row(y);
    UInt8* out = picture.Row(y);
    for (UInt32 x = 0; x < picture.width; ++x, out += 4) {
      const UInt8* const pair = line + std::size_t{4} * (x / 2);
      const int luma = kLumaBack * (line[2 * x + 1] - 16);
      const int cb = pair[0] - 128;
      const int cr = pair[2] - 128;
      out[0] = 255;
      out[1] = Limited(luma + kRedOfCr * cr);
      out[2] = Limited(luma - kGreenOfCb * cb - kGreenOfCr * cr);
      out[3] = Limited(luma + kBlueOfCb * cb);
    }
  }
}

}  // namespace quillmere::imaging
