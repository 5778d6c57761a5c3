#include <algorithm>
#include <iterator>

#include "image_descriptions.h"
#include "image_encoder.h"
#include "picture_encoder_private.h"

namespace quillmere::drawing {

using codecs::DvFormat;
using imaging::PixelBlock;

struct PictureCodec {
  OSType type;
  std::string_view name;
  UInt64 (*largest)(UInt32 width, UInt32 height);
  OSStatus (*encode)(const PixelBlock& picture, CodecQ quality, std::vector<UInt8>* bytes);
};

namespace {

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
  return imaging::EncodePng(picture, bytes);
}

OSStatus EncodeJpeg(const PixelBlock& picture, CodecQ quality, std::vector<UInt8>* bytes) {
  const UInt32 percent = std::min(quality, codecMaxQuality) * 100 / codecMaxQuality;
  return imaging::EncodeJpeg(picture, static_cast<int>(percent), bytes);
}

constexpr PictureCodec kCodecs[] = {
    {"raw "_4cc, "None", LargestRaw, EncodeRaw},
    {"png "_4cc, "PNG", imaging::LargestPng, EncodePng},
    {"jpeg"_4cc, "Photo - JPEG", imaging::LargestJpeg, EncodeJpeg},
};

}  // namespace

bool IsSet(const Settings& settings, std::size_t at) {
  return at < settings.size() && settings[at] != 0;
}

Encoder::Encoder(OSType type) : type_(type), codec_(nullptr), dv_(codecs::DvFormatOf(type)) {
  const auto* const found = std::ranges::find(kCodecs, type, &PictureCodec::type);
  if (found != std::end(kCodecs)) codec_ = found;
}

std::string_view Encoder::name() const {
  if (dv_ != nullptr) return dv_->name;
  return codec_ != nullptr ? codec_->name : std::string_view();
}

UInt64 Encoder::Largest(const PixelBlock& picture) const {
  if (dv_ != nullptr) return dv_->frame_bytes;
  return codec_ != nullptr ? codec_->largest(picture.width, picture.height) : 0;
}

OSStatus Encoder::Encode(const PixelBlock& picture, const Settings& settings, CodecQ quality,
                         std::vector<UInt8>* bytes) const {
  if (dv_ != nullptr) return codecs::EncodeDv(*dv_, IsSet(settings, kDvWide), picture, bytes);
  return codec_ != nullptr ? codec_->encode(picture, quality, bytes) : OSStatus{noCodecErr};
}

std::array<UInt32, 8> EnforcedClap(const DvFormat& format) {
  return {format.picture->clean_width.numerator,
          format.picture->clean_width.denominator,
          format.picture->clean_height.numerator,
          format.picture->clean_height.denominator,
          0,
          1,
          0,
          1};
}

std::array<UInt32, 2> EnforcedPasp(const DvFormat& format, const Settings& settings) {
  const auto& pixel = IsSet(settings, kDvWide) ? format.picture->wide_pixel : format.picture->pixel;
  return {pixel.numerator, pixel.denominator};
}

std::array<UInt8, 2> EnforcedFiel(const DvFormat& format, const Settings& settings) {
  constexpr UInt8 kTopFirst = 9;
  constexpr UInt8 kBottomFirst = 14;
  if (format.picture->is_progressive || IsSet(settings, kDvProgressive)) return {1, 0};
  return {2, format.picture->is_top_first ? kTopFirst : kBottomFirst};
}

}  // namespace quillmere::drawing
