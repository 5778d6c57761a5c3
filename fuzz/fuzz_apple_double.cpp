// Sidecars: what can be read and written again reads as the same.
#include <cstdlib>

#include "apple_double.h"
#include "finder_information.h"

extern "C" int LLVMFuzzerTestOneInput(const UInt8* data, std::size_t size) {
  using quillmere::files::AppleDouble;
  quillmere::files::FinderInformation information;
  quillmere::files::FinderInformationInSidecar({data, size}, &information);
  AppleDouble sidecar;
  quillmere::files::ForkBytes written;
  if (!quillmere::files::ParseAppleDouble({data, size}, &sidecar) ||
      !quillmere::files::BuildAppleDouble(sidecar, &written)) {
    return 0;
  }
  AppleDouble again;
  if (!quillmere::files::ParseAppleDouble(written, &again)) std::abort();
  quillmere::files::ForkBytes rewritten;
  if (!quillmere::files::BuildAppleDouble(again, &rewritten) || rewritten != written) std::abort();
  return 0;
}
