#include "frame_memory.h"

#include <sys/mman.h>

#include <cstdlib>
#include <mutex>
#include <vector>

namespace quillmere::imaging {
namespace {

/// A frame, the bytes of its file, and a mask at a usual camera's size fit.
constexpr std::size_t kKeptBytes = 128U << 20;
constexpr std::size_t kKeptBlocks = 8;
constexpr std::size_t kHugePage = 2U << 20;
constexpr std::size_t kSmallAlignment = 64;

struct Block {
  UInt8* data;
  std::size_t capacity;
};

class Pool {
 public:
  /// The smallest kept block that holds `size` bytes and is not more than twice that large.
  Block Take(std::size_t size) {
    const std::lock_guard lock(mutex_);
    auto best = blocks_.end();
    for (auto block = blocks_.begin(); block != blocks_.end(); ++block) {
      if (block->capacity < size || block->capacity / 2 > size) continue;
      if (best == blocks_.end() || block->capacity < best->capacity) best = block;
    }
    if (best == blocks_.end()) return {nullptr, 0};
    const Block taken = *best;
    blocks_.erase(best);
    bytes_ -= taken.capacity;
    return taken;
  }

  /// Keeps the block, giving up the oldest ones for it; one too large to keep is freed.
  void Put(Block block) {
    const std::lock_guard lock(mutex_);
    if (block.capacity > kKeptBytes) {
      std::free(block.data);
      return;
    }
    while (blocks_.size() >= kKeptBlocks || bytes_ + block.capacity > kKeptBytes) {
      bytes_ -= blocks_.front().capacity;
      std::free(blocks_.front().data);
      blocks_.erase(blocks_.begin());
    }
    bytes_ += block.capacity;
    blocks_.push_back(block);
  }

  void Clear() {
    const std::lock_guard lock(mutex_);
    for (const Block& block : blocks_)
      std::free(block.data);
    blocks_.clear();
    bytes_ = 0;
  }

 private:
  std::mutex mutex_;
  std::vector<Block> blocks_;
  std::size_t bytes_ = 0;
};

/// The pool lives to the end of the process: frames that others keep may be given back that late.
Pool& ThePool() {
  static Pool& pool = *new Pool;
  return pool;
}

}  // namespace

FrameMemory FrameMemory::Acquire(std::size_t size) {
  if (size == 0) size = 1;
  const Block kept = ThePool().Take(size);
  if (kept.data) return {kept.data, kept.capacity};
  const std::size_t alignment = size >= kHugePage ? kHugePage : kSmallAlignment;
  if (size > static_cast<std::size_t>(-1) - alignment) return {};
  const std::size_t capacity = (size + alignment - 1) / alignment * alignment;
  auto* data = static_cast<UInt8*>(std::aligned_alloc(alignment, capacity));
  if (!data) return {};
  // Only a hint: the block serves as well without huge pages.
  if (alignment == kHugePage) static_cast<void>(madvise(data, capacity, MADV_HUGEPAGE));
  return {data, capacity};
}

FrameMemory& FrameMemory::operator=(FrameMemory&& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(capacity_, other.capacity_);
  return *this;
}

FrameMemory::~FrameMemory() {
  if (data_) ThePool().Put({data_, capacity_});
}

void ReleaseUnusedFrames() {
  ThePool().Clear();
}

}  // namespace quillmere::imaging
