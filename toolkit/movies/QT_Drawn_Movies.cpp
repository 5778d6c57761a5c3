// Movies drawn to be measured, of QT_Compression.h.

#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

#include "GL_Memory.h"
#include "QT_Compression.h"
#include "QT_Frame_Statistics.h"
#include "QT_Frames.h"
#include "compressors_private.h"
#include "fixed_point.h"
#include "interval_walks_private.h"
#include "movie_drawing.h"
#include "reference_counted.h"
#include "up_time.h"
#include "visual_context.h"

using namespace quillmere;

namespace {

constexpr SInt32 kMostPictures = 10;

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

/// Which pictures of a movie are measured.
struct Selection {
  bool byTime;
  SInt32 total;
  SInt32 step;

  SInt32 TimeOf(Movie movie, SInt32 index, SInt32 count) const {
    const auto frame = static_cast<SInt32>(SInt64{index} * total / count);
    return byTime ? frame * step : QT_MovieFrameNumberToTime(movie, frame);
  }
};

/// Sizes of pictures, compressed one after the other.
SInt32 CompressPictures(Movie movie, const Selection& selection, const PictureBuffer& buffer,
                        CompressionSequenceID sequence, const Rect& box,
                        std::vector<SInt32>* sizes) {
  SInt32 most = 0;
  SInt32 status = GetCSequenceMaxCompressionSize(sequence, buffer.pixels(), &most);
  if (status) return status;
  std::vector<UInt8> data(static_cast<std::size_t>(most));
  DrawnMovie drawn(movie, buffer.world());
  const SInt32 count = std::min(selection.total, kMostPictures);
  for (SInt32 i = 0; i < count && !status; ++i) {
    SInt32 size = 0;
    status = drawn.Draw(selection.TimeOf(movie, i, count));
    if (!status)
      status = CompressSequenceFrame(sequence, buffer.pixels(), &box, 4, data.data(), &size);
    sizes->push_back(size);
  }
  return status;
}

void Summarize(const std::vector<SInt32>& sizes, SInt32* mean, SInt32* deviation) {
  if (sizes.empty()) return;
  const auto count = static_cast<SInt64>(sizes.size());
  SInt64 sum = 0;
  for (const SInt32 size : sizes)
    sum += size;
  *mean = static_cast<SInt32>(sum / count);
  SInt64 differences = 0;
  for (const SInt32 size : sizes)
    differences += std::abs(size - *mean);
  *deviation = static_cast<SInt32>(differences / count);
}

}  // namespace

OSErr QT_MinimalDrawingCompleteProc(Movie /*movie*/, SInt64 flag) {
  *reinterpret_cast<Boolean*>(flag) = 1;
  return noErr;
}

SInt32 QT_GetMaxCompressionSizeFromMovie(Movie movie, Boolean framesByTime, SInt32 count,
                                         SInt32 step, CodecQ quality, OSType codecType,
                                         Boolean compress, SInt32* largest, SInt32* mean,
                                         SInt32* deviation) {
  return QT_GetMaxCompressionSizeFromMovie2(movie, framesByTime, count, step, 32, nullptr, quality,
                                            codecType, compress, largest, mean, deviation);
}

SInt32 QT_GetMaxCompressionSizeFromMovie2(Movie movie, Boolean framesByTime, SInt32 count,
                                          SInt32 step, OSType /*pixelFormat*/, Handle settings,
                                          CodecQ quality, OSType codecType, Boolean compress,
                                          SInt32* largest, SInt32* mean, SInt32* deviation) {
  *largest = *mean = *deviation = 0;
  Selection selection = {framesByTime != 0, count, step};
  SInt32 status = noErr;
  if (!framesByTime)
    status = QT_GetNumVisualMovieSamples(movie, 0, GetMovieDuration(movie), 0, &selection.total);
  if (status) return status;
  if (selection.total < 1) return noMovieFound;
  Rect box{};
  GetMovieBox(movie, &box);
  PictureBuffer buffer;
  OpenCompressor compressor;
  status = PrepareCompression(box, codecType, settings, &buffer, &compressor);
  Handle description = NewHandle(4);
  const AtExit dispose([&] { GL_DisposeHandle(&description); });
  CompressionSequenceID sequence = nullptr;
  if (!status)
    status = CompressSequenceBegin(&sequence, buffer.pixels(), &box, 0, codecType, compressor.get(),
                                   quality, description);
  const AtExit end([&] { CDSequenceEnd(sequence); });
  if (!status)
    status = GetMaxCompressionSize(buffer.pixels(), &box, 0, quality, codecType, compressor.get(),
                                   largest);
  if (status || !compress) return status;
  std::vector<SInt32> sizes;
  status = CompressPictures(movie, selection, buffer, sequence, box, &sizes);
  if (!status) Summarize(sizes, mean, deviation);
  return status;
}

SInt32 QT_GetMovieGamma2(Movie movie, CGrafPtr port, Float32* gamma) {
  constexpr float kDefault = 2.2F;
  constexpr float kLeast = 0.01F;
  *gamma = kDefault;
  Rect box{};
  GetMovieBox(movie, &box);
  PictureBuffer buffer;
  SInt32 status = GetMoviesError();
  if (!status && port == nullptr) {
    status = buffer.Make({0, 0, static_cast<SInt16>(box.bottom - box.top),
                          static_cast<SInt16>(box.right - box.left)});
    port = buffer.world();
  }
  if (status) return status;
  PixMapHandle pixels = GetGWorldPixMap(port);
  const Fixed level = QTGetPixMapHandleGammaLevel(pixels);
  const Fixed requested = QTGetPixMapHandleRequestedGammaLevel(pixels);
  QTSetPixMapHandleRequestedGammaLevel(pixels, -1);
  SInt32 time = 0;
  constexpr OSType kVisualTypes[] = {"eyes"_4cc};
  GetMovieNextInterestingTime(movie, nextTimeMediaSample | nextTimeEdgeOK, 1, kVisualTypes, 0,
                              kForwards, &time, nullptr);
  status = DrawnMovie(movie, port).Draw(std::max(time, 0));
  const auto drawn = static_cast<float>(Fix2X(QTGetPixMapHandleGammaLevel(pixels)));
  if (!status && drawn >= kLeast) *gamma = drawn;
  QTSetPixMapHandleGammaLevel(pixels, level);
  QTSetPixMapHandleRequestedGammaLevel(pixels, requested);
  return status;
}
