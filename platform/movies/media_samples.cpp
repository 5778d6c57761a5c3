// Fetching samples, of media_editing.h and media_times.h.

#include <algorithm>
#include <cstring>
#include <limits>

#include "data_references.h"
#include "media_editing.h"
#include "sample_descriptions.h"
#include "toolbox_records.h"

using namespace quillmere::movies;

namespace {

constexpr UInt64 kPreferredChunk = UInt64{1} << 20;

template <class T, class U>
void Store(T* place, U value) {
  if (place != nullptr) *place = static_cast<T>(value);
}

TimeValue ToTimeValue(SInt64 time) {
  return static_cast<TimeValue>(std::clamp<SInt64>(time, -1, kLongestTimeValue));
}

/// Copies a description of the media into a handle, if there is one.
OSStatus CopyDescription(Media media, UInt32 index, Handle handle) {
  if (handle == nullptr) return noErr;
  const Atom* stbl = SampleTableAtom(*media->track);
  const Atom* stsd = stbl != nullptr ? stbl->Find("stsd"_4cc) : nullptr;
  if (stsd == nullptr || index == 0 || index > stsd->children().size()) return badImageDescription;
  std::vector<UInt8> record;
  const OSStatus status =
      MakeDescriptionRecord(stsd->children()[index - 1], MediaTypeOf(*media->track), &record);
  if (status != noErr) return status;
  SetHandleSize(handle, static_cast<Size>(record.size()));
  if (MemError() != noErr) return MemError();
  std::memcpy(*handle, record.data(), record.size());
  return noErr;
}

/// A walk over the media's runs from the sample that holds a time. One that a batch before ended
/// with goes on.
OSStatus WalkFrom(Media media, SInt64 time, SampleTable::RunWalk** walk) {
  if (media == nullptr) return invalidMedia;
  const SampleTable* table = nullptr;
  const OSStatus status = SampleTableOf(media, &table);
  if (status != noErr) return status;
  if (time < 0 || time >= table->duration()) return invalidTime;
  if (!media->walk || media->walk->decode_time() != time ||
      media->walk->sample() == table->sample_count()) {
    const auto sample = table->SampleAtTime(time);
    if (!sample) return invalidTime;
    media->walk.emplace(*table, *sample);
  }
  *walk = &*media->walk;
  return noErr;
}

struct Limits {
  UInt64 samples;  ///< 0 for as many as there are
  UInt64 bytes;
};

struct FetchedRun {
  SampleInfo first = {};
  UInt64 count = 0;
  UInt64 bytes = 0;
};

/// Cuts a run to limits; packets of sound stay whole. maxSizeToGrowTooSmall where not even one
/// sample fits.
OSStatus CutRun(const SampleTable& table, const Limits& limits, FetchedRun* run) {
  const DescriptionInfo& description = table.descriptions()[run->first.description - 1];
  const UInt64 unit = std::max<UInt64>(description.frames_per_packet, 1);
  UInt64 most = run->count;
  if (limits.samples != 0) most = std::min(most, limits.samples);
  if (limits.bytes != 0 && run->first.size != 0) {
    const UInt64 fit = limits.bytes / run->first.size * unit;
    if (fit == 0) return maxSizeToGrowTooSmall;
    most = std::min(most, fit);
  }
  if (most == run->count) return noErr;
  if (most > unit) most -= most % unit;
  run->bytes = (most + unit - 1) / unit * run->first.size;
  run->count = most;
  return noErr;
}

/// The samples from a time on, within limits. Of a run that is cut the rest is looked up anew.
OSStatus FetchRun(Media media, SInt64 time, const Limits& limits, FetchedRun* run) {
  SampleTable::RunWalk* walk = nullptr;
  OSStatus status = WalkFrom(media, time, &walk);
  if (status != noErr) return status;
  if (!walk->Next(&run->first, &run->count, &run->bytes)) return invalidTime;
  const UInt64 whole = run->count;
  status = CutRun(*media->table, limits, run);
  if (status != noErr || run->count != whole) media->walk.reset();
  return status;
}

/// The open file of a run, which lies within it; eofErr where it doesn't.
OSStatus SourceOfRun(Media media, const FetchedRun& run, std::shared_ptr<DataSource>* source) {
  OSStatus status = media->writer ? media->writer->Flush() : noErr;
  if (media->writer) ReopenSources(media->track->movie);
  const DescriptionInfo& description = media->table->descriptions()[run.first.description - 1];
  if (status == noErr) status = SourceOfReference(*media, description.data_reference, source);
  if (status != noErr) return status;
  const UInt64 size = (*source)->size();
  const bool is_within = run.first.offset <= size && run.bytes <= size - run.first.offset;
  return is_within ? OSStatus{noErr} : OSStatus{eofErr};
}

OSStatus ReadRun(const DataSource& source, const FetchedRun& run, UInt8* bytes) {
  return source.Read(run.first.offset, {bytes, static_cast<std::size_t>(run.bytes)});
}

SInt16 FlagsOf(const SampleInfo& sample) {
  return sample.is_sync ? SInt16{0} : mediaSampleNotSync;
}

/// What all fetches of one run tell.
void StoreRun(const FetchedRun& run, TimeValue* sample_time, TimeValue* duration,
              SInt32* description_index, SInt32* count, SInt16* flags) {
  Store(sample_time, ToTimeValue(run.first.decode_time));
  Store(duration, ToTimeValue(run.first.duration));
  Store(description_index, run.first.description);
  Store(count, std::min<UInt64>(run.count, kLongestTimeValue));
  Store(flags, FlagsOf(run.first));
}

/// The record of a run whose count and bytes fit 32 bits.
SampleReference64Record MakeReference(const FetchedRun& run) {
  return {static_cast<SInt64>(run.first.offset), static_cast<UInt32>(run.bytes),
          ToTimeValue(run.first.duration), static_cast<UInt32>(run.count), FlagsOf(run.first)};
}

}  // namespace

OSErr GetMediaSampleRuns(Media media, TimeValue time, TimeValue* sample_time,
                         SampleDescriptionHandle description, SInt32* description_index,
                         SInt32 most, SInt32* count, SampleReference64Record* references,
                         SInt32* display_offsets) {
  Store(count, 0);
  SampleTable::RunWalk* walk = nullptr;
  OSStatus status = WalkFrom(media, time, &walk);
  if (status != noErr) return Note(status);
  if (most < 0 || (most > 0 && references == nullptr)) return Note(paramErr);
  const UInt32 index = walk->NextDescription();
  const SInt64 start = walk->decode_time();
  status = CopyDescription(media, index, description);
  if (status != noErr) return Note(status);
  SInt32 made = 0;
  // Runs longer than the record's 32 bits can say go on in the next one.
  constexpr Limits kLimits = {std::numeric_limits<UInt32>::max(),
                              std::numeric_limits<UInt32>::max()};
  for (FetchedRun run; made < most && walk->NextDescription() == index; ++made) {
    if (!walk->Next(&run.first, &run.count, &run.bytes)) break;
    if (run.count > kLimits.samples || run.bytes > kLimits.bytes) {
      const UInt64 start_of_run = walk->sample() - run.count;
      CutRun(*media->table, kLimits, &run);
      *walk = SampleTable::RunWalk(*media->table, start_of_run + run.count);
    }
    references[made] = MakeReference(run);
    if (display_offsets != nullptr) display_offsets[made] = run.first.composition_offset;
  }
  Store(sample_time, ToTimeValue(start));
  Store(description_index, index);
  Store(count, made);
  return Note(noErr);
}

OSErr GetMediaSampleReferences64(Media media, TimeValue time, TimeValue* sample_time,
                                 SampleDescriptionHandle description, SInt32* description_index,
                                 SInt32 most, SInt32* count, SampleReference64Record* references) {
  return GetMediaSampleRuns(media, time, sample_time, description, description_index, most, count,
                            references, nullptr);
}

OSErr GetMediaSampleReferences(Media media, TimeValue time, TimeValue* sample_time,
                               SampleDescriptionHandle description, SInt32* description_index,
                               SInt32 most, SInt32* count, SampleReferenceRecord* references) {
  Store(count, 0);
  if (most < 0 || (most > 0 && references == nullptr)) return Note(paramErr);
  std::vector<SampleReference64Record> wide(static_cast<std::size_t>(std::min(most, 4096)));
  SInt32 made = 0;
  const OSErr status =
      GetMediaSampleReferences64(media, time, sample_time, description, description_index,
                                 static_cast<SInt32>(wide.size()), &made, wide.data());
  if (status != noErr) return status;
  for (SInt32 i = 0; i < made; ++i) {
    const SampleReference64Record& record = wide[static_cast<std::size_t>(i)];
    if (record.dataOffset > std::numeric_limits<SInt32>::max()) return Note(paramErr);
    references[i] = {static_cast<SInt32>(record.dataOffset), record.dataSize,
                     record.durationPerSample, record.numberOfSamples, record.sampleFlags};
  }
  Store(count, made);
  return noErr;
}

OSErr GetMediaSampleReference(Media media, SInt64* offset, ByteCount* size, TimeValue time,
                              TimeValue* sample_time, TimeValue* duration_per_sample,
                              SampleDescriptionHandle description, SInt32* description_index,
                              SInt32 most_samples, SInt32* sample_count, SInt16* sample_flags) {
  if (most_samples < 0) return Note(paramErr);
  FetchedRun run;
  OSStatus status = FetchRun(media, time, {static_cast<UInt64>(most_samples), 0}, &run);
  if (status == noErr) status = CopyDescription(media, run.first.description, description);
  if (status != noErr) return Note(status);
  Store(offset, run.first.offset);
  Store(size, run.bytes);
  StoreRun(run, sample_time, duration_per_sample, description_index, sample_count, sample_flags);
  return Note(noErr);
}

OSErr GetMediaSample(Media media, Handle data, ByteCount largest_size, ByteCount* size,
                     TimeValue time, TimeValue* sample_time, TimeValue* duration_per_sample,
                     SampleDescriptionHandle description, SInt32* description_index,
                     SInt32 most_samples, SInt32* sample_count, SInt16* sample_flags) {
  Store(size, 0);
  if (data == nullptr || most_samples < 0) return Note(data == nullptr ? nilHandleErr : paramErr);
  const auto most = static_cast<UInt64>(most_samples);
  FetchedRun run;
  OSStatus status = FetchRun(media, time, {most, largest_size}, &run);
  if (status == noErr && largest_size == 0 && run.first.size != 0) {
    const Limits limits = {most, std::max<UInt64>(run.first.size, kPreferredChunk)};
    const UInt64 whole = run.count;
    CutRun(*media->table, limits, &run);
    if (run.count != whole) media->walk.reset();
  }
  std::shared_ptr<DataSource> source;
  if (status == noErr) status = SourceOfRun(media, run, &source);
  if (status == noErr) status = CopyDescription(media, run.first.description, description);
  if (status != noErr) return Note(status);
  SetHandleSize(data, static_cast<::Size>(run.bytes));
  if (MemError() != noErr) return Note(MemError());
  status = ReadRun(*source, run, reinterpret_cast<UInt8*>(*data));
  if (status != noErr) return Note(status);
  Store(size, run.bytes);
  StoreRun(run, sample_time, duration_per_sample, description_index, sample_count, sample_flags);
  return Note(noErr);
}

OSErr GetMediaSample2(Media media, UInt8* data, ByteCount room, ByteCount* size, TimeValue64 time,
                      TimeValue64* sample_time, TimeValue64* duration_per_sample,
                      TimeValue64* display_offset, SampleDescriptionHandle description,
                      ItemCount* description_index, ItemCount most_samples, ItemCount* sample_count,
                      UInt32* sample_flags) {
  FetchedRun run;
  const Limits limits = {most_samples, kPreferredChunk};
  OSStatus status = FetchRun(media, time, limits, &run);
  if (status == maxSizeToGrowTooSmall)  // a sample larger than a chunk comes alone
    status = FetchRun(media, time, {1, 0}, &run);
  if (status == noErr) status = CopyDescription(media, run.first.description, description);
  if (status != noErr) return Note(status);
  Store(size, run.bytes);
  Store(sample_count, run.count);
  if (run.bytes > room || data == nullptr) {
    media->walk.reset();
    return Note(maxSizeToGrowTooSmall);
  }
  std::shared_ptr<DataSource> source;
  status = SourceOfRun(media, run, &source);
  if (status == noErr) status = ReadRun(*source, run, data);
  if (status != noErr) return Note(status);
  Store(sample_time, run.first.decode_time);
  Store(duration_per_sample, run.first.duration);
  Store(display_offset, run.first.composition_offset);
  Store(description_index, run.first.description);
  Store(sample_flags, FlagsOf(run.first));
  return Note(noErr);
}

OSErr GetMediaPreferredChunkSize(Media media, SInt32* size) {
  Store(size, kPreferredChunk);
  return Note(media != nullptr ? noErr : OSStatus{invalidMedia});
}
