#include "matrices.h"

#include <algorithm>
#include <cmath>

#include "fixed_point.h"

namespace {

constexpr int kFractionBits = 30;  // of the third column
constexpr Fixed kOne = 0x10000;

double Element(const MatrixRecord& matrix, int row, int column) {
  const auto value = static_cast<double>(matrix.matrix[row][column]);
  return std::ldexp(value, column == 2 ? -kFractionBits : -16);
}

struct Place {
  double x;
  double y;
};

/// A point through a matrix; not finite for one at infinity.
Place Transformed(const MatrixRecord& m, double x, double y) {
  const double w = x * Element(m, 0, 2) + y * Element(m, 1, 2) + Element(m, 2, 2);
  return {(x * Element(m, 0, 0) + y * Element(m, 1, 0) + Element(m, 2, 0)) / w,
          (x * Element(m, 0, 1) + y * Element(m, 1, 1) + Element(m, 2, 1)) / w};
}

struct Bounds {
  double left, top, right, bottom;
};

/// The bounds of the transformed corners; false if one is at infinity.
bool TransformBounds(const MatrixRecord& matrix, const Bounds& from, Bounds* to) {
  const Place corners[] = {
      Transformed(matrix, from.left, from.top), Transformed(matrix, from.right, from.top),
      Transformed(matrix, from.right, from.bottom), Transformed(matrix, from.left, from.bottom)};
  *to = {corners[0].x, corners[0].y, corners[0].x, corners[0].y};
  for (const Place& corner : corners) {
    if (!std::isfinite(corner.x) || !std::isfinite(corner.y)) return false;
    *to = {std::min(to->left, corner.x), std::min(to->top, corner.y), std::max(to->right, corner.x),
           std::max(to->bottom, corner.y)};
  }
  return true;
}

bool KeepsRectangles(const MatrixRecord& m) {
  const bool is_straight = m.matrix[0][1] == 0 && m.matrix[1][0] == 0;
  const bool is_turned = m.matrix[0][0] == 0 && m.matrix[1][1] == 0;
  return m.matrix[0][2] == 0 && m.matrix[1][2] == 0 && (is_straight || is_turned);
}

SInt16 ToPixel(double value) {
  return static_cast<SInt16>(std::clamp(std::round(value), -32768.0, 32767.0));
}

}  // namespace

void SetIdentityMatrix(MatrixRecord* matrix) {
  *matrix = {{{kOne, 0, 0}, {0, kOne, 0}, {0, 0, 1 << kFractionBits}}};
}

void ScaleMatrix(MatrixRecord* matrix, Fixed scale_x, Fixed scale_y, Fixed about_x, Fixed about_y) {
  const double scales[] = {Fix2X(scale_x), Fix2X(scale_y)};
  const double anchors[] = {Fix2X(about_x), Fix2X(about_y)};
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 2; ++column)
      matrix->matrix[row][column] =
          X2Fix(Element(*matrix, row, column) * scales[column] +
                Element(*matrix, row, 2) * anchors[column] * (1 - scales[column]));
  }
}

Boolean TransformFixedRect(const MatrixRecord* matrix, FixedRect* rect) {
  Bounds bounds = {};
  if (!TransformBounds(
          *matrix, {Fix2X(rect->left), Fix2X(rect->top), Fix2X(rect->right), Fix2X(rect->bottom)},
          &bounds))
    return 0;
  *rect = {X2Fix(bounds.left), X2Fix(bounds.top), X2Fix(bounds.right), X2Fix(bounds.bottom)};
  return KeepsRectangles(*matrix) ? 1 : 0;
}

Boolean TransformRect(const MatrixRecord* matrix, Rect* rect) {
  Bounds bounds = {};
  if (!TransformBounds(*matrix,
                       {static_cast<double>(rect->left), static_cast<double>(rect->top),
                        static_cast<double>(rect->right), static_cast<double>(rect->bottom)},
                       &bounds))
    return 0;
  *rect = {ToPixel(bounds.top), ToPixel(bounds.left), ToPixel(bounds.bottom),
           ToPixel(bounds.right)};
  return KeepsRectangles(*matrix) ? 1 : 0;
}
