#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "NR_Errors.h"
#include "NR_Util.h"
#include "ORW_NR_adapted.h"
#include "ORW_NR_classic.h"
#include "ORW_NR_double.h"
#include "ORW_NR_simple.h"
#include "ORW_blas.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

template <class T>
std::vector<T> Random(int count, std::mt19937* random) {
  std::normal_distribution<T> normal;
  std::vector<T> values(static_cast<std::size_t>(count));
  for (T& x : values)
    x = normal(*random);
  return values;
}

/// A matrix of NR_matrix, rows and columns from 1, filled row by row.
class Matrix {
 public:
  Matrix(int rows, int columns, const std::vector<float>& block = {})
      : rows_(rows), columns_(columns), m_(NR_matrix(1, rows, 1, columns)) {
    for (int i = 0; i < rows * columns; ++i)
      m_[i / columns + 1][i % columns + 1] = block.empty() ? 0 : block[static_cast<std::size_t>(i)];
  }
  ~Matrix() { NR_free_matrix(m_, 1, rows_, 1, columns_); }
  Matrix(const Matrix&) = delete;
  Matrix& operator=(const Matrix&) = delete;
  operator float**() const { return m_; }

 private:
  int rows_, columns_;
  float** m_;
};

TEST(Arrays, HaveTheirRangesAndRowsInOneBlock) {
  float** m = NR_matrix(-2, 1, 5, 8);
  for (int i = -2; i <= 1; ++i)
    for (int j = 5; j <= 8; ++j)
      m[i][j] = static_cast<float>(10 * i + j);
  EXPECT_EQ(&m[1][8] - &m[-2][5], 15);
  float** part = NR_submatrix(m, -1, 0, 6, 7, 1, 1);
  EXPECT_EQ(&part[2][2], &m[0][7]);
  NR_free_submatrix(part, 1, 2, 1, 2);
  float** view = NR_convert_matrix(&m[-2][5], 1, 4, 1, 4);
  EXPECT_EQ(view[4][4], 18);
  NR_free_convert_matrix(view, 1, 4, 1, 4);
  NR_free_matrix(m, -2, 1, 5, 8);
  float*** t = NR_f3tensor(1, 2, 0, 2, 3, 6);
  EXPECT_EQ(&t[2][2][6] - &t[1][0][3], 2 * 3 * 4 - 1);
  NR_free_f3tensor(t, 1, 2, 0, 2, 3, 6);
  UInt8* bytes = NR_cvector(0, 0);
  bytes[0] = 7;
  NR_free_cvector(bytes, 0, 0);
  EXPECT_EQ(NR_vector_d(5, -5), nullptr);
}

template <class T>
struct Blas {
  void (*vector)(SInt32, SInt32, const T*, const T*, T*);
  void (*vector_tr)(SInt32, SInt32, const T*, const T*, T*);
  void (*multiply)(SInt32, SInt32, SInt32, const T*, const T*, T*);
  void (*multiply_no_tr)(SInt32, SInt32, SInt32, const T*, const T*, T*);
  void (*multiply_tr_no)(SInt32, SInt32, SInt32, const T*, const T*, T*);
  void (*transpose)(SInt32, SInt32, const T*, T*);
  SInt32 (*invert)(SInt32, const T*, T*);
  SInt32 (*solve)(SInt32, const T*, const T*, T*);
  T limit;
};

/// Sizes on both sides of where the BLAS takes over.
template <class T>
void CheckBlas(const Blas<T>& blas) {
  std::mt19937 random(3);
  for (const int n : {1, 2, 3, 8, 9, 20}) {
    SCOPED_TRACE(n);
    const auto at = [n](const std::vector<T>& m, int i, int j) {
      return m[static_cast<std::size_t>(i * n + j)];
    };
    const auto a = Random<T>(n * n, &random);
    const auto b = Random<T>(n * n, &random);
    std::vector<T> plain(a.size()), no_tr(a.size()), tr_no(a.size()), flipped(a.size());
    blas.multiply(n, n, n, a.data(), b.data(), plain.data());
    blas.multiply_no_tr(n, n, n, a.data(), b.data(), no_tr.data());
    blas.multiply_tr_no(n, n, n, a.data(), b.data(), tr_no.data());
    blas.transpose(n, n, a.data(), flipped.data());
    std::vector<T> y(b.begin(), b.begin() + n), x(y.size()), x_tr(y.size());
    blas.vector(n, n, a.data(), y.data(), x.data());
    blas.vector_tr(n, n, a.data(), y.data(), x_tr.data());
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < n; ++j) {
        T sums[5] = {};
        for (int k = 0; k < n; ++k) {
          sums[0] += at(a, i, k) * at(b, k, j);
          sums[1] += at(a, i, k) * at(b, j, k);
          sums[2] += at(a, k, i) * at(b, k, j);
          sums[3] += at(a, i, k) * y[static_cast<std::size_t>(k)];
          sums[4] += at(a, k, i) * y[static_cast<std::size_t>(k)];
        }
        ASSERT_NEAR(at(plain, i, j), sums[0], blas.limit);
        ASSERT_NEAR(at(no_tr, i, j), sums[1], blas.limit);
        ASSERT_NEAR(at(tr_no, i, j), sums[2], blas.limit);
        ASSERT_EQ(at(flipped, i, j), at(a, j, i));
        ASSERT_NEAR(x[static_cast<std::size_t>(i)], sums[3], blas.limit);
        ASSERT_NEAR(x_tr[static_cast<std::size_t>(i)], sums[4], blas.limit);
      }
    }
    std::vector<T> inverse(a.size()), solution(y.size());
    ASSERT_EQ(blas.invert(n, a.data(), inverse.data()), 0);
    ASSERT_EQ(blas.solve(n, a.data(), x.data(), solution.data()), 0);
    blas.multiply(n, n, n, inverse.data(), a.data(), plain.data());
    for (int i = 0; i < n * n; ++i)
      ASSERT_NEAR(plain[static_cast<std::size_t>(i)], i / n == i % n, 100 * blas.limit);
    for (std::size_t i = 0; i < y.size(); ++i)
      ASSERT_NEAR(solution[i], y[i], 100 * blas.limit);
  }
  const T singular[] = {1, 2, 3, 2, 4, 6, 1, 0, 1};
  T out[9];
  EXPECT_EQ(blas.invert(3, singular, out), CB_SingularMatrixErr);
  EXPECT_EQ(blas.solve(3, singular, singular, out), CB_SingularMatrixErr);
  EXPECT_EQ(blas.invert(-1, singular, out), paramErr);
  // A wide matrix: 2 x 3 times 3 x 1, and its transpose times 2.
  const T wide[] = {1, 2, 3, 4, 5, 6};
  blas.multiply(2, 1, 3, wide, singular, out);
  EXPECT_EQ(out[0], 14);
  EXPECT_EQ(out[1], 32);
  blas.vector_tr(3, 2, wide, singular, out);
  EXPECT_EQ(out[2], 15);
}

TEST(Matrices, MultiplyTransposeAndSolveInBothPrecisions) {
  CheckBlas<float>({CB_MatrixVectorF, CB_MatrixTrVectorF, CB_MatrixMultiplyF,
                    CB_MatrixMultiplyNoTrTrF, CB_MatrixMultiplyTrNoTrF, CB_TransposeMatrixF,
                    CB_MatrixInverseF, CB_SolveLinEqSimpleF, 1e-4F});
  CheckBlas<double>({CB_MatrixVectorD, CB_MatrixTrVectorD, CB_MatrixMultiplyD,
                     CB_MatrixMultiplyNoTrTrD, CB_MatrixMultiplyTrNoTrD, CB_TransposeMatrixD,
                     CB_MatrixInverseD, CB_SolveLinEqSimpleD, 1e-11});
}

TEST(Matrices, ScaleAndConvert) {
  const double in[] = {1, kNan, -3, HUGE_VAL};
  double out[4];
  CB_ScaleMatrixD(2, 2, 0, in, out);
  EXPECT_TRUE(std::all_of(out, out + 4, [](double x) { return x == 0; }));
  CB_ScaleVectorD(3, -2, in, out);
  EXPECT_EQ(out[2], 6);
  float unit[9];
  float rows[3][3];
  CB_SetUnitMatrixF(3, unit);
  CB_ArrayToMatrixF3x3(unit, rows);
  EXPECT_EQ(rows[1][1] + rows[2][2] + rows[0][1] + rows[2][0], 2);
  double wide[9];
  CB_MatrixFtoD(3, 3, unit, wide);
  EXPECT_EQ(wide[8] + wide[7], 1);
}

TEST(Solvers, AgreeOnRandomSystems) {
  std::mt19937 random(9);
  for (int n = 1; n <= 12; ++n) {
    SCOPED_TRACE(n);
    const auto block = Random<float>(n * n, &random);
    const auto right = Random<float>(n, &random);
    std::vector<float> expected(right.size());
    ASSERT_EQ(CB_SolveLinEqSimpleF(n, block.data(), right.data(), expected.data()), 0);
    const Matrix lu(n, n, block), full(n, n, block), spl(n, n, block);
    const Matrix b(n, 1, right), b_spl(n, 1, right);
    std::vector<SInt32> index(static_cast<std::size_t>(n) + 1), rows(index), marks(index);
    float parity = 0;
    std::vector<float> x(right);
    x.insert(x.begin(), 0);
    NR_ludcmp(lu, n, index.data(), &parity);
    NR_lubksb(lu, n, index.data(), x.data());
    NR_gaussj(full, n, b, 1);
    ASSERT_EQ(NR_gaussjSPL(spl, n, b_spl, 1, index.data(), rows.data(), marks.data()), 0);
    std::vector<float> inverse(block.size());
    CB_MatrixInverseF(n, block.data(), inverse.data());
    for (int i = 1; i <= n; ++i) {
      const auto at = static_cast<std::size_t>(i);
      const float limit = 1e-3F * (1 + std::fabs(expected[at - 1]));
      ASSERT_NEAR(x[at], expected[at - 1], limit);
      ASSERT_NEAR(b[i][1], expected[at - 1], limit);
      ASSERT_EQ(b_spl[i][1], b[i][1]);
      for (int j = 1; j <= n; ++j)
        ASSERT_NEAR(
            full[i][j],
            inverse[(at - 1) * static_cast<std::size_t>(n) + static_cast<std::size_t>(j) - 1],
            1e-2F);
    }
    if (n == 2) {
      std::vector<float> two(9), y = x;
      for (int i = 0; i < 4; ++i)
        two[static_cast<std::size_t>((i / 2 + 1) * 3 + i % 2 + 1)] =
            block[static_cast<std::size_t>(i)];
      std::copy_n(right.begin(), 2, y.begin() + 1);
      ASSERT_EQ(NR_SolveLinEq2(two.data(), y.data()), 0);
      EXPECT_EQ(y, x);
    }
  }
}

TEST(Solvers, TellSingularMatrices) {
  SInt32 columns[4], rows[4], marks[4];
  for (const std::vector<float>& block : {std::vector<float>{1, 2, 3, 1, 2, 3, 0, 1, 5},
                                          std::vector<float>(9), std::vector<float>(9, kNan)}) {
    const Matrix a(3, 3, block), b(3, 1);
    EXPECT_EQ(NR_gaussjSPL(a, 3, b, 1, columns, rows, marks), NR_SingMatrixErr);
  }
  // A zero pivot becomes tiny, so that the solution is huge, and nothing is reported.
  const Matrix singular(2, 2, {1, 2, 2, 4});
  float parity = 0;
  float x[] = {0, 1, 3};
  NR_ludcmp(singular, 2, columns, &parity);
  NR_lubksb(singular, 2, columns, x);
  EXPECT_GT(std::fabs(x[1]), 1e18F);
  float two[9] = {0, 0, 0, 0, 1, 2, 0, 2, 4};
  float b[] = {0, 1, 3};
  EXPECT_EQ(NR_SolveLinEq2(two, b), NR_SingMatrixErr);
  EXPECT_EQ(b[1], x[1]);
  float zero[9] = {};
  EXPECT_EQ(NR_SolveLinEq2(zero, b), NR_SingMatrixErr);
  EXPECT_FALSE(std::isfinite(b[1]) || std::isfinite(b[2]));
}

TEST(SingularValues, RefuseWhatIsTooLargeAndEndOnNotANumber) {
  std::vector<double> a(33 * 33, 1), w(33), v(33 * 33);
  EXPECT_EQ(NR_svdcmpSPL_d(a.data(), 33, 2, w.data(), v.data()), paramErr);
  EXPECT_EQ(NR_svdcmpSPL_d(a.data(), 2, -1, w.data(), v.data()), paramErr);
  for (const double bad : {std::numeric_limits<double>::quiet_NaN(), HUGE_VAL}) {
    a.assign(16, 1);
    a[5] = bad;
    EXPECT_EQ(NR_svdcmpSPL_d(a.data(), 4, 4, w.data(), v.data()), NR_NoSVDConvergenceErr);
  }
  // A dropped term, and one that is not.
  const double identity[] = {1, 0, 0, 1};
  const double b[] = {3, 5};
  double x[2];
  const double zero[] = {2, 0};
  NR_svbksbSPL_d(identity, zero, identity, 2, 2, b, x);
  EXPECT_EQ(x[0], 1.5);
  EXPECT_EQ(x[1], 0);
  const double nan[] = {std::nan(""), 1};
  NR_svbksbSPL_d(identity, nan, identity, 2, 2, b, x);
  EXPECT_TRUE(std::isnan(x[0]));
  EXPECT_DOUBLE_EQ(NR_pythag_d(3e200, -4e200), 5e200);
  EXPECT_EQ(NR_pythag(0, 0), 0);
  EXPECT_FLOAT_EQ(NR_pythag(3e30F, 4e30F), 5e30F);
}

/// Each ends the process with its message and status 1.
TEST(FatalErrors, EndTheProcessWithTheirMessage) {
  const auto simplex = [](int m1, float constant) {
    const Matrix tableau(3, 2, {0, 1, constant, -1, 0, 0});
    SInt32 state, izrov[2], iposv[2];
    NR_simplx(tableau, 1, 1, m1, 0, 0, &state, izrov, iposv);
  };
  const struct {
    const char* message;
    std::function<void()> call;
  } cases[] = {
      {"boom", [] { NR_nrerror("boom"); }},
      {"allocation failure in vector\\(\\)", [] { NR_vector(3, -3); }},
      {"allocation failure 1 in matrix\\(\\)", [] { NR_matrix(3, -3, 1, 1); }},
      {"allocation failure 2 in matrix\\(\\)", [] { NR_dmatrix(1, 3, 3, -3); }},
      {"gaussj: Singular Matrix-2",
       [] {
         const Matrix a(2, 2, {1, 1, 1, 1}), b(2, 1);
         NR_gaussj(a, 2, b, 1);
       }},
      {"gaussj: Singular Matrix-1",
       [] {
         const Matrix a(2, 2, std::vector<float>(4, kNan)), b(2, 1);
         NR_gaussj(a, 2, b, 1);
       }},
      {"Singular matrix in routine ludcmp",
       [] {
         const Matrix a(2, 2);
         SInt32 index[3];
         float parity;
         NR_ludcmp(a, 2, index, &parity);
       }},
      {"no convergence in 30 svdcmp iterations",
       [] {
         const Matrix a(2, 2, {kNan, 1, 1, 1}), v(2, 2);
         float w[3];
         NR_svdcmp(a, 2, 2, w, v);
       }},
      {"Error in routine polint",
       [] {
         const float x[] = {0, 1, 1}, y[] = {0, 1, 2};
         float value, error;
         NR_polint(x, y, 2, 0.5F, &value, &error);
       }},
      {"Bad expected number in chsone",
       [] {
         const float bins[] = {0, 1}, expected[] = {0, 0};
         float degrees, chi_square, probability;
         NR_chsone(bins, expected, 1, 0, &degrees, &chi_square, &probability);
       }},
      {"powell exceeding maximum iterations\\.",
       [] {
         const Matrix directions(1, 1, {1});
         float point[] = {0, 0}, value;
         SInt32 iterations;
         NR_powell(point, directions, 1, -1, &iterations, &value, [](float*) { return 1.0F; });
       }},
      {"Bad input constraint counts in simplx", [=] { simplex(0, 1); }},
      {"Bad input tableau in simplx", [=] { simplex(1, -1); }},
  };
  for (const auto& c : cases) {
    EXPECT_EXIT(c.call(), testing::ExitedWithCode(1),
                std::string("Numerics run-time error\\.\\.\\.\n") + c.message +
                    "\n\\.\\.\\.now exiting to system\\.\\.\\.\n");
  }
}

}  // namespace
