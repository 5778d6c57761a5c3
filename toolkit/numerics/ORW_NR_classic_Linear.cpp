// Linear equations and fits, of ORW_NR_classic.h.

#include "NR_Util.h"
#include "ORW_NR_classic.h"
#include "decomposition_private.h"
#include "solvers_private.h"
#include "work_space_private.h"

namespace {

using namespace quillmere::numerics;

template <class T>
RowPointers<T> View(T* const* rows) {
  return {rows, 1};
}

}  // namespace

void NR_svdcmp(float* const* a, SInt32 m, SInt32 n, float* w, float* const* v) {
  if (m < 0 || n <= 0) return;
  // With floats alone the stricter test is not always met.
  const WorkVector<double> diagonal(1, n);
  const WorkVector<double> superdiagonal(1, n);
  Decomposition<float, double, RowPointers<float>> decomposition(
      View(a), static_cast<std::size_t>(m), static_cast<std::size_t>(n), &diagonal[1], View(v),
      &superdiagonal[1]);
  if (!decomposition.Run()) NR_nrerror("no convergence in 30 svdcmp iterations");
  for (SInt32 j = 1; j <= n; ++j)
    w[j] = static_cast<float>(diagonal[j]);
}

void NR_svbksb(const float* const* u, const float* w, const float* const* v, SInt32 m, SInt32 n,
               const float* b, float* x) {
  if (m < 0 || n <= 0) return;
  const WorkVector work(1, n);
  BackSubstitute(View(u), w + 1, View(v), static_cast<std::size_t>(m), static_cast<std::size_t>(n),
                 b + 1, x + 1, &work[1]);
}

void NR_svdfit(const float* x, const float* y, const float* sig, SInt32 ndata, float* coefficients,
               SInt32 ma, float* const* u, float* const* v, float* w, float* chi_square,
               NR_BasisFunction basis) {
  if (ndata < 0 || ma <= 0) return;
  const WorkVector b(1, ndata);
  const WorkVector values(1, ma);
  for (SInt32 i = 1; i <= ndata; ++i) {
    basis(x[i], values.get(), ma);
    for (SInt32 j = 1; j <= ma; ++j)
      u[i][j] = values[j] / sig[i];
    b[i] = y[i] / sig[i];
  }
  NR_svdcmp(u, ndata, ma, w, v);
  Truncate(w + 1, static_cast<std::size_t>(ma));
  NR_svbksb(u, w, v, ndata, ma, b.get(), coefficients);
  if (chi_square == nullptr) return;
  *chi_square = 0;
  for (SInt32 i = 1; i <= ndata; ++i) {
    basis(x[i], values.get(), ma);
    float sum = 0;
    for (SInt32 j = 1; j <= ma; ++j)
      sum += coefficients[j] * values[j];
    const float deviation = (y[i] - sum) / sig[i];
    *chi_square += deviation * deviation;
  }
}

void NR_gaussj(float* const* a, SInt32 n, float* const* b, SInt32 m) {
  if (n <= 0 || m < 0) return;
  const WorkVector<SInt32> columns(1, n);
  const WorkVector<SInt32> rows(1, n);
  const WorkVector<SInt32> marks(1, n);
  const Elimination result =
      EliminateFully(TableFromOne<float>{a}, static_cast<std::size_t>(n), TableFromOne<float>{b},
                     static_cast<std::size_t>(m), &columns[1], &rows[1], &marks[1]);
  if (result == Elimination::kNoPivotLeft) NR_nrerror("gaussj: Singular Matrix-1");
  if (result == Elimination::kZeroPivot) NR_nrerror("gaussj: Singular Matrix-2");
}

void NR_ludcmp(float* const* a, SInt32 n, SInt32* index, float* parity) {
  *parity = 1;
  if (n <= 0) return;
  const WorkVector scales(1, n);
  bool zero_pivot = false;
  DecomposeLU(TableFromOne<float>{a}, static_cast<std::size_t>(n), index + 1, parity, &scales[1],
              &zero_pivot, [] { NR_nrerror("Singular matrix in routine ludcmp"); });
}

void NR_lubksb(const float* const* a, SInt32 n, const SInt32* index, float* b) {
  if (n <= 0) return;
  SolveLU(TableFromOne<const float>{a}, static_cast<std::size_t>(n), index + 1, b + 1);
}
