/// Polynomial fits, Chebyshev series and Neville's interpolation for both precisions.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "base_types.h"
#include "decomposition_private.h"

namespace quillmere::numerics {

inline constexpr std::size_t kMostFitSamples = 16;
inline constexpr SInt32 kMostTerms = 30;
inline constexpr SInt32 kMostNodes = 8;
inline constexpr double kPi = 3.14159265358979;

/// The value of a polynomial, powers made by repeated multiplication.
template <class T>
T PolynomialAt(const T* coefficients, SInt32 count, T x) {
  T sum = 0;
  T power = 1;
  for (SInt32 k = 0; k < count; ++k) {
    sum += coefficients[k] * power;
    power *= x;
  }
  return sum;
}

/// The fit of NR_FitPolyLS; `decompose` and `solve` work on row-major blocks.
template <class T>
SInt32 FitPolynomial(const T* samples, SInt32 count, T* coefficients, SInt32 coefficient_count,
                     T* ratio, SInt32 (*decompose)(T*, SInt32, SInt32, T*, T*)) {
  if (!Fits(count, coefficient_count, kMostFitSamples, kMostFitSamples)) return paramErr;
  if (count == 0 || coefficient_count == 0) return paramErr;
  T matrix[kMostFitSamples * kMostFitSamples];
  T right[kMostFitSamples * kMostFitSamples];
  T w[kMostFitSamples];
  for (SInt32 i = 0; i < count; ++i) {
    T power = 1;
    for (SInt32 k = 0; k < coefficient_count; ++k) {
      matrix[i * coefficient_count + k] = power;
      power *= static_cast<T>(i);
    }
  }
  const SInt32 status = decompose(matrix, count, coefficient_count, w, right);
  if (status != noErr) return status;
  const auto [least, largest] = std::minmax_element(w, w + coefficient_count);
  *ratio = *least / *largest;
  Truncate(w, static_cast<std::size_t>(coefficient_count));
  BackSubstituteRowMajor(matrix, w, right, count, coefficient_count, samples, coefficients);
  return noErr;
}

/// The taps of NR_GetSavitzkiGolayFilter: what a fit by `fit` makes of each unit vector.
template <class T>
SInt32 MakeSmoothingTaps(T* taps, SInt32 count, SInt32 coefficient_count,
                         SInt32 (*fit)(const T*, SInt32, T*, SInt32, T*)) {
  if (!Fits(count, coefficient_count, kMostFitSamples, kMostFitSamples)) return paramErr;
  const T middle = static_cast<T>(count - 1) * static_cast<T>(0.5);
  T unit[kMostFitSamples] = {};
  T coefficients[kMostFitSamples];
  T ratio = 0;
  for (SInt32 i = 0; i < count; ++i) {
    unit[i] = 1;
    const SInt32 status = fit(unit, count, coefficients, coefficient_count, &ratio);
    if (status != noErr) return status;
    taps[i] = PolynomialAt(coefficients, coefficient_count, middle);
    unit[i] = 0;
  }
  return noErr;
}

/// The first `count` coefficients of the Chebyshev series of `function` on a to b, from as many
/// values, which `values` takes.
template <class T>
void MakeChebyshevSeries(T a, T b, T* coefficients, SInt32 count, T (*function)(T), T* values) {
  const T half = (b - a) * static_cast<T>(0.5);
  const T middle = (b + a) * static_cast<T>(0.5);
  for (SInt32 k = 0; k < count; ++k) {
    const double y = std::cos(kPi * (k + 0.5) / count);
    values[k] = function(static_cast<T>(y) * half + middle);
  }
  for (SInt32 j = 0; j < count; ++j) {
    double sum = 0;
    for (SInt32 k = 0; k < count; ++k)
      sum += static_cast<double>(values[k]) * std::cos(kPi * j * (k + 0.5) / count);
    coefficients[j] = static_cast<T>(2.0 / count * sum);
  }
}

/// Clenshaw's recurrence; +infinity outside a to b.
template <class T>
T EvaluateChebyshev(T a, T b, const T* coefficients, SInt32 count, T x) {
  if ((x - a) * (x - b) > 0) return std::numeric_limits<T>::infinity();
  const T y = (2 * x - a - b) / (b - a);
  T d = 0;
  T dd = 0;
  for (SInt32 j = count - 1; j > 0; --j) {
    const T before = d;
    d = 2 * y * d - dd + coefficients[j];
    dd = before;
  }
  return y * d - dd + static_cast<T>(0.5) * (count > 0 ? coefficients[0] : T{0});
}

/// Turns `count` terms of a series on a to b into powers of x.
template <class T>
void ChebyshevToPowers(T a, T b, const T* series, SInt32 count, T* out) {
  const T m = (a + b) / 2;
  const T h = (b - a) / 2;
  T last[kMostTerms] = {};
  T current[kMostTerms] = {1};
  std::fill_n(out, count, T{0});
  out[0] = static_cast<T>(-0.5) * series[0];
  for (SInt32 k = 0; k < count; ++k) {
    for (SInt32 i = 0; i <= k; ++i)
      out[i] += series[k] * current[i];
    // The recurrence starts with half of the usual step.
    const T step = (k == 0 ? T{1} : T{2}) / h;
    for (SInt32 i = std::min(k + 1, kMostTerms - 1); i >= 0; --i) {
      const T next = step * ((i > 0 ? current[i - 1] : T{0}) - m * current[i]) - last[i];
      last[i] = current[i];
      current[i] = next;
    }
  }
}

/// The larger of two errors, not-a-number if one is.
template <class T>
T LargerError(T largest, T error) {
  return error > largest || std::isnan(error) ? error : largest;
}

/// Finds the shortest series on a to b whose error at the test points is below the limit; see
/// NR_FindPolyApprToFuncOnInterval_d.
template <class T>
SInt32 ApproximateByPolynomial(T a, T b, T (*function)(T), T relative_limit, T absolute_limit,
                               SInt32 points, SInt32 most, SInt32* out_count, T* out,
                               float (*evaluate)(T, T, const T*, SInt32, T)) {
  if (points < 1 || most < 1 || function == nullptr || out == nullptr || !(a < b)) return paramErr;
  const auto point = [&](SInt32 i) {
    return a + (static_cast<T>(i) + static_cast<T>(0.5)) * (b - a) / static_cast<T>(points);
  };
  T series[kMostTerms];
  T values[kMostTerms];
  MakeChebyshevSeries(a, b, series, kMostTerms, function, values);
  T limit = absolute_limit;
  if (relative_limit != 0) {
    T largest = 0;
    for (SInt32 i = 0; i < points; ++i)
      largest = LargerError(largest, std::fabs(function(point(i))));
    limit = relative_limit * largest;
  }
  most = std::min(most, kMostTerms);
  SInt32 count = 0;
  T error = 0;
  do {
    ++count;
    error = 0;
    for (SInt32 i = 0; i < points; ++i) {
      const T x = point(i);
      const T approximate = static_cast<T>(evaluate(a, b, series, count, x));
      error = LargerError(error, std::fabs(approximate - function(x)));
    }
  } while (error > limit && count + 1 <= most);
  *out_count = count;
  if (!(limit > error)) return NR_LackingPrecisionErr;
  ChebyshevToPowers(a, b, series, count, out);
  return noErr;
}

/// Neville's tableau: the value at x of the polynomial through n nodes, and the last correction
/// that it takes (may be null). `node(i)` is the place of node i, `difference(i, j)` that of i less
/// that of j. `c` and `d` are work space of n. False if two nodes are equal and `checked`.
template <class Node, class Difference>
bool InterpolateByNeville(Node node, Difference difference, const float* y, SInt32 n, float x,
                          bool checked, float* c, float* d, float* value, float* correction) {
  SInt32 nearest = 0;
  for (SInt32 i = 0; i < n; ++i) {
    if (std::fabs(x - node(i)) < std::fabs(x - node(nearest))) nearest = i;
    c[i] = d[i] = y[i];
  }
  float sum = y[nearest];
  float last = 0;
  SInt32 below = nearest - 1;
  for (SInt32 m = 1; m < n; ++m) {
    for (SInt32 i = 0; i < n - m; ++i) {
      const float left = node(i) - x;
      const float right = node(i + m) - x;
      const float gap = difference(i, i + m);
      if (checked && gap == 0) return false;
      const float quotient = (c[i + 1] - d[i]) / gap;
      d[i] = right * quotient;
      c[i] = left * quotient;
    }
    last = 2 * (below + 1) < n - m ? c[below + 1] : d[below--];
    sum += last;
  }
  *value = sum;
  if (correction != nullptr) *correction = last;
  return true;
}

/// The coefficients of the polynomial through degree + 1 nodes, divided out of the master
/// polynomial (the product of all x - node). `master` is work space of degree + 1.
template <class Node>
void CoefficientsOfInterpolation(Node node, const float* y, SInt32 degree, float* coefficients,
                                 float* master) {
  std::fill_n(coefficients, degree + 1, 0.0F);
  std::fill_n(master, degree + 1, 0.0F);
  // master[k] is the coefficient of x^k; that of x^(degree + 1) is 1.
  master[degree] = -node(0);
  for (SInt32 i = 1; i <= degree; ++i) {
    for (SInt32 k = degree - i; k < degree; ++k)
      master[k] -= node(i) * master[k + 1];
    master[degree] -= node(i);
  }
  for (SInt32 j = 0; j <= degree; ++j) {
    const float x = node(j);
    auto derivative = static_cast<float>(degree + 1);
    for (SInt32 k = degree; k > 0; --k)
      derivative = static_cast<float>(k) * master[k] + x * derivative;
    const float factor = y[j] / derivative;
    float quotient = 1;
    for (SInt32 k = degree; k >= 0; --k) {
      coefficients[k] += quotient * factor;
      quotient = master[k] + x * quotient;
    }
  }
}

}  // namespace quillmere::numerics
