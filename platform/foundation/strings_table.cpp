#include "strings_table.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "cf_strings.h"
#include "reference_counted.h"

namespace quillmere {
namespace {

/// UTF-16 of the bytes behind a byte order mark; nothing for half a unit.
std::optional<std::u16string> DecodeUtf16(std::span<const UInt8> bytes, bool big_endian) {
  if (bytes.size() % 2 != 0) return std::nullopt;
  std::u16string text(bytes.size() / 2, u'\0');
  for (std::size_t i = 0; i < text.size(); ++i) {
    const UInt8 high = bytes[2 * i + (big_endian ? 0 : 1)];
    const UInt8 low = bytes[2 * i + (big_endian ? 1 : 0)];
    text[i] = static_cast<UniChar>(high << 8 | low);
  }
  return text;
}

bool StartsWith(std::span<const UInt8> bytes, std::string_view mark) {
  if (bytes.size() < mark.size()) return false;
  for (std::size_t i = 0; i < mark.size(); ++i) {
    if (bytes[i] != static_cast<UInt8>(mark[i])) return false;
  }
  return true;
}

std::optional<std::u16string> Decode(std::span<const UInt8> bytes) {
  if (StartsWith(bytes, "\xFE\xFF")) return DecodeUtf16(bytes.subspan(2), true);
  if (StartsWith(bytes, "\xFF\xFE")) return DecodeUtf16(bytes.subspan(2), false);
  if (StartsWith(bytes, "\xEF\xBB\xBF")) bytes = bytes.subspan(3);
  const Owned<CFStringRef> string(CFStringCreateWithBytes(kCFAllocatorDefault, bytes.data(),
                                                          static_cast<CFIndex>(bytes.size()),
                                                          kCFStringEncodingUTF8, 0));
  if (!string) return std::nullopt;
  return std::u16string(UnitsOf(string.get()));
}

/// The value of a hexadecimal digit, or -1.
int HexValue(UniChar unit) {
  if (unit >= u'0' && unit <= u'9') return unit - u'0';
  if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
  if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
  return -1;
}

bool IsBlank(UniChar unit) {
  return unit == u' ' || (unit >= u'\t' && unit <= u'\r') || unit == u'\u2028' || unit == u'\u2029';
}

bool IsOfWord(UniChar unit) {
  const bool letter = (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
  const bool digit = unit >= u'0' && unit <= u'9';
  return letter || digit || std::u16string_view(u"_$./:-").find(unit) != std::u16string_view::npos;
}

/// Walks over a file's text once, from front to back.
class Reader {
 public:
  explicit Reader(std::u16string_view text) : rest_(text) {}

  /// Reads all entries; false where the text breaks the rules.
  bool ReadEntries(StringsTable* table) {
    for (;;) {
      if (!SkipBlanks()) return false;
      if (rest_.empty()) return true;
      std::u16string key;
      if (!ReadString(&key) || !SkipBlanks()) return false;
      std::u16string text = key;
      if (Take(u"=")) {
        text.clear();
        if (!SkipBlanks() || !ReadString(&text) || !SkipBlanks()) return false;
      }
      if (!Take(u";")) return false;
      table->insert_or_assign(std::move(key), std::move(text));
    }
  }

 private:
  bool Take(std::u16string_view token) {
    if (!rest_.starts_with(token)) return false;
    rest_.remove_prefix(token.size());
    return true;
  }

  UniChar TakeUnit() {
    const UniChar unit = rest_.front();
    rest_.remove_prefix(1);
    return unit;
  }

  /// Passes blanks and comments; false for a comment without an end.
  bool SkipBlanks() {
    for (;;) {
      while (!rest_.empty() && IsBlank(rest_.front()))
        rest_.remove_prefix(1);
      if (Take(u"//")) {
        rest_.remove_prefix(std::min(rest_.find_first_of(u"\n\r\u2028\u2029"), rest_.size()));
      } else if (Take(u"/*")) {
        const std::size_t end = rest_.find(u"*/");
        if (end == std::u16string_view::npos) return false;
        rest_.remove_prefix(end + 2);
      } else {
        return true;
      }
    }
  }

  bool ReadString(std::u16string* string) {
    if (rest_.empty()) return false;
    if (rest_.front() == u'"' || rest_.front() == u'\'') return ReadQuoted(string);
    while (!rest_.empty() && IsOfWord(rest_.front()))
      string->push_back(TakeUnit());
    return !string->empty();
  }

  bool ReadQuoted(std::u16string* string) {
    const UniChar quote = TakeUnit();
    while (!rest_.empty()) {
      const UniChar unit = TakeUnit();
      if (unit == quote) return true;
      if (unit != u'\\') {
        string->push_back(unit);
      } else if (!ReadEscape(string)) {
        return false;
      }
    }
    return false;
  }

  /// What stands behind a backslash.
  bool ReadEscape(std::u16string* string) {
    if (rest_.empty()) return false;
    const UniChar unit = TakeUnit();
    switch (unit) {
      case u'n':
        string->push_back(u'\n');
        return true;
      case u'r':
        string->push_back(u'\r');
        return true;
      case u't':
        string->push_back(u'\t');
        return true;
      case u'u':
      case u'U':
        return ReadUnitNumber(string);
      default:
        string->push_back(unit);
        return true;
    }
  }

  bool ReadUnitNumber(std::u16string* string) {
    if (rest_.size() < 4) return false;
    int value = 0;
    for (int i = 0; i < 4; ++i) {
      const int digit = HexValue(TakeUnit());
      if (digit < 0) return false;
      value = value * 16 + digit;
    }
    string->push_back(static_cast<UniChar>(value));
    return true;
  }

  std::u16string_view rest_;
};

}  // namespace

StringsTable ParseStringsTable(std::span<const UInt8> bytes) {
  const std::optional<std::u16string> text = Decode(bytes);
  StringsTable table;
  if (!text || !Reader(*text).ReadEntries(&table)) return {};
  return table;
}

}  // namespace quillmere
