#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "GL_CF.h"
#include "GL_CF_private.h"
#include "GL_Memory.h"
#include "GL_QuickDraw_Regions.h"
#include "GL_QuickDraw_deprecated.h"
#include "GL_Strings_Unicode.h"

namespace {

using quillmere::Owned;
using quillmere::cf::ArrayIn;
using quillmere::cf::DataIn;
using quillmere::cf::DictionaryIn;
using quillmere::cf::NumberIn;
using quillmere::cf::StringIn;

constexpr CFIndex kLongestMacRomanText = 255;
const CFStringRef kBounds = CFSTR("Bounds");
const CFStringRef kBits = CFSTR("Bits");

/// Stores an object that was just made; the dictionary becomes its only owner.
template <class Ref>
void Add(CFMutableDictionaryRef dictionary, CFStringRef key, Ref made) {
  const Owned<Ref> value(made);
  CFDictionarySetValue(dictionary, key, value.get());
}

void AddNumber(CFMutableDictionaryRef dictionary, CFStringRef key, CFNumberType type,
               const void* value) {
  Add(dictionary, key, CFNumberCreate(kCFAllocatorDefault, type, value));
}

void GetNumber(CFDictionaryRef dictionary, CFStringRef key, CFNumberType type, void* value) {
  CFNumberGetValue(NumberIn(dictionary, key), type, value);
}

CFDataRef CreateData(const void* bytes, Size size) {
  return CFDataCreate(kCFAllocatorDefault, static_cast<const UInt8*>(bytes), size);
}

}  // namespace

void CF_AddSInt8ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt8 value) {
  AddNumber(dictionary, key, kCFNumberSInt8Type, &value);
}

void CF_AddSInt16ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt16 value) {
  AddNumber(dictionary, key, kCFNumberSInt16Type, &value);
}

void CF_AddSInt32ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt32 value) {
  AddNumber(dictionary, key, kCFNumberSInt32Type, &value);
}

void CF_AddSInt64ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt64 value) {
  AddNumber(dictionary, key, kCFNumberSInt64Type, &value);
}

void CF_AddFloat32ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Float32 value) {
  AddNumber(dictionary, key, kCFNumberFloat32Type, &value);
}

void CF_AddFloat64ToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Float64 value) {
  AddNumber(dictionary, key, kCFNumberFloat64Type, &value);
}

void CF_GetSInt8FromDict(CFDictionaryRef dictionary, CFStringRef key, SInt8* value) {
  GetNumber(dictionary, key, kCFNumberSInt8Type, value);
}

void CF_GetSInt16FromDict(CFDictionaryRef dictionary, CFStringRef key, SInt16* value) {
  GetNumber(dictionary, key, kCFNumberSInt16Type, value);
}

void CF_GetSInt32FromDict(CFDictionaryRef dictionary, CFStringRef key, SInt32* value) {
  GetNumber(dictionary, key, kCFNumberSInt32Type, value);
}

void CF_GetSInt64FromDict(CFDictionaryRef dictionary, CFStringRef key, SInt64* value) {
  GetNumber(dictionary, key, kCFNumberSInt64Type, value);
}

void CF_GetUInt8FromDict(CFDictionaryRef dictionary, CFStringRef key, UInt8* value) {
  CF_GetUInt8FromNumberRef(NumberIn(dictionary, key), value);
}

void CF_GetUInt16FromDict(CFDictionaryRef dictionary, CFStringRef key, UInt16* value) {
  CF_GetUInt16FromNumberRef(NumberIn(dictionary, key), value);
}

void CF_GetUInt32FromDict(CFDictionaryRef dictionary, CFStringRef key, UInt32* value) {
  CF_GetUInt32FromNumberRef(NumberIn(dictionary, key), value);
}

void CF_GetUInt64FromDict(CFDictionaryRef dictionary, CFStringRef key, UInt64* value) {
  CF_GetUInt64FromNumberRef(NumberIn(dictionary, key), value);
}

void CF_GetFloat32FromDict(CFDictionaryRef dictionary, CFStringRef key, Float32* value) {
  GetNumber(dictionary, key, kCFNumberFloat32Type, value);
}

void CF_GetFloat64FromDict(CFDictionaryRef dictionary, CFStringRef key, Float64* value) {
  GetNumber(dictionary, key, kCFNumberFloat64Type, value);
}

void CF_AddEnumToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt32 value) {
  Add(dictionary, key, CF_NumberCreateFromEnum(value));
}

SInt32 CF_GetEnumFromDict(CFDictionaryRef dictionary, CFStringRef key) {
  return CF_GetEnumFromNumberRef(NumberIn(dictionary, key));
}

void CF_AddBooleanToDict(CFMutableDictionaryRef dictionary, CFStringRef key, Boolean value) {
  CFDictionarySetValue(dictionary, key, value ? kCFBooleanTrue : kCFBooleanFalse);
}

void CF_GetBooleanFromDict(CFDictionaryRef dictionary, CFStringRef key, Boolean* value) {
  const CFBooleanRef truth = quillmere::AsBoolean(CFDictionaryGetValue(dictionary, key));
  if (truth && value) *value = CFBooleanGetValue(truth);
}

void CF_AddOSTypeToDict(CFMutableDictionaryRef dictionary, CFStringRef key, OSType value) {
  Add(dictionary, key, quillmere::cf::CreateStringOfOSType(value));
}

OSType CF_GetOSTypeFromDict(CFDictionaryRef dictionary, CFStringRef key) {
  return quillmere::cf::OSTypeOfString(StringIn(dictionary, key));
}

void CF_AddRectToDict(CFMutableDictionaryRef dictionary, CFStringRef key, const Rect* rect) {
  Add(dictionary, key, CF_CreateRectCFArray(rect));
}

void CF_GetRectFromDict(CFDictionaryRef dictionary, CFStringRef key, Rect* rect) {
  CF_GetRectFromCFArray(ArrayIn(dictionary, key), rect);
}

void CF_GetPointFromDict(CFDictionaryRef dictionary, CFStringRef key, Point* point) {
  CF_GetPointFromCFArray(ArrayIn(dictionary, key), point);
}

CFDictionaryRef CF_CreateRGBDict(const RGBColor* color) {
  if (!color) return nullptr;
  CFMutableDictionaryRef rgb = CF_DictCreateMut();
  Add(rgb, CFSTR("Red"), CF_CreateUInt16Ref(color->red));
  Add(rgb, CFSTR("Green"), CF_CreateUInt16Ref(color->green));
  Add(rgb, CFSTR("Blue"), CF_CreateUInt16Ref(color->blue));
  return rgb;
}

void CF_GetRGBFromRGBDict(CFDictionaryRef rgb, RGBColor* color) {
  if (!color) return;
  CF_GetUInt16FromDict(rgb, CFSTR("Red"), &color->red);
  CF_GetUInt16FromDict(rgb, CFSTR("Green"), &color->green);
  CF_GetUInt16FromDict(rgb, CFSTR("Blue"), &color->blue);
}

void CF_GetRGBFromDict(CFDictionaryRef dictionary, CFStringRef key, RGBColor* color) {
  if (!color) return;
  const CFDictionaryRef rgb = DictionaryIn(dictionary, key);
  if (rgb) {
    CF_GetRGBFromRGBDict(rgb, color);
  } else {
    *color = {};
  }
}

void CF_AddDurationToDict(CFMutableDictionaryRef dictionary, CFStringRef key, SInt64 seconds) {
  const Owned<CFMutableDictionaryRef> duration(CF_DictCreateMut());
  CF_AddSInt64ToDict(duration.get(), CFSTR("Value"), seconds);
  Add(duration.get(), CFSTR("Descr"), GL_DurationToCFStr(seconds));
  CFDictionarySetValue(dictionary, key, duration.get());
}

void CF_GetDurationFromDict(CFDictionaryRef dictionary, CFStringRef key, SInt64* seconds) {
  if (!seconds) return;
  *seconds = 0;
  CF_GetSInt64FromDict(DictionaryIn(dictionary, key), CFSTR("Value"), seconds);
}

void CF_AddDateToDict(CFMutableDictionaryRef dictionary, CFStringRef key, CFAbsoluteTime time) {
  Add(dictionary, key, CFDateCreate(kCFAllocatorDefault, time));
}

void CF_GetDateFromDict(CFDictionaryRef dictionary, CFStringRef key, CFAbsoluteTime* time) {
  const CFDateRef date = quillmere::AsDate(CFDictionaryGetValue(dictionary, key));
  if (date && time) *time = CFDateGetAbsoluteTime(date);
}

void CF_AddHFSNameToDict(CFMutableDictionaryRef dictionary, CFStringRef key,
                         const HFSUniStr255* name) {
  if (name) Add(dictionary, key, FSCreateStringFromHFSUniStr(kCFAllocatorDefault, name));
}

void CF_GetHFSNameFromDict(CFDictionaryRef dictionary, CFStringRef key, HFSUniStr255* name) {
  if (!name) return;
  const CFStringRef string = StringIn(dictionary, key);
  if (!string || FSGetHFSUniStrFromString(string, name)) name->length = 0;
}

void CF_AddCStringToDict(CFMutableDictionaryRef dictionary, CFStringRef key, const char* text) {
  if (text) CF_AddDataToDict(dictionary, key, text, static_cast<Size>(std::strlen(text)));
}

void CF_GetCStringFromDict(CFDictionaryRef dictionary, CFStringRef key, char* text) {
  if (!text) return;
  const CFDataRef data = DataIn(dictionary, key);
  const CFIndex length = CFDataGetLength(data);
  if (length > 0) std::memcpy(text, CFDataGetBytePtr(data), static_cast<std::size_t>(length));
  text[length] = 0;
}

void CF_AddMacRomanCStringToDict(CFMutableDictionaryRef dictionary, CFStringRef key,
                                 const char* text) {
  Add(dictionary, key, GL_MacRomanCStrToCFStr(text));
}

void CF_GetMacRomanCStringFromDict(CFDictionaryRef dictionary, CFStringRef key, char* text) {
  if (!text) return;
  const CFStringRef string = StringIn(dictionary, key);
  CFIndex used = 0;
  CFStringGetBytes(string, {0, CFStringGetLength(string)}, kCFStringEncodingMacRoman, '?', 0,
                   reinterpret_cast<UInt8*>(text), kLongestMacRomanText, &used);
  text[used] = 0;
}

void CF_AddDataToDict(CFMutableDictionaryRef dictionary, CFStringRef key, const void* bytes,
                      Size size) {
  Add(dictionary, key, CreateData(bytes, size));
}

void CF_AddDataToDictFromHandle(CFMutableDictionaryRef dictionary, CFStringRef key, Handle handle) {
  Add(dictionary, key, CF_HandleToDataRef(handle));
}

void CF_GetDataFromDict(CFDictionaryRef dictionary, CFStringRef key, void** bytes, Size* size) {
  if (!bytes || !size) return;
  *bytes = nullptr;
  *size = 0;
  const CFDataRef data = DataIn(dictionary, key);
  const CFIndex length = CFDataGetLength(data);
  if (length == 0 || GL_NewPtr(length, bytes)) return;
  std::memcpy(*bytes, CFDataGetBytePtr(data), static_cast<std::size_t>(length));
  *size = length;
}

void CF_GetDataFromDictAsHandle(CFDictionaryRef dictionary, CFStringRef key, Handle* handle,
                                Size* size) {
  if (!handle) return;
  *handle = CF_DataRefToHandle(DataIn(dictionary, key));
  if (size) *size = GetHandleSize(*handle);
}

Handle CF_DataRefToHandle(CFDataRef data) {
  if (!data) return nullptr;
  Handle handle = nullptr;
  PtrToHand(CFDataGetBytePtr(data), &handle, CFDataGetLength(data));
  return handle;
}

CFDataRef CF_HandleToDataRef(Handle handle) {
  return handle ? CreateData(*handle, GetHandleSize(handle)) : nullptr;
}

CFDictionaryRef CF_CreateRgnDict(RgnHandle region) {
  CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(kCFAllocatorDefault);
  Rect bounds;
  CF_AddRectToDict(dictionary, kBounds, GetRegionBounds(region, &bounds));
  if (QDD_IsRegionRectangular(region)) return dictionary;
  UInt32* flat = nullptr;
  UInt32 size = 0;
  if (GL_FlattenRgnBitMap(region, &flat, &size) != noErr) {
    CFRelease(dictionary);
    return nullptr;
  }
  CF_AddDataToDict(dictionary, kBits, flat, size);
  std::free(flat);
  return dictionary;
}

void CF_GetRgnFromDict(CFDictionaryRef dictionary, RgnHandle* region) {
  if (!region || !ArrayIn(dictionary, kBounds)) return;
  Rect bounds{};
  CF_GetRectFromDict(dictionary, kBounds, &bounds);
  *region = NewRgn();
  const CFDataRef bits = DataIn(dictionary, kBits);
  if (!bits) return RectRgn(*region, &bounds);
  std::vector<UInt32> flat(static_cast<std::size_t>(CFDataGetLength(bits)) / sizeof(UInt32));
  if (flat.empty()) return;
  std::memcpy(flat.data(), CFDataGetBytePtr(bits), flat.size() * sizeof(UInt32));
  flat[0] = std::min(flat[0], static_cast<UInt32>(flat.size() - 1));
  GL_UnflattenRgnBitMap(flat.data(), &bounds, *region);
}
