#include "image_descriptions.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include "extension_list.h"

using quillmere::movies::ExtensionAt;
using quillmere::movies::ExtensionList;

struct DecompressionSequence {
  std::vector<UInt8> description;
};

namespace {

/// A description with what may differ in an equivalent one cleared.
OSErr ComparableBytes(ImageDescriptionHandle description, std::vector<UInt8>* bytes) {
  const OSErr status = quillmere::movies::CheckDescription(description);
  if (status) return status;
  const auto* start = reinterpret_cast<const UInt8*>(*description);
  bytes->assign(start, start + GetHandleSize(description));
  ImageDescription record;
  std::memcpy(&record, bytes->data(), sizeof record);
  record.dataRefIndex = 0;
  record.dataSize = 0;
  std::fill(std::begin(record.name), std::end(record.name), UInt8{0});
  std::memcpy(bytes->data(), &record, sizeof record);
  return noErr;
}

struct KnownCodec {
  OSType type;
  std::string_view name;
};
constexpr KnownCodec kCodecs[] = {{"raw "_4cc, "None"},
                                  {"rle "_4cc, "Animation"},
                                  {"png "_4cc, "PNG"},
                                  {"jpeg"_4cc, "Photo - JPEG"},
                                  {"mjpa"_4cc, "Motion JPEG A"},
                                  {"mjpb"_4cc, "Motion JPEG B"},
                                  {"mjp2"_4cc, "JPEG 2000"},
                                  {"tiff"_4cc, "TIFF"},
                                  {"tga "_4cc, "TGA"},
                                  {"gif "_4cc, "GIF"},
                                  {"cvid"_4cc, "Cinepak"},
                                  {"SVQ1"_4cc, "Sorenson Video"},
                                  {"SVQ3"_4cc, "Sorenson Video 3"},
                                  {"h261"_4cc, "H.261"},
                                  {"h263"_4cc, "H.263"},
                                  {"mp4v"_4cc, "MPEG-4 Video"},
                                  {"avc1"_4cc, "H.264"},
                                  {"hvc1"_4cc, "HEVC"},
                                  {"dvc "_4cc, "DV - NTSC"},
                                  {"dvcp"_4cc, "DV - PAL"},
                                  {"dvpp"_4cc, "DVCPRO - PAL"},
                                  {"dv5n"_4cc, "DVCPRO50 - NTSC"},
                                  {"dv5p"_4cc, "DVCPRO50 - PAL"},
                                  {"2vuy"_4cc, "8-bit 4:2:2 Component Y'CbCr"},
                                  {"yuv2"_4cc, "Component Video"},
                                  {"v210"_4cc, "10-bit 4:2:2 Component Y'CbCr"},
                                  {"v216"_4cc, "16-bit 4:2:2 Component Y'CbCr"},
                                  {"v308"_4cc, "8-bit 4:4:4 Component Y'CbCr"},
                                  {"v408"_4cc, "8-bit 4:4:4:4 Component Y'CbCrA"},
                                  {"v410"_4cc, "10-bit 4:4:4 Component Y'CbCr"}};

}  // namespace

OSErr GetImageDescriptionExtension(ImageDescriptionHandle description, Handle* extension,
                                   OSType type, SInt32 index) {
  if (extension == nullptr) return paramErr;
  ExtensionList list;
  OSErr status = list.Read(description);
  if (status) return status;
  const ExtensionAt* found = list.Find(type, index);
  if (found == nullptr) return codecExtensionNotFoundErr;
  const std::vector<UInt8> content(list.ContentOf(*found).begin(), list.ContentOf(*found).end());
  return PtrToHand(content.data(), extension, static_cast<Size>(content.size()));
}

OSErr AddImageDescriptionExtension(ImageDescriptionHandle description, Handle extension,
                                   OSType type) {
  if (extension == nullptr) return paramErr;
  ExtensionList list;
  const OSErr status = list.Read(description);
  if (status) return status;
  list.Add(type, {reinterpret_cast<const UInt8*>(*extension),
                  static_cast<std::size_t>(GetHandleSize(extension))});
  return list.WriteTo(description);
}

OSErr RemoveImageDescriptionExtension(ImageDescriptionHandle description, OSType type,
                                      SInt32 index) {
  ExtensionList list;
  const OSErr status = list.Read(description);
  if (status) return status;
  const ExtensionAt* found = list.Find(type, index);
  if (found == nullptr) return codecExtensionNotFoundErr;
  list.Remove(*found);
  return list.WriteTo(description);
}

OSErr CountImageDescriptionExtensionType(ImageDescriptionHandle description, OSType type,
                                         SInt32* count) {
  if (count == nullptr) return paramErr;
  ExtensionList list;
  const OSErr status = list.Read(description);
  if (!status)
    *count = static_cast<SInt32>(std::ranges::count(list.all(), type, &ExtensionAt::type));
  return status;
}

OSErr GetNextImageDescriptionExtensionType(ImageDescriptionHandle description, OSType* type) {
  if (type == nullptr) return paramErr;
  ExtensionList list;
  const OSErr status = list.Read(description);
  if (status) return status;
  std::vector<OSType> types;
  for (const ExtensionAt& extension : list.all())
    if (std::ranges::find(types, extension.type) == types.end()) types.push_back(extension.type);
  auto next = types.begin();
  if (*type != 0) {
    next = std::ranges::find(types, *type);
    if (next != types.end()) ++next;
  }
  *type = next != types.end() ? *next : 0;
  return noErr;
}

OSErr GetCodecInfo(CodecInfo* info, OSType type) {
  if (info == nullptr) return paramErr;
  const auto* found = std::ranges::find(kCodecs, type, &KnownCodec::type);
  if (found == std::end(kCodecs)) return noCodecErr;
  *info = {{}, 1, 1, "QlMr"_4cc};
  info->typeName[0] = static_cast<UInt8>(found->name.size());
  std::copy(found->name.begin(), found->name.end(), info->typeName + 1);
  return noErr;
}

OSErr DecompressSequenceBeginS(ImageSequence* sequence, ImageDescriptionHandle description) {
  if (sequence == nullptr) return paramErr;
  auto begun = std::make_unique<DecompressionSequence>();
  const OSErr status = ComparableBytes(description, &begun->description);
  if (!status) *sequence = begun.release();
  return status;
}

OSErr CDSequenceEquivalentImageDescription(ImageSequence sequence,
                                           ImageDescriptionHandle description,
                                           Boolean* equivalent) {
  if (sequence == nullptr || equivalent == nullptr) return paramErr;
  std::vector<UInt8> bytes;
  const OSErr status = ComparableBytes(description, &bytes);
  if (!status) *equivalent = bytes == sequence->description;
  return status;
}

OSErr CDSequenceEnd(ImageSequence sequence) {
  const std::unique_ptr<DecompressionSequence> last(sequence);
  return noErr;
}
