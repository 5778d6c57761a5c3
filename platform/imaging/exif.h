/// The few values that rendering needs from a camera's Exif block.
#pragma once

#include <span>

#include "base_types.h"

namespace quillmere::imaging {

struct ExifValues {
  UInt8 orientation = 1;       ///< 1 to 8: where the picture's first row and column belong
  double dots_per_inch_x = 0;  ///< 0 when it does not say
  double dots_per_inch_y = 0;
};

/// Reads an Exif block that starts with its TIFF header ("II" or "MM"). Values that are missing or
/// damaged keep their defaults. Source: TIFF 6.0 and Exif 2.32, tags 0x0112, 0x011A, 0x011B,
/// 0x0128.
ExifValues ParseExif(std::span<const UInt8> tiff);

/// The TIFF part of a JPEG's APP1 segment (without marker and length), empty if it is no Exif
/// block.
std::span<const UInt8> ExifOfSegment(std::span<const UInt8> segment);

}  // namespace quillmere::imaging
