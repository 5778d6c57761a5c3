#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "base_types.h"
#include "fixed_point.h"
#include "matrices.h"
#include "memory_handles.h"
#include "reference_counted.h"

namespace {

TEST(FourCharCode, IsBigEndian) {
  EXPECT_EQ("moov"_4cc, 0x6D6F6F76U);
  EXPECT_EQ("\xA9nam"_4cc, 0xA96E616DU);
}

TEST(Fixed, ClampsAndRounds) {
  EXPECT_EQ(Long2Fix(-1), -65536);
  EXPECT_EQ(Long2Fix(32768), std::numeric_limits<Fixed>::max());
  EXPECT_EQ(Long2Fix(-32769), std::numeric_limits<Fixed>::min());
  EXPECT_EQ(Fix2X(0x18000), 1.5);
  EXPECT_EQ(X2Fix(1.0 / 3), 21845);
  EXPECT_EQ(X2Fix(-0.5 / 65536), -1);
  EXPECT_EQ(X2Fix(1e9), std::numeric_limits<Fixed>::max());
  EXPECT_EQ(X2Fix(-1e9), std::numeric_limits<Fixed>::min());
  EXPECT_EQ(X2Fix(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(Fixed, MultipliesAndDividesRoundedAndHeldAtTheLimits) {
  constexpr SInt32 kHighest = std::numeric_limits<SInt32>::max();
  constexpr SInt32 kLowest = std::numeric_limits<SInt32>::min();
  const struct {
    SInt32 a, b;
    Fixed product, quotient;
  } cases[] = {
      {0x18000, 0x28000, 0x3C000, 0x999A},
      {-0x18000, 0x28000, -0x3C000, -0x999A},
      {1, 3, 0, 0x5555},
      {2, 3, 0, 0xAAAB},
      {1, 0x8000, 1, 2},
      {-1, 0x8000, -1, -2},
      {1, 0x7FFF, 0, 2},
      {1, 131072, 2, 1},
      {1, 131073, 2, 0},
      {5, 0, 0, kHighest},
      {0, 0, 0, kHighest},
      {-5, 0, 0, kLowest},
      {kHighest, kHighest, kHighest, 0x10000},
      {kLowest, kLowest, kHighest, 0x10000},
      {kLowest, kHighest, kLowest, -0x10000},
      {kLowest, -1, 32768, kHighest},
      {32768, 1, 1, kHighest},
      {-32768, 1, -1, kLowest},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FixMul(c.a, c.b), c.product) << c.a << " * " << c.b;
    EXPECT_EQ(FixDiv(c.a, c.b), c.quotient) << c.a << " / " << c.b;
  }
  EXPECT_EQ(Fix2Long(0x18000), 2);
  EXPECT_EQ(Fix2Long(0x17FFF), 1);
  EXPECT_EQ(Fix2Long(-0x18000), -2);
  EXPECT_EQ(Fix2Long(kHighest), 32768);
  EXPECT_EQ(Fix2Long(kLowest), -32768);
}

TEST(Wide, DividesTowardZeroWithItsRemainder) {
  constexpr SInt32 kHighest = std::numeric_limits<SInt32>::max();
  constexpr SInt32 kLowest = std::numeric_limits<SInt32>::min();
  constexpr SInt64 kWideLowest = std::numeric_limits<SInt64>::min();
  const struct {
    SInt64 dividend;
    SInt32 divisor, quotient, remainder;
  } cases[] = {
      {17, 5, 3, 2},
      {-17, 5, -3, -2},
      {17, -5, -3, 2},
      {-17, -5, 3, -2},
      {WideMultiply(kLowest, kLowest), kLowest, kLowest, 0},
      {WideMultiply(kHighest, kHighest), kHighest, kHighest, 0},
      {WideMultiply(kHighest, kHighest), 1, kHighest, 0},
      {WideMultiply(kHighest, kLowest), 7, kLowest, 0},
      {kLowest, -1, kHighest, 0},
      {kWideLowest, -1, kHighest, 0},
      {kWideLowest, kLowest, kHighest, 0},
      {1, 0, kHighest, 0},
      {-1, 0, kLowest, 0},
  };
  for (const auto& c : cases) {
    SInt32 remainder = 99;
    EXPECT_EQ(WideDivide(c.dividend, c.divisor, &remainder), c.quotient)
        << c.dividend << " / " << c.divisor;
    EXPECT_EQ(remainder, c.remainder) << c.dividend << " / " << c.divisor;
    EXPECT_EQ(WideDivide(c.dividend, c.divisor, nullptr), c.quotient);
  }
}

TEST(Handles, KeepTheirContentWhenTheyGrowAndShrink) {
  Handle handle = nullptr;
  ASSERT_EQ(PtrToHand("hello", &handle, 5), noErr);
  SetHandleSize(handle, 1 << 20);
  ASSERT_EQ(MemError(), noErr);
  EXPECT_EQ(GetHandleSize(handle), 1 << 20);
  EXPECT_EQ(std::memcmp(*handle, "hello", 5), 0);
  SetHandleSize(handle, 4);
  ASSERT_EQ(HandAndHand(handle, handle), noErr);
  EXPECT_EQ(std::memcmp(*handle, "hellhell", 8), 0);
  ASSERT_EQ(PtrAndHand("!", handle, 1), noErr);
  Handle copy = handle;
  ASSERT_EQ(HandToHand(&copy), noErr);
  EXPECT_NE(copy, handle);
  EXPECT_EQ(GetHandleSize(copy), 9);
  DisposeHandle(copy);
  DisposeHandle(handle);
}

TEST(Handles, ReportWhatIsWrong) {
  EXPECT_EQ(NewHandle(-1), nullptr);
  EXPECT_EQ(MemError(), paramErr);
  EXPECT_EQ(NewHandle(std::numeric_limits<Size>::max()), nullptr);
  EXPECT_EQ(MemError(), memFullErr);
  EXPECT_EQ(GetHandleSize(nullptr), 0);
  EXPECT_EQ(MemError(), nilHandleErr);
  EXPECT_EQ(HandAndHand(nullptr, nullptr), nilHandleErr);

  Handle handle = NewHandleClear(4);
  SetHandleSize(handle, std::numeric_limits<Size>::max());
  EXPECT_EQ(MemError(), memFullErr);
  EXPECT_EQ(GetHandleSize(handle), 4);
  EXPECT_EQ(PtrAndHand("x", handle, std::numeric_limits<Size>::max()), memFullErr);
  HLock(handle);
  HSetState(handle, static_cast<SInt8>(HGetState(handle) | kHandleResourceMask));
  HUnlock(handle);
  EXPECT_EQ(HGetState(handle), kHandleResourceMask);
  DisposeHandle(handle);
}

TEST(Handles, DoNotMoveWhileLocked) {
  Handle handle = NewHandle(64);
  HLock(handle);
  const Ptr block = *handle;
  SetHandleSize(handle, 8);
  EXPECT_EQ(GetHandleSize(handle), 8);
  SetHandleSize(handle, 64);
  EXPECT_EQ(MemError(), noErr);
  SetHandleSize(handle, 65);
  EXPECT_EQ(MemError(), memFullErr);
  EXPECT_EQ(GetHandleSize(handle), 64);
  EXPECT_EQ(*handle, block);
  HUnlock(handle);
  SetHandleSize(handle, 1 << 20);
  EXPECT_EQ(MemError(), noErr);
  DisposeHandle(handle);
}

struct Counted final : CFObject {
  explicit Counted(int* gone) : gone_(gone) {}
  ~Counted() override { ++*gone_; }
  int* gone_;
};

TEST(ReferenceCounting, TheLastReleaseDestroys) {
  int gone = 0;
  const auto* object = new Counted(&gone);
  CFRetain(object);
  CFRelease(object);
  EXPECT_EQ(gone, 0);
  {
    quillmere::Owned<const Counted*> owner(object);
    quillmere::Owned<const Counted*> next(std::move(owner));
    EXPECT_FALSE(owner);  // NOLINT(bugprone-use-after-move): a moved-from owner is empty
    EXPECT_EQ(CFGetRetainCount(next.get()), 1);
  }
  EXPECT_EQ(gone, 1);
  CFRelease(nullptr);
}

TEST(Matrices, QuadsRectanglesAndProducts) {
  const FixedPoint from[] = {
      {0, 0}, {Long2Fix(720), 0}, {Long2Fix(720), Long2Fix(576)}, {0, Long2Fix(576)}};
  // A perspective, whose corners come out where they are to.
  const FixedPoint to[] = {{Long2Fix(10), Long2Fix(20)},
                           {Long2Fix(700), Long2Fix(-5)},
                           {Long2Fix(650), Long2Fix(500)},
                           {Long2Fix(40), Long2Fix(560)}};
  MatrixRecord matrix;
  ASSERT_EQ(QuadToQuadMatrix(from, to, &matrix), noErr);
  for (int i = 0; i < 4; ++i) {
    FixedRect corner = {from[i].x, from[i].y, from[i].x, from[i].y};
    TransformFixedRect(&matrix, &corner);
    EXPECT_NEAR(Fix2X(corner.left), Fix2X(to[i].x), 0.02);
    EXPECT_NEAR(Fix2X(corner.top), Fix2X(to[i].y), 0.02);
  }
  const FixedPoint line[] = {{0, 0}, {0, 0}, {1, 1}, {2, 2}};
  EXPECT_EQ(QuadToQuadMatrix(line, to, &matrix), paramErr);
  MatrixRecord identity;
  SetIdentityMatrix(&identity);
  EXPECT_TRUE(EqualMatrix(&matrix, &identity));

  const Rect small = {0, 0, 10, 20}, moved = {30, 100, 50, 160}, last = {0, 0, 7, 5};
  MatrixRecord first, second, direct;
  RectMatrix(&first, &small, &moved);
  EXPECT_EQ(first.matrix[0][0], Long2Fix(3));
  EXPECT_EQ(first.matrix[2][1], Long2Fix(30));
  EXPECT_EQ(first.matrix[0][2], 0);
  RectMatrix(&second, &moved, &last);
  RectMatrix(&direct, &small, &last);
  ConcatMatrix(&second, &first);  // through the first, then through the second
  for (int i = 0; i < 9; ++i)
    EXPECT_NEAR(first.matrix[i / 3][i % 3], direct.matrix[i / 3][i % 3], 120) << i;
}

}  // namespace
