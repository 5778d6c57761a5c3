/// Bringing a colour back to where RGB can show it, its luma kept.
#pragma once

#include "base_types.h"

/// Draws the chroma of a normalised Y'CbCr triple toward grey, in place, until its RGB by the luma
/// coefficients lies within 0 to 1. A luma below 0.00001 makes it black, one above 0.9999 the grey
/// 0.9999. What lay within is left as it was but for rounding and a hundred-thousandth of its
/// chroma.
void CO_SanitizeNormYCbCrF32(float* yCbCr, const float* coefficients);
/// Brings a triple of luma 0 to 255 and chroma offset by 128 into bytes without a change of hue: a
/// luma above 255 draws chroma toward 128 with it, one below 0 makes it black, and chroma beyond
/// 0 to 255 is drawn in by one factor.
void CO_SanitizeYCbCrF32_255(float* yCbCr);
/// The same with `margin` taken from the factor that draws chroma in; the former's is 0.0001.
void CO_PullInto255(float* yCbCr, float margin);
/// The same as the first for normalised R'G'B'.
void CO_SanitizeNormRGB_F32(float* rgb, const float* coefficients);
