/// Singly linked lists of the caller's records.
///
/// An element is a heap block whose first word is the link to the next; the rest is the caller's,
/// and only the caller knows its size. A list is a pointer to its first element, null when empty;
/// what can change the first element takes the address of that pointer.
///
/// A place in a list is named by the element in front of it: LL_FrontPlace() means the front; null,
/// or an element that is not in the list, the end. Indices count from 1.
///
/// A list owns its elements. They come from GL_NewPtrClear or, as copies, from GL_NewPtr, and are
/// freed with GL_DisposePtr. Inserting does not copy. An operation that does not find its element
/// does nothing, but for LL_DeletePtr. Operations with a status give that of the allocation (-108),
/// or -50 for a null output or a size that has no room for the link.
///
/// The link is the machine's pointer. There are no locks: callers that share a list guard it.
#pragma once

#include "base_types.h"

/// The first word of every element.
struct LL_Link {
  LL_Link* next;
};

/// An element with a way back, which only LL_AddPtrD and LL_AddNewPtrD keep.
struct LL_LinkD {
  LL_LinkD* next;
  LL_LinkD* prev;  ///< null at the front
};

/// An element that points to a record of another list or of the caller.
struct LL_PtrElement {
  LL_PtrElement* next;
  void* ptr;
  UInt32 size;  ///< of the record in bytes, 0 if unknown
};

/// A stretch from `start` to `end`.
struct LL_Interval {
  LL_Interval* next;
  SInt32 start;
  SInt32 end;
};

/// An element of a list of lists.
struct LL_SubListElement {
  LL_SubListElement* next;
  void* sublist;  ///< the first element of another list
};

/// The place at the front of a list: all bits set.
inline void* LL_FrontPlace() {
  return reinterpret_cast<void*>(~std::uintptr_t{0});
}

/// The test of two elements that the list operations take: not 0 if they count as equal.
using LL_EqualProc = Boolean (*)(const void* a, const void* b);

/// How an element gets into another list; any other value means the same as kLL_PointTo.
enum LL_CopyMode : SInt32 {
  kLL_Move = 0,     ///< the element itself; it leaves the list that it was in
  kLL_PointTo = 1,  ///< a new LL_PtrElement that points to it
  kLL_Copy = 2,     ///< a copy of it
};

namespace quillmere {

/// The address of a typed list head as the operations take it.
template <class Element>
void** ListHead(Element** head) {
  return reinterpret_cast<void**>(head);
}

}  // namespace quillmere

// Insertion.

/// Links an element behind `behind`; a null element does nothing.
void LL_AddPtr(void* behind, void* element, void** list);
/// Allocates a zeroed element of `size` bytes and links it. On failure `*added` is null and the
/// list as it was.
SInt32 LL_AddNewPtr(Size size, void* behind, void** list, void** added);
/// The same two for elements that begin with LL_LinkD: the element's `prev` becomes its
/// predecessor, its follower's `prev` the element.
void LL_AddPtrD(void* behind, void* element, void** list);
SInt32 LL_AddNewPtrD(Size size, void* behind, void** list, void** added);
/// LL_AddNewPtr, the new element filled with the bytes of `source` behind the link.
SInt32 LL_CopyPtrFromListToList(const void* source, Size size, void* behind, void** list,
                                void** added);
/// Appends an element in the way of `mode` (LL_CopyMode): stores the address of what is linked,
/// whose own link becomes null, in `*tail_slot` and gives it as the next tail slot, the link being
/// its first word. `size` is the element's in bytes. A list is built by starting at its head
/// variable and carrying the result on. Null, with nothing stored, if there is no memory;
/// `tail_slot` itself for a null element.
void** LL_AddPtrToEndOfList(void* element, Size size, SInt32 mode, void** tail_slot);
/// Appends `list2` to `list1`; nothing is copied.
void LL_ConcatenateLists(void** list1, void* list2);

// Query.

/// Number of elements.
SInt32 LL_PtrListCount(const void* list);
/// The last element, or null.
void* LL_GetLastPtr(void* list);
/// The element in front of `element`; null when it is the first or absent.
void* LL_GetPrevPtr(void* list, const void* element);
/// The element at `index`; the first for any index up to 1, null past the end.
void* LL_GetPtrByIndex(void* list, SInt32 index);
/// Position of an element; 0 if absent.
SInt32 LL_GetPtrIndex(const void* list, const void* element);
/// Looks for an element whose 32-bit word `offset` bytes from its start is `id`. The address of
/// that word, which is `offset` bytes behind the element's, or null.
UInt32* LL_GetPtrByID(void* list, UInt32 id, Size offset);
/// 1 if `test(element, x)` holds for any element.
Boolean LL_PtrInLinkedList(const void* list, const void* x, LL_EqualProc test);
/// 1 if any element of a list of LL_PtrElement points to `ptr`.
Boolean LL_PtrInPtrList(const void* list, const void* ptr);

// Removal and disposal.

/// Unlinks an element if it is in the list; it is the caller's then.
void LL_RemovePtr(void* element, void** list);
/// Unlinks an element if it is in the list, frees it in any case, and clears the variable.
void LL_DeletePtr(void** list, void** element);
/// Deletes the last element, if there is one.
void LL_DeleteLastPtr(void** list);
/// Frees all elements; the head becomes null.
void LL_DisposeLinkedList(void** list);
/// The same for LL_PtrElement, with what they point to.
void LL_DisposePtrLE_List(void** list);
/// The same for LL_SubListElement, with the elements of their lists.
void LL_DisposeListOfLinkedLists(void** list);
/// Frees `count` elements behind the first `first` ones, or as many as there are.
void LL_DisposeLinkedSubList(void** list, SInt32 first, SInt32 count);

// Rearrangement.

/// Exchanges the places of two different elements of the list.
void LL_SwapPointers(void* a, void* b, void** list);
/// Exchanges the places of an element and the first or the last one; those between stay.
void LL_MovePtrToFront(void** list, void* element);
void LL_MovePtrToEnd(void** list, void* element);
/// Takes an element of the list out and links it behind `behind`.
void LL_MovePtrBehind(void* behind, void* element, void** list);
/// Moves an element so that its position is `index`, if that is between 1 and the count.
void LL_SetPtrIndex(void** list, void* element, SInt32 index);

// Copying and flattening.

/// Copies a list of elements of `size` bytes. A null output does nothing. On failure `*copy` has
/// what has been copied so far.
SInt32 LL_CopyLinkedList(const void* list, Size size, void** copy);
/// Makes a list of LL_PtrElement, `size` 0, that point to the elements of `list`. Otherwise the
/// same.
SInt32 LL_CopyListPtrs(void* list, void** copy);
/// Writes the elements, `size` bytes each with their links, one after the other to `*buffer`, which
/// is allocated if it is null and else has room for them. Then disposes of the list if asked. The
/// links in the buffer mean nothing, but for the last, which is 0.
SInt32 LL_FlattenLinkedList(Boolean dispose_list, void** list, Size size, void** buffer);
/// Makes a list of `count` elements of `size` bytes that lie in `*buffer`. The last element keeps
/// its link as it is there, so the buffer has to have 0 in that place. A count of 0 leaves the
/// output alone. Then frees the buffer if asked and clears the pointer. On failure the list has
/// what has been made so far, and the buffer stays.
SInt32 LL_UnflattenLinkedList(Size size, Boolean dispose_buffer, void** buffer, SInt32 count,
                              void** list);
/// Appends to the array `*array` of `*count` elements, `element_size` bytes each, those of
/// `new_array` that it has none equal to, byte for byte; equal ones within `new_array` are all
/// appended. A null
/// `*array` is an empty one and is allocated when something is appended. A null `array` or
/// `new_array` does nothing. On failure, also when the count would pass 31 bits, all stays.
SInt32 LL_MergeArrays(Size element_size, void** array, SInt32* count, const void* new_array,
                      SInt32 new_count);

// Sets. `equal` gets an element of list2 and one of list1; `size` is that of an element of either;
// the results are made in the way of `mode`. On failure, which kLL_Move never has, all outputs are
// null.

/// The elements of list1 that equal none of list2; those of list1 that equal one; the elements of
/// list2 that equal none of list1, each in the order of its list. An output may be null: its list
/// is disposed of, with kLL_Move the elements. With kLL_Move an element of list2 that equals one of
/// list1 goes nowhere: it stays the caller's, with a link that means nothing.
SInt32 LL_IntersectLists(void* list1, void* list2, Size size, LL_EqualProc equal, SInt32 mode,
                         void** only_in_1, void** common, void** only_in_2);
/// The first of the three lists alone.
SInt32 LL_SubtractLists(void* list1, void* list2, Size size, LL_EqualProc equal, SInt32 mode,
                        void** only_in_1);
/// All three, joined in their order.
SInt32 LL_MergeLists(void* list1, void* list2, Size size, LL_EqualProc equal, SInt32 mode,
                     void** merged);

// Others.

/// Unlinks every element that equals one in front of it, by `equal(front, behind)` (null: by
/// identity), and frees it if asked.
void LL_RemoveIdenticalElements(void* list, LL_EqualProc equal, Boolean dispose_duplicates);
/// Unites, in one pass, each LL_Interval with those behind it that it overlaps or touches; these
/// are freed. Since it grows on the way, an unordered list may still have overlaps afterwards.
void LL_ReduceIntervalList(void* list);
/// Sorts a list of LL_Interval by start and unites what overlaps or touches.
void LL_OrderReduceIntervalList(void** list);
