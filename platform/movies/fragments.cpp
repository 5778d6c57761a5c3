#include "fragments.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "big_endian.h"
#include "field_reader.h"
#include "movie_records.h"
#include "movie_toolbox.h"
#include "sample_groups.h"
#include "sample_runs.h"
#include "sample_table.h"

namespace quillmere::movies {

namespace {

/// Flags of `tfhd` and `trun`: which fields are there.
constexpr UInt32 kHasBaseOffset = 0x1;
constexpr UInt32 kHasDescription = 0x2;
constexpr UInt32 kHasDefaultDuration = 0x8;
constexpr UInt32 kHasDefaultSize = 0x10;
constexpr UInt32 kHasDefaultFlags = 0x20;
constexpr UInt32 kBaseIsFragment = 0x20000;
constexpr UInt32 kHasDataOffset = 0x1;
constexpr UInt32 kHasFirstFlags = 0x4;
constexpr UInt32 kHasDurations = 0x100;
constexpr UInt32 kHasSizes = 0x200;
constexpr UInt32 kHasFlags = 0x400;
constexpr UInt32 kHasCompositions = 0x800;
/// In a sample's flags: it is not a sync sample; above lie what it depends on, 8 bits as in `sdtp`.
constexpr UInt32 kIsNotSync = 0x10000;
constexpr UInt32 kDependencyShift = 20;

/// Samples without bytes and without fields of their own cost nothing in the file: so many are
/// believed.
constexpr UInt64 kMaximumEmptySamples = UInt64{1} << 20;
constexpr UInt64 kMaximumSamples = std::numeric_limits<UInt32>::max();

/// Atoms of a `traf` without which its samples can't be understood, and which ordinary tables of
/// a flattened movie can't take over: they name bytes by place or number samples within the
/// fragment.
constexpr OSType kNotConvertible[] = {"senc"_4cc, "saiz"_4cc, "saio"_4cc,
                                      "subs"_4cc, "csgp"_4cc, "uuid"_4cc};

bool IsUniform(const std::vector<Run>& runs) {
  return runs.size() <= 1;
}

/// What holds for samples that do not say otherwise.
struct SampleDefaults {
  UInt32 description = 1;
  UInt32 duration = 0;
  UInt32 size = 0;
  UInt32 flags = 0;
};

struct FragmentChunk {
  UInt64 offset;
  UInt32 samples;
  UInt32 description;
};

/// The samples of one track: those that it had, and what fragments add.
struct TrackSamples {
  Atom* track = nullptr;
  Atom* stbl = nullptr;
  UInt32 id = 0;
  UInt32 time_scale = 0;
  SampleDefaults defaults;
  UInt64 old_samples = 0;
  SInt64 old_duration = 0;
  UInt64 old_chunks = 0;
  std::vector<Run> times;         ///< of all samples
  std::vector<Run> compositions;  ///< of all samples
  std::vector<Run> sizes;         ///< of new samples
  std::vector<Run> flags;         ///< of new samples
  std::vector<FragmentChunk> chunks;
  SampleGroupMerger groups;
  UInt64 samples = 0;        ///< all
  UInt64 composed = 0;       ///< those that `compositions` tells of
  UInt64 bytes = 0;          ///< of new samples
  UInt64 empty_samples = 0;  ///< new ones that take no bytes of the file at all
  SInt64 start_time = 0;     ///< decode time of the first sample
  SInt64 end_time = 0;       ///< decode time behind the last sample
};

UInt32 FlagsOf(const Atom& atom) {
  return ReadU32(atom.payload().data()) & 0xFFFFFF;
}

/// Reads the run-length table of a type into runs of at most `samples` samples; how many it lacks.
UInt64 LoadRuns(const Atom& stbl, OSType type, UInt64 samples, std::vector<Run>* runs) {
  const Atom* atom = stbl.Find(type);
  if (atom == nullptr) return samples;
  const std::span<const UInt8> bytes = atom->payload();
  const UInt64 count = ReadU32(bytes.data() + 4);  // checked when the sample table was read
  for (UInt64 i = 0; i < count && samples > 0; ++i) {
    const UInt8* entry = bytes.data() + 8 + 8 * i;
    const auto of_run = static_cast<UInt32>(std::min<UInt64>(ReadU32(entry), samples));
    AppendRun(runs, of_run, ReadU32(entry + 4));
    samples -= of_run;
  }
  return samples;
}

/// Collects the samples of all fragments.
class FragmentCollector {
 public:
  FragmentCollector(Atom* movie, UInt64 file_size) : movie_(*movie), file_size_(file_size) {}

  OSStatus Start() {
    for (Atom& track : movie_.children()) {
      if (track.type() != "trak"_4cc) continue;
      const OSStatus status = StartTrack(&track);
      if (status != noErr) return status;
    }
    return noErr;
  }

  OSStatus Add(const Atom& fragment, UInt64 offset) {
    UInt64 data_end = offset;
    for (const Atom& part : fragment.children()) {
      if (part.type() != "traf"_4cc) continue;
      const OSStatus status = AddTrackFragment(part, offset, &data_end);
      if (status != noErr) return status;
    }
    return fragment.children().empty() ? OSStatus{invalidSampleTable} : OSStatus{noErr};
  }

  std::vector<TrackSamples>& tracks() { return tracks_; }

 private:
  OSStatus StartTrack(Atom* track) {
    TrackSamples samples;
    samples.track = track;
    samples.stbl = track->FindPath({"mdia"_4cc, "minf"_4cc, "stbl"_4cc});
    TrackHeader header;
    MediaHeader media;
    const Atom* mdhd = track->FindPath({"mdia"_4cc, "mdhd"_4cc});
    if (samples.stbl == nullptr || mdhd == nullptr || !ReadMediaHeader(*mdhd, &media)) return noErr;
    if (!ReadTrackHeader(*track->Find("tkhd"_4cc), &header)) return invalidTrack;
    samples.id = header.id;
    samples.time_scale = media.time_scale;
    HandlerRecord handler;
    const Atom* hdlr = track->FindPath({"mdia"_4cc, "hdlr"_4cc});
    if (hdlr != nullptr) ReadHandler(*hdlr, &handler);
    SampleTable table;
    const OSStatus status = SampleTable::Read(*samples.stbl, handler.component_subtype, &table);
    if (status != noErr) return status;
    samples.samples = samples.old_samples = table.sample_count();
    if (samples.samples > kMaximumSamples) return invalidSampleTable;
    samples.groups.Start(samples.stbl, samples.old_samples);
    samples.old_chunks = table.chunk_count();
    samples.old_duration = samples.end_time = table.duration();
    const UInt64 untimed = LoadRuns(*samples.stbl, "stts"_4cc, samples.old_samples, &samples.times);
    if (untimed > 0) {  // the last duration goes on
      AppendRun(&samples.times, static_cast<UInt32>(untimed), samples.times.back().value);
    }
    samples.composed = samples.old_samples - LoadRuns(*samples.stbl, "ctts"_4cc,
                                                      samples.old_samples, &samples.compositions);
    ReadDefaults(header.id, &samples.defaults);
    tracks_.push_back(std::move(samples));
    return noErr;
  }

  void ReadDefaults(UInt32 id, SampleDefaults* defaults) const {
    const Atom* extends = movie_.Find("mvex"_4cc);
    if (extends == nullptr) return;
    for (const Atom& atom : extends->children()) {
      const std::span<const UInt8> bytes = atom.payload();
      if (atom.type() != "trex"_4cc || bytes.size() < 24 || ReadU32(bytes.data() + 4) != id)
        continue;
      *defaults = {ReadU32(bytes.data() + 8), ReadU32(bytes.data() + 12),
                   ReadU32(bytes.data() + 16), ReadU32(bytes.data() + 20)};
    }
  }

  TrackSamples* FindTrack(UInt32 id) {
    for (TrackSamples& track : tracks_) {
      if (track.id == id) return &track;
    }
    return nullptr;
  }

  OSStatus AddTrackFragment(const Atom& part, UInt64 fragment_offset, UInt64* data_end) {
    for (const Atom& atom : part.children()) {
      if (std::find(std::begin(kNotConvertible), std::end(kNotConvertible), atom.type()) !=
          std::end(kNotConvertible)) {
        return badPublicMovieAtom;
      }
    }
    const Atom* header = part.Find("tfhd"_4cc);
    if (header == nullptr || header->payload().size() < 8) return invalidSampleTable;
    const UInt32 flags = FlagsOf(*header);
    FieldReader fields(header->payload().subspan(4));
    TrackSamples* track = FindTrack(fields.U32());
    if (track == nullptr) return invalidSampleTable;
    UInt64 base = (flags & kBaseIsFragment) != 0 ? fragment_offset : *data_end;
    if ((flags & kHasBaseOffset) != 0) base = fields.U64();
    SampleDefaults defaults = track->defaults;
    defaults.description = fields.U32If((flags & kHasDescription) != 0, defaults.description);
    defaults.duration = fields.U32If((flags & kHasDefaultDuration) != 0, defaults.duration);
    defaults.size = fields.U32If((flags & kHasDefaultSize) != 0, defaults.size);
    defaults.flags = fields.U32If((flags & kHasDefaultFlags) != 0, defaults.flags);
    if (!fields.ok() || !TakeDecodeTime(part.Find("tfdt"_4cc), track)) return invalidSampleTable;
    UInt64 position = base;
    const UInt64 first = track->samples;
    for (const Atom& atom : part.children()) {
      if (atom.type() != "trun"_4cc) continue;
      if (!AddRun(atom, defaults, base, &position, track)) return invalidSampleTable;
    }
    *data_end = position;
    return track->groups.Add(part, first, track->samples) ? OSStatus{noErr} : invalidSampleTable;
  }

  /// The decode time that the fragment starts at: the last sample before it lasts until then.
  static bool TakeDecodeTime(const Atom* tfdt, TrackSamples* track) {
    if (tfdt == nullptr) return true;
    FieldReader fields(tfdt->payload());
    const bool wide = (fields.U32() >> 24) == 1;
    const UInt64 value = wide ? fields.U64() : fields.U32();
    if (!fields.ok() || value > static_cast<UInt64>(std::numeric_limits<SInt64>::max())) {
      return false;
    }
    const auto time = static_cast<SInt64>(value);
    if (track->samples == 0) {
      track->start_time = track->end_time = time;
      return true;
    }
    if (track->times.empty() || time == track->end_time) return true;
    const SInt64 last = track->times.back().value;
    SInt64 duration = 0;
    if (__builtin_sub_overflow(time, track->end_time - last, &duration) || duration < 0 ||
        duration > std::numeric_limits<SInt32>::max()) {
      return true;  // not a gap: the clock was set
    }
    if (--track->times.back().count == 0) track->times.pop_back();
    AppendRun(&track->times, 1, static_cast<UInt32>(duration));
    track->end_time = time;
    return true;
  }

  bool AddRun(const Atom& atom, const SampleDefaults& defaults, UInt64 base, UInt64* position,
              TrackSamples* track) const {
    if (atom.payload().size() < 8) return false;
    const UInt32 flags = FlagsOf(atom);
    FieldReader fields(atom.payload().subspan(4));
    const UInt32 count = fields.U32();
    if ((flags & kHasDataOffset) != 0) {
      // A signed distance; sums wrap as two's complement and are checked against the file.
      *position = base + static_cast<UInt64>(SInt64{static_cast<SInt32>(fields.U32())});
    }
    const UInt32 first_flags = fields.U32If((flags & kHasFirstFlags) != 0, defaults.flags);
    const UInt64 samples = track->samples + count;
    if (!fields.ok() || samples > kMaximumSamples) return false;
    const UInt64 bytes_before = track->bytes;
    const auto own = static_cast<std::size_t>(
        __builtin_popcount(flags & (kHasDurations | kHasSizes | kHasFlags | kHasCompositions)));
    if (own == 0) {
      if (!AddEqualSamples(count, first_flags, defaults, track)) return false;
    } else {
      if (fields.left() / (4 * own) < count) return false;
      for (UInt32 i = 0; i < count; ++i) {
        SampleDefaults sample = defaults;
        sample.duration = fields.U32If((flags & kHasDurations) != 0, defaults.duration);
        sample.size = fields.U32If((flags & kHasSizes) != 0, defaults.size);
        sample.flags =
            fields.U32If((flags & kHasFlags) != 0, i == 0 ? first_flags : defaults.flags);
        const UInt32 composition = fields.U32If((flags & kHasCompositions) != 0, 0);
        if (!AddSamples(1, sample, composition, track)) return false;
      }
    }
    const UInt64 size = track->bytes - bytes_before;
    if (size > file_size_ || *position > file_size_ - size) return false;
    if (count != 0) track->chunks.push_back({*position, count, defaults.description});
    *position += size;
    return true;
  }

  bool AddEqualSamples(UInt32 count, UInt32 first_flags, const SampleDefaults& defaults,
                       TrackSamples* track) const {
    if (count == 0) return true;
    if (defaults.size == 0) track->empty_samples += count;
    if (track->empty_samples > kMaximumEmptySamples) return false;
    SampleDefaults first = defaults;
    first.flags = first_flags;
    return AddSamples(1, first, 0, track) && AddSamples(count - 1, defaults, 0, track);
  }

  bool AddSamples(UInt32 count, const SampleDefaults& sample, UInt32 composition,
                  TrackSamples* track) const {
    // Every sample has bytes of its own, so a track has no more of them than the file.
    track->bytes += UInt64{count} * sample.size;
    if (track->bytes > file_size_) return false;
    if (sample.duration > static_cast<UInt32>(std::numeric_limits<SInt32>::max())) return false;
    const SInt64 length = SInt64{count} * sample.duration;
    if (__builtin_add_overflow(track->end_time, length, &track->end_time)) return false;
    if (composition != 0 || !track->compositions.empty()) {
      AppendRun(&track->compositions, static_cast<UInt32>(track->samples - track->composed), 0);
      AppendRun(&track->compositions, count, composition);
      track->composed = track->samples + count;
    }
    AppendRun(&track->times, count, sample.duration);
    AppendRun(&track->sizes, count, sample.size);
    AppendRun(&track->flags, count, sample.flags);
    track->samples += count;
    return true;
  }

  Atom& movie_;
  UInt64 file_size_;
  std::vector<TrackSamples> tracks_;
};

// --- Writing the tables --------------------------------------------------------------------------

/// The table of a type, made where it is not there.
Atom& TableOf(Atom* stbl, OSType type) {
  Atom* table = stbl->Find(type);
  return table != nullptr ? *table : stbl->Add(Atom(type));
}

/// Version and flags of a table, as it has them or 0.
UInt32 VersionAndFlags(const Atom& table) {
  return table.payload().size() >= 4 ? ReadU32(table.payload().data()) : 0;
}

void WriteRuns(const std::vector<Run>& runs, UInt32 version_and_flags, Atom* table) {
  std::vector<UInt8> bytes;
  bytes.reserve(8 + 8 * runs.size());
  AppendU32(&bytes, version_and_flags);
  AppendU32(&bytes, static_cast<UInt32>(runs.size()));
  for (const Run& run : runs) {
    AppendU32(&bytes, run.count);
    AppendU32(&bytes, run.value);
  }
  table->set_payload(std::move(bytes));
}

void WriteCompositions(TrackSamples* track) {
  if (track->compositions.empty()) return;
  AppendRun(&track->compositions, static_cast<UInt32>(track->samples - track->composed), 0);
  const bool is_signed =
      std::any_of(track->compositions.begin(), track->compositions.end(),
                  [](const Run& run) { return static_cast<SInt32>(run.value) < 0; });
  Atom& table = TableOf(track->stbl, "ctts"_4cc);
  const UInt32 old = VersionAndFlags(table);
  WriteRuns(track->compositions, is_signed ? old | 0x01000000U : old, &table);
}

/// Appends the sizes of the samples that the track had; false where there are more than the file
/// can have.
bool AppendOldSizes(const TrackSamples& track, const Atom* table, UInt64 file_size,
                    std::vector<UInt8>* out) {
  if (table == nullptr) return true;
  const UInt8* bytes = table->payload().data();
  const bool compact = table->type() == "stz2"_4cc;
  const UInt32 constant = compact ? 0 : ReadU32(bytes + 4);
  if (constant != 0 && track.old_samples > file_size) return false;
  const UInt32 bits = compact ? bytes[7] : 32;
  for (UInt64 i = 0; i < track.old_samples; ++i) {
    AppendU32(out, constant != 0 ? constant : SizeTableEntry(bytes + 12, bits, i));
  }
  return true;
}

bool WriteSizes(const TrackSamples& track, UInt64 file_size) {
  const Atom* old = track.stbl->Find("stsz"_4cc);
  if (old == nullptr) old = track.stbl->Find("stz2"_4cc);
  const bool old_is_plain = old != nullptr && old->type() == "stsz"_4cc;
  const UInt32 old_constant = old_is_plain ? ReadU32(old->payload().data() + 4) : 0;
  const UInt32 size = track.sizes.front().value;
  const bool uniform =
      IsUniform(track.sizes) && size != 0 && (track.old_samples == 0 || old_constant == size);
  std::vector<UInt8> bytes;
  AppendU32(&bytes, old_is_plain ? VersionAndFlags(*old) : 0);
  AppendU32(&bytes, uniform ? size : 0);
  AppendU32(&bytes, static_cast<UInt32>(track.samples));
  if (!uniform) {
    if (!AppendOldSizes(track, old, file_size, &bytes)) return false;
    for (const Run& run : track.sizes) {
      for (UInt32 i = 0; i < run.count; ++i)
        AppendU32(&bytes, run.value);
    }
  }
  TableOf(track.stbl, "stsz"_4cc).set_payload(std::move(bytes));
  track.stbl->Remove("stz2"_4cc);
  return true;
}

void WriteChunkRuns(const TrackSamples& track) {
  Atom& table = TableOf(track.stbl, "stsc"_4cc);
  const std::span<const UInt8> old = table.payload();
  std::vector<UInt8> bytes;
  AppendU32(&bytes, VersionAndFlags(table));
  AppendU32(&bytes, 0);
  UInt32 entries = 0;
  FragmentChunk last = {};
  if (old.size() >= 8) {
    const UInt32 count = ReadU32(old.data() + 4);
    for (; entries < count; ++entries) {
      const UInt8* entry = old.data() + 8 + 12 * std::size_t{entries};
      if (ReadU32(entry) > track.old_chunks) break;
      bytes.insert(bytes.end(), entry, entry + 12);
    }
  }
  UInt64 number = track.old_chunks;
  for (const FragmentChunk& chunk : track.chunks) {
    ++number;
    if (chunk.samples == last.samples && chunk.description == last.description) continue;
    AppendU32(&bytes, static_cast<UInt32>(number));
    AppendU32(&bytes, chunk.samples);
    AppendU32(&bytes, chunk.description);
    last = chunk;
    ++entries;
  }
  WriteU32(bytes.data() + 4, entries);
  table.set_payload(std::move(bytes));
}

void WriteChunkOffsets(const TrackSamples& track) {
  const Atom* narrow = track.stbl->Find("stco"_4cc);
  const Atom* wide = track.stbl->Find("co64"_4cc);
  const bool was_wide = wide != nullptr && narrow == nullptr;
  Atom& table = TableOf(track.stbl, was_wide ? "co64"_4cc : "stco"_4cc);
  const std::size_t width = was_wide ? 8 : 4;
  std::vector<UInt64> offsets;
  offsets.reserve(track.old_chunks + track.chunks.size());
  for (UInt64 i = 0; i < track.old_chunks; ++i) {
    const UInt8* entry = table.payload().data() + 8 + width * i;
    offsets.push_back(was_wide ? ReadU64(entry) : ReadU32(entry));
  }
  for (const FragmentChunk& chunk : track.chunks)
    offsets.push_back(chunk.offset);
  std::vector<UInt8> room(8 + width * offsets.size());
  WriteU32(room.data(), VersionAndFlags(table));
  WriteU32(room.data() + 4, static_cast<UInt32>(offsets.size()));
  table.set_payload(std::move(room));
  ReplaceChunkOffsets(track.stbl, offsets, was_wide);
}

bool IsSync(const Run& flags) {
  return (flags.value & kIsNotSync) == 0;
}

/// Writes which samples are sync samples, where not all are.
bool WriteSyncs(const TrackSamples& track, UInt64 file_size) {
  const bool had_table = track.stbl->Find("stss"_4cc) != nullptr;
  const bool had_syncs = had_table && track.old_samples > 0;
  const bool all_new = std::all_of(track.flags.begin(), track.flags.end(), IsSync);
  if (all_new && !had_syncs) {
    track.stbl->Remove("stss"_4cc);
    return true;
  }
  Atom& table = TableOf(track.stbl, "stss"_4cc);
  const std::span<const UInt8> old = table.payload();
  std::vector<UInt8> bytes(old.begin(), old.end());
  bytes.resize(8 + (had_syncs ? 4 * std::size_t{ReadU32(old.data() + 4)} : 0));
  if (!had_syncs) {
    if (track.old_samples > file_size) return false;
    for (UInt64 i = 1; i <= track.old_samples; ++i)
      AppendU32(&bytes, static_cast<UInt32>(i));
  }
  UInt64 number = track.old_samples;
  for (const Run& run : track.flags) {
    for (UInt32 i = 0; IsSync(run) && i < run.count; ++i) {
      AppendU32(&bytes, static_cast<UInt32>(number + 1 + i));
    }
    number += run.count;
  }
  WriteU32(bytes.data() + 4, static_cast<UInt32>((bytes.size() - 8) / 4));
  table.set_payload(std::move(bytes));
  return true;
}

/// Writes what samples depend on, where the old samples have it or there are none, and where it
/// differs.
void WriteDependencies(const TrackSamples& track) {
  const Atom* old = track.stbl->Find("sdtp"_4cc);
  if (track.old_samples > 0 ? old == nullptr || old->payload().size() != 4 + track.old_samples
                            : IsUniform(track.flags)) {
    track.stbl->Remove("sdtp"_4cc);
    return;
  }
  Atom& table = TableOf(track.stbl, "sdtp"_4cc);
  std::vector<UInt8> bytes(table.payload().begin(), table.payload().end());
  bytes.resize(4 + track.old_samples);
  for (const Run& run : track.flags) {
    bytes.insert(bytes.end(), run.count, static_cast<UInt8>(run.value >> kDependencyShift));
  }
  table.set_payload(std::move(bytes));
}

// --- Durations and edits -------------------------------------------------------------------------

/// `value` in another time scale, rounded up, so that the last sample is not cut. All scales are
/// above 0.
UInt64 Rescale(UInt64 value, UInt32 from, UInt32 to) {
  __extension__ using Wide = unsigned __int128;
  return static_cast<UInt64>((Wide{value} * to + from - 1) / from);
}

/// Lets the last edit that shows media go on to the new end, if it went to the old one or has no
/// duration yet.
void ExtendLastEdit(const TrackSamples& track, UInt32 movie_scale, std::vector<EditRecord>* edits) {
  if (edits->empty() || edits->back().media_time < 0) return;
  EditRecord& edit = edits->back();
  const auto length = [&](SInt64 media_end) {
    return media_end <= edit.media_time ? UInt64{0}
                                        : Rescale(static_cast<UInt64>(media_end - edit.media_time),
                                                  track.time_scale, movie_scale);
  };
  const bool to_end =
      edit.track_duration == 0 || edit.track_duration + 1 >= length(track.old_duration);
  const UInt64 extended = length(track.end_time - track.start_time);
  if (to_end && edit.media_rate == 0x10000) {
    edit.track_duration = std::max(edit.track_duration, extended);
  }
}

/// Updates edits and durations of a track whose first sample plays `delay` media units later than
/// the earliest of the movie. The track's duration in movie units comes back.
OSStatus UpdateTrack(const TrackSamples& track, UInt32 movie_scale, UInt64 delay,
                     UInt64* duration) {
  const auto media_duration = static_cast<UInt64>(track.end_time - track.start_time);
  MediaHeader media;
  Atom* mdhd = track.track->FindPath({"mdia"_4cc, "mdhd"_4cc});
  if (!ReadMediaHeader(*mdhd, &media)) return invalidMedia;
  if (media.duration < media_duration && !SetMediaDuration(mdhd, media_duration)) {
    return invalidMedia;
  }
  *duration = Rescale(media_duration, track.time_scale, movie_scale);
  Atom* edts = track.track->Find("edts"_4cc);
  Atom* elst = edts == nullptr ? nullptr : edts->Find("elst"_4cc);
  std::vector<EditRecord> edits;
  if (elst != nullptr && !ReadEditList(*elst, &edits)) return badEditList;
  const std::size_t old_edits = edits.size();
  ExtendLastEdit(track, movie_scale, &edits);
  const UInt64 gap = Rescale(delay, track.time_scale, movie_scale);
  if (gap > 0) {
    if (edits.empty()) edits.push_back({*duration, 0, 0x10000});
    edits.insert(edits.begin(), {gap, kEmptyEdit, 0x10000});
  }
  if (edits.empty()) return noErr;
  *duration = 0;
  for (const EditRecord& edit : edits) {
    if (!AddFits(*duration, edit.track_duration, duration)) return badEditList;
  }
  if (edits.size() == old_edits || elst != nullptr) {
    WriteEditList(elst, edits);
    return noErr;
  }
  if (edts == nullptr) edts = &track.track->Add(Atom("edts"_4cc));
  WriteEditList(&edts->Add(Atom("elst"_4cc)), edits);
  return noErr;
}

/// True when a time of one track lies before that of another.
bool IsEarlier(const TrackSamples& a, const TrackSamples& b) {
  __extension__ using Wide = __int128;
  return Wide{a.start_time} * b.time_scale < Wide{b.start_time} * a.time_scale;
}

OSStatus UpdateDurations(std::vector<TrackSamples>* tracks, Atom* movie) {
  Atom* mvhd = movie->Find("mvhd"_4cc);
  MovieHeader header;
  if (!ReadMovieHeader(*mvhd, &header) || header.time_scale == 0) return badPublicMovieAtom;
  const TrackSamples* earliest = nullptr;
  for (const TrackSamples& track : *tracks) {
    if (track.samples == 0) continue;
    if (track.time_scale == 0) return invalidMedia;
    if (earliest == nullptr || IsEarlier(track, *earliest)) earliest = &track;
  }
  UInt64 movie_duration = header.duration;
  for (const TrackSamples& track : *tracks) {
    if (track.samples == track.old_samples || earliest == nullptr) continue;
    const auto origin = static_cast<SInt64>(
        Rescale(static_cast<UInt64>(earliest->start_time), earliest->time_scale, track.time_scale));
    UInt64 duration = 0;
    const auto delay = static_cast<UInt64>(std::max(track.start_time - origin, SInt64{0}));
    const OSStatus status = UpdateTrack(track, header.time_scale, delay, &duration);
    if (status != noErr) return status;
    Atom* tkhd = track.track->Find("tkhd"_4cc);
    TrackHeader track_header;
    if (!ReadTrackHeader(*tkhd, &track_header)) return invalidTrack;
    if (track_header.duration < duration) SetTrackDuration(tkhd, duration);
    movie_duration = std::max(movie_duration, duration);
  }
  SetMovieDuration(mvhd, movie_duration);
  return noErr;
}

OSStatus WriteTables(TrackSamples* track, UInt64 file_size) {
  if (track->samples == track->old_samples) return noErr;
  WriteDependencies(*track);
  if (!WriteSyncs(*track, file_size) || !WriteSizes(*track, file_size)) return invalidSampleTable;
  track->groups.Write(track->samples, track->stbl);
  Atom& times = TableOf(track->stbl, "stts"_4cc);
  WriteRuns(track->times, VersionAndFlags(times), &times);
  WriteCompositions(track);
  WriteChunkRuns(*track);
  WriteChunkOffsets(*track);
  return noErr;
}

}  // namespace

OSStatus MergeFragments(std::span<const FragmentPlace> fragments, const FragmentReader& read,
                        UInt64 file_size, Atom* movie) {
  FragmentCollector collector(movie, file_size);
  OSStatus status = collector.Start();
  for (const FragmentPlace& place : fragments) {
    std::unique_ptr<Atom> fragment;
    if (status == noErr) status = read(place, &fragment);
    if (status == noErr) status = collector.Add(*fragment, place.offset);
    if (status != noErr) return status;
  }
  for (TrackSamples& track : collector.tracks()) {
    if (status == noErr) status = WriteTables(&track, file_size);
  }
  if (status == noErr) status = UpdateDurations(&collector.tracks(), movie);
  if (status != noErr) return status;
  movie->Remove("mvex"_4cc);
  return noErr;
}

}  // namespace quillmere::movies
