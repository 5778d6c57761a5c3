#include "CM_basic.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

#include "ORW_blas.h"
#include "big_endian.h"
#include "fixed_point.h"

namespace {

using quillmere::ReadU16;
using quillmere::ReadU32;
using quillmere::WriteU32;

constexpr std::size_t kElementHeader = 8;
constexpr std::size_t kXYZSize = 20;
constexpr std::size_t kCurveStart = 12;
constexpr OSType kToneCurves[] = {"rTRC"_4cc, "gTRC"_4cc, "bTRC"_4cc};
constexpr OSType kParametricCurves[] = {"aarg"_4cc, "aagg"_4cc, "aabg"_4cc};
constexpr OSType kColorants[] = {"rXYZ"_4cc, "gXYZ"_4cc, "bXYZ"_4cc};
constexpr OSType kNativeDisplay = "ndin"_4cc;
constexpr float kDefaultGamma = 1.8F;

struct CloseProfile {
  void operator()(CMProfileRef profile) const { CMCloseProfile(profile); }
};
using Profile = std::unique_ptr<ColorProfile, CloseProfile>;

SInt32 OpenMain(Profile* profile) {
  CMProfileRef opened = nullptr;
  const SInt32 status = CM_GetMainProfile(&opened);
  profile->reset(opened);
  return status;
}

SInt32 SizeOf(CMProfileRef profile, OSType tag, UInt32* size) {
  *size = 0;
  return CMGetProfileElement(profile, tag, size, nullptr);
}

/// Reads an element of at least `least` bytes into a buffer of `*size`, which takes how many.
SInt32 ReadElement(CMProfileRef profile, OSType tag, std::size_t least, UInt32* size,
                   void* buffer) {
  const SInt32 status = CMGetProfileElement(profile, tag, size, buffer);
  if (status != noErr) return status;
  return *size < least ? SInt32{cmProfileError} : SInt32{noErr};
}

float FixedAt(const UInt8* bytes) {
  return static_cast<float>(Fix2X(static_cast<Fixed>(ReadU32(bytes))));
}

/// The words of a channel that a parametric curve fills, g first.
void StoreParameters(UInt32 type, const float* values, GammaData* gamma) {
  gamma->paraType = type;
  gamma->paraGamma = values[0];
  gamma->paraA = values[1];
  gamma->paraB = values[2];
  gamma->paraC = values[3];
  gamma->paraD = values[4];
  gamma->paraE = values[5];
  gamma->paraF = values[6];
}

SInt32 ReadToneCurves(CMProfileRef profile, GammaData* gamma) {
  for (int i = 0; i < 3; ++i) {
    UInt32 size = 0;
    SInt32 status = SizeOf(profile, kToneCurves[i], &size);
    std::vector<UInt8> buffer(size);
    if (status == noErr) {
      status =
          CM_GetProfilePcsGammaTrcComponent(profile, size, kToneCurves[i], buffer.data(),
                                            &gamma[i].gamma, &gamma[i].tableCount, &gamma[i].table);
    }
    if (status != noErr) return status;
  }
  return noErr;
}

SInt32 ReadParametricCurves(CMProfileRef profile, GammaData* gamma) {
  for (int i = 0; i < 3; ++i) {
    UInt32 size = 0;
    UInt32 type = 0;
    float values[7] = {};
    SInt32 status = SizeOf(profile, kParametricCurves[i], &size);
    std::vector<UInt8> buffer(size);
    if (status == noErr) {
      status = CM_GetProfileGammaParaComponent(profile, size, kParametricCurves[i], buffer.data(),
                                               &type, values);
    }
    if (status != noErr) return status;
    StoreParameters(type, values, &gamma[i]);
  }
  return noErr;
}

/// A chromaticity of the native display as a column of the primaries.
void StoreColumn(const UInt32* word, int column, float* primaries) {
  const auto fixed = [](const UInt32* big) {
    return static_cast<Fixed>(ReadU32(reinterpret_cast<const UInt8*>(big)));
  };
  const CMFixedXYColor color = {fixed(&word[0]), fixed(&word[1])};
  float xyz[3];
  CO_CMFixedXYColorToXYZ_F(&color, xyz);
  for (int row = 0; row < 3; ++row)
    primaries[row * 3 + column] = xyz[row];
}

void StoreFixed(Fixed value, UInt32* big) {
  WriteU32(reinterpret_cast<UInt8*>(big), static_cast<UInt32>(value));
}

}  // namespace

SInt32 CM_GetMainProfile(CMProfileRef* profile) {
  return CMGetProfileByAVID(CGMainDisplayID(), profile);
}

SInt32 CM_OpenProfileByPath(CMProfileRef* profile, const char* path) {
  const CMProfileLocation location = {cmPathBasedProfile, path, nullptr, 0};
  return CMOpenProfile(profile, &location);
}

SInt32 CM_GetProfilePcsGammaTrcTagSize(CMProfileRef profile, UInt32* size) {
  return SizeOf(profile, kToneCurves[0], size);
}

SInt32 CM_GetProfileGammaParaTagSize(CMProfileRef profile, UInt32* size) {
  return SizeOf(profile, kParametricCurves[0], size);
}

SInt32 CM_GetProfilePcsGammaTrcComponent(CMProfileRef profile, UInt32 size, OSType tag,
                                         void* buffer, float* gamma, UInt32* count, float** table) {
  *gamma = 1;
  *count = 0;
  *table = nullptr;
  const SInt32 status = ReadElement(profile, tag, kCurveStart, &size, buffer);
  if (status != noErr) return status;
  const auto* bytes = static_cast<const UInt8*>(buffer);
  const UInt32 entries = ReadU32(bytes + kElementHeader);
  if (entries > (size - kCurveStart) / sizeof(UInt16)) return cmProfileError;
  if (entries == 0) return noErr;
  const UInt8* const first = bytes + kCurveStart;
  if (entries == 1) {
    *gamma = static_cast<float>(ReadU16(first)) / 256;
    return noErr;
  }
  *table = static_cast<float*>(std::malloc(entries * sizeof(float)));
  if (*table == nullptr) return memFullErr;
  *gamma = 0;
  *count = entries;
  for (UInt32 i = 0; i < entries; ++i)
    (*table)[i] = static_cast<float>(ReadU16(first + std::size_t{i} * sizeof(UInt16))) / 65535;
  return noErr;
}

SInt32 CM_GetProfileGammaParaComponent(CMProfileRef profile, UInt32 size, OSType tag, void* buffer,
                                       UInt32* type, float* parameters) {
  // How many of g, a, b, c, d, e, f each type has; one that is not known has as many as type 3.
  constexpr std::size_t kCounts[] = {1, 3, 4, 5, 7};
  constexpr std::size_t kUnknown = 3;
  *type = ~UInt32{0};
  std::fill_n(parameters, 7, 0.0F);
  const SInt32 status = ReadElement(profile, tag, kCurveStart + sizeof(Fixed), &size, buffer);
  if (status != noErr) return status;
  const auto* bytes = static_cast<const UInt8*>(buffer);
  const UInt16 read = ReadU16(bytes + kElementHeader);
  const std::size_t count = kCounts[read < std::size(kCounts) ? read : kUnknown];
  if (size < kCurveStart + count * sizeof(Fixed)) return cmProfileError;
  *type = read;
  for (std::size_t i = 0; i < count; ++i)
    parameters[i] = FixedAt(bytes + kCurveStart + i * sizeof(Fixed));
  return noErr;
}

SInt32 CM_GetProfilePcsGamma(CMProfileRef profile, GammaData* gamma) {
  std::fill_n(gamma, 3, GammaData{});
  UInt32 size = 0;
  SInt32 status = CM_GetProfilePcsGammaTrcTagSize(profile, &size);
  if (status == noErr)
    status = ReadToneCurves(profile, gamma);
  else if (status == cmElementTagNotFound)
    status = noErr;
  if (status == noErr) {
    status = CM_GetProfileGammaParaTagSize(profile, &size);
    if (status == cmElementTagNotFound) return noErr;
    if (status == noErr) status = ReadParametricCurves(profile, gamma);
  }
  if (status != noErr) CM_FreeGammaTables(gamma);
  return status;
}

void CM_FreeGammaTables(GammaData* gamma) {
  for (int i = 0; i < 3; ++i) {
    std::free(gamma[i].table);
    gamma[i].table = nullptr;
    gamma[i].tableCount = 0;
  }
}

SInt32 CM_GetProfilePcsMatrixColumn(CMProfileRef profile, OSType tag, UInt32 size, void* buffer,
                                    float* xyz) {
  const SInt32 status = ReadElement(profile, tag, kXYZSize, &size, buffer);
  if (status != noErr) return status;
  for (std::size_t i = 0; i < 3; ++i)
    xyz[i] = FixedAt(static_cast<const UInt8*>(buffer) + kElementHeader + i * sizeof(Fixed));
  return noErr;
}

SInt32 CM_GetProfilePcsMatrix(CMProfileRef profile, float* matrix) {
  for (int column = 0; column < 3; ++column) {
    UInt8 buffer[kXYZSize];
    float xyz[3];
    const SInt32 status =
        CM_GetProfilePcsMatrixColumn(profile, kColorants[column], sizeof buffer, buffer, xyz);
    if (status != noErr) return status;
    for (int row = 0; row < 3; ++row)
      matrix[row * 3 + column] = xyz[row];
  }
  return noErr;
}

SInt32 CM_GetProfilePcsWhitePt(CMProfileRef profile, float* x, float* y) {
  float m[9];
  const SInt32 status = CM_GetProfilePcsMatrix(profile, m);
  if (status != noErr) return status;
  float luminance = 0;
  CO_XYZto_xyY_F(m[0] + m[1] + m[2], m[3] + m[4] + m[5], m[6] + m[7] + m[8], x, y, &luminance);
  return noErr;
}

SInt32 CM_GetProfilePcsColor(CMProfileRef profile, SimpleColorSpaceParams* color) {
  SInt32 status = CM_GetProfilePcsGamma(profile, color->gamma);
  if (status != noErr) return status;
  status = CM_GetProfilePcsMatrix(profile, color->primaries);
  if (status == noErr) {
    status = CM_GetProfilePcsWhitePt(profile, &color->whitePoint[0], &color->whitePoint[1]);
  }
  if (status != noErr) CM_FreeGammaTables(color->gamma);
  return status;
}

SInt32 CM_GetMonitorPCS(SimpleColorSpaceParams* color) {
  Profile profile;
  const SInt32 status = OpenMain(&profile);
  return status == noErr ? CM_GetProfilePcsColor(profile.get(), color) : status;
}

SInt32 CM_GetProfileNativeDisplayInfo(CMProfileRef profile, CM_NativeDisplayInfo** info) {
  *info = nullptr;
  UInt8 element[kElementHeader + sizeof(CM_NativeDisplayInfo)];
  UInt32 size = sizeof element;
  const SInt32 status = ReadElement(profile, kNativeDisplay, sizeof element, &size, element);
  if (status != noErr) return status;
  *info = static_cast<CM_NativeDisplayInfo*>(std::malloc(sizeof **info));
  if (*info == nullptr) return memFullErr;
  std::memcpy(*info, element + kElementHeader, sizeof **info);
  return noErr;
}

void CM_NativeDisplayInfoToColor(const CM_NativeDisplayInfo* info, SimpleColorSpaceParams* color) {
  *color = {};
  for (int i = 0; i < 3; ++i)
    color->gamma[i].gamma = FixedAt(reinterpret_cast<const UInt8*>(&info->gamma[i]));
  StoreColumn(info->red, 0, color->primaries);
  StoreColumn(info->green, 1, color->primaries);
  StoreColumn(info->blue, 2, color->primaries);
  for (int i = 0; i < 2; ++i)
    color->whitePoint[i] = FixedAt(reinterpret_cast<const UInt8*>(&info->white[i]));
}

void CM_ColorToNativeDisplayInfo(const SimpleColorSpaceParams* color, CM_NativeDisplayInfo* info) {
  *info = {};
  UInt32* const chromaticities[] = {info->red, info->green, info->blue};
  for (int i = 0; i < 3; ++i) {
    StoreFixed(X2Fix(static_cast<double>(color->gamma[i].gamma)), &info->gamma[i]);
    const float xyz[] = {color->primaries[i], color->primaries[3 + i], color->primaries[6 + i]};
    CMFixedXYColor fixed = {};
    CO_XYZ_FToCMFixedXYColor(xyz, &fixed);
    StoreFixed(fixed.x, &chromaticities[i][0]);
    StoreFixed(fixed.y, &chromaticities[i][1]);
  }
  for (int i = 0; i < 2; ++i)
    StoreFixed(X2Fix(static_cast<double>(color->whitePoint[i])), &info->white[i]);
}

SInt32 CM_GetMonitorNativeColor(SimpleColorSpaceParams* color) {
  Profile profile;
  CM_NativeDisplayInfo* info = nullptr;
  SInt32 status = OpenMain(&profile);
  if (status == noErr) status = CM_GetProfileNativeDisplayInfo(profile.get(), &info);
  if (info == nullptr) {
    color->gamma[0].gamma = 0;
    return status;
  }
  CM_NativeDisplayInfoToColor(info, color);
  std::free(info);
  return noErr;
}

SInt32 CM_GetDefaultMonitorNativeColor(SimpleColorSpaceParams* color) {
  Profile profile;
  float pcs[9];
  SInt32 status = OpenMain(&profile);
  if (status == noErr) status = CM_GetProfilePcsMatrix(profile.get(), pcs);
  if (status != noErr) return status;
  double from[3];
  double to[3];
  double adaptation[9];
  CO_IndexToWhitePointXYZ_D(kCO_WhiteD50, from);
  CO_IndexToWhitePointXYZ_D(kCO_WhiteD65, to);
  status = CO_GetChromaticAdaptationMatrix(from, to, kCO_ConesBradford, adaptation);
  if (status != noErr) return status;
  double transposed[9];
  double wide[9];
  double adapted[9];
  CB_TransposeMatrixD(3, 3, adaptation, transposed);
  CB_VectorFtoD(9, pcs, wide);
  CB_MatrixMultiplyD(3, 3, 3, transposed, wide, adapted);
  *color = {};
  for (GammaData& gamma : color->gamma)
    gamma.gamma = 2.2F;
  color->whitePoint[0] = 0.31271F;
  color->whitePoint[1] = 0.32902F;
  CB_MatrixDtoF(3, 3, adapted, color->primaries);
  return noErr;
}

SInt32 CM_GetMonitorPrimariesAsXYZ(double* matrix) {
  SimpleColorSpaceParams color = {};
  SInt32 status = CM_GetMonitorNativeColor(&color);
  if (status == cmElementTagNotFound) status = CM_GetDefaultMonitorNativeColor(&color);
  if (status == noErr) CB_VectorFtoD(9, color.primaries, matrix);
  return status;
}

SInt32 CM_GetSystemGamma(float* gamma) {
  *gamma = kDefaultGamma;
  Profile profile;
  UInt32 size = 0;
  SInt32 status = OpenMain(&profile);
  if (status == noErr) status = CM_GetProfilePcsGammaTrcTagSize(profile.get(), &size);
  if (status != noErr) return status;
  std::vector<UInt8> buffer(size);
  UInt32 count = 0;
  float* table = nullptr;
  status = CM_GetProfilePcsGammaTrcComponent(profile.get(), size, kToneCurves[0], buffer.data(),
                                             gamma, &count, &table);
  std::free(table);
  if (status != noErr) *gamma = kDefaultGamma;
  return status;
}
