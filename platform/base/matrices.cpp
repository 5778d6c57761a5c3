#include "matrices.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <utility>

#include "fixed_point.h"

namespace {

constexpr int kFractionBits = 30;  // of the third column
constexpr Fixed kOne = 0x10000;

double Element(const MatrixRecord& matrix, int row, int column) {
  const auto value = static_cast<double>(matrix.matrix[row][column]);
  return std::ldexp(value, column == 2 ? -kFractionBits : -16);
}

void SetElement(int row, int column, double value, MatrixRecord* matrix) {
  constexpr double kLimit = 2147483647;
  const double scaled = std::ldexp(value, column == 2 ? kFractionBits : 16);
  matrix->matrix[row][column] =
      static_cast<Fixed>(std::clamp(std::round(scaled), -kLimit - 1, kLimit));
}

constexpr std::size_t kUnknowns = 8;
/// Linear equations, the right side last.
using Equations = std::array<std::array<double, kUnknowns + 1>, kUnknowns>;

/// Solves them by elimination with pivots of a column; the solution is in the last column. False if
/// there isn't one.
bool Solve(Equations* equations) {
  constexpr double kNothing = 1e-9;
  auto& rows = *equations;
  for (std::size_t column = 0; column < kUnknowns; ++column) {
    std::size_t pivot = column;
    for (std::size_t row = column + 1; row < kUnknowns; ++row)
      if (std::abs(rows[row][column]) > std::abs(rows[pivot][column])) pivot = row;
    if (!(std::abs(rows[pivot][column]) > kNothing)) return false;
    std::swap(rows[column], rows[pivot]);
    for (std::size_t row = 0; row < kUnknowns; ++row) {
      if (row == column) continue;
      const double factor = rows[row][column] / rows[column][column];
      for (std::size_t k = column; k <= kUnknowns; ++k)
        rows[row][k] -= factor * rows[column][k];
    }
  }
  for (std::size_t row = 0; row < kUnknowns; ++row)
    rows[row][kUnknowns] /= rows[row][row];
  return true;
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

void TranslateMatrix(MatrixRecord* matrix, Fixed dx, Fixed dy) {
  const double moves[] = {Fix2X(dx), Fix2X(dy)};
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 2; ++column)
      SetElement(row, column,
                 Element(*matrix, row, column) + Element(*matrix, row, 2) * moves[column], matrix);
  }
}

Boolean InverseMatrix(const MatrixRecord* matrix, MatrixRecord* inverse) {
  const auto at = [matrix](int row, int column) { return Element(*matrix, row % 3, column % 3); };
  const auto cofactor = [&at](int row, int column) {
    return at(row + 1, column + 1) * at(row + 2, column + 2) -
           at(row + 1, column + 2) * at(row + 2, column + 1);
  };
  SetIdentityMatrix(inverse);
  const double determinant =
      at(0, 0) * cofactor(0, 0) + at(0, 1) * cofactor(0, 1) + at(0, 2) * cofactor(0, 2);
  const double scale = cofactor(2, 2);  // matrices that differ by a factor are one: 1 at the end
  if (determinant == 0 || scale == 0) return 0;
  MatrixRecord made{};
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column)
      SetElement(row, column, cofactor(column, row) / scale, &made);
  }
  *inverse = made;
  return 1;
}

OSErr TransformFixedPoints(const MatrixRecord* matrix, FixedPoint* points, SInt32 count) {
  OSErr status = noErr;
  for (SInt32 i = 0; i < count; ++i) {
    const Place place = Transformed(*matrix, Fix2X(points[i].x), Fix2X(points[i].y));
    if (std::isfinite(place.x) && std::isfinite(place.y)) {
      points[i] = {X2Fix(place.x), X2Fix(place.y)};
    } else {
      status = paramErr;
    }
  }
  return status;
}

Boolean EqualMatrix(const MatrixRecord* a, const MatrixRecord* b) {
  return std::memcmp(a, b, sizeof *a) == 0;
}

void ConcatMatrix(const MatrixRecord* a, MatrixRecord* b) {
  MatrixRecord product{};
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      double sum = 0;
      for (int k = 0; k < 3; ++k)
        sum += Element(*b, row, k) * Element(*a, k, column);
      SetElement(row, column, sum, &product);
    }
  }
  *b = product;
}

void RectMatrix(MatrixRecord* matrix, const Rect* from, const Rect* to) {
  const auto corners = [](const Rect& r, FixedPoint* out) {
    const Fixed left = Long2Fix(r.left);
    const Fixed right = Long2Fix(r.right);
    const Fixed top = Long2Fix(r.top);
    const Fixed bottom = Long2Fix(r.bottom);
    const FixedPoint points[] = {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
    std::copy_n(points, 4, out);
  };
  FixedPoint first[4];
  FixedPoint second[4];
  corners(*from, first);
  corners(*to, second);
  QuadToQuadMatrix(first, second, matrix);
}

OSErr QuadToQuadMatrix(const FixedPoint* from, const FixedPoint* to, MatrixRecord* matrix) {
  // x' (g x + h y + 1) = a x + c y + e and the like for y', for each of the corners.
  Equations equations;
  for (std::size_t i = 0; i < 4; ++i) {
    const double x = Fix2X(from[i].x);
    const double y = Fix2X(from[i].y);
    const double out_x = Fix2X(to[i].x);
    const double out_y = Fix2X(to[i].y);
    equations[2 * i] = {x, y, 1, 0, 0, 0, -x * out_x, -y * out_x, out_x};
    equations[2 * i + 1] = {0, 0, 0, x, y, 1, -x * out_y, -y * out_y, out_y};
  }
  SetIdentityMatrix(matrix);
  if (!Solve(&equations)) return paramErr;
  const auto unknown = [&equations](std::size_t i) { return equations[i][kUnknowns]; };
  for (std::size_t i = 0; i < 3; ++i) {
    SetElement(static_cast<int>(i), 0, unknown(i), matrix);
    SetElement(static_cast<int>(i), 1, unknown(3 + i), matrix);
  }
  SetElement(0, 2, unknown(6), matrix);
  SetElement(1, 2, unknown(7), matrix);
  return noErr;
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

SInt16 GetMatrixType(const MatrixRecord* matrix) {
  constexpr Fixed kFractOne = 1 << 30;
  const auto& m = matrix->matrix;
  if (m[0][2] != 0 || m[1][2] != 0 || m[2][2] != kFractOne) return perspectiveMatrixType;
  const bool moves = m[2][0] != 0 || m[2][1] != 0;
  if (m[0][1] != 0 || m[1][0] != 0) return moves ? linearTranslateMatrixType : linearMatrixType;
  if (m[0][0] != kOne || m[1][1] != kOne) return moves ? scaleTranslateMatrixType : scaleMatrixType;
  return moves ? translateMatrixType : identityMatrixType;
}
