#include "QM_still.h"

#include "GL_CF.h"
#include "GL_Errors.h"
#include "QM_main.h"
#include "images.h"
#include "replacement_guard.h"

namespace {

using quillmere::AtExit;
using quillmere::Owned;
using quillmere::movies::IsProtectedFromReplacement;

constexpr Float32 kJpegQuality = 0.8F;

/// What the file is to be written with: the quality, and the density of the source if it has one.
CFDictionaryRef CreateOptions(CVPixelBufferRef buffer) {
  CFMutableDictionaryRef options = CFDictionaryCreateMutable(kCFAllocatorDefault);
  CF_AddFloat32ToDict(options, kCGImageDestinationLossyCompressionQuality, kJpegQuality);
  for (CFStringRef key : {kCGImagePropertyDPIWidth, kCGImagePropertyDPIHeight}) {
    if (CFTypeRef density = CVBufferGetAttachment(buffer, key)) {
      CFDictionarySetValue(options, key, density);
    }
  }
  return options;
}

/// Writes an image; a file that can't be made or written is no failure of the still.
SInt32 WriteStill(const QM_MaskData* data, CGImageRef image, CVPixelBufferRef buffer) {
  const Owned<CFURLRef> folder(CFURLCreateFromFSRef(kCFAllocatorDefault, &data->targetFolder));
  if (!folder) return GL_NoURLErr;
  const Owned<CFStringRef> name(CFStringCreateWithFormat(kCFAllocatorDefault, nullptr,
                                                         CFSTR("%@-clean.jpg"), data->stillName));
  const Owned<CFURLRef> file(
      CFURLCreateCopyAppendingPathComponent(kCFAllocatorDefault, folder.get(), name.get(), 0));
  if (!file) return GL_NoURLErr;
  if (IsProtectedFromReplacement(quillmere::PathOf(file.get()))) return dupFNErr;
  const Owned<CGImageDestinationRef> destination(
      CGImageDestinationCreateWithURL(file.get(), kUTTypeJPEG, 1, nullptr));
  if (!destination) return noErr;
  const Owned<CFDictionaryRef> options(CreateOptions(buffer));
  CGImageDestinationAddImage(destination.get(), image, options.get());
  CGImageDestinationFinalize(destination.get());
  return noErr;
}

SInt32 WriteBuffer(const QM_MaskData* data, CVPixelBufferRef buffer, CGColorSpaceRef space) {
  constexpr std::size_t kBitsPerComponent = 8;
  CVPixelBufferLockBaseAddress(buffer, 0);
  const AtExit unlock([buffer] { CVPixelBufferUnlockBaseAddress(buffer, 0); });
  const Owned<CGContextRef> context(CGBitmapContextCreate(
      CVPixelBufferGetBaseAddress(buffer), CVPixelBufferGetWidth(buffer),
      CVPixelBufferGetHeight(buffer), kBitsPerComponent, CVPixelBufferGetBytesPerRow(buffer), space,
      kCGImageAlphaPremultipliedFirst));
  if (!context) return GL_BitmapContextErr;
  const Owned<CGImageRef> image(CGBitmapContextCreateImage(context.get()));
  if (!image) return GL_ImageErr;
  return WriteStill(data, image.get(), buffer);
}

}  // namespace

void QM_ImageAvailableCallback(QTVisualContextRef context, const CVTimeStamp* time,
                               void* mask_data) {
  auto* data = static_cast<QM_MaskData*>(mask_data);
  const Owned<CGColorSpaceRef> space(CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB));
  CVPixelBufferRef buffer = nullptr;
  SInt32 status = QTVisualContextCopyImageForTime(context, kCFAllocatorDefault, time, &buffer);
  if (status != noErr) {
    QM_ReportFailure("QTVisualContextCopyImageForTime", status);
  } else if (buffer != nullptr) {
    status = WriteBuffer(data, buffer, space.get());
    CVPixelBufferRelease(buffer);
  }
  if (status == GL_ImageErr) status = noErr;  // counts as done, without a file
  data->stillError = status;
  if (status != noErr) QM_ReportExit("QM_ImageAvailableCallbackDL", status);
}
