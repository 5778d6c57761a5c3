#include "image_decoder.h"

#include "image_bytes_private.h"
#include "jpeg_reader_private.h"
#include "png_reader_private.h"

namespace quillmere::imaging {

OSStatus AllocateImage(UInt32 width, UInt32 height, DecodedImage* image) {
  constexpr std::size_t kAlignment = 64;
  PixelBlock block;
  block.width = width;
  block.height = height;
  block.row_bytes = (std::size_t{width} * 4 + kAlignment - 1) / kAlignment * kAlignment;
  image->memory = FrameMemory::Acquire(block.row_bytes * height);
  block.pixels = image->memory.data();
  image->block = block;
  return image->memory ? noErr : memFullErr;
}

OSStatus ReadImageShape(std::span<const UInt8> bytes, Turn turn, ImageShape* shape) {
  if (StartsWith(bytes, kPngSignature)) return ReadPngShape(bytes, shape);
  if (StartsWith(bytes, kJpegSignature)) return ReadJpegShape(bytes, turn, shape);
  return kImageUnknownType;
}

OSStatus DecodeImage(std::span<const UInt8> bytes, Turn turn, DecodedImage* image) {
  if (StartsWith(bytes, kPngSignature)) return DecodePng(bytes, image);
  if (StartsWith(bytes, kJpegSignature)) return DecodeJpeg(bytes, turn, image);
  return kImageUnknownType;
}

}  // namespace quillmere::imaging
