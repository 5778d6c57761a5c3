/// Samples copied from one media to another.
#pragma once

#include "toolbox_records.h"

namespace quillmere::movies {

/// Appends samples of a media to another one: with their data, which goes to the file that the
/// destination is edited in, or by reference, with the data references they need.
class SampleCopier {
 public:
  SampleCopier(MediaRecord* source, MediaRecord* destination)
      : source_(*source), destination_(*destination) {}
  /// `count` samples from `first` on, from 0; `time` takes the decode time of the first in the
  /// destination.
  OSStatus Copy(UInt64 first, UInt64 count, UInt64* time);

 private:
  OSStatus CopyRun(const SampleInfo& sample, UInt64 count, UInt64 bytes);
  OSStatus CopyData(const SampleInfo& sample, UInt64 bytes, UInt64* offset);
  OSStatus MapDescription(UInt32 index, UInt32* mapped);
  /// A time of the source in the destination's scale.
  SInt64 Scaled(SInt64 time) const;

  MediaRecord& source_;
  MediaRecord& destination_;
  const SampleTable* table_ = nullptr;
  UInt32 source_scale_ = 0;
  UInt32 destination_scale_ = 0;
  std::vector<UInt32> descriptions_;  ///< the destination's index of each of the source's, or 0
};

}  // namespace quillmere::movies
