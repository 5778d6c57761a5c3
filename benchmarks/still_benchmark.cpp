// One still of 1920 by 1080 with a mask over it, from a file's bytes to a JPEG file: this program's
// road, a bare TurboJPEG loop (decode, blend, encode), and libvips' composite. One thread each; the
// mask is decoded beforehand for all three.
//
// Usage: still_benchmark [PICTURES]   Prints pictures a second and the ratios.

#include <turbojpeg.h>
#include <vips/vips8>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <vector>

#include "image_decoder.h"
#include "jpeg_writer.h"
#include "placement.h"

namespace {

using namespace quillmere::imaging;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kQuality = 80;

/// The same pixels on every run: waves with some noise, about as hard as a photograph.
std::vector<UInt8> MakePicture() {
  std::vector<UInt8> rgb;
  UInt32 noise = 1;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      for (int c = 0; c < 3; ++c) {
        noise = noise * 1664525U + 1013904223U;
        const double wave = 120 + 90 * std::sin(x * 0.013 * (c + 1)) * std::cos(y * 0.017);
        rgb.push_back(static_cast<UInt8>(wave + (noise >> 28)));
      }
    }
  }
  return rgb;
}

/// A mask in ARGB: a frame that fades inwards, clear in the middle half.
std::vector<UInt8> MakeMask() {
  std::vector<UInt8> argb;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const int edge = std::min(std::min(x, kWidth - 1 - x), std::min(y, kHeight - 1 - y));
      argb.push_back(static_cast<UInt8>(std::max(0, 255 - edge)));
      argb.insert(argb.end(), {40, 80, 200});
    }
  }
  return argb;
}

std::vector<UInt8> EncodedPicture() {
  const std::vector<UInt8> rgb = MakePicture();
  const tjhandle encoder = tjInitCompress();
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  tjCompress2(encoder, rgb.data(), kWidth, 0, kHeight, TJPF_RGB, &bytes, &size, TJSAMP_420, 90,
              TJFLAG_ACCURATEDCT);
  std::vector<UInt8> picture(bytes, bytes + size);
  tjFree(bytes);
  tjDestroy(encoder);
  return picture;
}

void OursOnce(const std::vector<UInt8>& jpeg, const PixelBlock& mask,
              const std::filesystem::path& output) {
  DecodedImage frame;
  if (AllocateImage(kWidth, kHeight, &frame) != 0 ||
      DecodeJpegInto(jpeg, Turn::kUpright, frame.block, nullptr) != 0) {
    std::abort();
  }
  DrawPicture(mask, false, {}, {BlendMode::kStraightAlpha, {}, {}}, frame.block);
  if (WriteJpegFile(frame.block, PixelOrder::kArgb, {kQuality, 72, 72}, output) != 0) std::abort();
}

/// The loop that one would write by hand, with its buffers kept from picture to picture.
class BareLoop {
 public:
  BareLoop(const BareLoop&) = delete;
  BareLoop& operator=(const BareLoop&) = delete;
  BareLoop() = default;
  ~BareLoop() {
    tjDestroy(decoder_);
    tjDestroy(encoder_);
    tjFree(bytes_);
  }
  void Once(const std::vector<UInt8>& jpeg, const std::vector<UInt8>& mask,
            const std::filesystem::path& output) {
    tjDecompress2(decoder_, jpeg.data(), jpeg.size(), frame_.data(), kWidth, 0, kHeight, TJPF_ARGB,
                  TJFLAG_ACCURATEDCT);
    for (std::size_t i = 0; i < frame_.size(); i += 4) {
      const int alpha = mask[i];
      for (std::size_t c = 1; c < 4; ++c) {
        frame_[i + c] =
            static_cast<UInt8>((mask[i + c] * alpha + frame_[i + c] * (255 - alpha) + 127) / 255);
      }
    }
    tjCompress2(encoder_, frame_.data(), kWidth, 0, kHeight, TJPF_ARGB, &bytes_, &size_, TJSAMP_420,
                kQuality, TJFLAG_ACCURATEDCT);
    std::ofstream(output, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes_), static_cast<std::streamsize>(size_));
  }

 private:
  tjhandle decoder_ = tjInitDecompress();
  tjhandle encoder_ = tjInitCompress();
  std::vector<UInt8> frame_ = std::vector<UInt8>(std::size_t{kWidth} * kHeight * 4);
  unsigned char* bytes_ = nullptr;
  unsigned long size_ = 0;
};

void VipsOnce(const std::vector<UInt8>& jpeg, const vips::VImage& mask,
              const std::filesystem::path& output) {
  const vips::VImage base =
      vips::VImage::jpegload_buffer(vips_blob_new(nullptr, jpeg.data(), jpeg.size()));
  base.composite2(mask, VIPS_BLEND_MODE_OVER)
      .flatten()
      .jpegsave(output.c_str(), vips::VImage::option()->set("Q", kQuality));
}

/// Pictures a second, the best of three runs.
double RateOf(int pictures, const std::function<void()>& once) {
  once();  // the first one warms caches up and fills pools
  double best = 0;
  for (int run = 0; run < 3; ++run) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < pictures; ++i)
      once();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    best = std::max(best, pictures / seconds.count());
  }
  return best;
}

}  // namespace

int main(int argc, char** argv) {
  const int pictures = argc > 1 ? std::max(1, std::atoi(argv[1])) : 60;
  if (VIPS_INIT(argv[0]) != 0) return 1;
  vips_concurrency_set(1);
  vips_cache_set_max(0);
  const std::vector<UInt8> jpeg = EncodedPicture();
  std::vector<UInt8> mask = MakeMask();
  std::vector<UInt8> rgba(mask.size());
  for (std::size_t i = 0; i < mask.size(); i += 4) {
    std::copy_n(&mask[i + 1], 3, &rgba[i]);
    rgba[i + 3] = mask[i];
  }
  const vips::VImage vips_mask =
      vips::VImage::new_from_memory(rgba.data(), rgba.size(), kWidth, kHeight, 4, VIPS_FORMAT_UCHAR)
          .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
  const PixelBlock block = {mask.data(), std::size_t{kWidth} * 4, kWidth, kHeight};
  const auto output = std::filesystem::temp_directory_path() / "quillmere-still-benchmark.jpg";

  BareLoop loop;
  const double ours = RateOf(pictures, [&] { OursOnce(jpeg, block, output); });
  const double bare = RateOf(pictures, [&] { loop.Once(jpeg, mask, output); });
  const double vips = RateOf(pictures, [&] { VipsOnce(jpeg, vips_mask, output); });
  std::filesystem::remove(output);
  std::printf("stills 1920x1080, pictures a second\n");
  std::printf("  Quillmere       %7.1f\n", ours);
  std::printf("  bare TurboJPEG  %7.1f   ratio %.2f (wanted: 0.85 or more)\n", bare, ours / bare);
  std::printf("  libvips         %7.1f   ratio %.2f (wanted: 2.5 or more)\n", vips, ours / vips);
  return 0;
}
