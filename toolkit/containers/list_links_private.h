/// How the list modules see links. A slot is the place where an element's address is kept: the head
/// variable or the link of the element in front.
#pragma once

#include <utility>

#include "GL_Memory.h"
#include "LL_Linked_Lists.h"

namespace quillmere::lists {

inline LL_Link* AsLink(void* element) {
  return static_cast<LL_Link*>(element);
}

inline const LL_Link* AsLink(const void* element) {
  return static_cast<const LL_Link*>(element);
}

/// The head variable as a slot.
inline LL_Link** AsSlot(void** list) {
  return reinterpret_cast<LL_Link**>(list);
}

/// The slot that keeps `element`; null if it is not in the list.
inline LL_Link** SlotOf(void** list, const void* element) {
  for (LL_Link** slot = AsSlot(list); *slot; slot = &(*slot)->next) {
    if (*slot == element) return slot;
  }
  return nullptr;
}

/// Unlinks the element of a slot and gives it back.
inline LL_Link* TakeAt(LL_Link** slot) {
  LL_Link* taken = *slot;
  *slot = taken->next;
  return taken;
}

/// Unlinks the element of a slot and frees it.
inline void DeleteAt(LL_Link** slot) {
  void* deleted = TakeAt(slot);
  GL_DisposePtr(&deleted);
}

/// Unlinks the element of a slot and frees it if asked.
inline void DropAt(LL_Link** slot, Boolean dispose) {
  if (dispose) {
    DeleteAt(slot);
  } else {
    TakeAt(slot);
  }
}

/// A list that grows at its end in the way of a copy mode. What is in it when it is destroyed is
/// freed: take it over with Take.
class ListBuilder {
 public:
  ListBuilder(Size size, SInt32 mode) : size_(size), mode_(mode) {}
  ~ListBuilder() { LL_DisposeLinkedList(&head_); }
  ListBuilder(const ListBuilder&) = delete;
  ListBuilder& operator=(const ListBuilder&) = delete;

  /// Appends an element, or what the mode makes of it. Once that has failed, nothing more is done.
  void Append(void* element) {
    if (!failed_) {
      void** tail = LL_AddPtrToEndOfList(element, size_, mode_, tail_);
      failed_ = !tail;
      if (tail) tail_ = tail;
    }
  }

  bool failed() const { return failed_; }
  void* head() const { return head_; }

  /// Gives the list to the caller; the builder is empty then.
  void* Take() {
    tail_ = &head_;
    return std::exchange(head_, nullptr);
  }

 private:
  Size size_;
  SInt32 mode_;
  bool failed_ = false;
  void* head_ = nullptr;
  void** tail_ = &head_;
};

}  // namespace quillmere::lists
