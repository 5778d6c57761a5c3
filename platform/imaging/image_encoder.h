/// Pictures compressed in memory.
#pragma once

#include <vector>

#include "base_types.h"
#include "image_decoder.h"

namespace quillmere::imaging {

/// A baseline JPEG, chroma halved both ways, of ARGB pixels whose alpha is left out; `quality` is 1
/// to 100. paramErr for a picture of no or more than 65,500 pixels a side, memFullErr.
OSStatus EncodeJpeg(const PixelBlock& picture, int quality, std::vector<UInt8>* bytes);
/// A PNG of ARGB pixels with straight alpha.
OSStatus EncodePng(const PixelBlock& picture, std::vector<UInt8>* bytes);
/// The most bytes that either takes for a picture of that size.
UInt64 LargestJpeg(UInt32 width, UInt32 height);
UInt64 LargestPng(UInt32 width, UInt32 height);

}  // namespace quillmere::imaging
