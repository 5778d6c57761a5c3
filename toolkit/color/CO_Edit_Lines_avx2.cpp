#include "edit_lines_private.h"
#include "vector_intrinsics.h"

#ifdef QUILLMERE_AVX2

#define QUILLMERE_EDIT_TARGET QUILLMERE_AVX2
#define QUILLMERE_EDIT_VECTOR 32
#include "edit_blocks.inc"

quillmere::color::EditPath quillmere::color::EditAvx2() {
  return {HasAvx2(), Edit};
}

#else

quillmere::color::EditPath quillmere::color::EditAvx2() {
  return {false, nullptr};
}

#endif
