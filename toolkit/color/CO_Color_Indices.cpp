#include <algorithm>
#include <iterator>
#include <memory>

#include "CM_basic.h"
#include "CO_Color_Conversions.h"
#include "ORW_blas.h"

namespace {

constexpr SInt32 kProfile = 4;
constexpr SInt32 kNativeDisplay = 7;
constexpr SInt32 kNativeDisplayWhite = 9;

struct Primaries {
  double x[3];  ///< of red, green, blue
  double y[3];
  float luminance[3];
  SInt32 index;
};
/// ITU-R BT.709, Adobe RGB (1998), EBU Tech. 3213, SMPTE RP 145.
constexpr Primaries kPrimaries[] = {
    {{0.64, 0.30, 0.15}, {0.33, 0.60, 0.06}, {0.212656F, 0.715158F, 0.072186F}, 1},
    {{0.64, 0.21, 0.15}, {0.33, 0.71, 0.06}, {0.297361F, 0.627355F, 0.075285F}, 3},
    {{0.64, 0.29, 0.15}, {0.33, 0.60, 0.06}, {0.222021F, 0.706645F, 0.071334F}, 5},
    {{0.63, 0.31, 0.155}, {0.34, 0.595, 0.07}, {0.212395F, 0.701049F, 0.086556F}, 6}};

struct WhitePoint {
  SInt32 index;
  float x, y;
};
constexpr WhitePoint kWhitePoints[] = {{1, 0.34567F, 0.3585F},  {4, 0.37208F, 0.37529F},
                                       {5, 0.33242F, 0.34743F}, {6, 0.44757F, 0.40745F},
                                       {7, 0.33333F, 0.33333F}, {8, 0.34588F, 0.35875F}};
constexpr WhitePoint kD65 = {2, 0.31271F, 0.32902F};

template <class Row, std::size_t count>
const Row* Find(const Row (&rows)[count], SInt32 index) {
  const Row* found = std::find_if(std::begin(rows), std::end(rows),
                                  [=](const Row& row) { return row.index == index; });
  return found != std::end(rows) ? found : nullptr;
}

/// The colour of the main display's profile.
SInt32 GetProfileColor(SimpleColorSpaceParams* color) {
  *color = {};
  const SInt32 status = CM_GetMonitorPCS(color);
  if (status == noErr) CM_FreeGammaTables(color->gamma);
  return status;
}

SInt32 GetDisplayColor(SInt32 index, SimpleColorSpaceParams* color) {
  if (index == kProfile) return GetProfileColor(color);
  *color = {};
  return CM_GetMonitorNativeColor(color);
}

bool IsOfDisplay(SInt32 index) {
  return index == kProfile || index == kNativeDisplay;
}

/// The matrix of the main display's profile, which needs no curves to be read.
SInt32 GetProfileMatrix(float* matrix) {
  CMProfileRef profile = nullptr;
  SInt32 status = CM_GetMainProfile(&profile);
  if (status == noErr) status = CM_GetProfilePcsMatrix(profile, matrix);
  CMCloseProfile(profile);
  return status;
}

}  // namespace

SInt32 CO_IndexToPrimariesXYZ_D(SInt32 index, double* matrix) {
  std::fill_n(matrix, 9, 0.0);
  if (IsOfDisplay(index)) {
    SimpleColorSpaceParams color = {};
    const SInt32 status =
        index == kProfile ? GetProfileMatrix(color.primaries) : CM_GetMonitorNativeColor(&color);
    if (status == noErr) CB_VectorFtoD(9, color.primaries, matrix);
    return status;
  }
  const Primaries* found = Find(kPrimaries, index);
  for (int i = 0; found != nullptr && i < 3; ++i) {
    matrix[i] = found->x[i];
    matrix[3 + i] = found->y[i];
    matrix[6 + i] = 1 - found->x[i] - found->y[i];
  }
  return noErr;
}

SInt32 CO_IndexToPrimariesXYZ_F2(SInt32 index, float* matrix) {
  double wide[9];
  const SInt32 status = CO_IndexToPrimariesXYZ_D(index, wide);
  CB_MatrixDtoF(3, 3, wide, matrix);
  return status;
}

SInt32 CO_IndexToPrimariesXYZ_F(SInt32 index, float* matrix) {
  double wide[9];
  const SInt32 status = CO_IndexToPrimariesXYZ_D(index, wide);
  for (int i = 0; i < 9; ++i)
    matrix[i] = static_cast<float>(wide[3 + i % 3] != 0 ? wide[i] / wide[3 + i % 3] : 0.0);
  return status;
}

SInt32 CO_IndexToPrimaries_xyY_F(SInt32 index, float* xyY) {
  std::fill_n(xyY, 9, 0.0F);
  if (IsOfDisplay(index)) {
    SimpleColorSpaceParams color = {};
    const SInt32 status = GetDisplayColor(index, &color);
    if (status == noErr) CO_ColorToNormalizedPrimaries_xyY(&color, xyY);
    return status;
  }
  const Primaries* found = Find(kPrimaries, index);
  for (int i = 0; found != nullptr && i < 3; ++i) {
    *xyY++ = static_cast<float>(found->x[i]);
    *xyY++ = static_cast<float>(found->y[i]);
    *xyY++ = found->luminance[i];
  }
  return noErr;
}

void CO_IndexToWhitePoint_xyzF(SInt32 index, float* x, float* y, float* z) {
  const WhitePoint* found = Find(kWhitePoints, index);
  WhitePoint white = found != nullptr ? *found : kD65;
  SimpleColorSpaceParams color = {};
  if (index == kNativeDisplayWhite && CM_GetMonitorNativeColor(&color) == noErr) {
    white = {index, color.whitePoint[0], color.whitePoint[1]};
  }
  *x = white.x;
  *y = white.y;
  *z = 1 - white.x - white.y;
}

void CO_IndexToWhitePoint_xyzD(SInt32 index, double* x, double* y, double* z) {
  float narrow[3];
  CO_IndexToWhitePoint_xyzF(index, &narrow[0], &narrow[1], &narrow[2]);
  *x = static_cast<double>(narrow[0]);
  *y = static_cast<double>(narrow[1]);
  *z = static_cast<double>(narrow[2]);
}

void CO_IndexToWhitePointXYZ_D(SInt32 index, double* xyz) {
  CO_IndexToWhitePoint_xyzD(index, &xyz[0], &xyz[1], &xyz[2]);
  const double y = xyz[1];
  for (int i = 0; i < 3; ++i)
    xyz[i] /= y;
}
