/// Movies that play: their time goes on by the clock, at a rate, until an end of the movie.
///
/// Pictures are drawn as MoviesTask serves the movie; sound isn't heard.
#pragma once

#include "movie_toolbox.h"

/// How fast a movie plays, 16.16: 0 for one that stands, negative backwards. It stands when its
/// time has come to an end.
Fixed GetMovieRate(Movie movie);
void SetMovieRate(Movie movie, Fixed rate);
/// The rate that the movie's file names.
Fixed GetMoviePreferredRate(Movie movie);
/// Plays at the preferred rate, from the start where it is at its end; stops.
void StartMovie(Movie movie);
void StopMovie(Movie movie);

namespace quillmere::movies {

/// Brings the movie's time up to the clock's.
void CatchUp(MovieRecord* movie);

}  // namespace quillmere::movies
