// Media by display time, of media_times.h.

#include <algorithm>

#include "display_order.h"
#include "media_times.h"
#include "toolbox_records.h"

using namespace quillmere::movies;

namespace {

/// A view of a media, with the status noted.
bool Open(Media media, DisplayView* view) {
  return NoteStatus(media != nullptr ? view->Open(media) : OSStatus{invalidMedia}) == noErr;
}

bool IsWanted(const DisplayView& view, const ShownSample& shown, int kind) {
  SampleInfo sample = {};
  return kind != nextTimeSyncSample ||
         (view.table().SampleAt(shown.sample, &sample) && sample.is_sync);
}

}  // namespace

Boolean MediaContainsDisplayOffsets(Media media) {
  DisplayView view;
  return Open(media, &view) && view.table().has_composition_offsets();
}

TimeValue64 GetMediaDisplayStartTime(Media media) {
  DisplayView view;
  return Open(media, &view) ? view.begin() : 0;
}

TimeValue64 GetMediaDisplayDuration(Media media) {
  DisplayView view;
  return Open(media, &view) ? view.end() - view.begin() : 0;
}

TimeValue64 GetMediaDecodeDuration(Media media) {
  DisplayView view;
  return Open(media, &view) ? view.table().duration() : 0;
}

void SampleNumToMediaDisplayTime(Media media, SInt32 number, TimeValue64* sample_time,
                                 TimeValue64* sample_duration) {
  if (sample_time != nullptr) *sample_time = -1;
  if (sample_duration != nullptr) *sample_duration = 0;
  DisplayView view;
  if (!Open(media, &view)) return;
  SampleInfo sample = {};
  if (number < 1 || !view.table().SampleAt(static_cast<UInt64>(number) - 1, &sample)) {
    NoteStatus(paramErr);
    return;
  }
  const SInt64 begin = sample.decode_time + sample.composition_offset;
  const auto shown = view.LastUpTo(begin);
  if (sample_time != nullptr) *sample_time = begin;
  if (sample_duration != nullptr) *sample_duration = shown ? shown->duration : sample.duration;
}

void GetMediaNextInterestingDisplayTime(Media media, SInt16 flags, TimeValue64 time, Fixed rate,
                                        TimeValue64* interesting_time, TimeValue64* duration) {
  if (interesting_time != nullptr) *interesting_time = -1;
  if (duration != nullptr) *duration = 0;
  DisplayView view;
  if (!Open(media, &view)) return;
  const int kind = flags & ~nextTimeEdgeOK;
  const bool is_kind =
      kind == nextTimeMediaSample || kind == nextTimeStep || kind == nextTimeSyncSample;
  if (rate == 0 || !is_kind) {
    NoteStatus(paramErr);
    return;
  }
  const bool forward = rate > 0;
  const bool edge = (flags & nextTimeEdgeOK) != 0;
  const SInt64 from = time + (edge ? 0 : forward ? 1 : -1);
  auto shown = forward ? view.FirstFrom(from) : view.LastUpTo(from);
  while (shown && !IsWanted(view, *shown, kind))
    shown = forward ? view.FirstFrom(shown->begin + 1) : view.LastUpTo(shown->begin - 1);
  if (!shown) return;
  if (interesting_time != nullptr) *interesting_time = shown->begin;
  if (duration != nullptr) *duration = shown->duration;
}

OSErr MediaGetNextStepTime(MediaHandler handler, SInt16 flags, TimeValue time, TimeValue* next_time,
                           Fixed rate) {
  if (next_time == nullptr) return Note(paramErr);
  TimeValue64 found = -1;
  GetMediaNextInterestingDisplayTime(handler, flags, time, rate, &found, nullptr);
  *next_time = static_cast<TimeValue>(std::min<SInt64>(found, kLongestTimeValue));
  return GetMoviesError();
}

OSErr GetMediaDataSizeTime64(Media media, TimeValue64 start, TimeValue64 duration, SInt64* size) {
  if (size != nullptr) *size = 0;
  DisplayView view;
  if (!Open(media, &view)) return GetMoviesError();
  if (duration < 0 || start < view.begin()) return Note(invalidTime);
  const SInt64 end = duration < view.end() - start ? start + duration : view.end();
  UInt64 bytes = 0;
  if (!view.table().has_composition_offsets()) {
    const auto first = view.table().SampleAtTime(start);
    const auto last = view.table().SampleAtTime(end - 1);
    if (first && last && *last >= *first)
      bytes = view.table().SizeOfSamples(*first, *last - *first + 1);
  } else {
    for (auto shown = view.FirstFrom(start); shown && shown->begin < end;
         shown = view.FirstFrom(shown->begin + std::max<SInt64>(shown->duration, 1)))
      bytes += view.table().SizeOfSamples(shown->sample, 1);
  }
  if (size != nullptr) *size = static_cast<SInt64>(bytes);
  return Note(noErr);
}
