/// Movies in files and in memory: made, opened, saved and deleted.
///
/// Saving is safe: a movie file keeps its old movie until the new one is whole on the disk, so that
/// whatever ends the program leaves one of the two. Data references to the movie's own file stay so
/// when it is saved there, and become aliases when it is saved elsewhere. Statuses are those of the
/// movies and files families; what has none leaves it in GetMoviesError.
#pragma once

#include "movie_toolbox.h"

/// An empty movie, active or not by bit 0 of the flags: time scale 600, no file. The caller owns
/// it.
Movie NewMovie(SInt32 flags);
inline constexpr SInt32 newMovieActive = 1;

/// Opens the movie of a file; bit 0 of the flags makes it active. `id` (may be null) is set to 0:
/// a file holds one movie.
OSErr NewMovieFromDataRef(Movie* movie, SInt16 flags, SInt16* id, Handle data_reference,
                          OSType type);
/// The movie as the bytes of its atom, which replace those of a handle: for another program or
/// NewMovieFromHandle. All its data references are aliases of what they resolve to, so that it
/// names no file that this movie couldn't reach.
OSErr PutMovieIntoHandle(Movie movie, Handle handle);
/// The same for the file that a data reference names, in which the bytes will stand: references to
/// that file refer to the movie's own.
OSErr PutMovieForDataRefIntoHandle(Movie movie, Handle data_reference, OSType type, Handle handle);
/// Makes a movie of such bytes, which are copied. It trusts its data references.
OSErr NewMovieFromHandle(Movie* movie, Handle handle, SInt16 flags, Boolean* data_ref_changed);

struct DataHandlerRecord;
/// An open movie file, closed with CloseMovieStorage.
using DataHandler = DataHandlerRecord*;
inline constexpr SInt32 kDataHCanRead = 1;
inline constexpr SInt32 kDataHCanWrite = 8;

/// Makes a file of type `MooV` without a movie. An older one goes if the flags say so (as with
/// FlattenMovieDataToDataRef), else dupFNErr; one that is protected gives fBsyErr. `handler` and
/// `movie` may be null, else they take the open file and an empty movie of it, with
/// createMovieFileDontCreateMovie null.
OSErr CreateMovieStorage(Handle data_reference, OSType type, OSType creator, ScriptCode script,
                         UInt32 flags, DataHandler* handler, Movie* movie);
/// Opens a file for reading, writing or both.
OSErr OpenMovieStorage(Handle data_reference, OSType type, SInt32 flags, DataHandler* handler);
/// Null is allowed.
OSErr CloseMovieStorage(DataHandler handler);
/// Puts a movie into an open file that has none yet; or in the place of the one it has. permErr
/// for a file not open for writing; invalidMovie for a file whose movie is in fragments, which
/// can't be replaced in place, and when samples don't fit together.
OSErr AddMovieToStorage(Movie movie, DataHandler handler);
OSErr UpdateMovieInStorage(Movie movie, DataHandler handler);
/// Closes the resource file of a movie.
OSErr CloseMovieFile(SInt16 resource_file);
/// Deletes a movie file. fBsyErr for a protected one.
OSErr DeleteMovieStorage(Handle data_reference, OSType type);
