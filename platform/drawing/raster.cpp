#include <algorithm>
#include <cstring>
#include <vector>

#include "raster_private.h"

namespace quillmere::drawing {
namespace {

/// Calls `draw(v, from, to)` for each run of pixels of a region.
template <class Draw>
void ForEachRun(RgnHandle region, Draw draw) {
  for (const RegionBand& band : BandsOf(region)) {
    for (SInt32 v = band.top; v < band.bottom; ++v) {
      for (std::size_t i = 0; i + 1 < band.edges.size(); i += 2)
        draw(v, band.edges[i], band.edges[i + 1]);
    }
  }
}

UInt8* LineOf(const PixMap& map, SInt32 v) {
  return map.baseAddr + std::ptrdiff_t{v - map.bounds.top} * map.rowBytes;
}
UInt8* PixelOf(const PixMap& map, SInt32 h, SInt32 v) {
  return LineOf(map, v) + std::ptrdiff_t{h - map.bounds.left} * 4;
}

/// ITU-R BT.601's luma, in halves of which black ends.
bool IsDark(UInt32 red, UInt32 green, UInt32 blue, UInt32 full) {
  return 299 * red + 587 * green + 114 * blue < 500 * full;
}

void SetBit(UInt8* line, SInt32 h, bool is_black) {
  const auto bit = static_cast<UInt8>(0x80 >> h % 8);
  line[h / 8] = static_cast<UInt8>(is_black ? line[h / 8] | bit : line[h / 8] & ~bit);
}

UInt8 Blended(UInt8 below, UInt8 color, UInt32 coverage) {
  return static_cast<UInt8>((below * (255 - coverage) + color * coverage + 127) / 255);
}

struct ColorBytes {
  explicit ColorBytes(const RGBColor& color)
      : bytes{255, static_cast<UInt8>(color.red >> 8), static_cast<UInt8>(color.green >> 8),
              static_cast<UInt8>(color.blue >> 8)},
        is_dark(IsDark(color.red, color.green, color.blue, 65535)) {}
  UInt8 bytes[4];
  bool is_dark;
};

/// The source pixel under the centre of each pixel from `from` to `to` of a span; those that lie
/// outside `low` to `high` are -1.
std::vector<SInt32> SourcePixels(SInt32 from, SInt32 to, SInt32 destination, SInt32 size,
                                 SInt32 source, SInt32 source_size, SInt32 low, SInt32 high) {
  std::vector<SInt32> pixels;
  pixels.reserve(static_cast<std::size_t>(std::max(to - from, 0)));
  for (SInt32 i = from; i < to; ++i) {
    const SInt64 centre = (SInt64{2} * (i - destination) + 1) * source_size;
    const auto pixel = source + static_cast<SInt32>(centre / (SInt64{2} * size));
    pixels.push_back(pixel >= low && pixel < high ? pixel - low : -1);
  }
  return pixels;
}

void CopyPixel(const PixMap& from, const UInt8* source, SInt32 pixel, const PixMap& to, UInt8* line,
               SInt32 h) {
  UInt8* const out = line + std::ptrdiff_t{h} * 4;
  if (from.pixelSize == 1) {
    const bool is_black = IsBlack(source, pixel);
    if (to.pixelSize == 1) return SetBit(line, h, is_black);
    const auto level = static_cast<UInt8>(is_black ? 0 : 255);
    out[0] = 255;
    out[1] = out[2] = out[3] = level;
    return;
  }
  const UInt8* const color = source + std::ptrdiff_t{pixel} * 4;
  if (to.pixelSize == 1)
    SetBit(line, h, IsDark(color[1], color[2], color[3], 255));
  else
    std::memcpy(out, color, 4);
}

}  // namespace

void FillRegion(const PixMap& map, RgnHandle region, const RGBColor& color) {
  const ColorBytes bytes(color);
  ForEachRun(region, [&](SInt32 v, SInt32 from, SInt32 to) {
    if (map.pixelSize == 1) {
      for (SInt32 h = from; h < to; ++h)
        SetBit(LineOf(map, v), h - map.bounds.left, bytes.is_dark);
      return;
    }
    UInt8* pixel = PixelOf(map, from, v);
    for (SInt32 h = from; h < to; ++h, pixel += 4)
      std::memcpy(pixel, bytes.bytes, 4);
  });
}

void FillMask(const PixMap& map, RgnHandle region, const TextMask& mask, SInt32 h, SInt32 v,
              const RGBColor& color) {
  constexpr UInt8 kHalf = 128;
  const ColorBytes bytes(color);
  ForEachRun(region, [&](SInt32 row, SInt32 from, SInt32 to) {
    const UInt8* const covered = mask.coverage.data() + std::ptrdiff_t{row - v} * mask.width - h;
    for (SInt32 i = from; i < to; ++i) {
      if (map.pixelSize == 1) {
        if (covered[i] >= kHalf) SetBit(LineOf(map, row), i - map.bounds.left, bytes.is_dark);
        continue;
      }
      if (covered[i] == 0) continue;
      UInt8* const pixel = PixelOf(map, i, row);
      for (int k = 0; k < 4; ++k)
        pixel[k] = Blended(pixel[k], bytes.bytes[k], covered[i]);
    }
  });
}

void CopyPixels(const PixMap& from, const PixMap& to, const Rect& source, const Rect& destination,
                RgnHandle region) {
  std::vector<UInt8> copy;
  PixMap read = from;
  if (from.baseAddr == to.baseAddr) {  // what is written is not to be read
    const SInt32 rows = from.bounds.bottom - from.bounds.top;
    copy.assign(from.baseAddr, from.baseAddr + std::ptrdiff_t{rows} * from.rowBytes);
    read.baseAddr = copy.data();
  }
  Rect shown;
  GetRegionBounds(region, &shown);
  const std::vector<SInt32> columns =
      SourcePixels(shown.left, shown.right, destination.left, destination.right - destination.left,
                   source.left, source.right - source.left, from.bounds.left, from.bounds.right);
  const std::vector<SInt32> rows =
      SourcePixels(shown.top, shown.bottom, destination.top, destination.bottom - destination.top,
                   source.top, source.bottom - source.top, from.bounds.top, from.bounds.bottom);
  ForEachRun(region, [&](SInt32 v, SInt32 begin, SInt32 end) {
    const SInt32 row = rows[static_cast<std::size_t>(v - shown.top)];
    if (row < 0) return;
    const UInt8* const line = read.baseAddr + std::ptrdiff_t{row} * read.rowBytes;
    UInt8* const out = LineOf(to, v);
    for (SInt32 h = begin; h < end; ++h) {
      const SInt32 column = columns[static_cast<std::size_t>(h - shown.left)];
      if (column >= 0) CopyPixel(read, line, column, to, out, h - to.bounds.left);
    }
  });
}

}  // namespace quillmere::drawing
