/// Sorting and searching in arrays and in the lists of LL_Linked_Lists.h.
///
/// A comparator gives 1, 0 or -1. The list operations keep the greater in front: an order is
/// descending by the comparator unless an operation says otherwise, and the operations on sorted
/// lists expect it to be. All sorts are quadratic and allocate nothing. A count below 2 leaves an
/// array alone.
#pragma once

#include "LL_Linked_Lists.h"
#include "base_types.h"

/// 1 if `a` is the greater of two elements or records, -1 if `b` is, 0 if they are equal.
using SS_CompareProc = SInt32 (*)(const void* a, const void* b);

/// Compares the addresses as signed numbers.
SInt32 SS_CompareByAddress(const void* a, const void* b);
/// Compares two blocks: 0 if either is null; else the longer is the greater; else the first bytes
/// that differ decide, as signed numbers. Lengths in bytes.
SInt32 SS_CompareBinary(const void* a, Size length_a, const void* b, Size length_b);

// Sorts on arrays, in place. At each position a selection sort puts the first of those that no
// later one beats, exchanging the two; a bubble sort exchanges neighbours that are out of order.
// The indexed forms fill `index`, as long as the array, with 0, 1, 2 and so on and exchange in it
// as in the array: index[i] is then the former position of what is at i.

/// Records of `element_size` bytes, descending by `compare`.
void SS_SelectSortArray(SS_CompareProc compare, void* array, SInt32 count, Size element_size);
/// Numbers, descending.
void SS_SelectSortUInt8Array(UInt8* array, SInt32 count);
void SS_SelectSortFloatArray(float* array, SInt32 count);
void SS_SelectSortIndexedUInt8Array(UInt8* array, SInt32 count, SInt32* index);
void SS_SelectSortIndexedSInt32Array(SInt32* array, SInt32 count, SInt32* index);
void SS_SelectSortIndexedDoubleArray(double* array, SInt32 count, SInt32* index);
/// Numbers, ascending.
void SS_SelectSortIndexedDoubleArrayAscending(double* array, SInt32 count, SInt32* index);
void SS_BubbleSortSInt32Array(SInt32* array, SInt32 count);
void SS_BubbleSortSInt32ArrayIndex(SInt32* array, SInt32 count, SInt32* index);

// Sorts on lists. Equal elements keep their order. With `remove_equal` one of each set of equal
// elements stays, and the others are unlinked, and freed with `dispose_removed`.

/// Descending; the first of equal elements stays.
void SS_SelectSortDescending(SS_CompareProc compare, Boolean remove_equal, Boolean dispose_removed,
                             void** list);
/// Ascending.
void SS_SelectSortAscendingSimple(SS_CompareProc compare, void** list);
/// Ascending; the last of equal elements stays.
void SS_BubbleSort(SS_CompareProc compare, Boolean remove_equal, Boolean dispose_removed,
                   void** list);
/// Sorts a list descending by SS_CompareByAddress, any address standing in it once.
void SS_RemoveIdenticalPointers(void** list);
/// The same if `enable` is set; else nothing.
void SS_RemoveIdenticalItemsBinary(void** list, Boolean enable);

// Sorted lists. `compare` gets an element of list1 and one of list2. Elements of `size` bytes get
// into the results in the way of `mode` (LL_CopyMode). -108 without memory, the outputs being null
// then; kLL_Move never has that.

/// Merges two lists. Of equal elements that of list1 comes first; with `drop_equal` it alone comes,
/// and that of list2 is skipped, with kLL_Move freed. A null output does nothing.
SInt32 SS_MergePtrListsSorted(void* list1, void* list2, Size size, SS_CompareProc compare,
                              SInt32 mode, Boolean drop_equal, void** merged);
/// Parts two lists into the elements of list1 alone, those of list1 that list2 has, and those of
/// list2 alone. Equal elements pair one by one; that of list2 goes nowhere, with kLL_Move it is
/// freed. All outputs are needed; if one is null nothing is done.
SInt32 SS_IntersectListsSorted(void* list1, void* list2, Size size, SS_CompareProc compare,
                               SInt32 mode, void** only_in_1, void** common, void** only_in_2);
/// Unlinks the elements of list1 that list2 has an equal one for, and frees them if asked.
void SS_SubtractListSorted(void** list1, const void* list2, SS_CompareProc compare,
                           Boolean dispose_removed);
/// 1 if every element of `sublist` has an equal one in `list`, and `sublist` is not the longer one.
/// With `sort_first` both are sorted before, descending.
Boolean SS_ListContainsList(void** list, void** sublist, SS_CompareProc compare,
                            Boolean sort_first);

// Lists in any order.

/// 1 if the lists are equally long and the elements equal in order.
Boolean SS_EqualList(const void* list1, const void* list2, SS_CompareProc compare);
/// 1 if no two elements are equal.
Boolean SS_AreListElementsUnique(SS_CompareProc compare, const void* list);

// Arrays.

/// index[i] = i.
void SS_InitIndexList(SInt32* index, SInt32 count);
/// inverse[index[i]] = i; entries of `index` that are no position are passed over.
void SS_InvertIndexList(const SInt32* index, SInt32 count, SInt32* inverse);
/// Reverses the order.
void SS_RevertSInt32Array(SInt32* array, SInt32 count);
/// Where a value belongs in an ascending array of at least one number: the first index whose
/// element is above it; `count` if the last is below it, `count - 1` if the last is equal to it.
SInt32 SS_FindInsertIndexByBisection(const SInt32* array, SInt32 count, SInt32 value);
