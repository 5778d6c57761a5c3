/// Code that is compiled for more than one instruction set.
#pragma once

/// In front of a function: makes a version for wider vectors (AVX2) beside the plain one; which of
/// them runs is settled when the program starts, and all give the same results. The sanitizers
/// aren't up yet when that happens, so a build with one has the plain version alone.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define QUILLMERE_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define QUILLMERE_VECTOR_CLONES
#endif
