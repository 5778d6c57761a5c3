#include "forks.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <memory>
#include <mutex>

namespace {

using quillmere::files::StatusOfErrno;

struct OpenFork {
  std::mutex mutex;
  int descriptor = -1;
  bool writable = false;
  SInt64 mark = 0;

  OpenFork() = default;
  OpenFork(const OpenFork&) = delete;
  OpenFork& operator=(const OpenFork&) = delete;
  ~OpenFork() {
    if (descriptor >= 0) close(descriptor);
  }
};

constexpr std::size_t kMostForks = 4096;

/// The open forks; a fork's number is its place plus 1.
struct ForkTable {
  std::mutex mutex;
  std::array<std::shared_ptr<OpenFork>, kMostForks> forks;
};

ForkTable& Forks() {
  // Never destroyed: a log may be written until the process ends.
  static auto* table = std::make_unique<ForkTable>().release();
  return *table;
}

std::shared_ptr<OpenFork> Find(FSIORefNum fork) {
  if (fork < 1 || static_cast<std::size_t>(fork) > kMostForks) return nullptr;
  ForkTable& table = Forks();
  const std::lock_guard lock(table.mutex);
  return table.forks[static_cast<std::size_t>(fork - 1)];
}

OSErr AddFork(std::shared_ptr<OpenFork> open, FSIORefNum* fork) {
  ForkTable& table = Forks();
  const std::lock_guard lock(table.mutex);
  for (std::size_t i = 0; i < kMostForks; ++i) {
    if (table.forks[i]) continue;
    table.forks[i] = std::move(open);
    *fork = static_cast<FSIORefNum>(i + 1);
    return noErr;
  }
  return tmfoErr;
}

/// Opens the file for `permission`; -1 with errno on failure.
int OpenFor(const std::filesystem::path& path, SInt8 permission, bool* writable) {
  const auto open_with = [&path](int mode) {
    return open(path.c_str(), mode | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
  };
  *writable = permission != fsRdPerm;
  int descriptor = open_with(*writable ? O_RDWR : O_RDONLY);
  // A file that may be written but not read.
  if (descriptor < 0 && permission == fsWrPerm) descriptor = open_with(O_WRONLY);
  if (descriptor < 0 && permission == fsCurPerm) {
    *writable = false;
    descriptor = open_with(O_RDONLY);
  }
  return descriptor;
}

/// The fork of a number, for one call at a time.
class LockedFork {
 public:
  explicit LockedFork(FSIORefNum number) : fork_(Find(number)) {
    if (fork_) lock_ = std::unique_lock(fork_->mutex);
  }
  explicit operator bool() const { return fork_ != nullptr; }
  OpenFork& operator*() const { return *fork_; }
  OpenFork* operator->() const { return fork_.get(); }

 private:
  std::shared_ptr<OpenFork> fork_;
  std::unique_lock<std::mutex> lock_;
};

OSErr SizeOf(const OpenFork& fork, SInt64* size) {
  struct stat found;
  if (fstat(fork.descriptor, &found) != 0) return StatusOfErrno(errno);
  *size = found.st_size;
  return noErr;
}

/// The position that a mode and an offset stand for.
OSErr Position(const OpenFork& fork, UInt16 mode, SInt64 offset, SInt64* position) {
  SInt64 base = 0;
  mode = static_cast<UInt16>(mode & ~(noCacheMask | forceReadMask));
  if (mode == fsAtMark) offset = 0;
  if (mode == fsAtMark || mode == fsFromMark) base = fork.mark;
  if (mode == fsFromLEOF) {
    const OSErr status = SizeOf(fork, &base);
    if (status) return status;
  } else if (mode > fsFromMark) {
    return static_cast<OSErr>(paramErr);
  }
  if (__builtin_add_overflow(base, offset, position) || *position < 0) return posErr;
  return noErr;
}

/// Transfers bytes by `step(done, place)`, which does what the system's pread and pwrite do for
/// what is left, until all are done. The mark stands behind them then. `end_status` stands for a
/// place that no file can have, and for a step that does nothing.
template <class Step>
OSErr Transfer(OpenFork* fork, UInt16 mode, SInt64 offset, ByteCount count, const void* buffer,
               ByteCount* actual, OSErr end_status, Step step) {
  if (!buffer && count > 0) return static_cast<OSErr>(paramErr);
  SInt64 position = 0;
  OSErr status = Position(*fork, mode, offset, &position);
  if (status) return status;
  if (count > static_cast<ByteCount>(std::numeric_limits<SInt64>::max() - position)) {
    return end_status;
  }
  ByteCount done = 0;
  while (done < count && !status) {
    const ssize_t moved = step(done, position + static_cast<SInt64>(done));
    if (moved > 0) {
      done += static_cast<ByteCount>(moved);
    } else if (moved == 0) {
      status = end_status;
    } else if (errno != EINTR) {
      status = StatusOfErrno(errno);
    }
  }
  fork->mark = position + static_cast<SInt64>(done);
  if (actual) *actual = done;
  return status;
}

}  // namespace

OSErr FSOpenFork(const FSRef* reference, UInt32 fork_name_length, const UniChar* /*fork_name*/,
                 SInt8 permission, FSIORefNum* fork) {
  if (fork) *fork = 0;
  if (!reference || !fork || permission < fsCurPerm || permission > fsRdWrPerm) {
    return static_cast<OSErr>(paramErr);
  }
  if (fork_name_length != 0) return bdNamErr;
  std::filesystem::path path;
  const OSStatus status = quillmere::files::PathOf(*reference, &path);
  if (status) return static_cast<OSErr>(status);
  auto open = std::make_shared<OpenFork>();
  open->descriptor = OpenFor(path, permission, &open->writable);
  if (open->descriptor < 0) return StatusOfErrno(errno);
  struct stat found;
  if (fstat(open->descriptor, &found) != 0) return StatusOfErrno(errno);
  if (!S_ISREG(found.st_mode)) return permErr;
  return AddFork(std::move(open), fork);
}

OSErr FSWriteFork(FSIORefNum fork, UInt16 position_mode, SInt64 offset, ByteCount count,
                  const void* buffer, ByteCount* actual) {
  if (actual) *actual = 0;
  const LockedFork open(fork);
  if (!open) return rfNumErr;
  if (!open->writable) return wrPermErr;
  const auto* bytes = static_cast<const UInt8*>(buffer);
  return Transfer(&*open, position_mode, offset, count, buffer, actual, dskFulErr,
                  [&](ByteCount done, off_t place) {
                    return pwrite(open->descriptor, bytes + done, count - done, place);
                  });
}

OSErr FSReadFork(FSIORefNum fork, UInt16 position_mode, SInt64 offset, ByteCount count,
                 void* buffer, ByteCount* actual) {
  if (actual) *actual = 0;
  const LockedFork open(fork);
  if (!open) return rfNumErr;
  auto* bytes = static_cast<UInt8*>(buffer);
  return Transfer(&*open, position_mode, offset, count, buffer, actual, eofErr,
                  [&](ByteCount done, off_t place) {
                    return pread(open->descriptor, bytes + done, count - done, place);
                  });
}

OSErr PBReadForkSync(FSForkIOParam* transfer) {
  if (!transfer) return static_cast<OSErr>(paramErr);
  return FSReadFork(transfer->forkRefNum, transfer->positionMode, transfer->positionOffset,
                    transfer->requestCount, transfer->buffer, &transfer->actualCount);
}

OSErr PBWriteForkSync(FSForkIOParam* transfer) {
  if (!transfer) return static_cast<OSErr>(paramErr);
  return FSWriteFork(transfer->forkRefNum, transfer->positionMode, transfer->positionOffset,
                     transfer->requestCount, transfer->buffer, &transfer->actualCount);
}

OSErr FSGetForkSize(FSIORefNum fork, SInt64* size) {
  if (!size) return static_cast<OSErr>(paramErr);
  const LockedFork open(fork);
  return open ? SizeOf(*open, size) : rfNumErr;
}

OSErr FSSetForkSize(FSIORefNum fork, UInt16 position_mode, SInt64 offset) {
  const LockedFork open(fork);
  if (!open) return rfNumErr;
  if (!open->writable) return wrPermErr;
  SInt64 size = 0;
  const OSErr status = Position(*open, position_mode, offset, &size);
  if (status) return status;
  if (ftruncate(open->descriptor, size) != 0) return StatusOfErrno(errno);
  open->mark = std::min(open->mark, size);
  return noErr;
}

OSErr FSGetForkPosition(FSIORefNum fork, SInt64* position) {
  if (!position) return static_cast<OSErr>(paramErr);
  const LockedFork open(fork);
  if (!open) return rfNumErr;
  *position = open->mark;
  return noErr;
}

OSErr FSSetForkPosition(FSIORefNum fork, UInt16 position_mode, SInt64 offset) {
  const LockedFork open(fork);
  if (!open) return rfNumErr;
  SInt64 size = 0;
  SInt64 position = 0;
  OSErr status = Position(*open, position_mode, offset, &position);
  if (!status) status = SizeOf(*open, &size);
  if (status) return status;
  open->mark = std::min(position, size);
  return position > size ? eofErr : OSErr{noErr};
}

OSErr FSFlushFork(FSIORefNum fork) {
  const std::shared_ptr<OpenFork> open = Find(fork);
  if (!open) return rfNumErr;
  return fdatasync(open->descriptor) == 0 ? OSErr{noErr} : StatusOfErrno(errno);
}

OSErr FSCloseFork(FSIORefNum fork) {
  const std::shared_ptr<OpenFork> open = Find(fork);
  if (!open) return rfNumErr;
  ForkTable& table = Forks();
  const std::lock_guard lock(table.mutex);
  table.forks[static_cast<std::size_t>(fork - 1)].reset();
  return noErr;
}
