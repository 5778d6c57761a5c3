#include "sound_descriptions.h"

#include <cstring>
#include <span>
#include <vector>

#include "big_endian.h"

using namespace quillmere;

namespace {

constexpr std::size_t kAtomHeader = 8;
constexpr std::size_t kFullAtomFields = 4;  // version and flags
constexpr OSType kLayoutAtom = "chan"_4cc;

/// Where the extensions of a description begin; 0 if it is too short for its version.
std::size_t ExtensionsOf(std::span<const UInt8> bytes) {
  if (bytes.size() < sizeof(SoundDescription)) return 0;
  SoundDescription record;
  std::memcpy(&record, bytes.data(), sizeof record);
  const std::size_t start = record.version == 0 ? 36 : record.version == 1 ? 52 : 72;
  return bytes.size() >= start ? start : 0;
}

std::vector<UInt8> BytesOf(SoundDescriptionHandle description) {
  if (description == nullptr || *description == nullptr) return {};
  const auto* bytes = reinterpret_cast<const UInt8*>(*description);
  return {bytes, bytes + GetHandleSize(description)};
}

struct AtomAt {
  std::size_t offset;
  std::size_t size;  ///< 0 for none
};

/// The layout's atom among the extensions.
AtomAt FindLayout(std::span<const UInt8> bytes, std::size_t start) {
  for (std::size_t place = start; place + kAtomHeader <= bytes.size();) {
    const UInt32 size = ReadU32(bytes.data() + place);
    if (size < kAtomHeader || size > bytes.size() - place) break;
    if (ReadU32(bytes.data() + place + 4) == kLayoutAtom) return {place, size};
    place += size;
  }
  return {start, 0};
}

/// Turns the 32-bit numbers of a layout between the file's byte order and the machine's; all its
/// fields are such numbers.
void SwapWords(std::span<const UInt8> from, UInt8* to) {
  for (std::size_t i = 0; i + 4 <= from.size(); i += 4) {
    const UInt32 word = ReadU32(from.data() + i);
    std::memcpy(to + i, &word, sizeof word);
  }
}

OSStatus Check(OSType property_class, OSType property_id) {
  const bool is_layout = property_class == "audi"_4cc && property_id == "clay"_4cc;
  return is_layout ? OSStatus{noErr} : OSStatus{kQTPropertyNotSupportedErr};
}

/// The layout of a description, native.
OSStatus ReadLayout(SoundDescriptionHandle description, std::vector<UInt8>* layout) {
  const std::vector<UInt8> bytes = BytesOf(description);
  const std::size_t start = ExtensionsOf(bytes);
  if (start == 0) return badImageDescription;
  const AtomAt atom = FindLayout(bytes, start);
  if (atom.size < kAtomHeader + kFullAtomFields + kAudioChannelLayoutHeaderSize)
    return kQTPropertyNotSupportedErr;
  const std::span content = std::span(bytes).subspan(atom.offset + kAtomHeader + kFullAtomFields,
                                                     atom.size - kAtomHeader - kFullAtomFields);
  const UInt64 wanted = kAudioChannelLayoutHeaderSize +
                        UInt64{ReadU32(content.data() + 8)} * sizeof(AudioChannelDescription);
  if (wanted > content.size()) return kQTPropertyNotSupportedErr;
  layout->resize(static_cast<std::size_t>(wanted));
  SwapWords(content.first(layout->size()), layout->data());
  return noErr;
}

}  // namespace

OSStatus QTSoundDescriptionGetPropertyInfo(SoundDescriptionHandle description,
                                           OSType property_class, OSType property_id, OSType* type,
                                           ByteCount* size, UInt32* flags) {
  std::vector<UInt8> layout;
  OSStatus status = Check(property_class, property_id);
  if (status == noErr) status = ReadLayout(description, &layout);
  if (status != noErr) return status;
  if (type != nullptr) *type = "data"_4cc;
  if (size != nullptr) *size = layout.size();
  if (flags != nullptr) *flags = 0;
  return noErr;
}

OSStatus QTSoundDescriptionGetProperty(SoundDescriptionHandle description, OSType property_class,
                                       OSType property_id, ByteCount size, void* value,
                                       ByteCount* size_used) {
  std::vector<UInt8> layout;
  OSStatus status = Check(property_class, property_id);
  if (status == noErr) status = ReadLayout(description, &layout);
  if (status != noErr) return status;
  if (value == nullptr || size < layout.size()) return paramErr;
  std::memcpy(value, layout.data(), layout.size());
  if (size_used != nullptr) *size_used = layout.size();
  return noErr;
}

OSStatus QTSoundDescriptionSetProperty(SoundDescriptionHandle description, OSType property_class,
                                       OSType property_id, ByteCount size, const void* value) {
  const OSStatus status = Check(property_class, property_id);
  if (status != noErr) return status;
  std::vector<UInt8> bytes = BytesOf(description);
  const std::size_t start = ExtensionsOf(bytes);
  if (start == 0) return badImageDescription;
  UInt32 count = 0;
  if (value == nullptr || size < kAudioChannelLayoutHeaderSize) return paramErr;
  std::memcpy(&count, static_cast<const UInt8*>(value) + 8, sizeof count);
  if (size != kAudioChannelLayoutHeaderSize + UInt64{count} * sizeof(AudioChannelDescription))
    return paramErr;
  std::vector<UInt8> atom(kAtomHeader + kFullAtomFields + static_cast<std::size_t>(size));
  WriteU32(atom.data(), static_cast<UInt32>(atom.size()));
  WriteU32(atom.data() + 4, kLayoutAtom);
  SwapWords({static_cast<const UInt8*>(value), static_cast<std::size_t>(size)},
            atom.data() + kAtomHeader + kFullAtomFields);
  const AtomAt old = FindLayout(bytes, start);
  const auto at = [&bytes](std::size_t offset) {
    return bytes.begin() + static_cast<std::ptrdiff_t>(offset);
  };
  bytes.erase(at(old.offset), at(old.offset + old.size));
  bytes.insert(at(old.offset), atom.begin(), atom.end());
  const auto new_size = static_cast<SInt32>(bytes.size());
  std::memcpy(bytes.data(), &new_size, sizeof new_size);
  SetHandleSize(description, static_cast<Size>(bytes.size()));
  if (MemError() != noErr) return MemError();
  std::memcpy(*description, bytes.data(), bytes.size());
  return noErr;
}
