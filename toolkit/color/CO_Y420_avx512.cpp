#include "vector_intrinsics.h"
#include "y420_private.h"

#ifdef QUILLMERE_AVX512_VBMI

#include <array>

namespace quillmere::color {
namespace {

/// Every `step`-th of 128 bytes from `first` on, then from `second` on.
constexpr std::array<UInt8, 64> Every(int step, int first, int second) {
  std::array<UInt8, 64> places{};
  const int half = 128 / step;
  for (int i = 0; i < 64; ++i) {
    const int from = i < half ? first : second;
    places[static_cast<std::size_t>(i)] = static_cast<UInt8>(from + i % half * step);
  }
  return places;
}
alignas(64) constexpr std::array<UInt8, 64> kLuma = Every(2, 1, 1);
alignas(64) constexpr std::array<UInt8, 64> kChroma = Every(4, 0, 2);  // Cb, then Cr

/// Means of bytes, cut.
QUILLMERE_AVX512_VBMI inline __m512i Means(__m512i a, __m512i b) {
  const __m512i rounded = _mm512_avg_epu8(a, b);
  const __m512i odd = _mm512_and_si512(_mm512_xor_si512(a, b), _mm512_set1_epi8(1));
  return _mm512_sub_epi8(rounded, odd);
}

QUILLMERE_AVX512_VBMI void Split(std::ptrdiff_t count, const UInt8* lineA, const UInt8* lineB,
                                 UInt8* yA, UInt8* yB, UInt8* cb, UInt8* cr) {
  const __m512i luma = Table64(&kLuma);
  const __m512i chroma = Table64(&kChroma);
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const __m512i a0 = _mm512_loadu_si512(lineA + 128 * i);
    const __m512i a1 = _mm512_loadu_si512(lineA + 128 * i + 64);
    const __m512i b0 = _mm512_loadu_si512(lineB + 128 * i);
    const __m512i b1 = _mm512_loadu_si512(lineB + 128 * i + 64);
    _mm512_storeu_si512(yA + 64 * i, _mm512_permutex2var_epi8(a0, luma, a1));
    _mm512_storeu_si512(yB + 64 * i, _mm512_permutex2var_epi8(b0, luma, b1));
    const __m512i both = _mm512_permutex2var_epi8(Means(a0, b0), chroma, Means(a1, b1));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(cb + 32 * i), _mm512_castsi512_si256(both));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(cr + 32 * i),
                        _mm512_extracti64x4_epi64(both, 1));
  }
}

}  // namespace

SplitPath SplitAvx512() {
  return {64, HasAvx512Vbmi(), Split};
}

}  // namespace quillmere::color

#else

quillmere::color::SplitPath quillmere::color::SplitAvx512() {
  return {1, false, nullptr};
}

#endif
