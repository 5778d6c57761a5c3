/// What the headers of an image file say, without decoding it.
#pragma once

#include <filesystem>

#include "base_types.h"

namespace quillmere::imaging {

struct ImageFileInfo {
  OSType format = 0;  ///< "png "_4cc or "jpeg"_4cc
  UInt32 width = 0;   ///< in pixels, as encoded
  UInt32 height = 0;  ///< in pixels, as encoded
  UInt16 depth =
      0;  ///< bits a pixel by the image description's rule: 24, 32 with alpha, 40 for 8-bit grey
  UInt8 orientation = 1;       ///< 1 to 8 as in TIFF and Exif; 1 is upright
  double dots_per_inch_x = 0;  ///< 0 when the file does not say
  double dots_per_inch_y = 0;
  UInt64 data_offset = 0;  ///< of the compressed image in the file, in bytes
  UInt64 data_size = 0;    ///< in bytes
};

/// Reads the headers of a PNG or JPEG file. A file of another kind gives -3
/// (kCGImageStatusUnknownType), a damaged one -4, one that can't be read a status of the files
/// family. `file_descriptor` stays the caller's.
OSStatus ReadImageFileInfo(const std::filesystem::path& path, ImageFileInfo* info);
OSStatus ReadImageFileInfo(int file_descriptor, ImageFileInfo* info);

}  // namespace quillmere::imaging
