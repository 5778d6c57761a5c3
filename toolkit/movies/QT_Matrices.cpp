#include "QT_Matrices.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "QT_Aperture.h"
#include "fixed_point.h"
#include "matrices.h"

namespace {

/// The text of a matrix behind its label.
std::string TextOf(const MatrixRecord& matrix) {
  const auto element = [&matrix](int row, int column) { return Fix2X(matrix.matrix[row][column]); };
  char text[256];
  std::snprintf(text, sizeof text,
                ": row 1 %.4f,%.4f,%.4f, row 2 %.4f,%.4f,%.4f, row 3 %.4f,%.4f,%.4f", element(0, 0),
                element(0, 1), element(0, 2), element(1, 0), element(1, 1), element(1, 2),
                element(2, 0), element(2, 1), element(2, 2));
  return text;
}

}  // namespace

void QT_FixedRectMatrix(MatrixRecord* matrix, const FixedRect* source,
                        const FixedRect* destination) {
  const FixedPoint from[] = {{source->left, source->top},
                             {source->right, source->top},
                             {source->right, source->bottom},
                             {source->left, source->bottom}};
  const FixedPoint to[] = {{destination->left, destination->top},
                           {destination->right, destination->top},
                           {destination->right, destination->bottom},
                           {destination->left, destination->bottom}};
  QuadToQuadMatrix(from, to, matrix);
}

void QT_RectMatrix(SInt16 sourceWidth, SInt16 sourceHeight, SInt16 destinationWidth,
                   SInt16 destinationHeight, MatrixRecord* matrix) {
  const Rect from = {0, 0, sourceHeight, sourceWidth};
  const Rect to = {0, 0, destinationHeight, destinationWidth};
  RectMatrix(matrix, &from, &to);
}

void QT_GetMatrixPasp(const MatrixRecord* matrix, QT_Pasp* pasp) {
  constexpr Fixed kSide = 65536;
  FixedRect square = {0, 0, kSide, kSide};
  TransformFixedRect(matrix, &square);
  *pasp = {static_cast<UInt32>(SInt64{square.right} - square.left),
           static_cast<UInt32>(SInt64{square.bottom} - square.top)};
  QT_ReducePaspAndClap(pasp, nullptr);
}

Boolean QT_IsIdentityMatrix(const MatrixRecord* matrix) {
  MatrixRecord identity;
  SetIdentityMatrix(&identity);
  return EqualMatrix(matrix, &identity);
}

void QT_MatrixLeftMultiply(const MatrixRecord* a, MatrixRecord* b) {
  MatrixRecord product = *a;
  ConcatMatrix(b, &product);
  *b = product;
}

void QT_MatrixRightMultiply(MatrixRecord* a, const MatrixRecord* b) {
  ConcatMatrix(b, a);
}

void QT_MatrixTypeGetDescrStr(SInt16 type, char* text) {
  constexpr const char* kTypes[] = {"Identity matrix (= do nothing)",
                                    "Translation matrix",
                                    "Scaling matrix",
                                    "Scaling + translation matrix",
                                    "Linear matrix",
                                    "Linear and translation matrix",
                                    "Perspective matrix"};
  const std::string name = type >= 0 && type <= 6 ? kTypes[type] : "Unknown matrix type";
  std::copy_n(name.c_str(), name.size() + 1, text);
}

void QT_PrintMatrix(const MatrixRecord* matrix) {
  QT_PrintMatrixWithName(matrix, "Matrix");
}

void QT_PrintMatrixWithName(const MatrixRecord* matrix, const char* label) {
  std::printf("%s%s\n", label, TextOf(*matrix).c_str());
}

void QT_SPrintMatrixWithName(char* buffer, const MatrixRecord* matrix, const char* label) {
  std::sprintf(buffer, "%s%s", label, TextOf(*matrix).c_str());
}
