/// Movies and tracks copied, with the tracks they refer to; edits made on copies.
///
/// `copyData` says whether samples are written into a file; without it the new track refers to
/// where they lie. Without a movie (null) the file is opened as one, gets the track, and is saved
/// and closed: the new track is null then. Without a movie, or with data, the file object has to be
/// valid, else -50. Statuses are those of the movie toolbox; the first error ends an operation.
#pragma once

#include "base_types.h"
#include "media_editing.h"
#include "movie_toolbox.h"

/// A copy of the whole movie, by reference, or one by way of its bytes. The caller owns it. The
/// first leaves the movie's selection as it was, cut to its duration.
SInt32 QT_CopyMovie(Movie movie, Movie* copy);
SInt32 QT_CloneMovie(Movie movie, Movie* clone, SInt16 flags);
/// A new movie of all enabled tracks that are heard, with the tracks they refer to, by reference.
SInt32 QT_CloneSoundByReference(Movie movie, Movie* clone);

/// Copies a track with its edits; invalidTrack for one of duration 0.
SInt32 QT_CopyTrack(Track source, Movie movie, Boolean copyData, const FSRef* file, Track* copy);
/// The same for a segment.
SInt32 QT_CopyTrackSegment(Track source, Movie movie, SInt32 start, SInt32 duration,
                           Boolean copyData, const FSRef* file, Track* copy);
/// Also copies, with data, the tracks that it refers to and lets the copy refer to those; and
/// metadata. The last form starts and ends within the track, and copies referenced tracks where the
/// start lies before the duration.
SInt32 QT_CopyTrackTotally(Track source, Movie movie, Boolean copyData, const FSRef* file,
                           Track* copy);
SInt32 QT_CopyTrackSegmentTotally(Track source, Movie movie, SInt32 start, SInt32 duration,
                                  Boolean copyData, const FSRef* file, Track* copy);
/// Copies all samples of a track's media into another track's (QT_CopyMediaWithProgress) and its
/// edits behind those the other one has.
SInt32 QT_CopyTrackWithProgress(Track source, Track destination, MovieProgressProcPtr progress,
                                SInt64 refcon);
/// The same into a new track whose data lies in a file, with the tracks that it refers to.
SInt32 QT_CopyTrackTotallyWithProgress(Track source, Movie movie, const FSRef* file, Track* copy,
                                       MovieProgressProcPtr progress, SInt64 refcon);

// --- Edits ---------------------------------------------------------------------------------------

/// InsertMediaIntoTrack also beyond the track's end, after which the track is empty up to the time.
SInt32 QT_InsertMediaIntoTrack(Track track, SInt32 trackTime, SInt32 mediaTime, SInt32 duration,
                               Fixed rate);
/// Inserts media at its normal rate and stretches it to the duration it has in movie time, to which
/// a long one adds up only roughly.
SInt32 QT_InsertLongMediaIntoTrack(Track track, SInt32 trackTime, SInt32 mediaTime,
                                   SInt32 duration);
/// Lets the track play its media once, from start to end.
SInt32 QT_SetTrackContentToEntireMedia(Track track);
/// Inserts time in which nothing plays into all tracks of a media type that go beyond a time.
SInt32 QT_InsertEmptyMovieSegment(Movie movie, OSType trackType, SInt32 time, SInt32 duration);

/// A gap in a track, in a linked list.
struct QT_TrackGap {
  QT_TrackGap* next;
  SInt32 time;  ///< track time
  SInt32 length;
};
/// Inserts the gaps of a list in its order, up to the first that lies at or behind the track's end.
SInt32 QT_AddEmptyTrackEdits(Track track, const QT_TrackGap* gaps);
/// Gives a track, whose media holds the visual parts of a movie back to back, the movie's gaps:
/// each part comes to where it is in the movie. `doubleTimes` says that the media runs at half
/// speed.
SInt32 QT_AddTrackEditsFromSourceMovie(Movie source, Track track, Boolean doubleTimes);
