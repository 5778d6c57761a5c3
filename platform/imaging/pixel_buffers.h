/// Pixel buffers: frames in memory, from a pool that is reused from frame to frame.
#pragma once

#include <cstddef>

#include "base_types.h"
#include "cf_values.h"
#include "reference_counted.h"

struct CVPixelBuffer;
using CVPixelBufferRef = CVPixelBuffer*;
using CVReturn = SInt32;

inline constexpr CVReturn kCVReturnSuccess = 0;
inline constexpr CVReturn kCVReturnInvalidArgument = -6661;
inline constexpr CVReturn kCVReturnAllocationFailed = -6662;
inline constexpr CVReturn kCVReturnInvalidSize = -6681;
inline constexpr CVReturn kCVReturnInvalidPixelFormat = -6680;

/// 32-bit pixels: alpha, red, green, blue, a byte each.
inline constexpr OSType k32ARGBPixelFormat = 32;

extern const CFStringRef kCVPixelBufferPixelFormatTypeKey;
extern const CFStringRef kCVPixelBufferWidthKey;
extern const CFStringRef kCVPixelBufferHeightKey;
extern const CFStringRef kCVPixelBufferBytesPerRowAlignmentKey;
extern const CFStringRef kCVPixelBufferOpenGLCompatibilityKey;

/// A buffer of `width` by `height` pixels, rows aligned as the attributes say (default 64 bytes).
/// Its content is undefined. The caller gives it up with CVPixelBufferRelease.
CVReturn CVPixelBufferCreate(CFAllocatorRef allocator, std::size_t width, std::size_t height,
                             OSType format, CFDictionaryRef attributes, CVPixelBufferRef* buffer);
void CVPixelBufferRelease(CVPixelBufferRef buffer);
/// Adds a reference and gives the buffer back; null is allowed.
CVPixelBufferRef CVPixelBufferRetain(CVPixelBufferRef buffer);
/// Locking keeps the memory where it is, as it always does here; kCVReturnInvalidArgument for null.
CVReturn CVPixelBufferLockBaseAddress(CVPixelBufferRef buffer, UInt64 flags);
CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBufferRef buffer, UInt64 flags);
std::size_t CVPixelBufferGetWidth(CVPixelBufferRef buffer);
std::size_t CVPixelBufferGetHeight(CVPixelBufferRef buffer);
void* CVPixelBufferGetBaseAddress(CVPixelBufferRef buffer);
std::size_t CVPixelBufferGetBytesPerRow(CVPixelBufferRef buffer);
OSType CVPixelBufferGetPixelFormatType(CVPixelBufferRef buffer);

/// What goes along with a buffer, under a key: a rendered still has the pixel density of its source
/// as numbers under kCGImagePropertyDPIWidth and kCGImagePropertyDPIHeight (images.h), and neither
/// when the source does not say. The buffer keeps a reference of its own; the value got is lent,
/// null for none.
extern const CFStringRef
    kCVBufferDecodingMessageKey;  // a string: what was wrong with a cut or damaged picture
void CVBufferSetAttachment(CVPixelBufferRef buffer, CFStringRef key, CFTypeRef value);
CFTypeRef CVBufferGetAttachment(CVPixelBufferRef buffer, CFStringRef key);
