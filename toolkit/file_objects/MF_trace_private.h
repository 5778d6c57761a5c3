/// What the sources of this library share: their traces in the debug log.
#pragma once

#include "ORW_Debug.h"

namespace quillmere::file_objects {

/// Messages of checks that several sources make.
inline constexpr const char kCatalogFailed[] = "FSGetCatalogInfo failed";
inline constexpr const char kSetCatalogFailed[] = "FSSetCatalogInfo failed";

/// Traces a function of this library to its end.
class Trace : debug::Trace {
 public:
  explicit Trace(const char* function, const debug::Place& place = debug::Place::Here())
      : debug::Trace(kDBG_FileObjectsTag, function, place) {}
};

/// Reports a call that failed; gives its status back.
inline SInt32 Checked(SInt32 result, const char* message,
                      const debug::Place& place = debug::Place::Here()) {
  return debug::Checked(kDBG_FileObjectsTag, result, "result == 0 ", "END", message, place);
}

}  // namespace quillmere::file_objects
