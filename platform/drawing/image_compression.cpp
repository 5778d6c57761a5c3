#include "image_compression.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <span>
#include <string_view>
#include <vector>

#include "big_endian.h"
#include "image_descriptions.h"
#include "picture_encoder_private.h"
#include "rectangles.h"
#include "video_pixels.h"

using quillmere::drawing::Settings;

struct ImageCompressor {
  OSType type;
  Settings settings;
};

struct CompressionSequence {
  OSType codec;
  Settings settings;
  CodecQ quality;
  Rect rect;
};

namespace {

using namespace quillmere::drawing;
using quillmere::codecs::DvFormat;
using quillmere::codecs::DvFormatOf;
using quillmere::imaging::PixelBlock;

constexpr OSErr kNoComponent = -3000;

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

OSErr AddExtension(Handle description, OSType type, const void* bytes, std::size_t size) {
  Handle extension = nullptr;
  OSErr status = PtrToHand(bytes, &extension, static_cast<Size>(size));
  if (!status) status = AddImageDescriptionExtension(description, extension, type);
  DisposeHandle(extension);
  return status;
}

OSErr AddWords(Handle description, OSType type, std::span<const UInt32> words) {
  std::vector<UInt8> bytes(4 * words.size());
  for (std::size_t i = 0; i < words.size(); ++i)
    quillmere::WriteU32(bytes.data() + 4 * i, words[i]);
  return AddExtension(description, type, bytes.data(), bytes.size());
}

/// Adds what DV enforces.
OSErr AddEnforced(const DvFormat& format, const Settings& settings, Handle description) {
  const std::array<UInt8, 2> fiel = EnforcedFiel(format, settings);
  OSErr status = AddExtension(description, "fiel"_4cc, fiel.data(), fiel.size());
  if (!status) status = AddWords(description, "pasp"_4cc, EnforcedPasp(format, settings));
  return status ? status : AddWords(description, "clap"_4cc, EnforcedClap(format));
}

OSErr Describe(const Encoder& encoder, const PixelBlock& picture, const Settings& settings,
               CodecQ quality, std::size_t data_size, Handle description) {
  constexpr Fixed k72Dpi = 72 << 16;
  const DvFormat* const dv = encoder.dv();
  if (description == nullptr) return nilHandleErr;
  ImageDescription record{};
  record.idSize = sizeof record;
  record.cType = encoder.type();
  record.spatialQuality = quality;
  record.width = static_cast<SInt16>(dv != nullptr ? dv->picture->width : picture.width);
  record.height = static_cast<SInt16>(dv != nullptr ? dv->picture->height : picture.height);
  record.hRes = record.vRes = k72Dpi;
  record.dataSize = static_cast<SInt32>(data_size);
  record.frameCount = 1;
  record.name[0] = static_cast<UInt8>(encoder.name().size());
  std::ranges::copy(encoder.name(), record.name + 1);
  record.depth = dv != nullptr ? 24 : 32;
  record.clutID = -1;
  SetHandleSize(description, sizeof record);
  if (MemError() != noErr) return MemError();
  std::memcpy(*description, &record, sizeof record);
  return dv != nullptr ? AddEnforced(*dv, settings, description) : OSErr{noErr};
}

/// Copies a value out; paramErr where it isn't of the size.
OSStatus Give(const void* value, std::size_t value_size, ByteCount size, void* out,
              ByteCount* size_used) {
  if (out == nullptr || size < value_size) return paramErr;
  std::memcpy(out, value, value_size);
  if (size_used != nullptr) *size_used = value_size;
  return noErr;
}

/// The place of a setting among those of DV; -1 for another property.
int DvSettingOf(OSType property_class, OSType property_id) {
  if (property_class != "dvco"_4cc) return -1;
  if (property_id == "prog"_4cc) return kDvProgressive;
  return property_id == "16x9"_4cc ? int{kDvWide} : -1;
}

/// The picture of a call, whose type has to have an encoder.
OSErr FindInputs(PixMapHandle pixels, const Rect* rect, const Encoder& encoder, Picture* picture) {
  return encoder ? picture->Take(pixels, rect) : noCodecErr;
}

/// Compresses into memory of the caller's.
OSErr CompressTo(const Encoder& encoder, const Picture& picture, const Settings& settings,
                 CodecQ quality, UInt8* data, std::size_t* size) {
  std::vector<UInt8> bytes;
  const OSStatus status = encoder.Encode(picture.block(), settings, quality, &bytes);
  if (status) return static_cast<OSErr>(status);
  std::ranges::copy(bytes, data);
  *size = bytes.size();
  return noErr;
}

constexpr CodecChoice kDvChoices[kDvSettings] = {{"Scan mode", {"Interlaced", "Progressive"}},
                                                 {"Aspect ratio", {"4:3", "16:9"}}};

}  // namespace

OSErr OpenADefaultComponent(OSType type, OSType subtype, CompressorComponent* compressor) {
  if (compressor == nullptr) return static_cast<OSErr>(paramErr);
  *compressor = nullptr;
  const Encoder encoder(subtype);
  if (type != kCompressorComponentType || !encoder) return kNoComponent;
  *compressor = new ImageCompressor{subtype, Settings(encoder.dv() != nullptr ? kDvSettings : 0)};
  return noErr;
}

OSErr CloseComponent(CompressorComponent compressor) {
  delete compressor;
  return noErr;
}

OSErr ImageCodecSetSettings(CompressorComponent compressor, Handle settings) {
  if (compressor == nullptr) return kNoComponent;
  if (settings == nullptr || *settings == nullptr) return nilHandleErr;
  const auto size = static_cast<std::size_t>(GetHandleSize(settings));
  if (size < ChoicesOf(compressor).size()) return static_cast<OSErr>(paramErr);
  compressor->settings.assign(*settings, *settings + size);
  return noErr;
}

OSErr ImageCodecGetSettings(CompressorComponent compressor, Handle settings) {
  if (compressor == nullptr) return kNoComponent;
  if (settings == nullptr) return nilHandleErr;
  SetHandleSize(settings, static_cast<Size>(compressor->settings.size()));
  if (MemError() == noErr) std::ranges::copy(compressor->settings, *settings);
  return MemError();
}

OSStatus QTGetComponentProperty(CompressorComponent compressor, OSType property_class,
                                OSType property_id, ByteCount size, void* value,
                                ByteCount* size_used) {
  if (size_used != nullptr) *size_used = 0;
  if (compressor == nullptr) return kNoComponent;
  const Settings& settings = compressor->settings;
  const DvFormat* const dv = DvFormatOf(compressor->type);
  if (dv == nullptr) return kQTPropertyNotSupportedErr;
  const auto give = [&](const auto& property) {
    return Give(property.data(), property.size() * sizeof property[0], size, value, size_used);
  };
  if (const int at = DvSettingOf(property_class, property_id); at >= 0)
    return give(std::array<Boolean, 1>{IsSet(settings, static_cast<std::size_t>(at))});
  if (property_class != kCompressorComponentType) return kQTPropertyNotSupportedErr;
  switch (property_id) {
    case "enwi"_4cc:
      return give(std::array<SInt32, 1>{dv->picture->width});
    case "enhe"_4cc:
      return give(std::array<SInt32, 1>{dv->picture->height});
    case "encl"_4cc:
      return give(EnforcedClap(*dv));
    case "enpa"_4cc:
      return give(EnforcedPasp(*dv, settings));
    case "enfi"_4cc:
      return give(EnforcedFiel(*dv, settings));
    default:
      return kQTPropertyNotSupportedErr;
  }
}

OSStatus QTSetComponentProperty(CompressorComponent compressor, OSType property_class,
                                OSType property_id, ByteCount size, const void* value) {
  if (compressor == nullptr) return kNoComponent;
  const int at = DvSettingOf(property_class, property_id);
  if (at < 0 || ChoicesOf(compressor).empty()) return kQTPropertyNotSupportedErr;
  if (value == nullptr || size != sizeof(Boolean)) return paramErr;
  const bool is_set = *static_cast<const Boolean*>(value) != 0;
  compressor->settings[static_cast<std::size_t>(at)] = is_set ? 1 : 0;
  return noErr;
}

OSErr GetMaxCompressionSize(PixMapHandle pixels, const Rect* rect, SInt16 depth, CodecQ /*quality*/,
                            OSType codec, CompressorComponent compressor, SInt32* size) {
  Picture picture;
  if (size == nullptr || (depth != 0 && depth != 32)) return static_cast<OSErr>(paramErr);
  *size = 0;
  if (compressor != nullptr && compressor->type != codec) return static_cast<OSErr>(paramErr);
  const Encoder encoder(codec);
  const OSErr status = FindInputs(pixels, rect, encoder, &picture);
  if (status) return status;
  const UInt64 most = encoder.Largest(picture.block());
  if (most > static_cast<UInt64>(std::numeric_limits<SInt32>::max())) return memFullErr;
  *size = static_cast<SInt32>(most);
  return noErr;
}

OSErr CompressImage(PixMapHandle pixels, const Rect* rect, CodecQ quality, OSType codec,
                    Handle description, UInt8* data) {
  Picture picture;
  if (data == nullptr) return static_cast<OSErr>(paramErr);
  const Encoder encoder(codec);
  OSErr status = FindInputs(pixels, rect, encoder, &picture);
  std::size_t size = 0;
  if (!status) status = CompressTo(encoder, picture, {}, quality, data, &size);
  return status ? status : Describe(encoder, picture.block(), {}, quality, size, description);
}

OSErr MakeImageDescriptionForPixMap(PixMapHandle pixels, Handle* description) {
  if (description == nullptr || pixels == nullptr || *pixels == nullptr)
    return static_cast<OSErr>(paramErr);
  Picture picture;
  const OSErr status = picture.Take(pixels, &(*pixels)->bounds);
  if (status) return status;
  *description = NewHandle(0);
  if (*description == nullptr) return MemError();
  const Encoder raw("raw "_4cc);
  return Describe(raw, picture.block(), {}, codecLosslessQuality,
                  static_cast<std::size_t>(raw.Largest(picture.block())), *description);
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
  const Settings settings = compressor != nullptr ? compressor->settings : Settings();
  if (!status)
    status = Describe(Encoder(codec), picture.block(), settings, quality, 0, description);
  if (!status) *sequence = new CompressionSequence{codec, settings, quality, *rect};
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
  OSErr status = picture.Take(pixels, rect);
  std::size_t bytes = 0;
  if (!status)
    status = CompressTo(Encoder(sequence->codec), picture, sequence->settings, sequence->quality,
                        data, &bytes);
  if (!status) *size = static_cast<SInt32>(bytes);
  return status;
}

OSErr CDSequenceEnd(CompressionSequenceID sequence) {
  delete sequence;
  return noErr;
}

namespace quillmere::drawing {

std::span<const CodecChoice> ChoicesOf(CompressorComponent compressor) {
  if (compressor == nullptr || DvFormatOf(compressor->type) == nullptr) return {};
  return kDvChoices;
}

std::string_view NameOf(CompressorComponent compressor) {
  return compressor != nullptr ? Encoder(compressor->type).name() : std::string_view();
}

}  // namespace quillmere::drawing
