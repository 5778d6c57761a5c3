#include "vector_intrinsics.h"
#include "y420_private.h"

#ifdef QUILLMERE_AVX2

namespace quillmere::color {
namespace {

constexpr std::ptrdiff_t kPixels = 32;

QUILLMERE_AVX2 inline __m256i Load(const UInt8* from) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

QUILLMERE_AVX2 inline void Store(__m256i bytes, UInt8* to) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes);
}

/// The upper bytes of 32 words.
QUILLMERE_AVX2 inline __m256i Lumas(__m256i first, __m256i second) {
  const __m256i halves =
      _mm256_packus_epi16(_mm256_srli_epi16(first, 8), _mm256_srli_epi16(second, 8));
  return _mm256_permute4x64_epi64(halves, _MM_SHUFFLE(3, 1, 2, 0));
}

/// Means of the lower bytes of words, cut.
QUILLMERE_AVX2 inline __m256i ChromaMeans(__m256i a, __m256i b) {
  const __m256i low = _mm256_set1_epi16(255);
  return _mm256_srli_epi16(_mm256_add_epi16(_mm256_and_si256(a, low), _mm256_and_si256(b, low)), 1);
}

QUILLMERE_AVX2 void Split(std::ptrdiff_t count, const UInt8* lineA, const UInt8* lineB, UInt8* yA,
                          UInt8* yB, UInt8* cb, UInt8* cr) {
  // In each half Cb, then Cr; of the fours that result, all Cb, then all Cr.
  const __m256i apart = _mm256_setr_epi8(0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15,  //
                                         0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15);
  const __m256i fours = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const __m256i a0 = Load(lineA + 64 * i);
    const __m256i a1 = Load(lineA + 64 * i + 32);
    const __m256i b0 = Load(lineB + 64 * i);
    const __m256i b1 = Load(lineB + 64 * i + 32);
    Store(Lumas(a0, a1), yA + kPixels * i);
    Store(Lumas(b0, b1), yB + kPixels * i);
    const __m256i means = _mm256_packus_epi16(ChromaMeans(a0, b0), ChromaMeans(a1, b1));
    const __m256i both = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(means, apart), fours);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(cb + 16 * i), _mm256_castsi256_si128(both));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(cr + 16 * i), _mm256_extracti128_si256(both, 1));
  }
}

}  // namespace

SplitPath SplitAvx2() {
  return {kPixels, HasAvx2(), Split};
}

}  // namespace quillmere::color

#else

quillmere::color::SplitPath quillmere::color::SplitAvx2() {
  return {1, false, nullptr};
}

#endif
