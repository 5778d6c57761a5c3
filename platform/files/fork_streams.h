/// The bytes behind an open fork: those of a file's data, or an extra fork held in memory.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>

#include "base_types.h"
#include "descriptor.h"
#include "extra_forks.h"
#include "file_references.h"
#include "object_place.h"
#include "place_table.h"

namespace quillmere::files {

/// Bytes of an extra fork that are held in memory while the fork is open.
inline constexpr UInt64 kMostExtraForkBytes = UInt64{256} << 20;

/// One caller at a time. Read and Write do what the system's pread and pwrite do.
class ForkStream {
 public:
  ForkStream() = default;
  ForkStream(const ForkStream&) = delete;
  ForkStream& operator=(const ForkStream&) = delete;
  virtual ~ForkStream() = default;

  virtual ssize_t Read(void* buffer, std::size_t count, SInt64 position) = 0;
  virtual ssize_t Write(const void* bytes, std::size_t count, SInt64 position) = 0;
  virtual OSErr Size(SInt64* size) = 0;
  virtual OSErr SetSize(SInt64 size) = 0;
  /// After writes; keeps them if that is cheap.
  virtual OSErr Settle() { return noErr; }
  /// Brings all that was written to the disk.
  virtual OSErr Flush() = 0;
  /// Before the end, which releases the fork in any case.
  virtual OSErr Close() { return noErr; }
};

/// An open fork's stream and what it was opened of.
struct StreamOpening {
  std::unique_ptr<ForkStream> stream;
  ObjectIdentity file{};
  bool is_writable = false;
};
/// Opens a fork of a file by its name in UTF-8; statuses as FSOpenFork gives them.
OSErr OpenStream(const FSRef& reference, const std::string& name, SInt8 permission,
                 StreamOpening* opening);

}  // namespace quillmere::files
