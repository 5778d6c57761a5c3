#include "GL_Controls.h"
#include "GL_Errors.h"
#include "GL_File.h"
#include "GL_File_Creation.h"
#include "GL_File_Paths.h"
#include "GL_Strings_Unicode.h"
#include "GL_Volumes.h"
#include "MF_FileObjects.h"
#include "cf_bundle.h"

using quillmere::Owned;

SInt32 GL_FindCreateOrwSupportFolder(FSVolumeRefNum domain, FSRef* folder, Boolean create) {
  FSRef support;
  const SInt32 status = FSFindFolder(domain, kApplicationSupportFolderType, create, &support);
  return status ? status : GL_FindFolderInFolder(&support, CFSTR("ORW"), folder, create, nullptr);
}

SInt32 GL_FindPrefsFile(const HFSUniStr255* name, FSRef* file) {
  FSRef folder;
  Boolean found = 0;
  SInt32 status = FSFindFolder(kUserDomain, kPreferencesFolderType, 0, &folder);
  if (!status) status = GL_IsFileInFolder(&folder, name, file, &found);
  if (status) return status;
  return found ? SInt32{noErr} : GL_PrefsFileNotFoundErr;
}

SInt32 GL_FindNamedResourceFolderInAppBundle(CFStringRef name, FSRef* folder) {
  if (!name || !folder) return paramErr;
  const Owned<CFURLRef> url(
      CFBundleCopyResourceURL(CFBundleGetMainBundle(), name, nullptr, nullptr));
  FSRef found;
  FSRef parent;
  HFSUniStr255 record;
  if (!url || !CFURLGetFSRef(url.get(), &found)) return fnfErr;
  SInt32 status = MF_FSGetParentRef(&found, &parent);
  if (!status) status = MF_FSGetFileDirName(&found, &record);
  return status ? status : GL_FindFolderInFolderUni(&parent, &record, folder, 0, nullptr);
}

SInt32 GL_GetAppParentDirectory(FSRef* folder) {
  FSRef application;
  const SInt32 status = GL_CurrentProcessRef(&application);
  return status ? status : MF_FSGetParentRef(&application, folder);
}

SInt32 GL_SetNonExistingFileInSTI(const FSRef* folder, const HFSUniStr255* name, WindowRef window,
                                  OSType signature, SInt32 number, CFStringRef none_text,
                                  CFStringRef prefix) {
  if (!folder || !name) return paramErr;
  if (name->length == 0 || !MF_FSRefValid(folder)) {
    return GL_SetDialogItemTextByID(window, signature, number, none_text ? none_text : CFSTR(""));
  }
  const Owned<CFMutableStringRef> text(CFStringCreateMutable(kCFAllocatorDefault, 0));
  HFSUniStr255 folder_name;
  HFSUniStr255 volume_name;
  SInt32 status = MF_FSGetFileDirName(folder, &folder_name);
  if (!status) status = GL_GetVolumeNameFromFSRef(folder, &volume_name);
  if (status) return status;
  if (prefix) {
    CFStringAppend(text.get(), prefix);
    CFStringAppend(text.get(), CFSTR(" "));
  }
  CFStringAppend(text.get(), CFSTR("\""));
  CFStringAppendCharacters(text.get(), name->unicode, name->length);
  CFStringAppend(text.get(), CFSTR("\" in folder \""));
  CFStringAppendCharacters(text.get(), folder_name.unicode, folder_name.length);
  CFStringAppend(text.get(), CFSTR("\" on volume \""));
  CFStringAppendCharacters(text.get(), volume_name.unicode, volume_name.length);
  CFStringAppend(text.get(), CFSTR("\""));
  return GL_SetDialogItemTextByID(window, signature, number, text.get());
}

SInt32 GL_SetFileInSTI(const FSRef* file, WindowRef window, OSType signature, SInt32 number,
                       CFStringRef none_text, CFStringRef prefix) {
  HFSUniStr255 name{};
  FSRef folder{};
  const bool is_known =
      MF_FSGetFileDirName(file, &name) == noErr && MF_FSGetParentRef(file, &folder) == noErr;
  if (!is_known) {
    name.length = 0;
    folder = {};
  }
  return GL_SetNonExistingFileInSTI(&folder, &name, window, signature, number, none_text, prefix);
}
