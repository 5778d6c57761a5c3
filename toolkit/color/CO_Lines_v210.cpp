#include "CO_Lines_v210.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "CO_Packed_Formats.h"
#include "v210_private.h"
#include "vector_clones.h"

namespace {

using quillmere::color::V210Pairs;
using quillmere::color::V210Path;
using quillmere::color::V210Wide;

constexpr SInt32 kPixels = 6;
constexpr std::ptrdiff_t kBlock = 16;  // bytes
constexpr std::ptrdiff_t kSamples = 12;
constexpr SInt32 kRowPixels = 48;
constexpr SInt64 kRowBytes = 128;

/// Vectors of the compiler, each half for a block of its own; codes fit into 16 bits with a sign.
/// What works on them has to be inlined into each version of the loops.
using Bytes = UInt8 __attribute__((vector_size(32)));
using Codes = SInt16 __attribute__((vector_size(32)));
using Words = UInt16 __attribute__((vector_size(32)));
using Wide = UInt32 __attribute__((vector_size(32)));
using Half = UInt16 __attribute__((vector_size(16)));

// Black, white and the span of chroma at 10 bits; chroma is at even places.
constexpr SInt16 kBlack = 64;
constexpr SInt16 kWhite = 940;
constexpr SInt16 kChromaEnd = 960;
constexpr Codes kMost = {kChromaEnd, kWhite, kChromaEnd, kWhite, kChromaEnd, kWhite,
                         kChromaEnd, kWhite, kChromaEnd, kWhite, kChromaEnd, kWhite,
                         kChromaEnd, kWhite, kChromaEnd, kWhite};

[[gnu::always_inline]] inline Codes Min(Codes a, Codes b) {
  return a < b ? a : b;
}
[[gnu::always_inline]] inline Codes Max(Codes a, Codes b) {
  return a > b ? a : b;
}

/// The pairs of bytes that hold the samples, as 16-bit words, brought down to codes. Of three
/// samples the first starts at bit 0 of its pair, the second at bit 2, the third at bit 4, where
/// what stands above it counts too. `third` marks the places of third samples.
[[gnu::always_inline]] inline Words ToWords(Words pairs, Words factors, Codes third) {
  const auto low = reinterpret_cast<Codes>((pairs * factors) >> 6);
  const auto high = reinterpret_cast<Codes>(pairs >> 4);
  const Codes codes = (high & third) | (low & ~third);
  return reinterpret_cast<Words>(Max(Min(codes, kMost), Codes{} + kBlack)) << 6;
}

/// Eight words from each of two places.
[[gnu::always_inline]] inline Words LoadHalves(const UInt16* first, const UInt16* second) {
  Half a;
  Half b;
  std::memcpy(&a, first, sizeof a);
  std::memcpy(&b, second, sizeof b);
  return __builtin_shufflevector(a, b, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}
/// The first `size` bytes of each half to two places.
[[gnu::always_inline]] inline void StoreHalves(Words words, std::size_t size, UInt16* first,
                                               UInt16* second) {
  const Half a = __builtin_shufflevector(words, words, 0, 1, 2, 3, 4, 5, 6, 7);
  const Half b = __builtin_shufflevector(words, words, 8, 9, 10, 11, 12, 13, 14, 15);
  std::memcpy(first, &a, size);
  std::memcpy(second, &b, size);
}

[[gnu::always_inline]] inline void UnpackTwoBlocks(const UInt8* blocks, UInt16* words) {
  constexpr Words kFactors = {64, 16, 4, 64, 16, 4, 64, 16, 64, 16, 4, 64, 16, 4, 64, 16};
  constexpr Codes kThird = {0, 0, -1, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, -1, 0, 0};
  constexpr Words kLastFactors = {4, 64, 16, 4, 4, 64, 16, 4, 4, 64, 16, 4, 4, 64, 16, 4};
  constexpr Codes kLastThird = {-1, 0, 0, -1, -1, 0, 0, -1, -1, 0, 0, -1, -1, 0, 0, -1};
  Bytes bytes;
  std::memcpy(&bytes, blocks, sizeof bytes);
  const auto first = reinterpret_cast<Words>(
      __builtin_shufflevector(bytes, bytes, 0, 1, 1, 2, 2, 3, 4, 5, 5, 6, 6, 7, 8, 9, 9, 10,  //
                              16, 17, 17, 18, 18, 19, 20, 21, 21, 22, 22, 23, 24, 25, 25, 26));
  const auto last = reinterpret_cast<Words>(__builtin_shufflevector(
      bytes, bytes, 10, 11, 12, 13, 13, 14, 14, 15, 10, 11, 12, 13, 13, 14, 14, 15,  //
      26, 27, 28, 29, 29, 30, 30, 31, 26, 27, 28, 29, 29, 30, 30, 31));
  const Words start = ToWords(first, kFactors, kThird);
  const Words rest = ToWords(last, kLastFactors, kLastThird);
  StoreHalves(start, 16, words, words + kSamples);
  StoreHalves(rest, 8, words + 8, words + kSamples + 8);
}

/// Words rounded to codes.
[[gnu::always_inline]] inline Words ToCodes(Words words) {
  // The limits come first, so that half a step can be added; they are those of the words.
  const Words least = Words{} + UInt16{kBlack << 6};
  const Words most = reinterpret_cast<Words>(kMost) << 6;
  words = words > least ? words : least;
  words = words > most ? most : words;
  return (words + 32) >> 6;
}

[[gnu::always_inline]] inline void PackTwoBlocks(const UInt16* words, UInt8* blocks) {
  Words start = LoadHalves(words, words + kSamples);
  Words rest = LoadHalves(words + 4, words + kSamples + 4);  // the last eight of each twelve
  start = ToCodes(start);
  rest = ToCodes(rest);
  const auto pick = [](Words picked) { return reinterpret_cast<Wide>(picked) & 0xFFFF; };
  const Wide first = pick(__builtin_shufflevector(start, rest, 0, 0, 3, 3, 6, 6, 21, 21,  //
                                                  8, 8, 11, 11, 14, 14, 29, 29));
  const Wide second = pick(__builtin_shufflevector(start, rest, 1, 1, 4, 4, 7, 7, 22, 22,  //
                                                   9, 9, 12, 12, 15, 15, 30, 30));
  const Wide third = pick(__builtin_shufflevector(start, rest, 2, 2, 5, 5, 20, 20, 23, 23,  //
                                                  10, 10, 13, 13, 28, 28, 31, 31));
  const Wide packed = first | (second << 10) | (third << 20);
  std::memcpy(blocks, &packed, sizeof packed);
}

QUILLMERE_VECTOR_CLONES void UnpackPairs(std::ptrdiff_t pairs, const UInt8* line, UInt16* words) {
  for (std::ptrdiff_t i = 0; i < pairs; ++i)
    UnpackTwoBlocks(line + 2 * i * kBlock, words + 2 * i * kSamples);
}

QUILLMERE_VECTOR_CLONES void PackPairs(std::ptrdiff_t pairs, const UInt16* words, UInt8* line) {
  for (std::ptrdiff_t i = 0; i < pairs; ++i)
    PackTwoBlocks(words + 2 * i * kSamples, line + 2 * i * kBlock);
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
  static const V210Path best = V210Wide().is_available ? V210Wide() : V210Pairs();
  return best;
}

}  // namespace

V210Path quillmere::color::V210Pairs() {
  return {2, true, UnpackPairs, PackPairs};
}

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
