// Alias records from bytes that nobody vouches for.
#include <cstddef>
#include <span>

#include "aliases.h"

extern "C" int LLVMFuzzerTestOneInput(const UInt8* data, std::size_t size) {
  const std::span<const UInt8> bytes(data, size);
  quillmere::files::AliasContent content;
  quillmere::files::ReadAlias(bytes, &content);
  return 0;
}
