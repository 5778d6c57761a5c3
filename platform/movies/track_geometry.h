/// Sizes, matrices and boxes of tracks, by the movie's aperture mode.
#pragma once

#include "base_types.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

/// A track's box before its matrix, 16.16 pixels.
struct TrackSize {
  Fixed width = 0;
  Fixed height = 0;
};
/// The size of the track in its movie's aperture mode: by `tapt` where there is one; else, in the
/// modes of clean and production aperture, by `clap` and `pasp` of its first video description;
/// else the size in the track's header. Nothing in the movie changes.
TrackSize SizeOfTrack(const TrackRecord& track);
/// True for media that show something: all but sound, time code and hints.
bool IsVisual(const TrackRecord& track);
/// The matrix product: first `a`, then `b`.
MatrixRecord ConcatMatrices(const MatrixRecord& a, const MatrixRecord& b);
/// The smallest rectangle that holds all enabled visual tracks of the movie, rounded to whole
/// pixels and cut to the range of a Rect.
Rect BoxOfMovie(const MovieRecord& movie);

}  // namespace quillmere::movies
