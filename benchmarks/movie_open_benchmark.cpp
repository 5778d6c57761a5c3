// Opening a movie of a million samples beside libavformat's open of the same file, and a thousand
// looks at random times in it.
//
// Usage: movie_open_benchmark   Makes its movie in /tmp. The samples have sizes of their own, every
// tenth another duration; a chunk holds ten. Prints medians.

#include <cstdio>
#include <random>

extern "C" {
#include <libavformat/avformat.h>
}

#include "QT_Movie_File.h"
#include "QT_Movie_Info.h"
#include "file_references.h"
#include "media_times.h"
#include "movie_model.h"
#include "movie_toolbox.h"
#include "test_files.h"
#include "timing.h"

namespace {

using namespace quillmere::benchmarks;
using namespace quillmere::test;

constexpr int kSamples = 1'000'000;
constexpr int kLooks = 1000;
constexpr int kRuns = 15;

Model MakeLongModel() {
  std::mt19937 random(1);
  Model model = {600, 600, {}, {}, {}};
  SInt64 begin = 0;
  SInt64 offset = 40;
  for (int i = 0; i < kSamples; ++i) {
    const SInt64 duration = i % 10 == 0 ? 7 : 5;
    const auto size = static_cast<UInt32>(1 + random() % 9);
    if (i % 10 == 0) model.chunks.push_back(static_cast<std::size_t>(i));
    model.samples.push_back({begin, duration, size, offset});
    begin += duration;
    offset += size;
  }
  model.edits = {{begin, 0, 0x10000}};
  return model;
}

void MakeMovie(const std::filesystem::path& path) {
  const auto made = RunCommand({"ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i",
                                "testsrc=s=32x24:d=0.2", "-c:v", "mjpeg", path.string()});
  if (made.status != 0) Fail("making a movie");
  Bytes file = MovieOf(MakeLongModel(), ReadFile(path));
  const Bytes data = MakeAtom("mdat", Bytes(10 * kSamples));
  file.insert(file.end(), data.begin(), data.end());
  WriteFile(path, file);
}

Movie Open(const FSRef& file) {
  Movie movie = nullptr;
  if (QT_OpenMovieFileFP(&file, 0, nullptr, &movie) != noErr) Fail("opening the movie");
  return movie;
}

void OpenWithPeer(const std::filesystem::path& path) {
  AVFormatContext* context = nullptr;
  if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) != 0) Fail("libavformat");
  avformat_close_input(&context);
}

}  // namespace

int main() {
  const TemporaryFolder folder;
  const std::filesystem::path path = folder / "long.mov";
  MakeMovie(path);
  FSRef file{};
  if (quillmere::files::ReferenceOf(path, &file) != noErr) Fail("finding the movie");
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
              kSamples, ours, peers, ours / peers);

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
