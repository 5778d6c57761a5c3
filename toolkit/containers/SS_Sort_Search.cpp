#include "SS_Sort_Search.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>

#include "list_links_private.h"

using namespace quillmere::lists;

namespace {

/// Selection sort of the positions 0 to `count` - 1: `beats(i, j)` tells whether what is at i has
/// to come before what is at j, `exchange(i, j)` swaps the two.
template <class Beats, class Exchange>
void SelectSort(SInt32 count, Beats beats, Exchange exchange) {
  for (SInt32 at = 0; at < count - 1; ++at) {
    SInt32 best = at;
    for (SInt32 i = at + 1; i < count; ++i) {
      if (beats(i, best)) best = i;
    }
    if (best != at) exchange(at, best);
  }
}

template <class Number>
void SelectSortDescending(Number* array, SInt32 count) {
  SelectSort(
      count, [&](SInt32 i, SInt32 best) { return array[i] > array[best]; },
      [&](SInt32 i, SInt32 j) { std::swap(array[i], array[j]); });
}

template <class Number, class Beats>
void SelectSortIndexed(Number* array, SInt32 count, SInt32* index, Beats beats) {
  SS_InitIndexList(index, count);
  SelectSort(
      count, [&](SInt32 i, SInt32 best) { return beats(array[i], array[best]); },
      [&](SInt32 i, SInt32 j) {
        std::swap(array[i], array[j]);
        std::swap(index[i], index[j]);
      });
}

/// Bubble sort, ascending, that tells `swapped(i, j)` of each exchange.
template <class Swapped>
void BubbleSort(SInt32* array, SInt32 count, Swapped swapped) {
  for (SInt32 pass = 1; pass < count; ++pass) {
    for (SInt32 j = 1; j <= count - pass; ++j) {
      if (array[j - 1] <= array[j]) continue;
      std::swap(array[j - 1], array[j]);
      swapped(j - 1, j);
    }
  }
}

/// Selection sort of a list: `sign` 1 puts the greater in front, -1 the lesser.
void SelectSortList(SS_CompareProc compare, SInt32 sign, bool remove_equal, Boolean dispose_removed,
                    void** list) {
  if (!list) return;
  LL_Link* sorted = nullptr;
  LL_Link** tail = &sorted;
  while (*list) {
    LL_Link** best = AsSlot(list);
    LL_Link** slot = &(*best)->next;
    while (*slot) {
      const SInt32 order = sign * compare(*slot, *best);
      if (order == 0 && remove_equal) {
        DropAt(slot, dispose_removed);
        continue;
      }
      if (order > 0) best = slot;
      slot = &(*slot)->next;
    }
    *tail = TakeAt(best);
    tail = &(*tail)->next;
    *tail = nullptr;
  }
  *list = sorted;
}

/// Walks two sorted lists at once: gives elements that list1 has alone to `first`, those that list2
/// has alone to `second`, and equal ones to `both(element1, element2)`. The links are read before
/// the elements are given away.
template <class First, class Second, class Both>
void WalkSorted(void* list1, void* list2, SS_CompareProc compare, First first, Second second,
                Both both) {
  LL_Link* at1 = AsLink(list1);
  LL_Link* at2 = AsLink(list2);
  while (at1 || at2) {
    SInt32 order = at1 ? 1 : -1;
    if (at1 && at2) order = compare(at1, at2);
    LL_Link* const element1 = at1;
    LL_Link* const element2 = at2;
    if (order >= 0) at1 = at1->next;
    if (order <= 0) at2 = at2->next;
    if (order > 0) {
      first(element1);
    } else if (order < 0) {
      second(element2);
    } else {
      both(element1, element2);
    }
  }
}

}  // namespace

SInt32 SS_CompareByAddress(const void* a, const void* b) {
  const auto x = reinterpret_cast<std::intptr_t>(a);
  const auto y = reinterpret_cast<std::intptr_t>(b);
  return (x > y ? 1 : 0) - (x < y ? 1 : 0);
}

SInt32 SS_CompareBinary(const void* a, Size length_a, const void* b, Size length_b) {
  if (!a || !b) return 0;
  if (length_a != length_b) return length_a > length_b ? 1 : -1;
  const auto* x = static_cast<const SInt8*>(a);
  const auto* y = static_cast<const SInt8*>(b);
  for (Size i = 0; i < length_a; ++i) {
    if (x[i] != y[i]) return x[i] > y[i] ? 1 : -1;
  }
  return 0;
}

void SS_SelectSortArray(SS_CompareProc compare, void* array, SInt32 count, Size element_size) {
  if (element_size <= 0) return;
  const auto record = [&](SInt32 i) { return static_cast<char*>(array) + i * element_size; };
  SelectSort(
      count, [&](SInt32 i, SInt32 best) { return compare(record(i), record(best)) > 0; },
      [&](SInt32 i, SInt32 j) {
        std::swap_ranges(record(i), record(i) + element_size, record(j));
      });
}

void SS_SelectSortUInt8Array(UInt8* array, SInt32 count) {
  SelectSortDescending(array, count);
}

void SS_SelectSortFloatArray(float* array, SInt32 count) {
  SelectSortDescending(array, count);
}

void SS_SelectSortIndexedUInt8Array(UInt8* array, SInt32 count, SInt32* index) {
  SelectSortIndexed(array, count, index, std::greater<>());
}

void SS_SelectSortIndexedSInt32Array(SInt32* array, SInt32 count, SInt32* index) {
  SelectSortIndexed(array, count, index, std::greater<>());
}

void SS_SelectSortIndexedDoubleArray(double* array, SInt32 count, SInt32* index) {
  SelectSortIndexed(array, count, index, std::greater<>());
}

void SS_SelectSortIndexedDoubleArrayAscending(double* array, SInt32 count, SInt32* index) {
  SelectSortIndexed(array, count, index, std::less<>());
}

void SS_BubbleSortSInt32Array(SInt32* array, SInt32 count) {
  BubbleSort(array, count, [](SInt32, SInt32) {});
}

void SS_BubbleSortSInt32ArrayIndex(SInt32* array, SInt32 count, SInt32* index) {
  SS_InitIndexList(index, count);
  BubbleSort(array, count, [&](SInt32 i, SInt32 j) { std::swap(index[i], index[j]); });
}

void SS_SelectSortDescending(SS_CompareProc compare, Boolean remove_equal, Boolean dispose_removed,
                             void** list) {
  SelectSortList(compare, 1, remove_equal, dispose_removed, list);
}

void SS_SelectSortAscendingSimple(SS_CompareProc compare, void** list) {
  SelectSortList(compare, -1, false, 0, list);
}

void SS_BubbleSort(SS_CompareProc compare, Boolean remove_equal, Boolean dispose_removed,
                   void** list) {
  if (!list) return;
  for (SInt32 unsorted = LL_PtrListCount(*list); unsorted > 1; --unsorted) {
    LL_Link** slot = AsSlot(list);
    for (SInt32 position = 1; position < unsorted;) {
      LL_Link* a = *slot;
      const SInt32 order = compare(a, a->next);
      if (order == 0 && remove_equal) {
        DropAt(slot, dispose_removed);
        --unsorted;
        continue;
      }
      if (order > 0) {
        LL_Link* b = TakeAt(&a->next);
        b->next = a;
        *slot = b;
      }
      slot = &(*slot)->next;
      ++position;
    }
  }
}

void SS_RemoveIdenticalPointers(void** list) {
  SS_SelectSortDescending(SS_CompareByAddress, 1, 0, list);
}

void SS_RemoveIdenticalItemsBinary(void** list, Boolean enable) {
  if (enable) SS_RemoveIdenticalPointers(list);
}

SInt32 SS_MergePtrListsSorted(void* list1, void* list2, Size size, SS_CompareProc compare,
                              SInt32 mode, Boolean drop_equal, void** merged) {
  if (!merged) return noErr;
  ListBuilder result(size, mode);
  const auto append = [&](void* element) { result.Append(element); };
  WalkSorted(list1, list2, compare, append, append, [&](void* element1, void* element2) {
    result.Append(element1);
    if (!drop_equal) {
      result.Append(element2);
    } else if (mode == kLL_Move) {
      GL_DisposePtr(&element2);
    }
  });
  *merged = result.failed() ? nullptr : result.Take();
  return result.failed() ? memFullErr : noErr;
}

SInt32 SS_IntersectListsSorted(void* list1, void* list2, Size size, SS_CompareProc compare,
                               SInt32 mode, void** only_in_1, void** common, void** only_in_2) {
  if (!only_in_1 || !common || !only_in_2) return noErr;
  ListBuilder first(size, mode);
  ListBuilder both(size, mode);
  ListBuilder second(size, mode);
  WalkSorted(
      list1, list2, compare, [&](void* element) { first.Append(element); },
      [&](void* element) { second.Append(element); },
      [&](void* element1, void* element2) {
        both.Append(element1);
        if (mode == kLL_Move) GL_DisposePtr(&element2);
      });
  const bool failed = first.failed() || both.failed() || second.failed();
  *only_in_1 = failed ? nullptr : first.Take();
  *common = failed ? nullptr : both.Take();
  *only_in_2 = failed ? nullptr : second.Take();
  return failed ? memFullErr : noErr;
}

void SS_SubtractListSorted(void** list1, const void* list2, SS_CompareProc compare,
                           Boolean dispose_removed) {
  if (!list1) return;
  LL_Link** slot = AsSlot(list1);
  const LL_Link* taken = AsLink(list2);
  while (*slot && taken) {
    const SInt32 order = compare(*slot, taken);
    if (order > 0) {
      slot = &(*slot)->next;
    } else if (order < 0) {
      taken = taken->next;
    } else {
      DropAt(slot, dispose_removed);
    }
  }
}

Boolean SS_ListContainsList(void** list, void** sublist, SS_CompareProc compare,
                            Boolean sort_first) {
  if (!list || !sublist) return 0;
  if (sort_first) {
    SS_SelectSortDescending(compare, 0, 0, list);
    SS_SelectSortDescending(compare, 0, 0, sublist);
  }
  if (LL_PtrListCount(*sublist) > LL_PtrListCount(*list)) return 0;
  const LL_Link* element = AsLink(*list);
  for (const LL_Link* wanted = AsLink(*sublist); wanted; wanted = wanted->next) {
    while (element && compare(element, wanted) > 0)
      element = element->next;
    if (!element || compare(element, wanted) < 0) return 0;
  }
  return 1;
}

Boolean SS_EqualList(const void* list1, const void* list2, SS_CompareProc compare) {
  const LL_Link* a = AsLink(list1);
  const LL_Link* b = AsLink(list2);
  while (a && b && compare(a, b) == 0) {
    a = a->next;
    b = b->next;
  }
  return !a && !b;
}

Boolean SS_AreListElementsUnique(SS_CompareProc compare, const void* list) {
  for (const LL_Link* a = AsLink(list); a; a = a->next) {
    for (const LL_Link* b = a->next; b; b = b->next) {
      if (compare(a, b) == 0) return 0;
    }
  }
  return 1;
}

void SS_InitIndexList(SInt32* index, SInt32 count) {
  if (count > 0) std::iota(index, index + count, 0);
}

void SS_InvertIndexList(const SInt32* index, SInt32 count, SInt32* inverse) {
  for (SInt32 i = 0; i < count; ++i) {
    if (index[i] >= 0 && index[i] < count) inverse[index[i]] = i;
  }
}

void SS_RevertSInt32Array(SInt32* array, SInt32 count) {
  if (count > 1) std::reverse(array, array + count);
}

SInt32 SS_FindInsertIndexByBisection(const SInt32* array, SInt32 count, SInt32 value) {
  if (count < 1) return 0;
  if (value == array[count - 1]) return count - 1;
  return static_cast<SInt32>(std::upper_bound(array, array + count, value) - array);
}
