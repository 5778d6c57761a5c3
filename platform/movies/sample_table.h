/// Sample tables in their run-length form, with prefix sums for look-up.
///
/// A table is read from an `stbl` atom and never expanded to one record a sample: time runs, size
/// runs or the raw size array, chunk runs. Look-ups are binary searches. Samples and chunks are
/// numbered from 0 here; sample descriptions from 1 as in the file.
#pragma once

#include <functional>
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
  UInt64 offset;        ///< in the file of its data reference, in bytes
  UInt64 size;          ///< in bytes
  UInt64 first_sample;  ///< from 0
  UInt64 sample_count;
  SInt64 decode_time;  ///< of the first sample, media time units
  UInt32 description;  ///< index into stsd, from 1
};

/// What a sample description says of its media's bytes, as far as sizes depend on it.
struct DescriptionInfo {
  OSType format;
  UInt16 data_reference;  ///< index into dref, from 1
  /// For old sound whose "samples" are frames of fixed-size packets: bytes of one packet and frames
  /// in it; 0 and 0 otherwise (the size table is true then).
  UInt32 bytes_per_packet = 0;
  UInt32 frames_per_packet = 0;
};

/// A place in a sample table's time runs: the first sample of a run and its decode time.
struct TimeMark {
  UInt64 sample;
  SInt64 time;
};

class SampleTable {
 public:
  /// Reads the tables of an `stbl` atom. `media_type` is the handler's type ('soun' decides how
  /// sizes are counted). Every count is checked against the bytes that are there; a table that does
  /// not hold together gives a status of the movies family and leaves `table` empty. The table does
  /// not depend on the atom's life.
  static OSStatus Read(const Atom& stbl, OSType media_type, SampleTable* table);

  UInt64 sample_count() const { return sample_count_; }
  UInt64 chunk_count() const { return chunk_count_; }
  SInt64 duration() const { return duration_; }  ///< sum of all sample durations, media time units
  UInt64 data_size() const { return data_size_; }  ///< sum of all chunk sizes, bytes
  bool has_composition_offsets() const { return compositions_.count != 0; }
  std::span<const DescriptionInfo> descriptions() const { return descriptions_; }

  /// The sample by number; false outside the table.
  bool SampleAt(UInt64 sample, SampleInfo* info) const;
  /// The number of the sample that plays at a media decode time; nothing outside the media.
  std::optional<UInt64> SampleAtTime(SInt64 time) const;
  /// Begin and duration of a sample in media time; false if there is none of that number.
  bool TimeOfSample(UInt64 sample, SInt64* begin, SInt64* duration) const;
  bool ChunkAt(UInt64 chunk, ChunkInfo* info) const;
  /// The last sample, up to this one, that needs no other; 0 if there is none.
  UInt64 SyncSampleUpTo(UInt64 sample) const;
  /// The bytes of `count` samples from `first` on, which have to be there; packets that only part
  /// of them are in count whole.
  UInt64 SizeOfSamples(UInt64 first, UInt64 count) const;

  /// Calls `visit(const ChunkInfo&)` for every chunk in file order of the table, in time linear in
  /// the number of chunks (and a pass over the size table where sizes differ); a false result ends
  /// the walk.
  template <class Visit>
  void ForEachChunk(Visit visit) const;
  /// The same walk, a step at a time; the table has to outlive it.
  class ChunkWalk;
  /// A walk over runs of like samples.
  class RunWalk;

 private:
  friend class SampleTableReader;

  /// So many entries of stts and ctts have one mark.
  static constexpr UInt64 kEntriesPerMark = 32;

  /// A table of equal big-endian records as it stands in the file.
  struct RawTable {
    SharedBytes source;
    const UInt8* entries = nullptr;
    UInt64 count = 0;
  };
  /// Chunks with one number of samples and one description.
  struct ChunkRun {
    UInt64 first_chunk;
    UInt64 first_sample;
    UInt32 samples_per_chunk;
    UInt32 description;
  };
  /// How a run-length table (`stts`, `ctts`) stands at a sample.
  struct RunPosition {
    UInt64 entry = 0;
    UInt64 first_sample = 0;
    SInt64 first_time = 0;
  };

  UInt64 OffsetOfChunk(UInt64 chunk) const;
  const ChunkRun& RunOfChunk(UInt64 chunk) const;
  /// The chunk as its run tells, without its times and size.
  void PlaceChunk(const ChunkRun& run, UInt64 chunk, ChunkInfo* info) const;
  const DescriptionInfo& DescriptionOf(UInt32 index) const { return descriptions_[index - 1]; }
  UInt64 SizeOf(UInt64 sample) const;
  UInt64 SumOfSizes(UInt64 first, UInt64 count) const;
  UInt64 SizeBefore(UInt64 sample) const;
  UInt64 SizeBetween(UInt64 first, UInt64 end) const;
  UInt64 ChunkSize(const ChunkInfo& chunk) const;
  UInt64 SizeInChunk(const ChunkInfo& chunk, UInt64 first, UInt64 count) const;
  SInt64 DurationOfEntry(UInt64 entry) const;
  UInt64 CountOfEntry(UInt64 entry) const;
  void AdvanceTo(UInt64 sample, RunPosition* position) const;
  SInt64 TimeAt(const RunPosition& position, UInt64 sample) const;
  RunPosition TimeRunOf(UInt64 sample) const;
  SInt32 CompositionOffsetOf(UInt64 sample) const;
  /// The first entry of stss that isn't below a sample's number, from 1.
  UInt64 FirstSyncEntry(UInt64 number) const;
  bool IsSync(UInt64 sample) const;

  UInt64 sample_count_ = 0;
  UInt64 chunk_count_ = 0;
  SInt64 duration_ = 0;
  UInt64 data_size_ = 0;
  std::vector<DescriptionInfo> descriptions_;

  RawTable times_;         ///< stts: count, duration
  RawTable compositions_;  ///< ctts: count, offset
  RawTable sizes_;         ///< stsz or stz2; count is the number of samples
  RawTable offsets_;       ///< stco or co64
  RawTable syncs_;         ///< stss; no entries pointer when all samples are sync
  UInt32 constant_size_ = 0;
  UInt32 size_bits_ = 32;  ///< width of a size entry: 4, 8, 16 or 32
  UInt32 offset_bytes_ = 4;
  std::vector<ChunkRun> chunk_runs_;
  /// Every so many entries of stts and ctts: where they stand. Small, and enough for quick look-up.
  std::vector<TimeMark> time_marks_;
  std::vector<UInt64> composition_marks_;
  /// Sizes before every so many samples; made at the first look-up that needs it.
  mutable std::vector<UInt64> size_marks_;
};

class SampleTable::ChunkWalk {
 public:
  explicit ChunkWalk(const SampleTable& table) : table_(&table) {}
  /// The next chunk; false behind the last one.
  bool Next(ChunkInfo* chunk);

 private:
  const SampleTable* table_;
  UInt64 chunk_ = 0;
  std::size_t run_ = 0;
  RunPosition time_;
};

/// Runs of samples that are alike in size, duration, composition offset and kind and whose bytes
/// follow each other in one chunk. A step takes a few nanoseconds; the table has to outlive the
/// walk.
class SampleTable::RunWalk {
 public:
  /// Starts at a sample, from 0.
  RunWalk(const SampleTable& table, UInt64 sample);
  /// The next run: its first sample, how many, and the bytes of all; false behind the last one.
  bool Next(SampleInfo* first, UInt64* count, UInt64* size);
  /// The description of the next run, from 1; 0 if there is none.
  UInt32 NextDescription() {
    return sample_ < chunk_end_ || EnterNextChunk() ? chunk_.description : 0;
  }
  /// The sample and the decode time at which the next run begins.
  UInt64 sample() const { return sample_; }
  SInt64 decode_time() const { return decode_time_; }

 private:
  void EnterChunk();
  /// Goes to the chunk that holds the sample; false behind the last one.
  bool EnterNextChunk();
  void EnterTimes();
  void EnterCompositions();
  UInt64 EndOfSyncRun(UInt64 end, bool* is_sync);
  UInt64 EndOfSizeRun(UInt64 end) const;

  const SampleTable* table_;
  UInt64 sample_;
  SInt64 decode_time_ = 0;
  UInt64 chunk_number_ = 0;
  std::size_t chunk_run_ = 0;
  ChunkInfo chunk_ = {};
  UInt64 chunk_end_ = 0;  ///< the sample behind the chunk, and so on
  UInt64 offset_ = 0;     ///< of the sample in its file, bytes
  RunPosition times_;
  UInt64 times_end_ = 0;
  SInt64 duration_ = 0;
  UInt64 composition_entry_ = 0;
  UInt64 compositions_end_ = 0;
  SInt32 composition_offset_ = 0;
  UInt64 sync_entry_ = 0;
};

template <class Visit>
void SampleTable::ForEachChunk(Visit visit) const {
  ChunkWalk walk(*this);
  ChunkInfo chunk = {};
  while (walk.Next(&chunk) && visit(static_cast<const ChunkInfo&>(chunk))) {
  }
}

/// Checks that every chunk lies within a file of `file_size` bytes. Only chunks whose description
/// names the data reference of that index count; 0 means all. eofErr when one does not.
OSStatus CheckChunkBounds(const SampleTable& table, UInt16 data_reference, UInt64 file_size);

/// Replaces the chunk offsets of an `stbl`, one for each chunk in order. The table becomes a `co64`
/// when an offset needs it or `force_wide` asks for it, else a `stco`, at the place of the old one
/// among its siblings. paramErr unless there are as many offsets as chunks.
OSStatus ReplaceChunkOffsets(Atom* stbl, std::span<const UInt64> offsets, bool force_wide = false);
/// The same for `count` chunks whose offsets `offset_of(chunk)` gives, from chunk 0; it may be
/// asked twice for each.
OSStatus ReplaceChunkOffsets(Atom* stbl, UInt64 count,
                             const std::function<UInt64(UInt64)>& offset_of, bool force_wide);
/// Adds `distance` to all chunk offsets of an `stbl`; invalidSampleTable when one does not fit the
/// table's width.
OSStatus ShiftChunkOffsets(Atom* stbl, UInt64 distance);

/// One entry of a size table whose entries have 4, 8, 16 (`stz2`) or 32 bits.
UInt32 SizeTableEntry(const UInt8* entries, UInt32 bits, UInt64 index);

/// What a sound description says of packets: bytes and frames of one packet; 0 and 0 if its packets
/// vary or it does not say. `entry` is an `stsd` child of a sound media.
DescriptionInfo ReadSoundPackets(const Atom& entry);

}  // namespace quillmere::movies
