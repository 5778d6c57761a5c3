/// What stands behind Movie, Track and Media, for the sources of the movie toolbox alone.
///
/// The atom tree is the one model of a movie. The records here say where in the tree a track stands
/// and hold what is not part of a file: open files, the samples of new media that are not yet in
/// the tree, and the state of the open movie.
#pragma once

#include <chrono>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "atom.h"
#include "data_source.h"
#include "decoded_video.h"
#include "display_order.h"
#include "frame_target.h"
#include "movie_file.h"
#include "movie_file_writer.h"
#include "movie_records.h"
#include "movie_toolbox.h"
#include "new_samples.h"
#include "sample_table.h"

namespace quillmere::movies {

/// A file that a data reference names; empty and null for one that was read with the movie.
struct GivenReference {
  std::filesystem::path path;
  mutable std::shared_ptr<DataSource> source;  ///< when it has been opened
};

}  // namespace quillmere::movies

/// Whose user data it is: the media's, else the track's, else the movie's.
struct UserDataRecord {
  MovieRecord* movie = nullptr;
  TrackRecord* track = nullptr;
  MediaRecord* media = nullptr;
};

struct MediaRecord {
  TrackRecord* track = nullptr;
  /// Samples that have been added but are not in the tree yet.
  quillmere::movies::NewSamples added;
  /// The files of the media's first data references that the program named, which may lie anywhere.
  std::vector<quillmere::movies::GivenReference> given;
  /// The sample table as it was last read from the tree, a walk over it that may go on, and its
  /// samples in the order in which they are shown, when that has been asked for.
  std::unique_ptr<quillmere::movies::SampleTable> table;
  std::optional<quillmere::movies::SampleTable::RunWalk> walk;
  std::unique_ptr<quillmere::movies::DisplayOrder> display;
  /// The decoder of its pictures, while the table stays.
  std::shared_ptr<quillmere::movies::VideoDecoding> decoding;
  /// Where data is added, while BeginMediaEdits has been called more often than EndMediaEdits.
  std::shared_ptr<quillmere::movies::MediaDataWriter> writer;
  int edits = 0;
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
  std::filesystem::path path;  ///< empty, and the source null, for one that isn't in a file
  std::shared_ptr<quillmere::movies::DataSource> source;
  bool trusts_references = false;     ///< data references may name files anywhere
  quillmere::movies::MovieFile file;  ///< its `movie` is the tree
  std::vector<std::unique_ptr<TrackRecord>> tracks;
  std::unique_ptr<UserDataRecord> user_data;
  UInt64 metadata_changes = 0;  ///< how often metadata or user data has been written
  bool active = false;
  SInt64 time = 0;  ///< movie time units
  /// How fast it plays, 0 for not, and since when from which time.
  Fixed rate = 0;
  std::chrono::steady_clock::time_point playing_since;
  SInt64 playing_from = 0;
  TimeValue selection_time = 0;
  TimeValue selection_duration = 0;
  OSType aperture_mode = "clas"_4cc;
  MovieProgressProcPtr progress = nullptr;
  SInt64 progress_constant = 0;
  double dots_per_inch_x = 0;  ///< of the still it was opened from; 0 for none
  double dots_per_inch_y = 0;
  /// The context it draws into, not owned, and if the frame of the present time has been delivered.
  QTVisualContextRef visual_context = nullptr;
  /// The port it draws into without a context, what tells that port's pixels as they are, and what
  /// is called behind a frame.
  void* port = nullptr;
  quillmere::movies::FrameTarget (*target_of)(void* port) = nullptr;
  OSErr (*drawing_complete)(Movie movie, SInt64 reference_constant) = nullptr;
  SInt64 drawing_constant = 0;
  bool frame_delivered = false;
  OSStatus drawing_status = noErr;  ///< of the last frame, or of the port that was set
};

namespace quillmere::movies {

/// The track's `trak`. Valid until a track is added or removed.
Atom& TrackAtom(const TrackRecord& track);
/// The track's `tkhd`, or its `stbl`; null if it has none.
Atom* TrackHeaderAtom(const TrackRecord& track);
Atom* SampleTableAtom(const TrackRecord& track);
/// Handler type of the track's media; 0 if it has none.
OSType MediaTypeOf(const TrackRecord& track);
/// Whether the track's media has a characteristic: `eyes`, `ears` and others.
bool HasCharacteristic(const TrackRecord& track, OSType characteristic);
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
/// The duration of all samples, added ones included, in media time units.
OSStatus DurationOfSamples(MediaRecord* media, UInt64* duration);
/// The index, from 1, of a description among those of a media; it is appended if it isn't there.
OSStatus AddDescription(MediaRecord* media, Atom entry, UInt32* index);
/// Gives the media's header the duration of all samples.
OSStatus NoteMediaDuration(MediaRecord* media);
/// The edits of a track; a track without an edit list plays its whole media once.
bool EditsOf(const TrackRecord& track, std::vector<EditRecord>* edits);

/// Keeps a status for GetMoviesError and gives it back.
OSStatus NoteStatus(OSStatus status);
/// The same in the 16 bits that most calls give back.
inline OSErr Note(OSStatus status) {
  return static_cast<OSErr>(NoteStatus(status));
}

/// Reads a track's header, lets `change` change it and writes it back. The status is noted.
template <class Change>
void ChangeTrackHeader(TrackRecord* track, Change change) {
  Atom* tkhd = track != nullptr ? TrackHeaderAtom(*track) : nullptr;
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
/// Whether a movie has what every other function takes for granted.
OSStatus CheckMovie(const MovieRecord& movie);
/// Opens a movie or still from a path.
OSStatus OpenMovieAt(const std::filesystem::path& path, std::unique_ptr<MovieRecord>* movie);
}  // namespace quillmere::movies
