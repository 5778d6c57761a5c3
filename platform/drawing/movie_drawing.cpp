#include "movie_drawing.h"

#include "frame_target.h"
#include "toolbox_records.h"

namespace {

using quillmere::movies::NoteStatus;

/// The pixel map of a handle; null for null.
PixMap* MapOf(PixMapHandle pixels) {
  return pixels != nullptr ? *pixels : nullptr;
}

}  // namespace

void SetMovieGWorld(Movie movie, CGrafPtr port, [[maybe_unused]] GDHandle device) {
  if (movie == nullptr) {
    NoteStatus(invalidMovie);
    return;
  }
  movie->target.reset();
  movie->port = nullptr;
  movie->frame_delivered = false;
  PixMap* const map = MapOf(GetGWorldPixMap(port));
  if (map != nullptr && map->pixelSize < 16) {
    NoteStatus(cDepthErr);
    return;
  }
  NoteStatus(noErr);
  if (map == nullptr) return;
  quillmere::movies::FrameTarget target;
  target.bounds = map->bounds;
  target.pixels.pixels = map->baseAddr;
  target.pixels.row_bytes = static_cast<std::size_t>(map->rowBytes);
  target.pixels.width = static_cast<UInt32>(map->bounds.right - map->bounds.left);
  target.pixels.height = static_cast<UInt32>(map->bounds.bottom - map->bounds.top);
  target.is_2vuy = map->pixelSize == 16;
  target.gamma_level = &map->gammaLevel;
  movie->target = target;
  movie->port = port;
}

void GetMovieGWorld(Movie movie, CGrafPtr* port, GDHandle* device) {
  NoteStatus(movie != nullptr ? OSStatus{noErr} : OSStatus{invalidMovie});
  if (port != nullptr) *port = movie != nullptr ? static_cast<CGrafPtr>(movie->port) : nullptr;
  if (device != nullptr) *device = nullptr;
}

void SetMovieDrawingCompleteProc(Movie movie, [[maybe_unused]] SInt32 flags,
                                 MovieDrawingCompleteProcPtr procedure, SInt64 reference_constant) {
  NoteStatus(movie != nullptr ? OSStatus{noErr} : OSStatus{invalidMovie});
  if (movie == nullptr) return;
  movie->drawing_complete = procedure;
  movie->drawing_constant = reference_constant;
}

Fixed QTGetPixMapHandleGammaLevel(PixMapHandle pixels) {
  const PixMap* const map = MapOf(pixels);
  return map != nullptr ? map->gammaLevel : 0;
}

OSErr QTSetPixMapHandleGammaLevel(PixMapHandle pixels, Fixed level) {
  PixMap* const map = MapOf(pixels);
  if (map == nullptr) return static_cast<OSErr>(paramErr);
  map->gammaLevel = level;
  return noErr;
}

Fixed QTGetPixMapHandleRequestedGammaLevel(PixMapHandle pixels) {
  const PixMap* const map = MapOf(pixels);
  return map != nullptr ? map->requestedGammaLevel : 0;
}

OSErr QTSetPixMapHandleRequestedGammaLevel(PixMapHandle pixels, Fixed level) {
  PixMap* const map = MapOf(pixels);
  if (map == nullptr) return static_cast<OSErr>(paramErr);
  map->requestedGammaLevel = level;
  return noErr;
}
