#include "placement.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace quillmere::imaging {
namespace {

/// Coordinates beyond this are no frame's; doubles hold them and their products exactly enough.
constexpr double kFarthest = 1e9;

/// A stretch of columns or rows, the end not included.
struct Stretch {
  SInt64 begin;
  SInt64 end;
};

bool IsWhole(double value) {
  return std::abs(value) < kFarthest && value == std::floor(value);
}
bool IsUnit(double value) {
  return value == 1 || value == -1;
}

bool IsExact(const AffineMap& map) {
  const bool straight = IsUnit(map.xx) && IsUnit(map.yy) && map.xy == 0 && map.yx == 0;
  const bool turned = IsUnit(map.xy) && IsUnit(map.yx) && map.xx == 0 && map.yy == 0;
  return (straight || turned) && IsWhole(map.x0) && IsWhole(map.y0);
}

/// The frame's pixels that the picture's mapped box can touch.
void TouchedBox(const PixelBlock& picture, const AffineMap& map, const PixelBlock& frame,
                Stretch* columns, Stretch* rows) {
  const double w = picture.width;
  const double h = picture.height;
  const auto range = [](double at0, double step_x, double step_y, UInt32 side) -> Stretch {
    const double low = at0 + std::min(step_x, 0.0) + std::min(step_y, 0.0);
    const double high = at0 + std::max(step_x, 0.0) + std::max(step_y, 0.0);
    const double limit = side;
    return {static_cast<SInt64>(std::floor(std::clamp(low, 0.0, limit))),
            static_cast<SInt64>(std::ceil(std::clamp(high, 0.0, limit)))};
  };
  *columns = range(map.x0, map.xx * w, map.yx * h, frame.width);
  *rows = range(map.y0, map.xy * w, map.yy * h, frame.height);
}

/// The columns of a row that show anything in a mode where alpha 0 leaves the frame as it is.
Stretch VisibleColumns(const UInt8* row, UInt32 width) {
  UInt32 begin = 0;
  while (begin < width && row[std::size_t{begin} * 4] == 0)
    ++begin;
  UInt32 end = width;
  while (end > begin && row[(std::size_t{end} - 1) * 4] == 0)
    --end;
  return {begin, end};
}

void DrawMoved(const PixelBlock& picture, const AffineMap& map, const Blend& blend,
               const PixelBlock& frame, Stretch columns, Stretch rows) {
  const auto x0 = static_cast<SInt64>(map.x0);
  const auto y0 = static_cast<SInt64>(map.y0);
  for (SInt64 y = rows.begin; y < rows.end; ++y) {
    const UInt8* const source = picture.Row(static_cast<UInt32>(y - y0));
    Stretch shown = {columns.begin - x0, columns.end - x0};
    if (blend.mode == BlendMode::kStraightAlpha) {
      const Stretch visible = VisibleColumns(source, picture.width);
      shown = {std::max(shown.begin, visible.begin), std::min(shown.end, visible.end)};
    }
    if (shown.begin >= shown.end) continue;
    BlendRow(blend, source + shown.begin * 4,
             frame.Row(static_cast<UInt32>(y)) + (shown.begin + x0) * 4,
             static_cast<std::size_t>(shown.end - shown.begin));
  }
}

/// The map from the frame back to the picture; false if there is none.
bool Invert(const AffineMap& map, AffineMap* inverse) {
  const double determinant = map.xx * map.yy - map.xy * map.yx;
  if (!(std::abs(determinant) > 1e-12) || !std::isfinite(determinant)) return false;
  inverse->xx = map.yy / determinant;
  inverse->xy = -map.xy / determinant;
  inverse->yx = -map.yx / determinant;
  inverse->yy = map.xx / determinant;
  inverse->x0 = -(map.x0 * inverse->xx + map.y0 * inverse->yx);
  inverse->y0 = -(map.x0 * inverse->xy + map.y0 * inverse->yy);
  return true;
}

/// The picture's colour at a point, in pixels from its corner; the point lies in the picture.
void Interpolate(const PixelBlock& picture, double u, double v, UInt8* pixel) {
  const auto corner = [](double at, UInt32 side, UInt32* low, UInt32* high) {
    const double centred = std::max(at - 0.5, 0.0);
    *low = std::min(static_cast<UInt32>(centred), side - 1);
    *high = std::min(*low + 1, side - 1);
    return static_cast<UInt32>(std::min((centred - *low) * 256 + 0.5, 256.0));
  };
  UInt32 left, right, top, bottom;
  const UInt32 wx = corner(u, picture.width, &left, &right);
  const UInt32 wy = corner(v, picture.height, &top, &bottom);
  const UInt8* const corners[4] = {
      picture.Row(top) + std::size_t{left} * 4, picture.Row(top) + std::size_t{right} * 4,
      picture.Row(bottom) + std::size_t{left} * 4, picture.Row(bottom) + std::size_t{right} * 4};
  const UInt32 weights[4] = {(256 - wx) * (256 - wy), wx * (256 - wy), (256 - wx) * wy, wx * wy};
  UInt32 alpha = 0;
  for (int i = 0; i < 4; ++i)
    alpha += weights[i] * corners[i][0];
  for (std::size_t c = 1; c < 4; ++c) {
    UInt64 color = 0;
    for (int i = 0; i < 4; ++i)
      color += UInt64{weights[i]} * corners[i][0] * corners[i][c];
    pixel[c] = alpha == 0 ? UInt8{0} : static_cast<UInt8>((color + alpha / 2) / alpha);
  }
  pixel[0] = static_cast<UInt8>((alpha + 32768) / 65536);
}

/// Fills `row` with the picture's pixels for a row of the frame; gives the columns that are
/// covered, which for an affine map hang together.
Stretch SampleRow(const PixelBlock& picture, const AffineMap& inverse, bool exact, Stretch columns,
                  SInt64 y, UInt8* row) {
  Stretch covered = {columns.end, columns.end};
  for (SInt64 x = columns.begin; x < columns.end; ++x) {
    const double dx = static_cast<double>(x) + 0.5;
    const double dy = static_cast<double>(y) + 0.5;
    const double u = inverse.xx * dx + inverse.yx * dy + inverse.x0;
    const double v = inverse.xy * dx + inverse.yy * dy + inverse.y0;
    if (!(u >= 0 && v >= 0 && u < picture.width && v < picture.height)) {
      if (covered.begin < columns.end) break;
      continue;
    }
    if (covered.begin == columns.end) covered.begin = x;
    covered.end = x + 1;
    UInt8* const pixel = row + (x - columns.begin) * 4;
    if (exact) {
      std::memcpy(pixel, picture.Row(static_cast<UInt32>(v)) + static_cast<std::size_t>(u) * 4, 4);
    } else {
      Interpolate(picture, u, v, pixel);
    }
  }
  return covered;
}

}  // namespace

bool AffineMap::IsWholeMove() const {
  return xx == 1 && yy == 1 && xy == 0 && yx == 0 && IsWhole(x0) && IsWhole(y0);
}

AffineMap MapOfOrientation(UInt8 orientation, UInt32 width, UInt32 height) {
  const double w = width;
  const double h = height;
  const AffineMap maps[] = {{1, 0, 0, 1, 0, 0},   {-1, 0, 0, 1, w, 0}, {-1, 0, 0, -1, w, h},
                            {1, 0, 0, -1, 0, h},  {0, 1, 1, 0, 0, 0},  {0, 1, -1, 0, h, 0},
                            {0, -1, -1, 0, h, w}, {0, -1, 1, 0, 0, w}};
  return maps[orientation >= 1 && orientation <= 8 ? orientation - 1 : 0];
}

void DrawPicture(const PixelBlock& picture, bool opaque, const AffineMap& map, const Blend& blend,
                 const PixelBlock& frame) {
  if (picture.width == 0 || picture.height == 0 || !std::isfinite(map.x0 + map.y0)) return;
  Blend chosen = blend;
  if (opaque && blend.mode == BlendMode::kStraightAlpha) chosen.mode = BlendMode::kCopy;
  Stretch columns;
  Stretch rows;
  TouchedBox(picture, map, frame, &columns, &rows);
  if (columns.begin >= columns.end || rows.begin >= rows.end) return;
  if (map.IsWholeMove()) {
    DrawMoved(picture, map, chosen, frame, columns, rows);
    return;
  }
  AffineMap inverse;
  if (!Invert(map, &inverse)) return;
  const bool exact = IsExact(map);
  std::vector<UInt8> row(static_cast<std::size_t>(columns.end - columns.begin) * 4);
  for (SInt64 y = rows.begin; y < rows.end; ++y) {
    const Stretch covered = SampleRow(picture, inverse, exact, columns, y, row.data());
    if (covered.begin >= covered.end) continue;
    BlendRow(chosen, row.data() + (covered.begin - columns.begin) * 4,
             frame.Row(static_cast<UInt32>(y)) + covered.begin * 4,
             static_cast<std::size_t>(covered.end - covered.begin));
  }
}

void FillBlack(const PixelBlock& frame) {
  const std::vector<UInt8> black = [&] {
    std::vector<UInt8> row(std::size_t{frame.width} * 4, 0);
    for (std::size_t i = 0; i < row.size(); i += 4)
      row[i] = 255;
    return row;
  }();
  for (UInt32 y = 0; y < frame.height; ++y)
    std::memcpy(frame.Row(y), black.data(), black.size());
}

}  // namespace quillmere::imaging
