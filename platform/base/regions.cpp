#include "regions.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "rectangles.h"

struct Region {
  std::vector<quillmere::RegionBand> bands;
};

namespace {

using quillmere::RegionBand;
using Edges = std::vector<SInt32>;
using Bands = std::vector<RegionBand>;

constexpr SInt32 kLeast = std::numeric_limits<SInt16>::min();
constexpr SInt32 kMost = std::numeric_limits<SInt16>::max();

/// Which pixels a combination takes, by whether they are in `a` and in `b`.
enum class Operation { kSect, kUnion, kDiff, kXor };

bool Takes(Operation operation, bool in_a, bool in_b) {
  switch (operation) {
    case Operation::kSect:
      return in_a && in_b;
    case Operation::kUnion:
      return in_a || in_b;
    case Operation::kDiff:
      return in_a && !in_b;
    case Operation::kXor:
      return in_a != in_b;
  }
  return false;
}

/// The edges of a row of two.
Edges Combine(Operation operation, const Edges& a, const Edges& b) {
  Edges out;
  std::size_t next_a = 0;
  std::size_t next_b = 0;
  bool is_inside = false;
  while (next_a < a.size() || next_b < b.size()) {
    const SInt32 x =
        next_b == b.size() || (next_a < a.size() && a[next_a] < b[next_b]) ? a[next_a] : b[next_b];
    if (next_a < a.size() && a[next_a] == x) ++next_a;
    if (next_b < b.size() && b[next_b] == x) ++next_b;
    const bool takes = Takes(operation, next_a % 2 == 1, next_b % 2 == 1);
    if (takes != is_inside) out.push_back(x);
    is_inside = takes;
  }
  return out;
}

/// Appends rows, joined with the band above if that is the same.
void Append(SInt32 top, SInt32 bottom, Edges edges, Bands* bands) {
  if (edges.empty() || top >= bottom) return;
  if (!bands->empty() && bands->back().bottom == top && bands->back().edges == edges) {
    bands->back().bottom = bottom;
    return;
  }
  bands->push_back({top, bottom, std::move(edges)});
}

/// Goes down the bands of a region.
class Rows {
 public:
  explicit Rows(const Bands& bands) : bands_(bands) {}
  /// The edges of the row `y`, where the walk is.
  const Edges& At(SInt32 y) {
    static const Edges none;
    while (next_ < bands_.size() && bands_[next_].bottom <= y)
      ++next_;
    return next_ < bands_.size() && bands_[next_].top <= y ? bands_[next_].edges : none;
  }
  /// The first row below `y` whose edges may be others.
  SInt32 NextChange(SInt32 y) const {
    if (next_ == bands_.size()) return std::numeric_limits<SInt32>::max();
    return bands_[next_].top > y ? bands_[next_].top : bands_[next_].bottom;
  }

 private:
  const Bands& bands_;
  std::size_t next_ = 0;
};

void Combine(Operation operation, RgnHandle a, RgnHandle b, RgnHandle out) {
  if (out == nullptr) return;
  const Bands& bands_a = quillmere::BandsOf(a);
  const Bands& bands_b = quillmere::BandsOf(b);
  Bands result;
  Rows rows_a(bands_a);
  Rows rows_b(bands_b);
  SInt32 y = kLeast;
  while (y <= kMost) {
    const Edges& edges_a = rows_a.At(y);
    const Edges& edges_b = rows_b.At(y);
    const SInt32 end = std::min(rows_a.NextChange(y), rows_b.NextChange(y));
    Append(y, std::min(end, kMost), Combine(operation, edges_a, edges_b), &result);
    y = end;
  }
  out->bands = std::move(result);
}

/// Edges within 16 bits, with those that meet taken away.
Edges Cleaned(const Edges& edges) {
  Edges clean;
  for (SInt32 edge : edges) {
    edge = std::clamp(edge, kLeast, kMost);
    if (!clean.empty() && clean.back() == edge)
      clean.pop_back();
    else
      clean.push_back(edge);
  }
  return clean;
}

}  // namespace

RgnHandle NewRgn() {
  return new (std::nothrow) Region;
}

void DisposeRgn(RgnHandle region) {
  delete region;
}

void SetEmptyRgn(RgnHandle region) {
  if (region != nullptr) region->bands.clear();
}

void RectRgn(RgnHandle region, const Rect* rect) {
  if (region == nullptr) return;
  region->bands.clear();
  if (!EmptyRect(rect))
    region->bands.push_back({rect->top, rect->bottom, {rect->left, rect->right}});
}

void CopyRgn(RgnHandle source, RgnHandle destination) {
  if (destination != nullptr && source != destination) {
    destination->bands = quillmere::BandsOf(source);
  }
}

void OffsetRgn(RgnHandle region, SInt16 dh, SInt16 dv) {
  if (region == nullptr) return;
  Bands bands = std::move(region->bands);
  for (RegionBand& band : bands) {
    band.top += dv;
    band.bottom += dv;
    for (SInt32& edge : band.edges)
      edge += dh;
  }
  quillmere::SetBands(region, bands);
}

void SectRgn(RgnHandle a, RgnHandle b, RgnHandle out) {
  Combine(Operation::kSect, a, b, out);
}

void UnionRgn(RgnHandle a, RgnHandle b, RgnHandle out) {
  Combine(Operation::kUnion, a, b, out);
}

void DiffRgn(RgnHandle a, RgnHandle b, RgnHandle out) {
  Combine(Operation::kDiff, a, b, out);
}

void XorRgn(RgnHandle a, RgnHandle b, RgnHandle out) {
  Combine(Operation::kXor, a, b, out);
}

Boolean EmptyRgn(RgnHandle region) {
  return quillmere::BandsOf(region).empty();
}

Boolean EqualRgn(RgnHandle a, RgnHandle b) {
  return quillmere::BandsOf(a) == quillmere::BandsOf(b);
}

Boolean PtInRgn(Point point, RgnHandle region) {
  const Bands& bands = quillmere::BandsOf(region);
  const auto band =
      std::upper_bound(bands.begin(), bands.end(), SInt32{point.v},
                       [](SInt32 y, const RegionBand& each) { return y < each.bottom; });
  if (band == bands.end() || band->top > point.v) return 0;
  const auto edge = std::upper_bound(band->edges.begin(), band->edges.end(), SInt32{point.h});
  return (edge - band->edges.begin()) % 2 == 1;
}

Rect* GetRegionBounds(RgnHandle region, Rect* bounds) {
  const Bands& bands = quillmere::BandsOf(region);
  *bounds = {0, 0, 0, 0};
  if (bands.empty()) return bounds;
  SInt32 left = kMost;
  SInt32 right = kLeast;
  for (const RegionBand& band : bands) {
    left = std::min(left, band.edges.front());
    right = std::max(right, band.edges.back());
  }
  *bounds = {static_cast<SInt16>(bands.front().top), static_cast<SInt16>(left),
             static_cast<SInt16>(bands.back().bottom), static_cast<SInt16>(right)};
  return bounds;
}

Boolean IsRegionRectangular(RgnHandle region) {
  const Bands& bands = quillmere::BandsOf(region);
  return bands.empty() || (bands.size() == 1 && bands.front().edges.size() == 2);
}

namespace quillmere {

const std::vector<RegionBand>& BandsOf(RgnHandle region) {
  static const Bands none;
  return region != nullptr ? region->bands : none;
}

void SetBands(RgnHandle region, const std::vector<RegionBand>& bands) {
  if (region == nullptr) return;
  region->bands.clear();
  for (const RegionBand& band : bands)
    Append(std::clamp(band.top, kLeast, kMost), std::clamp(band.bottom, kLeast, kMost),
           Cleaned(band.edges), &region->bands);
}

}  // namespace quillmere
