#include "GL_Math_Curves.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

#include "GL_Memory.h"

namespace {

constexpr SInt32 kDeepestSplit = 199;

/// The inner point of a span that is furthest from its chord.
struct ChordDistance {
  float distance;
  SInt32 index;
  float chord;
  float sign;
};

ChordDistance Measure(const float* points, SInt32 first, SInt32 last) {
  ChordDistance found = {0, 0, 0, 1};
  GL_GetMaxChordDistance(points, first, last, &found.distance, &found.index, &found.chord,
                         &found.sign);
  return found;
}

/// What stays the same in all spans of a subdivision.
struct Subdivision {
  const float* points;
  float improvement;
  SInt32 capacity;
  SInt32* count;
  SInt32* work;  ///< the indices, and from `capacity` on the bits of the values
};

/// Splits a span if that pays, and then its halves where they are further than 1.0 from their
/// chords.
void Split(const Subdivision& curve, SInt32 depth, SInt32 first, SInt32 last,
           const ChordDistance& span) {
  if (span.index <= first || span.index >= last || depth > kDeepestSplit) return;
  const ChordDistance left = Measure(curve.points, first, span.index);
  const ChordDistance right = Measure(curve.points, span.index, last);
  const float larger = std::max(left.distance, right.distance);
  if (!((1 - curve.improvement) * span.distance > larger) || *curve.count >= curve.capacity) return;
  curve.work[*curve.count] = span.index;
  curve.work[curve.capacity + *curve.count] =
      std::bit_cast<SInt32>(span.sign * span.distance / span.chord);
  ++*curve.count;
  if (left.distance > 1.0F) Split(curve, depth + 1, first, span.index, left);
  if (right.distance > 1.0F) Split(curve, depth + 1, span.index, last, right);
}

/// A heap copy of `count` 32-bit entries; null without memory.
template <typename T>
T* CopyOfEntries(const SInt32* entries, SInt32 count) {
  void* copy = nullptr;
  if (GL_CopyPtr(entries, static_cast<Size>(count) * 4, &copy) != noErr) return nullptr;
  return static_cast<T*>(copy);
}

/// The side of a tilted rectangle that spans `part` of the box's side.
double SideLength(double part, double along, double across) {
  return std::sqrt(part * part + (part / along * across) * (part / along * across));
}

/// How many of 100 by 100 points of the pixel whose lower left corner is (x, y) from the centre lie
/// within the circle.
SInt32 CountPointsInCircle(double x, double y, double area) {
  SInt32 inside = 0;
  for (int row = 0; row < 100; ++row) {
    const double dy = y + 0.005 + 0.01 * row;
    for (int column = 0; column < 100; ++column) {
      const double dx = x + 0.005 + 0.01 * column;
      inside += area > std::numbers::pi * (dx * dx + dy * dy) ? 1 : 0;
    }
  }
  return inside;
}

/// The coverage of a pixel of the upper right quadrant by the circle of radius r.
double QuadrantWeight(double x, double y, double r) {
  const double square = r * r;
  const double outer_x = (x + 1) * (x + 1);
  const double outer_y = (y + 1) * (y + 1);
  if (outer_x + outer_y <= square) return 1.0;
  if (x * x + y * y >= square) return 0.0;
  const double xa = x * x + outer_y < square ? std::sqrt(square - outer_y) : x;
  const double xb = outer_x + y * y < square ? x + 1 : std::sqrt(square - y * y);
  const auto integral = [=](double t) {
    return (t * std::sqrt(square - t * t) - square * std::acos(t / r)) / 2;
  };
  return (xa - x) + integral(xb) - integral(xa) - (xb - xa) * y;
}

}  // namespace

void GL_GetMaxChordDistance(const float* points, SInt32 first, SInt32 last, float* distance,
                            SInt32* index, float* chord, float* sign) {
  *sign = 1;
  if (static_cast<SInt64>(last) - first <= 1) {
    *distance = 0;
    *index = 0;
    return;
  }
  const auto point = [points](SInt32 i) { return points + std::ptrdiff_t{2} * i; };
  const float x = point(first)[0];
  const float y = point(first)[1];
  const float dx = point(last)[0] - x;
  const float dy = point(last)[1] - y;
  *chord = std::sqrt(dx * dx + dy * dy);
  const float normal_x = dy / *chord;
  const float normal_y = -dx / *chord;
  *distance = -1;
  *index = first;
  for (SInt32 i = first + 1; i < last; ++i) {
    const float side = (point(i)[0] - x) * normal_x + (point(i)[1] - y) * normal_y;
    if (!(std::fabs(side) > *distance)) continue;
    *distance = std::fabs(side);
    *index = i;
    *sign = side < 0 ? -1.0F : 1.0F;
  }
}

void GL_SubdivideCurve(const float* points, SInt32 depth, SInt32 first, SInt32 last, float distance,
                       SInt32 index, float chord, float sign, float improvement, SInt32 capacity,
                       SInt32* count, SInt32** indices, float** values, SInt32* work) {
  const bool top = index == -1;
  if (distance > 1.0F && static_cast<SInt64>(last) - first > 1) {
    const ChordDistance span =
        top ? Measure(points, first, last) : ChordDistance{distance, index, chord, sign};
    Split({points, improvement, capacity, count, work}, depth, first, last, span);
  }
  if (!top) return;
  *indices = nullptr;
  *values = nullptr;
  if (*count <= 0) return;
  *indices = CopyOfEntries<SInt32>(work, *count);
  *values = CopyOfEntries<float>(work + capacity, *count);
  if (*indices != nullptr && *values != nullptr) return;
  void* blocks[] = {*indices, *values};
  for (void*& block : blocks)
    GL_DisposePtr(&block);
  *indices = nullptr;
  *values = nullptr;
  *count = 0;
}

double GL_CalcEnclosedRectArea(double height, double dx, double dy, double t) {
  const double u = height - t;
  return dx * dy > 0 ? SideLength(t, dx, dy) * SideLength(u, dy, dx)
                     : SideLength(t, dy, dx) * SideLength(u, dx, dy);
}

void GL_FindMaxLeftCorner(double height, double dx, double dy, double* t) {
  double low = 0;
  double high = height;
  while (high - low > 0.01) {
    const double middle = (low + high) / 2;
    if (middle == low || middle == high) break;
    (GL_CalcEnclosedRectArea(height, dx, dy, middle) == 0 ? high : low) = middle;
  }
  *t = low;
}

void GL_CalcLargestEnclosedRect(const Rect* rect, double dx, double dy, double* t) {
  *t = 0.0;
  if (!(std::fabs(dx) >= 0.001) || !(std::fabs(dy) >= 0.001)) return;
  const double height = rect->bottom - rect->top;
  double low = 0.1;
  double high = 0;
  GL_FindMaxLeftCorner(height, dx, dy, &high);
  high -= 0.5;
  while (std::fabs(low - high) > 0.1) {
    const double middle = (low + high) / 2;
    const bool rises = GL_CalcEnclosedRectArea(height, dx, dy, middle + 0.05) >
                       GL_CalcEnclosedRectArea(height, dx, dy, middle - 0.05);
    (rises ? low : high) = middle;
    *t = middle;
  }
}

void GL_GetPixelWeightsInCircle(SInt32 size, double area, double smallest, double* weights,
                                SInt32* count, double* sum) {
  *count = 0;
  *sum = 0;
  const double center = size * 0.5;
  for (SInt32 row = 0; row < size; ++row) {
    for (SInt32 column = 0; column < size; ++column) {
      double weight = CountPointsInCircle(column - center, row - center, area) / 10000.0;
      if (weight < smallest) {
        weight = 0;
      } else {
        ++*count;
        *sum += weight;
      }
      *weights++ = weight;
    }
  }
}

void GL_GetPixelWeightsInCircle2(SInt32 size, double* weights) {
  const SInt32 radius = size / 2;
  const auto place = [=](SInt32 row, SInt32 column) {
    return weights + std::ptrdiff_t{row} * size + column;
  };
  for (SInt32 y = 0; y < radius; ++y) {
    for (SInt32 x = 0; x < radius; ++x) {
      const double weight = QuadrantWeight(x, y, radius);
      for (const SInt32 row : {radius - 1 - y, radius + y}) {
        *place(row, radius + x) = weight;
        *place(row, radius - 1 - x) = weight;
      }
    }
  }
}
