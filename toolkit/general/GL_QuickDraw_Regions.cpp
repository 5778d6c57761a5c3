#include "GL_QuickDraw_Regions.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

namespace {

using quillmere::BandsOf;
using quillmere::RegionBand;

struct Dispose {
  void operator()(RgnHandle region) const { DisposeRgn(region); }
};
using OwnedRegion = std::unique_ptr<Region, Dispose>;

OwnedRegion RegionOf(const Rect& rect) {
  OwnedRegion region(NewRgn());
  RectRgn(region.get(), &rect);
  return region;
}

Rect PixelAt(Point point) {
  return {point.v, point.h, static_cast<SInt16>(point.v + 1), static_cast<SInt16>(point.h + 1)};
}

/// Where an edge of a source of `from` pixels comes to lie among `to` pixels: in front of the first
/// whose centre lies behind it.
SInt32 Scaled(SInt32 edge, SInt32 from, SInt32 to) {
  const SInt64 numerator = SInt64{2} * to * edge - from;
  const SInt64 denominator = SInt64{2} * from;
  // Rounded up; only an edge at 0 makes the numerator negative, and goes to 0.
  return numerator <= 0 ? 0 : static_cast<SInt32>((numerator + denominator - 1) / denominator);
}

/// Takes the runs of a flat form apart into rows.
class RunReader {
 public:
  explicit RunReader(const UInt32* flat) : next_(flat + 1), end_(flat + 1 + flat[0]) { Take(); }
  bool IsAtEnd() const { return left_ == 0; }
  /// The edges of the next row of `width` pixels from `left` on.
  std::vector<SInt32> NextRow(SInt32 left, SInt32 width) {
    std::vector<SInt32> edges;
    for (SInt32 x = 0; x < width && left_ > 0;) {
      const auto length = static_cast<SInt32>(std::min(left_, static_cast<UInt32>(width - x)));
      if (is_inside_) {
        edges.push_back(left + x);
        edges.push_back(left + x + length);
      }
      x += length;
      left_ -= static_cast<UInt32>(length);
      if (left_ == 0) {
        is_inside_ = !is_inside_;
        Take();
      }
    }
    return edges;
  }

 private:
  /// The next run that has pixels.
  void Take() {
    for (; next_ != end_; is_inside_ = !is_inside_) {
      left_ = *next_++;
      if (left_ > 0) return;
    }
  }

  const UInt32* next_;
  const UInt32* end_;
  UInt32 left_ = 0;
  bool is_inside_ = false;
};

/// Makes the runs of a flat form.
class RunWriter {
 public:
  void Add(bool is_inside, UInt32 length) {
    if (length == 0) return;
    if (is_inside != is_inside_) {
      runs_.push_back(length_);
      length_ = 0;
      is_inside_ = is_inside;
    }
    length_ += length;
  }
  std::vector<UInt32> Finish() {
    if (length_ > 0) runs_.push_back(length_);
    return std::move(runs_);
  }

 private:
  std::vector<UInt32> runs_;
  UInt32 length_ = 0;
  bool is_inside_ = false;
};

std::vector<UInt32> RunsOf(RgnHandle region) {
  Rect bounds;
  GetRegionBounds(region, &bounds);
  RunWriter writer;
  const auto width = static_cast<UInt32>(bounds.right - bounds.left);
  SInt32 y = bounds.top;
  for (const RegionBand& band : BandsOf(region)) {
    writer.Add(false, static_cast<UInt32>(band.top - y) * width);
    for (SInt32 row = band.top; row < band.bottom; ++row) {
      SInt32 x = bounds.left;
      bool is_inside = false;
      for (const SInt32 edge : band.edges) {
        writer.Add(std::exchange(is_inside, !is_inside), static_cast<UInt32>(edge - x));
        x = edge;
      }
      writer.Add(false, static_cast<UInt32>(bounds.right - x));
    }
    y = band.bottom;
  }
  return writer.Finish();
}

}  // namespace

Boolean GL_SectRgn(RgnHandle a, RgnHandle b, RgnHandle out) {
  const OwnedRegion spare(out == nullptr ? NewRgn() : nullptr);
  Region* const result = out == nullptr ? spare.get() : out;
  SectRgn(a, b, result);
  return !EmptyRgn(result);
}

Boolean GL_SectRectRgn(const Rect* rect, RgnHandle region, RgnHandle out) {
  return GL_SectRgn(RegionOf(*rect).get(), region, out);
}

UInt32 GL_GetRgnArea(RgnHandle region) {
  SInt64 area = 0;
  for (const RegionBand& band : BandsOf(region)) {
    SInt64 row = 0;
    for (std::size_t i = 0; i < band.edges.size(); i += 2)
      row += band.edges[i + 1] - band.edges[i];
    area += row * (band.bottom - band.top);
  }
  return static_cast<UInt32>(area);
}

Boolean GL_IsRgnInRgn(RgnHandle a, RgnHandle b) {
  const OwnedRegion common(NewRgn());
  SectRgn(a, b, common.get());
  return EqualRgn(common.get(), a);
}

Boolean GL_IsRectInRgn(const Rect* rect, RgnHandle region) {
  return GL_IsRgnInRgn(RegionOf(*rect).get(), region);
}

void GL_DisposeRgn(RgnHandle* region) {
  DisposeRgn(std::exchange(*region, nullptr));
}

void GL_AddPtToRgn(Point point, RgnHandle region) {
  UnionRgn(region, RegionOf(PixelAt(point)).get(), region);
}

void GL_RemovePtFromRgn(Point point, RgnHandle region) {
  DiffRgn(region, RegionOf(PixelAt(point)).get(), region);
}

void GL_ScaleRgn(RgnHandle region, const Rect* target, RgnHandle out) {
  Rect bounds;
  GetRegionBounds(region, &bounds);
  OffsetRgn(region, static_cast<SInt16>(-bounds.left), static_cast<SInt16>(-bounds.top));
  const SInt32 width = bounds.right - bounds.left;
  const SInt32 height = bounds.bottom - bounds.top;
  const SInt32 new_width = std::max(target->right - target->left, 0);
  const SInt32 new_height = std::max(target->bottom - target->top, 0);
  std::vector<RegionBand> bands = BandsOf(region);
  for (RegionBand& band : bands) {
    band.top = target->top + Scaled(band.top, height, new_height);
    band.bottom = target->top + Scaled(band.bottom, height, new_height);
    for (SInt32& edge : band.edges)
      edge = target->left + Scaled(edge, width, new_width);
  }
  quillmere::SetBands(out, bands);
}

void GL_UnflattenRgnBitMap(const UInt32* flat, const Rect* rect, RgnHandle region) {
  RunReader reader(flat);
  std::vector<RegionBand> bands;
  for (SInt32 row = rect->top; row < rect->bottom && !reader.IsAtEnd(); ++row)
    bands.push_back({row, row + 1, reader.NextRow(rect->left, rect->right - rect->left)});
  const OwnedRegion added(NewRgn());
  quillmere::SetBands(added.get(), bands);
  UnionRgn(region, added.get(), region);
}

SInt32 GL_FlattenRgnBitMap(RgnHandle region, UInt32** flat, UInt32* byteSize) {
  *byteSize = 0;
  const std::vector<UInt32> runs = RunsOf(region);
  const std::size_t size = (runs.size() + 1) * sizeof(UInt32);
  *flat = static_cast<UInt32*>(std::malloc(size));
  if (*flat == nullptr) return memFullErr;
  *byteSize = static_cast<UInt32>(size);
  (*flat)[0] = static_cast<UInt32>(runs.size());
  std::copy(runs.begin(), runs.end(), *flat + 1);
  return noErr;
}

void GL_GetRandomBasicColor(SInt32* code) {
  constexpr SInt32 kCodes[] = {30, 69, 137, 205, 273, 341, 409};
  SInt16 number = 0;
  while (number < 1)
    number = static_cast<SInt16>(random() & 0xFFFF);
  *code = kCodes[number % 7];
}
