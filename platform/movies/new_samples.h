/// Samples that are added to a new media by reference, in run-length form.
#pragma once

#include <vector>

#include "atom.h"
#include "base_types.h"

namespace quillmere::movies {

/// Collects the samples of one media and writes them as sample tables.
class NewSamples {
 public:
  /// `count` samples of `size` bytes each that lie one behind the other at `offset`, each lasting
  /// `duration` media time units. `description` counts from 1. invalidSampleTable when the sums
  /// leave the range of the tables.
  OSStatus Add(UInt64 offset, UInt32 size, UInt32 duration, UInt32 description, UInt32 count,
               bool is_sync);
  UInt64 duration() const { return duration_; }
  UInt64 sample_count() const { return sample_count_; }
  /// Replaces the tables of `stbl` other than `stsd`. Does nothing when none were added since.
  void WriteTo(Atom* stbl);

 private:
  struct TimeRun {
    UInt32 count;
    UInt32 duration;
  };
  struct Chunk {
    UInt64 offset;
    UInt32 samples;
    UInt32 size_of_sample;
    UInt32 description;
    bool is_sync;
  };
  std::vector<UInt8> TimeToSample() const;
  std::vector<UInt8> SampleToChunk() const;
  std::vector<UInt8> SampleSizes() const;
  std::vector<UInt8> SyncSamples() const;

  std::vector<TimeRun> times_;
  std::vector<Chunk> chunks_;
  UInt64 duration_ = 0;
  UInt64 sample_count_ = 0;
  bool changed_ = true;
};

}  // namespace quillmere::movies
