/// The overlay road in a few calls, for tests: open, add the picture as a front track, flatten.
#pragma once

#include <filesystem>
#include <string>

#include "aliases.h"
#include "cf_strings.h"
#include "file_references.h"
#include "fixed_point.h"
#include "media_editing.h"
#include "movie_toolbox.h"
#include "reference_counted.h"
#include "test_files.h"

namespace quillmere::test {

/// A handle that is given back at the end of the scope.
class OwnedHandle {
 public:
  OwnedHandle() = default;
  OwnedHandle(const OwnedHandle&) = delete;
  OwnedHandle& operator=(const OwnedHandle&) = delete;
  ~OwnedHandle() { DisposeHandle(handle_); }
  Handle get() const { return handle_; }
  Handle* out() { return &handle_; }

 private:
  Handle handle_ = nullptr;
};

inline OSStatus MakeAlias(const std::filesystem::path& path, OwnedHandle* alias) {
  FSRef reference;
  const OSStatus status = files::ReferenceOf(path, &reference);
  return status != noErr ? status : FSNewAlias(nullptr, &reference, alias->out());
}

/// A movie that is disposed of at the end of the scope.
class OpenedMovie {
 public:
  explicit OpenedMovie(const std::filesystem::path& path) {
    OwnedHandle alias;
    status = MakeAlias(path, &alias);
    DataReferenceRecord reference = {"alis"_4cc, alias.get()};
    Boolean active = 1;
    QTNewMoviePropertyElement properties[] = {
        {"dloc"_4cc, "dref"_4cc, sizeof reference, &reference, 0},
        {"mprp"_4cc, "actv"_4cc, sizeof active, &active, 0}};
    if (status == noErr) status = NewMovieFromProperties(2, properties, 0, nullptr, &movie);
  }
  OpenedMovie(const OpenedMovie&) = delete;
  OpenedMovie& operator=(const OpenedMovie&) = delete;
  ~OpenedMovie() { DisposeMovie(movie); }

  Movie movie = nullptr;
  OSStatus status = noErr;
};

/// Adds the PNG as a track in front of all others; the first status that is not 0.
inline OSStatus AddOverlay(Movie movie, const std::filesystem::path& png) {
  OwnedHandle alias;
  OwnedHandle description;
  GraphicsImportComponent importer = nullptr;
  UInt32 offset = 0;
  UInt32 size = 0;
  OSStatus status = MakeAlias(png, &alias);
  if (status == noErr) status = GetGraphicsImporterForDataRef(alias.get(), "alis"_4cc, &importer);
  if (status == noErr) status = GraphicsImportGetImageDescription(importer, description.out());
  if (status == noErr) status = GraphicsImportGetDataOffsetAndSize(importer, &offset, &size);
  if (importer != nullptr) CloseComponent(importer);
  if (status != noErr) return status;

  const TimeValue duration = GetMovieDuration(movie);
  Rect box;
  GetMovieBox(movie, &box);
  const Track track =
      NewMovieTrack(movie, Long2Fix(box.right - box.left), Long2Fix(box.bottom - box.top), 0);
  if (track == nullptr) return GetMoviesError();
  const Media media =
      NewTrackMedia(track, "vide"_4cc, GetMovieTimeScale(movie), alias.get(), "alis"_4cc);
  status = AddMediaSampleReference(media, offset, size, duration, description.get(), 1, 0, nullptr);
  if (status == noErr) status = InsertMediaIntoTrack(track, 0, 0, duration, 0x10000);
  SInt16 lowest = 32767;
  for (SInt32 i = 1; i <= GetMovieTrackCount(movie); ++i)
    lowest = std::min(lowest, GetTrackLayer(GetMovieIndTrack(movie, i)));
  SetTrackLayer(track, static_cast<SInt16>(lowest - 1));
  if (status == noErr) {
    status = MediaSetGraphicsMode(GetMediaHandler(media), graphicsModeStraightAlpha, nullptr);
  }
  return status;
}

inline constexpr UInt32 kReplaceOlder =
    createMovieFileDeleteCurFile | createMovieFileDontCreateMovie;

/// Flattens into `output`; the status of it.
inline OSStatus Flatten(Movie movie, const std::filesystem::path& output,
                        UInt32 flags = kReplaceOlder) {
  FSRef folder;
  OwnedHandle reference;
  OSType type = 0;
  OSStatus status = files::ReferenceOf(output.parent_path(), &folder);
  if (status != noErr) return status;
  const Owned<CFStringRef> name(CreateFromUtf8(output.filename().string()));
  status = QTNewDataReferenceFromFSRefCFString(&folder, name.get(), 0, reference.out(), &type);
  if (status != noErr) return status;
  FlattenMovieDataToDataRef(movie, flattenAddMovieToDataFork, reference.get(), type, "TVOD"_4cc, -1,
                            flags);
  return GetMoviesError();
}

/// The whole road for one movie.
inline OSStatus OverlayAndFlatten(const std::filesystem::path& source,
                                  const std::filesystem::path& png,
                                  const std::filesystem::path& output) {
  const OpenedMovie opened(source);
  OSStatus status = opened.status;
  if (status == noErr) status = AddOverlay(opened.movie, png);
  if (status == noErr) status = Flatten(opened.movie, output);
  return status;
}

}  // namespace quillmere::test
