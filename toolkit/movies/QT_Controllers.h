/// Movies that play under a controller: the controller's actions, and movies in windows.
///
/// Statuses are those of the controller (movie_controller.h). Main thread only.
#pragma once

#include "LL_Linked_Lists.h"
#include "base_types.h"
#include "movie_controller.h"
#include "movie_toolbox.h"
#include "views.h"

/// Plays at a rate, 16.16, negative backwards; 0 stops. Tells the rate.
SInt32 QT_SetMCPlayRate(MovieController controller, Fixed rate);
SInt32 QT_GetMCPlayRate(MovieController controller, Fixed* rate);
/// Goes to a time of the movie, in its units, or tells it.
SInt32 QT_SetMCTimeValue(MovieController controller, SInt32 time);
SInt32 QT_GetMCTimeValue(MovieController controller, SInt32* time);
/// Selects from a time on for a duration, in the movie's units.
SInt32 QT_SetMCSelection(MovieController controller, SInt32 start, SInt32 duration);

/// A movie of a program, an element of a list, with what plays it; it owns all of that. Cleared by
/// the caller, who sets the movie.
struct QT_MovieExt {
  QT_MovieExt* next;
  Movie movie;
  MovieController controller;  ///< null until the movie is attached to an item
  WindowRef window;            ///< whose item shows it
};

/// The first movie of a list that plays; null if none does.
QT_MovieExt* QT_GetFirstPlayingMovie(QT_MovieExt* list);
/// The element of a controller; null if there is none.
QT_MovieExt* QT_FindMC_LE(QT_MovieExt* list, MovieController controller);

/// Lets a movie's controller act, or not, which stops the movie; all those of a list. One without a
/// controller is left alone.
SInt32 QT_ActivateMovie(QT_MovieExt* element, Boolean active);
SInt32 QT_ActivateMovies(QT_MovieExt* list, Boolean active);

/// Makes the movie's controller, in the rectangle of a dialog item, which it fills as far as its
/// shape lets it. The movie is drawn in the window's port, and the window is shown anew behind each
/// frame; the movie is disposed of before the window is. -30588 for an item that the window hasn't.
SInt32 QT_AttachMovieToDialogItem(QT_MovieExt* element, WindowRef window, HIViewID item);
/// Ends the controller and the movie; the element stays in its list. Null is allowed.
void QT_DisposeMovieData(QT_MovieExt* element);
/// The same, and takes the element out of its list and frees it. `*list` is the list's head.
void QT_DisposeMovieExt(QT_MovieExt** list, QT_MovieExt* element);
