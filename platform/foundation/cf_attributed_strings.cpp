#include "cf_attributed_strings.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace {

using quillmere::Owned;

Owned<CFDictionaryRef> CopyOf(CFDictionaryRef attributes) {
  if (!attributes) return Owned<CFDictionaryRef>(CFDictionaryCreateMutable(kCFAllocatorDefault));
  return Owned<CFDictionaryRef>(CFDictionaryCreateMutableCopy(kCFAllocatorDefault, attributes));
}

Owned<CFDictionaryRef> Shared(CFDictionaryRef attributes) {
  CFRetain(attributes);
  return Owned<CFDictionaryRef>(attributes);
}

/// The first attributes with the second ones in their place where both have a key.
Owned<CFDictionaryRef> Merged(CFDictionaryRef under, CFDictionaryRef over) {
  Owned<CFMutableDictionaryRef> merged(CFDictionaryCreateMutableCopy(kCFAllocatorDefault, under));
  const auto count = static_cast<std::size_t>(CFDictionaryGetCount(over));
  std::vector<CFStringRef> keys(count);
  std::vector<CFTypeRef> values(count);
  CFDictionaryGetKeysAndValues(over, keys.data(), values.data());
  for (std::size_t i = 0; i < count; ++i)
    CFDictionarySetValue(merged.get(), keys[i], values[i]);
  return Owned<CFDictionaryRef>(merged.release());
}

}  // namespace

struct CFAttributedString final : CFObject {
  explicit CFAttributedString(bool can_change)
      : text(CFStringCreateMutable(kCFAllocatorDefault, 0)), is_mutable(can_change) {}

  Owned<CFMutableStringRef> text;
  /// The attributes from each start on, up to the next; the starts lie inside the text.
  std::map<CFIndex, Owned<CFDictionaryRef>> runs;
  bool is_mutable;

  CFIndex Length() const { return CFStringGetLength(text.get()); }

  CFRange Cut(CFRange range) const {
    const CFIndex start = std::clamp<CFIndex>(range.location, 0, Length());
    return {start, std::clamp<CFIndex>(range.length, 0, Length() - start)};
  }

  CFDictionaryRef At(CFIndex index) const {
    return std::prev(runs.upper_bound(index))->second.get();
  }

  /// Lets a run start at an index inside the text.
  void Split(CFIndex index) {
    if (index < Length() && !runs.contains(index)) runs.emplace(index, Shared(At(index)));
  }

  /// Joins neighbours with equal attributes.
  void Join() {
    for (auto run = runs.begin(); run != runs.end();) {
      const auto next = std::next(run);
      if (next != runs.end() && CFEqual(run->second.get(), next->second.get())) {
        runs.erase(next);
      } else {
        run = next;
      }
    }
  }

  void Replace(CFRange range, CFStringRef replacement) {
    const CFIndex added = CFStringGetLength(replacement);
    const CFIndex end = range.location + range.length;
    Owned<CFDictionaryRef> attributes =
        Length() == 0 ? CopyOf(nullptr)
                      : Shared(At(range.length > 0 || range.location == 0 ? range.location
                                                                          : range.location - 1));
    Split(end);
    std::map<CFIndex, Owned<CFDictionaryRef>> changed;
    for (auto& [start, run] : runs) {
      if (start < range.location) {
        changed.emplace(start, std::move(run));
      } else if (start >= end) {
        changed.emplace(start - range.length + added, std::move(run));
      }
    }
    if (added > 0) changed.emplace(range.location, std::move(attributes));
    runs = std::move(changed);
    CFStringDelete(text.get(), range);
    CFStringInsert(text.get(), range.location, replacement);
    Join();
  }
};

CFAttributedStringRef CFAttributedStringCreate(CFAllocatorRef, CFStringRef string,
                                               CFDictionaryRef attributes) {
  if (!string) return nullptr;
  auto* made = new CFAttributedString(false);
  CFStringAppend(made->text.get(), string);
  if (made->Length() > 0) made->runs.emplace(0, CopyOf(attributes));
  return made;
}

CFMutableAttributedStringRef CFAttributedStringCreateMutable(CFAllocatorRef, CFIndex) {
  return new CFAttributedString(true);
}

CFStringRef CFAttributedStringGetString(CFAttributedStringRef string) {
  return string ? string->text.get() : nullptr;
}

CFIndex CFAttributedStringGetLength(CFAttributedStringRef string) {
  return string ? string->Length() : 0;
}

CFDictionaryRef CFAttributedStringGetAttributes(CFAttributedStringRef string, CFIndex index,
                                                CFRange* stretch) {
  if (stretch) *stretch = {0, 0};
  if (!string || index < 0 || index >= string->Length()) return nullptr;
  const auto next = string->runs.upper_bound(index);
  const auto run = std::prev(next);
  const CFIndex end = next == string->runs.end() ? string->Length() : next->first;
  if (stretch) *stretch = {run->first, end - run->first};
  return run->second.get();
}

void CFAttributedStringReplaceString(CFMutableAttributedStringRef string, CFRange range,
                                     CFStringRef replacement) {
  if (string && string->is_mutable) string->Replace(string->Cut(range), replacement);
}

void CFAttributedStringSetAttributes(CFMutableAttributedStringRef string, CFRange range,
                                     CFDictionaryRef attributes, Boolean clear_others) {
  if (!string || !string->is_mutable) return;
  const CFRange cut = string->Cut(range);
  if (cut.length == 0) return;
  const CFIndex end = cut.location + cut.length;
  string->Split(cut.location);
  string->Split(end);
  const auto last = string->runs.lower_bound(end);
  for (auto run = string->runs.lower_bound(cut.location); run != last; ++run) {
    run->second = clear_others ? CopyOf(attributes) : Merged(run->second.get(), attributes);
  }
  string->Join();
}
