#include "file_copies.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <string>
#include <vector>

#include "catalogue_changes.h"
#include "file_calls.h"
#include "file_names.h"
#include "moves.h"
#include "sidecars.h"

namespace quillmere::files {
namespace {

constexpr std::size_t kCopyStep = std::size_t{1} << 30;
constexpr std::size_t kBuffer = std::size_t{256} << 10;

/// Files that are made under names of their own and vanish unless they are kept.
class Unfinished {
 public:
  explicit Unfinished(int folder) : folder_(folder) {}
  Unfinished(const Unfinished&) = delete;
  Unfinished& operator=(const Unfinished&) = delete;
  ~Unfinished() {
    for (const std::string& name : names_)
      UnlinkAt(folder_, name, 0);
  }
  void Add(std::string name) { names_.push_back(std::move(name)); }
  void Keep() { names_.clear(); }

 private:
  int folder_;
  std::vector<std::string> names_;
};

std::string TemporaryName(UInt32 number) {
  return ".quillmere-copy-" + std::to_string(getpid()) + "-" + std::to_string(number);
}

/// Through a buffer, where the system can't copy between the two.
bool CopyThroughBuffer(int from, int to) {
  std::vector<UInt8> buffer(kBuffer);
  for (;;) {
    const ssize_t count = read(from, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return count == 0;
    if (WriteAll(to, {buffer.data(), static_cast<std::size_t>(count)}) != 0) return false;
  }
}

OSStatus CopyContent(int from, int to) {
  if (ioctl(to, FICLONE, from) == 0) return noErr;
  for (;;) {
    const ssize_t count = CopyBytes(from, to, kCopyStep);
    if (count > 0) continue;
    if (count == 0) break;
    if (errno == EINTR) continue;
    const bool is_unable =
        errno == EXDEV || errno == EINVAL || errno == EOPNOTSUPP || errno == ENOSYS;
    if (!is_unable) return StatusOfErrno(errno);
    break;
  }
  // What copy_file_range has done stands at both files' positions; files of /proc give it nothing.
  return CopyThroughBuffer(from, to) ? OSStatus{noErr} : StatusOfErrno(errno);
}

/// Copies the user's extended attributes: Finder information, small forks, the record.
OSStatus CopyAttributes(int from, int to) {
  const ssize_t size = flistxattr(from, nullptr, 0);
  if (size <= 0) return size == 0 || errno == EOPNOTSUPP ? OSStatus{noErr} : StatusOfErrno(errno);
  std::vector<char> names(static_cast<std::size_t>(size));
  if (flistxattr(from, names.data(), names.size()) != size) return fBsyErr;
  std::vector<UInt8> value(std::size_t{64} << 10);
  for (std::size_t at = 0; at < names.size();) {
    const std::string name = names.data() + at;
    at += name.size() + 1;
    if (!name.starts_with("user.")) continue;
    const ssize_t count = fgetxattr(from, name.c_str(), value.data(), value.size());
    if (count < 0 ||
        SetAttributeOf(to, name, {value.data(), static_cast<std::size_t>(count)}) != 0) {
      return StatusOfErrno(errno);
    }
  }
  return noErr;
}

/// Copies one file of the system to a new name in a folder, with attributes, mode and times.
OSStatus CopyOne(int from_folder, const std::string& from_name, int to_folder,
                 const std::string& to_name, Unfinished* made) {
  const Descriptor from(
      openat(from_folder, from_name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat info;
  if (!from.IsOpen() || fstat(from.get(), &info) != 0) return StatusOfErrno(errno);
  if (!S_ISREG(info.st_mode)) return notAFileErr;
  const Descriptor to(MakeFileAt(to_folder, to_name, 0600));
  if (!to.IsOpen()) return StatusOfErrno(errno);
  made->Add(to_name);
  OSStatus status = CopyContent(from.get(), to.get());
  if (!status) status = CopyAttributes(from.get(), to.get());
  if (status) return status;
  const timespec times[2] = {info.st_atim, info.st_mtim};
  const bool is_done = SetModeOf(to.get(), info.st_mode & 0777) == 0 &&
                       SetTimesOf(to.get(), times) == 0 && FlushAll(to.get()) == 0;
  return is_done ? OSStatus{noErr} : StatusOfErrno(errno);
}

OSStatus CopyLink(const ObjectPlace& from, int to_folder, const std::string& to_name,
                  Unfinished* made) {
  char target[PATH_MAX];
  const ssize_t size = readlinkat(from.folder.get(), from.name.c_str(), target, sizeof(target));
  if (size < 0) return StatusOfErrno(errno);
  const std::string text(target, static_cast<std::size_t>(size));
  if (MakeLinkAt(text, to_folder, to_name) != 0) return StatusOfErrno(errno);
  made->Add(to_name);
  return noErr;
}

OSStatus Show(int folder, const std::string& temporary, const std::string& name) {
  return RenameAt(folder, temporary, folder, name, RENAME_NOREPLACE) == 0 ? OSStatus{noErr}
                                                                          : StatusOfErrno(errno);
}

/// Copies a file with its sidecar; both get their names at the end.
OSStatus Copy(const ObjectPlace& from, int to_folder, const std::string& name) {
  Unfinished made(to_folder);
  const std::string temporary = TemporaryName(0);
  OSStatus status = from.IsLink()
                        ? CopyLink(from, to_folder, temporary, &made)
                        : CopyOne(from.folder.get(), from.name, to_folder, temporary, &made);
  const bool has_sidecar = HasSidecar(from.folder.get(), from.name);
  const std::string sidecar = TemporaryName(1);
  if (!status && has_sidecar) {
    status = CopyOne(from.folder.get(), SidecarName(from.name), to_folder, sidecar, &made);
  }
  if (!status) status = Show(to_folder, temporary, name);
  if (status) return status;
  made.Add(name);
  status = RemoveStraySidecar(to_folder, name);
  if (!status && has_sidecar) status = Show(to_folder, sidecar, SidecarName(name));
  if (!status) made.Keep();
  return status;
}

}  // namespace
}  // namespace quillmere::files

OSErr PBHCopyFileSync(const FSRef* source, const FSRef* destination, UInt32 length,
                      const UniChar* name, UInt32 encoding, FSRef* new_reference) {
  namespace files = quillmere::files;
  if (!source || !destination) return static_cast<OSErr>(paramErr);
  std::string bytes;
  OSStatus status = length > 0 ? files::BytesOfName(length, name, &bytes) : OSErr{noErr};
  files::ObjectPlace from;
  files::Descriptor folder;
  std::filesystem::path folder_path;
  if (!status) status = files::FindObject(*source, &from);
  if (!status) status = files::OpenFolder(*destination, &folder, &folder_path);
  if (status) return static_cast<OSErr>(status);
  if (from.IsFolder()) return notAFileErr;
  struct statx there;
  status = files::ReadObject(folder.get(), ".", &there);
  if (status) return static_cast<OSErr>(status);
  if (files::IdentityOf(there).device != files::IdentityOf(from.info).device) return diffVolErr;
  if (bytes.empty()) bytes = from.name;
  status = files::Copy(from, folder.get(), bytes);
  FSRef copy;
  if (!status) status = files::ReferenceOf(folder_path / bytes, &copy);
  if (status) return static_cast<OSErr>(status);
  if (new_reference) *new_reference = copy;
  if (length > 0) files::KeepEncoding(copy, encoding);
  return noErr;
}
