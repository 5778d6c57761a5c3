#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "NR_Errors.h"
#include "NR_Util.h"
#include "ORW_NR_classic.h"
#include "ORW_NR_double.h"
#include "ORW_NR_simple.h"
#include "ORW_blas.h"

extern "C" {
void dgesvd_(const char* jobu, const char* jobvt, const int* m, const int* n, double* a,
             const int* lda, double* s, double* u, const int* ldu, double* vt, const int* ldvt,
             double* work, const int* lwork, int* info);
}

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// The singular values by LAPACK, the largest first.
std::vector<double> ReferenceValues(std::vector<double> a, int m, int n) {
  // Row by row it is the transposed matrix, which has the same values.
  std::vector<double> values(static_cast<std::size_t>(n));
  std::vector<double> work(8192);
  const int size = static_cast<int>(work.size());
  const int one = 1;
  int info = 0;
  dgesvd_("N", "N", &n, &m, a.data(), &n, values.data(), nullptr, &one, nullptr, &one, work.data(),
          &size, &info);
  EXPECT_EQ(info, 0);
  std::fill(values.begin() + std::min(m, n), values.end(), 0);
  return values;
}

template <class T>
struct Decomposed {
  std::vector<T> u, w, v;
  SInt32 status;
};

/// One shape of the decomposition and back-substitution, fed from row-major blocks.
template <class T>
struct Shape {
  const char* name;
  int most_rows, most_columns;
  Decomposed<T> (*decompose)(const std::vector<T>& a, int m, int n);
  std::vector<T> (*solve)(const Decomposed<T>& parts, int m, int n, const std::vector<T>& b);
};

/// A copy of a block in a shape: `front` unused rows and columns, rows `stride` apart.
class Shaped {
 public:
  Shaped(const std::vector<float>& block, int rows, int columns, int front, int stride)
      : rows_(rows), columns_(columns), front_(front) {
    storage_.assign(static_cast<std::size_t>((rows + front) * stride), kNan);
    for (int i = 0; i < rows + front; ++i)
      pointers_.push_back(storage_.data() + i * stride);
    if (!block.empty()) {
      for (int i = 0; i < rows; ++i)
        std::copy_n(block.data() + i * columns, columns, pointers_[Index(i + front)] + front);
    }
  }
  float* Flat() { return storage_.data(); }
  float** Rows() { return pointers_.data(); }
  std::vector<float> Block() const {
    std::vector<float> block;
    for (int i = 0; i < rows_; ++i)
      block.insert(block.end(), pointers_[Index(i + front_)] + front_,
                   pointers_[Index(i + front_)] + front_ + columns_);
    return block;
  }

 private:
  static std::size_t Index(int i) { return static_cast<std::size_t>(i); }
  std::vector<float> storage_;
  std::vector<float*> pointers_;
  int rows_, columns_, front_;
};

template <int front, int stride, class Call>
Decomposed<float> Decompose(const std::vector<float>& a, int m, int n, Call call) {
  const int step = stride == 0 ? n + front : stride;
  Shaped u(a, m, n, front, step);
  Shaped v({}, n, n, front, step);
  std::vector<float> w(static_cast<std::size_t>(n + front));
  const SInt32 status = call(u, w.data(), v);
  return {u.Block(), {w.begin() + front, w.end()}, v.Block(), status};
}

template <int front, int stride, class Call>
std::vector<float> Solve(const Decomposed<float>& parts, int m, int n, std::vector<float> b,
                         Call call) {
  const int step = stride == 0 ? n + front : stride;
  Shaped u(parts.u, m, n, front, step);
  Shaped v(parts.v, n, n, front, step);
  std::vector<float> w = parts.w;
  std::vector<float> x(static_cast<std::size_t>(n + front));
  w.insert(w.begin(), front, kNan);
  b.insert(b.begin(), front, kNan);
  call(u, w.data(), v, b.data(), x.data());
  return {x.begin() + front, x.end()};
}

const Shape<float> kFloatShapes[] = {
    {"classic", 40, 36,
     [](const std::vector<float>& a, int m, int n) {
       return Decompose<1, 0>(a, m, n, [=](Shaped& u, float* w, Shaped& v) {
         NR_svdcmp(u.Rows(), m, n, w, v.Rows());
         return noErr;
       });
     },
     [](const Decomposed<float>& parts, int m, int n, const std::vector<float>& right) {
       return Solve<1, 0>(parts, m, n, right,
                          [=](Shaped& u, float* w, Shaped& v, float* b, float* x) {
                            NR_svbksb(u.Rows(), w, v.Rows(), m, n, b, x);
                          });
     }},
    {"flat", 32, 32,
     [](const std::vector<float>& a, int m, int n) {
       return Decompose<0, 0>(a, m, n, [=](Shaped& u, float* w, Shaped& v) {
         return NR_svdcmpSPL(u.Flat(), m, n, w, v.Flat());
       });
     },
     [](const Decomposed<float>& parts, int m, int n, const std::vector<float>& right) {
       return Solve<0, 0>(parts, m, n, right,
                          [=](Shaped& u, float* w, Shaped& v, float* b, float* x) {
                            NR_svbksbSPL(u.Flat(), w, v.Flat(), m, n, b, x);
                          });
     }},
    {"rows", 70, 32,
     [](const std::vector<float>& a, int m, int n) {
       return Decompose<0, 0>(a, m, n, [=](Shaped& u, float* w, Shaped& v) {
         return NR_svdcmpSPLnew(u.Rows(), m, n, w, v.Rows());
       });
     },
     [](const Decomposed<float>& parts, int m, int n, const std::vector<float>& right) {
       return Solve<0, 0>(parts, m, n, right,
                          [=](Shaped& u, float* w, Shaped& v, float* b, float* x) {
                            std::vector<float> work(static_cast<std::size_t>(n));
                            NR_svbksbSPLnew(u.Rows(), w, v.Rows(), work.data(), m, n, b, x);
                          });
     }},
    {"stride 4", 40, 3,
     [](const std::vector<float>& a, int m, int n) {
       return Decompose<1, 4>(a, m, n, [=](Shaped& u, float* w, Shaped& v) {
         return NR_svdcmpSPL4(u.Flat(), m, n, w, v.Flat());
       });
     },
     [](const Decomposed<float>& parts, int m, int n, const std::vector<float>& right) {
       // The wider stride has no decomposition of its own.
       const auto x =
           Solve<1, 5>(parts, m, n, right, [=](Shaped& u, float* w, Shaped& v, float* b, float* y) {
             NR_svbksbSPL5(u.Flat(), w, v.Flat(), m, n, b, y);
           });
       const auto narrow =
           Solve<1, 4>(parts, m, n, right, [=](Shaped& u, float* w, Shaped& v, float* b, float* y) {
             NR_svbksbSPL4(u.Flat(), w, v.Flat(), m, n, b, y);
           });
       EXPECT_EQ(x, narrow);
       return x;
     }},
};

const Shape<double> kDoubleShapes[] = {
    {"double", 32, 32,
     [](const std::vector<double>& a, int m, int n) {
       Decomposed<double> parts{a, std::vector<double>(static_cast<std::size_t>(n)),
                                std::vector<double>(static_cast<std::size_t>(n * n)), 0};
       parts.status = NR_svdcmpSPL_d(parts.u.data(), m, n, parts.w.data(), parts.v.data());
       return parts;
     },
     [](const Decomposed<double>& parts, int m, int n, const std::vector<double>& b) {
       std::vector<double> x(static_cast<std::size_t>(n));
       NR_svbksbSPL_d(parts.u.data(), parts.w.data(), parts.v.data(), m, n, b.data(), x.data());
       return x;
     }}};

enum Kind { kRandom, kRankDeficient, kGraded, kTiny, kHuge, kZero, kDiagonal, kKinds };

template <class T>
std::vector<T> MakeMatrix(Kind kind, int m, int n, std::mt19937* random) {
  std::normal_distribution<double> normal;
  std::vector<T> a;
  const double extreme = std::is_same_v<T, float> ? 1e30 : 1e290;
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j < n; ++j) {
      double x = normal(*random);
      if (kind == kRankDeficient && j > 0 && j % 3 == 0) x = static_cast<double>(a[a.size() - 1]);
      if (kind == kGraded)
        x *= std::pow(10.0, -(i + j) * (std::is_same_v<T, float> ? 5.0 : 10.0) / (m + n));
      if (kind == kTiny) x /= extreme;
      if (kind == kHuge) x *= extreme;
      if (kind == kZero || (kind == kDiagonal && i != j)) x = 0;
      a.push_back(static_cast<T>(x));
    }
  }
  return a;
}

/// The largest difference between the product of the parts and the matrix, and of U'U and V'V from
/// the identity, where the singular value isn't negligible.
template <class T>
void CheckParts(const std::vector<T>& a, const Decomposed<T>& parts, int m, int n, double largest,
                double limit) {
  const auto at = [n](const std::vector<T>& block, int i, int j) {
    return static_cast<double>(block[static_cast<std::size_t>(i * n + j)]);
  };
  const auto w = [&](int j) { return static_cast<double>(parts.w[static_cast<std::size_t>(j)]); };
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j < n; ++j) {
      double sum = 0;
      for (int k = 0; k < n; ++k)
        sum += at(parts.u, i, k) * w(k) * at(parts.v, j, k);
      ASSERT_NEAR(sum, at(a, i, j), limit * largest);
    }
  }
  for (int j = 0; j < n; ++j) {
    for (int k = 0; k <= j; ++k) {
      double left = 0;
      double right = 0;
      for (int i = 0; i < m; ++i)
        left += at(parts.u, i, j) * at(parts.u, i, k);
      for (int i = 0; i < n; ++i)
        right += at(parts.v, i, j) * at(parts.v, i, k);
      ASSERT_NEAR(right, j == k ? 1 : 0, limit);
      if (w(j) > limit * largest && w(k) > limit * largest) {
        ASSERT_NEAR(left, j == k ? 1 : 0, limit);
      }
    }
  }
}

template <class T>
void CheckShape(const Shape<T>& shape, double limit) {
  std::mt19937 random(5);
  for (int round = 0; round < 280; ++round) {
    const auto kind = static_cast<Kind>(round % kKinds);
    const int n = 1 + static_cast<int>(random() % static_cast<unsigned>(shape.most_columns));
    const int m = round % 4 == 0
                      ? std::min(n, shape.most_rows)
                      : 1 + static_cast<int>(random() % static_cast<unsigned>(shape.most_rows));
    SCOPED_TRACE(testing::Message() << shape.name << " kind " << kind << " " << m << " x " << n);
    const std::vector<T> a = MakeMatrix<T>(kind, m, n, &random);
    Decomposed<T> parts = shape.decompose(a, m, n);
    ASSERT_EQ(parts.status, noErr);
    const auto expected = ReferenceValues({a.begin(), a.end()}, m, n);
    std::vector<T> sorted = parts.w;
    std::sort(sorted.begin(), sorted.end(), std::greater<>());
    for (std::size_t j = 0; j < sorted.size(); ++j)
      ASSERT_NEAR(static_cast<double>(sorted[j]), expected[j], limit * expected[0]);
    ASSERT_GE(sorted.back(), 0);
    ASSERT_NO_FATAL_FAILURE(CheckParts(a, parts, m, n, expected[0], limit));

    // A right-hand side in the range of A, solved without what is negligible: A x meets it.
    if (kind == kTiny || kind == kHuge) continue;
    for (T& w : parts.w) {
      if (static_cast<double>(w) < 1e-4 * expected[0]) w = 0;
    }
    std::vector<T> b(static_cast<std::size_t>(m));
    for (int i = 0; i < m; ++i)
      for (int j = 0; j < n; ++j)
        b[static_cast<std::size_t>(i)] +=
            parts.u[static_cast<std::size_t>(i * n + j)] * parts.w[static_cast<std::size_t>(j)];
    const std::vector<T> x = shape.solve(parts, m, n, b);
    for (int i = 0; i < m; ++i) {
      double sum = 0;
      for (int j = 0; j < n; ++j)
        sum += static_cast<double>(a[static_cast<std::size_t>(i * n + j)]) *
               static_cast<double>(x[static_cast<std::size_t>(j)]);
      ASSERT_NEAR(sum, static_cast<double>(b[static_cast<std::size_t>(i)]),
                  1e4 * limit * (expected[0] + 1e-30));
    }
  }
}

TEST(SingularValues, AgreeWithLapackInEveryShape) {
  for (const auto& shape : kFloatShapes)
    ASSERT_NO_FATAL_FAILURE(CheckShape(shape, 1e-5));
  for (const auto& shape : kDoubleShapes)
    ASSERT_NO_FATAL_FAILURE(CheckShape(shape, 1e-12));
}

}  // namespace
