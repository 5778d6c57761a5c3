#include "descriptors.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "file_references.h"
#include "text_coercions.h"

struct DescriptorData {
  std::vector<UInt8> bytes;
  std::vector<AEDesc> items;

  DescriptorData() = default;
  DescriptorData(const DescriptorData&) = delete;
  DescriptorData& operator=(const DescriptorData&) = delete;
  ~DescriptorData() {
    for (AEDesc& item : items)
      AEDisposeDesc(&item);
  }
};

namespace {

std::string UnescapedPath(std::string_view text) {
  constexpr std::string_view kScheme = "file://";
  if (text.substr(0, kScheme.size()) != kScheme) return std::string(text);
  text.remove_prefix(kScheme.size());
  text.remove_prefix(std::min(text.find('/'), text.size()));  // the host
  std::string path;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto digit = [](char c) -> int {
      if (c >= '0' && c <= '9') return c - '0';
      const int letter = (c | 0x20) - 'a';
      return letter >= 0 && letter < 6 ? letter + 10 : -1;
    };
    if (text[i] == '%' && i + 2 < text.size() && digit(text[i + 1]) >= 0 &&
        digit(text[i + 2]) >= 0) {
      path += static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2]));
      i += 2;
    } else {
      path += text[i];
    }
  }
  return path;
}

OSErr CoerceToReference(const AEDesc& from, AEDesc* to) {
  const auto& bytes = from.dataHandle->bytes;
  const std::string path =
      UnescapedPath({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  FSRef reference{};
  if (quillmere::files::ReferenceOf(path, &reference) != noErr) return errAECoercionFail;
  return AECreateDesc(typeFSRef, &reference, sizeof reference, to);
}

OSErr CoerceToPath(const AEDesc& from, AEDesc* to) {
  FSRef reference{};
  std::filesystem::path path;
  if (AEGetDescDataSize(&from) != sizeof reference) return errAECoercionFail;
  AEGetDescData(&from, &reference, sizeof reference);
  if (quillmere::files::PathOf(reference, &path) != noErr) return errAECoercionFail;
  const std::string& text = path.native();
  return AECreateDesc(typeFileURL, text.data(), static_cast<Size>(text.size()), to);
}

bool IsList(const AEDesc* descriptor) {
  return descriptor != nullptr && descriptor->descriptorType == typeAEList &&
         descriptor->dataHandle != nullptr;
}

}  // namespace

OSErr AECreateDesc(OSType type, const void* data, Size size, AEDesc* descriptor) {
  if (descriptor == nullptr || size < 0 || (data == nullptr && size > 0)) {
    return static_cast<OSErr>(paramErr);
  }
  auto content = std::make_unique<DescriptorData>();
  const auto* bytes = static_cast<const UInt8*>(data);
  content->bytes.assign(bytes, bytes + size);
  *descriptor = {type, content.release()};
  return noErr;
}

OSErr AEDisposeDesc(AEDesc* descriptor) {
  if (descriptor == nullptr) return noErr;
  const std::unique_ptr<DescriptorData> last(descriptor->dataHandle);
  *descriptor = {typeNull, nullptr};
  return noErr;
}

OSErr AEDuplicateDesc(const AEDesc* from, AEDesc* to) {
  if (from == nullptr || to == nullptr) return static_cast<OSErr>(paramErr);
  if (from->dataHandle == nullptr) {
    *to = {from->descriptorType, nullptr};
    return noErr;
  }
  auto content = std::make_unique<DescriptorData>();
  content->bytes = from->dataHandle->bytes;
  for (const AEDesc& item : from->dataHandle->items) {
    AEDesc copy{};
    AEDuplicateDesc(&item, &copy);
    content->items.push_back(copy);
  }
  *to = {from->descriptorType, content.release()};
  return noErr;
}

OSErr AECoerceDesc(const AEDesc* from, OSType type, AEDesc* to) {
  if (from == nullptr || to == nullptr) return static_cast<OSErr>(paramErr);
  if (from->descriptorType == type) return AEDuplicateDesc(from, to);
  if (from->dataHandle == nullptr) return errAECoercionFail;
  if (from->descriptorType == typeFileURL && type == typeFSRef) return CoerceToReference(*from, to);
  if (from->descriptorType == typeFSRef && type == typeFileURL) return CoerceToPath(*from, to);
  std::vector<UInt8> text;
  if (quillmere::events::CoerceText(from->descriptorType, from->dataHandle->bytes, type, &text)) {
    return AECreateDesc(type, text.data(), static_cast<Size>(text.size()), to);
  }
  return errAECoercionFail;
}

OSErr AEGetDescData(const AEDesc* descriptor, void* data, Size capacity) {
  if (descriptor == nullptr || data == nullptr || capacity < 0) return static_cast<OSErr>(paramErr);
  if (descriptor->descriptorType == typeAEList) return errAEWrongDataType;
  if (descriptor->dataHandle == nullptr) return noErr;
  const auto& bytes = descriptor->dataHandle->bytes;
  const auto count = std::min(bytes.size(), static_cast<std::size_t>(capacity));
  if (count > 0) std::memcpy(data, bytes.data(), count);
  return noErr;
}

Size AEGetDescDataSize(const AEDesc* descriptor) {
  if (descriptor == nullptr || descriptor->dataHandle == nullptr) return 0;
  return static_cast<Size>(descriptor->dataHandle->bytes.size());
}

OSErr AECreateList(AEDescList* list) {
  if (list == nullptr) return static_cast<OSErr>(paramErr);
  *list = {typeAEList, std::make_unique<DescriptorData>().release()};
  return noErr;
}

OSErr AEPutPtr(AEDescList* list, SInt32 index, OSType type, const void* data, Size size) {
  if (!IsList(list)) return errAEWrongDataType;
  auto& items = list->dataHandle->items;
  const auto count = static_cast<SInt32>(items.size());
  if (index < 0 || index > count + 1) return errAEDescNotFound;
  AEDesc item{};
  const OSErr status = AECreateDesc(type, data, size, &item);
  if (status != noErr) return status;
  if (index == 0 || index == count + 1) {
    items.push_back(item);
  } else {
    AEDesc& present = items[static_cast<std::size_t>(index - 1)];
    AEDisposeDesc(&present);
    present = item;
  }
  return noErr;
}

OSErr AECountItems(const AEDescList* list, SInt32* count) {
  if (count == nullptr) return static_cast<OSErr>(paramErr);
  if (!IsList(list)) return errAEWrongDataType;
  *count = static_cast<SInt32>(list->dataHandle->items.size());
  return noErr;
}

OSErr AEGetNthPtr(const AEDescList* list, SInt32 index, OSType type, OSType* keyword,
                  OSType* actual_type, void* data, Size capacity, Size* actual_size) {
  if (!IsList(list)) return errAEWrongDataType;
  const auto& items = list->dataHandle->items;
  if (index < 1 || index > static_cast<SInt32>(items.size())) return errAEDescNotFound;
  AEDesc coerced{};
  OSErr status = AECoerceDesc(&items[static_cast<std::size_t>(index - 1)], type, &coerced);
  if (status != noErr) return status;
  if (keyword != nullptr) *keyword = 0;
  if (actual_type != nullptr) *actual_type = type;
  if (actual_size != nullptr) *actual_size = AEGetDescDataSize(&coerced);
  status = AEGetDescData(&coerced, data, capacity);
  AEDisposeDesc(&coerced);
  return status;
}
