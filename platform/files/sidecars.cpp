#include "sidecars.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "descriptor.h"
#include "file_calls.h"
#include "file_references.h"

namespace quillmere::files {

std::string SidecarName(std::string_view name) {
  return "._" + std::string(name);
}

SidecarKind KindOfSidecar(int folder, const char* name) {
  if (std::strncmp(name, "._", 2) != 0) return SidecarKind::kNone;
  struct stat found;
  if (fstatat(folder, name, &found, AT_SYMLINK_NOFOLLOW) != 0) return SidecarKind::kUnknown;
  if (!S_ISREG(found.st_mode)) return SidecarKind::kNone;
  const Descriptor file(openat(folder, name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  if (!file.IsOpen()) return SidecarKind::kUnknown;
  static constexpr UInt8 kAppleDouble[4] = {0x00, 0x05, 0x16, 0x07};
  UInt8 start[4] = {};
  const ssize_t count = read(file.get(), start, sizeof(start));
  if (count < 0) return SidecarKind::kUnknown;
  return count == 4 && std::memcmp(start, kAppleDouble, 4) == 0 ? SidecarKind::kSidecar
                                                                : SidecarKind::kNone;
}

bool IsSidecar(int folder, const char* name) {
  return KindOfSidecar(folder, name) != SidecarKind::kNone;
}

bool HasSidecar(int folder, std::string_view name) {
  const std::string sidecar = SidecarName(name);
  struct stat found;
  return fstatat(folder, sidecar.c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0 &&
         IsSidecar(folder, sidecar.c_str());
}

OSStatus RemoveStraySidecar(int folder, std::string_view name) {
  const std::string sidecar = SidecarName(name);
  if (KindOfSidecar(folder, sidecar.c_str()) != SidecarKind::kSidecar) return noErr;
  return UnlinkAt(folder, sidecar, 0) == 0 ? OSStatus{noErr} : StatusOfErrno(errno);
}

}  // namespace quillmere::files
