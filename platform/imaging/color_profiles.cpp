#include "color_profiles.h"

#include <lcms2.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "whole_files.h"

struct ColorProfile {
  cmsHPROFILE handle;
};

namespace {

constexpr UInt32 kMainDisplay = 1;
constexpr std::size_t kMostBytes = std::size_t{64} << 20;

struct CloseHandle {
  void operator()(void* handle) const { cmsCloseProfile(handle); }
};
using Handle = std::unique_ptr<void, CloseHandle>;

/// Opens a profile in memory, which lcms2 copies.
OSStatus OpenBytes(const void* bytes, std::size_t size, CMProfileRef* profile) {
  Handle handle(cmsOpenProfileFromMem(bytes, static_cast<cmsUInt32Number>(size)));
  if (!handle) return cmProfileError;
  *profile = new ColorProfile{handle.release()};
  return noErr;
}

/// The bytes of a profile as lcms2 writes it.
std::vector<UInt8> Serialized(cmsHPROFILE profile) {
  cmsUInt32Number size = 0;
  if (profile == nullptr || !cmsSaveProfileToMem(profile, nullptr, &size)) return {};
  std::vector<UInt8> bytes(size);
  return cmsSaveProfileToMem(profile, bytes.data(), &size) ? bytes : std::vector<UInt8>();
}

/// A display of sRGB's primaries with a gamma of 2.2. It is read back from its bytes, since raw
/// elements are only to be had from what was written.
std::vector<UInt8> MakeDisplayProfile() {
  const cmsCIExyY white = {0.3127, 0.3290, 1};
  const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
  cmsToneCurve* const curve = cmsBuildGamma(nullptr, 2.2);
  cmsToneCurve* const curves[] = {curve, curve, curve};
  const Handle handle(cmsCreateRGBProfile(&white, &primaries, curves));
  cmsFreeToneCurve(curve);
  // Version 2 has its curves as "curv", which all readers know.
  if (handle) cmsSetProfileVersion(handle.get(), 2.1);
  return Serialized(handle.get());
}

OSStatus OpenFile(const char* path, CMProfileRef* profile) {
  std::vector<UInt8> bytes;
  const OSStatus status = quillmere::ReadWholeFile(path, kMostBytes, &bytes);
  return status ? status : OpenBytes(bytes.data(), bytes.size(), profile);
}

}  // namespace

UInt32 CGMainDisplayID() {
  return kMainDisplay;
}

OSStatus CMOpenProfile(CMProfileRef* profile, const CMProfileLocation* location) {
  if (profile == nullptr) return paramErr;
  *profile = nullptr;
  if (location == nullptr) return paramErr;
  if (location->locType == cmPathBasedProfile && location->path != nullptr) {
    return OpenFile(location->path, profile);
  }
  if (location->locType == cmBufferBasedProfile && location->buffer != nullptr) {
    return OpenBytes(location->buffer, location->size, profile);
  }
  return paramErr;
}

OSStatus CMGetProfileByAVID(UInt32 display, CMProfileRef* profile) {
  if (profile == nullptr) return paramErr;
  *profile = nullptr;
  if (display != kMainDisplay) return cmProfileError;
  static const auto* bytes = new std::vector<UInt8>(MakeDisplayProfile());
  return OpenBytes(bytes->data(), bytes->size(), profile);
}

OSStatus CMCloseProfile(CMProfileRef profile) {
  if (profile == nullptr) return noErr;
  cmsCloseProfile(profile->handle);
  delete profile;
  return noErr;
}

OSStatus CMGetProfileElement(CMProfileRef profile, OSType tag, UInt32* size, void* data) {
  if (profile == nullptr || size == nullptr) return paramErr;
  const auto signature = static_cast<cmsTagSignature>(tag);
  const UInt32 whole = cmsReadRawTag(profile->handle, signature, nullptr, 0);
  if (whole == 0) return cmElementTagNotFound;
  if (data != nullptr)
    *size = cmsReadRawTag(profile->handle, signature, data, *size);
  else
    *size = whole;
  return data != nullptr && *size == 0 ? cmProfileError : OSStatus{noErr};
}
