#include "CO_Lines_v210.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "CO_Packed_Formats.h"
#include "v210_private.h"

namespace {

using quillmere::color::V210Avx2;
using quillmere::color::V210Avx512;
using quillmere::color::V210Path;

constexpr SInt32 kPixels = 6;
constexpr std::ptrdiff_t kBlock = 16;  // bytes
constexpr std::ptrdiff_t kSamples = 12;
constexpr SInt32 kRowPixels = 48;
constexpr SInt64 kRowBytes = 128;

/// Block by block, for processors without a better path.
void UnpackBlocks(std::ptrdiff_t count, const UInt8* line, UInt16* words) {
  for (std::ptrdiff_t i = 0; i < count; ++i)
    CO_Unpack_v210(line + i * kBlock, words + i * kSamples);
}

void PackBlocks(std::ptrdiff_t count, const UInt16* words, UInt8* line) {
  for (std::ptrdiff_t i = 0; i < count; ++i)
    CO_Pack_v210(line + i * kBlock, words + i * kSamples);
}

/// Clears the fields of a block from the sample `first` on.
void ClearSamples(std::ptrdiff_t first, UInt8* block) {
  for (std::ptrdiff_t i = 0; i < 4; ++i) {
    const std::ptrdiff_t kept = std::clamp<std::ptrdiff_t>(first - 3 * i, 0, 3);
    UInt32 word = 0;
    std::memcpy(&word, block + 4 * i, sizeof word);
    word &= (UInt32{1} << (10 * kept)) - 1;
    std::memcpy(block + 4 * i, &word, sizeof word);
  }
}

/// The samples of the block that begins at a pixel.
std::ptrdiff_t SamplesFrom(SInt32 x, SInt32 width) {
  return std::min(std::ptrdiff_t{width - x} * 2, kSamples);
}

/// The fastest path that the processor has.
const V210Path& BestPath() {
  static const V210Path best = V210Avx512().is_available ? V210Avx512()
                               : V210Avx2().is_available
                                   ? V210Avx2()
                                   : V210Path{1, true, UnpackBlocks, PackBlocks};
  return best;
}

}  // namespace

SInt64 CO_GetRowBytes_v210(SInt32 width) {
  return width < 1 ? 0 : (SInt64{width} + kRowPixels - 1) / kRowPixels * kRowBytes;
}

void CO_UnpackLine_v210(SInt32 width, const UInt8* line, UInt16* words) {
  const V210Path& path = BestPath();
  const std::ptrdiff_t count = std::max(width, 0) / (path.blocks_at_once * kPixels);
  path.unpack(count, line, words);
  const auto done = static_cast<SInt32>(count * path.blocks_at_once * kPixels);
  for (SInt32 x = done; x < width; x += kPixels) {
    UInt16 block[kSamples];
    CO_Unpack_v210(line + x / kPixels * kBlock, block);
    std::copy_n(block, SamplesFrom(x, width), words + std::ptrdiff_t{x} * 2);
  }
}

void CO_PackLine_v210(SInt32 width, const UInt16* words, UInt8* line) {
  const V210Path& path = BestPath();
  const std::ptrdiff_t count = std::max(width, 0) / (path.blocks_at_once * kPixels);
  path.pack(count, words, line);
  const std::ptrdiff_t blocks = count * path.blocks_at_once;
  UInt8* end = line + blocks * kBlock;
  for (auto x = static_cast<SInt32>(blocks * kPixels); x < width; x += kPixels) {
    const std::ptrdiff_t samples = SamplesFrom(x, width);
    UInt16 block[kSamples] = {};
    std::copy_n(words + std::ptrdiff_t{x} * 2, samples, block);
    CO_Pack_v210(end, block);
    ClearSamples(samples, end);
    end += kBlock;
  }
  std::fill(end, line + CO_GetRowBytes_v210(width), UInt8{0});
}
