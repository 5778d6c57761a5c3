/// Transformations of the plane.
#pragma once

#include "base_types.h"

void SetIdentityMatrix(MatrixRecord* matrix);
/// Lets a matrix also scale, by 16.16 factors, about a point.
void ScaleMatrix(MatrixRecord* matrix, Fixed scale_x, Fixed scale_y, Fixed about_x, Fixed about_y);
/// The bounds of a rectangle's transformed corners, in its place, each edge rounded to the nearest
/// number and held to its type. True if the corners are a rectangle's still. A corner at infinity
/// (behind a perspective) leaves the rectangle as it was, with false.
Boolean TransformFixedRect(const MatrixRecord* matrix, FixedRect* rect);
Boolean TransformRect(const MatrixRecord* matrix, Rect* rect);
