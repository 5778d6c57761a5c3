#include "CO_Color_Conversions.h"

#include <algorithm>
#include <iterator>

#include "ORW_blas.h"
#include "fixed_point.h"

namespace {

constexpr SInt32 kSize = 3;
constexpr SInt32 kElements = kSize * kSize;

/// C = A B.
void Multiply(const double* a, const double* b, double* c) {
  CB_MatrixMultiplyD(kSize, kSize, kSize, a, b, c);
}

/// A row vector times a matrix.
void Apply(const double* matrix, const double* vector, double* out) {
  CB_MatrixTrVectorD(kSize, kSize, matrix, vector, out);
}

/// RGB to XYZ as a conversion matrix.
SInt32 GetRowFormRGBtoXYZ(const double* primaries, const double* white, double* out) {
  double columns[kElements];
  const SInt32 status = CO_GetRGBtoXYZ_MatrixD(primaries, white, columns);
  CB_TransposeMatrixD(kSize, kSize, columns, out);
  return status;
}

}  // namespace

void CO_xyYtoXYZ_F(float x, float y, float luminance, float* xOut, float* yOut, float* zOut) {
  *xOut = x * luminance / y;
  *yOut = luminance;
  *zOut = (1 - x - y) * luminance / y;
}

void CO_xyYtoXYZ_D(double x, double y, double luminance, double* xOut, double* yOut, double* zOut) {
  *xOut = x * luminance / y;
  *yOut = luminance;
  *zOut = (1 - x - y) * luminance / y;
}

void CO_XYZto_xyY_F(float x, float y, float z, float* xOut, float* yOut, float* luminance) {
  const float sum = x + y + z;
  *xOut = x / sum;
  *yOut = y / sum;
  *luminance = y;
}

void CO_XYZto_xyY_D(double x, double y, double z, double* xOut, double* yOut, double* luminance) {
  const auto sum = static_cast<double>(static_cast<float>(x + y + z));
  *xOut = x / sum;
  *yOut = y / sum;
  *luminance = y;
}

void CO_ConvertXYZ_MatrixTo_xyY_D(const double* in, double* out) {
  for (SInt32 i = 0; i < kElements; i += kSize)
    CO_XYZto_xyY_D(in[i], in[i + 1], in[i + 2], &out[i], &out[i + 1], &out[i + 2]);
}

void CO_WhitePoint_xyToXYZ_D(const float* whitePoint, double* xyz) {
  CO_xyYtoXYZ_D(static_cast<double>(whitePoint[0]), static_cast<double>(whitePoint[1]), 1, &xyz[0],
                &xyz[1], &xyz[2]);
}

void CO_XYZ_FToCMFixedXYColor(const float* xyz, CMFixedXYColor* out) {
  float x = 0;
  float y = 0;
  float luminance = 0;
  CO_XYZto_xyY_F(xyz[0], xyz[1], xyz[2], &x, &y, &luminance);
  *out = {X2Fix(static_cast<double>(x)), X2Fix(static_cast<double>(y))};
}

void CO_CMFixedXYColorToXYZ_F(const CMFixedXYColor* color, float* xyz) {
  CO_xyYtoXYZ_F(static_cast<float>(Fix2X(color->x)), static_cast<float>(Fix2X(color->y)), 1,
                &xyz[0], &xyz[1], &xyz[2]);
}

void CO_IndexToMatrixF(SInt32 index, float* coefficients) {
  constexpr struct {
    SInt32 index;
    float coefficients[3];
  } kMatrices[] = {{1, {0.2126F, 0.7152F, 0.0722F}},
                   {7, {0.212F, 0.701F, 0.087F}},
                   {6, {0.299F, 0.587F, 0.114F}}};
  const auto* found = std::find_if(std::begin(kMatrices), std::prev(std::end(kMatrices)),
                                   [=](const auto& matrix) { return matrix.index == index; });
  std::copy_n(found->coefficients, 3, coefficients);
}

void CO_IndexToMatrixD(SInt32 index, double* coefficients) {
  float narrow[kSize];
  CO_IndexToMatrixF(index, narrow);
  CB_VectorFtoD(kSize, narrow, coefficients);
}

void CO_IndexToConeAdaptationMatrix(SInt32 index, double* matrix) {
  constexpr double kVonKries[] = {0.40024, -0.2263,  0,      0.7076, 1.16532,
                                  0,       -0.08081, 0.0457, 0.91822};
  constexpr double kBradford[] = {0.8951,  -0.7502, 0.0389, 0.2664, 1.7135,
                                  -0.0685, -0.1614, 0.0367, 1.0296};
  if (index == kCO_ConesVonKries)
    std::copy_n(kVonKries, kElements, matrix);
  else if (index == kCO_ConesBradford)
    std::copy_n(kBradford, kElements, matrix);
  else
    CB_SetUnitMatrixD(kSize, matrix);
}

SInt32 CO_GetRGBtoXYZ_MatrixD(const double* primaries, const double* whiteXYZ, double* matrix) {
  double sums[kSize] = {};
  const SInt32 status = CB_SolveLinEqSimpleD(kSize, primaries, whiteXYZ, sums);
  if (status != noErr) std::fill_n(sums, kSize, 0.0);
  for (SInt32 i = 0; i < kElements; ++i)
    matrix[i] = primaries[i] * sums[i % kSize];
  return noErr;
}

SInt32 CO_GetChromaticAdaptationMatrix(const double* sourceWhite, const double* destinationWhite,
                                       SInt32 coneIndex, double* matrix) {
  double cones[kElements];
  double from_cones[kElements];
  CO_IndexToConeAdaptationMatrix(coneIndex, cones);
  const SInt32 status = CB_MatrixInverseD(kSize, cones, from_cones);
  if (status != noErr) return status;
  double source[kSize];
  double destination[kSize];
  Apply(cones, sourceWhite, source);
  Apply(cones, destinationWhite, destination);
  double scaled[kElements];
  for (SInt32 i = 0; i < kElements; ++i)
    scaled[i] = cones[i] * (destination[i % kSize] / source[i % kSize]);
  Multiply(scaled, from_cones, matrix);
  return noErr;
}

SInt32 CO_GetRGBConversionMatrixD(const double* sourcePrimaries, const double* sourceWhite,
                                  const double* destinationPrimaries,
                                  const double* destinationWhite, SInt32 coneIndex,
                                  double* matrix) {
  double to_xyz[kElements];
  double adaptation[kElements];
  double adapted[kElements];
  double from_destination[kElements];
  double to_destination[kElements];
  SInt32 status = GetRowFormRGBtoXYZ(sourcePrimaries, sourceWhite, to_xyz);
  if (status == noErr)
    status = CO_GetChromaticAdaptationMatrix(sourceWhite, destinationWhite, coneIndex, adaptation);
  if (status != noErr) return status;
  Multiply(to_xyz, adaptation, adapted);
  status = GetRowFormRGBtoXYZ(destinationPrimaries, destinationWhite, from_destination);
  if (status == noErr) status = CB_MatrixInverseD(kSize, from_destination, to_destination);
  if (status != noErr) return status;
  Multiply(adapted, to_destination, matrix);
  return noErr;
}

void CO_GetRGBConversionMatrixD_Indexed(SInt32 sourcePrimaries, SInt32 sourceWhite,
                                        SInt32 destinationPrimaries, SInt32 destinationWhite,
                                        SInt32 coneIndex, double* matrix) {
  const auto is_standard = [](SInt32 index) {
    return index >= 0 && index <= 0xFFFF && QT_StandardNclcPrimaries(static_cast<UInt16>(index));
  };
  const bool is_same = sourcePrimaries == destinationPrimaries && sourceWhite == destinationWhite;
  if (is_same || !is_standard(sourcePrimaries) || !is_standard(destinationPrimaries)) {
    CB_SetUnitMatrixD(kSize, matrix);
    return;
  }
  double from[kElements];
  double to[kElements];
  double from_white[kSize];
  double to_white[kSize];
  CO_IndexToPrimariesXYZ_D(sourcePrimaries, from);
  CO_IndexToPrimariesXYZ_D(destinationPrimaries, to);
  CO_IndexToWhitePointXYZ_D(sourceWhite, from_white);
  CO_IndexToWhitePointXYZ_D(destinationWhite, to_white);
  CO_GetRGBConversionMatrixD(from, from_white, to, to_white, coneIndex, matrix);
}

void CO_NormalizePrimariesToWhitePt(const double* primaries, const double* whiteXYZ, float* out) {
  double rows[kElements];
  double normalized[kElements];
  GetRowFormRGBtoXYZ(primaries, whiteXYZ, rows);
  CO_ConvertXYZ_MatrixTo_xyY_D(rows, normalized);
  const double sum = normalized[2] + normalized[5] + normalized[8];
  for (SInt32 i = 2; i < kElements; i += kSize)
    normalized[i] /= sum;
  CB_MatrixDtoF(kSize, kSize, normalized, out);
}

void CO_ColorToNormalizedPrimaries_xyY(const SimpleColorSpaceParams* color, float* out) {
  double white[kSize];
  double primaries[kElements];
  CO_WhitePoint_xyToXYZ_D(color->whitePoint, white);
  CB_VectorFtoD(kElements, color->primaries, primaries);
  CO_NormalizePrimariesToWhitePt(primaries, white, out);
}

void CO_GetRGBtoYUV_MatrixD(SInt32 index, double* matrix) {
  double k[kSize];
  CO_IndexToMatrixD(index, k);
  const double to_cb = 0.5 / (1 - k[2]);
  const double to_cr = 0.5 / (1 - k[0]);
  const double elements[] = {k[0],          -to_cb * k[0], 0.5, k[1],         -to_cb * k[1],
                             -to_cr * k[1], k[2],          0.5, -to_cr * k[2]};
  std::copy_n(elements, kElements, matrix);
}

void CO_GetYUVtoRGB_MatrixD(SInt32 index, double* matrix) {
  double k[kSize];
  CO_IndexToMatrixD(index, k);
  const double to_b = 2 * (1 - k[2]);
  const double to_r = 2 * (1 - k[0]);
  const double elements[] = {1, 1, 1, 0, -to_b * k[2] / k[1], to_b, to_r, -to_r * k[0] / k[1], 0};
  std::copy_n(elements, kElements, matrix);
}

void CO_GetYUVtoYUV_MatrixD(SInt32 sourceIndex, SInt32 destinationIndex, double* matrix) {
  double to_rgb[kElements];
  double from_rgb[kElements];
  CO_GetYUVtoRGB_MatrixD(sourceIndex, to_rgb);
  CO_GetRGBtoYUV_MatrixD(destinationIndex, from_rgb);
  Multiply(to_rgb, from_rgb, matrix);
}
