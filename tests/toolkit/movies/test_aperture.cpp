/// Apertures of the standard formats, and the arithmetic on their records.
#include "QT_Aperture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "QT_Ide_Descriptions.h"
#include "QT_Matrices.h"
#include "fixed_point.h"
#include "rectangles.h"

namespace {

/// Sizes in pixels: encoded; the records; the production and the clean aperture at square pixels.
/// Published in SMPTE RP 187 and ITU-R BT.601 (13.5 MHz formats), SMPTE RP 202 and 274M (a clean
/// aperture of 1888 by 1062) and 296M (1248 by 702).
struct Format {
  const char* name;
  SInt16 width, height;
  QT_Pasp pasp;
  QT_Clap clap;
  double production_width, clean_width, clean_height;
};
constexpr Format kFormats[] = {
    {"DV NTSC", 720, 480, {10, 11}, {704, 1, 480, 1, 0, 1, 0, 1}, 654.0 + 6 / 11.0, 640, 480},
    {"DV NTSC 16:9",
     720,
     480,
     {40, 33},
     {704, 1, 480, 1, 0, 1, 0, 1},
     872.0 + 8 / 11.0,
     853.0 + 1 / 3.0,
     480},
    {"D1 NTSC", 720, 486, {10, 11}, {704, 1, 486, 1, 0, 1, 0, 1}, 654.0 + 6 / 11.0, 640, 486},
    {"DV PAL", 720, 576, {59, 54}, {41472, 59, 576, 1, 0, 1, 0, 1}, 786.0 + 2 / 3.0, 768, 576},
    {"DV PAL 16:9",
     720,
     576,
     {118, 81},
     {41472, 59, 576, 1, 0, 1, 0, 1},
     1048.0 + 8 / 9.0,
     1024,
     576},
    {"720p", 1280, 720, {1, 1}, {1248, 1, 702, 1, 0, 1, 0, 1}, 1280, 1248, 702},
    {"DVCPRO HD 720", 960, 720, {4, 3}, {936, 1, 702, 1, 0, 1, 0, 1}, 1280, 1248, 702},
    {"1080", 1920, 1080, {1, 1}, {1888, 1, 1062, 1, 0, 1, 0, 1}, 1920, 1888, 1062},
    {"HDV 1080", 1440, 1080, {4, 3}, {1416, 1, 1062, 1, 0, 1, 0, 1}, 1920, 1888, 1062},
    {"DVCPRO HD 1080/60", 1280, 1080, {3, 2}, {3776, 3, 1062, 1, 0, 1, 0, 1}, 1920, 1888, 1062}};

TEST(Apertures, OfStandardFormats) {
  for (const Format& format : kFormats) {
    const Rect rect = {0, 0, format.height, format.width};
    FixedRect clean, production, encoded;
    QT_CalcFixedApertureRects(&rect, &format.pasp, &format.clap, &clean, &production, &encoded);
    EXPECT_NEAR(Fix2X(production.right - production.left), format.production_width, 2e-5)
        << format.name;
    EXPECT_NEAR(Fix2X(clean.right - clean.left), format.clean_width, 4e-5) << format.name;
    EXPECT_NEAR(Fix2X(clean.bottom - clean.top), format.clean_height, 2e-5) << format.name;
    EXPECT_NEAR(Fix2X(clean.left + clean.right) / 2, format.production_width / 2, 4e-5);
    // Exactly, in ratios.
    LongRatio width, height, h, v,
        aspect = {static_cast<SInt32>(format.pasp.hSpacing), format.pasp.vSpacing};
    EXPECT_TRUE(QT_ClapExtToLongRatio(&format.clap, &width, &height, &h, &v));
    EXPECT_TRUE(GL_LongRatioMul2(&width, &aspect, &width));
    EXPECT_NEAR(static_cast<double>(width.n) / width.d, format.clean_width, 1e-12) << format.name;
    // From the apertures back to the pixel aspect.
    const FixedPoint pixels = {Long2Fix(format.width), Long2Fix(format.height)};
    const FixedPoint square = {production.right - production.left, Long2Fix(format.height)};
    QT_Pasp pasp;
    QT_GeneratePasp(&pixels, &square, &pasp);
    EXPECT_NEAR(static_cast<double>(pasp.hSpacing) / pasp.vSpacing,
                static_cast<double>(format.pasp.hSpacing) / format.pasp.vSpacing, 1e-7)
        << format.name;
    // And from the clean part in encoded pixels to its record, as near as 16.16 comes; two of the
    // formats then snap.
    QT_Clap clap;
    const FixedRect frame = {0, 0, pixels.x, pixels.y};
    QT_FixedClipToClap(&frame, &encoded, &clap);
    EXPECT_TRUE(QT_EqualClap2(&clap, &format.clap)) << format.name;
    QT_SnapClap(&rect, &format.pasp, &clap);
    const bool is_exact = format.clap.cleanApertureWidthD == 1 || format.pasp.hSpacing != 118;
    EXPECT_EQ(QT_EqualClap(&clap, &format.clap) != 0, is_exact) << format.name;
  }
  const FixedPoint encoded = {Long2Fix(720), Long2Fix(576)},
                   square = {Long2Fix(768), Long2Fix(576)};
  QT_Pasp pasp;
  QT_GeneratePasp(&encoded, &square, &pasp);
  EXPECT_TRUE(pasp.hSpacing == 16 && pasp.vSpacing == 15);
}

TEST(Apertures, RecordsOfDimensionsGiveThemBack) {
  for (const Format& format : kFormats) {
    const FixedPoint production = {X2Fix(format.production_width), Long2Fix(format.height)};
    const FixedPoint clean = {X2Fix(format.clean_width), X2Fix(format.clean_height)};
    const FixedPoint encoded = {Long2Fix(format.width), Long2Fix(format.height)};
    QT_Clap clap;
    QT_Pasp pasp;
    QT_GeneratePaspAndClapFromApertureDims(&production, &clean, &encoded, &clap, &pasp);
    EXPECT_TRUE(QT_EqualClap2(&clap, &format.clap)) << format.name;
    FixedRect back;
    QT_GetScaledClip(encoded.x, encoded.y, &pasp, &clap, nullptr, &back, 1);
    EXPECT_NEAR(Fix2X(back.right - back.left), format.clean_width, 0.05) << format.name;
  }
}

TEST(MatrixTools, MultiplyTellAndGiveTheirAspect) {
  MatrixRecord scale, move;
  QT_RectMatrix(100, 50, 200, 150, &scale);
  const FixedRect unit = {0, 0, Long2Fix(1), Long2Fix(1)};
  const FixedRect moved = {Long2Fix(5), Long2Fix(6), Long2Fix(6), Long2Fix(7)};
  QT_FixedRectMatrix(&move, &unit, &moved);
  MatrixRecord left = move, right = move;
  QT_MatrixLeftMultiply(&scale, &left);    // scaled, then moved
  QT_MatrixRightMultiply(&right, &scale);  // moved, then scaled
  EXPECT_EQ(left.matrix[2][0], Long2Fix(5));
  EXPECT_EQ(right.matrix[2][0], Long2Fix(10));
  EXPECT_EQ(right.matrix[2][1], Long2Fix(18));
  QT_Pasp pasp;
  QT_GetMatrixPasp(&scale, &pasp);
  EXPECT_TRUE(pasp.hSpacing == 2 && pasp.vSpacing == 3);
  EXPECT_FALSE(QT_IsIdentityMatrix(&scale));
  char text[256];
  QT_SPrintMatrixWithName(text, &left, "m");
  EXPECT_STREQ(text,
               "m: row 1 2.0000,0.0000,0.0000, row 2 0.0000,3.0000,0.0000, row 3 "
               "5.0000,6.0000,16384.0000");
  QT_MatrixTypeGetDescrStr(7, text);
  EXPECT_STREQ(text, "Unknown matrix type");
}

TEST(Apertures, ClipsAreRoundedAndKeptInRange) {
  Rect rect;
  FixedRect fixed;
  const QT_Pasp pasp = {4, 3};
  QT_GetScaledClip(Long2Fix(30000), Long2Fix(20000), &pasp, nullptr, &rect, &fixed, 1);
  EXPECT_EQ(rect.right, 32767);
  EXPECT_EQ(fixed.bottom, X2Fix(16383.5));
  const QT_Clap wide = {101, 1, 41, 1, 0, 1, 0, 1};
  QT_GetScaledClip(Long2Fix(100), Long2Fix(40), nullptr, &wide, &rect, nullptr, 1);
  EXPECT_EQ(rect.left, -1);  // -0.5, away from 0
  EXPECT_EQ(rect.top, 0);    // -0.5 plus a half
  EXPECT_FALSE(QT_ClapHasEffect(&wide, 40, 100));
  const QT_Clap narrow = {98, 1, 40, 1, 1, 1, 0, 1};
  EXPECT_TRUE(QT_ClapHasEffect(&narrow, 40, 100));
  const QT_Clap broken = {98, 0, 40, 1, 1, 0, 0, 1};
  QT_GetScaledClip(Long2Fix(100), Long2Fix(40), nullptr, &broken, &rect, nullptr, 0);
  EXPECT_TRUE(rect.left == 0 && rect.right == 100);
}

TEST(Apertures, RecordsComeBackFromTheirClips) {
  std::mt19937 random(3);
  for (int i = 0; i < 2000; ++i) {
    const FixedRect frame = {0, 0, Long2Fix(720), Long2Fix(576)};
    const auto any = [&](int pixels) {
      return static_cast<Fixed>(random() % static_cast<UInt32>(Long2Fix(pixels)));
    };
    const FixedRect clip = {any(300), any(200), Long2Fix(320) + any(400), Long2Fix(220) + any(356)};
    QT_Clap clap;
    QT_FixedClipToClap(&frame, &clip, &clap);
    FixedRect back;
    QT_GetScaledClip(frame.right, frame.bottom, nullptr, &clap, nullptr, &back, 1);
    ASSERT_TRUE(back.left == clip.left && back.top == clip.top && back.right == clip.right &&
                back.bottom == clip.bottom);
    QT_Clap twice = clap;
    QT_ScaleClap(frame.right, frame.bottom, Long2Fix(2), Long2Fix(1), &twice);
    ASSERT_EQ(UInt64{twice.cleanApertureWidthN} * clap.cleanApertureWidthD,
              2 * UInt64{clap.cleanApertureWidthN} * twice.cleanApertureWidthD);
  }
  QT_Clap clap = {6, 4, 9, 3, -2, 6, 0, 0};
  QT_Pasp pasp = {118, 108};
  QT_ReducePaspAndClap(&pasp, &clap);
  const QT_Clap reduced = {3, 2, 3, 1, -1, 3, 0, 0};
  EXPECT_EQ(std::memcmp(&clap, &reduced, sizeof clap), 0);
  EXPECT_EQ(pasp.hSpacing, 59U);
  const Rect from = {0, 0, 576, 720}, to = {0, 0, 288, 360}, half = {0, 0, 576, 360};
  QT_Pasp out;
  QT_TransformPasp(&pasp, &from, &to, &out);
  EXPECT_TRUE(QT_EqualPasp(&out, &pasp));
  QT_TransformPasp(&pasp, &from, &half, &out);
  EXPECT_TRUE(out.hSpacing == 59 && out.vSpacing == 27);
  QT_InitDefaultClap(Long2Fix(720), X2Fix(287.5), &clap);
  EXPECT_TRUE(clap.cleanApertureHeightN == 575 && clap.cleanApertureHeightD == 2);
  QT_TransformClap(&clap, &from, &to, &clap);
  EXPECT_TRUE(clap.cleanApertureWidthN == 360 && clap.cleanApertureWidthD == 1);
}

TEST(Apertures, ProductsStayWithin32Bits) {
  ImageDescriptionHandle description = nullptr;
  ASSERT_EQ(QT_MakeYuv2ImageDescription(720, 576, &description), noErr);
  EXPECT_EQ(QT_CheckPaspAndClapForOverflow(description), noErr);  // has neither
  QT_Pasp pasp = {65536, 60000};
  QT_Clap clap = {46080000, 65536, 576, 1, 0, 1, 0, 1};
  QT_SetPaspInImageDesc(description, &pasp);
  QT_SetClapInImageDesc(description, &clap);
  EXPECT_EQ(QT_CheckPaspAndClapForOverflow(description), noErr);
  QT_GetPaspFromImageDesc(description, &pasp);
  QT_GetClapFromImageDesc(description, &clap);
  EXPECT_LE(UInt64{pasp.hSpacing} * clap.cleanApertureWidthN, 2147483647U);
  // As near as half a unit of the smaller numbers lets it.
  EXPECT_NEAR(static_cast<double>(pasp.hSpacing) / pasp.vSpacing, 65536.0 / 60000,
              1.0 / pasp.vSpacing);
  EXPECT_NEAR(static_cast<double>(clap.cleanApertureWidthN) / clap.cleanApertureWidthD, 703.125, 5);
  pasp = {1, 1};
  clap.cleanApertureWidthN = 2147483647;
  clap.cleanApertureWidthD = 3000000;
  QT_SetPaspInImageDesc(description, &pasp);
  QT_SetClapInImageDesc(description, &clap);
  EXPECT_EQ(QT_CheckPaspAndClapForOverflow(description), noErr);
  QT_GetClapFromImageDesc(description, &clap);
  EXPECT_EQ(clap.cleanApertureWidthN, 2147483647U);
  DisposeHandle(description);
}

}  // namespace
