#include "edit_lines_private.h"
#include "vector_intrinsics.h"

#ifdef QUILLMERE_AVX512_VBMI

#define QUILLMERE_EDIT_TARGET QUILLMERE_AVX512_VBMI
#define QUILLMERE_EDIT_VECTOR 64
#include "edit_blocks.inc"

quillmere::color::EditPath quillmere::color::EditAvx512() {
  return {HasAvx512Vbmi(), Edit};
}

#else

quillmere::color::EditPath quillmere::color::EditAvx512() {
  return {false, nullptr};
}

#endif
