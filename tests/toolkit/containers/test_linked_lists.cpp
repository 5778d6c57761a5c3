#include <cstring>
#include <limits>
#include <random>

#include "number_lists.h"

namespace {

using namespace quillmere::test;
using Numbers = std::vector<SInt32>;

TEST(Lists, InsertAtTheNamedPlace) {
  NumberList list;
  auto* two = list.Add(nullptr, 2, 0);
  list.Add(nullptr, 4, 0);
  list.Add(LL_FrontPlace(), 1, 0);
  list.Add(two, 3, 0);
  int stranger = 0;
  list.Add(&stranger, 5, 0);
  EXPECT_EQ(NumbersOf(list.head), (Numbers{1, 2, 3, 4, 5}));
  LL_AddPtr(nullptr, nullptr, &list.head);
  EXPECT_EQ(LL_PtrListCount(list.head), 5);
  EXPECT_EQ(LL_GetPtrIndex(list.head, two), 2);
  EXPECT_EQ(LL_GetPtrIndex(list.head, &stranger), 0);
  EXPECT_EQ(LL_GetPtrByIndex(list.head, -3), list.head);
  EXPECT_EQ(LL_GetPtrByIndex(list.head, 6), nullptr);
  EXPECT_EQ(LL_GetPrevPtr(list.head, two), list.head);
  EXPECT_EQ(LL_GetPrevPtr(list.head, list.head), nullptr);
  EXPECT_EQ(LL_GetPrevPtr(list.head, nullptr), nullptr);
  EXPECT_EQ(NumberOf(LL_GetLastPtr(list.head)), 5);
  EXPECT_EQ(LL_GetLastPtr(nullptr), nullptr);
}

TEST(Lists, RefuseWhatCannotBeAllocated) {
  NumberList list(Numbers{1});
  for (const Size size : {Size{-1}, Size{0}, Size{7}, std::numeric_limits<Size>::max()}) {
    void* added = &list;
    EXPECT_LT(LL_AddNewPtr(size, nullptr, &list.head, &added), 0) << size;
    EXPECT_EQ(added, nullptr);
    added = &list;
    EXPECT_LT(LL_CopyPtrFromListToList(list.head, size, nullptr, &list.head, &added), 0) << size;
    EXPECT_EQ(added, nullptr);
    void* copy = &list;
    EXPECT_LT(LL_CopyLinkedList(list.head, size, &copy), 0) << size;
    EXPECT_EQ(copy, nullptr);
    void* buffer = nullptr;
    EXPECT_LT(LL_FlattenLinkedList(1, &list.head, size, &buffer), 0) << size;
    EXPECT_EQ(buffer, nullptr);
    void* merged = &list;
    EXPECT_LT(LL_MergeLists(list.head, nullptr, size, EqualNumbers, kLL_Copy, &merged), 0) << size;
    EXPECT_EQ(merged, nullptr);
  }
  EXPECT_EQ(NumbersOf(list.head), Numbers{1});
}

TEST(Lists, KeepTheWayBackInDoubleLists) {
  void* head = nullptr;
  const auto check = [&] {
    LL_LinkD* before = nullptr;
    for (auto* at = static_cast<LL_LinkD*>(head); at; before = at, at = at->next)
      EXPECT_EQ(at->prev, before);
  };
  void* a = nullptr;
  void* b = nullptr;
  for (void* behind : {static_cast<void*>(nullptr), LL_FrontPlace(), a}) {
    ASSERT_EQ(LL_AddNewPtrD(sizeof(LL_LinkD), behind, &head, &a), noErr);
    check();
    ASSERT_EQ(LL_AddNewPtrD(sizeof(LL_LinkD) + 4, a, &head, &b), noErr);
    EXPECT_EQ(static_cast<LL_LinkD*>(b)->prev, a);
    check();
  }
  EXPECT_EQ(LL_PtrListCount(head), 6);
  EXPECT_EQ(LL_AddNewPtrD(sizeof(LL_Link), nullptr, &head, &a), paramErr);
  LL_DisposeLinkedList(&head);
}

TEST(Lists, FindWordsAndPointers) {
  NumberList list(Rows{{7, 1}, {8, 2}, {8, 3}});
  EXPECT_EQ(LL_GetPtrByID(list.head, 8, offsetof(NumberElement, number)),
            reinterpret_cast<UInt32*>(&list.At(2)->number));
  EXPECT_EQ(LL_GetPtrByID(list.head, 9, offsetof(NumberElement, number)), nullptr);
  const NumberElement wanted = {nullptr, 8, 0};
  const NumberElement missing = {nullptr, 9, 0};
  EXPECT_EQ(LL_PtrInLinkedList(list.head, &wanted, EqualNumbers), 1);
  EXPECT_EQ(LL_PtrInLinkedList(list.head, &missing, EqualNumbers), 0);
  void* pointers = nullptr;
  ASSERT_EQ(LL_CopyListPtrs(list.head, &pointers), noErr);
  EXPECT_EQ(LL_PtrListCount(pointers), 3);
  EXPECT_EQ(LL_PtrInPtrList(pointers, list.At(3)), 1);
  EXPECT_EQ(LL_PtrInPtrList(pointers, pointers), 0);
  EXPECT_EQ(static_cast<LL_PtrElement*>(pointers)->size, 0U);
  LL_DisposeLinkedList(&pointers);
}

TEST(Lists, RemoveFromEveryPlace) {
  for (SInt32 index = 1; index <= 3; ++index) {
    NumberList list(Numbers{1, 2, 3});
    void* element = list.At(index);
    LL_RemovePtr(element, &list.head);
    LL_RemovePtr(element, &list.head);  // absent now
    EXPECT_EQ(LL_PtrListCount(list.head), 2);
    EXPECT_EQ(LL_GetPtrIndex(list.head, element), 0);
    LL_DeletePtr(&list.head, &element);  // absent, freed all the same
    EXPECT_EQ(element, nullptr);
    LL_DeleteLastPtr(&list.head);
    LL_DeleteLastPtr(&list.head);
    LL_DeleteLastPtr(&list.head);
    EXPECT_EQ(list.head, nullptr);
  }
}

TEST(Lists, DisposeOfStretches) {
  const struct {
    SInt32 first;
    SInt32 count;
    Numbers left;
  } rows[] = {
      {0, 2, {3, 4}},        {1, 2, {1, 4}},         {3, 9, {1, 2, 3}}, {4, 1, {1, 2, 3, 4}},
      {9, 1, {1, 2, 3, 4}},  {0, 0, {1, 2, 3, 4}},   {0, 4, {}},        {-1, 2, {1, 2, 3, 4}},
      {1, -2, {1, 2, 3, 4}}, {2, 0x7FFFFFFF, {1, 2}}};
  for (const auto& row : rows) {
    NumberList list(Numbers{1, 2, 3, 4});
    LL_DisposeLinkedSubList(&list.head, row.first, row.count);
    EXPECT_EQ(NumbersOf(list.head), row.left) << row.first << ' ' << row.count;
  }
}

TEST(Lists, DisposeOfWhatTheirElementsHold) {
  void* pointers = nullptr;
  NumberList owned(Numbers{1, 2});
  ASSERT_EQ(LL_CopyListPtrs(owned.head, &pointers), noErr);
  owned.Release();
  LL_DisposePtrLE_List(&pointers);
  EXPECT_EQ(pointers, nullptr);

  void* lists = nullptr;
  for (int i = 0; i < 2; ++i) {
    NumberList sublist(Numbers{1, 2, 3});
    void* added = nullptr;
    ASSERT_EQ(LL_AddNewPtr(sizeof(LL_SubListElement), nullptr, &lists, &added), noErr);
    static_cast<LL_SubListElement*>(added)->sublist = sublist.Release();
  }
  LL_DisposeListOfLinkedLists(&lists);
  EXPECT_EQ(lists, nullptr);
}

TEST(Lists, SwapAnyTwoPlaces) {
  for (SInt32 i = 1; i <= 4; ++i) {
    for (SInt32 j = 1; j <= 4; ++j) {
      NumberList list(Numbers{1, 2, 3, 4});
      Numbers expected = {1, 2, 3, 4};
      std::swap(expected[static_cast<std::size_t>(i - 1)],
                expected[static_cast<std::size_t>(j - 1)]);
      LL_SwapPointers(list.At(i), list.At(j), &list.head);
      EXPECT_EQ(NumbersOf(list.head), expected) << i << ' ' << j;
    }
  }
  NumberList list(Numbers{1, 2, 3});
  NumberElement stranger = {};
  LL_SwapPointers(list.head, &stranger, &list.head);
  LL_SwapPointers(nullptr, list.head, &list.head);
  EXPECT_EQ(NumbersOf(list.head), (Numbers{1, 2, 3}));
  LL_MovePtrToFront(&list.head, list.At(3));
  EXPECT_EQ(NumbersOf(list.head), (Numbers{3, 2, 1}));
  LL_MovePtrToEnd(&list.head, list.At(2));
  EXPECT_EQ(NumbersOf(list.head), (Numbers{3, 1, 2}));
}

TEST(Lists, MoveElements) {
  for (SInt32 from = 1; from <= 4; ++from) {
    for (SInt32 to = -1; to <= 6; ++to) {
      NumberList list(Numbers{1, 2, 3, 4});
      Numbers expected = {1, 2, 3, 4};
      if (to >= 1 && to <= 4) {
        expected.erase(expected.begin() + from - 1);
        expected.insert(expected.begin() + to - 1, from);
      }
      LL_SetPtrIndex(&list.head, list.At(from), to);
      EXPECT_EQ(NumbersOf(list.head), expected) << from << " to " << to;
    }
  }
  NumberList list(Numbers{1, 2, 3});
  LL_MovePtrBehind(list.At(3), list.At(1), &list.head);
  EXPECT_EQ(NumbersOf(list.head), (Numbers{2, 3, 1}));
  LL_MovePtrBehind(LL_FrontPlace(), list.At(3), &list.head);
  EXPECT_EQ(NumbersOf(list.head), (Numbers{1, 2, 3}));
  LL_MovePtrBehind(list.head, list.head, &list.head);
  EXPECT_EQ(NumbersOf(list.head), (Numbers{2, 3, 1}));
  NumberElement stranger = {};
  LL_MovePtrBehind(nullptr, &stranger, &list.head);
  LL_SetPtrIndex(&list.head, &stranger, 1);
  EXPECT_EQ(NumbersOf(list.head), (Numbers{2, 3, 1}));
}

TEST(Lists, CopyFlattenAndComeBack) {
  NumberList list(Rows{{1, 10}, {2, 20}, {3, 30}});
  const Rows rows = RowsOf(list.head);
  NumberList copy;
  ASSERT_EQ(LL_CopyLinkedList(list.head, kNumberSize, &copy.head), noErr);
  EXPECT_EQ(RowsOf(copy.head), rows);
  void* added = nullptr;
  ASSERT_EQ(LL_CopyPtrFromListToList(list.At(2), kNumberSize, LL_FrontPlace(), &copy.head, &added),
            noErr);
  EXPECT_EQ(RowsOf(copy.head), (Rows{{2, 20}, {1, 10}, {2, 20}, {3, 30}}));
  EXPECT_EQ(LL_CopyLinkedList(list.head, kNumberSize, nullptr), noErr);

  void* buffer = nullptr;
  ASSERT_EQ(LL_FlattenLinkedList(1, &list.head, kNumberSize, &buffer), noErr);
  EXPECT_EQ(list.head, nullptr);
  EXPECT_EQ(static_cast<NumberElement*>(buffer)[2].next, nullptr);
  ASSERT_EQ(LL_UnflattenLinkedList(kNumberSize, 0, &buffer, 3, &list.head), noErr);
  EXPECT_EQ(RowsOf(list.head), rows);
  // Into a buffer that is there already; a count of 0 leaves the output alone.
  list.At(2)->number = 22;
  ASSERT_EQ(LL_FlattenLinkedList(0, &list.head, kNumberSize, &buffer), noErr);
  EXPECT_EQ(static_cast<NumberElement*>(buffer)[1].number, 22);
  void* untouched = list.head;
  EXPECT_EQ(LL_UnflattenLinkedList(kNumberSize, 0, &buffer, 0, &untouched), noErr);
  EXPECT_EQ(untouched, list.head);
  EXPECT_EQ(LL_UnflattenLinkedList(kNumberSize, 1, &buffer, -1, &untouched), paramErr);
  GL_DisposePtr(&buffer);
}

TEST(Lists, MergeArraysByTheirBytes) {
  void* array = nullptr;
  SInt32 count = 77;  // means nothing while there is no array
  const UInt16 first[] = {5, 6, 5};
  ASSERT_EQ(LL_MergeArrays(2, &array, &count, first, 3), noErr);
  EXPECT_EQ(count, 3);
  const void* before = array;
  EXPECT_EQ(LL_MergeArrays(2, &array, &count, first, 3), noErr);
  EXPECT_EQ(array, before);
  const UInt16 second[] = {9, 6, 9, 0x0605};
  ASSERT_EQ(LL_MergeArrays(2, &array, &count, second, 4), noErr);
  const UInt16 expected[] = {5, 6, 5, 9, 9, 0x0605};
  ASSERT_EQ(count, 6);
  EXPECT_EQ(std::memcmp(array, expected, sizeof(expected)), 0);
  EXPECT_EQ(LL_MergeArrays(2, nullptr, &count, second, 4), noErr);
  EXPECT_EQ(LL_MergeArrays(2, &array, &count, nullptr, 4), noErr);
  EXPECT_EQ(LL_MergeArrays(0, &array, &count, second, 4), paramErr);
  EXPECT_EQ(LL_MergeArrays(2, &array, &count, second, -1), paramErr);
  EXPECT_EQ(count, 6);
  GL_DisposePtr(&array);
}

Numbers PointedNumbers(const void* list) {
  Numbers numbers;
  for (const auto* at = static_cast<const LL_PtrElement*>(list); at; at = at->next) {
    EXPECT_EQ(at->size, static_cast<UInt32>(kNumberSize));
    numbers.push_back(NumberOf(at->ptr));
  }
  return numbers;
}

TEST(ListSets, PartInEveryMode) {
  for (const SInt32 mode : {SInt32{kLL_Move}, SInt32{kLL_Copy}, SInt32{kLL_PointTo}, SInt32{-7}}) {
    NumberList list1(Numbers{1, 2, 2, 3, 4});
    NumberList list2(Numbers{5, 4, 2, 6, 4});
    NumberElement* const equal[] = {list2.At(2), list2.At(3), list2.At(5)};
    void* only1 = nullptr;
    void* common = nullptr;
    void* only2 = nullptr;
    ASSERT_EQ(LL_IntersectLists(list1.head, list2.head, kNumberSize, EqualNumbers, mode, &only1,
                                &common, &only2),
              noErr);
    const bool pointers = mode != kLL_Move && mode != kLL_Copy;
    const auto numbers = pointers ? PointedNumbers : NumbersOf;
    EXPECT_EQ(numbers(only1), (Numbers{1, 3})) << mode;
    EXPECT_EQ(numbers(common), (Numbers{2, 2, 4})) << mode;
    EXPECT_EQ(numbers(only2), (Numbers{5, 6})) << mode;
    if (mode == kLL_Move) {
      list1.Release();
      list2.Release();
      for (void* element : equal)
        GL_DisposePtr(&element);
    } else {
      EXPECT_EQ(NumbersOf(list1.head), (Numbers{1, 2, 2, 3, 4}));
      EXPECT_EQ(NumbersOf(list2.head), (Numbers{5, 4, 2, 6, 4}));
    }
    LL_DisposeLinkedList(&only1);
    LL_DisposeLinkedList(&common);
    LL_DisposeLinkedList(&only2);
  }
}

TEST(ListSets, SubtractAndMerge) {
  NumberList list1(Rows{{1, 0}, {2, 1}, {3, 2}});
  NumberList list2(Rows{{4, 10}, {3, 11}, {5, 12}});
  NumberList result;
  ASSERT_EQ(
      LL_SubtractLists(list1.head, list2.head, kNumberSize, EqualNumbers, kLL_Copy, &result.head),
      noErr);
  EXPECT_EQ(RowsOf(result.head), (Rows{{1, 0}, {2, 1}}));
  LL_DisposeLinkedList(&result.head);
  ASSERT_EQ(
      LL_MergeLists(list1.head, list2.head, kNumberSize, EqualNumbers, kLL_Copy, &result.head),
      noErr);
  EXPECT_EQ(RowsOf(result.head), (Rows{{1, 0}, {2, 1}, {3, 2}, {4, 10}, {5, 12}}));
  LL_DisposeLinkedList(&result.head);
  // Moving: what goes into no output is freed, which the leak checker sees.
  void* stays = list2.At(2);
  ASSERT_EQ(LL_SubtractLists(list1.Release(), list2.Release(), kNumberSize, EqualNumbers, kLL_Move,
                             &result.head),
            noErr);
  EXPECT_EQ(RowsOf(result.head), (Rows{{1, 0}, {2, 1}}));
  GL_DisposePtr(&stays);
  EXPECT_EQ(LL_IntersectLists(nullptr, nullptr, 0, nullptr, 0, nullptr, nullptr, nullptr), noErr);
}

TEST(ListSets, KeepTheFirstOfEqualElements) {
  NumberList list(Rows{{1, 0}, {2, 1}, {1, 2}, {1, 3}, {2, 4}});
  LL_RemoveIdenticalElements(list.head, nullptr, 1);
  EXPECT_EQ(LL_PtrListCount(list.head), 5);
  LL_RemoveIdenticalElements(list.head, EqualNumbers, 1);
  EXPECT_EQ(RowsOf(list.head), (Rows{{1, 0}, {2, 1}}));
}

using Interval = std::pair<SInt32, SInt32>;
using Intervals = std::vector<Interval>;

void* IntervalList(const Intervals& intervals) {
  void* list = nullptr;
  for (const auto& [start, end] : intervals) {
    void* added = nullptr;
    EXPECT_EQ(LL_AddNewPtr(sizeof(LL_Interval), nullptr, &list, &added), noErr);
    static_cast<LL_Interval*>(added)->start = start;
    static_cast<LL_Interval*>(added)->end = end;
  }
  return list;
}

Intervals TakeIntervals(void* list) {
  Intervals intervals;
  for (const auto* at = static_cast<LL_Interval*>(list); at; at = at->next)
    intervals.emplace_back(at->start, at->end);
  LL_DisposeLinkedList(&list);
  return intervals;
}

TEST(IntervalLists, ReduceInOnePass) {
  void* list = IntervalList({{1, 2}, {5, 6}, {2, 5}});
  LL_ReduceIntervalList(list);
  EXPECT_EQ(TakeIntervals(list), (Intervals{{1, 5}, {5, 6}}));
  LL_ReduceIntervalList(nullptr);
}

TEST(IntervalLists, OrderAndReduce) {
  const std::pair<Intervals, Intervals> rows[] = {
      {{}, {}},
      {{{5, 6}, {1, 2}, {2, 3}}, {{1, 3}, {5, 6}}},
      {{{1, 2}, {4, 5}, {2, 4}}, {{1, 5}}},
      {{{3, 4}, {1, 9}, {12, 12}, {10, 11}}, {{1, 9}, {10, 11}, {12, 12}}}};
  for (const auto& [before, after] : rows) {
    void* list = IntervalList(before);
    LL_OrderReduceIntervalList(&list);
    EXPECT_EQ(TakeIntervals(list), after);
  }
}

/// Random intervals against a map of the points that they cover, in half steps.
TEST(IntervalLists, CoverWhatTheyCovered) {
  std::mt19937 random(4);
  for (int round = 0; round < 300; ++round) {
    Intervals before;
    std::vector<bool> covered(130);
    const auto cover = [&](std::vector<bool>* map, const Interval& interval) {
      for (SInt32 at = 2 * interval.first; at <= 2 * interval.second; ++at)
        (*map)[static_cast<std::size_t>(at)] = true;
    };
    for (auto i = random() % 12; i > 0; --i) {
      const auto start = static_cast<SInt32>(random() % 50);
      before.emplace_back(start, start + static_cast<SInt32>(random() % 6));
      cover(&covered, before.back());
    }
    void* list = IntervalList(before);
    LL_OrderReduceIntervalList(&list);
    std::vector<bool> after(130);
    SInt32 last = -1;
    for (const auto& interval : TakeIntervals(list)) {
      EXPECT_GT(interval.first, last);
      last = interval.second;
      cover(&after, interval);
    }
    EXPECT_EQ(after, covered);
  }
}

TEST(Lists, TakeAMillionElementsWithoutRecursion) {
  constexpr SInt32 kMany = 1000000;
  void* list = nullptr;
  void** tail = &list;
  NumberElement element = {};
  for (SInt32 i = 0; i < kMany; ++i) {
    element.number = i;
    tail = LL_AddPtrToEndOfList(&element, kNumberSize, kLL_Copy, tail);
    ASSERT_NE(tail, nullptr);
  }
  void* copy = nullptr;
  ASSERT_EQ(LL_CopyLinkedList(list, kNumberSize, &copy), noErr);
  void* buffer = nullptr;
  ASSERT_EQ(LL_FlattenLinkedList(1, &copy, kNumberSize, &buffer), noErr);
  ASSERT_EQ(LL_UnflattenLinkedList(kNumberSize, 1, &buffer, kMany, &copy), noErr);
  EXPECT_EQ(buffer, nullptr);
  SInt32 expected = 0;
  for (const auto* at = static_cast<NumberElement*>(copy); at; at = at->next)
    ASSERT_EQ(at->number, expected++);
  EXPECT_EQ(expected, kMany);
  void* pointers = nullptr;
  ASSERT_EQ(LL_CopyListPtrs(list, &pointers), noErr);
  LL_DisposeLinkedList(&pointers);
  LL_DisposeLinkedSubList(&copy, 1, kMany);
  EXPECT_EQ(LL_PtrListCount(copy), 1);
  LL_ConcatenateLists(&list, copy);
  EXPECT_EQ(LL_PtrListCount(list), kMany + 1);
  LL_DisposeLinkedList(&list);
}

}  // namespace
