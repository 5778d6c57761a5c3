#include "GL_Quartz_Contexts.h"

#include <cmath>
#include <cstdlib>

CGContextRef GL_CreateStdCGContext(CGRect rect, void** buffer) {
  constexpr float kMargin = 0.01F;
  constexpr float kMostSide = 65535;
  const float width = std::trunc(rect.size.width + kMargin);
  const float height = std::trunc(rect.size.height + kMargin);
  if (!(width >= 1) || !(height >= 1) || width > kMostSide || height > kMostSide) return nullptr;
  const auto columns = static_cast<std::size_t>(width);
  const auto rows = static_cast<std::size_t>(height);
  void* const own = *buffer == nullptr ? std::calloc(rows, columns * 4) : nullptr;
  void* const pixels = own != nullptr ? own : *buffer;
  const CGColorSpaceRef space = CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
  CGContextRef context = CGBitmapContextCreate(pixels, columns, rows, 8, columns * 4, space,
                                               kCGImageAlphaPremultipliedFirst);
  CGColorSpaceRelease(space);
  if (context == nullptr)
    std::free(own);
  else
    *buffer = pixels;
  return context;
}

void GL_FillRectWithColor(CGContextRef context, CGRect rect, RGBColor color, UInt8 alpha) {
  constexpr float kFull = 65535;
  CGContextSetRGBFillColor(context, color.red / kFull, color.green / kFull, color.blue / kFull,
                           static_cast<float>(alpha) / 255);
  CGContextFillRect(context, rect);
}
