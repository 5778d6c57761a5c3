/// Laying one row of pixels over another, in integer arithmetic.
///
/// Pixels are alpha, red, green, blue, a byte each; the row below is opaque and stays so. Every
/// quotient is rounded to the nearest, halves up; every path gives the same bytes on every machine.
#pragma once

#include <cstddef>

#include "base_types.h"

namespace quillmere::imaging {

/// How the upper row, with colour s and alpha a, and the lower one, with colour d, make the new
/// colour. w is the weight of the channel, 0 to 65535.
enum class BlendMode {
  kCopy,                  ///< s
  kWeighted,              ///< (s w + d (65535 - w)) / 65535
  kTransparent,           ///< d where s is the key colour, else s
  kStraightAlpha,         ///< (s a + d (255 - a)) / 255
  kPremultipliedWhite,    ///< s - (255 - a) + d (255 - a) / 255, cut to 0 to 255
  kPremultipliedBlack,    ///< s + d (255 - a) / 255, cut to 255
  kWeightedStraightAlpha  ///< (s a w + d (255 x 65535 - a w)) / (255 x 65535)
};

struct Blend {
  BlendMode mode = BlendMode::kCopy;
  UInt16 weight[3] = {};  ///< red, green, blue, for the weighted modes
  UInt8 key[3] = {};      ///< red, green, blue, for kTransparent
};

/// Lays `count` pixels at `upper` over those at `lower`. The rows must not overlap.
void BlendRow(const Blend& blend, const UInt8* upper, UInt8* lower, std::size_t count);

}  // namespace quillmere::imaging
