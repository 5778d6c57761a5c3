#include "images.h"

#include <algorithm>
#include <mutex>

#include "images_private.h"

const CFStringRef kCGColorSpaceGenericRGB = CFSTR("kCGColorSpaceGenericRGB");

CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef name) {
  if (CFStringCompare(name, kCGColorSpaceGenericRGB, 0) != kCFCompareEqualTo) return nullptr;
  static const CGColorSpace space;
  CFRetain(&space);
  return &space;
}

void CGColorSpaceRelease(CGColorSpaceRef space) {
  CFRelease(space);
}

CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                   std::size_t bits_per_component, std::size_t row_bytes,
                                   CGColorSpaceRef space, UInt32 bitmap_info) {
  const bool sides_fit = width > 0 && height > 0 && width <= UINT32_MAX && height <= UINT32_MAX;
  const bool has_alpha_place =
      bitmap_info >= kCGImageAlphaPremultipliedLast && bitmap_info <= kCGImageAlphaNoneSkipFirst;
  if (!data || !space || !sides_fit || bits_per_component != 8 || !has_alpha_place ||
      row_bytes / 4 < width) {
    return nullptr;
  }
  auto context = std::make_unique<CGContext>();
  context->block = {static_cast<UInt8*>(data), row_bytes, static_cast<UInt32>(width),
                    static_cast<UInt32>(height)};
  context->alpha_info = bitmap_info;
  return context.release();
}

CGImageRef CGBitmapContextCreateImage(CGContextRef context) {
  if (!context) return nullptr;
  auto image = std::make_unique<CGImage>();
  image->block = context->block;
  image->alpha_info = context->alpha_info;
  return image.release();
}

std::size_t CGImageGetWidth(CGImageRef image) {
  return image ? image->block.width : 0;
}
std::size_t CGImageGetHeight(CGImageRef image) {
  return image ? image->block.height : 0;
}

namespace quillmere::imaging {
namespace {

bool AlphaIsFirst(UInt32 info) {
  return info == kCGImageAlphaPremultipliedFirst || info == kCGImageAlphaFirst ||
         info == kCGImageAlphaNoneSkipFirst;
}
bool IsPremultiplied(UInt32 info) {
  return info == kCGImageAlphaPremultipliedFirst || info == kCGImageAlphaPremultipliedLast;
}
bool SkipsAlpha(UInt32 info) {
  return info == kCGImageAlphaNoneSkipFirst || info == kCGImageAlphaNoneSkipLast;
}

/// One pixel to red, green, blue, alpha with straight alpha: colour = 255 x premultiplied / alpha,
/// rounded.
void StraightenPixel(const UInt8* from, UInt32 info, UInt8* to) {
  const std::size_t color = AlphaIsFirst(info) ? 1 : 0;
  const UInt8 alpha = SkipsAlpha(info) ? UInt8{255} : from[AlphaIsFirst(info) ? 0 : 3];
  for (std::size_t c = 0; c < 3; ++c) {
    unsigned value = from[color + c];
    if (IsPremultiplied(info) && alpha != 255) {
      value = alpha == 0 ? 0U : std::min(255U, (value * 255U + alpha / 2U) / alpha);
    }
    to[c] = static_cast<UInt8>(value);
  }
  to[3] = alpha;
}

}  // namespace

PixelView StraightRgbaOf(CGImageRef image) {
  if (!image) return {};
  const PixelBlock& block = image->block;
  const std::size_t row_bytes = std::size_t{block.width} * 4;
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  if (image->straight_rgba.empty()) {
    image->straight_rgba.resize(row_bytes * block.height);
    for (UInt32 y = 0; y < block.height; ++y) {
      const UInt8* const from = block.Row(y);
      UInt8* const to = image->straight_rgba.data() + y * row_bytes;
      for (std::size_t x = 0; x < row_bytes; x += 4) {
        StraightenPixel(from + x, image->alpha_info, to + x);
      }
    }
  }
  return {image->straight_rgba.data(), block.width, block.height, row_bytes};
}

}  // namespace quillmere::imaging
