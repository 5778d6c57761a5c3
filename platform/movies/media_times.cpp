// Media, of media_times.h.

#include "media_times.h"

#include <algorithm>

#include "media_steps.h"
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

/// Stores a sample's times; false if there is none of that number.
bool StoreTimes(const SampleTable& table, UInt64 sample, TimeValue* begin, TimeValue* duration) {
  SInt64 sample_begin = 0;
  SInt64 sample_duration = 0;
  if (!table.TimeOfSample(sample, &sample_begin, &sample_duration)) return false;
  Store(begin, ToTimeValue(sample_begin));
  Store(duration, ToTimeValue(sample_duration));
  return true;
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
  if (start < 0 || duration < 0) return Note(invalidTime);
  const SInt64 end = std::min(SInt64{start} + duration, table->duration());
  const auto first = table->SampleAtTime(start);
  const auto last = table->SampleAtTime(end - 1);
  if (first && last && *last >= *first)
    Store(size, static_cast<SInt64>(table->SizeOfSamples(*first, *last - *first + 1)));
  return noErr;
}
