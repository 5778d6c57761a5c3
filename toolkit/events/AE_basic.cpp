#include "AE_basic.h"

#include <cstring>
#include <iterator>
#include <vector>

#include "reference_counted.h"

namespace {

using quillmere::Owned;

/// Names of build errors by code, in MacRoman.
constexpr const char* kBuildErrorNames[] = {
    "No error",
    "Illegal character",
    "Unexpected end of format string",
    "Unexpected extra stuff past end",
    "\"-\" not followed by digits",
    "Missing close \"'\"",
    "Non-digit in hex string",
    "Odd # of hex digits",
    "Missing $ or \"\xC3\x88\"",
    "Hex string must be coerced to a type",
    "Missing closing quote",
    "Illegal descriptor",
    "Bad data value inside (...)",
    "Missing \")\" after data value",
    "Expected \",\" or \"]\"",
    "Expected \",\" or \"}\"",
    "Missing keyword in record",
    "Missing \":\" after keyword in record",
    "Cannot coerce a list",
    "\"@@\" substitution must be coerced",
};
static_assert(std::size(kBuildErrorNames) == aeBuildSyntaxUncoercedDoubleAt + 1);

}  // namespace

SInt32 AE_NullDesc(AEDesc* descriptor) {
  if (descriptor == nullptr) return paramErr;
  AEInitializeDesc(descriptor);
  return noErr;
}

SInt32 AE_DisposeDesc(AEDesc* descriptor) {
  return descriptor == nullptr ? paramErr : AEDisposeDesc(descriptor);
}

SInt32 AE_CStringToDescAsUTF8(const char* string, AEDesc* descriptor) {
  if (string == nullptr) return paramErr;
  return AECreateDesc("utf8"_4cc, string, static_cast<Size>(std::strlen(string)), descriptor);
}

SInt32 AE_CFStringToDescAsUTF16(CFStringRef string, AEDesc* descriptor) {
  if (string == nullptr) return paramErr;
  std::vector<UInt8> bytes;
  for (const UniChar unit : quillmere::UnitsOf(string)) {
    bytes.push_back(static_cast<UInt8>(unit >> 8));
    bytes.push_back(static_cast<UInt8>(unit & 0xFF));
  }
  return AECreateDesc("ut16"_4cc, bytes.data(), static_cast<Size>(bytes.size()), descriptor);
}

void AE_BuildErrorToAEDesc(const AEBuildError* error, AEDesc* descriptor) {
  if (AE_NullDesc(descriptor) != noErr || error == nullptr) return;
  const char* const name = error->fError < std::size(kBuildErrorNames)
                               ? kBuildErrorNames[error->fError]
                               : "Unknown error";
  const Owned<CFStringRef> name_text(
      CFStringCreateWithCString(kCFAllocatorDefault, name, kCFStringEncodingMacRoman));
  if (!name_text) return;
  const Owned<CFStringRef> text(CFStringCreateWithFormat(
      kCFAllocatorDefault, nullptr, CFSTR("Error %d (%@) found at position %d."),
      static_cast<int>(error->fError), name_text.get(), static_cast<int>(error->fErrorPos)));
  if (text) AE_CFStringToDescAsUTF16(text.get(), descriptor);
}
