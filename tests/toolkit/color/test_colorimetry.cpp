#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>
#include <cmath>

#include "CO_Color_Conversions.h"
#include "CO_RGB_Corners.h"
#include "ORW_blas.h"

namespace {

constexpr double kBT709[] = {0.64, 0.30, 0.15, 0.33, 0.60, 0.06, 0.03, 0.10, 0.79};
constexpr double kSMPTE_C[] = {0.63, 0.31, 0.155, 0.34, 0.595, 0.07, 0.03, 0.095, 0.775};
constexpr double kD65[] = {0.95047, 1, 1.08883};
constexpr double kD50[] = {0.96422, 1, 0.82521};

void ExpectNear(const double* actual, const double* expected, int count, double tolerance) {
  for (int i = 0; i < count; ++i)
    EXPECT_NEAR(actual[i], expected[i], tolerance) << i;
}

TEST(Colorimetry, AgreesWithPublishedMatrices) {
  // Lindbloom, RGB/XYZ matrices and chromatic adaptation (2017): sRGB at D65; Bradford's adaptation
  // from D65 to D50, transposed.
  constexpr double kToXYZ[] = {0.4124564, 0.3575761, 0.1804375, 0.2126729, 0.7151522,
                               0.0721750, 0.0193339, 0.1191920, 0.9503041};
  constexpr double kToD50[] = {1.0478112, 0.0295424,  -0.0092345, 0.0228866, 0.9904844,
                               0.0150436, -0.0501270, -0.0170491, 0.7521316};
  double matrix[9];
  ASSERT_EQ(CO_GetRGBtoXYZ_MatrixD(kBT709, kD65, matrix), noErr);
  ExpectNear(matrix, kToXYZ, 9, 1e-6);
  ASSERT_EQ(CO_GetChromaticAdaptationMatrix(kD65, kD50, 3, matrix), noErr);
  ExpectNear(matrix, kToD50, 9, 1e-6);
  // Whatever the cones, white becomes the other white.
  for (const SInt32 cones : {0, 2, 3}) {
    double white[3];
    ASSERT_EQ(CO_GetChromaticAdaptationMatrix(kD65, kD50, cones, matrix), noErr);
    CB_MatrixTrVectorD(3, 3, matrix, kD65, white);
    ExpectNear(white, kD50, 3, 1e-12);
    ASSERT_EQ(CO_GetRGBConversionMatrixD(kBT709, kD65, kSMPTE_C, kD50, cones, matrix), noErr);
    for (int column = 0; column < 3; ++column)
      EXPECT_NEAR(matrix[column] + matrix[3 + column] + matrix[6 + column], 1, 1e-12);
  }
  const double flat[9] = {};
  EXPECT_NE(CO_GetRGBConversionMatrixD(kBT709, kD65, flat, kD65, 0, matrix), noErr);
}

TEST(Colorimetry, AgreesWithLcms) {
  const cmsCIExyY white = {0.3127, 0.3290, 1};
  for (const double* primaries : {kBT709, kSMPTE_C}) {
    const cmsCIExyYTRIPLE triple = {{primaries[0], primaries[3], 1},
                                    {primaries[1], primaries[4], 1},
                                    {primaries[2], primaries[5], 1}};
    // A profile holds its primaries adapted to D50.
    cmsToneCurve* linear = cmsBuildGamma(nullptr, 1);
    cmsToneCurve* const curves[] = {linear, linear, linear};
    const cmsHPROFILE profile = cmsCreateRGBProfile(&white, &triple, curves);
    cmsFreeToneCurve(linear);
    ASSERT_NE(profile, nullptr);
    const float white_point[] = {0.3127F, 0.3290F};
    const double d50[] = {cmsD50X, cmsD50Y, cmsD50Z};
    double white_xyz[3], to_xyz[9], rows[9], adaptation[9], adapted[9];
    CO_WhitePoint_xyToXYZ_D(white_point, white_xyz);
    ASSERT_EQ(CO_GetRGBtoXYZ_MatrixD(primaries, white_xyz, to_xyz), noErr);
    ASSERT_EQ(CO_GetChromaticAdaptationMatrix(white_xyz, d50, 3, adaptation), noErr);
    CB_TransposeMatrixD(3, 3, to_xyz, rows);
    CB_MatrixMultiplyD(3, 3, 3, rows, adaptation, adapted);
    const cmsTagSignature tags[] = {cmsSigRedColorantTag, cmsSigGreenColorantTag,
                                    cmsSigBlueColorantTag};
    for (int i = 0; i < 3; ++i) {
      const auto* colorant = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, tags[i]));
      ASSERT_NE(colorant, nullptr);
      const double expected[] = {colorant->X, colorant->Y, colorant->Z};
      ExpectNear(adapted + static_cast<std::ptrdiff_t>(3 * i), expected, 3, 1e-5);
    }
    cmsCloseProfile(profile);
  }
}

TEST(Colorimetry, TurnsChromaticitiesAndLumaRound) {
  double xyz[3], back[3];
  CO_xyYtoXYZ_D(0.31271, 0.32902, 1, &xyz[0], &xyz[1], &xyz[2]);
  constexpr double kWhite[] = {0.95043, 1, 1.08890};
  ExpectNear(xyz, kWhite, 3, 1e-5);
  CO_XYZto_xyY_D(xyz[0], xyz[1], xyz[2], &back[0], &back[1], &back[2]);
  EXPECT_NEAR(back[0], 0.31271, 1e-7);
  const float narrow[] = {0.95043F, 1, 1.0889F};
  CMFixedXYColor fixed;
  float again[3];
  CO_XYZ_FToCMFixedXYColor(narrow, &fixed);
  CO_CMFixedXYColorToXYZ_F(&fixed, again);
  EXPECT_NEAR(again[0], narrow[0], 1e-4);
  EXPECT_NEAR(again[2], narrow[2], 1e-4);
  float primaries[9];
  CO_NormalizePrimariesToWhitePt(kBT709, kD65, primaries);
  EXPECT_NEAR(primaries[3], 0.30, 1e-6);
  EXPECT_NEAR(primaries[5], 0.7151522, 1e-6);
  EXPECT_NEAR(primaries[2] + primaries[5] + primaries[8], 1, 1e-6);
  for (const SInt32 index : {0, 1, 2, 6, 7}) {
    double to_yuv[9], to_rgb[9], product[9], unit[9], same[9];
    CO_GetRGBtoYUV_MatrixD(index, to_yuv);
    CO_GetYUVtoRGB_MatrixD(index, to_rgb);
    CB_MatrixMultiplyD(3, 3, 3, to_yuv, to_rgb, product);
    CB_SetUnitMatrixD(3, unit);
    CO_GetYUVtoYUV_MatrixD(index, index, same);
    ExpectNear(same, unit, 9, 1e-7);
    // The coefficients are floats, whose sum is 1 to their precision.
    ExpectNear(product, unit, 9, 1e-6);
  }
}

TEST(RGBCorners, FormAHexagon) {
  CornerTable table;
  CO_GetRGB_CornersInYC_2(table.angles, table.edgeA, table.edgeB, table.edgeC, table.cornerY,
                          table.cornerCb, table.cornerCr);
  CornerTable computed;
  CO_GetRGB_CornersInYC_1(computed.angles, computed.edgeA, computed.edgeB, computed.edgeC, 6);
  EXPECT_TRUE(std::is_sorted(table.angles, table.angles + 6));
  for (int k = 0; k < 6; ++k) {
    EXPECT_NEAR(table.angles[k], computed.angles[k], 1e-6);
    const int next = (k + 1) % 6;
    for (const int corner : {k, next})
      EXPECT_NEAR(table.edgeA[k] * table.cornerCb[corner] + table.edgeB[k] * table.cornerCr[corner],
                  table.edgeC[k], 1e-6);
    SInt32 edge = -1;
    const float middle =
        table.angles[k] + (k < 5 ? (table.angles[next] - table.angles[k]) / 2 : 0.1F);
    CO_GetNearestCorners(table.angles, middle, &edge);
    EXPECT_EQ(edge, k);
    // At its own luma a corner's colour is itself.
    SInt8 cb, cr;
    CO_SaturatedColorToYC(table.angles[k], table.cornerY[k] * 235 + 16, &table, &cb, &cr);
    EXPECT_NEAR(cb, table.cornerCb[k] * 224, 1.1);
    EXPECT_NEAR(cr, table.cornerCr[k] * 224, 1.1);
    CO_SaturatedColorToYC(table.angles[k], 16, &table, &cb, &cr);
    EXPECT_EQ(cb, 0);
  }
  SInt32 edge = -1;
  CO_GetNearestCorners(table.angles, -3.1F, &edge);
  EXPECT_EQ(edge, 5);
  float lower, upper;
  const char *lower_name, *upper_name;
  CO_GetNearestCornerColors(0, 6, &lower, &lower_name, &upper, &upper_name);
  EXPECT_STREQ(lower_name, "blue");
  EXPECT_STREQ(upper_name, "magenta");
  EXPECT_LT(lower, 0);
  CO_GetNearestCornerColors(179, 1, &lower, &lower_name, &upper, &upper_name);
  EXPECT_STREQ(lower_name, "green");
  EXPECT_STREQ(upper_name, "yellow");
}

TEST(Corners, SaturationIsOneAtTheFootOfAnEdge) {
  float angles[6], a[6], b[6], c[6];
  CO_GetRGB_CornersInYC_1(angles, a, b, c, 1);
  int seen = 0;
  for (SInt32 k = 0; k < 6; ++k) {
    // The edge's point that is nearest to grey, where it lies between the corners.
    const float cb = a[k] * c[k];
    const float cr = b[k] * c[k];
    SInt32 edge = -1;
    CO_GetNearestCorners(angles, std::atan2(cr, cb), &edge);
    if (edge != k) continue;
    ++seen;
    EXPECT_NEAR(CO_CalcSaturation(cb, cr, angles, a, b, c), 1, 1e-5);
    EXPECT_NEAR(CO_CalcSaturation(cb / 2, cr / 2, angles, a, b, c), 0.5, 1e-5);
  }
  EXPECT_GE(seen, 2);
}

}  // namespace
