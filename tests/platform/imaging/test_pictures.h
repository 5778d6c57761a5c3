/// Pictures for tests: made by ImageMagick, decoded by it and by us, compared.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "image_decoder.h"
#include "test_files.h"

namespace quillmere::test {

/// The lively part of a test picture: a gradient with noise, the same on every run.
inline std::vector<std::string> NoisyPicture(const std::string& size) {
  return {"-size",  size,      "gradient:#f04020-#1030e0", "-attenuate", "0.5", "-seed", "7",
          "+noise", "Gaussian"};
}

/// `convert` with the noisy picture, then the arguments, then the output.
inline void MakePicture(const std::string& size, const std::vector<std::string>& arguments,
                        const std::string& output) {
  std::vector<std::string> all = {"convert"};
  const std::vector<std::string> picture = NoisyPicture(size);
  all.insert(all.end(), picture.begin(), picture.end());
  all.insert(all.end(), arguments.begin(), arguments.end());
  all.push_back(output);
  RunOrFail(all);
}

/// The pixels that ImageMagick decodes: red, green, blue, alpha.
inline Bytes PeerPixels(const std::filesystem::path& path,
                        const std::vector<std::string>& arguments = {}) {
  std::vector<std::string> all = {"convert", path.string()};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const std::string output = path.string() + ".rgba";
  all.insert(all.end(), {"-depth", "8", "rgba:" + output});
  RunOrFail(all);
  return ReadFile(output);
}

/// Our pixels in the same order, without the rows' padding.
inline Bytes PixelsOf(const imaging::PixelBlock& block) {
  Bytes pixels;
  for (UInt32 y = 0; y < block.height; ++y) {
    const UInt8* const row = block.Row(y);
    for (std::size_t x = 0; x < std::size_t{block.width} * 4; x += 4) {
      pixels.insert(pixels.end(), {row[x + 1], row[x + 2], row[x + 3], row[x]});
    }
  }
  return pixels;
}

inline imaging::DecodedImage Decode(const std::filesystem::path& path) {
  imaging::DecodedImage image;
  EXPECT_EQ(imaging::DecodeImage(ReadFile(path), imaging::Turn::kUpright, &image), noErr) << path;
  return image;
}

/// The largest difference of two blocks of bytes; 256 if their sizes differ.
inline int LargestDifference(const Bytes& a, const Bytes& b) {
  if (a.size() != b.size()) return 256;
  int largest = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
    largest = std::max(largest, std::abs(a[i] - b[i]));
  return largest;
}

}  // namespace quillmere::test
