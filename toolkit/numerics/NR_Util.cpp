#include "NR_Util.h"

#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

/// Elements between the start of a block and the first index.
constexpr std::ptrdiff_t kFront = 1;

SInt64 Length(SInt32 low, SInt32 high) {
  return SInt64{high} - low + 1;
}

/// A block of `count` elements and the one in front, shifted so that index `low` is its second
/// element; null without memory.
template <class T>
T* Block(SInt32 low, SInt64 count) {
  if (count < 0 || static_cast<UInt64>(count) >= PTRDIFF_MAX / sizeof(T)) return nullptr;
  auto* block = static_cast<T*>(
      ::operator new((static_cast<std::size_t>(count) + 1) * sizeof(T), std::nothrow));
  return block == nullptr ? nullptr : block + kFront - low;
}

template <class T>
T* Block(SInt32 low, SInt64 count, const char* message) {
  T* block = Block<T>(low, count);
  if (block == nullptr) NR_nrerror(message);
  return block;
}

template <class T>
void Release(T* block, SInt32 low) {
  if (block != nullptr) ::operator delete(block + low - kFront);
}

/// A table of the rows `low` to `high`, of `length` elements each from `first` on.
template <class T>
T** Rows(SInt32 low, SInt32 high, T* first, SInt64 length, const char* message) {
  T** rows = Block<T*>(low, Length(low, high), message);
  for (SInt32 i = low; i <= high; ++i)
    rows[i] = first + (SInt64{i} - low) * length;
  return rows;
}

/// The number of elements of `rows` rows; below 0 if there can't be so many.
SInt64 Elements(SInt64 rows, SInt64 length) {
  SInt64 product = 0;
  return rows < 0 || length < 0 || __builtin_mul_overflow(rows, length, &product) ? -1 : product;
}

template <class T>
T** Matrix(SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch) {
  const SInt64 length = Length(ncl, nch);
  const SInt64 elements = Elements(Length(nrl, nrh), length);
  T** rows = Rows<T>(nrl, nrh, nullptr, 0, "allocation failure 1 in matrix()");
  T* first = Block<T>(ncl, elements, "allocation failure 2 in matrix()");
  for (SInt32 i = nrl; i <= nrh; ++i)
    rows[i] = first + (SInt64{i} - nrl) * length;
  return rows;
}

template <class T>
void ReleaseMatrix(T** rows, SInt32 nrl, SInt32 ncl) {
  if (rows == nullptr) return;
  Release(rows[nrl], ncl);
  Release(rows, nrl);
}

}  // namespace

void NR_nrerror(const char* message) {
  std::fprintf(stderr, "Numerics run-time error...\n%s\n...now exiting to system...\n", message);
  std::exit(1);
}

float* NR_vector(SInt32 nl, SInt32 nh) {
  return Block<float>(nl, Length(nl, nh), "allocation failure in vector()");
}

SInt32* NR_ivector(SInt32 nl, SInt32 nh) {
  return Block<SInt32>(nl, Length(nl, nh), "allocation failure in ivector()");
}

UInt8* NR_cvector(SInt32 nl, SInt32 nh) {
  return Block<UInt8>(nl, Length(nl, nh), "allocation failure in cvector()");
}

unsigned long* NR_lvector(SInt32 nl, SInt32 nh) {
  return Block<unsigned long>(nl, Length(nl, nh), "allocation failure in lvector()");
}

double* NR_dvector(SInt32 nl, SInt32 nh) {
  return Block<double>(nl, Length(nl, nh), "allocation failure in dvector()");
}

double* NR_vector_d(SInt32 nl, SInt32 nh) {
  return Block<double>(nl, Length(nl, nh));
}

float** NR_matrix(SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch) {
  return Matrix<float>(nrl, nrh, ncl, nch);
}

double** NR_dmatrix(SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch) {
  return Matrix<double>(nrl, nrh, ncl, nch);
}

SInt32** NR_imatrix(SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch) {
  return Matrix<SInt32>(nrl, nrh, ncl, nch);
}

float** NR_submatrix(float** a, SInt32 oldrl, SInt32 oldrh, SInt32 oldcl, SInt32 /*oldch*/,
                     SInt32 newrl, SInt32 newcl) {
  const SInt64 count = Length(oldrl, oldrh);
  float** rows = Block<float*>(newrl, count, "allocation failure in submatrix()");
  for (SInt64 i = 0; i < count; ++i)
    rows[newrl + i] = a[oldrl + i] + oldcl - newcl;
  return rows;
}

float** NR_convert_matrix(float* a, SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch) {
  return Rows(nrl, nrh, a - ncl, Length(ncl, nch), "allocation failure in convert_matrix()");
}

float*** NR_f3tensor(SInt32 nrl, SInt32 nrh, SInt32 ncl, SInt32 nch, SInt32 ndl, SInt32 ndh) {
  const SInt64 columns = Length(ncl, nch);
  const SInt64 depth = Length(ndl, ndh);
  const SInt64 rows = Length(nrl, nrh);
  const SInt64 lines = Elements(rows, columns);
  const SInt64 elements = Elements(lines, depth);
  auto*** tensor = Block<float**>(nrl, rows, "allocation failure 1 in f3tensor()");
  auto** line = Block<float*>(ncl, lines, "allocation failure 2 in f3tensor()");
  float* element = Block<float>(ndl, elements, "allocation failure 3 in f3tensor()");
  for (SInt64 i = 0; i < lines; ++i)
    line[ncl + i] = element + i * depth;
  for (SInt64 i = 0; i < rows; ++i)
    tensor[nrl + i] = line + i * columns;
  return tensor;
}

void NR_free_vector(float* v, SInt32 nl, SInt32 /*nh*/) {
  Release(v, nl);
}

void NR_free_ivector(SInt32* v, SInt32 nl, SInt32 /*nh*/) {
  Release(v, nl);
}

void NR_free_cvector(UInt8* v, SInt32 nl, SInt32 /*nh*/) {
  Release(v, nl);
}

void NR_free_lvector(unsigned long* v, SInt32 nl, SInt32 /*nh*/) {
  Release(v, nl);
}

void NR_free_dvector(double* v, SInt32 nl, SInt32 /*nh*/) {
  Release(v, nl);
}

void NR_free_vector_d(double* v, SInt32 nl, SInt32 /*nh*/) {
  Release(v, nl);
}

void NR_free_matrix(float** m, SInt32 nrl, SInt32 /*nrh*/, SInt32 ncl, SInt32 /*nch*/) {
  ReleaseMatrix(m, nrl, ncl);
}

void NR_free_dmatrix(double** m, SInt32 nrl, SInt32 /*nrh*/, SInt32 ncl, SInt32 /*nch*/) {
  ReleaseMatrix(m, nrl, ncl);
}

void NR_free_imatrix(SInt32** m, SInt32 nrl, SInt32 /*nrh*/, SInt32 ncl, SInt32 /*nch*/) {
  ReleaseMatrix(m, nrl, ncl);
}

void NR_free_submatrix(float** m, SInt32 nrl, SInt32 /*nrh*/, SInt32 /*ncl*/, SInt32 /*nch*/) {
  Release(m, nrl);
}

void NR_free_convert_matrix(float** m, SInt32 nrl, SInt32 /*nrh*/, SInt32 /*ncl*/, SInt32 /*nch*/) {
  Release(m, nrl);
}

void NR_free_f3tensor(float*** t, SInt32 nrl, SInt32 /*nrh*/, SInt32 ncl, SInt32 /*nch*/,
                      SInt32 ndl, SInt32 /*ndh*/) {
  if (t == nullptr) return;
  ReleaseMatrix(t[nrl], ncl, ndl);
  Release(t, nrl);
}
