/// Integer types, records and small values that every layer shares.
///
/// Records that stand in files or events are packed as there; everything else has the machine's
/// natural layout. Four-character codes are 32-bit values in their big-endian form: 'm' of "moov"
/// is the most significant byte. Write them with the literal: "moov"_4cc.
#pragma once

#include <cstddef>
#include <cstdint>

using SInt8 = std::int8_t;
using UInt8 = std::uint8_t;
using SInt16 = std::int16_t;
using UInt16 = std::uint16_t;
using SInt32 = std::int32_t;
using UInt32 = std::uint32_t;
using SInt64 = std::int64_t;
using UInt64 = std::uint64_t;
using Float32 = float;
using Float64 = double;

/// One byte: 0 is false, anything else true.
using Boolean = unsigned char;
using Byte = UInt8;
using UniChar = char16_t;

/// A four-character code.
using OSType = UInt32;
using ResType = OSType;
/// A 16-bit status of the older calls; widened with its sign where it becomes an OSStatus.
using OSErr = SInt16;
/// A signed 32-bit status: 0 is success.
using OSStatus = SInt32;
/// A 16.16 fixed-point number: 0x10000 is 1.0.
using Fixed = SInt32;
using ScriptCode = SInt16;
/// A count or position in a movie's or media's own time scale (units a second).
using TimeValue = SInt32;
using TimeValue64 = SInt64;
using TimeScale = SInt32;
/// A byte count of a memory block.
using Size = SInt64;
using ByteCount = UInt64;
using ItemCount = UInt64;

/// Makes a four-character code of a literal of exactly four characters: "moov"_4cc.
/// MacRoman characters above 127 are written as \x escapes.
consteval OSType operator""_4cc(const char* text, std::size_t length) {
  if (length != 4) throw "a four-character code has four characters";
  OSType code = 0;
  for (std::size_t i = 0; i < 4; ++i)
    code = (code << 8) | static_cast<UInt8>(text[i]);
  return code;
}

/// A rectangle in whole pixels; bottom and right stand one past the last line and column.
struct Rect {
  SInt16 top;
  SInt16 left;
  SInt16 bottom;
  SInt16 right;
};
struct Point {
  SInt16 v;
  SInt16 h;
};
struct FixedPoint {
  Fixed x;
  Fixed y;
};
struct FixedRect {
  Fixed left;
  Fixed top;
  Fixed right;
  Fixed bottom;
};
struct RGBColor {
  UInt16 red;
  UInt16 green;
  UInt16 blue;
};

/// A 3 by 3 matrix: points are row vectors (x y 1) multiplied from the left. The first two columns
/// are 16.16, the third is 2.30.
struct MatrixRecord {
  Fixed matrix[3][3];
};

/// Statuses that more than one layer gives. The files', movies' and windows' own stand with them.
inline constexpr OSStatus noErr = 0;
inline constexpr OSStatus paramErr = -50;
inline constexpr OSStatus memFullErr = -108;
inline constexpr OSStatus nilHandleErr = -109;
inline constexpr OSStatus userCanceledErr = -128;
inline constexpr OSStatus eventNotHandledErr = -9874;
