/// The hexagon that the corners of the RGB cube, black and white left out, form in the plane of Cb
/// and Cr.
///
/// Corners count from 0 in the order of rising angle: green, cyan, blue, magenta, red, yellow. Edge
/// k leads from corner k to the next, the last one back to corner 0, and lies on the line A Cb + B
/// Cr = C. Angles are in radians, from the Cb axis toward the Cr axis, -pi to pi.
#pragma once

#include "base_types.h"

inline constexpr int kCO_Corners = 6;

struct CornerTable {
  float angles[kCO_Corners];
  float edgeA[kCO_Corners];
  float edgeB[kCO_Corners];
  float edgeC[kCO_Corners];
  float cornerY[kCO_Corners];
  float cornerCb[kCO_Corners];
  float cornerCr[kCO_Corners];
};

/// Angles and edges by the luma coefficients of a matrix index; six numbers each.
void CO_GetRGB_CornersInYC_1(float* angles, float* edgeA, float* edgeB, float* edgeC,
                             SInt32 matrixIndex);
/// The same for ITU-R BT.601, with the corners.
void CO_GetRGB_CornersInYC_2(float* angles, float* edgeA, float* edgeB, float* edgeC,
                             float* cornerY, float* cornerCb, float* cornerCr);

/// The edge that holds an angle.
void CO_GetNearestCorners(const float* angles, float angle, SInt32* edge);
/// The two corners around an angle, all in degrees, and their names: "green", "cyan", "blue",
/// "magenta", "red", "yellow". Green and yellow, in this order, for an angle between yellow and
/// green.
void CO_GetNearestCornerColors(float angle, SInt32 matrixIndex, float* lowerAngle,
                               const char** lowerName, float* upperAngle, const char** upperName);

/// (Cb^2 + Cr^2) over (A Cb + B Cr) C of the edge at the colour's angle; not-a-number for grey.
float CO_CalcSaturation(float cb, float cr, const float* angles, const float* edgeA,
                        const float* edgeB, const float* edgeC);
/// The most saturated colour of an angle and a luma of video range: chroma in 224ths, cut and held
/// to a byte.
void CO_SaturatedColorToYC(float angle, float luma, const CornerTable* table, SInt8* cb, SInt8* cr);
