#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "catalogue.h"
#include "creation.h"
#include "finder_information.h"

namespace fs = std::filesystem;
using quillmere::files::StatusOfErrno;

namespace {

/// The path of a name in a folder, whether there is something or not.
OSErr PlaceFor(const FSRef* parent, UInt32 length, const UniChar* name, fs::path* path) {
  if (!parent || (!name && length > 0)) return static_cast<OSErr>(paramErr);
  if (length == 0) return errFSMissingName;
  if (length > 255) return errFSNameTooLong;
  fs::path folder;
  const OSStatus status = quillmere::files::PathOf(*parent, &folder);
  if (status) return static_cast<OSErr>(status);
  const quillmere::Owned<CFStringRef> string(
      CFStringCreateWithCharacters(kCFAllocatorDefault, name, length));
  const std::string text = quillmere::ToUtf8(string.get());
  if (text.find('/') != std::string::npos || text.find('\0') != std::string::npos || text == "." ||
      text == "..") {
    return bdNamErr;
  }
  *path = folder / text;
  return noErr;
}

OSErr SetFinderInformation(const fs::path& path, FSCatalogInfoBitmap mask,
                           const FSCatalogInfo* info) {
  quillmere::files::FinderInformation finder;
  if (mask & kFSCatInfoFinderInfo) std::memcpy(finder.bytes, info->finderInfo, 16);
  if (mask & kFSCatInfoFinderXInfo) std::memcpy(finder.bytes + 16, info->extFinderInfo, 16);
  const OSStatus status = quillmere::files::WriteFinderInformation(path, finder);
  // A file system that keeps no such information holds the file as well without it.
  return status == StatusOfErrno(EOPNOTSUPP) ? OSErr{noErr} : static_cast<OSErr>(status);
}

constexpr FSCatalogInfoBitmap kSettable = kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo;

}  // namespace

OSErr FSCreateFileUnicode(const FSRef* parent, UInt32 length, const UniChar* name,
                          FSCatalogInfoBitmap mask, const FSCatalogInfo* info, FSRef* reference,
                          FSSpec*) {
  if ((mask & ~kSettable) || (mask && !info)) return static_cast<OSErr>(paramErr);
  fs::path path;
  OSErr status = PlaceFor(parent, length, name, &path);
  if (status) return status;
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (file < 0) return StatusOfErrno(errno);
  close(file);
  if (mask) status = SetFinderInformation(path, mask, info);
  if (status) {
    unlink(path.c_str());  // made by this call and still empty
    return status;
  }
  return reference ? static_cast<OSErr>(quillmere::files::ReferenceOf(path, reference)) : status;
}

OSErr FSCreateDirectoryUnicode(const FSRef* parent, UInt32 length, const UniChar* name,
                               FSCatalogInfoBitmap mask, const FSCatalogInfo* info,
                               FSRef* reference, FSSpec*, UInt32* directory_id) {
  if ((mask & ~kSettable) || (mask && !info)) return static_cast<OSErr>(paramErr);
  fs::path path;
  OSErr status = PlaceFor(parent, length, name, &path);
  if (status) return status;
  if (mkdir(path.c_str(), 0777) != 0) return StatusOfErrno(errno);
  if (mask) status = SetFinderInformation(path, mask, info);
  if (status) {
    rmdir(path.c_str());
    return status;
  }
  struct stat found;
  if (directory_id) {
    if (lstat(path.c_str(), &found) != 0) return StatusOfErrno(errno);
    *directory_id = static_cast<UInt32>(found.st_ino);
  }
  return reference ? static_cast<OSErr>(quillmere::files::ReferenceOf(path, reference)) : status;
}
