/// Regions: any set of pixels of the plane, made and combined exactly.
///
/// A region is held as bands of rows, each with the edges at which its pixels begin and end, and
/// takes as much memory as its shape has corners. Coordinates are 16-bit; what leaves them is cut
/// off. One thread at a time uses a region. An output may be one of the inputs; a null region
/// counts as empty, and as an output nothing is stored.
#pragma once

#include <vector>

#include "base_types.h"

struct Region;
using RgnHandle = Region*;

/// A new empty region, which the caller gives back with DisposeRgn (null is allowed).
RgnHandle NewRgn();
void DisposeRgn(RgnHandle region);

void SetEmptyRgn(RgnHandle region);
/// A rectangle; one without pixels gives the empty region.
void RectRgn(RgnHandle region, const Rect* rect);
void CopyRgn(RgnHandle source, RgnHandle destination);
void OffsetRgn(RgnHandle region, SInt16 dh, SInt16 dv);

void SectRgn(RgnHandle a, RgnHandle b, RgnHandle out);
void UnionRgn(RgnHandle a, RgnHandle b, RgnHandle out);
/// What of `a` is not in `b`.
void DiffRgn(RgnHandle a, RgnHandle b, RgnHandle out);
/// What is in one of the two.
void XorRgn(RgnHandle a, RgnHandle b, RgnHandle out);

Boolean EmptyRgn(RgnHandle region);
Boolean EqualRgn(RgnHandle a, RgnHandle b);
Boolean PtInRgn(Point point, RgnHandle region);
/// The smallest rectangle that holds the region; 0, 0, 0, 0 for the empty one.
Rect* GetRegionBounds(RgnHandle region, Rect* bounds);
/// True for a rectangle and for the empty region.
Boolean IsRegionRectangular(RgnHandle region);

namespace quillmere {

/// Rows with the same pixels: from `top` to above `bottom`, and in each row from the first edge to
/// in front of the second, from the third to in front of the fourth and so on. Edges rise.
struct RegionBand {
  SInt32 top;
  SInt32 bottom;
  std::vector<SInt32> edges;
  friend bool operator==(const RegionBand&, const RegionBand&) = default;
};
/// The bands of a region from the top down. Those that touch differ in their edges.
const std::vector<RegionBand>& BandsOf(RgnHandle region);
/// Makes a region of bands that don't overlap, from the top down; edges of one band that meet, and
/// like bands, are joined. What lies beyond 16 bits is cut off.
void SetBands(RgnHandle region, const std::vector<RegionBand>& bands);

}  // namespace quillmere
