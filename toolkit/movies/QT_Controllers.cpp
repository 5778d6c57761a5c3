#include "QT_Controllers.h"

#include "GL_Memory.h"
#include "GL_QuickDraw_Fit.h"
#include "QT_Movie_Info.h"
#include "media_times.h"
#include "movie_drawing.h"
#include "visual_context.h"
#include "window_ports.h"

using namespace quillmere;

namespace {

/// Sends an action whose parameter is a time of the movie.
SInt32 DoTimeAction(MovieController controller, mcAction action, SInt32 time) {
  TimeRecord record{};
  if (MCGetMovie(controller) != nullptr)
    QT_TimeValueToTimeRecord(MCGetMovie(controller), time, &record);
  return MCDoAction(controller, action, &record);
}

/// Shows a window anew; a drawing-complete procedure whose constant is the window.
OSErr ShowFrame(Movie /*movie*/, SInt64 window) {
  return static_cast<OSErr>(
      HIViewSetNeedsDisplay(HIViewGetRoot(reinterpret_cast<WindowRef>(window)), 1));
}

/// The rectangle of an item in its window's port.
SInt32 GetItemRect(WindowRef window, HIViewID item, Rect* rect) {
  HIViewRef view = nullptr;
  HIRect frame{};
  SInt32 status = HIViewFindByID(HIViewGetRoot(window), item, &view);
  if (!status) status = HIViewGetFrame(view, &frame);
  if (status) return status;
  const auto edge = [](double place) { return static_cast<SInt16>(place); };
  *rect = {edge(frame.origin.y), edge(frame.origin.x), edge(frame.origin.y + frame.size.height),
           edge(frame.origin.x + frame.size.width)};
  return noErr;
}

}  // namespace

SInt32 QT_SetMCPlayRate(MovieController controller, Fixed rate) {
  return MCDoAction(controller, mcActionPlay, &rate);
}

SInt32 QT_GetMCPlayRate(MovieController controller, Fixed* rate) {
  *rate = 0;
  return MCDoAction(controller, mcActionGetPlayRate, rate);
}

SInt32 QT_SetMCTimeValue(MovieController controller, SInt32 time) {
  return DoTimeAction(controller, mcActionGoToTime, time);
}

SInt32 QT_GetMCTimeValue(MovieController controller, SInt32* time) {
  *time = MCGetCurrentTime(controller, nullptr);
  return controller != nullptr ? SInt32{noErr} : SInt32{paramErr};
}

SInt32 QT_SetMCSelection(MovieController controller, SInt32 start, SInt32 duration) {
  const SInt32 status = DoTimeAction(controller, mcActionSetSelectionBegin, start);
  return status ? status : DoTimeAction(controller, mcActionSetSelectionDuration, duration);
}

QT_MovieExt* QT_GetFirstPlayingMovie(QT_MovieExt* list) {
  for (; list != nullptr; list = list->next) {
    Fixed rate = 0;
    if (!QT_GetMCPlayRate(list->controller, &rate) && rate != 0) return list;
  }
  return nullptr;
}

QT_MovieExt* QT_FindMC_LE(QT_MovieExt* list, MovieController controller) {
  while (list != nullptr && list->controller != controller)
    list = list->next;
  return list;
}

SInt32 QT_ActivateMovie(QT_MovieExt* element, Boolean active) {
  if (element->controller == nullptr) return noErr;
  return MCDoAction(element->controller, active ? mcActionActivate : mcActionDeactivate, nullptr);
}

SInt32 QT_ActivateMovies(QT_MovieExt* list, Boolean active) {
  SInt32 status = noErr;
  for (; list != nullptr && !status; list = list->next)
    status = QT_ActivateMovie(list, active);
  return status;
}

SInt32 QT_AttachMovieToDialogItem(QT_MovieExt* element, WindowRef window, HIViewID item) {
  Rect rect{};
  SInt32 status = GetItemRect(window, item, &rect);
  if (status) return status;
  Rect box{};
  GetMovieBox(element->movie, &box);
  Rect place{};
  GL_FitRectInBox(&box, &rect, &place, nullptr, nullptr);
  DisposeMovieController(element->controller);
  element->controller = NewMovieController(element->movie, &place, mcScaleMovieToFit);
  if (element->controller == nullptr) return GetMoviesError();
  element->window = window;
  SetMovieGWorld(element->movie, GetWindowPort(window), nullptr);
  status = GetMovieStatus(element->movie, nullptr);
  SetMovieDrawingCompleteProc(element->movie, movieDrawingCallWhenChanged, ShowFrame,
                              reinterpret_cast<SInt64>(window));
  return status ? status : QT_ActivateMovie(element, 1);
}

void QT_DisposeMovieData(QT_MovieExt* element) {
  if (element == nullptr) return;
  DisposeMovieController(element->controller);
  element->controller = nullptr;
  element->window = nullptr;
  QT_DisposeMovie(&element->movie);
}

void QT_DisposeMovieExt(QT_MovieExt** list, QT_MovieExt* element) {
  if (element == nullptr) return;
  QT_DisposeMovieData(element);
  void* last = element;
  LL_DeletePtr(ListHead(list), &last);
}
