#include "cf_values.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <variant>
#include <vector>

struct CFBoolean final : CFObject {
  explicit CFBoolean(bool truth) : value(truth) {}
  bool value;
};

struct CFNumber final : CFObject {
  explicit CFNumber(std::variant<SInt64, double> number) : value(number) {}
  std::variant<SInt64, double> value;
};

struct CFData final : CFObject {
  std::vector<UInt8> bytes;
};

struct CFArray final : CFObject {
  std::vector<quillmere::Owned<CFTypeRef>> values;
};

struct CFDictionary final : CFObject {
  struct Entry {
    quillmere::Owned<CFStringRef> key;
    quillmere::Owned<CFTypeRef> value;
  };
  std::vector<Entry> entries;

  auto Find(CFStringRef key) const {
    return std::find_if(entries.begin(), entries.end(), [key](const Entry& entry) {
      return quillmere::UnitsOf(entry.key.get()) == quillmere::UnitsOf(key);
    });
  }
};

namespace {

template <class T>
T Load(const void* value) {
  return *static_cast<const T*>(value);
}

/// Stores a number as T; false when the value does not come through whole.
template <class T>
bool Store(const std::variant<SInt64, double>& number, void* out) {
  return std::visit(
      [out](auto value) {
        using Source = decltype(value);
        T narrowed;
        if constexpr (std::is_integral_v<T> && std::is_floating_point_v<Source>) {
          // The limits as doubles; the upper one may round up to one past the largest value.
          const double low = static_cast<double>(std::numeric_limits<T>::min());
          const double high = static_cast<double>(std::numeric_limits<T>::max());
          if (!(value >= low)) {
            narrowed = std::isnan(value) ? T{0} : std::numeric_limits<T>::min();
          } else if (value >= high) {
            narrowed = std::numeric_limits<T>::max();
          } else {
            narrowed = static_cast<T>(value);
          }
        } else {
          narrowed = static_cast<T>(value);
        }
        *static_cast<T*>(out) = narrowed;
        if constexpr (std::is_integral_v<T> && std::is_integral_v<Source>) {
          return std::cmp_equal(narrowed, value);
        } else {
          return static_cast<double>(narrowed) == static_cast<double>(value);
        }
      },
      number);
}

template <class Object>
const Object* As(CFTypeRef object) {
  return dynamic_cast<const Object*>(quillmere::ObjectOf(object));
}

}  // namespace

const CFBooleanRef kCFBooleanTrue = new CFBoolean(true);
const CFBooleanRef kCFBooleanFalse = new CFBoolean(false);

Boolean CFBooleanGetValue(CFBooleanRef value) {
  return value && value->value ? 1 : 0;
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
  if (!value) return nullptr;
  switch (type) {
    case kCFNumberSInt8Type:
      return new CFNumber(SInt64{Load<SInt8>(value)});
    case kCFNumberSInt16Type:
      return new CFNumber(SInt64{Load<SInt16>(value)});
    case kCFNumberSInt32Type:
      return new CFNumber(SInt64{Load<SInt32>(value)});
    case kCFNumberSInt64Type:
      return new CFNumber(Load<SInt64>(value));
    case kCFNumberFloat32Type:
      return new CFNumber(double{Load<float>(value)});
    case kCFNumberFloat64Type:
      return new CFNumber(Load<double>(value));
  }
  return nullptr;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  if (!number || !value) return 0;
  switch (type) {
    case kCFNumberSInt8Type:
      return Store<SInt8>(number->value, value);
    case kCFNumberSInt16Type:
      return Store<SInt16>(number->value, value);
    case kCFNumberSInt32Type:
      return Store<SInt32>(number->value, value);
    case kCFNumberSInt64Type:
      return Store<SInt64>(number->value, value);
    case kCFNumberFloat32Type:
      return Store<float>(number->value, value);
    case kCFNumberFloat64Type:
      return Store<double>(number->value, value);
  }
  return 0;
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
  if (length < 0 || (!bytes && length > 0)) return nullptr;
  auto* data = new CFData;
  if (length > 0) data->bytes.assign(bytes, bytes + length);
  return data;
}

CFIndex CFDataGetLength(CFDataRef data) {
  return data ? std::ssize(data->bytes) : 0;
}

const UInt8* CFDataGetBytePtr(CFDataRef data) {
  return data ? data->bytes.data() : nullptr;
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef) {
  return new CFArray;
}

CFIndex CFArrayGetCount(CFArrayRef array) {
  return array ? std::ssize(array->values) : 0;
}

CFTypeRef CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  if (index < 0 || index >= CFArrayGetCount(array)) return nullptr;
  return array->values[static_cast<std::size_t>(index)].get();
}

void CFArrayAppendValue(CFMutableArrayRef array, CFTypeRef value) {
  if (array && value) array->values.emplace_back(CFRetain(value));
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef) {
  return new CFDictionary;
}

void CFDictionarySetValue(CFMutableDictionaryRef dictionary, CFStringRef key, CFTypeRef value) {
  if (!dictionary || !key || !value) return;
  CFRetain(value);
  for (CFDictionary::Entry& entry : dictionary->entries) {
    if (quillmere::UnitsOf(entry.key.get()) == quillmere::UnitsOf(key)) {
      entry.value.reset(value);
      return;
    }
  }
  dictionary->entries.push_back(
      {quillmere::Owned<CFStringRef>(CFStringCreateCopy(kCFAllocatorDefault, key)),
       quillmere::Owned<CFTypeRef>(value)});
}

CFTypeRef CFDictionaryGetValue(CFDictionaryRef dictionary, CFStringRef key) {
  if (!dictionary || !key) return nullptr;
  const auto found = dictionary->Find(key);
  return found == dictionary->entries.end() ? nullptr : found->value.get();
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, CFStringRef key) {
  if (!dictionary || !key) return;
  const auto found = dictionary->Find(key);
  if (found != dictionary->entries.end()) dictionary->entries.erase(found);
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
  return dictionary ? std::ssize(dictionary->entries) : 0;
}

namespace quillmere {

CFNumberRef AsNumber(CFTypeRef object) {
  return As<CFNumber>(object);
}

CFBooleanRef AsBoolean(CFTypeRef object) {
  return As<CFBoolean>(object);
}

CFDictionaryRef AsDictionary(CFTypeRef object) {
  return As<CFDictionary>(object);
}

}  // namespace quillmere
