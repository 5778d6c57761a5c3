#include "movie_playing.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "fixed_point.h"
#include "toolbox_records.h"

namespace quillmere::movies {

namespace {

using Clock = std::chrono::steady_clock;

/// Lets the clock count from now, at the present time.
void CountFromNow(MovieRecord* movie) {
  movie->playing_since = Clock::now();
  movie->playing_from = movie->time;
}

}  // namespace

void CatchUp(MovieRecord* movie) {
  if (movie->rate == 0) return;
  const double seconds = std::chrono::duration<double>(Clock::now() - movie->playing_since).count();
  const double moved = seconds * Fix2X(movie->rate) * MovieHeaderOf(*movie).time_scale;
  const auto end = static_cast<SInt64>(std::min<UInt64>(FullDurationOf(*movie), kLongestTimeValue));
  const double reached = static_cast<double>(movie->playing_from) + std::trunc(moved);
  const auto time = static_cast<SInt64>(std::clamp(reached, 0.0, static_cast<double>(end)));
  if (time == (movie->rate > 0 ? end : 0)) movie->rate = 0;
  if (time != movie->time) movie->frame_delivered = false;
  movie->time = time;
}

}  // namespace quillmere::movies

using quillmere::movies::CatchUp;
using quillmere::movies::NoteStatus;

Fixed GetMovieRate(Movie movie) {
  NoteStatus(movie != nullptr ? OSStatus{noErr} : OSStatus{invalidMovie});
  if (movie == nullptr) return 0;
  CatchUp(movie);
  return movie->rate;
}

void SetMovieRate(Movie movie, Fixed rate) {
  NoteStatus(movie != nullptr ? OSStatus{noErr} : OSStatus{invalidMovie});
  if (movie == nullptr) return;
  CatchUp(movie);
  movie->rate = rate;
  quillmere::movies::CountFromNow(movie);
}

Fixed GetMoviePreferredRate(Movie movie) {
  NoteStatus(movie != nullptr ? OSStatus{noErr} : OSStatus{invalidMovie});
  return movie != nullptr ? quillmere::movies::MovieHeaderOf(*movie).rate : 0;
}

void StartMovie(Movie movie) {
  if (GetMovieTime(movie, nullptr) >= GetMovieDuration(movie)) SetMovieTimeValue(movie, 0);
  SetMovieRate(movie, GetMoviePreferredRate(movie));
}

void StopMovie(Movie movie) {
  SetMovieRate(movie, 0);
}
