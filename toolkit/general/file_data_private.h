/// What the operations on the bytes of forks share.
#pragma once

#include "GL_File.h"
#include "GL_File_Creation.h"
#include "GL_Memory.h"
#include "forks.h"

namespace quillmere {

/// A fork that an operation was given, or opened itself and closes.
class UsedFork {
 public:
  UsedFork() = default;
  UsedFork(const UsedFork&) = delete;
  UsedFork& operator=(const UsedFork&) = delete;
  ~UsedFork() {
    if (is_own_) FSCloseFork(number_);
  }

  /// Uses `fork` unless it is 0; else opens one of `file`.
  SInt32 Use(FSIORefNum fork, const FSRef* file, UInt32 name_length, const UniChar* name,
             SInt8 permission) {
    number_ = fork;
    if (fork != 0) return noErr;
    if (file == nullptr) return paramErr;
    return Opened(FSOpenFork(file, name_length, name, permission, &number_));
  }
  SInt32 OpenDataFork(const FSRef* file, SInt8 permission) {
    return Opened(GL_OpenDataFork(file, permission, &number_));
  }
  SInt32 OpenResourceFork(const FSRef* file, SInt8 permission) {
    return Opened(GL_OpenResourceFork(file, permission, &number_));
  }
  FSIORefNum number() const { return number_; }

 private:
  SInt32 Opened(SInt32 status) {
    is_own_ = status == noErr;
    return status;
  }

  FSIORefNum number_ = 0;
  bool is_own_ = false;
};

/// A block of memory.
class Block {
 public:
  Block() = default;
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() { GL_DisposePtr(&start_); }
  SInt32 Allocate(Size size) { return GL_NewPtr(size, &start_); }
  SInt32 AllocateZeros(Size size) { return GL_NewPtrClear(size, &start_); }
  void* get() const { return start_; }
  void** out() { return &start_; }

 private:
  void* start_ = nullptr;
};

inline SInt32 ReadAt(FSIORefNum fork, SInt64 position, SInt64 count, void* buffer) {
  return FSReadFork(fork, fsFromStart, position, static_cast<ByteCount>(count), buffer, nullptr);
}

inline SInt32 WriteAt(FSIORefNum fork, SInt64 position, SInt64 count, const void* buffer) {
  return FSWriteFork(fork, fsFromStart, position, static_cast<ByteCount>(count), buffer, nullptr);
}

}  // namespace quillmere
