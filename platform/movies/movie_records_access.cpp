#include <algorithm>
#include <limits>

#include "media_times.h"
#include "toolbox_records.h"

namespace quillmere::movies {

namespace {

thread_local OSErr last_status = 0;
thread_local OSErr sticky_status = 0;

}  // namespace

OSStatus NoteStatus(OSStatus status) {
  last_status = static_cast<OSErr>(status);
  if (sticky_status == noErr) sticky_status = last_status;
  return status;
}

Atom& TrackAtom(const TrackRecord& track) {
  return track.movie->file.movie->children()[track.child];
}

Atom* TrackHeaderAtom(const TrackRecord& track) {
  return TrackAtom(track).Find("tkhd"_4cc);
}

Atom* SampleTableAtom(const TrackRecord& track) {
  return TrackAtom(track).FindPath({"mdia"_4cc, "minf"_4cc, "stbl"_4cc});
}

OSType MediaTypeOf(const TrackRecord& track) {
  HandlerRecord handler;
  const Atom* hdlr = TrackAtom(track).FindPath({"mdia"_4cc, "hdlr"_4cc});
  if (hdlr == nullptr || !ReadHandler(*hdlr, &handler)) return 0;
  return handler.component_subtype;
}

TrackHeader TrackHeaderOf(const TrackRecord& track) {
  TrackHeader header;
  const Atom* tkhd = TrackAtom(track).Find("tkhd"_4cc);
  if (tkhd == nullptr || !ReadTrackHeader(*tkhd, &header)) return {};
  return header;
}

MediaHeader MediaHeaderOf(const TrackRecord& track) {
  MediaHeader header;
  const Atom* mdhd = TrackAtom(track).FindPath({"mdia"_4cc, "mdhd"_4cc});
  if (mdhd == nullptr || !ReadMediaHeader(*mdhd, &header)) return {};
  return header;
}

MovieHeader MovieHeaderOf(const MovieRecord& movie) {
  MovieHeader header;
  const Atom* mvhd = movie.file.movie->Find("mvhd"_4cc);
  if (mvhd == nullptr || !ReadMovieHeader(*mvhd, &header)) return {};
  return header;
}

namespace {

/// A duration of all ones, in either width, means that it is not known.
bool IsUnknown(UInt64 duration) {
  return duration == std::numeric_limits<UInt32>::max() ||
         duration == std::numeric_limits<UInt64>::max();
}

}  // namespace

UInt64 FullDurationOf(const MovieRecord& movie) {
  const UInt64 duration = MovieHeaderOf(movie).duration;
  if (!IsUnknown(duration)) return duration;
  UInt64 longest = 0;
  for (const auto& track : movie.tracks) {
    const UInt64 of_track = TrackHeaderOf(*track).duration;
    if (!IsUnknown(of_track)) longest = std::max(longest, of_track);
  }
  return longest;
}

namespace {

/// Reads the table from the tree, unless that has been done.
OSStatus ReadTable(MediaRecord* media, Atom* stbl) {
  if (media->table) return noErr;
  auto read = std::make_unique<SampleTable>();
  const OSStatus status = SampleTable::Read(*stbl, MediaTypeOf(*media->track), read.get());
  if (status == noErr) media->table = std::move(read);
  return status;
}

}  // namespace

OSStatus SampleTableOf(MediaRecord* media, const SampleTable** table) {
  *table = nullptr;
  Atom* stbl = SampleTableAtom(*media->track);
  if (stbl == nullptr) return invalidMedia;
  OSStatus status = ReadTable(media, stbl);
  if (status == noErr && media->added.sample_count() > 0) {
    status = media->added.AppendTo(stbl, media->table->sample_count());
    media->walk.reset();
    media->display.reset();
    media->decoding.reset();
    media->table.reset();
    if (status == noErr) status = ReadTable(media, stbl);
  }
  if (status == noErr) *table = media->table.get();
  return status;
}

OSStatus DurationOfSamples(MediaRecord* media, UInt64* duration) {
  Atom* stbl = SampleTableAtom(*media->track);
  if (stbl == nullptr) return invalidMedia;
  const OSStatus status = ReadTable(media, stbl);
  if (status == noErr)
    *duration = static_cast<UInt64>(media->table->duration()) + media->added.duration();
  return status;
}

bool EditsOf(const TrackRecord& track, std::vector<EditRecord>* edits) {
  edits->clear();
  const Atom* elst = TrackAtom(track).FindPath({"edts"_4cc, "elst"_4cc});
  if (elst != nullptr) {
    if (!ReadEditList(*elst, edits)) return false;
    if (!edits->empty() || track.is_new) return true;
  }
  if (!track.media) return true;
  edits->push_back({TrackHeaderOf(track).duration, 0, 0x10000});
  return true;
}

void FindTrackAtoms(MovieRecord* movie) {
  const std::vector<Atom>& children = movie->file.movie->children();
  std::size_t child = 0;
  for (const auto& track : movie->tracks) {
    while (child < children.size() && children[child].type() != "trak"_4cc)
      ++child;
    track->child = child++;
  }
}

void MakeTrackRecords(MovieRecord* movie) {
  const std::vector<Atom>& children = movie->file.movie->children();
  for (std::size_t i = 0; i < children.size(); ++i) {
    if (children[i].type() != "trak"_4cc) continue;
    auto track = std::make_unique<TrackRecord>();
    track->movie = movie;
    track->child = i;
    if (children[i].Find("mdia"_4cc) != nullptr) {
      track->media = std::make_unique<MediaRecord>();
      track->media->track = track.get();
    }
    movie->tracks.push_back(std::move(track));
  }
}

}  // namespace quillmere::movies

OSErr EnterMovies() {
  return noErr;
}

OSErr GetMoviesError() {
  return quillmere::movies::last_status;
}

OSErr GetMoviesStickyError() {
  return quillmere::movies::sticky_status;
}

void ClearMoviesStickyError() {
  quillmere::movies::sticky_status = noErr;
}
