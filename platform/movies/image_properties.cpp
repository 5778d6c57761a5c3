// The properties of image descriptions (image_descriptions.h).

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

#include "big_endian.h"
#include "color_spaces.h"
#include "extension_list.h"
#include "image_descriptions.h"

namespace {

using namespace quillmere::movies;
using quillmere::Owned;
using quillmere::ReadU16;
using quillmere::ReadU32;

constexpr OSType kColr = "colr"_4cc;
constexpr OSType kNclc = "nclc"_4cc;
constexpr OSType kNclx = "nclx"_4cc;
constexpr OSType kProfile = "prof"_4cc;
constexpr OSType kRestrictedProfile = "rICC"_4cc;
constexpr std::size_t kNclcSize = 10;
/// The class of all these properties.
constexpr OSType kImageDescriptionClass = "idsc"_4cc;

/// A property that is an extension of fields of one width.
struct FieldsProperty {
  OSType id;
  std::size_t size;
  std::size_t field;
};
constexpr FieldsProperty kFieldsProperties[] = {
    {"fiel"_4cc, 2, 1}, {"pasp"_4cc, 8, 4}, {"clap"_4cc, 32, 4}, {"gama"_4cc, 4, 4}};

const FieldsProperty* FieldsOf(OSType id) {
  const auto* found = std::ranges::find(kFieldsProperties, id, &FieldsProperty::id);
  return found != std::end(kFieldsProperties) ? found : nullptr;
}

/// Turns fields round, from big-endian to native order and back.
void SwapFields(std::size_t width, UInt8* bytes, std::size_t size) {
  for (std::size_t at = 0; at + width <= size; at += width)
    std::reverse(bytes + at, bytes + at + width);
}

OSType ColorKindOf(std::span<const UInt8> content) {
  return content.size() >= 4 ? ReadU32(content.data()) : 0;
}

/// The first `colr` extension of two kinds; null if there is none.
const ExtensionAt* FindColor(const ExtensionList& list, OSType kind, OSType other_kind) {
  for (const ExtensionAt& extension : list.all()) {
    if (extension.type != kColr) continue;
    const OSType found = ColorKindOf(list.ContentOf(extension));
    if (found == kind || found == other_kind) return &extension;
  }
  return nullptr;
}

/// Takes all `colr` extensions of two kinds away and adds one.
void ReplaceColor(ExtensionList* list, OSType kind, OSType other_kind,
                  std::span<const UInt8> content) {
  while (const ExtensionAt* found = FindColor(*list, kind, other_kind))
    list->Remove(*found);
  list->Add(kColr, content);
}

/// What a type, primaries, transfer function and matrix have in native order.
struct ColorParameters {
  OSType type;
  UInt16 indices[3];
};

bool ReadParameters(const ExtensionList& list, ColorParameters* parameters) {
  const ExtensionAt* found = FindColor(list, kNclc, kNclx);
  if (found == nullptr || list.ContentOf(*found).size() < kNclcSize) return false;
  const UInt8* const bytes = list.ContentOf(*found).data();
  *parameters = {kNclc, {ReadU16(bytes + 4), ReadU16(bytes + 6), ReadU16(bytes + 8)}};
  return true;
}

/// The profile of a description, a new one; null if there is none.
CFDataRef CopyProfile(const ExtensionList& list) {
  const ExtensionAt* found = FindColor(list, kProfile, kRestrictedProfile);
  if (found == nullptr) return nullptr;
  const std::span<const UInt8> bytes = list.ContentOf(*found).subspan(4);
  return CFDataCreate(kCFAllocatorDefault, bytes.data(), static_cast<CFIndex>(bytes.size()));
}

CGColorSpaceRef CreateColorSpace(const ExtensionList& list) {
  const Owned<CFDataRef> profile(CopyProfile(list));
  if (profile) return CGColorSpaceCreateWithICCProfile(profile.get());
  ColorParameters parameters;
  if (!ReadParameters(list, &parameters)) return nullptr;
  return quillmere::imaging::CreateVideoColorSpace(parameters.indices[0], parameters.indices[1]);
}

/// Bytes of a line of an uncompressed format, 0 for others.
SInt64 RowBytesOf(const ImageDescription& record) {
  const SInt64 width = static_cast<UInt16>(record.width);
  switch (record.cType) {
    case "2vuy"_4cc:
    case "yuv2"_4cc:
    case "yuvs"_4cc:
    case "yuvu"_4cc:
      return (width + 1) / 2 * 4;
    case "v308"_4cc:
      return 3 * width;
    case "v216"_4cc:
      return (width + 1) / 2 * 8;
    case "v210"_4cc:
      return (width + 47) / 48 * 128;
    case "v408"_4cc:
    case "r408"_4cc:
    case "v410"_4cc:
      return 4 * width;
    case "raw "_4cc:
      return record.depth > 0 && record.depth <= 32 ? (width * record.depth + 7) / 8 : 0;
    default:
      return 0;
  }
}

ImageDescription RecordOf(ImageDescriptionHandle description) {
  ImageDescription record;
  std::memcpy(&record, *description, sizeof record);
  return record;
}

template <class Value>
OSStatus Give(const Value& value, ByteCount size, void* out) {
  if (size != sizeof value) return paramErr;
  std::memcpy(out, &value, sizeof value);
  return noErr;
}

/// A reference that becomes the caller's; codecExtensionNotFoundErr for null.
template <class Reference>
OSStatus GiveOwned(Owned<Reference> reference, ByteCount size, void* out) {
  if (size != sizeof(Reference)) return paramErr;
  if (!reference) return codecExtensionNotFoundErr;
  Reference given = reference.release();
  std::memcpy(out, &given, sizeof given);
  return noErr;
}

OSStatus GetFields(const ExtensionList& list, const FieldsProperty& property, ByteCount size,
                   void* value) {
  if (size != property.size) return paramErr;
  const ExtensionAt* found = list.Find(property.id, 1);
  if (found == nullptr || list.ContentOf(*found).size() < property.size)
    return codecExtensionNotFoundErr;
  std::memcpy(value, list.ContentOf(*found).data(), property.size);
  SwapFields(property.field, static_cast<UInt8*>(value), property.size);
  return noErr;
}

OSStatus GetProperty(ImageDescriptionHandle description, OSType id, ByteCount size, void* value) {
  ExtensionList list;
  const OSErr status = list.Read(description);
  if (status) return status;
  if (const FieldsProperty* fields = FieldsOf(id)) return GetFields(list, *fields, size, value);
  const ImageDescription record = RecordOf(description);
  switch (id) {
    case kNclc: {
      ColorParameters parameters{};
      if (size != kNclcSize) return paramErr;
      if (!ReadParameters(list, &parameters)) return codecExtensionNotFoundErr;
      std::memcpy(value, &parameters, kNclcSize);
      return noErr;
    }
    case "iccp"_4cc:
      return GiveOwned(Owned<CFDataRef>(CopyProfile(list)), size, value);
    case "cgcs"_4cc:
      return GiveOwned(Owned<CGColorSpaceRef>(CreateColorSpace(list)), size, value);
    case "rowb"_4cc: {
      const SInt64 bytes = RowBytesOf(record);
      if (bytes == 0) return kQTPropertyNotSupportedErr;
      return Give(static_cast<SInt32>(bytes), size, value);
    }
    case "encw"_4cc:
      return Give(SInt32{static_cast<UInt16>(record.width)}, size, value);
    case "ench"_4cc:
      return Give(SInt32{static_cast<UInt16>(record.height)}, size, value);
    default:
      return kQTPropertyNotSupportedErr;
  }
}

OSStatus SetSide(ImageDescriptionHandle description, ByteCount size, const void* value,
                 SInt16 ImageDescription::*side) {
  SInt32 pixels = 0;
  if (size != sizeof pixels) return paramErr;
  std::memcpy(&pixels, value, sizeof pixels);
  if (pixels < 0 || pixels > 0xFFFF) return paramErr;
  ImageDescription record = RecordOf(description);
  record.*side = static_cast<SInt16>(pixels);
  std::memcpy(*description, &record, sizeof record);
  return noErr;
}

OSStatus SetColor(ExtensionList* list, OSType id, ByteCount size, const void* value) {
  if (id == kNclc) {
    if (size != kNclcSize) return paramErr;
    std::vector<UInt8> content(kNclcSize);
    std::memcpy(content.data(), value, kNclcSize);
    SwapFields(4, content.data(), 4);
    SwapFields(2, content.data() + 4, kNclcSize - 4);
    ReplaceColor(list, kNclc, kNclx, content);
    return noErr;
  }
  CFDataRef profile = nullptr;
  if (size != sizeof profile) return paramErr;
  std::memcpy(static_cast<void*>(&profile), value, sizeof profile);
  if (profile == nullptr) return paramErr;
  std::vector<UInt8> content;
  quillmere::AppendU32(&content, kProfile);
  content.insert(content.end(), CFDataGetBytePtr(profile),
                 CFDataGetBytePtr(profile) + CFDataGetLength(profile));
  ReplaceColor(list, kProfile, kRestrictedProfile, content);
  return noErr;
}

OSStatus SetFields(ExtensionList* list, const FieldsProperty& property, ByteCount size,
                   const void* value) {
  if (size != property.size) return paramErr;
  std::vector<UInt8> content(size);
  std::memcpy(content.data(), value, size);
  SwapFields(property.field, content.data(), size);
  while (const ExtensionAt* found = list->Find(property.id, 1))
    list->Remove(*found);
  list->Add(property.id, content);
  return noErr;
}

}  // namespace

OSStatus ICMImageDescriptionGetProperty(ImageDescriptionHandle description, OSType property_class,
                                        OSType id, ByteCount size, void* value,
                                        ByteCount* size_used) {
  if (value == nullptr) return paramErr;
  if (property_class != kImageDescriptionClass) return kQTPropertyNotSupportedErr;
  const OSStatus status = GetProperty(description, id, size, value);
  if (!status && size_used != nullptr) *size_used = size;
  return status;
}

OSStatus ICMImageDescriptionSetProperty(ImageDescriptionHandle description, OSType property_class,
                                        OSType id, ByteCount size, const void* value) {
  if (value == nullptr) return paramErr;
  if (property_class != kImageDescriptionClass) return kQTPropertyNotSupportedErr;
  ExtensionList list;
  OSStatus status = list.Read(description);
  if (status) return status;
  if (id == "encw"_4cc) return SetSide(description, size, value, &ImageDescription::width);
  if (id == "ench"_4cc) return SetSide(description, size, value, &ImageDescription::height);
  const FieldsProperty* const fields = FieldsOf(id);
  if (fields == nullptr && id != kNclc && id != "iccp"_4cc) return kQTPropertyNotSupportedErr;
  status =
      fields != nullptr ? SetFields(&list, *fields, size, value) : SetColor(&list, id, size, value);
  return status ? status : list.WriteTo(description);
}
