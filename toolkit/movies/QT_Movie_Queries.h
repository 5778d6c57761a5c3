/// Questions about what the tracks of a movie have in common: codecs, depths, gammas, places, times
/// and sound.
///
/// Statuses are those of the movie toolbox; the first error ends a walk and is the result.
#pragma once

#include "base_types.h"
#include "movie_toolbox.h"
#include "regions.h"

/// The depth in bits, 8, 16 or 32, that shows all enabled visual tracks; 0 for none that tell.
SInt32 QT_GetMaxDepth(Movie movie, SInt32* depth);
/// The codec of the enabled visual tracks, or the media type of those that aren't video; -1 if
/// there are several, 0 for none. Text and time code count with `includeText` only. `hasRgb` tells
/// whether a codec is one of RGB pixels.
SInt32 QT_GetMovieCType(Movie movie, Boolean includeText, OSType* type, Boolean* hasRgb);
/// Whether all enabled visual tracks are video of codecs of fixed size.
SInt32 QT_DoEnabledVideoTracksUseFixedSizeCompressorTypesOnly(Movie movie, Boolean* fixedOnly);
/// The one codec of the enabled visual tracks; 0 if there are several, or a track isn't video.
SInt32 QT_DoEnabledVideoTracksUseOneCompressorType(Movie movie, OSType* type);
Boolean QT_EnabledVideoTracksHaveSameMediaTimeScale(Movie movie);
/// Whether an enabled video track is drawn other than by copying (modes 0 and 64), or has a matte.
SInt32 QT_AnyEnabledVideoTrackIsComposited(Movie movie, Boolean* isComposited);
/// Whether the movie is one video track, of images that one decompression can do, none of which
/// needs others, with nothing visual but text beside it.
SInt32 QT_MovieHasOneSimpleVideoTrack(Movie movie, Boolean* isSimple);

/// Whether all enabled video tracks have the same matrix, clip and dimensions (16.16), which go to
/// the outputs that aren't null; the clip, null for none, is the caller's then.
SInt32 QT_EnabledVideoTracksHaveEqualSpatialCharacteristics(Movie movie, Boolean* areEqual,
                                                            RgnHandle* clip, MatrixRecord* matrix,
                                                            Fixed* width, Fixed* height);
/// Whether edits of two tracks that show media overlap in time, or those of any two of a selection
/// (flags are those of GetMovieIndTrackType).
Boolean QT_TrackPairOverlapTemporally(Track first, Track second);
Boolean QT_AnyTracksOverlapTemporally(Movie movie, OSType trackType, SInt32 flags,
                                      Boolean enabledOnly);

/// The gamma that the sample descriptions tell: that of each, else 1.8 for codecs of RGB pixels and
/// 2.0 for others; -1.0 if tracks differ. Visual tracks that aren't video count as 2.0.
SInt32 QT_GetMovieGamma1(Movie movie, Float32* gamma);

/// From the earliest begin to the latest end of the enabled aural tracks, or of the enabled visual
/// ones other than text and time code, in movie time; all 0 without such a track. Outputs may be
/// null.
SInt32 QT_GetMovieSoundDuration(Movie movie, SInt32* start, SInt32* end);
SInt32 QT_GetMovieVideoDuration(Movie movie, SInt32* start, SInt32* end);

/// The sample rate of a sound track, 16.16 hertz.
SInt32 QT_GetSoundTrackSampleRate(Track track, UInt32* rate);
/// Whether an enabled aural track is sound that is part of digital video (`vdva`).
Boolean QT_IsAnySoundTrackDV(Movie movie);
/// Whether the enabled sound is one track of two separate channels, or two tracks of one channel.
SInt32 QT_MovieHasDualMonoSound(Movie movie, Boolean* isDualMono);
