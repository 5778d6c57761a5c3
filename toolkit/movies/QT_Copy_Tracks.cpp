#include "QT_Copy_Tracks.h"

#include <algorithm>

#include "GL_File_Attributes.h"
#include "GL_Memory.h"
#include "QT_Copy_Media.h"
#include "QT_Metadata.h"
#include "QT_Movie_Info.h"
#include "QT_Movie_Storage.h"
#include "aliases.h"
#include "interval_walks_private.h"
#include "memory_handles.h"
#include "movie_storage.h"
#include "reference_counted.h"
#include "track_editing.h"
#include "track_references.h"
#include "track_walks_private.h"

using namespace quillmere;

namespace {

constexpr Fixed kNormalRate = 0x10000;

/// A part of a track.
struct Segment {
  SInt32 start;
  SInt32 duration;
};

/// A movie to put a track into: the one given, or that of a file, which is saved and closed.
class TargetMovie {
 public:
  TargetMovie(Movie movie, const FSRef* file) : movie_(movie), file_(file) {}
  ~TargetMovie() {
    if (isOwn_) DisposeMovie(movie_);
  }
  TargetMovie(const TargetMovie&) = delete;
  TargetMovie& operator=(const TargetMovie&) = delete;

  SInt32 Open() {
    if (movie_ != nullptr) return noErr;
    const SInt32 status = QT_OpenMovieFile(file_, 0, &movie_);
    isOwn_ = status == noErr;
    return status;
  }
  SInt32 Save(Track* copy) {
    if (!isOwn_) return noErr;
    *copy = nullptr;  // it goes with the movie
    Boolean isInFile = 1;
    return QT_SaveMovie(movie_, file_, &isInFile);
  }
  Movie get() const { return movie_; }

 private:
  Movie movie_;
  const FSRef* file_;
  bool isOwn_ = false;
};

SInt32 ReferenceFor(Track source, Boolean copyData, const FSRef* file, Handle* reference,
                    OSType* type) {
  *type = "alis"_4cc;
  if (copyData) return FSNewAlias(nullptr, file, reference);
  return GetMediaDataRef(GetTrackMedia(source), 1, reference, type, nullptr);
}

SInt32 NewTrackLike(Track source, Movie movie, Boolean copyData, const FSRef* file, Track* copy) {
  Handle reference = nullptr;
  OSType type = 0;
  SInt32 status = ReferenceFor(source, copyData, file, &reference, &type);
  if (!status) status = AddEmptyTrackToMovie(source, movie, reference, type, copy);
  GL_DisposeHandle(&reference);
  return status;
}

SInt32 InsertSegment(Track source, const Segment& segment, Boolean copyData, Track copy) {
  Media media = GetTrackMedia(copy);
  SInt32 status = copyData ? SInt32{BeginMediaEdits(media)} : SInt32{noErr};
  if (status) return status;
  status = InsertTrackSegment(source, copy, segment.start, segment.duration, 0);
  const SInt32 ended = copyData ? SInt32{EndMediaEdits(media)} : SInt32{noErr};
  return status ? status : ended;
}

SInt32 CopySegment(Track source, Movie movie, const Segment& segment, Boolean copyData,
                   const FSRef* file, Track* copy) {
  *copy = nullptr;
  if (source == nullptr) return invalidTrack;
  if ((movie == nullptr || copyData) && (file == nullptr || !GL_FSRefValid(file))) return paramErr;
  TargetMovie target(movie, file);
  SInt32 status = target.Open();
  if (!status) status = NewTrackLike(source, target.get(), copyData, file, copy);
  if (!status) status = InsertSegment(source, segment, copyData, *copy);
  if (!status) status = target.Save(copy);
  return status;
}

/// Copies the tracks that a track refers to with `copyOne(referenced, &made)` and lets the copy
/// refer to them.
template <class CopyOne>
SInt32 CopyReferenced(Track source, Track copy, CopyOne copyOne) {
  for (OSType type = 0; (type = GetNextTrackReferenceType(source, type)) != 0;) {
    const SInt32 count = GetTrackReferenceCount(source, type);
    for (SInt32 index = 1; index <= count; ++index) {
      Track referenced = GetTrackReference(source, type, index);
      if (referenced == nullptr) continue;
      Track made = nullptr;
      SInt32 status = copyOne(referenced, &made);
      if (!status && made != nullptr) status = AddTrackReference(copy, made, type, nullptr);
      if (status) return status;
    }
  }
  return noErr;
}

/// Copies a track and those it refers to, with metadata, by `copyOne(track, withData, &made)`.
template <class CopyOne>
SInt32 CopyTotally(Track source, Movie movie, Boolean copyData, Track* copy, CopyOne copyOne) {
  SInt32 status = copyOne(source, copyData, copy);
  if (status || movie == nullptr || *copy == nullptr) return status;
  status = QT_CopyTrackMetaData(source, *copy);
  if (status) return status;
  return CopyReferenced(source, *copy, [&](Track referenced, Track* made) {
    SInt32 result = copyOne(referenced, 1, made);
    if (!result && *made != nullptr) result = QT_CopyTrackMetaData(referenced, *made);
    return result;
  });
}

double Ratio(SInt32 a, SInt32 b) {
  return static_cast<double>(a) / b;
}

/// One edit of a track put behind those of another.
class EditCopy {
 public:
  EditCopy(Track source, Track destination)
      : source_(source),
        destination_(destination),
        sourceScale_(GetMovieTimeScale(GetTrackMovie(source))),
        destinationScale_(GetMovieTimeScale(GetTrackMovie(destination))) {}

  SInt32 Copy(const TimeSpan& edit) {
    const SInt64 start = TrackTimeToMediaDisplayTime(edit.time, source_);
    if (start == -1) return noErr;
    const Fixed rate = GetTrackEditRate64(source_, edit.time);
    const SInt64 end = MediaEnd(edit, start, rate);
    const auto scaled =
        static_cast<SInt32>(SInt64{destinationScale_} * edit.time / std::max(sourceScale_, 1));
    return QT_InsertMediaIntoTrack(destination_, std::max(scaled, GetTrackDuration(destination_)),
                                   static_cast<SInt32>(start), static_cast<SInt32>(end - start),
                                   rate);
  }

 private:
  SInt64 MediaEnd(const TimeSpan& edit, SInt64 start, Fixed rate) const {
    const SInt64 end = TrackTimeToMediaDisplayTime(SInt64{edit.time} + edit.duration, source_);
    Media media = GetTrackMedia(source_);
    // The next edit may show another part of the media.
    const SInt64 played = static_cast<SInt64>(
        Ratio(GetMediaTimeScale(media), std::max(sourceScale_, 1)) * edit.duration * rate / 65536);
    const SInt64 computed = start + played;
    const SInt64 most = GetMediaDisplayStartTime(media) + GetMediaDisplayDuration(media);
    return end > start && std::abs(end - computed) <= 1 ? end : std::min(computed, most);
  }

  Track source_;
  Track destination_;
  SInt32 sourceScale_;
  SInt32 destinationScale_;
};

/// The parts of a movie in which something visual plays, as spans of movie time.
template <class Visit>
void ForEachVisualPart(Movie movie, Visit visit) {
  constexpr OSType kTypes[] = {"eyes"_4cc};
  SInt32 start = -1;
  SInt32 end = -1;
  SInt16 flags = nextTimeMediaSample | nextTimeEdgeOK;
  for (SInt32 time = 0;; flags = nextTimeStep) {
    SInt32 duration = 0;
    GetMovieNextInterestingTime(movie, flags, 1, kTypes, time, kNormalRate, &time, &duration);
    const bool isEnd = time == -1 || GetMoviesError() != noErr;
    if (start != -1 && (isEnd || time > SInt64{end} + 1)) {
      if (!visit(TimeSpan{start, end - start})) return;
      start = -1;
    }
    if (isEnd) return;
    if (start == -1) start = time;
    end = EndOf({time, duration});
  }
}

}  // namespace

SInt32 QT_CopyMovie(Movie movie, Movie* copy) {
  *copy = nullptr;
  if (movie == nullptr) return invalidMovie;
  SInt32 time = 0;
  SInt32 duration = 0;
  GetMovieSelection(movie, &time, &duration);
  const SInt32 length = GetMovieDuration(movie);
  SetMovieSelection(movie, 0, length);
  *copy = CopyMovieSelection(movie);
  const SInt32 status = GetMoviesError();
  time = std::min(time, length);
  SetMovieSelection(movie, time, std::min(duration, length - time));
  return status;
}

SInt32 QT_CloneMovie(Movie movie, Movie* clone, SInt16 flags) {
  *clone = nullptr;
  Handle bytes = NewHandle(0);
  if (bytes == nullptr) return MemError();
  SInt32 status = PutMovieIntoHandle(movie, bytes);
  if (!status) status = NewMovieFromHandle(clone, bytes, flags, nullptr);
  GL_DisposeHandle(&bytes);
  return status;
}

SInt32 QT_CloneSoundByReference(Movie movie, Movie* clone) {
  *clone = NewMovie(0);
  if (*clone == nullptr) return GetMoviesError();
  SInt32 status = noErr;
  WalkTracks(movie, kEnabledAural, [&](Track track) {
    Track copy = nullptr;
    status = QT_CopyTrackTotally(track, *clone, 0, nullptr, &copy);
    return true;
  });
  return status;
}

SInt32 QT_CopyTrack(Track source, Movie movie, Boolean copyData, const FSRef* file, Track* copy) {
  *copy = nullptr;
  const SInt32 duration = GetTrackDuration(source);
  if (duration < 1) return invalidTrack;
  return CopySegment(source, movie, {0, duration}, copyData, file, copy);
}

SInt32 QT_CopyTrackSegment(Track source, Movie movie, SInt32 start, SInt32 duration,
                           Boolean copyData, const FSRef* file, Track* copy) {
  return CopySegment(source, movie, {start, duration}, copyData, file, copy);
}

SInt32 QT_CopyTrackTotally(Track source, Movie movie, Boolean copyData, const FSRef* file,
                           Track* copy) {
  // Data of referenced tracks goes to the file; where there is none they are copied by reference.
  const bool hasFile = file != nullptr && GL_FSRefValid(file);
  return CopyTotally(source, movie, copyData, copy,
                     [&](Track track, Boolean withData, Track* made) {
                       const Boolean writes = withData && (hasFile || track == source);
                       return QT_CopyTrack(track, movie, writes, file, made);
                     });
}

SInt32 QT_CopyTrackSegmentTotally(Track source, Movie movie, SInt32 start, SInt32 duration,
                                  Boolean copyData, const FSRef* file, Track* copy) {
  const bool hasFile = file != nullptr && GL_FSRefValid(file);
  return CopyTotally(
      source, movie, copyData, copy, [&](Track track, Boolean withData, Track* made) {
        const SInt32 length = GetTrackDuration(track);
        const Segment segment = {std::min(start, length), std::min(duration, length)};
        if (track != source && segment.start >= segment.duration) return SInt32{noErr};
        const SInt32 rest = std::min(segment.duration, length - segment.start);
        const Boolean writes = withData && (hasFile || track == source);
        return QT_CopyTrackSegment(track, movie, segment.start, rest, writes, file, made);
      });
}

SInt32 QT_CopyTrackWithProgress(Track source, Track destination, MovieProgressProcPtr progress,
                                SInt64 refcon) {
  SInt32 status =
      QT_CopyMediaWithProgress(GetTrackMedia(source), GetTrackMedia(destination), progress, refcon);
  if (status) return status;
  EditCopy copy(source, destination);
  WalkTrack(source, nextTimeTrackEdit, 0, [&](const TimeSpan& edit) {
    status = copy.Copy(edit);
    return status == noErr;
  });
  return status;
}

SInt32 QT_CopyTrackTotallyWithProgress(Track source, Movie movie, const FSRef* file, Track* copy,
                                       MovieProgressProcPtr progress, SInt64 refcon) {
  const auto copyOne = [&](Track track, Track* made) {
    const SInt32 status = NewTrackLike(track, movie, 1, file, made);
    return status ? status : QT_CopyTrackWithProgress(track, *made, progress, refcon);
  };
  *copy = nullptr;
  const SInt32 status = copyOne(source, copy);
  return status ? status : CopyReferenced(source, *copy, copyOne);
}

SInt32 QT_InsertMediaIntoTrack(Track track, SInt32 trackTime, SInt32 mediaTime, SInt32 duration,
                               Fixed rate) {
  const SInt32 end = GetTrackDuration(track);
  if (trackTime <= end) return InsertMediaIntoTrack(track, trackTime, mediaTime, duration, rate);
  const SInt32 status = InsertMediaIntoTrack(track, end, mediaTime, duration, rate);
  return status ? status : SInt32{InsertEmptyTrackSegment(track, end, trackTime - end)};
}

SInt32 QT_InsertLongMediaIntoTrack(Track track, SInt32 trackTime, SInt32 mediaTime,
                                   SInt32 duration) {
  const SInt32 before = GetTrackDuration(track);
  const SInt32 status = QT_InsertMediaIntoTrack(track, trackTime, mediaTime, duration, kNormalRate);
  if (status) return status;
  const SInt32 added = GetTrackDuration(track) - std::max(before, trackTime);
  const double wanted =
      Ratio(GetMovieTimeScale(GetTrackMovie(track)), GetMediaTimeScale(GetTrackMedia(track))) *
      duration;
  return ScaleTrackSegment(track, trackTime, added, Truncated(wanted + 0.5));
}

SInt32 QT_SetTrackContentToEntireMedia(Track track) {
  const SInt32 status = DeleteTrackSegment(track, 0, GetTrackDuration(track));
  if (status) return status;
  return InsertMediaIntoTrack(track, 0, 0, GetMediaDuration(GetTrackMedia(track)), kNormalRate);
}

SInt32 QT_InsertEmptyMovieSegment(Movie movie, OSType trackType, SInt32 time, SInt32 duration) {
  SInt32 status = movie != nullptr ? noErr : SInt32{invalidMovie};
  WalkTracks(movie, {trackType, movieTrackMediaType}, [&](Track track) {
    if (GetTrackDuration(track) > time) status = InsertEmptyTrackSegment(track, time, duration);
    return status == noErr;
  });
  return status;
}

SInt32 QT_AddEmptyTrackEdits(Track track, const QT_TrackGap* gaps) {
  SInt64 duration = GetTrackDuration(track);
  for (; gaps != nullptr && gaps->time < duration; gaps = gaps->next) {
    const SInt32 status = InsertEmptyTrackSegment(track, gaps->time, gaps->length);
    if (status) return status;
    duration += gaps->length;
  }
  return noErr;
}

SInt32 QT_AddTrackEditsFromSourceMovie(Movie source, Track track, Boolean doubleTimes) {
  Media media = GetTrackMedia(track);
  if (source == nullptr || media == nullptr) return source == nullptr ? invalidMovie : invalidTrack;
  const double toMedia = Ratio(GetMediaTimeScale(media), GetMovieTimeScale(source));
  const double toMovie = Ratio(GetMovieTimeScale(GetTrackMovie(track)), GetMovieTimeScale(source));
  const SInt32 end = GetMediaDuration(media);
  SInt32 position = 0;
  SInt32 status = noErr;
  ForEachVisualPart(source, [&](const TimeSpan& part) {
    SInt32 length = TruncatedUp(part.duration * toMedia);
    if (doubleTimes) length = Truncated(2.0 * length);
    length = std::min(length, end - position);
    if (length > 0) {
      status = QT_InsertMediaIntoTrack(track, TruncatedUp(part.time * toMovie), position, length,
                                       kNormalRate);
      position += length;
    }
    return status == noErr && position < end;
  });
  return status;
}
