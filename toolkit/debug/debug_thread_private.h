/// What the sources of this folder share.
#pragma once

#include <string>
#include <string_view>

#include "ORW_Debug.h"

namespace quillmere::debug {

/// The calling thread's data, null if it has none.
PerThreadGlobalDbgData* CurrentThread();
/// Makes `thread` the calling thread's data; null for none.
SInt32 SetCurrentThread(PerThreadGlobalDbgData* thread);

/// The longest start of `text` that has at most `limit` bytes and ends between characters.
std::string_view CutText(std::string_view text, std::size_t limit);
/// Copies text with a zero into `room` bytes, cut as above.
void CopyText(std::string_view text, char* out, std::size_t room);
/// A C string that may be null.
std::string_view TextOf(const char* text);
/// The four characters of a code; control characters become "?", others are taken as MacRoman.
std::string CodeText(OSType code);

/// Holds a region until the end of the scope.
class RegionHold {
 public:
  explicit RegionHold(MPCriticalRegionID region)
      : region_(region), status_(MPEnterCriticalRegion(region, kDurationForever)) {}
  ~RegionHold() {
    if (status_ == noErr) MPExitCriticalRegion(region_);
  }
  RegionHold(const RegionHold&) = delete;
  RegionHold& operator=(const RegionHold&) = delete;
  OSStatus status() const { return status_; }

 private:
  MPCriticalRegionID region_;
  OSStatus status_;
};

/// A code as a parameter of a queue's message.
inline void* MessageOf(OSType code) {
  return reinterpret_cast<void*>(std::uintptr_t{code});
}

}  // namespace quillmere::debug
