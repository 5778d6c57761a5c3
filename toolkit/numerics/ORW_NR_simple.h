/// Linear algebra, fits, filters, series and interpolation in single precision that neither
/// allocate (but NR_chebft) nor end the process. Double precision stands in ORW_NR_double.h.
///
/// Matrices are handed over in one of these shapes, as each routine says:
/// - flat: row by row without gaps, all indices from 0;
/// - rows: a table of row pointers, all indices from 0;
/// - stride 4, stride 5: element (i, j) at i * 4 + j or i * 5 + j, all indices from 1, so that row
///   0 and column 0 are not used; vectors count from 1 too.
#pragma once

#include "base_types.h"

// Singular value decomposition: a (m by n) becomes U (m by n), w takes the n singular values, not
// negative and in no order, v takes V (n by n, not transposed), in the shape of a; the input was
// U diag(w) V'. 24001 if a value doesn't converge in 29 QR steps, with the matrices half done; -50,
// with nothing done, beyond the bounds. Householder's bidiagonal form and the implicit QR method
// (Golub and Reinsch, Singular value decomposition and least squares solutions, 1970).

/// Flat, m and n up to 32.
SInt32 NR_svdcmpSPL(float* a, SInt32 m, SInt32 n, float* w, float* v);
/// Rows, n up to 32.
SInt32 NR_svdcmpSPLnew(float* const* a, SInt32 m, SInt32 n, float* w, float* const* v);
/// Stride 4, n up to 3.
SInt32 NR_svdcmpSPL4(float* a, SInt32 m, SInt32 n, float* w, float* v);

// Back-substitution: x = V diag(1 / w) U' b, the least-squares solution of least length, with b of
// m and x of n elements. A singular value of 0 drops its term. Beyond the bounds nothing is done.

/// Flat, m and n up to 32.
void NR_svbksbSPL(const float* u, const float* w, const float* v, SInt32 m, SInt32 n,
                  const float* b, float* x);
/// Rows, any size; `work` has n elements.
void NR_svbksbSPLnew(const float* const* u, const float* w, const float* const* v, float* work,
                     SInt32 m, SInt32 n, const float* b, float* x);
/// Stride 4, n up to 3.
void NR_svbksbSPL4(const float* u, const float* w, const float* v, SInt32 m, SInt32 n,
                   const float* b, float* x);
/// Stride 5, n up to 4; no decomposition makes this shape.
void NR_svbksbSPL5(const float* u, const float* w, const float* v, SInt32 m, SInt32 n,
                   const float* b, float* x);

/// Gauss-Jordan elimination with full pivoting: `a` (n by n) becomes its inverse, `b` (n by m) the
/// solutions; row pointers and vectors count from 1. The three vectors are work space of n + 1
/// entries. 24003 for a singular matrix, with `a` and `b` partly reduced.
SInt32 NR_gaussjSPL(float* const* a, SInt32 n, float* const* b, SInt32 m, SInt32* columns,
                    SInt32* rows, SInt32* marks);
/// Solves two equations by Crout's LU decomposition with implicit scaling (Crout, A short method
/// for evaluating determinants and solving systems of linear equations, 1941). Element (i, j) of
/// `a` stands at i * 3 + j and becomes its decomposition, `b` the solution, all from index 1.
/// 24003 if a row is all zeros or a pivot is 0, which then counts as 1e-20; the solution is written
/// all the same, not-a-number for a matrix of zeros.
SInt32 NR_SolveLinEq2(float* a, float* b);

/// sqrt(a^2 + b^2) without overflow.
float NR_pythag(float a, float b);

// Least-squares fits.

/// Fits `coefficient_count` coefficients of a polynomial, the constant first, to `count` samples at
/// x = 0, 1, 2 ... (each count 1 to 16, or -50), by the flat decomposition with singular values
/// below 1e-5 of the largest set to 0. `ratio` takes the smallest singular value over the largest,
/// before that. 24001 is passed on.
SInt32 NR_FitPolyLS(const float* samples, SInt32 count, float* coefficients,
                    SInt32 coefficient_count, float* ratio);
/// The taps whose sum with `count` samples is the value in their middle, (count - 1) / 2, of the
/// polynomial fitted to them (Savitzky and Golay, Smoothing and differentiation of data by
/// simplified least squares procedures, 1964). Bounds and statuses of NR_FitPolyLS.
SInt32 NR_GetSavitzkiGolayFilter(float* taps, SInt32 count, SInt32 coefficient_count);
/// Fits a plane to those of the bytes, a patch five pixels wide in rows, whose bits are set in
/// `mask`: coefficients 1 to 3 are the constant, the slope across and the slope down.
/// `residuals` takes sample less plane at the index of each set bit, the half added and cut toward
/// zero; `chi_square` the sum of their squares over that of `sigma`. 24001 is passed on.
SInt32 NR_FitGradient2D(const UInt8* samples, UInt32 mask, float sigma, float* coefficients,
                        SInt32* residuals, float* chi_square);
/// The least-squares line through integers at x = 0, 1, 2 ... in single precision, and the mean
/// magnitude of what it leaves. Nothing is written for an empty list.
void NR_fitEquiDistInts(const SInt32* samples, SInt32 count, float* intercept, float* slope,
                        float* deviation);

// Chebyshev series on an interval a to b, as their twins in ORW_NR_double.h.

void NR_chebft(float a, float b, float* coefficients, SInt32 count, float (*function)(float));
float NR_chebev(float a, float b, const float* coefficients, SInt32 count, float x);
/// With a relative limit only.
SInt32 NR_FindPolyApprToFuncOnInterval(float a, float b, float (*function)(float),
                                       float relative_limit, SInt32 points, SInt32 most,
                                       SInt32* count, float* out);

// Interpolation by the polynomial through n nodes, 1 to 8 (else not-a-number), by Neville's tableau
// (Neville, Iterative interpolation, 1934). Two equal nodes give a value that isn't finite.

/// Nodes at first_x, first_x + spacing ...
float NR_polintEq(float first_x, float spacing, const float* y, SInt32 n, float x);
float NR_polintNV(const float* nodes, const float* y, SInt32 n, float x);
/// The coefficients, the constant first, of the polynomial through the values at 0 to `degree` (0
/// to 9; nothing is written beyond).
void NR_polcoeSPL(const float* y, SInt32 degree, float* coefficients);
/// The cubic through four values at -1, 0, 1 and 2.
float NR_NevillInterpolation4(const float* y, float x);
