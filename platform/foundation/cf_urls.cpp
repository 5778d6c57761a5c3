#include "cf_urls.h"

#include <mutex>
#include <system_error>
#include <utility>
#include <vector>

struct CFURL final : CFObject {
  explicit CFURL(std::filesystem::path where) : path(std::move(where)) {}
  std::filesystem::path path;
};

struct CFBundle final : CFObject {
  std::mutex mutex;
  std::filesystem::path preferred;
};

namespace {

namespace fs = std::filesystem;

CFBundle& MainBundle() {
  static auto* bundle = new CFBundle;
  return *bundle;
}

/// Where the resources may stand: what was set, then beside and above the program.
std::vector<fs::path> ResourceFolders() {
  std::vector<fs::path> folders;
  CFBundle& bundle = MainBundle();
  {
    const std::lock_guard lock(bundle.mutex);
    if (!bundle.preferred.empty()) folders.push_back(bundle.preferred);
  }
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  if (!error) {
    const fs::path folder = program.parent_path();
    folders.push_back(folder / "resources");
    folders.push_back(folder / "../share/quillmere");
  }
  return folders;
}

}  // namespace

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

CFBundleRef CFBundleGetMainBundle() {
  return &MainBundle();
}

CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name, CFStringRef type,
                                 CFStringRef sub_folder) {
  if (!bundle) return nullptr;
  std::string file = quillmere::ToUtf8(name);
  if (CFStringGetLength(type) > 0) file.append(".").append(quillmere::ToUtf8(type));
  if (file.empty()) return nullptr;
  for (const fs::path& folder : ResourceFolders()) {
    const fs::path candidate = folder / quillmere::ToUtf8(sub_folder) / file;
    std::error_code error;
    if (fs::exists(candidate, error)) return new CFURL(candidate.lexically_normal());
  }
  return nullptr;
}

namespace quillmere {

const std::filesystem::path& PathOf(CFURLRef url) {
  static const auto* empty = new fs::path;
  return url ? url->path : *empty;
}

CFURLRef CreateUrlOfPath(const std::filesystem::path& path) {
  return new CFURL(path);
}

void SetBundleResourceFolder(const std::filesystem::path& folder) {
  CFBundle& bundle = MainBundle();
  const std::lock_guard lock(bundle.mutex);
  bundle.preferred = folder;
}

}  // namespace quillmere
