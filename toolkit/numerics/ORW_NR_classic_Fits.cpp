// Fits of models and lines, and probabilities, of ORW_NR_classic.h.

#include <algorithm>
#include <cmath>

#include "NR_Util.h"
#include "ORW_NR_classic.h"
#include "work_space_private.h"

namespace {

using namespace quillmere::numerics;

constexpr float kFirstLambda = 0.001F;
constexpr float kLambdaOnSuccess = 0.1F;
constexpr float kLambdaOnFailure = 10;
constexpr int kMostTerms = 100;
constexpr float kRelativeTerm = 3e-7F;
constexpr float kLeastTerm = 1e-30F;

/// The fit under way, from NR_vector and NR_matrix.
float** oneda = nullptr;
float* da = nullptr;
float* beta = nullptr;
float* atry = nullptr;
float ochisq = 0;
SInt32 mfit = 0;

void ReleaseFit(SInt32 ma) {
  NR_free_matrix(oneda, 1, mfit, 1, 1);
  NR_free_vector(da, 1, ma);
  NR_free_vector(beta, 1, ma);
  NR_free_vector(atry, 1, ma);
  oneda = nullptr;
  da = beta = atry = nullptr;
}

struct Line {
  float intercept;
  float slope;
  float sigma_intercept;
  float sigma_slope;
};

/// The line through `n` points; the i-th stands at x(i), y(i) with the standard deviation sig(i).
template <class X, class Y, class Sig>
Line FitLine(SInt32 n, X x, Y y, Sig sig) {
  float weights = 0;
  float sum_x = 0;
  float sum_y = 0;
  for (SInt32 i = 0; i < n; ++i) {
    const float weight = 1 / (sig(i) * sig(i));
    weights += weight;
    sum_x += x(i) * weight;
    sum_y += y(i) * weight;
  }
  const float mean = sum_x / weights;
  float squares = 0;
  float slope = 0;
  for (SInt32 i = 0; i < n; ++i) {
    const float t = (x(i) - mean) / sig(i);
    squares += t * t;
    slope += t * y(i) / sig(i);
  }
  slope /= squares;
  return {(sum_y - sum_x * slope) / weights, slope,
          std::sqrt((1 + sum_x * sum_x / (weights * squares)) / weights), std::sqrt(1 / squares)};
}

template <class X, class Y, class Sig>
float ChiSquare(const Line& line, SInt32 n, X x, Y y, Sig sig) {
  float sum = 0;
  for (SInt32 i = 0; i < n; ++i) {
    const float d = (y(i) - line.intercept - line.slope * x(i)) / sig(i);
    sum += d * d;
  }
  return sum;
}

constexpr auto kSameWeights = [](SInt32) { return 1.0F; };

/// An unweighted line, its deviations taken from the scatter of the points.
template <class X, class Y>
Line FitScatteredLine(SInt32 n, X x, Y y, float* chi_square) {
  Line line = FitLine(n, x, y, kSameWeights);
  *chi_square = ChiSquare(line, n, x, y, kSameWeights);
  const float scatter = std::sqrt(*chi_square / static_cast<float>(n - 2));
  line.sigma_intercept *= scatter;
  line.sigma_slope *= scatter;
  return line;
}

void Store(const Line& line, float* intercept, float* slope, float* sigma_intercept,
           float* sigma_slope) {
  *intercept = line.intercept;
  *slope = line.slope;
  *sigma_intercept = line.sigma_intercept;
  *sigma_slope = line.sigma_slope;
}

float PearsonTerm(float bin, float expected) {
  return (bin - expected) * (bin - expected) / expected;
}

}  // namespace

void NR_mrqmin(const float* x, const float* y, const float* sig, SInt32 ndata, float* a,
               const SInt32* ia, SInt32 ma, float* const* covar, float* const* alpha,
               float* chi_square, NR_ModelFunction model, float* lambda) {
  if (*lambda < 0) {
    ReleaseFit(ma);
    atry = NR_vector(1, ma);
    beta = NR_vector(1, ma);
    da = NR_vector(1, ma);
    mfit = static_cast<SInt32>(std::count_if(ia + 1, ia + ma + 1, [](SInt32 i) { return i != 0; }));
    oneda = NR_matrix(1, mfit, 1, 1);
    *lambda = kFirstLambda;
    NR_mrqcof(x, y, sig, ndata, a, ia, ma, alpha, beta, chi_square, model);
    ochisq = *chi_square;
    std::copy_n(a + 1, ma, atry + 1);
  }
  for (SInt32 j = 1; j <= mfit; ++j) {
    std::copy_n(alpha[j] + 1, mfit, covar[j] + 1);
    covar[j][j] = alpha[j][j] * (1 + *lambda);
    oneda[j][1] = beta[j];
  }
  NR_gaussj(covar, mfit, oneda, 1);
  for (SInt32 j = 1; j <= mfit; ++j)
    da[j] = oneda[j][1];
  if (*lambda == 0) {
    NR_covsrt(covar, ma, ia, mfit);
    NR_covsrt(alpha, ma, ia, mfit);
    ReleaseFit(ma);
    return;
  }
  SInt32 fitted = 0;
  for (SInt32 l = 1; l <= ma; ++l) {
    if (ia[l] != 0) atry[l] = a[l] + da[++fitted];
  }
  NR_mrqcof(x, y, sig, ndata, atry, ia, ma, covar, da, chi_square, model);
  if (*chi_square < ochisq) {
    *lambda *= kLambdaOnSuccess;
    ochisq = *chi_square;
    for (SInt32 j = 1; j <= mfit; ++j) {
      std::copy_n(covar[j] + 1, mfit, alpha[j] + 1);
      beta[j] = da[j];
    }
    std::copy_n(atry + 1, ma, a + 1);
  } else {
    *lambda *= kLambdaOnFailure;
    *chi_square = ochisq;
  }
}

void NR_mrqcof(const float* x, const float* y, const float* sig, SInt32 ndata, float* a,
               const SInt32* ia, SInt32 ma, float* const* alpha, float* slopes, float* chi_square,
               NR_ModelFunction model) {
  const WorkVector derivatives(1, ma);
  // The places of the fitted parameters.
  const WorkVector<SInt32> places(1, ma);
  SInt32 count = 0;
  for (SInt32 l = 1; l <= ma; ++l) {
    if (ia[l] != 0) places[++count] = l;
  }
  for (SInt32 j = 1; j <= count; ++j) {
    std::fill_n(alpha[j] + 1, j, 0.0F);
    slopes[j] = 0;
  }
  *chi_square = 0;
  for (SInt32 i = 1; i <= ndata; ++i) {
    float value = 0;
    model(x[i], a, &value, derivatives.get(), ma);
    const float weight = 1 / (sig[i] * sig[i]);
    const float d = y[i] - value;
    for (SInt32 j = 1; j <= count; ++j) {
      const float weighted = derivatives[places[j]] * weight;
      for (SInt32 k = 1; k <= j; ++k)
        alpha[j][k] += weighted * derivatives[places[k]];
      slopes[j] += d * weighted;
    }
    *chi_square += d * d * weight;
  }
  for (SInt32 j = 2; j <= count; ++j)
    for (SInt32 k = 1; k < j; ++k)
      alpha[k][j] = alpha[j][k];
}

void NR_covsrt(float* const* covar, SInt32 ma, const SInt32* ia, SInt32 fitted) {
  for (SInt32 i = fitted + 1; i <= ma; ++i)
    for (SInt32 j = 1; j <= i; ++j)
      covar[i][j] = covar[j][i] = 0;
  SInt32 k = fitted;
  for (SInt32 j = ma; j >= 1; --j) {
    if (ia[j] == 0) continue;
    for (SInt32 i = 1; i <= ma; ++i)
      std::swap(covar[i][k], covar[i][j]);
    std::swap_ranges(covar[k] + 1, covar[k] + ma + 1, covar[j] + 1);
    --k;
  }
}

void NR_fit(const float* x, const float* y, SInt32 ndata, const float* sig, Boolean use_sig,
            float* intercept, float* slope, float* sigma_intercept, float* sigma_slope,
            float* chi_square, float* q) {
  const auto at = [=](SInt32 i) { return x[i + 1]; };
  const auto value = [=](SInt32 i) { return y[i + 1]; };
  *q = 1;
  Line line{};
  if (use_sig) {
    const auto deviation = [=](SInt32 i) { return sig[i + 1]; };
    line = FitLine(ndata, at, value, deviation);
    *chi_square = ChiSquare(line, ndata, at, value, deviation);
    if (ndata > 2) *q = NR_gammq(0.5F * static_cast<float>(ndata - 2), 0.5F * *chi_square);
  } else {
    line = FitScatteredLine(ndata, at, value, chi_square);
  }
  Store(line, intercept, slope, sigma_intercept, sigma_slope);
}

void NR_fitNoMWT(float first_x, float step, const float* y, SInt32 ndata, float* intercept,
                 float* slope, float* sigma_intercept, float* sigma_slope) {
  float chi_square = 0;
  const Line line = FitScatteredLine(
      ndata, [=](SInt32 i) { return first_x + static_cast<float>(i) * step; },
      [=](SInt32 i) { return y[i + 1]; }, &chi_square);
  Store(line, intercept, slope, sigma_intercept, sigma_slope);
}

void NR_fitPts(const float* x, const float* y, SInt32 n, float* intercept, float* slope) {
  const Line line = FitLine(
      n, [=](SInt32 i) { return x[i]; }, [=](SInt32 i) { return y[i]; }, kSameWeights);
  *intercept = line.intercept;
  *slope = line.slope;
}

void NR_chsone(const float* bins, const float* expected, SInt32 nbins, SInt32 constraints,
               float* degrees, float* chi_square, float* probability) {
  *degrees = static_cast<float>(nbins - constraints);
  *chi_square = 0;
  for (SInt32 j = 1; j <= nbins; ++j) {
    if (expected[j] <= 0) NR_nrerror("Bad expected number in chsone");
    *chi_square += PearsonTerm(bins[j], expected[j]);
  }
  *probability = NR_gammq(0.5F * *degrees, 0.5F * *chi_square);
}

float NR_ChiSquaredOne(const float* bins, const float* expected, SInt32 nbins) {
  float chi_square = 0;
  for (SInt32 j = 0; j < nbins; ++j)
    chi_square += PearsonTerm(bins[j], expected[j]);
  return NR_gammq(0.5F * static_cast<float>(nbins - 1), 0.5F * chi_square);
}

float NR_gammq(float a, float x) {
  float value = 0;
  float log_gamma = 0;
  if (x < a + 1) {
    NR_gser(&value, a, x, &log_gamma);
    return 1 - value;
  }
  NR_gcf(&value, a, x, &log_gamma);
  return value;
}

void NR_gser(float* value, float a, float x, float* log_gamma) {
  *log_gamma = NR_gammln(a);
  float denominator = a;
  float term = 1 / a;
  float sum = term;
  for (int n = 0; n < kMostTerms; ++n) {
    denominator += 1;
    term *= x / denominator;
    sum += term;
    if (std::fabs(term) < std::fabs(sum) * kRelativeTerm) {
      *value = sum * std::exp(-x + a * std::log(x) - *log_gamma);
      return;
    }
  }
}

void NR_gcf(float* value, float a, float x, float* log_gamma) {
  const auto away_from_zero = [](float v) { return std::fabs(v) < kLeastTerm ? kLeastTerm : v; };
  *log_gamma = NR_gammln(a);
  float b = x + 1 - a;
  float c = 1 / kLeastTerm;
  float d = 1 / b;
  float h = d;
  for (int i = 1; i <= kMostTerms; ++i) {
    const auto n = static_cast<float>(i);
    const float numerator = -n * (n - a);
    b += 2;
    d = 1 / away_from_zero(numerator * d + b);
    c = away_from_zero(b + numerator / c);
    const float factor = d * c;
    h *= factor;
    if (std::fabs(factor - 1) < kRelativeTerm) break;
  }
  *value = std::exp(-x + a * std::log(x) - *log_gamma) * h;
}

float NR_gammln(float x) {
  constexpr double kCoefficients[] = {76.18009172947146,    -86.50532032941678,
                                      24.01409824083091,    -1.231739572450155,
                                      0.001208650973866179, -5.395239384953e-06};
  const auto at = static_cast<double>(x);
  const double shifted = at + 5.5;
  double series = 1.000000000190015;
  double denominator = at;
  for (const double coefficient : kCoefficients)
    series += coefficient / ++denominator;
  return static_cast<float>((at + 0.5) * std::log(shifted) - shifted +
                            std::log(2.5066282746310007 * series / at));
}
