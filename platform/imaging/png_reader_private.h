/// The PNG side of image_decoder.h.
///
/// Colours: an iCCP profile of the picture's own model counts first, then sRGB, then gAMA with
/// cHRM; a picture that says nothing is sRGB. gAMA within 5 per cent of 1/2.2 with the primaries of
/// sRGB is the common way of writing sRGB and taken as that.
#pragma once

#include <span>

#include "image_decoder.h"

namespace quillmere::imaging {

/// As ReadImageShape and DecodeImage, of bytes that start like a PNG.
OSStatus ReadPngShape(std::span<const UInt8> bytes, ImageShape* shape);
OSStatus DecodePng(std::span<const UInt8> bytes, DecodedImage* image);

}  // namespace quillmere::imaging
