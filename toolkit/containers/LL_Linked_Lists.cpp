#include "LL_Linked_Lists.h"

#include "GL_Memory.h"

namespace {

LL_Link* AsLink(void* element) {
  return static_cast<LL_Link*>(element);
}

const LL_Link* AsLink(const void* element) {
  return static_cast<const LL_Link*>(element);
}

/// The element in front of `element`, or null.
LL_Link* Predecessor(LL_Link* first, const void* element) {
  for (LL_Link* at = first; at; at = at->next) {
    if (at->next == element) return at;
  }
  return nullptr;
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
  if (!list || !added) return paramErr;
  *added = nullptr;
  if (size < Size{sizeof(LL_Link)}) return paramErr;
  const SInt32 status = GL_NewPtrClear(size, added);
  if (!status) LL_AddPtr(behind, *added, list);
  return status;
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

void LL_RemovePtr(void* element, void** list) {
  if (!element || !list || !*list) return;
  LL_Link* removed = AsLink(element);
  if (*list == element) {
    *list = removed->next;
    return;
  }
  LL_Link* before = Predecessor(AsLink(*list), element);
  if (before) before->next = removed->next;
}

void LL_DeletePtr(void** list, void** element) {
  if (!element || !*element) return;
  LL_RemovePtr(*element, list);
  GL_DisposePtr(element);
}

void LL_DisposeLinkedList(void** list) {
  if (!list) return;
  while (*list) {
    void* first = *list;
    *list = AsLink(first)->next;
    GL_DisposePtr(&first);
  }
}

void LL_RemoveIdenticalElements(void* list, LL_EqualProc equal, Boolean dispose_duplicates) {
  for (LL_Link* a = AsLink(list); a; a = a->next) {
    LL_Link* before = a;
    while (before->next) {
      LL_Link* b = before->next;
      if (!(equal ? equal(a, b) : a == b)) {
        before = b;
        continue;
      }
      before->next = b->next;
      void* duplicate = b;
      if (dispose_duplicates) GL_DisposePtr(&duplicate);
    }
  }
}
