#include <cstdlib>
#include <cstring>

#include "multiprocessing.h"

namespace {

/// The alignment of blocks that are fit for anything, as a power of two.
constexpr UInt8 kFitForAnything = 4;

}  // namespace

void* MPAllocateAligned(ByteCount size, UInt8 alignment, UInt32 options) {
  if (alignment > kMPAllocateMaxAlignment) return nullptr;
  if (alignment < kFitForAnything) alignment = kFitForAnything;
  void* block = nullptr;
  if (posix_memalign(&block, std::size_t{1} << alignment, size > 0 ? size : 1) != 0) return nullptr;
  if ((options & kMPAllocateClearMask) != 0) std::memset(block, 0, size);
  return block;
}

void MPFree(void* block) {
  std::free(block);
}
