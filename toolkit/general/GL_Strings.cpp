#include "GL_Strings.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "GL_Errors.h"
#include "GL_Memory.h"
#include "GL_deprecated.h"
#include "classic_strings_private.h"

namespace {

using quillmere::StoreText;
using quillmere::ViewOf;

SInt64 Length(const char* string) {
  return static_cast<SInt64>(ViewOf(string).size());
}

/// Stores a text if it stays within the limit of a classic string.
void StoreWithin255(const std::string& text, char* string) {
  if (std::ssize(text) <= kLongestCString) StoreText(text, string);
}

void Append(char* string, const std::string& text) {
  if (string != nullptr) StoreWithin255(std::string(string) + text, string);
}

void CutTo(char* string, SInt64 length) {
  if (length < Length(string)) string[std::max<SInt64>(length, 0)] = 0;
}

SInt32 ClampTo32(long long value) {
  return static_cast<SInt32>(std::clamp<long long>(value, std::numeric_limits<SInt32>::min(),
                                                   std::numeric_limits<SInt32>::max()));
}

bool IsEach(const char* string, Boolean (*test)(char)) {
  return std::ranges::all_of(ViewOf(string), [test](char c) { return test(c) != 0; });
}

Boolean IsHexDigit(char c) {
  return GL_IsDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

Boolean IsBinaryDigit(char c) {
  return c == '0' || c == '1';
}

/// Where the index of a name begins, behind its space: the result is GL_GetNameEndIndex's, and the
/// string's end if there is nothing.
SInt32 FindNameIndex(std::string_view name, std::size_t* start) {
  *start = name.size();
  if (name.size() < 2) return noErr;
  const std::size_t space = name.rfind(' ');
  if (space == name.npos || space < 2) return GL_NoNameEndErr;
  const std::string_view index = name.substr(space + 1);
  if (!std::ranges::all_of(index, [](char c) { return GL_IsNumericCharacter(c) != 0; })) {
    return GL_NoNameIndexErr;
  }
  *start = space + 1;
  return noErr;
}

}  // namespace

void GL_CopyStringMP(const char* source, char* destination) {
  if (destination != nullptr) StoreText(ViewOf(source), destination);
}

Boolean GL_EqualCStr(const char* a, const char* b) {
  return ViewOf(a) == ViewOf(b);
}

Boolean GL_EqualCStringMP(const char* a, const char* b, SInt16 last_index) {
  const auto count = static_cast<std::size_t>(std::max(last_index + 1, 0));
  return ViewOf(a).substr(0, count) == ViewOf(b).substr(0, count);
}

void GL_RemoveStringEnd(char* string, SInt16 count) {
  if (string != nullptr && count > 0) CutTo(string, Length(string) - count);
}

void GL_GetStringEnd(const char* string, SInt16 count, char* out) {
  if (out == nullptr) return;
  const std::string_view text = ViewOf(string);
  const auto kept = std::min(static_cast<std::size_t>(std::max<SInt16>(count, 0)), text.size());
  StoreText(text.substr(text.size() - kept), out);
}

void GL_RemoveCharacterFromString(char* string, SInt16 position) {
  const SInt64 length = Length(string);
  if (position < 1 || position > length) return;
  std::memmove(string + position - 1, string + position,
               static_cast<std::size_t>(length - position) + 1);
}

void GL_PutInParentheses(char* string) {
  if (string != nullptr) StoreWithin255("\"" + std::string(string) + "\"", string);
}

void GL_AppendCharacter31(char* string, char character) {
  const char postfix[2] = {character, 0};
  GL_AddPostfix(string, postfix, 31, 0x4000);
}

void GL_SafeAppendString(char* string, const char* text, SInt16 limit) {
  if (string == nullptr || limit > kLongestCString) return;
  const std::string_view appended = ViewOf(text);
  const SInt64 kept = limit - std::ssize(appended);
  if (kept < 0) return;
  const SInt64 at = std::min(kept, Length(string));
  StoreText(appended, string + at);
}

void GL_PrependString(char* string, const char* text) {
  if (string == nullptr) return;
  const SInt64 room = kLongestCString - Length(string);
  if (room <= 0) return;
  StoreText(std::string(ViewOf(text).substr(0, static_cast<std::size_t>(room))) + string, string);
}

void GL_AppendPeriodNumber(char* string, SInt32 number) {
  Append(string, "." + std::to_string(number));
}

void GL_AppendSpaceNumber(char* string, SInt32 number) {
  Append(string, " " + std::to_string(number));
}

void GL_AddNumToStr(char* string, SInt32 number) {
  Append(string, std::to_string(number));
}

void GL_SafeAppendSpaceNumberTruncEnd(char* string, SInt32 number, SInt16 limit) {
  if (string == nullptr) return;
  CutTo(string, limit - Length(string) - 1);
  GL_AppendSpaceNumber(string, number);
}

void GL_AddPostfix(char* string, const char* postfix, SInt16 limit, SInt16 mode) {
  const std::string_view appended = ViewOf(postfix);
  if (string == nullptr || std::ssize(appended) > limit - 3 || limit > kLongestCString) return;
  const SInt64 room = limit - std::ssize(appended);
  if (Length(string) > room) {
    if (mode == 0) {
      string[room - 1] = kEllipsisCharacter;
      string[room] = 0;
    } else {
      // A string far beyond the limits is first brought into the range of the count.
      CutTo(string, std::numeric_limits<SInt16>::max());
      GL_TruncStringMiddle(string, 3, static_cast<SInt16>(Length(string) - room));
    }
  }
  StoreText(appended, string + Length(string));
}

void GL_TruncStringMiddle(char* string, SInt16 shortest_length, SInt16 count) {
  if (shortest_length < 3) return;
  const SInt64 length = Length(string);
  const SInt64 removed = std::min<SInt64>(count, length - shortest_length);
  if (removed < 1) return;
  const SInt64 kept = length - removed;
  const SInt64 front = kept / 2;
  const SInt64 back = kept - front - 1;
  string[front] = kEllipsisCharacter;
  std::memmove(string + front + 1, string + length - back, static_cast<std::size_t>(back) + 1);
}

void GL_TruncStringMiddleByOneChar(char* string, char ellipsis) {
  const SInt64 length = Length(string);
  if (length < 4) return;
  const auto* const found = static_cast<char*>(
      std::memchr(string, static_cast<unsigned char>(ellipsis), static_cast<std::size_t>(length)));
  if (found == nullptr) {
    string[length / 2] = ellipsis;
    return;
  }
  const SInt64 index = found - string;
  const SInt64 removed = index <= (length - 1) / 2 ? index + 1 : index - 1;
  std::memmove(string + removed, string + removed + 1, static_cast<std::size_t>(length - removed));
}

SInt32 GL_GetNameEndIndex(const char* string, char* text, SInt32* number) {
  std::size_t start = 0;
  const SInt32 status = FindNameIndex(ViewOf(string), &start);
  const std::string index(ViewOf(string).substr(start));
  const bool has_index = !status && Length(string) >= 2;
  if (text != nullptr) StoreText(has_index ? std::string_view(index) : std::string_view(), text);
  if (number != nullptr) {
    *number = has_index ? ClampTo32(std::strtoll(index.c_str(), nullptr, 10)) : 0;
  }
  return status;
}

SInt32 GL_RemoveNameEndIndex(char* string) {
  std::size_t start = 0;
  const SInt32 status = FindNameIndex(ViewOf(string), &start);
  if (!status && Length(string) >= 2) string[start - 1] = 0;
  return status;
}

SInt32 GL_ChangeNameEndIndex(char* string, SInt32 delta) {
  if (string == nullptr) return paramErr;
  std::size_t start = 0;
  const SInt32 status = FindNameIndex(string, &start);
  if (status) return status;
  SInt32 number = 0;
  GL_GetNameEndIndex(string, nullptr, &number);
  const std::string changed =
      std::string(string, start) + std::to_string(SInt64{number} + SInt64{delta});
  if (std::ssize(changed) > kLongestNameCString) return GL_StringWouldGrowTooLongErr;
  StoreText(changed, string);
  return noErr;
}

void GL_GetNameEndString(const char* string, char* out) {
  if (out == nullptr) return;
  const std::string_view name = ViewOf(string);
  const std::size_t space = name.rfind(' ');
  const bool has_end = space != name.npos && space >= 1;
  StoreText(has_end ? name.substr(space, 15) : std::string_view(), out);
}

Boolean GL_IsStringEmpty(const char* string) {
  return ViewOf(string).empty();
}

Boolean GL_IsInvisibleAsciiCharacter(char character) {
  return !(character >= '!' && character <= '~');
}

Boolean GL_IsDigit(char character) {
  return character >= '0' && character <= '9';
}

Boolean GL_IsLetter(char character) {
  return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

Boolean GL_IsWordDelimiter(char character) {
  return !GL_IsLetter(character) && !GL_IsDigit(character);
}

Boolean GL_IsNumericCharacter(char character) {
  return GL_IsDigit(character) || character == '+' || character == '-';
}

Boolean GL_IsNumericCharacterFloat(char character) {
  return GL_IsNumericCharacter(character) || character == '.';
}

Boolean GL_CStringIsPureHex(const char* string) {
  return IsEach(string, IsHexDigit);
}

Boolean GL_CStringIsPureBinary(const char* string) {
  return IsEach(string, IsBinaryDigit);
}

Boolean GL_AnyNonDigitInTextString(const char* string) {
  return !IsEach(string, GL_IsNumericCharacter);
}

void GL_ReduceTextToLowerASCII(char* text, SInt32 count) {
  if (text == nullptr) return;
  for (SInt32 i = 0; i < count; ++i) {
    text[i] = static_cast<char>(text[i] & 0x7F);
  }
}

SInt32 GL_CountCharParamsInText(const char* text, SInt32 start, SInt32 end, ScriptCode script) {
  if (text == nullptr) return 0;
  UInt8 is_lead_byte[256];
  GLD_FillParseTable(is_lead_byte, script);
  SInt32 count = 0;
  for (SInt64 at = start; at < end; ++count) {
    at += is_lead_byte[static_cast<UInt8>(text[at])] ? 2 : 1;
  }
  return count;
}

const char* GL_FindNextLine(const char* position, const char* end) {
  if (position == nullptr || position >= end) return end;
  const void* const found = std::memchr(position, '\r', static_cast<std::size_t>(end - position));
  return found ? static_cast<const char*>(found) + 1 : end;
}

char* GL_TextToCStr(const void* text, SInt32 count) {
  void* block = nullptr;
  if (count < 0 || (text == nullptr && count > 0) || GL_NewPtr(Size{count} + 1, &block)) {
    return nullptr;
  }
  auto* const string = static_cast<char*>(block);
  StoreText({static_cast<const char*>(text), static_cast<std::size_t>(count)}, string);
  return string;
}

void GL_TextToCStr255(const void* text, SInt32 count, char* out) {
  if (out == nullptr) return;
  const SInt32 kept = text ? std::clamp(count, 0, kLongestCString) : 0;
  StoreText({static_cast<const char*>(text), static_cast<std::size_t>(kept)}, out);
}

OSType GL_CStrToOSType(const char* string) {
  const std::string_view text = ViewOf(string).substr(0, 4);
  OSType code = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    code = (code << 8) | (i < text.size() ? static_cast<UInt8>(text[i]) : 0U);
  }
  return code;
}

void GL_OSTypeToCString(OSType code, char* out) {
  if (out == nullptr) return;
  for (int i = 0; i < 4; ++i) {
    out[i] = static_cast<char>((code >> (24 - 8 * i)) & 0xFF);
  }
  out[4] = 0;
}

void GL_OSTypeToCStringWithQuo(OSType code, char* out) {
  if (out == nullptr) return;
  char text[5];
  GL_OSTypeToCString(code, text);
  const std::string_view all(text, 4);
  const auto* const end = std::ranges::find_if(all, [](char c) { return c < ' ' || c > '~'; });
  StoreText("'" + std::string(all.begin(), end) + "'", out);
}

void GL_SPrintOSTypeWithName(char* out, OSType code, const char* name) {
  if (out == nullptr) return;
  char quoted[7];
  GL_OSTypeToCStringWithQuo(code, quoted);
  const std::string end = std::string(": ") + quoted;
  StoreText(std::string(ViewOf(name).substr(0, kLongestCString - end.size())) + end, out);
}

void GL_PrintOSTypeWithName(OSType code, const char* name) {
  char quoted[7];
  GL_OSTypeToCStringWithQuo(code, quoted);
  std::printf("%s: %s\n", name ? name : "", quoted);
}

Boolean GL_IsOSTypeInList(const OSType* list, SInt32 count, OSType code) {
  return list != nullptr && count > 0 && std::find(list, list + count, code) != list + count;
}
