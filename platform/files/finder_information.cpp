#include "finder_information.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "apple_double.h"
#include "big_endian.h"
#include "descriptor.h"
#include "file_calls.h"
#include "file_references.h"
#include "sidecars.h"

namespace quillmere::files {
namespace {

constexpr char kAttribute[] = "user.com.apple.FinderInfo";
/// The head of a sidecar holds its entries and the Finder information; forks behind it are not
/// read.
constexpr std::size_t kSidecarHead = std::size_t{64} * 1024;

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
  return ReadU32(bytes);
}

OSType FinderInformation::Creator() const {
  return ReadU32(bytes + 4);
}

bool FinderInformationInSidecar(std::span<const UInt8> sidecar, FinderInformation* information) {
  std::vector<AppleDoubleRow> rows;
  if (!ReadAppleDoubleTable(sidecar, &rows)) return false;
  for (const auto& [number, offset, length] : rows) {
    if (number != kFinderInformationEntry) continue;
    constexpr std::size_t kSize = sizeof(information->bytes);
    std::span<const UInt8> bytes;
    if (length < kSize || !SliceOf(sidecar, offset, kSize, &bytes)) return false;
    std::copy(bytes.begin(), bytes.end(), information->bytes);
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
