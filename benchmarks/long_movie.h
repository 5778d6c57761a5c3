/// A movie of a million samples, for the benchmarks of movies.
#pragma once

#include <random>

#include "QT_Movie_Info.h"
#include "QT_Movie_Storage.h"
#include "file_references.h"
#include "movie_model.h"
#include "test_files.h"
#include "timing.h"

namespace quillmere::benchmarks {

inline constexpr int kLongMovieSamples = 1'000'000;

/// The samples have sizes of their own, every tenth another duration; a chunk holds ten.
inline test::Model MakeLongModel() {
  std::mt19937 random(1);
  test::Model model = {600, 600, {}, {}, {}};
  SInt64 begin = 0;
  SInt64 offset = 40;
  for (int i = 0; i < kLongMovieSamples; ++i) {
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

/// A movie of one track by a model, and so many bytes of media data.
inline void WriteMovie(const std::filesystem::path& path, const test::Model& model,
                       std::size_t data_size) {
  const auto made = test::RunCommand({"ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i",
                                      "testsrc=s=32x24:d=0.2", "-c:v", "mjpeg", path.string()});
  if (made.status != 0) Fail("making a movie");
  test::Bytes file = test::MovieOf(model, test::ReadFile(path));
  const test::Bytes data = test::MakeAtom("mdat", test::Bytes(data_size));
  file.insert(file.end(), data.begin(), data.end());
  test::WriteFile(path, file);
}

inline FSRef ReferenceOf(const std::filesystem::path& path) {
  FSRef file{};
  if (files::ReferenceOf(path, &file) != noErr) Fail("finding a file");
  return file;
}

inline Movie Open(const FSRef& file) {
  Movie movie = nullptr;
  if (QT_OpenMovieFile(&file, 0, &movie) != noErr) Fail("opening the movie");
  return movie;
}

}  // namespace quillmere::benchmarks
