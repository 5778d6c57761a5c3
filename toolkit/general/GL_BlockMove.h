/// Moving bytes within a fork, the two places overlapping as they may.
///
/// The move goes through one buffer, from the end of the bytes when they go up and from their start
/// when they go down, so that nothing is written over before it is read. Behind the first transfers
/// all reads and writes start at multiples of 2048 bytes and are multiples of them long, until the
/// rest is less than that. The buffer takes up the difference of the two places within a block.
///
/// A failing transfer, or a progress procedure that says so, ends the move with that status; a part
/// of the bytes is moved then, and the place that they came from may be written over.
#pragma once

#include "base_types.h"
#include "forks.h"

/// Told how much of a move is done, from 0 to 1; any status but 0 ends the move.
using GL_MoveProgressProc = SInt32 (*)(Float32 fraction, void* refCon);

/// Moves `size` bytes of an open fork from `source` to `destination`, positions from the start; a
/// fork that is too short grows. The buffer has up to `max_buffer_size` bytes, 4096 at least. With
/// `force_read` transfers go to the disk itself if the system can do that. `progress` (may be null)
/// is called with 0 first and then after each stretch of whole blocks, whichever way the move goes.
/// posErr for a destination in front of the start or a place beyond what a position can be,
/// paramErr for a size below 0, -108 without memory for the buffer; the forks' statuses.
SInt32 GL_BlockMoveDataWithinFile(FSIORefNum fork, SInt64 source, SInt64 destination, SInt64 size,
                                  UInt32 max_buffer_size, Boolean force_read,
                                  GL_MoveProgressProc progress, void* refCon);

/// Writes the first `count` of `*held` bytes at the start of a buffer to `*write_position`, which
/// goes up; the rest moves to the buffer's start. `*remaining`, the bytes of the whole move still
/// to be written, goes down by `count`. `io_mode` is that of FSWriteFork.
SInt32 GL_WritePartOfBufferFromLeft(FSIORefNum fork, UInt16 io_mode, void* buffer,
                                    SInt64* write_position, SInt64 count, SInt64* remaining,
                                    SInt64* held);
/// The mirror image: the bytes held go from `*data_start` to `buffer_end`, the end of a buffer of
/// `buffer_size` bytes; the last `count` of them are written so that they end at `*write_end`,
/// which goes down; the rest moves to the buffer's end.
SInt32 GL_WritePartOfBufferFromRight(FSIORefNum fork, UInt16 io_mode, SInt64 buffer_size,
                                     void* buffer_end, SInt64* write_end, SInt64 count,
                                     SInt64* remaining, SInt64* data_start);
