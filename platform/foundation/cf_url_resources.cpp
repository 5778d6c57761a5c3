#include "cf_url_resources.h"

#include <span>
#include <vector>

#include "whole_files.h"

namespace {

constexpr std::size_t kLargestResource = std::size_t{256} << 20;

Boolean Report(OSStatus result, SInt32* status) {
  if (status) *status = result;
  return result == noErr ? 1 : 0;
}

}  // namespace

Boolean CFURLCreateDataAndPropertiesFromResource(CFAllocatorRef allocator, CFURLRef url,
                                                 CFDataRef* data, CFDictionaryRef*, CFArrayRef,
                                                 SInt32* status) {
  if (data) *data = nullptr;
  if (!url || !data) return Report(paramErr, status);
  std::vector<UInt8> bytes;
  const OSStatus result =
      quillmere::ReadWholeFile(quillmere::PathOf(url), kLargestResource, &bytes);
  if (!result) *data = CFDataCreate(allocator, bytes.data(), std::ssize(bytes));
  return Report(result, status);
}

Boolean CFURLWriteDataAndPropertiesToResource(CFURLRef url, CFDataRef data, CFDictionaryRef,
                                              SInt32* status) {
  if (!url || !data) return Report(paramErr, status);
  const std::span bytes(CFDataGetBytePtr(data), static_cast<std::size_t>(CFDataGetLength(data)));
  return Report(quillmere::ReplaceWholeFile(quillmere::PathOf(url), bytes, false), status);
}
