#include "unicode_collation.h"

OSStatus UCCompareTextNoLocale(UInt32 options, const UniChar* text1, UniCharCount length1,
                               const UniChar* text2, UniCharCount length2, Boolean* equivalent,
                               SInt32* order) {
  const bool is_missing = (!text1 && length1 > 0) || (!text2 && length2 > 0);
  if (options != kUCCollateTypeHFSExtended || is_missing) return paramErr;
  const quillmere::Owned<CFStringRef> a(
      CFStringCreateWithCharacters(kCFAllocatorDefault, text1, static_cast<CFIndex>(length1)));
  const quillmere::Owned<CFStringRef> b(
      CFStringCreateWithCharacters(kCFAllocatorDefault, text2, static_cast<CFIndex>(length2)));
  const CFComparisonResult result = CFStringCompare(a.get(), b.get(), kCFCompareCaseInsensitive);
  if (equivalent) *equivalent = result == kCFCompareEqualTo;
  if (order) *order = result;
  return noErr;
}
