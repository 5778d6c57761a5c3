// Interpolation, of ORW_NR_classic.h.

#include "NR_Util.h"
#include "ORW_NR_classic.h"
#include "polynomials_private.h"
#include "work_space_private.h"

namespace {

using namespace quillmere::numerics;

constexpr float kNaturalEnd = 9.9e29F;

}  // namespace

void NR_polint(const float* nodes, const float* y, SInt32 n, float x, float* value, float* error) {
  if (n < 1) return;
  const WorkVector c(1, n);
  const WorkVector d(1, n);
  *error = 0;
  const bool distinct = InterpolateByNeville(
      [=](SInt32 i) { return nodes[i + 1]; },
      [=](SInt32 i, SInt32 j) { return (nodes[i + 1] - x) - (nodes[j + 1] - x); }, y + 1, n, x,
      true, &c[1], &d[1], value, error);
  if (!distinct) NR_nrerror("Error in routine polint");
}

void NR_polcoe(const float* nodes, const float* y, SInt32 degree, float* coefficients) {
  if (degree < 0) return;
  const WorkVector master(0, degree);
  CoefficientsOfInterpolation([=](SInt32 i) { return nodes[i]; }, y, degree, coefficients,
                              master.get());
}

void NR_spline(const float* x, const float* y, SInt32 n, float first_slope, float last_slope,
               float* second) {
  if (n < 2) return;
  // The equations are tridiagonal: eliminate downwards, keeping each right side in `work`.
  const WorkVector work(1, n);
  const auto slope = [=](SInt32 i) { return (y[i + 1] - y[i]) / (x[i + 1] - x[i]); };
  const bool natural_start = first_slope > kNaturalEnd;
  second[1] = natural_start ? 0 : -0.5F;
  work[1] = natural_start ? 0 : 3 / (x[2] - x[1]) * (slope(1) - first_slope);
  for (SInt32 i = 2; i < n; ++i) {
    const float part = (x[i] - x[i - 1]) / (x[i + 1] - x[i - 1]);
    const float pivot = part * second[i - 1] + 2;
    second[i] = (part - 1) / pivot;
    work[i] = (6 * (slope(i) - slope(i - 1)) / (x[i + 1] - x[i - 1]) - part * work[i - 1]) / pivot;
  }
  const bool natural_end = last_slope > kNaturalEnd;
  const float factor = natural_end ? 0 : 0.5F;
  const float right = natural_end ? 0 : 3 / (x[n] - x[n - 1]) * (last_slope - slope(n - 1));
  second[n] = (right - factor * work[n - 1]) / (factor * second[n - 1] + 1);
  for (SInt32 i = n - 1; i >= 1; --i)
    second[i] = second[i] * second[i + 1] + work[i];
}

void NR_splint(const float* x, const float* y, const float* second, SInt32 n, float at,
               float* value) {
  if (n < 2) return;
  SInt32 low = 1;
  SInt32 high = n;
  while (high - low > 1) {
    const SInt32 middle = low + (high - low) / 2;
    (x[middle] > at ? high : low) = middle;
  }
  const float h = x[high] - x[low];
  if (h == 0) NR_nrerror("Bad xa input to routine splint");
  const float a = (x[high] - at) / h;
  const float b = (at - x[low]) / h;
  *value = a * y[low] + b * y[high] +
           ((a * a * a - a) * second[low] + (b * b * b - b) * second[high]) * (h * h) / 6;
}
