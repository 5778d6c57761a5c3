/// Any bytes as a movie file: every question asked, spans copied by value and by reference, edits
/// made, saved and opened again, flattened.

#include <vector>

#include "LL_Linked_Lists.h"
#include "QT_Copy_Media.h"
#include "QT_Copy_Tracks.h"
#include "QT_Data_References.h"
#include "QT_Frame_Statistics.h"
#include "QT_Media_Statistics.h"
#include "QT_Metadata.h"
#include "QT_Movie_Info.h"
#include "QT_Movie_Queries.h"
#include "QT_Movie_Storage.h"
#include "QT_New_Tracks.h"
#include "QT_Track_Geometry.h"
#include "QT_Tracks.h"
#include "memory_handles.h"
#include "movie_fuzzing.h"
#include "movie_geometry.h"
#include "movie_storage.h"
#include "reference_counted.h"
#include "track_editing.h"

using namespace quillmere::fuzz;

namespace {

/// Walks take a step for each sample; movies that claim more are not walked.
constexpr SInt32 kMostSamples = 20000;

bool IsSmall(Movie movie) {
  for (SInt32 i = 1; i <= GetMovieTrackCount(movie); ++i) {
    if (GetMediaSampleCount(GetTrackMedia(GetMovieIndTrack(movie, i))) > kMostSamples) return false;
  }
  return GetMovieTrackCount(movie) < 20;
}

void AskMovie(Movie movie) {
  Boolean flag = 0;
  OSType code = 0;
  SInt32 number = 0;
  SInt64 wide = 0;
  Float32 real = 0;
  QT_FrameGap* gaps = nullptr;
  QT_CountMovieFrames(movie, &number, &gaps);
  LL_DisposeLinkedList(quillmere::ListHead(&gaps));
  QT_AllFrameDurationsEqual(movie, &number, &real);
  QT_MovieHasOddDurations(movie, &flag);
  QT_GetNumVisualMovieSamples(movie, 0, GetMovieDuration(movie), 0, &number);
  QT_GetLastMovieDuration(movie);
  QT_GetMpegInfo(movie, &flag, &number, &number, nullptr);
  std::free(QT_MakeMovieTimeList(movie, "avc1"_4cc, 10, 1));
  QT_GetMaxDepth(movie, &number);
  QT_GetMovieCType(movie, 1, &code, &flag);
  QT_GetMovieGamma1(movie, &real);
  QT_MovieHasDualMonoSound(movie, &flag);
  QT_MovieHasOneSimpleVideoTrack(movie, &flag);
  QT_AnyEnabledVideoTrackIsComposited(movie, &flag);
  QT_AnyTracksOverlapTemporally(movie, "eyes"_4cc, 2, 0);
  QT_EnabledVideoTracksHaveEqualSpatialCharacteristics(movie, &flag, nullptr, nullptr, nullptr,
                                                       nullptr);
  QT_GetMovieTotalMediaSize64(movie, &wide);
  QT_GetMovieSoundDuration(movie, &number, &number);
  OSType* types = nullptr;
  QT_GetMovieMediaTypes(movie, &types, &number);
  std::free(types);
  DisposeRgn(GetMovieDisplayBoundsRgn(movie));
  GL_FileObjectElement* files = nullptr;
  QT_GetMovieReferencedFiles(movie, &files);
  LL_DisposeLinkedList(quillmere::ListHead(&files));
}

void AskTrack(Track track) {
  const Media media = GetTrackMedia(track);
  SInt32 number = 0;
  SInt64 wide = 0;
  Boolean flag = 0;
  char name[256];
  QT_GetTrackName(track, name);
  Rect box;
  QT_GetTrackBox(track, &box);
  QT_CountFramesInTrack(track);
  QT_CountNonEmptyTrackEdits(track, 0, 0x7FFFFFFF);
  QT_IsDataOffsetMonotonousWithTrackTime(track);
  QT_GetSampleSize(track, GetTrackDuration(track) / 2, &number);
  QT_AnalyzeMedia(media, &number, &number, &flag, &number, &flag);
  QT_AllMediaDurationsEqual(media, &wide);
  QT_MediaHasOddDurations(media, &flag);
  SInt32 sample = 2;
  SampleDescriptionHandle description = nullptr;
  QT_GetSampleInfo(media, &sample, 0, nullptr, nullptr, &description, nullptr, nullptr, nullptr,
                   nullptr);
  DisposeHandle(description);
  QT_DataRefIndexToStartTime(1, media, &number);
  MatrixRecord matrix;
  QT_GetMediaToTrackMatrix(track, 1, 0, nullptr, 16, 16, &matrix);
}

/// A new movie in a file of its own.
Movie NewOutput(FSRef* file) {
  FSRef folder;
  Require(quillmere::files::ReferenceOf(Folder(), &folder) == noErr);
  Movie movie = nullptr;
  Require(QT_CreateMovieFile(&folder, CFSTR("copy.mov"), 0, QT_CreateDeletesExisting, file,
                             &movie) == noErr);
  return movie;
}

void CopyTrack(Track track, Movie movie, const FSRef& file) {
  Track copy = nullptr;
  const SInt32 middle = GetTrackDuration(track) / 2;
  QT_CopyTrackSegment(track, movie, middle, middle / 2, 1, &file, &copy);
  QT_CopyTrackTotally(track, movie, 0, &file, &copy);
  if (copy == nullptr) return;
  const Media source = GetTrackMedia(track);
  const Media media = GetTrackMedia(copy);
  const SInt32 end = GetMediaDuration(source);
  QT_CopyMedia(source, media, end / 3, end / 2);
  UInt16* map = nullptr;
  if (QT_CopyDataReferencesIfNeeded(source, media, &map) == noErr)
    QT_CopyMediaByReference64(source, media, end / 3, end, map);
  std::free(map);
  QT_SetTrackContentToEntireMedia(copy);
  ScaleTrackSegment(copy, 1, 5, 7);
  InsertEmptyTrackSegment(copy, 2, 3);
}

void CopyMovie(Movie source) {
  FSRef file{};
  Movie movie = NewOutput(&file);
  for (SInt32 i = 1; i <= GetMovieTrackCount(source); ++i)
    CopyTrack(GetMovieIndTrack(source, i), movie, file);
  QT_CopyMovieMetaData(source, movie);
  const QT_ChapterRecord chapter = {0, "Start"};
  QT_CreateChapterTrack(movie, &chapter, 1);
  Boolean is_in_file = 0;
  Movie again = nullptr;
  // What is saved opens.
  if (QT_SaveMovie(movie, &file, &is_in_file) == noErr)
    Require(QT_OpenMovieFile(&file, 0, &again) == noErr);
  QT_DisposeMovie(&again);
  QT_DisposeMovie(&movie);
  if (QT_CopyMovie(source, &movie) == noErr) Flatten(movie);
  QT_DisposeMovie(&movie);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* data, std::size_t size) {
  Movie movie = OpenMovie(WriteInput(data, size));
  if (movie != nullptr && IsSmall(movie)) {
    AskMovie(movie);
    for (SInt32 i = 1; i <= GetMovieTrackCount(movie); ++i)
      AskTrack(GetMovieIndTrack(movie, i));
    CopyMovie(movie);
  }
  QT_DisposeMovie(&movie);
  return 0;
}
