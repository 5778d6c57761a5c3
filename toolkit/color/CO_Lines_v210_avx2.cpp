// Lines of v210 by AVX2, four blocks at a time.

#include "v210_private.h"
#include "vector_intrinsics.h"

#ifdef QUILLMERE_AVX2

#include <array>

namespace quillmere::color {
namespace {

constexpr std::ptrdiff_t kBlocks = 4;
constexpr std::ptrdiff_t kBlockWords = 12;
constexpr std::size_t kVectors = 3;  // of 16 words, for four blocks
constexpr std::ptrdiff_t kHalfWords = 8;

// The codes' limits, chroma in the low word of each pair.
constexpr int kLeast = 64 << 16 | 64;
constexpr int kMost = 940 << 16 | 960;

/// Where the 16 bytes begin that hold the samples of each half vector.
constexpr std::array<std::array<int, 2>, kVectors> kLoads = {{{0, 8}, {20, 32}, {40, 48}}};

/// The pairs of bytes that hold the samples, as words, and what brings them down to codes. Of three
/// samples the first starts at bit 0 of its pair, the second at bit 2, the third at bit 4, where
/// what stands above it counts too.
struct Places {
  alignas(32) std::array<std::array<UInt8, 32>, kVectors> bytes;
  alignas(32) std::array<std::array<UInt16, 16>, kVectors> factors;  ///< up to bit 6, above cut
  alignas(32) std::array<std::array<SInt16, 16>, kVectors> thirds;   ///< -1 for a third
};

constexpr Places MakePlaces() {
  Places places{};
  for (std::size_t v = 0; v < kVectors; ++v) {
    for (int i = 0; i < 2 * kHalfWords; ++i) {
      const auto at = static_cast<std::size_t>(i);
      const std::size_t half = at / kHalfWords;
      const int sample = static_cast<int>(16 * v) + i;
      const int byte = sample / 3 * 4 + sample % 3 - kLoads[v][half];
      places.bytes[v][2 * at] = static_cast<UInt8>(byte);
      places.bytes[v][2 * at + 1] = static_cast<UInt8>(byte + 1);
      places.factors[v][at] = sample % 3 == 0 ? 64 : 16;
      places.thirds[v][at] = sample % 3 == 2 ? -1 : 0;
    }
  }
  return places;
}
constexpr Places kPlaces = MakePlaces();

QUILLMERE_AVX2 void Unpack(std::ptrdiff_t count, const UInt8* line, UInt16* words) {
  const __m256i least = _mm256_set1_epi32(kLeast);
  const __m256i most = _mm256_set1_epi32(kMost);
  for (std::ptrdiff_t i = 0; i < count; ++i, line += kBlocks * 16) {
    for (std::size_t v = 0; v < kVectors; ++v, words += 2 * kHalfWords) {
      const __m256i packed = LoadHalves(line + kLoads[v][0], line + kLoads[v][1]);
      const __m256i pairs = _mm256_shuffle_epi8(packed, Table32(&kPlaces.bytes[v]));
      const __m256i raised = _mm256_mullo_epi16(pairs, Table32(&kPlaces.factors[v]));
      const __m256i codes = _mm256_blendv_epi8(
          _mm256_srli_epi16(raised, 6), _mm256_srli_epi16(pairs, 4), Table32(&kPlaces.thirds[v]));
      const __m256i limited = _mm256_max_epi16(_mm256_min_epi16(codes, most), least);
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(words), _mm256_slli_epi16(limited, 6));
    }
  }
}

/// Words rounded to codes, less the least code.
QUILLMERE_AVX2 inline __m256i AboveLeast(__m256i words) {
  constexpr SInt16 kLeastCode = 64;
  const __m256i codes =
      _mm256_srli_epi16(_mm256_subs_epu16(words, _mm256_set1_epi16(kLeastCode * 64 - 32)), 6);
  return _mm256_min_epu16(codes, _mm256_set1_epi32(kMost - kLeast));
}

template <int places>
QUILLMERE_AVX2 inline __m256i Pairs(__m256i first, __m256i last) {
  return _mm256_castps_si256(
      _mm256_shuffle_ps(_mm256_castsi256_ps(first), _mm256_castsi256_ps(last), places));
}

/// A block's twelve samples are six pairs. The first and third packed word have all of one pair and
/// the lower sample of the next; the second and fourth the upper sample of one and all of the next.
QUILLMERE_AVX2 void Pack(std::ptrdiff_t count, const UInt16* words, UInt8* line) {
  constexpr std::ptrdiff_t kAhead = 1024;
  const __m256i least = _mm256_set1_epi32(64 << 20 | 64 << 10 | 64);
  const __m256i weights = _mm256_set1_epi32(1 << 26 | 1);  // 1024 and 1
  const __m256i raise = _mm256_setr_epi32(0, 10, 0, 10, 0, 10, 0, 10);
  const __m256i singles_at =
      _mm256_setr_epi8(-1, -1, 0, 1, 6, 7, -1, -1, -1, -1, 8, 9, 14, 15, -1, -1, -1, -1, 0, 1, 6, 7,
                       -1, -1, -1, -1, 8, 9, 14, 15, -1, -1);
  const __m256i single_weights = _mm256_set1_epi32(16 << 16 | 1);
  for (std::ptrdiff_t i = 0; i < 2 * count; ++i, words += 2 * kBlockWords, line += 32) {
    // Frames don't fit into the near caches, whose own foresight ends with each page.
    __builtin_prefetch(words + kAhead);
    __builtin_prefetch(line + kAhead, 1);
    const __m256i first = LoadHalves(words, words + kBlockWords);
    const __m256i last = LoadHalves(words + 4, words + kBlockWords + 4);
    const __m256i wholes = AboveLeast(Pairs<_MM_SHUFFLE(3, 1, 2, 0)>(first, last));
    const __m256i halves = AboveLeast(Pairs<_MM_SHUFFLE(2, 2, 1, 1)>(first, last));
    const __m256i two = _mm256_sllv_epi32(_mm256_madd_epi16(wholes, weights), raise);
    const __m256i one = _mm256_mullo_epi16(_mm256_shuffle_epi8(halves, singles_at), single_weights);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(line),
                        _mm256_add_epi32(_mm256_or_si256(two, one), least));
  }
}

}  // namespace

V210Path V210Avx2() {
  return {kBlocks, HasAvx2(), Unpack, Pack};
}

}  // namespace quillmere::color

#else

quillmere::color::V210Path quillmere::color::V210Avx2() {
  return {1, false, nullptr, nullptr};
}

#endif
