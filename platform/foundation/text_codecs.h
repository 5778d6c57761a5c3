/// The encodings of text: bytes to characters and back.
///
/// An encoding is known by its platform number (see text_encodings.h). Single-byte sets are tables,
/// the sets of two-byte scripts go through ICU's converters. Nothing here substitutes: a byte
/// sequence or a character that the encoding does not have is reported.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "base_types.h"

namespace quillmere::text {

/// One character's bytes in an encoding; `count` is 0 when the encoding does not have it.
struct Encoded {
  UInt8 bytes[8] = {};
  std::size_t count = 0;
};

struct ConverterState;

/// Text of one encoding, character by character. It keeps a converter: one thread uses one Codec.
class Codec {
 public:
  explicit Codec(UInt32 encoding);
  ~Codec();
  Codec(const Codec&) = delete;
  Codec& operator=(const Codec&) = delete;

  /// False if there is no such encoding; nothing encodes or decodes then.
  bool IsKnown() const;
  /// The most bytes that one UTF-16 unit can take.
  SInt32 LargestBytesPerUnit() const;
  /// The character's bytes. UTF-16 takes unpaired surrogates, nothing else does.
  Encoded Encode(char32_t character);
  /// Reads the first character of `bytes`; returns the bytes it takes, 0 if they are not valid.
  std::size_t DecodeOne(std::span<const UInt8> bytes, char32_t* character);
  /// Appends the characters of `bytes` to `units`; false at bytes that are not valid. In
  /// plain UTF-16 a byte-order mark decides, else native order.
  bool Decode(std::span<const UInt8> bytes, std::u16string* units);
  /// True if `bytes`, which do not decode, could be the beginning of a character.
  bool IsCutOff(std::span<const UInt8> bytes);
  /// True for the lead byte of a two-byte character.
  bool IsLeadByte(UInt8 byte);

 private:
  std::unique_ptr<ConverterState> state_;
};

}  // namespace quillmere::text
