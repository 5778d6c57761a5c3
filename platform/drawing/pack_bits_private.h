/// The run-length packing of PackBits (Apple Technical Note TN1023): a byte n from 0 to 127 has n +
/// 1 bytes behind it that stand as they are, one from -127 to -1 a byte that stands 1 - n times.
#pragma once

#include <span>
#include <vector>

#include "base_types.h"

namespace quillmere::drawing {

/// Appends `bytes`, packed.
void PackBits(std::span<const UInt8> bytes, std::vector<UInt8>* packed);
/// Fills all of `bytes`; false if there is too little for that, or too much.
bool UnpackBits(std::span<const UInt8> packed, std::span<UInt8> bytes);

}  // namespace quillmere::drawing
