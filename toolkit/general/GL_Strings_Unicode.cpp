#include "GL_Strings_Unicode.h"

#include <algorithm>

#include "launch_services.h"

CFStringRef GL_CStrToCFStr(const char* text) {
  return CFStringCreateWithCString(kCFAllocatorDefault, text, CFStringGetSystemEncoding());
}

CFStringRef GL_MacRomanCStrToCFStr(const char* text) {
  return CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingMacRoman);
}

CFStringRef GL_UTF8_CStrToCFStr(const char* text) {
  return CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8);
}

CFStringRef GL_UnicodePtrToCFStr(const UniChar* characters, UInt16 count) {
  return CFStringCreateWithCharacters(kCFAllocatorDefault, characters, count);
}

CFStringRef GL_NumToCFStr(SInt64 number) {
  return CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%ld"), number);
}

CFStringRef GL_DoubleToCFStr(double number) {
  return GL_DoubleToCFStrPrecise(number, 2);
}

CFStringRef GL_DoubleToCFStrPrecise(double number, SInt32 decimals) {
  return CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%.*f"),
                                  std::clamp(decimals, 0, 99), number);
}

Boolean GL_CFStrToCStr(CFStringRef string, char* buffer, SInt32 size) {
  return CFStringGetCString(string, buffer, size, CFStringGetSystemEncoding());
}

Boolean GL_CFStrToMacRomanCStr(CFStringRef string, char* buffer, SInt32 size) {
  return CFStringGetCString(string, buffer, size, kCFStringEncodingMacRoman);
}

Boolean GL_EqualCFStr(CFStringRef a, CFStringRef b) {
  return a && b && CFStringCompare(a, b, kCFCompareCaseInsensitive) == kCFCompareEqualTo;
}

Boolean GL_EqualHFSUniStr255(const HFSUniStr255* a, const HFSUniStr255* b) {
  const quillmere::Owned<CFStringRef> left(FSCreateStringFromHFSUniStr(kCFAllocatorDefault, a));
  const quillmere::Owned<CFStringRef> right(FSCreateStringFromHFSUniStr(kCFAllocatorDefault, b));
  return GL_EqualCFStr(left.get(), right.get());
}

CFStringRef GL_CopyCFNameEndString(CFStringRef name, SInt32* length, SInt32 largest_length,
                                   UInt32 flags) {
  const std::u16string_view units = quillmere::UnitsOf(name);
  const std::u16string stops = std::u16string(flags & kNameEndAtFullStop ? u"." : u"") +
                               (flags & kNameEndAtSpace ? u" " : u"");
  std::u16string_view end;
  const std::size_t stop = units.find_last_of(stops);
  if (stop != std::u16string_view::npos &&
      static_cast<SInt64>(units.size() - stop) <= largest_length) {
    end = units.substr(stop);
  }
  if (length) *length = static_cast<SInt32>(end.size());
  return CFStringCreateWithCharacters(kCFAllocatorDefault, end.data(),
                                      static_cast<CFIndex>(end.size()));
}

void GL_RemoveCFEndString(CFMutableStringRef name, SInt32 largest_length, UInt32 flags) {
  SInt32 length = 0;
  CFRelease(GL_CopyCFNameEndString(name, &length, largest_length, flags));
  CFStringDelete(name, {CFStringGetLength(name) - length, length});
}

SInt32 GL_GetFileNameExtension(const FSRef* file, CFStringRef* extension) {
  if (!extension) return paramErr;
  *extension = nullptr;
  CFTypeRef value = nullptr;
  const OSStatus status = LSCopyItemAttribute(file, -1, kLSItemExtension, &value);
  if (status == kLSAttributeNotFoundErr) return noErr;
  if (!status) *extension = quillmere::AsString(value);
  return status;
}

SInt32 GL_RemoveFileNameExtension(const FSRef* file, CFMutableStringRef name) {
  quillmere::Owned<CFStringRef> extension;
  const SInt32 status = GL_GetFileNameExtension(file, extension.out());
  if (status || !extension) return status;
  const CFIndex count = CFStringGetLength(extension.get()) + 1;
  CFStringDelete(name, {CFStringGetLength(name) - count, count});
  return noErr;
}
