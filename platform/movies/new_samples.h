/// Samples that are added to a media behind those it has, in run-length form.
#pragma once

#include <vector>

#include "atom.h"
#include "base_types.h"
#include "sample_runs.h"

namespace quillmere::movies {

/// Samples that lie one behind the other and are alike.
struct NewSampleRun {
  UInt64 offset;  ///< in the file of the description's data reference, bytes
  UInt64 bytes;   ///< of all
  UInt32 size;    ///< of each, as the size table shall tell it
  UInt32 count;
  UInt32 duration;            ///< of each, media time units
  SInt32 composition_offset;  ///< media time units
  UInt32 description;         ///< index into stsd, from 1
  bool is_sync;
};

/// Collects samples of one media until they are written behind those in its sample tables.
class NewSamples {
 public:
  /// invalidSampleTable when the sums leave the range of the tables.
  OSStatus Add(const NewSampleRun& run);
  /// What Add took since the last AppendTo: samples, and their duration in media time units.
  UInt64 sample_count() const { return sample_count_; }
  UInt64 duration() const { return duration_; }
  /// Puts the samples behind the `old_count` samples of `stbl`, into all tables other than `stsd`,
  /// and forgets them.
  /// invalidSampleTable, with the tables as they were, when those don't hold together or would
  /// become too large.
  OSStatus AppendTo(Atom* stbl, UInt64 old_count);

 private:
  struct Chunk {
    UInt64 offset;
    UInt64 end;
    UInt32 samples;
    UInt32 description;
  };
  friend class TableAppender;

  std::vector<Run> durations_;
  std::vector<Run> compositions_;  ///< values are signed
  std::vector<Run> sizes_;
  std::vector<Run> syncs_;  ///< 1 and 0
  std::vector<Chunk> chunks_;
  UInt64 duration_ = 0;
  UInt64 sample_count_ = 0;
};

}  // namespace quillmere::movies
