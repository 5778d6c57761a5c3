#include "whole_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "file_references.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kReadStep = std::size_t{256} << 10;

OSStatus LastStatus() {
  return files::StatusOfErrno(errno);
}

/// An open file, closed at the end of the scope.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  int get() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }

 private:
  int number_;
};

bool WriteAll(int file, std::span<const UInt8> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return true;
}

/// Gives a new file the owner, permissions and user's attributes of the one that it replaces, as
/// far as the system lets it.
void CopyProperties(const fs::path& source, const struct stat& information, int target) {
  [[maybe_unused]] const int is_owner_kept = fchown(target, information.st_uid, information.st_gid);
  if (fchmod(target, information.st_mode & 07777) != 0) return;
  std::vector<char> names(std::size_t{64} << 10);
  const ssize_t length = listxattr(source.c_str(), names.data(), names.size());
  std::vector<char> value(std::size_t{64} << 10);
  for (ssize_t at = 0; at < length;) {
    const std::string name(names.data() + at);
    at += static_cast<ssize_t>(name.size()) + 1;
    if (!name.starts_with("user.")) continue;
    const ssize_t size = getxattr(source.c_str(), name.c_str(), value.data(), value.size());
    if (size >= 0 &&
        fsetxattr(target, name.c_str(), value.data(), static_cast<std::size_t>(size), 0) != 0) {
      return;
    }
  }
}

/// Makes the names in a folder last; a folder that cannot be opened or synchronised is left.
void SynchronizeFolder(const fs::path& folder) {
  const Descriptor directory(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.IsOpen()) fsync(directory.get());
}

/// A new file beside the one that it will replace. It has no name until it is complete where the
/// file system can do that, so that nothing is left of it if the program ends.
class NewFile {
 public:
  NewFile(const fs::path& folder, mode_t mode) : folder_(folder) {
    descriptor_ = open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
    if (descriptor_ >= 0) return;
    TryNames([this, mode](const char* name) {
      descriptor_ = open(name, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
      return descriptor_ >= 0;
    });
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!name_.empty()) unlink(name_.c_str());
  }

  int get() const { return descriptor_; }
  bool IsOpen() const { return descriptor_ >= 0; }

  /// Writes the bytes to the disk and gives the file the name of another, which goes.
  bool Finish(std::span<const UInt8> bytes, const fs::path& target) {
    if (!WriteAll(descriptor_, bytes) || fsync(descriptor_) != 0) return false;
    if (name_.empty() && !GiveName()) return false;
    // Some file systems tell of failed writes only now.
    if (close(std::exchange(descriptor_, -1)) != 0) return false;
    if (rename(name_.c_str(), target.c_str()) != 0) return false;
    name_.clear();
    return true;
  }

 private:
  /// Calls `make` with names that are likely free until it takes one or fails otherwise.
  template <class Make>
  bool TryNames(Make make) {
    static std::atomic<unsigned> counter{0};
    constexpr int kMostTries = 1000;
    for (int i = 0; i < kMostTries; ++i) {
      const std::string name =
          folder_ / (".quillmere-" + std::to_string(getpid()) + "-" + std::to_string(counter++));
      if (make(name.c_str())) {
        name_ = name;
        return true;
      }
      if (errno != EEXIST) return false;
    }
    return false;
  }

  bool GiveName() {
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor_);
    return TryNames([&link](const char* name) {
      return linkat(AT_FDCWD, link.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0;
    });
  }

  fs::path folder_;
  std::string name_;  ///< empty while the file has none
  int descriptor_ = -1;
};

/// Where a path leads: the end of its links, which need not exist.
OSStatus EndOfLinks(const fs::path& path, fs::path* end) {
  constexpr int kMostLinks = 40;
  *end = path;
  for (int i = 0; i < kMostLinks; ++i) {
    std::error_code error;
    if (!fs::is_symlink(*end, error)) return noErr;
    const fs::path next = fs::read_symlink(*end, error);
    if (error) return files::StatusOfErrno(error.value());
    *end = end->parent_path() / next;  // an absolute link stands alone
  }
  return files::StatusOfErrno(ELOOP);
}

}  // namespace

OSStatus ReadWholeFile(const fs::path& path, std::size_t limit, std::vector<UInt8>* bytes) {
  bytes->clear();
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat information {};
  if (!file.IsOpen() || fstat(file.get(), &information) != 0) return LastStatus();
  if (!S_ISREG(information.st_mode)) return paramErr;
  if (static_cast<UInt64>(information.st_size) > limit) return memFullErr;
  for (;;) {
    const std::size_t filled = bytes->size();
    bytes->resize(filled + kReadStep);
    const ssize_t count = read(file.get(), bytes->data() + filled, kReadStep);
    const int error = errno;
    bytes->resize(filled + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count == 0) return noErr;
    if (count < 0 && error != EINTR) return files::StatusOfErrno(error);
    if (bytes->size() > limit) return memFullErr;
  }
}

OSStatus ReplaceWholeFile(const fs::path& path, std::span<const UInt8> bytes, bool is_private) {
  fs::path target;
  const OSStatus status = EndOfLinks(path, &target);
  if (status) return status;
  struct stat information {};
  const bool replaces = stat(target.c_str(), &information) == 0;
  if (replaces && !S_ISREG(information.st_mode)) return paramErr;
  if (replaces && access(target.c_str(), W_OK) != 0) return LastStatus();

  const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  NewFile file(folder, is_private ? 0600 : 0666);
  if (!file.IsOpen()) return LastStatus();
  if (replaces) CopyProperties(target, information, file.get());
  if (!file.Finish(bytes, target)) return LastStatus();
  SynchronizeFolder(folder);
  return noErr;
}

}  // namespace quillmere
