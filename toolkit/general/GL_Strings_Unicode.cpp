#include "GL_Strings_Unicode.h"

#include <algorithm>
#include <limits>
#include <string>

#include "GL_Memory.h"
#include "GL_Strings.h"
#include "descriptors.h"
#include "text_coercions.h"

namespace {

using String = quillmere::Owned<CFStringRef>;

constexpr UInt8 kLossByte = 63;  // "?"
constexpr CFIndex kMutableCapacity = 256;
constexpr UInt16 kLongestName = 255;

CFMutableStringRef MutableCopy(const String& string) {
  return CFStringCreateMutableCopy(kCFAllocatorDefault, kMutableCapacity, string.get());
}

/// `count` bytes of text up to the first zero byte, in an encoding of old text.
CFStringRef CreateWithText(const UInt8* text, std::size_t count, CFStringEncoding encoding) {
  const std::string copy(reinterpret_cast<const char*>(text), count);
  return CFStringCreateWithCString(kCFAllocatorDefault, copy.c_str(), encoding);
}

/// A descriptor that is disposed of with its scope.
class Descriptor {
 public:
  Descriptor() = default;
  ~Descriptor() { AEDisposeDesc(&descriptor_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  AEDesc* get() { return &descriptor_; }
  /// The data, empty when they cannot be read.
  std::string Bytes() {
    std::string bytes(static_cast<std::size_t>(AEGetDescDataSize(&descriptor_)), '\0');
    if (AEGetDescData(&descriptor_, bytes.data(), static_cast<Size>(bytes.size()))) bytes.clear();
    return bytes;
  }

 private:
  AEDesc descriptor_{typeNull, nullptr};
};

CFStringRef CreateWithIntlText(AEDesc* text) {
  constexpr std::size_t kHeaderSize = 4;
  Descriptor intl;
  if (AECoerceDesc(text, typeIntlText, intl.get())) return nullptr;
  const std::string bytes = intl.Bytes();
  if (bytes.size() < kHeaderSize) return nullptr;
  SInt16 codes[2];
  std::copy_n(bytes.data(), kHeaderSize, reinterpret_cast<char*>(codes));
  TextEncoding encoding = 0;
  if (UpgradeScriptInfoToTextEncoding(codes[0], codes[1], kTextRegionDontCare, nullptr,
                                      &encoding)) {
    return nullptr;
  }
  return CFStringCreateWithCString(kCFAllocatorDefault, bytes.c_str() + kHeaderSize, encoding);
}

CFStringRef CreateWithUnicodeText(AEDesc* text) {
  Descriptor unicode;
  if (AECoerceDesc(text, typeUTF16Text, unicode.get())) return nullptr;
  const std::string bytes = unicode.Bytes();
  return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                 static_cast<CFIndex>(bytes.size()), kTextEncodingUTF16BE, 0);
}

/// Room for `count` units; null when there is no memory.
UniChar* NewUnits(CFIndex count) {
  void* block = nullptr;
  GL_NewPtr(count * static_cast<CFIndex>(sizeof(UniChar)), &block);
  return static_cast<UniChar*>(block);
}

/// How many of the string's units a 16-bit count can tell without splitting a character.
CFIndex CountableUnits(CFStringRef string) {
  constexpr CFIndex kMost = std::numeric_limits<UInt16>::max();
  const CFIndex length = CFStringGetLength(string);
  if (length <= kMost) return length;
  return CFStringGetRangeOfComposedCharactersAtIndex(string, kMost).location;
}

void CopyUnits(CFStringRef string, UniChar** characters, UInt16* count) {
  if (characters != nullptr) *characters = nullptr;
  if (count != nullptr) *count = 0;
  if (string == nullptr || characters == nullptr || count == nullptr) return;
  const CFIndex length = CountableUnits(string);
  UniChar* const units = NewUnits(length);
  if (units == nullptr) return;
  CFStringGetBytes(string, {0, length}, kCFStringEncodingUnicode, kLossByte, 0,
                   reinterpret_cast<UInt8*>(units), length * static_cast<CFIndex>(sizeof(UniChar)),
                   nullptr);
  *characters = units;
  *count = static_cast<UInt16>(length);
}

void SetName(CFStringRef string, HFSUniStr255* name) {
  if (name == nullptr) return;
  if (string == nullptr || FSGetHFSUniStrFromString(string, name)) name->length = 0;
}

String StringOfName(const HFSUniStr255* name) {
  return String(FSCreateStringFromHFSUniStr(kCFAllocatorDefault, name));
}

void AppendToName(HFSUniStr255* name, CFStringRef appended) {
  const quillmere::Owned<CFMutableStringRef> joined(GL_HFSUniStr255ToCFMutStr(name));
  CFStringAppend(joined.get(), appended);
  if (joined) FSGetHFSUniStrFromString(joined.get(), name);
}

UInt16 Swapped(UInt16 value) {
  return static_cast<UInt16>((value << 8) | (value >> 8));
}

void SwapUnits(HFSUniStr255* name, UInt16 count) {
  for (UniChar& unit : std::span(name->unicode).first(std::min(count, kLongestName))) {
    unit = static_cast<UniChar>(Swapped(unit));
  }
}

}  // namespace

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

CFStringRef GL_MacRomanTextPtrToCFStr(const void* text, SInt32 count) {
  return CFStringCreateWithBytes(kCFAllocatorDefault, static_cast<const UInt8*>(text), count,
                                 kCFStringEncodingMacRoman, 0);
}

CFStringRef GL_TextPtrToCFStr(const void* text, SInt32 count, ScriptCode script, LangCode language,
                              RegionCode region) {
  if (count < 0 || (text == nullptr && count > 0)) return nullptr;
  const auto* const bytes = static_cast<const UInt8*>(text);
  const auto length = static_cast<std::size_t>(count);
  const bool marked = script != kTextScriptDontCare || language != kTextLanguageDontCare ||
                      region != kTextRegionDontCare;
  TextEncoding encoding = 0;
  if (marked && !UpgradeScriptInfoToTextEncoding(script, language, region, nullptr, &encoding)) {
    if (CFStringRef string = CreateWithText(bytes, length, encoding)) return string;
  }
  Descriptor descriptor;
  if (AECreateDesc(typeText, text, count, descriptor.get())) return nullptr;
  if (CFStringRef string = CreateWithIntlText(descriptor.get())) return string;
  return CreateWithUnicodeText(descriptor.get());
}

CFMutableStringRef GL_CStrToCFMutStr(const char* text) {
  return MutableCopy(String(GL_CStrToCFStr(text)));
}

CFMutableStringRef GL_MacRomanCStrToCFMutStr(const char* text) {
  return MutableCopy(String(GL_MacRomanCStrToCFStr(text)));
}

CFMutableStringRef GL_UnicodePtrToCFMutStr(const UniChar* characters, UInt16 count) {
  return MutableCopy(String(GL_UnicodePtrToCFStr(characters, count)));
}

CFMutableStringRef GL_HFSUniStr255ToCFMutStr(const HFSUniStr255* name) {
  return MutableCopy(StringOfName(name));
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

CFStringRef GL_OSTypeToCFStr(OSType code) {
  char text[5];
  GL_OSTypeToCString(code, text);
  return GL_MacRomanCStrToCFStr(text);
}

CFStringRef GL_QuotedOSTypeToCFStr(OSType code) {
  char text[7];
  GL_OSTypeToCStringWithQuo(code, text);
  return GL_MacRomanCStrToCFStr(text);
}

Boolean GL_CFStrToCStr(CFStringRef string, char* buffer, SInt32 size) {
  return CFStringGetCString(string, buffer, size, CFStringGetSystemEncoding());
}

Boolean GL_CFStrToMacRomanCStr(CFStringRef string, char* buffer, SInt32 size) {
  return CFStringGetCString(string, buffer, size, kCFStringEncodingMacRoman);
}

Boolean GL_CFStrToStr255(CFStringRef string, char* buffer) {
  return GL_CFStrToCStr(string, buffer, 256);
}

Boolean GL_CFStrToMacRomanStr255(CFStringRef string, char* buffer) {
  return GL_CFStrToMacRomanCStr(string, buffer, 256);
}

Boolean GL_CFStrToUTF8(CFStringRef string, char* buffer) {
  return CFStringGetCString(string, buffer, 256, kCFStringEncodingUTF8);
}

Boolean GL_CFStrToCStrNew(CFStringRef string, CFStringEncoding encoding, char** text) {
  if (text == nullptr) return 0;
  *text = nullptr;
  const CFIndex largest =
      string ? CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), encoding) : 0;
  void* block = nullptr;
  if (GL_NewPtrClear(largest + 1, &block)) return 0;
  *text = static_cast<char*>(block);
  return string && CFStringGetCString(string, *text, largest + 1, encoding) ? 1 : 0;
}

OSType GL_CFStrToOSType(CFStringRef string) {
  char text[16] = "";
  const CFRange all = {0, CFStringGetLength(string)};
  CFIndex used = 0;
  CFStringGetBytes(string, all, kCFStringEncodingMacRoman, 0, 0, reinterpret_cast<UInt8*>(text), 15,
                   &used);
  const bool complete = used == all.length || used >= 4;
  return complete ? GL_CStrToOSType(text) : 0;
}

void GL_CFStrToUnicodePtr(CFStringRef string, UniChar** characters, UInt16* count) {
  CopyUnits(string, characters, count);
}

void GL_CFStrToUnicodeStr(CFStringRef string, UniChar** text) {
  if (text == nullptr) return;
  *text = nullptr;
  if (string == nullptr) return;
  const CFIndex length = CFStringGetLength(string);
  UniChar* const units = NewUnits(length + 1);
  if (units == nullptr) return;
  CFStringGetCharacters(string, {0, length}, units);
  units[length] = 0;
  *text = units;
}

void GL_CStrToUnicodePtr(const char* text, UniChar** characters, UInt16* count) {
  CopyUnits(String(GL_CStrToCFStr(text)).get(), characters, count);
}

void GL_MacRomanCStrToUnicodePtr(const char* text, UniChar** characters, UInt16* count) {
  CopyUnits(String(GL_MacRomanCStrToCFStr(text)).get(), characters, count);
}

void GL_CStrToCStr(const char* source, CFStringEncoding source_encoding, char* destination,
                   CFStringEncoding destination_encoding, SInt32 size) {
  if (destination == nullptr || size < 1) return;
  const String string(CFStringCreateWithCString(kCFAllocatorDefault, source, source_encoding));
  CFIndex used = 0;
  CFStringGetBytes(string.get(), {0, CFStringGetLength(string.get())}, destination_encoding,
                   kLossByte, 0, reinterpret_cast<UInt8*>(destination), size - 1, &used);
  destination[used] = 0;
}

void GL_CStrToHFSUniStr255(const char* text, HFSUniStr255* name) {
  SetName(String(GL_CStrToCFStr(text)).get(), name);
}

void GL_MacRomanCStrToHFSUniStr255(const char* text, HFSUniStr255* name) {
  SetName(String(GL_MacRomanCStrToCFStr(text)).get(), name);
}

void GL_HFSUniStr255ToCStr(const HFSUniStr255* name, char* buffer, SInt32 size) {
  GL_CFStrToCStr(StringOfName(name).get(), buffer, size);
}

void GL_AppendHFSUniStr255ToCFStr(CFMutableStringRef string, const HFSUniStr255* name) {
  CFStringAppend(string, StringOfName(name).get());
}

void GL_AppendCStrToCFStr(CFMutableStringRef string, const char* text) {
  CFStringAppendCString(string, text, CFStringGetSystemEncoding());
}

void GL_AppendMacRomanCStrToCFStr(CFMutableStringRef string, const char* text) {
  CFStringAppendCString(string, text, kCFStringEncodingMacRoman);
}

void GL_AppendCFStrToHFSUniStr255(HFSUniStr255* name, CFStringRef string) {
  AppendToName(name, string);
}

void GL_AppendHFSUniStr255(HFSUniStr255* name, const HFSUniStr255* appended) {
  AppendToName(name, StringOfName(appended).get());
}

void GL_AppendCStrToHFSUniStr255(HFSUniStr255* name, const char* text) {
  AppendToName(name, String(GL_CStrToCFStr(text)).get());
}

Boolean GL_EqualCFStr(CFStringRef a, CFStringRef b) {
  return a && b && CFStringCompare(a, b, kCFCompareCaseInsensitive) == kCFCompareEqualTo;
}

Boolean GL_EqualHFSUniStr255(const HFSUniStr255* a, const HFSUniStr255* b) {
  return GL_EqualCFStr(StringOfName(a).get(), StringOfName(b).get());
}

Boolean GL_EqualHFSUniStr255CFStr(const HFSUniStr255* name, CFStringRef string) {
  return GL_EqualCFStr(StringOfName(name).get(), string);
}

Boolean GL_EqualHFSStringMP(const HFSUniStr255* a, const HFSUniStr255* b) {
  if (a == nullptr || b == nullptr || a->length != b->length) return 0;
  const UInt16 count = std::min(a->length, kLongestName);
  return std::equal(a->unicode, a->unicode + count, b->unicode) ? 1 : 0;
}

void GL_CopyHFSUniStr255(HFSUniStr255* destination, const HFSUniStr255* source) {
  if (destination == nullptr || source == nullptr) return;
  destination->length = std::min(source->length, kLongestName);
  std::copy_n(source->unicode, destination->length, destination->unicode);
}

void GL_FlipHFSUniStr255_NtoB(HFSUniStr255* name) {
  if (name == nullptr) return;
  SwapUnits(name, name->length);
  name->length = Swapped(name->length);
}

void GL_FlipHFSUniStr255_BtoN(HFSUniStr255* name) {
  if (name == nullptr) return;
  name->length = Swapped(name->length);
  SwapUnits(name, name->length);
}

void GL_HFSUniStr255TruncMiddle(HFSUniStr255* name, SInt32 limit) {
  const quillmere::Owned<CFMutableStringRef> copy(GL_HFSUniStr255ToCFMutStr(name));
  GL_CFStrTruncMiddle(copy.get(), limit);
  SetName(copy.get(), name);
}

void GL_RemoveHFSUniStr255EndString(HFSUniStr255* name, SInt32 largest_length, UInt32 flags) {
  const quillmere::Owned<CFMutableStringRef> copy(GL_HFSUniStr255ToCFMutStr(name));
  GL_RemoveCFEndString(copy.get(), largest_length, flags);
  SetName(copy.get(), name);
}
