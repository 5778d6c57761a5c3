// The simplex method, of ORW_NR_classic.h.

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "NR_Util.h"
#include "ORW_NR_classic.h"
#include "work_space_private.h"

namespace {

using namespace quillmere::numerics;

constexpr float kZero = 1e-6F;

enum State { kSolved = 0, kUnbounded = 1, kInfeasible = -1 };

/// A problem under way. Each row gives its variable as its constant plus the sum of its elements
/// times the columns' variables, which are 0. The variables of the rows of type at least and equal
/// start as the constraints' shortfalls, and are no solution until they are 0.
class Simplex {
 public:
  Simplex(float* const* tableau, SInt32 m, SInt32 n, SInt32 m1, SInt32 m2, SInt32* izrov,
          SInt32* iposv)
      : a_(tableau),
        m_(m),
        n_(n),
        m1_(m1),
        m2_(m2),
        izrov_(izrov),
        iposv_(iposv),
        columns_(1, n),
        shortfalls_(1, m),
        column_count_(n) {
    std::iota(izrov_ + 1, izrov_ + n_ + 1, 1);
    std::iota(iposv_ + 1, iposv_ + m_ + 1, n_ + 1);
    std::iota(columns_.get() + 1, columns_.get() + n_ + 1, 1);
    for (SInt32 i = 1; i <= m_; ++i)
      shortfalls_[i] = i > m1_ && i <= m1_ + m2_ ? 1 : 0;
  }

  State Run() {
    if (m_ > m1_ && !FindFeasible()) return kInfeasible;
    for (;;) {
      const SInt32 column = Ascent(0);
      if (column == 0) return kSolved;
      SInt32 row = 0;
      NR_simp2(a_, m_, n_, &row, column);
      if (row == 0) return kUnbounded;
      NR_simp3(a_, m_, n_, row, column);
      std::swap(izrov_[column], iposv_[row]);
    }
  }

 private:
  float& At(SInt32 row, SInt32 column) const { return a_[row + 1][column + 1]; }

  /// The column that raises a row the most, 0 if none does.
  SInt32 Ascent(SInt32 row, bool magnitude = false) const {
    SInt32 column = 0;
    float largest = 0;
    NR_simp1(a_, row, columns_.get(), column_count_, magnitude, &column, &largest);
    return largest > kZero ? column : 0;
  }

  /// Maximises minus the sum of the shortfalls in the row of work space.
  bool FindFeasible() {
    const SInt32 work = m_ + 1;
    for (SInt32 k = 0; k <= n_; ++k) {
      At(work, k) = 0;
      for (SInt32 i = m1_ + 1; i <= m_; ++i)
        At(work, k) -= At(i, k);
    }
    for (SInt32 column = Ascent(work); column != 0; column = Ascent(work)) {
      SInt32 row = 0;
      NR_simp2(a_, m_, n_, &row, column);
      if (row == 0) return false;
      ExchangeShortfall(row, column);
    }
    if (At(work, 0) < -kZero) return false;
    // Shortfalls of 0 that still own a row leave it, unless their constraint follows from others.
    for (SInt32 row = m1_ + m2_ + 1; row <= m_; ++row) {
      if (iposv_[row] != row + n_) continue;
      const SInt32 column = Ascent(row, true);
      if (column != 0) ExchangeShortfall(row, column);
    }
    for (SInt32 row = m1_ + 1; row <= m1_ + m2_; ++row) {
      if (shortfalls_[row] == 0) continue;
      for (SInt32 k = 0; k <= n_; ++k)
        At(row, k) = -At(row, k);
    }
    return true;
  }

  /// Exchanges variables; a shortfall that leaves its row is dropped, or turns into the slack of
  /// its constraint, its opposite.
  void ExchangeShortfall(SInt32 row, SInt32 column) {
    NR_simp3(a_, m_ + 1, n_, row, column);
    const SInt32 constraint = iposv_[row] - n_;
    if (constraint > m1_ + m2_) {
      SInt32* const first = columns_.get() + 1;
      column_count_ =
          static_cast<SInt32>(std::remove(first, first + column_count_, column) - first);
    } else if (constraint > 0 && shortfalls_[constraint] != 0) {
      shortfalls_[constraint] = 0;
      At(m_ + 1, column) += 1;
      for (SInt32 i = 0; i <= m_ + 1; ++i)
        At(i, column) = -At(i, column);
    }
    std::swap(izrov_[column], iposv_[row]);
  }

  float* const* a_;
  SInt32 m_;
  SInt32 n_;
  SInt32 m1_;
  SInt32 m2_;
  SInt32* izrov_;
  SInt32* iposv_;
  /// The columns that may enter.
  WorkVector<SInt32> columns_;
  /// 1 for each constraint of type at least whose variable still is its shortfall.
  WorkVector<SInt32> shortfalls_;
  SInt32 column_count_;
};

}  // namespace

void NR_simplx(float* const* tableau, SInt32 m, SInt32 n, SInt32 m1, SInt32 m2, SInt32 m3,
               SInt32* state, SInt32* izrov, SInt32* iposv) {
  if (SInt64{m1} + m2 + m3 != m || m1 < 0 || m2 < 0 || m3 < 0)
    NR_nrerror("Bad input constraint counts in simplx");
  for (SInt32 i = 1; i <= m; ++i) {
    if (tableau[i + 1][1] < 0) NR_nrerror("Bad input tableau in simplx");
  }
  *state = Simplex(tableau, m, n, m1, m2, izrov, iposv).Run();
}

void NR_simp1(const float* const* tableau, SInt32 row, const SInt32* columns, SInt32 count,
              Boolean magnitude, SInt32* column, float* largest) {
  *column = 0;
  *largest = 0;
  for (SInt32 i = 1; i <= count; ++i) {
    const float element = tableau[row + 1][columns[i] + 1];
    const float size = magnitude ? std::fabs(element) : element;
    if (*column == 0 || size > *largest) {
      *largest = size;
      *column = columns[i];
    }
  }
}

void NR_simp2(const float* const* tableau, SInt32 m, SInt32 n, SInt32* row, SInt32 column) {
  *row = 0;
  for (SInt32 i = 1; i <= m; ++i) {
    const float slope = tableau[i + 1][column + 1];
    if (!(slope < -kZero)) continue;
    if (*row == 0) {
      *row = i;
      continue;
    }
    // Of rows that end equally soon the lexicographically least one, so that no choice repeats.
    const float best_slope = tableau[*row + 1][column + 1];
    for (SInt32 k = 0; k <= n; ++k) {
      const float quotient = -tableau[i + 1][k + 1] / slope;
      const float best = -tableau[*row + 1][k + 1] / best_slope;
      if (quotient == best) continue;
      if (quotient < best) *row = i;
      break;
    }
  }
}

void NR_simp3(float* const* tableau, SInt32 last_row, SInt32 last_column, SInt32 row,
              SInt32 column) {
  float* const pivot_row = tableau[row + 1] + 1;
  const float inverse = 1 / pivot_row[column];
  for (SInt32 i = 0; i <= last_row; ++i) {
    if (i == row) continue;
    float* const other = tableau[i + 1] + 1;
    other[column] *= inverse;
    for (SInt32 k = 0; k <= last_column; ++k) {
      if (k != column) other[k] -= pivot_row[k] * other[column];
    }
  }
  for (SInt32 k = 0; k <= last_column; ++k)
    pivot_row[k] *= k == column ? 0 : -inverse;
  pivot_row[column] = inverse;
}
