/// The JPEG side of image_decoder.h.
#pragma once

#include <span>
#include <vector>

#include "image_decoder.h"

namespace quillmere::imaging {

/// As ReadImageShape and DecodeImage, of bytes that start like a JPEG.
OSStatus ReadJpegShape(std::span<const UInt8> bytes, Turn turn, ImageShape* shape);
OSStatus DecodeJpeg(std::span<const UInt8> bytes, Turn turn, DecodedImage* image);

}  // namespace quillmere::imaging
