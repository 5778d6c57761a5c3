/// What the sources of GL_CF share: looking a value up as a kind, and codes as strings.
#pragma once

#include "cf_values.h"

namespace quillmere::cf {

/// The value under a key as the kind, or null if it is missing or of another kind.
inline CFDataRef DataIn(CFDictionaryRef dictionary, CFStringRef key) {
  return AsData(CFDictionaryGetValue(dictionary, key));
}
inline CFStringRef StringIn(CFDictionaryRef dictionary, CFStringRef key) {
  return AsString(CFDictionaryGetValue(dictionary, key));
}
inline CFNumberRef NumberIn(CFDictionaryRef dictionary, CFStringRef key) {
  return AsNumber(CFDictionaryGetValue(dictionary, key));
}
inline CFArrayRef ArrayIn(CFDictionaryRef dictionary, CFStringRef key) {
  return AsArray(CFDictionaryGetValue(dictionary, key));
}
inline CFDictionaryRef DictionaryIn(CFDictionaryRef dictionary, CFStringRef key) {
  return AsDictionary(CFDictionaryGetValue(dictionary, key));
}

/// A string of a code's four characters, zero bytes included; the caller owns it.
CFStringRef CreateStringOfOSType(OSType code);
/// The code of a string's first four characters, zero-filled behind the end; 0 for a null string
/// and for characters that MacRoman does not have.
OSType OSTypeOfString(CFStringRef string);

}  // namespace quillmere::cf
