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
#include "drawn_movie_private.h"
#include "reference_counted.h"

using namespace quillmere;

namespace {

constexpr SInt32 kMostPictures = 10;

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
                                          SInt32 step, OSType pixelFormat, Handle settings,
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
  status = PrepareCompression(pixelFormat, box, codecType, settings, &buffer, &compressor);
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
