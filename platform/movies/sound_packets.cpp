/// How many bytes the frames of a sound take, by its description.

#include <algorithm>

#include "big_endian.h"
#include "sample_table.h"

namespace quillmere::movies {

namespace {

/// Offsets in the content of a sound description, behind its atom header.
constexpr std::size_t kDataReference = 6;
constexpr std::size_t kVersion = 8;
constexpr std::size_t kChannels = 16;
constexpr std::size_t kBitsPerSample = 18;
constexpr std::size_t kCompressionId = 20;
constexpr std::size_t kVersion0End = 28;
constexpr std::size_t kFramesPerPacket1 = 28;
constexpr std::size_t kBytesPerFrame1 = 36;
constexpr std::size_t kVersion1End = 44;
constexpr std::size_t kBytesPerPacket2 = 56;
constexpr std::size_t kFramesPerPacket2 = 60;
constexpr std::size_t kVersion2End = 64;
/// A version 1 description with this compression has packets of different sizes.
constexpr SInt16 kVariableCompression = -2;

/// Formats with packets of one size. `bytes` is for one channel; 0: as the bits of a sample tell.
struct PacketRule {
  OSType format;
  UInt32 bytes;
  UInt32 frames;
};
constexpr PacketRule kPackets[] = {
    {"raw "_4cc, 0, 1},    {"NONE"_4cc, 0, 1},   {"twos"_4cc, 0, 1}, {"sowt"_4cc, 0, 1},
    {"lpcm"_4cc, 0, 1},    {"ipcm"_4cc, 0, 1},   {"fpcm"_4cc, 0, 1}, {"in24"_4cc, 3, 1},
    {"in32"_4cc, 4, 1},    {"fl32"_4cc, 4, 1},   {"fl64"_4cc, 8, 1}, {"ulaw"_4cc, 1, 1},
    {"alaw"_4cc, 1, 1},    {"ima4"_4cc, 34, 64}, {"MAC3"_4cc, 2, 6}, {"MAC6"_4cc, 1, 6},
    {"agsm"_4cc, 33, 160},
};

}  // namespace

DescriptionInfo ReadSoundPackets(const Atom& entry) {
  const std::span<const UInt8> content = entry.payload();
  DescriptionInfo info = {.format = entry.type(), .data_reference = 0};
  if (content.size() >= kDataReference + 2) {
    info.data_reference = ReadU16(content.data() + kDataReference);
  }
  if (content.size() < kVersion0End) return info;
  const UInt16 version = ReadU16(content.data() + kVersion);
  if (version == 2) {
    if (content.size() < kVersion2End) return info;
    info.bytes_per_packet = ReadU32(content.data() + kBytesPerPacket2);
    info.frames_per_packet = ReadU32(content.data() + kFramesPerPacket2);
  } else if (version == 1 && content.size() >= kVersion1End) {
    if (ReadS16(content.data() + kCompressionId) == kVariableCompression) return info;
    info.frames_per_packet = ReadU32(content.data() + kFramesPerPacket1);
    info.bytes_per_packet = ReadU32(content.data() + kBytesPerFrame1);
  }
  if (info.bytes_per_packet != 0 && info.frames_per_packet != 0) return info;
  info.bytes_per_packet = info.frames_per_packet = 0;
  if (version == 2) return info;
  const auto* rule = std::find_if(std::begin(kPackets), std::end(kPackets),
                                  [&](const PacketRule& one) { return one.format == info.format; });
  if (rule == std::end(kPackets)) return info;
  const UInt32 channels = ReadU16(content.data() + kChannels);
  const UInt32 bits = ReadU16(content.data() + kBitsPerSample);
  info.bytes_per_packet = channels * (rule->bytes != 0 ? rule->bytes : (bits + 7) / 8);
  info.frames_per_packet = info.bytes_per_packet == 0 ? 0 : rule->frames;
  return info;
}

}  // namespace quillmere::movies
