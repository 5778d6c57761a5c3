#include "movie_controller.h"

#include <algorithm>
#include <limits>

#include "matrices.h"
#include "movie_geometry.h"
#include "movie_playing.h"
#include "rectangles.h"
#include "toolbox_records.h"
#include "track_editing.h"
#include "visual_context.h"

struct MovieControllerRecord {
  Movie movie;
};

namespace {

using quillmere::movies::NoteStatus;

/// Lays the movie's box over the rectangle, or its own size in it, by the movie's matrix.
void Place(Movie movie, const Rect& bounds, SInt32 flags) {
  Rect box;
  GetMovieBox(movie, &box);
  if (EmptyRect(&box)) return;
  Rect place = bounds;
  if ((flags & mcScaleMovieToFit) == 0) {
    place = box;
    const bool is_top_left = (flags & mcTopLeftMovie) != 0;
    const int across = (bounds.right - bounds.left) - (box.right - box.left);
    const int down = (bounds.bottom - bounds.top) - (box.bottom - box.top);
    OffsetRect(&place, static_cast<SInt16>(bounds.left - box.left + (is_top_left ? 0 : across / 2)),
               static_cast<SInt16>(bounds.top - box.top + (is_top_left ? 0 : down / 2)));
  }
  MatrixRecord matrix;
  MatrixRecord placing;
  GetMovieMatrix(movie, &matrix);
  RectMatrix(&placing, &box, &place);
  ConcatMatrix(&placing, &matrix);
  SetMovieMatrix(movie, &matrix);
}

/// A time record in the movie's units, limited to what they can hold; false without a scale.
bool TimeOf(Movie movie, const TimeRecord& record, TimeValue* time) {
  if (record.scale <= 0) return false;
  const double value = static_cast<double>(record.value) * GetMovieTimeScale(movie) / record.scale;
  *time = static_cast<TimeValue>(
      std::clamp(value, 0.0, static_cast<double>(std::numeric_limits<TimeValue>::max())));
  return true;
}

OSStatus DoTimeAction(Movie movie, mcAction action, const TimeRecord& record) {
  TimeValue time = 0;
  if (!TimeOf(movie, record, &time)) return paramErr;
  TimeValue start = 0;
  TimeValue duration = 0;
  GetMovieSelection(movie, &start, &duration);
  if (action == mcActionGoToTime) {
    SetMovieTimeValue(movie, std::min(time, GetMovieDuration(movie)));
  } else if (action == mcActionSetSelectionBegin) {
    SetMovieSelection(movie, time, duration);
  } else {
    SetMovieSelection(movie, start, time);
  }
  return noErr;
}

}  // namespace

MovieController NewMovieController(Movie movie, const Rect* bounds, SInt32 flags) {
  const bool is_good = movie != nullptr && bounds != nullptr && !EmptyRect(bounds);
  NoteStatus(is_good ? OSStatus{noErr} : OSStatus{paramErr});
  if (!is_good) return nullptr;
  Place(movie, *bounds, flags);
  return new MovieControllerRecord{movie};
}

void DisposeMovieController(MovieController controller) {
  if (controller != nullptr) StopMovie(controller->movie);
  delete controller;
}

Movie MCGetMovie(MovieController controller) {
  return controller != nullptr ? controller->movie : nullptr;
}

OSStatus MCDoAction(MovieController controller, mcAction action, void* parameter) {
  if (controller == nullptr) return paramErr;
  Movie movie = controller->movie;
  if (action > mcActionDeactivate && parameter == nullptr) return paramErr;
  switch (action) {
    case mcActionIdle:
      MoviesTask(movie, 0);
      return noErr;
    case mcActionActivate:
      SetMovieActive(movie, 1);
      return noErr;
    case mcActionDeactivate:
      StopMovie(movie);
      SetMovieActive(movie, 0);
      return noErr;
    case mcActionPlay:
      SetMovieRate(movie, *static_cast<const Fixed*>(parameter));
      return noErr;
    case mcActionGetPlayRate:
      *static_cast<Fixed*>(parameter) = GetMovieRate(movie);
      return noErr;
    case mcActionGoToTime:
    case mcActionSetSelectionBegin:
    case mcActionSetSelectionDuration:
      return DoTimeAction(movie, action, *static_cast<const TimeRecord*>(parameter));
    default:
      return badControllerAction;
  }
}

TimeValue MCGetCurrentTime(MovieController controller, TimeScale* scale) {
  Movie movie = MCGetMovie(controller);
  if (scale != nullptr) *scale = movie != nullptr ? GetMovieTimeScale(movie) : 0;
  return movie != nullptr ? GetMovieTime(movie, nullptr) : 0;
}
