#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

#include "cf_dates.h"
#include "property_lists.h"

namespace {

using quillmere::Owned;

constexpr std::string_view kBase64 =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kDataBytesPerLine = 57;  ///< 76 characters

void AppendUtf8(char32_t character, std::string* text) {
  const auto put = [text](char32_t byte) { text->push_back(static_cast<char>(byte)); };
  const auto put_rest = [&put, character](int shift) {
    for (; shift >= 0; shift -= 6)
      put(0x80 | ((character >> shift) & 0x3F));
  };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | (character >> 6));
    put_rest(0);
  } else if (character < 0x10000) {
    put(0xE0 | (character >> 12));
    put_rest(6);
  } else {
    put(0xF0 | (character >> 18));
    put_rest(12);
  }
}

bool IsHighSurrogate(UniChar unit) {
  return (unit & 0xFC00) == 0xD800;
}

bool IsLowSurrogate(UniChar unit) {
  return (unit & 0xFC00) == 0xDC00;
}

/// True for a unit that XML can hold as a character of its own.
bool IsXmlCharacter(UniChar unit) {
  if (unit < 0x20) return unit == u'\t' || unit == u'\n' || unit == u'\r';
  return !IsHighSurrogate(unit) && !IsLowSurrogate(unit) && unit < 0xFFFE;
}

void AppendUnit(UniChar unit, std::string* text) {
  switch (unit) {
    case u'&':
      text->append("&amp;");
      return;
    case u'<':
      text->append("&lt;");
      return;
    case u'>':
      text->append("&gt;");
      return;
    case u'\r':  // as itself it would be read as a line feed
      text->append("&#13;");
      return;
    default:
      break;
  }
  if (IsXmlCharacter(unit)) {
    AppendUtf8(unit, text);
    return;
  }
  std::array<char, 16> instruction{};
  std::snprintf(instruction.data(), instruction.size(), "<?utf16 %04X?>", unsigned{unit});
  text->append(instruction.data());
}

void AppendText(CFStringRef string, std::string* text) {
  const std::u16string_view units = quillmere::UnitsOf(string);
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (IsHighSurrogate(units[i]) && i + 1 < units.size() && IsLowSurrogate(units[i + 1])) {
      const auto high = static_cast<char32_t>(units[i] & 0x3FF);
      const auto low = static_cast<char32_t>(units[i + 1] & 0x3FF);
      AppendUtf8(0x10000 + (high << 10) + low, text);
      ++i;
    } else {
      AppendUnit(units[i], text);
    }
  }
}

void AppendBase64(std::span<const UInt8> bytes, std::string* text) {
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
    UInt32 group = 0;
    for (std::size_t i = 0; i < 3; ++i)
      group = (group << 8) | (i < count ? bytes[at + i] : 0U);
    for (std::size_t i = 0; i < 4; ++i)
      text->push_back(i <= count ? kBase64[(group >> (18 - 6 * i)) & 63] : '=');
  }
}

/// The shortest decimal text that reads back as the same double.
std::string TextOfReal(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "+infinity" : "-infinity";
  std::array<char, 32> text{};
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc{} ? std::string(text.data(), end) : std::string();
}

/// Writes a list in a document; each Write gives false for what has no form.
class Writer {
 public:
  bool WriteDocument(CFPropertyListRef list) {
    text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
    if (!Write(list, 0)) return false;
    text_ += "</plist>\n";
    return IsSmallEnough();
  }

  const std::string& text() const { return text_; }

 private:
  bool IsSmallEnough() const { return std::ssize(text_) <= quillmere::kLargestPropertyList; }

  bool Write(CFTypeRef value, int depth) {
    if (++count_ > quillmere::kMostPropertyListValues || !IsSmallEnough()) return false;
    if (const CFStringRef string = quillmere::AsString(value)) {
      WriteString("string", string, depth);
      return true;
    }
    if (const CFBooleanRef truth = quillmere::AsBoolean(value)) {
      StartLine(depth);
      text_ += CFBooleanGetValue(truth) ? "<true/>\n" : "<false/>\n";
      return true;
    }
    if (const CFNumberRef number = quillmere::AsNumber(value)) {
      WriteNumber(number, depth);
      return true;
    }
    if (const CFDataRef data = quillmere::AsData(value)) {
      WriteData(data, depth);
      return true;
    }
    if (const CFDateRef date = quillmere::AsDate(value)) return WriteDate(date, depth);
    if (depth >= quillmere::kDeepestPropertyList) return false;
    if (const CFArrayRef array = quillmere::AsArray(value)) return WriteArray(array, depth);
    const CFDictionaryRef dictionary = quillmere::AsDictionary(value);
    return dictionary && WriteDictionary(dictionary, depth);
  }

  void StartLine(int depth) { text_.append(static_cast<std::size_t>(depth), '\t'); }

  void WriteElement(std::string_view name, std::string_view content, int depth) {
    StartLine(depth);
    text_.append("<").append(name).append(">").append(content);
    EndElement(name);
  }

  void EndElement(std::string_view name) { text_.append("</").append(name).append(">\n"); }

  void WriteString(std::string_view name, CFStringRef string, int depth) {
    StartLine(depth);
    text_.append("<").append(name).append(">");
    AppendText(string, &text_);
    EndElement(name);
  }

  void WriteNumber(CFNumberRef number, int depth) {
    UInt64 magnitude = 0;
    bool is_negative = false;
    if (quillmere::IsInteger(number, &magnitude, &is_negative)) {
      WriteElement("integer", (is_negative ? "-" : "") + std::to_string(magnitude), depth);
      return;
    }
    double value = 0;
    CFNumberGetValue(number, kCFNumberFloat64Type, &value);
    WriteElement("real", TextOfReal(value), depth);
  }

  void WriteData(CFDataRef data, int depth) {
    const std::span bytes(CFDataGetBytePtr(data), static_cast<std::size_t>(CFDataGetLength(data)));
    StartLine(depth);
    text_ += "<data>\n";
    for (std::size_t at = 0; at < bytes.size() && IsSmallEnough(); at += kDataBytesPerLine) {
      AppendBase64(bytes.subspan(at, std::min(kDataBytesPerLine, bytes.size() - at)), &text_);
      text_ += "\n";
    }
    StartLine(depth);
    EndElement("data");
  }

  bool WriteDate(CFDateRef date, int depth) {
    const CFGregorianDate parts =
        CFAbsoluteTimeGetGregorianDate(CFDateGetAbsoluteTime(date), nullptr);
    if (parts.year < 1 || parts.year > 9999) return false;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02dZ", parts.year,
                  parts.month, parts.day, parts.hour, parts.minute, static_cast<int>(parts.second));
    WriteElement("date", text.data(), depth);
    return true;
  }

  bool WriteArray(CFArrayRef array, int depth) {
    const CFIndex count = CFArrayGetCount(array);
    StartLine(depth);
    text_ += count > 0 ? "<array>\n" : "<array/>\n";
    for (CFIndex i = 0; i < count; ++i) {
      if (!Write(CFArrayGetValueAtIndex(array, i), depth + 1)) return false;
    }
    if (count == 0) return true;
    StartLine(depth);
    EndElement("array");
    return true;
  }

  bool WriteDictionary(CFDictionaryRef dictionary, int depth) {
    const auto count = static_cast<std::size_t>(CFDictionaryGetCount(dictionary));
    std::vector<CFStringRef> keys(count);
    std::vector<CFTypeRef> values(count);
    CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
    StartLine(depth);
    text_ += count > 0 ? "<dict>\n" : "<dict/>\n";
    for (std::size_t i = 0; i < count; ++i) {
      WriteString("key", keys[i], depth + 1);
      if (!Write(values[i], depth + 1)) return false;
    }
    if (count == 0) return true;
    StartLine(depth);
    EndElement("dict");
    return true;
  }

  std::string text_;
  int count_ = 0;
};

/// Copies a tree of values; null for what no property list holds.
class Copier {
 public:
  Owned<CFTypeRef> Copy(CFTypeRef value, int depth) {
    if (++count_ > quillmere::kMostPropertyListValues) return {};
    if (const CFStringRef string = quillmere::AsString(value))
      return Owned<CFTypeRef>(CFStringCreateCopy(kCFAllocatorDefault, string));
    if (quillmere::AsBoolean(value) || quillmere::AsNumber(value) || quillmere::AsData(value) ||
        quillmere::AsDate(value)) {
      return Owned<CFTypeRef>(CFRetain(value));
    }
    if (depth >= quillmere::kDeepestPropertyList) return {};
    if (const CFArrayRef array = quillmere::AsArray(value)) return CopyArray(array, depth);
    if (const CFDictionaryRef dictionary = quillmere::AsDictionary(value))
      return CopyDictionary(dictionary, depth);
    return {};
  }

 private:
  Owned<CFTypeRef> CopyArray(CFArrayRef array, int depth) {
    Owned<CFMutableArrayRef> copy(CFArrayCreateMutable(kCFAllocatorDefault));
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
      const Owned<CFTypeRef> element = Copy(CFArrayGetValueAtIndex(array, i), depth + 1);
      if (!element) return {};
      CFArrayAppendValue(copy.get(), element.get());
    }
    return Owned<CFTypeRef>(copy.release());
  }

  Owned<CFTypeRef> CopyDictionary(CFDictionaryRef dictionary, int depth) {
    const auto count = static_cast<std::size_t>(CFDictionaryGetCount(dictionary));
    std::vector<CFStringRef> keys(count);
    std::vector<CFTypeRef> values(count);
    CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
    Owned<CFMutableDictionaryRef> copy(CFDictionaryCreateMutable(kCFAllocatorDefault));
    for (std::size_t i = 0; i < count; ++i) {
      const Owned<CFTypeRef> value = Copy(values[i], depth + 1);
      if (!value) return {};
      CFDictionarySetValue(copy.get(), keys[i], value.get());
    }
    return Owned<CFTypeRef>(copy.release());
  }

  int count_ = 0;
};

}  // namespace

CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef list) {
  Writer writer;
  if (!writer.WriteDocument(list)) return nullptr;
  return CFDataCreate(allocator, reinterpret_cast<const UInt8*>(writer.text().data()),
                      std::ssize(writer.text()));
}

CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef, CFPropertyListRef list,
                                               CFOptionFlags) {
  return Copier().Copy(list, 0).release();
}
