/// Tracks edited: segments copied, emptied, deleted and stretched; tracks and movies made of
/// others.
///
/// Track times are in the movie's time scale. Statuses are those of the movies and files families.
#pragma once

#include "movie_toolbox.h"

/// A new track, without samples and edits, with all settings of another one but its references to
/// tracks: its samples will lie in the data of a reference (null: the movie's own file).
OSErr AddEmptyTrackToMovie(Track source, Movie movie, Handle data_reference, OSType type,
                           Track* track);

/// Puts a segment of a track into another one at a time, and moves what is there behind it. The
/// samples that the segment shows, and those needed to decode them, are added to the destination's
/// media: with their data where that is between BeginMediaEdits and EndMediaEdits, else by
/// reference; samples of its own media stay. invalidTrack for media of different types, invalidTime
/// for a segment outside the track.
OSErr InsertTrackSegment(Track source, Track destination, TimeValue source_time,
                         TimeValue source_duration, TimeValue destination_time);
/// Inserts time in which the track shows nothing.
OSErr InsertEmptyTrackSegment(Track track, TimeValue time, TimeValue duration);
OSErr DeleteTrackSegment(Track track, TimeValue time, TimeValue duration);
/// Lets a segment last longer or shorter.
OSErr ScaleTrackSegment(Track track, TimeValue time, TimeValue old_duration,
                        TimeValue new_duration);
/// How fast the media runs at a track time, 16.16; 0 in an empty edit and outside.
Fixed GetTrackEditRate64(Track track, TimeValue64 time);

/// The part of a movie that is selected.
void GetMovieSelection(Movie movie, TimeValue* time, TimeValue* duration);
void SetMovieSelection(Movie movie, TimeValue time, TimeValue duration);
/// A new movie of what is selected: the movie's settings and user data, and a segment of each track
/// that has something there, by reference. Null, with a status in GetMoviesError, on failure.
Movie CopyMovieSelection(Movie movie);
