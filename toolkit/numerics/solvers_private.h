/// Elimination with full pivoting, and Crout's LU decomposition, for rows of every shape.
///
/// `Rows` gives the row i, counted from 0, as a pointer to its first element; the numbers in index
/// vectors count from 1.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "base_types.h"

namespace quillmere::numerics {

/// Stands in the place of a pivot of 0.
inline constexpr float kLeastPivot = 1e-20F;

/// Rows through a table of pointers, rows and columns counted from 1 by the caller.
template <class T>
struct TableFromOne {
  T* const* table;
  T* operator[](std::size_t i) const { return table[i + 1] + 1; }
};

/// Rows at a fixed distance, likewise.
struct StrideFromOne {
  float* first;
  std::size_t stride;
  float* operator[](std::size_t i) const { return first + (i + 1) * stride + 1; }
};

/// Decomposes row-wise permuted `a` (n by n) into L below and U on and above the diagonal, with the
/// exchanged row of each column in `index` and the parity of the exchanges. `scales` is work space
/// of n. A pivot of 0 becomes kLeastPivot and sets `zero_pivot`. A row of zeros goes to
/// `on_zero_row`, and counts as infinitely large in the choice of pivots if that returns.
template <class Rows, class OnZeroRow>
void DecomposeLU(Rows a, std::size_t n, SInt32* index, float* parity, float* scales,
                 bool* zero_pivot, OnZeroRow on_zero_row) {
  *parity = 1;
  for (std::size_t i = 0; i < n; ++i) {
    float largest = 0;
    for (std::size_t j = 0; j < n; ++j)
      largest = std::fmax(largest, std::fabs(a[i][j]));
    if (largest == 0) on_zero_row();
    scales[i] = largest == 0 ? std::numeric_limits<float>::infinity() : 1 / largest;
  }
  for (std::size_t j = 0; j < n; ++j) {
    float largest = 0;
    std::size_t pivot = j;
    for (std::size_t i = 0; i < n; ++i) {
      float sum = a[i][j];
      for (std::size_t k = 0; k < (i < j ? i : j); ++k)
        sum -= a[i][k] * a[k][j];
      a[i][j] = sum;
      if (i < j) continue;
      const float scaled = scales[i] * std::fabs(sum);
      if (scaled >= largest) {
        largest = scaled;
        pivot = i;
      }
    }
    if (pivot != j) {
      for (std::size_t k = 0; k < n; ++k)
        std::swap(a[pivot][k], a[j][k]);
      *parity = -*parity;
      scales[pivot] = scales[j];
    }
    index[j] = static_cast<SInt32>(pivot + 1);
    if (a[j][j] == 0) {
      a[j][j] = kLeastPivot;
      *zero_pivot = true;
    }
    for (std::size_t i = j + 1; i < n; ++i)
      a[i][j] /= a[j][j];
  }
}

/// Solves in place in `b` with what DecomposeLU made.
template <class Rows>
void SolveLU(Rows a, std::size_t n, const SInt32* index, float* b) {
  std::size_t first = n;  // of the right-hand values that are not 0
  for (std::size_t i = 0; i < n; ++i) {
    float sum = std::exchange(b[index[i] - 1], b[i]);
    for (std::size_t j = first; j < i; ++j)
      sum -= a[i][j] * b[j];
    if (first == n && sum != 0) first = i;
    b[i] = sum;
  }
  for (std::size_t i = n; i-- > 0;) {
    float sum = b[i];
    for (std::size_t j = i + 1; j < n; ++j)
      sum -= a[i][j] * b[j];
    b[i] = sum / a[i][i];
  }
}

enum class Elimination { kDone, kNoPivotLeft, kZeroPivot };

/// Gauss-Jordan elimination with full pivoting: `a` (n by n) becomes its inverse, `b` (n by m) the
/// solutions. The three vectors are work space of n.
template <class Rows>
Elimination EliminateFully(Rows a, std::size_t n, Rows b, std::size_t m, SInt32* columns,
                           SInt32* rows, SInt32* marks) {
  for (std::size_t i = 0; i < n; ++i)
    marks[i] = 0;
  for (std::size_t pass = 0; pass < n; ++pass) {
    float largest = 0;
    std::size_t row = n;
    std::size_t column = n;
    for (std::size_t i = 0; i < n; ++i) {
      if (marks[i] == 1) continue;
      for (std::size_t j = 0; j < n; ++j) {
        if (marks[j] == 0 && std::fabs(a[i][j]) >= largest) {
          largest = std::fabs(a[i][j]);
          row = i;
          column = j;
        }
      }
    }
    // Only not-a-number is left.
    if (row == n) return Elimination::kNoPivotLeft;
    marks[column] = 1;
    if (row != column) {
      std::swap_ranges(a[row], a[row] + n, a[column]);
      std::swap_ranges(b[row], b[row] + m, b[column]);
    }
    rows[pass] = static_cast<SInt32>(row + 1);
    columns[pass] = static_cast<SInt32>(column + 1);
    const float pivot = std::exchange(a[column][column], 1.0F);
    if (pivot == 0) {
      a[column][column] = 0;
      return Elimination::kZeroPivot;
    }
    for (std::size_t j = 0; j < n; ++j)
      a[column][j] /= pivot;
    for (std::size_t j = 0; j < m; ++j)
      b[column][j] /= pivot;
    for (std::size_t i = 0; i < n; ++i) {
      if (i == column) continue;
      const float factor = std::exchange(a[i][column], 0.0F);
      for (std::size_t j = 0; j < n; ++j)
        a[i][j] -= a[column][j] * factor;
      for (std::size_t j = 0; j < m; ++j)
        b[i][j] -= b[column][j] * factor;
    }
  }
  for (std::size_t pass = n; pass-- > 0;) {
    if (rows[pass] == columns[pass]) continue;
    for (std::size_t i = 0; i < n; ++i)
      std::swap(a[i][rows[pass] - 1], a[i][columns[pass] - 1]);
  }
  return Elimination::kDone;
}

}  // namespace quillmere::numerics
