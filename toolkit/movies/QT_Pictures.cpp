#include "QT_Pictures.h"

#include "ORW_Icons.h"
#include "QT_Movie_Info.h"
#include "QT_Movie_Storage.h"
#include "movie_drawing.h"

#include "ORW_CV_lib.h"

SInt32 QT_DrawFirstFrame(Movie movie, UInt32 pixelFormat, CGColorSpaceRef colorSpace,
                         QTVisualContextImageAvailableCallback imageAvailableCallback,
                         void* userData) {
  const Boolean wasActive = GetMovieActive(movie);
  Rect box = {};
  GetMovieBox(movie, &box);
  const CGRect rect = {
      {0, 0},
      {static_cast<CGFloat>(box.right - box.left), static_cast<CGFloat>(box.bottom - box.top)}};
  QTVisualContextRef context = nullptr;
  SInt32 status = CV_CreatePixelBufferContext(pixelFormat, &rect, &context);
  if (status != noErr) return status;
  const quillmere::AtExit releaseContext([context] { QTVisualContextRelease(context); });
  status = QTVisualContextSetAttribute(context, kQTVisualContextOutputColorSpaceKey, colorSpace);
  if (status != noErr) return status;
  QTVisualContextRef oldContext = nullptr;
  status = GetMovieVisualContext(movie, &oldContext);
  if (status != noErr) return status;
  status = SetMovieVisualContext(movie, context);
  if (status != noErr) return status;
  // Runs before the context is released.
  const quillmere::AtExit restoreContext(
      [movie, oldContext] { SetMovieVisualContext(movie, oldContext); });
  status = QTVisualContextSetImageAvailableCallback(context, imageAvailableCallback, userData);
  if (status != noErr) return status;
  if (!wasActive) SetMovieActive(movie, true);
  SetMovieTimeValue(movie, 0);
  MoviesTask(movie, 0);
  if (!wasActive) SetMovieActive(movie, false);
  return noErr;
}

SInt32 QT_MovieFileToIcon(const FSRef* file, IconRef* icon) {
  *icon = nullptr;
  Movie movie = nullptr;
  SInt32 status = QT_OpenMovieFile(file, 0, &movie);
  if (status) return status;
  PicHandle poster = GetMoviePosterPict(movie);
  status = poster != nullptr ? IC_PicToIcon(poster, icon) : SInt32{GetMoviesError()};
  KillPicture(poster);
  QT_DisposeMovie(&movie);
  return status;
}
