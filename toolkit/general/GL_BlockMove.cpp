#include "GL_BlockMove.h"

#include <algorithm>
#include <cstring>

#include "GL_Memory.h"

namespace {

constexpr SInt64 kBlock = 2048;
constexpr SInt64 kSmallestBuffer = 4096;
constexpr SInt64 kLargestBuffer = 0x40000000;

constexpr SInt64 RoundedDown(SInt64 count) {
  return count - count % kBlock;
}

SInt64 BufferSize(SInt64 size, UInt32 max_buffer_size) {
  const SInt64 rounded = size > kLargestBuffer ? kLargestBuffer : RoundedDown(size + kBlock - 1);
  return std::clamp(std::min(rounded, RoundedDown(max_buffer_size)), kSmallestBuffer,
                    kLargestBuffer);
}

/// One move.
class Move {
 public:
  Move(FSIORefNum fork, bool force_read, SInt64 size, SInt64 buffer_size,
       GL_MoveProgressProc progress, void* ref_con)
      : fork_(fork),
        io_mode_(static_cast<UInt16>(fsFromStart | noCacheMask | (force_read ? forceReadMask : 0))),
        size_(size),
        buffer_size_(buffer_size),
        remaining_(size),
        progress_(progress),
        ref_con_(ref_con) {}
  Move(const Move&) = delete;
  Move& operator=(const Move&) = delete;
  ~Move() { GL_DisposePtr(&buffer_); }

  SInt32 Start() {
    const SInt32 status = GL_NewPtr(buffer_size_, &buffer_);
    return status == noErr ? Report() : status;
  }
  SInt32 GoUp(SInt64 source, SInt64 destination);
  SInt32 GoDown(SInt64 source, SInt64 destination);

 private:
  char* At(SInt64 place) { return static_cast<char*>(buffer_) + place; }

  SInt32 Report() {
    if (progress_ == nullptr) return noErr;
    const double done = static_cast<double>(size_ - remaining_) / static_cast<double>(size_);
    return progress_(static_cast<Float32>(done), ref_con_);
  }

  SInt32 Read(SInt64 position, SInt64 count, SInt64 place) {
    if (count == 0) return noErr;
    return FSReadFork(fork_, io_mode_, position, static_cast<ByteCount>(count), At(place), nullptr);
  }

  SInt32 WriteRight(SInt64* write_end, SInt64 count, SInt64* data_start) {
    return GL_WritePartOfBufferFromRight(fork_, io_mode_, buffer_size_, At(buffer_size_), write_end,
                                         count, &remaining_, data_start);
  }
  SInt32 WriteLeft(SInt64* write_position, SInt64 count, SInt64* held) {
    return GL_WritePartOfBufferFromLeft(fork_, io_mode_, buffer_, write_position, count,
                                        &remaining_, held);
  }

  /// All bytes lie in one block, in part: one read and one write.
  SInt32 MoveAtOnce(SInt64 source, SInt64 destination) {
    SInt64 held = size_;
    const SInt32 status = Read(source, size_, 0);
    return status != noErr ? status : WriteLeft(&destination, size_, &held);
  }

  FSIORefNum fork_;
  UInt16 io_mode_;
  SInt64 size_;
  SInt64 buffer_size_;
  SInt64 remaining_;  ///< bytes not yet written
  GL_MoveProgressProc progress_;
  void* ref_con_;
  void* buffer_ = nullptr;
};

/// To a place above: from the end, the bytes held at the right end of the buffer.
SInt32 Move::GoUp(SInt64 source, SInt64 destination) {
  const SInt64 odd = (source + size_) % kBlock;
  if (size_ <= odd) return MoveAtOnce(source, destination);
  SInt64 to_read = size_ - odd;
  SInt64 read_position = source + to_read;
  SInt64 write_end = destination + size_;
  SInt64 data_start = buffer_size_ - odd;
  SInt32 status = Read(read_position, odd, data_start);
  for (SInt64 chunk = 1; status == noErr && chunk != 0;) {
    chunk = RoundedDown(std::min(data_start, to_read));
    read_position -= chunk;
    to_read -= chunk;
    data_start -= chunk;
    status = Read(read_position, chunk, data_start);
    const SInt64 lead = write_end % kBlock;
    if (lead > remaining_) break;
    if (status == noErr && lead != 0 && lead <= buffer_size_ - data_start) {
      status = WriteRight(&write_end, lead, &data_start);
    }
    const SInt64 whole = RoundedDown(buffer_size_ - data_start);
    if (status != noErr || whole == 0) continue;
    status = WriteRight(&write_end, whole, &data_start);
    if (status == noErr) status = Report();
  }
  if (status == noErr && to_read != 0) {
    data_start -= to_read;
    status = Read(read_position - to_read, to_read, data_start);
  }
  if (status == noErr && remaining_ != 0) status = WriteRight(&write_end, remaining_, &data_start);
  return status;
}

/// To a place below: from the start, the bytes held at the left end of the buffer.
SInt32 Move::GoDown(SInt64 source, SInt64 destination) {
  const SInt64 odd = (kBlock - source % kBlock) % kBlock;
  if (size_ <= odd) return MoveAtOnce(source, destination);
  SInt64 to_read = size_ - odd;
  SInt64 read_position = source + odd;
  SInt64 write_position = destination;
  SInt64 held = odd;
  SInt32 status = Read(source, odd, 0);
  for (SInt64 chunk = 1; status == noErr && chunk != 0;) {
    chunk = RoundedDown(std::min(buffer_size_ - held, to_read));
    status = Read(read_position, chunk, held);
    read_position += chunk;
    to_read -= chunk;
    held += chunk;
    const SInt64 lead = (kBlock - write_position % kBlock) % kBlock;
    if (lead > remaining_) break;
    if (status == noErr && lead != 0 && lead <= held) {
      status = WriteLeft(&write_position, lead, &held);
    }
    const SInt64 whole = RoundedDown(held);
    if (status != noErr || whole == 0) continue;
    status = WriteLeft(&write_position, whole, &held);
    if (status == noErr) status = Report();
  }
  if (status == noErr && to_read != 0) {
    status = Read(read_position, to_read, held);
    held += to_read;
  }
  if (status == noErr && remaining_ != 0) status = WriteLeft(&write_position, remaining_, &held);
  return status;
}

}  // namespace

SInt32 GL_BlockMoveDataWithinFile(FSIORefNum fork, SInt64 source, SInt64 destination, SInt64 size,
                                  UInt32 max_buffer_size, Boolean force_read,
                                  GL_MoveProgressProc progress, void* refCon) {
  if (destination < 0) return posErr;
  if (size < 0) return paramErr;
  if (size == 0) return noErr;
  SInt64 end = 0;
  if (source < 0 || __builtin_add_overflow(std::max(source, destination), size, &end)) {
    return posErr;
  }
  Move move(fork, force_read != 0, size, BufferSize(size, max_buffer_size), progress, refCon);
  const SInt32 status = move.Start();
  if (status != noErr || source == destination) return status;
  return destination > source ? move.GoUp(source, destination) : move.GoDown(source, destination);
}

SInt32 GL_WritePartOfBufferFromLeft(FSIORefNum fork, UInt16 io_mode, void* buffer,
                                    SInt64* write_position, SInt64 count, SInt64* remaining,
                                    SInt64* held) {
  auto* const bytes = static_cast<char*>(buffer);
  const SInt32 status =
      FSWriteFork(fork, io_mode, *write_position, static_cast<ByteCount>(count), bytes, nullptr);
  if (status != noErr) return status;
  *write_position += count;
  *remaining -= count;
  *held -= count;
  std::memmove(bytes, bytes + count, static_cast<std::size_t>(*held));
  return noErr;
}

SInt32 GL_WritePartOfBufferFromRight(FSIORefNum fork, UInt16 io_mode, SInt64 buffer_size,
                                     void* buffer_end, SInt64* write_end, SInt64 count,
                                     SInt64* remaining, SInt64* data_start) {
  auto* const end = static_cast<char*>(buffer_end);
  const SInt32 status = FSWriteFork(fork, io_mode, *write_end - count,
                                    static_cast<ByteCount>(count), end - count, nullptr);
  if (status != noErr) return status;
  *write_end -= count;
  *remaining -= count;
  const SInt64 left = buffer_size - *data_start - count;
  std::memmove(end - left, end - count - left, static_cast<std::size_t>(left));
  *data_start = buffer_size - left;
  return noErr;
}
