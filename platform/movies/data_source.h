/// Open files that media data is read from: each file is opened once and shared.
#pragma once

#include <filesystem>
#include <memory>
#include <span>

#include "base_types.h"

namespace quillmere::movies {

/// A file opened for reading. It stays readable when its name goes away or is taken by another
/// file.
class DataSource {
 public:
  virtual ~DataSource() = default;
  /// Fills `bytes` from `offset`; eofErr when the file ends before, ioErr on a read error.
  virtual OSStatus Read(UInt64 offset, std::span<UInt8> bytes) const = 0;
  /// Size in bytes when it was opened.
  virtual UInt64 size() const = 0;
  /// The descriptor, for copying between files; it stays the source's.
  virtual int descriptor() const = 0;
  /// Two sources with one identity hold the same bytes: device, inode, size, modification time.
  struct Identity {
    UInt64 device;
    UInt64 inode;
    UInt64 size;
    SInt64 modified_seconds;
    SInt64 modified_nanoseconds;
    friend bool operator==(const Identity&, const Identity&) = default;
  };
  virtual const Identity& identity() const = 0;
};

/// Fills `bytes` from `offset` of an open file; eofErr when it ends before, else a status of the
/// files family. The file's own position does not move.
OSStatus ReadFully(int file_descriptor, UInt64 offset, std::span<UInt8> bytes);

/// Opens a regular file; a file that is open already is shared as long as its size and modification
/// time are the same. May be called from any thread. Anything else, or one that can't be read,
/// gives a status of the files family.
OSStatus OpenDataSource(const std::filesystem::path& path, std::shared_ptr<DataSource>* source);

}  // namespace quillmere::movies
