/// Parabolas through 4, 5 or 7 float samples at the positions 0, 1, 2 ..., and their extrema.
///
/// The fit is that of least squares. Its normal equations fall apart in the orthogonal polynomials
/// 1, t and t^2 - mean(t^2) of the position t from the middle (Savitzky and Golay, Smoothing and
/// differentiation of data by simplified least squares procedures, 1964), so that nothing is
/// iterated and no fit fails. Sums run in double precision.
#pragma once

#include "base_types.h"

/// The coefficients of constant + linear x + quadratic x^2.
void NR_FitPieceOfParabolaTo4(const float* samples, float* constant, float* linear,
                              float* quadratic);
void NR_FitPieceOfParabolaTo5(const float* samples, float* constant, float* linear,
                              float* quadratic);
void NR_FitPieceOfParabolaTo7(const float* samples, float* constant, float* linear,
                              float* quadratic);

/// The position, and the parabola's value there, of the extremum, be it a minimum or a maximum;
/// both may be null. 24002 (NR_NoClearExtrErr) if the quadratic coefficient is below 0.001 in
/// magnitude, with the position 0 for a rising parabola, else 4.0; or if the extremum lies below 0
/// or above 4.0, with the position held there. Else 0.
SInt32 NR_GetMinimumFrom4(const float* samples, float* position, float* value);
SInt32 NR_GetMinimumFrom5(const float* samples, float* position, float* value);
/// The same without limits; a straight line has its extremum at infinity or nowhere.
void NR_GetMinimumFrom7(const float* samples, float* position, float* value);
