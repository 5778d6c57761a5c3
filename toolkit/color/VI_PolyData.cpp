#include "VI_PolyData.h"

#include <algorithm>
#include <cstdlib>

#include "polynomial_fits_private.h"

namespace {

using namespace quillmere::color;

constexpr UInt32 kLog2Segments = 2;
constexpr UInt32 kHighestOrder = 5;

struct CurveTable {
  UInt32 transfer_function;
  bool decode;
  UInt32 order;
  float boundaries[kSegments + 1];
  float coefficients[kSegments][kHighestOrder + 1];
};

constexpr CurveTable kTables[] = {
    {7,
     false,
     5,
     {0, 0.0228000004F, 0.120520003F, 0.413679987F, 1},
     {{0, 4, 0, 0, 0, 0},
      {-0.0246777292F, 6.54851007F, -79.691803F, 777.250305F, -4222.81201F, 9467.95508F},
      {0.0712512881F, 2.61928892F, -5.81681585F, 9.40139961F, -6.46496916F, 0},
      {0.182114497F, 1.47726202F, -1.17941117F, 0.700080097F, -0.180067405F, 0}}},
    {8,
     false,
     5,
     {0, 0.0179999992F, 0.140750006F, 0.4271667F, 1},
     {{-0.00011576034F, 1.41405594F, 134.656601F, -6109.12012F, 124118.383F, 0},
      {-0.0179656092F, 4.1536479F, -36.63871F, 309.522095F, -1490.302F, 2965.60693F},
      {0.0373829417F, 2.17027807F, -3.71832705F, 5.36510086F, -3.39297605F, 0},
      {0.112184547F, 1.446509F, -0.97070092F, 0.54981041F, -0.137817204F, 0}}},
    {7,
     true,
     3,
     {0, 0.0912000015F, 0.3941333F, 0.697066724F, 1},
     {{0, 0.25F, 0, 0},
      {0.00633463915F, 0.113447778F, 0.718253076F, 0.1812713F},
      {0.0270712096F, -0.0128688738F, 0.977293491F, 0},
      {0.0684031472F, -0.132111728F, 1.06363821F, 0}}},
    {8,
     true,
     4,
     {0, 0.046336811F, 0.364224494F, 0.682112277F, 1},
     {{0.000154070702F, 0.596502185F, -11.8748741F, 259.044586F, -2190.19409F},
      {0.005112065F, 0.233921304F, 0.929497302F, -0.213348806F, 0},
      {-0.0101480531F, 0.339276999F, 0.677082717F, 0, 0},
      {-0.0350841098F, 0.413452804F, 0.621674597F, 0, 0}}},
};

template <class T>
T* Allocate(std::size_t count) {
  return static_cast<T*>(std::calloc(count, sizeof(T)));
}

/// Frees what a record points to; rows may be missing.
void FreeTables(const PolyData& data) {
  if (data.coefficients != nullptr) {
    for (UInt32 k = 0; k < 1U << data.log2Segments; ++k)
      std::free(data.coefficients[k]);
  }
  std::free(data.coefficients);
  std::free(data.boundaries);
}

/// A record with tables of its own; false, with nothing kept, without memory.
bool CopyTable(const CurveTable& table, PolyData* data) {
  *data = {Allocate<float*>(kSegments), Allocate<float>(kSegments + 1), table.order, kLog2Segments};
  bool is_whole = data->coefficients != nullptr && data->boundaries != nullptr;
  for (int k = 0; k < kSegments && is_whole; ++k) {
    float*& row = data->coefficients[k];
    row = Allocate<float>(table.order + 1);
    is_whole = row != nullptr;
    if (is_whole) std::copy_n(table.coefficients[k], table.order + 1, row);
  }
  if (is_whole)
    std::copy_n(table.boundaries, kSegments + 1, data->boundaries);
  else
    FreeTables(*data);
  return is_whole;
}

}  // namespace

void VI_FillPolyData(PolyData* data, UInt32 transferFunction, Boolean decode) {
  for (const CurveTable& table : kTables) {
    if (table.transfer_function != transferFunction || table.decode != (decode != 0)) continue;
    PolyData filled = {};
    if (CopyTable(table, &filled)) *data = filled;
    return;
  }
}

void VI_DisposePolyData(PolyData** data) {
  if (data == nullptr || *data == nullptr) return;
  FreeTables(**data);
  std::free(*data);
  *data = nullptr;
}

void VI_CalcPolyData() {
  for (const FittedCurve& curve : kFittedCurves) {
    for (int segment = 0; segment < kSegments; ++segment) {
      SInt32 count = 0;
      double coefficients[kMostCoefficients];
      FitSegment(curve, segment, &count, coefficients);
    }
  }
}
