#include "image_encoder.h"

#include <png.h>
#include <turbojpeg.h>

#include <algorithm>
#include <memory>

namespace quillmere::imaging {

namespace {

constexpr UInt32 kLongestSide = 65500;

bool IsInRange(const PixelBlock& picture) {
  return picture.width >= 1 && picture.width <= kLongestSide && picture.height >= 1 &&
         picture.height <= kLongestSide;
}

struct DestroyHandle {
  void operator()(void* handle) const { tjDestroy(handle); }
};

png_image ImageOf(UInt32 width, UInt32 height) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = PNG_FORMAT_ARGB;
  return image;
}

}  // namespace

OSStatus EncodeJpeg(const PixelBlock& picture, int quality, std::vector<UInt8>* bytes) {
  if (!IsInRange(picture)) return paramErr;
  const std::unique_ptr<void, DestroyHandle> encoder(tjInitCompress());
  if (!encoder) return memFullErr;
  bytes->resize(static_cast<std::size_t>(LargestJpeg(picture.width, picture.height)));
  unsigned char* place = bytes->data();
  unsigned long size = bytes->size();
  const int result =
      tjCompress2(encoder.get(), picture.Row(0), static_cast<int>(picture.width),
                  static_cast<int>(picture.row_bytes), static_cast<int>(picture.height), TJPF_ARGB,
                  &place, &size, TJSAMP_420, std::clamp(quality, 1, 100), TJFLAG_NOREALLOC);
  bytes->resize(result == 0 ? size : 0);
  return result == 0 ? OSStatus{noErr} : OSStatus{memFullErr};
}

OSStatus EncodePng(const PixelBlock& picture, std::vector<UInt8>* bytes) {
  if (!IsInRange(picture)) return paramErr;
  png_image image = ImageOf(picture.width, picture.height);
  png_alloc_size_t size = LargestPng(picture.width, picture.height);
  bytes->resize(size);
  const int result = png_image_write_to_memory(&image, bytes->data(), &size, 0, picture.Row(0),
                                               static_cast<png_int_32>(picture.row_bytes), nullptr);
  png_image_free(&image);
  bytes->resize(result != 0 ? size : 0);
  return result != 0 ? OSStatus{noErr} : OSStatus{memFullErr};
}

UInt64 LargestJpeg(UInt32 width, UInt32 height) {
  return tjBufSize(static_cast<int>(std::min(width, kLongestSide)),
                   static_cast<int>(std::min(height, kLongestSide)), TJSAMP_420);
}

UInt64 LargestPng(UInt32 width, UInt32 height) {
  const png_image image = ImageOf(std::min(width, kLongestSide), std::min(height, kLongestSide));
  return PNG_IMAGE_PNG_SIZE_MAX(image);
}

}  // namespace quillmere::imaging
