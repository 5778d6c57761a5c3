#include "launch_services.h"

#include <filesystem>
#include <string_view>

namespace {

/// Position behind the full stop that begins the extension; npos for none.
template <class Char>
std::size_t ExtensionStart(std::basic_string_view<Char> name) {
  const std::size_t stop = name.rfind(Char{'.'});
  const bool none = stop == name.npos || stop == 0 || stop + 1 == name.size();
  return none ? name.npos : stop + 1;
}

}  // namespace

const CFStringRef kLSItemExtension = CFSTR("LSItemExtension");

OSStatus LSCopyItemAttribute(const FSRef* reference, SInt32, CFStringRef name, CFTypeRef* value) {
  if (reference == nullptr || name == nullptr || value == nullptr) return paramErr;
  *value = nullptr;
  if (CFStringCompare(name, kLSItemExtension, 0) != kCFCompareEqualTo) {
    return kLSAttributeNotFoundErr;
  }
  std::filesystem::path path;
  const OSStatus status = quillmere::files::PathOf(*reference, &path);
  if (status) return status;
  const std::string file_name = path.filename().native();
  const std::size_t start = ExtensionStart(std::string_view(file_name));
  if (start == std::string::npos) return kLSAttributeNotFoundErr;
  *value = quillmere::CreateFromUtf8(std::string_view(file_name).substr(start));
  return noErr;
}

OSStatus LSGetExtensionInfo(UniCharCount length, const UniChar* name, UniCharCount* start) {
  if (start == nullptr) return paramErr;
  *start = kLSInvalidExtensionIndex;
  if (name == nullptr && length > 0) return paramErr;
  if (length == 0) return noErr;
  const std::size_t found =
      ExtensionStart(std::u16string_view(name, static_cast<std::size_t>(length)));
  if (found != std::u16string_view::npos) *start = found;
  return noErr;
}
