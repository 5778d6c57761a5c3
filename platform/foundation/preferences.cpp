#include "preferences.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "file_references.h"
#include "whole_files.h"

const CFStringRef kCFPreferencesCurrentApplication = CFSTR("kCFPreferencesCurrentApplication");

namespace {

namespace fs = std::filesystem;
using quillmere::Owned;

constexpr auto kLongestWait = std::chrono::seconds(5);
constexpr auto kWaitStep = std::chrono::milliseconds(10);

fs::path HomeFolder() {
  if (const char* home = std::getenv("HOME"); home && home[0] == '/') return home;
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found) return {};
  return found->pw_dir ? fs::path(found->pw_dir) : fs::path();
}

/// The preferences file; empty if the user has no home.
fs::path PreferencesFile() {
  fs::path folder;
  if (const char* configured = std::getenv("XDG_CONFIG_HOME"); configured && configured[0] == '/') {
    folder = configured;
  } else {
    folder = HomeFolder();
    if (folder.empty()) return {};
    folder /= ".config";
  }
  return folder / "quillmere" / "preferences.plist";
}

/// Makes the file's folder and those above it, for the user alone.
bool MakeFolderOf(const fs::path& file) {
  fs::path folder;
  for (const fs::path& part : file.parent_path()) {
    folder /= part;
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST && errno != EROFS && errno != EACCES)
      return false;
  }
  std::error_code error;
  return fs::is_directory(folder, error);
}

/// Keeps other processes out of the preferences file while it is replaced. The file itself cannot
/// carry the lock, since another takes its place.
class FileLock {
 public:
  explicit FileLock(const fs::path& file) {
    const fs::path path = file.parent_path() / ".preferences.lock";
    descriptor_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor_ < 0) return;
    const auto end = std::chrono::steady_clock::now() + kLongestWait;
    while (flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
      const bool is_busy = errno == EWOULDBLOCK || errno == EINTR;
      if (!is_busy || std::chrono::steady_clock::now() > end) return;
      std::this_thread::sleep_for(kWaitStep);
    }
    is_held_ = true;
  }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  bool IsHeld() const { return is_held_; }

 private:
  int descriptor_ = -1;
  bool is_held_ = false;
};

/// The file's dictionary, empty if there is no file or nothing in it; null if it is damaged or
/// cannot be read.
Owned<CFDictionaryRef> ReadDictionary(const fs::path& path) {
  std::vector<UInt8> bytes;
  const OSStatus status = quillmere::ReadWholeFile(
      path, static_cast<std::size_t>(quillmere::kLargestPropertyList), &bytes);
  if (status == fnfErr || (!status && bytes.empty()))
    return Owned<CFDictionaryRef>(CFDictionaryCreateMutable(kCFAllocatorDefault));
  if (status) return {};
  const Owned<CFDataRef> data(CFDataCreate(kCFAllocatorDefault, bytes.data(), std::ssize(bytes)));
  Owned<CFTypeRef> list(CFPropertyListCreateFromXMLData(kCFAllocatorDefault, data.get(),
                                                        kCFPropertyListImmutable, nullptr));
  const CFDictionaryRef dictionary = quillmere::AsDictionary(list.get());
  if (!dictionary) return {};
  CFRetain(dictionary);
  return Owned<CFDictionaryRef>(dictionary);
}

bool WriteDictionary(const fs::path& path, CFDictionaryRef dictionary) {
  const Owned<CFDataRef> data(CFPropertyListCreateXMLData(kCFAllocatorDefault, dictionary));
  if (!data) return false;
  const std::span bytes(CFDataGetBytePtr(data.get()),
                        static_cast<std::size_t>(CFDataGetLength(data.get())));
  return quillmere::ReplaceWholeFile(path, bytes, true) == noErr;
}

/// True for a value that has a form in a preferences file.
bool IsStorable(CFStringRef key, CFTypeRef value) {
  const Owned<CFMutableDictionaryRef> alone(CFDictionaryCreateMutable(kCFAllocatorDefault));
  CFDictionarySetValue(alone.get(), key, value);
  return static_cast<bool>(
      Owned<CFDataRef>(CFPropertyListCreateXMLData(kCFAllocatorDefault, alone.get())));
}

class Preferences {
 public:
  void Set(CFStringRef key, CFPropertyListRef value) {
    Owned<CFTypeRef> copy(
        CFPropertyListCreateDeepCopy(kCFAllocatorDefault, value, kCFPropertyListImmutable));
    if (!copy) copy.reset(CFRetain(value));
    const std::lock_guard lock(mutex_);
    held_.insert_or_assign(std::u16string(quillmere::UnitsOf(key)), std::move(copy));
  }

  CFPropertyListRef Copy(CFStringRef key) {
    const std::lock_guard lock(mutex_);
    const auto held = held_.find(quillmere::UnitsOf(key));
    if (held != held_.end()) return CFRetain(held->second.get());
    const fs::path file = PreferencesFile();
    if (!stored_ || file != file_) {
      Owned<CFDictionaryRef> stored = ReadDictionary(file);
      if (!stored) stored.reset(CFDictionaryCreateMutable(kCFAllocatorDefault));
      TakeOver(file, std::move(stored));
    }
    return CFRetain(CFDictionaryGetValue(stored_.get(), key));
  }

  bool Synchronize() {
    const std::lock_guard lock(mutex_);
    const fs::path file = PreferencesFile();
    if (file.empty()) return false;
    if (held_.empty()) {
      Owned<CFDictionaryRef> stored = ReadDictionary(file);
      if (!stored) return false;
      TakeOver(file, std::move(stored));
      return true;
    }
    if (!MakeFolderOf(file)) return false;
    const FileLock file_lock(file);
    const Owned<CFDictionaryRef> stored =
        file_lock.IsHeld() ? ReadDictionary(file) : Owned<CFDictionaryRef>();
    if (!stored) return false;
    Owned<CFMutableDictionaryRef> merged(
        CFDictionaryCreateMutableCopy(kCFAllocatorDefault, stored.get()));
    const std::vector<std::u16string> merged_keys = MergeInto(merged.get());
    if (!merged_keys.empty() && !WriteDictionary(file, merged.get())) return false;
    TakeOver(file, Owned<CFDictionaryRef>(merged.release()));
    for (const std::u16string& key : merged_keys)
      held_.erase(key);
    return held_.empty();
  }

 private:
  void TakeOver(const fs::path& file, Owned<CFDictionaryRef> stored) {
    file_ = file;
    stored_ = std::move(stored);
  }

  /// Puts what is held and can be stored into a dictionary; gives the keys.
  std::vector<std::u16string> MergeInto(CFMutableDictionaryRef dictionary) const {
    std::vector<std::u16string> keys;
    for (const auto& [units, value] : held_) {
      const Owned<CFStringRef> key(
          CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(), std::ssize(units)));
      if (value && !IsStorable(key.get(), value.get())) continue;
      if (value) {
        CFDictionarySetValue(dictionary, key.get(), value.get());
      } else {
        CFDictionaryRemoveValue(dictionary, key.get());
      }
      keys.push_back(units);
    }
    return keys;
  }

  std::mutex mutex_;
  fs::path file_;                                                 ///< the file that `stored_` is of
  Owned<CFDictionaryRef> stored_;                                 ///< null before the first reading
  std::map<std::u16string, Owned<CFTypeRef>, std::less<>> held_;  ///< null removes the key
};

Preferences& ThePreferences() {
  static auto* const preferences = new Preferences;
  return *preferences;
}

bool IsThisApplication(CFStringRef application) {
  return application && CFEqual(application, kCFPreferencesCurrentApplication) != 0;
}

}  // namespace

void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef application) {
  if (key && IsThisApplication(application)) ThePreferences().Set(key, value);
}

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application) {
  return key && IsThisApplication(application) ? ThePreferences().Copy(key) : nullptr;
}

Boolean CFPreferencesAppSynchronize(CFStringRef application) {
  return IsThisApplication(application) && ThePreferences().Synchronize() ? 1 : 0;
}
