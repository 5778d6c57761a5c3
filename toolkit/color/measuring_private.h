/// Walking through a measuring rectangle, for the sources of CO_Measure.h.
#pragma once

#include <cstddef>

#include "base_types.h"

namespace quillmere::color {

/// A rectangle whose fields in their order are top, left, width and height.
struct Measured {
  explicit Measured(const Rect& rect)
      : top(rect.top), left(rect.left), width(rect.bottom), height(rect.right) {}
  bool IsEmpty() const { return width < 1 || height < 1; }
  SInt64 Pixels() const { return IsEmpty() ? 0 : SInt64{width} * height; }

  SInt32 top, left, width, height;
};

/// The bytes of a pixel in a frame of `width` pixels of `size` bytes.
inline const UInt8* PixelAt(const UInt8* frame, SInt32 width, SInt32 size, SInt32 row,
                            SInt32 column) {
  return frame + (std::ptrdiff_t{row} * width + column) * size;
}

/// Calls `visit(column, pixel)` for each pixel of a 2vuy rectangle.
template <class Visit>
void ForEachPixel(const UInt8* frame, SInt32 width, const Measured& rect, Visit visit) {
  if (rect.IsEmpty()) return;
  for (SInt32 row = rect.top; row < rect.top + rect.height; ++row) {
    for (SInt32 column = rect.left; column < rect.left + rect.width; ++column)
      visit(column, PixelAt(frame, width, 2, row, column));
  }
}

}  // namespace quillmere::color
