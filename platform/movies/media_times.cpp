// Media, of media_times.h.

#include "media_times.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "media_steps.h"
#include "sample_descriptions.h"
#include "toolbox_records.h"

using namespace quillmere::movies;

namespace {

TimeValue ToTimeValue(SInt64 time) {
  return static_cast<TimeValue>(std::clamp<SInt64>(time, -1, kLongestTimeValue));
}

template <class T>
void Store(T* place, T value) {
  if (place != nullptr) *place = value;
}

/// The media's samples; null, with the status noted, if there are none to look into.
const SampleTable* TableOf(Media media) {
  const SampleTable* table = nullptr;
  NoteStatus(media != nullptr ? SampleTableOf(media, &table) : OSStatus{invalidMedia});
  return table;
}

/// Copies a description of the media into a handle.
OSStatus CopyDescription(Media media, UInt32 index, Handle handle) {
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

/// Stores a sample's times; false if there is none of that number.
bool StoreTimes(const SampleTable& table, UInt64 sample, TimeValue* begin, TimeValue* duration) {
  SInt64 sample_begin = 0;
  SInt64 sample_duration = 0;
  if (!table.TimeOfSample(sample, &sample_begin, &sample_duration)) return false;
  Store(begin, ToTimeValue(sample_begin));
  Store(duration, ToTimeValue(sample_duration));
  return true;
}

SampleReference64Record MakeReference(const SampleInfo& first, UInt64 count, UInt64 size) {
  constexpr UInt64 kMost = std::numeric_limits<UInt32>::max();
  // Runs longer than the record's 32 bits can say go on in the next one.
  if (size > kMost) {
    count = std::max<UInt64>(kMost / std::max<UInt64>(first.size, 1), 1);
    size = std::min(count * first.size, kMost);
  }
  return {static_cast<SInt64>(first.offset), static_cast<UInt32>(size), ToTimeValue(first.duration),
          static_cast<UInt32>(std::min(count, kMost)),
          first.is_sync ? SInt16{0} : mediaSampleNotSync};
}

}  // namespace

void GetMediaNextInterestingTime(Media media, SInt16 flags, TimeValue time, Fixed rate,
                                 TimeValue* interesting_time, TimeValue* duration) {
  Store(interesting_time, -1);
  Store(duration, 0);
  const SampleTable* table = TableOf(media);
  if (table == nullptr) return;
  const int kind = flags & ~nextTimeEdgeOK;
  if (time < 0) {
    NoteStatus(invalidTime);
    return;
  }
  if (rate <= 0 || (kind != nextTimeMediaSample && kind != nextTimeMediaEdit)) {
    NoteStatus(paramErr);
    return;
  }
  const SInt64 from = SInt64{time} + ((flags & nextTimeEdgeOK) != 0 ? 0 : 1);
  const auto step =
      kind == nextTimeMediaSample ? FirstSampleFrom(*table, from) : FirstRunFrom(*table, from);
  if (!step) return;
  Store(interesting_time, ToTimeValue(step->time));
  Store(duration, ToTimeValue(step->duration));
}

SInt32 GetMediaSampleCount(Media media) {
  const SampleTable* table = TableOf(media);
  if (table == nullptr) return 0;
  return static_cast<SInt32>(std::min<UInt64>(table->sample_count(), kLongestTimeValue));
}

void MediaTimeToSampleNum(Media media, TimeValue time, SInt32* number, TimeValue* sample_time,
                          TimeValue* sample_duration) {
  Store(number, 0);
  Store(sample_time, -1);
  Store(sample_duration, 0);
  const SampleTable* table = TableOf(media);
  if (table == nullptr) return;
  const auto sample = table->SampleAtTime(time);
  if (!sample || !StoreTimes(*table, *sample, sample_time, sample_duration)) {
    NoteStatus(invalidTime);
    return;
  }
  Store(number, static_cast<SInt32>(*sample + 1));
}

void SampleNumToMediaTime(Media media, SInt32 number, TimeValue* sample_time,
                          TimeValue* sample_duration) {
  Store(sample_time, -1);
  Store(sample_duration, 0);
  const SampleTable* table = TableOf(media);
  if (table == nullptr) return;
  const bool is_found = number > 0 && StoreTimes(*table, static_cast<UInt64>(number) - 1,
                                                 sample_time, sample_duration);
  if (!is_found) NoteStatus(paramErr);
}

OSErr GetMediaDataSize64(Media media, TimeValue start, TimeValue duration, SInt64* size) {
  Store(size, SInt64{0});
  const SampleTable* table = TableOf(media);
  if (table == nullptr) return GetMoviesError();
  if (start < 0 || duration < 0) return static_cast<OSErr>(NoteStatus(invalidTime));
  const SInt64 end = std::min(SInt64{start} + duration, table->duration());
  const auto first = table->SampleAtTime(start);
  const auto last = table->SampleAtTime(end - 1);
  if (first && last && *last >= *first)
    Store(size, static_cast<SInt64>(table->SizeOfSamples(*first, *last - *first + 1)));
  return noErr;
}

OSErr GetMediaSampleReferences64(Media media, TimeValue time, TimeValue* sample_time,
                                 SampleDescriptionHandle description, SInt32* description_index,
                                 SInt32 most, SInt32* count, SampleReference64Record* references) {
  Store(count, 0);
  const auto fail = [](OSStatus status) { return static_cast<OSErr>(NoteStatus(status)); };
  const SampleTable* table = TableOf(media);
  if (table == nullptr) return GetMoviesError();
  if (most < 0 || (most > 0 && references == nullptr)) return fail(paramErr);
  const auto first = table->SampleAtTime(time);
  SampleInfo start = {};
  if (!first || !table->SampleAt(*first, &start)) return fail(invalidTime);
  const OSStatus status =
      description != nullptr ? CopyDescription(media, start.description, description) : noErr;
  if (status != noErr) return fail(status);
  SInt32 made = 0;
  for (UInt64 sample = *first; made < most; ++made) {
    SampleInfo info = {};
    UInt64 samples = 0;
    UInt64 size = 0;
    if (!table->RunAt(sample, &info, &samples, &size) || info.description != start.description)
      break;
    references[made] = MakeReference(info, samples, size);
    sample += references[made].numberOfSamples;
  }
  Store(sample_time, ToTimeValue(start.decode_time));
  Store(description_index, static_cast<SInt32>(start.description));
  Store(count, made);
  NoteStatus(noErr);
  return noErr;
}
