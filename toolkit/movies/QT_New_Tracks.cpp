#include "QT_New_Tracks.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "GL_Memory.h"
#include "QT_Error_Keys.h"
#include "QT_Tracks.h"
#include "aliases.h"
#include "fixed_point.h"
#include "interval_walks_private.h"
#include "media_editing.h"
#include "memory_handles.h"
#include "reference_counted.h"
#include "sound_layouts_private.h"
#include "text_media.h"
#include "track_editing.h"
#include "track_references.h"
#include "track_walks_private.h"

using namespace quillmere;

namespace {

constexpr Fixed kNormalRate = 0x10000;

struct NewTrack {
  Fixed width;
  Fixed height;
  SInt16 volume;
  OSType mediaType;
  TimeScale timeScale;
};

SInt32 MakeTrack(Movie movie, const FSRef* file, const NewTrack& fields, Track* track,
                 Media* media) {
  *track = nullptr;
  *media = nullptr;
  AliasHandle alias = nullptr;
  const SInt32 status = file != nullptr ? SInt32{FSNewAlias(nullptr, file, &alias)} : SInt32{noErr};
  if (status) return status;
  const AtExit dispose([&] { GL_DisposeHandle(&alias); });
  *track = NewMovieTrack(movie, fields.width, fields.height, fields.volume);
  if (*track == nullptr) return GetMoviesError();
  *media = NewTrackMedia(*track, fields.mediaType, fields.timeScale, alias, "alis"_4cc);
  if (*media != nullptr) return noErr;
  const SInt32 failure = GetMoviesError();
  DisposeMovieTrack(*track);
  *track = nullptr;
  return failure;
}

SInt32 CheckChapters(const QT_ChapterRecord* chapters, SInt32 count, SInt32 end) {
  if (count < 1 || chapters[0].start < 0) return paramErr;
  for (SInt32 i = 1; i < count; ++i) {
    if (chapters[i].start <= chapters[i - 1].start) return paramErr;
  }
  return chapters[count - 1].start >= end - 1 ? SInt32{invalidTime} : SInt32{noErr};
}

SInt32 AddChapters(Media media, const QT_ChapterRecord* chapters, SInt32 count, SInt32 end,
                   const Rect& box) {
  SInt32 status = BeginMediaEdits(media);
  if (status) return status;
  for (SInt32 i = 0; i < count && !status; ++i) {
    const SInt32 next = i + 1 < count ? chapters[i + 1].start : end;
    const char* const title = chapters[i].title;
    const auto size = static_cast<UInt32>(strnlen(title, sizeof chapters[i].title));
    status = TextMediaAddTextSample(GetMediaHandler(media), title, size, &box, nullptr, nullptr,
                                    next - chapters[i].start, nullptr);
  }
  const SInt32 ended = EndMediaEdits(media);
  return status ? status : ended;
}

/// Gives the first description of a track's media a channel layout.
SInt32 SetLayout(Track track, const void* layout, ByteCount size) {
  Media media = GetTrackMedia(track);
  const MediaDescription description(media, 1);
  if (description.status()) return description.status();
  const SInt32 status =
      QTSoundDescriptionSetProperty(description.get(), "audi"_4cc, "clay"_4cc, size, layout);
  return status ? status : SInt32{SetMediaSampleDescription(media, 1, description.get())};
}

SInt16 ChannelsOfTrack(Track track) {
  return ChannelsOf(MediaDescription(GetTrackMedia(track), 1).get());
}

/// One channel, by a label: 1 is left, 2 right.
SInt32 SetSide(Track track, UInt32 label) {
  AudioChannelLayout layout{};
  layout.mChannelBitmap = 1;
  layout.mNumberChannelDescriptions = 1;
  layout.mChannelDescriptions[0].mChannelLabel = label;
  return SetLayout(track, &layout, sizeof layout);
}

/// Bytes of one frame of a sound description: a whole packet, divided by its frames.
std::size_t BytesPerFrame(Handle description) {
  constexpr std::size_t kBits = 26;
  const auto bits = static_cast<UInt16>(FieldOf<SInt16>(description, kBits));
  const auto channels = static_cast<UInt16>(ChannelsOf(description));
  return std::max<std::size_t>(std::size_t{channels} * ((bits + 7U) / 8U), 1);
}

}  // namespace

SInt32 QT_NewVideoTrack(Movie movie, const FSRef* file, SInt32 height, SInt32 width,
                        TimeScale timeScale, Track* track, Media* media) {
  return MakeTrack(movie, file, {Long2Fix(width), Long2Fix(height), 0, kVideo.type, timeScale},
                   track, media);
}

SInt32 QT_NewSoundTrack(Movie movie, const FSRef* file, TimeScale timeScale, Track* track,
                        Media* media) {
  constexpr SInt16 kFullVolume = 256;
  return MakeTrack(movie, file, {0, 0, kFullVolume, kSound.type, timeScale}, track, media);
}

SInt32 QT_CreateChapterTrack(Movie movie, const QT_ChapterRecord* chapters, SInt32 count) {
  constexpr Rect kBox = {0, 0, 10, 100};
  Track image = QT_GetFirstEnabledImageTrack(movie);
  if (image == nullptr) return QT_NoVideoTrackErr;
  const SInt32 end = GetTrackDuration(image);
  SInt32 status = CheckChapters(chapters, count, end);
  if (status) return status;
  Track track = nullptr;
  Media media = nullptr;
  status = MakeTrack(
      movie, nullptr,
      {Long2Fix(kBox.right), Long2Fix(kBox.bottom), 0, kText.type, GetMovieTimeScale(movie)},
      &track, &media);
  if (!status) status = AddChapters(media, chapters, count, end, kBox);
  if (!status)
    status =
        InsertMediaIntoTrack(track, chapters[0].start, 0, GetMediaDuration(media), kNormalRate);
  if (!status) status = AddTrackReference(image, track, "chap"_4cc, nullptr);
  if (!status) SetTrackEnabled(track, 0);
  if (status && track != nullptr) DisposeMovieTrack(track);
  return status;
}

SInt32 QT_AddEmptySoundToTrack(Track track, SInt32 trackTime, SInt32 length) {
  Media media = GetTrackMedia(track);
  if (length < 1) return invalidDuration;
  const MediaDescription description(media, 1);
  if (description.status()) return description.status();
  const std::vector<UInt8> silence(BytesPerFrame(description.get()));
  SInt32 status = BeginMediaEdits(media);
  if (status) return status;
  SInt64 time = 0;
  status =
      AddMediaSample2(media, silence.data(), silence.size(), 1, 0, description.get(), 1, 0, &time);
  const SInt32 ended = EndMediaEdits(media);
  if (status || ended) return status ? status : ended;
  const SInt64 stretched = SInt64{GetMediaTimeScale(media)} * length;
  const Fixed rate = FixDiv(GetMovieTimeScale(GetTrackMovie(track)),
                            static_cast<SInt32>(std::min<SInt64>(stretched, 0x7FFFFFFF)));
  const SInt32 before = std::max(GetTrackDuration(track), trackTime);
  status = InsertMediaIntoTrack(track, trackTime, static_cast<SInt32>(time), 1, std::max(rate, 1));
  // So small a rate is coarse.
  const SInt32 added = GetTrackDuration(track) - before;
  if (status || added == length) return status;
  return ScaleTrackSegment(track, trackTime, added, length);
}

SInt32 QT_ChangeDualMonoToStereo(Movie movie) {
  constexpr UInt32 kLeft = 1;
  constexpr UInt32 kRight = 2;
  constexpr UInt32 kStereoTag = 0x650002;
  const SInt32 count = QT_CountEnabledSoundTracks(movie);
  Track first = QT_GetEnabledSoundTrackByIndex(movie, 1);
  Track second = QT_GetEnabledSoundTrackByIndex(movie, 2);
  if (count == 2 && ChannelsOfTrack(first) == 1 && ChannelsOfTrack(second) == 1) {
    const SInt32 status = SetSide(first, kLeft);
    return status ? status : SetSide(second, kRight);
  }
  if (count != 1 || ChannelsOfTrack(first) != 2) return QT_NotDualMonoErr;
  AudioChannelLayout layout{};
  layout.mChannelLayoutTag = kStereoTag;
  return SetLayout(first, &layout, kAudioChannelLayoutHeaderSize);
}

SInt32 QT_GetCurrentMediaSampleDescription(Track track, SampleDescriptionHandle* description,
                                           SInt32* index, SInt32* mediaTime) {
  *description = nullptr;
  *index = 0;
  if (track == nullptr) return invalidTrack;
  *mediaTime = TrackTimeToMediaTime(GetMovieTime(GetTrackMovie(track), nullptr), track);
  if (*mediaTime == -1) return GetMoviesError();
  Handle fetched = NewHandle(4);
  if (fetched == nullptr) return MemError();
  const SInt32 status =
      GetMediaSampleReference(GetTrackMedia(track), nullptr, nullptr, *mediaTime, nullptr, nullptr,
                              fetched, index, 1, nullptr, nullptr);
  if (status) {
    GL_DisposeHandle(&fetched);
  } else {
    *description = fetched;
  }
  return status;
}
