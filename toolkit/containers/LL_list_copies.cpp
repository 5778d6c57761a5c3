// Copying, flattening and set operations of linked lists, and lists of intervals.
#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "GL_Memory.h"
#include "LL_Linked_Lists.h"
#include "list_links_private.h"

using namespace quillmere::lists;

namespace {

constexpr Size kLinkSize = sizeof(LL_Link);

std::size_t Bytes(Size size) {
  return static_cast<std::size_t>(size);
}

/// The bytes of `count` elements; -1 if no block can be that large.
Size ArrayBytes(Size element_size, SInt64 count) {
  if (element_size <= 0 || count < 0) return -1;
  if (count > std::numeric_limits<Size>::max() / element_size) return -1;
  return count * element_size;
}

/// Appends elements that `next_source()` gives, copied in the way of `mode`, to an empty output
/// until it gives null. What was made before a failure stays in the output.
template <class NextSource>
SInt32 CopyAll(Size size, SInt32 mode, void** copy, NextSource next_source) {
  *copy = nullptr;
  void** tail = copy;
  while (void* source = next_source()) {
    tail = LL_AddPtrToEndOfList(source, size, mode, tail);
    if (!tail) return memFullErr;
  }
  return noErr;
}

/// Gives the elements of a list one by one, then null.
class Walk {
 public:
  explicit Walk(void* list) : at_(AsLink(list)) {}
  /// The link is read before the element is given away.
  void* operator()() {
    LL_Link* element = at_;
    if (element) at_ = element->next;
    return element;
  }

 private:
  LL_Link* at_;
};

bool HasEqual(const void* array, SInt32 count, const char* element, std::size_t size) {
  const auto* at = static_cast<const char*>(array);
  for (SInt32 i = 0; i < count; ++i, at += size) {
    if (std::memcmp(at, element, size) == 0) return true;
  }
  return false;
}

/// Makes `*a` the union of two intervals.
void Unite(LL_Interval* a, const LL_Interval& b) {
  a->start = std::min(a->start, b.start);
  a->end = std::max(a->end, b.end);
}

/// Whether two intervals overlap or touch.
bool Meet(const LL_Interval& a, const LL_Interval& b) {
  return a.start <= b.end && a.end >= b.start;
}

LL_Interval* AsInterval(LL_Link* element) {
  return reinterpret_cast<LL_Interval*>(element);
}

/// The three lists of an intersection while they are made.
struct Intersection {
  Intersection(Size size, SInt32 mode)
      : only_in_1(size, mode), common(size, mode), only_in_2(size, mode) {}
  ListBuilder only_in_1;
  ListBuilder common;
  ListBuilder only_in_2;
};

SInt32 Intersect(void* list1, void* list2, LL_EqualProc equal, SInt32 mode, Intersection* lists) {
  Walk walk1(list1);
  while (void* element = walk1()) {
    LL_Link* match = AsLink(list2);
    while (match && !equal(match, element))
      match = match->next;
    (match ? lists->common : lists->only_in_1).Append(element);
  }
  Walk walk2(list2);
  while (void* element = walk2()) {
    // Moved elements of list1 that match anything are all in the common list now.
    const LL_Link* match = AsLink(mode == kLL_Move ? lists->common.head() : list1);
    while (match && !equal(element, match))
      match = match->next;
    if (!match) lists->only_in_2.Append(element);
  }
  const bool failed =
      lists->only_in_1.failed() || lists->common.failed() || lists->only_in_2.failed();
  return failed ? memFullErr : noErr;
}

}  // namespace

SInt32 LL_CopyPtrFromListToList(const void* source, Size size, void* behind, void** list,
                                void** added) {
  if (added) *added = nullptr;
  if (!source || !added) return paramErr;
  const SInt32 status = LL_AddNewPtr(size, behind, list, added);
  if (status) return status;
  std::memcpy(static_cast<char*>(*added) + kLinkSize, static_cast<const char*>(source) + kLinkSize,
              Bytes(size - kLinkSize));
  return noErr;
}

void** LL_AddPtrToEndOfList(void* element, Size size, SInt32 mode, void** tail_slot) {
  if (!element || !tail_slot) return tail_slot;
  void* linked = element;
  if (mode != kLL_Move) {
    const Size linked_size = mode == kLL_Copy ? size : Size{sizeof(LL_PtrElement)};
    if (linked_size < kLinkSize || GL_NewPtr(linked_size, &linked) != noErr) return nullptr;
    if (mode == kLL_Copy) {
      std::memcpy(linked, element, Bytes(size));
    } else {
      *static_cast<LL_PtrElement*>(linked) = {nullptr, element, static_cast<UInt32>(size)};
    }
  }
  AsLink(linked)->next = nullptr;
  *tail_slot = linked;
  return static_cast<void**>(linked);
}

SInt32 LL_CopyLinkedList(const void* list, Size size, void** copy) {
  if (!copy) return noErr;
  *copy = nullptr;
  if (list && size < kLinkSize) return paramErr;
  return CopyAll(size, kLL_Copy, copy, Walk(const_cast<void*>(list)));
}

SInt32 LL_CopyListPtrs(void* list, void** copy) {
  return copy ? CopyAll(0, kLL_PointTo, copy, Walk(list)) : noErr;
}

SInt32 LL_FlattenLinkedList(Boolean dispose_list, void** list, Size size, void** buffer) {
  if (!list || !buffer || size < kLinkSize) return paramErr;
  if (!*buffer) {
    const Size bytes = ArrayBytes(size, LL_PtrListCount(*list));
    const SInt32 status = bytes < 0 ? memFullErr : GL_NewPtr(bytes, buffer);
    if (status) return status;
  }
  auto* slot = static_cast<char*>(*buffer);
  Walk walk(*list);
  for (void* element = walk(); element; element = walk(), slot += size)
    std::memcpy(slot, element, Bytes(size));
  if (dispose_list) LL_DisposeLinkedList(list);
  return noErr;
}

SInt32 LL_UnflattenLinkedList(Size size, Boolean dispose_buffer, void** buffer, SInt32 count,
                              void** list) {
  if (!buffer || count < 0) return paramErr;
  if (count > 0) {
    if (!list || !*buffer || size < kLinkSize) return paramErr;
    auto* slot = static_cast<char*>(*buffer);
    LL_Link last = {};
    std::memcpy(&last, slot + (count - 1) * size, sizeof(last));
    SInt32 left = count;
    const SInt32 status = CopyAll(size, kLL_Copy, list, [&]() -> void* {
      return left-- > 0 ? std::exchange(slot, slot + size) : nullptr;
    });
    if (status) return status;
    AsLink(LL_GetLastPtr(*list))->next = last.next;
  }
  if (dispose_buffer) GL_DisposePtr(buffer);
  return noErr;
}

SInt32 LL_MergeArrays(Size element_size, void** array, SInt32* count, const void* new_array,
                      SInt32 new_count) {
  if (!array || !new_array) return noErr;
  if (!count || element_size <= 0 || new_count < 0 || (*array && *count < 0)) return paramErr;
  const SInt32 old_count = *array ? *count : 0;
  const std::size_t size = Bytes(element_size);
  const auto* source = static_cast<const char*>(new_array);
  const auto is_missing = [&](SInt32 i) {
    return !HasEqual(*array, old_count, source + static_cast<std::size_t>(i) * size, size);
  };
  SInt32 missing = 0;
  for (SInt32 i = 0; i < new_count; ++i)
    missing += is_missing(i) ? 1 : 0;
  if (missing == 0) return noErr;
  const SInt64 total = SInt64{old_count} + missing;
  const Size bytes = ArrayBytes(element_size, total);
  if (bytes < 0 || total > std::numeric_limits<SInt32>::max()) return memFullErr;
  const Size old_bytes = element_size * old_count;
  const SInt32 status = GL_SetPtrSizeClear(old_bytes, bytes, array);
  if (status) return status;
  char* end = static_cast<char*>(*array) + old_bytes;
  for (SInt32 i = 0; i < new_count; ++i) {
    if (!is_missing(i)) continue;
    std::memcpy(end, source + static_cast<std::size_t>(i) * size, size);
    end += size;
  }
  *count = static_cast<SInt32>(total);
  return noErr;
}

SInt32 LL_IntersectLists(void* list1, void* list2, Size size, LL_EqualProc equal, SInt32 mode,
                         void** only_in_1, void** common, void** only_in_2) {
  if (!only_in_1 && !common && !only_in_2) return noErr;
  Intersection lists(size, mode);
  const SInt32 status = Intersect(list1, list2, equal, mode, &lists);
  if (only_in_1) *only_in_1 = status ? nullptr : lists.only_in_1.Take();
  if (common) *common = status ? nullptr : lists.common.Take();
  if (only_in_2) *only_in_2 = status ? nullptr : lists.only_in_2.Take();
  return status;
}

SInt32 LL_SubtractLists(void* list1, void* list2, Size size, LL_EqualProc equal, SInt32 mode,
                        void** only_in_1) {
  return LL_IntersectLists(list1, list2, size, equal, mode, only_in_1, nullptr, nullptr);
}

SInt32 LL_MergeLists(void* list1, void* list2, Size size, LL_EqualProc equal, SInt32 mode,
                     void** merged) {
  if (!merged) return noErr;
  void* common = nullptr;
  void* only_in_2 = nullptr;
  const SInt32 status =
      LL_IntersectLists(list1, list2, size, equal, mode, merged, &common, &only_in_2);
  if (status) return status;
  LL_ConcatenateLists(&common, only_in_2);
  LL_ConcatenateLists(merged, common);
  return noErr;
}

void LL_ReduceIntervalList(void* list) {
  for (auto* a = static_cast<LL_Interval*>(list); a; a = a->next) {
    LL_Link** slot = reinterpret_cast<LL_Link**>(&a->next);
    while (*slot) {
      const LL_Interval& b = *AsInterval(*slot);
      if (Meet(*a, b)) {
        Unite(a, b);
        DeleteAt(slot);
      } else {
        slot = &(*slot)->next;
      }
    }
  }
}

void LL_OrderReduceIntervalList(void** list) {
  if (!list) return;
  bool swapped = true;
  while (swapped) {
    swapped = false;
    LL_Link** slot = AsSlot(list);
    while (*slot && (*slot)->next) {
      if (AsInterval(*slot)->start > AsInterval((*slot)->next)->start) {
        LL_Link* second = TakeAt(&(*slot)->next);
        second->next = *slot;
        *slot = second;
        swapped = true;
      }
      LL_Interval* a = AsInterval(*slot);
      LL_Interval* b = a->next;
      if (Meet(*a, *b)) {
        Unite(a, *b);
        DeleteAt(&(*slot)->next);
      } else {
        slot = &(*slot)->next;
      }
    }
  }
}
