#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "file_references.h"
#include "movie_file.h"

namespace quillmere::movies {

namespace {

/// Larger writes take longer for each byte: the system then looks for larger blocks of memory.
constexpr std::size_t kBufferSize = std::size_t{256} << 10;
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

/// Whether a file has fewer blocks than bytes. Looking for holes can take long where there are
/// none.
bool HasHoles(const DataSource& source) {
  struct stat information = {};
  return fstat(source.descriptor(), &information) == 0 &&
         information.st_blocks < information.st_size / 512;
}

/// The first data of a stretch of a file: nothing, at the stretch's end, where all of it is a hole;
/// the whole stretch where the file system does not tell.
FileSpan NextData(int descriptor, UInt64 offset, UInt64 size) {
  const off_t begin = lseek(descriptor, static_cast<off_t>(offset), SEEK_DATA);
  if (begin < 0 && errno == ENXIO) {
    // There is no data up to the end of the file, which may be before that of the stretch.
    struct stat information = {};
    const bool is_whole = fstat(descriptor, &information) == 0 &&
                          static_cast<UInt64>(information.st_size) >= offset + size;
    return is_whole ? FileSpan{offset + size, 0} : FileSpan{offset, size};
  }
  if (begin < 0) return {offset, size};
  const UInt64 first = std::min(static_cast<UInt64>(begin), offset + size);
  const off_t hole = lseek(descriptor, static_cast<off_t>(first), SEEK_HOLE);
  const UInt64 end = hole < 0 ? offset + size : std::min(static_cast<UInt64>(hole), offset + size);
  return {first, std::max(end, first) - first};
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
    ends_in_hole_ = false;
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

OSStatus OutputFile::SkipHole(UInt64 size) {
  if (lseek(descriptor_, static_cast<off_t>(size), SEEK_CUR) < 0) return LastError();
  ends_in_hole_ = true;
  return noErr;
}

/// Copies the data of a stretch and, if `has_holes`, leaves out its holes.
OSStatus OutputFile::CopyLarge(const DataSource& source, UInt64 offset, UInt64 size,
                               bool has_holes) {
  OSStatus status = buffered_ > 0 ? FlushBuffer() : noErr;
  while (status == noErr && size > 0) {
    const FileSpan data =
        has_holes ? NextData(source.descriptor(), offset, size) : FileSpan{offset, size};
    if (data.offset > offset) status = SkipHole(data.offset - offset);
    UInt64 copied = 0;
    if (status == noErr) status = CopyWithinSystem(source, data.offset, data.size, &copied);
    if (status == noErr && copied < data.size) {
      status = CopyThroughBuffer(source, data.offset + copied, data.size - copied);
      if (status == noErr) status = FlushBuffer();
    }
    ends_in_hole_ = ends_in_hole_ && data.size == 0;
    size -= data.offset + data.size - offset;
    offset = data.offset + data.size;
  }
  return status;
}

OSStatus OutputFile::Copy(std::span<const std::shared_ptr<DataSource>> sources, const RunWalk& runs,
                          UInt64 piece, const CopyProgress& progress) {
  std::vector<bool> has_holes;
  for (const std::shared_ptr<DataSource>& source : sources)
    has_holes.push_back(HasHoles(*source));
  UInt64 done = 0;
  UInt64 reported = 0;
  const auto copy = [&](const CopyRun& run) {
    const DataSource& source = *sources[run.source];
    OSStatus status = noErr;
    for (UInt64 at = 0; at < run.size && status == noErr;) {
      const UInt64 size = std::min(run.size - at, piece);
      status = run.size < kSmallRun
                   ? CopyThroughBuffer(source, run.offset + at, size)
                   : CopyLarge(source, run.offset + at, size, has_holes[run.source]);
      at += size;
      done += size;
      if (status == noErr && done - reported >= piece) {
        reported = done;
        status = progress(done);
      }
    }
    return status;
  };
  OSStatus status = runs(copy);
  if (status == noErr && buffered_ > 0) status = FlushBuffer();
  return status == noErr && done > reported ? progress(done) : status;
}

OSStatus OutputFile::Publish() {
  const OSStatus flushed = buffered_ > 0 ? FlushBuffer() : noErr;
  if (flushed != noErr) return flushed;
  if (ends_in_hole_) {
    const off_t size = lseek(descriptor_, 0, SEEK_CUR);
    if (size < 0 || ftruncate(descriptor_, size) != 0) return LastError();
  }
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
