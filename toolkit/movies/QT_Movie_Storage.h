/// Movie files made, opened, saved and deleted, by file object.
///
/// Every result is a signed status, 0 for success; those of the movie toolbox and the files layer
/// are handed on. Saving keeps the old movie valid until the new one is complete (movie_storage.h).
#pragma once

#include "base_types.h"
#include "file_references.h"
#include "forks.h"
#include "movie_toolbox.h"

/// Bit of the create flags: an existing file of the name is deleted.
inline constexpr UInt32 QT_CreateDeletesExisting = createMovieFileDeleteCurFile;

/// Makes a movie file in a folder; `file` and `movie` take the new file and its empty movie, the
/// caller's.
SInt32 QT_CreateMovieFile(const FSRef* folder, CFStringRef name, OSType creator, UInt32 flags,
                          FSRef* file, Movie* movie);
/// The same, with up to 10 more tries, 10 ticks apart, while a file to be deleted is busy; the
/// first of them removes it.
SInt32 QT_CreateMovieFileNew(const FSRef* folder, CFStringRef name, OSType creator, UInt32 flags,
                             FSRef* file, Movie* movie);
/// The same under the first free of "name", "name 2", "name 3" and so on; where existing files are
/// deleted, under the name.
SInt32 QT_CreateMovieFileWithIndex(const FSRef* folder, CFStringRef name, OSType creator,
                                   UInt32 flags, FSRef* file, Movie* movie);
/// Makes a file that holds a movie with references to where its data lies.
SInt32 QT_CreateReferenceMovie(Movie movie, Handle dataReference, OSType type, UInt32 flags,
                               OSType creator);

SInt32 QT_OpenMovieFile(const FSRef* file, SInt16 flags, Movie* movie);
/// Saves a movie in a file: as a new one, or in the place of the one that is in it, by `*isInFile`,
/// which becomes true.
SInt32 QT_SaveMovie(Movie movie, const FSRef* file, Boolean* isInFile);
/// The bytes of a movie as they stand in a file, in a new handle of the caller's.
SInt32 QT_PutMovieForFileIntoHandle(Movie movie, const FSRef* file, Handle* handle);
/// Finishes a file whose sample data was written behind a header of QT_WriteInitialMdatHeader:
/// closes the data and appends the movie. `fork` is its open data fork, or 0 to open and close one.
SInt32 QT_SaveMovieOverNetwork(Movie movie, FSIORefNum fork, const FSRef* file);
/// Closes a resource file of a movie and clears the variable.
SInt32 QT_CloseMovieFile(SInt16* resourceFile);

/// The user's folder of movies, made if the flag says so.
SInt32 QT_GetMoviesFolder(Boolean create, FSRef* folder);
/// True when the name ends in ".mov", in any case.
SInt32 QT_Is_mov_File(const FSRef* file, Boolean* isMov);

/// Deletes a movie file; the file object is cleared whatever comes of it.
SInt32 QT_DeleteMovieFile(FSRef* file);
/// The same with up to so many tries while the file is busy, each after a wait of 10 ticks.
SInt32 QT_DeletePotentiallyBusyMovieFile(FSRef* file, SInt32 tries);
/// Deletes a movie's file when all files that it refers to can be found (11009 otherwise); those
/// stay. An open resource file is closed first, and the movie then stays the caller's; without one
/// it is disposed of. 11008 when the file can't be deleted. A null file gives 0.
SInt32 QT_TotallyDeleteMovieFile(const FSRef* file, Movie movie, SInt16 resourceFile);
