/// What the operations that make files share.
#pragma once

#include "base_types.h"
#include "catalogue.h"

namespace quillmere::general {

/// A record with nothing but type and creator, in the byte order of Finder information.
inline FSCatalogInfo InfoOfNewFile(OSType creator, OSType type) {
  FSCatalogInfo info{};
  UInt8* next = info.finderInfo;
  for (const OSType code : {type, creator}) {
    for (int shift = 24; shift >= 0; shift -= 8)
      *next++ = static_cast<UInt8>(code >> shift);
  }
  return info;
}

}  // namespace quillmere::general
