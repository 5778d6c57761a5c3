#include "LL_Linked_Lists.h"

#include <utility>

#include "GL_Memory.h"
#include "list_links_private.h"

using namespace quillmere::lists;

namespace {

/// The element in front of `element`, or null.
LL_Link* Predecessor(LL_Link* first, const void* element) {
  for (LL_Link* at = first; at; at = at->next) {
    if (at->next == element) return at;
  }
  return nullptr;
}

bool HasElement(const void* list, const void* element) {
  return LL_GetPtrIndex(list, element) != 0;
}

/// LL_AddNewPtr for elements with room for `link_size` bytes of links, linked by `add`.
SInt32 AddNew(Size size, Size link_size, void (*add)(void*, void*, void**), void* behind,
              void** list, void** added) {
  if (added) *added = nullptr;
  if (!list || !added || size < link_size) return paramErr;
  const SInt32 status = GL_NewPtrClear(size, added);
  if (!status) add(behind, *added, list);
  return status;
}

/// Disposes of a list after giving each element to `release`.
template <class Element, class Release>
void DisposeWith(void** list, Release release) {
  if (!list) return;
  for (auto* at = static_cast<Element*>(*list); at; at = at->next)
    release(*at);
  LL_DisposeLinkedList(list);
}

}  // namespace

void LL_AddPtr(void* behind, void* element, void** list) {
  if (!element || !list) return;
  LL_Link* added = AsLink(element);
  if (!*list || behind == LL_FrontPlace()) {
    added->next = AsLink(*list);
    *list = added;
    return;
  }
  LL_Link* at = AsLink(*list);
  while (at != behind && at->next)
    at = at->next;
  added->next = at->next;
  at->next = added;
}

SInt32 LL_AddNewPtr(Size size, void* behind, void** list, void** added) {
  return AddNew(size, sizeof(LL_Link), LL_AddPtr, behind, list, added);
}

void LL_AddPtrD(void* behind, void* element, void** list) {
  if (!element || !list) return;
  LL_AddPtr(behind, element, list);
  auto* added = static_cast<LL_LinkD*>(element);
  added->prev = static_cast<LL_LinkD*>(LL_GetPrevPtr(*list, element));
  if (added->next) added->next->prev = added;
}

SInt32 LL_AddNewPtrD(Size size, void* behind, void** list, void** added) {
  return AddNew(size, sizeof(LL_LinkD), LL_AddPtrD, behind, list, added);
}

void LL_ConcatenateLists(void** list1, void* list2) {
  if (!list1) return;
  LL_Link** slot = AsSlot(list1);
  while (*slot)
    slot = &(*slot)->next;
  *slot = AsLink(list2);
}

SInt32 LL_PtrListCount(const void* list) {
  SInt32 count = 0;
  for (const LL_Link* at = AsLink(list); at; at = at->next)
    ++count;
  return count;
}

void* LL_GetLastPtr(void* list) {
  return Predecessor(AsLink(list), nullptr);
}

void* LL_GetPrevPtr(void* list, const void* element) {
  return element ? Predecessor(AsLink(list), element) : nullptr;
}

void* LL_GetPtrByIndex(void* list, SInt32 index) {
  LL_Link* at = AsLink(list);
  for (SInt32 position = 1; at && position < index; ++position)
    at = at->next;
  return at;
}

SInt32 LL_GetPtrIndex(const void* list, const void* element) {
  SInt32 index = 1;
  for (const LL_Link* at = AsLink(list); at; at = at->next, ++index) {
    if (at == element) return index;
  }
  return 0;
}

UInt32* LL_GetPtrByID(void* list, UInt32 id, Size offset) {
  for (LL_Link* at = AsLink(list); at; at = at->next) {
    auto* word = reinterpret_cast<UInt32*>(reinterpret_cast<char*>(at) + offset);
    if (*word == id) return word;
  }
  return nullptr;
}

Boolean LL_PtrInLinkedList(const void* list, const void* x, LL_EqualProc test) {
  for (const LL_Link* at = AsLink(list); at; at = at->next) {
    if (test(at, x)) return 1;
  }
  return 0;
}

Boolean LL_PtrInPtrList(const void* list, const void* ptr) {
  for (const auto* at = static_cast<const LL_PtrElement*>(list); at; at = at->next) {
    if (at->ptr == ptr) return 1;
  }
  return 0;
}

void LL_RemovePtr(void* element, void** list) {
  if (!element || !list) return;
  if (LL_Link** slot = SlotOf(list, element)) *slot = (*slot)->next;
}

void LL_DeletePtr(void** list, void** element) {
  if (!element || !*element) return;
  LL_RemovePtr(*element, list);
  GL_DisposePtr(element);
}

void LL_DeleteLastPtr(void** list) {
  if (!list) return;
  void* last = LL_GetLastPtr(*list);
  LL_DeletePtr(list, &last);
}

void LL_DisposeLinkedList(void** list) {
  if (!list) return;
  while (*list)
    DeleteAt(AsSlot(list));
}

void LL_DisposePtrLE_List(void** list) {
  DisposeWith<LL_PtrElement>(list, [](LL_PtrElement& element) { GL_DisposePtr(&element.ptr); });
}

void LL_DisposeListOfLinkedLists(void** list) {
  DisposeWith<LL_SubListElement>(
      list, [](LL_SubListElement& element) { LL_DisposeLinkedList(&element.sublist); });
}

void LL_DisposeLinkedSubList(void** list, SInt32 first, SInt32 count) {
  if (!list || first < 0) return;
  LL_Link** slot = AsSlot(list);
  for (; *slot && first > 0; --first)
    slot = &(*slot)->next;
  for (; *slot && count > 0; --count)
    DeleteAt(slot);
}

void LL_SwapPointers(void* a, void* b, void** list) {
  if (!a || !b || a == b || !list) return;
  LL_Link** slot_a = SlotOf(list, a);
  LL_Link** slot_b = SlotOf(list, b);
  if (!slot_a || !slot_b) return;
  // Right for neighbours too: one slot is the other element's link then, which the second exchange
  // puts right.
  std::swap(*slot_a, *slot_b);
  std::swap(AsLink(a)->next, AsLink(b)->next);
}

void LL_MovePtrToFront(void** list, void* element) {
  if (list) LL_SwapPointers(*list, element, list);
}

void LL_MovePtrToEnd(void** list, void* element) {
  if (list) LL_SwapPointers(LL_GetLastPtr(*list), element, list);
}

void LL_MovePtrBehind(void* behind, void* element, void** list) {
  if (!list || !element || !HasElement(*list, element)) return;
  LL_RemovePtr(element, list);
  LL_AddPtr(behind, element, list);
}

void LL_SetPtrIndex(void** list, void* element, SInt32 index) {
  if (!list || index < 1 || index > LL_PtrListCount(*list)) return;
  const SInt32 position = LL_GetPtrIndex(*list, element);
  if (position == 0 || position == index) return;
  LL_RemovePtr(element, list);
  void* behind = index == 1 ? LL_FrontPlace() : LL_GetPtrByIndex(*list, index - 1);
  LL_AddPtr(behind, element, list);
}

void LL_RemoveIdenticalElements(void* list, LL_EqualProc equal, Boolean dispose_duplicates) {
  for (LL_Link* a = AsLink(list); a; a = a->next) {
    LL_Link** slot = &a->next;
    while (LL_Link* b = *slot) {
      if (equal ? equal(a, b) : a == b) {
        DropAt(slot, dispose_duplicates);
      } else {
        slot = &b->next;
      }
    }
  }
}
