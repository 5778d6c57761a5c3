// Resource forks: what can be read and written again reads as the same.
#include <cstdlib>
#include <vector>

#include "resource_map.h"

extern "C" int LLVMFuzzerTestOneInput(const UInt8* data, std::size_t size) {
  using quillmere::files::ResourceMap;
  ResourceMap map;
  std::vector<UInt8> written;
  if (!quillmere::files::ParseResourceMap({data, size}, &map) ||
      !quillmere::files::BuildResourceMap(map, &written)) {
    return 0;
  }
  ResourceMap again;
  if (!quillmere::files::ParseResourceMap(written, &again)) std::abort();
  std::vector<UInt8> rewritten;
  if (!quillmere::files::BuildResourceMap(again, &rewritten) || rewritten != written) std::abort();
  return 0;
}
