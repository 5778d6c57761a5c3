// Mount information and the file of the user's folders: any bytes give a record or none, and a
// folder is an absolute path.
#include <cstdlib>
#include <span>
#include <string_view>

#include "folders.h"
#include "volume_mounting.h"

extern "C" int LLVMFuzzerTestOneInput(const UInt8* data, std::size_t size) {
  quillmere::files::MountInfo info;
  if (quillmere::files::ReadMountInfo({data, size}, &info) &&
      (info.source.empty() || !info.mount_point.starts_with('/'))) {
    std::abort();
  }
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::string folder = quillmere::files::UserFolderIn(text, "XDG_VIDEOS_DIR", "/home/user");
  if (!folder.empty() && folder.front() != '/') std::abort();
  return 0;
}
