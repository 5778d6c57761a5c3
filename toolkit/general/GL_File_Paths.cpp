#include "GL_File_Paths.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "GL_Errors.h"
#include "GL_File.h"
#include "GL_Strings_Unicode.h"
#include "MF_FileObjects.h"
#include "cf_bundle.h"
#include "cf_urls.h"
#include "classic_paths.h"
#include "launch_services.h"
#include "process_location.h"

namespace {

using quillmere::Owned;

/// A new C string of a string in UTF-8.
SInt32 CopyAsCString(CFStringRef string, char** text) {
  if (GL_CFStrToCStrNew(string, kCFStringEncodingUTF8, text)) return noErr;
  std::free(*text);
  *text = nullptr;
  return kGL_ConversionErr;
}

/// A file URL of a path; null if it is empty or not UTF-8.
CFURLRef CreateUrl(std::string_view path) {
  const Owned<CFStringRef> string(
      CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()),
                              static_cast<CFIndex>(path.size()), kCFStringEncodingUTF8, 0));
  return string ? CFURLCreateWithFileSystemPath(kCFAllocatorDefault, string.get(), 0) : nullptr;
}

SInt32 ReferenceOfPath(std::string_view path, FSRef* reference) {
  *reference = {};
  const Owned<CFURLRef> url(CreateUrl(path));
  if (!url) return GL_NoURLErr;
  return CFURLGetFSRef(url.get(), reference) ? SInt32{noErr} : GL_NoFSRefErr;
}

/// A path cut into what is in front of its last component, "." or "/" if nothing is, and that.
struct SplitPath {
  std::string_view folder;
  std::string_view last;
};
SplitPath Split(std::string_view path) {
  while (path.size() > 1 && path.back() == '/')
    path.remove_suffix(1);
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return {".", path};
  return {slash == 0 ? std::string_view("/") : path.substr(0, slash), path.substr(slash + 1)};
}

}  // namespace

SInt32 GL_GetParentFolderName(const FSRef* reference, HFSUniStr255* name) {
  if (!reference || !name) return paramErr;
  FSRef parent;
  const SInt32 status = MF_FSGetParentRef(reference, &parent);
  return status ? status : MF_FSGetFileDirName(&parent, name);
}

SInt32 GL_CopyFileDirNameAsCString(const FSRef* reference, char** name) {
  if (!name) return paramErr;
  *name = nullptr;
  Owned<CFStringRef> string;
  const SInt32 status = GL_CopyFileDirNameAsCFString(reference, string.out());
  return status ? status : CopyAsCString(string.get(), name);
}

SInt32 GL_CopyFileDirDisplayNameAsCString(const FSRef* reference, char** name) {
  if (!name) return paramErr;
  *name = nullptr;
  Owned<CFStringRef> string;
  const SInt32 status = LSCopyDisplayNameForRef(reference, string.out());
  return status ? status : CopyAsCString(string.get(), name);
}

char* GL_HFS_StrToPosixStr(const char* hfs_path) {
  if (!hfs_path) return nullptr;
  const Owned<CFStringRef> string(
      CFStringCreateWithCString(kCFAllocatorDefault, hfs_path, kCFStringEncodingMacRoman));
  const std::filesystem::path path =
      quillmere::files::PathOfClassicPath(quillmere::ToUtf8(string.get()));
  return path.empty() ? nullptr : strdup(path.c_str());
}

SInt32 GL_FSRefToPosixStr(const FSRef* reference, CFStringRef* path) {
  if (!path) return paramErr;
  *path = nullptr;
  const Owned<CFURLRef> url(CFURLCreateFromFSRef(kCFAllocatorDefault, reference));
  if (!url) return GL_NoURLErr;
  *path = CFURLCopyFileSystemPath(url.get());
  return *path ? SInt32{noErr} : GL_NoPathErr;
}

SInt32 GL_FSRefToPosixPath(const FSRef* reference, char** path) {
  if (!path) return paramErr;
  *path = nullptr;
  Owned<CFStringRef> string;
  const SInt32 status = GL_FSRefToPosixStr(reference, string.out());
  return status ? status : CopyAsCString(string.get(), path);
}

SInt32 GL_FilePathToFSRef(const char* path, FSRef* reference) {
  return path && reference ? ReferenceOfPath(path, reference) : SInt32{paramErr};
}

SInt32 GL_FolderPathFileNameToFSRef(const char* folder_path, const char* name, FSRef* reference) {
  if (!folder_path || !name || !reference) return paramErr;
  std::string path(folder_path);
  if (!path.ends_with('/')) path += '/';
  return ReferenceOfPath(path + name, reference);
}

SInt32 GL_FullPathToFileNameAndParentRef(const char* path, HFSUniStr255* name, FSRef* parent) {
  if (!path || !name || !parent) return paramErr;
  *parent = {};
  const Owned<CFURLRef> url(CreateUrl(path));
  if (!url) return GL_NoURLErr;
  const SplitPath split = Split(path);
  const Owned<CFStringRef> last(quillmere::CreateFromUtf8(split.last));
  if (split.last.empty()) return GL_NoFileNameInPathErr;
  const SInt32 status = FSGetHFSUniStrFromString(last.get(), name);
  return status ? status : ReferenceOfPath(split.folder, parent);
}

SInt32 GL_PosixPathToFileNameCFStrNoExt(const char* path, CFStringRef* name) {
  if (name) *name = nullptr;
  if (!path || !name) return paramErr;
  const std::string last(Split(path).last);
  const Owned<CFStringRef> component(
      CFStringCreateWithCString(kCFAllocatorDefault, last.c_str(), kCFStringEncodingUTF8));
  const std::u16string_view units = quillmere::UnitsOf(component.get());
  if (units.empty()) return kGL_ConversionErr;
  const auto* characters = reinterpret_cast<const UniChar*>(units.data());
  UniCharCount start = kLSInvalidExtensionIndex;
  LSGetExtensionInfo(units.size(), characters, &start);
  const UniCharCount length = start == kLSInvalidExtensionIndex ? units.size() : start - 1;
  *name =
      CFStringCreateWithCharacters(kCFAllocatorDefault, characters, static_cast<CFIndex>(length));
  return noErr;
}

SInt32 GL_PosixPathToFileNameNoExt(const char* path, char* name) {
  if (name) *name = 0;
  if (!path || !name) return paramErr;
  Owned<CFStringRef> string;
  const SInt32 status = GL_PosixPathToFileNameCFStrNoExt(path, string.out());
  if (status) return status;
  return GL_CFStrToUTF8(string.get(), name) ? SInt32{noErr} : kGL_ConversionErr;
}

SInt32 GL_PosixPathToFileNameCFMutStrNoExtMaxLen(const char* path, SInt32 max_length,
                                                 CFMutableStringRef* name) {
  if (name) *name = nullptr;
  if (!path || !name) return paramErr;
  Owned<CFStringRef> whole;
  const SInt32 status = GL_PosixPathToFileNameCFStrNoExt(path, whole.out());
  if (status) return status;
  *name = CFStringCreateMutableCopy(kCFAllocatorDefault, 0, whole.get());
  GL_CFStrTruncMiddle(*name, max_length);
  return noErr;
}

SInt32 GL_CurrentProcessRef(FSRef* reference) {
  const ProcessSerialNumber current = {0, kCurrentProcess};
  return GetProcessBundleLocation(&current, reference);
}

SInt32 GL_GetAppRef(FSRef* reference) {
  if (!reference) return paramErr;
  *reference = {};
  const Owned<CFURLRef> url(CFBundleCopyBundleURL(CFBundleGetMainBundle()));
  return CFURLGetFSRef(url.get(), reference) ? SInt32{noErr} : kGL_AppNotFoundErr;
}
