/// Tracks made for a movie, and sound that is changed in it.
#pragma once

#include "base_types.h"
#include "file_references.h"
#include "movie_toolbox.h"

/// A new track with a media whose samples lie in a file, or in the movie's own for null: for video,
/// of a size in pixels and without sound; for sound, at full volume. Both outputs are null on
/// failure.
SInt32 QT_NewVideoTrack(Movie movie, const FSRef* file, SInt32 height, SInt32 width,
                        TimeScale timeScale, Track* track, Media* media);
SInt32 QT_NewSoundTrack(Movie movie, const FSRef* file, TimeScale timeScale, Track* track,
                        Media* media);

/// A chapter: when it begins, in movie time, and its title, UTF-8.
struct QT_ChapterRecord {
  SInt32 start;
  char title[256];
};
static_assert(sizeof(QT_ChapterRecord) == 260);
/// Gives the first enabled image track chapters, in a new, disabled text track whose samples go to
/// the movie's file. 11011 without such a track, -2015 where the last chapter begins at or behind
/// its last time unit, -50 for chapters that don't come one after the other.
SInt32 QT_CreateChapterTrack(Movie movie, const QT_ChapterRecord* chapters, SInt32 count);

/// Inserts silence into a sound track at a time, for a duration in movie time: one sample of zeros,
/// which is added to the media, stretched.
SInt32 QT_AddEmptySoundToTrack(Track track, SInt32 trackTime, SInt32 length);
/// Makes stereo of two enabled sound tracks of one channel each, left and right, or of one of two
/// channels, by their channel layouts; 11026 for other sound.
SInt32 QT_ChangeDualMonoToStereo(Movie movie);

/// The sample description that a track uses at the movie's present time, a new handle of the
/// caller's, with its index and the media time; null where the track shows nothing.
SInt32 QT_GetCurrentMediaSampleDescription(Track track, SampleDescriptionHandle* description,
                                           SInt32* index, SInt32* mediaTime);
