#include "blending.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "vector_clones.h"

namespace quillmere::imaging {
namespace {

/// Alpha's place in a pixel read as one number.
constexpr unsigned kAlphaShift = std::endian::native == std::endian::little ? 0 : 24;
constexpr UInt32 kOpaque = 0xFFU << kAlphaShift;
/// Every other byte: two channels in lanes of 16 bits.
constexpr UInt32 kLanes = 0x00FF00FF;

UInt32 Load(const UInt8* pixel) {
  UInt32 value;
  std::memcpy(&value, pixel, 4);
  return value;
}
void Store(UInt8* pixel, UInt32 value) {
  std::memcpy(pixel, &value, 4);
}

/// Both lanes x / 255, each lane at most 65152 (255 x 255 + 127): (x + 1 + (x >> 8)) >> 8 is the
/// exact quotient.
inline UInt32 LanesBy255(UInt32 x) {
  return ((x + 0x00010001 + ((x >> 8) & kLanes)) >> 8) & kLanes;
}

constexpr UInt32 kHalf255 = 127 * 0x00010001;

QUILLMERE_VECTOR_CLONES
void CopyOpaque(const UInt8* __restrict upper, UInt8* __restrict lower, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    Store(lower + i * 4, Load(upper + i * 4) | kOpaque);
}

QUILLMERE_VECTOR_CLONES
void StraightAlpha(const UInt8* __restrict upper, UInt8* __restrict lower, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const UInt32 s = Load(upper + i * 4);
    const UInt32 d = Load(lower + i * 4);
    const UInt32 a = (s >> kAlphaShift) & 0xFF;
    const UInt32 rest = 255 - a;
    const UInt32 even = LanesBy255((s & kLanes) * a + (d & kLanes) * rest + kHalf255);
    const UInt32 odd = LanesBy255(((s >> 8) & kLanes) * a + ((d >> 8) & kLanes) * rest + kHalf255);
    Store(lower + i * 4, even | odd << 8 | kOpaque);
  }
}

/// Colours that were mixed with a matte: `matte` 255 for white, 0 for black.
void Premultiplied(int matte, const UInt8* upper, UInt8* lower, std::size_t count) {
  for (std::size_t i = 0; i < count * 4; i += 4) {
    const int rest = 255 - upper[i];
    for (std::size_t c = 1; c < 4; ++c) {
      const int kept = (lower[i + c] * rest + 127) / 255;
      const int color = upper[i + c] - (matte * rest + 127) / 255 + kept;
      lower[i + c] = static_cast<UInt8>(std::clamp(color, 0, 255));
    }
    lower[i] = 255;
  }
}

void Weighted(const Blend& blend, bool use_alpha, const UInt8* upper, UInt8* lower,
              std::size_t count) {
  constexpr UInt32 kWhole = 255U * 65535U;
  for (std::size_t i = 0; i < count * 4; i += 4) {
    const UInt32 alpha = use_alpha ? upper[i] : 255U;
    for (std::size_t c = 1; c < 4; ++c) {
      // At most 255 x 255 x 65535 + kWhole / 2, which 32 bits hold.
      const UInt32 share = alpha * blend.weight[c - 1];
      lower[i + c] = static_cast<UInt8>(
          (upper[i + c] * share + lower[i + c] * (kWhole - share) + kWhole / 2) / kWhole);
    }
    lower[i] = 255;
  }
}

void Transparent(const Blend& blend, const UInt8* upper, UInt8* lower, std::size_t count) {
  for (std::size_t i = 0; i < count * 4; i += 4) {
    if (!std::equal(blend.key, blend.key + 3, upper + i + 1)) {
      Store(lower + i, Load(upper + i) | kOpaque);
    }
  }
}

}  // namespace

void BlendRow(const Blend& blend, const UInt8* upper, UInt8* lower, std::size_t count) {
  switch (blend.mode) {
    case BlendMode::kCopy:
      return CopyOpaque(upper, lower, count);
    case BlendMode::kWeighted:
      return Weighted(blend, false, upper, lower, count);
    case BlendMode::kTransparent:
      return Transparent(blend, upper, lower, count);
    case BlendMode::kStraightAlpha:
      return StraightAlpha(upper, lower, count);
    case BlendMode::kPremultipliedWhite:
      return Premultiplied(255, upper, lower, count);
    case BlendMode::kPremultipliedBlack:
      return Premultiplied(0, upper, lower, count);
    case BlendMode::kWeightedStraightAlpha:
      return Weighted(blend, true, upper, lower, count);
  }
}

}  // namespace quillmere::imaging
