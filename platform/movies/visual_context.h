/// Visual contexts: where a movie's composed frame goes.
///
/// A pixel-buffer context takes the frame as a pixel buffer. The image-available callback runs on
/// the thread that called MoviesTask, before that call returns.
#pragma once

#include "base_types.h"
#include "cf_values.h"
#include "movie_toolbox.h"
#include "pixel_buffers.h"

/// A point in time for which an image is asked; null stands for the present.
struct CVTimeStamp {
  SInt64 time;
  SInt32 time_scale;
};

using QTVisualContextImageAvailableCallback = void (*)(QTVisualContextRef context,
                                                       const CVTimeStamp* time, void* user_data);

/// Keys of attributes; constant strings.
extern const CFStringRef kQTVisualContextPixelBufferAttributesKey;
extern const CFStringRef kQTVisualContextOutputColorSpaceKey;

/// A context that delivers pixel buffers with the attributes in `attributes` under
/// kQTVisualContextPixelBufferAttributesKey: 32-bit ARGB, opaque, in sRGB, which is what every
/// output colour space here is. The caller owns it.
OSStatus QTPixelBufferContextCreate(CFAllocatorRef allocator, CFDictionaryRef attributes,
                                    QTVisualContextRef* context);
OSStatus QTVisualContextSetAttribute(QTVisualContextRef context, CFStringRef key, CFTypeRef value);
OSStatus QTVisualContextSetImageAvailableCallback(QTVisualContextRef context,
                                                  QTVisualContextImageAvailableCallback callback,
                                                  void* user_data);
/// The newest image; the caller owns it. Null with status 0 when there is none yet. When the newest
/// frame could not be rendered it is null with the status of that: no decoder for a sample's format
/// (-8961, any format but PNG and JPEG), damaged data (-4), data that ends before a picture could
/// be decoded (-5), or a status of reading and of the movie.
OSStatus QTVisualContextCopyImageForTime(QTVisualContextRef context, CFAllocatorRef allocator,
                                         const CVTimeStamp* time, CVPixelBufferRef* image);
void QTVisualContextRelease(QTVisualContextRef context);

/// The context that a movie draws into; null for none. The movie does not own it.
OSStatus GetMovieVisualContext(Movie movie, QTVisualContextRef* context);
OSStatus SetMovieVisualContext(Movie movie, QTVisualContextRef context);
/// Serves the movie: an active movie with a context whose frame for the present time has not been
/// delivered renders it now and calls the context's callback before it returns. The callback comes
/// for a frame that could not be rendered too, so that QTVisualContextCopyImageForTime can tell
/// why; the status is in GetMoviesError as well. `milliseconds` is a limit on the work, 0 for none;
/// one frame is not split. An image carries the attachments that pixel_buffers.h tells of.
void MoviesTask(Movie movie, SInt32 milliseconds);
/// The status of the movie's last frame, or of the world that was set for it since; `problem` (may
/// be null) takes null, since the track isn't told.
OSErr GetMovieStatus(Movie movie, Track* problem);
