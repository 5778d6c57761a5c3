#include "float_lines_private.h"
#include "vector_intrinsics.h"

#ifdef QUILLMERE_AVX2

#include <array>
#include <cstddef>

namespace quillmere::color {
namespace {

constexpr std::ptrdiff_t kPixels = 8;

/// For eight values of 32 bits, every second byte of 16 from `first` on.
using Picks = std::array<UInt8, 32>;
constexpr Picks EverySecond(std::size_t first) {
  constexpr UInt8 kNone = 128;
  Picks picks;
  picks.fill(kNone);
  for (std::size_t i = 0; i < kPixels; ++i)
    picks[4 * i] = static_cast<UInt8>(2 * i + first);
  return picks;
}
alignas(32) constexpr Picks kChroma = EverySecond(0);
alignas(32) constexpr Picks kLuma = EverySecond(1);

struct Scale {
  __m256 factor;
  __m256 offset;
};

/// Luma or chroma of eight pixels.
QUILLMERE_AVX2 inline __m256 Values(const UInt8* line, const Picks& picks, const Scale& scale) {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(line));
  const __m256i codes = _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(bytes), Table32(&picks));
  return _mm256_add_ps(_mm256_mul_ps(_mm256_cvtepi32_ps(codes), scale.factor), scale.offset);
}

/// The last six of eight values, then two of the next eight.
QUILLMERE_AVX2 inline __m256 Shifted(__m256 values, __m256 next) {
  const __m256 middle = _mm256_permute2f128_ps(values, next, 0x21);
  return _mm256_castsi256_ps(
      _mm256_alignr_epi8(_mm256_castps_si256(middle), _mm256_castps_si256(values), 8));
}

/// The values at even places of one, each with that of another behind it, or those at odd places.
QUILLMERE_AVX2 inline __m256 Evens(__m256 values, __m256 others) {
  const __m256i moved = _mm256_slli_epi64(_mm256_castps_si256(others), 32);
  return _mm256_blend_ps(values, _mm256_castsi256_ps(moved), 0xAA);
}
QUILLMERE_AVX2 inline __m256 Odds(__m256 values, __m256 others) {
  const __m256i moved = _mm256_srli_epi64(_mm256_castps_si256(values), 32);
  return _mm256_blend_ps(_mm256_castsi256_ps(moved), others, 0xAA);
}

template <bool interpolate>
QUILLMERE_AVX2 void Read(std::ptrdiff_t count, const UInt8* line, const Reading& reading,
                         const FloatLines& to) {
  const Scale luma = {_mm256_set1_ps(reading.luma_scale), _mm256_set1_ps(reading.luma_offset)};
  const Scale chroma = {_mm256_set1_ps(reading.chroma_scale),
                        _mm256_set1_ps(reading.chroma_offset)};
  __m256 even = Values(line, kChroma, chroma);
  for (std::ptrdiff_t x = 0; x < count; x += kPixels, line += 2 * kPixels) {
    const __m256 next = Values(line + 2 * kPixels, kChroma, chroma);
    const __m256 behind = Shifted(even, next);
    const __m256 mean = _mm256_mul_ps(_mm256_add_ps(even, behind), _mm256_set1_ps(0.5F));
    const __m256 odd = interpolate ? mean : behind;
    _mm256_storeu_ps(to.y + x, Values(line, kLuma, luma));
    _mm256_storeu_ps(to.cb + x, Evens(even, odd));
    _mm256_storeu_ps(to.cr + x, Odds(even, odd));
    even = next;
  }
}

/// Codes of 32 bits. What is no number is 0.
QUILLMERE_AVX2 inline __m256i ToCodes(__m256 values, const Scale& scale) {
  __m256 codes = _mm256_add_ps(_mm256_mul_ps(values, scale.factor), scale.offset);
  codes = _mm256_add_ps(codes, _mm256_set1_ps(0.5F));
  codes = _mm256_min_ps(_mm256_max_ps(codes, _mm256_setzero_ps()), _mm256_set1_ps(255));
  return _mm256_cvttps_epi32(codes);
}

struct WritingScales {
  Scale luma, chroma;
};

/// Eight pixels' bytes, chroma and luma, in the lower half of 32 bits each.
QUILLMERE_AVX2 inline __m256i ToPixels(const FloatLines& from, std::ptrdiff_t x,
                                       const WritingScales& scales) {
  const __m256 chroma = Evens(_mm256_loadu_ps(from.cb + x), _mm256_loadu_ps(from.cr + x));
  const __m256i luma = ToCodes(_mm256_loadu_ps(from.y + x), scales.luma);
  return _mm256_or_si256(ToCodes(chroma, scales.chroma), _mm256_slli_epi32(luma, 8));
}

QUILLMERE_AVX2 void Write(std::ptrdiff_t count, const FloatLines& from, const Writing& writing,
                          UInt8* line) {
  const WritingScales scales = {
      {_mm256_set1_ps(writing.luma_scale), _mm256_set1_ps(writing.luma_offset)},
      {_mm256_set1_ps(writing.chroma_scale), _mm256_set1_ps(kChromaOffset)}};
  for (std::ptrdiff_t x = 0; x < count; x += 2 * kPixels, line += 4 * kPixels) {
    const __m256i halves =
        _mm256_packus_epi32(ToPixels(from, x, scales), ToPixels(from, x + kPixels, scales));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(line),
                        _mm256_permute4x64_epi64(halves, _MM_SHUFFLE(3, 1, 2, 0)));
  }
}

bool MayUseAvx2() {
  static const bool may = HasAvx2();
  return may;
}

}  // namespace

SInt32 ReadWide(SInt32 width, const UInt8* line, const Reading& reading, bool interpolate,
                const FloatLines& to) {
  if (!MayUseAvx2() || width < 2 * kPixels) return 0;
  const std::ptrdiff_t count =
      (width / kPixels - 1) * kPixels;  // each step looks at the next one's chroma
  (interpolate ? Read<true> : Read<false>)(count, line, reading, to);
  return static_cast<SInt32>(count);
}

SInt32 WriteWide(SInt32 width, const FloatLines& from, const Writing& writing, UInt8* line) {
  if (!MayUseAvx2() || width < 2 * kPixels) return 0;
  const std::ptrdiff_t count = width / (2 * kPixels) * (2 * kPixels);
  Write(count, from, writing, line);
  return static_cast<SInt32>(count);
}

}  // namespace quillmere::color

#else

SInt32 quillmere::color::ReadWide(SInt32, const UInt8*, const Reading&, bool, const FloatLines&) {
  return 0;
}

SInt32 quillmere::color::WriteWide(SInt32, const FloatLines&, const Writing&, UInt8*) {
  return 0;
}

#endif
