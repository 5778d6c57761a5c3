#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "file_references.h"

namespace quillmere::movies {

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 20;
/// Shorter runs are gathered in the buffer: a read and a share of a write cost less than a copy
/// within the system.
constexpr UInt64 kSmallRun = UInt64{64} << 10;
constexpr mode_t kFileMode = 0666;

OSStatus LastError() {
  return files::StatusOfErrno(errno);
}

std::filesystem::path FolderOf(const std::filesystem::path& path) {
  return path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
}

/// Where the system can't copy between these two files at all, as against a failed copy.
bool CantCopyWithinSystem(int error) {
  return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP ||
         error == ETXTBSY || error == EPERM;
}

}  // namespace

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) close(descriptor_);
  if (!temporary_path_.empty()) unlink(temporary_path_.c_str());
}

OSStatus OutputFile::Create(const std::filesystem::path& final_path) {
  final_path_ = final_path;
  descriptor_ = open(FolderOf(final_path).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kFileMode);
  if (descriptor_ >= 0) return noErr;
  const bool has_no_nameless_files = errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL;
  return has_no_nameless_files ? CreateNamed() : LastError();
}

OSStatus OutputFile::CreateNamed() {
  std::string name = final_path_.filename().string();
  constexpr std::size_t kLongestStem = 200;
  name.resize(std::min(name.size(), kLongestStem));
  std::string path = (FolderOf(final_path_) / ("." + name + ".XXXXXX.part")).string();
  descriptor_ = mkostemps(path.data(), 5, O_CLOEXEC);
  if (descriptor_ < 0) return LastError();
  temporary_path_ = path;
  const mode_t mask = umask(0);
  umask(mask);
  return fchmod(descriptor_, kFileMode & ~mask) == 0 ? noErr : LastError();
}

OSStatus OutputFile::WriteOut(std::span<const UInt8> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor_, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return LastError();
    if (count == 0) return ioErr;
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return noErr;
}

OSStatus OutputFile::FlushBuffer() {
  const std::size_t count = std::exchange(buffered_, 0);
  return WriteOut({buffer_.get(), count});
}

OSStatus OutputFile::Write(std::span<const UInt8> bytes) {
  if (!buffer_) buffer_ = std::make_unique_for_overwrite<UInt8[]>(kBufferSize);
  if (bytes.size() > kBufferSize - buffered_) {
    const OSStatus status = FlushBuffer();
    if (status != noErr) return status;
  }
  if (bytes.size() > kBufferSize) return WriteOut(bytes);
  std::copy(bytes.begin(), bytes.end(), buffer_.get() + buffered_);
  buffered_ += bytes.size();
  return noErr;
}

/// Copies as much as the system does; stops early, without an error, where it can't.
OSStatus OutputFile::CopyWithinSystem(const DataSource& source, UInt64 offset, UInt64 size,
                                      UInt64* copied) {
  *copied = 0;
  while (system_can_copy_ && *copied < size) {
    auto position = static_cast<off_t>(offset + *copied);
    const ssize_t count = copy_file_range(source.descriptor(), &position, descriptor_, nullptr,
                                          static_cast<std::size_t>(size - *copied), 0);
    if (count > 0) {
      *copied += static_cast<UInt64>(count);
    } else if (count == 0) {
      return noErr;  // the end of the source, or a file system that only says so
    } else if (CantCopyWithinSystem(errno)) {
      system_can_copy_ = false;
    } else if (errno != EINTR) {
      return LastError();
    }
  }
  return noErr;
}

OSStatus OutputFile::CopyThroughBuffer(const DataSource& source, UInt64 offset, UInt64 size) {
  if (!buffer_) buffer_ = std::make_unique_for_overwrite<UInt8[]>(kBufferSize);
  for (UInt64 done = 0; done < size;) {
    const auto count =
        static_cast<std::size_t>(std::min<UInt64>(size - done, kBufferSize - buffered_));
    OSStatus status = read_ahead_.Read(source, offset + done, {buffer_.get() + buffered_, count});
    if (status != noErr) return status;
    buffered_ += count;
    done += count;
    if (buffered_ == kBufferSize) status = FlushBuffer();
    if (status != noErr) return status;
  }
  return noErr;
}

OSStatus OutputFile::CopyPiece(const DataSource& source, UInt64 offset, UInt64 size,
                               bool is_small) {
  UInt64 copied = 0;
  if (!is_small) {
    OSStatus status = buffered_ > 0 ? FlushBuffer() : noErr;
    if (status == noErr) status = CopyWithinSystem(source, offset, size, &copied);
    if (status != noErr) return status;
  }
  return copied < size ? CopyThroughBuffer(source, offset + copied, size - copied)
                       : OSStatus{noErr};
}

OSStatus OutputFile::Copy(std::span<const std::shared_ptr<DataSource>> sources,
                          const CopyRuns& runs, UInt64 piece, const CopyProgress& progress) {
  UInt64 done = 0;
  UInt64 reported = 0;
  for (const CopyRun& run : runs) {
    for (UInt64 at = 0; at < run.size;) {
      const UInt64 size = std::min(run.size - at, piece);
      OSStatus status =
          CopyPiece(*sources[run.source], run.offset + at, size, run.size < kSmallRun);
      at += size;
      done += size;
      if (status == noErr && done - reported >= piece) {
        reported = done;
        status = progress(done);
      }
      if (status != noErr) return status;
    }
  }
  const OSStatus status = buffered_ > 0 ? FlushBuffer() : noErr;
  return status == noErr && done > reported ? progress(done) : status;
}

OSStatus OutputFile::Publish() {
  const OSStatus flushed = buffered_ > 0 ? FlushBuffer() : noErr;
  if (flushed != noErr) return flushed;
  if (temporary_path_.empty()) {
    const std::string open_file = "/proc/self/fd/" + std::to_string(descriptor_);
    if (linkat(AT_FDCWD, open_file.c_str(), AT_FDCWD, final_path_.c_str(), AT_SYMLINK_FOLLOW) !=
        0) {
      return LastError();
    }
    return noErr;
  }
  if (close(std::exchange(descriptor_, -1)) != 0) return LastError();
  if (renameat2(AT_FDCWD, temporary_path_.c_str(), AT_FDCWD, final_path_.c_str(),
                RENAME_NOREPLACE) != 0) {
    // File systems that can't rename this way can link, which never replaces either.
    const bool has_no_such_rename = errno == EINVAL || errno == ENOSYS;
    if (!has_no_such_rename || link(temporary_path_.c_str(), final_path_.c_str()) != 0) {
      return LastError();
    }
    unlink(temporary_path_.c_str());
  }
  temporary_path_.clear();
  return noErr;
}

}  // namespace quillmere::movies
