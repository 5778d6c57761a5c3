#include <cstdio>
#include <string>

#include "GL_Strings_Unicode.h"
#include "GL_Volumes.h"
#include "MF_FileObjects.h"
#include "launch_services.h"
#include "uniform_types.h"
#include "up_time.h"

namespace {

using quillmere::Owned;

constexpr UInt32 kTicksPerSecond = 60;
constexpr UInt8 kCanNotWrite = 0x7;

/// A name as the path shows it.
std::string TextOf(const HFSUniStr255& name) {
  char text[256] = {};
  GL_HFSUniStr255ToCStr(&name, text, sizeof text);
  return text;
}

SInt32 NameOf(const FSRef& reference, std::string* text) {
  HFSUniStr255 name{};
  const SInt32 status = MF_FSGetFileDirName(&reference, &name);
  if (status == noErr) *text = TextOf(name);
  return status;
}

/// What stands between the volume and the object's own name.
SInt32 MiddleOf(const FSRef& parent, UInt16 kind, std::string* text) {
  Boolean is_volume = 0;
  SInt32 status = GL_IsVolume(&parent, &is_volume);
  if (status != noErr || is_volume) return status;
  FSRef grandparent{};
  status = MF_FSGetParentRef(&parent, &grandparent);
  if (status == noErr) status = GL_IsVolume(&grandparent, &is_volume);
  std::string name;
  if (status == noErr) status = NameOf(parent, &name);
  if (status != noErr) return status;
  if (!is_volume) *text += ".../";
  if (kind != kGL_FolderObject) *text += name + "/";
  return noErr;
}

}  // namespace

SInt32 GL_GetFileUTI(CFURLRef url, CFStringRef* type) {
  if (type == nullptr) return paramErr;
  *type = nullptr;
  LSItemInfoRecord info;
  const SInt32 status =
      LSCopyItemInfoForURL(url, kLSRequestExtension | kLSRequestTypeCreator, &info);
  if (status != noErr) return status;
  const Owned<CFStringRef> extension(info.extension);
  if (extension) {
    *type = UTTypeCreatePreferredIdentifierForTag(kUTTagClassFilenameExtension, extension.get(),
                                                  kUTTypeData);
  }
  if (*type != nullptr || info.filetype == 0) return noErr;
  const Owned<CFStringRef> code(UTCreateStringForOSType(info.filetype));
  *type = UTTypeCreatePreferredIdentifierForTag(kUTTagClassOSType, code.get(), kUTTypeData);
  return noErr;
}

Boolean GL_UserHasWritePrivilegeToSomeFolderIterateFilter(
    Boolean /*container_changed*/, ItemCount /*current_level*/, const FSCatalogInfo* info,
    const FSRef* /*reference*/, const HFSUniStr255* /*name*/, void* write_search) {
  auto* const search = static_cast<GL_WriteSearch*>(write_search);
  if ((info->nodeFlags & kFSNodeIsDirectoryMask) && !(info->userPrivileges & kCanNotWrite)) {
    search->found = true;
  }
  return search->found || TickCount() - search->start > search->limit;
}

SInt32 GL_UserHasWritePrivilegeToSomeFolder(const FSRef* folder, UInt32 max_levels,
                                            UInt32 timeout_seconds, Boolean* has) {
  if (has == nullptr) return paramErr;
  *has = 0;
  GL_WriteSearch search = {TickCount(), UInt64{timeout_seconds} * kTicksPerSecond, false};
  const SInt32 status =
      MF_FSIterateContainer(folder, max_levels, kFSCatInfoNodeFlags | kFSCatInfoUserPrivs, 0, 0,
                            GL_UserHasWritePrivilegeToSomeFolderIterateFilter, &search);
  // The walk met a folder that has gone, or that the user must not read.
  if (status != noErr && status != fnfErr && status != afpAccessDenied) return status;
  *has = search.found;
  return noErr;
}

SInt32 GL_PrintFileObjNameDirVol(const FSRef* reference) {
  UInt16 kind = kGL_UnknownObject;
  SInt32 status = GL_GetFileObjectType(reference, &kind);
  if (kind == kGL_UnknownObject) {
    std::puts("Unknown kind of file object\n");
    return status;
  }
  HFSUniStr255 volume{};
  status = GL_GetVolumeNameFromFSRef(reference, &volume);
  if (status != noErr) return status;
  std::string path = "/" + TextOf(volume) + "/";
  if (kind != kGL_VolumeObject) {
    FSRef parent{};
    std::string name;
    status = MF_FSGetParentRef(reference, &parent);
    if (status == noErr) status = MiddleOf(parent, kind, &path);
    if (status == noErr) status = NameOf(*reference, &name);
    if (status != noErr) return status;
    path += name;
    if (kind == kGL_FolderObject) path += "/";
  }
  std::puts(path.c_str());
  return noErr;
}
