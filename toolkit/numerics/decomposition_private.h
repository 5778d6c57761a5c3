/// The singular value decomposition and its back-substitution for every shape of matrix.
///
/// A view gives a matrix columns, counted from 0, whose elements are columns[j][i]; vectors are
/// plain pointers to their first element. Sums of products run in four lanes that are added at the
/// end, so that they vectorize with the same result on every machine.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>

#include "NR_Errors.h"
#include "base_types.h"

namespace quillmere::numerics {

/// What fits the local work space of the shapes that allocate nothing.
inline constexpr std::size_t kMostColumns = 32;
inline constexpr int kMostPasses = 30;
/// Singular values below this fraction of the largest count as 0 in fits.
inline constexpr double kNegligibleFraction = 1e-5;

#define QUILLMERE_INLINE inline __attribute__((always_inline))

/// True if the local work space has room for such a matrix.
inline bool Fits(SInt32 m, SInt32 n, std::size_t most_rows, std::size_t most_columns) {
  return m >= 0 && n >= 0 && static_cast<std::size_t>(m) <= most_rows &&
         static_cast<std::size_t>(n) <= most_columns;
}

/// Rows through a table of pointers, the first row and column at index `base`.
template <class T>
struct RowPointers {
  T* const* rows;
  std::ptrdiff_t base;

  struct Column {
    T* const* rows;
    std::ptrdiff_t j;
    T& operator[](std::size_t i) const { return rows[i][j]; }
  };
  Column operator[](std::size_t j) const {
    return {rows + base, static_cast<std::ptrdiff_t>(j) + base};
  }
};

/// Elements at a fixed distance from row to row.
template <class T>
struct Strided {
  T* first;
  std::size_t stride;

  struct Column {
    T* first;
    std::size_t stride;
    T& operator[](std::size_t i) const { return first[i * stride]; }
  };
  Column operator[](std::size_t j) const { return {first + j, stride}; }
};

/// At most 32 by 32 elements, column by column.
template <class T>
struct Columns {
  T* elements;

  using Column = T* __restrict;
  T* operator[](std::size_t j) const { return elements + j * kMostColumns; }
};

template <class T, class A, class B>
QUILLMERE_INLINE T SumOfProducts(std::size_t from, std::size_t to, A a, B b) {
  T lanes[4] = {};
  std::size_t i = from;
  for (; i + 4 <= to; i += 4)
    for (std::size_t lane = 0; lane < 4; ++lane)
      lanes[lane] += a[i + lane] * b[i + lane];
  T rest = 0;
  for (; i < to; ++i)
    rest += a[i] * b[i];
  return (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]) + rest;
}

/// The length of the hypotenuse without overflow; sqrt(1 + r^2) is taken in double precision.
template <class T>
QUILLMERE_INLINE T Hypotenuse(T a, T b) {
  const T x = std::fabs(a);
  const T y = std::fabs(b);
  const T larger = x > y ? x : y;
  const T smaller = x > y ? y : x;
  if (larger == 0 && smaller == 0) return 0;
  const T ratio = smaller / larger;
  return static_cast<T>(static_cast<double>(larger) *
                        std::sqrt(1.0 + static_cast<double>(ratio * ratio)));
}

/// Row i of a matrix as a vector.
template <class View>
struct RowOf {
  View view;
  std::size_t i;
  QUILLMERE_INLINE decltype(auto) operator[](std::size_t j) const { return view[j][i]; }
};

/// Householder's reduction and the implicit QR iteration of Golub and Reinsch. The
/// bidiagonal matrix, its rotations and the comparison with its norm are of type `B`; both matrices
/// have elements of type `T` and the same kind of view.
template <class T, class B, class Matrix>
class Decomposition {
 public:
  /// `superdiagonal` is work space of n elements.
  Decomposition(Matrix a, std::size_t m, std::size_t n, B* w, Matrix v, B* superdiagonal)
      : a_(a), m_(m), n_(n), w_(w), v_(v), e_(superdiagonal) {}

  /// False if a singular value doesn't converge.
  QUILLMERE_INLINE bool Run() {
    const int exponent = ScaleDown();
    Bidiagonalize();
    AccumulateRight();
    AccumulateLeft();
    for (std::size_t k = n_; k-- > 0;) {
      if (!Converge(k)) return false;
    }
    if (exponent != 0) {
      for (std::size_t j = 0; j < n_; ++j)
        w_[j] = std::ldexp(w_[j], exponent);
    }
    return true;
  }

 private:
  using Column = typename Matrix::Column;
  /// Rows that a row's transformation handles at a time.
  static constexpr std::size_t kBatch = 32;

  QUILLMERE_INLINE bool Negligible(B x) const { return std::fabs(x) + norm_ == norm_; }

  /// Brings a matrix near the ends of the range of numbers to magnitudes about 1, so that nothing
  /// leaves it on the way; returns the power of two taken out.
  QUILLMERE_INLINE int ScaleDown() {
    constexpr int kFarExponent = std::numeric_limits<T>::max_exponent / 4;
    T largest = 0;
    for (std::size_t j = 0; j < n_; ++j) {
      const auto column = a_[j];
      for (std::size_t i = 0; i < m_; ++i)
        largest = std::max(largest, std::fabs(column[i]));
    }
    if (largest == 0 || !std::isfinite(largest)) return 0;
    const int exponent = std::ilogb(largest);
    if (std::abs(exponent) < kFarExponent) return 0;
    for (std::size_t j = 0; j < n_; ++j) {
      const auto column = a_[j];
      for (std::size_t i = 0; i < m_; ++i)
        column[i] = std::ldexp(column[i], -exponent);
    }
    return exponent;
  }

  QUILLMERE_INLINE void Bidiagonalize() {
    T entry = 0;
    for (std::size_t i = 0; i < n_; ++i) {
      e_[i] = static_cast<B>(entry);
      w_[i] = static_cast<B>(i < m_ ? ReflectColumn(i) : 0);
      entry = i < m_ && i + 1 < n_ ? ReflectRow(i) : 0;
      norm_ = std::max(norm_, std::fabs(w_[i]) + std::fabs(e_[i]));
    }
  }

  /// Scales elements `first` to `last` of a column or row by the sum of their magnitudes, which it
  /// returns, and makes the vector of the reflection that leaves only the first of them. That one
  /// becomes `entry`; `h` is minus half of the square of the vector's length.
  template <class Elements>
  static QUILLMERE_INLINE T MakeReflection(Elements x, std::size_t first, std::size_t last,
                                           T* entry, T* h) {
    T scale = 0;
    for (std::size_t k = first; k < last; ++k)
      scale += std::fabs(x[k]);
    *entry = 0;
    if (scale == 0) return 0;
    for (std::size_t k = first; k < last; ++k)
      x[k] /= scale;
    const T squares = SumOfProducts<T>(first, last, x, x);
    const T leading = x[first];
    const T g = std::copysign(static_cast<T>(std::sqrt(static_cast<double>(squares))), -leading);
    *h = leading * g - squares;
    x[first] = leading - g;
    *entry = scale * g;
    return scale;
  }

  /// Zeroes column i below the diagonal, whose entry it returns; the vector stays in the column.
  QUILLMERE_INLINE T ReflectColumn(std::size_t i) {
    const auto column = a_[i];
    T entry = 0;
    T h = 0;
    const T scale = MakeReflection(column, i, m_, &entry, &h);
    if (scale == 0) return entry;
    for (std::size_t j = i + 1; j < n_; ++j)
      AddMultiple(i, m_, SumOfProducts<T>(i, m_, column, a_[j]) / h, column, a_[j]);
    for (std::size_t k = i; k < m_; ++k)
      column[k] *= scale;
    return entry;
  }

  /// Zeroes row i behind the superdiagonal, whose entry it returns; the vector stays in the row.
  QUILLMERE_INLINE T ReflectRow(std::size_t i) {
    const RowOf<Matrix> row{a_, i};
    T entry = 0;
    T h = 0;
    const T scale = MakeReflection(row, i + 1, n_, &entry, &h);
    if (scale == 0) return entry;
    for (std::size_t j = i + 1; j < m_; j += kBatch)
      ReflectRows(row, h, j, std::min(kBatch, m_ - j));
    for (std::size_t k = i + 1; k < n_; ++k)
      row[k] *= scale;
    return entry;
  }

  /// Applies the reflection in a row to `count` rows from `start` on, walking down the columns.
  QUILLMERE_INLINE void ReflectRows(RowOf<Matrix> row, T h, std::size_t start, std::size_t count) {
    T sums[kBatch];
    std::fill_n(sums, count, T{0});
    for (std::size_t k = row.i + 1; k < n_; ++k) {
      const auto column = a_[k];
      const T factor = row[k];
      for (std::size_t j = 0; j < count; ++j)
        sums[j] += column[start + j] * factor;
    }
    for (std::size_t k = row.i + 1; k < n_; ++k) {
      const auto column = a_[k];
      const T factor = row[k] / h;
      for (std::size_t j = 0; j < count; ++j)
        column[start + j] += sums[j] * factor;
    }
  }

  static QUILLMERE_INLINE void AddMultiple(std::size_t first, std::size_t last, T factor,
                                           Column from, Column to) {
    for (std::size_t k = first; k < last; ++k)
      to[k] += factor * from[k];
  }

  static QUILLMERE_INLINE void Rotate(std::size_t rows, Column p, Column q, B cosine, B sine) {
    const T c = static_cast<T>(cosine);
    const T s = static_cast<T>(sine);
    for (std::size_t k = 0; k < rows; ++k) {
      const T x = p[k];
      const T y = q[k];
      p[k] = x * c + y * s;
      q[k] = y * c - x * s;
    }
  }

  /// Turns the reflections that the rows hold into V, from the last to the first.
  QUILLMERE_INLINE void AccumulateRight() {
    for (std::size_t i = n_; i-- > 0;) {
      const std::size_t first = i + 1;
      const auto column = v_[i];
      if (first < n_ && e_[first] != 0) {
        const RowOf<Matrix> row{a_, i};
        for (std::size_t j = first; j < n_; ++j)
          column[j] = (row[j] / row[first]) / static_cast<T>(e_[first]);
        for (std::size_t j = first; j < n_; ++j)
          AddMultiple(first, n_, SumOfProducts<T>(first, n_, row, v_[j]), column, v_[j]);
      }
      for (std::size_t j = first; j < n_; ++j)
        v_[j][i] = column[j] = 0;
      column[i] = 1;
    }
  }

  /// Turns the reflections that the columns hold into U.
  QUILLMERE_INLINE void AccumulateLeft() {
    for (std::size_t i = std::min(m_, n_); i-- > 0;) {
      const auto column = a_[i];
      const T entry = static_cast<T>(w_[i]);
      for (std::size_t j = i + 1; j < n_; ++j)
        a_[j][i] = 0;
      if (entry != 0) {
        for (std::size_t j = i + 1; j < n_; ++j) {
          const T sum = SumOfProducts<T>(i + 1, m_, column, a_[j]);
          AddMultiple(i, m_, sum / column[i] / entry, column, a_[j]);
        }
        for (std::size_t k = i; k < m_; ++k)
          column[k] /= entry;
      } else {
        for (std::size_t k = i; k < m_; ++k)
          column[k] = 0;
      }
      column[i] += 1;
    }
  }

  QUILLMERE_INLINE bool Converge(std::size_t k) {
    for (int pass = 1;; ++pass) {
      const std::size_t l = Split(k);
      if (l == k) {
        MakePositive(k);
        return true;
      }
      if (pass == kMostPasses) return false;
      Sweep(l, k, Shift(l, k));
    }
  }

  /// The first row of the block that ends at k, after splitting off what is negligible above it.
  QUILLMERE_INLINE std::size_t Split(std::size_t k) {
    std::size_t l = k;
    for (;; --l) {
      if (l == 0 || Negligible(e_[l])) return l;
      if (Negligible(w_[l - 1])) break;
    }
    B c = 0;
    B s = 1;
    for (std::size_t i = l; i <= k; ++i) {
      const B f = s * e_[i];
      e_[i] = c * e_[i];
      if (Negligible(f)) break;
      const B g = w_[i];
      w_[i] = Hypotenuse(f, g);
      c = g / w_[i];
      s = -f / w_[i];
      Rotate(m_, a_[l - 1], a_[i], c, s);
    }
    return l;
  }

  QUILLMERE_INLINE void MakePositive(std::size_t k) {
    if (!(w_[k] < 0)) return;
    w_[k] = -w_[k];
    const auto column = v_[k];
    for (std::size_t j = 0; j < n_; ++j)
      column[j] = -column[j];
  }

  /// The first element of the QR step whose shift is an eigenvalue of the bottom 2 by 2 minor of
  /// B'B. Quotients come before products, so that tiny and huge matrices keep their digits.
  QUILLMERE_INLINE B Shift(std::size_t l, std::size_t k) const {
    const B x = w_[l];
    const B y = w_[k - 1];
    const B z = w_[k];
    const B g = e_[k - 1];
    const B h = e_[k];
    const B f = ((y - z) / h * ((y + z) / y) + (g - h) / h * ((g + h) / y)) / 2;
    const B root = std::copysign(Hypotenuse(f, B{1}), f);
    return (x - z) / x * (x + z) + h / x * (y / (f + root) - h);
  }

  /// One implicit QR step on the block from l to k.
  QUILLMERE_INLINE void Sweep(std::size_t l, std::size_t k, B f) {
    B x = w_[l];
    B c = 1;
    B s = 1;
    for (std::size_t j = l; j < k; ++j) {
      B g = c * e_[j + 1];
      B h = s * e_[j + 1];
      B y = w_[j + 1];
      e_[j] = Hypotenuse(f, h);
      if (e_[j] != 0) {
        c = f / e_[j];
        s = h / e_[j];
      }
      f = x * c + g * s;
      g = g * c - x * s;
      h = y * s;
      y *= c;
      Rotate(n_, v_[j], v_[j + 1], c, s);
      w_[j] = Hypotenuse(f, h);
      if (w_[j] != 0) {
        c = f / w_[j];
        s = h / w_[j];
      }
      f = c * g + s * y;
      x = c * y - s * g;
      Rotate(m_, a_[j], a_[j + 1], c, s);
    }
    e_[l] = 0;
    e_[k] = f;
    w_[k] = x;
  }

  Matrix a_;
  std::size_t m_;
  std::size_t n_;
  B* w_;
  Matrix v_;
  B* e_;
  B norm_ = 0;
};

/// Decomposes a matrix of at most `most_columns` columns where it stands.
template <class T, std::size_t most_columns, class Matrix>
SInt32 DecomposeInPlace(Matrix a, SInt32 m, SInt32 n, T* w, Matrix v) {
  T superdiagonal[most_columns];
  Decomposition<T, T, Matrix> decomposition(a, static_cast<std::size_t>(m),
                                            static_cast<std::size_t>(n), w, v, superdiagonal);
  return decomposition.Run() ? 0 : NR_NoSVDConvergenceErr;
}

/// Columns are what vectorizes: decomposes at most 32 by 32 elements, row by row, in a copy.
template <class T>
QUILLMERE_INLINE SInt32 DecomposeRowMajor(T* a, std::size_t m, std::size_t n, T* w, T* v) {
  alignas(64) T columns[kMostColumns * kMostColumns];
  alignas(64) T right[kMostColumns * kMostColumns];
  T superdiagonal[kMostColumns];
  for (std::size_t j = 0; j < n; ++j)
    for (std::size_t i = 0; i < m; ++i)
      columns[j * kMostColumns + i] = a[i * n + j];
  Decomposition<T, T, Columns<T>> decomposition({columns}, m, n, w, {right}, superdiagonal);
  const bool converged = decomposition.Run();
  for (std::size_t i = 0; i < m; ++i)
    for (std::size_t j = 0; j < n; ++j)
      a[i * n + j] = columns[j * kMostColumns + i];
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < n; ++j)
      v[i * n + j] = right[j * kMostColumns + i];
  return converged ? 0 : NR_NoSVDConvergenceErr;
}

/// x = V diag(1 / w) U' b, where a w of 0 drops its term; `work` has n elements.
template <class T, class Matrix>
QUILLMERE_INLINE void BackSubstitute(Matrix u, const T* w, Matrix v, std::size_t m, std::size_t n,
                                     const T* b, T* x, T* work) {
  for (std::size_t j = 0; j < n; ++j)
    work[j] = w[j] == 0 ? 0 : SumOfProducts<T>(0, m, u[j], b) / w[j];
  for (std::size_t i = 0; i < n; ++i)
    x[i] = SumOfProducts<T>(0, n, RowOf<Matrix>{v, i}, work);
}

/// The same for at most 32 by 32 elements, row by row; nothing is done beyond that.
template <class T>
void BackSubstituteRowMajor(const T* u, const T* w, const T* v, SInt32 m, SInt32 n, const T* b,
                            T* x) {
  if (!Fits(m, n, kMostColumns, kMostColumns)) return;
  T work[kMostColumns];
  const auto columns = static_cast<std::size_t>(n);
  BackSubstitute(Strided<const T>{u, columns}, w, Strided<const T>{v, columns},
                 static_cast<std::size_t>(m), columns, b, x, work);
}

/// Sets to 0 what is below the negligible fraction of the largest singular value.
template <class T>
void Truncate(T* w, std::size_t n) {
  if (n == 0) return;
  const T largest = *std::max_element(w, w + n);
  const T least = static_cast<T>(kNegligibleFraction * static_cast<double>(largest));
  for (std::size_t j = 0; j < n; ++j) {
    if (least > w[j]) w[j] = 0;
  }
}

}  // namespace quillmere::numerics
