/// The records behind the references of images.h.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "image_decoder.h"
#include "images.h"
#include "jpeg_writer.h"

struct CGColorSpace final : CFObject {
  quillmere::Owned<CFDataRef> profile;  ///< null in the named spaces
};

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

  struct Fill {
    CGFloat color[3];  ///< red, green, blue
    CGFloat alpha;
  };
  Fill fill = {{0, 0, 0}, 1};
  /// Where 0, 0 lies, in pixels to the right and up from the bottom left, and what a unit is there.
  double origin_x = 0;
  double origin_y = 0;
  double scale_x = 1;
  double scale_y = 1;
  std::string font_name;
  double font_size = 0;
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
