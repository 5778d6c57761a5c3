/// The ways in which lines of v210 are unpacked and packed; CO_Lines_v210.h takes the fastest that
/// the processor has. Whole blocks only: words of the working form, 12 for each 16 bytes.
#pragma once

#include <cstddef>

#include "base_types.h"

namespace quillmere::color {

/// As many blocks as are left over are done by the plain loop of the line.
struct V210Path {
  std::ptrdiff_t blocks_at_once;
  bool is_available;  ///< on this processor
  /// `count` times blocks_at_once.
  void (*unpack)(std::ptrdiff_t count, const UInt8* line, UInt16* words);
  void (*pack)(std::ptrdiff_t count, const UInt16* words, UInt8* line);
};

V210Path V210Avx2();
/// With VBMI.
V210Path V210Avx512();

}  // namespace quillmere::color
