/// References between the tracks of a movie, such as `chap` to a chapter track and `tmcd` to a time
/// code track. Indices count from 1 within a type. Functions without a status leave it in
/// GetMoviesError.
#pragma once

#include "movie_toolbox.h"

/// Lets a track refer to another one of the same movie; `index` (may be null) takes the
/// reference's.
OSErr AddTrackReference(Track track, Track referenced, OSType type, SInt32* index);
/// The track of a reference; null if there is none of that index or its track has gone.
Track GetTrackReference(Track track, OSType type, SInt32 index);
SInt32 GetTrackReferenceCount(Track track, OSType type);
/// The type that comes behind another among those the track has references of; 0 asks for the
/// first, and is given behind the last.
OSType GetNextTrackReferenceType(Track track, OSType type);
