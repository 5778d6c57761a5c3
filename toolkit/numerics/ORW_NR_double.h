/// Linear algebra, fits, filters and series in double precision. Nothing here allocates (but
/// NR_chebft_d) or ends the process; matrices are row by row without gaps, indices count from 0.
#pragma once

#include "base_types.h"

/// The singular value decomposition of `a`, m rows by n columns (each 0 to 32): `a` becomes U (m by
/// n), `w` the n singular values, not negative and in no order, `v` V (n by n, not transposed), so
/// that the input was U diag(w) V'. 24001 if a value doesn't converge in 29 QR steps, with the
/// matrices half done; -50, with nothing done, beyond 32.
///
/// Householder's bidiagonal form and the implicit QR method (Golub and Reinsch, Singular value
/// decomposition and least squares solutions, 1970).
SInt32 NR_svdcmpSPL_d(double* a, SInt32 m, SInt32 n, double* w, double* v);
/// x = V diag(1 / w) U' b, the least-squares solution of least length (same source), with b of m
/// and x of n elements. A singular value of 0 drops its term. Nothing is done beyond 32.
void NR_svbksbSPL_d(const double* u, const double* w, const double* v, SInt32 m, SInt32 n,
                    const double* b, double* x);
/// sqrt(a^2 + b^2) without overflow.
double NR_pythag_d(double a, double b);

// Least-squares polynomials over equidistant samples, sample i standing at x = i.

/// Fits `coefficient_count` coefficients, the constant first, to `count` samples (each 1 to 16, or
/// -50), by the decomposition above with singular values below 1e-5 of the largest set to 0.
/// `ratio` takes the smallest singular value over the largest, before that. 24001 is passed on.
SInt32 NR_FitPolyLS_d(const double* samples, SInt32 count, double* coefficients,
                      SInt32 coefficient_count, double* ratio);
/// The taps, symmetric with the sum 1, whose sum with `count` samples is the value in their middle,
/// (count - 1) / 2, of the polynomial fitted to them (Savitzky and Golay, Smoothing and
/// differentiation of data by simplified least squares procedures, 1964). Bounds and statuses of
/// NR_FitPolyLS_d.
SInt32 NR_GetSavitzkiGolayFilter_d(double* taps, SInt32 count, SInt32 coefficient_count);
/// Such filters by cubics: 7 taps (-2 3 6 7 6 3 -2) / 21; 9 taps, the mean of those of 9 and of 7
/// taps, (-21 -8 72 120 136 120 72 -8 -21) / 462; and, centred half way between two samples, 8 taps
/// (-3 3 7 9 9 7 3 -3) / 32 and 6 taps (-3 7 12 12 7 -3) / 32.
SInt32 NR_MakeLowPassFilter7_d(double* taps);
SInt32 NR_MakeLowPassFilter9_d(double* taps);
SInt32 NR_MakeSubsamplingFilter8_d(double* taps);
SInt32 NR_MakeSubsamplingFilter6_d(double* taps);

// Chebyshev series on an interval a to b; the first coefficient counts half.

/// The first `count` coefficients of a function's series, from as many of its values (Chebyshev's
/// points; Fox and Parker, Chebyshev polynomials in numerical analysis, 1968). Takes a work vector
/// from the heap, whose lack ends the process.
void NR_chebft_d(double a, double b, double* coefficients, SInt32 count,
                 double (*function)(double));
/// The sum of `count` terms at `x` (Clenshaw, A note on the summation of Chebyshev series, 1955),
/// rounded to single precision; +infinity outside a to b.
float NR_chebev_d(double a, double b, const double* coefficients, SInt32 count, double x);
/// The shortest polynomial in x, of at most `most` (counted as at most 30) coefficients, whose
/// error on a to b is below a limit at `points` places, the middles of as many equal parts: the
/// shortened series of 30 terms, turned into powers. The limit is `absolute_limit`, or, where
/// `relative_limit` isn't 0, that times the function's largest magnitude at these places.
///
/// 0, with `count` and the coefficients; 24004 if no length is enough, with the last one tried in
/// `count` and nothing in `out`; -50 if a is not below b, `points` or `most` is below 1, or
/// `function` or `out` is null.
SInt32 NR_FindPolyApprToFuncOnInterval_d(double a, double b, double (*function)(double),
                                         double relative_limit, double absolute_limit,
                                         SInt32 points, SInt32 most, SInt32* count, double* out);
