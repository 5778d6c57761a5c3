#include "image_compression.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "image_descriptions.h"
#include "image_encoder.h"
#include "rectangles.h"
#include "video_pixels.h"

struct ImageCompressor {
  OSType type;
  std::vector<char> settings;
};

struct CompressionSequence {
  OSType codec;
  CodecQ quality;
  Rect rect;
};

namespace {

using quillmere::imaging::PixelBlock;

constexpr OSErr kNoComponent = -3000;

struct Codec {
  OSType type;
  std::string_view name;
  UInt64 (*largest)(UInt32 width, UInt32 height);
  OSStatus (*encode)(const PixelBlock& picture, CodecQ quality, std::vector<UInt8>* bytes);
};

UInt64 LargestRaw(UInt32 width, UInt32 height) {
  return UInt64{4} * width * height;
}

OSStatus EncodeRaw(const PixelBlock& picture, CodecQ /*quality*/, std::vector<UInt8>* bytes) {
  bytes->clear();
  for (UInt32 y = 0; y < picture.height; ++y)
    bytes->insert(bytes->end(), picture.Row(y), picture.Row(y) + std::size_t{4} * picture.width);
  return noErr;
}

OSStatus EncodePng(const PixelBlock& picture, CodecQ /*quality*/, std::vector<UInt8>* bytes) {
  return quillmere::imaging::EncodePng(picture, bytes);
}

OSStatus EncodeJpeg(const PixelBlock& picture, CodecQ quality, std::vector<UInt8>* bytes) {
  const UInt32 percent = std::min(quality, codecMaxQuality) * 100 / codecMaxQuality;
  return quillmere::imaging::EncodeJpeg(picture, static_cast<int>(percent), bytes);
}

constexpr Codec kCodecs[] = {
    {"raw "_4cc, "None", LargestRaw, EncodeRaw},
    {"png "_4cc, "PNG", quillmere::imaging::LargestPng, EncodePng},
    {"jpeg"_4cc, "Photo - JPEG", quillmere::imaging::LargestJpeg, EncodeJpeg},
};

const Codec* FindCodec(OSType type) {
  const auto* found = std::ranges::find(kCodecs, type, &Codec::type);
  return found != std::end(kCodecs) ? found : nullptr;
}

/// The part of a world that a rectangle covers, in 32 bits.
class Picture {
 public:
  OSErr Take(PixMapHandle pixels, const Rect* rect) {
    if (pixels == nullptr || *pixels == nullptr || rect == nullptr)
      return static_cast<OSErr>(paramErr);
    const PixMap& map = **pixels;
    if (map.pixelSize < 16) return cDepthErr;
    Rect part;
    if (EmptyRect(rect) || !SectRect(rect, &map.bounds, &part) || !EqualRect(rect, &part))
      return static_cast<OSErr>(paramErr);
    block_ = {map.baseAddr, static_cast<std::size_t>(map.rowBytes),
              static_cast<UInt32>(map.bounds.right - map.bounds.left),
              static_cast<UInt32>(map.bounds.bottom - map.bounds.top)};
    if (map.pixelSize == 16) {
      const OSStatus status = Convert();
      if (status) return static_cast<OSErr>(status);
    }
    block_.pixels = block_.Row(static_cast<UInt32>(part.top - map.bounds.top)) +
                    std::ptrdiff_t{part.left - map.bounds.left} * 4;
    block_.width = static_cast<UInt32>(part.right - part.left);
    block_.height = static_cast<UInt32>(part.bottom - part.top);
    return noErr;
  }
  const PixelBlock& block() const { return block_; }

 private:
  OSStatus Convert() {
    const OSStatus status =
        quillmere::imaging::AllocateImage(block_.width, block_.height, &converted_);
    if (status) return status;
    quillmere::imaging::ArgbFrom2vuy(block_, converted_.block);
    block_ = converted_.block;
    return noErr;
  }

  PixelBlock block_;
  quillmere::imaging::DecodedImage converted_;
};

OSErr Describe(const Codec& codec, const PixelBlock& picture, CodecQ quality, std::size_t data_size,
               Handle description) {
  constexpr Fixed k72Dpi = 72 << 16;
  if (description == nullptr) return nilHandleErr;
  ImageDescription record{};
  record.idSize = sizeof record;
  record.cType = codec.type;
  record.spatialQuality = quality;
  record.width = static_cast<SInt16>(picture.width);
  record.height = static_cast<SInt16>(picture.height);
  record.hRes = record.vRes = k72Dpi;
  record.dataSize = static_cast<SInt32>(data_size);
  record.frameCount = 1;
  record.name[0] = static_cast<UInt8>(codec.name.size());
  std::copy(codec.name.begin(), codec.name.end(), record.name + 1);
  record.depth = 32;
  record.clutID = -1;
  SetHandleSize(description, sizeof record);
  if (MemError() != noErr) return MemError();
  std::memcpy(*description, &record, sizeof record);
  return noErr;
}

/// The codec and the picture of a call.
OSErr FindInputs(PixMapHandle pixels, const Rect* rect, OSType type, const Codec** codec,
                 Picture* picture) {
  *codec = FindCodec(type);
  return *codec != nullptr ? picture->Take(pixels, rect) : noCodecErr;
}

}  // namespace

OSErr OpenADefaultComponent(OSType type, OSType subtype, CompressorComponent* compressor) {
  if (compressor == nullptr) return static_cast<OSErr>(paramErr);
  *compressor = nullptr;
  if (type != kCompressorComponentType || FindCodec(subtype) == nullptr) return kNoComponent;
  *compressor = new ImageCompressor{subtype, {}};
  return noErr;
}

OSErr CloseComponent(CompressorComponent compressor) {
  delete compressor;
  return noErr;
}

OSErr ImageCodecSetSettings(CompressorComponent compressor, Handle settings) {
  if (compressor == nullptr) return kNoComponent;
  if (settings == nullptr || *settings == nullptr) return nilHandleErr;
  compressor->settings.assign(*settings, *settings + GetHandleSize(settings));
  return noErr;
}

OSStatus QTGetComponentProperty(CompressorComponent compressor, OSType /*property_class*/,
                                OSType /*property_id*/, ByteCount /*size*/, void* /*value*/,
                                ByteCount* size_used) {
  if (size_used != nullptr) *size_used = 0;
  return compressor != nullptr ? OSStatus{kQTPropertyNotSupportedErr} : OSStatus{kNoComponent};
}

OSErr GetMaxCompressionSize(PixMapHandle pixels, const Rect* rect, SInt16 depth, CodecQ /*quality*/,
                            OSType codec, CompressorComponent compressor, SInt32* size) {
  const Codec* found = nullptr;
  Picture picture;
  if (size == nullptr || (depth != 0 && depth != 32)) return static_cast<OSErr>(paramErr);
  *size = 0;
  if (compressor != nullptr && compressor->type != codec) return static_cast<OSErr>(paramErr);
  const OSErr status = FindInputs(pixels, rect, codec, &found, &picture);
  if (status) return status;
  const UInt64 most = found->largest(picture.block().width, picture.block().height);
  if (most > static_cast<UInt64>(std::numeric_limits<SInt32>::max())) return memFullErr;
  *size = static_cast<SInt32>(most);
  return noErr;
}

OSErr CompressImage(PixMapHandle pixels, const Rect* rect, CodecQ quality, OSType codec,
                    Handle description, UInt8* data) {
  const Codec* found = nullptr;
  Picture picture;
  if (data == nullptr) return static_cast<OSErr>(paramErr);
  const OSErr status = FindInputs(pixels, rect, codec, &found, &picture);
  if (status) return status;
  std::vector<UInt8> bytes;
  const OSStatus encoded = found->encode(picture.block(), quality, &bytes);
  if (encoded) return static_cast<OSErr>(encoded);
  std::ranges::copy(bytes, data);
  return Describe(*found, picture.block(), quality, bytes.size(), description);
}

OSErr MakeImageDescriptionForPixMap(PixMapHandle pixels, Handle* description) {
  if (description == nullptr || pixels == nullptr || *pixels == nullptr)
    return static_cast<OSErr>(paramErr);
  Picture picture;
  const OSErr status = picture.Take(pixels, &(*pixels)->bounds);
  if (status) return status;
  *description = NewHandle(0);
  if (*description == nullptr) return MemError();
  const UInt64 size = LargestRaw(picture.block().width, picture.block().height);
  return Describe(kCodecs[0], picture.block(), codecLosslessQuality, static_cast<std::size_t>(size),
                  *description);
}

OSErr CompressSequenceBegin(CompressionSequenceID* sequence, PixMapHandle pixels, const Rect* rect,
                            SInt16 depth, OSType codec, CompressorComponent compressor,
                            CodecQ quality, Handle description) {
  if (sequence == nullptr) return static_cast<OSErr>(paramErr);
  *sequence = nullptr;
  SInt32 most = 0;
  OSErr status = GetMaxCompressionSize(pixels, rect, depth, quality, codec, compressor, &most);
  Picture picture;
  if (!status) status = picture.Take(pixels, rect);
  if (!status) status = Describe(*FindCodec(codec), picture.block(), quality, 0, description);
  if (!status) *sequence = new CompressionSequence{codec, quality, *rect};
  return status;
}

OSErr GetCSequenceMaxCompressionSize(CompressionSequenceID sequence, PixMapHandle pixels,
                                     SInt32* size) {
  if (sequence == nullptr) return static_cast<OSErr>(paramErr);
  return GetMaxCompressionSize(pixels, &sequence->rect, 0, sequence->quality, sequence->codec,
                               nullptr, size);
}

OSErr CompressSequenceFrame(CompressionSequenceID sequence, PixMapHandle pixels, const Rect* rect,
                            UInt32 /*flags*/, UInt8* data, SInt32* size) {
  if (sequence == nullptr || data == nullptr || size == nullptr)
    return static_cast<OSErr>(paramErr);
  Picture picture;
  const OSErr status = picture.Take(pixels, rect);
  if (status) return status;
  std::vector<UInt8> bytes;
  const OSStatus encoded =
      FindCodec(sequence->codec)->encode(picture.block(), sequence->quality, &bytes);
  if (encoded) return static_cast<OSErr>(encoded);
  std::ranges::copy(bytes, data);
  *size = static_cast<SInt32>(bytes.size());
  return noErr;
}

OSErr CDSequenceEnd(CompressionSequenceID sequence) {
  delete sequence;
  return noErr;
}
