#include "catalogue.h"

#include <dirent.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "finder_information.h"

namespace fs = std::filesystem;
using quillmere::files::PathOf;
using quillmere::files::ReferenceOf;
using quillmere::files::StatusOfErrno;

struct FolderIterator {
  fs::path folder;
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

bool IsListed(const char* name) {
  return std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0 &&
         std::strncmp(name, "._", 2) != 0;
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
  const OSStatus status = PathOf(*container, &walk->folder);
  if (status) return static_cast<OSErr>(status);
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(walk->folder.c_str()), &closedir);
  if (!folder) return errno == ENOTDIR ? dirNFErr : StatusOfErrno(errno);
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(folder.get());
    if (!entry) break;
    if (IsListed(entry->d_name)) walk->names.emplace_back(entry->d_name);
  }
  if (errno) return StatusOfErrno(errno);
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
    const fs::path path = iterator->folder / name;
    FSRef reference;
    OSStatus status = ReferenceOf(path, &reference);
    if (!status && mask != kFSCatInfoNone) status = ReadInfo(path, mask, &infos[*actual]);
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

const CFStringRef kLSItemExtension = CFSTR("LSItemExtension");

OSStatus LSCopyItemAttribute(const FSRef* reference, SInt32, CFStringRef name, CFTypeRef* value) {
  if (!reference || !name || !value) return paramErr;
  *value = nullptr;
  if (CFStringCompare(name, kLSItemExtension, 0) != kCFCompareEqualTo) {
    return kLSAttributeNotFoundErr;
  }
  fs::path path;
  const OSStatus status = PathOf(*reference, &path);
  if (status) return status;
  const std::string extension = path.filename().extension().native();
  if (extension.size() < 2) return kLSAttributeNotFoundErr;
  *value = quillmere::CreateFromUtf8(std::string_view(extension).substr(1));
  return noErr;
}
