#include "GL_File_Data.h"

#include <algorithm>
#include <utility>

#include "file_data_private.h"

namespace {

using quillmere::Block;
using quillmere::ReadAt;
using quillmere::UsedFork;
using quillmere::WriteAt;

constexpr UInt32 kMostAtOnce = 0x7FFFFFFF;

/// Sets a fork's mark and tells where it is then, and how large the fork is.
SInt32 Locate(FSIORefNum fork, UInt16 position_mode, SInt64 offset, SInt64* size,
              SInt64* position) {
  SInt32 status = FSGetForkSize(fork, size);
  if (status == noErr) status = FSSetForkPosition(fork, position_mode, offset);
  if (status == noErr) status = FSGetForkPosition(fork, position);
  return status;
}

/// The number of bytes to read where `available` are left.
UInt32 CountToRead(UInt32 count, SInt64 available) {
  available = std::max<SInt64>(available, 0);
  if (available > kMostAtOnce) return count == 0 ? kMostAtOnce : count;
  if (count == 0 || count > available) return static_cast<UInt32>(available);
  return count;
}

}  // namespace

SInt32 GL_RemoveDataFromFile(const FSRef* file, UInt16 position_mode, SInt64 offset, SInt64 size) {
  if (size < 0) return paramErr;
  UsedFork fork;
  SInt32 status = fork.OpenDataFork(file, fsRdWrPerm);
  SInt64 fork_size = 0;
  SInt64 position = 0;
  if (status == noErr) {
    status = Locate(fork.number(), position_mode, offset, &fork_size, &position);
  }
  if (status != noErr) return status;
  if (position > fork_size || size > fork_size - position) return paramErr;
  const SInt64 tail = fork_size - position - size;
  Block buffer;
  if (buffer.Allocate(tail) != noErr) return memFullErr;
  if (tail > 0) status = ReadAt(fork.number(), position + size, tail, buffer.get());
  if (status == noErr && tail > 0) status = WriteAt(fork.number(), position, tail, buffer.get());
  if (status == noErr) status = FSSetForkSize(fork.number(), fsFromStart, position + tail);
  return status;
}

SInt32 GL_ReplaceDataInFile(FSIORefNum fork, const FSRef* file, UInt32 size, const void* buffer) {
  UsedFork used;
  SInt32 status = used.Use(std::max(fork, FSIORefNum{0}), file, 0, nullptr, fsRdWrPerm);
  if (status == noErr && size > 0) status = WriteAt(used.number(), 0, size, buffer);
  if (status == noErr) status = FSSetForkSize(used.number(), fsFromStart, size);
  return status;
}

SInt32 GL_RemoveAllDataFromFile(const FSRef* file) {
  return GL_ReplaceDataInFile(0, file, 0, nullptr);
}

SInt32 GL_SetEOF(FSIORefNum fork, const FSRef* file, SInt64 end) {
  UsedFork used;
  const SInt32 status = used.Use(std::max(fork, FSIORefNum{0}), file, 0, nullptr, fsRdWrPerm);
  return status == noErr ? FSSetForkSize(used.number(), fsFromStart, end) : status;
}

SInt32 GL_ClearFile(FSIORefNum fork, SInt64 offset, SInt64 size, UInt32 chunk_size) {
  SInt64 end = 0;
  if (size < 0 || chunk_size == 0 || __builtin_add_overflow(offset, size, &end)) return paramErr;
  if (size == 0) return noErr;
  Block zeros;
  SInt32 status = zeros.AllocateZeros(std::min<SInt64>(chunk_size, size));
  for (SInt64 count = 0; status == noErr && offset < end; offset += count) {
    count = std::min<SInt64>(chunk_size, end - offset);
    status = WriteAt(fork, offset, count, zeros.get());
  }
  return status;
}

SInt32 GL_ReadDataFromFork(FSIORefNum fork, const FSRef* file, UInt32 fork_name_length,
                           const UniChar* fork_name, void** buffer, UInt32 buffer_offset,
                           UInt16 position_mode, SInt64 offset, UInt32* count) {
  if (buffer == nullptr || count == nullptr) return paramErr;
  UsedFork used;
  SInt32 status = used.Use(fork, file, fork_name_length, fork_name, fsRdPerm);
  SInt64 size = 0;
  SInt64 position = 0;
  if (status == noErr) status = Locate(used.number(), position_mode, offset, &size, &position);
  if (status != noErr) return status;
  const UInt32 wanted = CountToRead(*count, size - position);
  Block allocated;
  void* target = *buffer;
  if (target == nullptr) {
    status = allocated.Allocate(Size{wanted} + buffer_offset);
    if (status != noErr) return status;
    target = allocated.get();
  }
  ByteCount actual = 0;
  if (wanted > 0) {
    status = FSReadFork(used.number(), fsFromStart, position, wanted,
                        static_cast<char*>(target) + buffer_offset, &actual);
  }
  *count = static_cast<UInt32>(actual);
  if (status == noErr && *buffer == nullptr) std::swap(*buffer, *allocated.out());
  return status;
}

SInt32 GL_ReadAllDataFromDataFork(FSIORefNum fork, const FSRef* file, void** buffer, UInt32* size) {
  UInt32 count = 0;
  const SInt32 status =
      GL_ReadDataFromFork(fork, file, 0, nullptr, buffer, 0, fsFromStart, 0, &count);
  if (size != nullptr) *size = count;
  return status;
}

SInt32 GL_WriteDataToFork(FSIORefNum fork, const FSRef* file, UInt32 fork_name_length,
                          const UniChar* fork_name, const void* buffer, UInt32 buffer_offset,
                          UInt16 position_mode, SInt64 offset, UInt32* count) {
  if (buffer == nullptr || count == nullptr) return paramErr;
  UsedFork used;
  SInt32 status = used.Use(fork, file, fork_name_length, fork_name, fsRdWrPerm);
  if (status != noErr) return status;
  ByteCount actual = 0;
  status = FSWriteFork(used.number(), position_mode, offset, *count,
                       static_cast<const char*>(buffer) + buffer_offset, &actual);
  *count = static_cast<UInt32>(actual);
  return status;
}

SInt32 GL_WriteFileNoCache(FSIORefNum fork, UInt16 position_mode, SInt64 offset, UInt32 count,
                           const void* buffer, Boolean force_read) {
  const UInt16 flags = force_read ? noCacheMask | forceReadMask : noCacheMask;
  // The record serves reads as well; a write leaves the buffer as it is.
  FSForkIOParam transfer = {
      fork, static_cast<UInt16>(position_mode | flags), offset, count, const_cast<void*>(buffer),
      0};
  return PBWriteForkSync(&transfer);
}

SInt32 GL_ReadFileNoCache(FSIORefNum fork, UInt16 position_mode, SInt64 offset, UInt32 count,
                          void* buffer) {
  FSForkIOParam transfer = {
      fork, static_cast<UInt16>(position_mode | noCacheMask), offset, count, buffer, 0};
  return PBReadForkSync(&transfer);
}
