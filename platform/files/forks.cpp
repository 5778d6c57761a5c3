#include "forks.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

/// The position that a mode and an offset stand for.
OSErr Position(const OpenFork& fork, UInt16 mode, SInt64 offset, SInt64* position) {
  SInt64 base = 0;
  if (mode == fsAtMark) offset = 0;
  if (mode == fsAtMark || mode == fsFromMark) base = fork.mark;
  if (mode == fsFromLEOF) {
    struct stat found;
    if (fstat(fork.descriptor, &found) != 0) return StatusOfErrno(errno);
    base = found.st_size;
  } else if (mode > fsFromMark) {
    return static_cast<OSErr>(paramErr);
  }
  if (__builtin_add_overflow(base, offset, position) || *position < 0) return posErr;
  return noErr;
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
  if (!buffer && count > 0) return static_cast<OSErr>(paramErr);
  const std::shared_ptr<OpenFork> open = Find(fork);
  if (!open) return rfNumErr;
  const std::lock_guard lock(open->mutex);
  if (!open->writable) return wrPermErr;
  SInt64 position = 0;
  const OSErr status = Position(*open, position_mode, offset, &position);
  if (status) return status;
  if (count > static_cast<ByteCount>(std::numeric_limits<SInt64>::max() - position))
    return dskFulErr;
  const auto* bytes = static_cast<const UInt8*>(buffer);
  ByteCount done = 0;
  OSErr result = noErr;
  while (done < count && !result) {
    const ssize_t written =
        pwrite(open->descriptor, bytes + done, count - done, position + static_cast<SInt64>(done));
    if (written >= 0) {
      done += static_cast<ByteCount>(written);
    } else if (errno != EINTR) {
      result = StatusOfErrno(errno);
    }
  }
  open->mark = position + static_cast<SInt64>(done);
  if (actual) *actual = done;
  return result;
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
