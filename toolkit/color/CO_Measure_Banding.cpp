#include <algorithm>
#include <cmath>

#include "CO_Measure.h"
#include "GL_Math_Curves.h"
#include "measuring_private.h"

namespace {

using quillmere::color::PixelAt;

constexpr SInt32 kSamples = 16;
constexpr double kLeast = 0.001;

struct Vector {
  double x, y;
};

UInt8 LumaAt(const UInt8* frame, SInt32 width, SInt32 row, SInt32 column) {
  return PixelAt(frame, width, 2, row, column)[1];
}

/// The mean change of luma per pixel from edge to edge.
Vector GradientOf(SInt32 width, const UInt8* frame, const Rect& rect) {
  const SInt32 columns = rect.right - rect.left;
  const SInt32 rows = rect.bottom - rect.top;
  if (columns < 2 || rows < 2) return {0, 0};
  double across = 0;
  for (SInt32 row = rect.top; row < rect.bottom; ++row)
    across += LumaAt(frame, width, row, rect.right - 1) - LumaAt(frame, width, row, rect.left);
  double down = 0;
  for (SInt32 column = rect.left; column < rect.right; ++column)
    down += LumaAt(frame, width, rect.bottom - 1, column) - LumaAt(frame, width, rect.top, column);
  return {across / rows / (columns - 1), down / columns / (rows - 1)};
}

/// Lines side by side, each of unit steps.
struct Lines {
  SInt32 count;
  SInt32 samples;
  Vector start, direction, next;
};

/// The largest tilted rectangle inside, its lines along the gradient.
Lines TiltedLines(const Rect& rect, Vector gradient) {
  double t = 0;
  GL_CalcLargestEnclosedRect(&rect, gradient.x, gradient.y, &t);
  const double u = rect.bottom - rect.top - t;
  const double length = std::hypot(gradient.x, gradient.y);
  const Vector direction = {gradient.x / length, gradient.y / length};
  const double down = gradient.y / gradient.x;
  const double across = gradient.x / gradient.y;
  const auto size = [](double a, double b) { return static_cast<SInt32>(std::hypot(a, b)); };
  Lines lines = {0, 0, {}, direction, {-direction.y, direction.x}};
  const auto left = static_cast<double>(rect.left);
  const auto top = static_cast<double>(rect.top);
  if (gradient.x * gradient.y > 0) {
    lines.start = {left + t * down, top};
    lines.count = size(t, t * down);
    lines.samples = size(u, u * across);
  } else {
    lines.start = {left, top + t};
    lines.samples = size(t, t * across);
    lines.count = size(u, u * down);
  }
  return lines;
}

Lines LinesAlong(const Rect& rect, Vector gradient) {
  const SInt32 columns = rect.right - rect.left;
  const SInt32 rows = rect.bottom - rect.top;
  const Vector start = {static_cast<double>(rect.left), static_cast<double>(rect.top)};
  if (std::abs(gradient.x) < kLeast) return {columns, rows, start, {0, 1}, {1, 0}};
  if (std::abs(gradient.y) < kLeast) return {rows, columns, start, {1, 0}, {0, 1}};
  return TiltedLines(rect, gradient);
}

/// The largest rating of the places of a line whose samples `at(i)` gives.
template <class At>
double MaxBanding(SInt32 sample_count, At at) {
  constexpr double kLeastChange = 0.1;
  constexpr double kMost = 100;
  double largest = 0;
  for (SInt32 i = 0; i + kSamples <= sample_count; ++i) {
    double sums[4] = {};
    for (SInt32 k = 0; k < kSamples; ++k)
      sums[k / 4] += at(i + k);
    const double far = std::abs(sums[2] + sums[3] - sums[0] - sums[1]);
    const double near = std::abs(sums[1] - sums[0]) + std::abs(sums[3] - sums[2]);
    if (far > kLeastChange && near > kLeastChange) {
      largest = std::max(largest, std::min(far / near, kMost));
    }
  }
  return largest;
}

}  // namespace

double DBG_PointYValue(SInt32 width, const UInt8* frame, double x, double y) {
  const auto column = static_cast<SInt32>(std::floor(x));
  const auto row = static_cast<SInt32>(std::floor(y));
  const double fx = x - column;
  const double fy = y - row;
  // A pixel that counts for nothing may lie outside and is not looked at.
  const auto across = [&](SInt32 line) {
    const double here = LumaAt(frame, width, line, column);
    return fx > 0 ? here + fx * (LumaAt(frame, width, line, column + 1) - here) : here;
  };
  const double above = across(row);
  return fy > 0 ? above + fy * (across(row + 1) - above) : above;
}

double DBG_CalcMaxBandingOnLine(SInt32 width, const UInt8* frame, SInt32 sampleCount, double x,
                                double y, double stepX, double stepY) {
  return MaxBanding(sampleCount, [&](SInt32 i) {
    return DBG_PointYValue(width, frame, x + i * stepX, y + i * stepY);
  });
}

double DBG_DetectBanding2vuyY(SInt32 width, const UInt8* frame, const Rect* rect, double* gradientX,
                              double* gradientY, Boolean measure) {
  Vector gradient = measure ? GradientOf(width, frame, *rect) : Vector{0, 0};
  *gradientX = gradient.x;
  *gradientY = gradient.y;
  if (std::abs(gradient.x) < kLeast && gradient.y < kLeast) return 0;
  const bool is_tilted = std::abs(gradient.x) >= kLeast && std::abs(gradient.y) >= kLeast;
  if (is_tilted && gradient.x < 0) {
    gradient = {-gradient.x, -gradient.y};
    *gradientX = gradient.x;
    *gradientY = gradient.y;
  }
  const Lines lines = LinesAlong(*rect, gradient);
  double sum = 0;
  for (SInt32 i = 0; i < lines.count; ++i) {
    const Vector start = {lines.start.x + i * lines.next.x, lines.start.y + i * lines.next.y};
    // Rounding may lead a corner of a tilted rectangle out of the upright one.
    sum += MaxBanding(lines.samples, [&](SInt32 k) {
      const double x = start.x + k * lines.direction.x;
      const double y = start.y + k * lines.direction.y;
      return DBG_PointYValue(width, frame, std::clamp<double>(x, rect->left, rect->right - 1),
                             std::clamp<double>(y, rect->top, rect->bottom - 1));
    });
  }
  return lines.count > 0 ? sum / lines.count : 0;
}
