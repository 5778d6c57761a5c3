#include "QT_Ide_Descriptions.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include "GL_Memory.h"
#include "QT_Codec_Families.h"
#include "fixed_point.h"

namespace {

constexpr OSType kClass = "idsc"_4cc;

struct DisposeHandleOf {
  void operator()(Ptr* handle) const { DisposeHandle(handle); }
};
using OwnedHandle = std::unique_ptr<Ptr, DisposeHandleOf>;

template <class Value>
SInt32 Get(ImageDescriptionHandle description, OSType id, Value* value) {
  return ICMImageDescriptionGetProperty(description, kClass, id, sizeof *value,
                                        static_cast<void*>(value), nullptr);
}

template <class Value>
SInt32 Set(ImageDescriptionHandle description, OSType id, const Value* value) {
  return ICMImageDescriptionSetProperty(description, kClass, id, sizeof *value,
                                        static_cast<const void*>(value));
}

/// A property call's failure that means that something isn't there.
bool IsAbsence(SInt32 status) {
  return status == codecExtensionNotFoundErr || status == kQTPropertyNotSupportedErr;
}

/// The sample description of a media at an index, in a new handle; null with a status.
SInt32 CopyDescription(Media media, SInt32 index, OwnedHandle* description) {
  description->reset(NewHandle(0));
  if (!*description) return MemError();
  GetMediaSampleDescription(media, index, description->get());
  return GetMoviesError();
}

/// The record of an extension in a media's description by the rules that all of them share.
template <class Record>
SInt32 GetFromMedia(Media media, SInt32 index, OSType type,
                    SInt32 (*get)(ImageDescriptionHandle, Record*), Boolean* has, Record* record) {
  *has = 0;
  *record = {};
  OwnedHandle description;
  SInt32 status = CopyDescription(media, index, &description);
  if (!status) status = QT_HasImageDescExtOfType(type, description.get(), has);
  if (status || !*has) return status;
  status = get(description.get(), record);
  if (!status) return noErr;
  *has = 0;
  *record = {};
  return IsAbsence(status) ? noErr : status;
}

ImageDescription RecordOf(ImageDescriptionHandle description) {
  ImageDescription record{};
  std::memcpy(&record, *description, sizeof record);
  return record;
}

/// Stores the difference of a field that the mask names; numbers wrap.
template <class Field>
void Subtract(const ImageDescription& first, const ImageDescription& second,
              const ImageDescription& mask, Field ImageDescription::*field,
              ImageDescription* difference) {
  if (mask.*field == 0) return;
  difference->*field =
      static_cast<Field>(static_cast<SInt64>(second.*field) - static_cast<SInt64>(first.*field));
}

bool AreSameNames(const ImageDescription& first, const ImageDescription& second) {
  const auto name = [](const ImageDescription& record) {
    const std::size_t length = std::min<std::size_t>(record.name[0], sizeof record.name - 1);
    return std::string_view(reinterpret_cast<const char*>(record.name + 1), length);
  };
  return name(first) == name(second);
}

void SubtractFields(const ImageDescription& a, const ImageDescription& b,
                    const ImageDescription& mask, ImageDescription* out) {
  Subtract(a, b, mask, &ImageDescription::idSize, out);
  Subtract(a, b, mask, &ImageDescription::cType, out);
  Subtract(a, b, mask, &ImageDescription::resvd1, out);
  Subtract(a, b, mask, &ImageDescription::resvd2, out);
  Subtract(a, b, mask, &ImageDescription::dataRefIndex, out);
  Subtract(a, b, mask, &ImageDescription::version, out);
  Subtract(a, b, mask, &ImageDescription::revisionLevel, out);
  Subtract(a, b, mask, &ImageDescription::vendor, out);
  Subtract(a, b, mask, &ImageDescription::temporalQuality, out);
  Subtract(a, b, mask, &ImageDescription::spatialQuality, out);
  Subtract(a, b, mask, &ImageDescription::width, out);
  Subtract(a, b, mask, &ImageDescription::height, out);
  Subtract(a, b, mask, &ImageDescription::hRes, out);
  Subtract(a, b, mask, &ImageDescription::vRes, out);
  Subtract(a, b, mask, &ImageDescription::dataSize, out);
  Subtract(a, b, mask, &ImageDescription::frameCount, out);
  Subtract(a, b, mask, &ImageDescription::depth, out);
  Subtract(a, b, mask, &ImageDescription::clutID, out);
  if (mask.name[0] != 0) out->name[0] = AreSameNames(a, b) ? 1 : 0;
}

/// Adds cleared extensions of a type to the difference, one for each that differs.
SInt32 NoteDifferences(ImageDescriptionHandle first, ImageDescriptionHandle second, OSType type,
                       ImageDescriptionHandle difference) {
  SInt32 counts[2] = {};
  SInt32 status = CountImageDescriptionExtensionType(first, type, &counts[0]);
  if (!status) status = CountImageDescriptionExtensionType(second, type, &counts[1]);
  const SInt32 common = std::min(counts[0], counts[1]);
  SInt32 different = std::max(counts[0], counts[1]) - common;
  for (SInt32 i = 1; !status && i <= common; ++i) {
    Handle a = nullptr;
    Handle b = nullptr;
    status = GetImageDescriptionExtension(first, &a, type, i);
    if (!status) status = GetImageDescriptionExtension(second, &b, type, i);
    const OwnedHandle owned_a(a);
    const OwnedHandle owned_b(b);
    if (!status && !GL_EqualHandles(a, b)) ++different;
  }
  const OwnedHandle mark(NewHandleClear(4));
  for (; !status && different > 0; --different)
    status = AddImageDescriptionExtension(difference, mark.get(), type);
  return status;
}

/// The types of a description, each once.
SInt32 TypesOf(ImageDescriptionHandle description, std::vector<OSType>* types) {
  OSType type = 0;
  for (;;) {
    const SInt32 status = GetNextImageDescriptionExtensionType(description, &type);
    if (status || type == 0) return status;
    types->push_back(type);
  }
}

SInt32 NewDescription(const ImageDescription& record, ImageDescriptionHandle* description) {
  return PtrToHand(&record, description, sizeof record);
}

void SetName(std::string_view name, ImageDescription* record) {
  record->name[0] = static_cast<UInt8>(name.size());
  std::copy(name.begin(), name.end(), record->name + 1);
}

/// What all new descriptions share.
ImageDescription PlainRecord(OSType type, SInt16 width, SInt16 height) {
  constexpr Fixed k72Dpi = 0x480000;
  ImageDescription record{};
  record.idSize = sizeof record;
  record.cType = type;
  record.width = width;
  record.height = height;
  record.hRes = record.vRes = k72Dpi;
  record.frameCount = 1;
  record.clutID = -1;
  return record;
}

/// Takes extension `index` of a type out of a description.
SInt32 TakeOut(ImageDescriptionHandle description, OSType type, SInt32 index, OwnedHandle* taken) {
  Handle extension = nullptr;
  SInt32 status = GetImageDescriptionExtension(description, &extension, type, index);
  taken->reset(extension);
  if (!status) status = RemoveImageDescriptionExtension(description, type, index);
  return status;
}

}  // namespace

SInt32 QT_CountImageDescExtTypes(ImageDescriptionHandle description, SInt32* count) {
  std::vector<OSType> types;
  const SInt32 status = TypesOf(description, &types);
  if (!status) *count = static_cast<SInt32>(types.size());
  return status;
}

SInt32 QT_AddSingleImageDescExtension(ImageDescriptionHandle description, OSType type,
                                      Handle extension) {
  SInt32 status = noErr;
  while (status == noErr)
    status = RemoveImageDescriptionExtension(description, type, 1);
  if (status != codecExtensionNotFoundErr) return status;
  return AddImageDescriptionExtension(description, extension, type);
}

SInt32 QT_CopySingleImageDescExtOfType(OSType type, ImageDescriptionHandle source,
                                       ImageDescriptionHandle destination) {
  Handle extension = nullptr;
  const SInt32 status = GetImageDescriptionExtension(source, &extension, type, 1);
  if (status) return status == codecExtensionNotFoundErr ? noErr : status;
  const OwnedHandle owned(extension);
  return QT_AddSingleImageDescExtension(destination, type, extension);
}

SInt32 QT_HasImageDescExtOfType(OSType type, ImageDescriptionHandle description, Boolean* has) {
  *has = 0;
  Handle extension = nullptr;
  const SInt32 status = GetImageDescriptionExtension(description, &extension, type, 1);
  const OwnedHandle owned(extension);
  *has = status == noErr;
  return status == codecExtensionNotFoundErr ? noErr : status;
}

SInt32 QT_CopyAllImageDescExts(ImageDescriptionHandle source, ImageDescriptionHandle destination,
                               Boolean replace) {
  std::vector<OSType> types;
  SInt32 status = TypesOf(source, &types);
  for (const OSType type : types) {
    SInt32 from = 0;
    SInt32 present = 0;
    if (!status) status = CountImageDescriptionExtensionType(source, type, &from);
    if (!status) status = CountImageDescriptionExtensionType(destination, type, &present);
    for (SInt32 i = 1; !status && i <= from; ++i) {
      Handle extension = nullptr;
      status = GetImageDescriptionExtension(source, &extension, type, i);
      const OwnedHandle owned(extension);
      if (!status && replace && i <= present)
        status = RemoveImageDescriptionExtension(destination, type, 1);
      if (!status && (replace || i > present))
        status = AddImageDescriptionExtension(destination, extension, type);
    }
    if (status == codecExtensionNotFoundErr) status = noErr;
    if (status) return status;
  }
  return status;
}

SInt32 QT_SetIndexedImageDescExtension(ImageDescriptionHandle description, OSType type,
                                       SInt32 index, Handle extension) {
  SInt32 count = 0;
  SInt32 status = CountImageDescriptionExtensionType(description, type, &count);
  if (status) return status;
  if (index < 1 || index > count + 1) return codecExtensionNotFoundErr;
  std::vector<OwnedHandle> behind;  // from the last one back
  for (SInt32 i = count; !status && i > index; --i) {
    behind.emplace_back();
    status = TakeOut(description, type, i, &behind.back());
  }
  if (!status && index <= count) status = RemoveImageDescriptionExtension(description, type, index);
  if (!status) status = AddImageDescriptionExtension(description, extension, type);
  for (auto saved = behind.rbegin(); !status && saved != behind.rend(); ++saved)
    status = AddImageDescriptionExtension(description, saved->get(), type);
  return status;
}

SInt32 QT_EqualImageDescs(ImageDescriptionHandle first, ImageDescriptionHandle second,
                          ImageDescriptionHandle mask, Boolean compareExtensions, SInt32 typeCount,
                          const OSType* types, ImageDescriptionHandle difference) {
  SInt32 status = noErr;
  SInt32 unused = 0;
  for (ImageDescriptionHandle each : {first, second, mask, difference})
    if (!status) status = QT_GetWidthFromImagDesc(each, &unused);
  if (status) return status;
  ImageDescription out = RecordOf(difference);
  SubtractFields(RecordOf(first), RecordOf(second), RecordOf(mask), &out);
  std::memcpy(*difference, &out, sizeof out);
  if (!compareExtensions) return noErr;
  std::vector<OSType> looked_at;
  if (typeCount > 0) {
    looked_at.assign(types, types + typeCount);
  } else {
    std::vector<OSType> of_second;
    status = TypesOf(first, &looked_at);
    if (!status) status = TypesOf(second, &of_second);
    for (const OSType type : of_second)
      if (std::ranges::find(looked_at, type) == looked_at.end()) looked_at.push_back(type);
  }
  for (const OSType type : looked_at)
    if (!status) status = NoteDifferences(first, second, type, difference);
  return status;
}

SInt32 QT_AreAllImageDescsEquivalent(Media media, CGrafPtr /*port*/, Boolean* equivalent) {
  *equivalent = 1;
  const SInt32 count = GetMediaSampleDescriptionCount(media);
  SInt32 status = GetMoviesError();
  if (status || count <= 1) return status;
  OwnedHandle description;
  ImageSequence sequence = nullptr;
  status = CopyDescription(media, 1, &description);
  if (!status) status = DecompressSequenceBeginS(&sequence, description.get());
  for (SInt32 i = 2; !status && *equivalent && i <= count; ++i) {
    status = CopyDescription(media, i, &description);
    if (!status)
      status = CDSequenceEquivalentImageDescription(sequence, description.get(), equivalent);
  }
  CDSequenceEnd(sequence);
  return status;
}

SInt32 QT_GetFielFromImageDesc(ImageDescriptionHandle description, QT_Fiel* fiel) {
  return Get(description, "fiel"_4cc, fiel);
}
SInt32 QT_SetFielInImageDesc(ImageDescriptionHandle description, const QT_Fiel* fiel) {
  return Set(description, "fiel"_4cc, fiel);
}
SInt32 QT_GetPaspFromImageDesc(ImageDescriptionHandle description, QT_Pasp* pasp) {
  return Get(description, "pasp"_4cc, pasp);
}
SInt32 QT_SetPaspInImageDesc(ImageDescriptionHandle description, const QT_Pasp* pasp) {
  return Set(description, "pasp"_4cc, pasp);
}
SInt32 QT_GetClapFromImageDesc(ImageDescriptionHandle description, QT_Clap* clap) {
  return Get(description, "clap"_4cc, clap);
}
SInt32 QT_SetClapInImageDesc(ImageDescriptionHandle description, const QT_Clap* clap) {
  return Set(description, "clap"_4cc, clap);
}

SInt32 QT_GetNclcFromImageDesc(ImageDescriptionHandle description, QT_Nclc* nclc) {
  const SInt32 status = Get(description, kQT_NclcType, nclc);
  if (status != codecExtensionNotFoundErr) return status;
  *nclc = {};
  return noErr;
}

SInt32 QT_SetNclcInImageDesc(ImageDescriptionHandle description, const QT_Nclc* nclc) {
  return Set(description, kQT_NclcType, nclc);
}
SInt32 QT_GetIccProfileFromImageDesc(ImageDescriptionHandle description, CFDataRef* profile) {
  return Get(description, "iccp"_4cc, profile);
}
SInt32 QT_SetIccProfileInImageDesc(ImageDescriptionHandle description, CFDataRef profile) {
  return Set(description, "iccp"_4cc, &profile);
}

SInt32 QT_GetGammaFromImageDesc(ImageDescriptionHandle description, float* gamma) {
  Fixed fixed = 0;
  const SInt32 status = Get(description, "gama"_4cc, &fixed);
  if (!status) *gamma = static_cast<float>(Fix2X(fixed));
  return status;
}

SInt32 QT_SetGammaInImageDesc(ImageDescriptionHandle description, float gamma) {
  const Fixed fixed = X2Fix(static_cast<double>(gamma));
  return Set(description, "gama"_4cc, &fixed);
}

SInt32 QT_GetHeightFromImagDesc(ImageDescriptionHandle description, SInt32* height) {
  return Get(description, "ench"_4cc, height);
}
SInt32 QT_GetWidthFromImagDesc(ImageDescriptionHandle description, SInt32* width) {
  return Get(description, "encw"_4cc, width);
}

SInt32 QT_GetImageDescRowbytes(ImageDescriptionHandle description, Boolean* exists,
                               SInt32* rowBytes) {
  const SInt32 status = Get(description, "rowb"_4cc, rowBytes);
  *exists = status == noErr;
  return IsAbsence(status) ? noErr : status;
}

SInt32 QT_CreateColorSpaceForImageDesc(ImageDescriptionHandle description, CGColorSpaceRef* space) {
  *space = nullptr;
  return Get(description, "cgcs"_4cc, space);
}

SInt32 QT_CreateColorSpaceForNclc(const QT_Nclc* nclc, CGColorSpaceRef* space) {
  *space = nullptr;
  ImageDescriptionHandle description = nullptr;
  SInt32 status = QT_MakeYuv2ImageDescription(640, 480, &description);
  const OwnedHandle owned(description);
  if (!status) status = QT_SetNclcInImageDesc(description, nclc);
  if (!status) status = QT_CreateColorSpaceForImageDesc(description, space);
  return status;
}

SInt32 QT_HasGamm22inNclc(ImageDescriptionHandle description, Boolean* has) {
  *has = 0;
  if (description == nullptr) return noErr;
  Handle extension = nullptr;
  const SInt32 status = GetImageDescriptionExtension(description, &extension, "colr"_4cc, 1);
  if (status) return status == codecExtensionNotFoundErr ? noErr : status;
  const OwnedHandle owned(extension);
  QT_Nclc nclc{};
  if (GetHandleSize(extension) < static_cast<Size>(sizeof nclc)) return noErr;
  std::memcpy(&nclc, *extension, sizeof nclc);
  QT_FlipNclc(&nclc);
  *has = nclc.colorParamType == kQT_NclcType && nclc.transferFunction != kQT_NclcUnspecified;
  return noErr;
}

SInt32 QT_GetIndexedFielFromMedia(Media media, SInt32 index, Boolean* has, QT_Fiel* fiel) {
  return GetFromMedia(media, index, "fiel"_4cc, QT_GetFielFromImageDesc, has, fiel);
}
SInt32 QT_GetFielFromMedia(Media media, Boolean* has, QT_Fiel* fiel) {
  return QT_GetIndexedFielFromMedia(media, 1, has, fiel);
}
SInt32 QT_GetIndexedPaspFromMedia(Media media, SInt32 index, Boolean* has, QT_Pasp* pasp) {
  return GetFromMedia(media, index, "pasp"_4cc, QT_GetPaspFromImageDesc, has, pasp);
}
SInt32 QT_GetPaspFromMedia(Media media, Boolean* has, QT_Pasp* pasp) {
  return QT_GetIndexedPaspFromMedia(media, 1, has, pasp);
}
SInt32 QT_GetIndexedClapFromMedia(Media media, SInt32 index, Boolean* has, QT_Clap* clap) {
  return GetFromMedia(media, index, "clap"_4cc, QT_GetClapFromImageDesc, has, clap);
}
SInt32 QT_GetClapFromMedia(Media media, Boolean* has, QT_Clap* clap) {
  return QT_GetIndexedClapFromMedia(media, 1, has, clap);
}
SInt32 QT_GetIndexedGammaFromMedia(Media media, SInt32 index, Boolean* has, float* gamma) {
  return GetFromMedia(media, index, "gama"_4cc, QT_GetGammaFromImageDesc, has, gamma);
}
SInt32 QT_GetGammaFromMedia(Media media, Boolean* has, float* gamma) {
  return QT_GetIndexedGammaFromMedia(media, 1, has, gamma);
}

SInt32 QT_GetIndexedColrFromMedia(Media media, SInt32 index, Boolean* has, Boolean* isNclc,
                                  QT_Nclc* nclc, CFDataRef* profile) {
  *has = *isNclc = 0;
  *nclc = {};
  *profile = nullptr;
  OwnedHandle description;
  SInt32 status = CopyDescription(media, index, &description);
  if (!status) status = QT_HasImageDescExtOfType("colr"_4cc, description.get(), has);
  if (status || !*has) return status;
  status = QT_GetIccProfileFromImageDesc(description.get(), profile);
  if (!status && *profile != nullptr) return noErr;
  status = Get(description.get(), kQT_NclcType, nclc);
  *has = *isNclc = status == noErr;
  if (status) *nclc = {};
  return IsAbsence(status) ? noErr : status;
}

SInt32 QT_GetColrFromMedia(Media media, Boolean* has, Boolean* isNclc, QT_Nclc* nclc,
                           CFDataRef* profile) {
  return QT_GetIndexedColrFromMedia(media, 1, has, isNclc, nclc, profile);
}

SInt32 QT_GetFielDataFromMedia(Media media, Boolean* has, Boolean* interlaced, UInt8* topFirst) {
  QT_Fiel fiel = {};
  const SInt32 status = QT_GetFielFromMedia(media, has, &fiel);
  QT_GetInterlaceFromFiel(&fiel, interlaced, topFirst);
  return status;
}

SInt32 QT_MakeImageDescription(SCSpatialSettings* settings, SInt16 width, SInt16 height,
                               SInt32 dataSize, ImageDescriptionHandle* description) {
  constexpr OSType k2vuy = "2vuy"_4cc;
  CodecInfo info{};
  if (settings->codecType == k2vuy) {
    settings->depth = 0;
    settings->spatialQuality = 1023;
    info.version = info.revisionLevel = 1;
    info.vendor = "appl"_4cc;
  } else if (const SInt32 status = GetCodecInfo(&info, settings->codecType)) {
    return status;
  }
  ImageDescription record = PlainRecord(settings->codecType, width, height);
  record.version = info.version;
  record.revisionLevel = info.revisionLevel;
  record.vendor = info.vendor;
  record.spatialQuality = settings->spatialQuality;
  record.dataSize = dataSize;
  record.depth = settings->depth;
  if (settings->codecType == k2vuy)
    SetName("8-bit 4:2:2 Component Y'CbCr", &record);
  else
    std::copy_n(info.typeName, sizeof record.name, record.name);
  return NewDescription(record, description);
}

SInt32 QT_MakeYuv2ImageDescription(SInt16 width, SInt16 height,
                                   ImageDescriptionHandle* description) {
  ImageDescription record = PlainRecord("yuv2"_4cc, width, height);
  record.version = 1;
  record.vendor = "appl"_4cc;
  record.spatialQuality = 1024;
  record.dataSize = width * height * 2;
  record.depth = 24;
  SetName("Component Video", &record);
  return NewDescription(record, description);
}
