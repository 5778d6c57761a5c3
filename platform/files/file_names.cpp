#include "file_names.h"

#include <algorithm>
#include <cstddef>

namespace quillmere::files {
namespace {

constexpr UInt32 kNoCharacter = 0xFFFFFFFF;
constexpr UInt32 kEscape = 0xDC00;

/// The character that starts `bytes`, kNoCharacter if none does; `*length` is its bytes.
UInt32 FirstCharacter(std::string_view bytes, std::size_t* length) {
  const auto byte = [&](std::size_t i) { return static_cast<UInt8>(bytes[i]); };
  const UInt8 first = byte(0);
  *length = first < 0x80 ? 1U : first < 0xE0 ? 2U : first < 0xF0 ? 3U : 4U;
  if (first < 0x80) return first;
  if (first < 0xC2 || first > 0xF4 || bytes.size() < *length) return kNoCharacter;
  UInt32 character = first & (0x7FU >> *length);
  for (std::size_t i = 1; i < *length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return kNoCharacter;
    character = (character << 6) | (byte(i) & 0x3FU);
  }
  static constexpr UInt32 kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool is_surrogate = character >= 0xD800 && character < 0xE000;
  const bool is_valid = character >= kSmallest[*length] && character <= 0x10FFFF && !is_surrogate;
  return is_valid ? character : kNoCharacter;
}

void AppendUtf8(UInt32 character, std::string* bytes) {
  const auto tail = [&](int shift) {
    bytes->push_back(static_cast<char>(0x80 | ((character >> shift) & 0x3F)));
  };
  if (character < 0x80) {
    bytes->push_back(static_cast<char>(character));
  } else if (character < 0x800) {
    bytes->push_back(static_cast<char>(0xC0 | (character >> 6)));
    tail(0);
  } else if (character < 0x10000) {
    bytes->push_back(static_cast<char>(0xE0 | (character >> 12)));
    tail(6);
    tail(0);
  } else {
    bytes->push_back(static_cast<char>(0xF0 | (character >> 18)));
    tail(12);
    tail(6);
    tail(0);
  }
}

bool IsBetween(UInt32 unit, UInt32 first, UInt32 last) {
  return unit >= first && unit <= last;
}

}  // namespace

void UnitsOfName(std::string_view bytes, HFSUniStr255* name) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < bytes.size();) {
    std::size_t length = 1;
    UInt32 character = FirstCharacter(bytes.substr(at), &length);
    if (character == kNoCharacter) {
      character = kEscape + static_cast<UInt8>(bytes[at]);
      length = 1;
    }
    const bool is_pair = character >= 0x10000;
    if (count + (is_pair ? 2 : 1) > std::size(name->unicode)) break;
    if (is_pair) {
      name->unicode[count++] = static_cast<UniChar>(0xD7C0 + (character >> 10));
      name->unicode[count++] = static_cast<UniChar>(0xDC00 | (character & 0x3FF));
    } else {
      name->unicode[count++] = static_cast<UniChar>(character);
    }
    at += length;
  }
  name->length = static_cast<UInt16>(count);
}

OSErr BytesOfName(UInt32 length, const UniChar* name, std::string* bytes) {
  bytes->clear();
  if (!name && length > 0) return static_cast<OSErr>(paramErr);
  if (length == 0) return errFSMissingName;
  if (length > 255) return errFSNameTooLong;
  for (UInt32 i = 0; i < length; ++i) {
    const UInt32 unit = name[i];
    if (unit == 0 || unit == '/') return bdNamErr;
    if (IsBetween(unit, 0xD800, 0xDBFF)) {
      if (i + 1 == length || !IsBetween(name[i + 1], 0xDC00, 0xDFFF)) return bdNamErr;
      AppendUtf8(((unit - 0xD7C0) << 10) | (name[++i] & 0x3FFU), bytes);
    } else if (IsBetween(unit, kEscape + 0x80, kEscape + 0xFF)) {
      bytes->push_back(static_cast<char>(unit - kEscape));
    } else if (IsBetween(unit, 0xDC00, 0xDFFF)) {
      return bdNamErr;
    } else {
      AppendUtf8(unit, bytes);
    }
  }
  return *bytes == "." || *bytes == ".." ? bdNamErr : OSErr{noErr};
}

}  // namespace quillmere::files
