/// Parabolas through 4, 5 or 7 float samples at the positions 0, 1, 2 ..., and their extrema.
///
/// Least-squares fits by singular value decomposition (Golub and Reinsch, 1970; see
/// ORW_NR_simple.h), singular values below 1e-5 of the largest set to 0. Nothing allocates.
#pragma once

#include "base_types.h"

/// The coefficients of constant + linear x + quadratic x^2.
void NR_FitPieceOfParabolaTo4(const float* samples, float* constant, float* linear,
                              float* quadratic);
void NR_FitPieceOfParabolaTo5(const float* samples, float* constant, float* linear,
                              float* quadratic);
void NR_FitPieceOfParabolaTo7(const float* samples, float* constant, float* linear,
                              float* quadratic);
/// The same by NR_FitPolyLS into three coefficients, the constant first; passes on 24001.
SInt32 NR_FitPieceOfParabolaTo4_new(const float* samples, float* coefficients);
SInt32 NR_FitPieceOfParabolaTo5_new(const float* samples, float* coefficients);
SInt32 NR_FitPieceOfParabolaTo7_new(const float* samples, float* coefficients);

/// The parabola through five samples at the middle one.
float NR_GetCenterValueOf5(const float* samples);

/// The position, and the parabola's value there, of the extremum, be it a minimum or a maximum;
/// both may be null. 24002 (NR_NoClearExtrErr) if the quadratic coefficient is below 0.001 in
/// magnitude, with the position 0 for a rising parabola, else 4.0; or if the extremum lies below 0
/// or above 4.0, with the position held there. Else 0.
SInt32 NR_GetMinimumFrom4(const float* samples, float* position, float* value);
SInt32 NR_GetMinimumFrom5(const float* samples, float* position, float* value);
/// The same without limits; a straight line has its extremum at infinity or nowhere.
void NR_GetMinimumFrom7(const float* samples, float* position, float* value);

/// The peak of an array around its first largest sample: the parabola through that and its
/// neighbours if it rises above both by more than they differ, else one fitted to the samples from
/// two before it to the next, if the slope keeps falling to the left. `position` counts from the
/// array's first sample. 24002 with nothing written if there is no such peak, or it is the first or
/// the last sample; 24001 is passed on.
SInt32 NR_GetArrayMax(const float* samples, SInt32 count, float* value, float* position);
