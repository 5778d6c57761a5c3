/// Strings between their forms, cuts in the middle, and the parsers of numbers in text, on
/// arbitrary bytes. The first byte chooses limits; the rest is the text, as bytes and as UTF-16.
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "GL_Strings.h"
#include "GL_Strings_Numbers.h"
#include "GL_Strings_Unicode.h"
#include "GL_Strings_Words.h"

namespace {

using String = quillmere::Owned<CFStringRef>;
using MutableString = quillmere::Owned<CFMutableStringRef>;

constexpr CFStringEncoding kEncodings[] = {
    kTextEncodingMacRoman,      kTextEncodingMacJapanese, kTextEncodingMacChineseTrad,
    kTextEncodingMacKorean,     kTextEncodingMacArabic,   kTextEncodingMacHebrew,
    kTextEncodingMacDevanagari, kTextEncodingMacThai,     kTextEncodingMacChineseSimp,
    kTextEncodingMacIcelandic,  kTextEncodingUTF8,        kTextEncodingUnicode,
    kTextEncodingWindowsLatin1, kTextEncodingUTF16BE,     12345};

void Check(bool condition) {
  if (!condition) std::abort();
}

void Truncate(const std::u16string& units, SInt32 limit) {
  const String source(CFStringCreateWithCharacters(nullptr, units.data(), std::ssize(units)));
  const MutableString text(CFStringCreateMutableCopy(nullptr, 256, source.get()));
  GL_CFStrTruncMiddle(text.get(), limit);
  const CFIndex length = CFStringGetLength(text.get());
  if (std::ssize(units) <= limit) {
    Check(length == std::ssize(units));
  } else {
    Check(length <= std::max<CFIndex>(limit, 1));
  }
  GL_RemoveCFEndString(text.get(), limit, 3);
  GL_AppendCFStrBeforeSuffix(text.get(), source.get());
  GL_CFStrToOSType(source.get());
}

void Convert(const std::string& bytes, UInt8 choice) {
  const CFStringEncoding from = kEncodings[choice % std::size(kEncodings)];
  const CFStringEncoding to = kEncodings[choice / 16 % std::size(kEncodings)];
  for (const SInt32 size : {1, 2, 7, 64}) {
    std::vector<char> room(static_cast<std::size_t>(size), '#');
    GL_CStrToCStr(bytes.c_str(), from, room.data(), to, size);
  }
  const auto code = static_cast<SInt16>(choice % 64 - 8);
  const auto count = static_cast<SInt32>(bytes.size());
  const String text(GL_TextPtrToCFStr(bytes.data(), count, code, -128, -128));
  const String unmarked(GL_TextPtrToCFStr(bytes.data(), count, -128, -128, -128));
  Check(static_cast<bool>(unmarked));
  const String again(GL_TextPtrToCFStr(bytes.data(), count, -128, code, code));
  char* heap = nullptr;
  GL_CFStrToCStrNew(text.get(), to, &heap);
  Check(heap != nullptr);
  std::free(heap);
  HFSUniStr255 name;
  GL_CStrToHFSUniStr255(bytes.c_str(), &name);
  GL_AppendCStrToHFSUniStr255(&name, bytes.c_str());
  GL_HFSUniStr255TruncMiddle(&name, choice);
  CFStringRef extension = nullptr;
  Check(GL_GetExtensionFromFileName(&name, &extension) == 0);
  CFRelease(extension);
}

void Parse(const std::string& bytes, UInt8 choice) {
  SInt64 wide = 0;
  GL_StringToWideNum(bytes.c_str(), &wide);
  char decimal[24];
  GL_WideNumToString(wide, decimal);
  SInt64 back = 1;
  GL_StringToWideNum(decimal, &back);
  Check(back == wide);
  GL_HexToNum(bytes.c_str());
  double seconds = 0;
  GL_TimeCodeStrToSec(bytes.c_str(), &seconds, choice);
  char code[256];
  GL_TimeInSecToTimeCodeStr1(seconds, code, choice);
  GL_TimeInSecToTimeCodeStr2(seconds, code);
  double any = 0;
  std::memcpy(&any, bytes.data(), std::min(bytes.size(), sizeof any));
  GL_TimeInSecToTimeCodeStr1_Alt(any, code, choice);
  GL_FloatToStr(any, code);
  GL_RoundFloat(any, choice);
  std::vector<UInt8> counted(256);
  std::memcpy(counted.data(), bytes.data(), std::min<std::size_t>(bytes.size(), 256));
  GL_TrueNumberStringToWide(counted.data(), &wide);
}

/// A copy with just the room that a text field or a classic string has.
std::vector<char> Room(const std::string& bytes, std::size_t least) {
  std::vector<char> room(std::max(std::strlen(bytes.c_str()) + 1, least));
  std::strcpy(room.data(), bytes.c_str());
  return room;
}

void Edit(const std::string& bytes, UInt8 choice) {
  GL_RemoveAnyNonDigitInString(Room(bytes, 16).data());
  GL_RemoveAnyNonDigitInFloatString(Room(bytes, 16).data());
  GL_EnforceTextValueBounds(Room(bytes, 16).data(), -choice, choice);
  GL_EnforceTextFloatValueBounds(Room(bytes, 16).data(), -choice, choice);
  GL_EnforceEvenTextValue(Room(bytes, 24).data());
  const auto limit = static_cast<SInt16>(choice);
  GL_TruncStringMiddle(Room(bytes, 0).data(), limit, 9);
  GL_TruncStringMiddleByOneChar(Room(bytes, 0).data(), kEllipsisCharacter);
  for (const char* postfix : {"", "X", " copy"}) {
    GL_AddPostfix(Room(bytes, 256).data(), postfix, limit, 0);
    GL_AddPostfix(Room(bytes, 256).data(), postfix, limit, 1);
    GL_SafeAppendString(Room(bytes, 256).data(), postfix, limit);
  }
  GL_PrependString(Room(bytes, 256).data(), bytes.c_str());
  GL_ChangeNameEndIndex(Room(bytes, 64).data(), choice);
  GL_RemoveNameEndIndex(Room(bytes, 0).data());
  GL_InsertWordBehind(Room(bytes, 256).data(), bytes.substr(0, choice % 16).c_str(), "word");
  GL_CountCharParamsInText(bytes.data(), 0, static_cast<SInt32>(bytes.size()), limit);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 4096) return 0;
  const UInt8 choice = data[0];
  const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  std::u16string units(bytes.size() / 2, u'\0');
  std::memcpy(units.data(), bytes.data(), units.size() * 2);
  Truncate(units, choice - 2);
  Convert(bytes, choice);
  Parse(bytes, choice);
  Edit(bytes, choice);
  return 0;
}
