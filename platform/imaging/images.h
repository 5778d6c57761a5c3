/// Images, colour spaces, bitmap contexts, and their files.
///
/// An image is a block of 8-bit pixels of the kind its record tells. Reading and writing rest on
/// libpng, libjpeg-turbo and lcms2.
#pragma once

#include <cstddef>
#include <memory>

#include "base_types.h"
#include "cf_strings.h"
#include "cf_urls.h"
#include "cf_values.h"
#include "graphics_types.h"
#include "reference_counted.h"

struct CGColorSpace;
struct CGImage;
struct CGContext;
struct CGImageSource;
struct CGImageDestination;
using CGColorSpaceRef = const CGColorSpace*;
using CGImageRef = const CGImage*;
using CGContextRef = CGContext*;
using CGImageSourceRef = const CGImageSource*;
using CGImageDestinationRef = CGImageDestination*;

/// Alpha information of a bitmap context: where alpha stands in a pixel, and if the colours have
/// been multiplied with it.
enum CGImageAlphaInfo : UInt32 {
  kCGImageAlphaNone = 0,
  kCGImageAlphaPremultipliedLast = 1,
  kCGImageAlphaPremultipliedFirst = 2,
  kCGImageAlphaLast = 3,
  kCGImageAlphaFirst = 4,
  kCGImageAlphaNoneSkipLast = 5,
  kCGImageAlphaNoneSkipFirst = 6
};

/// Names of colour spaces, type identifiers and keys; constant strings.
extern const CFStringRef kCGColorSpaceGenericRGB;
extern const CFStringRef kUTTypePNG;   // "public.png"
extern const CFStringRef kUTTypeJPEG;  // "public.jpeg"
extern const CFStringRef kCGImageSourceTypeIdentifierHint;
extern const CFStringRef kCGImageDestinationLossyCompressionQuality;
/// Dots per inch, numbers, in the options of CGImageDestinationAddImage.
extern const CFStringRef kCGImagePropertyDPIWidth;
extern const CFStringRef kCGImagePropertyDPIHeight;

/// The colour space of that name (the generic RGB space is sRGB here); null for an unknown name.
CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef name);
void CGColorSpaceRelease(CGColorSpaceRef space);

/// A context over the caller's pixels, which must outlive it and every image made of it. 8 bits a
/// component, 4 components, `row_bytes` at least 4 x width. Null when an argument is not supported.
CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                   std::size_t bits_per_component, std::size_t row_bytes,
                                   CGColorSpaceRef space, UInt32 bitmap_info);
/// An image of the context's pixels. It shares them with the caller, so that a frame is not copied
/// on its way into a file: the pixels must stay as they are while the image lives.
CGImageRef CGBitmapContextCreateImage(CGContextRef context);
std::size_t CGImageGetWidth(CGImageRef image);
std::size_t CGImageGetHeight(CGImageRef image);

/// A source of the images in a file; null if the file can't be read or is of no known kind.
/// `options` may be null.
CGImageSourceRef CGImageSourceCreateWithURL(CFURLRef url, CFDictionaryRef options);
/// 0 complete, -5 unexpected end of file (a JPEG that was cut or damaged still gives its image), -4
/// invalid data, -3 unknown type.
SInt32 CGImageSourceGetStatus(CGImageSourceRef source);
/// The image at `index` from 0, or null. The caller owns it.
CGImageRef CGImageSourceCreateImageAtIndex(CGImageSourceRef source, std::size_t index,
                                           CFDictionaryRef options);

/// A destination that writes `count` images of the type to a file; null if the type is not
/// supported, or the folder can't be written to. Nothing is written before
/// CGImageDestinationFinalize.
CGImageDestinationRef CGImageDestinationCreateWithURL(CFURLRef url, CFStringRef type,
                                                      std::size_t count, CFDictionaryRef options);
/// Adds an image; `options` (may be null) holds the quality, 0 to 1, and the pixel density.
void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image,
                                CFDictionaryRef options);
/// Writes the file: beside its final name first, then renamed over it, so that a failure leaves an
/// older file as it was. False on failure.
Boolean CGImageDestinationFinalize(CGImageDestinationRef destination);

namespace quillmere::imaging {

/// Pixels of four bytes in the order red, green, blue, alpha for display by a toolkit: straight
/// alpha, `row_bytes` apart, valid while the image lives.
struct PixelView {
  const UInt8* rgba = nullptr;
  std::size_t width = 0;
  std::size_t height = 0;
  std::size_t row_bytes = 0;
};
PixelView StraightRgbaOf(CGImageRef image);

}  // namespace quillmere::imaging
