#include "cf_values.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "cf_dates.h"

namespace {

/// What a number can hold: UInt64 only for values above the largest SInt64.
using NumberValue = std::variant<SInt64, UInt64, double>;

}  // namespace

struct CFBoolean final : CFObject {
  explicit CFBoolean(bool truth) : value(truth) {}
  bool value;
};

struct CFNumber final : CFObject {
  CFNumber(CFNumberType kind, NumberValue number) : type(kind), value(number) {}
  CFNumberType type;
  NumberValue value;
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
  /// Where each key stands in `entries`. The views are of the entries' own keys.
  std::map<std::u16string_view, std::size_t> positions;

  /// The key's entry, or null.
  const Entry* Find(CFStringRef key) const {
    const auto found = positions.find(quillmere::UnitsOf(key));
    return found == positions.end() ? nullptr : &entries[found->second];
  }

  void Set(CFStringRef key, CFTypeRef value) {
    const auto found = positions.find(quillmere::UnitsOf(key));
    if (found != positions.end()) {
      entries[found->second].value.reset(CFRetain(value));
      return;
    }
    Entry entry{quillmere::Owned<CFStringRef>(CFStringCreateCopy(kCFAllocatorDefault, key)),
                quillmere::Owned<CFTypeRef>(CFRetain(value))};
    positions.emplace(quillmere::UnitsOf(entry.key.get()), entries.size());
    entries.push_back(std::move(entry));
  }

  void Remove(CFStringRef key) {
    const auto found = positions.find(quillmere::UnitsOf(key));
    if (found == positions.end()) return;
    const std::size_t position = found->second;
    positions.erase(found);
    entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(position));
    for (auto& [name, place] : positions) {
      if (place > position) --place;
    }
  }
};

namespace {

template <class T>
T Load(const void* value) {
  return *static_cast<const T*>(value);
}

/// Stores a number as T; false when the value does not come through whole.
template <class T>
bool Store(const NumberValue& number, void* out) {
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

bool EqualNumbers(const NumberValue& a, const NumberValue& b) {
  return std::visit(
      [](auto x, auto y) {
        if constexpr (std::is_integral_v<decltype(x)> && std::is_integral_v<decltype(y)>) {
          return std::cmp_equal(x, y);
        } else {
          const auto left = static_cast<double>(x);
          const auto right = static_cast<double>(y);
          return left == right || (std::isnan(left) && std::isnan(right));
        }
      },
      a, b);
}

bool EqualArrays(const CFArray& a, const CFArray& b) {
  return std::ranges::equal(a.values, b.values, [](const auto& x, const auto& y) {
    return CFEqual(x.get(), y.get()) != 0;
  });
}

bool EqualDictionaries(const CFDictionary& a, const CFDictionary& b) {
  if (a.entries.size() != b.entries.size()) return false;
  return std::ranges::all_of(a.entries, [&b](const CFDictionary::Entry& entry) {
    const CFDictionary::Entry* other = b.Find(entry.key.get());
    return other != nullptr && CFEqual(entry.value.get(), other->value.get()) != 0;
  });
}

/// Calls `compare` if both objects are of the kind; else false.
template <class Object, class Compare>
bool BothAre(CFTypeRef a, CFTypeRef b, Compare compare) {
  const Object* left = As<Object>(a);
  const Object* right = left ? As<Object>(b) : nullptr;
  return right != nullptr && compare(*left, *right);
}

}  // namespace

const CFBooleanRef kCFBooleanTrue = new CFBoolean(true);
const CFBooleanRef kCFBooleanFalse = new CFBoolean(false);

Boolean CFEqual(CFTypeRef a, CFTypeRef b) {
  if (a == b) return 1;
  if (!a || !b) return 0;
  if (const CFStringRef left = quillmere::AsString(a)) {
    const CFStringRef right = quillmere::AsString(b);
    return right && quillmere::UnitsOf(left) == quillmere::UnitsOf(right) ? 1 : 0;
  }
  if (const CFDateRef left = quillmere::AsDate(a)) {
    const CFDateRef right = quillmere::AsDate(b);
    return right && CFDateGetAbsoluteTime(left) == CFDateGetAbsoluteTime(right) ? 1 : 0;
  }
  const bool equal =
      BothAre<CFNumber>(
          a, b,
          [](const CFNumber& x, const CFNumber& y) { return EqualNumbers(x.value, y.value); }) ||
      BothAre<CFBoolean>(
          a, b, [](const CFBoolean& x, const CFBoolean& y) { return x.value == y.value; }) ||
      BothAre<CFData>(a, b, [](const CFData& x, const CFData& y) { return x.bytes == y.bytes; }) ||
      BothAre<CFArray>(a, b, EqualArrays) || BothAre<CFDictionary>(a, b, EqualDictionaries);
  return equal ? 1 : 0;
}

Boolean CFBooleanGetValue(CFBooleanRef value) {
  return value && value->value ? 1 : 0;
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
  if (!value) return nullptr;
  switch (type) {
    case kCFNumberSInt8Type:
      return new CFNumber(type, SInt64{Load<SInt8>(value)});
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
      return new CFNumber(type, SInt64{Load<SInt16>(value)});
    case kCFNumberSInt32Type:
      return new CFNumber(type, SInt64{Load<SInt32>(value)});
    case kCFNumberSInt64Type:
      return new CFNumber(type, Load<SInt64>(value));
    case kCFNumberFloat32Type:
      return new CFNumber(type, double{Load<float>(value)});
    case kCFNumberFloat64Type:
      return new CFNumber(type, Load<double>(value));
  }
  return nullptr;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  if (!number || !value) return 0;
  switch (type) {
    case kCFNumberSInt8Type:
      return Store<SInt8>(number->value, value);
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
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

CFNumberType CFNumberGetType(CFNumberRef number) {
  return number ? number->type : CFNumberType{};
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

CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef, CFArrayRef array) {
  if (!array) return nullptr;
  auto* copy = new CFArray;
  copy->values.reserve(array->values.size());
  for (const auto& value : array->values)
    copy->values.emplace_back(CFRetain(value.get()));
  return copy;
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

Boolean CFArrayContainsValue(CFArrayRef array, CFTypeRef value) {
  if (!array) return 0;
  return std::any_of(array->values.begin(), array->values.end(),
                     [value](const auto& element) { return CFEqual(element.get(), value) != 0; });
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef) {
  return new CFDictionary;
}

CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef, CFDictionaryRef dictionary) {
  if (!dictionary) return nullptr;
  auto* copy = new CFDictionary;
  for (const CFDictionary::Entry& entry : dictionary->entries)
    copy->Set(entry.key.get(), entry.value.get());
  return copy;
}

void CFDictionarySetValue(CFMutableDictionaryRef dictionary, CFStringRef key, CFTypeRef value) {
  if (dictionary && key && value) dictionary->Set(key, value);
}

CFTypeRef CFDictionaryGetValue(CFDictionaryRef dictionary, CFStringRef key) {
  if (!dictionary || !key) return nullptr;
  const CFDictionary::Entry* found = dictionary->Find(key);
  return found ? found->value.get() : nullptr;
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, CFStringRef key) {
  if (dictionary && key) dictionary->Remove(key);
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, CFStringRef* keys,
                                  CFTypeRef* values) {
  if (!dictionary) return;
  for (std::size_t i = 0; i < dictionary->entries.size(); ++i) {
    if (keys) keys[i] = dictionary->entries[i].key.get();
    if (values) values[i] = dictionary->entries[i].value.get();
  }
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

CFDataRef AsData(CFTypeRef object) {
  return As<CFData>(object);
}

CFArrayRef AsArray(CFTypeRef object) {
  return As<CFArray>(object);
}

CFDictionaryRef AsDictionary(CFTypeRef object) {
  return As<CFDictionary>(object);
}

CFNumberRef CreateUnsignedNumber(UInt64 value) {
  if (std::in_range<SInt64>(value))
    return new CFNumber(kCFNumberSInt64Type, static_cast<SInt64>(value));
  return new CFNumber(kCFNumberSInt64Type, value);
}

bool IsInteger(CFNumberRef number, UInt64* magnitude, bool* is_negative) {
  if (!number || std::holds_alternative<double>(number->value)) return false;
  const auto* small = std::get_if<SInt64>(&number->value);
  *is_negative = small != nullptr && *small < 0;
  const UInt64 bits = small ? static_cast<UInt64>(*small) : std::get<UInt64>(number->value);
  *magnitude = *is_negative ? 0 - bits : bits;
  return true;
}

}  // namespace quillmere
