#include "ORW_NR_simple.h"

#include <limits>

#include "decomposition_private.h"
#include "solvers_private.h"
#include "vector_clones.h"

namespace {

using namespace quillmere::numerics;

QUILLMERE_VECTOR_CLONES SInt32 Decompose(float* a, std::size_t m, std::size_t n, float* w,
                                         float* v) {
  return DecomposeRowMajor(a, m, n, w, v);
}

constexpr std::size_t kAnyNumber = std::numeric_limits<SInt32>::max();

/// The matrix whose element (1, 1) stands at stride + 1.
template <std::size_t stride, class T>
Strided<T> FromOne(T* matrix) {
  return {matrix + stride + 1, stride};
}

template <std::size_t stride>
void BackSubstituteFromOne(const float* u, const float* w, const float* v, SInt32 m, SInt32 n,
                           const float* b, float* x) {
  if (!Fits(m, n, kAnyNumber, stride - 1)) return;
  float work[stride - 1];
  BackSubstitute(FromOne<stride>(u), w + 1, FromOne<stride>(v), static_cast<std::size_t>(m),
                 static_cast<std::size_t>(n), b + 1, x + 1, work);
}

}  // namespace

SInt32 NR_svdcmpSPL(float* a, SInt32 m, SInt32 n, float* w, float* v) {
  if (!Fits(m, n, kMostColumns, kMostColumns)) return paramErr;
  return Decompose(a, static_cast<std::size_t>(m), static_cast<std::size_t>(n), w, v);
}

SInt32 NR_svdcmpSPLnew(float* const* a, SInt32 m, SInt32 n, float* w, float* const* v) {
  if (!Fits(m, n, kAnyNumber, kMostColumns)) return paramErr;
  return DecomposeInPlace<float, kMostColumns>(RowPointers<float>{a, 0}, m, n, w,
                                               RowPointers<float>{v, 0});
}

SInt32 NR_svdcmpSPL4(float* a, SInt32 m, SInt32 n, float* w, float* v) {
  if (!Fits(m, n, kAnyNumber, 3)) return paramErr;
  return DecomposeInPlace<float, 3>(FromOne<4>(a), m, n, w + 1, FromOne<4>(v));
}

void NR_svbksbSPL(const float* u, const float* w, const float* v, SInt32 m, SInt32 n,
                  const float* b, float* x) {
  BackSubstituteRowMajor(u, w, v, m, n, b, x);
}

void NR_svbksbSPLnew(const float* const* u, const float* w, const float* const* v, float* work,
                     SInt32 m, SInt32 n, const float* b, float* x) {
  if (!Fits(m, n, kAnyNumber, kAnyNumber)) return;
  BackSubstitute(RowPointers<const float>{u, 0}, w, RowPointers<const float>{v, 0},
                 static_cast<std::size_t>(m), static_cast<std::size_t>(n), b, x, work);
}

void NR_svbksbSPL4(const float* u, const float* w, const float* v, SInt32 m, SInt32 n,
                   const float* b, float* x) {
  BackSubstituteFromOne<4>(u, w, v, m, n, b, x);
}

void NR_svbksbSPL5(const float* u, const float* w, const float* v, SInt32 m, SInt32 n,
                   const float* b, float* x) {
  BackSubstituteFromOne<5>(u, w, v, m, n, b, x);
}

SInt32 NR_gaussjSPL(float* const* a, SInt32 n, float* const* b, SInt32 m, SInt32* columns,
                    SInt32* rows, SInt32* marks) {
  if (!Fits(m, n, kAnyNumber, kAnyNumber)) return paramErr;
  const Elimination result =
      EliminateFully(TableFromOne<float>{a}, static_cast<std::size_t>(n), TableFromOne<float>{b},
                     static_cast<std::size_t>(m), columns + 1, rows + 1, marks + 1);
  return result == Elimination::kDone ? noErr : NR_SingMatrixErr;
}

SInt32 NR_SolveLinEq2(float* a, float* b) {
  constexpr std::size_t kSize = 2;
  const StrideFromOne rows{a, 3};
  SInt32 index[kSize];
  float scales[kSize];
  float parity = 1;
  int zero_rows = 0;
  bool zero_pivot = false;
  DecomposeLU(rows, kSize, index, &parity, scales, &zero_pivot, [&] { ++zero_rows; });
  SolveLU(rows, kSize, index, b + 1);
  if (zero_rows == kSize) b[1] = b[2] = std::numeric_limits<float>::quiet_NaN();
  return zero_pivot || zero_rows > 0 ? NR_SingMatrixErr : noErr;
}

float NR_pythag(float a, float b) {
  return Hypotenuse(a, b);
}
