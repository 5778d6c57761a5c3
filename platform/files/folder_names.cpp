#include "folder_names.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "descriptor.h"
#include "file_references.h"
#include "sidecars.h"

namespace quillmere::files {
namespace {

constexpr std::size_t kBlock = std::size_t{32} << 10;

UInt64 StartOf(std::string_view name) {
  UInt64 start = 0;
  for (std::size_t i = 0; i < sizeof(start); ++i)
    start = (start << 8) | (i < name.size() ? static_cast<UInt8>(name[i]) : 0U);
  return start;
}

}  // namespace

char* FolderNames::Store(std::string_view name) {
  const std::size_t size = name.size() + 1;
  if (room_ < size) {
    room_ = std::max(kBlock, size);
    blocks_.push_back(std::make_unique_for_overwrite<char[]>(room_));
    next_ = blocks_.back().get();
  }
  char* const stored = next_;
  std::memcpy(stored, name.data(), name.size());
  stored[name.size()] = 0;
  next_ += size;
  room_ -= size;
  return stored;
}

OSStatus FolderNames::Read(int folder, Kind kind) {
  Descriptor own(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(fdopendir(own.get()), &closedir);
  if (!entries) return StatusOfErrno(errno);
  own.release();
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(entries.get());
    if (!entry) break;
    const std::string_view name = entry->d_name;
    if (name == "." || name == "..") continue;
    if (kind == kObjects && IsSidecar(folder, entry->d_name)) continue;
    names_.push_back({StartOf(name), {Store(name), name.size()}});
  }
  if (errno) return StatusOfErrno(errno);
  // The byte order of UTF-8 is the order of its code points.
  std::sort(names_.begin(), names_.end());
  return noErr;
}

}  // namespace quillmere::files
