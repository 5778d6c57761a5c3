/// Big-endian numbers in image files, and the signatures by which files are told apart.
#pragma once

#include <algorithm>
#include <array>
#include <span>

#include "base_types.h"

namespace quillmere::imaging {

inline constexpr std::array<UInt8, 8> kPngSignature = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
inline constexpr std::array<UInt8, 3> kJpegSignature = {0xFF, 0xD8, 0xFF};

/// The numbers at the pointer, which must have that many bytes behind it.
inline UInt16 BigEndian16(const UInt8* bytes) {
  return static_cast<UInt16>(bytes[0] << 8 | bytes[1]);
}
inline UInt32 BigEndian32(const UInt8* bytes) {
  return static_cast<UInt32>(BigEndian16(bytes)) << 16 | BigEndian16(bytes + 2);
}

template <std::size_t length>
bool StartsWith(std::span<const UInt8> bytes, const std::array<UInt8, length>& signature) {
  return bytes.size() >= length && std::equal(signature.begin(), signature.end(), bytes.begin());
}

}  // namespace quillmere::imaging
