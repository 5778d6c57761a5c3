/// The top-level atoms of a movie file, on its bytes: the header of movie data that is written
/// straight into a fork, its repair, and a list of the atoms.
///
/// An atom starts with its size in 32 bits, header included, and four type bytes; a size of 1 means
/// that the size follows in 64 bits. All numbers are big-endian. Nothing here reads a file whole.
#pragma once

#include "base_types.h"
#include "file_references.h"
#include "forks.h"
#include "movie_toolbox.h"

/// Writes 16 bytes at the fork's mark: an empty `wide` atom of 8 bytes and an `mdat` atom that
/// holds nothing yet. Data starts behind them, whichever form the header takes when it is closed.
/// The files layer's first error ends it.
SInt32 QT_WriteInitialMdatHeader(FSIORefNum fork);
/// Closes such a header at the start of a fork, so that its `mdat` reaches the fork's end: as it
/// stands, with a 32-bit size, in a fork of at most 2147483646 bytes, else as one `mdat` of 64 bits
/// in the place of both atoms. The first error ends it; the header may then be half written.
SInt32 QT_SetFileSizeInMdatHeader(FSIORefNum fork);
/// The same for a header at `position`, whose size counts from there. posErr, eofErr, or paramErr
/// for fewer than 8 bytes behind it, with nothing written, for one that is not within the fork.
SInt32 QT_SetFileSizeInMdatHeaderAtMark(FSIORefNum fork, SInt64 position);

/// Corrects the size of the first `mdat` of an MPEG-4 file, so that the atom reaches the file's
/// end: 0 if it does, or if the file can't be opened (tried for about 2 s while it is busy), read
/// or has no `mdat` behind its first 8 bytes; else 11015, whether or not the file could be written.
///
/// The header may be one atom, or an empty one in front of one with a 64-bit size, which is right
/// when it counts from either of the two. In a file of 2147483647 bytes or more behind the header
/// only the second form can be written, which takes the 24 bytes from the first atom's start. A
/// correction is printed on standard output, without a newline.
SInt32 QT_FixMpg4Mdat(const FSRef* file);

/// Cuts off the file that holds a track's samples, `fork` if that is above 0 and else `file`, at
/// the first sample that begins at or behind a track time: its bytes and all that follow are gone.
/// A file that others still read loses them too; the movie is not changed. With nothing cut:
/// invalidTime where the track shows nothing or no sample begins behind the time, paramErr for an
/// offset beyond 32 bits.
SInt32 QT_MoveBackMovieEOF(FSIORefNum fork, const FSRef* file, Track track, TimeValue track_time);

/// The sizes and types of a fork's top-level atoms, `*count` of each, in their order. Both arrays
/// come from malloc and are the caller's; null for no atoms.
///
/// The list ends at the fork's end, or at the first atom whose size does not cover its own header
/// (0 among them), which is the last one listed. The status is that of the last read: eofErr for an
/// atom less than 16 bytes from the end, though all its fields are good. Another error, or
/// memFullErr, gives no list.
SInt32 QT_GetMainAtoms(FSIORefNum fork, UInt32* count, SInt64** sizes, OSType** types);
