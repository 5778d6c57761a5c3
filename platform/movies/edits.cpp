#include <algorithm>
#include <utility>

#include "display_order.h"
#include "edits_private.h"

namespace quillmere::movies {

UInt64 Rescale(UInt64 value, UInt64 multiplier, UInt64 divisor) {
  __extension__ using Wide = unsigned __int128;
  const Wide scaled = (Wide{value} * multiplier + divisor / 2) / divisor;
  return static_cast<UInt64>(std::min<Wide>(scaled, 0x7FFFFFFFFFFFFFFFULL));
}

UInt64 LengthOf(const std::vector<EditRecord>& edits) {
  UInt64 length = 0;
  for (const EditRecord& edit : edits)
    length += edit.track_duration;
  return length;
}

std::size_t OpenAt(UInt64 start, const Scales& scales, std::vector<EditRecord>* edits) {
  UInt64 time = 0;
  for (std::size_t i = 0; i < edits->size(); ++i) {
    EditRecord& edit = (*edits)[i];
    if (start == time) return i;
    if (start < time + edit.track_duration) {
      EditRecord rest = edit;
      edit.track_duration = start - time;
      rest.track_duration -= edit.track_duration;
      if (rest.media_time != kEmptyEdit) {
        const UInt64 played = Rescale(edit.track_duration, scales.media, scales.movie);
        rest.media_time += static_cast<SInt64>(
            Rescale(played, static_cast<UInt32>(std::max(edit.media_rate, 0)), 0x10000));
      }
      edits->insert(edits->begin() + static_cast<std::ptrdiff_t>(i) + 1, rest);
      return i + 1;
    }
    time += edit.track_duration;
  }
  if (start > time) edits->push_back({start - time, kEmptyEdit, 0x10000});
  return edits->size();
}

namespace {

Atom* EditListAtom(const TrackRecord& track) {
  Atom& trak = TrackAtom(track);
  Atom* edts = trak.Find("edts"_4cc);
  if (edts == nullptr) edts = &trak.Add(Atom("edts"_4cc));
  Atom* elst = edts->Find("elst"_4cc);
  if (elst == nullptr) {
    elst = &edts->Add(Atom("elst"_4cc));
    elst->set_payload(std::vector<UInt8>(8));
  }
  return elst;
}

}  // namespace

OSStatus StoreEdits(const TrackRecord& track, const std::vector<EditRecord>& edits) {
  WriteEditList(EditListAtom(track), edits);
  const UInt64 length = LengthOf(edits);
  Atom* tkhd = TrackAtom(track).Find("tkhd"_4cc);
  if (tkhd == nullptr || !SetTrackDuration(tkhd, length)) return invalidDuration;
  Atom* mvhd = track.movie->file.movie->Find("mvhd"_4cc);
  if (length > FullDurationOf(*track.movie) && !SetMovieDuration(mvhd, length)) {
    return invalidDuration;
  }
  return noErr;
}

}  // namespace quillmere::movies

using namespace quillmere::movies;

namespace {

/// When the last sample of a media ends, which with display offsets is behind its decode times.
UInt64 DisplayEnd(MediaRecord* media) {
  DisplayView view;
  return view.Open(media) == noErr ? static_cast<UInt64>(view.end()) : 0;
}

/// What an insertion plays: the media range, and how long in movie time.
struct Insertion {
  UInt64 media_time;
  UInt64 media_duration;
  UInt64 track_duration;
  Fixed rate;
};

/// The edits of an insertion: one, or as many repetitions as it takes to fill a movie that is
/// longer than a sample can last.
std::vector<EditRecord> EditsOfInsertion(const Insertion& insertion, const Scales& scales) {
  const UInt64 once =
      Rescale(Rescale(insertion.media_duration, 0x10000, static_cast<UInt32>(insertion.rate)),
              scales.movie, scales.media);
  std::vector<EditRecord> edits;
  for (UInt64 left = insertion.track_duration; left > 0;) {
    const UInt64 length = once > 0 ? std::min(left, once) : left;
    edits.push_back({length, static_cast<SInt64>(insertion.media_time), insertion.rate});
    left -= length;
    constexpr std::size_t kMaximumRepetitions = 4096;
    if (edits.size() == kMaximumRepetitions) break;
  }
  return edits;
}

}  // namespace

OSErr InsertMediaIntoTrack(Track track, TimeValue track_start, TimeValue media_time,
                           TimeValue media_duration, Fixed media_rate) {
  if (track == nullptr) return invalidTrack;
  if (!track->media) return invalidMedia;
  const MovieRecord& movie = *track->movie;
  const Scales scales = {MovieHeaderOf(movie).time_scale, MediaHeaderOf(*track).time_scale};
  if (scales.movie == 0 || scales.media == 0) return invalidMedia;
  if (track_start < -1 || media_time < 0) return invalidTime;
  if (media_duration < 1 || media_rate <= 0) return invalidDuration;

  UInt64 available = MediaHeaderOf(*track).duration;
  if (UInt64{static_cast<UInt32>(media_time)} + static_cast<UInt32>(media_duration) > available)
    available = std::max(available, DisplayEnd(track->media.get()));
  Insertion insertion = {static_cast<UInt64>(media_time), static_cast<UInt64>(media_duration), 0,
                         media_rate};
  const UInt64 movie_duration = FullDurationOf(movie);
  if (media_duration == kLongestTimeValue && movie_duration > kLongestTimeValue) {
    if (insertion.media_time >= available) return invalidTime;
    insertion.media_duration = available - insertion.media_time;
    insertion.track_duration = movie_duration;
  } else {
    if (insertion.media_time + insertion.media_duration > available) return invalidTime;
    insertion.track_duration =
        Rescale(Rescale(insertion.media_duration, 0x10000, static_cast<UInt32>(media_rate)),
                scales.movie, scales.media);
  }

  std::vector<EditRecord> edits;
  if (!EditsOf(*track, &edits)) return badEditList;
  const UInt64 start = track_start == -1 ? LengthOf(edits) : static_cast<UInt64>(track_start);
  const std::size_t place = OpenAt(start, scales, &edits);
  const std::vector<EditRecord> added = EditsOfInsertion(insertion, scales);
  edits.insert(edits.begin() + static_cast<std::ptrdiff_t>(place), added.begin(), added.end());
  return static_cast<OSErr>(StoreEdits(*track, edits));
}
