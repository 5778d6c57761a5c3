/// The tracks of a movie: counted, found, listed, told and switched on and off.
///
/// Indices of tracks count from 1 in the movie's order. A track is visual or aural by its media's
/// characteristic (`eyes`, `ears`), of a kind by its media type. Statuses are those of the movie
/// toolbox; what has none gives 0 or null for null arguments.
#pragma once

#include "base_types.h"
#include "movie_toolbox.h"

// --- Counting ------------------------------------------------------------------------------------

SInt32 QT_CountTracks(Movie movie);
SInt32 QT_CountVisualTracks(Movie movie);
SInt32 QT_CountEnabledVisualTracks(Movie movie);
SInt32 QT_CountVideoTracks(Movie movie);
SInt32 QT_CountEnabledVideoTracks(Movie movie);
SInt32 QT_CountAuralTracks(Movie movie);
SInt32 QT_CountEnabledAuralTracks(Movie movie);
SInt32 QT_CountSoundTracks(Movie movie);
SInt32 QT_CountEnabledSoundTracks(Movie movie);
SInt32 QT_CountTextTracks(Movie movie);
SInt32 QT_CountEnabledTextTracks(Movie movie);
SInt32 QT_CountEnabledTimeCodeTracks(Movie movie);
/// The references, of all types, that the enabled video tracks have to other tracks.
SInt32 QT_CountEnabledVideTracksTrackRefs(Movie movie, SInt32* count);

// --- Finding -------------------------------------------------------------------------------------

// The first of a selection, or null.

Track QT_GetFirstVideoTrack(Movie movie);
Track QT_GetFirstEnabledVideoTrack(Movie movie);
Track QT_GetFirstVisualTrack(Movie movie);
Track QT_GetFirstEnabledVisualTrack(Movie movie);
Track QT_GetFirstSoundTrack(Movie movie);
Track QT_GetFirstEnabledSoundTrack(Movie movie);
/// The first enabled visual track that isn't text or time code.
Track QT_GetFirstEnabledImageTrack(Movie movie);
Track QT_GetLastEnabledVideoTrack(Movie movie);
Track QT_GetEnabledSoundTrackByIndex(Movie movie, SInt32 index);
Track QT_GetTrackByID(Movie movie, SInt32 trackID);
/// The enabled track that lies in front of the others with media at a movie time: that of the
/// lowest layer, and there of the lowest index.
Track QT_GetActiveVideoTrack(Movie movie, SInt32 time);
Track QT_GetActiveVisualTrack(Movie movie, SInt32 time);

// --- Properties ----------------------------------------------------------------------------------

/// The first of eleven characteristics, `eyes` and `ears` before others, that a track has; 0 if
/// none.
SInt32 QT_GetMediaCharacteristic(Track track, OSType* characteristic);
/// Whether it is visual and neither text nor time code.
SInt32 QT_IsImageTrack(Track track, Boolean* isImage);
/// The track's name, from its user data, cut to 255 bytes and a zero; empty if it has none.
void QT_GetTrackName(Track track, char* name);
/// Where the track's size lies behind its matrix. Where the matrix keeps rectangles, right and
/// bottom are the width and the height, in whole pixels.
SInt32 QT_GetTrackBox(Track track, Rect* box);

// --- Lists ---------------------------------------------------------------------------------------

/// A track of a movie, in a list in index order; freed with LL_DisposeLinkedList.
struct QT_TrackElement {
  QT_TrackElement* next;
  Track track;
  SInt32 index;
  SInt32 trackID;
  SInt32 layer;
  OSType mediaType;
  OSType characteristic;
  Boolean enabled;
  Boolean referenced;    ///< by another track, as chapters, time code or source
  OSType referenceType;  ///< the first of `chap`, `tmcd`, `ssrc` that was found
};
/// Makes the list; -108 without memory, the list as far as it was made.
SInt32 QT_GetTrackList(Movie movie, QT_TrackElement** list);
/// The first listed track that refers to the element's under its reference type; null if none does.
QT_TrackElement* QT_FindReferencingTrack(QT_TrackElement* list, const QT_TrackElement* element);
/// Whether a listed track of a media type or with a characteristic does; false for an element that
/// isn't referenced.
Boolean QT_TrackReferencedByAnyTrackOfType(QT_TrackElement* list, const QT_TrackElement* element,
                                           OSType mediaType, OSType characteristic);
/// The distinct reference types or media types of a movie's tracks in index order: an array that
/// the caller frees with free, null for none.
SInt32 QT_GetMovieRefTrackTypes(Movie movie, OSType** types, SInt32* count);
SInt32 QT_GetMovieMediaTypes(Movie movie, OSType** types, SInt32* count);

// --- Switching on and off ------------------------------------------------------------------------

void QT_EnableAllTracks(Movie movie, OSType mediaType, Boolean enabled);
/// The same for a selection; flags are those of GetMovieIndTrackType.
void QT_EnableAllTracksOfType(Movie movie, OSType type, SInt32 flags, Boolean enabled);
void QT_DisableTextAndTimeCodeTracks(Movie movie);
/// The state of a track to come back to.
struct QT_TrackStateElement {
  QT_TrackStateElement* next;
  Track track;
  Boolean enabled;
};
/// Gives the selected tracks that are in a list their states there.
void QT_RestoreAllTracksEnabledState(Movie movie, const QT_TrackStateElement* list, OSType type,
                                     SInt32 flags);
