#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "CO_Ranges.h"
#include "cf_strings.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Ranges, EveryCodeComesBack) {
  for (SInt32 bits = 1; bits <= 16; ++bits) {
    SCOPED_TRACE(bits);
    for (UInt32 code = 0; code < UInt32{1} << bits; ++code) {
      ASSERT_EQ(CO_UnitIntervalToUInt(CO_UIntToUnitInterval(code, bits), bits), code);
      if (bits < 8) continue;
      const UInt32 step = UInt32{1} << (bits - 8);
      if (code < step || code > (UInt32{1} << bits) - step - 1) continue;
      ASSERT_EQ(CO_UnitIntervalToUIntVR(CO_UIntVRToUnitInterval(code, bits, 0), bits), code);
      ASSERT_EQ(CO_UnitIntervalToSIntVR(CO_SIntVRToUnitInterval(code, bits, 0), bits), code);
    }
  }
}

TEST(Ranges, ValuesAtTheLevels) {
  struct Case {
    double got;
    double wanted;
  };
  const Case cases[] = {
      {CO_UIntToUnitInterval(0, 5), 0.25 / 31},
      {CO_UIntToUnitInterval(255, 8), 1.0 - 0.25 / 255},
      {CO_UIntToUnitInterval(510, 8), 2.0},
      {CO_SIntToUnitInterval(127, 8), 0.5 - 0.25 / 127},
      {CO_SIntToUnitInterval(-127, 8), 0.25 / 127 - 0.5},
      {CO_SIntToUnitInterval(-128, 8), -0.5},
      {CO_SIntToUnitInterval(128, 8), 0.5},
      {CO_SIntToUnitInterval(-63, 8), -63 / 254.0},
      {CO_SIntToUnitInterval(0, 1), 0.0},
      {CO_UIntVRToUnitInterval(16, 8, 0), 0.0},
      {CO_UIntVRToUnitInterval(940, 10, 0), 1.0},
      {CO_UIntVRToUnitInterval(0, 8, 0), -16 / 219.0},
      {CO_UIntVRToUnitInterval(0, 8, 1), 0.0},
      {CO_UIntVRToUnitInterval(255, 8, 1), 1.0},
      {CO_SIntVRToUnitInterval(128, 8, 0), 0.0},
      {CO_SIntVRToUnitInterval(512, 10, 0), 0.0},
      {CO_SIntVRToUnitInterval(61440, 16, 0), 0.5},
      {CO_SIntVRToUnitInterval(0, 8, 1), -0.5},
  };
  for (const Case& c : cases)
    EXPECT_EQ(c.got, c.wanted) << &c - cases;
}

TEST(Ranges, CodesOfValuesWithinAndBeyond) {
  struct Case {
    SInt64 got;
    SInt64 wanted;
  };
  const double nan = std::nan("");
  const Case cases[] = {
      {CO_UnitIntervalToUInt(CO_UIntToUnitInterval(0, 5), 8), 2},
      {CO_UnitIntervalToUInt(CO_UIntToUnitInterval(31, 5), 8), 253},
      {CO_UnitIntervalToUInt(CO_UIntToUnitInterval(0, 8), 5), 0},
      {CO_UnitIntervalToUInt(CO_UIntToUnitInterval(255, 8), 5), 31},
      {CO_UnitIntervalToUInt(kInfinity, 31), 0x7FFFFFFF},
      {CO_UnitIntervalToUInt(nan, 8), 0},
      {CO_UnitIntervalToSInt(-0.5, 8), -126},
      {CO_UnitIntervalToSInt(0.5, 8), 127},
      {CO_UnitIntervalToSInt(-kInfinity, 31), -0x3FFFFFFE},
      {CO_UnitIntervalToUIntVR(1.0, 8), 235},
      {CO_UnitIntervalToUIntVR(2.0, 8), 254},
      {CO_UnitIntervalToUIntVR(-1.0, 8), 1},
      {CO_UnitIntervalToUIntVR(kInfinity, 14), 16319},
      {CO_UnitIntervalToUIntVR(nan, 16), 256},
      {CO_UnitIntervalToSIntVR(0.0, 10), 512},
      {CO_UnitIntervalToSIntVR(0.5, 10), 960},
      {CO_UnitIntervalToSIntVR(1e300, 10), 1019},
      {CO_UnitIntervalToSIntVR(-1e300, 12), 16},
      {CO_UnitIntervalToUInt(0.5, 32), 0},
      {CO_UnitIntervalToSIntVR(0.5, 7), 0},
  };
  for (const Case& c : cases)
    EXPECT_EQ(c.got, c.wanted) << &c - cases;
}

/// The integer forms against the formulas in floating point, over all codes; a tie may go either
/// way.
TEST(Ranges, FixedWidthsRoundToTheNearestCode) {
  for (int v = 0; v < 65536; ++v)
    ASSERT_NEAR(CO_16bitUIntTo8bitUInt(static_cast<UInt16>(v)), v / 257.0, 0.503) << v;
  for (int v = 0; v < 1024; ++v)
    ASSERT_NEAR(CO_10bitUIntTo5bitUInt(static_cast<UInt16>(v)), v / 33.0, 0.52) << v;
  for (int v = 0; v < 256; ++v) {
    const auto code = static_cast<UInt8>(v);
    EXPECT_NEAR(CO_8bitUIntFRToVR(code), v * 219 / 255.0 + 16, 0.51) << v;
    if (v >= 16 && v <= 235) {
      EXPECT_NEAR(CO_8bitUIntVRToFR(code), (v - 16) * 255 / 219.0, 0.51) << v;
    }
    if (v >= 16 && v <= 240) {
      EXPECT_NEAR(CO_8bitSIntVRToFR(code), (v - 128) * 127.5 / 112, 1.0) << v;
    }
    EXPECT_EQ(CO_16bitUIntTo8bitUInt(CO_8bitUIntTo16bitUInt(code)), v);
    if (v < 32) {
      EXPECT_EQ(CO_10bitUIntTo5bitUInt(CO_5bitUIntTo10bitUInt(code)), v);
    }
  }
  for (int v = -127; v < 128; ++v)
    EXPECT_NEAR(CO_8bitSIntFRToVR(static_cast<SInt8>(v)), v * 112 / 127.5 + 128, 1.0) << v;
  const int ends[][2] = {{CO_8bitSIntFRToVR(0), 128},        {CO_8bitSIntFRToVR(127), 240},
                         {CO_8bitSIntFRToVR(-127), 16},      {CO_8bitSIntFRToVR(-128), 16},
                         {CO_8bitSIntVRToFR(128), 0},        {CO_8bitSIntVRToFR(240), 127},
                         {CO_8bitSIntVRToFR(16), -127},      {CO_8bitUIntVRToFR(15), 255},
                         {CO_8bitUIntVRToFR(236), 0},        {CO_5bitUIntTo10bitUInt(0), 8},
                         {CO_5bitUIntTo10bitUInt(31), 1016}, {CO_8bitUIntTo16bitUInt(255), 65471}};
  for (const auto& end : ends)
    EXPECT_EQ(end[0], end[1]) << &end - ends;
}

TEST(Ranges, Names) {
  const char* names[] = {"unknown range type", "video range", "full range", "wide range",
                         "unknown range type"};
  for (SInt32 type = 0; type < 5; ++type) {
    char name[32];
    CO_GetRangeName(type, name);
    EXPECT_STREQ(name, names[type]);
    char report[300] = "";
    SInt32 length = 0;
    CO_AddRangeFieldDescrToTextPtr(report, &length, CFSTR("Source"), type);
    EXPECT_EQ(std::string(report, static_cast<std::size_t>(length)),
              "Source: " + std::string(names[type]) + "\n");
  }
}

}  // namespace
