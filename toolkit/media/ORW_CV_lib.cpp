#include "ORW_CV_lib.h"

#include "cf_values.h"
#include "pixel_buffers.h"

namespace {

constexpr SInt32 kRowAlignment = 64;

/// Puts a 32-bit number under the key.
void AddSInt32(CFMutableDictionaryRef dictionary, CFStringRef key, SInt32 value) {
  const quillmere::Owned<CFNumberRef> number(
      CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &value));
  CFDictionarySetValue(dictionary, key, number.get());
}

}  // namespace

SInt32 CV_CreatePixelBufferContext(UInt32 pixelFormat, const CGRect* rect,
                                   QTVisualContextRef* outContext) {
  if (!rect || !outContext) return paramErr;
  *outContext = nullptr;
  const quillmere::Owned<CFMutableDictionaryRef> buffers(
      CFDictionaryCreateMutable(kCFAllocatorDefault));
  const quillmere::Owned<CFMutableDictionaryRef> context(
      CFDictionaryCreateMutable(kCFAllocatorDefault));
  AddSInt32(buffers.get(), kCVPixelBufferPixelFormatTypeKey, static_cast<SInt32>(pixelFormat));
  AddSInt32(buffers.get(), kCVPixelBufferWidthKey, static_cast<SInt32>(rect->size.width));
  AddSInt32(buffers.get(), kCVPixelBufferHeightKey, static_cast<SInt32>(rect->size.height));
  AddSInt32(buffers.get(), kCVPixelBufferBytesPerRowAlignmentKey, kRowAlignment);
  CFDictionarySetValue(buffers.get(), kCVPixelBufferOpenGLCompatibilityKey, kCFBooleanTrue);
  CFDictionarySetValue(context.get(), kQTVisualContextPixelBufferAttributesKey, buffers.get());
  return QTPixelBufferContextCreate(kCFAllocatorDefault, context.get(), outContext);
}
