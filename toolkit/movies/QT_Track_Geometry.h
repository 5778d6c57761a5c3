/// Where tracks and movies stand: the aperture dimensions of tracks, matrices from media pixels to
/// a track, and tracks and movies moved, scaled and placed.
///
/// Statuses are those of the movie toolbox (movie_geometry.h). Dimensions are widths (x) and
/// heights (y) in 16.16 pixels.
#pragma once

#include "QT_Ide.h"
#include "base_types.h"
#include "movie_toolbox.h"

// Dimensions that a track keeps for each aperture. Setting one doesn't change the others.

SInt32 QT_GetTrackProductionApertureDimensions(Track track, FixedPoint* dimensions);
SInt32 QT_SetTrackProductionApertureDimensions(Track track, const FixedPoint* dimensions);
SInt32 QT_GetTrackCleanApertureDimensions(Track track, FixedPoint* dimensions);
SInt32 QT_SetTrackCleanApertureDimensions(Track track, const FixedPoint* dimensions);
SInt32 QT_GetTrackEncodedPixelDimensions(Track track, FixedPoint* dimensions);
SInt32 QT_SetTrackEncodedPixelDimensions(Track track, const FixedPoint* dimensions);
/// Whether the track has all three, or a visual track of the movie does.
SInt32 QT_TrackHasApertureModes(Track track, Boolean* hasModes);
SInt32 QT_MovieHasApertureModes(Movie movie, Boolean* hasModes);
/// Whether all enabled visual tracks have them; true for a movie without such tracks.
SInt32 QT_AllVisualTracksHaveApertureModeDimensions(Movie movie, Boolean* allHave);

/// From the pixels of a media, `width` by `height`, to the track's box. In a track with aperture
/// dimensions the clean part of the picture, by `clap` with `useClap` and else by those dimensions,
/// fills the clean dimensions; in another one the picture fills the track's dimensions. Outputs may
/// be null; on failure none is written.
SInt32 QT_CalcMediaToTrackMatrix(Track track, SInt32 width, SInt32 height, Boolean useClap,
                                 const QT_Clap* clap, FixedRect* source, FixedRect* destination,
                                 MatrixRecord* matrix);
/// An older form: without `useAperture` the picture fills the track's dimensions; with it, the part
/// that `clap` tells fills the clean dimensions, or, without `useClap`, the picture fills the
/// production dimensions, centred on the clean ones. The status is the first of the dimensions'.
SInt32 QT_GetMediaToTrackMatrix(Track track, Boolean useAperture, Boolean useClap,
                                const QT_Clap* clap, SInt32 height, SInt32 width,
                                MatrixRecord* matrix);

/// Moves a track or a movie so that its point dx, dy (16.16) comes to lie at the origin of its
/// matrix; its clip moves by whole pixels of dx and dy.
SInt32 QT_ShiftTrackMatrixAndClipF(Track track, Fixed dx, Fixed dy);
SInt32 QT_ShiftMovieMatrixAndClipF(Movie movie, Fixed dx, Fixed dy);
/// Scales the movie about the origin until its box is as wide as `box`, or, without `fitWidth`, as
/// high. True when fewer than ten passes did that; false, with nothing changed, for a movie or a
/// box without that side.
Boolean QT_ScaleMovieMatrixToNewMovieBox(Movie movie, const Rect* box, Boolean fitWidth);
/// Places a track in its movie where another one stands in its own: by bounds relative to those of
/// the movie, and by layer relative to the movie's first image track. With `keepEdge` a track along
/// the upper or lower edge keeps the other's height. With `copyEnabled` it also becomes enabled or
/// not like the other one. invalidMovie and invalidTrack for null.
SInt32 QT_CopyTrackDisplayLocation(Movie sourceMovie, Movie destinationMovie, Track sourceTrack,
                                   Track destinationTrack, Boolean copyEnabled, Boolean keepEdge);
