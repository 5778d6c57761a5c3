#include "cf_bundle.h"

#include <map>
#include <mutex>
#include <string>
#include <system_error>
#include <vector>

#include "strings_table.h"
#include "whole_files.h"

struct CFBundle final : CFObject {
  mutable std::mutex mutex;
  std::filesystem::path folder;     ///< of a bundle that is not the application's
  std::filesystem::path preferred;  ///< where the application's bundle looks first
  /// By file, those read so far.
  mutable std::map<std::filesystem::path, quillmere::StringsTable> tables;
};

namespace {

namespace fs = std::filesystem;
using quillmere::Owned;

/// A table of texts is smaller than this in bytes by far; anything larger is no table.
constexpr std::uintmax_t kLargestTable = 16 << 20;

CFBundle& MainBundle() {
  static auto* bundle = new CFBundle;
  return *bundle;
}

/// Where the resources may stand: in a bundle's folder; for the application what was set, then
/// beside and above the program.
std::vector<fs::path> ResourceFolders(const CFBundle& bundle) {
  if (!bundle.folder.empty()) return {bundle.folder / "Resources", bundle.folder};
  std::vector<fs::path> folders;
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

quillmere::StringsTable ReadTable(const fs::path& path) {
  std::vector<UInt8> bytes;
  if (quillmere::ReadWholeFile(path, kLargestTable, &bytes) != noErr) return {};
  return quillmere::ParseStringsTable(bytes);
}

/// A new string of the text under `key` in the table that `path` holds; null if there is none.
CFStringRef CopyTextInTable(const CFBundle& bundle, const fs::path& path, CFStringRef key) {
  const std::lock_guard lock(bundle.mutex);
  auto table = bundle.tables.find(path);
  if (table == bundle.tables.end()) table = bundle.tables.emplace(path, ReadTable(path)).first;
  const auto entry = table->second.find(quillmere::UnitsOf(key));
  if (entry == table->second.end()) return nullptr;
  return CFStringCreateWithCharacters(kCFAllocatorDefault, entry->second.data(),
                                      static_cast<CFIndex>(entry->second.size()));
}

bool IsEmpty(CFStringRef string) {
  return string == nullptr || CFStringGetLength(string) == 0;
}

}  // namespace

CFBundleRef CFBundleGetMainBundle() {
  return &MainBundle();
}

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef url) {
  std::error_code error;
  if (!url || !fs::is_directory(quillmere::PathOf(url), error)) return nullptr;
  auto* bundle = new CFBundle;
  bundle->folder = quillmere::PathOf(url);
  return bundle;
}

CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle) {
  if (!bundle) return nullptr;
  if (!bundle->folder.empty()) return quillmere::CreateUrlOfPath(bundle->folder);
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  return error ? nullptr : quillmere::CreateUrlOfPath(program);
}

CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name, CFStringRef type,
                                 CFStringRef sub_folder) {
  if (!bundle) return nullptr;
  std::string file = quillmere::ToUtf8(name);
  if (!IsEmpty(type)) file.append(".").append(quillmere::ToUtf8(type));
  if (file.empty()) return nullptr;
  for (const fs::path& folder : ResourceFolders(*bundle)) {
    const fs::path candidate = folder / quillmere::ToUtf8(sub_folder) / file;
    std::error_code error;
    if (fs::exists(candidate, error))
      return quillmere::CreateUrlOfPath(candidate.lexically_normal());
  }
  return nullptr;
}

CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef table) {
  const CFStringRef name = IsEmpty(table) ? CFSTR("Localizable") : table;
  for (const CFStringRef folder : {CFSTR("en.lproj"), CFSTR("")}) {
    const Owned<CFURLRef> url(CFBundleCopyResourceURL(bundle, name, CFSTR("strings"), folder));
    if (!url || key == nullptr) continue;
    if (const CFStringRef text = CopyTextInTable(*bundle, quillmere::PathOf(url.get()), key))
      return text;
  }
  const CFStringRef fallback = IsEmpty(value) ? key : value;
  return CFStringCreateCopy(kCFAllocatorDefault, fallback ? fallback : CFSTR(""));
}

namespace quillmere {

void SetBundleResourceFolder(const std::filesystem::path& folder) {
  CFBundle& bundle = MainBundle();
  const std::lock_guard lock(bundle.mutex);
  bundle.preferred = folder;
}

}  // namespace quillmere
