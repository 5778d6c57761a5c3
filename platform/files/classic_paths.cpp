#include "classic_paths.h"

#include <algorithm>
#include <string>

#include "cf_strings.h"
#include "file_names.h"
#include "file_references.h"
#include "volumes.h"

namespace fs = std::filesystem;

namespace quillmere::files {
namespace {

bool HaveSameName(const HFSUniStr255& volume, std::string_view name) {
  const Owned<CFStringRef> own(FSCreateStringFromHFSUniStr(kCFAllocatorDefault, &volume));
  const Owned<CFStringRef> sought(CreateFromUtf8(name));
  return CFStringCompare(own.get(), sought.get(), kCFCompareCaseInsensitive) == kCFCompareEqualTo;
}

/// The root of the volume whose name begins `*path`, which is taken off it.
fs::path TakeVolume(std::string_view* path) {
  HFSUniStr255 name;
  FSRef root;
  for (ItemCount index = 1;
       FSGetVolumeInfo(0, index, nullptr, kFSVolInfoNone, nullptr, &name, &root) == noErr;
       ++index) {
    for (std::size_t end = path->find(':');; end = path->find(':', end + 1)) {
      const std::size_t length = std::min(end, path->size());
      fs::path place;
      if (HaveSameName(name, path->substr(0, length)) && PathOf(root, &place) == noErr) {
        path->remove_prefix(length);
        return place;
      }
      if (end == std::string_view::npos) break;
    }
  }
  return {};
}

}  // namespace

fs::path PathOfClassicPath(std::string_view path) {
  if (path.empty()) return {};
  fs::path place = path.front() == ':' ? fs::path(".") : TakeVolume(&path);
  if (place.empty()) return {};
  while (!path.empty()) {
    path.remove_prefix(1);  // the colon
    if (path.empty()) break;
    std::string name(path.substr(0, path.find(':')));
    path.remove_prefix(name.size());
    std::replace(name.begin(), name.end(), '/', ':');
    place /= name.empty() ? ".." : name;
  }
  return place.lexically_normal();
}

}  // namespace quillmere::files
