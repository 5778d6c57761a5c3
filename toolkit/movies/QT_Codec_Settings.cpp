#include "QT_Codec_Settings.h"

#include "GL_CF.h"
#include "GL_Memory.h"
#include "QT_Codec_Families.h"
#include "QT_Codec_Tables.h"
#include "codec_settings.h"
#include "compressors_private.h"
#include "movie_toolbox.h"
#include "reference_counted.h"

using namespace quillmere;

namespace {

constexpr OSType kCompressorClass = "imco"_4cc;
constexpr OSType kDvClass = "dvco"_4cc;
constexpr SInt32 kNotFound = -2200;

/// Reads a property, which may be missing; `*result` keeps a -2200. Any other failure is the
/// status.
template <class T>
SInt32 ReadEnforced(CompressorComponent compressor, OSType property, T* value, SInt32* result) {
  const SInt32 status =
      QTGetComponentProperty(compressor, kCompressorClass, property, sizeof *value, value, nullptr);
  if (status == kNotFound) *result = status;
  return status == kNotFound || status == kQTPropertyNotSupportedErr ? SInt32{noErr} : status;
}

SInt32 ReadAllEnforced(CompressorComponent compressor, QT_EnforcedProperties* properties) {
  SInt32 result = noErr;
  SInt32 status = ReadEnforced(compressor, "enwi"_4cc, &properties->width, &result);
  if (!status) status = ReadEnforced(compressor, "enhe"_4cc, &properties->height, &result);
  if (!status) status = ReadEnforced(compressor, "encl"_4cc, &properties->clap, &result);
  if (!status) status = ReadEnforced(compressor, "enpa"_4cc, &properties->pasp, &result);
  if (!status) status = ReadEnforced(compressor, "enfi"_4cc, &properties->fiel, &result);
  return status ? status : result;
}

/// What the settings of `icod` mean, whatever its compressor tells.
void CorrectIntermediate(Handle settings, QT_EnforcedProperties* properties) {
  constexpr Size kFields = 22;
  const OSType subtype = IntermediateSubtypeOf(settings);
  properties->pasp = {0, 0};
  properties->clap = {0, 1, 0, 1, 0, 1, 0, 1};
  properties->fiel = {};
  if (subtype == "720p"_4cc) {
    properties->pasp = {1, 1};
    properties->clap = {1248, 1, 702, 1, 0, 1, 0, 1};
  } else if (subtype == "108i"_4cc || subtype == "108p"_4cc) {
    properties->pasp = {4, 3};
    properties->clap = {1416, 1, 1062, 1, 0, 1, 0, 1};
  }
  if (settings != nullptr && GetHandleSize(settings) >= kFields + 2)
    properties->fiel = {static_cast<UInt8>((*settings)[kFields]),
                        static_cast<UInt8>((*settings)[kFields + 1])};
}

void CorrectDvcProHd(QT_EnforcedProperties* properties) {
  const bool is3to2 = properties->pasp.hSpacing == 3 && properties->pasp.vSpacing == 2;
  if (properties->height == 1080) properties->width = is3to2 ? 1280 : 1440;
  if (properties->height == 720) properties->width = 960;
}

/// The bytes of settings as data.
CFDataRef DataOf(Handle settings) {
  return CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(*settings),
                      GetHandleSize(settings));
}

template <class T>
SInt32 SetSessionOption(ICMCompressionSessionOptionsRef options, OSType property, const T& value) {
  return ICMCompressionSessionOptionsSetProperty(
      options, kQTPropertyClass_ICMCompressionSessionOptions, property, sizeof value, &value);
}

}  // namespace

SInt32 QT_SetDV_SettingsAsProps(CompressorComponent compressor, const QT_DV_Settings* settings) {
  const SInt32 status = QTSetComponentProperty(compressor, kDvClass, "prog"_4cc, sizeof(Boolean),
                                               &settings->isProgressive);
  if (status) return status;
  return QTSetComponentProperty(compressor, kDvClass, "16x9"_4cc, sizeof(Boolean),
                                &settings->is16x9);
}

SInt32 QT_GetDV_SettingsAsProps(CompressorComponent compressor, QT_DV_Settings* settings) {
  const SInt32 status = QTGetComponentProperty(compressor, kDvClass, "prog"_4cc, sizeof(Boolean),
                                               &settings->isProgressive, nullptr);
  if (status) return status;
  return QTGetComponentProperty(compressor, kDvClass, "16x9"_4cc, sizeof(Boolean),
                                &settings->is16x9, nullptr);
}

SInt32 QT_GetCompressorEnforcedProperties(OSType codecType, Handle settings,
                                          const QT_DV_Settings* dvSettings,
                                          QT_EnforcedProperties* properties) {
  *properties = {};
  OpenCompressor compressor;
  SInt32 status = OpenCompressorOf(codecType, nullptr, &compressor);
  if (!status && QT_IsDV_CodecType(codecType))
    status = QT_SetDV_SettingsAsProps(compressor.get(), dvSettings);
  if (!status && HasBytes(settings)) status = ImageCodecSetSettings(compressor.get(), settings);
  if (!status) status = ReadAllEnforced(compressor.get(), properties);
  if (status && status != kNotFound) return status;
  if (codecType == "icod"_4cc) CorrectIntermediate(settings, properties);
  if (QT_IsDVCProHD_CodecType(codecType)) CorrectDvcProHd(properties);
  return status;
}

SInt32 QT_ICMCompressionSessionOptionsSetCodecSett(ICMCompressionSessionOptionsRef options,
                                                   Handle settings) {
  return SetSessionOption(options, "cost"_4cc, settings);
}

SInt32 QT_ICMCompressionSessionOptionsSetComprComp(ICMCompressionSessionOptionsRef options,
                                                   CompressorComponent compressor) {
  return SetSessionOption(options, "imco"_4cc, compressor);
}

SInt32 QT_ICMCompressionSessionOptionsSetComprQuality(ICMCompressionSessionOptionsRef options,
                                                      CodecQ quality) {
  return SetSessionOption(options, "qual"_4cc, quality);
}

SInt32 QT_GetImageCodecUserSett(OSType codecType, Handle* settings) {
  OpenCompressor compressor;
  SInt32 status = OpenCompressorOf(codecType, *settings, &compressor);
  if (!status) status = ImageCodecRequestSettings(compressor.get());
  Handle chosen = status ? nullptr : NewHandle(0);
  if (!status)
    status = chosen != nullptr ? ImageCodecGetSettings(compressor.get(), chosen) : MemError();
  if (status) {
    GL_DisposeHandle(&chosen);
    return status;
  }
  GL_DisposeHandle(settings);
  *settings = chosen;
  return noErr;
}

SInt32 QT_WriteCodecUserSettToFile(OSType codecType, const FSRef* folder) {
  Handle settings = nullptr;
  SInt32 status = QT_GetImageCodecUserSett(codecType, &settings);
  if (status) return status;
  const AtExit dispose([&] { GL_DisposeHandle(&settings); });
  const Owned<CFStringRef> name(CFStringCreateWithCString(
      kCFAllocatorDefault, QT_GetComprFormatName(codecType), kCFStringEncodingUTF8));
  const Owned<CFStringRef> fileName(
      CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%@ settings.xml"), name.get()));
  const Owned<CFURLRef> folderUrl(CFURLCreateFromFSRef(kCFAllocatorDefault, folder));
  if (!folderUrl) return fnfErr;
  const Owned<CFURLRef> url(CFURLCreateCopyAppendingPathComponent(
      kCFAllocatorDefault, folderUrl.get(), fileName.get(), 0));
  const Owned<CFDataRef> data(DataOf(settings));
  return CF_WritePropertyListToXMLFile(data.get(), url.get());
}
