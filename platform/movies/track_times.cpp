// Tracks, of media_times.h.

#include <algorithm>
#include <optional>

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
  const SampleTable* table = nullptr;

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

using FirstStep = std::optional<MediaStep> (*)(const SampleTable&, SInt64);

/// Where the first thing that `first_step` finds at `time` or later shows in an edit; `time` is
/// behind the edit's begin.
std::optional<SInt64> FirstInside(const SampleTable& table, const EditSpan& span, SInt64 time,
                                  FirstStep first_step) {
  if (!span.moves_on()) return std::nullopt;
  const auto step = first_step(table, span.MediaTimeAt(time - 1) + 1);
  if (!step) return std::nullopt;
  const SInt64 shown = span.TrackTimeOf(step->time);
  // Behind the media's end nothing shows.
  const bool shows = shown < span.end() && span.MediaTimeAt(shown) < table.duration();
  return shows ? std::optional(shown) : std::nullopt;
}

std::optional<TrackStep> FirstMediaStep(const TrackView& view, SInt64 from, FirstStep first_step) {
  std::optional<TrackStep> found;
  view.ForEachSpan([&](const EditSpan& span) {
    if (span.is_empty() || span.end() <= from) return false;
    const auto begin = from <= span.begin() ? std::optional(span.begin())
                                            : FirstInside(*view.table, span, from, first_step);
    if (!begin) return false;
    const auto next = FirstInside(*view.table, span, *begin + 1, first_step);
    found = {*begin, next.value_or(span.end()) - *begin};
    return true;
  });
  return found;
}

std::optional<TrackStep> FirstEdit(const TrackView& view, SInt64 from) {
  std::optional<TrackStep> found;
  view.ForEachSpan([&](const EditSpan& span) {
    if (span.begin() < from) return false;
    found = {span.begin(), span.end() - span.begin()};
    return true;
  });
  return found;
}

TimeValue ToTimeValue(SInt64 time) {
  return static_cast<TimeValue>(std::min<SInt64>(time, kLongestTimeValue));
}

}  // namespace

TimeValue TrackTimeToMediaTime(TimeValue time, Track track) {
  TrackView view;
  if (NoteStatus(view.Open(track)) != noErr) return -1;
  TimeValue media_time = -1;
  view.ForEachSpan([&](const EditSpan& span) {
    if (time < span.begin() || time >= span.end()) return false;
    if (!span.is_empty()) media_time = ToTimeValue(span.MediaTimeAt(time));
    return true;
  });
  return media_time;
}

void GetTrackNextInterestingTime(Track track, SInt16 flags, TimeValue time, Fixed rate,
                                 TimeValue* interesting_time, TimeValue* duration) {
  if (interesting_time != nullptr) *interesting_time = -1;
  if (duration != nullptr) *duration = 0;
  TrackView view;
  OSStatus status = view.Open(track);
  const int kind = flags & ~nextTimeEdgeOK;
  if (status == noErr && time < 0) status = invalidTime;
  if (status == noErr && (rate <= 0 || (kind != nextTimeMediaSample && kind != nextTimeMediaEdit &&
                                        kind != nextTimeTrackEdit)))
    status = paramErr;
  if (status == noErr && kind != nextTimeTrackEdit)
    status = SampleTableOf(track->media.get(), &view.table);
  if (NoteStatus(status) != noErr) return;
  const SInt64 from = SInt64{time} + ((flags & nextTimeEdgeOK) != 0 ? 0 : 1);
  const auto step =
      kind == nextTimeTrackEdit
          ? FirstEdit(view, from)
          : FirstMediaStep(view, from,
                           kind == nextTimeMediaSample ? FirstSampleFrom : FirstRunFrom);
  if (!step || step->time > kLongestTimeValue) return;
  if (interesting_time != nullptr) *interesting_time = ToTimeValue(step->time);
  if (duration != nullptr) *duration = ToTimeValue(step->duration);
}
