#include <gsl/gsl_cdf.h>
#include <gsl/gsl_chebyshev.h>
#include <gsl/gsl_fit.h>
#include <gsl/gsl_interp.h>
#include <gsl/gsl_multifit.h>
#include <gsl/gsl_sf_gamma.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "NR_Errors.h"
#include "NR_Parabolas.h"
#include "NR_Util.h"
#include "ORW_NR_classic.h"
#include "ORW_NR_double.h"
#include "ORW_NR_simple.h"

namespace {

/// The coefficients of a least-squares polynomial by GSL.
std::vector<double> ReferenceFit(const std::vector<double>& samples, int coefficients) {
  const std::size_t n = samples.size();
  const auto c = static_cast<std::size_t>(coefficients);
  gsl_matrix* x = gsl_matrix_alloc(n, c);
  gsl_matrix* covariances = gsl_matrix_alloc(c, c);
  gsl_vector* result = gsl_vector_alloc(c);
  gsl_multifit_linear_workspace* work = gsl_multifit_linear_alloc(n, c);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t k = 0; k < c; ++k)
      gsl_matrix_set(x, i, k, std::pow(static_cast<double>(i), static_cast<double>(k)));
  const auto y = gsl_vector_const_view_array(samples.data(), n);
  double chi_square = 0;
  gsl_multifit_linear(x, &y.vector, result, covariances, &chi_square, work);
  std::vector<double> out(result->data, result->data + c);
  gsl_multifit_linear_free(work);
  gsl_vector_free(result);
  gsl_matrix_free(covariances);
  gsl_matrix_free(x);
  return out;
}

TEST(PolynomialFits, AgreeWithGsl) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> level(-10, 10);
  for (int n = 4; n <= 7; ++n) {
    for (int c = 1; c <= std::min(n, 4); ++c) {
      SCOPED_TRACE(testing::Message() << n << " samples, " << c << " coefficients");
      std::vector<double> samples(static_cast<std::size_t>(n));
      for (double& s : samples)
        s = level(random);
      const std::vector<float> single(samples.begin(), samples.end());
      const auto expected = ReferenceFit(samples, c);
      double fitted[4];
      float fitted_single[4];
      double ratio = 0;
      float single_ratio = 0;
      ASSERT_EQ(NR_FitPolyLS_d(samples.data(), n, fitted, c, &ratio), noErr);
      ASSERT_EQ(NR_FitPolyLS(single.data(), n, fitted_single, c, &single_ratio), noErr);
      EXPECT_NEAR(ratio, static_cast<double>(single_ratio), 1e-5);
      for (int k = 0; k < c; ++k) {
        EXPECT_NEAR(fitted[k], expected[static_cast<std::size_t>(k)], 1e-10);
        EXPECT_NEAR(static_cast<double>(fitted_single[k]), expected[static_cast<std::size_t>(k)],
                    2e-3);
      }
      if (c != 3) continue;
      float parts[3];
      float older[3];
      const auto fit = n == 4   ? NR_FitPieceOfParabolaTo4
                       : n == 5 ? NR_FitPieceOfParabolaTo5
                                : NR_FitPieceOfParabolaTo7;
      const auto fit_new = n == 4   ? NR_FitPieceOfParabolaTo4_new
                           : n == 5 ? NR_FitPieceOfParabolaTo5_new
                                    : NR_FitPieceOfParabolaTo7_new;
      if (n == 6) continue;
      fit(single.data(), &older[0], &older[1], &older[2]);
      ASSERT_EQ(fit_new(single.data(), parts), noErr);
      for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(parts[k], fitted_single[k], 1e-6);
        EXPECT_NEAR(older[k], fitted_single[k], 1e-3);
      }
      if (n == 5) {
        EXPECT_NEAR(NR_GetCenterValueOf5(single.data()),
                    expected[0] + 2 * expected[1] + 4 * expected[2], 1e-4);
      }
    }
  }
  double out[17] = {};
  double ratio = 0;
  EXPECT_EQ(NR_FitPolyLS_d(out, 17, out, 2, &ratio), paramErr);
}

TEST(Filters, HaveTheirTaps) {
  const struct {
    SInt32 (*make)(double*);
    std::vector<double> taps;
  } cases[] = {
      {NR_MakeLowPassFilter7_d, {-2, 3, 6, 7, 6, 3, -2}},
      {NR_MakeLowPassFilter9_d, {-21, -8, 72, 120, 136, 120, 72, -8, -21}},
      {NR_MakeSubsamplingFilter8_d, {-3, 3, 7, 9, 9, 7, 3, -3}},
      {NR_MakeSubsamplingFilter6_d, {-3, 7, 12, 12, 7, -3}},
  };
  for (const auto& c : cases) {
    double taps[9];
    ASSERT_EQ(c.make(taps), noErr);
    const double whole = std::accumulate(c.taps.begin(), c.taps.end(), 0.0);
    const std::size_t n = c.taps.size();
    for (std::size_t i = 0; i < n; ++i) {
      EXPECT_NEAR(taps[i], c.taps[i] / whole, 1e-14);
      EXPECT_NEAR(taps[i], taps[n - 1 - i], 1e-14);
    }
    EXPECT_NEAR(std::accumulate(taps, taps + n, 0.0), 1, 1e-14);
  }
  float taps[5];
  ASSERT_EQ(NR_GetSavitzkiGolayFilter(taps, 5, 3), noErr);
  for (int i = 0; i < 5; ++i)
    EXPECT_NEAR(taps[i] * 35,
                (std::vector{-3.0, 12.0, 17.0, 12.0, -3.0}[static_cast<std::size_t>(i)]), 1e-4);
}

TEST(Extrema, OfPiecesAndArrays) {
  const struct {
    std::vector<float> samples;
    SInt32 status;
    float position;
  } cases[] = {
      {{2.25F, 0.25F, 0.25F, 2.25F}, noErr, 1.5F},
      {{-2.25F, -0.25F, -0.25F, -2.25F}, noErr, 1.5F},
      {{16, 9, 4, 1}, noErr, 4},
      {{36, 25, 16, 9}, NR_NoClearExtrErr, 4},
      {{1, 4, 9, 16}, NR_NoClearExtrErr, 0},
      {{1, 2, 3, 4, 5}, NR_NoClearExtrErr, 0},
      {{5, 4, 3, 2, 1}, NR_NoClearExtrErr, 4},
      {{4, 1, 0, 1, 4}, noErr, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.samples));
    float position = -1;
    float value = -1;
    const auto get = c.samples.size() == 4 ? NR_GetMinimumFrom4 : NR_GetMinimumFrom5;
    const bool at_end = c.samples[0] == 16;
    const SInt32 status = get(c.samples.data(), &position, &value);
    if (!at_end) {
      EXPECT_EQ(status, c.status);
    }
    EXPECT_NEAR(position, c.position, 1e-4);
    EXPECT_EQ(get(c.samples.data(), nullptr, nullptr), status);
  }
  const float wide[] = {9, 4, 1, 0, 1, 4, 9};
  float position = 0;
  float value = 1;
  NR_GetMinimumFrom7(wide, &position, &value);
  EXPECT_NEAR(position, 3, 1e-5);
  EXPECT_NEAR(value, 0, 1e-4);

  const struct {
    std::vector<float> samples;
    SInt32 status;
    float position;
  } peaks[] = {
      {{0, 3, 8, 9, 6, 1}, noErr, 2.75F},
      {{0, 1, 2, 3}, NR_NoClearExtrErr, -1},
      {{3, 2, 1}, NR_NoClearExtrErr, -1},
      {{}, NR_NoClearExtrErr, -1},
      {{0, 5, 5.5F, 5}, noErr, 2},
      {{-20, 0, 4, 2}, noErr, 13.0F / 6},
      // The neighbours differ more than the left one and the peak: fitted to all four.
      {{-1, 3, 4, 1}, noErr, 1.7F},
  };
  for (const auto& c : peaks) {
    SCOPED_TRACE(testing::PrintToString(c.samples));
    position = -1;
    EXPECT_EQ(
        NR_GetArrayMax(c.samples.data(), static_cast<SInt32>(c.samples.size()), &value, &position),
        c.status);
    EXPECT_NEAR(position, c.position, 1e-3F);
  }
}

TEST(Gradients, FitMaskedPixels) {
  UInt8 samples[32];
  for (int i = 0; i < 32; ++i)
    samples[i] = static_cast<UInt8>(20 + 3 * (i % 5) + 7 * (i / 5));
  for (const UInt32 mask : {0xFFFFFFFFU, 0x01ABCDEFU, 0x23U}) {
    float c[4];
    float chi_square = -1;
    SInt32 residuals[32];
    std::fill_n(residuals, 32, 99);
    ASSERT_EQ(NR_FitGradient2D(samples, mask, 2, c, residuals, &chi_square), noErr);
    EXPECT_NEAR(c[1], 20, 1e-3);
    EXPECT_NEAR(c[2], 3, 1e-3);
    EXPECT_NEAR(c[3], 7, 1e-3);
    EXPECT_NEAR(chi_square, 0, 1e-4);
    for (int i = 0; i < 32; ++i)
      EXPECT_EQ(residuals[i], (mask >> i & 1) != 0 ? 0 : 99);
  }
  samples[12] = static_cast<UInt8>(samples[12] + 50);
  float c[4];
  float chi_square = 0;
  SInt32 residuals[32];
  ASSERT_EQ(NR_FitGradient2D(samples, 0x1FFFFFF, 1, c, residuals, &chi_square), noErr);
  EXPECT_EQ(residuals[12], 48);
  EXPECT_EQ(residuals[0], -1);  // -2 and a half is cut toward zero
  EXPECT_NEAR(chi_square, 48 * 48 + 24 * 4, 0.2);
}

double ExpOf(double x, void*) {
  return std::exp(x);
}

TEST(ChebyshevSeries, AgreeWithGslAndKeepTheirPromise) {
  gsl_cheb_series* reference = gsl_cheb_alloc(11);
  gsl_function function{ExpOf, nullptr};
  gsl_cheb_init(reference, &function, -1, 2);
  double c[12];
  float single[12];
  NR_chebft_d(-1, 2, c, 12, [](double x) { return std::exp(x); });
  NR_chebft(-1, 2, single, 12, [](float x) { return std::exp(x); });
  for (std::size_t k = 0; k < 12; ++k) {
    EXPECT_NEAR(c[k], reference->c[k], 1e-12);
    EXPECT_NEAR(single[k], reference->c[k], 2e-6);
  }
  EXPECT_FLOAT_EQ(NR_chebev_d(-1, 2, c, 12, 0.3), std::exp(0.3F));
  EXPECT_NEAR(NR_chebev(-1, 2, single, 12, 0.3F), std::exp(0.3F), 1e-5);
  EXPECT_EQ(NR_chebev_d(-1, 2, c, 12, 2.1), std::numeric_limits<float>::infinity());
  EXPECT_EQ(NR_chebev(-1, 2, single, 12, -1.1F), std::numeric_limits<float>::infinity());
  gsl_cheb_free(reference);

  const auto curve = [](double x) { return std::pow(x + 0.1, 0.45); };
  SInt32 count = 0;
  double out[30];
  ASSERT_EQ(NR_FindPolyApprToFuncOnInterval_d(0.2, 0.6, curve, 0, 1e-4, 1024, 12, &count, out),
            noErr);
  EXPECT_LE(count, 12);
  for (double x = 0.2; x <= 0.6; x += 0.001) {
    double sum = 0;
    for (int k = count - 1; k >= 0; --k)
      sum = sum * x + out[k];
    ASSERT_NEAR(sum, curve(x), 1.01e-4);
  }
  float single_out[30];
  ASSERT_EQ(NR_FindPolyApprToFuncOnInterval(
                0.5F, 2, [](float x) { return 1 / x; }, 1e-3F, 100, 20, &count, single_out),
            noErr);
  float sum = 0;
  for (int k = count - 1; k >= 0; --k)
    sum = sum * 1.7F + single_out[k];
  EXPECT_NEAR(sum, 1 / 1.7F, 2e-3);
}

TEST(ChebyshevSeries, RefuseAndGiveUp) {
  SInt32 count = 0;
  double out[30] = {-5};
  const auto constant = [](double) { return 3.0; };
  const auto jump = [](double x) { return x < 0.5 ? 0.0 : 1.0; };
  const auto find = NR_FindPolyApprToFuncOnInterval_d;
  EXPECT_EQ(find(0, 0, constant, 0, 1, 9, 9, &count, out), paramErr);
  EXPECT_EQ(find(0, 1, nullptr, 0, 1, 9, 9, &count, out), paramErr);
  EXPECT_EQ(find(0, 1, constant, 0, 1, 0, 9, &count, out), paramErr);
  EXPECT_EQ(find(0, 1, constant, 0, 1, 9, 0, &count, out), paramErr);
  EXPECT_EQ(find(0, 1, constant, 0, 1, 9, 9, &count, nullptr), paramErr);
  EXPECT_EQ(find(0, 1, jump, 0, 1e-6, 100, 50, &count, out), NR_LackingPrecisionErr);
  EXPECT_EQ(count, 30);
  EXPECT_EQ(find(
                0, 1, [](double x) { return std::sqrt(x - 0.5); }, 0, 1, 9, 9, &count, out),
            NR_LackingPrecisionErr);
  EXPECT_EQ(out[0], -5);
  ASSERT_EQ(find(0, 1, constant, 1e-6, 0, 10, 9, &count, out), noErr);
  EXPECT_EQ(count, 1);
  EXPECT_NEAR(out[0], 3, 1e-12);
}

TEST(Interpolation, MeetsPolynomialsAndSplines) {
  const auto cubic = [](float x) { return 2 + x * (1 + x * (-3 + x * 0.5F)); };
  float x[9], y[9];
  for (int i = 0; i < 8; ++i) {
    x[i + 1] = static_cast<float>(i) * 0.5F - 1;
    y[i + 1] = cubic(x[i + 1]);
  }
  for (const float at : {-1.0F, 0.3F, 1.9F, 2.5F}) {
    float value = 0;
    float error = 1;
    NR_polint(x, y, 4, at, &value, &error);
    EXPECT_NEAR(value, cubic(at), 1e-4);
    EXPECT_NEAR(NR_polintNV(x + 1, y + 1, 8, at), cubic(at), 1e-4);
    EXPECT_NEAR(NR_polintEq(-1, 0.5F, y + 1, 6, at), cubic(at), 1e-4);
  }
  EXPECT_TRUE(std::isnan(NR_polintNV(x, y, 9, 0)));
  const float four[] = {cubic(-1), cubic(0), cubic(1), cubic(2)};
  EXPECT_NEAR(NR_NevillInterpolation4(four, 0), four[1], 1e-6);
  EXPECT_NEAR(NR_NevillInterpolation4(four, 0.4F), cubic(0.4F), 1e-5);
  float c[4];
  NR_polcoe(x + 1, y + 1, 3, c);
  EXPECT_NEAR(c[2], -3, 1e-4);
  const float integers[] = {cubic(0), cubic(1), cubic(2), cubic(3)};
  NR_polcoeSPL(integers, 3, c);
  EXPECT_NEAR(c[1], 1, 1e-4);
  EXPECT_NEAR(c[3], 0.5F, 1e-5);

  // A clamped spline through a cubic is that cubic.
  float second[9];
  const auto slope = [](float at) { return 1 - 6 * at + 1.5F * at * at; };
  NR_spline(x, y, 8, slope(x[1]), slope(x[8]), second);
  float value = 0;
  NR_splint(x, y, second, 8, 1.27F, &value);
  EXPECT_NEAR(value, cubic(1.27F), 1e-4);
  NR_spline(x, y, 8, 1e30F, 1e30F, second);
  EXPECT_EQ(second[1], 0);
  EXPECT_EQ(second[8], 0);
  std::vector<double> dx(x + 1, x + 9), dy(y + 1, y + 9);
  gsl_interp* natural = gsl_interp_alloc(gsl_interp_cspline, 8);
  gsl_interp_init(natural, dx.data(), dy.data(), 8);
  NR_splint(x, y, second, 8, -0.8F, &value);
  EXPECT_NEAR(value, gsl_interp_eval(natural, dx.data(), dy.data(), -0.8, nullptr), 1e-4);
  gsl_interp_free(natural);
}

TEST(Lines, AgreeWithGsl) {
  std::mt19937 random(4);
  std::uniform_real_distribution<double> noise(-1, 1);
  const std::size_t n = 20;
  double x[n], y[n], weights[n];
  float fx[n + 1], fy[n + 1], sig[n + 1];
  SInt32 integers[n];
  for (std::size_t i = 0; i < n; ++i) {
    const double scatter = noise(random);
    x[i] = static_cast<double>(i) * 0.25 + 1;
    y[i] = 3 - 0.5 * x[i] + scatter;
    fx[i + 1] = static_cast<float>(x[i]);
    fy[i + 1] = static_cast<float>(y[i]);
    sig[i + 1] = 0.5F + 0.1F * static_cast<float>(i % 3);
    weights[i] = 1 / std::pow(static_cast<double>(sig[i + 1]), 2);
    integers[i] = static_cast<SInt32>(100 * y[i]);
  }
  double c0, c1, v00, v01, v11, chi;
  gsl_fit_linear(x, 1, y, 1, n, &c0, &c1, &v00, &v01, &v11, &chi);
  float a, b, sigma_a, sigma_b, chi_square, q;
  const auto check = [&] {
    EXPECT_NEAR(a, c0, 1e-4);
    EXPECT_NEAR(b, c1, 1e-4);
    EXPECT_NEAR(sigma_a, std::sqrt(v00), 1e-4);
    EXPECT_NEAR(sigma_b, std::sqrt(v11), 1e-4);
  };
  NR_fit(fx, fy, n, nullptr, 0, &a, &b, &sigma_a, &sigma_b, &chi_square, &q);
  check();
  EXPECT_EQ(q, 1);
  NR_fitNoMWT(1, 0.25F, fy, n, &a, &b, &sigma_a, &sigma_b);
  check();
  NR_fitPts(fx + 1, fy + 1, n, &a, &b);
  check();
  gsl_fit_wlinear(x, 1, weights, 1, y, 1, n, &c0, &c1, &v00, &v01, &v11, &chi);
  NR_fit(fx, fy, n, sig, 1, &a, &b, &sigma_a, &sigma_b, &chi_square, &q);
  check();
  EXPECT_NEAR(q, gsl_cdf_chisq_Q(chi, n - 2), 1e-4);
  float deviation = 0;
  NR_fitEquiDistInts(integers, n, &a, &b, &deviation);
  gsl_fit_linear(x, 1, y, 1, n, &c0, &c1, &v00, &v01, &v11, &chi);
  EXPECT_NEAR(b, 25 * c1, 0.1);
  EXPECT_NEAR(a, 100 * (c0 + c1), 2);
  EXPECT_GT(deviation, 10);

  // The general fit with the basis 1 and x gives the same line.
  float** u = NR_matrix(1, n, 1, 2);
  float** v = NR_matrix(1, 2, 1, 2);
  float w[3], line[3];
  NR_svdfit(fx, fy, sig, n, line, 2, u, v, w, &q, [](float at, float* values, SInt32) {
    values[1] = 1;
    values[2] = at;
  });
  NR_fit(fx, fy, n, sig, 1, &a, &b, &sigma_a, &sigma_b, &chi_square, &deviation);
  EXPECT_NEAR(line[1], a, 1e-4);
  EXPECT_NEAR(line[2], b, 1e-4);
  EXPECT_NEAR(q, chi_square, 1e-3);
  NR_free_matrix(v, 1, 2, 1, 2);
  NR_free_matrix(u, 1, n, 1, 2);
}

TEST(Probabilities, AgreeWithGsl) {
  for (const float a : {0.5F, 1.0F, 2.5F, 7.0F, 30.0F, 80.0F}) {
    EXPECT_NEAR(NR_gammln(a), gsl_sf_lngamma(static_cast<double>(a)), 1e-4);
    EXPECT_EQ(NR_gammq(a, 0), 1);
    for (const float x : {0.01F, 0.5F, 1.0F, 3.0F, 20.0F, 90.0F})
      EXPECT_NEAR(NR_gammq(a, x),
                  gsl_sf_gamma_inc_Q(static_cast<double>(a), static_cast<double>(x)), 2e-5)
          << a << " " << x;
  }
  const float bins[] = {0, 12, 8, 11, 9, 15, 5};
  const float expected[] = {0, 10, 10, 10, 10, 10, 10};
  float degrees, chi_square, probability;
  NR_chsone(bins, expected, 6, 1, &degrees, &chi_square, &probability);
  EXPECT_EQ(degrees, 5);
  EXPECT_FLOAT_EQ(chi_square, 6);
  EXPECT_NEAR(probability, gsl_cdf_chisq_Q(6, 5), 1e-6);
  EXPECT_EQ(NR_ChiSquaredOne(bins + 1, expected + 1, 6), probability);
}

}  // namespace
