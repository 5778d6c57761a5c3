/// Linear solvers, minimisers, fits, interpolation and linear programming in single precision, for
/// arrays from index 1, as NR_Util.h makes them.
///
/// Work space comes from the heap. What cannot go on, no memory included, ends the process through
/// NR_nrerror with the message that the routine tells. Matrices are tables of row pointers. See
/// ORW_NR_simple.h and ORW_NR_adapted.h for routines that return.
#pragma once

#include "base_types.h"

// Linear equations.

/// The singular value decomposition of `a` (m by n): `a` becomes U (m by n), `w` the n singular
/// values, not negative and in no order, `v` V (n by n, not transposed); the input was
/// U diag(w) V'. "no convergence in 30 svdcmp iterations" if a value doesn't converge in 29 QR
/// steps. Householder's bidiagonal form and the implicit QR method (Golub and Reinsch, Singular
/// value decomposition and least squares solutions, 1970).
void NR_svdcmp(float* const* a, SInt32 m, SInt32 n, float* w, float* const* v);
/// x = V diag(1 / w) U' b, with b of m and x of n elements; a singular value of 0 drops its term.
void NR_svbksb(const float* const* u, const float* w, const float* const* v, SInt32 m, SInt32 n,
               const float* b, float* x);

/// Fills `values` (ma places, from index 1) with the basis functions at `x`.
using NR_BasisFunction = void (*)(float x, float* values, SInt32 ma);
/// The least-squares fit of a linear combination of `ma` basis functions to `ndata` points with the
/// standard deviations `sig`. `u` (ndata by ma), `v` (ma by ma) and `w` (ma) take the
/// decomposition, singular values below 1e-5 of the largest being set to 0. `chi_square` (may be
/// null) takes the sum of squared deviations over their standard deviations.
void NR_svdfit(const float* x, const float* y, const float* sig, SInt32 ndata, float* coefficients,
               SInt32 ma, float* const* u, float* const* v, float* w, float* chi_square,
               NR_BasisFunction basis);

/// Gauss-Jordan elimination with full pivoting: `a` (n by n) becomes its inverse, `b` (n by m) the
/// solutions. A singular matrix ends in "gaussj: Singular Matrix-1" if no pivot can be chosen, or
/// "gaussj: Singular Matrix-2" if it is 0.
void NR_gaussj(float* const* a, SInt32 n, float* const* b, SInt32 m);

/// Crout's LU decomposition with implicit scaling (Crout, A short method for evaluating
/// determinants and solving systems of linear equations, 1941) of `a` (n by n), in place: `index`
/// takes the row exchanged with each column's, `parity` 1.0 for an even number of exchanges, else
/// -1.0. A row of zeros ends in "Singular matrix in routine ludcmp"; a pivot of 0 becomes 1e-20,
/// and NR_lubksb then gives very large values.
void NR_ludcmp(float* const* a, SInt32 n, SInt32* index, float* parity);
/// Solves A x = b with what NR_ludcmp made of A; `b` becomes the solution.
void NR_lubksb(const float* const* a, SInt32 n, const SInt32* index, float* b);
