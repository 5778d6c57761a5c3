#include "color_spaces.h"

#include <lcms2.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

#include "images_private.h"

namespace {

struct CloseProfile {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
struct FreeCurve {
  void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};

/// Chromaticities of red, green and blue.
struct VideoPrimaries {
  UInt16 index;
  cmsCIExyYTRIPLE colors;
};
constexpr VideoPrimaries kPrimaries[] = {
    {1, {{0.64, 0.33, 1}, {0.3, 0.6, 1}, {0.15, 0.06, 1}}},       // ITU-R BT.709
    {5, {{0.64, 0.33, 1}, {0.29, 0.6, 1}, {0.15, 0.06, 1}}},      // EBU Tech. 3213
    {6, {{0.63, 0.34, 1}, {0.31, 0.595, 1}, {0.155, 0.07, 1}}}};  // SMPTE C
constexpr cmsCIExyY kD65 = {0.3127, 0.329, 1};

/// A power with an offset, straight below a break of the coded value.
struct VideoCurve {
  UInt16 index;
  double offset;
  double slope;
  double coded_break;
};
constexpr VideoCurve kCurves[] = {{1, 0.099, 4.5, 0.081}, {7, 0.1115, 4, 0.0912}};

template <class Entry, std::size_t count>
const Entry* Find(const Entry (&table)[count], UInt16 index) {
  const auto* found = std::ranges::find(table, index, &Entry::index);
  return found != std::end(table) ? found : nullptr;
}

CFDataRef BytesOf(cmsHPROFILE profile) {
  cmsUInt32Number size = 0;
  if (!cmsSaveProfileToMem(profile, nullptr, &size)) return nullptr;
  std::vector<UInt8> bytes(size);
  if (!cmsSaveProfileToMem(profile, bytes.data(), &size)) return nullptr;
  return CFDataCreate(kCFAllocatorDefault, bytes.data(), size);
}

}  // namespace

CGColorSpaceRef CGColorSpaceCreateWithICCProfile(CFDataRef profile) {
  if (profile == nullptr) return nullptr;
  const Profile opened(cmsOpenProfileFromMem(
      CFDataGetBytePtr(profile), static_cast<cmsUInt32Number>(CFDataGetLength(profile))));
  if (!opened || cmsGetColorSpace(opened.get()) != cmsSigRgbData) return nullptr;
  auto space = std::make_unique<CGColorSpace>();
  space->profile.reset(
      CFDataCreate(kCFAllocatorDefault, CFDataGetBytePtr(profile), CFDataGetLength(profile)));
  return space.release();
}

CFDataRef CGColorSpaceCopyICCProfile(CGColorSpaceRef space) {
  const CFDataRef profile = space != nullptr ? space->profile.get() : nullptr;
  if (profile == nullptr) return nullptr;
  return CFDataCreate(kCFAllocatorDefault, CFDataGetBytePtr(profile), CFDataGetLength(profile));
}

namespace quillmere::imaging {

CGColorSpaceRef CreateVideoColorSpace(UInt16 primaries, UInt16 transfer_function) {
  constexpr cmsInt32Number kPowerWithStraightPiece = 4;
  const VideoPrimaries* const colors = Find(kPrimaries, primaries);
  const VideoCurve* const shape = Find(kCurves, transfer_function);
  if (colors == nullptr || shape == nullptr) return nullptr;
  const double scale = 1 / (1 + shape->offset);
  const cmsFloat64Number parameters[] = {1 / 0.45, scale, shape->offset * scale, 1 / shape->slope,
                                         shape->coded_break};
  const std::unique_ptr<cmsToneCurve, FreeCurve> curve(
      cmsBuildParametricToneCurve(nullptr, kPowerWithStraightPiece, parameters));
  if (!curve) return nullptr;
  cmsToneCurve* const curves[] = {curve.get(), curve.get(), curve.get()};
  const Profile profile(cmsCreateRGBProfile(&kD65, &colors->colors, curves));
  if (!profile) return nullptr;
  const Owned<CFDataRef> bytes(BytesOf(profile.get()));
  return CGColorSpaceCreateWithICCProfile(bytes.get());
}

}  // namespace quillmere::imaging
