/// Forks: the bytes of a file, opened, read and written at a position, flushed and closed.
///
/// A file has a data fork, whose name is empty, a resource fork, and any number of others by name.
/// The first two are always there; the resource fork of most files has no bytes. An open fork is
/// named by a small positive number, 0 meaning none. Any thread may call; calls for the same fork
/// follow one another.
///
/// A fork is open for writing once at a time, in this process and, by an advisory lock on the file,
/// among those that use this layer; for reading any number of times. Readers in the process see
/// what the writer has written. A fork that is not the data fork (extra_forks.h) is held in memory
/// while it is open, 256 MiB at most. It goes to the disk at once while it is small, and at
/// FSFlushFork and FSCloseFork, each time in one step that leaves the old bytes on a failure.
#pragma once

#include <span>
#include <vector>

#include "base_types.h"
#include "file_references.h"
#include "volumes.h"

using FSIORefNum = SInt16;

/// Statuses of forks.
inline constexpr OSErr fnOpnErr = -38;
inline constexpr OSErr rfNumErr = -51;
inline constexpr OSErr wrPermErr = -61;
inline constexpr OSErr errFSBadForkName = -1402;
inline constexpr OSErr errFSForkNotFound = -1409;
inline constexpr OSErr errFSForkExists = -1421;

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

/// Opens a fork; `fork_name` of length 0 is the data fork. `permission` as above. `*fork` is 0 on
/// failure. fnfErr for a file that has gone, errFSForkNotFound for a fork that is not there,
/// errFSBadForkName for a name that none can have (over 100 bytes of UTF-8), opWrErr for one that
/// is open for writing already, fLckdErr for writing a locked file, permErr for one that the
/// user may not write to, afpAccessDenied for one that may not be read or reached, ioErr for a
/// damaged sidecar, tmfoErr with too many open forks, paramErr for an unknown permission.
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
/// Closes a fork in any case; the status tells whether all that was written is kept.
OSErr FSCloseFork(FSIORefNum fork);

/// The names of the data fork, which is empty, and of the resource fork.
OSErr FSGetDataForkName(HFSUniStr255* name);
OSErr FSGetResourceForkName(HFSUniStr255* name);
/// Makes an empty fork; errFSForkExists if it is there, as the data and resource forks always are.
OSErr FSCreateFork(const FSRef* reference, UInt32 fork_name_length, const UniChar* fork_name);
/// Takes a fork away; the data and resource forks lose their bytes. errFSForkNotFound if it is not
/// there, opWrErr if it is open for writing.
OSErr FSDeleteFork(const FSRef* reference, UInt32 fork_name_length, const UniChar* fork_name);

/// A place in a walk over forks; all zero at its start.
struct CatPositionRec {
  SInt32 initialize;
  SInt16 priv[6];
};
/// The next fork of a file: the data fork, the resource fork if it has bytes, then the others by
/// name. Name, size and bytes on the disk may be null. errFSNoMoreItems behind the last.
OSErr FSIterateForks(const FSRef* reference, CatPositionRec* position, HFSUniStr255* name,
                     SInt64* size, UInt64* physical_size);

/// What is known of an open fork.
struct FSForkCBInfo {
  FSVolumeRefNum volume;
  UInt64 nodeID;           ///< of its file in the catalogue
  UInt64 currentPosition;  ///< the mark
  UInt64 logicalEOF;       ///< size in bytes
  bool isWritable;
};
/// Tells of an open fork; each output may be null. `volume` and `iterator` belong to walks over all
/// open forks, which there are none of: paramErr with `iterator` or without a fork. fnfErr if the
/// file has gone.
OSErr FSGetForkCBInfo(FSIORefNum fork, FSVolumeRefNum volume, SInt16* iterator, SInt16* actual_fork,
                      FSForkCBInfo* info, FSRef* reference, HFSUniStr255* name);

namespace quillmere::files {

struct ObjectIdentity;

/// The node flags of the catalogue that tell which forks of a file this process has open.
UInt16 OpenForksOf(const ObjectIdentity& file);
/// Makes bytes the whole content of a fork that is open for writing, on the disk as well. For a
/// fork that is not the data fork a failure leaves the old content.
OSErr ReplaceForkContent(FSIORefNum fork, std::span<const UInt8> bytes);
/// Reads all of an open fork; memFullErr for one of more than 256 MiB.
OSErr ReadForkContent(FSIORefNum fork, std::vector<UInt8>* bytes);
/// The sizes of a file's resource fork: its bytes, and what they take on the disk.
OSStatus SizesOfResourceFork(const FSRef& reference, UInt64* logical, UInt64* physical);

}  // namespace quillmere::files
