/// The content of a resource fork in the classic form.
///
/// A header of 16 bytes gives offset and size of the data and of the map; 240 bytes for the system
/// and others follow. In the data each resource stands behind its size in 32 bits. The map repeats
/// the header and holds the file's attributes, a list of types, for each type a list of references
/// (ID, place of the name, attributes, 24-bit offset in the data), and a list of names. All numbers
/// are big-endian.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "base_types.h"
#include "memory_handles.h"

namespace quillmere::files {

struct Resource {
  OSType type = 0;
  SInt16 id = 0;
  UInt8 attributes = 0;
  bool has_name = false;
  std::string name;  ///< up to 255 bytes in MacRoman
  std::vector<UInt8> bytes;
  // Not part of the fork:
  Handle handle = nullptr;    ///< its bytes in memory, while it has one
  bool is_in_handle = false;  ///< added, and its bytes not taken yet
  bool is_loaded = false;     ///< its handle was given out with its bytes
};

struct ResourceMap {
  std::vector<UInt8> reserved;  ///< what stands between header and data, kept as it is
  UInt16 attributes = 0;
  std::vector<Resource> resources;  ///< in the order of the map
};

/// Reads a resource fork from bytes that nobody vouches for; false if it is damaged.
bool ParseResourceMap(std::span<const UInt8> fork, ResourceMap* map);
/// Writes one; false if there is more than the form can hold: 16 MiB of data, 64 KiB of references.
bool BuildResourceMap(const ResourceMap& map, std::vector<UInt8>* fork);

}  // namespace quillmere::files
