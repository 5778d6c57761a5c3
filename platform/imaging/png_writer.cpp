#include "png_writer.h"

#include <png.h>

#include "file_references.h"

namespace quillmere::imaging {

OSStatus WritePngFile(std::span<const UInt8> rgb, UInt32 width, UInt32 height,
                      const std::filesystem::path& path) {
  if (width < 1 || height < 1 || rgb.size() != std::size_t{3} * width * height) return paramErr;
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = PNG_FORMAT_RGB;
  return png_image_write_to_file(&image, path.c_str(), 0, rgb.data(), 0, nullptr) != 0
             ? OSStatus{noErr}
             : OSStatus{ioErr};
}

}  // namespace quillmere::imaging
