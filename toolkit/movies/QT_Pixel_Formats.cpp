#include "QT_Pixel_Formats.h"

#include <cstring>
#include <span>

#include "GL_Memory.h"
#include "QT_Codec_Families.h"
#include "QT_Ide_Descriptions.h"
#include "image_descriptions.h"
#include "matrices.h"
#include "movie_drawing.h"
#include "movie_geometry.h"
#include "reference_counted.h"
#include "visual_context.h"

using namespace quillmere;

namespace {

/// The formats of a list.
std::span<const OSType> FormatsOf(Handle list) {
  return {reinterpret_cast<const OSType*>(*list),
          static_cast<std::size_t>(GetHandleSize(list)) / sizeof(OSType)};
}

bool Has(std::span<const OSType> formats, OSType format) {
  for (const OSType each : formats) {
    if (each == 0) return false;
    if (each == format) return true;
  }
  return false;
}

/// The codec type of a media's first sample description.
SInt32 GetCodecTypeOf(Media media, OSType* type) {
  Handle description = NewHandle(0);
  if (description == nullptr) return MemError();
  GetMediaSampleDescription(media, 1, reinterpret_cast<SampleDescriptionHandle>(description));
  SInt32 status = GetMoviesError();
  ImageDescription record{};
  if (!status && GetHandleSize(description) < static_cast<Size>(sizeof record)) status = paramErr;
  if (!status) std::memcpy(&record, *description, sizeof record);
  *type = record.cType;
  DisposeHandle(description);
  return status;
}

/// Whether one of a type's decompressors gives a format.
bool DecompressorGives(OSType codecType, OSType format) {
  const ComponentDescription looking = {kDecompressorType, codecType, 0, 0, cmpIsMissing};
  for (Component each = nullptr; (each = FindNextComponent(each, &looking)) != nullptr;) {
    Handle list = nullptr;
    const bool gives = GetComponentPublicResource(each, "cpix"_4cc, 1, &list) == noErr &&
                       Has(FormatsOf(list), format);
    GL_DisposeHandle(&list);
    if (gives) return true;
  }
  return false;
}

}  // namespace

SInt32 QT_GetCPixList(OSType codecType, Component component, Handle* list, Boolean compressor) {
  *list = nullptr;
  Component found = nullptr;
  const SInt32 status = compressor ? FindCodec(codecType, component, &found, nullptr)
                                   : FindCodec(codecType, component, nullptr, &found);
  return status ? status : GetComponentPublicResource(found, "cpix"_4cc, 1, list);
}

SInt32 QT_CodecSuppPixelFormat(OSType codecType, OSType format, Boolean* supports,
                               Boolean compressor) {
  *supports = 0;
  Handle list = nullptr;
  const SInt32 status = QT_GetCPixList(codecType, bestFidelityCodec, &list, compressor);
  if (!status) *supports = Has(FormatsOf(list), format);
  GL_DisposeHandle(&list);
  return status == resNotFound ? SInt32{noErr} : status;
}

SInt32 QT_GetCodecFavoritePixelFormat(OSType codecType, OSType* format, Boolean compressor) {
  *format = 0;
  Handle list = nullptr;
  const SInt32 status = QT_GetCPixList(codecType, bestFidelityCodec, &list, compressor);
  if (!status && !FormatsOf(list).empty()) *format = FormatsOf(list)[0];
  GL_DisposeHandle(&list);
  return status == resNotFound ? SInt32{noErr} : status;
}

SInt32 QT_PixelTypeSupports_y420(OSType codecType, Boolean* supports) {
  return QT_CodecSuppPixelFormat(codecType, "y420"_4cc, supports, 0);
}

SInt32 QT_IsRGB_Codec(OSType codecType, Boolean* isRgb) {
  *isRgb = QT_IsRGB_CodecType(codecType);
  if (*isRgb) return noErr;
  OSType format = 0;
  const SInt32 status = QT_GetCodecFavoritePixelFormat(codecType, &format, 0);
  if (!status) *isRgb = QT_IsRGB_CodecType(format);
  return status;
}

SInt32 QT_CanRenderMovieToPixelFormat(Movie movie, OSType format, Boolean simpleOnly,
                                      Boolean* can) {
  constexpr OSType kFirstCode = 41;
  *can = format < kFirstCode;
  if (*can) return noErr;
  MatrixRecord matrix;
  GetMovieMatrix(movie, &matrix);
  if (GetMatrixType(&matrix) >= linearMatrixType) return noErr;
  Track track = GetMovieIndTrackType(movie, 1, "vide"_4cc, movieTrackMediaType);
  if (track == nullptr) return noErr;
  Media media = GetTrackMedia(track);
  OSType codecType = 0;
  const SInt32 status = GetCodecTypeOf(media, &codecType);
  if (status) return status;
  if (simpleOnly &&
      (GetMovieIndTrackType(movie, 2, "eyes"_4cc, movieTrackCharacteristic) != nullptr ||
       GetMediaSampleDescriptionCount(media) > 1))
    return noErr;
  *can = DecompressorGives(codecType, format);
  return noErr;
}

SInt32 QT_TryToRenderMovieToGWorld(Movie movie, CGrafPtr port) {
  SetMovieGWorld(movie, port, nullptr);
  SInt32 status = GetMovieStatus(movie, nullptr);
  if (status) return status;
  SetMovieActive(movie, 1);
  status = GetMovieStatus(movie, nullptr);
  if (status) return status;
  MoviesTask(movie, 0);
  return GetMovieStatus(movie, nullptr);
}

SInt32 QT_TryToRenderMovieToPixelFormat(Movie movie, OSType format) {
  Rect box;
  GetMovieBox(movie, &box);
  CGrafPtr oldPort = nullptr;
  GDHandle oldDevice = nullptr;
  GetMovieGWorld(movie, &oldPort, &oldDevice);
  GWorldPtr world = nullptr;
  SInt32 status = QTNewGWorld(&world, format, &box, nullptr, nullptr, 0);
  if (status) return status;
  SetMovieGWorld(movie, world, nullptr);
  MoviesTask(movie, 0);
  status = GetMovieStatus(movie, nullptr);
  SetMovieGWorld(movie, oldPort, oldDevice);
  DisposeGWorld(world);
  return status;
}
