/// Compressors and worlds that the sources of QT_Compression.h open and make.
#pragma once

#include <memory>

#include "big_endian.h"
#include "image_compression.h"

namespace quillmere {

struct CloseCompressor {
  void operator()(CompressorComponent compressor) const { CloseComponent(compressor); }
};
using OpenCompressor = std::unique_ptr<ImageCompressor, CloseCompressor>;

inline bool HasBytes(Handle settings) {
  return settings != nullptr && GetHandleSize(settings) > 0;
}

/// The format that settings of `icod` name: the big-endian word at byte 8; 0 where they are
/// shorter.
inline OSType IntermediateSubtypeOf(Handle settings) {
  constexpr Size kPlace = 8;
  if (settings == nullptr || GetHandleSize(settings) < kPlace + 4) return 0;
  return ReadU32(reinterpret_cast<const UInt8*>(*settings) + kPlace);
}

/// Opens the compressor of a type and gives it settings, if there are any.
inline SInt32 OpenCompressorOf(OSType codecType, Handle settings, OpenCompressor* compressor) {
  CompressorComponent opened = nullptr;
  const SInt32 status = OpenADefaultComponent(kCompressorComponentType, codecType, &opened);
  compressor->reset(opened);
  if (status || !HasBytes(settings)) return status;
  return ImageCodecSetSettings(opened, settings);
}

/// A world of a rectangle's size, disposed of at the end: of `2vuy`, or of 32 bits for any other
/// format.
class PictureBuffer {
 public:
  PictureBuffer() = default;
  ~PictureBuffer() { DisposeGWorld(world_); }
  PictureBuffer(const PictureBuffer&) = delete;
  PictureBuffer& operator=(const PictureBuffer&) = delete;

  SInt32 Make(OSType format, const Rect& rect) {
    const OSType made = format == "2vuy"_4cc ? format : 32;
    return QTNewGWorld(&world_, made, &rect, nullptr, nullptr, 0);
  }
  PixMapHandle pixels() const { return GetGWorldPixMap(world_); }
  GWorldPtr world() const { return world_; }

 private:
  GWorldPtr world_ = nullptr;
};

/// Makes the buffer, and opens the compressor where there are settings for it.
inline SInt32 PrepareCompression(OSType pixelFormat, const Rect& rect, OSType codecType,
                                 Handle settings, PictureBuffer* buffer,
                                 OpenCompressor* compressor) {
  const SInt32 status = buffer->Make(pixelFormat, rect);
  return status || !HasBytes(settings) ? status : OpenCompressorOf(codecType, settings, compressor);
}

}  // namespace quillmere
