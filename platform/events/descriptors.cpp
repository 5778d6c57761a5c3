#include "descriptors.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>

#include "descriptor_data.h"

using quillmere::OwnedDescriptor;
using quillmere::events::IsList;
using quillmere::events::IsRecord;

namespace {

constexpr auto kParamErr = static_cast<OSErr>(paramErr);

struct CoercionHandler {
  AECoerceDescUPP function;
  SInt64 refcon;
};

/// The coercions that the process has installed.
struct InstalledCoercions {
  std::mutex mutex;
  std::map<std::pair<OSType, OSType>, CoercionHandler> handlers;
};

InstalledCoercions& Coercions() {
  static auto* coercions = new InstalledCoercions;
  return *coercions;
}

OSErr CoerceByHandler(const AEDesc* from, OSType type, AEDesc* to) {
  CoercionHandler handler{};
  {
    InstalledCoercions& coercions = Coercions();
    const std::lock_guard lock(coercions.mutex);
    const auto found = coercions.handlers.find({from->descriptorType, type});
    if (found == coercions.handlers.end()) return errAECoercionFail;
    handler = found->second;
  }
  return handler.function(from, type, handler.refcon, to);
}

std::vector<DescriptorEntry> CopyOf(const std::vector<DescriptorEntry>& entries) {
  std::vector<DescriptorEntry> copies(entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    copies[i].keyword = entries[i].keyword;
    AEDuplicateDesc(entries[i].value.get(), copies[i].value.get());
  }
  return copies;
}

/// Puts `value` in the place of what `descriptor` holds, and leaves it a null descriptor.
void Replace(AEDesc* descriptor, OwnedDescriptor& value) {
  AEDisposeDesc(descriptor);
  *descriptor = value.release();
}

const AEDesc* Find(const std::vector<DescriptorEntry>& entries, AEKeyword keyword) {
  const auto found = std::ranges::find(entries, keyword, &DescriptorEntry::keyword);
  return found == entries.end() ? nullptr : found->value.get();
}

OSErr Put(std::vector<DescriptorEntry>* entries, AEKeyword keyword, OwnedDescriptor value) {
  const auto found = std::ranges::find(*entries, keyword, &DescriptorEntry::keyword);
  if (found != entries->end()) {
    Replace(found->value.get(), value);
  } else {
    entries->push_back({keyword, std::move(value)});
  }
  return noErr;
}

OSErr PutCopy(std::vector<DescriptorEntry>* entries, AEKeyword keyword, const AEDesc* descriptor) {
  OwnedDescriptor value;
  const OSErr status = AEDuplicateDesc(descriptor, value.get());
  return status != noErr ? status : Put(entries, keyword, std::move(value));
}

OSErr PutBytes(std::vector<DescriptorEntry>* entries, AEKeyword keyword, OSType type,
               const void* data, Size size) {
  OwnedDescriptor value;
  const OSErr status = AECreateDesc(type, data, size, value.get());
  return status != noErr ? status : Put(entries, keyword, std::move(value));
}

OSErr SetItem(AEDescList* list, SInt32 index, OwnedDescriptor value) {
  if (!IsList(list)) return errAEWrongDataType;
  auto& items = list->dataHandle->items;
  const auto count = static_cast<SInt32>(items.size());
  if (index < 0 || index > count + 1) return errAEDescNotFound;
  if (index == 0 || index == count + 1) {
    items.push_back({0, std::move(value)});
  } else {
    Replace(items[static_cast<std::size_t>(index - 1)].value.get(), value);
  }
  return noErr;
}

OSErr ItemAt(const AEDescList* list, SInt32 index, const DescriptorEntry** entry) {
  if (!IsList(list) && !IsRecord(list)) return errAEWrongDataType;
  const auto& items = list->dataHandle->items;
  if (index < 1 || index > static_cast<SInt32>(items.size())) return errAEDescNotFound;
  *entry = &items[static_cast<std::size_t>(index - 1)];
  return noErr;
}

/// Copies `descriptor` (null: there is none), coerced to `type`, to `data`.
OSErr CopyCoerced(const AEDesc* descriptor, OSType type, OSType* actual_type, void* data,
                  Size capacity, Size* actual_size) {
  if (descriptor == nullptr) return errAEDescNotFound;
  if (capacity < 0 || (data == nullptr && capacity > 0)) return kParamErr;
  OwnedDescriptor coerced;
  const OSErr status = AECoerceDesc(descriptor, type, coerced.get());
  if (status != noErr) return status;
  if (actual_type != nullptr) *actual_type = coerced.get()->descriptorType;
  if (actual_size != nullptr) *actual_size = AEGetDescDataSize(coerced.get());
  return capacity == 0 ? static_cast<OSErr>(noErr) : AEGetDescData(coerced.get(), data, capacity);
}

}  // namespace

void quillmere::events::Put(AERecord* record, AEKeyword keyword, OwnedDescriptor value) {
  ::Put(&record->dataHandle->items, keyword, std::move(value));
}

OSErr AECreateDesc(OSType type, const void* data, Size size, AEDesc* descriptor) {
  if (descriptor == nullptr || size < 0 || (data == nullptr && size > 0)) return kParamErr;
  auto content = std::make_unique<DescriptorData>();
  const auto* bytes = static_cast<const UInt8*>(data);
  content->bytes.assign(bytes, bytes + size);
  *descriptor = {type, content.release()};
  return noErr;
}

void AEInitializeDesc(AEDesc* descriptor) {
  if (descriptor != nullptr) *descriptor = {typeNull, nullptr};
}

OSErr AEDisposeDesc(AEDesc* descriptor) {
  if (descriptor == nullptr) return noErr;
  const std::unique_ptr<DescriptorData> last(descriptor->dataHandle);
  AEInitializeDesc(descriptor);
  return noErr;
}

OSErr AEDuplicateDesc(const AEDesc* from, AEDesc* to) {
  if (from == nullptr || to == nullptr) return kParamErr;
  if (from->dataHandle == nullptr) {
    *to = {from->descriptorType, nullptr};
    return noErr;
  }
  auto content = std::make_unique<DescriptorData>();
  content->bytes = from->dataHandle->bytes;
  content->is_record = from->dataHandle->is_record;
  content->items = CopyOf(from->dataHandle->items);
  content->attributes = CopyOf(from->dataHandle->attributes);
  *to = {from->descriptorType, content.release()};
  return noErr;
}

OSErr AECoerceDesc(const AEDesc* from, OSType type, AEDesc* to) {
  if (from == nullptr || to == nullptr) return kParamErr;
  if (from->descriptorType == type || type == typeWildCard) return AEDuplicateDesc(from, to);
  const OSErr status = CoerceByHandler(from, type, to);
  if (status != errAECoercionFail) return status;
  return quillmere::events::CoerceBuiltIn(*from, type, to);
}

OSErr AEInstallCoercionHandler(OSType from, OSType to, AECoerceDescUPP handler, SInt64 refcon,
                               Boolean from_type_is_desc, Boolean is_system) {
  if (handler == nullptr || !from_type_is_desc || is_system) return kParamErr;
  InstalledCoercions& coercions = Coercions();
  const std::lock_guard lock(coercions.mutex);
  coercions.handlers[{from, to}] = {handler, refcon};
  return noErr;
}

OSErr AEGetDescData(const AEDesc* descriptor, void* data, Size capacity) {
  if (descriptor == nullptr || data == nullptr || capacity < 0) return kParamErr;
  if (IsList(descriptor) || IsRecord(descriptor)) return errAEWrongDataType;
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

OSErr AECreateList(AEDescList* list, Boolean is_record) {
  if (list == nullptr) return kParamErr;
  auto content = std::make_unique<DescriptorData>();
  content->is_record = is_record != 0;
  *list = {is_record ? typeAERecord : typeAEList, content.release()};
  return noErr;
}

OSErr AECountItems(const AEDescList* list, SInt32* count) {
  if (count == nullptr) return kParamErr;
  if (!IsList(list) && !IsRecord(list)) return errAEWrongDataType;
  *count = static_cast<SInt32>(list->dataHandle->items.size());
  return noErr;
}

OSErr AEPutPtr(AEDescList* list, SInt32 index, OSType type, const void* data, Size size) {
  OwnedDescriptor value;
  const OSErr status = AECreateDesc(type, data, size, value.get());
  return status != noErr ? status : SetItem(list, index, std::move(value));
}

OSErr AEPutDesc(AEDescList* list, SInt32 index, const AEDesc* descriptor) {
  OwnedDescriptor value;
  const OSErr status = AEDuplicateDesc(descriptor, value.get());
  return status != noErr ? status : SetItem(list, index, std::move(value));
}

OSErr AEGetNthPtr(const AEDescList* list, SInt32 index, OSType type, AEKeyword* keyword,
                  OSType* actual_type, void* data, Size capacity, Size* actual_size) {
  const DescriptorEntry* entry = nullptr;
  OSErr status = ItemAt(list, index, &entry);
  if (status == noErr) {
    status = CopyCoerced(entry->value.get(), type, actual_type, data, capacity, actual_size);
  }
  if (status == noErr && keyword != nullptr) *keyword = entry->keyword;
  return status;
}

OSErr AEGetNthDesc(const AEDescList* list, SInt32 index, OSType type, AEKeyword* keyword,
                   AEDesc* descriptor) {
  const DescriptorEntry* entry = nullptr;
  OSErr status = ItemAt(list, index, &entry);
  if (status == noErr) status = AECoerceDesc(entry->value.get(), type, descriptor);
  if (status == noErr && keyword != nullptr) *keyword = entry->keyword;
  return status;
}

Boolean AECheckIsRecord(const AEDesc* descriptor) {
  return IsRecord(descriptor);
}

OSErr AEPutParamPtr(AERecord* record, AEKeyword keyword, OSType type, const void* data, Size size) {
  if (!IsRecord(record)) return errAEWrongDataType;
  return PutBytes(&record->dataHandle->items, keyword, type, data, size);
}

OSErr AEPutParamDesc(AERecord* record, AEKeyword keyword, const AEDesc* descriptor) {
  if (!IsRecord(record)) return errAEWrongDataType;
  return PutCopy(&record->dataHandle->items, keyword, descriptor);
}

OSErr AEGetParamPtr(const AERecord* record, AEKeyword keyword, OSType type, OSType* actual_type,
                    void* data, Size capacity, Size* actual_size) {
  if (!IsRecord(record)) return errAEWrongDataType;
  return CopyCoerced(Find(record->dataHandle->items, keyword), type, actual_type, data, capacity,
                     actual_size);
}

OSErr AEGetParamDesc(const AERecord* record, AEKeyword keyword, OSType type, AEDesc* descriptor) {
  if (!IsRecord(record)) return errAEWrongDataType;
  const AEDesc* value = Find(record->dataHandle->items, keyword);
  return value == nullptr ? errAEDescNotFound : AECoerceDesc(value, type, descriptor);
}

OSErr AESizeOfParam(const AERecord* record, AEKeyword keyword, OSType* type, Size* size) {
  return AEGetParamPtr(record, keyword, typeWildCard, type, nullptr, 0, size);
}

OSErr AECreateAppleEvent(OSType event_class, OSType event_id, const AEDesc* target,
                         SInt16 return_id, SInt32 transaction_id, AppleEvent* event) {
  if (event == nullptr) return kParamErr;
  static std::atomic<UInt16> last_return_id = 0;
  const SInt32 id = return_id == kAutoGenerateReturnID
                        ? static_cast<SInt32>(++last_return_id & 0x7FFF)
                        : return_id;
  auto content = std::make_unique<DescriptorData>();
  content->is_record = true;
  auto* const attributes = &content->attributes;
  PutBytes(attributes, keyEventClassAttr, typeType, &event_class, sizeof event_class);
  PutBytes(attributes, keyEventIDAttr, typeType, &event_id, sizeof event_id);
  PutBytes(attributes, keyReturnIDAttr, typeSInt32, &id, sizeof id);
  PutBytes(attributes, keyTransactionIDAttr, typeSInt32, &transaction_id, sizeof transaction_id);
  if (target != nullptr) PutCopy(attributes, keyAddressAttr, target);
  *event = {typeAppleEvent, content.release()};
  return noErr;
}

OSErr AEPutAttributePtr(AppleEvent* event, AEKeyword keyword, OSType type, const void* data,
                        Size size) {
  if (!IsRecord(event)) return errAEWrongDataType;
  return PutBytes(&event->dataHandle->attributes, keyword, type, data, size);
}

OSErr AEPutAttributeDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* descriptor) {
  if (!IsRecord(event)) return errAEWrongDataType;
  return PutCopy(&event->dataHandle->attributes, keyword, descriptor);
}

OSErr AEGetAttributePtr(const AppleEvent* event, AEKeyword keyword, OSType type,
                        OSType* actual_type, void* data, Size capacity, Size* actual_size) {
  if (!IsRecord(event)) return errAEWrongDataType;
  return CopyCoerced(Find(event->dataHandle->attributes, keyword), type, actual_type, data,
                     capacity, actual_size);
}

OSErr AEGetAttributeDesc(const AppleEvent* event, AEKeyword keyword, OSType type,
                         AEDesc* descriptor) {
  if (!IsRecord(event)) return errAEWrongDataType;
  const AEDesc* value = Find(event->dataHandle->attributes, keyword);
  return value == nullptr ? errAEDescNotFound : AECoerceDesc(value, type, descriptor);
}
