/// Frames of movies and tracks: counted, their durations compared, their times listed; and what
/// MPEG movies leave to be guessed.
///
/// A movie's frames are the steps of its enabled visual tracks, in movie time. Statuses are those
/// of the movie toolbox; the first error ends a walk and is the result.
#pragma once

#include "base_types.h"
#include "movie_toolbox.h"

/// The steps of a track, all or those from `start` to before `end`.
SInt32 QT_CountFramesInTrack(Track track);
SInt32 QT_CountFramesInTrackSelection(Track track, SInt32 start, SInt32 end);
/// Its edits, within the same, that show media.
SInt32 QT_CountNonEmptyTrackEdits(Track track, SInt32 start, SInt32 end);
/// Frames of the track a second; 0 for an empty track.
Float32 QT_NumberSamplesPerSecondInTrack(Track track);

/// Whether anything visual plays.
SInt32 QT_MovieHasVideo(Movie movie, Boolean* hasVideo);
/// The frames that begin from `start` on for a duration, and before `limit` unless that is 0.
SInt32 QT_GetNumVisualMovieSamples(Movie movie, SInt32 start, SInt32 duration, SInt32 limit,
                                   SInt32* count);
/// Time between two frames in which nothing plays, in a list that is freed with
/// LL_DisposeLinkedList.
struct QT_FrameGap {
  QT_FrameGap* next;
  SInt32 frameNumber;  ///< of the gap, from 1
  SInt32 time;
  SInt32 duration;
};
/// All frames, and the gaps between them if the list isn't null.
SInt32 QT_CountMovieFrames(Movie movie, SInt32* count, QT_FrameGap** gaps);
/// Whether a frame lasts an odd number of units.
SInt32 QT_MovieHasOddDurations(Movie movie, Boolean* hasOdd);
/// The duration of all frames, 0 if they differ; and, if wanted, by how much of the mean duration
/// they differ from it in the mean, where a gap of one unit counts as part of the frame before it.
SInt32 QT_AllFrameDurationsEqual(Movie movie, SInt32* duration, Float32* deviation);
/// How long the last frame lasts.
SInt32 QT_GetLastMovieDuration(Movie movie);

/// The times of `count` frames and the end of the last: an array from malloc, null without memory.
/// MPEG's are multiples of the duration; where a movie has fewer frames, the end fills the rest.
SInt32* QT_MakeMovieTimeList(Movie movie, OSType codecType, SInt32 count, SInt32 frameDuration);
/// The frame of such a list, from 0, that plays at a time; `count` at and behind its end, -1 before
/// its begin.
SInt32 QT_MovieFrameNumberFromTimeList(const SInt32* list, SInt32 count, SInt32 time);
/// Numbers of frames, from 1, spread over a movie's first enabled video track: all up to 100, or
/// 100 of them. A second movie (may be null) and a limit (0 for none) can make them fewer. 11011
/// without such a track.
SInt32 QT_SelectMovieSamples(Movie movie, Movie second, SInt32 limit, SInt32* frames,
                             SInt32 frameDuration, SInt32* count);

/// What the standard frame rate nearest to a movie's first frames makes of it: whether it is of the
/// 50 Hz world, how many frames it has, and how long one is, in media time. Outputs may be null.
/// The movie is activated and set to its begin.
SInt32 QT_GetMpegInfo(Movie movie, Boolean* isPal, SInt32* frameCount, SInt32* frameDuration,
                      double* exactDuration);
/// The picture size that MPEG's encoded size means, in pixels.
void QT_GuessRealMpegMediaDimensions(OSType codecType, Boolean isPal, SInt32 height, SInt32 width,
                                     Boolean is4to3, SInt32* outHeight, SInt32* outWidth);
