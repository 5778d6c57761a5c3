#include <algorithm>
#include <numeric>
#include <random>

#include "SS_Sort_Search.h"
#include "number_lists.h"

namespace {

using namespace quillmere::test;
using Numbers = std::vector<SInt32>;

Numbers RandomNumbers(std::mt19937* random, unsigned most, unsigned range) {
  Numbers numbers((*random)() % (most + 1U));
  for (SInt32& number : numbers)
    number = static_cast<SInt32>((*random)() % range) - 3;
  return numbers;
}

TEST(Compare, BlocksByLengthThenSignedBytes) {
  const char low[] = "\x80zz";
  const char high[] = "\x7Fzz";
  EXPECT_EQ(SS_CompareBinary(high, 3, low, 3), 1);
  EXPECT_EQ(SS_CompareBinary(low, 3, high, 3), -1);
  EXPECT_EQ(SS_CompareBinary(low, 3, high, 1), 1);
  EXPECT_EQ(SS_CompareBinary(low, 0, high, 1), -1);
  EXPECT_EQ(SS_CompareBinary(low + 1, 2, high + 1, 2), 0);
  EXPECT_EQ(SS_CompareBinary(nullptr, 5, high, 1), 0);
  EXPECT_EQ(SS_CompareBinary(low, 5, nullptr, 1), 0);
  const auto* top = reinterpret_cast<void*>(~std::uintptr_t{0});
  EXPECT_EQ(SS_CompareByAddress(low, top), 1);
  EXPECT_EQ(SS_CompareByAddress(top, low), -1);
  EXPECT_EQ(SS_CompareByAddress(top, top), 0);
}

/// What selection by exchange does to ties, worked by hand: exchanging 1a and 3 puts 1a behind 1b.
TEST(ArraySorts, ExchangeTiesAsSelectionDoes) {
  struct Pair {
    SInt32 key;
    SInt32 tag;
  };
  Pair pairs[] = {{1, 0}, {1, 1}, {3, 2}, {2, 3}, {2, 4}};
  SS_SelectSortArray(
      [](const void* a, const void* b) -> SInt32 {
        const SInt32 x = static_cast<const Pair*>(a)->key;
        const SInt32 y = static_cast<const Pair*>(b)->key;
        return (x > y ? 1 : 0) - (x < y ? 1 : 0);
      },
      pairs, 5, sizeof(Pair));
  const Numbers tags = {2, 3, 4, 1, 0};
  for (std::size_t i = 0; i < 5; ++i)
    EXPECT_EQ(pairs[i].tag, tags[i]) << i;
  SInt32 values[] = {1, 1, 3, 2, 2};
  SInt32 index[5];
  SS_SelectSortIndexedSInt32Array(values, 5, index);
  EXPECT_EQ(Numbers(index, index + 5), tags);
}

template <class Number, class Sort, class Before>
void CheckSort(Sort sort, Before before) {
  std::mt19937 random(11);
  for (int round = 0; round < 50; ++round) {
    std::vector<Number> numbers;
    for (const SInt32 number : RandomNumbers(&random, 20, 300))
      numbers.push_back(static_cast<Number>(number));
    std::vector<Number> expected = numbers;
    std::sort(expected.begin(), expected.end(), before);
    const std::vector<Number> original = numbers;
    const Numbers index = sort(&numbers);
    ASSERT_EQ(numbers, expected);
    for (std::size_t i = 0; i < index.size(); ++i)
      ASSERT_EQ(numbers[i], original[static_cast<std::size_t>(index[i])]);
  }
}

template <class Number>
auto Plain(void (*sort)(Number*, SInt32)) {
  return [=](std::vector<Number>* numbers) {
    sort(numbers->data(), static_cast<SInt32>(numbers->size()));
    return Numbers{};
  };
}

template <class Number>
auto Indexed(void (*sort)(Number*, SInt32, SInt32*)) {
  return [=](std::vector<Number>* numbers) {
    Numbers index(numbers->size(), -1);
    sort(numbers->data(), static_cast<SInt32>(numbers->size()), index.data());
    return index;
  };
}

TEST(ArraySorts, OrderNumbersAndTheirIndices) {
  CheckSort<UInt8>(Plain(SS_SelectSortUInt8Array), std::greater<>());
  CheckSort<float>(Plain(SS_SelectSortFloatArray), std::greater<>());
  CheckSort<UInt8>(Indexed(SS_SelectSortIndexedUInt8Array), std::greater<>());
  CheckSort<SInt32>(Indexed(SS_SelectSortIndexedSInt32Array), std::greater<>());
  CheckSort<double>(Indexed(SS_SelectSortIndexedDoubleArray), std::greater<>());
  CheckSort<double>(Indexed(SS_SelectSortIndexedDoubleArrayAscending), std::less<>());
  CheckSort<SInt32>(Plain(SS_BubbleSortSInt32Array), std::less<>());
  CheckSort<SInt32>(Indexed(SS_BubbleSortSInt32ArrayIndex), std::less<>());
}

TEST(ArraySorts, BubblingKeepsTiesInOrder) {
  SInt32 values[] = {3, 1, 3, 1, 2};
  SInt32 index[5];
  SS_BubbleSortSInt32ArrayIndex(values, 5, index);
  EXPECT_EQ(Numbers(index, index + 5), (Numbers{1, 3, 4, 0, 2}));
}

/// All list sorts are stable; with removal they keep the first, or for bubbling the last.
TEST(ListSorts, KeepTiesInOrderAndOneOfEach) {
  std::mt19937 random(5);
  const auto greater = [](const Row& a, const Row& b) { return a.first > b.first; };
  const auto less = [](const Row& a, const Row& b) { return a.first < b.first; };
  const auto same = [](const Row& a, const Row& b) { return a.first == b.first; };
  for (int round = 0; round < 200; ++round) {
    const Numbers numbers = RandomNumbers(&random, 14, 6);
    const auto sorted = [&](auto before) {
      NumberList list(numbers);
      Rows rows = RowsOf(list.head);
      std::stable_sort(rows.begin(), rows.end(), before);
      return rows;
    };
    Rows descending = sorted(greater);
    Rows ascending = sorted(less);
    NumberList list(numbers);
    SS_SelectSortDescending(CompareNumbers, 0, 0, &list.head);
    ASSERT_EQ(RowsOf(list.head), descending);
    NumberList list2(numbers);
    SS_SelectSortAscendingSimple(CompareNumbers, &list2.head);
    ASSERT_EQ(RowsOf(list2.head), ascending);
    NumberList list3(numbers);
    SS_BubbleSort(CompareNumbers, 0, 0, &list3.head);
    ASSERT_EQ(RowsOf(list3.head), ascending);

    descending.erase(std::unique(descending.begin(), descending.end(), same), descending.end());
    NumberList list4(numbers);
    SS_SelectSortDescending(CompareNumbers, 1, 1, &list4.head);
    ASSERT_EQ(RowsOf(list4.head), descending);
    std::reverse(ascending.begin(), ascending.end());
    ascending.erase(std::unique(ascending.begin(), ascending.end(), same), ascending.end());
    std::reverse(ascending.begin(), ascending.end());
    NumberList list5(numbers);
    SS_BubbleSort(CompareNumbers, 1, 1, &list5.head);
    ASSERT_EQ(RowsOf(list5.head), ascending);
  }
}

TEST(ListSorts, LeaveRemovedElementsToTheCaller) {
  NumberList list(Numbers{4, 4});
  void* first = list.At(1);
  void* second = list.At(2);
  SS_SelectSortDescending(CompareNumbers, 1, 0, &list.head);
  EXPECT_EQ(list.head, first);
  GL_DisposePtr(&second);
}

TEST(ListSorts, ByAddress) {
  NumberList list(Numbers{1, 2, 3, 4});
  const void* head = list.head;
  SS_RemoveIdenticalItemsBinary(&list.head, 0);
  EXPECT_EQ(list.head, head);
  SS_RemoveIdenticalItemsBinary(&list.head, 1);
  EXPECT_EQ(LL_PtrListCount(list.head), 4);
  for (SInt32 i = 1; i < 4; ++i)
    EXPECT_EQ(SS_CompareByAddress(list.At(i), list.At(i + 1)), 1);
}

TEST(SortedLists, MergeInEveryMode) {
  const Rows rows1 = {{9, 1}, {5, 1}, {5, 2}, {2, 1}};
  const Rows rows2 = {{7, 3}, {5, 3}, {2, 3}, {2, 4}, {1, 3}};
  const Rows all = {{9, 1}, {7, 3}, {5, 1}, {5, 3}, {5, 2}, {2, 1}, {2, 3}, {2, 4}, {1, 3}};
  const Rows dropped = {{9, 1}, {7, 3}, {5, 1}, {5, 2}, {2, 1}, {2, 4}, {1, 3}};
  for (const SInt32 mode : {SInt32{kLL_Move}, SInt32{kLL_Copy}}) {
    for (const Boolean drop_equal : {Boolean{0}, Boolean{1}}) {
      NumberList list1(rows1);
      NumberList list2(rows2);
      NumberList merged;
      ASSERT_EQ(SS_MergePtrListsSorted(list1.head, list2.head, kNumberSize, CompareNumbers, mode,
                                       drop_equal, &merged.head),
                noErr);
      EXPECT_EQ(RowsOf(merged.head), drop_equal ? dropped : all) << mode;
      if (mode == kLL_Move) {
        list1.Release();
        list2.Release();
      }
    }
  }
}

TEST(SortedLists, IntersectInEveryMode) {
  for (const SInt32 mode : {SInt32{kLL_Move}, SInt32{kLL_Copy}}) {
    NumberList list1(Rows{{9, 1}, {5, 1}, {5, 2}, {2, 1}});
    NumberList list2(Rows{{7, 3}, {5, 3}, {2, 3}, {2, 4}});
    NumberList only1;
    NumberList common;
    NumberList only2;
    EXPECT_EQ(SS_IntersectListsSorted(list1.head, list2.head, kNumberSize, CompareNumbers, mode,
                                      &only1.head, &common.head, nullptr),
              noErr);
    EXPECT_EQ(only1.head, nullptr);
    ASSERT_EQ(SS_IntersectListsSorted(list1.head, list2.head, kNumberSize, CompareNumbers, mode,
                                      &only1.head, &common.head, &only2.head),
              noErr);
    EXPECT_EQ(RowsOf(only1.head), (Rows{{9, 1}, {5, 2}}));
    EXPECT_EQ(RowsOf(common.head), (Rows{{5, 1}, {2, 1}}));
    EXPECT_EQ(RowsOf(only2.head), (Rows{{7, 3}, {2, 4}}));
    if (mode == kLL_Move) {
      list1.Release();
      list2.Release();
    }
  }
}

TEST(SortedLists, SubtractAndContain) {
  NumberList list(Numbers{9, 5, 5, 2, 1});
  const NumberList taken(Numbers{8, 5, 1});
  SS_SubtractListSorted(&list.head, taken.head, CompareNumbers, 1);
  EXPECT_EQ(NumbersOf(list.head), (Numbers{9, 2}));

  const struct {
    Numbers list;
    Numbers sublist;
    Boolean sort_first;
    Boolean contained;
  } rows[] = {{{9, 5, 2}, {9, 2}, 0, 1}, {{9, 5, 2}, {}, 0, 1},     {{}, {}, 0, 1},
              {{}, {1}, 0, 0},           {{9, 5, 2}, {4}, 0, 0},    {{9, 5}, {9, 5, 2}, 0, 0},
              {{5}, {5, 5}, 0, 0},       {{9, 5}, {5, 9}, 0, 0},    {{5, 9}, {9, 5}, 1, 1},
              {{2, 9, 5}, {2, 9}, 1, 1}, {{9, 5, 5}, {5, 5}, 0, 1}, {{9, 5}, {1}, 0, 0}};
  for (const auto& row : rows) {
    NumberList whole(row.list);
    NumberList part(row.sublist);
    EXPECT_EQ(SS_ListContainsList(&whole.head, &part.head, CompareNumbers, row.sort_first),
              row.contained)
        << testing::PrintToString(row.list) << testing::PrintToString(row.sublist);
  }
}

TEST(Lists, EqualAndUnique) {
  const NumberList a(Numbers{1, 2, 3});
  const NumberList b(Rows{{1, 7}, {2, 7}, {3, 7}});
  const NumberList shorter(Numbers{1, 2});
  const NumberList twice(Numbers{1, 2, 1});
  EXPECT_EQ(SS_EqualList(a.head, b.head, CompareNumbers), 1);
  EXPECT_EQ(SS_EqualList(a.head, shorter.head, CompareNumbers), 0);
  EXPECT_EQ(SS_EqualList(a.head, twice.head, CompareNumbers), 0);
  EXPECT_EQ(SS_EqualList(nullptr, nullptr, CompareNumbers), 1);
  EXPECT_EQ(SS_AreListElementsUnique(CompareNumbers, a.head), 1);
  EXPECT_EQ(SS_AreListElementsUnique(CompareNumbers, twice.head), 0);
}

TEST(Arrays, IndicesReversalAndBisection) {
  SInt32 inverse[] = {-1, -1, -1};
  const SInt32 index[] = {2, 0, 1};
  SS_InvertIndexList(index, 3, inverse);
  EXPECT_EQ(Numbers(inverse, inverse + 3), (Numbers{1, 2, 0}));
  const SInt32 wild[] = {-1, 3, 0x7FFFFFFF};
  SS_InvertIndexList(wild, 3, inverse);
  EXPECT_EQ(Numbers(inverse, inverse + 3), (Numbers{1, 2, 0}));
  SS_RevertSInt32Array(inverse, 3);
  EXPECT_EQ(Numbers(inverse, inverse + 3), (Numbers{0, 2, 1}));
  for (const SInt32 count : {0, 1, -5}) {
    SInt32 one[] = {4};
    SS_RevertSInt32Array(one, count);
    SS_BubbleSortSInt32Array(one, count);
    EXPECT_EQ(one[0], 4);
  }

  const SInt32 array[] = {1, 3, 3, 8, 8};
  const std::pair<SInt32, SInt32> rows[] = {{0, 0}, {1, 1}, {2, 1}, {3, 3}, {7, 3}, {8, 4}, {9, 5}};
  for (const auto& [value, place] : rows)
    EXPECT_EQ(SS_FindInsertIndexByBisection(array, 5, value), place) << value;
  EXPECT_EQ(SS_FindInsertIndexByBisection(array, 2, 3), 1);
  EXPECT_EQ(SS_FindInsertIndexByBisection(array, 1, 1), 0);
}

}  // namespace
