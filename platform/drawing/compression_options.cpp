#include "compression_options.h"

#include <cstring>
#include <vector>

#include "image_descriptions.h"

struct ICMCompressionSessionOptions final : CFObject {
  std::vector<char> settings;
  CompressorComponent compressor = nullptr;
  CodecQ quality = codecNormalQuality;
};

namespace {

bool IsOption(OSType property_class) {
  return property_class == kQTPropertyClass_ICMCompressionSessionOptions;
}

template <class T>
OSStatus Take(ByteCount size, const void* value, T* option) {
  if (value == nullptr || size != sizeof *option) return paramErr;
  std::memcpy(option, value, sizeof *option);
  return noErr;
}

template <class T>
OSStatus Give(const T& option, ByteCount size, void* value, ByteCount* size_used) {
  if (value == nullptr || size != sizeof option) return paramErr;
  std::memcpy(value, &option, sizeof option);
  if (size_used != nullptr) *size_used = sizeof option;
  return noErr;
}

OSStatus TakeSettings(ByteCount size, const void* value, std::vector<char>* settings) {
  Handle handle = nullptr;
  const OSStatus status = Take(size, value, &handle);
  if (status) return status;
  settings->clear();
  if (handle != nullptr) settings->assign(*handle, *handle + GetHandleSize(handle));
  return noErr;
}

OSStatus GiveSettings(const std::vector<char>& settings, ByteCount size, void* value,
                      ByteCount* size_used) {
  Handle handle = nullptr;
  const OSErr status = PtrToHand(settings.data(), &handle, static_cast<Size>(settings.size()));
  if (status) return status;
  const OSStatus given = Give(handle, size, value, size_used);
  if (given) DisposeHandle(handle);
  return given;
}

}  // namespace

OSStatus ICMCompressionSessionOptionsCreate(CFAllocatorRef /*allocator*/,
                                            ICMCompressionSessionOptionsRef* options) {
  if (options == nullptr) return paramErr;
  *options = new ICMCompressionSessionOptions;
  return noErr;
}

void ICMCompressionSessionOptionsRelease(ICMCompressionSessionOptionsRef options) {
  CFRelease(options);
}

OSStatus ICMCompressionSessionOptionsSetProperty(ICMCompressionSessionOptionsRef options,
                                                 OSType property_class, OSType property_id,
                                                 ByteCount size, const void* value) {
  if (options == nullptr) return paramErr;
  if (!IsOption(property_class)) return kQTPropertyNotSupportedErr;
  switch (property_id) {
    case kICMCompressionSessionOptionsPropertyID_CompressorSettings:
      return TakeSettings(size, value, &options->settings);
    case kICMCompressionSessionOptionsPropertyID_CompressorComponent:
      return Take(size, value, &options->compressor);
    case kICMCompressionSessionOptionsPropertyID_Quality:
      return Take(size, value, &options->quality);
    default:
      return kQTPropertyNotSupportedErr;
  }
}

OSStatus ICMCompressionSessionOptionsGetProperty(ICMCompressionSessionOptionsRef options,
                                                 OSType property_class, OSType property_id,
                                                 ByteCount size, void* value,
                                                 ByteCount* size_used) {
  if (options == nullptr) return paramErr;
  if (!IsOption(property_class)) return kQTPropertyNotSupportedErr;
  switch (property_id) {
    case kICMCompressionSessionOptionsPropertyID_CompressorSettings:
      return GiveSettings(options->settings, size, value, size_used);
    case kICMCompressionSessionOptionsPropertyID_CompressorComponent:
      return Give(options->compressor, size, value, size_used);
    case kICMCompressionSessionOptionsPropertyID_Quality:
      return Give(options->quality, size, value, size_used);
    default:
      return kQTPropertyNotSupportedErr;
  }
}
