#include "apple_double.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <limits>
#include <string_view>

#include "big_endian.h"
#include "file_calls.h"
#include "finder_information.h"
#include "sidecars.h"

namespace quillmere::files {
namespace {

constexpr UInt32 kMagic = 0x00051607;
constexpr UInt32 kVersion = 0x00020000;
constexpr std::size_t kCountAt = 24;
constexpr std::size_t kHeaderSize = 26;
/// What other systems write where the form has 16 free bytes; some readers know sidecars by it.
constexpr std::string_view kHomeSystem = "Mac OS X        ";
constexpr std::size_t kHomeSystemAt = 8;
constexpr std::size_t kEntrySize = 12;
constexpr UInt32 kResourceForkEntry = 2;
constexpr std::size_t kFinderSize = sizeof(FinderInformation::bytes);
/// The block of attributes: number, tag, end of the data, start of the data, its length, three
/// reserved words, flags, count.
constexpr UInt32 kAttributeMagic = "ATTR"_4cc;
constexpr std::size_t kAttributePadding = 2;
constexpr std::size_t kAttributeHeaderSize = 36;
constexpr std::size_t kAttributeEntrySize = 11;  ///< offset, length, flags, length of the name
constexpr std::size_t kMostNameBytes = 127;
/// What is read of a sidecar at most: both of its forks are addressed with 24 and 32 bits.
constexpr SInt64 kMostBytes = SInt64{1} << 30;

using Bytes = std::span<const UInt8>;

ForkBytes Copy(Bytes bytes) {
  return {bytes.begin(), bytes.end()};
}

std::size_t AttributeEntryEnd(std::size_t at, std::size_t name_length) {
  return (at + kAttributeEntrySize + name_length + 3) & ~std::size_t{3};
}

/// Reads the attributes of a block that starts at `at`.
bool ParseAttributes(Bytes bytes, std::size_t at, AppleDouble* sidecar) {
  Bytes header;
  if (!SliceOf(bytes, at, kAttributeHeaderSize, &header)) return false;
  const std::size_t count = ReadU16(header.data() + 34);
  at += kAttributeHeaderSize;
  UInt64 total = 0;
  for (std::size_t i = 0; i < count; ++i) {
    Bytes entry;
    Bytes name;
    Bytes value;
    if (!SliceOf(bytes, at, kAttributeEntrySize, &entry)) return false;
    const std::size_t name_length = entry[10];
    if (name_length < 2 || !SliceOf(bytes, at + kAttributeEntrySize, name_length, &name) ||
        !SliceOf(bytes, ReadU32(entry.data()), ReadU32(entry.data() + 4), &value)) {
      return false;
    }
    // Values that lie over each other would take more memory than the file has bytes.
    total += value.size();
    if (total > bytes.size()) return false;
    const auto name_end = std::find(name.begin(), name.end(), UInt8{0});
    if (name_end == name.begin()) return false;
    sidecar->attributes.push_back(
        {std::string(name.begin(), name_end), ReadU16(entry.data() + 8), Copy(value)});
    at = AttributeEntryEnd(at, name_length);
  }
  return true;
}

bool ParseFinderEntry(Bytes bytes, std::size_t offset, Bytes entry, AppleDouble* sidecar) {
  if (entry.size() < kFinderSize) return false;
  sidecar->finder_information = Copy(entry.first(kFinderSize));
  constexpr std::size_t kBlockAt = kFinderSize + kAttributePadding;
  if (entry.size() < kBlockAt + kAttributeHeaderSize) return true;
  if (ReadU32(entry.data() + kBlockAt) != kAttributeMagic) return true;
  return ParseAttributes(bytes, offset + kBlockAt, sidecar);
}

/// Appends the block of attributes, which starts at `start` of the file.
void AppendAttributes(const std::vector<AppleDouble::Attribute>& attributes, std::size_t start,
                      ForkBytes* out) {
  std::size_t data_start = start + kAttributeHeaderSize;
  std::size_t data_size = 0;
  for (const AppleDouble::Attribute& attribute : attributes) {
    data_start = AttributeEntryEnd(data_start, attribute.name.size() + 1);
    data_size += attribute.value.size();
  }
  out->resize(data_start);
  UInt8* header = out->data() + start;
  WriteU32(header, kAttributeMagic);
  WriteU32(header + 8, static_cast<UInt32>(data_start + data_size));
  WriteU32(header + 12, static_cast<UInt32>(data_start));
  WriteU32(header + 16, static_cast<UInt32>(data_size));
  WriteU16(header + 34, static_cast<UInt16>(attributes.size()));
  std::size_t at = start + kAttributeHeaderSize;
  for (const AppleDouble::Attribute& attribute : attributes) {
    UInt8* entry = out->data() + at;
    WriteU32(entry, static_cast<UInt32>(out->size()));
    WriteU32(entry + 4, static_cast<UInt32>(attribute.value.size()));
    WriteU16(entry + 8, attribute.flags);
    entry[10] = static_cast<UInt8>(attribute.name.size() + 1);
    std::memcpy(entry + kAttributeEntrySize, attribute.name.c_str(), attribute.name.size() + 1);
    at = AttributeEntryEnd(at, attribute.name.size() + 1);
    out->insert(out->end(), attribute.value.begin(), attribute.value.end());
  }
}

/// Whether the parts of a sidecar can be told in its numbers.
bool Fits(const AppleDouble& sidecar) {
  UInt64 size = sidecar.resource_fork.size();
  for (const AppleDouble::Attribute& attribute : sidecar.attributes) {
    if (attribute.name.empty() || attribute.name.size() > kMostNameBytes) return false;
    size += attribute.value.size() + kAttributeEntrySize + kMostNameBytes;
  }
  for (const AppleDouble::Entry& entry : sidecar.others)
    size += entry.bytes.size();
  constexpr std::size_t kMostParts = 60'000;
  return size <= static_cast<UInt64>(kMostBytes) && sidecar.others.size() <= kMostParts &&
         sidecar.attributes.size() <= kMostParts;
}

std::string TemporaryName(std::string_view sidecar) {
  static std::atomic<UInt32> counter{0};
  // Cut so that it fits where the sidecar's name does.
  return std::string(sidecar.substr(0, 200)) + "." + std::to_string(getpid()) + "-" +
         std::to_string(counter++) + ".new";
}

}  // namespace

bool AppleDouble::HoldsNothing() const {
  return finder_information.empty() && attributes.empty() && resource_fork.empty() &&
         others.empty();
}

AppleDouble::Attribute* AppleDouble::Find(std::string_view name) {
  const auto found =
      std::find_if(attributes.begin(), attributes.end(),
                   [name](const Attribute& attribute) { return attribute.name == name; });
  return found == attributes.end() ? nullptr : &*found;
}

void AppleDouble::Set(std::string_view name, const ForkBytes* value) {
  Attribute* attribute = Find(name);
  if (!value) {
    if (attribute) attributes.erase(attributes.begin() + (attribute - attributes.data()));
  } else if (attribute) {
    attribute->value = *value;
  } else {
    attributes.push_back({std::string(name), 0, *value});
  }
}

bool ReadAppleDoubleTable(std::span<const UInt8> bytes, std::vector<AppleDoubleRow>* rows) {
  rows->clear();
  if (bytes.size() < kHeaderSize || ReadU32(bytes.data()) != kMagic) return false;
  const std::size_t count = ReadU16(bytes.data() + kCountAt);
  Bytes table;
  if (!SliceOf(bytes, kHeaderSize, count * kEntrySize, &table)) return false;
  for (; !table.empty(); table = table.subspan(kEntrySize))
    rows->push_back({ReadU32(table.data()), ReadU32(table.data() + 4), ReadU32(table.data() + 8)});
  return true;
}

bool ParseAppleDouble(std::span<const UInt8> bytes, AppleDouble* sidecar) {
  *sidecar = {};
  std::vector<AppleDoubleRow> rows;
  if (!ReadAppleDoubleTable(bytes, &rows)) return false;
  UInt64 total = 0;
  for (const auto& [number, offset, length] : rows) {
    Bytes entry;
    if (!SliceOf(bytes, offset, length, &entry)) return false;
    total += entry.size();
    if (total > bytes.size()) return false;
    if (number == kFinderInformationEntry) {
      if (!sidecar->finder_information.empty() ||
          !ParseFinderEntry(bytes, offset, entry, sidecar)) {
        return false;
      }
    } else if (number == kResourceForkEntry) {
      sidecar->resource_fork = Copy(entry);
    } else {
      sidecar->others.push_back({number, Copy(entry)});
    }
  }
  return true;
}

bool BuildAppleDouble(const AppleDouble& sidecar, ForkBytes* bytes) {
  bytes->clear();
  if (!Fits(sidecar)) return false;
  const std::size_t count = sidecar.others.size() + 2;
  bytes->resize(kHeaderSize + count * kEntrySize);
  WriteU32(bytes->data(), kMagic);
  WriteU32(bytes->data() + 4, kVersion);
  kHomeSystem.copy(reinterpret_cast<char*>(bytes->data()) + kHomeSystemAt, kHomeSystem.size());
  WriteU16(bytes->data() + kCountAt, static_cast<UInt16>(count));
  std::size_t row = kHeaderSize;
  const auto note = [&](UInt32 number, std::size_t start) {
    WriteU32(bytes->data() + row, number);
    WriteU32(bytes->data() + row + 4, static_cast<UInt32>(start));
    WriteU32(bytes->data() + row + 8, static_cast<UInt32>(bytes->size() - start));
    row += kEntrySize;
  };
  const auto append = [&](UInt32 number, const ForkBytes& content) {
    const std::size_t start = bytes->size();
    bytes->insert(bytes->end(), content.begin(), content.end());
    note(number, start);
  };

  const std::size_t finder = bytes->size();
  bytes->insert(bytes->end(), sidecar.finder_information.begin(), sidecar.finder_information.end());
  bytes->resize(finder + kFinderSize);
  if (!sidecar.attributes.empty()) {
    bytes->resize(bytes->size() + kAttributePadding);
    AppendAttributes(sidecar.attributes, bytes->size(), bytes);
  }
  note(kFinderInformationEntry, finder);
  for (const AppleDouble::Entry& entry : sidecar.others)
    append(entry.number, entry.bytes);
  append(kResourceForkEntry, sidecar.resource_fork);
  return true;
}

OSStatus ReadSidecar(const ObjectPlace& object, AppleDouble* sidecar) {
  *sidecar = {};
  if (!HasSidecar(object.folder.get(), object.name)) return noErr;
  const std::string name = SidecarName(object.name);
  const Descriptor file(
      openat(object.folder.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat info;
  if (!file.IsOpen() || fstat(file.get(), &info) != 0) return StatusOfErrno(errno);
  if (info.st_size > kMostBytes) return memFullErr;
  ForkBytes bytes(static_cast<std::size_t>(info.st_size));
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count =
        pread(file.get(), bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return StatusOfErrno(errno);
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  bytes.resize(done);
  return ParseAppleDouble(bytes, sidecar) ? OSStatus{noErr} : OSStatus{ioErr};
}

OSStatus WriteSidecar(const ObjectPlace& object, const AppleDouble& sidecar) {
  const int folder = object.folder.get();
  const std::string name = SidecarName(object.name);
  if (sidecar.HoldsNothing()) return RemoveStraySidecar(folder, object.name);
  struct stat present;
  if (fstatat(folder, name.c_str(), &present, AT_SYMLINK_NOFOLLOW) == 0 &&
      KindOfSidecar(folder, name.c_str()) != SidecarKind::kSidecar) {
    return dupFNErr;
  }
  ForkBytes bytes;
  if (!BuildAppleDouble(sidecar, &bytes)) return dskFulErr;
  const std::string temporary = TemporaryName(name);
  const Descriptor file(MakeFileAt(folder, temporary, object.info.stx_mode & 0666));
  if (!file.IsOpen()) return StatusOfErrno(errno);
  const bool is_done = WriteAll(file.get(), bytes) == 0 && FlushAll(file.get()) == 0 &&
                       RenameAt(folder, temporary, folder, name, 0) == 0;
  const OSStatus status = is_done ? OSStatus{noErr} : StatusOfErrno(errno);
  if (status) UnlinkAt(folder, temporary, 0);
  return status;
}

}  // namespace quillmere::files
