/// The records behind the references of images.h.
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "image_decoder.h"
#include "images.h"
#include "jpeg_writer.h"

struct CGColorSpace final : CFObject {};

/// Pixels of four bytes; `decoded` holds them when they are the image's own.
struct CGImage final : CFObject {
  quillmere::imaging::PixelBlock block;
  UInt32 alpha_info = kCGImageAlphaFirst;
  std::shared_ptr<const quillmere::imaging::DecodedImage> decoded;
  /// Made when StraightRgbaOf is first called.
  mutable std::vector<UInt8> straight_rgba;
};

struct CGContext final : CFObject {
  quillmere::imaging::PixelBlock block;
  UInt32 alpha_info = kCGImageAlphaPremultipliedFirst;
};

struct CGImageSource final : CFObject {
  SInt32 status = 0;
  std::shared_ptr<const quillmere::imaging::DecodedImage> decoded;
};

struct CGImageDestination final : CFObject {
  std::filesystem::path path;
  CGImageRef image = nullptr;
  quillmere::imaging::JpegOptions options;

  ~CGImageDestination() override { CFRelease(image); }
};
