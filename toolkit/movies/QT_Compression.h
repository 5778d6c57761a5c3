/// Compressors asked what they enforce on pictures and how large they get, and a drawn image added
/// to a media.
///
/// Settings are a compressor's own bytes, null or empty for none. Statuses are those of the
/// compressors (image_compression.h): where there is none of a type they say so.
#pragma once

#include "QT_Ide.h"
#include "base_types.h"
#include "image_compression.h"
#include "movie_toolbox.h"

/// The size in pixels that a compressor enforces, 0 for what it doesn't; for an open compressor,
/// and for a codec type with settings, whose size is corrected where compressors tell a wrong one.
SInt32 QT_GetCompressorCompEnforcedSize(CompressorComponent compressor, Point* size);
SInt32 QT_GetQTMovieCompressorEnforcedSize(OSType codecType, Handle settings, Point* size);

/// Whether a codec's compressor changes the order of fields without loss. 11004 where there is no
/// compressor.
SInt32 QT_CanCodecChFieldDomLossless(OSType codecType, Boolean* can);

/// The most bytes that a picture of a rectangle's size takes, alone or in a sequence. Pictures are
/// of `2vuy`, or have 32 bits a pixel for any other format.
SInt32 QT_GetMaxCompressionSize(const Rect* rect, OSType pixelFormat, Handle settings,
                                CodecQ quality, OSType codecType, SInt32* size);
SInt32 QT_GetCSequenceMaxComprSize(const Rect* rect, OSType pixelFormat, CodecQ quality,
                                   OSType codecType, Handle settings, SInt32* size);
/// The same for a picture of the size of a movie's box.
SInt32 QT_GetMaxCompressionSizeFromMovieSimple(Movie movie, CodecQ quality, OSType codecType,
                                               SInt32* size);

/// The most bytes of a movie's pictures, and, with `compress`, the mean of up to 10 of them,
/// compressed, and how much they differ from it in the mean. They are spread over `count` frames,
/// `step` of movie time apart, with `framesByTime`, and else over all frames of the movie. -2048
/// for none. The second form takes settings. What can't be drawn ends it with its status.
SInt32 QT_GetMaxCompressionSizeFromMovie(Movie movie, Boolean framesByTime, SInt32 count,
                                         SInt32 step, CodecQ quality, OSType codecType,
                                         Boolean compress, SInt32* largest, SInt32* mean,
                                         SInt32* deviation);
SInt32 QT_GetMaxCompressionSizeFromMovie2(Movie movie, Boolean framesByTime, SInt32 count,
                                          SInt32 step, OSType pixelFormat, Handle settings,
                                          CodecQ quality, OSType codecType, Boolean compress,
                                          SInt32* largest, SInt32* mean, SInt32* deviation);
/// A drawing-complete procedure that sets the Boolean whose address is its constant.
OSErr QT_MinimalDrawingCompleteProc(Movie movie, SInt64 flag);
/// The gamma of the movie's first frame as it is drawn, into a port of the caller's or for null one
/// of its own; 2.2 where none is told.
SInt32 QT_GetMovieGamma2(Movie movie, CGrafPtr port, Float32* gamma);
/// Prints to standard output how drawing answers to requested gamma levels (the system's, the
/// source's and 2.2): what a world of 32 bits and one of `2vuy` tell, and the change measured
/// between them in four pixels of the first frame. `codecType` is printed with it.
SInt32 QT_TestMovieGamma(Movie movie, OSType codecType);

/// Draws into a rectangle of the current port; the constants are the caller's.
using QT_DrawTextImageProc = void (*)(Rect rect, SInt64 first, SInt64 second, SInt64 third);
/// Lets a procedure draw an image, of a size in 16.16 pixels, compresses it and adds it to a media
/// as one sample; `sampleTime` may be null.
SInt32 QT_AddCompressedTextImageToMedia(Fixed width, Fixed height, QT_DrawTextImageProc draw,
                                        SInt64 first, SInt64 second, SInt64 third, Media media,
                                        OSType codecType, SInt32 duration, SInt32* sampleTime);
