#include "date_formatter.h"

#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <cstdlib>
#include <memory>

struct CFLocale : CFObject {
  explicit CFLocale(const icu::Locale& named) : locale(named) {}
  icu::Locale locale;
};

struct CFDateFormatter : CFObject {
  explicit CFDateFormatter(std::unique_ptr<icu::DateFormat> made) : format(std::move(made)) {}
  std::unique_ptr<icu::DateFormat> format;
};

namespace {

icu::DateFormat::EStyle StyleOf(CFDateFormatterStyle style) {
  switch (style) {
    case kCFDateFormatterShortStyle:
      return icu::DateFormat::kShort;
    case kCFDateFormatterMediumStyle:
      return icu::DateFormat::kMedium;
    case kCFDateFormatterLongStyle:
      return icu::DateFormat::kLong;
    case kCFDateFormatterFullStyle:
      return icu::DateFormat::kFull;
    default:
      return icu::DateFormat::kNone;
  }
}

icu::Locale CurrentLocale() {
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
    if (const char* name = std::getenv(variable); name && name[0] != '\0') {
      return icu::Locale::createCanonical(name);
    }
  }
  return icu::Locale::getDefault();
}

}  // namespace

CFLocaleRef CFLocaleCopyCurrent() {
  return std::make_unique<CFLocale>(CurrentLocale()).release();
}

CFLocaleRef CFLocaleCreate(CFAllocatorRef, CFStringRef identifier) {
  return std::make_unique<CFLocale>(
             icu::Locale::createCanonical(quillmere::ToUtf8(identifier).c_str()))
      .release();
}

CFDateFormatterRef CFDateFormatterCreate(CFAllocatorRef, CFLocaleRef locale,
                                         CFDateFormatterStyle date_style,
                                         CFDateFormatterStyle time_style) {
  std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateTimeInstance(
      StyleOf(date_style), StyleOf(time_style), locale ? locale->locale : CurrentLocale()));
  if (!format) return nullptr;
  return std::make_unique<CFDateFormatter>(std::move(format)).release();
}

CFStringRef CFDateFormatterCreateStringWithAbsoluteTime(CFAllocatorRef allocator,
                                                        CFDateFormatterRef formatter,
                                                        CFAbsoluteTime time) {
  if (!formatter) return nullptr;
  constexpr double kSecondsFrom1970To2001 = 978307200.0;
  icu::UnicodeString text;
  formatter->format->format((time + kSecondsFrom1970To2001) * 1000.0, text);
  return CFStringCreateWithCharacters(allocator, reinterpret_cast<const UniChar*>(text.getBuffer()),
                                      text.length());
}
