#include "fork_streams.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <map>
#include <mutex>
#include <utility>

#include "file_calls.h"
#include "forks.h"

namespace quillmere::files {
namespace {

/// An extra fork of up to this size goes to the disk with every write.
constexpr std::size_t kMostBytesAtOnce = std::size_t{64} << 10;

class DataForkStream final : public ForkStream {
 public:
  explicit DataForkStream(Descriptor file) : file_(std::move(file)) {}

  ssize_t Read(void* buffer, std::size_t count, SInt64 position) override {
    return pread(file_.get(), buffer, count, position);
  }
  ssize_t Write(const void* bytes, std::size_t count, SInt64 position) override {
    return WriteBytesAt(file_.get(), bytes, count, position);
  }
  OSErr Size(SInt64* size) override {
    struct stat found;
    if (fstat(file_.get(), &found) != 0) return StatusOfErrno(errno);
    *size = found.st_size;
    return noErr;
  }
  OSErr SetSize(SInt64 size) override {
    return files::SetSize(file_.get(), size) == 0 ? OSErr{noErr} : StatusOfErrno(errno);
  }
  OSErr Flush() override {
    return FlushContent(file_.get()) == 0 ? OSErr{noErr} : StatusOfErrno(errno);
  }

 private:
  Descriptor file_;
};

/// What the streams of one extra fork share.
struct ExtraForkContent {
  std::mutex mutex;
  FSRef file{};
  std::string name;
  ForkBytes bytes;
  bool is_changed = false;

  OSErr Save() {
    if (!is_changed) return noErr;
    ObjectPlace place;
    OSStatus status = FindObject(file, &place);
    if (!status) status = WriteExtraFork(place, name, bytes);
    is_changed = status != noErr;
    return static_cast<OSErr>(status);
  }
};

using ContentKey = std::pair<std::pair<UInt64, UInt64>, std::string>;

/// The content of an extra fork, shared with those who have it open already.
OSErr ContentOf(const FSRef& reference, const ObjectPlace& place, const std::string& name,
                std::shared_ptr<ExtraForkContent>* content) {
  static std::mutex mutex;
  static std::map<ContentKey, std::weak_ptr<ExtraForkContent>> contents;
  const std::lock_guard lock(mutex);
  std::erase_if(contents, [](const auto& entry) { return entry.second.expired(); });
  const ObjectIdentity identity = IdentityOf(place.info);
  std::weak_ptr<ExtraForkContent>& known = contents[{{identity.device, identity.inode}, name}];
  *content = known.lock();
  if (*content) return noErr;
  auto fresh = std::make_shared<ExtraForkContent>();
  const OSStatus status = ReadExtraFork(place, name, &fresh->bytes);
  if (status) return static_cast<OSErr>(status);
  fresh->file = reference;
  fresh->name = name;
  known = fresh;
  *content = std::move(fresh);
  return noErr;
}

class ExtraForkStream final : public ForkStream {
 public:
  /// `file` is open to hold its lock.
  ExtraForkStream(Descriptor file, std::shared_ptr<ExtraForkContent> content)
      : file_(std::move(file)), content_(std::move(content)) {}

  ssize_t Read(void* buffer, std::size_t count, SInt64 position) override {
    const std::lock_guard lock(content_->mutex);
    const auto start = std::min<UInt64>(static_cast<UInt64>(position), content_->bytes.size());
    count = std::min<std::size_t>(count, content_->bytes.size() - start);
    if (count > 0) std::memcpy(buffer, content_->bytes.data() + start, count);
    return static_cast<ssize_t>(count);
  }
  ssize_t Write(const void* bytes, std::size_t count, SInt64 position) override {
    const std::lock_guard lock(content_->mutex);
    const auto start = static_cast<UInt64>(position);
    if (start > kMostExtraForkBytes || count > kMostExtraForkBytes - start) {
      errno = EFBIG;
      return -1;
    }
    if (content_->bytes.size() < start + count) content_->bytes.resize(start + count);
    std::memcpy(content_->bytes.data() + start, bytes, count);
    content_->is_changed = true;
    return static_cast<ssize_t>(count);
  }
  OSErr Size(SInt64* size) override {
    const std::lock_guard lock(content_->mutex);
    *size = static_cast<SInt64>(content_->bytes.size());
    return noErr;
  }
  OSErr SetSize(SInt64 size) override {
    const std::lock_guard lock(content_->mutex);
    if (static_cast<UInt64>(size) > kMostExtraForkBytes) return dskFulErr;
    content_->bytes.resize(static_cast<std::size_t>(size));
    content_->is_changed = true;
    return noErr;
  }
  OSErr Settle() override {
    const std::lock_guard lock(content_->mutex);
    return content_->bytes.size() <= kMostBytesAtOnce ? content_->Save() : OSErr{noErr};
  }
  OSErr Flush() override {
    const std::lock_guard lock(content_->mutex);
    return content_->Save();
  }
  OSErr Close() override { return Flush(); }

 private:
  Descriptor file_;
  std::shared_ptr<ExtraForkContent> content_;
};

/// Opens the file for `permission`; the descriptor is -1 with errno on a failure.
Descriptor OpenFor(const ObjectPlace& place, SInt8 permission) {
  const auto open_with = [&place](int mode) {
    return Descriptor(
        openat(place.folder.get(), place.name.c_str(), mode | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
  };
  if (permission == fsRdPerm) return open_with(O_RDONLY);
  Descriptor file = open_with(O_RDWR);
  // A file that may be written but not read.
  if (!file.IsOpen() && permission == fsWrPerm) file = open_with(O_WRONLY);
  return file;
}

/// Takes the lock of a fork's only writer: one byte far behind the end of any file, chosen by the
/// fork's name. Where the volume has no locks there is none.
OSErr LockForWriting(const Descriptor& file, const std::string& name) {
  UInt32 hash = 0;
  for (const char unit : name)
    hash = hash * 31 + static_cast<UInt8>(unit);
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = std::numeric_limits<off_t>::max() - 2 - static_cast<off_t>(hash % 0x10000);
  lock.l_len = 1;
  if (fcntl(file.get(), F_OFD_SETLK, &lock) == 0) return noErr;
  return errno == EAGAIN || errno == EACCES ? opWrErr : OSErr{noErr};
}

OSErr OpenStreamAs(const FSRef& reference, const ObjectPlace& place, const std::string& name,
                   SInt8 permission, StreamOpening* opening) {
  const bool writes = permission != fsRdPerm;
  if (writes && IsLocked(place.info)) return fLckdErr;
  Descriptor file = OpenFor(place, permission);
  if (!file.IsOpen()) return writes && errno == EACCES ? permErr : StatusOfErrno(errno);
  struct stat found;
  if (fstat(file.get(), &found) != 0) return StatusOfErrno(errno);
  if (!S_ISREG(found.st_mode)) return permErr;
  // What was found is what was opened, or somebody has put another file there in between.
  opening->file = IdentityOf(place.info);
  if (found.st_ino != opening->file.inode) return fnfErr;
  OSErr status = writes ? LockForWriting(file, name) : OSErr{noErr};
  if (status) return status;
  opening->is_writable = writes;
  if (name.empty()) {
    opening->stream = std::make_unique<DataForkStream>(std::move(file));
    return noErr;
  }
  std::shared_ptr<ExtraForkContent> content;
  status = ContentOf(reference, place, name, &content);
  if (status) return status;
  opening->stream = std::make_unique<ExtraForkStream>(std::move(file), std::move(content));
  return noErr;
}

}  // namespace

OSErr OpenStream(const FSRef& reference, const std::string& name, SInt8 permission,
                 StreamOpening* opening) {
  ObjectPlace place;
  const OSStatus found = FindObject(reference, &place);
  if (found) return static_cast<OSErr>(found);
  if (place.IsFolder()) return permErr;
  if (permission != fsCurPerm) return OpenStreamAs(reference, place, name, permission, opening);
  const OSErr status = OpenStreamAs(reference, place, name, fsRdWrPerm, opening);
  return status ? OpenStreamAs(reference, place, name, fsRdPerm, opening) : status;
}

}  // namespace quillmere::files
