#include "ORW_NR_double.h"

#include "decomposition_private.h"
#include "polynomials_private.h"
#include "vector_clones.h"
#include "work_space_private.h"

namespace {

using namespace quillmere::numerics;

constexpr SInt32 kCubic = 4;  // coefficients

QUILLMERE_VECTOR_CLONES SInt32 Decompose(double* a, std::size_t m, std::size_t n, double* w,
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

SInt32 NR_FitPolyLS_d(const double* samples, SInt32 count, double* coefficients,
                      SInt32 coefficient_count, double* ratio) {
  return FitPolynomial(samples, count, coefficients, coefficient_count, ratio, NR_svdcmpSPL_d);
}

SInt32 NR_GetSavitzkiGolayFilter_d(double* taps, SInt32 count, SInt32 coefficient_count) {
  return MakeSmoothingTaps(taps, count, coefficient_count, NR_FitPolyLS_d);
}

SInt32 NR_MakeLowPassFilter7_d(double* taps) {
  return NR_GetSavitzkiGolayFilter_d(taps, 7, kCubic);
}

SInt32 NR_MakeLowPassFilter9_d(double* taps) {
  double narrow[9] = {};
  const SInt32 status = NR_GetSavitzkiGolayFilter_d(narrow + 1, 7, kCubic);
  if (status != noErr) return status;
  const SInt32 wide_status = NR_GetSavitzkiGolayFilter_d(taps, 9, kCubic);
  if (wide_status != noErr) return wide_status;
  for (int i = 0; i < 9; ++i)
    taps[i] = (taps[i] + narrow[i]) / 2;
  return noErr;
}

SInt32 NR_MakeSubsamplingFilter8_d(double* taps) {
  return NR_GetSavitzkiGolayFilter_d(taps, 8, kCubic);
}

SInt32 NR_MakeSubsamplingFilter6_d(double* taps) {
  return NR_GetSavitzkiGolayFilter_d(taps, 6, kCubic);
}

void NR_chebft_d(double a, double b, double* coefficients, SInt32 count,
                 double (*function)(double)) {
  if (count <= 0) return;
  const WorkVector<double> values(0, count - 1);
  MakeChebyshevSeries(a, b, coefficients, count, function, values.get());
}

float NR_chebev_d(double a, double b, const double* coefficients, SInt32 count, double x) {
  return static_cast<float>(EvaluateChebyshev(a, b, coefficients, count, x));
}

SInt32 NR_FindPolyApprToFuncOnInterval_d(double a, double b, double (*function)(double),
                                         double relative_limit, double absolute_limit,
                                         SInt32 points, SInt32 most, SInt32* count, double* out) {
  return ApproximateByPolynomial(a, b, function, relative_limit, absolute_limit, points, most,
                                 count, out, NR_chebev_d);
}
