// A least-squares solution by singular value decomposition, beside GSL's and LAPACK's.
//
// Usage: svd_benchmark   Prints the median times of a decomposition with its back-substitution.

#include <gsl/gsl_linalg.h>

#include <array>
#include <random>

#include "ORW_NR_double.h"
#include "numerics_benchmark.h"

extern "C" {
void dgesvd_(const char* jobu, const char* jobvt, const int* m, const int* n, double* a,
             const int* lda, double* s, double* u, const int* ldu, double* vt, const int* ldvt,
             double* work, const int* lwork, int* info);
void dgemv_(const char* trans, const int* m, const int* n, const double* alpha, const double* a,
            const int* lda, const double* x, const int* incx, const double* beta, double* y,
            const int* incy);
}

namespace {

template <int n>
void Measure(const char* name, int calls) {
  std::mt19937 random(1);
  std::normal_distribution<double> normal;
  std::array<double, n * n> matrix;
  std::array<double, n> b;
  std::generate(matrix.begin(), matrix.end(), [&] { return normal(random); });
  std::generate(b.begin(), b.end(), [&] { return normal(random); });
  std::array<double, n * n> u;
  std::array<double, n * n> v;
  std::array<double, n> w;
  std::array<double, n> x;

  const auto ours = [&] {
    u = matrix;
    NR_svdcmpSPL_d(u.data(), n, n, w.data(), v.data());
    NR_svbksbSPL_d(u.data(), w.data(), v.data(), n, n, b.data(), x.data());
  };
  const auto gsl = [&, values = std::array<double, n>(), work = std::array<double, n>()]() mutable {
    u = matrix;
    auto u_view = gsl_matrix_view_array(u.data(), n, n);
    auto v_view = gsl_matrix_view_array(v.data(), n, n);
    auto w_view = gsl_vector_view_array(values.data(), n);
    auto work_view = gsl_vector_view_array(work.data(), n);
    auto b_view = gsl_vector_view_array(b.data(), n);
    auto x_view = gsl_vector_view_array(x.data(), n);
    gsl_linalg_SV_decomp(&u_view.matrix, &v_view.matrix, &w_view.vector, &work_view.vector);
    gsl_linalg_SV_solve(&u_view.matrix, &v_view.matrix, &w_view.vector, &b_view.vector,
                        &x_view.vector);
  };
  // Column by column the matrix is the transposed one, which costs the same.
  const auto lapack = [&, a = matrix, work = std::array<double, 64 * n + 64>()]() mutable {
    const int size = n;
    const int work_size = static_cast<int>(work.size());
    const int one = 1;
    const double alpha = 1;
    const double beta = 0;
    int info = 0;
    a = matrix;
    dgesvd_("S", "S", &size, &size, a.data(), &size, w.data(), u.data(), &size, v.data(), &size,
            work.data(), &work_size, &info);
    std::array<double, n> parts;
    dgemv_("T", &size, &size, &alpha, u.data(), &size, b.data(), &one, &beta, parts.data(), &one);
    for (int i = 0; i < n; ++i)
      parts[i] = w[i] == 0 ? 0 : parts[i] / w[i];
    dgemv_("T", &size, &size, &alpha, v.data(), &size, parts.data(), &one, &beta, x.data(), &one);
  };
  const auto times = MedianTimes(calls, ours, gsl, lapack);
  PrintPeer(name, times[0], "GSL", times[1]);
  PrintPeer(name, times[0], "LAPACK dgesvd", times[2]);
}

}  // namespace

int main() {
  Measure<8>("decompose and solve, 8 x 8", 2000);
  Measure<32>("decompose and solve, 32 x 32", 100);
}
