#include "sample_descriptions.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

#include "big_endian.h"
#include "fixed_point.h"

namespace quillmere::movies {

namespace {

/// A field of a description: where it stands and how many bytes it has.
struct Field {
  std::size_t offset;
  std::size_t width;
};
constexpr Field kCommonFields[] = {{0, 4}, {4, 4}, {8, 4}, {12, 2}, {14, 2}};
constexpr Field kImageFields[] = {{16, 2}, {18, 2}, {20, 4}, {24, 4}, {28, 4}, {32, 2}, {34, 2},
                                  {36, 4}, {40, 4}, {44, 4}, {48, 2}, {82, 2}, {84, 2}};
constexpr Field kSoundFields[] = {{16, 2}, {18, 2}, {20, 4}, {24, 2},
                                  {26, 2}, {28, 2}, {30, 2}, {32, 4}};
constexpr Field kSoundVersion1Fields[] = {{36, 4}, {40, 4}, {44, 4}, {48, 4}};
constexpr std::size_t kCommonSize = 16;
constexpr std::size_t kSoundVersion = 16;
constexpr std::size_t kSoundSize = 36;
constexpr std::size_t kSoundVersion1Size = 52;
/// The first extension in the content of a video entry, which starts behind size and type.
constexpr std::size_t kFirstExtension = kImageDescriptionSize - 8;

void SwapFields(std::span<const Field> fields, std::vector<UInt8>* bytes) {
  for (const Field& field : fields) {
    const auto start = bytes->begin() + static_cast<std::ptrdiff_t>(field.offset);
    std::reverse(start, start + static_cast<std::ptrdiff_t>(field.width));
  }
}

/// Turns all numbers of a description of the media's type round; `version` is that of a sound
/// description. False if it is too short.
bool SwapDescription(OSType media_type, UInt16 version, std::vector<UInt8>* bytes) {
  const bool is_image = media_type == "vide"_4cc;
  const bool is_sound = media_type == "soun"_4cc;
  if (bytes->size() < (is_image ? kImageDescriptionSize : is_sound ? kSoundSize : kCommonSize))
    return false;
  SwapFields(kCommonFields, bytes);
  if (is_image) SwapFields(kImageFields, bytes);
  if (is_sound) SwapFields(kSoundFields, bytes);
  if (is_sound && version == 1 && bytes->size() >= kSoundVersion1Size)
    SwapFields(kSoundVersion1Fields, bytes);
  return true;
}

template <class Number>
void Put(std::vector<UInt8>* record, std::size_t offset, Number value) {
  std::memcpy(record->data() + offset, &value, sizeof value);
}

Fixed DensityOf(double dots_per_inch) {
  return dots_per_inch > 0 ? X2Fix(dots_per_inch) : Long2Fix(72);
}

}  // namespace

OSStatus MakeImageDescription(const imaging::ImageFileInfo& info, std::vector<UInt8>* record) {
  constexpr UInt32 kLargestSide = std::numeric_limits<UInt16>::max();
  if (info.width == 0 || info.height == 0 || info.width > kLargestSide ||
      info.height > kLargestSide || info.data_size > std::numeric_limits<UInt32>::max()) {
    return badImageDescription;
  }
  record->assign(kImageDescriptionSize, 0);
  Put(record, 0, static_cast<UInt32>(kImageDescriptionSize));
  Put(record, 4, info.format);
  Put(record, 14, UInt16{1});
  constexpr UInt32 kNormalQuality = 0x200;
  Put(record, 28, kNormalQuality);
  Put(record, 32, static_cast<UInt16>(info.width));
  Put(record, 34, static_cast<UInt16>(info.height));
  Put(record, 36, DensityOf(info.dots_per_inch_x));
  Put(record, 40, DensityOf(info.dots_per_inch_y));
  Put(record, 44, static_cast<UInt32>(info.data_size));
  Put(record, 48, UInt16{1});
  const std::string_view name = info.format == "png "_4cc ? "PNG" : "Photo - JPEG";
  (*record)[50] = static_cast<UInt8>(name.size());
  std::copy(name.begin(), name.end(), record->begin() + 51);
  Put(record, 82, info.depth);
  Put(record, 84, SInt16{-1});
  return noErr;
}

OSStatus MakeDescriptionAtom(std::span<const UInt8> record, OSType media_type, Atom* entry) {
  UInt32 size = 0;
  if (record.size() < kCommonSize) return badImageDescription;
  std::memcpy(&size, record.data(), sizeof size);
  if (size != record.size()) return badImageDescription;
  OSType format = 0;
  std::memcpy(&format, record.data() + 4, sizeof format);

  std::vector<UInt8> bytes(record.begin(), record.end());
  UInt16 version = 0;
  if (bytes.size() > kSoundVersion + 1)
    std::memcpy(&version, bytes.data() + kSoundVersion, sizeof version);
  if (!SwapDescription(media_type, version, &bytes)) return badImageDescription;
  bytes.erase(bytes.begin(), bytes.begin() + 8);
  *entry = Atom(format);
  entry->set_payload(std::move(bytes));
  return noErr;
}

OSStatus MakeDescriptionRecord(const Atom& entry, OSType media_type, std::vector<UInt8>* record) {
  const std::span<const UInt8> fields = entry.payload();
  record->clear();
  // However the entry's own header tells its size.
  AppendU32(record, static_cast<UInt32>(fields.size() + 8));
  AppendU32(record, entry.type());
  record->insert(record->end(), fields.begin(), fields.end());
  const UInt16 version =
      record->size() > kSoundVersion + 1 ? ReadU16(record->data() + kSoundVersion) : UInt16{0};
  return SwapDescription(media_type, version, record) ? noErr : OSStatus{badImageDescription};
}

bool EncodedSizeOf(const Atom& entry, UInt32* width, UInt32* height) {
  const std::span<const UInt8> bytes = entry.payload();
  if (bytes.size() < 28) return false;
  *width = ReadU16(bytes.data() + 24);
  *height = ReadU16(bytes.data() + 26);
  return true;
}

std::span<const UInt8> FindExtension(const Atom& entry, OSType type) {
  std::span<const UInt8> bytes = entry.payload();
  if (bytes.size() < kFirstExtension) return {};
  bytes = bytes.subspan(kFirstExtension);
  while (bytes.size() >= 8) {
    const UInt32 size = ReadU32(bytes.data());
    if (size < 8 || size > bytes.size()) return {};
    if (ReadU32(bytes.data() + 4) == type) return bytes.subspan(8, size - 8);
    bytes = bytes.subspan(size);
  }
  return {};
}

}  // namespace quillmere::movies
