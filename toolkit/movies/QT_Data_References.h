/// The data references of media: where sample data lies, found, compared, copied and listed.
///
/// An index counts from 1 within a media; 0 means none. Statuses are those of the movie toolbox and
/// the files layer, and those of QT_Error_Keys.h.
#pragma once

#include "GL_File.h"
#include "aliases.h"
#include "base_types.h"
#include "movie_toolbox.h"

/// The file of a media's data reference; null does nothing. -43 for one that isn't resolved, 11010
/// for one that is no alias; the file object is cleared on failure.
SInt32 QT_ResolveMediaDataRef(Media media, SInt16 index, FSRef* file);
/// The same for the reference of the highest index.
SInt32 QT_GetHighestDataRef(Media media, FSRef* file);
/// The index of an alias among a media's data references (GL_EqualAlias), 0 for none. Where it
/// isn't there it is added if `add` says so. The index may be null.
SInt32 QT_CheckForAliasDataRef(Media media, AliasHandle alias, Boolean add, SInt16* index);
/// The sum of the data references of the tracks that are selected by a type, 0 for all, and flags
/// as those of GetMovieIndTrackType.
SInt32 QT_GetMovieDataRefCount(Movie movie, OSType trackType, SInt32 flags, Boolean enabledOnly,
                               SInt32* count);
/// Finds the first alias, by track and index, to a file of a name in any case: track and index, or
/// the reference, a handle of the caller's, or all three. -50 with neither; where there is none the
/// outputs are zero and the result is that of the media behind the last track.
SInt32 QT_FindDataRefByName(Movie movie, CFStringRef name, Track* track, SInt16* index,
                            Handle* dataReference);
/// Adds all references of a media to another one, or those that it hasn't; the map, which the
/// caller frees, has the destination's index for each of the source's, at that.
SInt32 QT_CopyDataReferences(Media source, Media destination);
SInt32 QT_CopyDataReferencesIfNeeded(Media source, Media destination, UInt16** map);
/// The files other than its own that a movie refers to, each once, freed with LL_DisposeLinkedList;
/// null does nothing. 11007 when some couldn't be found: the list has the others.
SInt32 QT_GetMovieReferencedFiles(Movie movie, GL_FileObjectElement** list);
/// When a media first uses a data reference, in media time; -1 if it never does.
SInt32 QT_DataRefIndexToStartTime(SInt16 index, Media media, SInt32* mediaTime);
