/// Gamma: decoding of coded components into linear light and encoding from it.
///
/// A curve is given by the transfer function index of a colour parameter record, or by a GammaData
/// record as it comes from a profile. Components are normalised: 0.0 to 1.0, with values beyond
/// following the same formulas.
#pragma once

#include "base_types.h"

/// Transfer function indices. 0 and 2 say that the curve is given by data; others have none.
enum CO_TransferFunction : SInt32 {
  kCO_TransferByData = 0,
  kCO_TransferBT709 = 1,  ///< ITU-R BT.709-5 (2002), 1.2, with its inverse
  kCO_TransferUnspecified = 2,
  kCO_TransferSRGB = 3,  ///< the first draft of IEC 61966-2-1, with breaks at 0.03928 and 0.00304
  kCO_TransferPower1_8 = 4,
  kCO_TransferLinear = 5,
  kCO_TransferSMPTE240M = 7,     ///< SMPTE 240M-1999, 5
  kCO_TransferBT709OnPower = 8,  ///< the power 9/11, then BT.709
  kCO_TransferPower2_2 = 9,
  kCO_TransferPower1_961 = 10  ///< what BT.709 and SMPTE 240M are taken as for simple gamma
};

/// The curve of one channel; three in a row are those of red, green and blue.
///
/// The parametric curve counts if `paraGamma` is above 0.001: the parametricCurveType of
/// ICC.1:2010, 10.16, with its parameters g, a, b, c, d, e, f. Else, with fewer than two table
/// entries, the simple power `gamma`, which is to be above 0.001. Else the table.
struct GammaData {
  float gamma;
  UInt32 tableCount;  ///< entries of `table`
  float* table;     ///< 0.0 to 1.0, rising, at equal steps of the input; whoever filled it owns it
  UInt32 paraType;  ///< 0 to 4
  float paraGamma;  ///< g
  float paraA;
  float paraB;
  float paraC;
  float paraD;
  float paraE;
  float paraF;
};

/// The power 2.2 in each channel: the curves of the colours that the library defines itself.
inline constexpr GammaData kCO_Gamma2_2[3] = {{2.2F, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0},
                                              {2.2F, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0},
                                              {2.2F, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0}};

// Conversions from one curve to another. Where `in` and `out` are three components they may be the
// same. paramErr, with nothing stored, for a curve that there is not.

/// By indices. Powers keep the sign of what is raised, so that a negative value stays one. Two
/// equal indices, whichever, leave the value as it is; else 0, 2, 6 and above 10 are refused.
SInt32 CO_ConvertGammaNormF32_indexed(float value, SInt32 sourceIndex, float* out,
                                      SInt32 destinationIndex);
SInt32 CO_ConvertGammaNormRGB_F32_indexed(const float* in, SInt32 sourceIndex, float* out,
                                          SInt32 destinationIndex);
/// By data. A table is read without interpolation and inverted with it. A parametric type above 4
/// and a record without a curve are refused, for RGB with the channels in front converted.
SInt32 CO_ConvertGammaNormF32_bydata(float value, const GammaData* source, float* out,
                                     const GammaData* destination);
SInt32 CO_ConvertGammaNormRGB_F32_bydata(const float* in, const GammaData* source, float* out,
                                         const GammaData* destination);
/// Each side by its index, or by its data where that is 0 or 2, through linear light. Two equal
/// indices other than these leave the value as it is. Data that isn't used may be null.
SInt32 CO_ConvertGammaNormF32(float value, const GammaData* source, SInt32 sourceIndex,
                              const GammaData* destination, SInt32 destinationIndex, float* out);
SInt32 CO_ConvertGammaNormRGB_F32(const float* in, const GammaData* source, SInt32 sourceIndex,
                                  const GammaData* destination, SInt32 destinationIndex,
                                  float* out);

/// Raises three components to a power, in place; a negative one gives not-a-number for most powers.
void CO_SimpleGammaF32(float* rgb, float exponent);
/// Components of 0 to 219 for range type 1 (video range), else 0 to 255, into linear light of the
/// same scale: by the power `simpleGamma` for index 2, else by the index. One that has no curve
/// leaves them as they are, in single precision.
void CO_ConvertRGBtoLinear(double r, double g, double b, double simpleGamma, SInt32 rangeType,
                           SInt32 gammaIndex, double* linearR, double* linearG, double* linearB);
/// Tells if two powers are taken as one: less than 0.01 apart, or both between 2.19 and 2.23.
Boolean CO_EqualGamma(float a, float b);
/// The type of an image gamma function from one power to another, by CO_EqualGamma: 2 for 1.0 to
/// 1.8 and 3 back, 4 for 1.0 to 2.2 and 5 back, 8 for 2.2 to 1.8 and 9 back, 1 for any other pair.
SInt32 CO_GetGammaTypeForSimpleGammaTransform(float source, float destination);
