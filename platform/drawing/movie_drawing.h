/// Movies drawn into worlds.
///
/// A movie without a visual context draws the part of its box that lies in its world, when
/// MoviesTask serves it and it is active: opaque, in the port's coordinates. Which samples
/// are drawn compositor.h tells.
#pragma once

#include "graphics_ports.h"
#include "movie_toolbox.h"
#include "pictures.h"

/// Sets the world, of 32 bits or `2vuy`, that a movie draws into; it outlives that. Null for none.
/// cDepthErr in GetMoviesError for another depth.
void SetMovieGWorld(Movie movie, CGrafPtr port, GDHandle device);
void GetMovieGWorld(Movie movie, CGrafPtr* port, GDHandle* device);

/// The frame of the movie's poster time as a new picture of the caller's, its frame at the origin.
/// Null for a movie that shows nothing, and with the status in GetMoviesError for one that can't be
/// drawn.
PicHandle GetMoviePosterPict(Movie movie);

/// Called behind each frame of a movie, also one that could not be drawn: the status is in
/// GetMoviesError then.
using MovieDrawingCompleteProcPtr = OSErr (*)(Movie movie, SInt64 reference_constant);
inline constexpr SInt32 movieDrawingCallWhenChanged = 0;
inline constexpr SInt32 movieDrawingCallAlways = 1;
/// Null for none.
void SetMovieDrawingCompleteProc(Movie movie, SInt32 flags, MovieDrawingCompleteProcPtr procedure,
                                 SInt64 reference_constant);

/// The gamma that a world's pixels have, 16.16, 0 for none known; and the one that drawing is asked
/// for, 0 for the system's and -1 for the source's. Drawn movies have 2.2, whatever is asked for.
Fixed QTGetPixMapHandleGammaLevel(PixMapHandle pixels);
OSErr QTSetPixMapHandleGammaLevel(PixMapHandle pixels, Fixed level);
Fixed QTGetPixMapHandleRequestedGammaLevel(PixMapHandle pixels);
OSErr QTSetPixMapHandleRequestedGammaLevel(PixMapHandle pixels, Fixed level);
