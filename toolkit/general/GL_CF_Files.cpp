#include "GL_CF.h"
#include "GL_CF_private.h"
#include "GL_Errors.h"
#include "GL_Memory.h"
#include "MF_FileObjects.h"
#include "aliases.h"
#include "cf_url_resources.h"
#include "folders.h"
#include "preferences.h"

namespace {

using quillmere::Owned;

/// A copy, which may be changed, of a dictionary; an empty one for anything else.
CFMutableDictionaryRef CopyOrCreateDictionary(CFTypeRef object) {
  CFMutableDictionaryRef copy = CF_DictCreateMutCopy(quillmere::AsDictionary(object));
  return copy ? copy : CF_DictCreateMut();
}

}  // namespace

SInt32 CF_FileToAliasDataRef(const FSRef* file, CFDataRef* data) {
  if (!data) return paramErr;
  *data = nullptr;
  if (!file) return paramErr;
  AliasHandle alias = nullptr;
  SInt32 status = FSNewAlias(nullptr, file, &alias);
  if (!status) {
    *data = CF_HandleToDataRef(alias);
    status = CF_UnknownError(*data);
  }
  GL_DisposeHandle(&alias);
  return status;
}

SInt32 CF_AliasDataRefToFile(CFDataRef data, FSRef* file, Boolean* was_changed) {
  if (!file) return paramErr;
  *file = {};
  if (was_changed) *was_changed = 0;
  if (!data) return fnfErr;
  AliasHandle alias = CF_DataRefToHandle(data);
  if (!alias) return memFullErr;
  Boolean is_changed = 0;
  const SInt32 status = FSResolveAlias(nullptr, alias, file, &is_changed);
  GL_DisposeHandle(&alias);
  if (status) {
    *file = {};
  } else if (was_changed) {
    *was_changed = is_changed;
  }
  return status;
}

SInt32 CF_AddFileObjectToDict(CFMutableDictionaryRef dictionary, CFStringRef key,
                              const FSRef* file) {
  Owned<CFDataRef> data;
  const SInt32 status = CF_FileToAliasDataRef(file, data.out());
  if (!status) CFDictionarySetValue(dictionary, key, data.get());
  return status;
}

SInt32 CF_ResolveAliasInDict(CFDictionaryRef dictionary, CFStringRef key, FSRef* file,
                             Boolean* was_changed) {
  return CF_AliasDataRefToFile(quillmere::cf::DataIn(dictionary, key), file, was_changed);
}

SInt32 CF_UpdateAliasInDict(CFMutableDictionaryRef dictionary, CFStringRef key, FSRef* file,
                            Boolean* was_changed) {
  if (!was_changed) return paramErr;
  const SInt32 status = CF_ResolveAliasInDict(dictionary, key, file, was_changed);
  if (status || !*was_changed || !MF_FSRefValid(file)) return status;
  return CF_AddFileObjectToDict(dictionary, key, file);
}

void CF_SaveValueInPrefs(CFStringRef key, CFPropertyListRef value) {
  CFPreferencesSetAppValue(key, value, kCFPreferencesCurrentApplication);
}

void CF_SaveDataInPrefs(CFStringRef key, const void* bytes, Size size) {
  const Owned<CFDataRef> data(
      CFDataCreate(kCFAllocatorDefault, static_cast<const UInt8*>(bytes), size));
  if (data) CF_SaveValueInPrefs(key, data.get());
}

void CF_RemoveValueFromPrefs(CFStringRef key) {
  CF_SaveValueInPrefs(key, nullptr);
}

CFPropertyListRef CF_CopyValueFromPrefs(CFStringRef key) {
  return CFPreferencesCopyAppValue(key, kCFPreferencesCurrentApplication);
}

CFMutableDictionaryRef CF_CopyMutDictFromPrefs(CFStringRef key) {
  const Owned<CFPropertyListRef> value(CF_CopyValueFromPrefs(key));
  return CF_DictCreateMutCopy(quillmere::AsDictionary(value.get()));
}

CFMutableDictionaryRef CF_CopyOrCreateMutDictFromPrefs(CFStringRef key) {
  const Owned<CFPropertyListRef> value(CF_CopyValueFromPrefs(key));
  return CopyOrCreateDictionary(value.get());
}

Boolean CF_SavePreferencesToDisk() {
  return CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication);
}

SInt32 CF_WritePropertyListToXMLFile(CFPropertyListRef list, CFURLRef url) {
  const Owned<CFDataRef> data(CFPropertyListCreateXMLData(kCFAllocatorDefault, list));
  SInt32 status = noErr;
  CFURLWriteDataAndPropertiesToResource(url, data.get(), nullptr, &status);
  return status;
}

SInt32 CF_ReadPropertyListFromXMLFile(CFURLRef url, CFPropertyListRef* list) {
  if (!list) return paramErr;
  *list = nullptr;
  Owned<CFDataRef> data;
  SInt32 status = noErr;
  CFURLCreateDataAndPropertiesFromResource(kCFAllocatorDefault, url, data.out(), nullptr, nullptr,
                                           &status);
  if (status || CFDataGetLength(data.get()) == 0) return status;
  *list = CFPropertyListCreateFromXMLData(kCFAllocatorDefault, data.get(), kCFPropertyListImmutable,
                                          nullptr);
  return *list ? SInt32{noErr} : GL_NoPropertyListErr;
}

SInt32 CF_AddDataToResourceFileInAppBundle(CFStringRef file_name, CFStringRef section,
                                           const void* bytes, Size size, CFStringRef key) {
  const Owned<CFDataRef> data(
      CFDataCreate(kCFAllocatorDefault, static_cast<const UInt8*>(bytes), size));
  if (!data || !key) return GL_NilPointerErr;
  Owned<CFURLRef> url;
  if (CF_CopyNamedFileUrlInAppBundle(file_name, url.out())) return GL_NoURLErr;
  Owned<CFPropertyListRef> stored;
  CF_ReadPropertyListFromXMLFile(url.get(), stored.out());
  const Owned<CFMutableDictionaryRef> settings(CopyOrCreateDictionary(stored.get()));
  if (section) {
    const Owned<CFMutableDictionaryRef> inner(
        CopyOrCreateDictionary(CFDictionaryGetValue(settings.get(), section)));
    CFDictionarySetValue(inner.get(), key, data.get());
    CFDictionarySetValue(settings.get(), section, inner.get());
  } else {
    CFDictionarySetValue(settings.get(), key, data.get());
  }
  return CF_WritePropertyListToXMLFile(settings.get(), url.get());
}

SInt32 CF_CopyNamedFileUrlInAppBundle(CFStringRef name, CFURLRef* url) {
  if (!url) return paramErr;
  *url = CFBundleCopyResourceURL(CFBundleGetMainBundle(), name, nullptr, nullptr);
  return *url ? noErr : SInt32{fnfErr};
}

SInt32 CF_GetNamedFileInAppBundle(CFStringRef name, FSRef* file) {
  if (!file) return paramErr;
  *file = {};
  Owned<CFURLRef> url;
  const SInt32 status = CF_CopyNamedFileUrlInAppBundle(name, url.out());
  if (status) return status;
  return CFURLGetFSRef(url.get(), file) ? noErr : SInt32{fnfErr};
}

SInt32 CF_LoadSystemFrameworkByName(CFStringRef name, CFBundleRef* bundle) {
  if (!bundle) return paramErr;
  *bundle = nullptr;
  FSRef folder{};
  SInt32 status = FSFindFolder(kSystemDomain, kFrameworksFolderType, 0, &folder);
  if (status) return status;
  const Owned<CFMutableStringRef> file_name(CF_StringCreateMutCopy(name ? name : CFSTR("")));
  CFStringAppend(file_name.get(), CFSTR(".framework"));
  HFSUniStr255 framework_name{};
  status = FSGetHFSUniStrFromString(file_name.get(), &framework_name);
  if (status) return status;
  FSRef framework{};
  status =
      FSMakeFSRefUnicode(&folder, framework_name.length, framework_name.unicode, 0, &framework);
  if (status) return status;
  const Owned<CFURLRef> url(CFURLCreateFromFSRef(kCFAllocatorDefault, &framework));
  if (!url) return GL_BundleResourceErr;
  *bundle = CFBundleCreate(kCFAllocatorDefault, url.get());
  return *bundle ? SInt32{noErr} : GL_NoBundleErr;
}
