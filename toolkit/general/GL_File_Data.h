/// The bytes of forks: reading, writing, cutting and replacing them.
///
/// A fork is an open one, or, where an operation says so, `fork` 0 stands for one of `file` that
/// the operation opens and closes again. `file` may be null where a fork is given. Fork names are
/// UTF-16, length 0 for the data fork. Position modes are those of FSWriteFork. Offsets and sizes
/// are in bytes. A failure gives the status of the failed call.
#pragma once

#include "base_types.h"
#include "forks.h"

/// Cuts `size` bytes out of a file's data fork; the bytes behind them move up. These have to fit
/// into memory; GL_BlockMoveDataWithinFile is for forks of any size. paramErr, nothing being
/// changed, if the fork has no `size` bytes there.
SInt32 GL_RemoveDataFromFile(const FSRef* file, UInt16 position_mode, SInt64 offset, SInt64 size);
/// The buffer becomes the whole content of a data fork; `fork` above 0 is an open one.
SInt32 GL_ReplaceDataInFile(FSIORefNum fork, const FSRef* file, UInt32 size, const void* buffer);
/// The data fork has no bytes then.
SInt32 GL_RemoveAllDataFromFile(const FSRef* file);
/// Cuts a data fork off at `end` bytes, or lengthens it with zeros; `fork` above 0 is an open one.
SInt32 GL_SetEOF(FSIORefNum fork, const FSRef* file, SInt64 end);
/// Writes `size` zeros from `offset` on, up to `chunk_size` at a time; paramErr for a chunk of 0
/// bytes or a size below 0.
SInt32 GL_ClearFile(FSIORefNum fork, SInt64 offset, SInt64 size, UInt32 chunk_size);

/// Reads `*count` bytes, or as many as there are behind the position; a count of 0 means all of
/// them, 2^31 - 1 at most. They go to `*buffer` + `buffer_offset`. A null `*buffer` is allocated
/// with room for both, and the caller disposes of it with GL_DisposePtr; it stays null on a
/// failure. `*count` takes how many were read. paramErr for `fork` 0 without a file.
SInt32 GL_ReadDataFromFork(FSIORefNum fork, const FSRef* file, UInt32 fork_name_length,
                           const UniChar* fork_name, void** buffer, UInt32 buffer_offset,
                           UInt16 position_mode, SInt64 offset, UInt32* count);
/// Reads a whole data fork, 2^31 - 1 bytes at most; `size` may be null.
SInt32 GL_ReadAllDataFromDataFork(FSIORefNum fork, const FSRef* file, void** buffer, UInt32* size);
/// Writes `*count` bytes from `buffer` + `buffer_offset`; `*count` takes how many were written.
SInt32 GL_WriteDataToFork(FSIORefNum fork, const FSRef* file, UInt32 fork_name_length,
                          const UniChar* fork_name, const void* buffer, UInt32 buffer_offset,
                          UInt16 position_mode, SInt64 offset, UInt32* count);
/// One transfer that does not go through the system's cache of files, if that can be.
SInt32 GL_WriteFileNoCache(FSIORefNum fork, UInt16 position_mode, SInt64 offset, UInt32 count,
                           const void* buffer, Boolean force_read);
SInt32 GL_ReadFileNoCache(FSIORefNum fork, UInt16 position_mode, SInt64 offset, UInt32 count,
                          void* buffer);

/// Whether the forks of a file are open for writing elsewhere; each output may be null. The data
/// fork comes first, and a failure there leaves out the other.
SInt32 GL_IsFileOpenForWriting(const FSRef* file, Boolean* resource_fork_open,
                               Boolean* data_fork_open);
/// Makes the forks and the settable information of `destination`, a file that is there, those of
/// `source`. One block of memory holds each fork; GL_NotSmallFileErr for a fork of 4 GiB or more.
SInt32 GL_CopySmallFile(const FSRef* source, const FSRef* destination);
/// For developers: joins the data forks of two files that the user chooses into a new file
/// "MyTestMovie" beside the first, as its resource fork and its data fork.
SInt32 GL_RezWack();
