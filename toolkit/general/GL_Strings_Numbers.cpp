#include "GL_Strings_Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "GL_Math.h"
#include "GL_Memory.h"
#include "GL_Strings.h"
#include "classic_strings_private.h"

namespace {

using quillmere::ViewOf;

constexpr std::string_view kHexDigits = "0123456789ABCDEF";
constexpr int kWideDigits = 20;
using DigitArray = std::array<SInt8, kWideDigits>;

/// Stores a text, cut to the limit of a classic string.
void Store(std::string_view text, char* out) {
  if (out == nullptr) return;
  quillmere::StoreText(text.substr(0, kLongestCString), out);
}

/// "%.*f", whatever the locale.
std::string Decimal(double value, int decimals) {
  char text[400];  // 309 digits of the largest double, a sign, a point and the decimals
  const std::to_chars_result result =
      std::to_chars(text, std::end(text), value, std::chars_format::fixed, decimals);
  return result.ec == std::errc() ? std::string(text, result.ptr) : std::string();
}

/// The number at the start of a text behind white space, as atol reads it, at the limits of 64 bits
/// when it is outside.
SInt64 LeadingInteger(std::string_view text) {
  const std::size_t start = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
  text.remove_prefix(start);
  const bool negative = text.starts_with('-');
  if (text.starts_with('+') || negative) text.remove_prefix(1);
  if (text.empty() || !GL_IsDigit(text[0])) return 0;
  UInt64 magnitude = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), magnitude);
  constexpr UInt64 kMost = std::numeric_limits<SInt64>::max();
  if (result.ec != std::errc() || magnitude > kMost) {
    return negative ? std::numeric_limits<SInt64>::min() : std::numeric_limits<SInt64>::max();
  }
  return negative ? -static_cast<SInt64>(magnitude) : static_cast<SInt64>(magnitude);
}

/// The number at the start of a text, as atof reads decimal notation.
double LeadingDouble(std::string_view text) {
  const std::size_t start = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
  text.remove_prefix(start);
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

/// A number cut to 64 bits, without the undefined conversions.
SInt64 ToInteger(double value) {
  constexpr double kLimit = 0x1p53;
  if (std::isnan(value)) return 0;
  return static_cast<SInt64>(std::clamp(value, -kLimit, kLimit));
}

/// A time in hours, minutes and whole seconds, and what is left.
struct TimeParts {
  SInt64 hours;
  SInt64 minutes;
  SInt64 seconds;
  double fraction;
};

TimeParts Split(double time) {
  const double whole = std::floor(time);
  const SInt64 seconds = ToInteger(whole);
  const double fraction = std::isfinite(time) ? time - whole : 0;
  return {seconds / 3600, seconds % 3600 / 60, seconds % 60, fraction};
}

std::string HoursAndMinutes(const TimeParts& time) {
  return std::to_string(time.hours) + "h," + std::to_string(time.minutes) + "m,";
}

/// Filters what was typed into a number field; `allowed` tells the characters that stay.
bool FilterNumberField(std::string* text, Boolean (*allowed)(char)) {
  constexpr std::size_t kLongestField = 15;
  constexpr std::size_t kMostUnsigned = 10;
  constexpr std::size_t kMostSigned = 11;
  std::string kept;
  for (std::size_t i = 0; i < std::min(text->size(), kLongestField); ++i) {
    const char c = (*text)[i];
    const bool is_sign = c == '+' || c == '-';
    if (is_sign ? i == 0 : allowed(c) != 0) kept += c;
  }
  const bool has_sign = kept.starts_with('+') || kept.starts_with('-');
  if (!has_sign && kept.size() > kMostUnsigned) kept.resize(kMostUnsigned);
  const bool changed = kept != *text || (has_sign && kept.size() > kMostSigned);
  *text = kept;
  return changed;
}

SInt64 Negated(SInt64 value) {
  return static_cast<SInt64>(~static_cast<UInt64>(value) + 1);
}

/// Stores a text in the place of a field's; true if it is another one.
Boolean Replace(char* text, const std::string& replacement) {
  const bool changed = replacement != text;
  Store(replacement, text);
  return changed;
}

}  // namespace

void GL_NumToCString(SInt32 number, char* out) {
  Store(std::to_string(number), out);
}

void GL_FloatToStr(double number, char* out) {
  GL_FloatRoundToStr(number, out, 2);
}

void GL_FloatRoundToStr(double value, char* out, SInt16 decimals) {
  Store(Decimal(value, std::clamp<int>(decimals, 0, 9)), out);
}

double GL_RoundFloat(double value, SInt16 decimals) {
  return LeadingDouble(Decimal(value, std::clamp<int>(decimals, 0, 9)));
}

void GL_FixedToPercentageAsText(Fixed value, char* out) {
  const SInt64 percent = (SInt64{value} * 100 + 0x8000) >> 16;
  Store(std::to_string(percent) + "%", out);
}

void GL_FixedToString(Fixed value, SInt16 decimals, char* out) {
  const SInt64 magnitude = std::abs(SInt64{value});
  std::string text = std::to_string(magnitude >> 16) + ".";
  if (value < 0 && magnitude >= 0x10000) text.insert(0, "-");
  SInt64 fraction = magnitude & 0xFFFF;
  for (int i = 0; i < std::min<int>(decimals, 200); ++i) {
    fraction *= 10;
    text += static_cast<char>('0' + (fraction >> 16));
    fraction &= 0xFFFF;
  }
  Store(text, out);
}

void GL_NumToHex(UInt32 value, char* out) {
  std::string text = "0x";
  for (int shift = 28; shift >= 0; shift -= 4) {
    text += kHexDigits[(value >> shift) & 0xF];
  }
  Store(text, out);
}

UInt32 GL_HexToNum(const char* string) {
  const std::string_view text = ViewOf(string);
  UInt32 value = 0;
  for (std::size_t i = 2; i < text.size(); ++i) {
    const std::size_t digit = kHexDigits.find(text[i]);
    if (digit == kHexDigits.npos) return 0;
    value = (value << 4) | static_cast<UInt32>(digit);
  }
  return value;
}

char* GL_DataToHexCStr(const void* data, SInt32 count) {
  void* block = nullptr;
  if (count < 0 || (data == nullptr && count > 0)) return nullptr;
  if (GL_NewPtr(2 * Size{count} + 3, &block)) return nullptr;
  auto* const string = static_cast<char*>(block);
  const auto* const bytes = static_cast<const UInt8*>(data);
  char* at = string;
  *at++ = '0';
  *at++ = 'X';
  for (SInt32 i = 0; i < count; ++i) {
    *at++ = kHexDigits[bytes[i] >> 4];
    *at++ = kHexDigits[bytes[i] & 0xF];
  }
  *at = 0;
  return string;
}

void GL_NumToVersion(UInt32 value, char* out) {
  std::string text;
  if ((value >> 12) & 0xF) text += kHexDigits[(value >> 12) & 0xF];
  text += kHexDigits[(value >> 8) & 0xF];
  text += '.';
  text += kHexDigits[(value >> 4) & 0xF];
  text += '.';
  text += kHexDigits[value & 0xF];
  Store(text, out);
}

void GL_NumToVersion2(SInt32 major, SInt32 minor, SInt32 patch, char* out) {
  Store(std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch), out);
}

void GL_NumBytesToStr(SInt64 count, char* out) {
  struct Unit {
    SInt64 limit;  ///< counts up to it are told in this unit
    float factor;
    const char* name;
  };
  static constexpr Unit kUnits[] = {{0xFFFFF, 0x1p-10F, " kB"},
                                    {0x3FFFFFFF, 0x1p-20F, " MB"},
                                    {(SInt64{1} << 40) - 1, 0x1p-30F, " GB"},
                                    {std::numeric_limits<SInt64>::max(), 0x1p-40F, " TB"}};
  if (count <= 0x3FF) return Store(std::to_string(count) + " bytes", out);
  const auto* const unit = std::ranges::find_if(
      kUnits, [count](const Unit& candidate) { return count <= candidate.limit; });
  const float quotient = static_cast<float>(count) * unit->factor;
  Store(Decimal(double{quotient}, 2) + unit->name, out);
}

void GL_WideNumToString(SInt64 value, char* out) {
  UInt64 magnitude = static_cast<UInt64>(value < 0 ? Negated(value) : value);
  DigitArray power{};
  DigitArray sum{};
  power.back() = 1;
  for (; magnitude != 0; magnitude >>= 1) {
    if (magnitude & 1) GL_AddDigitArrays(sum.data(), power.data(), kWideDigits);
    GL_MultiplyDigitArray(power.data(), kWideDigits, 2);
  }
  const auto* const first = std::ranges::find_if(sum, [](SInt8 digit) { return digit != 0; });
  std::string text = value < 0 ? "-" : "";
  for (const auto* digit = first; digit != sum.end(); ++digit) {
    text += static_cast<char>('0' + *digit);
  }
  Store(text, out);
}

void GL_TrueNumberStringToWide(const UInt8* digits, SInt64* value) {
  if (value == nullptr) return;
  *value = 0;
  if (digits == nullptr) return;
  const UInt8* const end = digits + 1 + digits[0];
  const auto is_digit = [](UInt8 c) { return c <= 9 || GL_IsDigit(static_cast<char>(c)); };
  if (!std::all_of(digits + 1, end, is_digit)) return;
  const UInt8* const first = std::find_if(digits + 1, end, [](UInt8 c) { return (c & 0xF) != 0; });
  DigitArray number{};
  if (end - first > kWideDigits) {
    number.fill(9);
  } else {
    std::transform(first, end, number.end() - (end - first),
                   [](UInt8 c) { return static_cast<SInt8>(c & 0xF); });
  }
  DigitArray power = {0, 9, 2, 2, 3, 3, 7, 2, 0, 3, 6, 8, 5, 4, 7, 7, 5, 8, 0, 8};
  UInt64 bits = 0;
  for (int bit = 63; bit >= 0; --bit) {
    if (GL_CompareDigitArrays(number.data(), power.data(), kWideDigits) >= 0) {
      bits |= UInt64{1} << bit;
      GL_SubtractDigitArrays(number.data(), power.data(), kWideDigits);
    }
    GL_DivideDigitArray(power.data(), kWideDigits, 2, nullptr);
  }
  *value = static_cast<SInt64>(bits);
}

void GL_StringToWideNum(const char* string, SInt64* value) {
  if (value == nullptr) return;
  const auto visible = [](char c) { return !GL_IsInvisibleAsciiCharacter(c); };
  std::string_view text = ViewOf(string);
  const auto trim_front = [&] {
    while (!text.empty() && !visible(text.front()))
      text.remove_prefix(1);
  };
  trim_front();
  while (!text.empty() && !visible(text.back()))
    text.remove_suffix(1);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  trim_front();
  while (text.size() > 1 && text.front() == '0')
    text.remove_prefix(1);
  std::array<UInt8, 256> digits{};
  if (std::ranges::all_of(text, [](char c) { return GL_IsDigit(c) != 0; })) {
    digits[0] = static_cast<UInt8>(std::min<std::size_t>(text.size(), kLongestCString));
    std::copy_n(text.begin(), digits[0], digits.begin() + 1);
  }
  GL_TrueNumberStringToWide(digits.data(), value);
  if (negative) *value = Negated(*value);
}

void GL_TimeInSecToTimeCodeStr1(double seconds, char* out, double frames_per_second) {
  const TimeParts time = Split(seconds);
  Store(std::to_string(time.hours) + ":" + std::to_string(time.minutes) + ":" +
            std::to_string(time.seconds) + ":" +
            std::to_string(ToInteger(frames_per_second * time.fraction)),
        out);
}

void GL_TimeInSecToTimeCodeStr1_Alt(double seconds, char* out, SInt32 frame_count) {
  const double rate = seconds > 0 ? frame_count / seconds + 0.5 : 0;
  GL_TimeInSecToTimeCodeStr1(seconds, out, static_cast<double>(ToInteger(rate)));
}

void GL_TimeInSecToTimeCodeStr2(double seconds, char* out) {
  const TimeParts time = Split(seconds);
  const double with_fraction = static_cast<double>(time.seconds) + time.fraction;
  Store(HoursAndMinutes(time) + Decimal(with_fraction, 2) + "s", out);
}

void GL_TimeInSecToTimeCodeStr3(double seconds, char* out) {
  const TimeParts time = Split(seconds);
  Store(HoursAndMinutes(time) + std::to_string(time.seconds) + "s", out);
}

SInt32 GL_TimeCodeStrToSec(const char* text, double* seconds, double frames_per_second) {
  if (seconds == nullptr) return paramErr;
  *seconds = 0;
  std::string_view rest = ViewOf(text);
  if (std::ranges::count(rest, ':') < 3) return paramErr;
  double parts[4] = {};
  for (double& part : parts) {
    part = static_cast<double>(LeadingInteger(rest));
    rest.remove_prefix(std::min(rest.find(':'), rest.size() - 1) + 1);
  }
  *seconds = parts[0] * 3600 + parts[1] * 60 + parts[2];
  if (frames_per_second != 0) *seconds += parts[3] / frames_per_second;
  return noErr;
}

void GL_EnforceEvenTextValue(char* text) {
  if (text == nullptr) return;
  const SInt64 number = LeadingInteger(text);
  Store(std::to_string(number - number % 2), text);
}

Boolean GL_RemoveAnyNonDigitInString(char* text) {
  if (text == nullptr) return 0;
  std::string field = text;
  const bool changed = FilterNumberField(&field, GL_IsDigit);
  Store(field, text);
  return changed;
}

Boolean GL_EnforceTextValueBounds(char* text, SInt32 low, SInt32 high) {
  if (text == nullptr) return 0;
  std::string field = text;
  FilterNumberField(&field, GL_IsDigit);
  const SInt64 number = std::min<SInt64>(std::max<SInt64>(LeadingInteger(field), low), high);
  return Replace(text, std::to_string(number));
}

Boolean GL_RemoveAnyNonDigitInFloatString(char* text) {
  constexpr std::size_t kLongestField = 15;
  if (text == nullptr) return 0;
  std::string field = text;
  bool changed = FilterNumberField(&field, GL_IsNumericCharacterFloat);
  if (field.starts_with('.') && field.size() < kLongestField) {
    field.insert(0, "0");
    changed = true;
  }
  if (field.ends_with('.') && field.size() < kLongestField) {
    field += '0';
    changed = true;
  }
  Store(field, text);
  return changed;
}

Boolean GL_EnforceTextFloatValueBounds(char* text, double low, double high) {
  if (text == nullptr) return 0;
  std::string field = text;
  FilterNumberField(&field, GL_IsNumericCharacterFloat);
  return Replace(text, Decimal(std::min(std::max(LeadingDouble(field), low), high), 2));
}
