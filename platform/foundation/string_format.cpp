#include "string_format.h"

#include <charconv>
#include <cstdio>
#include <vector>

#include "cf_strings.h"
#include "cf_values.h"

namespace quillmere {
namespace {

/// One conversion of a format: "%-08.3lf" is flags and widths "-08.3", length "l", kind 'f'.
struct Conversion {
  std::string flags;
  std::string length;
  char kind = 0;
  std::size_t end = 0;  ///< position behind it
};

Conversion ParseConversion(std::u16string_view format, std::size_t percent) {
  Conversion conversion;
  std::size_t at = percent + 1;
  const auto take = [&](std::u16string_view allowed, std::string* out) {
    while (at < format.size() && allowed.find(format[at]) != std::u16string_view::npos) {
      out->push_back(static_cast<char>(format[at++]));
    }
  };
  take(u"-+ #0123456789.*", &conversion.flags);
  take(u"hlqLzt", &conversion.length);
  if (at < format.size()) conversion.kind = format[at] < 128 ? static_cast<char>(format[at]) : '?';
  conversion.end = at + 1;
  return conversion;
}

template <class T>
std::string Print(const std::string& format, T value) {
  char small[64];
  const int length = std::snprintf(small, sizeof(small), format.c_str(), value);
  if (length < 0) return {};
  if (static_cast<std::size_t>(length) < sizeof(small)) return small;
  std::vector<char> large(static_cast<std::size_t>(length) + 1);
  std::snprintf(large.data(), large.size(), format.c_str(), value);
  return large.data();
}

std::u16string Units(std::string_view utf8) {
  const Owned<CFStringRef> string(CreateFromUtf8(utf8));
  return std::u16string(UnitsOf(string.get()));
}

std::u16string Describe(CFTypeRef object) {
  if (const CFStringRef string = AsString(object)) return std::u16string(UnitsOf(string));
  if (const CFNumberRef number = AsNumber(object)) {
    SInt64 integer = 0;
    if (CFNumberGetValue(number, kCFNumberSInt64Type, &integer))
      return Units(std::to_string(integer));
    double value = 0;
    CFNumberGetValue(number, kCFNumberFloat64Type, &value);
    return Units(Print<double>("%.17g", value));
  }
  return u"(null)";
}

/// Replaces each "*" of the flags by the int that stands for it.
void TakeStars(std::string* flags, std::va_list* arguments) {
  for (std::size_t star; (star = flags->find('*')) != std::string::npos;) {
    flags->replace(star, 1, std::to_string(va_arg(*arguments, int)));
  }
}

std::u16string Convert(Conversion conversion, std::va_list* arguments) {
  TakeStars(&conversion.flags, arguments);
  const std::string start = "%" + conversion.flags;
  const bool wide = !conversion.length.empty() && conversion.length[0] != 'h';
  switch (conversion.kind) {
    case '%':
      return u"%";
    case '@':
      return Describe(va_arg(*arguments, CFTypeRef));
    case 'd':
    case 'i':
      return Units(Print<long long>(start + "lld",
                                    wide ? va_arg(*arguments, long) : va_arg(*arguments, int)));
    case 'u':
    case 'x':
    case 'X':
    case 'o':
      return Units(Print<unsigned long long>(
          start + "ll" + conversion.kind,
          wide ? va_arg(*arguments, unsigned long) : va_arg(*arguments, unsigned)));
    case 'f':
    case 'e':
    case 'g':
    case 'F':
    case 'E':
    case 'G':
      return Units(Print<double>(start + conversion.kind, va_arg(*arguments, double)));
    case 'c':
      return Units(Print<int>(start + "c", va_arg(*arguments, int)));
    case 'C':
      return std::u16string(1, static_cast<UniChar>(va_arg(*arguments, int)));
    case 's': {
      const char* text = va_arg(*arguments, const char*);
      return text ? Units(Print<const char*>(start + "s", text)) : u"(null)";
    }
    default:
      return {};
  }
}

}  // namespace

std::u16string FormatUnits(std::u16string_view format, std::va_list arguments) {
  std::va_list copy;
  va_copy(copy, arguments);
  std::u16string text;
  std::size_t at = 0;
  while (at < format.size()) {
    const std::size_t percent = format.find(u'%', at);
    text.append(format.substr(at, percent == std::u16string_view::npos ? percent : percent - at));
    if (percent == std::u16string_view::npos) break;
    const Conversion conversion = ParseConversion(format, percent);
    text += Convert(conversion, &copy);
    at = conversion.end;
  }
  va_end(copy);
  return text;
}

double ParseLeadingDouble(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\n\r");
  if (first == std::string_view::npos) return 0;
  text.remove_prefix(first);
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

}  // namespace quillmere
