/// Sample tables in their run-length form, with prefix sums for look-up.
///
/// A table is read from an `stbl` atom and never expanded to one record a sample: time runs, size runs
/// or the raw size array, chunk runs. Look-ups are binary searches. Samples and chunks are numbered
/// from 0 here; sample descriptions from 1 as in the file.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "atom.h"
#include "base_types.h"

namespace quillmere::movies {

/// Where one sample's bytes lie and when it plays.
struct SampleInfo {
  UInt64 offset;              ///< in the file of its data reference, in bytes
  UInt64 size;                ///< in bytes
  SInt64 decode_time;         ///< media time units from the media's start
  SInt64 duration;            ///< media time units
  SInt32 composition_offset;  ///< media time units
  UInt32 description;         ///< index into stsd, from 1
  UInt64 chunk;               ///< from 0
  bool is_sync;
};

/// One chunk: bytes that lie together in one file.
struct ChunkInfo {
  UInt64 offset;         ///< in the file of its data reference, in bytes
  UInt64 size;           ///< in bytes
  UInt64 first_sample;   ///< from 0
  UInt64 sample_count;
  SInt64 decode_time;    ///< of the first sample, media time units
  UInt32 description;    ///< index into stsd, from 1
};

/// What a sample description says of its media's bytes, as far as sizes depend on it.
struct DescriptionInfo {
  OSType format;
  UInt16 data_reference;     ///< index into dref, from 1
  /// For old sound whose "samples" are frames of fixed-size packets: bytes of one packet and frames in it;
  /// 0 and 0 otherwise (the size table is true then).
  UInt32 bytes_per_packet = 0;
  UInt32 frames_per_packet = 0;
};

class SampleTable {
 public:
  /// Reads the tables of an `stbl` atom. `media_type` is the handler's type ('soun' decides how sizes are
  /// counted). Every count is checked against the bytes that are there; a table that does not hold
  /// together gives a status of the movies family and leaves `table` empty.
  static OSStatus Read(const Atom& stbl, OSType media_type, SampleTable* table);

  UInt64 sample_count() const;
  UInt64 chunk_count() const;
  SInt64 duration() const;      ///< sum of all sample durations, media time units
  UInt64 data_size() const;     ///< sum of all chunk sizes, bytes
  std::span<const DescriptionInfo> descriptions() const;

  /// The sample by number; false outside the table.
  bool SampleAt(UInt64 sample, SampleInfo* info) const;
  /// The number of the sample that plays at a media decode time; nothing outside the media.
  std::optional<UInt64> SampleAtTime(SInt64 time) const;
  bool ChunkAt(UInt64 chunk, ChunkInfo* info) const;

  /// Calls `visit(const ChunkInfo&)` for every chunk in file order of the table, in time linear in the
  /// number of chunks; a false result ends the walk.
  template <class Visit>
  void ForEachChunk(Visit visit) const;

  // The owner of this header adds the private data that these need, and the template's definition.
};

}  // namespace quillmere::movies
