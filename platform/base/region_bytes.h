/// Regions as pictures and movie files hold them: big-endian size and bounds, and for one that is
/// no rectangle, for each row that differs from the row above, its place and the places where it
/// does.
#pragma once

#include <span>
#include <vector>

#include "regions.h"

namespace quillmere {

/// The bytes of a region; nothing for one with more corners than 32766 bytes can tell.
std::vector<UInt8> RegionToBytes(RgnHandle region);
/// The size that stands at the start of a region's bytes; 0 if there are too few for any region.
std::size_t SizeOfRegionBytes(std::span<const UInt8> bytes);
/// The bands of a region, from exactly its bytes; false if they are damaged.
bool BandsFromBytes(std::span<const UInt8> bytes, std::vector<RegionBand>* bands);

}  // namespace quillmere
