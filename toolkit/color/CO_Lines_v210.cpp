#include "CO_Lines_v210.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "CO_Packed_Formats.h"
#include "vector_clones.h"

namespace {

constexpr SInt32 kPixels = 6;
constexpr std::ptrdiff_t kBlock = 16;  // bytes
constexpr std::ptrdiff_t kSamples = 12;
constexpr SInt32 kRowPixels = 48;
constexpr SInt64 kRowBytes = 128;

/// Vectors of the compiler: eight codes fit into 16 bits with a sign.
using Bytes = UInt8 __attribute__((vector_size(16)));
using Codes = SInt16 __attribute__((vector_size(16)));
using Words = UInt16 __attribute__((vector_size(16)));
using Wide = UInt32 __attribute__((vector_size(16)));

// Black, white and the span of chroma at 10 bits; chroma is at even places.
constexpr Codes kLeast = {64, 64, 64, 64, 64, 64, 64, 64};
constexpr Codes kMost = {960, 940, 960, 940, 960, 940, 960, 940};
constexpr Codes kLargest = {1023, 1023, 1023, 1023, 1023, 1023, 1023, 1023};

inline Codes Min(Codes a, Codes b) {
  return a < b ? a : b;
}
inline Codes Max(Codes a, Codes b) {
  return a > b ? a : b;
}

/// The pairs of bytes that hold the samples, as 16-bit words, brought down to codes. Of three
/// samples the first starts at bit 0 of its pair, the second at bit 2, the third at bit 4, where
/// what stands above it counts too. `third` marks the places of third samples.
inline Words ToWords(Words pairs, Words factors, Codes third) {
  const auto low = reinterpret_cast<Codes>((pairs * factors) >> 6);
  const Codes high = Min(reinterpret_cast<Codes>(pairs >> 4), kLargest);
  const Codes codes = (high & third) | (low & ~third);
  return reinterpret_cast<Words>(Max(Min(codes, kMost), kLeast)) << 6;
}

inline void UnpackBlock(const UInt8* block, UInt16* words) {
  constexpr Words kFactors = {64, 16, 4, 64, 16, 4, 64, 16};
  constexpr Codes kThird = {0, 0, -1, 0, 0, -1, 0, 0};
  constexpr Words kLastFactors = {4, 64, 16, 4, 4, 64, 16, 4};
  constexpr Codes kLastThird = {-1, 0, 0, -1, -1, 0, 0, -1};
  Bytes bytes;
  std::memcpy(&bytes, block, sizeof bytes);
  const auto first = reinterpret_cast<Words>(
      __builtin_shufflevector(bytes, bytes, 0, 1, 1, 2, 2, 3, 4, 5, 5, 6, 6, 7, 8, 9, 9, 10));
  const auto last = reinterpret_cast<Words>(__builtin_shufflevector(
      bytes, bytes, 10, 11, 12, 13, 13, 14, 14, 15, 10, 11, 12, 13, 13, 14, 14, 15));
  const Words start = ToWords(first, kFactors, kThird);
  const Words rest = ToWords(last, kLastFactors, kLastThird);
  std::memcpy(words, &start, sizeof start);
  std::memcpy(words + 8, &rest, sizeof rest / 2);
}

/// Words rounded to codes.
inline Words ToCodes(Words words) {
  // The limits come first, so that half a step can be added; they are those of the words.
  const Words least = reinterpret_cast<Words>(kLeast) << 6;
  const Words most = reinterpret_cast<Words>(kMost) << 6;
  words = words < least ? least : words;
  words = words > most ? most : words;
  return (words + 32) >> 6;
}

inline void PackBlock(const UInt16* words, UInt8* block) {
  Words start;
  Words rest;  // the last eight of the twelve
  std::memcpy(&start, words, sizeof start);
  std::memcpy(&rest, words + 4, sizeof rest);
  start = ToCodes(start);
  rest = ToCodes(rest);
  constexpr Wide kLow = {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};
  const auto pick = [&](Words picked) { return reinterpret_cast<Wide>(picked) & kLow; };
  const Wide first = pick(__builtin_shufflevector(start, rest, 0, 0, 3, 3, 6, 6, 13, 13));
  const Wide second = pick(__builtin_shufflevector(start, rest, 1, 1, 4, 4, 7, 7, 14, 14));
  const Wide third = pick(__builtin_shufflevector(start, rest, 2, 2, 5, 5, 12, 12, 15, 15));
  const Wide packed = first | (second << 10) | (third << 20);
  std::memcpy(block, &packed, sizeof packed);
}

QUILLMERE_VECTOR_CLONES void UnpackBlocks(std::ptrdiff_t blocks, const UInt8* line, UInt16* words) {
  for (std::ptrdiff_t i = 0; i < blocks; ++i)
    UnpackBlock(line + i * kBlock, words + i * kSamples);
}

QUILLMERE_VECTOR_CLONES void PackBlocks(std::ptrdiff_t blocks, const UInt16* words, UInt8* line) {
  for (std::ptrdiff_t i = 0; i < blocks; ++i)
    PackBlock(words + i * kSamples, line + i * kBlock);
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

}  // namespace

SInt64 CO_GetRowBytes_v210(SInt32 width) {
  return width < 1 ? 0 : (SInt64{width} + kRowPixels - 1) / kRowPixels * kRowBytes;
}

void CO_UnpackLine_v210(SInt32 width, const UInt8* line, UInt16* words) {
  if (width < 1) return;
  const std::ptrdiff_t blocks = width / kPixels;
  UnpackBlocks(blocks, line, words);
  const std::ptrdiff_t rest = std::ptrdiff_t{width % kPixels} * 2;
  if (rest == 0) return;
  UInt16 last[kSamples];
  CO_Unpack_v210(line + blocks * kBlock, last);
  std::copy_n(last, rest, words + blocks * kSamples);
}

void CO_PackLine_v210(SInt32 width, const UInt16* words, UInt8* line) {
  if (width < 1) return;
  const std::ptrdiff_t blocks = width / kPixels;
  const std::ptrdiff_t rest = std::ptrdiff_t{width % kPixels} * 2;
  PackBlocks(blocks, words, line);
  UInt8* end = line + blocks * kBlock;
  if (rest > 0) {
    UInt16 last[kSamples] = {};
    std::copy_n(words + blocks * kSamples, rest, last);
    CO_Pack_v210(end, last);
    ClearSamples(rest, end);
    end += kBlock;
  }
  std::fill(end, line + CO_GetRowBytes_v210(width), UInt8{0});
}
