/// Conversions by colour parameter records, sanitising, and colour profiles.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <random>
#include <vector>

#include "CM_basic.h"
#include "CO_Basic_Colors.h"
#include "CO_Color_Conversions.h"
#include "CO_Sanitize.h"
#include "ORW_blas.h"
#include "bt709_curve.h"

namespace {

constexpr QT_Nclc kHD = {kQT_NclcType, 1, 1, 1};
constexpr QT_Nclc kPal = {kQT_NclcType, 5, 1, 6};
constexpr QT_Nclc kNtsc = {kQT_NclcType, 6, 1, 6};

TEST(Sanitizing, BringsColoursIntoTheCubeAndKeepsLumaAndHue) {
  std::mt19937 random(5);
  std::uniform_real_distribution<float> luma(0.0F, 1.0F);
  std::uniform_real_distribution<float> chroma(-1.0F, 1.0F);
  for (const SInt32 index : {1, 6, 7}) {
    float k[3];
    CO_IndexToMatrixF(index, k);
    for (int i = 0; i < 100'000; ++i) {
      const float before[] = {luma(random), chroma(random), chroma(random)};
      float after[] = {before[0], before[1], before[2]};
      CO_SanitizeNormYCbCrF32(after, k);
      const CO_YCbCrF32 color = {after[0], after[1], after[2]};
      const CO_YCbCrF32 raw = {before[0], before[1], before[2]};
      CO_RGB_F32 rgb;
      CO_RGB_F32 rgb_before;
      CO_YCbCrF32toRGB_F32(&color, k, &rgb);
      CO_YCbCrF32toRGB_F32(&raw, k, &rgb_before);
      const auto [least, most] = std::minmax({rgb.r, rgb.g, rgb.b});
      ASSERT_TRUE(least > -1e-6F && most < 1 + 1e-6F) << least << ' ' << most;
      if (before[0] < 0.00001F || before[0] > 0.9999F) continue;
      ASSERT_EQ(after[0], before[0]);
      ASSERT_NEAR(after[1] * before[2], after[2] * before[1], 1e-6F);
      // As much chroma stays as the cube has room for: one face is touched unless nothing changed.
      const auto [low, high] = std::minmax({rgb_before.r, rgb_before.g, rgb_before.b});
      if (low >= 0 && high <= 1) {
        ASSERT_NEAR(after[1], before[1], 2e-5F);
      } else {
        ASSERT_TRUE(least < 5e-5F || most > 1 - 5e-5F) << least << ' ' << most;
      }
    }
  }
  float k[3];
  CO_IndexToMatrixF(6, k);
  float white[] = {1.0F, 0.3F, -0.2F};
  CO_SanitizeNormYCbCrF32(white, k);
  EXPECT_EQ(white[0], 0.9999F);
  EXPECT_EQ(white[1], 0.0F);
  float nothing[] = {NAN, 0.3F, -0.2F};
  CO_SanitizeNormYCbCrF32(nothing, k);
  EXPECT_EQ(nothing[0], 0.0F);
}

TEST(ColorIndices, TablesAgreeWithThemselvesAndTheProfile) {
  // The relative luminances follow from the chromaticities under D65.
  const float d65[] = {0.31271F, 0.32902F};
  for (const SInt32 index : {1, 3, 5, 6}) {
    double primaries[9];
    double white[3];
    float listed[9];
    float derived[9];
    ASSERT_EQ(CO_IndexToPrimariesXYZ_D(index, primaries), noErr);
    CO_WhitePoint_xyToXYZ_D(d65, white);
    CO_NormalizePrimariesToWhitePt(primaries, white, derived);
    ASSERT_EQ(CO_IndexToPrimaries_xyY_F(index, listed), noErr);
    for (int i = 0; i < 9; ++i)
      EXPECT_NEAR(listed[i], derived[i], 5e-5F) << index << ' ' << i;
  }
  float unit[9];
  ASSERT_EQ(CO_IndexToPrimariesXYZ_F(1, unit), noErr);
  EXPECT_FLOAT_EQ(unit[0], 0.64F / 0.33F);
  EXPECT_FLOAT_EQ(unit[4], 1.0F);
  EXPECT_FLOAT_EQ(unit[8], 0.79F / 0.06F);
  for (const SInt32 index : {-1, 0, 2, 8, 1000}) {
    EXPECT_EQ(CO_IndexToPrimaries_xyY_F(index, unit), noErr);
    EXPECT_EQ(*std::max_element(unit, unit + 9), 0.0F) << index;
  }
  double xyz[3];
  for (const SInt32 index : {2, 9, 77}) {
    CO_IndexToWhitePointXYZ_D(index, xyz);
    EXPECT_NEAR(xyz[0], 0.95043, 1e-5);
    EXPECT_NEAR(xyz[2], 1.08890, 1e-4);
  }
  // The display's profile holds its colorants under D50; its display information is not there.
  ASSERT_EQ(CO_IndexToPrimaries_xyY_F(4, unit), noErr);
  EXPECT_NEAR(unit[2] + unit[5] + unit[8], 1, 1e-6);
  double matrix[9];
  ASSERT_EQ(CO_IndexToPrimariesXYZ_D(4, matrix), noErr);
  EXPECT_NEAR(matrix[3] + matrix[4] + matrix[5], 1, 1e-4);
  EXPECT_EQ(CO_IndexToPrimariesXYZ_D(7, matrix), cmElementTagNotFound);
}

TEST(ColorRecords, MatricesOfIndicesKeepWhite) {
  double matrix[9];
  const auto is_unit = [&matrix] {
    double unit[9];
    CB_SetUnitMatrixD(3, unit);
    return std::equal(unit, unit + 9, matrix);
  };
  CO_GetRGBConversionMatrixD_Indexed(1, 2, 1, 2, 3, matrix);
  EXPECT_TRUE(is_unit());
  CO_GetRGBConversionMatrixD_Indexed(3, 2, 1, 2, 3, matrix);
  EXPECT_TRUE(is_unit());
  CO_GetRGBConversionMatrixD_Indexed(5, 2, 1, 1, 3, matrix);
  EXPECT_FALSE(is_unit());
  for (int column = 0; column < 3; ++column)
    EXPECT_NEAR(matrix[column] + matrix[3 + column] + matrix[6 + column], 1, 1e-12);
}

TEST(ColorRecords, ConvertBetweenStandardSpaces) {
  double matrix[9];
  CO_GetRGBConversionMatrixD_Indexed(1, 2, 6, 2, 0, matrix);
  std::mt19937 random(9);
  std::uniform_real_distribution<float> component(40.0F, 200.0F);
  for (int i = 0; i < 1000; ++i) {
    const float in[] = {component(random), component(random), component(random)};
    float out[3];
    ASSERT_EQ(CO_ConvertRGB_F32_nclc(in, &kHD, out, &kNtsc), noErr);
    double light[3];
    double expected[3];
    for (int k = 0; k < 3; ++k)
      light[k] = Decode709(static_cast<double>(in[k]) / 255);
    CB_MatrixTrVectorD(3, 3, matrix, light, expected);
    for (int k = 0; k < 3; ++k)
      ASSERT_NEAR(out[k], std::clamp(255 * Encode709(expected[k]), 0.0, 255.0), 0.02);
  }
  const float grey[] = {128, 128, 128};
  float out[3];
  for (const QT_Nclc* other : {&kPal, &kNtsc}) {
    ASSERT_EQ(CO_ConvertRGB_F32_nclc(grey, &kHD, out, other), noErr);
    for (const float value : out)
      EXPECT_NEAR(value, 128, 0.01);
    // Luma and chroma there and back.
    const float yuv[] = {120, 20, -15};
    ASSERT_EQ(CO_ConvertYCbCrF32_nclc(yuv, &kHD, out, other), noErr);
    ASSERT_EQ(CO_ConvertYCbCrF32_nclc(out, other, out, &kHD), noErr);
    for (int k = 0; k < 3; ++k)
      EXPECT_NEAR(out[k], yuv[k], 0.02);
  }
  const float wild[] = {300, 200, -200};
  ASSERT_EQ(CO_ConvertYCbCrF32_nclc(wild, &kHD, out, &kHD), noErr);
  EXPECT_TRUE(std::equal(wild, wild + 3, out));
  // What is not specified on one side, or on both, changes nothing there.
  const QT_Nclc open = {kQT_NclcType, 2, 2, 2};
  ASSERT_EQ(CO_ConvertRGB_F32_nclc(grey, &open, out, &open), noErr);
  EXPECT_NEAR(out[1], 128, 0.01);
  // A curve that there is not.
  EXPECT_EQ(CO_ConvertNormRGB_F32_indexed(grey, &kHD, 0, nullptr, 0, 2, nullptr, 0, nullptr, 0,
                                          &open, 0, nullptr, 6, 2, nullptr, 1, nullptr, out),
            paramErr);
  EXPECT_EQ(CO_ConvertNormRGB_F32_indexed(grey, &kHD, 0, nullptr, 0, 2, nullptr, 0, nullptr, 0,
                                          &open, 0, nullptr, 0, 2, nullptr, 2, nullptr, out),
            paramErr);
}

TEST(ColorRecords, BasicColoursInARecordsSpace) {
  float primaries[9];
  ASSERT_EQ(CO_IndexToPrimariesXYZ_F2(1, primaries), noErr);
  CO_RGB_F32 rgb = {};
  ASSERT_EQ(CO_RGB_BasicColorToRGB_F32(kCO_White, primaries, kCO_Gamma2_2, &kHD, 2, &rgb), noErr);
  EXPECT_NEAR(rgb.r, 255, 0.1);
  EXPECT_NEAR(rgb.b, 255, 0.1);
  ASSERT_EQ(CO_RGB_BasicColorToRGB_F32(kCO_Red, primaries, kCO_Gamma2_2, &kHD, 1, &rgb), noErr);
  EXPECT_GT(rgb.r, 230);
  EXPECT_LT(rgb.b, 60);
  CO_YCbCrU8 yuv = {};
  ASSERT_EQ(CO_RGB_BasicColorToYCbCrU8(kCO_Grey, primaries, kCO_Gamma2_2, &kPal, 1, &yuv), noErr);
  EXPECT_EQ(yuv.cb, 128);
  EXPECT_EQ(yuv.cr, 128);
  // Half the code of gamma 2.2 in BT.709's curve.
  EXPECT_NEAR(yuv.y, 16 + 219 * Encode709(std::pow(0.5, 2.2)), 1);
  const CO_YCbCrU8 kept = yuv;
  EXPECT_EQ(CO_RGB_BasicColorToYCbCrU8(5, primaries, kCO_Gamma2_2, &kPal, 1, &yuv), noErr);
  EXPECT_EQ(yuv.y, kept.y);
}

struct CloseProfile {
  void operator()(CMProfileRef profile) const { CMCloseProfile(profile); }
};
using Profile = std::unique_ptr<ColorProfile, CloseProfile>;

std::vector<UInt8> SrgbProfile() {
  const cmsHPROFILE handle = cmsCreate_sRGBProfile();
  cmsToneCurve* const curve = cmsBuildTabulatedToneCurve16(
      nullptr, 5, std::vector<cmsUInt16Number>{0, 1000, 9000, 30000, 65535}.data());
  for (const auto tag : {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag})
    cmsWriteTag(handle, tag, curve);
  cmsFreeToneCurve(curve);
  cmsSetProfileVersion(handle, 2.1);
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(handle, nullptr, &size);
  std::vector<UInt8> bytes(size);
  cmsSaveProfileToMem(handle, bytes.data(), &size);
  cmsCloseProfile(handle);
  return bytes;
}

Profile OpenBytes(const std::vector<UInt8>& bytes, SInt32 expected) {
  const CMProfileLocation location = {cmBufferBasedProfile, nullptr, bytes.data(),
                                      static_cast<UInt32>(bytes.size())};
  CMProfileRef profile = nullptr;
  EXPECT_EQ(CMOpenProfile(&profile, &location), expected);
  return Profile(profile);
}

TEST(ColorProfiles, AreReadAsSimpleSpaces) {
  const std::vector<UInt8> bytes = SrgbProfile();
  const Profile profile = OpenBytes(bytes, noErr);
  SimpleColorSpaceParams color = {};
  ASSERT_EQ(CM_GetProfilePcsColor(profile.get(), &color), noErr);
  ASSERT_EQ(color.gamma[1].tableCount, 5U);
  EXPECT_EQ(color.gamma[1].gamma, 0.0F);
  EXPECT_NEAR(color.gamma[1].table[2], 9000.0F / 65535, 1e-6);
  EXPECT_EQ(color.gamma[0].paraGamma, 0.0F);
  EXPECT_EQ(color.gamma[0].paraType, 0U);
  // sRGB's colorants under D50 (ICC.1:2010 profile of IEC 61966-2-1) and D50 itself.
  EXPECT_NEAR(color.primaries[0], 0.4360F, 2e-4);
  EXPECT_NEAR(color.primaries[4], 0.7169F, 2e-4);
  EXPECT_NEAR(color.whitePoint[0], 0.3457F, 2e-4);
  EXPECT_NEAR(color.whitePoint[1], 0.3585F, 2e-4);
  CM_FreeGammaTables(color.gamma);
  EXPECT_EQ(color.gamma[1].table, nullptr);
  for (std::size_t size = 16; size < 128; size += 16)
    OpenBytes({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)}, cmProfileError);
  CMProfileRef none = nullptr;
  EXPECT_NE(CM_OpenProfileByPath(&none, "/no such profile"), noErr);

  float gamma = 0;
  EXPECT_EQ(CM_GetSystemGamma(&gamma), noErr);
  EXPECT_NEAR(gamma, 2.2F, 0.01F);
  // The display's colorants adapted back to D65 are those of BT.709 there.
  double primaries[9];
  ASSERT_EQ(CM_GetMonitorPrimariesAsXYZ(primaries), noErr);
  constexpr double kRedToBlue[] = {0.4124564, 0.3575761, 0.1804375};
  for (int i = 0; i < 3; ++i)
    EXPECT_NEAR(primaries[i], kRedToBlue[i], 5e-4);
}

TEST(ColorProfiles, NativeDisplayInformationRoundTrips) {
  SimpleColorSpaceParams color = {};
  const float primaries[] = {0.64F / 0.33F, 0.5F, 2.5F, 1, 1, 1, 0.03F / 0.33F, 1.0F / 6, 13.2F};
  std::copy_n(primaries, 9, color.primaries);
  color.whitePoint[0] = 0.3127F;
  color.whitePoint[1] = 0.329F;
  for (GammaData& gamma : color.gamma)
    gamma.gamma = 1.8F;
  CM_NativeDisplayInfo info = {};
  CM_ColorToNativeDisplayInfo(&color, &info);
  const auto* bytes = reinterpret_cast<const UInt8*>(&info);
  EXPECT_EQ(bytes[4 * 9 + 1], 1);  // big-endian 1.8 is 0x0001CCCD
  EXPECT_EQ(bytes[4 * 9 + 2], 0xCC);
  SimpleColorSpaceParams back = {};
  CM_NativeDisplayInfoToColor(&info, &back);
  for (int i = 0; i < 9; ++i)
    EXPECT_NEAR(back.primaries[i], primaries[i], 2e-3F) << i;
  EXPECT_NEAR(back.whitePoint[1], 0.329F, 1e-4F);
  EXPECT_NEAR(back.gamma[2].gamma, 1.8F, 1e-4F);
}

}  // namespace
