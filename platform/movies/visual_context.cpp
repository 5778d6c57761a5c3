#include "visual_context.h"

#include <memory>
#include <string>

#include "compositor.h"
#include "images.h"
#include "movie_playing.h"
#include "rectangles.h"
#include "toolbox_records.h"
#include "video_pixels.h"
#include "visible_samples.h"

const CFStringRef kQTVisualContextPixelBufferAttributesKey = CFSTR("PixelBufferAttributes");
const CFStringRef kQTVisualContextOutputColorSpaceKey = CFSTR("OutputColorSpace");

using quillmere::Owned;

struct QTVisualContext final : CFObject {
  Owned<CFMutableDictionaryRef> attributes;
  QTVisualContextImageAvailableCallback callback = nullptr;
  void* user_data = nullptr;
  /// The newest image, or the status of the failure to make it.
  Owned<CVPixelBufferRef> image;
  OSStatus status = noErr;
};

namespace {

/// The pixel buffer attributes of a context; null if it was made without any.
CFDictionaryRef BufferAttributesOf(const QTVisualContext& context) {
  return quillmere::AsDictionary(
      CFDictionaryGetValue(context.attributes.get(), kQTVisualContextPixelBufferAttributesKey));
}

/// The number under `key`, or `fallback`.
SInt64 NumberOf(CFDictionaryRef attributes, CFStringRef key, SInt64 fallback) {
  const CFNumberRef number =
      attributes ? quillmere::AsNumber(CFDictionaryGetValue(attributes, key)) : nullptr;
  SInt64 value = fallback;
  if (number) CFNumberGetValue(number, kCFNumberSInt64Type, &value);
  return value;
}

/// A buffer by the context's attributes; what they don't say is the movie's box and 32-bit ARGB.
OSStatus MakeBuffer(const QTVisualContext& context, const Rect& box, CVPixelBufferRef* buffer) {
  const CFDictionaryRef attributes = BufferAttributesOf(context);
  const SInt64 width = NumberOf(attributes, kCVPixelBufferWidthKey, box.right - box.left);
  const SInt64 height = NumberOf(attributes, kCVPixelBufferHeightKey, box.bottom - box.top);
  const SInt64 format =
      NumberOf(attributes, kCVPixelBufferPixelFormatTypeKey, SInt64{k32ARGBPixelFormat});
  if (width <= 0 || height <= 0) return kCVReturnInvalidSize;
  return CVPixelBufferCreate(kCFAllocatorDefault, static_cast<std::size_t>(width),
                             static_cast<std::size_t>(height), static_cast<OSType>(format),
                             attributes, buffer);
}

void AttachNumber(CVPixelBufferRef buffer, CFStringRef key, double value) {
  const Owned<CFNumberRef> number(
      CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &value));
  CVBufferSetAttachment(buffer, key, number.get());
}

/// Notes the density of the still that the movie was opened from, and what was wrong with it.
void AttachSourceProperties(Movie movie, const std::string& warning, CVPixelBufferRef buffer) {
  double x = 0;
  double y = 0;
  quillmere::movies::StillDensityOf(movie, &x, &y);
  if (x > 0 && y > 0) {
    AttachNumber(buffer, kCGImagePropertyDPIWidth, x);
    AttachNumber(buffer, kCGImagePropertyDPIHeight, y);
  }
  if (!warning.empty()) {
    const Owned<CFStringRef> text(quillmere::CreateFromUtf8(warning));
    CVBufferSetAttachment(buffer, kCVBufferDecodingMessageKey, text.get());
  }
}

OSStatus RenderFrame(Movie movie, const QTVisualContext& context, CVPixelBufferRef* image) {
  std::vector<quillmere::movies::VisibleSample> samples;
  OSStatus status =
      quillmere::movies::VisibleSamplesAt(movie, GetMovieTime(movie, nullptr), &samples);
  if (status != noErr) return status;
  Rect box;
  GetMovieBox(movie, &box);
  Owned<CVPixelBufferRef> buffer;
  status = MakeBuffer(context, box, buffer.out());
  if (status != noErr) return status;
  const quillmere::imaging::PixelBlock frame = {
      static_cast<UInt8*>(CVPixelBufferGetBaseAddress(buffer.get())),
      CVPixelBufferGetBytesPerRow(buffer.get()),
      static_cast<UInt32>(CVPixelBufferGetWidth(buffer.get())),
      static_cast<UInt32>(CVPixelBufferGetHeight(buffer.get()))};
  std::string warning;
  status = quillmere::movies::ComposeSamples(samples, box.left, box.top, frame, &warning);
  if (status != noErr) return status;
  AttachSourceProperties(movie, warning, buffer.get());
  *image = buffer.release();
  return noErr;
}

}  // namespace

OSStatus quillmere::movies::DrawFrame(Movie movie, TimeValue time, const FrameTarget& target) {
  constexpr Fixed kGammaOfSrgb = 0x23333;  // 2.2
  std::vector<VisibleSample> samples;
  const OSStatus status = VisibleSamplesAt(movie, time, &samples);
  if (status != noErr) return status;
  Rect box;
  GetMovieBox(movie, &box);
  Rect part;
  if (!SectRect(&box, &target.bounds, &part)) return noErr;
  if (target.gamma_level) *target.gamma_level = kGammaOfSrgb;
  const auto left = static_cast<UInt32>(part.left - target.bounds.left);
  const auto top = static_cast<UInt32>(part.top - target.bounds.top);
  const auto width = static_cast<UInt32>(part.right - part.left);
  const auto height = static_cast<UInt32>(part.bottom - part.top);
  const auto compose = [&](imaging::PixelBlock frame) {
    frame.width = width;
    frame.height = height;
    return ComposeSamples(samples, part.left, part.top, frame, nullptr);
  };
  if (!target.is_2vuy) {
    imaging::PixelBlock frame = target.pixels;
    frame.pixels = frame.Row(top) + std::size_t{4} * left;
    return compose(frame);
  }
  imaging::DecodedImage image;
  const OSStatus allocated = imaging::AllocateImage(width, height, &image);
  const OSStatus composed = allocated != noErr ? allocated : compose(image.block);
  if (composed == noErr) imaging::ArgbTo2vuy(image.block, left, top, target.pixels);
  return composed;
}

OSStatus QTPixelBufferContextCreate(CFAllocatorRef, CFDictionaryRef attributes,
                                    QTVisualContextRef* context) {
  if (!context) return paramErr;
  *context = nullptr;
  auto made = std::make_unique<QTVisualContext>();
  made->attributes.reset(CFDictionaryCreateMutable(kCFAllocatorDefault));
  if (attributes) {
    const CFTypeRef buffers =
        CFDictionaryGetValue(attributes, kQTVisualContextPixelBufferAttributesKey);
    if (buffers) {
      CFDictionarySetValue(made->attributes.get(), kQTVisualContextPixelBufferAttributesKey,
                           buffers);
    }
  }
  *context = made.release();
  return noErr;
}

OSStatus QTVisualContextSetAttribute(QTVisualContextRef context, CFStringRef key, CFTypeRef value) {
  if (!context || !key) return paramErr;
  if (value) {
    CFDictionarySetValue(context->attributes.get(), key, value);
  } else {
    CFDictionaryRemoveValue(context->attributes.get(), key);
  }
  return noErr;
}

OSStatus QTVisualContextSetImageAvailableCallback(QTVisualContextRef context,
                                                  QTVisualContextImageAvailableCallback callback,
                                                  void* user_data) {
  if (!context) return paramErr;
  context->callback = callback;
  context->user_data = user_data;
  return noErr;
}

OSStatus QTVisualContextCopyImageForTime(QTVisualContextRef context, CFAllocatorRef,
                                         const CVTimeStamp*, CVPixelBufferRef* image) {
  if (!context || !image) return paramErr;
  *image = CVPixelBufferRetain(context->image.get());
  return context->status;
}

void QTVisualContextRelease(QTVisualContextRef context) {
  CFRelease(context);
}

OSStatus GetMovieVisualContext(Movie movie, QTVisualContextRef* context) {
  if (!context) return paramErr;
  *context = movie ? movie->visual_context : nullptr;
  return movie ? noErr : invalidMovie;
}

OSStatus SetMovieVisualContext(Movie movie, QTVisualContextRef context) {
  if (!movie) return invalidMovie;
  movie->visual_context = context;
  movie->frame_delivered = false;
  return noErr;
}

void MoviesTask(Movie movie, SInt32) {
  if (!movie || !movie->active) return;
  quillmere::movies::CatchUp(movie);
  if (movie->frame_delivered || (!movie->visual_context && !movie->port)) return;
  // Set before the callbacks, which may serve the movie again.
  movie->frame_delivered = true;
  if (movie->visual_context) {
    QTVisualContext& context = *movie->visual_context;
    context.status = RenderFrame(movie, context, context.image.out());
    movie->drawing_status = quillmere::movies::NoteStatus(context.status);
    const CVTimeStamp time = {movie->time, GetMovieTimeScale(movie)};
    if (context.callback) context.callback(&context, &time, context.user_data);
  } else {
    movie->drawing_status = quillmere::movies::NoteStatus(quillmere::movies::DrawFrame(
        movie, GetMovieTime(movie, nullptr), movie->target_of(movie->port)));
  }
  if (movie->drawing_complete) movie->drawing_complete(movie, movie->drawing_constant);
}

OSErr GetMovieStatus(Movie movie, Track* problem) {
  if (problem) *problem = nullptr;
  return movie ? static_cast<OSErr>(movie->drawing_status) : static_cast<OSErr>(invalidMovie);
}
