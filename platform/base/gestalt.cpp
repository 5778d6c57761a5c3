#include "gestalt.h"

#include <sys/utsname.h>

#include <cstdlib>

namespace {

constexpr SInt32 kMovieToolboxVersion = 0x07600000;
constexpr SInt32 kMovieToolboxFeatures = 1;

/// A number of the system's release, from 0; 0 where it has fewer.
SInt32 ReleaseNumber(int index) {
  utsname names{};
  if (uname(&names) != 0) return 0;
  const char* text = names.release;
  long number = 0;
  for (int i = 0; i <= index; ++i) {
    char* end = nullptr;
    number = std::strtol(text, &end, 10);
    if (end == text) return 0;
    text = *end == '.' ? end + 1 : end;
  }
  return static_cast<SInt32>(number);
}

}  // namespace

OSErr Gestalt(OSType selector, SInt32* response) {
  if (response == nullptr) return paramErr;
  switch (selector) {
    case "sys1"_4cc:
    case "sys2"_4cc:
    case "sys3"_4cc:
      *response = ReleaseNumber(static_cast<int>(selector - "sys1"_4cc));
      return noErr;
    case "qtim"_4cc:
      *response = kMovieToolboxVersion;
      return noErr;
    case "qtrs"_4cc:
      *response = kMovieToolboxFeatures;
      return noErr;
    default:
      return gestaltUndefSelectorErr;
  }
}
