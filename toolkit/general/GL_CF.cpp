#include "GL_CF.h"

#include "GL_Errors.h"
#include "cf_bundle.h"

namespace {

SInt32 AddNumber(CFMutableDictionaryRef dictionary, CFStringRef key, CFNumberType type,
                 const void* value) {
  if (!dictionary || !key) return GL_NilPointerErr;
  const quillmere::Owned<CFNumberRef> number(CFNumberCreate(kCFAllocatorDefault, type, value));
  CFDictionarySetValue(dictionary, key, number.get());
  return noErr;
}

}  // namespace

CFMutableDictionaryRef CF_DictCreateMut() {
  return CFDictionaryCreateMutable(kCFAllocatorDefault);
}

SInt32 CF_AddSInt32ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt32 value) {
  return AddNumber(dictionary, key, kCFNumberSInt32Type, &value);
}

SInt32 CF_AddSInt64ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt64 value) {
  return AddNumber(dictionary, key, kCFNumberSInt64Type, &value);
}

SInt32 CF_AddFloat32ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Float32 value) {
  return AddNumber(dictionary, key, kCFNumberFloat32Type, &value);
}

SInt32 CF_AddFloat64ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Float64 value) {
  return AddNumber(dictionary, key, kCFNumberFloat64Type, &value);
}

SInt32 CF_CopyNamedFileUrlInAppBundle(CFStringRef name, CFURLRef* url) {
  if (!url) return paramErr;
  *url = CFBundleCopyResourceURL(CFBundleGetMainBundle(), name, nullptr, nullptr);
  return *url ? noErr : SInt32{fnfErr};
}

SInt32 CF_GetNamedFileInAppBundle(CFStringRef name, FSRef* file) {
  if (!file) return paramErr;
  *file = {};
  quillmere::Owned<CFURLRef> url;
  const SInt32 status = CF_CopyNamedFileUrlInAppBundle(name, url.out());
  if (status) return status;
  return CFURLGetFSRef(url.get(), file) ? noErr : SInt32{fnfErr};
}
