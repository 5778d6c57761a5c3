/// Pictures of video decoded from a movie's samples.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "base_types.h"
#include "image_decoder.h"

namespace quillmere::codecs {

/// A type of sample descriptions whose samples are decoded.
struct DecodableType {
  OSType type;
  const char* name;
  /// The description's extension that a decoder is set up with, 0 for none; of `esds` the decoder's
  /// own part of it (ISO/IEC 14496-1, 7.2.6.7).
  OSType setup;
};
std::span<const DecodableType> DecodableTypes();
/// The entry of a type; null for another type.
const DecodableType* DecodableTypeOf(OSType type);

/// What a sample description tells a decoder.
struct VideoFormat {
  OSType type;
  UInt32 width;  ///< pixels
  UInt32 height;
  UInt16 depth;                  ///< bits a pixel
  std::span<const UInt8> setup;  ///< the content of the extension
};

/// Gives the next sample in decode order and the time at which its picture is shown; false at the
/// end.
using NextSample = std::function<bool(std::vector<UInt8>* bytes, SInt64* time)>;

inline constexpr OSStatus kNoDecoder = -8961;
inline constexpr OSStatus kNoSuchPicture = -8960;
inline constexpr OSStatus kVideoInvalidData = -8969;

/// Decodes samples of one description from one that needs no other on.
class VideoDecoder {
 public:
  /// kNoDecoder, and null, for a type that isn't decoded and without FFmpeg's libraries.
  static OSStatus Open(const VideoFormat& format, std::unique_ptr<VideoDecoder>* decoder);
  virtual ~VideoDecoder() = default;

  /// Decodes further samples until the picture of a time comes out, as opaque ARGB. Times rise from
  /// call to call. kNoSuchPicture when one of a later time or none comes out, kVideoInvalidData
  /// when there was damage as well, memFullErr.
  virtual OSStatus Decode(const NextSample& next, SInt64 time, imaging::DecodedImage* image) = 0;
  /// Whether it takes further samples: not after the samples have come to their end.
  virtual bool CanGoOn() const = 0;

 protected:
  VideoDecoder() = default;
};

}  // namespace quillmere::codecs
