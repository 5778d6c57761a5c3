#include "text_coercions.h"

#include <algorithm>
#include <cstring>

#include "cf_strings.h"
#include "text_encodings.h"

namespace quillmere::events {
namespace {

using String = Owned<CFStringRef>;

/// What stands in front of an `itxt`'s bytes, in native order.
struct IntlTextHeader {
  ScriptCode script;
  LangCode language;
};
static_assert(sizeof(IntlTextHeader) == 4);

bool IsBytes(OSType type) {
  return type == typeText || type == typeIntlText;
}

IntlTextHeader SystemHeader() {
  return {static_cast<ScriptCode>(GetScriptManagerVariable(smSysScript)), text::SystemLanguage()};
}

/// The encoding of a script and language, MacRoman where they have none.
TextEncoding EncodingOf(const IntlTextHeader& header) {
  TextEncoding encoding = kTextEncodingMacRoman;
  if (UpgradeScriptInfoToTextEncoding(header.script, header.language, kTextRegionDontCare, nullptr,
                                      &encoding) != noErr) {
    encoding = kTextEncodingMacRoman;
  }
  return encoding;
}

/// The encoding in which text of a form is written.
TextEncoding EncodingOf(OSType type) {
  if (type == typeUTF8Text) return kTextEncodingUTF8;
  if (type == typeUTF16Text) return kTextEncodingUTF16BE;
  return IsBytes(type) ? EncodingOf(SystemHeader()) : kTextEncodingUnicode;
}

CFStringRef Decode(std::span<const UInt8> bytes, TextEncoding encoding) {
  return CFStringCreateWithBytes(kCFAllocatorDefault, bytes.data(),
                                 static_cast<CFIndex>(bytes.size()), encoding, 0);
}

CFStringRef DecodePlainText(std::span<const UInt8> bytes) {
  if (CFStringRef string = Decode(bytes, kCFStringEncodingUTF8)) return string;
  if (CFStringRef string = Decode(bytes, EncodingOf(SystemHeader()))) return string;
  return Decode(bytes, kTextEncodingMacRoman);
}

bool HasByteOrderMark(std::span<const UInt8> bytes) {
  return bytes.size() >= 2 &&
         ((bytes[0] == 0xFE && bytes[1] == 0xFF) || (bytes[0] == 0xFF && bytes[1] == 0xFE));
}

CFStringRef Decode(OSType type, std::span<const UInt8> bytes) {
  if (type == typeText) return DecodePlainText(bytes);
  if (type == typeUTF16Text && !HasByteOrderMark(bytes)) return Decode(bytes, kTextEncodingUTF16BE);
  if (type == typeUTF8Text) return Decode(bytes, kCFStringEncodingUTF8);
  if (type != typeIntlText) return Decode(bytes, kCFStringEncodingUnicode);
  IntlTextHeader header{};
  if (bytes.size() < sizeof header) return nullptr;
  std::memcpy(&header, bytes.data(), sizeof header);
  return Decode(bytes.subspan(sizeof header), EncodingOf(header));
}

void Append(std::vector<UInt8>* result, const IntlTextHeader& header) {
  const auto* const bytes = reinterpret_cast<const UInt8*>(&header);
  result->insert(result->end(), bytes, bytes + sizeof header);
}

void Append(std::vector<UInt8>* result, CFStringRef string, TextEncoding encoding) {
  const CFRange all = {0, CFStringGetLength(string)};
  CFIndex count = 0;
  CFStringGetBytes(string, all, encoding, '?', 0, nullptr, 0, &count);
  const std::size_t before = result->size();
  result->resize(before + static_cast<std::size_t>(count));
  CFStringGetBytes(string, all, encoding, '?', 0, result->data() + before, count, nullptr);
}

}  // namespace

bool IsText(OSType type) {
  constexpr OSType kTypes[] = {typeText, typeIntlText, typeUnicodeText, typeUTF16Text,
                               typeUTF8Text};
  return std::ranges::find(kTypes, type) != std::end(kTypes);
}

bool CoerceText(OSType from, std::span<const UInt8> bytes, OSType to, std::vector<UInt8>* result) {
  result->clear();
  if (!IsText(from) || !IsText(to)) return false;
  if (IsBytes(from) && IsBytes(to)) {
    if (from == typeIntlText && bytes.size() < sizeof(IntlTextHeader)) return false;
    if (from == typeText && to == typeIntlText) Append(result, SystemHeader());
    if (from == typeIntlText && to == typeText) bytes = bytes.subspan(sizeof(IntlTextHeader));
    result->insert(result->end(), bytes.begin(), bytes.end());
    return true;
  }
  const String string(Decode(from, bytes));
  if (!string) return false;
  if (to == typeIntlText) Append(result, SystemHeader());
  Append(result, string.get(), EncodingOf(to));
  return true;
}

}  // namespace quillmere::events
