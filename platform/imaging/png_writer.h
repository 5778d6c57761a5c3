/// Writing PNG files.
#pragma once

#include <filesystem>
#include <span>

#include "base_types.h"

namespace quillmere::imaging {

/// Writes a picture of three bytes a pixel (red, green, blue in sRGB), rows without padding from
/// the top, in the place of what stands there; a failure may leave a part of it. paramErr for a
/// size below 1 or other than the bytes', ioErr if it can't be written.
OSStatus WritePngFile(std::span<const UInt8> rgb, UInt32 width, UInt32 height,
                      const std::filesystem::path& path);

}  // namespace quillmere::imaging
