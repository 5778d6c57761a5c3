#include "GL_CF.h"

#include "GL_Errors.h"
#include "GL_Memory.h"

using quillmere::Owned;

CFMutableStringRef CF_StringCreateMut() {
  return CFStringCreateMutable(kCFAllocatorDefault, 0);
}

CFMutableStringRef CF_StringCreateMutCopy(CFStringRef string) {
  return CFStringCreateMutableCopy(kCFAllocatorDefault, 0, string);
}

CFMutableStringRef CF_StringMakeMutable(CFStringRef string) {
  const Owned<CFStringRef> source(string);
  return CF_StringCreateMutCopy(source.get());
}

CFStringRef CF_StringCreateWithFormat(CFStringRef format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const CFStringRef string =
      CFStringCreateWithFormatAndArguments(kCFAllocatorDefault, nullptr, format, arguments);
  va_end(arguments);
  return string;
}

CFMutableStringRef CF_StringCreateMutableWithFormat(CFStringRef format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const CFStringRef string =
      CFStringCreateWithFormatAndArguments(kCFAllocatorDefault, nullptr, format, arguments);
  va_end(arguments);
  return CF_StringMakeMutable(string);
}

CFAttributedStringRef CF_AttrStrCreate(CFStringRef string, CFDictionaryRef attributes) {
  return CFAttributedStringCreate(kCFAllocatorDefault, string, attributes);
}

CFMutableAttributedStringRef CF_AttrStrCreateMut() {
  return CFAttributedStringCreateMutable(kCFAllocatorDefault, 0);
}

CFMutableAttributedStringRef CF_AttrStrCreateMutWithStr(CFStringRef string) {
  CFMutableAttributedStringRef made = CF_AttrStrCreateMut();
  CFAttributedStringReplaceString(made, {0, 0}, string);
  return made;
}

CFDictionaryRef CF_DictCreate(const CFStringRef* keys, const CFTypeRef* values, CFIndex count) {
  return CF_DictCreateMutWithValues(keys, values, count);
}

CFMutableDictionaryRef CF_DictCreateMutWithValues(const CFStringRef* keys, const CFTypeRef* values,
                                                  CFIndex count) {
  CFMutableDictionaryRef dictionary = CF_DictCreateMut();
  if (!keys || !values) return dictionary;
  for (CFIndex i = 0; i < count; ++i)
    CFDictionarySetValue(dictionary, keys[i], values[i]);
  return dictionary;
}

CFMutableDictionaryRef CF_DictCreateMut() {
  return CFDictionaryCreateMutable(kCFAllocatorDefault);
}

CFMutableDictionaryRef CF_DictCreateMutCopy(CFDictionaryRef dictionary) {
  return CFDictionaryCreateMutableCopy(kCFAllocatorDefault, dictionary);
}

CFMutableDictionaryRef CF_DictMakeMutable(CFDictionaryRef dictionary) {
  const Owned<CFDictionaryRef> source(dictionary);
  return CF_DictCreateMutCopy(source.get());
}

CFMutableDictionaryRef CF_CopyMutDictFromDict(CFDictionaryRef dictionary, CFStringRef key) {
  return CF_DictCreateMutCopy(quillmere::AsDictionary(CFDictionaryGetValue(dictionary, key)));
}

void CF_DictGetKeys(CFDictionaryRef dictionary, CFStringRef** keys, CFIndex* count) {
  if (!keys || !count) return;
  *keys = nullptr;
  *count = 0;
  const CFIndex number = CFDictionaryGetCount(dictionary);
  void* block = nullptr;
  if (number == 0 || GL_NewPtr(number * Size{sizeof(CFStringRef)}, &block)) return;
  *keys = static_cast<CFStringRef*>(block);
  *count = number;
  CFDictionaryGetKeysAndValues(dictionary, *keys, nullptr);
}

CFMutableArrayRef CF_ArrayCreateMut() {
  return CFArrayCreateMutable(kCFAllocatorDefault);
}

CFMutableArrayRef CF_ArrayCreateMutCopy(CFArrayRef array) {
  return CFArrayCreateMutableCopy(kCFAllocatorDefault, array);
}

CFMutableArrayRef CF_ArrayMakeMutable(CFArrayRef array) {
  const Owned<CFArrayRef> source(array);
  return CF_ArrayCreateMutCopy(source.get());
}

Boolean CF_ArrayValueExists(CFTypeRef object, CFTypeRef value) {
  return CFArrayContainsValue(quillmere::AsArray(object), value);
}

CFNumberRef CF_CreateUInt8Ref(UInt8 value) {
  return CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt8Type, &value);
}

CFNumberRef CF_CreateUInt16Ref(UInt16 value) {
  return CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt16Type, &value);
}

CFNumberRef CF_CreateUInt32Ref(UInt32 value) {
  return CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &value);
}

CFNumberRef CF_CreateUInt64Ref(UInt64 value) {
  return CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value);
}

CFNumberRef CF_NumberCreateFromEnum(SInt32 value) {
  return CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &value);
}

void CF_GetUInt8FromNumberRef(CFNumberRef number, UInt8* value) {
  CFNumberGetValue(number, kCFNumberSInt8Type, value);
}

void CF_GetUInt16FromNumberRef(CFNumberRef number, UInt16* value) {
  CFNumberGetValue(number, kCFNumberSInt16Type, value);
}

void CF_GetUInt32FromNumberRef(CFNumberRef number, UInt32* value) {
  CFNumberGetValue(number, kCFNumberSInt32Type, value);
}

void CF_GetUInt64FromNumberRef(CFNumberRef number, UInt64* value) {
  CFNumberGetValue(number, kCFNumberSInt64Type, value);
}

SInt32 CF_GetEnumFromNumberRef(CFNumberRef number) {
  SInt32 value = -1;
  CFNumberGetValue(number, kCFNumberSInt32Type, &value);
  return value;
}

SInt32 CF_UnknownError(CFTypeRef object) {
  return object ? SInt32{noErr} : coreFoundationUnknownErr;
}

SInt32 CF_MapMessagePortErr(SInt32 result) {
  switch (result) {
    case -1:
      return GL_PortSendTimeoutErr;
    case -2:
      return GL_PortReceiveTimeoutErr;
    case -3:
      return GL_PortInvalidErr;
    case -4:
      return GL_PortTransportErr;
    default:
      return noErr;
  }
}
