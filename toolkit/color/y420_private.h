/// The ways in which a pair of lines of 2vuy is taken apart; CO_Y420_Frames.h takes the fastest
/// that the processor has.
#pragma once

#include <cstddef>

#include "base_types.h"

namespace quillmere::color {

/// A pair of lines, `count` times `pixels_at_once` wide: their lumas, and the means of their
/// chroma, cut. yA and yB may be the same.
struct SplitPath {
  std::ptrdiff_t pixels_at_once;
  bool is_available;  ///< on this processor
  void (*split)(std::ptrdiff_t count, const UInt8* lineA, const UInt8* lineB, UInt8* yA, UInt8* yB,
                UInt8* cb, UInt8* cr);
};

/// Pair by pair, on any processor.
SplitPath SplitPlain();
SplitPath SplitAvx2();
/// With VBMI.
SplitPath SplitAvx512();

}  // namespace quillmere::color
