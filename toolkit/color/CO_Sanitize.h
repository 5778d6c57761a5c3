/// Bringing a colour back to where RGB can show it, its luma kept.
#pragma once

#include "base_types.h"

/// Draws the chroma of a normalised Y'CbCr triple toward grey, in place, until its RGB by the luma
/// coefficients lies within 0 to 1. A luma below 0.00001 makes it black, one above 0.9999 the grey
/// 0.9999. What lay within is left as it was but for rounding and a hundred-thousandth of its
/// chroma.
void CO_SanitizeNormYCbCrF32(float* yCbCr, const float* coefficients);
/// The same for normalised R'G'B'.
void CO_SanitizeNormRGB_F32(float* rgb, const float* coefficients);
