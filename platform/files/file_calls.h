/// The calls of the system that change what is on a disk, in one place, so that tests can let each
/// of them fail in turn. They return what the system's return: -1 with errno on a failure. None
/// follows a link in the last name.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <span>
#include <string>

#include "base_types.h"

namespace quillmere::files {

/// `flags` are those of renameat2.
int RenameAt(int from_folder, const std::string& from, int to_folder, const std::string& to,
             unsigned flags);
/// `flags` are those of unlinkat.
int UnlinkAt(int folder, const std::string& name, int flags);
int MakeFolderAt(int folder, const std::string& name, mode_t mode);
/// Opens a new file for writing; EEXIST if there is something of that name.
int MakeFileAt(int folder, const std::string& name, mode_t mode);
int SetMode(int folder, const std::string& name, mode_t mode);
int SetOwner(int folder, const std::string& name, uid_t owner, gid_t group);
/// Access and modification times, as utimensat takes them.
int SetTimes(int folder, const std::string& name, const timespec (&times)[2]);
/// A symbolic link to `target`.
int MakeLinkAt(const std::string& target, int folder, const std::string& name);

/// On open files. The first three return the bytes that were written, at least one for a count
/// above 0, or -1; the second at a position, the third of those of another file from its position
/// on.
ssize_t WriteBytes(int file, const void* bytes, std::size_t count);
ssize_t WriteBytesAt(int file, const void* bytes, std::size_t count, off_t position);
ssize_t CopyBytes(int from, int to, std::size_t count);
/// Writes all bytes.
int WriteAll(int file, std::span<const UInt8> bytes);
int SetSize(int file, off_t size);
/// Waits until the content, or all that belongs to the file, is on the disk.
int FlushContent(int file);
int FlushAll(int file);
int SetModeOf(int file, mode_t mode);
int SetTimesOf(int file, const timespec (&times)[2]);
int SetAttributeOf(int file, const std::string& attribute, std::span<const UInt8> bytes);

/// Sets an extended attribute, or removes it if there are no bytes; no such attribute is success.
int SetAttribute(const std::string& path, const char* attribute, std::span<const UInt8> bytes);

/// For tests: lets one of these calls of the whole process fail.
class FailingCall {
 public:
  /// The call number `number`, from 0, counted from now on, fails with `error`.
  explicit FailingCall(SInt64 number, int error);
  FailingCall(const FailingCall&) = delete;
  FailingCall& operator=(const FailingCall&) = delete;
  ~FailingCall();
  /// Whether the call came.
  bool HasFailed() const;
};

}  // namespace quillmere::files
