/// Forks: the bytes of a file, opened, written at a position, flushed and closed.
///
/// An open fork is named by a small positive number, 0 meaning none. Any thread may call; calls
/// for the same fork follow one another. Only the data fork, whose name is empty, can be opened.
#pragma once

#include "base_types.h"
#include "file_references.h"

using FSIORefNum = SInt16;

/// Statuses of forks.
inline constexpr OSErr fnOpnErr = -38;
inline constexpr OSErr rfNumErr = -51;
inline constexpr OSErr wrPermErr = -61;

/// What a fork is opened for.
inline constexpr SInt8 fsCurPerm = 0;  ///< writing if that is allowed, else reading
inline constexpr SInt8 fsRdPerm = 1;
inline constexpr SInt8 fsWrPerm = 2;
inline constexpr SInt8 fsRdWrPerm = 3;

/// Where a position counts from.
inline constexpr UInt16 fsAtMark = 0;
inline constexpr UInt16 fsFromStart = 1;
inline constexpr UInt16 fsFromLEOF = 2;
inline constexpr UInt16 fsFromMark = 3;

/// Opens a fork; `fork_name` of length 0 is the data fork, other names give bdNamErr. `permission`
/// as above. `*fork` is 0 on failure. fnfErr for a file that has gone, permErr or afpAccessDenied
/// for one that must not be opened so, tmfoErr with too many open forks, paramErr for an unknown
/// permission.
OSErr FSOpenFork(const FSRef* reference, UInt32 fork_name_length, const UniChar* fork_name,
                 SInt8 permission, FSIORefNum* fork);
/// Writes `count` bytes at `offset` counted from what `position_mode` says; `*actual` (may be null)
/// becomes the number written, and the mark stands behind them. A full disk gives dskFulErr, a fork
/// opened for reading wrPermErr, a position in front of the start posErr, a number that names no
/// fork rfNumErr.
OSErr FSWriteFork(FSIORefNum fork, UInt16 position_mode, SInt64 offset, ByteCount count,
                  const void* buffer, ByteCount* actual);
/// Has the system put the fork's bytes on the disk.
OSErr FSFlushFork(FSIORefNum fork);
OSErr FSCloseFork(FSIORefNum fork);
