#include "CO_Ranges.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "GL_Strings_Reports.h"

namespace {

constexpr SInt32 kMostBits = 31;
constexpr std::size_t kNameRoom = 32;  // of CO_GetRangeName

bool IsFullRangeDepth(SInt32 bits) {
  return bits >= 1 && bits <= kMostBits;
}
bool IsVideoRangeDepth(SInt32 bits) {
  return bits >= 8 && bits <= kMostBits;
}

const char* NameOfRange(SInt32 range_type) {
  switch (range_type) {
    case kCO_VideoRange:
      return "video range";
    case kCO_FullRange:
      return "full range";
    case kCO_WideRange:
      return "wide range";
    default:
      return "unknown range type";
  }
}

/// Not a number becomes the lowest value.
double Limited(double x, double lowest, double highest) {
  return x > lowest ? std::min(x, highest) : lowest;
}

double Shifted(SInt32 level, SInt32 bits) {
  return static_cast<double>(SInt64{level} << (bits - 8));
}

double UnitOfVideoCode(UInt32 value, SInt32 bits, SInt32 highest) {
  return (value - Shifted(16, bits)) / (Shifted(highest, bits) - Shifted(16, bits));
}

UInt32 VideoCodeOfUnit(double x, SInt32 bits, SInt32 span, SInt32 zero) {
  const double code = Shifted(span, bits) * x + 0.5 + Shifted(zero, bits);
  const double highest = static_cast<double>((SInt64{1} << bits) - (SInt64{1} << (bits - 8)) - 1);
  return static_cast<UInt32>(Limited(code, Shifted(1, bits), highest));
}

}  // namespace

void CO_GetRangeName(SInt32 rangeType, char* text) {
  std::snprintf(text, kNameRoom, "%s", NameOfRange(rangeType));
}

void CO_AddRangeFieldDescrToTextPtr(char* buffer, SInt32* length, CFStringRef fieldName,
                                    SInt32 rangeType) {
  GL_AddCFStringToTextPtr(buffer, length, fieldName);
  GL_AddCStringToTextPtr(buffer, length,
                         (std::string(": ") + NameOfRange(rangeType) + "\n").c_str());
}

double CO_UIntToUnitInterval(UInt32 value, SInt32 bits) {
  if (!IsFullRangeDepth(bits)) return 0;
  const UInt32 highest = (UInt32{1} << bits) - 1;
  if (value == 0) return 0.25 / highest;
  if (value == highest) return 1.0 - 0.25 / highest;
  return static_cast<double>(value) / highest;
}

UInt32 CO_UnitIntervalToUInt(double x, SInt32 bits) {
  if (!IsFullRangeDepth(bits)) return 0;
  const UInt32 highest = (UInt32{1} << bits) - 1;
  return static_cast<UInt32>(std::trunc(Limited(x, 0.0, 1.0) * highest + 0.5));
}

double CO_SIntToUnitInterval(SInt32 value, SInt32 bits) {
  if (!IsFullRangeDepth(bits)) return 0;
  const SInt32 highest = static_cast<SInt32>((UInt32{1} << (bits - 1)) - 1);
  if (value > highest) return 0.5;
  if (value < -highest) return -0.5;
  if (highest == 0) return 0;
  if (value == highest) return 0.5 - 0.25 / highest;
  if (value == -highest) return 0.25 / highest - 0.5;
  return value / (2.0 * highest);
}

SInt32 CO_UnitIntervalToSInt(double x, SInt32 bits) {
  if (!IsFullRangeDepth(bits)) return 0;
  const double span = static_cast<double>((SInt64{1} << bits) - 2);
  return static_cast<SInt32>(std::trunc(Limited(x, -0.5, 0.5) * span + 0.5));
}

double CO_UIntVRToUnitInterval(UInt32 value, SInt32 bits, Boolean clamp) {
  if (!IsVideoRangeDepth(bits)) return 0;
  const double x = UnitOfVideoCode(value, bits, 235);
  return clamp ? Limited(x, 0.0, 1.0) : x;
}

UInt32 CO_UnitIntervalToUIntVR(double x, SInt32 bits) {
  return IsVideoRangeDepth(bits) ? VideoCodeOfUnit(x, bits, 219, 16) : 0;
}

double CO_SIntVRToUnitInterval(UInt32 value, SInt32 bits, Boolean clamp) {
  if (!IsVideoRangeDepth(bits)) return 0;
  const double x = UnitOfVideoCode(value, bits, 240) - 0.5;
  return clamp ? Limited(x, -0.5, 0.5) : x;
}

UInt32 CO_UnitIntervalToSIntVR(double x, SInt32 bits) {
  return IsVideoRangeDepth(bits) ? VideoCodeOfUnit(x, bits, 224, 128) : 0;
}
