#include "QT_Frame_Statistics.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>

#include "QT_Error_Keys.h"
#include "QT_Tracks.h"
#include "interval_walks_private.h"
#include "media_times.h"
#include "track_walks_private.h"

using namespace quillmere;

namespace {

constexpr OSType kVisualTypes[] = {"eyes"_4cc};
constexpr SInt16 kFirstStep = nextTimeStep | nextTimeEdgeOK;
constexpr SInt16 kFirstSample = nextTimeMediaSample | nextTimeEdgeOK;

/// Calls `visit(span)` for a movie's frames from a time on, while they last, until it gives false.
template <class Visit>
SInt32 WalkFrames(Movie movie, SInt16 firstFlags, SInt32 start, Visit visit) {
  TimeSpan span = {start, 0};
  for (SInt16 flags = firstFlags;; flags = nextTimeStep) {
    GetMovieNextInterestingTime(movie, flags, 1, kVisualTypes, span.time, kForwards, &span.time,
                                &span.duration);
    if (GetMoviesError()) return GetMoviesError();
    if (span.time == -1 || span.duration < 1 || !visit(span)) return noErr;
  }
}

/// Calls `visit(duration)` for the frames' durations, a gap of one unit counting as part of the
/// frame before it.
template <class Visit>
SInt32 WalkCorrectedDurations(Movie movie, Visit visit) {
  TimeSpan last = {-1, 0};
  const auto visitLast = [&](SInt32 next) {
    if (last.time == -1) return;
    visit(last.duration + (next == SInt64{last.time} + last.duration + 1 ? 1 : 0));
  };
  const SInt32 status = WalkFrames(movie, kFirstSample, 0, [&](const TimeSpan& frame) {
    visitLast(frame.time);
    last = frame;
    return true;
  });
  if (!status) visitLast(GetMovieDuration(movie));
  return status;
}

SInt32 MeasureDeviation(Movie movie, Float32* deviation) {
  constexpr double kShortest = 0.1;
  double sum = 0;
  double count = 0;
  SInt32 status = WalkCorrectedDurations(movie, [&](SInt32 duration) {
    sum += duration;
    ++count;
  });
  *deviation = 0;
  const double mean = count > 0 ? sum / count : 0;
  if (status || !(mean > kShortest)) return status;
  double differences = 0;
  status = WalkCorrectedDurations(
      movie, [&](SInt32 duration) { differences += std::abs(duration - mean); });
  *deviation = static_cast<Float32>(differences / count / mean);
  return status;
}

bool IsMpeg(OSType codecType) {
  constexpr OSType kTypes[] = {"m2v "_4cc, "m1v "_4cc, "m2s "_4cc, "MPEG"_4cc};
  return std::ranges::find(kTypes, codecType) != std::end(kTypes);
}

/// How often a frame's duration goes into the media of the first enabled video track; -1 if a movie
/// has none.
SInt32 FramesOf(Movie movie, SInt32 frameDuration) {
  Track track = QT_GetFirstEnabledVideoTrack(movie);
  if (track == nullptr) return -1;
  return GetMediaDuration(GetTrackMedia(track)) / std::max(frameDuration, 1);
}

constexpr double kFilmRate = 23.976023976023978;
constexpr double kFrameRates[] = {kFilmRate, 24, 25, 29.97, 50, 59.94};

/// The frame rate whose period is nearest to that of a media's first frames; the second pair is
/// looked at where the first one is far off.
SInt32 FindFrameRate(Media media, double* rate) {
  constexpr double kFarthest = 0.001;  // seconds
  const auto scale = static_cast<double>(std::max(GetMediaTimeScale(media), 1));
  auto time = static_cast<SInt32>(GetMediaDisplayStartTime(media));
  for (int tries = 0; tries < 2; ++tries) {
    SInt32 next = -1;
    const SInt32 status =
        MediaGetNextStepTime(GetMediaHandler(media), nextTimeStep, time, &next, kForwards);
    if (status) return status;
    if (next == -1) return tries == 0 ? SInt32{invalidTime} : SInt32{noErr};
    const double period = (next - time) / scale;
    const auto miss = [period](double each) { return std::abs(1 / each - period); };
    *rate = *std::ranges::min_element(kFrameRates, {}, miss);
    if (miss(*rate) <= kFarthest) break;
    time = next;
  }
  return noErr;
}

/// The duration of a frame in media time, exact where that is a round number.
double ExactDuration(double rate, SInt32 scale) {
  constexpr SInt32 kMpegScale = 90000;
  if (scale == kMpegScale && rate == kFilmRate) return 3753.75;
  if (scale == kMpegScale && rate == 29.97) return 3003;
  if (scale == kMpegScale && rate == 59.94) return 1501.5;
  return scale / rate;
}

bool IsWithin(SInt32 value, SInt32 least, SInt32 most) {
  return value >= least && value <= most;
}

}  // namespace

SInt32 QT_CountFramesInTrack(Track track) {
  return QT_CountFramesInTrackSelection(track, 0, 0x7FFFFFFF);
}

SInt32 QT_CountFramesInTrackSelection(Track track, SInt32 start, SInt32 end) {
  SInt32 count = 0;
  WalkTrack(track, nextTimeMediaSample, start, [&](const TimeSpan& frame) {
    if (frame.duration < 1 || frame.time >= end) return false;
    return ++count > 0;
  });
  return count;
}

SInt32 QT_CountNonEmptyTrackEdits(Track track, SInt32 start, SInt32 end) {
  SInt32 count = 0;
  WalkTrack(track, nextTimeTrackEdit, start, [&](const TimeSpan& edit) {
    if (edit.time >= end) return false;
    if (TrackTimeToMediaTime(edit.time, track) != -1) ++count;
    return true;
  });
  return count;
}

Float32 QT_NumberSamplesPerSecondInTrack(Track track) {
  const SInt32 duration = GetTrackDuration(track);
  const SInt32 scale = GetMovieTimeScale(GetTrackMovie(track));
  if (duration < 1 || scale < 1) return 0;
  const double seconds = static_cast<double>(duration) / scale;
  return static_cast<Float32>(QT_CountFramesInTrack(track) / seconds);
}

SInt32 QT_MovieHasVideo(Movie movie, Boolean* hasVideo) {
  SInt32 time = -1;
  GetMovieNextInterestingTime(movie, kFirstSample, 1, kVisualTypes, 0, kForwards, &time, nullptr);
  *hasVideo = time != -1;
  return GetMoviesError();
}

SInt32 QT_GetNumVisualMovieSamples(Movie movie, SInt32 start, SInt32 duration, SInt32 limit,
                                   SInt32* count) {
  *count = 0;
  ClearMoviesStickyError();
  const SInt64 end = SInt64{start} + duration;
  WalkFrames(movie, kFirstStep, start, [&](const TimeSpan& frame) {
    if (frame.time >= end || (limit != 0 && frame.time >= limit)) return false;
    return ++*count > 0;
  });
  return GetMoviesStickyError();
}

SInt32 QT_CountMovieFrames(Movie movie, SInt32* count, QT_FrameGap** gaps) {
  QT_FrameGap* unwanted = nullptr;
  ListBuilder<QT_FrameGap> builder(gaps != nullptr ? gaps : &unwanted);
  *count = 0;
  SInt32 end = 0;
  SInt32 number = 0;
  const SInt32 status = WalkFrames(movie, kFirstSample, 0, [&](const TimeSpan& frame) {
    if (gaps != nullptr && *count > 0 && end < frame.time) {
      QT_FrameGap* gap = builder.Add();
      if (gap == nullptr) return false;
      gap->frameNumber = ++number;
      gap->time = end;
      gap->duration = frame.time - end;
    }
    end = EndOf(frame);
    return ++*count > 0;
  });
  return status ? status : builder.status();
}

SInt32 QT_MovieHasOddDurations(Movie movie, Boolean* hasOdd) {
  *hasOdd = 0;
  return WalkFrames(movie, kFirstSample, 0, [hasOdd](const TimeSpan& frame) {
    *hasOdd = frame.duration % 2 != 0;
    return *hasOdd == 0;
  });
}

SInt32 QT_AllFrameDurationsEqual(Movie movie, SInt32* duration, Float32* deviation) {
  *duration = 0;
  bool isFirst = true;
  const SInt32 status = WalkFrames(movie, kFirstSample, 0, [&](const TimeSpan& frame) {
    const bool isEqual = isFirst || frame.duration == *duration;
    isFirst = false;
    *duration = isEqual ? frame.duration : 0;
    return isEqual;
  });
  if (status || deviation == nullptr) return status;
  return MeasureDeviation(movie, deviation);
}

SInt32 QT_GetLastMovieDuration(Movie movie) {
  const SInt32 end = GetMovieDuration(movie);
  SInt32 time = -1;
  GetMovieNextInterestingTime(movie, nextTimeStep, 1, kVisualTypes, end, -kForwards, &time,
                              nullptr);
  return time == -1 ? 0 : end - time;
}

SInt32* QT_MakeMovieTimeList(Movie movie, OSType codecType, SInt32 count, SInt32 frameDuration) {
  if (count < 0) return nullptr;
  const auto entries = static_cast<std::size_t>(count) + 1;
  auto* list = static_cast<SInt32*>(std::malloc(entries * sizeof(SInt32)));
  if (list == nullptr) return nullptr;
  if (IsMpeg(codecType)) {
    for (SInt32 i = 0; i <= count; ++i)
      list[i] = static_cast<SInt32>(std::min<SInt64>(SInt64{i} * frameDuration, 0x7FFFFFFF));
    return list;
  }
  SInt32 made = 0;
  SInt32 end = 0;
  WalkFrames(movie, kFirstStep, 0, [&](const TimeSpan& frame) {
    if (made == count) return false;
    list[made++] = frame.time;
    end = EndOf(frame);
    return true;
  });
  std::fill(list + made, list + entries, end);
  return list;
}

SInt32 QT_MovieFrameNumberFromTimeList(const SInt32* list, SInt32 count, SInt32 time) {
  if (time >= list[count]) return count;
  return static_cast<SInt32>(std::upper_bound(list, list + count, time) - list) - 1;
}

SInt32 QT_SelectMovieSamples(Movie movie, Movie second, SInt32 limit, SInt32* frames,
                             SInt32 frameDuration, SInt32* count) {
  constexpr SInt32 kMost = 100;
  *count = 0;
  SInt32 all = FramesOf(movie, frameDuration);
  if (all < 0) return QT_NoVideoTrackErr;
  const SInt32 other = second != nullptr ? FramesOf(second, frameDuration) : 0;
  if (other > 0) all = std::min(all, other);
  if (limit != 0) all = std::min(all, limit);
  *count = std::clamp(all, 0, kMost);
  for (SInt32 i = 0; i < *count; ++i)
    frames[i] = all > kMost ? static_cast<SInt32>(SInt64{i} * all / kMost) + 1 : i + 1;
  return noErr;
}

SInt32 QT_GetMpegInfo(Movie movie, Boolean* isPal, SInt32* frameCount, SInt32* frameDuration,
                      double* exactDuration) {
  Track track = QT_GetFirstVisualTrack(movie);
  if (track == nullptr) return movie != nullptr ? SInt32{invalidTrack} : SInt32{invalidMovie};
  if (!GetMovieActive(movie)) SetMovieActive(movie, 1);
  if (GetMovieTime(movie, nullptr) != 0) SetMovieTimeValue(movie, 0);
  double rate = 0;
  const SInt32 status = FindFrameRate(GetTrackMedia(track), &rate);
  if (status) return status;
  const SInt32 scale = GetMediaTimeScale(GetTrackMedia(track));
  const double length = GetMovieDuration(movie);
  if (isPal != nullptr) *isPal = rate == 25 || rate == 50;
  if (frameCount != nullptr) *frameCount = Truncated((length * rate + scale * 0.01) / scale);
  if (frameDuration != nullptr) *frameDuration = Truncated((scale + 0.1) / rate);
  if (exactDuration != nullptr) *exactDuration = ExactDuration(rate, scale);
  return noErr;
}

void QT_GuessRealMpegMediaDimensions(OSType codecType, Boolean isPal, SInt32 height, SInt32 width,
                                     Boolean is4to3, SInt32* outHeight, SInt32* outWidth) {
  const bool isVideoDisc = codecType == "m2v "_4cc || codecType == "m2s "_4cc;
  if (isVideoDisc && isPal) {
    if (IsWithin(height, 540, 576)) height = 576;
    if (IsWithin(width, 700, 1032)) width = 720;
    if (IsWithin(height, 400, 408) && width == 720) height = 576;
  } else {
    if (IsWithin(height, 404, 540)) height = 480;
    if (IsWithin(width, 640, 860)) width = 720;
  }
  if (width == 1920 && height == 1080 && is4to3) width = 1440;
  if (width == 1440 && height == 810) height = 1080;
  *outHeight = height;
  *outWidth = width;
}
