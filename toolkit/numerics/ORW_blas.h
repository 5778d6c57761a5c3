/// Dense matrices and vectors, in float (suffix F) and double (D).
///
/// A matrix is a block of rows x columns elements, row by row; the caller owns all arrays, which
/// must not overlap unless a comment says so. Up to 8 x 8 plain loops carry a product, above that
/// the BLAS; the two agree within rounding. Counts of 0 or below are empty matrices. Only
/// CB_MatrixInverse and CB_SolveLinEqSimple have a status.
#pragma once

#include "base_types.h"

/// CB_MatrixInverse and CB_SolveLinEqSimple: the matrix is singular.
inline constexpr SInt32 CB_SingularMatrixErr = 36000;

/// y = A x, with A of rows x columns.
void CB_MatrixVectorF(SInt32 rows, SInt32 columns, const float* a, const float* x, float* y);
void CB_MatrixVectorD(SInt32 rows, SInt32 columns, const double* a, const double* x, double* y);

/// y = A' x; A is stored with as many rows as x has elements, as many columns as y.
void CB_MatrixTrVectorF(SInt32 y_length, SInt32 x_length, const float* a, const float* x, float* y);
void CB_MatrixTrVectorD(SInt32 y_length, SInt32 x_length, const double* a, const double* x,
                        double* y);

/// out = A'. Square matrices: both arguments are the same n.
void CB_TransposeMatrixF(SInt32 n, SInt32 columns, const float* in, float* out);
void CB_TransposeMatrixD(SInt32 n, SInt32 columns, const double* in, double* out);

/// C = A B, with A m x k, B k x n, C m x n.
void CB_MatrixMultiplyF(SInt32 m, SInt32 n, SInt32 k, const float* a, const float* b, float* c);
void CB_MatrixMultiplyD(SInt32 m, SInt32 n, SInt32 k, const double* a, const double* b, double* c);

/// C = A B', for square matrices: m, n and k are the same.
void CB_MatrixMultiplyNoTrTrF(SInt32 m, SInt32 n, SInt32 k, const float* a, const float* b,
                              float* c);
void CB_MatrixMultiplyNoTrTrD(SInt32 m, SInt32 n, SInt32 k, const double* a, const double* b,
                              double* c);

/// C = A' B, for square matrices.
void CB_MatrixMultiplyTrNoTrF(SInt32 m, SInt32 n, SInt32 k, const float* a, const float* b,
                              float* c);
void CB_MatrixMultiplyTrNoTrD(SInt32 m, SInt32 n, SInt32 k, const double* a, const double* b,
                              double* c);

/// The inverse of an n x n matrix, which stays as it was, by Gaussian elimination with partial
/// pivoting (LAPACK's gesv). 0; 36000 for a singular matrix, with `out` half done; -50 for an n
/// below 0; -108 without memory.
SInt32 CB_MatrixInverseF(SInt32 n, const float* a, float* out);
SInt32 CB_MatrixInverseD(SInt32 n, const double* a, double* out);

/// Solves A x = b likewise; A and b stay as they were.
SInt32 CB_SolveLinEqSimpleF(SInt32 n, const float* a, const float* b, float* x);
SInt32 CB_SolveLinEqSimpleD(SInt32 n, const double* a, const double* b, double* x);

// Copies; input and output may be the same.

void CB_CopyMatrixF(SInt32 rows, SInt32 columns, const float* in, float* out);
void CB_CopyMatrixD(SInt32 rows, SInt32 columns, const double* in, double* out);
void CB_CopyVectorF(SInt32 n, const float* in, float* out);
void CB_CopyVectorD(SInt32 n, const double* in, double* out);

/// out = factor in; a factor of 0 gives zeros whatever the input.
void CB_ScaleVectorF(SInt32 n, float factor, const float* in, float* out);
void CB_ScaleVectorD(SInt32 n, double factor, const double* in, double* out);
void CB_ScaleMatrixF(SInt32 rows, SInt32 columns, float factor, const float* in, float* out);
void CB_ScaleMatrixD(SInt32 rows, SInt32 columns, double factor, const double* in, double* out);

// Constants: all zeros, and the identity of n x n.

void CB_SetZeroVectorF(SInt32 n, float* vector);
void CB_SetZeroVectorD(SInt32 n, double* vector);
void CB_SetZeroMatrixF(SInt32 rows, SInt32 columns, float* matrix);
void CB_SetZeroMatrixD(SInt32 rows, SInt32 columns, double* matrix);
void CB_SetUnitMatrixF(SInt32 n, float* matrix);
void CB_SetUnitMatrixD(SInt32 n, double* matrix);

// Between the two precisions.

void CB_VectorFtoD(SInt32 n, const float* in, double* out);
void CB_VectorDtoF(SInt32 n, const double* in, float* out);
void CB_MatrixFtoD(SInt32 rows, SInt32 columns, const float* in, double* out);
void CB_MatrixDtoF(SInt32 rows, SInt32 columns, const double* in, float* out);

// Between a table of row pointers and a block. Indices count from 0.

void CB_MatrixToArrayF(SInt32 rows, SInt32 columns, const float* const* matrix, float* array);
void CB_MatrixToArrayD(SInt32 rows, SInt32 columns, const double* const* matrix, double* array);
void CB_ArrayToMatrixF(SInt32 rows, SInt32 columns, const float* array, float* const* matrix);
void CB_ArrayToMatrixD(SInt32 rows, SInt32 columns, const double* array, double* const* matrix);

/// The same for a matrix of three rows of three.
void CB_MatrixToArrayF3x3(const float matrix[3][3], float* array);
void CB_ArrayToMatrixF3x3(const float* array, float matrix[3][3]);
