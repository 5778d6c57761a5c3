/// Code for AVX-512 with VBMI. It is compiled for that function by function, so that the program
/// starts on any processor; HasAvx512Vbmi tells if it may be called.
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

#define QUILLMERE_AVX512_VBMI __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi")))

namespace quillmere {

inline bool HasAvx512Vbmi() {
  return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
         __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512vbmi") != 0;
}

/// A constant of 64 bytes, aligned to them.
QUILLMERE_AVX512_VBMI inline __m512i Table(const void* table) {
  return _mm512_load_si512(table);
}

}  // namespace quillmere

#endif
