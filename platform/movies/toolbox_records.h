/// What stands behind Movie, Track and Media, for the sources of the movie toolbox alone.
///
/// The atom tree is the one model of a movie. The records here say where in the tree a track stands
/// and hold what is not part of a file: open files, the samples of new media that are not yet in
/// the tree, and the state of the open movie.
#pragma once

#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "atom.h"
#include "data_source.h"
#include "movie_file.h"
#include "movie_records.h"
#include "movie_toolbox.h"
#include "new_samples.h"
#include "sample_table.h"

/// Whose user data it is: the media's, else the track's, else the movie's.
struct UserDataRecord {
  MovieRecord* movie = nullptr;
  TrackRecord* track = nullptr;
  MediaRecord* media = nullptr;
};

struct MediaRecord {
  TrackRecord* track = nullptr;
  /// Samples added to a media that NewTrackMedia made; null for media read from a file.
  std::unique_ptr<quillmere::movies::NewSamples> new_samples;
  /// The file of data reference 1 of a media that NewTrackMedia made. The program named it, so it
  /// may lie anywhere; null when it can't be opened.
  std::shared_ptr<quillmere::movies::DataSource> given_source;
  /// The sample table as it was last read from the tree.
  std::unique_ptr<quillmere::movies::SampleTable> table;
  std::unique_ptr<UserDataRecord> user_data;  ///< when it has been asked for
};

struct TrackRecord {
  MovieRecord* movie = nullptr;
  std::size_t child = 0;  ///< position of its `trak` among the children of `moov`
  bool is_new = false;    ///< made by NewMovieTrack
  std::unique_ptr<MediaRecord> media;
  std::unique_ptr<UserDataRecord> user_data;
};

struct MovieRecord {
  std::filesystem::path path;
  std::shared_ptr<quillmere::movies::DataSource> source;
  quillmere::movies::MovieFile file;  ///< its `movie` is the tree
  std::vector<std::unique_ptr<TrackRecord>> tracks;
  std::unique_ptr<UserDataRecord> user_data;
  bool active = false;
  SInt64 time = 0;  ///< movie time units
  OSType aperture_mode = "clas"_4cc;
  MovieProgressProcPtr progress = nullptr;
  SInt64 progress_constant = 0;
  double dots_per_inch_x = 0;  ///< of the still it was opened from; 0 for none
  double dots_per_inch_y = 0;
  /// The context it draws into, not owned, and if the frame of the present time has been delivered.
  QTVisualContextRef visual_context = nullptr;
  bool frame_delivered = false;
};

namespace quillmere::movies {

/// The track's `trak`. Valid until a track is added or removed.
Atom& TrackAtom(const TrackRecord& track);
/// The track's `stbl`, or null.
Atom* SampleTableAtom(const TrackRecord& track);
/// Handler type of the track's media; 0 if it has none.
OSType MediaTypeOf(const TrackRecord& track);
/// The header of the track or of its media; all zero when the atom is missing or damaged.
TrackHeader TrackHeaderOf(const TrackRecord& track);
MediaHeader MediaHeaderOf(const TrackRecord& track);
MovieHeader MovieHeaderOf(const MovieRecord& movie);
/// The movie's duration in full width. A header that says it is unknown (all ones) is replaced by
/// the longest track.
UInt64 FullDurationOf(const MovieRecord& movie);
/// A movie longer than a TimeValue can say shows this as its duration. The same value given as the
/// duration of a sample or an edit means the movie's full duration.
inline constexpr TimeValue kLongestTimeValue = 0x7FFFFFFF;
/// The sample table of a media, its new samples included; null and a status if it does not hold
/// together.
OSStatus SampleTableOf(MediaRecord* media, const SampleTable** table);
/// The edits of a track; a track without an edit list plays its whole media once.
bool EditsOf(const TrackRecord& track, std::vector<EditRecord>* edits);

/// Keeps a status for GetMoviesError and gives it back.
OSStatus NoteStatus(OSStatus status);

/// Reads a track's header, lets `change` change it and writes it back. The status is noted.
template <class Change>
void ChangeTrackHeader(TrackRecord* track, Change change) {
  Atom* tkhd = track != nullptr ? TrackAtom(*track).Find("tkhd"_4cc) : nullptr;
  TrackHeader header;
  bool changed = tkhd != nullptr && ReadTrackHeader(*tkhd, &header);
  if (changed) {
    change(&header);
    changed = WriteTrackHeader(tkhd, header);
  }
  NoteStatus(changed ? OSStatus{noErr} : OSStatus{invalidTrack});
}

/// Whether the track has the dimensions of all apertures.
bool HasApertureDimensions(const TrackRecord& track);
/// Copies a property's value out; paramErr for a size that is too small.
template <class T>
OSStatus StoreProperty(const T& property, Size size, void* value, Size* size_used) {
  if (size < static_cast<Size>(sizeof property) || value == nullptr) return paramErr;
  std::memcpy(value, &property, sizeof property);
  if (size_used != nullptr) *size_used = sizeof property;
  return noErr;
}

/// Finds the tracks' atoms anew when the children of the movie's atom have moved.
void FindTrackAtoms(MovieRecord* movie);
/// Makes the track records of a movie whose tree has been set.
void MakeTrackRecords(MovieRecord* movie);
/// Opens a movie or still from a path.
OSStatus OpenMovieAt(const std::filesystem::path& path, std::unique_ptr<MovieRecord>* movie);
}  // namespace quillmere::movies
