/// Which pixel formats codecs take and give, and movies can be drawn into.
///
/// A format is a four-character code, or for classic ones the bits of a pixel. Lists are those of
/// the codec's component for compressing or for decompressing. -8961 where there is no such codec.
#pragma once

#include "components.h"
#include "graphics_ports.h"
#include "movie_toolbox.h"

/// The list of a codec, which is the caller's: formats in native order, the favourite first.
/// `component` is a codec or one of the choices of components.h. -192 if it has none.
SInt32 QT_GetCPixList(OSType codecType, Component component, Handle* list, Boolean compressor);
/// Whether the list has a format; a codec without a list supports none.
SInt32 QT_CodecSuppPixelFormat(OSType codecType, OSType format, Boolean* supports,
                               Boolean compressor);
/// The first of the list; 0 for a codec without a list.
SInt32 QT_GetCodecFavoritePixelFormat(OSType codecType, OSType* format, Boolean compressor);
/// Whether the decompressor gives `y420`.
SInt32 QT_PixelTypeSupports_y420(OSType codecType, Boolean* supports);
/// Whether a codec is one of RGB: by its type, or else by its decompressor's favourite format.
SInt32 QT_IsRGB_Codec(OSType codecType, Boolean* isRgb);

/// Whether a movie can be drawn into a format: always into bits of a pixel (below 41); else if its
/// matrix only moves and scales, and a decompressor of its first video track's codec gives the
/// format. With `simpleOnly` a second visual track or sample description forbids it.
SInt32 QT_CanRenderMovieToPixelFormat(Movie movie, OSType format, Boolean simpleOnly, Boolean* can);
/// Draws a movie's present frame, which makes it active, or tries that in a world of a format; the
/// first failing step's status.
SInt32 QT_TryToRenderMovieToGWorld(Movie movie, CGrafPtr port);
SInt32 QT_TryToRenderMovieToPixelFormat(Movie movie, OSType format);
