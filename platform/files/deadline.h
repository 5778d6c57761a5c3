/// The end of the time that a search may take.
#pragma once

#include <chrono>

#include "base_types.h"

namespace quillmere::files {

/// Tells when a time in milliseconds is over, 0 never being.
class Deadline {
 public:
  explicit Deadline(SInt32 milliseconds)
      : is_set_(milliseconds > 0), end_(Clock::now() + std::chrono::milliseconds(milliseconds)) {}
  /// To be called for each object; looks at the clock at each 64th call.
  bool IsOver() { return is_set_ && ++calls_ % kObjectsPerLook == 0 && Clock::now() >= end_; }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr int kObjectsPerLook = 64;
  bool is_set_;
  Clock::time_point end_;
  int calls_ = 0;
};

}  // namespace quillmere::files
