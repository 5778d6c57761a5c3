/// Tells what a movie holds, as JSON, or copies it track by track:
///
///   quillmere-movie facts FILE
///   quillmere-movie copy SOURCE FOLDER NAME      samples with their data
///   quillmere-movie refer SOURCE FOLDER NAME     references to the source's samples
///
/// The exit code is 0, or 1 with a status on standard error.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "QT_Copy_Tracks.h"
#include "QT_Frame_Statistics.h"
#include "QT_Media_Statistics.h"
#include "QT_Metadata.h"
#include "QT_Movie_Info.h"
#include "QT_Movie_Queries.h"
#include "QT_Movie_Storage.h"
#include "QT_Tracks.h"
#include "cf_strings.h"
#include "image_descriptions.h"
#include "media_editing.h"
#include "reference_counted.h"

namespace {

std::string Code(OSType code) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const auto character = static_cast<unsigned char>(code >> shift);
    const bool is_plain =
        character >= ' ' && character < 0x7F && character != '"' && character != '\\';
    text += is_plain ? static_cast<char>(character) : '?';
  }
  return text;
}

void TellTrack(Track track) {
  Media media = GetTrackMedia(track);
  OSType type = 0;
  QT_GetTrackType(track, &type);
  SInt32 width = 0;
  SInt32 height = 0;
  QT_GetTrackSize(track, &width, &height);
  SInt32 smallest = 0;
  SInt32 largest = 0;
  SInt32 duration = 0;
  Boolean has_dependent = 0;
  Boolean has_odd = 0;
  const SInt32 status =
      QT_AnalyzeMedia(media, &smallest, &largest, &has_dependent, &duration, &has_odd);
  SInt64 bytes = 0;
  GetMediaDataSize64(media, 0, GetMediaDuration(media), &bytes);
  SInt64 shown = 0;
  QT_AllMediaDurationsEqual(media, &shown);
  SInt16 references = 0;
  GetMediaDataRefCount(media, &references);
  std::printf("{\"id\": %d, \"type\": \"%s\", \"enabled\": %d, \"layer\": %d, \"width\": %d, ",
              GetTrackID(track), Code(type).c_str(), GetTrackEnabled(track), GetTrackLayer(track),
              width);
  std::printf("\"height\": %d, \"duration\": %d, \"offset\": %d, \"timeScale\": %d, ", height,
              GetTrackDuration(track), GetTrackOffset(track), GetMediaTimeScale(media));
  std::printf("\"mediaDuration\": %d, \"samples\": %d, \"bytes\": %lld, \"status\": %d, ",
              GetMediaDuration(media), GetMediaSampleCount(media), static_cast<long long>(bytes),
              status);
  std::printf("\"smallest\": %d, \"largest\": %d, \"dependent\": %d, \"commonDuration\": %d, ",
              smallest, largest, has_dependent, duration);
  std::printf("\"shownDuration\": %lld, \"edits\": %d, \"frames\": %d, \"descriptions\": %d, ",
              static_cast<long long>(shown), QT_CountNonEmptyTrackEdits(track, 0, 0x7FFFFFFF),
              type == "vide"_4cc ? QT_CountFramesInTrack(track) : -1,
              GetMediaSampleDescriptionCount(media));
  std::printf("\"dataReferences\": %d}", references);
}

SInt32 TellMovie(const FSRef& file) {
  Movie movie = nullptr;
  const SInt32 status = QT_OpenMovieFile(&file, 0, &movie);
  if (status) return status;
  SInt32 frames = 0;
  SInt32 common = 0;
  QT_CountMovieFrames(movie, &frames, nullptr);
  QT_AllFrameDurationsEqual(movie, &common, nullptr);
  SInt64 bytes = 0;
  QT_GetMovieTotalMediaSize64(movie, &bytes);
  SInt32 width = 0;
  SInt32 height = 0;
  QT_GetMovieFrameSize(movie, &width, &height);
  std::printf("{\"timeScale\": %d, \"duration\": %d, \"width\": %d, \"height\": %d, ",
              GetMovieTimeScale(movie), GetMovieDuration(movie), width, height);
  std::printf("\"frames\": %d, \"frameDuration\": %d, \"bytes\": %lld, \"video\": %d, ", frames,
              common, static_cast<long long>(bytes), QT_CountVideoTracks(movie));
  std::printf("\"sound\": %d, \"tracks\": [", QT_CountSoundTracks(movie));
  for (SInt32 index = 1; index <= QT_CountTracks(movie); ++index) {
    if (index > 1) std::printf(", ");
    TellTrack(GetMovieIndTrack(movie, index));
  }
  std::printf("]}\n");
  QT_DisposeMovie(&movie);
  return noErr;
}

/// Copies all tracks that play anything into a new movie file, with metadata and references.
SInt32 CopyTracks(Movie source, Movie movie, const FSRef& file, bool with_data) {
  for (SInt32 index = 1; index <= QT_CountTracks(source); ++index) {
    Track track = GetMovieIndTrack(source, index);
    if (GetTrackDuration(track) < 1) continue;
    Track copy = nullptr;
    SInt32 status = QT_CopyTrack(track, movie, with_data ? 1 : 0, &file, &copy);
    if (!status) status = QT_CopyTrackMetaData(track, copy);
    if (status) return status;
  }
  return QT_CopyMovieMetaData(source, movie);
}

SInt32 CopyMovie(const FSRef& source_file, const FSRef& folder, const char* name, bool with_data) {
  const quillmere::Owned<CFStringRef> text(quillmere::CreateFromUtf8(name));
  Movie source = nullptr;
  Movie movie = nullptr;
  FSRef file{};
  SInt32 status = QT_OpenMovieFile(&source_file, 0, &source);
  if (!status) status = QT_CreateMovieFile(&folder, text.get(), "TVOD"_4cc, 0, &file, &movie);
  if (!status) status = CopyTracks(source, movie, file, with_data);
  Boolean is_in_file = 0;
  if (!status) status = QT_SaveMovie(movie, &file, &is_in_file);
  QT_DisposeMovie(&movie);
  QT_DisposeMovie(&source);
  return status;
}

SInt32 Run(int count, char** words) {
  const std::string verb = count > 2 ? words[1] : "";
  FSRef file{};
  FSRef folder{};
  if (count > 2) {
    const OSStatus status = quillmere::files::ReferenceOf(words[2], &file);
    if (status) return status;
  }
  if (verb == "facts" && count == 3) return TellMovie(file);
  if ((verb == "copy" || verb == "refer") && count == 5) {
    const OSStatus status = quillmere::files::ReferenceOf(words[3], &folder);
    return status ? SInt32{status} : CopyMovie(file, folder, words[4], verb == "copy");
  }
  std::fprintf(stderr,
               "usage: %s facts FILE | copy SOURCE FOLDER NAME | refer SOURCE FOLDER NAME\n",
               words[0]);
  return paramErr;
}

}  // namespace

int main(int count, char** words) {
  const SInt32 status = Run(count, words);
  if (status) std::fprintf(stderr, "status %d\n", status);
  return status ? 1 : 0;
}
