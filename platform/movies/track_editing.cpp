#include "track_editing.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "big_endian.h"
#include "data_references.h"
#include "display_order.h"
#include "edits_private.h"
#include "new_atoms.h"
#include "sample_copier.h"
#include "track_references.h"

using namespace quillmere::movies;

namespace {

constexpr Fixed kNormalRate = 0x10000;

Scales ScalesOf(const TrackRecord& track) {
  return {MovieHeaderOf(*track.movie).time_scale, MediaHeaderOf(track).time_scale};
}

/// The movie is as long as its longest track.
void NoteMovieDuration(MovieRecord* movie) {
  UInt64 longest = 0;
  for (const auto& track : movie->tracks)
    longest = std::max(longest, TrackHeaderOf(*track).duration);
  SetMovieDuration(movie->file.movie->Find("mvhd"_4cc), longest);
}

/// Reads a track's edits for a change of a segment that begins within it.
OSStatus OpenSegment(Track track, TimeValue time, TimeValue duration, Scales* scales,
                     std::vector<EditRecord>* edits) {
  if (track == nullptr) return invalidTrack;
  *scales = ScalesOf(*track);
  if (scales->movie == 0) return invalidMovie;
  if (!EditsOf(*track, edits)) return badEditList;
  if (time < 0 || static_cast<UInt64>(time) > LengthOf(*edits)) return invalidTime;
  return duration < 0 ? OSStatus{invalidDuration} : noErr;
}

/// Splits the edits so that a segment, cut to their length, consists of whole ones: from `*first`
/// to in front of `*end`.
void Isolate(UInt64 time, UInt64 duration, const Scales& scales, std::vector<EditRecord>* edits,
             std::size_t* first, std::size_t* end) {
  const UInt64 length = LengthOf(*edits);
  *first = OpenAt(time, scales, edits);
  *end = OpenAt(std::min(time + duration, length), scales, edits);
}

auto At(std::vector<EditRecord>* edits, std::size_t place) {
  return edits->begin() + static_cast<std::ptrdiff_t>(place);
}

/// Samples that an edit needs, in decode order, and where they come to lie.
struct SampleSpan {
  UInt64 first;
  UInt64 end;
  UInt64 destination_time = 0;
};

/// The least and greatest display offset of a table.
void FindOffsets(const SampleTable& table, SInt64* least, SInt64* greatest) {
  *least = *greatest = 0;
  if (!table.has_composition_offsets()) return;
  SampleTable::RunWalk walk(table, 0);
  SampleInfo sample = {};
  UInt64 count = 0;
  UInt64 size = 0;
  while (walk.Next(&sample, &count, &size)) {
    *least = std::min<SInt64>(*least, sample.composition_offset);
    *greatest = std::max<SInt64>(*greatest, sample.composition_offset);
  }
}

/// How many samples of sound a decoder has to hear before one it plays: as a group of samples
/// tells, or one where frames overlap.
UInt64 PrerollOf(const TrackRecord& track) {
  constexpr std::size_t kDistance = 16;  // behind version, flags, type, entry size and count
  if (MediaTypeOf(track) != "soun"_4cc) return 0;
  const Atom* stbl = SampleTableAtom(track);
  UInt64 preroll = 0;
  for (const Atom& child : stbl->children()) {
    const std::span<const UInt8> bytes = child.payload();
    if (child.type() != "sgpd"_4cc || bytes.size() < kDistance + 2 || bytes[0] == 0) continue;
    if (quillmere::ReadU32(bytes.data() + 4) != "roll"_4cc) continue;
    const SInt16 distance = quillmere::ReadS16(bytes.data() + kDistance);
    if (distance < 0) preroll = static_cast<UInt64>(-SInt32{distance});
  }
  const Atom* stsd = stbl->Find("stsd"_4cc);
  const bool overlaps =
      stsd != nullptr && !stsd->children().empty() && stsd->children().front().type() == "mp4a"_4cc;
  return overlaps ? std::max<UInt64>(preroll, 1) : preroll;
}

/// Copies what a segment's edits show from one media to another.
class SegmentCopy {
 public:
  SegmentCopy(MediaRecord* source, MediaRecord* destination)
      : source_(*source), destination_(*destination) {}

  /// Turns media times of the edits into those of the destination.
  OSStatus Run(std::vector<EditRecord>* edits) {
    OSStatus status = SampleTableOf(&source_, &table_);
    if (status != noErr) return status;
    FindOffsets(*table_, &least_, &greatest_);
    preroll_ = PrerollOf(*source_.track);
    CollectSpans(*edits);
    SampleCopier copier(&source_, &destination_);
    for (SampleSpan& span : spans_) {
      status = copier.Copy(span.first, span.end - span.first, &span.destination_time);
      if (status != noErr) return status;
    }
    for (EditRecord& edit : *edits)
      MoveEdit(&edit);
    return noErr;
  }

 private:
  SInt64 MediaLength(const EditRecord& edit) const {
    const Scales scales = ScalesOf(*source_.track);
    const UInt64 played = Rescale(edit.track_duration, scales.media, scales.movie);
    return static_cast<SInt64>(
        Rescale(played, static_cast<UInt32>(std::max(edit.media_rate, 0)), 0x10000));
  }

  /// The samples of an edit: all that may be shown in it, from a sample on that needs no other.
  SampleSpan SpanOf(const EditRecord& edit) const {
    const SInt64 last_time = table_->duration() - 1;
    const auto sample_at = [&](SInt64 time) {
      return table_->SampleAtTime(std::clamp<SInt64>(time, 0, last_time)).value_or(0);
    };
    UInt64 first = sample_at(edit.media_time - greatest_);
    first -= std::min(first, preroll_);
    const UInt64 last =
        sample_at(edit.media_time + std::max<SInt64>(MediaLength(edit), 1) - 1 - least_);
    return {table_->SyncSampleUpTo(first), last + 1};
  }

  void CollectSpans(const std::vector<EditRecord>& edits) {
    if (table_->sample_count() == 0) return;
    for (const EditRecord& edit : edits) {
      if (edit.media_time != kEmptyEdit) spans_.push_back(SpanOf(edit));
    }
    std::ranges::sort(spans_, {}, &SampleSpan::first);
    std::vector<SampleSpan> joined;
    for (const SampleSpan& span : spans_) {
      if (!joined.empty() && span.first <= joined.back().end) {
        joined.back().end = std::max(joined.back().end, span.end);
      } else {
        joined.push_back(span);
      }
    }
    spans_ = std::move(joined);
  }

  void MoveEdit(EditRecord* edit) const {
    if (edit->media_time == kEmptyEdit || spans_.empty()) return;
    const UInt64 first = SpanOf(*edit).first;
    const auto after = std::ranges::upper_bound(spans_, first, {}, &SampleSpan::first);
    const SampleSpan& span = *std::prev(after);
    SInt64 begin = 0;
    SInt64 duration = 0;
    table_->TimeOfSample(span.first, &begin, &duration);
    const SInt64 within = edit->media_time - begin;
    const UInt32 from = MediaHeaderOf(*source_.track).time_scale;
    const UInt32 to = MediaHeaderOf(*destination_.track).time_scale;
    const auto magnitude =
        static_cast<SInt64>(Rescale(static_cast<UInt64>(std::abs(within)), to, from));
    const SInt64 moved = within < 0 ? -magnitude : magnitude;
    edit->media_time = std::max<SInt64>(static_cast<SInt64>(span.destination_time) + moved, 0);
  }

  MediaRecord& source_;
  MediaRecord& destination_;
  const SampleTable* table_ = nullptr;
  SInt64 least_ = 0;
  SInt64 greatest_ = 0;
  UInt64 preroll_ = 0;
  std::vector<SampleSpan> spans_;
};

/// Gives edits of one movie durations in another's time scale, without drift.
void RescaleEdits(UInt32 from, UInt32 to, std::vector<EditRecord>* edits) {
  if (from == to) return;
  UInt64 end = 0;
  for (EditRecord& edit : *edits) {
    const UInt64 begin = end;
    end += edit.track_duration;
    edit.track_duration = Rescale(end, to, from) - Rescale(begin, to, from);
  }
}

/// The `dref` with one entry, for a reference or, where that is null, for the movie's own file.
Atom MakeReferences(Handle data_reference, OSType type) {
  Atom entry(data_reference != nullptr ? type : "alis"_4cc);
  std::vector<UInt8> bytes(4);
  if (data_reference != nullptr) {
    const auto* data = reinterpret_cast<const UInt8*>(*data_reference);
    bytes.insert(bytes.end(), data, data + GetHandleSize(data_reference));
  } else {
    bytes[3] = 1;
  }
  entry.set_payload(std::move(bytes));
  Atom dref("dref"_4cc);
  dref.set_payload({0, 0, 0, 0, 0, 0, 0, 1});
  dref.Add(std::move(entry));
  return dref;
}

/// The file that a reference given for a copy of a track names: one of the track's own is found
/// where that is.
OSStatus PathOfGiven(const MediaRecord& media, Handle data_reference, OSType type,
                     std::filesystem::path* path) {
  const Atom wanted = MakeReferences(data_reference, type).children().front();
  const Atom* dref =
      TrackAtom(*media.track).FindPath({"mdia"_4cc, "minf"_4cc, "dinf"_4cc, "dref"_4cc});
  for (std::size_t i = 0; dref != nullptr && i < dref->children().size(); ++i) {
    const Atom& entry = dref->children()[i];
    if (entry.type() == type && std::ranges::equal(entry.payload(), wanted.payload()))
      return PathOfReference(media, static_cast<UInt16>(i + 1), path);
  }
  return PathOfDataReference(data_reference, type, path);
}

/// Takes samples, edits and references out of a copy of a track.
OSStatus EmptyTrack(Handle data_reference, OSType type, Atom* trak) {
  trak->Remove("tref"_4cc);
  trak->Remove("edts"_4cc);
  Atom edts("edts"_4cc);
  edts.Add(Atom("elst"_4cc)).set_payload(std::vector<UInt8>(8));
  trak->Insert(trak->children().empty() ? 0 : 1, std::move(edts));
  Atom* mdhd = trak->FindPath({"mdia"_4cc, "mdhd"_4cc});
  Atom* minf = trak->FindPath({"mdia"_4cc, "minf"_4cc});
  if (mdhd == nullptr || minf == nullptr || !SetMediaDuration(mdhd, 0)) return invalidMedia;
  minf->Remove("dinf"_4cc);
  minf->Remove("stbl"_4cc);
  minf->Add(Atom("dinf"_4cc)).Add(MakeReferences(data_reference, type));
  minf->Add(MakeEmptySampleTable());
  return noErr;
}

/// Copies the movie's own settings, without its tracks, into a new movie.
std::unique_ptr<MovieRecord> CopySettings(const MovieRecord& movie) {
  auto copy = std::make_unique<MovieRecord>();
  copy->file.movie = std::make_unique<Atom>("moov"_4cc);
  for (const Atom& child : movie.file.movie->children()) {
    if (child.type() != "trak"_4cc) copy->file.movie->Add(child);
  }
  SetMovieDuration(copy->file.movie->Find("mvhd"_4cc), 0);
  copy->aperture_mode = movie.aperture_mode;
  copy->trusts_references = true;
  return copy;
}

/// A handle of a media's first data reference; null where it has none.
Handle FirstReference(const MediaRecord& media) {
  std::filesystem::path path;
  if (PathOfReference(media, 1, &path) != noErr) return nullptr;
  const std::vector<UInt8> alias = AliasRecordOf(path);
  Handle handle = nullptr;
  PtrToHand(alias.data(), &handle, static_cast<Size>(alias.size()));
  return handle;
}

/// Copies the track's part of a selection into another movie; a track without any stays out.
OSStatus CopySelected(Track track, TimeValue time, TimeValue duration, Movie movie, Track* copy) {
  *copy = nullptr;
  const TimeValue length = GetTrackDuration(track);
  if (!track->media || time >= length || duration < 1) return noErr;
  Handle reference = FirstReference(*track->media);
  OSStatus status = AddEmptyTrackToMovie(track, movie, reference, "alis"_4cc, copy);
  DisposeHandle(reference);
  if (status == noErr)
    status = InsertTrackSegment(track, *copy, time, std::min(duration, length - time), 0);
  return status;
}

/// Lets copies of tracks refer to each other as the originals do.
void CopyReferences(const std::vector<std::pair<Track, Track>>& copies) {
  for (const auto& [track, copy] : copies) {
    const Atom* tref = TrackAtom(*track).Find("tref"_4cc);
    if (tref == nullptr) continue;
    for (const Atom& references : tref->children()) {
      const SInt32 count = GetTrackReferenceCount(track, references.type());
      for (SInt32 i = 1; i <= count; ++i) {
        Track other = GetTrackReference(track, references.type(), i);
        const auto found = std::ranges::find(copies, other, &std::pair<Track, Track>::first);
        if (found != copies.end())
          AddTrackReference(copy, found->second, references.type(), nullptr);
      }
    }
  }
}

}  // namespace

OSErr AddEmptyTrackToMovie(Track source, Movie movie, Handle data_reference, OSType type,
                           Track* track) {
  if (track == nullptr) return Note(paramErr);
  *track = nullptr;
  if (source == nullptr || !source->media) return Note(invalidTrack);
  if (movie == nullptr) return Note(invalidMovie);
  std::filesystem::path path;
  if (data_reference != nullptr) {
    const OSStatus status = PathOfGiven(*source->media, data_reference, type, &path);
    if (status != noErr) return Note(status);
  }
  Atom trak = TrackAtom(*source);
  const OSStatus status = EmptyTrack(data_reference, type, &trak);
  if (status != noErr) return Note(status);
  TrackHeader header = TrackHeaderOf(*source);
  header.duration = 0;
  Track made = NewMovieTrack(movie, 0, 0, 0);
  if (made == nullptr) return GetMoviesError();
  header.id = TrackHeaderOf(*made).id;
  WriteTrackHeader(trak.Find("tkhd"_4cc), header);
  TrackAtom(*made) = std::move(trak);
  made->media = std::make_unique<MediaRecord>();
  made->media->track = made;
  if (!path.empty()) made->media->given.push_back({path, nullptr});
  *track = made;
  return Note(noErr);
}

OSErr InsertTrackSegment(Track source, Track destination, TimeValue source_time,
                         TimeValue source_duration, TimeValue destination_time) {
  Scales scales = {};
  std::vector<EditRecord> edits;
  OSStatus status = OpenSegment(source, source_time, source_duration, &scales, &edits);
  if (status != noErr) return Note(status);
  if (destination == nullptr || !source->media || !destination->media ||
      MediaTypeOf(*source) != MediaTypeOf(*destination))
    return Note(invalidTrack);
  if (destination_time < 0) return Note(invalidTime);
  if (scales.media == 0) return Note(invalidMedia);
  std::size_t first = 0;
  std::size_t end = 0;
  Isolate(static_cast<UInt64>(source_time), static_cast<UInt64>(source_duration), scales, &edits,
          &first, &end);
  std::vector<EditRecord> segment(At(&edits, first), At(&edits, end));
  if (source->media != destination->media)
    status = SegmentCopy(source->media.get(), destination->media.get()).Run(&segment);
  if (status != noErr) return Note(status);
  const Scales other = ScalesOf(*destination);
  RescaleEdits(scales.movie, other.movie, &segment);
  std::vector<EditRecord> result;
  if (!EditsOf(*destination, &result)) return Note(badEditList);
  const std::size_t place = OpenAt(static_cast<UInt64>(destination_time), other, &result);
  result.insert(At(&result, place), segment.begin(), segment.end());
  return Note(StoreEdits(*destination, result));
}

OSErr InsertEmptyTrackSegment(Track track, TimeValue time, TimeValue duration) {
  Scales scales = {};
  std::vector<EditRecord> edits;
  const OSStatus status = OpenSegment(track, time, duration, &scales, &edits);
  if (status != noErr || duration == 0) return Note(status);
  const std::size_t place = OpenAt(static_cast<UInt64>(time), scales, &edits);
  edits.insert(At(&edits, place), {static_cast<UInt64>(duration), kEmptyEdit, kNormalRate});
  return Note(StoreEdits(*track, edits));
}

OSErr DeleteTrackSegment(Track track, TimeValue time, TimeValue duration) {
  Scales scales = {};
  std::vector<EditRecord> edits;
  OSStatus status = OpenSegment(track, time, duration, &scales, &edits);
  if (status != noErr) return Note(status);
  std::size_t first = 0;
  std::size_t end = 0;
  Isolate(static_cast<UInt64>(time), static_cast<UInt64>(duration), scales, &edits, &first, &end);
  edits.erase(At(&edits, first), At(&edits, end));
  track->is_new = true;  // a track without edits shows nothing now
  status = StoreEdits(*track, edits);
  NoteMovieDuration(track->movie);
  return Note(status);
}

OSErr ScaleTrackSegment(Track track, TimeValue time, TimeValue old_duration,
                        TimeValue new_duration) {
  Scales scales = {};
  std::vector<EditRecord> edits;
  OSStatus status = OpenSegment(track, time, old_duration, &scales, &edits);
  if (status != noErr) return Note(status);
  if (old_duration < 1 || new_duration < 1) return Note(invalidDuration);
  std::size_t first = 0;
  std::size_t end = 0;
  Isolate(static_cast<UInt64>(time), static_cast<UInt64>(old_duration), scales, &edits, &first,
          &end);
  const auto from = static_cast<UInt32>(old_duration);
  const auto to = static_cast<UInt32>(new_duration);
  std::vector<EditRecord> segment(At(&edits, first), At(&edits, end));
  RescaleEdits(from, to, &segment);
  for (EditRecord& edit : segment) {
    const UInt64 rate = Rescale(static_cast<UInt32>(std::max(edit.media_rate, 0)), from, to);
    if (edit.media_time != kEmptyEdit)
      edit.media_rate = static_cast<Fixed>(std::clamp<UInt64>(rate, 1, kLongestTimeValue));
  }
  std::ranges::copy(segment, At(&edits, first));
  status = StoreEdits(*track, edits);
  NoteMovieDuration(track->movie);
  return Note(status);
}

Fixed GetTrackEditRate64(Track track, TimeValue64 time) {
  std::vector<EditRecord> edits;
  if (track == nullptr || !EditsOf(*track, &edits)) {
    NoteStatus(track == nullptr ? invalidTrack : badEditList);
    return 0;
  }
  NoteStatus(noErr);
  UInt64 end = 0;
  for (const EditRecord& edit : edits) {
    end += edit.track_duration;
    if (time >= 0 && static_cast<UInt64>(time) < end)
      return edit.media_time != kEmptyEdit ? edit.media_rate : 0;
  }
  return 0;
}

void GetMovieSelection(Movie movie, TimeValue* time, TimeValue* duration) {
  NoteStatus(movie != nullptr ? noErr : OSStatus{invalidMovie});
  if (time != nullptr) *time = movie != nullptr ? movie->selection_time : 0;
  if (duration != nullptr) *duration = movie != nullptr ? movie->selection_duration : 0;
}

void SetMovieSelection(Movie movie, TimeValue time, TimeValue duration) {
  const bool is_good = movie != nullptr && time >= 0 && duration >= 0;
  NoteStatus(is_good ? noErr : movie == nullptr ? OSStatus{invalidMovie} : OSStatus{invalidTime});
  if (!is_good) return;
  movie->selection_time = time;
  movie->selection_duration = duration;
}

Movie CopyMovieSelection(Movie movie) {
  if (movie == nullptr) {
    NoteStatus(invalidMovie);
    return nullptr;
  }
  std::unique_ptr<MovieRecord> copy = CopySettings(*movie);
  std::vector<std::pair<Track, Track>> copies;
  for (const auto& track : movie->tracks) {
    Track made = nullptr;
    const OSStatus status = CopySelected(track.get(), movie->selection_time,
                                         movie->selection_duration, copy.get(), &made);
    if (status != noErr) {
      NoteStatus(status);
      return nullptr;
    }
    if (made != nullptr) copies.emplace_back(track.get(), made);
  }
  CopyReferences(copies);
  NoteStatus(noErr);
  return copy.release();
}
