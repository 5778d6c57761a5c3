/// A file that appears under its final name only when it is complete.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <span>

#include "base_types.h"
#include "flatten_plan.h"
#include "read_ahead.h"

namespace quillmere::movies {

/// Called with the bytes written so far; a status other than 0 ends the copying.
using CopyProgress = std::function<OSStatus(UInt64 bytes_written)>;

/// The file has no name while it is written, where the file system can do that, so that whatever
/// ends the program leaves nothing; elsewhere it has a hidden temporary one, ".NAME.XXXXXX.part",
/// which goes away when the file is given up.
class OutputFile {
 public:
  OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  /// Opens a new file in the folder of its final name. A status of the files family on failure.
  OSStatus Create(const std::filesystem::path& final_path);
  /// Appends bytes, which may stay in a buffer until Publish; dskFulErr when the disk is full.
  OSStatus Write(std::span<const UInt8> bytes);
  /// Appends stretches of these files: large ones within the system, small ones gathered in a
  /// buffer and, where they follow each other at some distance, read together; holes of a source
  /// stay holes where the run is large. `piece` bytes at most, but for the buffer's rest, go by
  /// between two calls of `progress`. eofErr when a source has become shorter.
  OSStatus Copy(std::span<const std::shared_ptr<DataSource>> sources, const RunWalk& runs,
                UInt64 piece, const CopyProgress& progress);
  /// Gives the complete file its name; dupFNErr if a file has that name by now.
  OSStatus Publish();

 private:
  OSStatus CreateNamed();
  OSStatus CopyLarge(const DataSource& source, UInt64 offset, UInt64 size, bool has_holes);
  OSStatus SkipHole(UInt64 size);
  OSStatus CopyWithinSystem(const DataSource& source, UInt64 offset, UInt64 size, UInt64* copied);
  OSStatus CopyThroughBuffer(const DataSource& source, UInt64 offset, UInt64 size);
  OSStatus WriteOut(std::span<const UInt8> bytes);
  OSStatus FlushBuffer();

  int descriptor_ = -1;
  std::filesystem::path final_path_;
  std::filesystem::path temporary_path_;  ///< empty while the file has no name
  std::unique_ptr<UInt8[]> buffer_;
  std::size_t buffered_ = 0;
  ReadAhead read_ahead_;
  bool system_can_copy_ = true;
  bool ends_in_hole_ = false;  ///< the file is shorter than its position
};

}  // namespace quillmere::movies
