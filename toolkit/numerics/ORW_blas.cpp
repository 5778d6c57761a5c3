#include "ORW_blas.h"

#include <cblas.h>

#include <algorithm>
#include <memory>
#include <new>

extern "C" {
/// LAPACK's solver of linear equations; matrices column by column, counts by reference.
void sgesv_(const int* n, const int* nrhs, float* a, const int* lda, int* pivots, float* b,
            const int* ldb, int* info);
void dgesv_(const int* n, const int* nrhs, double* a, const int* lda, int* pivots, double* b,
            const int* ldb, int* info);
}

namespace {

/// Up to this many rows and columns a call of the BLAS costs more than the product.
constexpr SInt32 kSmall = 8;

struct Blas {
  static constexpr auto kOrder = CblasRowMajor;
  static constexpr auto kPlain = CblasNoTrans;
  static constexpr auto kTransposed = CblasTrans;

  static void Gemv(CBLAS_TRANSPOSE tr, int rows, int columns, const float* a, const float* x,
                   float* y) {
    cblas_sgemv(kOrder, tr, rows, columns, 1.0F, a, columns, x, 1, 0.0F, y, 1);
  }
  static void Gemv(CBLAS_TRANSPOSE tr, int rows, int columns, const double* a, const double* x,
                   double* y) {
    cblas_dgemv(kOrder, tr, rows, columns, 1.0, a, columns, x, 1, 0.0, y, 1);
  }
  static void Gemm(CBLAS_TRANSPOSE tr_a, CBLAS_TRANSPOSE tr_b, int m, int n, int k, const float* a,
                   const float* b, float* c) {
    cblas_sgemm(kOrder, tr_a, tr_b, m, n, k, 1.0F, a, k, b, n, 0.0F, c, n);
  }
  static void Gemm(CBLAS_TRANSPOSE tr_a, CBLAS_TRANSPOSE tr_b, int m, int n, int k, const double* a,
                   const double* b, double* c) {
    cblas_dgemm(kOrder, tr_a, tr_b, m, n, k, 1.0, a, k, b, n, 0.0, c, n);
  }
  static int Gesv(int n, int columns, float* a, int* pivots, float* b) {
    int info = 0;
    sgesv_(&n, &columns, a, &n, pivots, b, &n, &info);
    return info;
  }
  static int Gesv(int n, int columns, double* a, int* pivots, double* b) {
    int info = 0;
    dgesv_(&n, &columns, a, &n, pivots, b, &n, &info);
    return info;
  }
};

std::size_t Count(SInt32 n) {
  return static_cast<std::size_t>(std::max(n, 0));
}

std::size_t Count(SInt32 rows, SInt32 columns) {
  return Count(rows) * Count(columns);
}

bool IsSmall(SInt32 rows, SInt32 columns) {
  return rows <= kSmall && columns <= kSmall;
}

/// Element (i, j) of the factor is a[i * down + j * across].
template <class T>
inline void ApplySmall(std::size_t height, std::size_t width, const T* a, std::size_t down,
                       std::size_t across, const T* x, T* y) {
  for (std::size_t i = 0; i < height; ++i) {
    T sum = 0;
    for (std::size_t j = 0; j < width; ++j)
      sum += a[i * down + j * across] * x[j];
    y[i] = sum;
  }
}

/// y = A x or A' x, with A stored in `rows` x `columns`.
template <class T>
inline void MatrixVector(bool transposed, SInt32 rows, SInt32 columns, const T* a, const T* x,
                         T* y) {
  if (rows == 3 && columns == 3) {
    if (transposed) return ApplySmall<T>(3, 3, a, 1, 3, x, y);
    return ApplySmall<T>(3, 3, a, 3, 1, x, y);
  }
  const std::size_t height = Count(transposed ? columns : rows);
  const std::size_t width = Count(transposed ? rows : columns);
  if (IsSmall(rows, columns))
    return ApplySmall(height, width, a, transposed ? 1 : width, transposed ? height : 1, x, y);
  if (rows <= 0 || columns <= 0) {
    std::fill_n(y, height, T{0});
    return;
  }
  Blas::Gemv(transposed ? Blas::kTransposed : Blas::kPlain, rows, columns, a, x, y);
}

/// Element (i, k) of the first factor is a[i * a_down + k * a_across], the second likewise.
template <class T>
void MultiplySmall(std::size_t m, std::size_t n, std::size_t k, const T* a, std::size_t a_down,
                   std::size_t a_across, const T* b, std::size_t b_down, std::size_t b_across,
                   T* c) {
  for (std::size_t i = 0; i < m; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      T sum = 0;
      for (std::size_t l = 0; l < k; ++l)
        sum += a[i * a_down + l * a_across] * b[l * b_down + j * b_across];
      c[i * n + j] = sum;
    }
  }
}

template <class T>
void Multiply(CBLAS_TRANSPOSE tr_a, CBLAS_TRANSPOSE tr_b, SInt32 m, SInt32 n, SInt32 k, const T* a,
              const T* b, T* c) {
  if (m <= 0 || n <= 0 || k <= 0) {
    std::fill_n(c, Count(m, n), T{0});
    return;
  }
  if (!IsSmall(m, n) || k > kSmall) return Blas::Gemm(tr_a, tr_b, m, n, k, a, b, c);
  const std::size_t depth = Count(k);
  const std::size_t width = Count(n);
  const bool a_flipped = tr_a == Blas::kTransposed;
  const bool b_flipped = tr_b == Blas::kTransposed;
  if (m == 3 && n == 3 && k == 3)
    return MultiplySmall<T>(3, 3, 3, a, a_flipped ? 1 : 3, a_flipped ? 3 : 1, b, b_flipped ? 1 : 3,
                            b_flipped ? 3 : 1, c);
  MultiplySmall(Count(m), width, depth, a, a_flipped ? 1 : depth, a_flipped ? depth : 1, b,
                b_flipped ? 1 : width, b_flipped ? width : 1, c);
}

template <class T>
void Transpose(std::size_t n, const T* in, T* out) {
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < n; ++j)
      out[j * n + i] = in[i * n + j];
}

template <class T>
void SetUnit(SInt32 n, T* matrix) {
  std::fill_n(matrix, Count(n, n), T{0});
  for (std::size_t i = 0; i < Count(n); ++i)
    matrix[i * Count(n) + i] = 1;
}

/// Solves A X = B in place in `b`, which is column by column and has `columns` of them.
template <class T>
SInt32 Solve(SInt32 n, const T* a, SInt32 columns, T* b) {
  if (n == 0) return 0;
  // The solver works in place and wants the matrix column by column.
  const std::unique_ptr<T[]> matrix(new (std::nothrow) T[Count(n, n)]);
  const std::unique_ptr<int[]> pivots(new (std::nothrow) int[Count(n)]);
  if (matrix == nullptr || pivots == nullptr) return memFullErr;
  Transpose(Count(n), a, matrix.get());
  const int info = Blas::Gesv(n, columns, matrix.get(), pivots.get(), b);
  if (info < 0) return paramErr;
  return info > 0 ? CB_SingularMatrixErr : 0;
}

template <class T>
SInt32 Invert(SInt32 n, const T* a, T* out) {
  if (n < 0) return paramErr;
  SetUnit(n, out);
  const SInt32 status = Solve(n, a, n, out);
  for (std::size_t i = 0; i < Count(n); ++i)
    for (std::size_t j = 0; j < i; ++j)
      std::swap(out[i * Count(n) + j], out[j * Count(n) + i]);
  return status;
}

template <class T>
SInt32 SolveOne(SInt32 n, const T* a, const T* b, T* x) {
  if (n < 0) return paramErr;
  std::copy_n(b, Count(n), x);
  return Solve(n, a, 1, x);
}

template <class T>
void Copy(std::size_t count, const T* in, T* out) {
  if (in != out) std::copy_n(in, count, out);
}

template <class T>
void Scale(std::size_t count, T factor, const T* in, T* out) {
  if (factor == 0) {
    std::fill_n(out, count, T{0});
    return;
  }
  std::transform(in, in + count, out, [factor](T x) { return factor * x; });
}

template <class From, class To>
void Convert(std::size_t count, const From* in, To* out) {
  std::transform(in, in + count, out, [](From x) { return static_cast<To>(x); });
}

template <class T>
void Gather(SInt32 rows, SInt32 columns, const T* const* matrix, T* array) {
  for (std::size_t i = 0; i < Count(rows); ++i)
    std::copy_n(matrix[i], Count(columns), array + i * Count(columns));
}

template <class T>
void Scatter(SInt32 rows, SInt32 columns, const T* array, T* const* matrix) {
  for (std::size_t i = 0; i < Count(rows); ++i)
    std::copy_n(array + i * Count(columns), Count(columns), matrix[i]);
}

}  // namespace

void CB_MatrixVectorF(SInt32 rows, SInt32 columns, const float* a, const float* x, float* y) {
  MatrixVector(false, rows, columns, a, x, y);
}

void CB_MatrixVectorD(SInt32 rows, SInt32 columns, const double* a, const double* x, double* y) {
  MatrixVector(false, rows, columns, a, x, y);
}

void CB_MatrixTrVectorF(SInt32 y_length, SInt32 x_length, const float* a, const float* x,
                        float* y) {
  MatrixVector(true, x_length, y_length, a, x, y);
}

void CB_MatrixTrVectorD(SInt32 y_length, SInt32 x_length, const double* a, const double* x,
                        double* y) {
  MatrixVector(true, x_length, y_length, a, x, y);
}

void CB_TransposeMatrixF(SInt32 n, SInt32 /*columns*/, const float* in, float* out) {
  Transpose(Count(n), in, out);
}

void CB_TransposeMatrixD(SInt32 n, SInt32 /*columns*/, const double* in, double* out) {
  Transpose(Count(n), in, out);
}

void CB_MatrixMultiplyF(SInt32 m, SInt32 n, SInt32 k, const float* a, const float* b, float* c) {
  Multiply(Blas::kPlain, Blas::kPlain, m, n, k, a, b, c);
}

void CB_MatrixMultiplyD(SInt32 m, SInt32 n, SInt32 k, const double* a, const double* b, double* c) {
  Multiply(Blas::kPlain, Blas::kPlain, m, n, k, a, b, c);
}

void CB_MatrixMultiplyNoTrTrF(SInt32 m, SInt32 n, SInt32 k, const float* a, const float* b,
                              float* c) {
  Multiply(Blas::kPlain, Blas::kTransposed, m, n, k, a, b, c);
}

void CB_MatrixMultiplyNoTrTrD(SInt32 m, SInt32 n, SInt32 k, const double* a, const double* b,
                              double* c) {
  Multiply(Blas::kPlain, Blas::kTransposed, m, n, k, a, b, c);
}

void CB_MatrixMultiplyTrNoTrF(SInt32 m, SInt32 n, SInt32 k, const float* a, const float* b,
                              float* c) {
  Multiply(Blas::kTransposed, Blas::kPlain, m, n, k, a, b, c);
}

void CB_MatrixMultiplyTrNoTrD(SInt32 m, SInt32 n, SInt32 k, const double* a, const double* b,
                              double* c) {
  Multiply(Blas::kTransposed, Blas::kPlain, m, n, k, a, b, c);
}

SInt32 CB_MatrixInverseF(SInt32 n, const float* a, float* out) {
  return Invert(n, a, out);
}

SInt32 CB_MatrixInverseD(SInt32 n, const double* a, double* out) {
  return Invert(n, a, out);
}

SInt32 CB_SolveLinEqSimpleF(SInt32 n, const float* a, const float* b, float* x) {
  return SolveOne(n, a, b, x);
}

SInt32 CB_SolveLinEqSimpleD(SInt32 n, const double* a, const double* b, double* x) {
  return SolveOne(n, a, b, x);
}

void CB_CopyMatrixF(SInt32 rows, SInt32 columns, const float* in, float* out) {
  Copy(Count(rows, columns), in, out);
}

void CB_CopyMatrixD(SInt32 rows, SInt32 columns, const double* in, double* out) {
  Copy(Count(rows, columns), in, out);
}

void CB_CopyVectorF(SInt32 n, const float* in, float* out) {
  Copy(Count(n), in, out);
}

void CB_CopyVectorD(SInt32 n, const double* in, double* out) {
  Copy(Count(n), in, out);
}

void CB_ScaleVectorF(SInt32 n, float factor, const float* in, float* out) {
  Scale(Count(n), factor, in, out);
}

void CB_ScaleVectorD(SInt32 n, double factor, const double* in, double* out) {
  Scale(Count(n), factor, in, out);
}

void CB_ScaleMatrixF(SInt32 rows, SInt32 columns, float factor, const float* in, float* out) {
  Scale(Count(rows, columns), factor, in, out);
}

void CB_ScaleMatrixD(SInt32 rows, SInt32 columns, double factor, const double* in, double* out) {
  Scale(Count(rows, columns), factor, in, out);
}

void CB_SetZeroVectorF(SInt32 n, float* vector) {
  std::fill_n(vector, Count(n), float{0});
}

void CB_SetZeroVectorD(SInt32 n, double* vector) {
  std::fill_n(vector, Count(n), double{0});
}

void CB_SetZeroMatrixF(SInt32 rows, SInt32 columns, float* matrix) {
  std::fill_n(matrix, Count(rows, columns), float{0});
}

void CB_SetZeroMatrixD(SInt32 rows, SInt32 columns, double* matrix) {
  std::fill_n(matrix, Count(rows, columns), double{0});
}

void CB_SetUnitMatrixF(SInt32 n, float* matrix) {
  SetUnit(n, matrix);
}

void CB_SetUnitMatrixD(SInt32 n, double* matrix) {
  SetUnit(n, matrix);
}

void CB_MatrixToArrayF(SInt32 rows, SInt32 columns, const float* const* matrix, float* array) {
  Gather(rows, columns, matrix, array);
}

void CB_MatrixToArrayD(SInt32 rows, SInt32 columns, const double* const* matrix, double* array) {
  Gather(rows, columns, matrix, array);
}

void CB_ArrayToMatrixF(SInt32 rows, SInt32 columns, const float* array, float* const* matrix) {
  Scatter(rows, columns, array, matrix);
}

void CB_ArrayToMatrixD(SInt32 rows, SInt32 columns, const double* array, double* const* matrix) {
  Scatter(rows, columns, array, matrix);
}

void CB_VectorFtoD(SInt32 n, const float* in, double* out) {
  Convert(Count(n), in, out);
}

void CB_VectorDtoF(SInt32 n, const double* in, float* out) {
  Convert(Count(n), in, out);
}

void CB_MatrixFtoD(SInt32 rows, SInt32 columns, const float* in, double* out) {
  Convert(Count(rows, columns), in, out);
}

void CB_MatrixDtoF(SInt32 rows, SInt32 columns, const double* in, float* out) {
  Convert(Count(rows, columns), in, out);
}

void CB_MatrixToArrayF3x3(const float matrix[3][3], float* array) {
  std::copy_n(matrix[0], 9, array);
}

void CB_ArrayToMatrixF3x3(const float* array, float matrix[3][3]) {
  std::copy_n(array, 9, matrix[0]);
}
