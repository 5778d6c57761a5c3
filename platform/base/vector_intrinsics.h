/// Code for AVX2 and for AVX-512 with VBMI. It is compiled for them function by function, so that
/// the program starts on any processor; HasAvx2 and HasAvx512Vbmi tell if it may be called.
#pragma once

#if defined(__x86_64__) && defined(__GNUC__)

// GCC 12 takes its own intrinsics' undefined vectors for mistakes.
#ifndef __clang__
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#ifndef __clang__
#pragma GCC diagnostic pop
#endif

#define QUILLMERE_AVX2 __attribute__((target("avx2")))
#define QUILLMERE_AVX512_VBMI __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi")))

namespace quillmere {

inline bool HasAvx2() {
  return __builtin_cpu_supports("avx2") != 0;
}

inline bool HasAvx512Vbmi() {
  return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
         __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512vbmi") != 0;
}

/// A constant of 32 bytes, aligned to them.
QUILLMERE_AVX2 inline __m256i Table32(const void* table) {
  return _mm256_load_si256(static_cast<const __m256i*>(table));
}

/// 16 bytes from each of two places.
QUILLMERE_AVX2 inline __m256i LoadHalves(const void* low, const void* high) {
  const __m128i first = _mm_loadu_si128(static_cast<const __m128i*>(low));
  const __m128i second = _mm_loadu_si128(static_cast<const __m128i*>(high));
  return _mm256_inserti128_si256(_mm256_castsi128_si256(first), second, 1);
}

/// A constant of 64 bytes, aligned to them.
QUILLMERE_AVX512_VBMI inline __m512i Table64(const void* table) {
  return _mm512_load_si512(table);
}

}  // namespace quillmere

#endif
