#include "QT_Tracks.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "GL_Memory.h"
#include "QT_Movie_Info.h"
#include "fixed_point.h"
#include "interval_walks_private.h"
#include "matrices.h"
#include "reference_counted.h"
#include "track_references.h"
#include "track_walks_private.h"
#include "user_data.h"

using namespace quillmere;

namespace {

SInt32 Count(Movie movie, const TrackSelection& selection) {
  SInt32 count = 0;
  WalkTracks(movie, selection, [&](Track) { return ++count > 0; });
  return count;
}

/// The selected track with media at a time that lies in front.
Track FrontTrack(Movie movie, const TrackSelection& selection, SInt32 time) {
  Track front = nullptr;
  WalkTracks(movie, selection, [&](Track track) {
    const bool shows = TrackTimeToMediaTime(time, track) != -1;
    if (shows && (front == nullptr || GetTrackLayer(track) < GetTrackLayer(front))) front = track;
    return true;
  });
  return front;
}

bool Contains(Movie movie, const TrackSelection& selection, Track wanted) {
  bool found = false;
  WalkTracks(movie, selection, [&](Track track) {
    found = track == wanted;
    return !found;
  });
  return found;
}

template <class Element>
Element* Find(Element* list, Track track) {
  while (list != nullptr && list->track != track)
    list = list->next;
  return list;
}

bool RefersTo(Track track, Track referenced, OSType type) {
  const SInt32 count = GetTrackReferenceCount(track, type);
  for (SInt32 index = 1; index <= count; ++index) {
    if (GetTrackReference(track, type, index) == referenced) return true;
  }
  return false;
}

/// Marks the listed tracks that a track refers to.
void MarkReferenced(Track track, QT_TrackElement* list) {
  constexpr OSType kTypes[] = {"chap"_4cc, "tmcd"_4cc, "ssrc"_4cc};
  for (const OSType type : kTypes) {
    const SInt32 count = GetTrackReferenceCount(track, type);
    for (SInt32 index = 1; index <= count; ++index) {
      QT_TrackElement* element = Find(list, GetTrackReference(track, type, index));
      if (element == nullptr || element->referenced) continue;
      element->referenced = 1;
      element->referenceType = type;
    }
  }
}

/// Collects a field of all listed tracks, each value but 0 once.
SInt32 CollectTypes(Movie movie, OSType QT_TrackElement::*field, OSType** types, SInt32* count) {
  *types = nullptr;
  *count = 0;
  QT_TrackElement* list = nullptr;
  SInt32 status = QT_GetTrackList(movie, &list);
  const AtExit dispose([&] { LL_DisposeLinkedList(ListHead(&list)); });
  for (const QT_TrackElement* element = list; element != nullptr; element = element->next) {
    const OSType type = element->*field;
    if (type == 0 || std::find(*types, *types + *count, type) != *types + *count) continue;
    const auto size = static_cast<std::size_t>(*count + 1) * sizeof(OSType);
    void* const grown = std::realloc(*types, size);
    if (grown == nullptr) return -108;
    *types = static_cast<OSType*>(grown);
    (*types)[(*count)++] = type;
  }
  return status;
}

}  // namespace

SInt32 QT_CountTracks(Movie movie) {
  return GetMovieTrackCount(movie);
}

SInt32 QT_CountVisualTracks(Movie movie) {
  return Count(movie, kVisual);
}

SInt32 QT_CountEnabledVisualTracks(Movie movie) {
  return Count(movie, kEnabledVisual);
}

SInt32 QT_CountVideoTracks(Movie movie) {
  return Count(movie, kVideo);
}

SInt32 QT_CountEnabledVideoTracks(Movie movie) {
  return Count(movie, kEnabledVideo);
}

SInt32 QT_CountAuralTracks(Movie movie) {
  return Count(movie, kAural);
}

SInt32 QT_CountEnabledAuralTracks(Movie movie) {
  return Count(movie, kEnabledAural);
}

SInt32 QT_CountSoundTracks(Movie movie) {
  return Count(movie, kSound);
}

SInt32 QT_CountEnabledSoundTracks(Movie movie) {
  return Count(movie, kEnabledSound);
}

SInt32 QT_CountTextTracks(Movie movie) {
  return Count(movie, kText);
}

SInt32 QT_CountEnabledTextTracks(Movie movie) {
  return Count(movie, kEnabledText);
}

SInt32 QT_CountEnabledTimeCodeTracks(Movie movie) {
  return Count(movie, kEnabledTimeCode);
}

SInt32 QT_CountEnabledVideTracksTrackRefs(Movie movie, SInt32* count) {
  *count = 0;
  WalkTracks(movie, kEnabledVideo, [&](Track track) {
    for (OSType type = 0; (type = GetNextTrackReferenceType(track, type)) != 0;)
      *count += GetTrackReferenceCount(track, type);
    return true;
  });
  return movie != nullptr ? noErr : SInt32{invalidMovie};
}

Track QT_GetFirstVideoTrack(Movie movie) {
  return TrackAt(movie, kVideo, 1);
}

Track QT_GetFirstEnabledVideoTrack(Movie movie) {
  return TrackAt(movie, kEnabledVideo, 1);
}

Track QT_GetFirstVisualTrack(Movie movie) {
  return TrackAt(movie, kVisual, 1);
}

Track QT_GetFirstEnabledVisualTrack(Movie movie) {
  return TrackAt(movie, kEnabledVisual, 1);
}

Track QT_GetFirstSoundTrack(Movie movie) {
  return TrackAt(movie, kSound, 1);
}

Track QT_GetFirstEnabledSoundTrack(Movie movie) {
  return TrackAt(movie, kEnabledSound, 1);
}

Track QT_GetFirstEnabledImageTrack(Movie movie) {
  Track image = nullptr;
  WalkTracks(movie, kEnabledVisual, [&](Track track) {
    if (ShowsImages(track)) image = track;
    return image == nullptr;
  });
  return image;
}

Track QT_GetLastEnabledVideoTrack(Movie movie) {
  Track last = nullptr;
  WalkTracks(movie, kEnabledVideo, [&](Track track) { return (last = track) != nullptr; });
  return last;
}

Track QT_GetEnabledSoundTrackByIndex(Movie movie, SInt32 index) {
  return TrackAt(movie, kEnabledSound, index);
}

Track QT_GetTrackByID(Movie movie, SInt32 trackID) {
  Track found = nullptr;
  WalkTracks(movie, [&](Track track) {
    if (GetTrackID(track) == trackID) found = track;
    return found == nullptr;
  });
  return found;
}

Track QT_GetActiveVideoTrack(Movie movie, SInt32 time) {
  return FrontTrack(movie, kEnabledVideo, time);
}

Track QT_GetActiveVisualTrack(Movie movie, SInt32 time) {
  return FrontTrack(movie, kEnabledVisual, time);
}

SInt32 QT_GetMediaCharacteristic(Track track, OSType* characteristic) {
  constexpr OSType kCharacteristics[] = {"eyes"_4cc, "ears"_4cc, "vsnd"_4cc, "actn"_4cc,
                                         "nonl"_4cc, "step"_4cc, "noti"_4cc, "skin"_4cc,
                                         "keyf"_4cc, "dtdd"_4cc, "apmd"_4cc};
  *characteristic = 0;
  if (track == nullptr) return invalidTrack;
  const auto* found = std::ranges::find_if(kCharacteristics, [track](OSType type) {
    return Contains(GetTrackMovie(track), {type, movieTrackCharacteristic}, track);
  });
  if (found != std::end(kCharacteristics)) *characteristic = *found;
  return noErr;
}

SInt32 QT_IsImageTrack(Track track, Boolean* isImage) {
  OSType characteristic = 0;
  const SInt32 status = QT_GetMediaCharacteristic(track, &characteristic);
  *isImage = !status && characteristic == kVisual.type && ShowsImages(track);
  return status;
}

void QT_GetTrackName(Track track, char* name) {
  constexpr std::size_t kMostBytes = 255;
  name[0] = '\0';
  Handle data = NewHandle(0);
  if (data == nullptr) return;
  if (GetUserData(GetTrackUserData(track), data, "name"_4cc, 1) == noErr) {
    const std::size_t length = std::min(static_cast<std::size_t>(GetHandleSize(data)), kMostBytes);
    std::memcpy(name, *data, length);
    name[length] = '\0';
  }
  GL_DisposeHandle(&data);
}

SInt32 QT_GetTrackBox(Track track, Rect* box) {
  SInt32 width = 0;
  SInt32 height = 0;
  QT_GetTrackSize(track, &width, &height);
  const auto side = [](SInt32 size) { return static_cast<SInt16>(std::clamp(size, 0, 32767)); };
  *box = {0, 0, side(height), side(width)};
  MatrixRecord matrix;
  GetTrackMatrix(track, &matrix);
  const SInt32 status = GetMoviesError();
  if (status) return status;
  FixedPoint corners[] = {{0, 0},
                          {Long2Fix(box->right), 0},
                          {Long2Fix(box->right), Long2Fix(box->bottom)},
                          {0, Long2Fix(box->bottom)}};
  if (!TransformRect(&matrix, box)) return noErr;
  TransformFixedPoints(&matrix, corners, 4);
  box->right = static_cast<SInt16>(Fix2Long(corners[1].x - corners[3].x));
  box->bottom = static_cast<SInt16>(Fix2Long(corners[2].y - corners[0].y));
  return noErr;
}

SInt32 QT_GetTrackList(Movie movie, QT_TrackElement** list) {
  ListBuilder<QT_TrackElement> builder(list);
  SInt32 index = 0;
  WalkTracks(movie, [&](Track track) {
    QT_TrackElement* element = builder.Add();
    if (element == nullptr) return false;
    element->track = track;
    element->index = ++index;
    element->trackID = GetTrackID(track);
    element->layer = GetTrackLayer(track);
    QT_GetTrackType(track, &element->mediaType);
    QT_GetMediaCharacteristic(track, &element->characteristic);
    element->enabled = GetTrackEnabled(track);
    return true;
  });
  for (const QT_TrackElement* element = *list; element != nullptr; element = element->next)
    MarkReferenced(element->track, *list);
  if (builder.status()) return builder.status();
  return movie != nullptr ? noErr : SInt32{invalidMovie};
}

QT_TrackElement* QT_FindReferencingTrack(QT_TrackElement* list, const QT_TrackElement* element) {
  while (list != nullptr && !RefersTo(list->track, element->track, element->referenceType))
    list = list->next;
  return list;
}

Boolean QT_TrackReferencedByAnyTrackOfType(QT_TrackElement* list, const QT_TrackElement* element,
                                           OSType mediaType, OSType characteristic) {
  if (element->referenceType == 0) return 0;
  for (; list != nullptr; list = list->next) {
    const bool counts = list->mediaType == mediaType || list->characteristic == characteristic;
    if (counts && RefersTo(list->track, element->track, element->referenceType)) return 1;
  }
  return 0;
}

SInt32 QT_GetMovieRefTrackTypes(Movie movie, OSType** types, SInt32* count) {
  return CollectTypes(movie, &QT_TrackElement::referenceType, types, count);
}

SInt32 QT_GetMovieMediaTypes(Movie movie, OSType** types, SInt32* count) {
  return CollectTypes(movie, &QT_TrackElement::mediaType, types, count);
}

void QT_EnableAllTracks(Movie movie, OSType mediaType, Boolean enabled) {
  QT_EnableAllTracksOfType(movie, mediaType, movieTrackMediaType, enabled);
}

void QT_EnableAllTracksOfType(Movie movie, OSType type, SInt32 flags, Boolean enabled) {
  // Tracks that are switched on or off meanwhile would leave a selection of enabled ones.
  const bool enabledOnly = (flags & movieTrackEnabledOnly) != 0;
  WalkTracks(movie, {type, flags & ~movieTrackEnabledOnly}, [&](Track track) {
    if (!enabledOnly || GetTrackEnabled(track)) SetTrackEnabled(track, enabled);
    return true;
  });
}

void QT_DisableTextAndTimeCodeTracks(Movie movie) {
  QT_EnableAllTracks(movie, kTimeCode.type, 0);
  QT_EnableAllTracks(movie, kText.type, 0);
}

void QT_RestoreAllTracksEnabledState(Movie movie, const QT_TrackStateElement* list, OSType type,
                                     SInt32 flags) {
  const bool enabledOnly = (flags & movieTrackEnabledOnly) != 0;
  WalkTracks(movie, {type, flags & ~movieTrackEnabledOnly}, [&](Track track) {
    const QT_TrackStateElement* kept = Find(list, track);
    if (kept != nullptr && (!enabledOnly || GetTrackEnabled(track)))
      SetTrackEnabled(track, kept->enabled);
    return true;
  });
}
