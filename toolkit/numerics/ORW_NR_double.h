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
