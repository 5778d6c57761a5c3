/// Any bytes as a movie file: open, measure, add a track, look for what is shown, flatten.

#include <cstring>

#include "file_references.h"
#include "media_editing.h"
#include "movie_fuzzing.h"
#include "movie_toolbox.h"
#include "visible_samples.h"

using namespace quillmere::fuzz;

namespace {

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* data, std::size_t size) {
  if (Movie movie = OpenMovie(WriteInput(data, size))) {
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
