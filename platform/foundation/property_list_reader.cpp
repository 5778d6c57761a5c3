#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <optional>
#include <pugixml.hpp>
#include <span>
#include <string>
#include <vector>

#include "cf_dates.h"
#include "property_lists.h"

namespace {

using quillmere::Owned;

constexpr std::string_view kBlanks = " \t\n\r";

/// A part of the document with what is needed to refuse it: kept apart from escapes, which are
/// resolved here so that unknown ones are seen.
constexpr unsigned kParseOptions = pugi::parse_cdata | pugi::parse_pi | pugi::parse_doctype |
                                   pugi::parse_eol | pugi::parse_ws_pcdata | pugi::parse_fragment;

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Reads the whole text as a number in `base`.
template <class T>
bool ReadWhole(std::string_view text, int base, T* value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *value, base);
  return error == std::errc{} && end == text.data() + text.size();
}

bool AppendCodePoint(UInt32 character, std::u16string* units) {
  if (character == 0 || character > 0x10FFFF || (character & 0xFFFFF800) == 0xD800) return false;
  if (character >= 0x10000) {
    units->push_back(static_cast<UniChar>(0xD7C0 + (character >> 10)));
    units->push_back(static_cast<UniChar>(0xDC00 | (character & 0x3FF)));
  } else {
    units->push_back(static_cast<UniChar>(character));
  }
  return true;
}

bool AppendUtf8(std::string_view text, std::u16string* units) {
  const Owned<CFStringRef> string(
      CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                              std::ssize(text), kCFStringEncodingUTF8, 0));
  if (string) units->append(std::u16string(quillmere::UnitsOf(string.get())));
  return static_cast<bool>(string);
}

/// `name` is what stands between "&" and ";".
bool AppendReference(std::string_view name, std::u16string* units) {
  static constexpr std::pair<std::string_view, UniChar> kNamed[] = {
      {"lt", u'<'}, {"gt", u'>'}, {"amp", u'&'}, {"quot", u'"'}, {"apos", u'\''}};
  for (const auto& [known, unit] : kNamed) {
    if (name == known) {
      units->push_back(unit);
      return true;
    }
  }
  if (!name.starts_with('#')) return false;
  const bool is_hex = name.starts_with("#x");
  UInt32 character = 0;
  return ReadWhole(name.substr(is_hex ? 2 : 1), is_hex ? 16 : 10, &character) &&
         AppendCodePoint(character, units);
}

bool AppendEscapedText(std::string_view text, std::u16string* units) {
  for (;;) {
    const std::size_t start = text.find('&');
    if (!AppendUtf8(text.substr(0, start), units)) return false;
    if (start == std::string_view::npos) return true;
    text.remove_prefix(start + 1);
    const std::size_t end = text.find(';');
    if (end == std::string_view::npos || !AppendReference(text.substr(0, end), units)) return false;
    text.remove_prefix(end + 1);
  }
}

bool AppendInstruction(const pugi::xml_node& node, std::u16string* units) {
  if (std::string_view(node.name()) != "utf16") return true;
  UInt16 unit = 0;
  if (!ReadWhole(Trimmed(node.value()), 16, &unit)) return false;
  units->push_back(static_cast<UniChar>(unit));
  return true;
}

/// The text of an element without elements in it; nothing if it is damaged.
std::optional<std::u16string> TextOf(const pugi::xml_node& element) {
  std::u16string units;
  for (const pugi::xml_node& node : element) {
    bool is_good = false;
    switch (node.type()) {
      case pugi::node_pcdata:
        is_good = AppendEscapedText(node.value(), &units);
        break;
      case pugi::node_cdata:
        is_good = AppendUtf8(node.value(), &units);
        break;
      case pugi::node_pi:
        is_good = AppendInstruction(node, &units);
        break;
      default:
        break;
    }
    if (!is_good) return std::nullopt;
  }
  return units;
}

/// The text of an element that holds nothing but ASCII.
std::optional<std::string> AsciiOf(const pugi::xml_node& element) {
  const std::optional<std::u16string> units = TextOf(element);
  if (!units) return std::nullopt;
  std::string ascii;
  ascii.reserve(units->size());
  for (const UniChar unit : *units) {
    if (unit >= 0x80) return std::nullopt;
    ascii.push_back(static_cast<char>(unit));
  }
  return ascii;
}

Owned<CFStringRef> ReadString(const pugi::xml_node& element) {
  const std::optional<std::u16string> units = TextOf(element);
  if (!units) return {};
  return Owned<CFStringRef>(
      CFStringCreateWithCharacters(kCFAllocatorDefault, units->data(), std::ssize(*units)));
}

/// Decimal, or hexadecimal behind "0x", from -2^63 to 2^64 - 1.
CFNumberRef ReadInteger(std::string_view text) {
  text = Trimmed(text);
  const bool is_negative = text.starts_with('-');
  if (is_negative || text.starts_with('+')) text.remove_prefix(1);
  const bool is_hex = text.starts_with("0x") || text.starts_with("0X");
  if (is_hex) text.remove_prefix(2);
  UInt64 magnitude = 0;
  if (!ReadWhole(text, is_hex ? 16 : 10, &magnitude)) return nullptr;
  if (!is_negative) return quillmere::CreateUnsignedNumber(magnitude);
  if (magnitude > UInt64{1} << 63) return nullptr;
  const auto value = static_cast<SInt64>(0 - magnitude);
  return CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value);
}

CFNumberRef ReadReal(std::string_view text) {
  text = Trimmed(text);
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return nullptr;
  }
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return nullptr;
  return CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &value);
}

/// "2001-02-03T04:05:06Z".
CFDateRef ReadDate(std::string_view text) {
  constexpr std::string_view kPattern = "0000-00-00T00:00:00Z";
  text = Trimmed(text);
  if (text.size() != kPattern.size()) return nullptr;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_digit = text[i] >= '0' && text[i] <= '9';
    if (kPattern[i] == '0' ? !is_digit : text[i] != kPattern[i]) return nullptr;
  }
  const auto part = [text](std::size_t at, std::size_t count) {
    int value = 0;
    ReadWhole(text.substr(at, count), 10, &value);
    return value;
  };
  const std::chrono::year_month_day day{std::chrono::year{part(0, 4)},
                                        std::chrono::month{static_cast<unsigned>(part(5, 2))},
                                        std::chrono::day{static_cast<unsigned>(part(8, 2))}};
  if (!day.ok() || part(0, 4) == 0 || part(11, 2) > 23 || part(14, 2) > 59 || part(17, 2) > 59)
    return nullptr;
  const CFGregorianDate date = {part(0, 4),
                                static_cast<SInt8>(part(5, 2)),
                                static_cast<SInt8>(part(8, 2)),
                                static_cast<SInt8>(part(11, 2)),
                                static_cast<SInt8>(part(14, 2)),
                                static_cast<double>(part(17, 2))};
  return CFDateCreate(kCFAllocatorDefault, CFGregorianDateGetAbsoluteTime(date));
}

/// The values of the 64 digits by character, -1 for others.
constexpr std::array<SInt8, 128> MakeBase64Values() {
  std::array<SInt8, 128> values{};
  values.fill(-1);
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (std::size_t i = 0; i < kDigits.size(); ++i)
    values[static_cast<std::size_t>(kDigits[i])] = static_cast<SInt8>(i);
  return values;
}

/// Base64 of whole groups of four, blanks anywhere.
CFDataRef ReadData(const std::string& text) {
  static constexpr std::array<SInt8, 128> kValues = MakeBase64Values();
  std::vector<UInt8> bytes;
  bytes.reserve(text.size() / 4 * 3);
  UInt32 group = 0;
  int digits = 0;   // of the present group, padding included
  int padding = 0;  // "=" so far; only blanks and "=" may follow
  for (const char character : text) {
    if (kBlanks.find(character) != std::string_view::npos) continue;
    const int value = kValues[static_cast<std::size_t>(character)];
    if (character == '=') {
      ++padding;
    } else if (value < 0 || padding > 0) {
      return nullptr;
    }
    group = (group << 6) | static_cast<UInt32>(std::max(value, 0));
    if (++digits < 4) continue;
    if (padding > 2) return nullptr;
    for (int i = 0; i < 3 - padding; ++i)
      bytes.push_back(static_cast<UInt8>(group >> (16 - 8 * i)));
    group = 0;
    digits = 0;
  }
  if (digits != 0 || padding > 2) return nullptr;
  return CFDataCreate(kCFAllocatorDefault, bytes.data(), std::ssize(bytes));
}

/// What stands beside the elements of a container: blanks and instructions, nothing else.
bool IsIgnorable(const pugi::xml_node& node) {
  if (node.type() == pugi::node_pi) return true;
  return node.type() == pugi::node_pcdata && Trimmed(node.value()).empty();
}

/// Reads the values of a parsed document; each Read gives null for what is damaged.
class Reader {
 public:
  Owned<CFTypeRef> ReadDocument(const pugi::xml_document& document) {
    pugi::xml_node root;
    for (const pugi::xml_node& node : document) {
      if (node.type() == pugi::node_doctype) {
        if (std::string_view(node.value()).find("<!ENTITY") != std::string_view::npos) return {};
      } else if (node.type() == pugi::node_element && !root) {
        root = node;
      } else if (!IsIgnorable(node)) {
        return {};
      }
    }
    if (std::string_view(root.name()) != "plist") return Read(root, 0);
    pugi::xml_node only;
    for (const pugi::xml_node& node : root) {
      if (IsIgnorable(node)) continue;
      if (only) return {};
      only = node;
    }
    return Read(only, 0);
  }

 private:
  Owned<CFTypeRef> Read(const pugi::xml_node& element, int depth) {
    if (element.type() != pugi::node_element) return {};
    if (++count_ > quillmere::kMostPropertyListValues) return {};
    const std::string_view name = element.name();
    if (name == "dict" || name == "array") {
      if (depth >= quillmere::kDeepestPropertyList) return {};
      return name == "dict" ? ReadDictionary(element, depth) : ReadArray(element, depth);
    }
    if (name == "string") return Owned<CFTypeRef>(ReadString(element).release());
    const std::optional<std::string> text = AsciiOf(element);
    return text ? Owned<CFTypeRef>(ReadPlain(name, *text)) : Owned<CFTypeRef>();
  }

  static CFTypeRef ReadPlain(std::string_view name, const std::string& text) {
    if (name == "integer") return ReadInteger(text);
    if (name == "real") return ReadReal(text);
    if (name == "date") return ReadDate(text);
    if (name == "data") return ReadData(text);
    if (!Trimmed(text).empty()) return nullptr;
    if (name == "true") return CFRetain(kCFBooleanTrue);
    if (name == "false") return CFRetain(kCFBooleanFalse);
    return nullptr;
  }

  Owned<CFTypeRef> ReadArray(const pugi::xml_node& element, int depth) {
    Owned<CFMutableArrayRef> array(CFArrayCreateMutable(kCFAllocatorDefault));
    for (const pugi::xml_node& node : element) {
      if (IsIgnorable(node)) continue;
      const Owned<CFTypeRef> value = Read(node, depth + 1);
      if (!value) return {};
      CFArrayAppendValue(array.get(), value.get());
    }
    return Owned<CFTypeRef>(array.release());
  }

  Owned<CFTypeRef> ReadDictionary(const pugi::xml_node& element, int depth) {
    Owned<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(kCFAllocatorDefault));
    Owned<CFStringRef> key;
    for (const pugi::xml_node& node : element) {
      if (IsIgnorable(node)) continue;
      if (!key) {
        if (std::string_view(node.name()) != "key") return {};
        key = ReadString(node);
        if (!key) return {};
        continue;
      }
      const Owned<CFTypeRef> value = Read(node, depth + 1);
      if (!value) return {};
      CFDictionarySetValue(dictionary.get(), key.get(), value.get());
      key.reset();
    }
    if (key) return {};
    return Owned<CFTypeRef>(dictionary.release());
  }

  int count_ = 0;
};

/// True if so many tags cannot be a list within the limits, seen before memory is spent on them.
bool HasTooManyTags(std::span<const UInt8> bytes) {
  // A key and a value with an end tag each, and a little for the document and its comments.
  constexpr std::ptrdiff_t kMost = std::ptrdiff_t{4} * quillmere::kMostPropertyListValues + 1000;
  return std::ranges::count(bytes, UInt8{'<'}) > kMost;
}

}  // namespace

CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef, CFDataRef data, CFOptionFlags,
                                                  CFStringRef* error) {
  if (error) *error = nullptr;
  const std::span bytes(CFDataGetBytePtr(data), static_cast<std::size_t>(CFDataGetLength(data)));
  if (std::ssize(bytes) > quillmere::kLargestPropertyList || HasTooManyTags(bytes)) {
    if (error) *error = CFSTR("The property list is too large.");
    return nullptr;
  }
  pugi::xml_document document;
  const pugi::xml_parse_result result =
      document.load_buffer(bytes.data(), bytes.size(), kParseOptions);
  Owned<CFTypeRef> list;
  if (result) list = Reader().ReadDocument(document);
  if (!list && error) {
    *error = result ? CFSTR("The text is no property list.")
                    : quillmere::CreateFromUtf8(result.description());
  }
  return list.release();
}
