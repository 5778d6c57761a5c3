#include "QT_Compression.h"

#include <cstring>
#include <memory>
#include <vector>

#include "GL_Memory.h"
#include "QT_Codec_Families.h"
#include "QT_Error_Keys.h"
#include "compressors_private.h"
#include "fixed_point.h"
#include "image_descriptions.h"
#include "media_editing.h"
#include "reference_counted.h"

using namespace quillmere;

namespace {

constexpr OSType kCompressorClass = "imco"_4cc;

/// A side that a compressor enforces; 0, with status 0, where it tells of none.
SInt32 GetSide(CompressorComponent compressor, OSType property, bool isHeight, SInt16* side) {
  constexpr SInt32 kNotFound = -2200;
  constexpr auto kNotImplemented = static_cast<SInt32>(0x80008002);
  SInt32 value = 0;
  const SInt32 status =
      QTGetComponentProperty(compressor, kCompressorClass, property, sizeof value, &value, nullptr);
  *side = status ? SInt16{0} : static_cast<SInt16>(value);
  const bool isAbsent = status == kQTPropertyNotSupportedErr || status == kNotFound ||
                        (isHeight && status == kNotImplemented);
  return isAbsent ? SInt32{noErr} : status;
}

/// Sizes that compressors are known to tell wrongly.
void CorrectSize(OSType codecType, Handle settings, Point* size) {
  if (codecType == "icod"_4cc) {
    const OSType subtype = IntermediateSubtypeOf(settings);
    if (subtype == "720p"_4cc) *size = {720, 1280};
    if (subtype == "108p"_4cc || subtype == "108i"_4cc) *size = {1080, 1440};
  } else if (QT_IsDVCProHD_CodecType(codecType)) {
    if (size->v == 1080) size->h = 1280;
    if (size->v == 720) size->h = 960;
  }
}

/// Compresses what a world shows into a new handle.
SInt32 Compress(PixMapHandle pixels, const Rect& rect, OSType codecType, Handle description,
                std::vector<UInt8>* data) {
  SInt32 size = 0;
  SInt32 status =
      GetMaxCompressionSize(pixels, &rect, 0, codecNormalQuality, codecType, nullptr, &size);
  if (status) return status;
  data->resize(static_cast<std::size_t>(size));
  status = CompressImage(pixels, &rect, codecNormalQuality, codecType, description, data->data());
  ImageDescription record{};
  if (!status) std::memcpy(&record, *description, sizeof record);
  data->resize(static_cast<std::size_t>(record.dataSize));
  return status;
}

}  // namespace

SInt32 QT_GetCompressorCompEnforcedSize(CompressorComponent compressor, Point* size) {
  *size = {};
  const SInt32 status = GetSide(compressor, "enwi"_4cc, false, &size->h);
  return status ? status : GetSide(compressor, "enhe"_4cc, true, &size->v);
}

SInt32 QT_GetQTMovieCompressorEnforcedSize(OSType codecType, Handle settings, Point* size) {
  *size = {};
  OpenCompressor compressor;
  SInt32 status = OpenCompressorOf(codecType, settings, &compressor);
  if (!status) status = QT_GetCompressorCompEnforcedSize(compressor.get(), size);
  if (!status) CorrectSize(codecType, settings, size);
  return status;
}

SInt32 QT_CanCodecChFieldDomLossless(OSType codecType, Boolean* can) {
  *can = 0;
  OpenCompressor compressor;
  // None of the compressors here has the call that would do it.
  return OpenCompressorOf(codecType, nullptr, &compressor) ? SInt32{QT_NoComponentFoundErr}
                                                           : SInt32{noErr};
}

SInt32 QT_GetMaxCompressionSize(const Rect* rect, OSType pixelFormat, Handle settings,
                                CodecQ quality, OSType codecType, SInt32* size) {
  *size = 0;
  PictureBuffer buffer;
  OpenCompressor compressor;
  const SInt32 status =
      PrepareCompression(pixelFormat, *rect, codecType, settings, &buffer, &compressor);
  if (status) return status;
  return GetMaxCompressionSize(buffer.pixels(), rect, 0, quality, codecType, compressor.get(),
                               size);
}

SInt32 QT_GetCSequenceMaxComprSize(const Rect* rect, OSType pixelFormat, CodecQ quality,
                                   OSType codecType, Handle settings, SInt32* size) {
  *size = 0;
  PictureBuffer buffer;
  OpenCompressor compressor;
  SInt32 status = PrepareCompression(pixelFormat, *rect, codecType, settings, &buffer, &compressor);
  Handle description = nullptr;
  if (!status) status = MakeImageDescriptionForPixMap(buffer.pixels(), &description);
  const AtExit dispose([&] { GL_DisposeHandle(&description); });
  CompressionSequenceID sequence = nullptr;
  if (!status)
    status = CompressSequenceBegin(&sequence, buffer.pixels(), rect, 0, codecType, compressor.get(),
                                   quality, description);
  if (!status) status = GetCSequenceMaxCompressionSize(sequence, buffer.pixels(), size);
  CDSequenceEnd(sequence);
  return status;
}

SInt32 QT_GetMaxCompressionSizeFromMovieSimple(Movie movie, CodecQ quality, OSType codecType,
                                               SInt32* size) {
  Rect box{};
  GetMovieBox(movie, &box);
  const SInt32 status = GetMoviesError();
  return status ? status : QT_GetMaxCompressionSize(&box, 32, nullptr, quality, codecType, size);
}

SInt32 QT_AddCompressedTextImageToMedia(Fixed width, Fixed height, QT_DrawTextImageProc draw,
                                        SInt64 first, SInt64 second, SInt64 third, Media media,
                                        OSType codecType, SInt32 duration, SInt32* sampleTime) {
  const Rect rect = {0, 0, static_cast<SInt16>(Fix2Long(height)),
                     static_cast<SInt16>(Fix2Long(width))};
  PictureBuffer buffer;
  SInt32 status = buffer.Make(32, rect);
  if (status) return status;
  CGrafPtr oldPort = nullptr;
  GDHandle oldDevice = nullptr;
  GetGWorld(&oldPort, &oldDevice);
  SetGWorld(buffer.world(), nullptr);
  draw(rect, first, second, third);
  SetGWorld(oldPort, oldDevice);
  Handle description = NewHandle(4);
  if (description == nullptr) return MemError();
  const AtExit dispose([&] { GL_DisposeHandle(&description); });
  std::vector<UInt8> data;
  status = Compress(buffer.pixels(), rect, codecType, description, &data);
  if (!status) status = BeginMediaEdits(media);
  if (status) return status;
  SInt64 time = 0;
  status = AddMediaSample2(media, data.data(), data.size(), duration, 0, description, 1, 0, &time);
  const SInt32 ended = EndMediaEdits(media);
  if (!status && sampleTime != nullptr) *sampleTime = static_cast<SInt32>(time);
  return status ? status : ended;
}
