#include "movie_drawing.h"

#include "drawing.h"
#include "frame_target.h"
#include "rectangles.h"
#include "toolbox_records.h"

namespace {

using quillmere::movies::NoteStatus;

/// The pixel map of a handle; null for null.
PixMap* MapOf(PixMapHandle pixels) {
  return pixels != nullptr ? *pixels : nullptr;
}

/// The pixels of a port as they are now.
quillmere::movies::FrameTarget TargetOf(void* port) {
  PixMap& map = **GetGWorldPixMap(static_cast<CGrafPtr>(port));
  quillmere::movies::FrameTarget target;
  target.bounds = map.bounds;
  target.pixels.pixels = map.baseAddr;
  target.pixels.row_bytes = static_cast<std::size_t>(map.rowBytes);
  target.pixels.width = static_cast<UInt32>(map.bounds.right - map.bounds.left);
  target.pixels.height = static_cast<UInt32>(map.bounds.bottom - map.bounds.top);
  target.is_2vuy = map.pixelSize == 16;
  target.gamma_level = &map.gammaLevel;
  return target;
}

/// The time of the movie's poster; the start where that lies outside the movie.
TimeValue PosterTimeOf(const MovieRecord& movie) {
  const UInt32 time = quillmere::movies::MovieHeaderOf(movie).poster_time;
  const bool is_inside = time < quillmere::movies::FullDurationOf(movie) &&
                         time <= static_cast<UInt32>(quillmere::movies::kLongestTimeValue);
  return is_inside ? static_cast<TimeValue>(time) : 0;
}

/// What a world shows as a picture with its frame at the origin; null without memory.
PicHandle RecordPixels(GWorldPtr world, const Rect& box) {
  Rect frame = box;
  OffsetRect(&frame, static_cast<SInt16>(-box.left), static_cast<SInt16>(-box.top));
  const OpenCPicParams header = {frame, kPicture72Dpi, kPicture72Dpi, kOpenCPicVersion, 0, 0};
  GrafPtr old_port = nullptr;
  GetPort(&old_port);
  SetPort(world);
  PicHandle picture = OpenCPicture(&header);
  const BitMap* const pixels = GetPortBitMapForCopyBits(world);
  CopyBits(pixels, pixels, &box, &frame, srcCopy, nullptr);
  ClosePicture();
  SetPort(old_port);
  return picture;
}

}  // namespace

void SetMovieGWorld(Movie movie, CGrafPtr port, [[maybe_unused]] GDHandle device) {
  if (movie == nullptr) {
    NoteStatus(invalidMovie);
    return;
  }
  movie->port = nullptr;
  movie->frame_delivered = false;
  const PixMap* const map = MapOf(GetGWorldPixMap(port));
  if (map != nullptr && map->pixelSize < 16) {
    movie->drawing_status = NoteStatus(cDepthErr);
    return;
  }
  movie->drawing_status = NoteStatus(noErr);
  movie->port = port;
  movie->target_of = TargetOf;
}

void GetMovieGWorld(Movie movie, CGrafPtr* port, GDHandle* device) {
  NoteStatus(movie != nullptr ? OSStatus{noErr} : OSStatus{invalidMovie});
  if (port != nullptr) *port = movie != nullptr ? static_cast<CGrafPtr>(movie->port) : nullptr;
  if (device != nullptr) *device = nullptr;
}

PicHandle GetMoviePosterPict(Movie movie) {
  NoteStatus(movie != nullptr ? OSStatus{noErr} : OSStatus{invalidMovie});
  if (movie == nullptr) return nullptr;
  Rect box;
  GetMovieBox(movie, &box);
  GWorldPtr world = nullptr;
  if (EmptyRect(&box)) return nullptr;
  OSStatus status = NewGWorld(&world, 32, &box, nullptr, nullptr, 0);
  if (!status) status = quillmere::movies::DrawFrame(movie, PosterTimeOf(*movie), TargetOf(world));
  PicHandle picture = status ? nullptr : RecordPixels(world, box);
  DisposeGWorld(world);
  NoteStatus(status);
  return picture;
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
