/// Writing JPEG files.
#pragma once

#include <filesystem>

#include "base_types.h"
#include "image_decoder.h"

namespace quillmere::imaging {

/// Where the colours stand in a pixel of four bytes; alpha is not written.
enum class PixelOrder { kArgb, kRgba };

struct JpegOptions {
  int quality = 80;            ///< 1 to 100 by libjpeg's scale
  double dots_per_inch_x = 0;  ///< 0: the file says nothing of its density
  double dots_per_inch_y = 0;
};

/// Writes a JFIF file in sRGB, baseline, chroma halved both ways (4:2:0), with the standard Huffman
/// tables: tables made for the picture would cost a second pass over it. The density goes in whole
/// dots per inch, or per centimetre where only that is exact.
/// The file is written under a hidden name beside `path` and renamed when it is complete; a failure
/// leaves an older file as it was and nothing else behind. Statuses of the files family,
/// memFullErr, or paramErr for a picture of no or more than 65,500 pixels a side.
OSStatus WriteJpegFile(const PixelBlock& picture, PixelOrder order, const JpegOptions& options,
                       const std::filesystem::path& path);

}  // namespace quillmere::imaging
