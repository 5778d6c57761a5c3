// Copies from and to the video tracks of movie files, of QT_Copy_Media.h.

#include "GL_Memory.h"
#include "QT_Copy_Media.h"
#include "QT_Movie_Info.h"
#include "QT_Movie_Storage.h"
#include "QT_Tracks.h"
#include "aliases.h"
#include "event_queue.h"
#include "track_editing.h"
#include "up_time.h"

namespace {

constexpr Fixed kNormalRate = 0x10000;
constexpr OSType kPlayerCreator = "TVOD"_4cc;

/// A movie opened from a file, disposed of at the end.
class OpenedMovie {
 public:
  OpenedMovie() = default;
  ~OpenedMovie() { QT_DisposeMovie(&movie_); }
  OpenedMovie(const OpenedMovie&) = delete;
  OpenedMovie& operator=(const OpenedMovie&) = delete;

  SInt32 Open(const FSRef* file) { return QT_OpenMovieFile(file, 0, &movie_); }
  Movie get() const { return movie_; }
  Movie* out() { return &movie_; }
  /// The first video track; null if it has none.
  Track video() const { return QT_GetFirstVideoTrack(movie_); }

 private:
  Movie movie_ = nullptr;
};

/// Lets events go on for three seconds.
void WaitForEvents() {
  constexpr UInt32 kTicks = 179;
  constexpr EventTimeout kSleep = 10 / 60.0;
  const UInt32 start = TickCount();
  while (TickCount() - start <= kTicks) {
    EventRef event = nullptr;
    if (ReceiveNextEvent(0, nullptr, kSleep, 1, &event) != noErr) continue;
    SendEventToEventTarget(event, GetEventDispatcherTarget());
    ReleaseEvent(event);
  }
}

}  // namespace

SInt32 QT_CopyMediaWithUpdate(Media source, SInt32 start, SInt32 end, Movie movie,
                              const FSRef* file, Track track, Media destination, Boolean* saved) {
  const SInt32 before = GetMediaDuration(destination);
  SInt32 status = QT_CopyMedia(source, destination, start, end);
  if (status) return status;
  const SInt32 added = GetMediaDuration(destination) - before;
  if (added > 0)
    status = InsertMediaIntoTrack(track, GetTrackDuration(track), before, added, kNormalRate);
  return status ? status : QT_SaveMovie(movie, file, saved);
}

SInt32 QT_CopyVideoFileToMedia(const FSRef* sourceFile, SInt32 start, SInt32 end, Movie movie,
                               const FSRef* file, Track track, Media destination, Boolean* saved) {
  OpenedMovie source;
  const SInt32 status = source.Open(sourceFile);
  if (status) return status;
  return QT_CopyMediaWithUpdate(GetTrackMedia(source.video()), start, end, movie, file, track,
                                destination, saved);
}

SInt32 QT_CopyVideoFileToMovieFile(const FSRef* sourceFile, SInt32 start, SInt32 end,
                                   const FSRef* destinationFile, Boolean* saved) {
  OpenedMovie source;
  OpenedMovie destination;
  SInt32 status = source.Open(sourceFile);
  if (!status) status = destination.Open(destinationFile);
  if (status) return status;
  Track track = destination.video();
  WaitForEvents();
  return QT_CopyMediaWithUpdate(GetTrackMedia(source.video()), start, end, destination.get(),
                                destinationFile, track, GetTrackMedia(track), saved);
}

SInt32 QT_CopyVideoFileToNewFile(const FSRef* sourceFile, SInt32 start, SInt32 end,
                                 const FSRef* folder, CFStringRef name, FSRef* file) {
  OpenedMovie source;
  OpenedMovie destination;
  SInt32 status = source.Open(sourceFile);
  if (!status)
    status = QT_CreateMovieFile(folder, name, kPlayerCreator, 0, file, destination.out());
  AliasHandle alias = nullptr;
  if (!status) status = FSNewAlias(nullptr, file, &alias);
  Track track = nullptr;
  if (!status)
    status = AddEmptyTrackToMovie(source.video(), destination.get(), alias, "alis"_4cc, &track);
  GL_DisposeHandle(&alias);
  if (status) return status;
  WaitForEvents();
  Boolean saved = 0;
  return QT_CopyMediaWithUpdate(GetTrackMedia(source.video()), start, end, destination.get(), file,
                                track, GetTrackMedia(track), &saved);
}
