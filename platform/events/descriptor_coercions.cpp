// The coercions that every process has.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "aliases.h"
#include "descriptor_data.h"
#include "file_references.h"
#include "text_coercions.h"

namespace quillmere::events {
namespace {

using Number = std::variant<SInt64, double>;

std::string_view TextOf(const std::vector<UInt8>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

OSErr CreateText(OSType type, std::string_view text, AEDesc* to) {
  return AECreateDesc(type, text.data(), static_cast<Size>(text.size()), to);
}

// --- Files ---

std::string UnescapedPath(std::string_view text) {
  constexpr std::string_view kScheme = "file://";
  if (text.substr(0, kScheme.size()) != kScheme) return std::string(text);
  text.remove_prefix(kScheme.size());
  text.remove_prefix(std::min(text.find('/'), text.size()));  // the host
  std::string path;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto digit = [](char c) -> int {
      if (c >= '0' && c <= '9') return c - '0';
      const int letter = (c | 0x20) - 'a';
      return letter >= 0 && letter < 6 ? letter + 10 : -1;
    };
    if (text[i] == '%' && i + 2 < text.size() && digit(text[i + 1]) >= 0 &&
        digit(text[i + 2]) >= 0) {
      path += static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2]));
      i += 2;
    } else {
      path += text[i];
    }
  }
  return path;
}

bool IsFile(OSType type) {
  return type == typeFSRef || type == typeFileURL || type == typeAlias;
}

OSErr ReferenceOfFile(const AEDesc& from, FSRef* reference) {
  const std::vector<UInt8>& bytes = from.dataHandle->bytes;
  if (from.descriptorType == typeFileURL) {
    return files::ReferenceOf(UnescapedPath(TextOf(bytes)), reference) == noErr ? noErr
                                                                                : errAECoercionFail;
  }
  if (from.descriptorType == typeFSRef) {
    if (bytes.size() != sizeof *reference) return errAECoercionFail;
    std::memcpy(reference, bytes.data(), sizeof *reference);
    return noErr;
  }
  Handle alias = nullptr;
  OSErr status = PtrToHand(bytes.data(), &alias, static_cast<Size>(bytes.size()));
  if (status != noErr) return status;
  Boolean was_changed = 0;
  status = FSResolveAlias(nullptr, alias, reference, &was_changed);
  DisposeHandle(alias);
  return status;
}

OSErr CoerceFile(const AEDesc& from, OSType type, AEDesc* to) {
  FSRef reference{};
  OSErr status = ReferenceOfFile(from, &reference);
  if (status != noErr) return status;
  if (type == typeFSRef) return AECreateDesc(type, &reference, sizeof reference, to);
  if (type == typeFileURL) {
    std::filesystem::path path;
    if (files::PathOf(reference, &path) != noErr) return errAECoercionFail;
    return CreateText(type, path.native(), to);
  }
  AliasHandle alias = nullptr;
  status = FSNewAlias(nullptr, &reference, &alias);
  if (status != noErr) return errAECoercionFail;
  status = AECreateDesc(type, *alias, GetHandleSize(alias), to);
  DisposeHandle(alias);
  return status;
}

// --- Numbers ---

bool IsNumber(OSType type) {
  constexpr OSType kTypes[] = {typeSInt16,
                               typeSInt32,
                               typeUInt32,
                               typeSInt64,
                               typeBoolean,
                               typeTrue,
                               typeFalse,
                               typeIEEE32BitFloatingPoint,
                               typeIEEE64BitFloatingPoint};
  return std::ranges::find(kTypes, type) != std::end(kTypes);
}

template <class Stored, class Wide>
std::optional<Number> Read(const std::vector<UInt8>& bytes) {
  Stored value{};
  if (bytes.size() != sizeof value) return std::nullopt;
  std::memcpy(&value, bytes.data(), sizeof value);
  return static_cast<Wide>(value);
}

std::optional<Number> NumberOfData(OSType type, const std::vector<UInt8>& bytes) {
  switch (type) {
    case typeSInt16:
      return Read<SInt16, SInt64>(bytes);
    case typeSInt32:
      return Read<SInt32, SInt64>(bytes);
    case typeUInt32:
      return Read<UInt32, SInt64>(bytes);
    case typeSInt64:
      return Read<SInt64, SInt64>(bytes);
    case typeIEEE32BitFloatingPoint:
      return Read<float, double>(bytes);
    case typeIEEE64BitFloatingPoint:
      return Read<double, double>(bytes);
    case typeBoolean:
      return bytes.size() == 1 ? std::optional<Number>(SInt64{bytes[0] != 0}) : std::nullopt;
    case typeTrue:
      return SInt64{1};
    case typeFalse:
      return SInt64{0};
    default:
      return std::nullopt;
  }
}

/// The number that a text consists of, blanks around it aside.
std::optional<Number> NumberOfText(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  text.remove_suffix(text.size() - (text.find_last_not_of(kBlanks) + 1));
  if (text == "true") return SInt64{1};
  if (text == "false") return SInt64{0};
  const char* const end = text.data() + text.size();
  SInt64 whole = 0;
  if (const auto read = std::from_chars(text.data(), end, whole);
      read.ec == std::errc{} && read.ptr == end) {
    return whole;
  }
  double real = 0;
  if (const auto read = std::from_chars(text.data(), end, real);
      read.ec == std::errc{} && read.ptr == end && std::isfinite(real)) {
    return real;
  }
  return std::nullopt;
}

/// The number to the nearest whole one; none if it does not fit.
std::optional<SInt64> WholeOf(const Number& number) {
  if (const auto* whole = std::get_if<SInt64>(&number)) return *whole;
  const double rounded = std::nearbyint(std::get<double>(number));
  constexpr double kTwoTo63 = 9223372036854775808.0;
  if (!(rounded >= -kTwoTo63 && rounded < kTwoTo63)) return std::nullopt;
  return static_cast<SInt64>(rounded);
}

template <class Stored>
OSErr CreateWhole(const Number& number, OSType type, AEDesc* to) {
  const std::optional<SInt64> whole = WholeOf(number);
  if (!whole || *whole < SInt64{std::numeric_limits<Stored>::min()} ||
      *whole > SInt64{std::numeric_limits<Stored>::max()}) {
    return errAECoercionFail;
  }
  const auto stored = static_cast<Stored>(*whole);
  return AECreateDesc(type, &stored, sizeof stored, to);
}

OSErr CreateTruth(const Number& number, OSType type, AEDesc* to) {
  const std::optional<SInt64> whole = WholeOf(number);
  if (!whole || *whole < 0 || *whole > 1) return errAECoercionFail;
  const auto stored = static_cast<UInt8>(*whole);
  if (type == typeBoolean) return AECreateDesc(type, &stored, 1, to);
  if ((type == typeTrue) != (stored == 1)) return errAECoercionFail;
  return AECreateDesc(type, nullptr, 0, to);
}

OSErr CreateNumber(const Number& number, OSType type, AEDesc* to) {
  const double real = std::visit([](auto value) { return static_cast<double>(value); }, number);
  const auto single = static_cast<float>(real);
  switch (type) {
    case typeSInt16:
      return CreateWhole<SInt16>(number, type, to);
    case typeSInt32:
      return CreateWhole<SInt32>(number, type, to);
    case typeUInt32:
      return CreateWhole<UInt32>(number, type, to);
    case typeSInt64:
      return CreateWhole<SInt64>(number, type, to);
    case typeIEEE32BitFloatingPoint:
      if (std::isfinite(real) && !std::isfinite(single)) return errAECoercionFail;
      return AECreateDesc(type, &single, sizeof single, to);
    case typeIEEE64BitFloatingPoint:
      return AECreateDesc(type, &real, sizeof real, to);
    default:
      return CreateTruth(number, type, to);
  }
}

std::string TextOfNumber(const AEDesc& from, const Number& number) {
  const OSType type = from.descriptorType;
  if (type == typeBoolean || type == typeTrue || type == typeFalse) {
    return std::get<SInt64>(number) != 0 ? "true" : "false";
  }
  char text[64];
  const auto written = std::visit(
      [&text](auto value) { return std::to_chars(text, std::end(text), value); }, number);
  return {text, written.ptr};
}

OSErr CoerceNumberOrText(const AEDesc& from, OSType type, AEDesc* to) {
  const std::vector<UInt8>& bytes = from.dataHandle->bytes;
  std::vector<UInt8> text;
  if (CoerceText(from.descriptorType, bytes, type, &text)) {
    return CreateText(type, TextOf(text), to);
  }
  if (const auto number = NumberOfData(from.descriptorType, bytes)) {
    if (IsNumber(type)) return CreateNumber(*number, type, to);
    const std::string decimal = TextOfNumber(from, *number);
    const auto* const digits = reinterpret_cast<const UInt8*>(decimal.data());
    if (type == typeUTF8Text) return CreateText(type, decimal, to);
    if (CoerceText(typeUTF8Text, {digits, decimal.size()}, type, &text)) {
      return CreateText(type, TextOf(text), to);
    }
    return errAECoercionFail;
  }
  if (!IsNumber(type)) return errAECoercionFail;
  if (from.descriptorType == typeUTF8Text) {
    text = bytes;
  } else if (!CoerceText(from.descriptorType, bytes, typeUTF8Text, &text)) {
    return errAECoercionFail;
  }
  const auto number = NumberOfText(TextOf(text));
  return number ? CreateNumber(*number, type, to) : errAECoercionFail;
}

// --- Lists and records ---

bool IsCode(OSType type) {
  return type == typeType || type == typeEnumerated;
}

/// A copy under another type.
OSErr Retype(const AEDesc& from, OSType type, AEDesc* to) {
  const OSErr status = AEDuplicateDesc(&from, to);
  if (status == noErr) to->descriptorType = type;
  return status;
}

OSErr CoerceRecord(const AEDesc& from, OSType type, AEDesc* to) {
  if (type != typeAEList) {
    return IsNumber(type) || IsFile(type) || IsCode(type) || IsText(type) || type == typeNull
               ? errAECoercionFail
               : Retype(from, type, to);
  }
  OwnedDescriptor list;
  OSErr status = AECreateList(list.get());
  for (const DescriptorEntry& entry : from.dataHandle->items) {
    if (status == noErr) status = AEPutDesc(list.get(), 0, entry.value.get());
  }
  if (status == noErr) *to = list.release();
  return status;
}

OSErr WrapInList(const AEDesc& from, AEDesc* to) {
  OwnedDescriptor list;
  OSErr status = AECreateList(list.get());
  if (status == noErr) status = AEPutDesc(list.get(), 0, &from);
  if (status == noErr) *to = list.release();
  return status;
}

}  // namespace

OSErr CoerceBuiltIn(const AEDesc& from, OSType type, AEDesc* to) {
  if (from.dataHandle == nullptr || from.descriptorType == typeNull) return errAECoercionFail;
  if (IsRecord(&from)) return CoerceRecord(from, type, to);
  if (IsList(&from)) {
    const std::vector<DescriptorEntry>& items = from.dataHandle->items;
    return items.size() == 1 ? AECoerceDesc(items[0].value.get(), type, to) : errAECoercionFail;
  }
  if (type == typeAEList) return WrapInList(from, to);
  if (IsFile(from.descriptorType) && IsFile(type)) return CoerceFile(from, type, to);
  if (IsCode(from.descriptorType) && IsCode(type)) return Retype(from, type, to);
  return CoerceNumberOrText(from, type, to);
}

}  // namespace quillmere::events
