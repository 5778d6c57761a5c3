/// Colorimetry: chromaticities, matrices between RGB, XYZ and YCbCr, and adaptation to another
/// white.
///
/// Matrices are 3 by 3, row by row. Two conventions hold and must not be mixed: a matrix of
/// primaries has one primary in each column (red, green, blue) and one coordinate in each row; a
/// conversion matrix works on row vectors, so that it is applied by CB_MatrixTrVector. Colours and
/// white points are three numbers. Sources: CIE 15 (Colorimetry); SMPTE RP 177-1993 (RGB to XYZ);
/// ITU-R BT.709, BT.601 and SMPTE 240M (luma).
#pragma once

#include "CO_Gamma.h"
#include "QT_Nclc.h"
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

/// A display-like RGB space.
struct SimpleColorSpaceParams {
  GammaData gamma[3];   ///< of red, green, blue
  float whitePoint[2];  ///< x, y
  float primaries[9];   ///< X, Y, Z in rows; red, green, blue in columns
};

// Constants by index.

// The indices that this system's own code asks for by name; the functions below tell the others.

inline constexpr UInt16 kCO_PrimariesBT709 = 1;
inline constexpr UInt16 kCO_MatrixBT601 = 6;
inline constexpr SInt32 kCO_WhiteCustom = 0;  ///< one that the caller gives
inline constexpr SInt32 kCO_WhiteD50 = 1;
inline constexpr SInt32 kCO_WhiteD65 = 2;
inline constexpr SInt32 kCO_ConesVonKries = 2;
inline constexpr SInt32 kCO_ConesBradford = 3;

/// Primaries by the index of a colour parameter record: 1 ITU-R BT.709, 5 EBU Tech. 3213, 6 SMPTE
/// C; 3 Adobe RGB (1998); 4 those of the main display's profile, 7 those of its native display
/// information (CM_basic.h), whose errors are returned; any other gives zeros. As chromaticities x,
/// y, z in columns; the same in single precision; and those divided by y, as X/Y, 1, Z/Y.
SInt32 CO_IndexToPrimariesXYZ_D(SInt32 index, double* matrix);
SInt32 CO_IndexToPrimariesXYZ_F2(SInt32 index, float* matrix);
SInt32 CO_IndexToPrimariesXYZ_F(SInt32 index, float* matrix);
/// x, y and relative luminance of red, green and blue in rows.
SInt32 CO_IndexToPrimaries_xyY_F(SInt32 index, float* xyY);
/// White points by index: 1 D50, 4 and 8 two of their own, 5 D55, 6 illuminant A, 7 equal energy, 9
/// that of the main display's native display information, else and in want of that D65. As x, y, z,
/// which sum to 1, and as XYZ with Y = 1.
void CO_IndexToWhitePoint_xyzF(SInt32 index, float* x, float* y, float* z);
void CO_IndexToWhitePoint_xyzD(SInt32 index, double* x, double* y, double* z);
void CO_IndexToWhitePointXYZ_D(SInt32 index, double* xyz);
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
/// The same by indices: the unit matrix if primaries and white are the same on both sides, or if
/// either primaries are not standard (QT_StandardNclcPrimaries).
void CO_GetRGBConversionMatrixD_Indexed(SInt32 sourcePrimaries, SInt32 sourceWhite,
                                        SInt32 destinationPrimaries, SInt32 destinationWhite,
                                        SInt32 coneIndex, double* matrix);
/// x, y and Y of each primary in a row, the three Y summing to 1.
void CO_NormalizePrimariesToWhitePt(const double* primaries, const double* whiteXYZ, float* out);
void CO_ColorToNormalizedPrimaries_xyY(const SimpleColorSpaceParams* color, float* out);
/// The conversion matrices between RGB and YCbCr of matrix indices.
void CO_GetRGBtoYUV_MatrixD(SInt32 index, double* matrix);
void CO_GetYUVtoRGB_MatrixD(SInt32 index, double* matrix);
void CO_GetYUVtoYUV_MatrixD(SInt32 sourceIndex, SInt32 destinationIndex, double* matrix);

// Whole colours. Triples are in single precision, in and out may be the same. A record (null for
// none) counts only if its type is kQT_NclcType.

/// The primaries of a conversion: those of the record's index if that is neither 0 nor 2, else of
/// `index`, of which 0 and 2 mean `custom`, nine numbers in the form of CO_IndexToPrimariesXYZ_D.
/// paramErr if these are asked for and null.
SInt32 CO_GetPrimariesForRGB_F32_Conversion(const QT_Nclc* nclc, SInt32 index, const float* custom,
                                            double* primaries);
/// Its white's XYZ: that of `index`; 0 means `custom` (x, y, z, not null then) without a record,
/// and D65 with one.
void CO_GetWhitePtForRGB_F32_Conversion(SInt32 index, const QT_Nclc* nclc, const float* custom,
                                        double* xyz);
/// Its gamma index: where the record's transfer function is standard that one, or the power 1.961
/// if `simpleGamma` is set; else `*gammaIndex` as it is.
void CO_GetGammaIndexForRGB_F32_Conversion(SInt32* gammaIndex, const QT_Nclc* nclc,
                                           Boolean simpleGamma);
/// The luma coefficients for sanitising, and their matrix index: the record's if it is standard,
/// else 6.
SInt32 CO_GetSaniMatrixForRGB_F32_Conversion(const QT_Nclc* nclc, float* coefficients);

/// Converts a normalised R'G'B' triple: sanitised by the source's coefficients, decoded to linear
/// light, multiplied by a conversion matrix, sanitised by the destination's, encoded. paramErr for
/// a gamma index that has no curve.
SInt32 CO_ConvertNormRGB_F32(const float* in, const GammaData* sourceGamma, SInt32 sourceIndex,
                             const float* sourceCoefficients, const GammaData* destinationGamma,
                             SInt32 destinationIndex, const double* matrix,
                             const float* destinationCoefficients, float* out);
/// The same with all of it chosen by the four operations above.
SInt32 CO_ConvertNormRGB_F32_indexed(
    const float* in, const QT_Nclc* sourceNclc, Boolean sourceSimpleGamma,
    const GammaData* sourceGamma, SInt32 sourceGammaIndex, SInt32 sourceWhiteIndex,
    const float* sourceCustomWhite, SInt32 sourcePrimariesIndex, const float* sourceCustomPrimaries,
    SInt32 coneIndex, const QT_Nclc* destinationNclc, Boolean destinationSimpleGamma,
    const GammaData* destinationGamma, SInt32 destinationGammaIndex, SInt32 destinationWhiteIndex,
    const float* destinationCustomWhite, SInt32 destinationPrimariesIndex,
    const float* destinationCustomPrimaries, float* out);
/// Components of 0 to 255 from one record's space to another's, under D65. A transfer function that
/// is not standard counts as the power 2.2; primaries that are not specified as the other side's,
/// or ITU-R BT.709's where neither side's are.
SInt32 CO_ConvertRGB_F32_nclc(const float* in, const QT_Nclc* source, float* out,
                              const QT_Nclc* destination);
/// Luma of 0 to 255 and signed chroma. The triple stays as it is unless both records are of the
/// type and differ.
SInt32 CO_ConvertYCbCrF32_nclc(const float* in, const QT_Nclc* source, float* out,
                               const QT_Nclc* destination);
