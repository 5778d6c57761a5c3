/// Decoding PNG and JPEG pictures from memory into frames.
///
/// A decoded picture has four bytes a pixel in the order alpha, red, green, blue; alpha is
/// straight; the colours are sRGB: an embedded profile, or a PNG's gamma and primaries, have been
/// applied. Nothing here knows of movies. All calls may be made from any thread.
#pragma once

#include <span>
#include <string>

#include "base_types.h"
#include "frame_memory.h"

namespace quillmere::imaging {

/// Statuses of decoding.
inline constexpr OSStatus kImageUnexpectedEnd = -5;
inline constexpr OSStatus kImageInvalidData = -4;
inline constexpr OSStatus kImageUnknownType = -3;

/// Largest picture that is decoded: pixels a side, and in all.
inline constexpr UInt32 kMaximumImageSide = 65535;
inline constexpr UInt64 kMaximumImagePixels = UInt64{512} << 20;

/// A block of pixels that belongs to someone else: `width` by `height`, `row_bytes` apart.
struct PixelBlock {
  UInt8* pixels = nullptr;
  std::size_t row_bytes = 0;
  UInt32 width = 0;
  UInt32 height = 0;

  UInt8* Row(UInt32 y) const { return pixels + y * row_bytes; }
};

/// A decoded picture with its memory.
struct DecodedImage {
  FrameMemory memory;
  PixelBlock block;
  bool opaque = true;  ///< no pixel's alpha is below 255
  std::string
      warning;  ///< not empty: the file was damaged or cut, and the picture is what there was

  /// Bytes that its pixels take.
  std::size_t ByteCount() const { return block.row_bytes * block.height; }
};

/// What a picture's headers say of its decoding.
struct ImageShape {
  OSType format = 0;  ///< "png "_4cc or "jpeg"_4cc
  UInt32 width = 0;   ///< as decoded: turned upright if that was asked for
  UInt32 height = 0;
  UInt8 orientation = 1;  ///< that will be applied
};

/// Whether a picture's orientation tag is applied.
enum class Turn { kUpright, kAsEncoded };

/// Tells what DecodeImage would give, from the headers alone. kImageUnknownType for bytes of
/// another kind, kImageInvalidData for headers that are damaged or sides outside the limits.
OSStatus ReadImageShape(std::span<const UInt8> bytes, Turn turn, ImageShape* shape);

/// Decodes into new memory. A JPEG that ends early or has damaged data gives what could be decoded,
/// with `warning` set; one of which nothing can be decoded, and a PNG that is not whole, gives
/// kImageUnexpectedEnd or kImageInvalidData; memFullErr when there is no memory.
OSStatus DecodeImage(std::span<const UInt8> bytes, Turn turn, DecodedImage* image);

/// Decodes a JPEG straight into `target`, whose sides must be those of ReadImageShape (else
/// paramErr). `incomplete` may be null. Statuses as for DecodeImage; the target's content is
/// undefined after a failure.
OSStatus DecodeJpegInto(std::span<const UInt8> bytes, Turn turn, const PixelBlock& target,
                        std::string* warning);

/// Makes memory for a picture of that size, rows aligned to 64 bytes; memFullErr if there is none.
OSStatus AllocateImage(UInt32 width, UInt32 height, DecodedImage* image);

}  // namespace quillmere::imaging
