#include "GL_QuickDraw.h"

namespace {

struct PixelSize {
  SInt32 width;
  SInt32 height;
};

PixelSize SizeOf(const Rect& rect) {
  return {rect.right - rect.left, rect.bottom - rect.top};
}

/// a x b / c, half rounded up for positive values, in 64 bits so that no product of 16-bit sizes
/// overflows.
SInt32 ScaleRounded(SInt32 a, SInt32 b, SInt32 c) {
  return static_cast<SInt32>((SInt64{a} * b + c / 2) / c);
}

/// The box inset so that a rectangle of `size` stands in its middle; the insets are cut toward
/// zero.
Rect Centre(const Rect& box, PixelSize size) {
  const PixelSize outer = SizeOf(box);
  const SInt32 dv = (outer.height - size.height) / 2;
  const SInt32 dh = (outer.width - size.width) / 2;
  return {static_cast<SInt16>(box.top + dv), static_cast<SInt16>(box.left + dh),
          static_cast<SInt16>(box.bottom - dv), static_cast<SInt16>(box.right - dh)};
}

}  // namespace

GL_SizeWord GL_GetRectSize(const Rect* rect) {
  const PixelSize size = SizeOf(*rect);
  return (static_cast<UInt32>(size.width & 0xFFFF) << 16) |
         static_cast<UInt32>(size.height & 0xFFFF);
}

void GL_FitRectInBox(const Rect* source, const Rect* box, Rect* fitted, float* scale,
                     GL_FitRatio* ratio) {
  const PixelSize from = SizeOf(*source);
  const PixelSize to = SizeOf(*box);
  PixelSize size = to;
  GL_FitRatio taken = {0, 1};
  if (from.width > 0 && from.height > 0) {
    if (SInt64{from.width} * to.height <= SInt64{to.width} * from.height) {
      size.width = ScaleRounded(from.width, to.height, from.height);
      taken = {to.height, from.height};
    } else {
      size.height = ScaleRounded(to.width, from.height, from.width);
      taken = {to.width, from.width};
    }
  }
  if (fitted) *fitted = Centre(*box, size);
  if (scale) *scale = static_cast<float>(taken.numerator) / static_cast<float>(taken.denominator);
  if (ratio) *ratio = taken;
}
