/// What the fuzz targets of the picture readers share.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <span>
#include <string_view>

#include "image_decoder.h"
#include "image_file_info.h"

namespace quillmere::fuzzing {

/// Pictures above this are left out: they only make the fuzzer slow.
inline constexpr UInt64 kMostPixels = UInt64{1} << 21;

/// Reads the bytes as a picture in every way. Bytes without the signature are refused (-1), so that
/// they don't enter the corpus. Ends the process when the ways disagree.
inline int ReadPicture(std::string_view signature, std::span<const UInt8> bytes) {
  const auto starts = [](char a, UInt8 b) { return static_cast<UInt8>(a) == b; };
  if (bytes.size() < signature.size() ||
      !std::equal(signature.begin(), signature.end(), bytes.begin(), starts)) {
    return -1;
  }
  const int file = memfd_create("picture", MFD_CLOEXEC);
  imaging::ImageFileInfo info;
  if (write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size())) {
    static_cast<void>(imaging::ReadImageFileInfo(file, &info));
  }
  close(file);

  imaging::ImageShape shape;
  if (imaging::ReadImageShape(bytes, imaging::Turn::kUpright, &shape) != noErr) return 0;
  if (UInt64{shape.width} * shape.height > kMostPixels) return 0;
  imaging::DecodedImage image;
  if (imaging::DecodeImage(bytes, imaging::Turn::kUpright, &image) != noErr) return 0;
  if (image.block.width != shape.width || image.block.height != shape.height) std::abort();
  // Under the sanitizers a row that was not written or lies outside its memory shows here.
  UInt64 sum = 0;
  for (UInt32 y = 0; y < shape.height; ++y) {
    for (std::size_t x = 0; x < std::size_t{shape.width} * 4; ++x)
      sum += image.block.Row(y)[x];
  }
  volatile UInt64 kept = sum;
  static_cast<void>(kept);
  return 0;
}

}  // namespace quillmere::fuzzing
