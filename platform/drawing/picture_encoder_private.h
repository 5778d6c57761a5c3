/// What compresses pictures of a type, with what it enforces on them.
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "dv_encoder.h"
#include "image_compression.h"
#include "image_decoder.h"

namespace quillmere::drawing {

/// A compressor's own bytes.
using Settings = std::vector<char>;
/// The places of DV's: Booleans.
inline constexpr std::size_t kDvProgressive = 0;
inline constexpr std::size_t kDvWide = 1;
inline constexpr std::size_t kDvSettings = 2;
/// Whether a Boolean is there and set.
bool IsSet(const Settings& settings, std::size_t at);

struct PictureCodec;

/// One of the types, or none, which tells nothing and compresses nothing.
class Encoder {
 public:
  explicit Encoder(OSType type);
  explicit operator bool() const { return dv_ != nullptr || codec_ != nullptr; }
  OSType type() const { return type_; }
  std::string_view name() const;
  /// The format of DV; null for other types.
  const codecs::DvFormat* dv() const { return dv_; }
  /// The most bytes that a picture of ARGB pixels takes.
  UInt64 Largest(const imaging::PixelBlock& picture) const;
  OSStatus Encode(const imaging::PixelBlock& picture, const Settings& settings, CodecQ quality,
                  std::vector<UInt8>* bytes) const;

 private:
  OSType type_;
  const PictureCodec* codec_;
  const codecs::DvFormat* dv_;
};

/// What a format enforces, as the extensions `clap`, `pasp` and `fiel` hold it.
std::array<UInt32, 8> EnforcedClap(const codecs::DvFormat& format);
std::array<UInt32, 2> EnforcedPasp(const codecs::DvFormat& format, const Settings& settings);
std::array<UInt8, 2> EnforcedFiel(const codecs::DvFormat& format, const Settings& settings);

}  // namespace quillmere::drawing
