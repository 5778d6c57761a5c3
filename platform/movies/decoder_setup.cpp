#include "decoder_setup.h"

#include <algorithm>

#include "field_reader.h"

namespace quillmere::movies {

namespace {

/// The length of a descriptor: seven bits a byte, the last one without its uppermost (ISO/IEC
/// 14496-1, 8.3.3).
std::size_t ReadLength(FieldReader* reader) {
  std::size_t length = 0;
  for (int i = 0; i < 4; ++i) {
    const std::span<const UInt8> byte = reader->Bytes(1);
    if (byte.empty()) return 0;
    length = length << 7 | (byte[0] & 0x7F);
    if ((byte[0] & 0x80) == 0) break;
  }
  return length;
}

/// The content of the next descriptor if it has a tag; empty else.
std::span<const UInt8> ReadDescriptor(FieldReader* reader, UInt8 tag) {
  const std::span<const UInt8> found = reader->Bytes(1);
  if (found.empty() || found[0] != tag) return {};
  return reader->Bytes(std::min(ReadLength(reader), reader->left()));
}

}  // namespace

std::span<const UInt8> DecoderSetupOf(std::span<const UInt8> esds) {
  constexpr UInt8 kStream = 3, kDecoder = 4, kSetup = 5;
  FieldReader full(esds);
  full.Bytes(4);  // version and flags
  FieldReader stream(ReadDescriptor(&full, kStream));
  const std::span<const UInt8> head = stream.Bytes(3);
  if (head.empty()) return {};
  if ((head[2] & 0x80) != 0) stream.Bytes(2);  // the stream it depends on
  if ((head[2] & 0x40) != 0) {
    const std::span<const UInt8> url_length = stream.Bytes(1);
    if (!url_length.empty()) stream.Bytes(url_length[0]);
  }
  if ((head[2] & 0x20) != 0) stream.Bytes(2);  // its clock
  FieldReader decoder(ReadDescriptor(&stream, kDecoder));
  decoder.Bytes(13);  // type, buffer size, rates
  return ReadDescriptor(&decoder, kSetup);
}

}  // namespace quillmere::movies
