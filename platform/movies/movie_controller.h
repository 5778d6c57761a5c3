/// Movie controllers: what plays a movie in a place, by actions.
///
/// A controller has no bar of its own here; the program's controls send it actions. Main thread
/// only.
#pragma once

#include "media_times.h"
#include "movie_toolbox.h"

struct MovieControllerRecord;
using MovieController = MovieControllerRecord*;

/// How the movie is placed in the controller's rectangle: at its top left and not in its middle,
/// and scaled to it.
inline constexpr SInt32 mcTopLeftMovie = 1;
inline constexpr SInt32 mcScaleMovieToFit = 2;

/// A controller of a movie, which outlives it, placed by the movie's matrix; the caller disposes of
/// it. Null, with the status in GetMoviesError, for a null movie or an empty rectangle.
MovieController NewMovieController(Movie movie, const Rect* bounds, SInt32 flags);
/// Stops the movie and ends its controller; null is allowed.
void DisposeMovieController(MovieController controller);
Movie MCGetMovie(MovieController controller);

using mcAction = SInt16;
/// Actions and what their parameter points to.
inline constexpr mcAction mcActionIdle = 1;                   ///< null: serves the movie
inline constexpr mcAction mcActionActivate = 3;               ///< null
inline constexpr mcAction mcActionDeactivate = 4;             ///< null: stops it too
inline constexpr mcAction mcActionPlay = 8;                   ///< Fixed: the rate; 0 stops
inline constexpr mcAction mcActionGoToTime = 12;              ///< TimeRecord, in any scale
inline constexpr mcAction mcActionSetSelectionBegin = 29;     ///< TimeRecord
inline constexpr mcAction mcActionSetSelectionDuration = 30;  ///< TimeRecord
inline constexpr mcAction mcActionGetPlayRate = 42;           ///< Fixed, which takes the rate

/// Does an action. paramErr for a null controller or a null parameter where one is needed, and for
/// a time record without a scale; badControllerAction for an action that isn't in the list.
inline constexpr OSErr badControllerAction = -2099;
OSStatus MCDoAction(MovieController controller, mcAction action, void* parameter);
/// The movie's time; `scale` (may be null) takes its units a second. 0 for null.
TimeValue MCGetCurrentTime(MovieController controller, TimeScale* scale);
