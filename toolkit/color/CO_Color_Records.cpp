#include <algorithm>

#include "CO_Color_Conversions.h"
#include "CO_Sanitize.h"
#include "ORW_blas.h"

namespace {

constexpr float kTo8Bit = 255;
constexpr float kFrom8Bit = 0.003921569F;

bool IsGiven(const QT_Nclc* nclc) {
  return nclc != nullptr && nclc->colorParamType == kQT_NclcType;
}

bool IsSpecified(SInt32 index) {
  return index != 0 && index != kQT_NclcUnspecified;
}

/// The primaries that stand for a side's unspecified ones: the other side's.
SInt32 PrimariesBeside(const QT_Nclc* other) {
  return IsGiven(other) && IsSpecified(other->primaries) ? other->primaries : kCO_PrimariesBT709;
}

/// A row vector times a matrix, narrowed first.
void ApplyNarrowed(const double* matrix, const float* in, float* out) {
  float narrow[9];
  float vector[3];
  std::copy_n(in, 3, vector);
  CB_MatrixDtoF(3, 3, matrix, narrow);
  CB_MatrixTrVectorF(3, 3, narrow, vector, out);
}

void Scale(float factor, const float* in, float* out) {
  for (int i = 0; i < 3; ++i)
    out[i] = in[i] * factor;
}

}  // namespace

SInt32 CO_GetPrimariesForRGB_F32_Conversion(const QT_Nclc* nclc, SInt32 index, const float* custom,
                                            double* primaries) {
  if (IsGiven(nclc) && IsSpecified(nclc->primaries)) index = nclc->primaries;
  if (IsSpecified(index)) return CO_IndexToPrimariesXYZ_D(index, primaries);
  if (custom == nullptr) return paramErr;
  CB_VectorFtoD(9, custom, primaries);
  return noErr;
}

void CO_GetWhitePtForRGB_F32_Conversion(SInt32 index, const QT_Nclc* nclc, const float* custom,
                                        double* xyz) {
  if (index == 0 && !IsGiven(nclc) && custom != nullptr) {
    for (int i = 0; i < 3; ++i)
      xyz[i] = static_cast<double>(custom[i]) / static_cast<double>(custom[1]);
    return;
  }
  CO_IndexToWhitePointXYZ_D(index == 0 ? kCO_WhiteD65 : index, xyz);
}

void CO_GetGammaIndexForRGB_F32_Conversion(SInt32* gammaIndex, const QT_Nclc* nclc,
                                           Boolean simpleGamma) {
  if (!IsGiven(nclc) || !QT_StandardNclcTransferFunction(nclc->transferFunction)) return;
  *gammaIndex = simpleGamma ? SInt32{kCO_TransferPower1_961} : SInt32{nclc->transferFunction};
}

SInt32 CO_GetSaniMatrixForRGB_F32_Conversion(const QT_Nclc* nclc, float* coefficients) {
  const SInt32 index =
      IsGiven(nclc) && QT_StandardNclcMatrix(nclc->matrix) ? nclc->matrix : kCO_MatrixBT601;
  CO_IndexToMatrixF(index, coefficients);
  return index;
}

SInt32 CO_ConvertNormRGB_F32(const float* in, const GammaData* sourceGamma, SInt32 sourceIndex,
                             const float* sourceCoefficients, const GammaData* destinationGamma,
                             SInt32 destinationIndex, const double* matrix,
                             const float* destinationCoefficients, float* out) {
  float rgb[3];
  std::copy_n(in, 3, rgb);
  CO_SanitizeNormRGB_F32(rgb, sourceCoefficients);
  SInt32 status =
      CO_ConvertGammaNormRGB_F32(rgb, sourceGamma, sourceIndex, nullptr, kCO_TransferLinear, rgb);
  if (status != noErr) return status;
  ApplyNarrowed(matrix, rgb, rgb);
  CO_SanitizeNormRGB_F32(rgb, destinationCoefficients);
  status = CO_ConvertGammaNormRGB_F32(rgb, nullptr, kCO_TransferLinear, destinationGamma,
                                      destinationIndex, rgb);
  if (status == noErr) std::copy_n(rgb, 3, out);
  return status;
}

SInt32 CO_ConvertNormRGB_F32_indexed(
    const float* in, const QT_Nclc* sourceNclc, Boolean sourceSimpleGamma,
    const GammaData* sourceGamma, SInt32 sourceGammaIndex, SInt32 sourceWhiteIndex,
    const float* sourceCustomWhite, SInt32 sourcePrimariesIndex, const float* sourceCustomPrimaries,
    SInt32 coneIndex, const QT_Nclc* destinationNclc, Boolean destinationSimpleGamma,
    const GammaData* destinationGamma, SInt32 destinationGammaIndex, SInt32 destinationWhiteIndex,
    const float* destinationCustomWhite, SInt32 destinationPrimariesIndex,
    const float* destinationCustomPrimaries, float* out) {
  double from[9];
  double to[9];
  SInt32 status = CO_GetPrimariesForRGB_F32_Conversion(sourceNclc, sourcePrimariesIndex,
                                                       sourceCustomPrimaries, from);
  if (status == noErr) {
    status = CO_GetPrimariesForRGB_F32_Conversion(destinationNclc, destinationPrimariesIndex,
                                                  destinationCustomPrimaries, to);
  }
  double from_white[3];
  double to_white[3];
  double matrix[9];
  CO_GetWhitePtForRGB_F32_Conversion(sourceWhiteIndex, sourceNclc, sourceCustomWhite, from_white);
  CO_GetWhitePtForRGB_F32_Conversion(destinationWhiteIndex, destinationNclc, destinationCustomWhite,
                                     to_white);
  if (status == noErr) {
    status = CO_GetRGBConversionMatrixD(from, from_white, to, to_white, coneIndex, matrix);
  }
  if (status != noErr) return status;
  float from_luma[3];
  float to_luma[3];
  CO_GetGammaIndexForRGB_F32_Conversion(&sourceGammaIndex, sourceNclc, sourceSimpleGamma);
  CO_GetGammaIndexForRGB_F32_Conversion(&destinationGammaIndex, destinationNclc,
                                        destinationSimpleGamma);
  CO_GetSaniMatrixForRGB_F32_Conversion(sourceNclc, from_luma);
  CO_GetSaniMatrixForRGB_F32_Conversion(destinationNclc, to_luma);
  return CO_ConvertNormRGB_F32(in, sourceGamma, sourceGammaIndex, from_luma, destinationGamma,
                               destinationGammaIndex, matrix, to_luma, out);
}

SInt32 CO_ConvertRGB_F32_nclc(const float* in, const QT_Nclc* source, float* out,
                              const QT_Nclc* destination) {
  float rgb[3];
  Scale(kFrom8Bit, in, rgb);
  const SInt32 status = CO_ConvertNormRGB_F32_indexed(
      rgb, source, 0, kCO_Gamma2_2, kCO_TransferByData, kCO_WhiteD65, nullptr,
      PrimariesBeside(destination), nullptr, 0, destination, 0, kCO_Gamma2_2, kCO_TransferByData,
      kCO_WhiteD65, nullptr, PrimariesBeside(source), nullptr, rgb);
  if (status == noErr) Scale(kTo8Bit, rgb, out);
  return status;
}

SInt32 CO_ConvertYCbCrF32_nclc(const float* in, const QT_Nclc* source, float* out,
                               const QT_Nclc* destination) {
  float triple[3];
  std::copy_n(in, 3, triple);
  if (IsGiven(source) && IsGiven(destination) && !QT_EqualNclc(source, destination)) {
    double matrix[9];
    CO_GetYUVtoRGB_MatrixD(source->matrix, matrix);
    ApplyNarrowed(matrix, triple, triple);
    const SInt32 status = CO_ConvertRGB_F32_nclc(triple, source, triple, destination);
    if (status != noErr) return status;
    CO_GetRGBtoYUV_MatrixD(destination->matrix, matrix);
    ApplyNarrowed(matrix, triple, triple);
  }
  std::copy_n(triple, 3, out);
  return noErr;
}
