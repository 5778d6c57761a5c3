#include "catalogue.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "finder_information.h"
#include "place_table.h"

namespace fs = std::filesystem;
using quillmere::files::PathOf;
using quillmere::files::ReferenceOf;
using quillmere::files::StatusOfErrno;

struct FolderIterator {
  fs::path path;
  std::unique_ptr<DIR, int (*)(DIR*)> folder{nullptr, &closedir};
  UInt32 folder_number = 0;
  std::vector<std::string> names;
  std::size_t next = 0;
};

namespace {

void SetName(const std::string& name, HFSUniStr255* out) {
  const quillmere::Owned<CFStringRef> string(quillmere::CreateFromUtf8(name));
  if (FSGetHFSUniStrFromString(string.get(), out) != noErr) out->length = 0;
}

OSStatus ReadInfo(const fs::path& path, FSCatalogInfoBitmap mask, FSCatalogInfo* info) {
  if (mask & (kFSCatInfoNodeFlags | kFSCatInfoNodeID | kFSCatInfoDataSizes)) {
    struct stat found;
    if (lstat(path.c_str(), &found) != 0) return StatusOfErrno(errno);
    const bool is_folder = S_ISDIR(found.st_mode);
    const bool is_locked = (found.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
    info->nodeFlags = static_cast<UInt16>((is_folder ? kFSNodeIsDirectoryMask : 0) |
                                          (is_locked ? kFSNodeLockedMask : 0));
    info->nodeID = path == path.root_path() ? 2 : found.st_ino;
    info->dataLogicalSize = is_folder ? 0 : static_cast<UInt64>(found.st_size);
  }
  if (mask & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo)) {
    quillmere::files::FinderInformation finder;
    quillmere::files::ReadFinderInformation(path, &finder);
    std::memcpy(info->finderInfo, finder.bytes, 16);
    std::memcpy(info->extFinderInfo, finder.bytes + 16, 16);
  }
  return noErr;
}

/// A sidecar's name starts with "._" and its bytes with the AppleDouble number; a user's own file
/// may have such a name too. One that can't be read counts as a sidecar.
bool IsSidecar(int folder, const char* name) {
  if (std::strncmp(name, "._", 2) != 0) return false;
  struct stat found;
  if (fstatat(folder, name, &found, AT_SYMLINK_NOFOLLOW) != 0) return true;
  if (!S_ISREG(found.st_mode)) return false;
  const int file = openat(folder, name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (file < 0) return true;
  static constexpr UInt8 kAppleDouble[4] = {0x00, 0x05, 0x16, 0x07};
  UInt8 start[4] = {};
  const ssize_t count = read(file, start, sizeof(start));
  close(file);
  return count < 0 || (count == 4 && std::memcmp(start, kAppleDouble, 4) == 0);
}

bool IsListed(int folder, const char* name) {
  return std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0 && !IsSidecar(folder, name);
}

}  // namespace

OSErr FSGetCatalogInfo(const FSRef* reference, FSCatalogInfoBitmap mask, FSCatalogInfo* info,
                       HFSUniStr255* name, FSSpec*, FSRef* parent) {
  if (!reference || (mask != kFSCatInfoNone && !info)) return static_cast<OSErr>(paramErr);
  fs::path path;
  OSStatus status = PathOf(*reference, &path);
  if (!status && mask != kFSCatInfoNone) status = ReadInfo(path, mask, info);
  if (status) return static_cast<OSErr>(status);
  if (name) SetName(path.filename().native(), name);
  if (parent) {
    *parent = {};
    if (path != path.root_path()) status = ReferenceOf(path.parent_path(), parent);
  }
  return static_cast<OSErr>(status);
}

OSErr FSOpenIterator(const FSRef* container, UInt32 flags, FSIterator* iterator) {
  if (!container || !iterator || flags != 0) return static_cast<OSErr>(paramErr);
  *iterator = nullptr;
  auto walk = std::make_unique<FolderIterator>();
  const OSStatus status = PathOf(*container, &walk->path);
  if (status) return static_cast<OSErr>(status);
  walk->folder.reset(opendir(walk->path.c_str()));
  if (!walk->folder) return errno == ENOTDIR ? dirNFErr : StatusOfErrno(errno);
  const int descriptor = dirfd(walk->folder.get());
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(walk->folder.get());
    if (!entry) break;
    if (IsListed(descriptor, entry->d_name)) walk->names.emplace_back(entry->d_name);
  }
  if (errno) return StatusOfErrno(errno);
  walk->folder_number = quillmere::files::Places().NumberOfFolder(walk->path.native());
  // The byte order of UTF-8 is the order of its code points.
  std::sort(walk->names.begin(), walk->names.end());
  *iterator = walk.release();
  return noErr;
}

OSErr FSGetCatalogInfoBulk(FSIterator iterator, ItemCount maximum, ItemCount* actual,
                           Boolean* container_changed, FSCatalogInfoBitmap mask,
                           FSCatalogInfo* infos, FSRef* references, FSSpec*, HFSUniStr255* names) {
  if (!iterator || !actual || (mask != kFSCatInfoNone && !infos)) {
    return static_cast<OSErr>(paramErr);
  }
  *actual = 0;
  if (container_changed) *container_changed = 0;
  for (; *actual < maximum && iterator->next < iterator->names.size(); ++iterator->next) {
    const std::string& name = iterator->names[iterator->next];
    FSRef reference;
    OSStatus status = quillmere::files::ReferenceInFolder(
        dirfd(iterator->folder.get()), iterator->folder_number, name.c_str(), &reference);
    if (!status && mask != kFSCatInfoNone) {
      status = ReadInfo(iterator->path / name, mask, &infos[*actual]);
    }
    if (status == fnfErr) continue;
    if (status) return static_cast<OSErr>(status);
    if (references) references[*actual] = reference;
    if (names) SetName(name, &names[*actual]);
    ++*actual;
  }
  return iterator->next == iterator->names.size() ? errFSNoMoreItems : OSErr{noErr};
}

OSErr FSCloseIterator(FSIterator iterator) {
  if (!iterator) return static_cast<OSErr>(paramErr);
  delete iterator;
  return noErr;
}
