/// Pictures compressed as frames of DV (SMPTE 314M, IEC 61834) and DVCPRO HD (SMPTE 370M), whose
/// sizes, rates and bytes a frame are fixed.
#pragma once

#include <span>
#include <vector>

#include "base_types.h"
#include "image_decoder.h"

namespace quillmere::codecs {

struct Ratio {
  UInt32 numerator;
  UInt32 denominator;
};

/// What all formats of a picture size share.
struct DvPicture {
  UInt16 width;  ///< pixels
  UInt16 height;
  Ratio rate;         ///< frames a second
  Ratio pixel;        ///< width over height of a pixel, in pictures of 4:3 or those of HD
  Ratio wide_pixel;   ///< the same in pictures of 16:9
  Ratio clean_width;  ///< pixels of the clean aperture
  Ratio clean_height;
  bool is_progressive;  ///< always
  bool is_top_first;    ///< of two fields
};

/// One of the formats.
struct DvFormat {
  const char* name;
  OSType type;  ///< of its sample descriptions
  UInt32 frame_bytes;
  const DvPicture* picture;
};

std::span<const DvFormat> DvFormats();
/// The format of a type; null for another type.
const DvFormat* DvFormatOf(OSType type);

/// Scales ARGB pixels, whose alpha is left out, to the format's size and compresses them; `is_wide`
/// marks the frame as one of 16:9. kEncoderMissing without FFmpeg's libraries, kEncodingFailed,
/// memFullErr.
inline constexpr OSStatus kEncoderMissing = -8961;
inline constexpr OSStatus kEncodingFailed = -8966;
OSStatus EncodeDv(const DvFormat& format, bool is_wide, const imaging::PixelBlock& picture,
                  std::vector<UInt8>* bytes);

}  // namespace quillmere::codecs
