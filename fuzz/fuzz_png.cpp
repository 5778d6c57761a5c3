// The PNG reader: headers from a file, and decoding from memory.
#include <zlib.h>

#include "picture_fuzzing.h"

namespace {

constexpr std::string_view kSignature = "\x89PNG\r\n\x1A\n";
/// A chunk's length and type stand before its data, its check sum behind.
constexpr std::size_t kBeforeData = 8;
constexpr std::size_t kCheckSum = 4;

/// Gives every chunk that is whole the check sum of its type and data: a reader stops at the first
/// wrong one, and hardly any change to the bytes would get past that.
void RepairCheckSums(std::span<std::uint8_t> bytes) {
  std::size_t at = kSignature.size();
  while (bytes.size() >= at && bytes.size() - at >= kBeforeData + kCheckSum) {
    const std::size_t length = std::size_t{bytes[at]} << 24 | std::size_t{bytes[at + 1]} << 16 |
                               std::size_t{bytes[at + 2]} << 8 | bytes[at + 3];
    if (length > bytes.size() - at - kBeforeData - kCheckSum) return;
    const uLong sum = crc32(0, &bytes[at + 4], static_cast<uInt>(length + 4));
    at += kBeforeData + length;
    for (int shift = 24; shift >= 0; shift -= 8)
      bytes[at++] = static_cast<std::uint8_t>(sum >> shift);
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  size = LLVMFuzzerMutate(data, size, most);
  // Now and then a wrong sum stays.
  if (seed % 16 != 0) RepairCheckSums({data, size});
  return size;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return quillmere::fuzzing::ReadPicture(kSignature, {data, size});
}
