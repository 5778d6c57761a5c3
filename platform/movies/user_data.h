/// User data of movies, tracks and media: items of any bytes, each with a type, several of which
/// may be of one type. Indices count from 1 within a type.
#pragma once

#include "movie_toolbox.h"

struct UserDataRecord;
/// Belongs to what it is the user data of.
using UserData = UserDataRecord*;

/// Null, with a status in GetMoviesError, for null.
UserData GetMovieUserData(Movie movie);
UserData GetTrackUserData(Track track);
UserData GetMediaUserData(Media media);

inline constexpr OSErr userDataItemNotFound = -2026;

/// Gives a handle of the caller's the bytes of an item; userDataItemNotFound if there is none.
OSErr GetUserData(UserData user_data, Handle data, OSType type, SInt32 index);
/// Adds a copy of a handle's bytes behind the items of the type.
OSErr AddUserData(UserData user_data, Handle data, OSType type);
OSErr RemoveUserData(UserData user_data, OSType type, SInt32 index);
SInt32 CountUserDataType(UserData user_data, OSType type);
/// The type behind another among those of the items; 0 asks for the first, and is given behind the
/// last.
OSType GetNextUserDataType(UserData user_data, OSType type);
