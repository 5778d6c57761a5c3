/// Arrays with any range of indices, on the heap, and the end of the process at a numerical error.
///
/// A vector with the indices nl to nh is a block of nh - nl + 2 elements, handed out as a pointer
/// shifted so that index nl falls on the second element. A matrix is a table of row pointers with
/// one place more than it has rows, shifted likewise, over one block of all rows, one after the
/// other, and one element in front; matrix[row][column] with row nrl to nrh, column ncl to nch. A
/// tensor has one level more. Elements are not cleared.
///
/// Every array ends the process through NR_nrerror when its block can't be had or its range is
/// empty by more than one element; only NR_vector_d returns null. The caller owns the arrays, and
/// releases each with the operation of its kind and the bounds that it was made with.
#pragma once

#include "base_types.h"

/// Writes "Numerics run-time error...", the message and "...now exiting to system..." to the
/// standard error stream, a line each, and ends the process with status 1.
[[noreturn]] void NR_nrerror(const char* message);

float* NR_vector(SInt32 nl, SInt32 nh);
SInt32* NR_ivector(SInt32 nl, SInt32 nh);
UInt8* NR_cvector(SInt32 nl, SInt32 nh);
unsigned long* NR_lvector(SInt32 nl, SInt32 nh);
double* NR_dvector(SInt32 nl, SInt32 nh);
/// As NR_dvector, but null on failure.
double* NR_vector_d(SInt32 nl, SInt32 nh);

float** NR_matrix(SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch);
double** NR_dmatrix(SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch);
SInt32** NR_imatrix(SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch);
/// A table of row pointers into the matrix `a`, whose rows oldrl to oldrh and columns oldcl to
/// oldch get the indices from newrl and newcl on. The elements stay those of `a`.
float** NR_submatrix(float** a, SInt32 oldrl, SInt32 oldrh, SInt32 oldcl, SInt32 oldch,
                     SInt32 newrl, SInt32 newcl);
/// A table of row pointers over a block of (nrh - nrl + 1) (nch - ncl + 1) elements of the caller,
/// row by row.
float** NR_convert_matrix(float* a, SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch);
float*** NR_f3tensor(SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch, SInt32 ndl, SInt32 ndh);

void NR_free_vector(float* v, SInt32 nl, SInt32 nh);
void NR_free_ivector(SInt32* v, SInt32 nl, SInt32 nh);
void NR_free_cvector(UInt8* v, SInt32 nl, SInt32 nh);
void NR_free_lvector(unsigned long* v, SInt32 nl, SInt32 nh);
void NR_free_dvector(double* v, SInt32 nl, SInt32 nh);
void NR_free_vector_d(double* v, SInt32 nl, SInt32 nh);
void NR_free_matrix(float** m, SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch);
void NR_free_dmatrix(double** m, SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch);
void NR_free_imatrix(SInt32** m, SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch);
/// These two release the table only.
void NR_free_submatrix(float** m, SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch);
void NR_free_convert_matrix(float** m, SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch);
void NR_free_f3tensor(float*** t, SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch, SInt32 ndl,
                      SInt32 ndh);
