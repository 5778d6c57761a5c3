/// Values of samples in run-length form.
#pragma once

#include <vector>

#include "base_types.h"

namespace quillmere::movies {

/// So many samples in a row with one value.
struct Run {
  UInt32 count;
  UInt32 value;
};

/// Appends samples; all together stay below 2^32.
inline void AppendRun(std::vector<Run>* runs, UInt32 count, UInt32 value) {
  if (count == 0) return;
  if (!runs->empty() && runs->back().value == value) {
    runs->back().count += count;
  } else {
    runs->push_back({count, value});
  }
}

}  // namespace quillmere::movies
