/// Where movies and their tracks are shown: sizes, matrices, clips and aperture dimensions.
///
/// A track is its size at the origin, cut by its clip and placed by its matrix; the movie's clip
/// cuts what its tracks show, and the movie's matrix places it on the display. All of it is kept in
/// the movie. Functions without a status leave it in GetMoviesError.
#pragma once

#include "movie_toolbox.h"
#include "regions.h"

void SetTrackDimensions(Track track, Fixed width, Fixed height);
void SetTrackMatrix(Track track, const MatrixRecord* matrix);
void GetMovieMatrix(Movie movie, MatrixRecord* matrix);
void SetMovieMatrix(Movie movie, const MatrixRecord* matrix);

/// A copy of a clip, which the caller disposes of; null if there is none. The region that is set is
/// copied; null takes the clip away. paramErr for one that is too complex to be kept.
RgnHandle GetTrackClipRgn(Track track);
void SetTrackClipRgn(Track track, RgnHandle clip);
RgnHandle GetMovieClipRgn(Movie movie);
void SetMovieClipRgn(Movie movie, RgnHandle clip);

/// Whether a matte hides parts of the track.
Boolean TrackHasMatte(Track track);

/// What a track, or all enabled visual tracks, cover of the display at any time, whatever lies in
/// front: a new region of
/// the caller's, empty for what isn't visual; null on failure.
RgnHandle GetTrackDisplayBoundsRgn(Track track);
RgnHandle GetMovieDisplayBoundsRgn(Movie movie);

/// Properties of a track, class `visu`: `prdi`, `cadi` and `endi`, the dimensions of production and
/// clean aperture and of the encoded pixels (a FixedPoint, width and height), and `hamd`, a
/// Boolean, read only: whether it has all three. `size_used` may be null.
/// kQTPropertyNotSupportedErr for others and for dimensions that the track doesn't have, paramErr
/// for another size.
OSStatus QTGetTrackProperty(Track track, OSType property_class, OSType property_id, Size size,
                            void* value, Size* size_used);
OSStatus QTSetTrackProperty(Track track, OSType property_class, OSType property_id, Size size,
                            const void* value);
