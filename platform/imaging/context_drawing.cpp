#include "context_drawing.h"

#include <algorithm>
#include <cmath>

#include "images_private.h"

namespace {

UInt8 ToByte(double unit) {
  return static_cast<UInt8>(std::lround(std::clamp(unit, 0.0, 1.0) * 255));
}

/// Lays a colour over one pixel, by how its alpha is kept.
class PixelBlender {
 public:
  explicit PixelBlender(const CGContext& context) : fill_(context.fill) {
    const UInt32 info = context.alpha_info;
    const bool is_first = info == kCGImageAlphaPremultipliedFirst || info == kCGImageAlphaFirst ||
                          info == kCGImageAlphaNoneSkipFirst;
    alpha_at_ = is_first ? 0 : 3;
    color_at_ = is_first ? 1 : 0;
    has_alpha_ = info != kCGImageAlphaNoneSkipFirst && info != kCGImageAlphaNoneSkipLast;
    is_straight_ = info == kCGImageAlphaFirst || info == kCGImageAlphaLast;
  }

  void Blend(UInt8 coverage, UInt8* pixel) const {
    const double over = static_cast<double>(fill_.alpha) * coverage / 255;
    if (over <= 0) return;
    const double below = has_alpha_ ? pixel[alpha_at_] / 255.0 : 1;
    const double sum = over + below * (1 - over);
    // What stands there is multiplied by its alpha already, unless that is straight.
    const double kept = (is_straight_ ? below : 1) * (1 - over);
    const double divisor = is_straight_ ? sum : 1;
    for (int k = 0; k < 3; ++k) {
      UInt8& component = pixel[color_at_ + k];
      component = ToByte((fill_.color[k] * over + component / 255.0 * kept) / divisor);
    }
    if (has_alpha_) pixel[alpha_at_] = ToByte(sum);
  }

 private:
  CGContext::Fill fill_;
  int alpha_at_;
  int color_at_;
  bool has_alpha_;
  bool is_straight_;
};

/// Calls `fill(x, y)` for the pixels of a block that lie in the context.
template <class Fill>
void ForEachPixel(const CGContext& context, double left, double top, double right, double bottom,
                  Fill fill) {
  const auto limited = [](double edge, UInt32 most) {
    return static_cast<SInt64>(std::clamp(edge, 0.0, static_cast<double>(most)));
  };
  const SInt64 first = limited(left, context.block.width);
  const SInt64 last = limited(right, context.block.width);
  const SInt64 end = limited(bottom, context.block.height);
  for (SInt64 y = limited(top, context.block.height); y < end; ++y)
    for (SInt64 x = first; x < last; ++x)
      fill(x, y);
}

UInt8* PixelOf(const CGContext& context, SInt64 x, SInt64 y) {
  return context.block.Row(static_cast<UInt32>(y)) + x * 4;
}

}  // namespace

void CGContextSetRGBFillColor(CGContextRef context, CGFloat red, CGFloat green, CGFloat blue,
                              CGFloat alpha) {
  if (context == nullptr) return;
  const auto unit = [](CGFloat value) { return std::clamp(value, 0.0F, 1.0F); };
  context->fill = {{unit(red), unit(green), unit(blue)}, unit(alpha)};
}

void CGContextTranslateCTM(CGContextRef context, CGFloat x, CGFloat y) {
  if (context == nullptr) return;
  context->origin_x += static_cast<double>(x) * context->scale_x;
  context->origin_y += static_cast<double>(y) * context->scale_y;
}

void CGContextScaleCTM(CGContextRef context, CGFloat x, CGFloat y) {
  if (context == nullptr) return;
  context->scale_x *= static_cast<double>(x);
  context->scale_y *= static_cast<double>(y);
}

void CGContextFillRect(CGContextRef context, CGRect rect) {
  if (context == nullptr) return;
  const auto a = quillmere::imaging::DevicePlaceOf(context, rect.origin.x, rect.origin.y);
  const auto b = quillmere::imaging::DevicePlaceOf(context, rect.origin.x + rect.size.width,
                                                   rect.origin.y + rect.size.height);
  const PixelBlender blender(*context);
  ForEachPixel(*context, std::floor(std::min(a.x, b.x)), std::floor(std::min(a.y, b.y)),
               std::ceil(std::max(a.x, b.x)), std::ceil(std::max(a.y, b.y)),
               [&](SInt64 x, SInt64 y) { blender.Blend(255, PixelOf(*context, x, y)); });
}

namespace quillmere::imaging {

DevicePlace DevicePlaceOf(CGContextRef context, CGFloat x, CGFloat y) {
  return {context->origin_x + static_cast<double>(x) * context->scale_x,
          context->block.height - (context->origin_y + static_cast<double>(y) * context->scale_y),
          std::abs(context->scale_x), std::abs(context->scale_y)};
}

void FillThroughMask(CGContextRef context, SInt32 left, SInt32 top, SInt32 width, SInt32 height,
                     const UInt8* coverage) {
  if (context == nullptr) return;
  const PixelBlender blender(*context);
  ForEachPixel(*context, left, top, static_cast<double>(left) + width,
               static_cast<double>(top) + height, [&](SInt64 x, SInt64 y) {
                 blender.Blend(coverage[(y - top) * width + x - left], PixelOf(*context, x, y));
               });
}

}  // namespace quillmere::imaging
