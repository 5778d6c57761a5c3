#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "CO_Gamma.h"
#include "VI_PolyData.h"
#include "polynomial_fits_private.h"

namespace {

using namespace quillmere::color;

template <class Coefficient>
double Horner(const Coefficient* coefficients, std::size_t count, double x) {
  double value = 0;
  while (count-- > 0)
    value = value * x + static_cast<double>(coefficients[count]);
  return value;
}

double Evaluate(const PolyData& data, double x) {
  std::size_t k = 0;
  while (k + 1 < 1U << data.log2Segments && x >= static_cast<double>(data.boundaries[k + 1]))
    ++k;
  return Horner(data.coefficients[k], data.order + 1, x);
}

double Curve(UInt32 transfer_function, bool decode, double x) {
  float result = -1;
  const auto index = static_cast<SInt32>(transfer_function);
  const auto value = static_cast<float>(x);
  EXPECT_EQ(decode ? CO_ConvertGammaNormF32_indexed(value, index, &result, kCO_TransferLinear)
                   : CO_ConvertGammaNormF32_indexed(value, kCO_TransferLinear, &result, index),
            noErr);
  return static_cast<double>(result);
}

PolyData* Filled(UInt32 transfer_function, bool decode) {
  auto* data = static_cast<PolyData*>(std::malloc(sizeof(PolyData)));
  *data = {nullptr, nullptr, 99, 99};
  VI_FillPolyData(data, transfer_function, decode ? 1 : 0);
  return data;
}

TEST(PiecewiseCurves, KeepTheirError) {
  for (const UInt32 transfer_function : {7U, 8U}) {
    for (const bool decode : {false, true}) {
      SCOPED_TRACE(testing::Message() << transfer_function << (decode ? " decode" : " encode"));
      PolyData* data = Filled(transfer_function, decode);
      ASSERT_EQ(data->log2Segments, 2U);
      double largest = 0;
      for (int i = 0; i <= 100000; ++i) {
        const double x = i / 100000.0;
        const double error = std::fabs(Evaluate(*data, x) - Curve(transfer_function, decode, x));
        // The curve itself jumps there.
        const bool is_at_gap = transfer_function == 8 && !decode && std::fabs(x - 0.018) < 1e-6;
        largest = std::max(largest, is_at_gap ? error - 0.0001 : error);
      }
      EXPECT_LE(largest, 0.00016);
      EXPECT_NEAR(Evaluate(*data, 1), 1, 0.0002);
      VI_DisposePolyData(&data);
      EXPECT_EQ(data, nullptr);
    }
  }
  PolyData* data = Filled(7, false);
  EXPECT_EQ(Evaluate(*data, 0.01F), static_cast<double>(0.01F) * 4);
  VI_DisposePolyData(&data);
  VI_DisposePolyData(&data);
  data = Filled(1, false);
  EXPECT_EQ(data->order, 99U);
  EXPECT_EQ(data->coefficients, nullptr);
  std::free(data);
}

TEST(PiecewiseCurves, ComeFromTheirFits) {
  VI_CalcPolyData();
  for (const FittedCurve& curve : kFittedCurves) {
    SCOPED_TRACE(testing::Message() << curve.transfer_function << curve.decode);
    PolyData* data = Filled(curve.transfer_function, curve.decode);
    for (int k = 0; k < kSegments; ++k) {
      EXPECT_NEAR(data->boundaries[k], curve.boundaries[k], 1e-6);
      double fitted[kMostCoefficients] = {};
      SInt32 count = 0;
      ASSERT_EQ(FitSegment(curve, k, &count, fitted), noErr);
      ASSERT_LE(count, static_cast<SInt32>(data->order) + 1);
      // The same polynomial, to the rounding of its coefficients.
      for (int i = 0; i <= 20; ++i) {
        const double x = std::lerp(curve.boundaries[k], curve.boundaries[k + 1], i / 20.0);
        EXPECT_NEAR(Horner(fitted, static_cast<std::size_t>(count), x),
                    Horner(data->coefficients[k], data->order + 1, x), 1e-5)
            << "segment " << k;
      }
    }
    VI_DisposePolyData(&data);
  }
}

}  // namespace
