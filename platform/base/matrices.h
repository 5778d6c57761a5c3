/// Transformations of the plane.
#pragma once

#include "base_types.h"

void SetIdentityMatrix(MatrixRecord* matrix);
Boolean EqualMatrix(const MatrixRecord* a, const MatrixRecord* b);
/// Makes `b` the product b a, so that points go through b first. Elements are rounded to the
/// nearest number and held to their range.
void ConcatMatrix(const MatrixRecord* a, MatrixRecord* b);
/// The matrix that takes one rectangle to another; the identity if the first has no area.
void RectMatrix(MatrixRecord* matrix, const Rect* from, const Rect* to);
/// What a matrix does at most; one of a higher type does more.
enum : SInt16 {
  identityMatrixType = 0,
  translateMatrixType = 1,
  scaleMatrixType = 2,
  scaleTranslateMatrixType = 3,
  linearMatrixType = 4,
  linearTranslateMatrixType = 5,
  perspectiveMatrixType = 6
};
SInt16 GetMatrixType(const MatrixRecord* matrix);
/// The matrix, with a perspective if need be, that takes four corners to four others. paramErr, and
/// the identity, if three of the first four lie in a line.
OSErr QuadToQuadMatrix(const FixedPoint* from, const FixedPoint* to, MatrixRecord* matrix);
/// Lets a matrix also move points, in 16.16 pixels.
void TranslateMatrix(MatrixRecord* matrix, Fixed dx, Fixed dy);
/// The matrix that takes points back. False, and the identity, if there is none.
Boolean InverseMatrix(const MatrixRecord* matrix, MatrixRecord* inverse);
/// Takes points through a matrix, in their place, each coordinate rounded to the nearest number and
/// held to its range. A point at infinity stays; paramErr then.
OSErr TransformFixedPoints(const MatrixRecord* matrix, FixedPoint* points, SInt32 count);
/// Lets a matrix also scale, by 16.16 factors, about a point.
void ScaleMatrix(MatrixRecord* matrix, Fixed scale_x, Fixed scale_y, Fixed about_x, Fixed about_y);
/// The bounds of a rectangle's transformed corners, in its place, each edge rounded to the nearest
/// number and held to its type. True if the corners are a rectangle's still. A corner at infinity
/// (behind a perspective) leaves the rectangle as it was, with false.
Boolean TransformFixedRect(const MatrixRecord* matrix, FixedRect* rect);
Boolean TransformRect(const MatrixRecord* matrix, Rect* rect);
