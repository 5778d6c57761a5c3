#include "png_writer.h"

#include <png.h>

#include <vector>

#include "whole_files.h"

namespace quillmere::imaging {

OSStatus WritePngFile(std::span<const UInt8> rgb, UInt32 width, UInt32 height,
                      const std::filesystem::path& path) {
  if (width < 1 || height < 1 || rgb.size() != std::size_t{3} * width * height) return paramErr;
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = PNG_FORMAT_RGB;
  std::vector<UInt8> bytes(PNG_IMAGE_PNG_SIZE_MAX(image));
  png_alloc_size_t size = bytes.size();
  if (png_image_write_to_memory(&image, bytes.data(), &size, 0, rgb.data(), 0, nullptr) == 0)
    return memFullErr;
  return ReplaceWholeFile(path, std::span(bytes).first(size), false);
}

}  // namespace quillmere::imaging
