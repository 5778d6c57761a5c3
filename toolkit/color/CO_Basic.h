/// Single colours in the forms that the library deals with, and the conversions between them.
///
/// Luma coefficients are three numbers kr, kg, kb whose sum is 1. Unless told otherwise full range
/// means range types 2 and 3, video range every other (CO_Ranges.h); RGB in video range goes from
/// 16 to 240 here. Results may stand in the place of arguments. Nothing fails; a result that
/// doesn't fit its type is limited, and not a number gives 0.
#pragma once

#include "base_types.h"
#include "cf_values.h"

struct CO_RGB8 {
  UInt8 r, g, b;
};
struct CO_ARGB8 {
  UInt8 a, r, g, b;
};
/// 0 to 255, 16 to 240 in video range, or 0.0 to 1.0 where it is called normalised.
struct CO_RGB_F32 {
  float r, g, b;
};
struct CO_ARGB_F32 {
  float a, r, g, b;
};
/// Full range.
struct CO_YCbCr8 {
  UInt8 y;
  SInt8 cb, cr;
};
/// Video range, chroma offset by 128.
struct CO_YCbCrU8 {
  UInt8 y, cb, cr;
};
/// Luma 0 to 255; chroma signed, or offset by 128 where told.
struct CO_YCbCrF32 {
  float y, cb, cr;
};

// By luma coefficients: Y = kr R + kg G + kb B, Cb = (B - Y) / 2 (1 - kb), Cr = (R - Y) / 2 (1 -
// kr) (ITU-R BT.601 and BT.709), and back.

void CO_RGBToYCbCr(const double* rgb, const double* coefficients, double* yCbCr);
void CO_RGBToYCbCrD(double r, double g, double b, double kr, double kg, double kb, double* y,
                    double* cb, double* cr);
void CO_RGB_F32toYCbCrF32(const CO_RGB_F32* rgb, const float* coefficients, CO_YCbCrF32* out);
void CO_YCbCrToRGB(const double* yCbCr, const double* coefficients, double* rgb);
void CO_YCbCrToRGB_D(double y, double cb, double cr, double kr, double kg, double kb, double* r,
                     double* g, double* b);
void CO_YCbCrF32toRGB_F32(const CO_YCbCrF32* yCbCr, const float* coefficients, CO_RGB_F32* out);
void CO_YCbCr8toRGB_F32(const CO_YCbCr8* yCbCr, const float* coefficients, CO_RGB_F32* out);

// By the coefficients of ITU-R BT.601 in integers, to full and to video range.

void CO_RGB8ToYCbCr8(const CO_RGB8* rgb, CO_YCbCr8* out);
void CO_RGB8_ToYCbCrU8(const CO_RGB8* rgb, CO_YCbCrU8* out);
void CO_YCbCr8ToRGB8(const CO_YCbCr8* yCbCr, CO_RGB8* out);
void CO_YCbCrU8ToRGB8(const CO_YCbCrU8* yCbCr, CO_RGB8* out);

// Between ranges.

void CO_YCbCrToYCbCrU8(const CO_YCbCr8* in, CO_YCbCrU8* out);
/// A code outside video range wraps: limit it first.
void CO_YCbCrU8ToYCbCr(const CO_YCbCrU8* in, CO_YCbCr8* out);
/// Full range in both, chroma signed in the one and offset in the other.
void CO_YCbCrToYCbCrU8_FR(const CO_YCbCr8* in, CO_YCbCrU8* out);
/// Between full and video range, chroma offset in both.
void CO_YCbCrU8_FRtoVR(const CO_YCbCrU8* in, CO_YCbCrU8* out);
void CO_YCbCrU8_VRtoFR(const CO_YCbCrU8* in, CO_YCbCrU8* out);

// To and from floats.

/// Video range spread: luma 16 to 271, chroma signed, -127.5 to 127.5.
void CO_YCbCrU8toYCbCrF32(const CO_YCbCrU8* in, CO_YCbCrF32* out);
/// Signed chroma of full range into offset chroma of a range type.
void CO_YCbCrF32_StoU(const CO_YCbCrF32* in, SInt32 rangeType, CO_YCbCrF32* out);
/// Offset chroma into bytes. What doesn't fit is brought in without a change of hue: chroma is
/// drawn toward 128, and luma limited; a negative luma gives 0, 128, 128.
void CO_YCbCrF32toU8(const CO_YCbCrF32* in, CO_YCbCrU8* out);
/// The three steps from RGB of 0 to 255 to such bytes.
void CO_RGB_F32toYCbCrU8(const CO_RGB_F32* rgb, const float* coefficients, SInt32 rangeType,
                         CO_YCbCrU8* out);
/// Normalised RGB, in place, to 0 to 255 for range type 2, else to 16 to 240.
void CO_RGB_F32_NormTo8bit(CO_RGB_F32* rgb, SInt32 rangeType);
void CO_RGB_F32toARGB8(UInt8 alpha, const CO_RGB_F32* rgb, CO_ARGB8* out);
void CO_RGBColortoARGB8(UInt8 alpha, const RGBColor* rgb, CO_ARGB8* out);

/// RGB of 16 bits into three bytes: in video range luma and offset chroma of 1 to 254, in full
/// range luma and two's complement chroma.
void CO_RGB16ToYCbCr8(RGBColor rgb, const double* coefficients, SInt32 rangeType, UInt8* out);
/// The other way.
void CO_YCbCr8ToRGB16(UInt8 y, UInt8 cb, UInt8 cr, const double* coefficients, SInt32 rangeType,
                      RGBColor* out);

// Small arithmetic, component by component.

void CO_AddRGB_F32(const CO_RGB_F32* a, const CO_RGB_F32* b, CO_RGB_F32* out);
void CO_AddYCbCrF32(const CO_YCbCrF32* a, const CO_YCbCrF32* b, CO_YCbCrF32* out);
/// a less b.
void CO_SubRGB_F32(const CO_RGB_F32* a, const CO_RGB_F32* b, CO_RGB_F32* out);
void CO_SubYCbCrF32(const CO_YCbCrF32* a, const CO_YCbCrF32* b, CO_YCbCrF32* out);
/// In place: by one factor, by those of another triple, and a colour by one, cut.
void CO_ScaleRGB_F32(CO_RGB_F32* rgb, float factor);
void CO_ScaleYCbCrF32(CO_YCbCrF32* a, const CO_YCbCrF32* b);
void CO_ScaleRGB(RGBColor* rgb, float factor);
/// The distance from video black, times a factor, cut.
void CO_ScaleYCbCrU8(const CO_YCbCrU8* in, float factor, CO_YCbCrU8* out);
/// `part` of b and the rest of a.
void CO_BlendYCbCrU8(const CO_YCbCrU8* a, const CO_YCbCrU8* b, float part, CO_YCbCrU8* out);
void CO_InitRGB8_F32(CO_RGB_F32* out, float r, float g, float b);
void CO_RGB_F32toARGB_F32(const CO_RGB_F32* rgb, float alpha, CO_ARGB_F32* out);
void CO_ARGB_F32toRGB_F32(const CO_ARGB_F32* argb, CO_RGB_F32* out);
Boolean CO_EqualColor8(const CO_YCbCr8* a, const CO_YCbCr8* b);
Boolean CO_EqualColorU8(const CO_YCbCrU8* a, const CO_YCbCrU8* b);
/// The sum of the distances of the three components in the low 24 bits of two colours.
UInt32 CO_ColorDiff(UInt32 a, UInt32 b);

/// A colour of another brightness, by the luma of ITU-R BT.601: scaled, and mixed with white where
/// that isn't enough. A colour whose luma rounds to 0 becomes the grey of that brightness.
void CO_SetRGB8_Br(const CO_RGB8* rgb, UInt8 brightness, CO_RGB8* out);
/// The same, then CO_RGB8_ToYCbCrU8.
void CO_BrRGB8toYCbCrU8(const CO_RGB8* rgb, UInt8 brightness, CO_YCbCrU8* out);

/// A dictionary with the numbers "Y", "Cb" and "Cr", which the caller releases; null without
/// memory.
CFDictionaryRef CO_CopyYCbCr8ToDict(const CO_YCbCr8* yCbCr);
/// Reads it; what isn't there leaves its component as it was.
void CO_GetYCbCr8FromDict(CFDictionaryRef dictionary, CO_YCbCr8* out);
