/// Memory for frames, taken from a pool and given back to it.
///
/// The first touch of fresh pages costs as much as decoding a picture into them, so blocks are kept
/// and handed out again. What the pool keeps is bounded; larger blocks go back to the system at
/// once.
#pragma once

#include <cstddef>
#include <utility>

#include "base_types.h"

namespace quillmere::imaging {

/// Owns one block, aligned to at least 64 bytes. Its content is undefined when it is new.
class FrameMemory {
 public:
  FrameMemory() = default;
  FrameMemory(FrameMemory&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)), capacity_(std::exchange(other.capacity_, 0)) {}
  FrameMemory& operator=(FrameMemory&& other) noexcept;
  FrameMemory(const FrameMemory&) = delete;
  FrameMemory& operator=(const FrameMemory&) = delete;
  ~FrameMemory();

  /// A block of at least `size` bytes; an empty one when there is no memory. Any thread may call
  /// it.
  static FrameMemory Acquire(std::size_t size);

  UInt8* data() const { return data_; }
  explicit operator bool() const { return data_ != nullptr; }

 private:
  FrameMemory(UInt8* data, std::size_t capacity) : data_(data), capacity_(capacity) {}

  UInt8* data_ = nullptr;
  std::size_t capacity_ = 0;
};

/// Gives everything that the pool keeps back to the system.
void ReleaseUnusedFrames();

}  // namespace quillmere::imaging
