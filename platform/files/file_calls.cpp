#include "file_calls.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

namespace quillmere::files {
namespace {

/// Calls until the one that fails; below 0 none does.
std::atomic<SInt64> calls_until_failure{-1};
std::atomic<int> failure{0};

bool Fails() {
  if (calls_until_failure.load(std::memory_order_relaxed) < 0) return false;
  if (calls_until_failure.fetch_sub(1) != 0) return false;
  errno = failure;
  return true;
}

}  // namespace

int RenameAt(int from_folder, const std::string& from, int to_folder, const std::string& to,
             unsigned flags) {
  return Fails() ? -1 : renameat2(from_folder, from.c_str(), to_folder, to.c_str(), flags);
}

int UnlinkAt(int folder, const std::string& name, int flags) {
  return Fails() ? -1 : unlinkat(folder, name.c_str(), flags);
}

int MakeFolderAt(int folder, const std::string& name, mode_t mode) {
  return Fails() ? -1 : mkdirat(folder, name.c_str(), mode);
}

int MakeFileAt(int folder, const std::string& name, mode_t mode) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
  return Fails() ? -1 : openat(folder, name.c_str(), kFlags, mode);
}

int SetMode(int folder, const std::string& name, mode_t mode) {
  return Fails() ? -1 : fchmodat(folder, name.c_str(), mode, AT_SYMLINK_NOFOLLOW);
}

int SetOwner(int folder, const std::string& name, uid_t owner, gid_t group) {
  return Fails() ? -1 : fchownat(folder, name.c_str(), owner, group, AT_SYMLINK_NOFOLLOW);
}

int SetTimes(int folder, const std::string& name, const timespec (&times)[2]) {
  return Fails() ? -1 : utimensat(folder, name.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

int MakeLinkAt(const std::string& target, int folder, const std::string& name) {
  return Fails() ? -1 : symlinkat(target.c_str(), folder, name.c_str());
}

ssize_t WriteBytes(int file, const void* bytes, std::size_t count) {
  return Fails() ? -1 : write(file, bytes, count);
}

ssize_t WriteBytesAt(int file, const void* bytes, std::size_t count, off_t position) {
  return Fails() ? -1 : pwrite(file, bytes, count, position);
}

ssize_t CopyBytes(int from, int to, std::size_t count) {
  return Fails() ? -1 : copy_file_range(from, nullptr, to, nullptr, count, 0);
}

int WriteAll(int file, std::span<const UInt8> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = WriteBytes(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written == 0) errno = ENOSPC;
    if (written <= 0) return -1;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return 0;
}

int SetSize(int file, off_t size) {
  return Fails() ? -1 : ftruncate(file, size);
}

int FlushContent(int file) {
  return Fails() ? -1 : fdatasync(file);
}

int FlushAll(int file) {
  return Fails() ? -1 : fsync(file);
}

int SetModeOf(int file, mode_t mode) {
  return Fails() ? -1 : fchmod(file, mode);
}

int SetTimesOf(int file, const timespec (&times)[2]) {
  return Fails() ? -1 : futimens(file, times);
}

int SetAttributeOf(int file, const std::string& attribute, std::span<const UInt8> bytes) {
  return Fails() ? -1 : fsetxattr(file, attribute.c_str(), bytes.data(), bytes.size(), 0);
}

int SetAttribute(const std::string& path, const char* attribute, std::span<const UInt8> bytes) {
  if (Fails()) return -1;
  if (!bytes.empty()) return lsetxattr(path.c_str(), attribute, bytes.data(), bytes.size(), 0);
  const int result = lremovexattr(path.c_str(), attribute);
  return result != 0 && (errno == ENODATA || errno == EOPNOTSUPP) ? 0 : result;
}

FailingCall::FailingCall(SInt64 number, int error) {
  failure = error;
  calls_until_failure = number;
}

FailingCall::~FailingCall() {
  calls_until_failure = -1;
}

bool FailingCall::HasFailed() const {
  return calls_until_failure < 0;
}

}  // namespace quillmere::files
