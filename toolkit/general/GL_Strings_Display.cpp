#include <algorithm>
#include <string>

#include "GL_Strings_Unicode.h"
#include "launch_services.h"

namespace {

using String = quillmere::Owned<CFStringRef>;

CFStringRef Format(const char* format, double number) {
  return CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR(format), number);
}

CFStringRef FormatPair(const char* format, UInt64 large, UInt64 small) {
  return CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR(format), large, small);
}

CFStringRef DurationString(UInt64 seconds) {
  constexpr UInt64 kMinute = 60;
  constexpr UInt64 kHour = 60 * kMinute;
  constexpr UInt64 kDay = 24 * kHour;
  const UInt64 days = seconds / kDay;
  const UInt64 hours = seconds % kDay / kHour;
  const UInt64 minutes = seconds % kHour / kMinute;
  const UInt64 rest = seconds % kMinute;
  if (days > 0) return FormatPair("%lludays%lluh", days, hours);
  if (hours > 0) return FormatPair("%lluh%llum", hours, minutes);
  if (minutes > 0) return FormatPair("%llum%llus", minutes, rest);
  return CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%llus"), rest);
}

}  // namespace

CFStringRef GL_GetByteSizeString(SInt64 count) {
  const auto bytes = static_cast<float>(count);
  if (count <= 0x3FF) {
    return CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%lld bytes"), count);
  }
  if (count <= 0xFFFFF) return Format("%.2f kB", double{bytes * 0x1p-10F});
  if (count <= 0x3FFFFFFF) return Format("%.2f MB", double{bytes * 0x1p-20F});
  return Format("%.2f GB", double{bytes * 0x1p-30F});
}

void GL_AddByteSizeString(CFMutableStringRef string, SInt64 count) {
  CFStringAppend(string, String(GL_GetByteSizeString(count)).get());
}

CFStringRef GL_DurationToCFStr(SInt64 seconds) {
  if (seconds >= 0) return DurationString(static_cast<UInt64>(seconds));
  const String text(DurationString(~static_cast<UInt64>(seconds) + 1));
  return CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("-%@"), text.get());
}

CFStringRef GL_MakeEllipsisCFStr() {
  constexpr UInt8 kEllipsis = 201;
  UInt8 text[5] = {kEllipsis};
  TECObjectRef converter = nullptr;
  if (!TECCreateConverter(&converter, kTextEncodingMacRoman, CFStringGetSystemEncoding())) {
    ByteCount used = 0;
    ByteCount written = 0;
    TECConvertText(converter, &kEllipsis, 1, &used, text, sizeof text - 1, &written);
    text[written] = 0;
    TECDisposeConverter(converter);
  }
  return CFStringCreateWithCString(kCFAllocatorDefault, reinterpret_cast<const char*>(text),
                                   CFStringGetSystemEncoding());
}

CFStringRef GL_MakeUnicodeEllipsisCFStr() {
  return CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%C"), 8230);
}

void GL_AppendEllipsisToCFStr(CFMutableStringRef string) {
  CFStringAppend(string, String(GL_MakeEllipsisCFStr()).get());
}

void GL_CFStrTruncMiddle(CFMutableStringRef string, SInt32 limit) {
  const CFIndex length = CFStringGetLength(string);
  if (length <= limit) return;
  const String ellipsis(GL_MakeEllipsisCFStr());
  const CFIndex ellipsis_length = CFStringGetLength(ellipsis.get());
  const CFIndex middle = std::max<CFIndex>((CFIndex{limit} - ellipsis_length) / 2, 0);
  const CFRange first = CFStringGetRangeOfComposedCharactersAtIndex(string, middle);
  const CFIndex count = std::max(length + ellipsis_length - limit, first.length);
  const CFIndex end_index = std::min(first.location + count, length) - 1;
  const CFRange last = CFStringGetRangeOfComposedCharactersAtIndex(string, end_index);
  CFStringDelete(string, {first.location, last.location + last.length - first.location});
  CFStringInsert(string, first.location, ellipsis.get());
}

void GL_CFAppendSpaceNumber(CFMutableStringRef string, SInt64 number) {
  const String text(CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR(" %ld"), number));
  CFStringAppend(string, text.get());
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

void GL_AppendCFStrBeforeSuffix(CFMutableStringRef name, CFStringRef text) {
  constexpr SInt32 kLongestSuffix = 16;
  const String suffix(GL_CopyCFNameEndString(name, nullptr, kLongestSuffix, kNameEndAtFullStop));
  GL_RemoveCFEndString(name, kLongestSuffix, kNameEndAtFullStop);
  CFStringAppend(name, text);
  CFStringAppend(name, suffix.get());
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
  String extension;
  const SInt32 status = GL_GetFileNameExtension(file, extension.out());
  if (status || !extension) return status;
  const String suffix(
      CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR(".%@"), extension.get()));
  const CFIndex count = CFStringGetLength(suffix.get());
  const CFIndex start = CFStringGetLength(name) - count;
  if (start < 0) return noErr;
  const String end(CFStringCreateWithCharacters(kCFAllocatorDefault,
                                                quillmere::UnitsOf(name).data() + start, count));
  if (GL_EqualCFStr(end.get(), suffix.get())) CFStringDelete(name, {start, count});
  return noErr;
}

SInt32 GL_GetExtensionFromFileName(const HFSUniStr255* name, CFStringRef* extension) {
  if (extension == nullptr) return paramErr;
  *extension = nullptr;
  if (name == nullptr || name->length > std::size(name->unicode)) return paramErr;
  UniCharCount start = kLSInvalidExtensionIndex;
  const OSStatus status = LSGetExtensionInfo(name->length, name->unicode, &start);
  if (status) return status;
  const bool has_extension = start != kLSInvalidExtensionIndex && start > 0;
  const UniCharCount from = has_extension ? start - 1 : name->length;
  *extension = CFStringCreateWithCharacters(kCFAllocatorDefault, name->unicode + from,
                                            static_cast<CFIndex>(name->length - from));
  return noErr;
}

void GL_GetSystemTextEncoding(TextEncoding* encoding) {
  if (encoding == nullptr) return;
  const auto script = static_cast<ScriptCode>(GetScriptManagerVariable(smSysScript));
  const auto region = static_cast<RegionCode>(GetScriptManagerVariable(smRegionCode));
  OSStatus status =
      UpgradeScriptInfoToTextEncoding(script, kTextLanguageDontCare, region, nullptr, encoding);
  if (status == paramErr) {
    status = UpgradeScriptInfoToTextEncoding(script, kTextLanguageDontCare, kTextRegionDontCare,
                                             nullptr, encoding);
  }
  if (status == paramErr) *encoding = kTextEncodingMacRoman;
}
