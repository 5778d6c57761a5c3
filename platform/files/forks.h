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

/// Flags beside a position mode: the bytes will not be needed again soon; a read goes to the disk
/// itself. The system's cache serves both well, so they change nothing here.
inline constexpr UInt16 noCacheMask = 0x20;
inline constexpr UInt16 forceReadMask = 0x40;

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
/// Reads `count` bytes in the same way; `*actual` (may be null) becomes the number read. eofErr if
/// the fork ends before that, with what there is.
OSErr FSReadFork(FSIORefNum fork, UInt16 position_mode, SInt64 offset, ByteCount count,
                 void* buffer, ByteCount* actual);

/// A transfer of PBReadForkSync and PBWriteForkSync.
struct FSForkIOParam {
  FSIORefNum forkRefNum;
  UInt16 positionMode;
  SInt64 positionOffset;
  ByteCount requestCount;
  void* buffer;
  ByteCount actualCount;  ///< what was transferred; given out
};
/// FSReadFork and FSWriteFork by a record.
OSErr PBReadForkSync(FSForkIOParam* transfer);
OSErr PBWriteForkSync(FSForkIOParam* transfer);

/// The number of bytes in a fork.
OSErr FSGetForkSize(FSIORefNum fork, SInt64* size);
/// Cuts a fork off at a position, or lengthens it with zeros to there; a mark behind the end comes
/// to stand at the end. posErr for a position in front of the start, wrPermErr for a fork opened
/// for reading, dskFulErr without room.
OSErr FSSetForkSize(FSIORefNum fork, UInt16 position_mode, SInt64 offset);
/// The mark, from the start.
OSErr FSGetForkPosition(FSIORefNum fork, SInt64* position);
/// Sets the mark. eofErr for a position behind the end, where the mark then stands; posErr for one
/// in front of the start.
OSErr FSSetForkPosition(FSIORefNum fork, UInt16 position_mode, SInt64 offset);
/// Has the system put the fork's bytes on the disk.
OSErr FSFlushFork(FSIORefNum fork);
OSErr FSCloseFork(FSIORefNum fork);
