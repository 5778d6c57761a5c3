// String tables from bytes that nobody vouches for.
#include <cstddef>
#include <span>

#include "strings_table.h"

extern "C" int LLVMFuzzerTestOneInput(const UInt8* data, std::size_t size) {
  quillmere::ParseStringsTable(std::span<const UInt8>(data, size));
  return 0;
}
