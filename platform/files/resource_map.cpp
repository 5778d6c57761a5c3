#include "resource_map.h"

#include <algorithm>
#include <limits>
#include <map>

#include "big_endian.h"

namespace quillmere::files {
namespace {

constexpr std::size_t kHeaderSize = 16;
constexpr std::size_t kDataStart = 256;
/// Of the map: attributes of the file, then the places of the lists, from the start of the map.
constexpr std::size_t kAttributesAt = 22;
constexpr std::size_t kTypesAt = 24;
constexpr std::size_t kNamesAt = 26;
constexpr std::size_t kMapHeaderSize = 28;
constexpr std::size_t kTypeSize = 8;
constexpr std::size_t kReferenceSize = 12;
constexpr UInt16 kNoName = 0xFFFF;
constexpr UInt32 kMostData = 0xFFFFFF;

using Bytes = std::span<const UInt8>;

/// The parts of a fork while it is read.
struct Parts {
  Bytes data;
  Bytes map;
  Bytes types;  ///< from the start of the list of types on
  Bytes names;
  // Taken by all resources; those of a sound fork do not lie over each other.
  UInt64 data_taken = 0;
  UInt64 map_taken = 0;
};

bool ParseReference(Bytes reference, OSType type, Parts* parts, ResourceMap* map) {
  Resource resource;
  resource.type = type;
  resource.id = ReadS16(reference.data());
  const UInt16 name_at = ReadU16(reference.data() + 2);
  resource.attributes = reference[4];
  const UInt32 data_at = ReadU32(reference.data() + 4) & kMostData;
  Bytes length;
  Bytes content;
  if (!SliceOf(parts->data, data_at, 4, &length) ||
      !SliceOf(parts->data, UInt64{data_at} + 4, ReadU32(length.data()), &content)) {
    return false;
  }
  parts->data_taken += content.size() + 4;
  parts->map_taken += kReferenceSize;
  if (name_at != kNoName) {
    Bytes name;
    if (!SliceOf(parts->names, name_at, 1, &length) ||
        !SliceOf(parts->names, std::size_t{name_at} + 1, length[0], &name)) {
      return false;
    }
    parts->map_taken += name.size() + 1;
    resource.has_name = true;
    resource.name.assign(name.begin(), name.end());
  }
  if (parts->data_taken > parts->data.size() || parts->map_taken > parts->map.size()) return false;
  resource.bytes.assign(content.begin(), content.end());
  map->resources.push_back(std::move(resource));
  return true;
}

/// The numbers of types and references are written less 1, so that none at all is 0xFFFF.
std::size_t CountOf(UInt16 written) {
  return static_cast<UInt16>(written + 1);
}

bool ParseTypes(Parts* parts, ResourceMap* map) {
  Bytes count;
  if (!SliceOf(parts->types, 0, 2, &count)) return false;
  for (std::size_t i = 0; i < CountOf(ReadU16(count.data())); ++i) {
    Bytes type;
    if (!SliceOf(parts->types, 2 + i * kTypeSize, kTypeSize, &type)) return false;
    const std::size_t references = CountOf(ReadU16(type.data() + 4));
    const std::size_t list = ReadU16(type.data() + 6);
    for (std::size_t j = 0; j < references; ++j) {
      Bytes reference;
      if (!SliceOf(parts->types, list + j * kReferenceSize, kReferenceSize, &reference) ||
          !ParseReference(reference, ReadU32(type.data()), parts, map)) {
        return false;
      }
    }
  }
  return true;
}

struct TypeGroup {
  OSType type;
  std::vector<const Resource*> resources;
};

/// The resources by type, types and resources in the order in which they first come.
std::vector<TypeGroup> Grouped(const std::vector<Resource>& resources) {
  std::vector<TypeGroup> groups;
  std::map<OSType, std::size_t> places;
  for (const Resource& resource : resources) {
    const auto [place, is_new] = places.try_emplace(resource.type, groups.size());
    if (is_new) groups.push_back({resource.type, {}});
    groups[place->second].resources.push_back(&resource);
  }
  return groups;
}

void WriteHeader(std::size_t data_size, std::size_t map_size, UInt8* header) {
  WriteU32(header, kDataStart);
  WriteU32(header + 4, static_cast<UInt32>(kDataStart + data_size));
  WriteU32(header + 8, static_cast<UInt32>(data_size));
  WriteU32(header + 12, static_cast<UInt32>(map_size));
}

}  // namespace

bool ParseResourceMap(std::span<const UInt8> fork, ResourceMap* map) {
  *map = {};
  Bytes header;
  if (!SliceOf(fork, 0, kHeaderSize, &header)) return false;
  const UInt32 data_at = ReadU32(header.data());
  const UInt32 map_at = ReadU32(header.data() + 4);
  Parts parts;
  if (!SliceOf(fork, data_at, ReadU32(header.data() + 8), &parts.data) ||
      !SliceOf(fork, map_at, ReadU32(header.data() + 12), &parts.map) ||
      parts.map.size() < kMapHeaderSize) {
    return false;
  }
  const std::size_t types_at = ReadU16(parts.map.data() + kTypesAt);
  const std::size_t names_at = ReadU16(parts.map.data() + kNamesAt);
  if (types_at > parts.map.size() || names_at > parts.map.size()) return false;
  parts.types = parts.map.subspan(types_at);
  parts.names = parts.map.subspan(names_at);
  map->attributes = ReadU16(parts.map.data() + kAttributesAt);
  const std::size_t reserved_end = std::min<std::size_t>({data_at, kDataStart, fork.size()});
  if (reserved_end > kHeaderSize) {
    map->reserved.assign(fork.begin() + kHeaderSize,
                         fork.begin() + static_cast<std::ptrdiff_t>(reserved_end));
  }
  return ParseTypes(&parts, map);
}

bool BuildResourceMap(const ResourceMap& map, std::vector<UInt8>* fork) {
  const std::vector<TypeGroup> groups = Grouped(map.resources);
  UInt64 data_size = 0;
  std::size_t names_size = 0;
  for (const Resource& resource : map.resources) {
    if (data_size > kMostData) return false;
    data_size += resource.bytes.size() + 4;
    if (resource.has_name) names_size += resource.name.size() + 1;
  }
  const std::size_t lists_size =
      2 + groups.size() * kTypeSize + map.resources.size() * kReferenceSize;
  const std::size_t names_at = kMapHeaderSize + lists_size;
  if (names_at > std::numeric_limits<UInt16>::max() || names_size >= kNoName) return false;
  const std::size_t map_size = names_at + names_size;

  fork->assign(kDataStart + data_size + map_size, 0);
  WriteHeader(data_size, map_size, fork->data());
  std::copy_n(map.reserved.begin(), std::min(map.reserved.size(), kDataStart - kHeaderSize),
              fork->begin() + kHeaderSize);
  UInt8* data = fork->data() + kDataStart;
  UInt8* out = data + data_size;
  WriteHeader(data_size, map_size, out);
  WriteU16(out + kAttributesAt, map.attributes);
  WriteU16(out + kTypesAt, kMapHeaderSize);
  WriteU16(out + kNamesAt, static_cast<UInt16>(names_at));
  UInt8* types = out + kMapHeaderSize;
  WriteU16(types, static_cast<UInt16>(groups.size() - 1));
  std::size_t list = 2 + groups.size() * kTypeSize;
  UInt32 data_at = 0;
  std::size_t name_at = 0;
  UInt8* type = types + 2;
  for (const TypeGroup& group : groups) {
    WriteU32(type, group.type);
    WriteU16(type + 4, static_cast<UInt16>(group.resources.size() - 1));
    WriteU16(type + 6, static_cast<UInt16>(list));
    type += kTypeSize;
    for (const Resource* resource : group.resources) {
      UInt8* reference = types + list;
      list += kReferenceSize;
      WriteU16(reference, static_cast<UInt16>(resource->id));
      WriteU16(reference + 2, resource->has_name ? static_cast<UInt16>(name_at) : kNoName);
      WriteU32(reference + 4, data_at);
      reference[4] = resource->attributes;
      WriteU32(data + data_at, static_cast<UInt32>(resource->bytes.size()));
      std::copy(resource->bytes.begin(), resource->bytes.end(), data + data_at + 4);
      data_at += static_cast<UInt32>(resource->bytes.size() + 4);
      if (!resource->has_name) continue;
      UInt8* name = out + names_at + name_at;
      name[0] = static_cast<UInt8>(resource->name.size());
      std::copy(resource->name.begin(), resource->name.end(), name + 1);
      name_at += resource->name.size() + 1;
    }
  }
  return true;
}

}  // namespace quillmere::files
