// Alias records and sidecars from bytes that nobody vouches for.
#include <cstddef>
#include <span>

#include "aliases.h"
#include "finder_information.h"

extern "C" int LLVMFuzzerTestOneInput(const UInt8* data, std::size_t size) {
  const std::span<const UInt8> bytes(data, size);
  quillmere::files::AliasContent content;
  quillmere::files::ReadAlias(bytes, &content);
  quillmere::files::FinderInformation information;
  quillmere::files::FinderInformationInSidecar(bytes, &information);
  return 0;
}
