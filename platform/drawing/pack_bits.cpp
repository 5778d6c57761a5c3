#include <algorithm>

#include "pack_bits_private.h"

namespace quillmere::drawing {
namespace {

constexpr std::size_t kMostInRun = 128;

/// How many bytes from the first on are the same.
std::size_t RunAt(std::span<const UInt8> bytes) {
  std::size_t run = 1;
  while (run < std::min(bytes.size(), kMostInRun) && bytes[run] == bytes[0])
    ++run;
  return run;
}

}  // namespace

void PackBits(std::span<const UInt8> bytes, std::vector<UInt8>* packed) {
  constexpr std::size_t kWorthwhile = 3;
  while (!bytes.empty()) {
    const std::size_t run = RunAt(bytes);
    if (run >= kWorthwhile) {
      packed->push_back(static_cast<UInt8>(257 - run));
      packed->push_back(bytes[0]);
      bytes = bytes.subspan(run);
      continue;
    }
    std::size_t count = 1;
    while (count < std::min(bytes.size(), kMostInRun) && RunAt(bytes.subspan(count)) < kWorthwhile)
      ++count;
    packed->push_back(static_cast<UInt8>(count - 1));
    packed->insert(packed->end(), bytes.begin(),
                   bytes.begin() + static_cast<std::ptrdiff_t>(count));
    bytes = bytes.subspan(count);
  }
}

bool UnpackBits(std::span<const UInt8> packed, std::span<UInt8> bytes) {
  constexpr UInt8 kNothing = 128;
  while (!packed.empty()) {
    const UInt8 code = packed[0];
    packed = packed.subspan(1);
    if (code == kNothing) continue;
    const std::size_t count = code < kNothing ? code + std::size_t{1} : 257 - std::size_t{code};
    const std::size_t taken = code < kNothing ? count : 1;
    if (count > bytes.size() || taken > packed.size()) return false;
    if (code < kNothing)
      std::copy_n(packed.begin(), count, bytes.begin());
    else
      std::fill_n(bytes.begin(), count, packed[0]);
    packed = packed.subspan(taken);
    bytes = bytes.subspan(count);
  }
  return bytes.empty();
}

}  // namespace quillmere::drawing
