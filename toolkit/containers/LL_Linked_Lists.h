/// Singly linked lists of the caller's records.
///
/// An element is a heap block whose first word is the link to the next; the rest is the caller's. A
/// list is a pointer to its first element, null when empty; what can change the first element takes
/// the address of that pointer. A list owns its elements, which are allocated zeroed and freed with
/// GL_DisposePtr. A place in a list is named by the element in front of it: LL_FrontPlace() means
/// the front; null, or an element that is not in the list, the end.
///
/// The link is the machine's pointer. There are no locks: callers that share a list guard it.
#pragma once

#include "base_types.h"

/// The first word of every element.
struct LL_Link {
  LL_Link* next;
};

/// The place at the front of a list: all bits set.
inline void* LL_FrontPlace() {
  return reinterpret_cast<void*>(~std::uintptr_t{0});
}

/// The test of two elements that the list operations take: not 0 if they count as equal.
using LL_EqualProc = Boolean (*)(const void* a, const void* b);

namespace quillmere {

/// The address of a typed list head as the operations take it.
template <class Element>
void** ListHead(Element** head) {
  return reinterpret_cast<void**>(head);
}

}  // namespace quillmere

/// Links an element behind `behind`; a null element does nothing.
void LL_AddPtr(void* behind, void* element, void** list);
/// Allocates a zeroed element of `size` bytes and links it. On failure `*added` is null and the
/// list as it was.
SInt32 LL_AddNewPtr(Size size, void* behind, void** list, void** added);

/// Number of elements.
SInt32 LL_PtrListCount(const void* list);
/// The last element, or null.
void* LL_GetLastPtr(void* list);
/// The element in front of `element`; null when it is the first or absent.
void* LL_GetPrevPtr(void* list, const void* element);
/// The element at `index` from 1; the first for any index up to 1, null past the end.
void* LL_GetPtrByIndex(void* list, SInt32 index);
/// Position from 1; 0 if absent.
SInt32 LL_GetPtrIndex(const void* list, const void* element);

/// Unlinks an element if it is in the list; nothing is freed.
void LL_RemovePtr(void* element, void** list);
/// Unlinks an element if it is in the list, frees it in any case, and clears the variable.
void LL_DeletePtr(void** list, void** element);
/// Frees all elements; the head becomes null.
void LL_DisposeLinkedList(void** list);

/// Unlinks every element that equals one in front of it, by `equal` (null: by identity), and frees
/// it if asked.
void LL_RemoveIdenticalElements(void* list, LL_EqualProc equal, Boolean dispose_duplicates);
