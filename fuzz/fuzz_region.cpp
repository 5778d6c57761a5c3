// The flat form of a region and the dictionary that keeps it: bounds of four words, then any bits.
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "GL_CF.h"
#include "GL_QuickDraw_Regions.h"
#include "reference_counted.h"
#include "regions.h"

extern "C" int LLVMFuzzerTestOneInput(const UInt8* bytes, std::size_t size) {
  Rect bounds = {};
  if (size < sizeof bounds) return 0;
  std::memcpy(&bounds, bytes, sizeof bounds);
  // Bounds of any size are a region's; a walk over billions of pixels is no use here.
  bounds.right = std::min<SInt16>(bounds.right, static_cast<SInt16>(bounds.left / 2 + 512));
  const quillmere::Owned<CFMutableDictionaryRef> dictionary(
      CFDictionaryCreateMutable(kCFAllocatorDefault));
  CF_AddRectToDict(dictionary.get(), CFSTR("Bounds"), &bounds);
  CF_AddDataToDict(dictionary.get(), CFSTR("Bits"), bytes + sizeof bounds,
                   static_cast<UInt32>(size - sizeof bounds));
  RgnHandle region = nullptr;
  CF_GetRgnFromDict(dictionary.get(), &region);
  if (region == nullptr) std::abort();
  // What was read can be written, and reads back as the same.
  const quillmere::Owned<CFDictionaryRef> again(CF_CreateRgnDict(region));
  RgnHandle copy = nullptr;
  CF_GetRgnFromDict(again.get(), &copy);
  if (!EqualRgn(region, copy)) std::abort();
  DisposeRgn(copy);
  DisposeRgn(region);
  return 0;
}
