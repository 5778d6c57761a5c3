#include "cf_strings.h"

#include <unicode/brkiter.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <map>
#include <memory>
#include <mutex>

#include "string_format.h"
#include "text_codecs.h"

struct CFString final : CFObject {
  CFString(std::u16string text, bool can_change) : units(std::move(text)), is_mutable(can_change) {}
  std::u16string units;
  bool is_mutable;
};

namespace {

CFStringRef Make(std::u16string units) {
  return new CFString(std::move(units), false);
}

/// The string's own text if it may be changed, else null.
std::u16string* Changeable(CFMutableStringRef string) {
  return string && string->is_mutable ? &string->units : nullptr;
}

CFRange CutToString(CFStringRef string, CFRange range) {
  const CFIndex length = CFStringGetLength(string);
  const CFIndex start = std::clamp<CFIndex>(range.location, 0, length);
  return {start, std::clamp<CFIndex>(range.length, 0, length - start)};
}

icu::UnicodeString ReadOnly(CFStringRef string) {
  const std::u16string_view units = quillmere::UnitsOf(string);
  return icu::UnicodeString(false, units.data(), static_cast<std::int32_t>(units.size()));
}

}  // namespace

CFStringEncoding CFStringGetSystemEncoding() {
  return kCFStringEncodingUTF8;
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text,
                                      CFStringEncoding encoding) {
  if (!text) return nullptr;
  const auto length = static_cast<CFIndex>(std::char_traits<char>::length(text));
  return CFStringCreateWithBytes(allocator, reinterpret_cast<const UInt8*>(text), length, encoding,
                                 0);
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean) {
  if (count < 0 || (!bytes && count > 0) || count > std::numeric_limits<std::int32_t>::max())
    return nullptr;
  std::u16string units;
  quillmere::text::Codec codec(encoding);
  if (!codec.Decode({bytes, static_cast<std::size_t>(count)}, &units)) return nullptr;
  return Make(std::move(units));
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* characters, CFIndex count) {
  if (count < 0 || (!characters && count > 0)) return nullptr;
  return Make(count > 0 ? std::u16string(characters, static_cast<std::size_t>(count))
                        : std::u16string());
}

CFStringRef CFStringCreateWithFormat(CFAllocatorRef allocator, CFTypeRef options,
                                     CFStringRef format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const CFStringRef string =
      CFStringCreateWithFormatAndArguments(allocator, options, format, arguments);
  va_end(arguments);
  return string;
}

CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef, CFTypeRef, CFStringRef format,
                                                 std::va_list arguments) {
  return Make(quillmere::FormatUnits(quillmere::UnitsOf(format), arguments));
}

CFStringRef CFStringCreateCopy(CFAllocatorRef, CFStringRef string) {
  if (!string) return nullptr;
  if (!string->is_mutable) {
    CFRetain(string);
    return string;
  }
  return Make(string->units);
}

CFMutableStringRef CFStringCreateMutable(CFAllocatorRef, CFIndex) {
  return new CFString({}, true);
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex, CFStringRef string) {
  return string ? new CFString(string->units, true) : nullptr;
}

CFIndex CFStringGetLength(CFStringRef string) {
  return string ? std::ssize(string->units) : 0;
}

UniChar CFStringGetCharacterAtIndex(CFStringRef string, CFIndex index) {
  if (index < 0 || index >= CFStringGetLength(string)) return 0;
  return string->units[static_cast<std::size_t>(index)];
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) {
  const CFRange cut = CutToString(string, range);
  if (!buffer || cut.length == 0) return;
  std::copy_n(string->units.begin() + cut.location, cut.length, buffer);
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex size,
                           CFStringEncoding encoding) {
  if (!buffer || size < 1) return 0;
  const CFRange all = {0, CFStringGetLength(string)};
  CFIndex used = 0;
  const CFIndex converted = CFStringGetBytes(string, all, encoding, 0, 0,
                                             reinterpret_cast<UInt8*>(buffer), size - 1, &used);
  const bool whole = converted == all.length;
  buffer[whole ? used : 0] = 0;
  return whole ? 1 : 0;
}

CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding,
                         UInt8 loss_byte, Boolean, UInt8* buffer, CFIndex capacity, CFIndex* used) {
  const CFRange cut = CutToString(string, range);
  const UniChar* units = quillmere::UnitsOf(string).data() + cut.location;
  quillmere::text::Codec codec(encoding);
  CFIndex at = 0;
  CFIndex written = 0;
  if (!codec.IsKnown()) loss_byte = 0;
  while (at < cut.length) {
    CFIndex next = at;
    UChar32 character;
    U16_NEXT(units, next, cut.length, character);
    quillmere::text::Encoded encoded = codec.Encode(static_cast<char32_t>(character));
    if (encoded.count == 0) {
      if (loss_byte == 0) break;
      encoded.bytes[encoded.count++] = loss_byte;
    }
    const auto count = static_cast<CFIndex>(encoded.count);
    if (buffer && count > capacity - written) break;
    if (buffer) std::copy_n(encoded.bytes, encoded.count, buffer + written);
    written += count;
    at = next;
  }
  if (used) *used = written;
  return at;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
  const CFIndex factor = quillmere::text::Codec(encoding).LargestBytesPerUnit();
  if (length < 0 || length > std::numeric_limits<CFIndex>::max() / factor) return -1;
  return length * factor;
}

CFComparisonResult CFStringCompare(CFStringRef a, CFStringRef b, CFOptionFlags options) {
  const icu::UnicodeString left = ReadOnly(a);
  const icu::UnicodeString right = ReadOnly(b);
  const std::int32_t order = options & kCFCompareCaseInsensitive
                                 ? int{left.caseCompare(right, U_COMPARE_CODE_POINT_ORDER)}
                                 : int{left.compareCodePointOrder(right)};
  return order < 0 ? kCFCompareLessThan : order > 0 ? kCFCompareGreaterThan : kCFCompareEqualTo;
}

Boolean CFStringHasSuffix(CFStringRef string, CFStringRef suffix) {
  return string && quillmere::UnitsOf(string).ends_with(quillmere::UnitsOf(suffix)) ? 1 : 0;
}

Boolean CFStringHasPrefix(CFStringRef string, CFStringRef prefix) {
  return string && quillmere::UnitsOf(string).starts_with(quillmere::UnitsOf(prefix)) ? 1 : 0;
}

CFRange CFStringGetRangeOfComposedCharactersAtIndex(CFStringRef string, CFIndex index) {
  const CFIndex length = CFStringGetLength(string);
  if (index < 0 || index >= length) return {std::clamp<CFIndex>(index, 0, length), 0};
  UErrorCode error = U_ZERO_ERROR;
  const std::unique_ptr<icu::BreakIterator> breaks(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
  if (U_FAILURE(error)) return {index, 1};
  const icu::UnicodeString text = ReadOnly(string);
  breaks->setText(text);
  const auto end = static_cast<CFIndex>(breaks->following(static_cast<std::int32_t>(index)));
  const auto start = static_cast<CFIndex>(breaks->previous());
  return {start, end - start};
}

SInt32 CFStringGetIntValue(CFStringRef string) {
  const long long value = std::strtoll(quillmere::ToUtf8(string).c_str(), nullptr, 10);
  return static_cast<SInt32>(std::clamp<long long>(value, std::numeric_limits<SInt32>::min(),
                                                   std::numeric_limits<SInt32>::max()));
}

double CFStringGetDoubleValue(CFStringRef string) {
  return quillmere::ParseLeadingDouble(quillmere::ToUtf8(string));
}

void CFStringAppend(CFMutableStringRef string, CFStringRef appended) {
  if (std::u16string* text = Changeable(string))
    text->append(std::u16string(quillmere::UnitsOf(appended)));
}

void CFStringAppendCString(CFMutableStringRef string, const char* text, CFStringEncoding encoding) {
  const quillmere::Owned<CFStringRef> appended(
      CFStringCreateWithCString(kCFAllocatorDefault, text, encoding));
  CFStringAppend(string, appended.get());
}

void CFStringAppendCharacters(CFMutableStringRef string, const UniChar* characters, CFIndex count) {
  std::u16string* text = Changeable(string);
  if (text && characters && count > 0) text->append(characters, static_cast<std::size_t>(count));
}

void CFStringInsert(CFMutableStringRef string, CFIndex index, CFStringRef inserted) {
  std::u16string* text = Changeable(string);
  if (!text) return;
  const CFIndex at = std::clamp<CFIndex>(index, 0, std::ssize(*text));
  text->insert(static_cast<std::size_t>(at), std::u16string(quillmere::UnitsOf(inserted)));
}

void CFStringDelete(CFMutableStringRef string, CFRange range) {
  std::u16string* text = Changeable(string);
  if (!text) return;
  const CFRange cut = CutToString(string, range);
  text->erase(static_cast<std::size_t>(cut.location), static_cast<std::size_t>(cut.length));
}

CFStringRef CFSTR(const char* ascii) {
  static std::mutex mutex;
  static auto* constants = new std::map<std::string, CFStringRef, std::less<>>;
  const std::lock_guard lock(mutex);
  const auto found = constants->find(std::string_view(ascii));
  if (found != constants->end()) return found->second;
  return constants->emplace(ascii, quillmere::CreateFromUtf8(ascii)).first->second;
}

namespace quillmere {

std::string ToUtf8(CFStringRef string) {
  std::string text;
  ReadOnly(string).toUTF8String(text);
  return text;
}

CFStringRef CreateFromUtf8(std::string_view text) {
  const icu::UnicodeString units =
      icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
  return Make({units.getBuffer(), static_cast<std::size_t>(units.length())});
}

std::u16string_view UnitsOf(CFStringRef string) {
  return string ? std::u16string_view(string->units) : std::u16string_view();
}

CFStringRef AsString(CFTypeRef object) {
  return dynamic_cast<CFStringRef>(ObjectOf(object));
}

}  // namespace quillmere
