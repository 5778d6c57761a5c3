// Products of 3 by 3 matrices, beside a plain loop.
//
// Usage: matrix_benchmark   Prints the median times of one product.

#include <random>

#include "ORW_blas.h"
#include "numerics_benchmark.h"

namespace {

/// What one writes without a library, for any size and not inlined, as a call of one isn't either.
template <class T>
__attribute__((noinline)) void PlainMultiply(int m, int n, int k, const T* a, const T* b, T* c) {
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j < n; ++j) {
      T sum = 0;
      for (int l = 0; l < k; ++l)
        sum += a[i * k + l] * b[l * n + j];
      c[i * n + j] = sum;
    }
  }
}

template <class T>
__attribute__((noinline)) void PlainMatrixVector(int rows, int columns, const T* a, const T* x,
                                                 T* y) {
  for (int i = 0; i < rows; ++i) {
    T sum = 0;
    for (int j = 0; j < columns; ++j)
      sum += a[i * columns + j] * x[j];
    y[i] = sum;
  }
}

/// Each product is the next one's first factor, so that none can be left out.
template <class T, class Multiply, class MatrixVector>
void Measure(const char* product, const char* vector, Multiply multiply,
             MatrixVector matrix_vector) {
  constexpr int kCalls = 200000;
  T turn[9] = {T(0.6), T(-0.8), 0, T(0.8), T(0.6), 0, 0, 0, 1};
  T a[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  T b[9];
  const auto run = [&](auto call) {
    return [&, call] {
      call(3, 3, 3, turn, a, b);
      call(3, 3, 3, turn, b, a);
    };
  };
  const auto run_vector = [&](auto call) {
    return [&, call] {
      call(3, 3, turn, a, b);
      call(3, 3, turn, b, a);
    };
  };
  auto times = MedianTimes(kCalls, run(multiply), run(PlainMultiply<T>));
  PrintPeer(product, times[0] / 2, "plain loop", times[1] / 2);
  times = MedianTimes(kCalls, run_vector(matrix_vector), run_vector(PlainMatrixVector<T>));
  PrintPeer(vector, times[0] / 2, "plain loop", times[1] / 2);
}

}  // namespace

int main() {
  Measure<float>("CB_MatrixMultiplyF, 3 x 3", "CB_MatrixVectorF, 3 x 3", CB_MatrixMultiplyF,
                 CB_MatrixVectorF);
  Measure<double>("CB_MatrixMultiplyD, 3 x 3", "CB_MatrixVectorD, 3 x 3", CB_MatrixMultiplyD,
                  CB_MatrixVectorD);
}
