/// What stands behind a descriptor.
#pragma once

#include <vector>

#include "descriptors.h"

/// A descriptor under its keyword; 0 in a list.
struct DescriptorEntry {
  AEKeyword keyword = 0;
  quillmere::OwnedDescriptor value;
};

struct DescriptorData {
  std::vector<UInt8> bytes;                 ///< of what is neither list nor record
  bool is_record = false;                   ///< whatever its type
  std::vector<DescriptorEntry> items;       ///< of a list, or a record's parameters
  std::vector<DescriptorEntry> attributes;  ///< of an event
};

namespace quillmere::events {

inline bool IsRecord(const AEDesc* descriptor) {
  return descriptor != nullptr && descriptor->dataHandle != nullptr &&
         descriptor->dataHandle->is_record;
}
inline bool IsList(const AEDesc* descriptor) {
  return descriptor != nullptr && descriptor->dataHandle != nullptr &&
         descriptor->descriptorType == typeAEList;
}

/// Appends to a list without a copy.
inline void Append(AEDescList* list, OwnedDescriptor item) {
  list->dataHandle->items.push_back({0, std::move(item)});
}
/// Puts a parameter into a record without a copy.
void Put(AERecord* record, AEKeyword keyword, OwnedDescriptor value);

/// A coerced copy of the built-in kinds: `type` is neither the descriptor's own nor the wildcard.
OSErr CoerceBuiltIn(const AEDesc& from, OSType type, AEDesc* to);

}  // namespace quillmere::events
