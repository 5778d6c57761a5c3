#include <gtest/gtest.h>
#include <lcms2.h>

#include <array>
#include <cmath>
#include <limits>

#include "CO_Gamma.h"
#include "GL_Math_Numbers.h"

namespace {

/// The published curves, in long double.
struct Curve {
  SInt32 index;
  long double (*decode)(long double);
  long double (*encode)(long double);
  float coded_break;  ///< where the pieces meet, but for a gap that comes of rounded constants
  float light_break;
};

long double DecodeBT709(long double x) {
  return x < 0.081L ? x / 4.5L : std::pow((x + 0.099L) / 1.099L, 1 / 0.45L);
}
long double EncodeBT709(long double light) {
  return light < 0.018L ? 4.5L * light : 1.099L * std::pow(light, 0.45L) - 0.099L;
}

const Curve kCurves[] = {
    {kCO_TransferBT709, DecodeBT709, EncodeBT709, 0.081F, 0.018F},
    {kCO_TransferSRGB,
     [](long double x) {
       return x < 0.03928L ? x / 12.92L : std::pow((x + 0.055L) / 1.055L, 2.4L);
     },
     [](long double light) {
       return light < 0.00304L ? 12.92L * light : 1.055L * std::pow(light, 1 / 2.4L) - 0.055L;
     },
     0.03928F, 0.00304F},
    {kCO_TransferPower1_8, [](long double x) { return std::pow(x, 1.8L); },
     [](long double light) { return std::pow(light, 1 / 1.8L); }, -1, -1},
    {kCO_TransferSMPTE240M,
     [](long double x) {
       return x < 0.0912L ? x / 4 : std::pow((x + 0.1115L) / 1.1115L, 1 / 0.45L);
     },
     [](long double light) {
       return light < 0.0228L ? 4 * light : 1.1115L * std::pow(light, 0.45L) - 0.1115L;
     },
     0.0912F, 0.0228F},
    {kCO_TransferBT709OnPower, [](long double x) { return DecodeBT709(std::pow(x, 9.0L / 11)); },
     [](long double light) { return std::pow(EncodeBT709(light), 11.0L / 9); }, 0.0463368F, 0.018F},
    {kCO_TransferPower2_2, [](long double x) { return std::pow(x, 2.2L); },
     [](long double light) { return std::pow(light, 1 / 2.2L); }, -1, -1},
    {kCO_TransferPower1_961, [](long double x) { return std::pow(x, 1.961L); },
     [](long double light) { return std::pow(light, 1 / 1.961L); }, -1, -1},
};

float Convert(float x, SInt32 source, SInt32 destination) {
  float result = -99;
  EXPECT_EQ(CO_ConvertGammaNormF32_indexed(x, source, &result, destination), noErr);
  return result;
}

constexpr double kTolerance = 2e-6;

/// A value in the gap of its curve's break comes back as its edge.
double Tolerance(float beyond_break) {
  constexpr float kGap = 3e-4F;
  return std::fabs(beyond_break) < kGap ? static_cast<double>(kGap) : kTolerance;
}

TEST(IndexedGamma, FollowsTheFormulasAndItsInverse) {
  for (const Curve& curve : kCurves) {
    SCOPED_TRACE(curve.index);
    for (int i = 0; i <= 20000; ++i) {
      const float x = static_cast<float>(i) / 20000.0F;
      const float light = Convert(x, curve.index, kCO_TransferLinear);
      ASSERT_NEAR(light, static_cast<double>(curve.decode(static_cast<long double>(x))), kTolerance)
          << x;
      const float coded = Convert(x, kCO_TransferLinear, curve.index);
      ASSERT_NEAR(coded, static_cast<double>(curve.encode(static_cast<long double>(x))), kTolerance)
          << x;
      ASSERT_NEAR(Convert(light, kCO_TransferLinear, curve.index), x,
                  Tolerance(x - curve.coded_break))
          << x;
      ASSERT_NEAR(Convert(coded, curve.index, kCO_TransferLinear), x,
                  Tolerance(x - curve.light_break))
          << x;
    }
    EXPECT_GT(Convert(1.5F, curve.index, kCO_TransferLinear), 1.5F);
    EXPECT_LT(Convert(-0.5F, curve.index, kCO_TransferLinear), 0);
    EXPECT_LT(Convert(-0.5F, kCO_TransferLinear, curve.index), 0);
  }
  // A float just above the break is on the power.
  EXPECT_EQ(Convert(0.081F, 1, 5),
            static_cast<float>(GL_PowExt((0.081F + 0.099) / 1.099, 1 / 0.45)));
  EXPECT_FLOAT_EQ(Convert(-0.25F, 5, 9), -std::pow(0.25F, 1 / 2.2F));
}

TEST(IndexedGamma, RefusesWhatHasNoCurve) {
  for (const SInt32 index : {0, 2, 6, 11, -1, std::numeric_limits<SInt32>::max()}) {
    SCOPED_TRACE(index);
    float result = 7;
    EXPECT_EQ(CO_ConvertGammaNormF32_indexed(0.5F, index, &result, 5), paramErr);
    EXPECT_EQ(CO_ConvertGammaNormF32_indexed(0.5F, 5, &result, index), paramErr);
    EXPECT_EQ(result, 7);
    EXPECT_EQ(CO_ConvertGammaNormF32_indexed(0.5F, index, &result, index), noErr);
    EXPECT_EQ(result, 0.5F);
  }
}

struct ToneCurve {
  cmsToneCurve* curve;
  ToneCurve(int type, const double* parameters)
      : curve(cmsBuildParametricToneCurve(nullptr, type, parameters)) {}
  ToneCurve(const ToneCurve&) = delete;
  ToneCurve& operator=(const ToneCurve&) = delete;
  ~ToneCurve() { cmsFreeToneCurve(curve); }
  float At(float x) const { return cmsEvalToneCurveFloat(curve, x); }
};

constexpr GammaData kLinearData = {1, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0};

float ConvertByData(float x, const GammaData& source, const GammaData& destination) {
  float result = -99;
  EXPECT_EQ(CO_ConvertGammaNormF32_bydata(x, &source, &result, &destination), noErr);
  return result;
}

TEST(GammaByData, AgreesWithLcmsOnParametricCurves) {
  const std::array<float, 7> kinds[] = {
      {2.2F, 0, 0, 0, 0, 0, 0},
      {2.4F, 1.1F, -0.1F, 0, 0, 0, 0},
      {1.8F, 0.9F, 0.05F, 0.02F, 0, 0, 0},
      {2.4F, 1 / 1.055F, 0.055F / 1.055F, 1 / 12.92F, 0.04045F, 0, 0},
      {2.2F, 0.9F, 0.1F, 0.2F, 0.0505F, 0.01F, 0.003F},
  };
  for (UInt32 type = 0; type < std::size(kinds); ++type) {
    SCOPED_TRACE(type);
    const auto& p = kinds[type];
    const GammaData data = {0, 0, nullptr, type, p[0], p[1], p[2], p[3], p[4], p[5], p[6]};
    double parameters[7];
    std::copy(p.begin(), p.end(), parameters);
    // The peer numbers the types from 1.
    const ToneCurve curve(static_cast<int>(type) + 1, parameters);
    for (int i = 0; i <= 1000; ++i) {
      const float x = static_cast<float>(i) / 1000;
      const float light = ConvertByData(x, data, kLinearData);
      ASSERT_NEAR(light, curve.At(x), kTolerance) << x;
      if (light > 0.03F) {
        ASSERT_NEAR(ConvertByData(light, kLinearData, data), x, 2e-5) << x;
      }
    }
  }
}

TEST(GammaByData, ReadsAndInvertsTables) {
  float two[] = {0, 1};
  float rising[] = {0, 0.1F, 0.1F, 0.4F, 1};
  const GammaData pair = {0, 2, two, 0, 0, 0, 0, 0, 0, 0, 0};
  const GammaData table = {0, 5, rising, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(ConvertByData(0.9F, pair, kLinearData), 0);
  EXPECT_FLOAT_EQ(ConvertByData(0.9F, kLinearData, pair), 0.9F);
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const struct {
    float x, light;
  } forward[] = {{0, 0}, {0.24F, 0}, {0.26F, 0.1F}, {0.99F, 0.4F},
                 {1, 1}, {-3, 0},    {1e30F, 1},    {nan, 0}};
  for (const auto& c : forward)
    EXPECT_EQ(ConvertByData(c.x, table, kLinearData), c.light) << c.x;
  EXPECT_FLOAT_EQ(ConvertByData(0.25F, kLinearData, table), 0.625F);
  EXPECT_FLOAT_EQ(ConvertByData(0.05F, kLinearData, table), 0.125F);
  EXPECT_FLOAT_EQ(ConvertByData(0.7F, kLinearData, table), 0.875F);

  // Refused: no curve, a type that there is not, no record.
  float out = 7;
  const GammaData none = {0.001F, 1, two, 0, 0, 0, 0, 0, 0, 0, 0};
  const GammaData type5 = {1, 2, two, 5, 1, 1, 0, 0, 0, 0, 0};
  for (const GammaData* bad : {&none, &type5, static_cast<const GammaData*>(nullptr)}) {
    EXPECT_EQ(CO_ConvertGammaNormF32_bydata(0.5F, bad, &out, &pair), paramErr);
    EXPECT_EQ(CO_ConvertGammaNormF32_bydata(0.5F, &pair, &out, bad), paramErr);
  }
  EXPECT_EQ(out, 7);
  const GammaData second_bad[] = {pair, none, pair};
  const GammaData linear[] = {kLinearData, kLinearData, kLinearData};
  float rgb[] = {1, 1, 1};
  EXPECT_EQ(CO_ConvertGammaNormRGB_F32_bydata(rgb, second_bad, rgb, linear), paramErr);
}

TEST(MixedGamma, GoesThroughLinearLight) {
  const float in[] = {0.2F, 0.5F, 0.8F};
  float expected[3];
  float out[3] = {7, 7, 7};
  ASSERT_EQ(CO_ConvertGammaNormRGB_F32_indexed(in, 9, expected, 1), noErr);
  ASSERT_EQ(CO_ConvertGammaNormRGB_F32(in, kCO_Gamma2_2, 0, nullptr, 1, out), noErr);
  for (int i = 0; i < 3; ++i)
    EXPECT_NEAR(out[i], expected[i], 1e-6);
  ASSERT_EQ(CO_ConvertGammaNormRGB_F32(expected, nullptr, 1, kCO_Gamma2_2, 2, out), noErr);
  for (int i = 0; i < 3; ++i)
    EXPECT_NEAR(out[i], in[i], 1e-6);
  EXPECT_EQ(CO_ConvertGammaNormRGB_F32(in, nullptr, 6, nullptr, 6, out), noErr);
  EXPECT_EQ(out[1], in[1]);
  EXPECT_EQ(CO_ConvertGammaNormRGB_F32(expected, nullptr, 0, nullptr, 0, out), paramErr);
  EXPECT_EQ(CO_ConvertGammaNormRGB_F32(expected, nullptr, 1, nullptr, 6, out), paramErr);
  EXPECT_EQ(out[1], in[1]);
}

TEST(SimpleGamma, IsToldAndTypedByTolerance) {
  const struct {
    float a, b;
    bool equal;
  } pairs[] = {{2.2F, 2.21F, true},  {2.19F, 2.2F, true},   {2.2F, 2.22F, true},
               {2.2F, 2.23F, false}, {2.19F, 2.21F, false}, {1.8F, 1.82F, false}};
  for (const auto& pair : pairs)
    EXPECT_EQ(CO_EqualGamma(pair.a, pair.b) != 0, pair.equal) << pair.a << " " << pair.b;
  EXPECT_EQ(CO_GetGammaTypeForSimpleGammaTransform(1.8F, 2.22F), 9);
  EXPECT_EQ(CO_GetGammaTypeForSimpleGammaTransform(1, 1.805F), 2);
  EXPECT_EQ(CO_GetGammaTypeForSimpleGammaTransform(1, 1), 1);

  double r = 0, g = 0, b = 0;
  CO_ConvertRGBtoLinear(219, 100, -20, 2.0, 1, 2, &r, &g, &b);
  EXPECT_DOUBLE_EQ(r, 219);
  EXPECT_DOUBLE_EQ(g, 10000.0 / 219);
  CO_ConvertRGBtoLinear(255, 100, 12, 0, 3, 3, &r, &g, &b);
  EXPECT_NEAR(g, 255 * std::pow((100.0 / 255 + 0.055) / 1.055, 2.4), 1e-4);
  CO_ConvertRGBtoLinear(1, 2, 3, 0, 2, 6, &r, &g, &b);
  EXPECT_NEAR(b, 3, 1e-6);
  float rgb[] = {0.25F, 1, 4};
  CO_SimpleGammaF32(rgb, 0.5F);
  EXPECT_EQ(rgb[0] + rgb[1] + rgb[2], 3.5F);
}

}  // namespace
