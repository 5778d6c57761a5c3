#include "text_codecs.h"

#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <bit>
#include <mutex>
#include <vector>

#include "text_encodings.h"

namespace quillmere::text {
namespace {

constexpr UniChar kUndefined = 0xFFFD;
constexpr std::size_t kLongestText = 0x3FFFFFFF;  ///< bytes; ICU counts in 32 bits

/// `count` bytes from `byte` on that stand for the units from `unit` on.
struct Run {
  UInt8 byte;
  UInt8 count;
  UniChar unit;
};

// Differences from Mac OS Roman of its relatives, by the vendor mapping tables at unicode.org.
constexpr Run kCroatian[] = {
    {0xA9, 1, 0x0160}, {0xAE, 1, 0x017D}, {0xB4, 1, 0x2206}, {0xB9, 1, 0x0161}, {0xBE, 1, 0x017E},
    {0xC6, 1, 0x0106}, {0xC8, 1, 0x010C}, {0xD0, 1, 0x0110}, {0xD8, 1, 0xF8FF}, {0xD9, 1, 0x00A9},
    {0xDE, 1, 0x00C6}, {0xDF, 1, 0x00BB}, {0xE0, 1, 0x2013}, {0xE6, 1, 0x0107}, {0xE8, 1, 0x010D},
    {0xF0, 1, 0x0111}, {0xF9, 1, 0x03C0}, {0xFA, 1, 0x00CB}, {0xFD, 1, 0x00CA}, {0xFE, 1, 0x00E6}};
constexpr Run kIcelandic[] = {{0xA0, 1, 0x00DD}, {0xDC, 1, 0x00D0}, {0xDD, 1, 0x00F0},
                              {0xDE, 1, 0x00DE}, {0xDF, 1, 0x00FE}, {0xE0, 1, 0x00FD}};
constexpr Run kRomanian[] = {
    {0xAE, 1, 0x0102}, {0xAF, 1, 0x0218}, {0xBE, 1, 0x0103}, {0xBF, 1, 0x0219}, {0xDE, 2, 0x021A}};
constexpr Run kArabic[] = {
    {0x81, 1, 0x00A0}, {0x8B, 1, 0x06BA},  {0x8C, 1, 0x00AB},  {0x93, 1, 0x2026},
    {0x98, 1, 0x00BB}, {0x9B, 1, 0x00F7},  {0xA0, 32, 0x0020}, {0xA5, 1, 0x066A},
    {0xAC, 1, 0x060C}, {0xB0, 10, 0x0660}, {0xBB, 1, 0x061B},  {0xBF, 1, 0x061F},
    {0xC0, 1, 0x274A}, {0xC1, 26, 0x0621}, {0xDB, 5, 0x005B},  {0xE0, 19, 0x0640},
    {0xF3, 1, 0x067E}, {0xF4, 1, 0x0679},  {0xF5, 1, 0x0686},  {0xF6, 1, 0x06D5},
    {0xF7, 1, 0x06A4}, {0xF8, 1, 0x06AF},  {0xF9, 1, 0x0688},  {0xFA, 1, 0x0691},
    {0xFB, 3, 0x007B}, {0xFE, 1, 0x0698},  {0xFF, 1, 0x06D2}};
constexpr Run kFarsiDigits[] = {{0xB0, 10, 0x06F0}};
// Thai text proper; above ASCII the set has forms of letters first, which are not covered.
constexpr Run kThai[] = {{0x80, 32, kUndefined}};
// Letters, Latin letters and mirrored punctuation; pointed forms have no single character.
constexpr Run kHebrew[] = {{0x81, 1, kUndefined},
                           {0xA0, 32, 0x0020},
                           {0xA6, 1, 0x20AA},
                           {0xC0, 64, kUndefined},
                           {0xE0, 27, 0x05D0}};

enum class Kind : UInt8 { kTable, kConverter, kUtf8, kUtf16 };

struct EncodingRow {
  UInt32 number;
  Kind kind;
  UInt8 largest;          ///< bytes per unit
  const char* converter;  ///< ICU's name, or null
  UInt32 base = 0;        ///< the table that `runs` change, if there is no converter
  std::span<const Run> runs = {};
};

constexpr EncodingRow kEncodings[] = {
    {kTextEncodingMacRoman, Kind::kTable, 1, "macos-0_2-10.2"},
    {kTextEncodingMacJapanese, Kind::kConverter, 2, "ibm-943_P15A-2003"},
    {kTextEncodingMacChineseTrad, Kind::kConverter, 2, "windows-950-2000"},
    {kTextEncodingMacKorean, Kind::kConverter, 2, "windows-949-2000"},
    {kTextEncodingMacArabic, Kind::kTable, 1, nullptr, kTextEncodingMacRoman, kArabic},
    {kTextEncodingMacHebrew, Kind::kTable, 1, nullptr, kTextEncodingMacRoman, kHebrew},
    {kTextEncodingMacGreek, Kind::kTable, 1, "macos-6_2-10.4"},
    {kTextEncodingMacCyrillic, Kind::kTable, 1, "macos-7_3-10.2"},
    {kTextEncodingMacDevanagari, Kind::kConverter, 4, "ISCII,version=0"},
    {kTextEncodingMacGurmukhi, Kind::kConverter, 4, "ISCII,version=2"},
    {kTextEncodingMacGujarati, Kind::kConverter, 4, "ISCII,version=3"},
    {kTextEncodingMacThai, Kind::kTable, 1, "windows-874-2000", 0, kThai},
    {kTextEncodingMacChineseSimp, Kind::kConverter, 2, "windows-936-2000"},
    {kTextEncodingMacCentralEurRoman, Kind::kTable, 1, "macos-29-10.2"},
    {kTextEncodingMacTurkish, Kind::kTable, 1, "macos-35-10.2"},
    {kTextEncodingMacCroatian, Kind::kTable, 1, nullptr, kTextEncodingMacRoman, kCroatian},
    {kTextEncodingMacIcelandic, Kind::kTable, 1, nullptr, kTextEncodingMacRoman, kIcelandic},
    {kTextEncodingMacRomanian, Kind::kTable, 1, nullptr, kTextEncodingMacRoman, kRomanian},
    {kTextEncodingMacFarsi, Kind::kTable, 1, nullptr, kTextEncodingMacArabic, kFarsiDigits},
    {kTextEncodingMacUkrainian, Kind::kTable, 1, nullptr, kTextEncodingMacCyrillic, {}},
    {kTextEncodingISOLatin1, Kind::kTable, 1, "ISO-8859-1"},
    {kTextEncodingWindowsLatin1, Kind::kTable, 1, "ibm-5348_P100-1997"},
    {kTextEncodingASCII, Kind::kTable, 1, "US-ASCII"},
    {kTextEncodingUTF8, Kind::kUtf8, 3, nullptr},
    {kTextEncodingUnicode, Kind::kUtf16, 2, nullptr},
    {kTextEncodingUTF16BE, Kind::kUtf16, 2, nullptr},
    {kTextEncodingUTF16LE, Kind::kUtf16, 2, nullptr},
};

const EncodingRow* FindRow(UInt32 encoding) {
  const auto* const found = std::ranges::find(kEncodings, encoding, &EncodingRow::number);
  return found == std::end(kEncodings) ? nullptr : found;
}

using ConverterPtr = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

/// A converter that stops at what its set does not have.
ConverterPtr OpenConverter(const char* name) {
  UErrorCode error = U_ZERO_ERROR;
  ConverterPtr converter(ucnv_open(name, &error), &ucnv_close);
  ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &error);
  ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
  return U_SUCCESS(error) ? std::move(converter) : ConverterPtr(nullptr, &ucnv_close);
}

/// The two directions of a single-byte set: 256 units, and the bytes sorted by their units.
struct ByteTable {
  std::array<UniChar, 256> units;
  std::vector<std::pair<UniChar, UInt8>> bytes;
};

void ReadConverterTable(const char* name, std::array<UniChar, 256>* units) {
  units->fill(kUndefined);
  const ConverterPtr converter = OpenConverter(name);
  for (unsigned byte = 0; converter && byte < 256; ++byte) {
    const auto text = static_cast<char>(byte);
    UniChar unit[2] = {0, 0};
    UErrorCode error = U_ZERO_ERROR;
    if (ucnv_toUChars(converter.get(), unit, 2, &text, 1, &error) == 1 && U_SUCCESS(error)) {
      (*units)[byte] = unit[0];
    }
  }
}

const ByteTable& TableOf(const EncodingRow& row);

std::unique_ptr<const ByteTable> MakeTable(const EncodingRow& row) {
  auto table = std::make_unique<ByteTable>();
  if (row.converter != nullptr) {
    ReadConverterTable(row.converter, &table->units);
  } else {
    table->units = TableOf(*FindRow(row.base)).units;
  }
  for (const Run& run : row.runs) {
    for (unsigned i = 0; i < run.count; ++i) {
      table->units[run.byte + i] =
          run.unit == kUndefined ? kUndefined : static_cast<UniChar>(run.unit + i);
    }
  }
  for (unsigned byte = 0; byte < 256; ++byte) {
    if (table->units[byte] != kUndefined) {
      table->bytes.emplace_back(table->units[byte], static_cast<UInt8>(byte));
    }
  }
  // Of two bytes for one unit the lower one stands: sorting is by unit, then by byte.
  std::ranges::sort(table->bytes);
  return table;
}

/// The row's table, made when first asked for and kept.
const ByteTable& TableOf(const EncodingRow& row) {
  struct Slot {
    std::once_flag once;
    std::unique_ptr<const ByteTable> table;
  };
  static auto* const slots = new std::array<Slot, std::size(kEncodings)>;
  Slot& slot = (*slots)[static_cast<std::size_t>(&row - kEncodings)];
  std::call_once(slot.once, [&] { slot.table = MakeTable(row); });
  return *slot.table;
}

Encoded EncodeByTable(const ByteTable& table, char32_t character) {
  Encoded out;
  if (character > 0xFFFF) return out;
  const auto unit = static_cast<UniChar>(character);
  const auto found = std::ranges::lower_bound(table.bytes, std::pair{unit, UInt8{0}});
  if (found != table.bytes.end() && found->first == unit) out.bytes[out.count++] = found->second;
  return out;
}

Encoded EncodeUtf8(char32_t character) {
  Encoded out;
  if (character > 0x10FFFF || U_IS_SURROGATE(character)) return out;
  std::size_t count = 0;
  U8_APPEND_UNSAFE(out.bytes, count, static_cast<UChar32>(character));
  out.count = count;
  return out;
}

void PutUnit(UniChar unit, bool big_endian, Encoded* out) {
  const auto high = static_cast<UInt8>(unit >> 8);
  const auto low = static_cast<UInt8>(unit & 0xFF);
  out->bytes[out->count++] = big_endian ? high : low;
  out->bytes[out->count++] = big_endian ? low : high;
}

bool IsBigEndian(UInt32 encoding) {
  return encoding == kTextEncodingUTF16BE ||
         (encoding == kTextEncodingUnicode && std::endian::native == std::endian::big);
}

UniChar UnitAt(const UInt8* bytes, bool big_endian) {
  return static_cast<UniChar>(big_endian ? (bytes[0] << 8) | bytes[1] : (bytes[1] << 8) | bytes[0]);
}

std::size_t DecodeOneUtf16(std::span<const UInt8> bytes, bool big_endian, char32_t* character) {
  if (bytes.size() < 2) return 0;
  const UniChar first = UnitAt(bytes.data(), big_endian);
  *character = first;
  if (!U16_IS_LEAD(first) || bytes.size() < 4) return 2;
  const UniChar second = UnitAt(bytes.data() + 2, big_endian);
  if (!U16_IS_TRAIL(second)) return 2;
  *character = static_cast<char32_t>(U16_GET_SUPPLEMENTARY(first, second));
  return 4;
}

std::size_t DecodeOneUtf8(std::span<const UInt8> bytes, char32_t* character) {
  const auto size = static_cast<std::int32_t>(std::min<std::size_t>(bytes.size(), 4));
  std::int32_t at = 0;
  UChar32 read = -1;
  if (size > 0) U8_NEXT(bytes.data(), at, size, read);
  if (read < 0) return 0;
  *character = static_cast<char32_t>(read);
  return static_cast<std::size_t>(at);
}

bool DecodeUtf8(std::span<const UInt8> bytes, std::u16string* units) {
  const std::size_t before = units->size();
  units->resize(before + bytes.size());  // UTF-16 never takes more units than UTF-8 takes bytes
  std::int32_t count = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strFromUTF8(units->data() + before, static_cast<std::int32_t>(bytes.size()), &count,
                reinterpret_cast<const char*>(bytes.data()),
                static_cast<std::int32_t>(bytes.size()), &error);
  units->resize(before + static_cast<std::size_t>(std::max(count, 0)));
  return U_SUCCESS(error);
}

bool DecodeUtf16(std::span<const UInt8> bytes, UInt32 encoding, std::u16string* units) {
  if (bytes.size() % 2) return false;
  bool big_endian = IsBigEndian(encoding);
  if (encoding == kTextEncodingUnicode && bytes.size() >= 2) {
    const UniChar mark = UnitAt(bytes.data(), true);
    if (mark == 0xFEFF || mark == 0xFFFE) {
      big_endian = mark == 0xFEFF;
      bytes = bytes.subspan(2);
    }
  }
  for (std::size_t i = 0; i < bytes.size(); i += 2) {
    units->push_back(UnitAt(bytes.data() + i, big_endian));
  }
  return true;
}

}  // namespace

struct ConverterState {
  const EncodingRow* row = nullptr;
  ConverterPtr converter{nullptr, &ucnv_close};
};

Codec::Codec(UInt32 encoding) : state_(std::make_unique<ConverterState>()) {
  state_->row = FindRow(encoding);
  if (state_->row != nullptr && state_->row->kind == Kind::kConverter) {
    state_->converter = OpenConverter(state_->row->converter);
    if (!state_->converter) state_->row = nullptr;
  }
}

Codec::~Codec() = default;

bool Codec::IsKnown() const {
  return state_->row != nullptr;
}

SInt32 Codec::LargestBytesPerUnit() const {
  return IsKnown() ? state_->row->largest : 1;
}

Encoded Codec::Encode(char32_t character) {
  Encoded out;
  if (!IsKnown()) return out;
  UniChar units[2];
  std::int32_t count = 0;
  U16_APPEND_UNSAFE(units, count, character);
  switch (state_->row->kind) {
    case Kind::kTable:
      return EncodeByTable(TableOf(*state_->row), character);
    case Kind::kUtf8:
      return EncodeUtf8(character);
    case Kind::kUtf16:
      for (std::int32_t i = 0; i < count; ++i) {
        PutUnit(units[i], IsBigEndian(state_->row->number), &out);
      }
      break;
    case Kind::kConverter: {
      UErrorCode error = U_ZERO_ERROR;
      const std::int32_t length =
          ucnv_fromUChars(state_->converter.get(), reinterpret_cast<char*>(out.bytes),
                          sizeof out.bytes, units, count, &error);
      if (U_SUCCESS(error)) out.count = static_cast<std::size_t>(length);
      break;
    }
  }
  return out;
}

std::size_t Codec::DecodeOne(std::span<const UInt8> bytes, char32_t* character) {
  if (!IsKnown() || bytes.empty()) return 0;
  switch (state_->row->kind) {
    case Kind::kTable:
      *character = TableOf(*state_->row).units[bytes[0]];
      return *character == kUndefined ? 0 : 1;
    case Kind::kUtf8:
      return DecodeOneUtf8(bytes, character);
    case Kind::kUtf16:
      return DecodeOneUtf16(bytes, IsBigEndian(state_->row->number), character);
    case Kind::kConverter: {
      const char* const start = reinterpret_cast<const char*>(bytes.data());
      const char* source = start;
      UErrorCode error = U_ZERO_ERROR;
      ucnv_reset(state_->converter.get());
      const UChar32 read =
          ucnv_getNextUChar(state_->converter.get(), &source, start + bytes.size(), &error);
      if (U_FAILURE(error)) return 0;
      *character = static_cast<char32_t>(read);
      return static_cast<std::size_t>(source - start);
    }
  }
  return 0;
}

bool Codec::Decode(std::span<const UInt8> bytes, std::u16string* units) {
  if (!IsKnown() || bytes.size() > kLongestText) return false;
  switch (state_->row->kind) {
    case Kind::kUtf8:
      return DecodeUtf8(bytes, units);
    case Kind::kUtf16:
      return DecodeUtf16(bytes, state_->row->number, units);
    case Kind::kTable: {
      const ByteTable& table = TableOf(*state_->row);
      for (const UInt8 byte : bytes) {
        if (table.units[byte] == kUndefined) return false;
        units->push_back(table.units[byte]);
      }
      return true;
    }
    case Kind::kConverter: {
      const std::size_t before = units->size();
      units->resize(before + 2 * bytes.size());
      UErrorCode error = U_ZERO_ERROR;
      const std::int32_t count = ucnv_toUChars(state_->converter.get(), units->data() + before,
                                               static_cast<std::int32_t>(2 * bytes.size()),
                                               reinterpret_cast<const char*>(bytes.data()),
                                               static_cast<std::int32_t>(bytes.size()), &error);
      units->resize(before + static_cast<std::size_t>(U_SUCCESS(error) ? count : 0));
      return U_SUCCESS(error);
    }
  }
  return false;
}

bool Codec::IsCutOff(std::span<const UInt8> bytes) {
  if (!IsKnown() || bytes.empty()) return false;
  switch (state_->row->kind) {
    case Kind::kUtf8: {
      // Cut off if some ending makes it valid: the lead byte allows only one range behind it.
      const std::size_t length = U8_IS_LEAD(bytes[0]) ? U8_COUNT_TRAIL_BYTES(bytes[0]) + 1U : 1U;
      if (bytes.size() >= length) return false;
      for (const UInt8 filler : {UInt8{0x80}, UInt8{0x90}, UInt8{0xA0}}) {
        UInt8 whole[4] = {filler, filler, 0x80, 0x80};
        std::ranges::copy(bytes, whole);
        char32_t character = 0;
        if (DecodeOneUtf8({whole, length}, &character) == length) return true;
      }
      return false;
    }
    case Kind::kUtf16:
      return bytes.size() < 2;
    case Kind::kConverter:
      return bytes.size() == 1 && IsLeadByte(bytes[0]);
    case Kind::kTable:
      return false;
  }
  return false;
}

bool Codec::IsLeadByte(UInt8 byte) {
  if (!IsKnown() || state_->row->kind != Kind::kConverter || state_->row->largest != 2)
    return false;
  UErrorCode error = U_ZERO_ERROR;
  UBool starters[256] = {};
  ucnv_getStarters(state_->converter.get(), starters, &error);
  return U_SUCCESS(error) && starters[byte];
}

}  // namespace quillmere::text
