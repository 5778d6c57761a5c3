/// Walks over the tracks of a movie that the sources of the movie library share.
#pragma once

#include "movie_toolbox.h"

namespace quillmere {

/// Tracks of a media type or with a characteristic, flags being those of GetMovieIndTrackType.
struct TrackSelection {
  OSType type;
  SInt32 flags;
};
inline constexpr TrackSelection kVisual = {"eyes"_4cc, 2};
inline constexpr TrackSelection kEnabledVisual = {"eyes"_4cc, 6};
inline constexpr TrackSelection kVideo = {"vide"_4cc, 1};
inline constexpr TrackSelection kEnabledVideo = {"vide"_4cc, 5};
inline constexpr TrackSelection kAural = {"ears"_4cc, 2};
inline constexpr TrackSelection kEnabledAural = {"ears"_4cc, 6};
inline constexpr TrackSelection kSound = {"soun"_4cc, 1};
inline constexpr TrackSelection kEnabledSound = {"soun"_4cc, 5};
inline constexpr TrackSelection kText = {"text"_4cc, 1};
inline constexpr TrackSelection kEnabledText = {"text"_4cc, 5};
inline constexpr TrackSelection kTimeCode = {"tmcd"_4cc, 1};
inline constexpr TrackSelection kEnabledTimeCode = {"tmcd"_4cc, 5};

inline Track TrackAt(Movie movie, const TrackSelection& selection, SInt32 index) {
  return GetMovieIndTrackType(movie, index, selection.type, selection.flags);
}

/// Calls `visit(track)` for the tracks of a selection by index until it gives false.
template <class Visit>
void WalkTracks(Movie movie, const TrackSelection& selection, Visit visit) {
  for (SInt32 index = 1; Track track = TrackAt(movie, selection, index); ++index) {
    if (!visit(track)) return;
  }
}
/// The same for all tracks.
template <class Visit>
void WalkTracks(Movie movie, Visit visit) {
  for (SInt32 index = 1; Track track = GetMovieIndTrack(movie, index); ++index) {
    if (!visit(track)) return;
  }
}

/// The media type of a track; 0 if it has none.
inline OSType MediaTypeOf(Track track) {
  OSType type = 0;
  GetMediaHandlerDescription(GetTrackMedia(track), &type, nullptr, nullptr);
  return type;
}
/// Whether a visual track shows images, not text or time codes.
inline bool ShowsImages(Track track) {
  const OSType type = MediaTypeOf(track);
  return type != "text"_4cc && type != "tmcd"_4cc;
}

}  // namespace quillmere
