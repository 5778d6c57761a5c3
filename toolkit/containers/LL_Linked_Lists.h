/// Singly linked lists of the caller's records.
///
/// A list is a pointer variable to the first element, null when empty. An element is any record
/// whose first member is `next`, the pointer to the following element; its size is known to the
/// caller alone. A list owns its elements, which are heap blocks of GL_NewPtrClear or of the
/// copying functions here. Positions count from 1. Lists have no lock: one thread at a time uses
/// one.
///
/// A `behind` argument is an element of the list, LL_Front() for the list's front, or null (or any
/// element that is not in the list) for its end.
#pragma once

#include <concepts>
#include <type_traits>

#include "base_types.h"

/// A record that can stand in a list.
template <class Element>
concept LL_Record = std::is_standard_layout_v<Element> && requires(Element element) {
  { element.next } -> std::convertible_to<const void*>;
};

/// The `behind` value that means the front of a list.
inline const void* LL_Front() {
  return reinterpret_cast<const void*>(~std::uintptr_t{0});
}

/// An element that only points to a record of another list or of the caller.
struct LL_PtrLE {
  LL_PtrLE* next;
  void* ptr;
  SInt32 size;  ///< bytes at `ptr` where that is known, else 0
};
/// A closed interval of whole numbers.
struct LL_IntervalLE {
  LL_IntervalLE* next;
  SInt32 start;
  SInt32 end;
};
/// An element of a list of lists.
struct LL_SublistLE {
  LL_SublistLE* next;
  void* sublist;
};

/// How LL_AddPtrToEndOfList and the set operations place an element in a list.
enum LL_CopyMode : SInt32 {
  kLL_LinkElement = 0,  ///< the element itself, which leaves the list that it was in
  kLL_PointTo = 1,      ///< a new LL_PtrLE that points to it
  kLL_CopyElement = 2   ///< a copy of its bytes
};

/// 1 when two elements count as equal.
using LL_EqualProc = Boolean (*)(const void* a, const void* b);

/// The untyped forms, behind the typed ones below. `list` is the address of the head variable.
namespace quillmere::lists {
void Add(const void* behind, void* element, void* list);
SInt32 AddNew(Size size, const void* behind, void* list, void** element);
void AddDouble(const void* behind, void* element, void* list);
SInt32 AddNewDouble(Size size, const void* behind, void* list, void** element);
SInt32 CopyInto(const void* source, Size size, const void* behind, void* list, void** element);
void Concatenate(void* list1, void* list2);
void Remove(void* element, void* list);
void Delete(void* list, void* element);
void DeleteLast(void* list);
void Dispose(void* list);
void DisposeSubList(void* list, SInt32 first, SInt32 count);
void Swap(void* a, void* b, void* list);
void MoveBehind(const void* behind, void* element, void* list);
void SetIndex(void* list, void* element, SInt32 index);
void* Last(void* list);
void* Previous(void* list, const void* element);
void* ByIndex(void* list, SInt32 index);
SInt32 Copy(const void* list, Size size, void** copy);
SInt32 Flatten(Boolean dispose_list, void* list, Size size, void** buffer);
SInt32 Unflatten(Size size, Boolean dispose_buffer, void** buffer, SInt32 count, void** list);
SInt32 Intersect(void* list1, void* list2, Size size, LL_EqualProc equal, SInt32 mode,
                 void** only_in_1, void** common, void** only_in_2);
SInt32 Merge(void* list1, void* list2, Size size, LL_EqualProc equal, SInt32 mode, void** merged);
}  // namespace quillmere::lists

/// Links `element` at that place; a null element does nothing.
template <LL_Record Element>
void LL_AddPtr(const void* behind, Element* element, Element** list) {
  quillmere::lists::Add(behind, element, list);
}
/// Allocates a zeroed element of `size` bytes and links it. On failure the allocation's status,
/// `*element` null, the list unchanged.
template <LL_Record Element>
SInt32 LL_AddNewPtr(Size size, const void* behind, Element** list, Element** element) {
  void* added = nullptr;
  const SInt32 status = quillmere::lists::AddNew(size, behind, list, &added);
  *element = static_cast<Element*>(added);
  return status;
}
/// The two above for elements whose second member is `prev`, which they keep: null at the front.
template <LL_Record Element>
void LL_AddPtrD(const void* behind, Element* element, Element** list) {
  quillmere::lists::AddDouble(behind, element, list);
}
template <LL_Record Element>
SInt32 LL_AddNewPtrD(Size size, const void* behind, Element** list, Element** element) {
  void* added = nullptr;
  const SInt32 status = quillmere::lists::AddNewDouble(size, behind, list, &added);
  *element = static_cast<Element*>(added);
  return status;
}
/// LL_AddNewPtr with the bytes of `source` behind its link copied to the new element.
template <LL_Record Element>
SInt32 LL_CopyPtrFromListToList(const Element* source, Size size, const void* behind,
                                Element** list, Element** element) {
  void* added = nullptr;
  const SInt32 status = quillmere::lists::CopyInto(source, size, behind, list, &added);
  *element = static_cast<Element*>(added);
  return status;
}
/// Stores `element`, by `mode` of LL_CopyMode, in the link word at `tail_slot` and ends the list
/// there. Returns the linked record, which is the next tail slot; null, with the slot set null,
/// when memory is exhausted.
void* LL_AddPtrToEndOfList(void* element, Size size, SInt32 mode, void* tail_slot);
/// Stores `list2` in the last link of `*list1`; nothing is copied.
template <LL_Record Element>
void LL_ConcatenateLists(Element** list1, Element* list2) {
  quillmere::lists::Concatenate(list1, list2);
}

/// The number of elements.
SInt32 LL_PtrListCount(const void* list);
/// The last element, or null.
template <LL_Record Element>
Element* LL_GetLastPtr(Element* list) {
  return static_cast<Element*>(quillmere::lists::Last(list));
}
/// The element before `element`; null when it is first or absent.
template <LL_Record Element>
Element* LL_GetPrevPtr(Element* list, const Element* element) {
  return static_cast<Element*>(quillmere::lists::Previous(list, element));
}
/// Element number `index`: the first for any index up to 1, null past the end.
template <LL_Record Element>
Element* LL_GetPtrByIndex(Element* list, SInt32 index) {
  return static_cast<Element*>(quillmere::lists::ByIndex(list, index));
}
/// The element's position from 1; 0 if absent.
SInt32 LL_GetPtrIndex(const void* list, const void* element);
/// The address of the first 32-bit word, at byte `offset` of its element, that equals `id`; null if
/// none does. The element starts `offset` bytes before it.
void* LL_GetPtrByID(void* list, SInt32 id, Size offset);
/// 1 if `test`(element, x) holds for any element.
Boolean LL_PtrInLinkedList(const void* list, const void* x, LL_EqualProc test);
/// 1 if any element points to `ptr`.
Boolean LL_PtrInPtrList(const LL_PtrLE* list, const void* ptr);

/// Unlinks the element if it is in the list; it then belongs to the caller.
template <LL_Record Element>
void LL_RemovePtr(Element* element, Element** list) {
  quillmere::lists::Remove(element, list);
}
/// Unlinks `*element` if it is in the list, frees it in any case, and clears the variable.
template <LL_Record Element>
void LL_DeletePtr(Element** list, Element** element) {
  Element* deleted = *element;
  *element = nullptr;
  quillmere::lists::Delete(list, deleted);
}
/// Deletes the last element, if there is one.
template <LL_Record Element>
void LL_DeleteLastPtr(Element** list) {
  quillmere::lists::DeleteLast(list);
}
/// Frees all elements; the head ends null.
template <LL_Record Element>
void LL_DisposeLinkedList(Element** list) {
  quillmere::lists::Dispose(list);
}
/// Frees each element and what it points to.
void LL_DisposePtrLE_List(LL_PtrLE** list);
/// Frees every sublist with its elements, and the outer elements.
void LL_DisposeListOfLinkedLists(LL_SublistLE** list);
/// Removes and frees `count` elements behind the first `first` ones; the others stay in order. Ends
/// at the list's end.
template <LL_Record Element>
void LL_DisposeLinkedSubList(Element** list, SInt32 first, SInt32 count) {
  quillmere::lists::DisposeSubList(list, first, count);
}

/// Exchanges the places of two elements; nothing happens unless both are different and in the list.
template <LL_Record Element>
void LL_SwapPointers(Element* a, Element* b, Element** list) {
  quillmere::lists::Swap(a, b, list);
}
/// Exchanges the element with the first, or the last, of the list; those between stay in place.
template <LL_Record Element>
void LL_MovePtrToFront(Element** list, Element* element) {
  quillmere::lists::Swap(element, *list, list);
}
template <LL_Record Element>
void LL_MovePtrToEnd(Element** list, Element* element) {
  quillmere::lists::Swap(element, quillmere::lists::Last(*list), list);
}
/// Unlinks the element and links it at that place.
template <LL_Record Element>
void LL_MovePtrBehind(const void* behind, Element* element, Element** list) {
  quillmere::lists::MoveBehind(behind, element, list);
}
/// Moves the element to position `index`; nothing happens for an index below 1 or above the count,
/// an absent element or one that is there already.
template <LL_Record Element>
void LL_SetPtrIndex(Element** list, Element* element, SInt32 index) {
  quillmere::lists::SetIndex(list, element, index);
}

/// Copies each element whole, `size` bytes, to a new list. A null output does nothing. On exhausted
/// memory memFullErr, with what was copied so far.
template <LL_Record Element>
SInt32 LL_CopyLinkedList(const Element* list, Size size, Element** copy) {
  if (!copy) return noErr;
  void* head = nullptr;
  const SInt32 status = quillmere::lists::Copy(list, size, &head);
  *copy = static_cast<Element*>(head);
  return status;
}
/// Makes a list with one pointer element for each element of `list`, their `size` 0.
SInt32 LL_CopyListPtrs(void* list, LL_PtrLE** copy);
/// Copies the elements, links included, to consecutive slots of `size` bytes at `*buffer`, which is
/// allocated when null and otherwise trusted to be large enough. Frees the list if asked.
template <LL_Record Element>
SInt32 LL_FlattenLinkedList(Boolean dispose_list, Element** list, Size size, void** buffer) {
  return quillmere::lists::Flatten(dispose_list, list, size, buffer);
}
/// Makes a list of `count` slots of `size` bytes. The last element keeps its slot's link, so that
/// must be 0. A count of 0 leaves the output alone. Frees the buffer if asked.
template <LL_Record Element>
SInt32 LL_UnflattenLinkedList(Size size, Boolean dispose_buffer, void** buffer, SInt32 count,
                              Element** list) {
  void* head = *list;
  const SInt32 status = quillmere::lists::Unflatten(size, dispose_buffer, buffer, count, &head);
  *list = static_cast<Element*>(head);
  return status;
}
/// Appends to the plain array `*array` of `*count` elements those of `new_array` that equal none of
/// its elements byte for byte. A null `*array` is allocated and counts as empty.
SInt32 LL_MergeArrays(Size element_size, void** array, SInt32* count, const void* new_array,
                      SInt32 new_count);

/// Splits two lists, by `equal`(element of list2, element of list1), into three new ones made by
/// `mode` of LL_CopyMode; an output may be null. memFullErr leaves the outputs null.
template <LL_Record Element>
SInt32 LL_IntersectLists(Element* list1, Element* list2, Size size, LL_EqualProc equal, SInt32 mode,
                         void** only_in_1, void** common, void** only_in_2) {
  return quillmere::lists::Intersect(list1, list2, size, equal, mode, only_in_1, common, only_in_2);
}
/// The new list of list1's elements that list2 does not have.
template <LL_Record Element>
SInt32 LL_SubtractLists(Element* list1, Element* list2, Size size, LL_EqualProc equal, SInt32 mode,
                        void** only_in_1) {
  return quillmere::lists::Intersect(list1, list2, size, equal, mode, only_in_1, nullptr, nullptr);
}
/// The three lists of LL_IntersectLists joined: only in 1, common, only in 2.
template <LL_Record Element>
SInt32 LL_MergeLists(Element* list1, Element* list2, Size size, LL_EqualProc equal, SInt32 mode,
                     void** merged) {
  return quillmere::lists::Merge(list1, list2, size, equal, mode, merged);
}

/// Unlinks every element that `equal`s an earlier one (by identity when null), and frees it if
/// asked; the first of equal elements stays in its place.
void LL_RemoveIdenticalElements(void* list, LL_EqualProc equal, Boolean dispose_duplicates);
/// Merges, in one pass, each interval with the later ones that overlap or touch it. Intervals of an
/// unordered list may still overlap afterwards.
void LL_ReduceIntervalList(LL_IntervalLE* list);
/// Orders the intervals by start and merges all that overlap or touch.
void LL_OrderReduceIntervalList(LL_IntervalLE** list);
