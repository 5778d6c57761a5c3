#include "components.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "dv_encoder.h"
#include "video_decoder.h"

struct ComponentRecord {
  OSType type;
  OSType subtype;
  OSType manufacturer;
  UInt32 flags;
  const char* name;
  std::array<OSType, 2> pixel_formats{};  ///< of a codec, the best first
};

namespace {

constexpr OSType kOurs = "QlMr"_4cc;
constexpr OSErr kInvalidComponent = -3000;
constexpr OSErr kNoCodec = -8961;

constexpr std::array<OSType, 2> kArgbFirst = {32, "2vuy"_4cc};
constexpr std::array<OSType, 2> kVideoFirst = {"2vuy"_4cc, 32};

constexpr ComponentRecord kOwnComponents[] = {
    {kGraphicsImporterType, "PNGf"_4cc, kOurs, cmpThreadSafe, "PNG"},
    {kGraphicsImporterType, "JPEG"_4cc, kOurs, cmpThreadSafe, "JPEG"},
    {kGraphicsExporterType, "qtif"_4cc, kOurs, 0, "QuickTime Image"},
    {kCompressorType, "raw "_4cc, kOurs, cmpThreadSafe, "None", kArgbFirst},
    {kCompressorType, "png "_4cc, kOurs, cmpThreadSafe, "PNG", kArgbFirst},
    {kCompressorType, "jpeg"_4cc, kOurs, cmpThreadSafe, "Photo - JPEG", kArgbFirst},
    {kDecompressorType, "png "_4cc, kOurs, cmpThreadSafe, "PNG", kArgbFirst},
    {kDecompressorType, "jpeg"_4cc, kOurs, cmpThreadSafe, "Photo - JPEG", kArgbFirst},
    {kMovieImporterType, "MooV"_4cc, kOurs, cmpThreadSafe, "QuickTime Movie"},
    {kMovieImporterType, "mpg4"_4cc, kOurs, cmpThreadSafe, "MPEG-4"},
    {kMediaHandlerType, "vide"_4cc, kOurs, cmpThreadSafe, "Video"},
    {kMediaHandlerType, "soun"_4cc, kOurs, cmpThreadSafe, "Sound"},
    {kMediaHandlerType, "text"_4cc, kOurs, cmpThreadSafe, "Text"},
};

std::vector<ComponentRecord> MakeComponents() {
  std::vector<ComponentRecord> components(std::begin(kOwnComponents), std::end(kOwnComponents));
  for (const quillmere::codecs::DvFormat& format : quillmere::codecs::DvFormats())
    components.push_back(
        {kCompressorType, format.type, kOurs, cmpThreadSafe, format.name, kVideoFirst});
  for (const quillmere::codecs::DecodableType& type : quillmere::codecs::DecodableTypes())
    components.push_back(
        {kDecompressorType, type.type, kOurs, cmpThreadSafe, type.name,
         type.type == "raw "_4cc || type.type == "rle "_4cc ? kArgbFirst : kVideoFirst});
  return components;
}

const std::vector<ComponentRecord>& Components() {
  static const std::vector<ComponentRecord> components = MakeComponents();
  return components;
}

bool Fits(const ComponentRecord& component, const ComponentDescription& looking) {
  const auto same = [](OSType wanted, OSType code) { return wanted == 0 || wanted == code; };
  const UInt32 differing = component.flags ^ looking.componentFlags;
  return same(looking.componentType, component.type) &&
         same(looking.componentSubType, component.subtype) &&
         same(looking.componentManufacturer, component.manufacturer) &&
         (differing & looking.componentFlagsMask) == 0;
}

/// A name with its length in front, cut to what fits.
std::string PascalString(std::string_view name, std::size_t room) {
  name = name.substr(0, room - 1);
  std::string bytes(1, static_cast<char>(name.size()));
  bytes += name;
  return bytes;
}

}  // namespace

Component FindNextComponent(Component component, const ComponentDescription* looking) {
  if (looking == nullptr) return nullptr;
  const std::vector<ComponentRecord>& all = Components();
  const auto* const end = all.data() + all.size();
  const auto* first = component != nullptr ? component + 1 : all.data();
  const auto* found =
      std::find_if(first, end, [looking](const auto& each) { return Fits(each, *looking); });
  return found != end ? found : nullptr;
}

OSErr GetComponentInfo(Component component, ComponentDescription* description, Handle name,
                       Handle info, Handle icon) {
  constexpr std::size_t kLongestName = 256;
  if (component == nullptr) return kInvalidComponent;
  if (description != nullptr)
    *description = {component->type, component->subtype, component->manufacturer, component->flags,
                    0};
  for (Handle text : {info, icon})  // there are none
    if (text != nullptr) SetHandleSize(text, 0);
  if (name == nullptr) return noErr;
  const std::string bytes = PascalString(component->name, kLongestName);
  SetHandleSize(name, static_cast<Size>(bytes.size()));
  if (MemError() != noErr) return MemError();
  std::memcpy(*name, bytes.data(), bytes.size());
  return noErr;
}

OSErr FindCodec(OSType codec_type, Component specified, Component* compressor,
                Component* decompressor) {
  const bool is_any = specified == anyCodec || specified == bestSpeedCodec ||
                      specified == bestFidelityCodec || specified == bestCompressionCodec;
  const auto find = [&](OSType type, Component* codec) {
    if (codec == nullptr) return false;
    const ComponentDescription looking = {type, codec_type, 0, 0, 0};
    *codec = FindNextComponent(nullptr, &looking);
    if (!is_any && *codec != specified) *codec = nullptr;
    return *codec != nullptr;
  };
  const bool has_compressor = find(kCompressorType, compressor);
  const bool has_decompressor = find(kDecompressorType, decompressor);
  return has_compressor || has_decompressor ? OSErr{noErr} : kNoCodec;
}

OSErr GetComponentPublicResource(Component component, OSType type, SInt16 id, Handle* resource) {
  if (resource == nullptr) return static_cast<OSErr>(paramErr);
  *resource = nullptr;
  if (component == nullptr) return kInvalidComponent;
  const auto& formats = component->pixel_formats;
  if (type != "cpix"_4cc || id != 1 || formats[0] == 0) return resNotFound;
  return PtrToHand(formats.data(), resource, sizeof formats);
}

OSErr GetCodecNameList(CodecNameSpecList** list, [[maybe_unused]] SInt16 show_all) {
  if (list == nullptr) return static_cast<OSErr>(paramErr);
  auto made = std::make_unique<CodecNameSpecList>();
  made->list = new CodecNameSpec[Components().size()]{};
  const ComponentDescription looking = {kDecompressorType, 0, 0, 0, cmpIsMissing};
  for (Component each = nullptr; (each = FindNextComponent(each, &looking)) != nullptr;) {
    CodecNameSpec& spec = made->list[made->count++];
    spec.codec = each;
    spec.cType = each->subtype;
    std::ranges::copy(PascalString(each->name, sizeof spec.typeName), spec.typeName);
  }
  *list = made.release();
  return noErr;
}

OSErr DisposeCodecNameList(CodecNameSpecList* list) {
  if (list != nullptr) delete[] list->list;
  delete list;
  return noErr;
}
