#include "ORW_NR_double.h"

#include "decomposition_private.h"

namespace {

using namespace quillmere::numerics;

/// The default build and one for wider vectors, chosen when the program starts; both give the same.
__attribute__((target_clones("avx2", "default"))) SInt32 Decompose(double* a, std::size_t m,
                                                                   std::size_t n, double* w,
                                                                   double* v) {
  return DecomposeRowMajor(a, m, n, w, v);
}

}  // namespace

SInt32 NR_svdcmpSPL_d(double* a, SInt32 m, SInt32 n, double* w, double* v) {
  if (!Fits(m, n, kMostColumns, kMostColumns)) return paramErr;
  return Decompose(a, static_cast<std::size_t>(m), static_cast<std::size_t>(n), w, v);
}

void NR_svbksbSPL_d(const double* u, const double* w, const double* v, SInt32 m, SInt32 n,
                    const double* b, double* x) {
  BackSubstituteRowMajor(u, w, v, m, n, b, x);
}

double NR_pythag_d(double a, double b) {
  return Hypotenuse(a, b);
}
