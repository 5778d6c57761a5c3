#include <algorithm>
#include <limits>
#include <utility>

#include "new_atoms.h"
#include "toolbox_records.h"
#include "track_geometry.h"

using namespace quillmere::movies;

namespace {

/// An id that no track has: the one that the movie's header offers if it is free.
UInt32 FreeTrackId(const MovieRecord& movie) {
  constexpr UInt32 kNone = std::numeric_limits<UInt32>::max();
  std::vector<UInt32> used;
  for (const auto& track : movie.tracks)
    used.push_back(TrackHeaderOf(*track).id);
  std::sort(used.begin(), used.end());
  UInt32 id = MovieHeaderOf(movie).next_track_id;
  if (!used.empty() && used.back() != kNone) id = std::max(id, used.back() + 1);
  if (id != 0 && id != kNone && !std::binary_search(used.begin(), used.end(), id)) return id;
  id = 1;
  for (const UInt32 taken : used) {
    if (taken == id) ++id;
  }
  return id;
}

/// Puts a `trak` behind the last one, so that the order of the others' tracks and of what follows
/// stays.
void InsertTrackAtom(Atom* moov, Atom trak) {
  const std::vector<Atom>& children = moov->children();
  std::size_t place = 0;
  for (std::size_t i = 0; i < children.size(); ++i) {
    const OSType type = children[i].type();
    if (type == "trak"_4cc || (type == "mvhd"_4cc && place == 0)) place = i + 1;
  }
  moov->Insert(place, std::move(trak));
}

TrackHeader HeaderOf(Track track) {
  NoteStatus(track != nullptr ? noErr : OSStatus{invalidTrack});
  return track != nullptr ? TrackHeaderOf(*track) : TrackHeader{};
}

TimeValue NarrowTime(UInt64 time) {
  return static_cast<TimeValue>(std::min<UInt64>(time, kLongestTimeValue));
}

}  // namespace

namespace quillmere::movies {

bool HasCharacteristic(const TrackRecord& track, OSType characteristic) {
  if (characteristic == "eyes"_4cc) return IsVisual(track);
  struct Characteristic {
    OSType characteristic;
    OSType media;
  };
  constexpr Characteristic kCharacteristics[] = {
      {"ears"_4cc, "soun"_4cc}, {"ears"_4cc, "musi"_4cc}, {"actn"_4cc, "sprt"_4cc},
      {"actn"_4cc, "flsh"_4cc}, {"nonl"_4cc, "qtvr"_4cc}, {"skin"_4cc, "skin"_4cc},
      {"step"_4cc, "vide"_4cc}, {"keyf"_4cc, "vide"_4cc}, {"keyf"_4cc, "sprt"_4cc},
      {"apmd"_4cc, "vide"_4cc}};
  const OSType type = MediaTypeOf(track);
  return std::ranges::any_of(kCharacteristics, [&](const Characteristic& row) {
    return row.characteristic == characteristic && row.media == type;
  });
}

}  // namespace quillmere::movies

Track NewMovieTrack(Movie movie, Fixed width, Fixed height, SInt16 volume) {
  if (movie == nullptr) {
    NoteStatus(invalidMovie);
    return nullptr;
  }
  Atom& moov = *movie->file.movie;
  Atom* mvhd = moov.Find("mvhd"_4cc);
  const UInt32 id = FreeTrackId(*movie);
  auto track = std::make_unique<TrackRecord>();
  track->movie = movie;
  track->is_new = true;
  const HeaderTimes times = TimesOf(*mvhd);
  if (id < std::numeric_limits<UInt32>::max()) SetNextTrackId(mvhd, id + 1);
  InsertTrackAtom(&moov, MakeTrackAtom(times, {id, width, height, volume}));
  movie->tracks.push_back(std::move(track));
  FindTrackAtoms(movie);
  NoteStatus(noErr);
  return movie->tracks.back().get();
}

void DisposeMovieTrack(Track track) {
  if (track == nullptr) return;
  MovieRecord& movie = *track->movie;
  std::vector<Atom>& children = movie.file.movie->children();
  children.erase(children.begin() + static_cast<std::ptrdiff_t>(track->child));
  std::erase_if(movie.tracks, [&](const auto& other) { return other.get() == track; });
  FindTrackAtoms(&movie);
  NoteStatus(noErr);
}

SInt32 GetMovieTrackCount(Movie movie) {
  return movie != nullptr ? static_cast<SInt32>(movie->tracks.size()) : 0;
}

Track GetMovieIndTrack(Movie movie, SInt32 index) {
  if (movie == nullptr || index < 1 || index > GetMovieTrackCount(movie)) {
    NoteStatus(movie == nullptr ? invalidMovie : noErr);
    return nullptr;
  }
  NoteStatus(noErr);
  return movie->tracks[static_cast<std::size_t>(index) - 1].get();
}

Track GetMovieIndTrackType(Movie movie, SInt32 index, OSType type, SInt32 flags) {
  const SInt32 kind = flags & ~movieTrackEnabledOnly;
  if (movie == nullptr || (kind != movieTrackMediaType && kind != movieTrackCharacteristic)) {
    NoteStatus(movie == nullptr ? OSStatus{invalidMovie} : paramErr);
    return nullptr;
  }
  NoteStatus(noErr);
  for (const auto& track : movie->tracks) {
    const bool counts =
        kind == movieTrackMediaType ? MediaTypeOf(*track) == type : HasCharacteristic(*track, type);
    if (counts && ((flags & movieTrackEnabledOnly) == 0 || GetTrackEnabled(track.get())) &&
        --index == 0)
      return track.get();
  }
  return nullptr;
}

Movie GetTrackMovie(Track track) {
  return track != nullptr ? track->movie : nullptr;
}

Track GetMediaTrack(Media media) {
  return media != nullptr ? media->track : nullptr;
}

SInt32 GetTrackID(Track track) {
  return static_cast<SInt32>(HeaderOf(track).id);
}

SInt16 GetTrackLayer(Track track) {
  return HeaderOf(track).layer;
}

void SetTrackLayer(Track track, SInt16 layer) {
  ChangeTrackHeader(track, [layer](TrackHeader* header) { header->layer = layer; });
}

Boolean GetTrackEnabled(Track track) {
  return (HeaderOf(track).flags & kTrackEnabled) != 0;
}

void SetTrackEnabled(Track track, Boolean enabled) {
  ChangeTrackHeader(track, [enabled](TrackHeader* header) {
    header->flags = enabled != 0 ? header->flags | kTrackEnabled : header->flags & ~kTrackEnabled;
  });
}

void GetTrackDimensions(Track track, Fixed* width, Fixed* height) {
  NoteStatus(track != nullptr ? noErr : OSStatus{invalidTrack});
  const TrackSize size = track != nullptr ? SizeOfTrack(*track) : TrackSize{};
  if (width != nullptr) *width = size.width;
  if (height != nullptr) *height = size.height;
}

void GetTrackMatrix(Track track, MatrixRecord* matrix) {
  if (matrix != nullptr) *matrix = HeaderOf(track).matrix;
}

TimeValue GetTrackDuration(Track track) {
  return NarrowTime(HeaderOf(track).duration);
}

TimeValue GetTrackOffset(Track track) {
  std::vector<EditRecord> edits;
  if (track == nullptr || !EditsOf(*track, &edits)) {
    NoteStatus(track == nullptr ? invalidTrack : badEditList);
    return 0;
  }
  NoteStatus(noErr);
  UInt64 offset = 0;
  for (const EditRecord& edit : edits) {
    if (edit.media_time != kEmptyEdit) break;
    offset += edit.track_duration;
  }
  return NarrowTime(offset);
}
