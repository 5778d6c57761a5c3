#include "sidecars.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "descriptor.h"

namespace quillmere::files {

std::string SidecarName(std::string_view name) {
  return "._" + std::string(name);
}

bool IsSidecar(int folder, const char* name) {
  if (std::strncmp(name, "._", 2) != 0) return false;
  struct stat found;
  if (fstatat(folder, name, &found, AT_SYMLINK_NOFOLLOW) != 0) return true;
  if (!S_ISREG(found.st_mode)) return false;
  const Descriptor file(openat(folder, name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  if (!file.IsOpen()) return true;
  static constexpr UInt8 kAppleDouble[4] = {0x00, 0x05, 0x16, 0x07};
  UInt8 start[4] = {};
  const ssize_t count = read(file.get(), start, sizeof(start));
  return count < 0 || (count == 4 && std::memcmp(start, kAppleDouble, 4) == 0);
}

}  // namespace quillmere::files
