#include "QT_Movie_Info.h"

#include <algorithm>

#include "gestalt.h"

namespace {

/// Calls `action(track)` for every track by index.
template <class Action>
void ForEachTrack(Movie movie, Action action) {
  for (SInt32 index = 1; Track track = GetMovieIndTrack(movie, index); ++index)
    action(track);
}

constexpr OSType kVisualProperties = "visu"_4cc;
constexpr OSType kApertureMode = "apmd"_4cc;

}  // namespace

void QT_GetMinMaxLayer(Movie movie, SInt16* minimum, SInt16* maximum) {
  *minimum = 32767;
  *maximum = -32768;
  ForEachTrack(movie, [&](Track track) {
    const SInt16 layer = GetTrackLayer(track);
    *minimum = std::min(*minimum, layer);
    *maximum = std::max(*maximum, layer);
  });
}

SInt32 QT_SetMovieApertureMode(Movie movie, OSType mode) {
  return QTSetMovieProperty(movie, kVisualProperties, kApertureMode, sizeof mode, &mode);
}

SInt32 QT_GetMovieApertureMode(Movie movie, OSType* mode) {
  return QTGetMovieProperty(movie, kVisualProperties, kApertureMode, sizeof *mode, mode, nullptr);
}

Boolean QT_IsQuickTimeInstalled() {
  SInt32 version = 0;
  return Gestalt("qtim"_4cc, &version) == noErr;
}

Boolean QT_IsQuickTimeCFMInstalled() {
  SInt32 features = 0;
  return Gestalt("qtrs"_4cc, &features) == noErr && (features & 1) != 0;
}

SInt32 QT_GetQTVersion() {
  SInt32 version = 0;
  return Gestalt("qtim"_4cc, &version) == noErr ? version >> 16 : 0;
}

SInt32 QT_TimeRecordToTimeValue(const TimeRecord* record) {
  const auto value = static_cast<UInt64>(record->value);
  return value >> 32 == 0 ? static_cast<SInt32>(value) : -1;
}

void QT_TimeValueToTimeRecord(Movie movie, SInt32 value, TimeRecord* record) {
  *record = {value, GetMovieTimeScale(movie), GetMovieTimeBase(movie)};
}

SInt32 QT_GetMoviesStickyError() {
  const SInt32 status = GetMoviesStickyError();
  ClearMoviesStickyError();
  return status;
}

void QT_DisposeMovie(Movie* movie) {
  if (movie == nullptr || *movie == nullptr) return;
  DisposeMovie(*movie);
  *movie = nullptr;
}

void QT_GetMovieFrameSize(Movie movie, SInt32* width, SInt32* height) {
  Rect box;
  GetMovieBox(movie, &box);
  *width = box.right - box.left;
  *height = box.bottom - box.top;
}

Float32 QT_GetMovieDurationInSec(Movie movie) {
  const TimeScale scale = GetMovieTimeScale(movie);
  if (scale == 0) return 0;
  return static_cast<Float32>(static_cast<double>(GetMovieDuration(movie)) / scale);
}

SInt32 QT_GetTrackType(Track track, OSType* type) {
  GetMediaHandlerDescription(GetTrackMedia(track), type, nullptr, nullptr);
  return GetMoviesError();
}

SInt32 QT_GetTrackIndex(Movie movie, Track track) {
  SInt32 index = 1;
  for (; Track other = GetMovieIndTrack(movie, index); ++index) {
    if (other == track) break;
  }
  return index;
}

void QT_GetTrackSize(Track track, SInt32* width, SInt32* height) {
  Fixed fixed_width = 0;
  Fixed fixed_height = 0;
  GetTrackDimensions(track, &fixed_width, &fixed_height);
  *width = fixed_width >> 16;
  *height = fixed_height >> 16;
}

void QT_EnableOneTrack(Movie movie, Track track) {
  ForEachTrack(movie, [&](Track other) { SetTrackEnabled(other, other == track ? 1 : 0); });
}
