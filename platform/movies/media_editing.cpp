// Adding samples, of media_editing.h.

#include "media_editing.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "data_references.h"
#include "sample_descriptions.h"
#include "toolbox_records.h"

using namespace quillmere::movies;

namespace {

/// A sample's duration in full: that of a movie longer than a TimeValue can say is cut only where
/// the sample table's 32 bits end.
UInt32 FullSampleDuration(const MediaRecord& media, SInt64 duration) {
  constexpr SInt64 kMost = std::numeric_limits<UInt32>::max();
  const UInt64 of_movie = FullDurationOf(*media.track->movie);
  const bool is_whole_movie =
      duration == kLongestTimeValue && of_movie > kLongestTimeValue &&
      MediaHeaderOf(*media.track).time_scale == MovieHeaderOf(*media.track->movie).time_scale;
  if (is_whole_movie) duration = static_cast<SInt64>(std::min<UInt64>(of_movie, kMost));
  return static_cast<UInt32>(std::min(duration, kMost));
}

/// Puts a description into the media's `stsd`. Samples with data lie in data reference 1; others
/// in the one the description names, 1 if the media has none of that index.
OSStatus TakeDescription(MediaRecord* media, SampleDescriptionHandle description, bool with_data,
                         UInt32* index, DescriptionInfo* packets) {
  const std::span record(reinterpret_cast<const UInt8*>(*description),
                         static_cast<std::size_t>(GetHandleSize(description)));
  Atom entry(0);
  const OSType type = MediaTypeOf(*media->track);
  const OSStatus status = MakeDescriptionAtom(record, type, &entry);
  if (status != noErr) return status;
  const UInt16 named = DataReferenceOfDescription(entry).value_or(0);
  const bool is_there = named >= 1 && named <= CountReferences(*media);
  if (!SetDataReferenceOfDescription(&entry, with_data || !is_there ? UInt16{1} : named))
    return badImageDescription;
  *packets = type == "soun"_4cc ? ReadSoundPackets(entry) : DescriptionInfo{};
  return AddDescription(media, std::move(entry), index);
}

/// The size of each of `count` samples as the size table tells it; false if the bytes aren't those
/// of so many samples. Frames of sound in packets of many have the size 1.
bool SizeOfEach(UInt64 bytes, UInt32 count, const DescriptionInfo& packets, UInt32* size) {
  if (packets.frames_per_packet > 1 && count > 1) {
    const UInt64 whole =
        (count + UInt64{packets.frames_per_packet} - 1) / packets.frames_per_packet;
    if (whole * packets.bytes_per_packet == bytes) {
      *size = 1;
      return true;
    }
  }
  if (bytes % count != 0 || bytes / count > std::numeric_limits<UInt32>::max()) return false;
  *size = static_cast<UInt32>(bytes / count);
  return true;
}

/// Adds runs behind the media's samples; the begin of the first goes to `time`.
class SampleAdder {
 public:
  explicit SampleAdder(MediaRecord* media) : media_(*media) {}

  OSStatus Begin(SampleDescriptionHandle description, bool with_data) {
    if (description == nullptr || *description == nullptr) return nilHandleErr;
    OSStatus status = DurationOfSamples(&media_, &start_);
    if (status == noErr)
      status = TakeDescription(&media_, description, with_data, &description_, &packets_);
    return status;
  }
  OSStatus Add(const SampleReference64Record& record, SInt64 duration, SInt32 display_offset) {
    if (duration < 1) return invalidDuration;
    if (record.dataOffset < 0 || record.numberOfSamples < 1) return paramErr;
    NewSampleRun run = {};
    run.offset = static_cast<UInt64>(record.dataOffset);
    run.bytes = record.dataSize;
    run.count = record.numberOfSamples;
    if (!SizeOfEach(run.bytes, run.count, packets_, &run.size)) return paramErr;
    run.duration = FullSampleDuration(media_, duration);
    run.composition_offset = display_offset;
    run.description = description_;
    run.is_sync = (record.sampleFlags & mediaSampleNotSync) == 0;
    return media_.added.Add(run);
  }
  /// Tells the media's header how long it is now.
  OSStatus End(TimeValue64* time) {
    const OSStatus status = NoteMediaDuration(&media_);
    if (status != noErr) return status;
    if (time != nullptr) *time = static_cast<SInt64>(start_);
    return noErr;
  }

 private:
  MediaRecord& media_;
  UInt64 start_ = 0;
  UInt32 description_ = 0;
  DescriptionInfo packets_ = {};
};

void StoreTime(TimeValue64 time, TimeValue* place) {
  if (place != nullptr) *place = static_cast<TimeValue>(std::min<SInt64>(time, kLongestTimeValue));
}

}  // namespace

namespace quillmere::movies {

OSStatus AddDescription(MediaRecord* media, Atom entry, UInt32* index) {
  constexpr std::size_t kMost = 0xFFFF;
  Atom* stbl = SampleTableAtom(*media->track);
  if (stbl == nullptr) return invalidMedia;
  Atom* stsd = stbl->Find("stsd"_4cc);
  if (stsd == nullptr) {
    stsd = &stbl->Insert(0, Atom("stsd"_4cc));
    stsd->set_payload(std::vector<UInt8>(8));
  }
  if (stsd->payload().size() < 8) return invalidMedia;
  std::vector<UInt8> wanted;
  entry.Write(&wanted);
  const std::vector<Atom>& present = stsd->children();
  for (std::size_t i = 0; i < present.size(); ++i) {
    if (present[i].Size() != wanted.size()) continue;
    std::vector<UInt8> bytes;
    present[i].Write(&bytes);
    *index = static_cast<UInt32>(i + 1);
    if (bytes == wanted) return noErr;
  }
  if (present.size() >= kMost) return invalidSampleTable;
  stsd->Add(std::move(entry));
  *index = static_cast<UInt32>(stsd->children().size());
  stsd->mutable_payload()[7] = static_cast<UInt8>(*index);
  stsd->mutable_payload()[6] = static_cast<UInt8>(*index >> 8);
  // The table knows its descriptions: it is read again with the new one.
  const SampleTable* table = nullptr;
  const OSStatus status = SampleTableOf(media, &table);
  media->table.reset();
  media->walk.reset();
  media->decoding.reset();
  return status;
}

OSStatus NoteMediaDuration(MediaRecord* media) {
  UInt64 duration = 0;
  const OSStatus status = DurationOfSamples(media, &duration);
  if (status != noErr) return status;
  Atom* mdhd = TrackAtom(*media->track).FindPath({"mdia"_4cc, "mdhd"_4cc});
  if (mdhd == nullptr || !SetMediaDuration(mdhd, duration)) return invalidMedia;
  media->display.reset();
  return noErr;
}

}  // namespace quillmere::movies

OSErr AddMediaSampleRuns(Media media, SampleDescriptionHandle description, SInt32 count,
                         const SampleReference64Record* references, const SInt32* display_offsets,
                         TimeValue* sample_time) {
  if (media == nullptr) return Note(invalidMedia);
  if (count < 0 || (count > 0 && references == nullptr)) return Note(paramErr);
  SampleAdder adder(media);
  OSStatus status = adder.Begin(description, false);
  for (SInt32 i = 0; i < count && status == noErr; ++i)
    status = adder.Add(references[i], references[i].durationPerSample,
                       display_offsets != nullptr ? display_offsets[i] : 0);
  TimeValue64 time = 0;
  const OSStatus ended = adder.End(&time);
  if (status == noErr) status = ended;
  if (status == noErr) StoreTime(time, sample_time);
  return Note(status);
}

OSErr AddMediaSampleReferences64(Media media, SampleDescriptionHandle description, SInt32 count,
                                 const SampleReference64Record* references,
                                 TimeValue* sample_time) {
  return AddMediaSampleRuns(media, description, count, references, nullptr, sample_time);
}

OSErr AddMediaSampleReferences(Media media, SampleDescriptionHandle description, SInt32 count,
                               const SampleReferenceRecord* references, TimeValue* sample_time) {
  if (count < 0 || (count > 0 && references == nullptr)) return Note(paramErr);
  std::vector<SampleReference64Record> wide(static_cast<std::size_t>(count));
  std::transform(references, references + count, wide.begin(), [](const auto& narrow) {
    return SampleReference64Record{static_cast<UInt32>(narrow.dataOffset), narrow.dataSize,
                                   narrow.durationPerSample, narrow.numberOfSamples,
                                   narrow.sampleFlags};
  });
  return AddMediaSampleReferences64(media, description, count, wide.data(), sample_time);
}

OSErr AddMediaSampleReference(Media media, SInt64 offset, UInt32 size,
                              TimeValue duration_per_sample, SampleDescriptionHandle description,
                              SInt32 sample_count, SInt16 sample_flags, TimeValue* sample_time) {
  if (sample_count < 1) return Note(paramErr);
  const SampleReference64Record record = {offset, size, duration_per_sample,
                                          static_cast<UInt32>(sample_count), sample_flags};
  return AddMediaSampleReferences64(media, description, 1, &record, sample_time);
}

OSErr BeginMediaEdits(Media media) {
  if (media == nullptr) return Note(invalidMedia);
  if (media->edits == 0) {
    std::filesystem::path path;
    OSStatus status = PathOfReference(*media, 1, &path);
    if (status == noErr) status = MediaDataWriter::Open(path, &media->writer);
    if (status != noErr) return Note(status);
  }
  ++media->edits;
  return Note(noErr);
}

OSErr EndMediaEdits(Media media) {
  if (media == nullptr) return Note(invalidMedia);
  if (media->edits == 0) return Note(noMediaEdits);
  if (--media->edits > 0) return Note(media->writer->Flush());
  const OSStatus status = MediaDataWriter::Release(&media->writer);
  ReopenSources(media->track->movie);
  return Note(status);
}

OSErr AddMediaSample2(Media media, const UInt8* data, ByteCount size,
                      TimeValue64 duration_per_sample, TimeValue64 display_offset,
                      SampleDescriptionHandle description, ItemCount sample_count,
                      UInt32 sample_flags, TimeValue64* sample_time) {
  constexpr UInt64 kMost = std::numeric_limits<UInt32>::max();
  constexpr SInt64 kFarthest = std::numeric_limits<SInt32>::max();
  if (media == nullptr) return Note(invalidMedia);
  if (!media->writer) return Note(noMediaEdits);
  if (data == nullptr || size > kMost || sample_count < 1 || sample_count > kMost ||
      display_offset > kFarthest || display_offset < -kFarthest - 1)
    return Note(paramErr);
  SampleAdder adder(media);
  OSStatus status = adder.Begin(description, true);
  UInt64 offset = 0;
  if (status == noErr)
    status = media->writer->Append({data, static_cast<std::size_t>(size)}, &offset);
  if (status == noErr) {
    const SampleReference64Record record = {static_cast<SInt64>(offset), static_cast<UInt32>(size),
                                            0, static_cast<UInt32>(sample_count),
                                            static_cast<SInt16>(sample_flags & 0xFFFF)};
    status = adder.Add(record, duration_per_sample, static_cast<SInt32>(display_offset));
  }
  if (status == noErr) status = adder.End(sample_time);
  return Note(status);
}

OSErr AddMediaSample(Media media, Handle data, SInt64 offset, ByteCount size,
                     TimeValue duration_per_sample, SampleDescriptionHandle description,
                     SInt32 sample_count, SInt16 sample_flags, TimeValue* sample_time) {
  if (data == nullptr || *data == nullptr) return Note(nilHandleErr);
  const auto held = static_cast<UInt64>(GetHandleSize(data));
  const auto start = static_cast<UInt64>(offset);
  if (offset < 0 || start > held || size > held - start || sample_count < 1) return Note(paramErr);
  TimeValue64 time = 0;
  const OSErr status = AddMediaSample2(
      media, reinterpret_cast<const UInt8*>(*data) + start, size, duration_per_sample, 0,
      description, static_cast<ItemCount>(sample_count), static_cast<UInt16>(sample_flags), &time);
  if (status == noErr) StoreTime(time, sample_time);
  return status;
}
