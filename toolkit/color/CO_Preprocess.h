/// Chroma that is to be shared by two pixels each: filtered along the line, and where an edge is
/// strong corrected so that both pixels stay within RGB and keep their brightness.
///
/// Coefficients are the three luma coefficients kr, kg, kb. Lumas and chroma of the single steps
/// are on a scale of 255, chroma signed. Rings hold the last five pixels by their number modulo 5.
/// The pair that a step works on is the pixels i - 2 and i - 1; pixels up to i + 1 are known.
/// Nothing fails or allocates.
#pragma once

#include "base_types.h"

/// Three lines of floats: luma 0.0 to 1.0, chroma -0.5 to +0.5, in place. Both pixels of a pair
/// have the same chroma then; the last pixel of an odd width is a pair with itself.
void CO_PreprocessYUV_Chroma(SInt32 width, float* luma, float* cb, float* cr,
                             const double* coefficients);
/// A line of 4 bytes a pixel, alpha first, which stays; R'G'B' in video range for range type 1
/// (black at 0, white at 219), else of 0 to 255.
void CO_PreprocessRGB_Chroma(SInt32 width, UInt8* line, const double* coefficients,
                             SInt32 rangeType);

// The steps.

/// Corrects a pair: a luma alone if that will do, else the chroma, then what brightness red and
/// blue have lost.
void CO_SubsampleChromaAdjustYC(const double* coefficients, const double* lumaRing,
                                const double* cbRing, const double* crRing, SInt32 i,
                                double* firstLuma, double* secondLuma, double* cb, double* cr);
/// Moves the luma of a pixel that leaves RGB with the shared chroma, if the scene beside the pair
/// is very dark (below 30) or very bright (above 225): beside the first pixel's pixel i is looked
/// at, for the second one i - 3 (0 if there is none). Tells if it has moved one.
Boolean CO_MinimalAdjustY_Pair(const double* coefficients, const double* lumaRing, SInt32 i,
                               double* firstLuma, double* secondLuma, double cb, double cr);
/// Raises a luma below 192 by 0.8 of what red and blue contribute less than in the old colour,
/// where that was most of it; less above 64.
void CO_CorrectLumaRB(const double* coefficients, double oldLuma, double oldCb, double oldCr,
                      double* luma, double cb, double cr);
/// The smallest luma up to `limit` with no negative component, to 0.001 above it.
void CO_SetMinimalY(double limit, double* luma, double cb, double cr, double kr, double kg,
                    double kb);
/// The largest luma from 0 with no component above `limit`, to 0.001 below it.
void CO_SetMaximalY(double limit, double* luma, double cb, double cr, double kr, double kg,
                    double kb);
/// Scales chroma by the largest factor that keeps all components within 0 to `limit`, to 0.001; by
/// a little less than 1 where nothing is to be done.
void CO_SetMaximalC(double limit, double luma, double* cb, double* cr, double kr, double kg,
                    double kb);
/// Writes a pixel of 4 bytes but for its alpha: limited to 0 to 255, scaled for range type 1, plus
/// 0.49, cut.
void CO_WriteYCbCrToRGB_Line(double luma, double cb, double cr, const double* coefficients,
                             SInt32 rangeType, UInt8* pixel);
