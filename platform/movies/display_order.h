/// The samples of a media in the order in which they are shown.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "sample_table.h"

struct MediaRecord;

namespace quillmere::movies {

/// Samples sorted by display time, for a media with display offsets.
struct DisplayOrder {
  std::vector<SInt64> begins;   ///< media time units, rising
  std::vector<UInt32> samples;  ///< of each, the number from 0
  SInt64 end = 0;               ///< of the last one
};

/// A sample as it is shown: until the next one begins.
struct ShownSample {
  UInt64 sample;  ///< from 0
  SInt64 begin;   ///< media time units
  SInt64 duration;
};

/// Looks for samples by display time, the same as decode time where a media has no offsets.
class DisplayView {
 public:
  /// Sorts the samples at the first use of a media.
  OSStatus Open(MediaRecord* media);
  /// When the first sample begins, and when the last one ends.
  SInt64 begin() const;
  SInt64 end() const;
  /// The sample that is shown at a time; the first one that begins at it or later; the last one
  /// that begins at it or earlier.
  std::optional<ShownSample> At(SInt64 time) const;
  std::optional<ShownSample> FirstFrom(SInt64 time) const;
  std::optional<ShownSample> LastUpTo(SInt64 time) const;
  const SampleTable& table() const { return *table_; }

 private:
  ShownSample Sorted(std::size_t index) const;
  std::optional<ShownSample> Decoded(std::optional<UInt64> sample) const;

  const SampleTable* table_ = nullptr;
  const DisplayOrder* order_ = nullptr;  ///< null without offsets
};

}  // namespace quillmere::movies
