/// Questions about open movies, and small changes of their state.
#pragma once

#include "base_types.h"
#include "media_times.h"
#include "movie_toolbox.h"

/// The lowest and highest layer of all tracks; 32767 and -32768 for a movie without any. A lower
/// layer lies in front.
void QT_GetMinMaxLayer(Movie movie, SInt16* minimum, SInt16* maximum);
/// Sets the aperture that sizes are read by: `clas` classic, `clea` clean, `prod` production,
/// `enco` encoded pixels. paramErr for another one.
SInt32 QT_SetMovieApertureMode(Movie movie, OSType mode);
SInt32 QT_GetMovieApertureMode(Movie movie, OSType* mode);
/// Whether there is a movie toolbox, whether any program can call it, and the high half of its
/// version, 0 for none.
Boolean QT_IsQuickTimeInstalled();
Boolean QT_IsQuickTimeCFMInstalled();
SInt32 QT_GetQTVersion();
/// The value of a time record; -1 where it has more than 32 bits.
SInt32 QT_TimeRecordToTimeValue(const TimeRecord* record);
/// A value in the movie's time scale and time base.
void QT_TimeValueToTimeRecord(Movie movie, SInt32 value, TimeRecord* record);
/// The toolbox's sticky error, which is cleared.
SInt32 QT_GetMoviesStickyError();
/// Disposes of the movie and clears the variable; null does nothing.
void QT_DisposeMovie(Movie* movie);
/// Size of the movie's box in pixels.
void QT_GetMovieFrameSize(Movie movie, SInt32* width, SInt32* height);
/// Duration in seconds.
Float32 QT_GetMovieDurationInSec(Movie movie);
/// Type of the track's media.
SInt32 QT_GetTrackType(Track track, OSType* type);
/// The track's index from 1; one past the last if it is not found.
SInt32 QT_GetTrackIndex(Movie movie, Track track);
/// The track's size in whole pixels.
void QT_GetTrackSize(Track track, SInt32* width, SInt32* height);
/// Enables the track and disables all others.
void QT_EnableOneTrack(Movie movie, Track track);
