#include "data_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <map>
#include <mutex>
#include <utility>

#include "file_references.h"

namespace quillmere::movies {

namespace {

class FileSource final : public DataSource {
 public:
  FileSource(int descriptor, const Identity& identity)
      : descriptor_(descriptor), identity_(identity) {}
  FileSource(const FileSource&) = delete;
  FileSource& operator=(const FileSource&) = delete;
  ~FileSource() override { close(descriptor_); }

  OSStatus Read(UInt64 offset, std::span<UInt8> bytes) const override {
    return ReadFully(descriptor_, offset, bytes);
  }
  UInt64 size() const override { return identity_.size; }
  int descriptor() const override { return descriptor_; }
  const Identity& identity() const override { return identity_; }

 private:
  int descriptor_;
  Identity identity_;
};

/// The files that are open now, by device and inode. An entry does not keep its file open.
class OpenFiles {
 public:
  /// The open file of that identity, or a new one that takes over `descriptor`.
  std::shared_ptr<DataSource> Share(int descriptor, const DataSource::Identity& identity) {
    const std::scoped_lock lock(mutex_);
    std::erase_if(sources_, [](const auto& entry) { return entry.second.expired(); });
    std::weak_ptr<DataSource>& entry = sources_[{identity.device, identity.inode}];
    std::shared_ptr<DataSource> source = entry.lock();
    if (source != nullptr && source->identity() == identity) {
      close(descriptor);
      return source;
    }
    source = std::make_shared<FileSource>(descriptor, identity);
    entry = source;
    return source;
  }

 private:
  std::mutex mutex_;
  std::map<std::pair<UInt64, UInt64>, std::weak_ptr<DataSource>> sources_;
};

}  // namespace

OSStatus ReadFully(int file_descriptor, UInt64 offset, std::span<UInt8> bytes) {
  UInt64 end = 0;
  if (__builtin_add_overflow(offset, bytes.size(), &end) ||
      end > static_cast<UInt64>(std::numeric_limits<off_t>::max())) {
    return eofErr;
  }
  while (!bytes.empty()) {
    const ssize_t count =
        pread(file_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return files::StatusOfErrno(errno);
    if (count == 0) return eofErr;
    offset += static_cast<UInt64>(count);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return noErr;
}

OSStatus OpenDataSource(const std::filesystem::path& path, std::shared_ptr<DataSource>* source) {
  source->reset();
  // Without O_NONBLOCK a pipe of that name would wait for its writer.
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (descriptor < 0) return files::StatusOfErrno(errno);
  struct stat info = {};
  if (fstat(descriptor, &info) != 0) {
    const OSStatus status = files::StatusOfErrno(errno);
    close(descriptor);
    return status;
  }
  if (!S_ISREG(info.st_mode)) {
    close(descriptor);
    return paramErr;
  }
  static OpenFiles open_files;
  *source =
      open_files.Share(descriptor, {.device = info.st_dev,
                                    .inode = info.st_ino,
                                    .size = static_cast<UInt64>(std::max<off_t>(info.st_size, 0)),
                                    .modified_seconds = info.st_mtim.tv_sec,
                                    .modified_nanoseconds = info.st_mtim.tv_nsec});
  return noErr;
}

}  // namespace quillmere::movies
