// Opening a movie of a million samples beside libavformat's open of the same file, and a thousand
// looks at random times in it.
//
// Usage: movie_open_benchmark   Makes its movie in /tmp. Prints medians.

#include <cstdio>
#include <random>

extern "C" {
#include <libavformat/avformat.h>
}

#include "long_movie.h"
#include "media_times.h"

namespace {

using namespace quillmere::benchmarks;
using quillmere::test::TemporaryFolder;

constexpr int kLooks = 1000;
constexpr int kRuns = 15;

void OpenWithPeer(const std::filesystem::path& path) {
  AVFormatContext* context = nullptr;
  if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) != 0) Fail("libavformat");
  avformat_close_input(&context);
}

}  // namespace

int main() {
  const TemporaryFolder folder;
  const std::filesystem::path path = folder / "long.mov";
  WriteMovie(path, MakeLongModel(), std::size_t{10} * kLongMovieSamples);
  const FSRef file = ReferenceOf(path);
  const double ours = MedianMilliseconds(kRuns, [&] {
    Movie movie = Open(file);
    // Tables are read when they are first asked.
    SInt32 number = 0;
    MediaTimeToSampleNum(GetTrackMedia(GetMovieIndTrack(movie, 1)), 1, &number, nullptr, nullptr);
    if (number != 1) Fail("the first look");
    QT_DisposeMovie(&movie);
  });
  const double peers = MedianMilliseconds(kRuns, [&] { OpenWithPeer(path); });
  std::printf("open of %d samples and a first look: %.2f ms   libavformat %.2f ms   ratio %.3f\n",
              kLongMovieSamples, ours, peers, ours / peers);

  Movie movie = Open(file);
  const Media media = GetTrackMedia(GetMovieIndTrack(movie, 1));
  const TimeValue duration = GetMediaDuration(media);
  std::mt19937 random(2);
  SInt64 sum = 0;
  const double looks = MedianMilliseconds(kRuns, [&] {
    for (int i = 0; i < kLooks; ++i) {
      SInt32 number = 0;
      TimeValue begin = 0;
      MediaTimeToSampleNum(media, static_cast<TimeValue>(random() % static_cast<UInt32>(duration)),
                           &number, &begin, nullptr);
      sum += number;
    }
  });
  QT_DisposeMovie(&movie);
  if (sum == 0) Fail("looking up times");
  std::printf("%d random times: %.3f ms\n", kLooks, looks);
}
