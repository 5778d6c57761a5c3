/// Frames of movies by number and time.
#pragma once

#include "base_types.h"
#include "movie_toolbox.h"

/// When the visual frame of a number, from 0, begins, in movie time; the movie's duration for the
/// one behind the last, and -1 beyond.
SInt32 QT_MovieFrameNumberToTime(Movie movie, SInt32 frame);
