#include "pixel_buffers.h"

#include <bit>
#include <memory>

#include "frame_memory.h"
#include "image_decoder.h"

const CFStringRef kCVPixelBufferPixelFormatTypeKey = CFSTR("PixelFormatType");
const CFStringRef kCVPixelBufferWidthKey = CFSTR("Width");
const CFStringRef kCVPixelBufferHeightKey = CFSTR("Height");
const CFStringRef kCVPixelBufferBytesPerRowAlignmentKey = CFSTR("BytesPerRowAlignment");
const CFStringRef kCVPixelBufferOpenGLCompatibilityKey = CFSTR("OpenGLCompatibility");
const CFStringRef kCVBufferDecodingMessageKey = CFSTR("DecodingMessage");

struct CVPixelBuffer final : CFObject {
  quillmere::imaging::FrameMemory memory;
  std::size_t width = 0;
  std::size_t height = 0;
  std::size_t row_bytes = 0;
  OSType format = 0;
  quillmere::Owned<CFMutableDictionaryRef> attachments;
};

namespace {

constexpr SInt64 kUsualAlignment = 64;
constexpr SInt64 kLargestAlignment = 4096;

/// The alignment that the attributes ask for; 0 for one that is not served.
std::size_t RowAlignment(CFDictionaryRef attributes) {
  SInt64 alignment = kUsualAlignment;
  const CFNumberRef number = attributes ? quillmere::AsNumber(CFDictionaryGetValue(
                                              attributes, kCVPixelBufferBytesPerRowAlignmentKey))
                                        : nullptr;
  if (number) CFNumberGetValue(number, kCFNumberSInt64Type, &alignment);
  if (alignment < 1 || alignment > kLargestAlignment) return 0;
  const auto bytes = static_cast<std::size_t>(alignment);
  return std::has_single_bit(bytes) ? bytes : 0;
}

}  // namespace

CVReturn CVPixelBufferCreate(CFAllocatorRef, std::size_t width, std::size_t height, OSType format,
                             CFDictionaryRef attributes, CVPixelBufferRef* buffer) {
  if (!buffer) return kCVReturnInvalidArgument;
  *buffer = nullptr;
  if (format != k32ARGBPixelFormat) return kCVReturnInvalidPixelFormat;
  const std::size_t alignment = RowAlignment(attributes);
  if (alignment == 0) return kCVReturnInvalidArgument;
  using namespace quillmere::imaging;
  if (width == 0 || height == 0 || width > kMaximumImageSide || height > kMaximumImageSide ||
      width * height > kMaximumImagePixels) {
    return kCVReturnInvalidSize;
  }
  auto made = std::make_unique<CVPixelBuffer>();
  made->row_bytes = (width * 4 + alignment - 1) / alignment * alignment;
  made->memory = FrameMemory::Acquire(made->row_bytes * height);
  if (!made->memory) return kCVReturnAllocationFailed;
  made->width = width;
  made->height = height;
  made->format = format;
  *buffer = made.release();
  return kCVReturnSuccess;
}

CVPixelBufferRef CVPixelBufferRetain(CVPixelBufferRef buffer) {
  CFRetain(buffer);
  return buffer;
}
void CVPixelBufferRelease(CVPixelBufferRef buffer) {
  CFRelease(buffer);
}

CVReturn CVPixelBufferLockBaseAddress(CVPixelBufferRef buffer, UInt64) {
  return buffer ? kCVReturnSuccess : kCVReturnInvalidArgument;
}
CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBufferRef buffer, UInt64) {
  return buffer ? kCVReturnSuccess : kCVReturnInvalidArgument;
}

std::size_t CVPixelBufferGetWidth(CVPixelBufferRef buffer) {
  return buffer ? buffer->width : 0;
}
std::size_t CVPixelBufferGetHeight(CVPixelBufferRef buffer) {
  return buffer ? buffer->height : 0;
}
void* CVPixelBufferGetBaseAddress(CVPixelBufferRef buffer) {
  return buffer ? buffer->memory.data() : nullptr;
}
std::size_t CVPixelBufferGetBytesPerRow(CVPixelBufferRef buffer) {
  return buffer ? buffer->row_bytes : 0;
}
OSType CVPixelBufferGetPixelFormatType(CVPixelBufferRef buffer) {
  return buffer ? buffer->format : 0;
}

void CVBufferSetAttachment(CVPixelBufferRef buffer, CFStringRef key, CFTypeRef value) {
  if (!buffer || !key || !value) return;
  if (!buffer->attachments) buffer->attachments.reset(CFDictionaryCreateMutable(nullptr));
  CFDictionarySetValue(buffer->attachments.get(), key, value);
}

CFTypeRef CVBufferGetAttachment(CVPixelBufferRef buffer, CFStringRef key) {
  if (!buffer || !key || !buffer->attachments) return nullptr;
  return CFDictionaryGetValue(buffer->attachments.get(), key);
}
