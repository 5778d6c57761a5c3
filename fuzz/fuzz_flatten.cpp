/// Any bytes as a movie file: open, measure, add a track, look for what is shown, flatten.

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "aliases.h"
#include "file_references.h"
#include "media_editing.h"
#include "movie_toolbox.h"
#include "visible_samples.h"

namespace {

namespace fs = std::filesystem;

void Require(bool condition) {
  if (!condition) std::abort();
}

/// A folder for the movie under test and its output.
const fs::path& Folder() {
  static const fs::path folder = [] {
    std::string name = (fs::temp_directory_path() / "fuzz-flatten-XXXXXX").string();
    Require(mkdtemp(name.data()) != nullptr);
    std::atexit([] {
      std::error_code ignored;
      fs::remove_all(Folder(), ignored);
    });
    return fs::path(name);
  }();
  return folder;
}

Movie OpenMovie(const fs::path& path) {
  FSRef reference;
  AliasHandle alias = nullptr;
  Require(quillmere::files::ReferenceOf(path, &reference) == noErr);
  Require(FSNewAlias(nullptr, &reference, &alias) == noErr);
  DataReferenceRecord record = {"alis"_4cc, alias};
  QTNewMoviePropertyElement property = {"dloc"_4cc, "dref"_4cc, sizeof record, &record, 0};
  Movie movie = nullptr;
  NewMovieFromProperties(1, &property, 0, nullptr, &movie);
  DisposeHandle(alias);
  return movie;
}

/// An image description of a PNG, 16 by 16 pixels.
Handle MakeDescription() {
  Handle description = NewHandleClear(86);
  const UInt32 size = 86;
  const OSType type = "png "_4cc;
  const UInt16 side = 16;
  std::memcpy(*description, &size, 4);
  std::memcpy(*description + 4, &type, 4);
  std::memcpy(*description + 32, &side, 2);
  std::memcpy(*description + 34, &side, 2);
  return description;
}

void AddTrack(Movie movie) {
  const Track track = NewMovieTrack(movie, 0x100000, 0x100000, 0);
  const Media media = NewTrackMedia(track, "vide"_4cc, GetMovieTimeScale(movie), nullptr, 0);
  Require(track != nullptr && media != nullptr);
  Handle description = MakeDescription();
  const TimeValue duration = GetMovieDuration(movie);
  if (AddMediaSampleReference(media, 0, 8, duration, description, 1, 0, nullptr) == noErr) {
    InsertMediaIntoTrack(track, 0, 0, duration, 0x10000);
  }
  SetTrackLayer(track, -1);
  MediaSetGraphicsMode(GetMediaHandler(media), graphicsModeStraightAlpha, nullptr);
  DisposeHandle(description);
}

void Flatten(Movie movie) {
  FSRef folder;
  Handle output = nullptr;
  OSType type = 0;
  Require(quillmere::files::ReferenceOf(Folder(), &folder) == noErr);
  Require(QTNewDataReferenceFromFSRefCFString(&folder, CFSTR("output.mov"), 0, &output, &type) ==
          noErr);
  Movie again = FlattenMovieDataToDataRef(movie, flattenAddMovieToDataFork, output, type,
                                          "TVOD"_4cc, -1, createMovieFileDeleteCurFile);
  // What is written opens again; no failure leaves a file.
  Require((again != nullptr) == fs::exists(Folder() / "output.mov"));
  if (again != nullptr) Require(GetMovieTrackCount(again) == GetMovieTrackCount(movie));
  DisposeMovie(again);
  DisposeHandle(output);
  std::error_code ignored;
  fs::remove(Folder() / "output.mov", ignored);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* data, std::size_t size) {
  const fs::path path = Folder() / "input.mov";
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  if (Movie movie = OpenMovie(path)) {
    Rect box;
    const OSType aperture = "clea"_4cc;
    QTSetMovieProperty(movie, "visu"_4cc, "apmd"_4cc, sizeof aperture, &aperture);
    GetMovieBox(movie, &box);
    std::vector<quillmere::movies::VisibleSample> visible;
    for (const TimeValue time : {0, GetMovieDuration(movie) / 2, GetMovieDuration(movie)})
      quillmere::movies::VisibleSamplesAt(movie, time, &visible);
    AddTrack(movie);
    Flatten(movie);
    DisposeMovie(movie);
  }
  return 0;
}
