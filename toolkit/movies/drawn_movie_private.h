/// Movies drawn into worlds to look at their pixels.
#pragma once

#include "QT_Compression.h"
#include "movie_drawing.h"
#include "up_time.h"
#include "visual_context.h"

namespace quillmere {

/// A movie that draws into a world for as long as this lives.
class DrawnMovie {
 public:
  DrawnMovie(Movie movie, GWorldPtr world)
      : movie_(movie), wasActive_(GetMovieActive(movie)), time_(GetMovieTime(movie, nullptr)) {
    GetMovieVisualContext(movie, &context_);
    GetMovieGWorld(movie, &port_, nullptr);
    SetMovieVisualContext(movie, nullptr);
    SetMovieGWorld(movie, world, nullptr);
    SetMovieDrawingCompleteProc(movie, movieDrawingCallWhenChanged, QT_MinimalDrawingCompleteProc,
                                reinterpret_cast<SInt64>(&isDrawn_));
    SetMovieActive(movie, 1);
  }
  ~DrawnMovie() {
    SetMovieDrawingCompleteProc(movie_, 0, nullptr, 0);
    SetMovieGWorld(movie_, port_, nullptr);
    SetMovieVisualContext(movie_, context_);
    SetMovieActive(movie_, wasActive_);
    SetMovieTimeValue(movie_, time_);
  }
  DrawnMovie(const DrawnMovie&) = delete;
  DrawnMovie& operator=(const DrawnMovie&) = delete;

  /// Draws the frame of a time; the status of that.
  SInt32 Draw(SInt32 time) {
    constexpr int kMostTries = 100;
    isDrawn_ = 0;
    SetMovieTimeValue(movie_, time);
    for (int tries = 0; tries < kMostTries; ++tries) {
      MoviesTask(movie_, 0);
      if (isDrawn_) return GetMoviesError();
      Delay(5, nullptr);
    }
    return noMovieFound;
  }

 private:
  Movie movie_;
  Boolean wasActive_;
  TimeValue time_;
  QTVisualContextRef context_ = nullptr;
  CGrafPtr port_ = nullptr;
  Boolean isDrawn_ = 0;
};

}  // namespace quillmere
