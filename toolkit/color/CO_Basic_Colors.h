/// The nine basic colours, named by the classic colour codes.
///
/// Whatever takes a code leaves its output as it was for one that there is not.
#pragma once

#include "CO_Basic.h"
#include "CO_Gamma.h"
#include "QT_Nclc.h"
#include "base_types.h"

enum CO_BasicColor : SInt32 {
  kCO_White = 30,
  kCO_Black = 33,
  kCO_Grey = 34,
  kCO_Yellow = 69,
  kCO_Magenta = 137,
  kCO_Red = 205,
  kCO_Cyan = 273,
  kCO_Green = 341,
  kCO_Blue = 409
};

/// The code by index: 1 black, 2 white, 3 grey, 4 green, 5 cyan, 6 blue, 7 magenta, 8 red, 9
/// yellow; black for any other.
SInt32 CO_GetIndexedBasicColor(SInt32 index);

void CO_RGB_BasicColorToRGBColor(SInt32 code, RGBColor* out);
void CO_RGB_BasicColorToNormRGB_F32(SInt32 code, CO_RGB_F32* out);
/// 0 to 255 for range type 2, else 16 to 240.
void CO_RGB_BasicColorToSimpleRGB_F32(SInt32 code, SInt32 rangeType, CO_RGB_F32* out);
/// By the luma coefficients of ITU-R BT.601.
void CO_RGB_BasicColorToSimpleYCbCrU8(SInt32 code, SInt32 rangeType, CO_YCbCrU8* out);
/// A basic colour of the given primaries (nine chromaticities as CO_IndexToPrimariesXYZ_D gives
/// them), of gamma 2.2 under D50, in the space of a colour parameter record under D65: 0 to 255 for
/// range type 2, else 16 to 240. `gamma` is three curves for a record whose transfer function is
/// not standard. The statuses are CO_ConvertNormRGB_F32_indexed's; a code that there is not gives
/// 0.
SInt32 CO_RGB_BasicColorToRGB_F32(SInt32 code, const float* primaries, const GammaData* gamma,
                                  const QT_Nclc* nclc, SInt32 rangeType, CO_RGB_F32* out);
/// The same as bytes, by the luma coefficients of the record's matrix.
SInt32 CO_RGB_BasicColorToYCbCrU8(SInt32 code, const float* primaries, const GammaData* gamma,
                                  const QT_Nclc* nclc, SInt32 rangeType, CO_YCbCrU8* out);
/// Normalised colours for test bars that all but white and black have a luma of 0.5 by ITU-R
/// BT.601, each as saturated as that allows.
void CO_RGB_BasicColor50PercToNormRGB_F32(SInt32 code, CO_RGB_F32* out);
