#include "cf_urls.h"

#include <utility>

struct CFURL final : CFObject {
  explicit CFURL(std::filesystem::path where) : path(std::move(where)) {}
  std::filesystem::path path;
};

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef, CFStringRef path, Boolean) {
  const std::string text = quillmere::ToUtf8(path);
  return text.empty() ? nullptr : new CFURL(text);
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef url, CFStringRef component,
                                               Boolean) {
  const std::string name = quillmere::ToUtf8(component);
  if (!url || name.empty() || name.find('/') != std::string::npos) return nullptr;
  return new CFURL(url->path / name);
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url) {
  return url ? quillmere::CreateFromUtf8(url->path.native()) : nullptr;
}

namespace quillmere {

const std::filesystem::path& PathOf(CFURLRef url) {
  static const auto* empty = new std::filesystem::path;
  return url ? url->path : *empty;
}

CFURLRef CreateUrlOfPath(const std::filesystem::path& path) {
  return new CFURL(path);
}

}  // namespace quillmere
