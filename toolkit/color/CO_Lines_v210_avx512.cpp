// Lines of v210 by AVX-512 with VBMI, eight blocks at a time.

#include "v210_private.h"
#include "vector_intrinsics.h"

#ifdef QUILLMERE_AVX512_VBMI

#include <array>

namespace quillmere::color {
namespace {

constexpr std::ptrdiff_t kBlocks = 8;
constexpr std::ptrdiff_t kLineBytes = kBlocks * 16;
constexpr std::ptrdiff_t kLineWords = kBlocks * 12;
constexpr int kVectorWords = 32;
constexpr int kVectors = 3;  // of words, for eight blocks

// The codes' limits, chroma in the low word of each pair.
constexpr int kLeast = 64 << 16 | 64;
constexpr int kMost = 940 << 16 | 960;

/// Where the 64 bytes begin that hold the samples of each vector.
constexpr std::array<int, kVectors> kLoads = {0, 40, 64};

/// For four samples each, the two 32-bit words that hold them, of those that are loaded.
struct Places {
  alignas(64) std::array<std::array<int, 16>, kVectors> dwords;
  /// The bit of the pair at which each byte of a sample begins.
  alignas(64) std::array<std::array<UInt8, 64>, kVectors> bits;
  /// The bits of a sample; the third of a word has what stands above it too.
  alignas(64) std::array<std::array<UInt16, 32>, kVectors> masks;
};

constexpr Places MakePlaces() {
  Places places{};
  for (std::size_t v = 0; v < kVectors; ++v) {
    for (int i = 0; i < kVectorWords; ++i) {
      const int first = static_cast<int>(v) * kVectorWords + i / 4 * 4;
      const int sample = static_cast<int>(v) * kVectorWords + i;
      const int dword = first / 3;
      const auto at = static_cast<std::size_t>(i);
      if (i % 4 == 0) {
        const int loaded = dword - kLoads[v] / 4;
        places.dwords[v][at / 2] = loaded;
        places.dwords[v][at / 2 + 1] = loaded < 15 ? loaded + 1 : loaded;
      }
      const int bit = (sample / 3 - dword) * 32 + sample % 3 * 10;
      places.bits[v][2 * at] = static_cast<UInt8>(bit);
      places.bits[v][2 * at + 1] = static_cast<UInt8>(bit + 8);
      places.masks[v][at] = sample % 3 == 2 ? 0xFFF : 0x3FF;
    }
  }
  return places;
}
constexpr Places kPlaces = MakePlaces();

/// The samples of 16 words of 32 bits among two vectors of 32 samples, the second of which begins
/// 16 samples behind the first: first and second of each word, and third, above which stands 0.
struct Picks {
  alignas(64) std::array<UInt16, 32> pairs;
  alignas(64) std::array<UInt16, 32> thirds;
};

constexpr Picks MakePicks() {
  Picks picks{};
  const auto place = [](int sample) {
    return static_cast<UInt16>(sample < kVectorWords ? sample : kVectorWords + sample - 16);
  };
  for (int i = 0; i < 16; ++i) {
    const std::size_t at = 2 * static_cast<std::size_t>(i);
    picks.pairs[at] = place(3 * i);
    picks.pairs[at + 1] = place(3 * i + 1);
    picks.thirds[at] = place(3 * i + 2);
  }
  return picks;
}
constexpr Picks kPicks = MakePicks();

QUILLMERE_AVX512_VBMI void Unpack(std::ptrdiff_t count, const UInt8* line, UInt16* words) {
  const __m512i least = _mm512_set1_epi32(kLeast);
  const __m512i most = _mm512_set1_epi32(kMost);
  for (std::ptrdiff_t i = 0; i < count; ++i, line += kLineBytes, words += kLineWords) {
    for (std::size_t v = 0; v < kVectors; ++v) {
      const __m512i packed = _mm512_loadu_si512(line + kLoads[v]);
      const __m512i pairs = _mm512_permutexvar_epi32(Table64(&kPlaces.dwords[v]), packed);
      const __m512i wide = _mm512_multishift_epi64_epi8(Table64(&kPlaces.bits[v]), pairs);
      __m512i codes = _mm512_and_si512(wide, Table64(&kPlaces.masks[v]));
      codes = _mm512_max_epu16(_mm512_min_epu16(codes, most), least);
      _mm512_storeu_si512(words + v * kVectorWords, _mm512_slli_epi16(codes, 6));
    }
  }
}

/// Words rounded to codes. The limits come first, so that half a step can be added.
QUILLMERE_AVX512_VBMI inline __m512i ToCodes(__m512i words) {
  const __m512i least = _mm512_slli_epi16(_mm512_set1_epi32(kLeast), 6);
  const __m512i most = _mm512_slli_epi16(_mm512_set1_epi32(kMost), 6);
  words = _mm512_max_epu16(_mm512_min_epu16(words, most), least);
  return _mm512_srli_epi16(_mm512_add_epi16(words, _mm512_set1_epi16(32)), 6);
}

QUILLMERE_AVX512_VBMI void Pack(std::ptrdiff_t count, const UInt16* words, UInt8* line) {
  constexpr __mmask32 kLowWords = 0x55555555;
  const __m512i pairs_at = Table64(&kPicks.pairs);
  const __m512i thirds_at = Table64(&kPicks.thirds);
  const __m512i places = _mm512_set1_epi32(1 << 26 | 1);  // 1024 and 1
  for (std::ptrdiff_t i = 0; i < 2 * count; ++i, line += kLineBytes / 2, words += kLineWords / 2) {
    const __m512i first = ToCodes(_mm512_loadu_si512(words));
    const __m512i second = ToCodes(_mm512_loadu_si512(words + 16));
    const __m512i pairs = _mm512_permutex2var_epi16(first, pairs_at, second);
    const __m512i thirds = _mm512_maskz_permutex2var_epi16(kLowWords, first, thirds_at, second);
    _mm512_storeu_si512(
        line, _mm512_or_si512(_mm512_madd_epi16(pairs, places), _mm512_slli_epi32(thirds, 20)));
  }
}

}  // namespace

V210Path V210Avx512() {
  return {kBlocks, HasAvx512Vbmi(), Unpack, Pack};
}

}  // namespace quillmere::color

#else

quillmere::color::V210Path quillmere::color::V210Avx512() {
  return {1, false, nullptr, nullptr};
}

#endif
