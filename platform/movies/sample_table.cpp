#include "sample_table.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "big_endian.h"
#include "file_references.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

namespace {

/// Distances between the marks: look-ups scan at most so many entries.
constexpr UInt64 kSamplesPerSizeMark = 256;
constexpr UInt64 kMaximumTime = static_cast<UInt64>(std::numeric_limits<SInt64>::max());

/// Sum of big-endian 32-bit numbers; plain, so that the compiler makes vector code of it.
UInt64 SumOfU32(const UInt8* entries, UInt64 count) {
  UInt64 sum = 0;
  for (UInt64 i = 0; i < count; ++i)
    sum += ReadU32(entries + 4 * i);
  return sum;
}

/// Packets that hold so many frames; the last one may be filled in part, but is whole in the file.
UInt64 PacketsFor(UInt64 frames, UInt32 frames_per_packet) {
  return frames / frames_per_packet + (frames % frames_per_packet != 0 ? 1 : 0);
}

bool IsChunkOffsetTable(const Atom& atom) {
  return atom.type() == "stco"_4cc || atom.type() == "co64"_4cc;
}

}  // namespace

UInt32 SizeTableEntry(const UInt8* entries, UInt32 bits, UInt64 index) {
  switch (bits) {
    case 4:
      return (entries[index / 2] >> (index % 2 == 0 ? 4 : 0)) & 0xFU;
    case 8:
      return entries[index];
    case 16:
      return ReadU16(entries + 2 * index);
    default:
      return ReadU32(entries + 4 * index);
  }
}

/// Reads one `stbl`, step by step; the first step that fails gives the status.
class SampleTableReader {
 public:
  SampleTableReader(const Atom& stbl, OSType media_type, SampleTable* table)
      : stbl_(stbl), media_type_(media_type), table_(*table) {}

  OSStatus Read() {
    OSStatus status = ReadDescriptions();
    if (status == noErr &&
        !(ReadTimes() && ReadSizes() && ReadOffsets() && ReadChunkRuns() && ReadCompositions() &&
          ReadSyncs() && DecideSizes() && CountSamples() && MeasureTime() && MeasureData())) {
      status = invalidSampleTable;
    }
    return status;
  }

 private:
  using RawTable = SampleTable::RawTable;

  OSStatus ReadDescriptions() {
    const Atom* descriptions = stbl_.Find("stsd"_4cc);
    if (descriptions == nullptr) return noErr;
    for (const Atom& entry : descriptions->children()) {
      // Six reserved bytes and the index of the data reference.
      if (entry.payload().size() < 8) return badImageDescription;
      table_.descriptions_.push_back(ReadSoundPackets(entry));
    }
    return noErr;
  }

  /// Finds a table with version and flags, further `fields` bytes, a count, and that many records.
  /// A table that is missing has no records.
  bool FindTable(OSType type, UInt64 record_size, RawTable* raw) const {
    const Atom* atom = stbl_.Find(type);
    if (atom == nullptr) return true;
    const SharedBytes source = atom->SharePayload();
    if (source.bytes.size() < 8) return false;
    raw->count = ReadU32(source.bytes.data() + 4);
    raw->entries = source.bytes.data() + 8;
    raw->source = source;
    return raw->count <= (source.bytes.size() - 8) / record_size;
  }

  bool ReadTimes() {
    if (!FindTable("stts"_4cc, 8, &table_.times_)) return false;
    UInt64 samples = 0;
    UInt64 time = 0;
    for (UInt64 i = 0; i < table_.times_.count; ++i) {
      if (i % SampleTable::kEntriesPerMark == 0) {
        table_.time_marks_.push_back({samples, static_cast<SInt64>(time)});
      }
      const UInt64 count = table_.CountOfEntry(i);
      const auto duration = static_cast<UInt64>(table_.DurationOfEntry(i));
      all_durations_one_ = all_durations_one_ && (duration == 1 || count == 0);
      samples += count;  // below 2^32 entries of below 2^32
      if (!AddFits(time, count * duration, &time) || time > kMaximumTime) return false;
    }
    timed_samples_ = samples;
    timed_duration_ = time;
    return true;
  }

  bool ReadSizes() {
    const Atom* atom = stbl_.Find("stsz"_4cc);
    const bool compact = atom == nullptr;
    if (compact) atom = stbl_.Find("stz2"_4cc);
    if (atom == nullptr) return true;
    RawTable& sizes = table_.sizes_;
    sizes.source = atom->SharePayload();
    const std::span<const UInt8> bytes = sizes.source.bytes;
    if (bytes.size() < 12) return false;
    sizes.entries = bytes.data() + 12;
    sizes.count = ReadU32(bytes.data() + 8);
    if (compact) {
      table_.size_bits_ = bytes[7];
      if (table_.size_bits_ != 4 && table_.size_bits_ != 8 && table_.size_bits_ != 16) return false;
    } else {
      table_.constant_size_ = ReadU32(bytes.data() + 4);
      if (table_.constant_size_ != 0) return true;
    }
    return (sizes.count * table_.size_bits_ + 7) / 8 <= bytes.size() - 12;
  }

  bool ReadOffsets() {
    const auto& siblings = stbl_.children();
    const auto atom = std::find_if(siblings.begin(), siblings.end(), IsChunkOffsetTable);
    if (atom == siblings.end()) return true;
    table_.offset_bytes_ = atom->type() == "co64"_4cc ? 8 : 4;
    if (!FindTable(atom->type(), table_.offset_bytes_, &table_.offsets_)) return false;
    table_.chunk_count_ = table_.offsets_.count;
    return true;
  }

  bool ReadChunkRuns() {
    RawTable runs;
    if (!FindTable("stsc"_4cc, 12, &runs)) return false;
    UInt64 samples = 0;
    for (UInt64 i = 0; i < runs.count; ++i) {
      const UInt8* entry = runs.entries + 12 * i;
      const UInt64 first = ReadU32(entry);
      if (i == 0 ? first != 1 : first - 1 <= table_.chunk_runs_.back().first_chunk) return false;
      if (first > table_.chunk_count_) break;  // about chunks that are not there
      const UInt32 description = ReadU32(entry + 8);
      if (description == 0 || description > table_.descriptions_.size()) return false;
      if (i != 0) samples += RunSamples(first - 1);
      table_.chunk_runs_.push_back({first - 1, samples, ReadU32(entry + 4), description});
    }
    if (table_.chunk_count_ == 0) return true;
    if (table_.chunk_runs_.empty()) return false;
    chunked_samples_ = samples + RunSamples(table_.chunk_count_);
    return true;
  }

  /// Samples of the last run when it ends before `end_chunk`. Chunks are below 2^32 and so are the
  /// samples in one, so that sums over all chunks stay below 2^64.
  UInt64 RunSamples(UInt64 end_chunk) const {
    const SampleTable::ChunkRun& run = table_.chunk_runs_.back();
    return (end_chunk - run.first_chunk) * run.samples_per_chunk;
  }

  bool ReadCompositions() {
    if (!FindTable("ctts"_4cc, 8, &table_.compositions_)) return false;
    UInt64 samples = 0;
    for (UInt64 i = 0; i < table_.compositions_.count; ++i) {
      if (i % SampleTable::kEntriesPerMark == 0) table_.composition_marks_.push_back(samples);
      samples += ReadU32(table_.compositions_.entries + 8 * i);
    }
    return true;
  }

  bool ReadSyncs() { return FindTable("stss"_4cc, 4, &table_.syncs_); }

  /// Decides for each description whether its chunks are counted in frames of equal packets or by
  /// the size table. Sound is counted in frames when the size table has one size for all and each
  /// "sample" lasts one unit, or when that size is the 1 that old movies write there.
  bool DecideSizes() {
    const bool in_frames = media_type_ == "soun"_4cc && table_.constant_size_ != 0 &&
                           (all_durations_one_ || table_.constant_size_ == 1);
    for (DescriptionInfo& description : table_.descriptions_) {
      if (in_frames && description.frames_per_packet != 0 && !IsSizeOfPacket(description)) {
        counts_frames_ = true;
      } else {
        description.bytes_per_packet = description.frames_per_packet = 0;
      }
    }
    return !in_frames || table_.constant_size_ != 1 || SizesAreKnown();
  }

  /// The size table counts whole packets of compressed sound.
  bool IsSizeOfPacket(const DescriptionInfo& description) const {
    return description.frames_per_packet > 1 && table_.constant_size_ != 1 &&
           table_.constant_size_ == description.bytes_per_packet;
  }

  /// A size of 1 says nothing about a compressed format whose packets are not known.
  bool SizesAreKnown() const {
    const Atom* descriptions = stbl_.Find("stsd"_4cc);
    return std::all_of(table_.chunk_runs_.begin(), table_.chunk_runs_.end(), [&](const auto& run) {
      if (table_.DescriptionOf(run.description).frames_per_packet != 0) return true;
      const std::span<const UInt8> entry = descriptions->children()[run.description - 1].payload();
      constexpr std::size_t kChannels = 16;
      return entry.size() >= kChannels + 4 && ReadU16(entry.data() + kChannels) == 1 &&
             ReadU16(entry.data() + kChannels + 2) <= 8;
    });
  }

  /// The samples are those of the size table. The last chunk may be shorter than its run says;
  /// samples without a chunk can't be found.
  bool CountSamples() {
    UInt64 samples = table_.sizes_.count;
    // Where frames are counted the size table is only a number, and some writers get it wrong.
    if (counts_frames_) samples = std::max(samples, std::min(timed_samples_, chunked_samples_));
    if (samples > chunked_samples_) return false;
    table_.sample_count_ = samples;
    return samples == 0 || table_.times_.count != 0;
  }

  /// Samples beyond the time table last as long as its last ones.
  bool MeasureTime() {
    const UInt64 samples = table_.sample_count_;
    if (samples == 0) return true;
    if (samples == timed_samples_) {
      table_.duration_ = static_cast<SInt64>(timed_duration_);
      return true;
    }
    if (samples > timed_samples_) {
      const UInt64 last = static_cast<UInt64>(table_.DurationOfEntry(table_.times_.count - 1));
      UInt64 more = 0;
      UInt64 sum = 0;
      if (!MultiplyFits(samples - timed_samples_, last, &more) ||
          !AddFits(timed_duration_, more, &sum) || sum > kMaximumTime) {
        return false;
      }
      table_.duration_ = static_cast<SInt64>(sum);
      return true;
    }
    table_.duration_ = table_.TimeAt(table_.TimeRunOf(samples), samples);
    return true;
  }

  bool MeasureData() {
    UInt64 total = 0;
    bool fits = true;
    table_.ForEachChunk([&](const ChunkInfo& chunk) {
      UInt64 end = 0;
      fits = AddFits(chunk.offset, chunk.size, &end) && AddFits(total, chunk.size, &total);
      return fits;
    });
    table_.data_size_ = total;
    return fits;
  }

  const Atom& stbl_;
  OSType media_type_;
  SampleTable& table_;
  bool all_durations_one_ = true;
  bool counts_frames_ = false;
  UInt64 timed_samples_ = 0;
  UInt64 timed_duration_ = 0;
  UInt64 chunked_samples_ = 0;
};

OSStatus SampleTable::Read(const Atom& stbl, OSType media_type, SampleTable* table) {
  *table = SampleTable();
  const OSStatus status = SampleTableReader(stbl, media_type, table).Read();
  if (status != noErr) *table = SampleTable();
  return status;
}

// --- Chunks --------------------------------------------------------------------------------------

UInt64 SampleTable::OffsetOfChunk(UInt64 chunk) const {
  const UInt8* entry = offsets_.entries + chunk * offset_bytes_;
  return offset_bytes_ == 8 ? ReadU64(entry) : ReadU32(entry);
}

const SampleTable::ChunkRun& SampleTable::RunOfChunk(UInt64 chunk) const {
  const auto after =
      std::upper_bound(chunk_runs_.begin(), chunk_runs_.end(), chunk,
                       [](UInt64 value, const ChunkRun& run) { return value < run.first_chunk; });
  return *std::prev(after);
}

void SampleTable::PlaceChunk(const ChunkRun& run, UInt64 chunk, ChunkInfo* info) const {
  info->offset = OffsetOfChunk(chunk);
  info->description = run.description;
  const UInt64 first = run.first_sample + (chunk - run.first_chunk) * run.samples_per_chunk;
  info->first_sample = std::min(first, sample_count_);
  info->sample_count = std::min<UInt64>(run.samples_per_chunk, sample_count_ - info->first_sample);
}

UInt64 SampleTable::ChunkSize(const ChunkInfo& chunk) const {
  if (DescriptionOf(chunk.description).frames_per_packet != 0)
    return SizeInChunk(chunk, chunk.first_sample, chunk.sample_count);
  return SumOfSizes(chunk.first_sample, chunk.sample_count);
}

bool SampleTable::ChunkWalk::Next(ChunkInfo* chunk) {
  if (chunk_ == table_->chunk_count_) return false;
  const std::vector<ChunkRun>& runs = table_->chunk_runs_;
  if (run_ + 1 < runs.size() && runs[run_ + 1].first_chunk == chunk_) ++run_;
  table_->PlaceChunk(runs[run_], chunk_, chunk);
  table_->AdvanceTo(chunk->first_sample, &time_);
  chunk->decode_time = table_->TimeAt(time_, chunk->first_sample);
  chunk->size = table_->ChunkSize(*chunk);
  ++chunk_;
  return true;
}

bool SampleTable::ChunkAt(UInt64 chunk, ChunkInfo* info) const {
  if (chunk >= chunk_count_) return false;
  PlaceChunk(RunOfChunk(chunk), chunk, info);
  info->decode_time = TimeAt(TimeRunOf(info->first_sample), info->first_sample);
  info->size = ChunkSize(*info);
  return true;
}

UInt64 SampleTable::SizeInChunk(const ChunkInfo& chunk, UInt64 first, UInt64 count) const {
  const DescriptionInfo& description = DescriptionOf(chunk.description);
  if (description.frames_per_packet == 0) return SizeBetween(first, first + count);
  const UInt64 start = first - chunk.first_sample;
  return (PacketsFor(start + count, description.frames_per_packet) -
          start / description.frames_per_packet) *
         description.bytes_per_packet;
}

UInt64 SampleTable::SizeOfSamples(UInt64 first, UInt64 count) const {
  const bool has_packets =
      std::any_of(descriptions_.begin(), descriptions_.end(),
                  [](const DescriptionInfo& each) { return each.frames_per_packet != 0; });
  if (!has_packets) return SizeBetween(first, first + count);
  UInt64 size = 0;
  const UInt64 end = first + count;
  while (first < end) {
    SampleInfo sample = {};
    if (!SampleAt(first, &sample)) break;
    ChunkInfo chunk = {};
    PlaceChunk(RunOfChunk(sample.chunk), sample.chunk, &chunk);
    const UInt64 here = std::min(end, chunk.first_sample + chunk.sample_count) - first;
    size += SizeInChunk(chunk, first, here);
    first += here;
  }
  return size;
}

// --- Sizes ---------------------------------------------------------------------------------------

UInt64 SampleTable::SizeOf(UInt64 sample) const {
  if (constant_size_ != 0) return constant_size_;
  return SizeTableEntry(sizes_.entries, size_bits_, sample);
}

UInt64 SampleTable::SumOfSizes(UInt64 first, UInt64 count) const {
  if (constant_size_ != 0) return count * constant_size_;
  if (size_bits_ == 32) return SumOfU32(sizes_.entries + 4 * first, count);
  UInt64 sum = 0;
  for (UInt64 i = first; i < first + count; ++i)
    sum += SizeTableEntry(sizes_.entries, size_bits_, i);
  return sum;
}

UInt64 SampleTable::SizeBefore(UInt64 sample) const {
  if (constant_size_ != 0) return sample * constant_size_;
  if (size_marks_.empty()) {
    UInt64 sum = 0;
    // The place behind the last sample has a mark too, where it falls on one.
    for (UInt64 i = 0; i <= sample_count_; i += kSamplesPerSizeMark) {
      size_marks_.push_back(sum);
      sum += SumOfSizes(i, std::min(kSamplesPerSizeMark, sample_count_ - i));
    }
  }
  const UInt64 mark = sample / kSamplesPerSizeMark;
  return size_marks_[mark] +
         SumOfSizes(mark * kSamplesPerSizeMark, sample - mark * kSamplesPerSizeMark);
}

UInt64 SampleTable::SizeBetween(UInt64 first, UInt64 end) const {
  return end - first <= kSamplesPerSizeMark ? SumOfSizes(first, end - first)
                                            : SizeBefore(end) - SizeBefore(first);
}

// --- Times ---------------------------------------------------------------------------------------

UInt64 SampleTable::CountOfEntry(UInt64 entry) const {
  return ReadU32(times_.entries + 8 * entry);
}

SInt64 SampleTable::DurationOfEntry(UInt64 entry) const {
  // Some editors write small negative durations; time does not run backwards.
  return std::max(ReadS32(times_.entries + 8 * entry + 4), SInt32{0});
}

void SampleTable::AdvanceTo(UInt64 sample, RunPosition* position) const {
  while (position->entry + 1 < times_.count) {
    const UInt64 count = CountOfEntry(position->entry);
    if (sample - position->first_sample < count) return;
    position->first_sample += count;
    position->first_time += static_cast<SInt64>(count) * DurationOfEntry(position->entry);
    ++position->entry;
  }
}

SInt64 SampleTable::TimeAt(const RunPosition& position, UInt64 sample) const {
  if (times_.count == 0) return 0;
  return position.first_time +
         static_cast<SInt64>(sample - position.first_sample) * DurationOfEntry(position.entry);
}

SampleTable::RunPosition SampleTable::TimeRunOf(UInt64 sample) const {
  RunPosition position;
  const auto after =
      std::upper_bound(time_marks_.begin(), time_marks_.end(), sample,
                       [](UInt64 value, const TimeMark& mark) { return value < mark.sample; });
  if (after != time_marks_.begin()) {
    const auto mark = std::prev(after);
    position.entry = static_cast<UInt64>(mark - time_marks_.begin()) * kEntriesPerMark;
    position.first_sample = mark->sample;
    position.first_time = mark->time;
  }
  AdvanceTo(sample, &position);
  return position;
}

std::optional<UInt64> SampleTable::SampleAtTime(SInt64 time) const {
  if (time < 0 || time >= duration_) return std::nullopt;
  const auto after =
      std::upper_bound(time_marks_.begin(), time_marks_.end(), time,
                       [](SInt64 value, const TimeMark& mark) { return value < mark.time; });
  const auto mark = std::prev(after);  // the first mark is at time 0
  RunPosition position{static_cast<UInt64>(mark - time_marks_.begin()) * kEntriesPerMark,
                       mark->sample, mark->time};
  while (position.entry + 1 < times_.count) {
    const SInt64 length =
        static_cast<SInt64>(CountOfEntry(position.entry)) * DurationOfEntry(position.entry);
    if (time - position.first_time < length) break;
    position.first_sample += CountOfEntry(position.entry);
    position.first_time += length;
    ++position.entry;
  }
  // A run without duration is passed over above unless it is the last, which then holds no time.
  const SInt64 duration = std::max(DurationOfEntry(position.entry), SInt64{1});
  return position.first_sample + static_cast<UInt64>((time - position.first_time) / duration);
}

bool SampleTable::TimeOfSample(UInt64 sample, SInt64* begin, SInt64* duration) const {
  if (sample >= sample_count_) return false;
  const RunPosition position = TimeRunOf(sample);
  *begin = TimeAt(position, sample);
  *duration = DurationOfEntry(position.entry);
  return true;
}

SInt32 SampleTable::CompositionOffsetOf(UInt64 sample) const {
  const auto after = std::upper_bound(composition_marks_.begin(), composition_marks_.end(), sample);
  if (after == composition_marks_.begin()) return 0;
  const auto mark = std::prev(after);
  UInt64 entry = static_cast<UInt64>(mark - composition_marks_.begin()) * kEntriesPerMark;
  UInt64 first = *mark;
  for (; entry < compositions_.count; ++entry) {
    const UInt8* record = compositions_.entries + 8 * entry;
    const UInt32 count = ReadU32(record);
    // Signed in both versions of the table: QuickTime writers use negative offsets in version 0.
    if (sample - first < count) return ReadS32(record + 4);
    first += count;
  }
  return 0;
}

UInt64 SampleTable::FirstSyncEntry(UInt64 number) const {
  UInt64 low = 0;
  UInt64 high = syncs_.count;
  while (low < high) {
    const UInt64 middle = low + (high - low) / 2;
    if (ReadU32(syncs_.entries + 4 * middle) < number) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

bool SampleTable::IsSync(UInt64 sample) const {
  if (syncs_.entries == nullptr) return true;
  const UInt64 entry = FirstSyncEntry(sample + 1);
  return entry < syncs_.count && ReadU32(syncs_.entries + 4 * entry) == sample + 1;
}

UInt64 SampleTable::SyncSampleUpTo(UInt64 sample) const {
  if (syncs_.entries == nullptr) return sample;
  const UInt64 behind = FirstSyncEntry(sample + 2);
  if (behind == 0) return 0;
  const UInt64 number = ReadU32(syncs_.entries + 4 * (behind - 1));
  return number > 0 ? number - 1 : 0;
}

bool SampleTable::SampleAt(UInt64 sample, SampleInfo* info) const {
  if (sample >= sample_count_) return false;
  const auto after =
      std::upper_bound(chunk_runs_.begin(), chunk_runs_.end(), sample,
                       [](UInt64 value, const ChunkRun& run) { return value < run.first_sample; });
  // Runs of empty chunks share their first sample with the one behind: the last of them holds it.
  const ChunkRun& run = *std::prev(after);
  info->chunk = run.first_chunk + (sample - run.first_sample) / run.samples_per_chunk;
  ChunkInfo chunk = {};
  PlaceChunk(run, info->chunk, &chunk);
  const DescriptionInfo& description = DescriptionOf(run.description);
  info->description = run.description;
  if (description.frames_per_packet != 0) {
    info->offset = chunk.offset + (sample - chunk.first_sample) / description.frames_per_packet *
                                      description.bytes_per_packet;
    info->size = description.bytes_per_packet;
  } else {
    info->offset = chunk.offset + SizeBetween(chunk.first_sample, sample);
    info->size = SizeOf(sample);
  }
  TimeOfSample(sample, &info->decode_time, &info->duration);
  info->composition_offset = CompositionOffsetOf(sample);
  info->is_sync = IsSync(sample);
  return true;
}

// --- Chunk offsets -------------------------------------------------------------------------------

OSStatus CheckChunkBounds(const SampleTable& table, UInt16 data_reference, UInt64 file_size) {
  bool within = true;
  table.ForEachChunk([&](const ChunkInfo& chunk) {
    const UInt16 index = table.descriptions()[chunk.description - 1].data_reference;
    if (data_reference != 0 && index != data_reference) return true;
    within = chunk.size == 0 || (chunk.size <= file_size && chunk.offset <= file_size - chunk.size);
    return within;
  });
  return within ? OSStatus{noErr} : OSStatus{eofErr};
}

OSStatus ReplaceChunkOffsets(Atom* stbl, UInt64 count,
                             const std::function<UInt64(UInt64)>& offset_of, bool force_wide) {
  std::vector<Atom>& siblings = stbl->children();
  const auto table = std::find_if(siblings.begin(), siblings.end(), IsChunkOffsetTable);
  if (table == siblings.end()) return count == 0 ? OSStatus{noErr} : OSStatus{paramErr};
  const std::span<const UInt8> old = table->payload();
  if (old.size() < 8 || ReadU32(old.data() + 4) != count) return paramErr;
  const std::size_t old_size = (table->type() == "co64"_4cc ? 8U : 4U) * std::size_t{count};
  if (old.size() - 8 < old_size) return paramErr;
  bool wide = force_wide;
  for (UInt64 i = 0; i < count && !wide; ++i)
    wide = offset_of(i) > std::numeric_limits<UInt32>::max();
  const std::size_t width = wide ? 8 : 4;
  const std::span<const UInt8> rest = old.subspan(8 + old_size);
  std::vector<UInt8> bytes(8 + width * count + rest.size());
  std::copy_n(old.begin(), 8, bytes.begin());
  UInt8* entry = bytes.data() + 8;
  for (UInt64 i = 0; i < count; ++i, entry += width) {
    if (wide) {
      WriteU64(entry, offset_of(i));
    } else {
      WriteU32(entry, static_cast<UInt32>(offset_of(i)));
    }
  }
  std::copy(rest.begin(), rest.end(), entry);
  table->set_payload(std::move(bytes));
  table->set_type(wide ? "co64"_4cc : "stco"_4cc);
  // A second table of offsets would now be wrong.
  siblings.erase(std::remove_if(std::next(table), siblings.end(), IsChunkOffsetTable),
                 siblings.end());
  return noErr;
}

OSStatus ReplaceChunkOffsets(Atom* stbl, std::span<const UInt64> offsets, bool force_wide) {
  const auto offset_of = [offsets](UInt64 chunk) { return offsets[chunk]; };
  return ReplaceChunkOffsets(stbl, offsets.size(), offset_of, force_wide);
}

OSStatus ShiftChunkOffsets(Atom* stbl, UInt64 distance) {
  std::vector<Atom>& siblings = stbl->children();
  const auto table = std::find_if(siblings.begin(), siblings.end(), IsChunkOffsetTable);
  if (table == siblings.end()) return noErr;
  const bool wide = table->type() == "co64"_4cc;
  const std::span<UInt8> bytes = table->mutable_payload();
  if (bytes.size() < 8) return invalidSampleTable;
  const std::size_t width = wide ? 8 : 4;
  const std::size_t count = ReadU32(bytes.data() + 4);
  if ((bytes.size() - 8) / width < count) return invalidSampleTable;
  const UInt64 largest =
      wide ? std::numeric_limits<UInt64>::max() : UInt64{std::numeric_limits<UInt32>::max()};
  UInt8* const end = bytes.data() + 8 + width * count;
  for (UInt8* entry = bytes.data() + 8; entry != end; entry += width) {
    UInt64 offset = wide ? ReadU64(entry) : ReadU32(entry);
    if (!AddFits(offset, distance, &offset) || offset > largest) return invalidSampleTable;
    if (wide) {
      WriteU64(entry, offset);
    } else {
      WriteU32(entry, static_cast<UInt32>(offset));
    }
  }
  return noErr;
}

}  // namespace quillmere::movies
