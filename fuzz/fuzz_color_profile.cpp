// Colour profiles and their elements, from any bytes.
#include <cstddef>
#include <cstdlib>

#include "CM_basic.h"

extern "C" int LLVMFuzzerTestOneInput(const UInt8* bytes, std::size_t size) {
  const CMProfileLocation location = {cmBufferBasedProfile, nullptr, bytes,
                                      static_cast<UInt32>(size)};
  CMProfileRef profile = nullptr;
  if (CMOpenProfile(&profile, &location) != noErr) return 0;
  SimpleColorSpaceParams color = {};
  if (CM_GetProfilePcsColor(profile, &color) == noErr) CM_FreeGammaTables(color.gamma);
  CM_NativeDisplayInfo* info = nullptr;
  CM_GetProfileNativeDisplayInfo(profile, &info);
  std::free(info);
  CMCloseProfile(profile);
  return 0;
}
