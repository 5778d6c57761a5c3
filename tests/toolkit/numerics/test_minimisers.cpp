#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "NR_Util.h"
#include "ORW_NR_adapted.h"
#include "ORW_NR_classic.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

float Square(float x) {
  return x * x;
}

TEST(Brackets, StartAndEndWithinTheLimits) {
  const struct {
    float low, high, first, second;
  } starts[] = {{0, 1, 0, 0.01F},      {-10, -2, -2.08F, -2},  {3, kInfinity, 3, 4},
                {-3, kInfinity, 0, 1}, {-kInfinity, 5, 0, -1}, {-kInfinity, -5, -5, -6},
                {2, 402, 2, 3},        {-1, 500, 0, 1},        {-kInfinity, kNan, 7, 9}};
  for (const auto& start : starts) {
    SCOPED_TRACE(testing::Message() << start.low << " to " << start.high);
    std::vector<float> places;
    float a = 7, b = 9, c, fa, fb, fc;
    NR_Mnbrak(
        start.low, start.high, &a, &b, &c, &fa, &fb, &fc,
        [](float x, void* context) {
          static_cast<std::vector<float>*>(context)->push_back(x);
          return Square(x + 1.5F);
        },
        &places);
    EXPECT_FLOAT_EQ(places[0], start.first);
    EXPECT_FLOAT_EQ(places[1], start.second);
    for (const float x : places)
      EXPECT_TRUE(!(x < start.low) && !(x > start.high));
    EXPECT_LE(fb, fa);
    EXPECT_LE(fb, fc);
    EXPECT_TRUE((a - b) * (b - c) >= 0);
  }
  // Falls towards the upper limit.
  float a, b, c, fa, fb, fc;
  NR_Mnbrak(
      0, 10, &a, &b, &c, &fa, &fb, &fc, [](float x, void*) { return -x; }, nullptr);
  EXPECT_EQ(c, 10);
  EXPECT_EQ(fb, fc);
  NR_mnbrak(&(a = 0), &(b = 1), &c, &fa, &fb, &fc, Square);
  EXPECT_TRUE(std::min(a, c) < 0 && std::max(a, c) > 0);
}

TEST(LineSearches, FindMinima) {
  const auto valley = [](float x) { return std::cosh(x - 2) + 0.3F * (x - 2); };
  const float expected = 2 - std::asinh(0.3F);
  float x = 0;
  EXPECT_NEAR(NR_brent(0, 1, 5, valley, 1e-4F, &x), valley(expected), 1e-6);
  EXPECT_NEAR(x, expected, 2e-3);
  EXPECT_NEAR(NR_golden(0, 1, 5, valley, 1e-4F, &x), valley(expected), 1e-6);
  EXPECT_NEAR(x, expected, 2e-3);
  NR_golden(0, 1, 5, valley, 0, &x);
  // Never settles: a tolerance below the spacing of floats.
  int calls = 0;
  NR_Brent(
      1000, 1e6F, 1e7F,
      [](float at, void* context) {
        return at + 0 * static_cast<float>(++*static_cast<int*>(context));
      },
      &calls, 0, &x);
  EXPECT_LE(calls, 101);

  // On the upper limit, moving up: stays.
  float point[] = {0, 3, 1}, direction[] = {0, 1, 0}, value = 0;
  const float lows[] = {0, -kInfinity, -kInfinity}, highs[] = {0, 3, kInfinity};
  NR_Linmin(
      point, lows, highs, direction, 2, &value,
      [](const float* p, void*) { return Square(p[1] - 5) + p[2]; }, nullptr);
  EXPECT_LE(point[1], 3);
  EXPECT_EQ(point[2], 1);
  float line[] = {0, 0, 1}, along[] = {0, 1, 2};
  NR_linmin(line, along, 2, &value, [](float* p) { return Square(p[1] - 2) + Square(p[2] - 5); });
  EXPECT_NEAR(line[1], 2, 1e-3);
  EXPECT_NEAR(line[2], 5, 2e-3);
  EXPECT_NEAR(along[2], 4, 2e-3);
}

float Rosenbrock(const float* p) {
  return 100 * Square(p[2] - p[1] * p[1]) + Square(1 - p[1]);
}

/// Raised by 1, as the method's end is told by the relative change.
float PowellSingular(const float* p) {
  return 1 + Square(p[1] + 10 * p[2]) + 5 * Square(p[3] - p[4]) + Square(Square(p[2] - 2 * p[3])) +
         10 * Square(Square(p[1] - p[4]));
}

float Wood(const float* p) {
  return 100 * Square(p[1] * p[1] - p[2]) + Square(p[1] - 1) + Square(p[3] - 1) +
         90 * Square(p[3] * p[3] - p[4]) + 10.1F * (Square(p[2] - 1) + Square(p[4] - 1)) +
         19.8F * (p[2] - 1) * (p[4] - 1);
}

float HelicalValley(const float* p) {
  constexpr float kTurn = 6.2831853F;
  const float angle = std::atan2(p[2], p[1]) / kTurn;
  return 100 * (Square(p[3] - 10 * angle) + Square(std::hypot(p[1], p[2]) - 1)) + p[3] * p[3];
}

/// More, Garbow and Hillstrom, Testing unconstrained optimization software, 1981.
TEST(DirectionSets, SolveThePublishedProblems) {
  const struct {
    float (*function)(const float*);
    std::vector<float> start, low, high;
    float least, limit;
  } cases[] = {
      {Rosenbrock, {-1.2F, 1}, {}, {}, 0, 1e-5F},
      {PowellSingular, {3, -1, 0, 1}, {}, {}, 1, 1e-4F},
      {Wood, {-3, -1, -3, -1}, {}, {}, 0, 1e-4F},
      {HelicalValley, {-1, 0, 0}, {}, {}, 0, 1e-4F},
      // The minimum lies outside. Along a limit the method may stop a little early.
      {Rosenbrock, {-1.2F, 1}, {-2, -2}, {0.5F, 2}, 0.25F, 0.05F},
      {Rosenbrock, {2, 3}, {1.5F, -kInfinity}, {kInfinity, kNan}, 0.25F, 1e-3F},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    const auto n = static_cast<SInt32>(c.start.size());
    std::vector<float> point(c.start), low(c.low), high(c.high);
    if (low.empty()) {
      low.assign(point.size(), -kInfinity);
      high.assign(point.size(), kInfinity);
    }
    for (auto* list : {&point, &low, &high})
      list->insert(list->begin(), 0);
    float** directions = NR_matrix(1, n, 1, n);
    const auto reset = [&] {
      for (int i = 1; i <= n; ++i)
        for (int j = 1; j <= n; ++j)
          directions[i][j] = i == j ? 1 : 0;
    };
    reset();
    SInt32 iterations = 0;
    float value = -1;
    auto function = c.function;
    NR_Powell(
        point.data(), low.data(), high.data(), directions, n, 1e-7F, &iterations, &value,
        [](const float* p, void* context) {
          return (*static_cast<float (**)(const float*)>(context))(p);
        },
        &function);
    EXPECT_NEAR(value, c.least, c.limit);
    EXPECT_LT(iterations, 200);
    EXPECT_EQ(value, c.function(point.data()));
    for (std::size_t j = 1; j < point.size(); ++j)
      EXPECT_TRUE(!(point[j] < low[j] - 1e-6F) && !(point[j] > high[j] + 1e-6F));
    if (c.low.empty()) {
      std::copy(c.start.begin(), c.start.end(), point.begin() + 1);
      reset();
      static float (*plain)(const float*);
      plain = c.function;
      float plain_value = -1;
      NR_powell(point.data(), directions, n, 1e-7F, &iterations, &plain_value,
                [](float* p) { return plain(p); });
      EXPECT_EQ(plain_value, value);
    }
    NR_free_matrix(directions, 1, n, 1, n);
  }
}

TEST(DirectionSets, StopAtOnceOnFlatGround) {
  float** directions = NR_matrix(1, 1, 1, 1);
  directions[1][1] = 1;
  float point[] = {0, 4}, value = 0;
  const float low[] = {0, -kInfinity}, high[] = {0, kInfinity};
  SInt32 iterations = 0;
  NR_Powell(
      point, low, high, directions, 1, 1e-6F, &iterations, &value,
      [](const float*, void*) { return 2.0F; }, nullptr);
  EXPECT_EQ(iterations, 1);
  EXPECT_EQ(value, 2);
  iterations = -7;
  NR_Powell(point, low, high, directions, 9, 1e-6F, &iterations, &value, nullptr, nullptr);
  EXPECT_EQ(iterations, -7);
  NR_free_matrix(directions, 1, 1, 1, 1);
}

/// a1 exp(-a2 x) + a3, fitted to itself, once with a3 fixed.
TEST(ModelFits, FindTheParametersAndTheirCovariances) {
  const auto model = [](float x, float* a, float* y, float* dy, SInt32) {
    dy[1] = std::exp(-a[2] * x);
    dy[2] = -a[1] * x * dy[1];
    dy[3] = 1;
    *y = a[1] * dy[1] + a[3];
  };
  float x[31], y[31], sig[31];
  for (int i = 1; i <= 30; ++i) {
    x[i] = static_cast<float>(i) * 0.1F;
    y[i] = 5 * std::exp(-1.3F * x[i]) + 2;
    sig[i] = 0.1F;
  }
  float** covar = NR_matrix(1, 3, 1, 3);
  float** alpha = NR_matrix(1, 3, 1, 3);
  for (const SInt32 third : {1, 0}) {
    const SInt32 ia[] = {0, 1, 1, third};
    float a[] = {0, 3, 1, third != 0 ? 1.0F : 2.0F};
    float lambda = -1, chi_square = 0;
    NR_mrqmin(x, y, sig, 30, a, ia, 3, covar, alpha, &chi_square, model, &lambda);
    for (int step = 0; step < 12; ++step)
      NR_mrqmin(x, y, sig, 30, a, ia, 3, covar, alpha, &chi_square, model, &lambda);
    EXPECT_NEAR(chi_square, 0, 1e-4);
    lambda = 0;
    NR_mrqmin(x, y, sig, 30, a, ia, 3, covar, alpha, &chi_square, model, &lambda);
    EXPECT_NEAR(a[1], 5, 1e-2);
    EXPECT_NEAR(a[2], 1.3F, 1e-2);
    EXPECT_NEAR(a[3], 2, 1e-2);
    for (int i = 1; i <= 3; ++i) {
      for (int j = 1; j <= 3; ++j) {
        float sum = 0;
        for (int k = 1; k <= 3; ++k)
          sum += covar[i][k] * alpha[k][j];
        EXPECT_NEAR(sum, i == j && (i < 3 || third != 0) ? 1 : 0, 1e-2);
      }
    }
  }
  // Fixed parameters in front: the covariances move to the places of the others.
  covar[1][1] = 4;
  covar[1][2] = covar[2][1] = 5;
  covar[2][2] = 6;
  const SInt32 ia[] = {0, 1, 0, 1};
  NR_covsrt(covar, 3, ia, 2);
  EXPECT_EQ(covar[1][1] * 100 + covar[1][3] * 10 + covar[3][3], 456);
  EXPECT_EQ(covar[2][2] + covar[2][3] + covar[1][2], 0);
  NR_free_matrix(alpha, 1, 3, 1, 3);
  NR_free_matrix(covar, 1, 3, 1, 3);
}

TEST(Simplex, SolvesPublishedProblems) {
  struct Problem {
    const char* name;
    int m1, m2, m3;
    std::vector<float> objective;
    std::vector<std::vector<float>> rows;  // the constant, then the coefficients
    SInt32 state;
    float maximum;
    std::vector<float> solution;
  };
  const Problem problems[] = {
      // Dantzig's and others' small examples.
      {"at most", 3, 0, 0, {3, 5}, {{4, 1, 0}, {12, 0, 2}, {18, 3, 2}}, 0, 36, {2, 6}},
      {"mixed",
       2,
       1,
       1,
       {1, 1, 3, -0.5F},
       {{740, 1, 0, 2, 0}, {0, 0, 2, 0, -7}, {0.5F, 0, 1, -1, 2}, {9, 1, 1, 1, 1}},
       0,
       17.025F,
       {0, 3.325F, 4.725F, 0.95F}},
      {"without bound", 1, 0, 0, {1, 1}, {{2, 1, -1}}, 1, 0, {}},
      {"infeasible", 1, 1, 0, {1}, {{1, 1}, {2, 1}}, -1, 0, {}},
      {"infeasible equalities", 0, 0, 2, {1, 1}, {{1, 1, 1}, {2, 1, 1}}, -1, 0, {}},
      {"redundant equalities", 0, 0, 2, {1, 2}, {{1, 1, 1}, {2, 2, 2}}, 0, 2, {0, 1}},
      {"at least 0", 1, 1, 0, {1, 0}, {{5, 1, 1}, {0, 1, -1}}, 0, 5, {5, 0}},
      // Beale's, on which careless choices of pivots go round in a circle.
      {"degenerate",
       3,
       0,
       0,
       {0.75F, -150, 0.02F, -6},
       {{0, 0.25F, -60, -0.04F, 9}, {0, 0.5F, -90, -0.02F, 3}, {1, 0, 0, 1, 0}},
       0,
       0.05F,
       {0.04F, 0, 1, 0}},
  };
  for (const auto& p : problems) {
    SCOPED_TRACE(p.name);
    const auto m = static_cast<SInt32>(p.rows.size());
    const auto n = static_cast<SInt32>(p.objective.size());
    float** a = NR_matrix(1, m + 2, 1, n + 1);
    a[1][1] = 0;
    std::copy(p.objective.begin(), p.objective.end(), a[1] + 2);
    for (int i = 1; i <= m; ++i) {
      const auto& row = p.rows[static_cast<std::size_t>(i) - 1];
      a[i + 1][1] = row[0];
      for (int k = 1; k <= n; ++k)
        a[i + 1][k + 1] = -row[static_cast<std::size_t>(k)];
    }
    std::vector<SInt32> izrov(static_cast<std::size_t>(n) + 1),
        iposv(static_cast<std::size_t>(m) + 1);
    SInt32 state = 7;
    NR_simplx(a, m, n, p.m1, p.m2, p.m3, &state, izrov.data(), iposv.data());
    EXPECT_EQ(state, p.state);
    if (p.state == 0) {
      EXPECT_NEAR(a[1][1], p.maximum, 1e-3);
      std::vector<float> x(static_cast<std::size_t>(n));
      for (int i = 1; i <= m; ++i) {
        const SInt32 variable = iposv[static_cast<std::size_t>(i)];
        if (variable <= n) x[static_cast<std::size_t>(variable) - 1] = a[i + 1][1];
      }
      for (std::size_t k = 0; k < x.size(); ++k)
        EXPECT_NEAR(x[k], p.solution[k], 1e-3);
    }
    NR_free_matrix(a, 1, m + 2, 1, n + 1);
  }
}

}  // namespace
