/// Rectangles and points in whole pixels: the few operations that all drawing rests on.
///
/// Right and bottom lie outside. Coordinates that leave 16 bits wrap around.
#pragma once

#include <algorithm>

#include "base_types.h"

/// Sets the edges; note the order.
constexpr void SetRect(Rect* rect, SInt16 left, SInt16 top, SInt16 right, SInt16 bottom) {
  *rect = {top, left, bottom, right};
}
constexpr Boolean EqualRect(const Rect* a, const Rect* b) {
  return a->top == b->top && a->left == b->left && a->bottom == b->bottom && a->right == b->right;
}
/// True for a rectangle without pixels.
constexpr Boolean EmptyRect(const Rect* rect) {
  return rect->bottom <= rect->top || rect->right <= rect->left;
}
/// True for a point whose pixel, down and to the right of it, is in the rectangle.
constexpr Boolean PtInRect(Point point, const Rect* rect) {
  return point.v >= rect->top && point.v < rect->bottom && point.h >= rect->left &&
         point.h < rect->right;
}
constexpr void OffsetRect(Rect* rect, SInt16 dh, SInt16 dv) {
  *rect = {static_cast<SInt16>(rect->top + dv), static_cast<SInt16>(rect->left + dh),
           static_cast<SInt16>(rect->bottom + dv), static_cast<SInt16>(rect->right + dh)};
}
/// The intersection, which may be one of the two; 0, 0, 0, 0 and false if it is empty.
constexpr Boolean SectRect(const Rect* a, const Rect* b, Rect* out) {
  const Rect common = {std::max(a->top, b->top), std::max(a->left, b->left),
                       std::min(a->bottom, b->bottom), std::min(a->right, b->right)};
  const bool is_empty = EmptyRect(&common);
  *out = is_empty ? Rect{0, 0, 0, 0} : common;
  return !is_empty;
}
