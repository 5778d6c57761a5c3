// Tracks, of media_times.h.

#include <algorithm>
#include <optional>

#include "display_order.h"
#include "media_steps.h"
#include "media_times.h"
#include "toolbox_records.h"

using namespace quillmere::movies;

namespace {

__extension__ using Wide = __int128;

Wide FloorDivide(Wide a, Wide b) {  // b is above 0
  return a >= 0 ? a / b : -((b - 1 - a) / b);
}

SInt64 Clamped(Wide time) {
  constexpr Wide kMost = Wide{1} << 62;
  return static_cast<SInt64>(std::clamp<Wide>(time, -kMost, kMost));
}

/// What an edit does with times: it shows the media from `media_begin` on during `begin` to `end`.
class EditSpan {
 public:
  EditSpan(const EditRecord& edit, SInt64 begin, UInt32 movie_scale, UInt32 media_scale)
      : begin_(begin),
        end_(begin + static_cast<SInt64>(std::min<UInt64>(edit.track_duration, SInt64{1} << 48))),
        media_begin_(edit.media_time),
        media_units_(Wide{media_scale} * edit.media_rate),
        track_units_(Wide{movie_scale} << 16) {}

  SInt64 begin() const { return begin_; }
  SInt64 end() const { return end_; }
  bool is_empty() const { return media_begin_ == kEmptyEdit; }
  /// A still position has no further samples.
  bool moves_on() const { return !is_empty() && media_units_ > 0; }

  /// Rounded to the nearest unit, halves up.
  SInt64 MediaTimeAt(SInt64 time) const {
    const Wide played =
        FloorDivide(2 * Wide{time - begin_} * media_units_ + track_units_, 2 * track_units_);
    return std::max(Clamped(media_begin_ + played), SInt64{0});
  }
  /// The first time that shows a media time, or passes over it.
  SInt64 TrackTimeOf(SInt64 media_time) const {
    const Wide twice = (2 * (Wide{media_time} - media_begin_) - 1) * track_units_;
    return Clamped(begin_ - FloorDivide(-twice, 2 * media_units_));
  }

 private:
  SInt64 begin_;
  SInt64 end_;
  SInt64 media_begin_;
  Wide media_units_;
  Wide track_units_;
};

struct TrackStep {
  SInt64 time;
  SInt64 duration;
};

/// A track with what is needed to look into it.
struct TrackView {
  std::vector<EditRecord> edits;
  UInt32 movie_scale = 0;
  UInt32 media_scale = 0;
  DisplayView shown;

  OSStatus Open(Track track) {
    if (track == nullptr) return invalidTrack;
    if (!track->media) return invalidMedia;
    if (!EditsOf(*track, &edits)) return badEditList;
    movie_scale = MovieHeaderOf(*track->movie).time_scale;
    media_scale = MediaHeaderOf(*track).time_scale;
    return movie_scale == 0 || media_scale == 0 ? OSStatus{invalidMedia} : noErr;
  }

  /// Calls `visit` with the span of each edit that has a duration until it gives true.
  template <class Visit>
  void ForEachSpan(Visit visit) const {
    SInt64 begin = 0;
    for (const EditRecord& edit : edits) {
      const EditSpan span(edit, begin, movie_scale, media_scale);
      if (span.end() > begin && visit(span)) return;
      begin = span.end();
    }
  }
};

/// What is looked for: the first thing of a kind that begins in the media at a time or later.
using FirstStep = std::optional<MediaStep> (*)(const DisplayView&, SInt64);

std::optional<MediaStep> FirstSample(const DisplayView& view, SInt64 time) {
  const auto shown = view.FirstFrom(time);
  return shown ? std::optional(MediaStep{shown->begin, shown->duration}) : std::nullopt;
}

std::optional<MediaStep> FirstSyncSample(const DisplayView& view, SInt64 time) {
  for (auto shown = view.FirstFrom(time); shown; shown = view.FirstFrom(shown->begin + 1)) {
    SampleInfo sample = {};
    if (view.table().SampleAt(shown->sample, &sample) && sample.is_sync)
      return MediaStep{shown->begin, shown->duration};
  }
  return std::nullopt;
}

std::optional<MediaStep> FirstRun(const DisplayView& view, SInt64 time) {
  return FirstRunFrom(view.table(), time);
}

/// The begin, and whether a sync sample, of what is shown at a media time.
std::optional<SInt64> BeginAt(const DisplayView& view, SInt64 media_time) {
  const auto shown = view.LastUpTo(media_time);
  return shown ? std::optional(shown->begin) : std::nullopt;
}

/// Where the first thing that `first_step` finds at `time` or later shows in an edit; `time` is
/// behind the edit's begin.
std::optional<SInt64> FirstInside(const DisplayView& view, const EditSpan& span, SInt64 time,
                                  FirstStep first_step) {
  if (!span.moves_on()) return std::nullopt;
  const auto step = first_step(view, span.MediaTimeAt(time - 1) + 1);
  if (!step) return std::nullopt;
  const SInt64 shown = span.TrackTimeOf(step->time);
  // Behind the media's end nothing shows.
  const bool shows = shown < span.end() && span.MediaTimeAt(shown) < view.end();
  return shows ? std::optional(shown) : std::nullopt;
}

TrackStep StepAt(const TrackView& view, const EditSpan& span, SInt64 begin, FirstStep first_step) {
  const auto next = FirstInside(view.shown, span, begin + 1, first_step);
  return {begin, next.value_or(span.end()) - begin};
}

std::optional<TrackStep> FirstMediaStep(const TrackView& view, SInt64 from, FirstStep first_step) {
  std::optional<TrackStep> found;
  view.ForEachSpan([&](const EditSpan& span) {
    if (span.is_empty() || span.end() <= from) return false;
    const auto begin = from <= span.begin() ? std::optional(span.begin())
                                            : FirstInside(view.shown, span, from, first_step);
    if (!begin) return false;
    found = StepAt(view, span, *begin, first_step);
    return true;
  });
  return found;
}

/// The last step in an edit that begins before `limit`; the edit begins before it.
TrackStep LastInside(const TrackView& view, const EditSpan& span, SInt64 limit,
                     FirstStep first_step) {
  if (!span.moves_on()) return StepAt(view, span, span.begin(), first_step);
  // Steps of the kind are looked for from ever earlier samples on.
  SInt64 time = std::min(limit, span.end()) - 1;
  SInt64 media_time = std::min(span.MediaTimeAt(time), view.shown.end() - 1);
  while (time > span.begin()) {
    const auto begin = BeginAt(view.shown, media_time);
    if (!begin) break;
    const auto step = first_step(view.shown, *begin);
    time = std::max(span.TrackTimeOf(*begin), span.begin());
    if (step && step->time == *begin && time < limit) return StepAt(view, span, time, first_step);
    media_time = *begin - 1;
  }
  return StepAt(view, span, span.begin(), first_step);
}

std::optional<TrackStep> LastMediaStep(const TrackView& view, SInt64 limit, FirstStep first_step) {
  std::optional<TrackStep> found;
  view.ForEachSpan([&](const EditSpan& span) {
    if (span.begin() >= limit) return true;
    if (!span.is_empty()) found = LastInside(view, span, limit, first_step);
    return false;
  });
  return found;
}

/// The first edit from a time on, or the last one before it.
std::optional<TrackStep> FindEdit(const TrackView& view, SInt64 time, bool forward) {
  std::optional<TrackStep> found;
  view.ForEachSpan([&](const EditSpan& span) {
    if (forward && span.begin() < time) return false;
    if (!forward && span.begin() >= time) return true;
    found = {span.begin(), span.end() - span.begin()};
    return forward;
  });
  return found;
}

/// The search that flags ask for; null for edits of the track, nothing for other flags.
std::optional<FirstStep> SearchOf(int kind) {
  switch (kind) {
    case nextTimeMediaSample:
    case nextTimeStep:
      return FirstSample;
    case nextTimeMediaEdit:
      return FirstRun;
    case nextTimeSyncSample:
      return FirstSyncSample;
    case nextTimeTrackEdit:
      return nullptr;
    default:
      return std::nullopt;
  }
}

/// What begins first at a time or behind it, or, backwards, last at it or before.
OSStatus FindStep(Track track, SInt16 flags, SInt64 time, Fixed rate,
                  std::optional<TrackStep>* found) {
  TrackView view;
  found->reset();
  const auto search = SearchOf(flags & ~nextTimeEdgeOK);
  OSStatus status = view.Open(track);
  if (status == noErr && time < 0) status = invalidTime;
  if (status == noErr && (rate == 0 || !search)) status = paramErr;
  if (status == noErr && *search != nullptr) status = view.shown.Open(track->media.get());
  if (status != noErr) return status;
  const bool edge = (flags & nextTimeEdgeOK) != 0;
  const SInt64 from = rate > 0 ? time + (edge ? 0 : 1) : time + (edge ? 1 : 0);
  if (*search == nullptr) {
    *found = FindEdit(view, from, rate > 0);
  } else {
    *found = rate > 0 ? FirstMediaStep(view, from, *search) : LastMediaStep(view, from, *search);
  }
  return noErr;
}

TimeValue ToTimeValue(SInt64 time) {
  return static_cast<TimeValue>(std::min<SInt64>(time, kLongestTimeValue));
}

}  // namespace

TimeValue64 TrackTimeToMediaDisplayTime(TimeValue64 time, Track track) {
  TrackView view;
  if (NoteStatus(view.Open(track)) != noErr) return -1;
  TimeValue64 media_time = -1;
  view.ForEachSpan([&](const EditSpan& span) {
    if (time < span.begin() || time >= span.end()) return false;
    if (!span.is_empty()) media_time = span.MediaTimeAt(time);
    return true;
  });
  return media_time;
}

TimeValue TrackTimeToMediaTime(TimeValue time, Track track) {
  return ToTimeValue(TrackTimeToMediaDisplayTime(time, track));
}

void GetTrackNextInterestingTime(Track track, SInt16 flags, TimeValue time, Fixed rate,
                                 TimeValue* interesting_time, TimeValue* duration) {
  if (interesting_time != nullptr) *interesting_time = -1;
  if (duration != nullptr) *duration = 0;
  std::optional<TrackStep> step;
  if (NoteStatus(FindStep(track, flags, time, rate, &step)) != noErr) return;
  if (!step || step->time > kLongestTimeValue) return;
  if (interesting_time != nullptr) *interesting_time = ToTimeValue(step->time);
  if (duration != nullptr) *duration = ToTimeValue(step->duration);
}

void GetMovieNextInterestingTime(Movie movie, SInt16 flags, SInt16 type_count, const OSType* types,
                                 TimeValue time, Fixed rate, TimeValue* interesting_time,
                                 TimeValue* duration) {
  if (interesting_time != nullptr) *interesting_time = -1;
  if (duration != nullptr) *duration = 0;
  if (movie == nullptr || type_count < 0 || (type_count > 0 && types == nullptr)) {
    NoteStatus(movie == nullptr ? OSStatus{invalidMovie} : paramErr);
    return;
  }
  std::optional<TrackStep> nearest;
  const auto is_nearer = [&](SInt64 other) {
    return !nearest || (rate > 0 ? other < nearest->time : other > nearest->time);
  };
  std::vector<Track> tracks;
  for (const auto& track : movie->tracks) {
    const bool counts =
        track->media && (TrackHeaderOf(*track).flags & kTrackEnabled) != 0 &&
        (type_count == 0 || std::any_of(types, types + type_count, [&](OSType type) {
           return MediaTypeOf(*track) == type || HasCharacteristic(*track, type);
         }));
    if (counts) tracks.push_back(track.get());
  }
  for (Track track : tracks) {
    std::optional<TrackStep> step;
    if (NoteStatus(FindStep(track, flags, time, rate, &step)) != noErr) return;
    if (!step) continue;
    if (is_nearer(step->time)) {
      nearest = step;
    } else if (step->time == nearest->time) {
      nearest->duration = std::max(nearest->duration, step->duration);
    }
  }
  NoteStatus(noErr);
  if (!nearest || nearest->time > kLongestTimeValue) return;
  // A step ends where another track's begins.
  const auto kind = static_cast<SInt16>(flags & ~nextTimeEdgeOK);
  for (Track track : tracks) {
    std::optional<TrackStep> next;
    if (tracks.size() > 1 && FindStep(track, kind, nearest->time, 0x10000, &next) == noErr && next)
      nearest->duration = std::min(nearest->duration, next->time - nearest->time);
  }
  if (interesting_time != nullptr) *interesting_time = ToTimeValue(nearest->time);
  if (duration != nullptr) *duration = ToTimeValue(nearest->duration);
}
