/// Sample ranges: integer codes of luma, RGB and chroma against their normalised values.
///
/// A luma or RGB sample is normalised to 0.0 to 1.0, a chroma sample to -0.5 to +0.5. In full range
/// all codes are used and chroma is two's complement; in video range black, white and the span of
/// chroma lie at the levels of ITU-R BT.601 and BT.709, shifted left by the bits above 8, and
/// chroma is offset binary. A conversion to a code adds 0.5 and truncates toward zero. Nothing here
/// fails: input out of range is limited as told, a code depth that isn't supported gives 0, and not
/// a number counts as the lowest value.
#pragma once

#include "base_types.h"
#include "cf_strings.h"

/// How the codes of samples are to be read, as colour settings hold it. Unless an operation says
/// otherwise full and wide range are read as full range, every other number as video range.
inline constexpr SInt32 kCO_VideoRange = 1;
inline constexpr SInt32 kCO_FullRange = 2;
inline constexpr SInt32 kCO_WideRange = 3;

/// Writes "video range", "full range", "wide range" or "unknown range type" as a C string; `text`
/// has 32 bytes or more.
void CO_GetRangeName(SInt32 rangeType, char* text);
/// Adds the field's name, ": ", the range's name and a newline to a report at `*length`, which
/// moves on. `buffer` has room for 300 bytes more, see GL_Strings_Reports.h.
void CO_AddRangeFieldDescrToTextPtr(char* buffer, SInt32* length, CFStringRef fieldName,
                                    SInt32 rangeType);

// Full range, 1 to 31 bits.

/// value / m for m = 2^bits - 1. The codes 0 and m lie a quarter of a step inside the interval; a
/// code above m gives more than 1.0.
double CO_UIntToUnitInterval(UInt32 value, SInt32 bits);
/// The code of `x`, which is limited to 0.0 to 1.0.
UInt32 CO_UnitIntervalToUInt(double x, SInt32 bits);
/// value / 2m for m = 2^(bits - 1) - 1. The codes m and -m lie a quarter of a step inside the
/// interval, those beyond give its ends; with 1 bit, where m is 0, 0 gives 0.0.
double CO_SIntToUnitInterval(SInt32 value, SInt32 bits);
/// The code of `x`, which is limited to -0.5 to +0.5. Negative values too are truncated toward
/// zero after 0.5 was added: at 8 bits -0.5 gives -126 and +0.5 gives 127.
SInt32 CO_UnitIntervalToSInt(double x, SInt32 bits);

// Video range, 8 to 31 bits: luma from 16 to 235, chroma from 16 to 240 around 128, at 8 bits.

/// The value of a luma code; with `clamp` limited to 0.0 to 1.0.
double CO_UIntVRToUnitInterval(UInt32 value, SInt32 bits, Boolean clamp);
/// The luma code of `x`, limited to the legal codes: 1 to 254 at 8 bits.
UInt32 CO_UnitIntervalToUIntVR(double x, SInt32 bits);
/// The value of a chroma code; with `clamp` limited to -0.5 to +0.5.
double CO_SIntVRToUnitInterval(UInt32 value, SInt32 bits, Boolean clamp);
/// The chroma code of `x`, limited to the legal codes.
UInt32 CO_UnitIntervalToSIntVR(double x, SInt32 bits);

// Between fixed widths, in integers only.

/// Rounds a 10-bit code to 5 bits.
constexpr UInt8 CO_10bitUIntTo5bitUInt(UInt16 v) {
  return static_cast<UInt8>((v - (v >> 5) + 16) >> 5);
}
/// Rounds a 16-bit code to 8 bits.
constexpr UInt8 CO_16bitUIntTo8bitUInt(UInt16 v) {
  return static_cast<UInt8>((v - (v >> 8) + 128) >> 8);
}
/// Widens a 5-bit code; the ends are held a quarter of a step inside: 0 gives 8, 31 gives 1016.
constexpr UInt16 CO_5bitUIntTo10bitUInt(UInt8 v) {
  return static_cast<UInt16>(v == 0 ? 8 : v == 31 ? 1016 : v * 33);
}
/// Widens an 8-bit code; the ends are held a quarter of a step inside: 0 gives 64, 255 gives 65471.
constexpr UInt16 CO_8bitUIntTo16bitUInt(UInt8 v) {
  return static_cast<UInt16>(v == 0 ? 64 : v == 255 ? 65471 : v * 257);
}
/// Luma of full range to video range.
constexpr UInt8 CO_8bitUIntFRToVR(UInt8 v) {
  const int scaled = v * 219;
  return static_cast<UInt8>(((scaled + (scaled >> 8) + 127) >> 8) + 16);
}
/// Signed chroma of full range to offset binary of video range.
constexpr UInt8 CO_8bitSIntFRToVR(SInt8 v) {
  const int scaled = v * 224;
  return static_cast<UInt8>(((scaled + (scaled >> 8) + 128) >> 8) ^ 128);
}
/// Luma of video range to full range. A code outside 16 to 235 wraps: limit it first.
constexpr UInt8 CO_8bitUIntVRToFR(UInt8 v) {
  // 38304 is 2^23 / 219.
  return static_cast<UInt8>(((UInt32{v} * 255 - 4080) * 38304 + 4213440) >> 23);
}
/// Offset binary chroma of video range to signed full range. A code outside 16 to 240 wraps: limit
/// it first.
constexpr SInt8 CO_8bitSIntVRToFR(UInt8 v) {
  // 37449 is 2^23 / 224.
  const UInt32 scaled = (UInt32{v} * 255 - 32640) * 37449 + 4194288;
  return static_cast<SInt8>(static_cast<SInt32>(scaled) >> 23);
}
