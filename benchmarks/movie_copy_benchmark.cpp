// A gibibyte of samples copied with their data beside cp, a hundred thousand samples copied by
// reference, and a million samples analysed.
//
// Usage: movie_copy_benchmark [FOLDER]   Makes its movies in FOLDER, else in /tmp. Prints medians.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "QT_Copy_Media.h"
#include "QT_Data_References.h"
#include "QT_Media_Statistics.h"
#include "QT_Tracks.h"
#include "aliases.h"
#include "long_movie.h"
#include "memory_handles.h"
#include "track_editing.h"

namespace {

using namespace quillmere::benchmarks;
namespace fs = std::filesystem;

constexpr int kRuns = 5;
constexpr int kLargeSamples = 2048;
constexpr UInt32 kLargeSize = 512 << 10;

/// A gibibyte in samples of half a mebibyte, chunks of four.
quillmere::test::Model MakeLargeModel() {
  quillmere::test::Model model = {600, 600, {}, {}, {}};
  SInt64 offset = 40;
  for (int i = 0; i < kLargeSamples; ++i) {
    if (i % 4 == 0) model.chunks.push_back(static_cast<std::size_t>(i));
    model.samples.push_back({SInt64{i} * 20, 20, kLargeSize, offset});
    offset += kLargeSize;
  }
  model.edits = {{SInt64{kLargeSamples} * 20, 0, 0x10000}};
  return model;
}

/// A new movie file with a track like that of a movie, in which copies go.
class Output {
 public:
  Output(const fs::path& folder, const char* name, Movie like) {
    const FSRef parent = ReferenceOf(folder);
    const quillmere::Owned<CFStringRef> text(quillmere::CreateFromUtf8(name));
    AliasHandle alias = nullptr;
    if (QT_CreateMovieFile(&parent, text.get(), 0, QT_CreateDeletesExisting, &file_, &movie_) ||
        FSNewAlias(nullptr, &file_, &alias) ||
        AddEmptyTrackToMovie(QT_GetFirstVideoTrack(like), movie_, alias, "alis"_4cc, &track_))
      Fail("making a movie");
    DisposeHandle(alias);
  }
  ~Output() { QT_DisposeMovie(&movie_); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  Media media() const { return GetTrackMedia(track_); }

 private:
  FSRef file_{};
  Movie movie_ = nullptr;
  Track track_ = nullptr;
};

void CopyByValue(const fs::path& folder) {
  const fs::path path = folder / "large.mov";
  WriteMovie(path, MakeLargeModel(), std::size_t{kLargeSamples} * kLargeSize);
  const FSRef file = ReferenceOf(path);
  Movie movie = Open(file);
  const Media media = GetTrackMedia(QT_GetFirstVideoTrack(movie));
  const std::string command = "cp '" + path.string() + "' '" + (folder / "cp.mov").string() + "'";
  std::vector<double> ours;
  std::vector<double> peers;
  for (int run = 0; run < kRuns; ++run) {
    fs::remove(folder / "cp.mov");
    peers.push_back(Milliseconds([&] {
      if (std::system(command.c_str()) != 0) Fail("cp");
    }));
    const Output output(folder, "copy.mov", movie);
    ours.push_back(Milliseconds([&] {
      if (QT_CopyMedia(media, output.media(), 0, 0x7FFFFFFF) != noErr) Fail("copying");
    }));
    if (GetMediaSampleCount(output.media()) != kLargeSamples) Fail("counting samples");
  }
  QT_DisposeMovie(&movie);
  std::printf("1 GiB of samples with their data: %.0f ms   cp %.0f ms   ratio of rates %.2f\n",
              Median(ours), Median(peers), Median(peers) / Median(ours));
}

void CopyByReference(const fs::path& folder, Movie movie) {
  constexpr SInt32 kCopied = 100000;
  const Media media = GetTrackMedia(QT_GetFirstVideoTrack(movie));
  SInt32 end = 0;
  SampleNumToMediaTime(media, kCopied + 1, &end, nullptr);
  std::vector<double> times;
  for (int run = 0; run < kRuns; ++run) {
    const Output output(folder, "reference.mov", movie);
    UInt16* map = nullptr;
    if (QT_CopyDataReferencesIfNeeded(media, output.media(), &map)) Fail("copying references");
    times.push_back(Milliseconds([&] {
      if (QT_CopyMediaByReference64(media, output.media(), 0, end, map)) Fail("copying");
      if (GetMediaSampleCount(output.media()) != kCopied) Fail("counting samples");
    }));
    std::free(map);
  }
  std::printf("%d samples by reference, tables made: %.2f ms\n", kCopied, Median(times));
}

void Analyze(Movie movie) {
  const Media media = GetTrackMedia(QT_GetFirstVideoTrack(movie));
  SInt32 smallest = 0;
  SInt32 largest = 0;
  SInt32 duration = 0;
  Boolean dependent = 0;
  Boolean odd = 0;
  const double time = MedianMilliseconds(kRuns, [&] {
    if (QT_AnalyzeMedia(media, &smallest, &largest, &dependent, &duration, &odd)) Fail("analysing");
  });
  std::printf("%d samples analysed: %.2f ms\n", kLongMovieSamples, time);
}

}  // namespace

int main(int count, char** words) {
  const quillmere::test::TemporaryFolder temporary;
  const fs::path folder = count > 1 ? fs::path(words[1]) : temporary.path();
  const fs::path path = folder / "long.mov";
  WriteMovie(path, MakeLongModel(), std::size_t{10} * kLongMovieSamples);
  const FSRef file = ReferenceOf(path);
  Movie movie = Open(file);
  Analyze(movie);
  CopyByReference(folder, movie);
  QT_DisposeMovie(&movie);
  CopyByValue(folder);
}
