#include "QT_Frames.h"

#include "interval_walks_private.h"
#include "media_times.h"

SInt32 QT_MovieFrameNumberToTime(Movie movie, SInt32 frame) {
  constexpr OSType kVisualTypes[] = {"eyes"_4cc};
  if (frame < 0) return -1;
  SInt32 time = 0;
  SInt16 flags = nextTimeMediaSample | nextTimeEdgeOK;
  for (SInt32 number = 0;; ++number, flags = nextTimeStep) {
    GetMovieNextInterestingTime(movie, flags, 1, kVisualTypes, time, quillmere::kForwards, &time,
                                nullptr);
    if (time == -1) return number > 0 && number == frame ? GetMovieDuration(movie) : -1;
    if (number == frame) return time;
  }
}
