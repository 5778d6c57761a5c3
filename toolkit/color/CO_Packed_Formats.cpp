#include "CO_Packed_Formats.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "CO_Ranges.h"

namespace {

constexpr SInt32 kWorkingDepth = 16;
constexpr SInt32 kVideoDepth = 10;
constexpr UInt32 kLargestVideoCode = (1U << kVideoDepth) - 1;

UInt16 LumaBetween(UInt32 code, SInt32 from, SInt32 to) {
  return static_cast<UInt16>(CO_UnitIntervalToUIntVR(CO_UIntVRToUnitInterval(code, from, 1), to));
}

UInt16 ChromaBetween(UInt32 code, SInt32 from, SInt32 to) {
  return static_cast<UInt16>(CO_UnitIntervalToSIntVR(CO_SIntVRToUnitInterval(code, from, 1), to));
}

/// Every code of a depth in another one.
template <std::size_t codes>
struct CodeTables {
  std::array<UInt16, codes> luma;
  std::array<UInt16, codes> chroma;

  CodeTables(SInt32 from, SInt32 to) {
    for (std::size_t code = 0; code < codes; ++code) {
      luma[code] = LumaBetween(static_cast<UInt32>(code), from, to);
      chroma[code] = ChromaBetween(static_cast<UInt32>(code), from, to);
    }
  }
};

const CodeTables<kLargestVideoCode + 1>& FromVideo() {
  static const CodeTables<kLargestVideoCode + 1> tables(kVideoDepth, kWorkingDepth);
  return tables;
}

const CodeTables<1U << kWorkingDepth>& ToVideo() {
  static const CodeTables<1U << kWorkingDepth> tables(kWorkingDepth, kVideoDepth);
  return tables;
}

UInt32 ReadWord(const UInt8* bytes) {
  return UInt32{bytes[0]} | UInt32{bytes[1]} << 8 | UInt32{bytes[2]} << 16 | UInt32{bytes[3]} << 24;
}

void WriteWord(UInt8* bytes, UInt32 word) {
  for (int i = 0; i < 4; ++i)
    bytes[i] = static_cast<UInt8>(word >> (8 * i));
}

/// How far a v216 code stands above the lowest bit.
SInt32 ShiftOf(SInt32 depth) {
  return depth == 10 || depth == 12 || depth == 14 ? kWorkingDepth - depth : 0;
}

/// A value of 0.0 to 1.0 as one of 0 to `most`, the half added and cut.
UInt32 Scaled(double x, double most) {
  const double raised = x * most + 0.5;
  return static_cast<UInt32>(raised);
}

/// A v216 or 2vuy group has chroma at its even places; a v210 block too.
bool IsLuma(std::size_t place) {
  return place % 2 != 0;
}

}  // namespace

void CO_Unpack_v216(const UInt8* source, UInt16* destination, SInt32 depth) {
  const SInt32 shift = ShiftOf(depth);
  for (std::size_t i = 0; i < 4; ++i) {
    const UInt32 word = UInt32{source[2 * i]} | UInt32{source[2 * i + 1]} << 8;
    const UInt32 code = word >> shift;
    destination[i] = depth == kWorkingDepth ? static_cast<UInt16>(word)
                     : IsLuma(i)            ? LumaBetween(code, depth, kWorkingDepth)
                                            : ChromaBetween(code, depth, kWorkingDepth);
  }
}

void CO_Pack_v216(CO_Group_v216 group, UInt8* destination, SInt32 depth) {
  const SInt32 shift = ShiftOf(depth);
  for (std::size_t i = 0; i < 4; ++i) {
    UInt32 word = group.words[i];
    if (depth != kWorkingDepth)
      word = UInt32{IsLuma(i) ? LumaBetween(word, kWorkingDepth, depth)
                              : ChromaBetween(word, kWorkingDepth, depth)}
             << shift;
    destination[2 * i] = static_cast<UInt8>(word);
    destination[2 * i + 1] = static_cast<UInt8>(word >> 8);
  }
}

void CO_Unpack_v210(const UInt8* source, UInt16* destination) {
  const auto& tables = FromVideo();
  for (std::size_t i = 0; i < 12; i += 3) {
    const UInt32 word = ReadWord(source + i / 3 * 4);
    // Codes above the largest are limited like that.
    const UInt32 codes[] = {word & kLargestVideoCode, (word >> 10) & kLargestVideoCode,
                            std::min(word >> 20, kLargestVideoCode)};
    for (std::size_t k = 0; k < 3; ++k)
      destination[i + k] = (IsLuma(i + k) ? tables.luma : tables.chroma)[codes[k]];
  }
}

void CO_Pack_v210(UInt8* destination, const UInt16* source) {
  const auto& tables = ToVideo();
  for (std::size_t i = 0; i < 12; i += 3) {
    UInt32 word = 0;
    for (std::size_t k = 0; k < 3; ++k)
      word |= UInt32{(IsLuma(i + k) ? tables.luma : tables.chroma)[source[i + k]]} << (10 * k);
    WriteWord(destination + i / 3 * 4, word);
  }
}

void CO_Unpack_v410(const UInt8* source, UInt16* destination) {
  const auto& tables = FromVideo();
  const UInt32 word = ReadWord(source);
  destination[0] = tables.luma[(word >> 12) & kLargestVideoCode];
  destination[1] = tables.chroma[(word >> 2) & kLargestVideoCode];
  destination[2] = tables.chroma[word >> 22];
}

void CO_Pack_v410(CO_Pixel_v410 pixel, UInt8* destination) {
  const auto& tables = ToVideo();
  WriteWord(destination, UInt32{tables.chroma[pixel.cb]} << 2 | UInt32{tables.luma[pixel.y]} << 12 |
                             UInt32{tables.chroma[pixel.cr]} << 22);
}

void CO_UnpackRGB16(UInt16 word, UInt8* rgb, UInt16* alpha) {
  for (int i = 0; i < 3; ++i) {
    const UInt32 field = (UInt32{word} >> (10 - 5 * i)) & 31;
    const double x = std::clamp(CO_UIntToUnitInterval(field, 5), 0.0, 1.0);
    rgb[i] = static_cast<UInt8>(Scaled(x, 255));
  }
  *alpha = word & 0x8000;
}

void CO_PackRGB16(const UInt8* rgb, UInt16 alpha, UInt16* word) {
  UInt32 packed = alpha;
  for (int i = 0; i < 3; ++i) {
    const double x = std::clamp(CO_UIntToUnitInterval(rgb[i], 8), 0.0, 1.0);
    packed |= Scaled(x, 31) << (10 - 5 * i);
  }
  *word = static_cast<UInt16>(packed);
}

void CO_PackYCbCr8To422(const UInt8* source, UInt8* destination) {
  destination[0] = source[0];
  destination[1] = source[1];
  destination[2] = source[3];
  destination[3] = source[2];
}

void CO_PackYCbCrU8To422(const UInt8* source, UInt8* destination) {
  destination[0] = source[1];
  destination[1] = source[0];
  destination[2] = source[2];
  destination[3] = source[3];
}

UInt8 CO_UnpackGrey(UInt8 value) {
  return static_cast<UInt8>(~value);
}
