/// Colorimetry: chromaticities, matrices between RGB, XYZ and YCbCr, and adaptation to another
/// white.
///
/// Matrices are 3 by 3, row by row. Two conventions hold and must not be mixed: a matrix of
/// primaries has one primary in each column (red, green, blue) and one coordinate in each row; a
/// conversion matrix works on row vectors, so that it is applied by CB_MatrixTrVector. Colours and
/// white points are three numbers. Sources: CIE 15 (Colorimetry); SMPTE RP 177-1993 (RGB to XYZ);
/// ITU-R BT.709, BT.601 and SMPTE 240M (luma).
#pragma once

#include "base_types.h"

// Chromaticities. A y, or a sum of X, Y and Z, of 0 gives infinities or not-a-number.

void CO_xyYtoXYZ_F(float x, float y, float luminance, float* xOut, float* yOut, float* zOut);
void CO_xyYtoXYZ_D(double x, double y, double luminance, double* xOut, double* yOut, double* zOut);
/// The sum is rounded to single precision in the double form too.
void CO_XYZto_xyY_F(float x, float y, float z, float* xOut, float* yOut, float* luminance);
void CO_XYZto_xyY_D(double x, double y, double z, double* xOut, double* yOut, double* luminance);
/// The same on three rows.
void CO_ConvertXYZ_MatrixTo_xyY_D(const double* in, double* out);
/// The XYZ, with Y = 1, of a white point of two chromaticities.
void CO_WhitePoint_xyToXYZ_D(const float* whitePoint, double* xyz);

/// A chromaticity in 16.16.
struct CMFixedXYColor {
  Fixed x;
  Fixed y;
};
void CO_XYZ_FToCMFixedXYColor(const float* xyz, CMFixedXYColor* out);
/// XYZ with Y = 1.
void CO_CMFixedXYColorToXYZ_F(const CMFixedXYColor* color, float* xyz);

// Constants by index.

/// The luma coefficients kr, kg, kb of a matrix index: 1 is ITU-R BT.709, 7 SMPTE 240M, any other
/// ITU-R BT.601.
void CO_IndexToMatrixF(SInt32 index, float* coefficients);
void CO_IndexToMatrixD(SInt32 index, double* coefficients);
/// The matrix from XYZ to cone responses: 2 is von Kries', 3 Bradford's, any other the unit matrix.
void CO_IndexToConeAdaptationMatrix(SInt32 index, double* matrix);

// Matrices. Status 0, or that of CB_MatrixInverseD for one that has no inverse.

/// The XYZ of full red, green and blue in the columns, whose sum is the white's. Primaries that lie
/// in a line give zeros.
SInt32 CO_GetRGBtoXYZ_MatrixD(const double* primaries, const double* whiteXYZ, double* matrix);
/// The conversion matrix of XYZ under one white to that under another, by the cone responses of an
/// index.
SInt32 CO_GetChromaticAdaptationMatrix(const double* sourceWhite, const double* destinationWhite,
                                       SInt32 coneIndex, double* matrix);
/// The conversion matrix from one RGB space to another.
SInt32 CO_GetRGBConversionMatrixD(const double* sourcePrimaries, const double* sourceWhite,
                                  const double* destinationPrimaries,
                                  const double* destinationWhite, SInt32 coneIndex, double* matrix);
/// x, y and Y of each primary in a row, the three Y summing to 1.
void CO_NormalizePrimariesToWhitePt(const double* primaries, const double* whiteXYZ, float* out);
/// The conversion matrices between RGB and YCbCr of matrix indices.
void CO_GetRGBtoYUV_MatrixD(SInt32 index, double* matrix);
void CO_GetYUVtoRGB_MatrixD(SInt32 index, double* matrix);
void CO_GetYUVtoYUV_MatrixD(SInt32 sourceIndex, SInt32 destinationIndex, double* matrix);
