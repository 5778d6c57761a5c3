#include "finder_information.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "descriptor.h"
#include "file_calls.h"
#include "file_references.h"
#include "sidecars.h"

namespace quillmere::files {
namespace {

constexpr char kAttribute[] = "user.com.apple.FinderInfo";
constexpr UInt32 kAppleDoubleMagic = 0x00051607;
constexpr UInt32 kFinderInformationEntry = 9;
constexpr std::size_t kHeaderSize = 26;
constexpr std::size_t kEntrySize = 12;
/// The head of a sidecar holds its entries and the Finder information; forks behind it are not
/// read.
constexpr std::size_t kSidecarHead = std::size_t{64} * 1024;

UInt32 Read32(std::span<const UInt8> bytes, std::size_t at) {
  return (UInt32{bytes[at]} << 24) | (UInt32{bytes[at + 1]} << 16) | (UInt32{bytes[at + 2]} << 8) |
         UInt32{bytes[at + 3]};
}

/// Reads the information of an object's sidecar; false if it has none with any.
bool ReadFromSidecar(const std::filesystem::path& path, FinderInformation* information) {
  const std::filesystem::path place = path.parent_path() / SidecarName(path.filename().native());
  const Descriptor file(open(place.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!file.IsOpen()) return false;
  std::vector<UInt8> head(kSidecarHead);
  const ssize_t size = pread(file.get(), head.data(), head.size(), 0);
  head.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  return FinderInformationInSidecar(head, information);
}

}  // namespace

OSType FinderInformation::Type() const {
  return Read32(bytes, 0);
}

OSType FinderInformation::Creator() const {
  return Read32(bytes, 4);
}

bool FinderInformationInSidecar(std::span<const UInt8> sidecar, FinderInformation* information) {
  if (sidecar.size() < kHeaderSize || Read32(sidecar, 0) != kAppleDoubleMagic) return false;
  const std::size_t count = (std::size_t{sidecar[24]} << 8) | sidecar[25];
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t entry = kHeaderSize + i * kEntrySize;
    if (entry + kEntrySize > sidecar.size()) return false;
    if (Read32(sidecar, entry) != kFinderInformationEntry) continue;
    const std::size_t offset = Read32(sidecar, entry + 4);
    const std::size_t length = Read32(sidecar, entry + 8);
    if (length < sizeof(information->bytes) || offset > sidecar.size() ||
        sidecar.size() - offset < sizeof(information->bytes)) {
      return false;
    }
    std::memcpy(information->bytes, sidecar.data() + offset, sizeof(information->bytes));
    return true;
  }
  return false;
}

void ReadFinderInformation(const std::filesystem::path& path, FinderInformation* information) {
  *information = {};
  if (lgetxattr(path.c_str(), kAttribute, information->bytes, sizeof(information->bytes)) ==
      static_cast<ssize_t>(sizeof(information->bytes))) {
    return;
  }
  *information = {};
  ReadFromSidecar(path, information);
}

OSStatus WriteFinderInformation(const std::filesystem::path& path,
                                const FinderInformation& information) {
  const bool is_empty = std::all_of(std::begin(information.bytes), std::end(information.bytes),
                                    [](UInt8 byte) { return byte == 0; });
  // Zeros have to be said where a sidecar says something else.
  FinderInformation other;
  const bool is_removed = is_empty && !ReadFromSidecar(path, &other);
  const int result = SetAttribute(path.native(), kAttribute,
                                  is_removed ? std::span<const UInt8>() : information.bytes);
  return result == 0 ? OSStatus{noErr} : StatusOfErrno(errno);
}

}  // namespace quillmere::files
