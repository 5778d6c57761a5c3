#include "QT_Media_Intervals.h"

#include <cmath>

#include "QT_Movie_Info.h"
#include "fixed_point.h"
#include "interval_walks_private.h"

namespace {

using namespace quillmere;

/// A track with what its times are reckoned by.
struct TrackClock {
  Track track;
  Media media;
  SInt32 movie_scale;
  SInt32 media_scale;

  explicit TrackClock(Track of)
      : track(of),
        media(GetTrackMedia(of)),
        movie_scale(GetMovieTimeScale(GetTrackMovie(of))),
        media_scale(GetMediaTimeScale(media)) {}
  bool Runs() const { return movie_scale > 0 && media_scale > 0; }
  /// Media time units in one of the track's.
  double Ratio() const { return static_cast<double>(media_scale) / movie_scale; }
};

/// The end of the sample that holds a media time; nothing (false) outside the media.
bool SampleEndAt(Media media, SInt32 time, SInt32* end) {
  SInt32 number = 0;
  SInt32 begin = 0;
  SInt32 duration = 0;
  MediaTimeToSampleNum(media, time, &number, &begin, &duration);
  *end = begin + duration;
  return number > 0;
}

/// Tells if less than one track time unit, of so many media time units, lies between two times.
bool IsWithinUnit(SInt32 from, SInt32 to, double units) {
  return std::fabs((to - from) / units) < 1;
}

/// An interval of two track time units or more, of which the first and the last show t0 and t1.
LL_Interval LongInterval(const TrackClock& clock, SInt32 t0, SInt32 t1, SInt32 duration) {
  const double steps = duration - 1.0;
  const double units = (static_cast<double>(t1) - t0) / steps;  // of media time in one of the track
  const double k = duration / steps;
  const bool backwards = units < 0;
  LL_Interval interval = {nullptr, backwards ? t1 : t0, 0};
  const SInt32 other = backwards ? t0 : t1;
  SInt32 length = TruncatedUp((static_cast<double>(other) - interval.start) * k);
  SInt32 edge = 0;
  if (SampleEndAt(clock.media, interval.start, &edge) &&
      IsWithinUnit(interval.start, edge, units)) {
    interval.start = edge;
    length = TruncatedUp(k * (static_cast<double>(other) - edge));
  }
  interval.end = Truncated(static_cast<double>(interval.start) + length);
  if (interval.end < GetMediaDuration(clock.media) &&
      SampleEndAt(clock.media, interval.end, &edge) && IsWithinUnit(interval.end, edge, units))
    interval.end = edge;
  return interval;
}

SInt64 LengthOf(const LL_Interval* list) {
  SInt64 sum = 0;
  for (; list != nullptr; list = list->next)
    sum += SInt64{list->end} - list->start;
  return sum;
}

void Reduce(LL_Interval** list, Boolean reduce, Boolean* had_overlap) {
  bool lost = false;
  if (reduce) {
    const SInt64 before = LengthOf(*list);
    LL_OrderReduceIntervalList(ListHead(list));
    lost = LengthOf(*list) < before;
  }
  if (had_overlap != nullptr) *had_overlap = lost ? 1 : 0;
}

/// Widens an interval of the first and last media times shown to the samples that hold them.
void CloseOnSamples(Media media, LL_Interval* interval) {
  SInt32 begin = 0;
  MediaTimeToSampleNum(media, interval->start, nullptr, &begin, nullptr);
  if (begin >= 0) interval->start = begin;
  SInt32 end = 0;
  if (SampleEndAt(media, interval->end, &end)) interval->end = end;
}

/// Where the track's next edit behind a time begins; the largest time if there is none.
SInt32 NextEditBehind(Track track, SInt32 time) {
  GetTrackNextInterestingTime(track, nextTimeTrackEdit, time, kForwards, &time, nullptr);
  return time != -1 ? time : std::numeric_limits<SInt32>::max();
}

/// How far into the media that `intervals` names, back to back, an interval lies.
SInt64 OffsetWithin(const LL_Interval* intervals, const LL_Interval& wanted) {
  SInt64 offset = 0;
  for (; intervals != nullptr; intervals = intervals->next) {
    if (intervals->start <= wanted.start && wanted.end <= intervals->end)
      return offset + wanted.start - intervals->start;
    offset += SInt64{intervals->end} - intervals->start;
  }
  return offset;
}

/// Gives the destination one edit of the source that uses `interval`.
SInt32 CopyEdit(const TrackClock& source, const TrackClock& destination, const TimeSpan& edit,
                const LL_Interval& interval, SInt64 offset, int times) {
  const double media_ratio = static_cast<double>(destination.media_scale) / source.media_scale;
  const double movie_ratio = static_cast<double>(destination.movie_scale) / source.movie_scale;
  const double length = static_cast<double>(interval.end) - interval.start;
  const SInt32 new_offset = Truncated(
      static_cast<double>(TruncatedUp(static_cast<double>(offset) * media_ratio)) * times);
  const SInt32 new_length =
      Truncated(static_cast<double>(TruncatedUp(length * media_ratio)) * times);
  const SInt32 available = GetMediaDuration(destination.media);
  if (new_offset >= available) return GetMoviesError();
  const float rate = static_cast<float>(length) / static_cast<float>(source.media_scale) /
                     (static_cast<float>(edit.duration) / static_cast<float>(source.movie_scale));
  return InsertMediaIntoTrack(
      destination.track,
      Truncated(static_cast<double>(TruncatedUp(edit.time * movie_ratio)) * times), new_offset,
      std::min(new_length, available - new_offset),
      X2Fix(static_cast<double>(rate) * movie_ratio / media_ratio));
}

}  // namespace

void QT_TrackEditToMediaInterval(Track track, SInt32 trackTime, SInt32 trackDuration,
                                 LL_Interval* interval) {
  const TrackClock clock(track);
  const SInt32 media_duration = GetMediaDuration(clock.media);
  const SInt32 t0 = TrackTimeToMediaTime(trackTime, track);
  interval->start = -1;
  interval->end = -1;
  if (t0 == -1 || trackDuration <= 0 || !clock.Runs()) return;
  LL_Interval found = {nullptr, 0, 1};
  if (media_duration != 1 && trackDuration == 1) {
    const float ratio =
        static_cast<float>(clock.media_scale) / static_cast<float>(clock.movie_scale);
    const SInt32 units = TruncatedUp(static_cast<double>(ratio));
    found = {nullptr, t0, Truncated(static_cast<double>(t0) + std::max(units, 1))};
  } else if (media_duration != 1) {
    const SInt32 t1 = TrackTimeToMediaTime(trackTime + trackDuration - 1, track);
    if (t1 == -1) return;
    found = LongInterval(clock, t0, t1, trackDuration);
  }
  interval->start = found.start;
  interval->end = std::min(found.end, media_duration);
}

SInt32 QT_MakeMediaIntervalList(Track track, SInt32 startTime, SInt32 endTime, Boolean reduce,
                                LL_Interval** list, Boolean* hadOverlap) {
  ListBuilder<LL_Interval> builder(list);
  WalkTrack(track, nextTimeTrackEdit, startTime, [&](const TimeSpan& edit) {
    if (edit.time >= endTime || edit.duration <= 0) return false;
    if (TrackTimeToMediaTime(edit.time, track) == -1) return true;
    LL_Interval* interval = builder.Add();
    if (interval == nullptr) return false;
    QT_TrackEditToMediaInterval(track, edit.time, edit.duration, interval);
    return true;
  });
  Reduce(list, reduce, hadOverlap);
  return builder.status();
}

SInt32 QT_MakeMediaIntervalListNew(Track track, SInt32 startTime, SInt32 endTime, Boolean reduce,
                                   LL_Interval** list, SInt32* sampleCount, Boolean* hadOverlap) {
  ListBuilder<LL_Interval> builder(list);
  LL_Interval* interval = nullptr;
  Media media = GetTrackMedia(track);
  SInt32 count = 0;
  SInt32 edit_end = 0;
  WalkTrack(track, nextTimeMediaSample, startTime, [&](const TimeSpan& sample) {
    if (sample.time >= endTime || sample.duration <= 0) return false;
    const SInt32 media_time = TrackTimeToMediaTime(sample.time, track);
    if (interval == nullptr || sample.time >= edit_end) {
      if (interval != nullptr) CloseOnSamples(media, interval);
      edit_end = NextEditBehind(track, sample.time);
      interval = builder.Add();
      if (interval == nullptr) return false;
      interval->start = media_time;
    }
    interval->end = media_time;
    ++count;
    return true;
  });
  if (interval != nullptr) CloseOnSamples(media, interval);
  if (sampleCount != nullptr) *sampleCount = count;
  Reduce(list, reduce, hadOverlap);
  return builder.status();
}

SInt32 QT_MakeTrackEditList(Track track, QT_TrackEdit** list) {
  constexpr double kRateOfNothing = 65536.0;
  const TrackClock clock(track);
  ListBuilder<QT_TrackEdit> builder(list);
  WalkTrack(track, nextTimeTrackEdit, 0, [&](const TimeSpan& span) {
    QT_TrackEdit* edit = span.duration != 0 ? builder.Add() : nullptr;
    if (edit == nullptr) return false;
    LL_Interval interval = {};
    QT_TrackEditToMediaInterval(track, span.time, span.duration, &interval);
    edit->trackTime = span.time;
    edit->trackDuration = span.duration;
    edit->mediaTime = interval.start;
    edit->mediaDuration = interval.end - interval.start;
    edit->rate = edit->mediaDuration < 1
                     ? kRateOfNothing
                     : edit->mediaDuration / clock.Ratio() / edit->trackDuration;
    return true;
  });
  return builder.status();
}

void QT_PackMediaIntervalLists(const QT_IntervalListElement* lists, SInt32* packed) {
  *packed++ = LL_PtrListCount(lists);
  for (; lists != nullptr; lists = lists->next) {
    *packed++ = lists->key;
    *packed++ = LL_PtrListCount(lists->intervals);
    for (const LL_Interval* at = lists->intervals; at != nullptr; at = at->next) {
      *packed++ = at->start;
      *packed++ = at->end;
    }
  }
}

SInt32 QT_CopyTrackEditsUsingMediaIntervalList(Track source, Track destination,
                                               const LL_Interval* intervals, Boolean doubleTimes) {
  const TrackClock from(source);
  const TrackClock to(destination);
  if (!from.Runs() || !to.Runs()) return GetMoviesError() != noErr ? GetMoviesError() : paramErr;
  SInt32 status = noErr;
  WalkTrack(source, nextTimeTrackEdit, 0, [&](const TimeSpan& edit) {
    status = GetMoviesError();
    if (status != noErr || edit.duration <= 0) return false;
    LL_Interval interval = {};
    QT_TrackEditToMediaInterval(source, edit.time, edit.duration, &interval);
    if (interval.end > interval.start)
      status = CopyEdit(from, to, edit, interval, OffsetWithin(intervals, interval),
                        doubleTimes ? 2 : 1);
    return status == noErr;
  });
  return status;
}

SInt32 QT_GetTrackUsedMediaSizeAndSampleCount(Track track, SInt32 startTime, SInt32 endTime,
                                              SInt64* size, SInt32* sampleCount) {
  *size = 0;
  *sampleCount = 0;
  LL_Interval* list = nullptr;
  SInt32 status = QT_MakeMediaIntervalList(track, startTime, endTime, 1, &list, nullptr);
  Media media = GetTrackMedia(track);
  for (const LL_Interval* at = list; at != nullptr && status == noErr; at = at->next) {
    SInt64 bytes = 0;
    status = GetMediaDataSize64(media, at->start, at->end - at->start, &bytes);
    SInt32 first = 0;
    SInt32 last = 0;
    MediaTimeToSampleNum(media, at->start, &first, nullptr, nullptr);
    MediaTimeToSampleNum(media, at->end - 1, &last, nullptr, nullptr);
    if (status == noErr) status = GetMoviesError();
    if (status != noErr) break;
    *size += bytes;
    *sampleCount += last - first + 1;
  }
  LL_DisposeLinkedList(ListHead(&list));
  return status;
}

SInt32 QT_GetMovieUsedMediaSizeAndSampleCount(Movie movie, SInt32 startTime, SInt32 endTime,
                                              OSType trackType, SInt32 flags, Boolean enabledOnly,
                                              SInt64* size, SInt32* sampleCount) {
  *size = 0;
  *sampleCount = 0;
  if (enabledOnly) flags |= movieTrackEnabledOnly;
  for (SInt32 index = 1;; ++index) {
    Track track = GetMovieIndTrackType(movie, index, trackType, flags);
    if (track == nullptr) return GetMoviesError();
    SInt64 bytes = 0;
    SInt32 samples = 0;
    const SInt32 status =
        QT_GetTrackUsedMediaSizeAndSampleCount(track, startTime, endTime, &bytes, &samples);
    if (status != noErr) return status;
    *size += bytes;
    *sampleCount += samples;
  }
}
