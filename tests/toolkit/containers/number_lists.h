// Lists of numbered elements for tests.
#pragma once

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "GL_Memory.h"
#include "LL_Linked_Lists.h"

namespace quillmere::test {

/// `number` is compared, `tag` tells equal elements apart.
struct NumberElement {
  NumberElement* next;
  SInt32 number;
  SInt32 tag;
};
inline constexpr Size kNumberSize = sizeof(NumberElement);

inline SInt32 NumberOf(const void* element) {
  return static_cast<const NumberElement*>(element)->number;
}

inline SInt32 CompareNumbers(const void* a, const void* b) {
  return (NumberOf(a) > NumberOf(b) ? 1 : 0) - (NumberOf(a) < NumberOf(b) ? 1 : 0);
}

inline Boolean EqualNumbers(const void* a, const void* b) {
  return NumberOf(a) == NumberOf(b);
}

using Row = std::pair<SInt32, SInt32>;
using Rows = std::vector<Row>;

/// A list that owns its elements.
class NumberList {
 public:
  NumberList() = default;
  explicit NumberList(const Rows& rows) {
    for (const auto& [number, tag] : rows)
      Add(nullptr, number, tag);
  }
  /// Numbers, tagged 0, 1, 2 and so on.
  explicit NumberList(const std::vector<SInt32>& numbers) {
    SInt32 tag = 0;
    for (const SInt32 number : numbers)
      Add(nullptr, number, tag++);
  }
  ~NumberList() { LL_DisposeLinkedList(&head); }
  NumberList(const NumberList&) = delete;
  NumberList& operator=(const NumberList&) = delete;

  NumberElement* Add(void* behind, SInt32 number, SInt32 tag) {
    void* added = nullptr;
    EXPECT_EQ(LL_AddNewPtr(kNumberSize, behind, &head, &added), noErr);
    auto* element = static_cast<NumberElement*>(added);
    element->number = number;
    element->tag = tag;
    return element;
  }

  /// The element at a position from 1.
  NumberElement* At(SInt32 index) const {
    return static_cast<NumberElement*>(LL_GetPtrByIndex(head, index));
  }

  /// Gives the elements away.
  void* Release() { return std::exchange(head, nullptr); }

  void* head = nullptr;
};

inline Rows RowsOf(const void* list) {
  Rows rows;
  for (const auto* at = static_cast<const NumberElement*>(list); at; at = at->next)
    rows.emplace_back(at->number, at->tag);
  return rows;
}

inline std::vector<SInt32> NumbersOf(const void* list) {
  std::vector<SInt32> numbers;
  for (const auto& row : RowsOf(list))
    numbers.push_back(row.first);
  return numbers;
}

}  // namespace quillmere::test
