// Fits, series and interpolation, of ORW_NR_simple.h.

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "ORW_NR_simple.h"
#include "polynomials_private.h"
#include "work_space_private.h"

namespace {

using namespace quillmere::numerics;

constexpr SInt32 kMostDegree = 9;
constexpr SInt32 kPatchWidth = 5;
constexpr SInt32 kMaskBits = 32;
constexpr SInt32 kStride = 4;

/// The pixel of the lowest bit of a mask.
struct PatchPlace {
  explicit PatchPlace(UInt32 mask) : bit(std::countr_zero(mask)) {
    const std::div_t place = std::div(bit, kPatchWidth);
    across = static_cast<float>(place.rem);
    down = static_cast<float>(place.quot);
  }

  SInt32 bit;
  float across = 0;
  float down = 0;
};

template <class Node, class Difference>
float Interpolate(Node node, Difference difference, const float* y, SInt32 n, float x) {
  float value = std::numeric_limits<float>::quiet_NaN();
  if (n < 1 || n > kMostNodes) return value;
  float c[kMostNodes];
  float d[kMostNodes];
  InterpolateByNeville(node, difference, y, n, x, false, c, d, &value, nullptr);
  return value;
}

}  // namespace

SInt32 NR_FitPolyLS(const float* samples, SInt32 count, float* coefficients,
                    SInt32 coefficient_count, float* ratio) {
  return FitPolynomial(samples, count, coefficients, coefficient_count, ratio, NR_svdcmpSPL);
}

SInt32 NR_GetSavitzkiGolayFilter(float* taps, SInt32 count, SInt32 coefficient_count) {
  return MakeSmoothingTaps(taps, count, coefficient_count, NR_FitPolyLS);
}

SInt32 NR_FitGradient2D(const UInt8* samples, UInt32 mask, float sigma, float* coefficients,
                        SInt32* residuals, float* chi_square) {
  float matrix[(kMaskBits + 1) * kStride];
  float right[kStride * kStride];
  float w[kStride];
  float b[kMaskBits + 1];
  SInt32 rows = 0;
  float* row = matrix;
  for (UInt32 rest = mask; rest != 0; rest &= rest - 1) {
    const PatchPlace place(rest);
    row += kStride;
    row[1] = 1;
    row[2] = place.across;
    row[3] = place.down;
    b[++rows] = samples[place.bit];
  }
  const SInt32 status = NR_svdcmpSPL4(matrix, rows, 3, w, right);
  if (status != noErr) return status;
  Truncate(w + 1, 3);
  NR_svbksbSPL4(matrix, w, right, rows, 3, b, coefficients);
  *chi_square = 0;
  for (UInt32 rest = mask; rest != 0; rest &= rest - 1) {
    const PatchPlace place(rest);
    const float d = static_cast<float>(samples[place.bit]) - coefficients[1] -
                    coefficients[2] * place.across - coefficients[3] * place.down;
    residuals[place.bit] = static_cast<SInt32>(std::trunc(static_cast<double>(d) + 0.5));
    *chi_square += d * d / (sigma * sigma);
  }
  return noErr;
}

void NR_fitEquiDistInts(const SInt32* samples, SInt32 count, float* intercept, float* slope,
                        float* deviation) {
  if (count <= 0) return;
  const auto n = static_cast<float>(count);
  const float mean = (n - 1) / 2;
  float sum = 0;
  float moment = 0;
  float squares = 0;
  for (SInt32 i = 0; i < count; ++i) {
    const float t = static_cast<float>(i) - mean;
    const auto y = static_cast<float>(samples[i]);
    sum += y;
    moment += t * y;
    squares += t * t;
  }
  *slope = moment / squares;
  *intercept = (sum - n * mean * *slope) / n;
  *deviation = 0;
  for (SInt32 i = 0; i < count; ++i)
    *deviation +=
        std::fabs(static_cast<float>(samples[i]) - *intercept - static_cast<float>(i) * *slope);
  *deviation /= n;
}

void NR_chebft(float a, float b, float* coefficients, SInt32 count, float (*function)(float)) {
  if (count <= 0) return;
  const WorkVector values(0, count - 1);
  MakeChebyshevSeries(a, b, coefficients, count, function, values.get());
}

float NR_chebev(float a, float b, const float* coefficients, SInt32 count, float x) {
  return EvaluateChebyshev(a, b, coefficients, count, x);
}

SInt32 NR_FindPolyApprToFuncOnInterval(float a, float b, float (*function)(float),
                                       float relative_limit, SInt32 points, SInt32 most,
                                       SInt32* count, float* out) {
  return ApproximateByPolynomial(a, b, function, relative_limit, 0.0F, points, most, count, out,
                                 NR_chebev);
}

float NR_polintEq(float first_x, float spacing, const float* y, SInt32 n, float x) {
  return Interpolate([=](SInt32 i) { return first_x + static_cast<float>(i) * spacing; },
                     [=](SInt32 i, SInt32 j) { return static_cast<float>(i - j) * spacing; }, y, n,
                     x);
}

float NR_polintNV(const float* nodes, const float* y, SInt32 n, float x) {
  return Interpolate([=](SInt32 i) { return nodes[i]; },
                     [=](SInt32 i, SInt32 j) { return (nodes[i] - x) - (nodes[j] - x); }, y, n, x);
}

void NR_polcoeSPL(const float* y, SInt32 degree, float* coefficients) {
  if (degree < 0 || degree > kMostDegree) return;
  float master[kMostDegree + 1];
  CoefficientsOfInterpolation([](SInt32 i) { return static_cast<float>(i); }, y, degree,
                              coefficients, master);
}

float NR_NevillInterpolation4(const float* y, float x) {
  const float p01 = -x * y[0] + (1 + x) * y[1];
  const float p12 = (1 - x) * y[1] + x * y[2];
  const float p23 = (2 - x) * y[2] + (x - 1) * y[3];
  const float p012 = 0.5F * ((1 - x) * p01 + (1 + x) * p12);
  const float p123 = 0.5F * ((2 - x) * p12 + x * p23);
  return 0.33333334F * ((2 - x) * p012 + (1 + x) * p123);
}
