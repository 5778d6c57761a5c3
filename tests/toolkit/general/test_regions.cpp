/// Regions against bitmaps, and their flat and dictionary forms.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "GL_CF.h"
#include "GL_QuickDraw_Regions.h"
#include "property_lists.h"
#include "regions.h"

namespace {

constexpr int kSide = 24;
constexpr int kOrigin = -7;  // of the bitmap's top left on both axes

struct Dispose {
  void operator()(RgnHandle region) const { DisposeRgn(region); }
};
using OwnedRegion = std::unique_ptr<Region, Dispose>;

/// A region and the same as a bitmap.
struct Pair {
  OwnedRegion region{NewRgn()};
  std::vector<bool> bits = std::vector<bool>(kSide * kSide);
};

Point PointOf(int index) {
  return {static_cast<SInt16>(kOrigin + index / kSide),
          static_cast<SInt16>(kOrigin + index % kSide)};
}

void ExpectSame(const Pair& pair, const char* what) {
  for (int i = 0; i < kSide * kSide; ++i)
    ASSERT_EQ(PtInRgn(PointOf(i), pair.region.get()) != 0, pair.bits[static_cast<std::size_t>(i)])
        << what << ' ' << i;
}

Rect RandomRect(std::mt19937* random) {
  const auto place = [random] { return static_cast<SInt16>(kOrigin + (*random)() % (kSide + 1)); };
  const SInt16 a = place(), b = place(), c = place(), d = place();
  return {std::min(a, b), std::min(c, d), std::max(a, b), std::max(c, d)};
}

Pair RandomPair(std::mt19937* random) {
  Pair pair;
  const OwnedRegion part(NewRgn());
  for (int i = 0; i < 6; ++i) {
    const Rect rect = RandomRect(random);
    RectRgn(part.get(), &rect);
    XorRgn(pair.region.get(), part.get(), pair.region.get());
    for (int k = 0; k < kSide * kSide; ++k) {
      const Point p = PointOf(k);
      const bool is_in =
          p.v >= rect.top && p.v < rect.bottom && p.h >= rect.left && p.h < rect.right;
      if (is_in) pair.bits[static_cast<std::size_t>(k)] = !pair.bits[static_cast<std::size_t>(k)];
    }
  }
  return pair;
}

TEST(Regions, AlgebraAgreesWithBitmaps) {
  std::mt19937 random(11);
  const struct {
    const char* name;
    void (*combine)(RgnHandle, RgnHandle, RgnHandle);
    std::function<bool(bool, bool)> takes;
  } operations[] = {{"sect", SectRgn, std::logical_and<bool>()},
                    {"union", UnionRgn, std::logical_or<bool>()},
                    {"diff", DiffRgn, [](bool a, bool b) { return a && !b; }},
                    {"xor", XorRgn, std::not_equal_to<bool>()}};
  for (int round = 0; round < 150; ++round) {
    const Pair a = RandomPair(&random);
    const Pair b = RandomPair(&random);
    ExpectSame(a, "made");
    for (const auto& operation : operations) {
      Pair result;
      UInt32 area = 0;
      for (std::size_t i = 0; i < a.bits.size(); ++i) {
        result.bits[i] = operation.takes(a.bits[i], b.bits[i]);
        area += result.bits[i];
      }
      operation.combine(a.region.get(), b.region.get(), result.region.get());
      ExpectSame(result, operation.name);
      EXPECT_EQ(GL_GetRgnArea(result.region.get()), area);
      EXPECT_EQ(EmptyRgn(result.region.get()) != 0, area == 0);
      // Into one of the inputs, and equal forms for equal sets.
      const OwnedRegion in_place(NewRgn());
      CopyRgn(a.region.get(), in_place.get());
      operation.combine(in_place.get(), b.region.get(), in_place.get());
      EXPECT_TRUE(EqualRgn(in_place.get(), result.region.get()));
    }
    EXPECT_EQ(GL_IsRgnInRgn(a.region.get(), b.region.get()) != 0,
              std::equal(a.bits.begin(), a.bits.end(), b.bits.begin(), std::less_equal<bool>()));
  }
}

TEST(Regions, GrowAndShrinkByPixelsAndEnd) {
  OwnedRegion region(NewRgn());
  GL_AddPtToRgn({5, 6}, region.get());
  GL_AddPtToRgn({5, 8}, region.get());
  EXPECT_FALSE(IsRegionRectangular(region.get()));
  GL_AddPtToRgn({5, 7}, region.get());
  EXPECT_TRUE(IsRegionRectangular(region.get()));
  const Rect row = {5, 6, 6, 9};
  const Rect more = {5, 6, 7, 9};
  EXPECT_TRUE(GL_IsRectInRgn(&row, region.get()));
  EXPECT_FALSE(GL_IsRectInRgn(&more, region.get()));
  EXPECT_TRUE(GL_SectRectRgn(&more, region.get(), nullptr));
  GL_RemovePtFromRgn({5, 6}, region.get());
  Rect bounds;
  GetRegionBounds(region.get(), &bounds);
  EXPECT_EQ(bounds.left, 7);
  // At the end of the coordinates.
  GL_AddPtToRgn({32767, 32767}, region.get());
  OffsetRgn(region.get(), 32767, 32767);
  EXPECT_TRUE(EmptyRgn(region.get()));
  RgnHandle handle = region.release();
  GL_DisposeRgn(&handle);
  EXPECT_EQ(handle, nullptr);
  EXPECT_FALSE(GL_SectRgn(nullptr, nullptr, nullptr));
}

TEST(Regions, FlatAndDictionaryFormsComeBack) {
  std::mt19937 random(12);
  for (int round = 0; round < 200; ++round) {
    const Pair pair = RandomPair(&random);
    UInt32* flat = nullptr;
    UInt32 size = 0;
    ASSERT_EQ(GL_FlattenRgnBitMap(pair.region.get(), &flat, &size), noErr);
    ASSERT_EQ(size, 4 * (flat[0] + 1));
    Rect bounds;
    GetRegionBounds(pair.region.get(), &bounds);
    const OwnedRegion back(NewRgn());
    GL_UnflattenRgnBitMap(flat, &bounds, back.get());
    EXPECT_TRUE(EqualRgn(back.get(), pair.region.get()));
    // Runs of any length stay within the rectangle.
    for (UInt32 i = 1; i <= flat[0]; ++i)
      flat[i] = static_cast<UInt32>(random());
    SetEmptyRgn(back.get());
    GL_UnflattenRgnBitMap(flat, &bounds, back.get());
    const OwnedRegion all(NewRgn());
    RectRgn(all.get(), &bounds);
    EXPECT_TRUE(GL_IsRgnInRgn(back.get(), all.get()));
    std::free(flat);

    const quillmere::Owned<CFDictionaryRef> dictionary(CF_CreateRgnDict(pair.region.get()));
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()),
              IsRegionRectangular(pair.region.get()) ? 1 : 2);
    RgnHandle read = nullptr;
    CF_GetRgnFromDict(dictionary.get(), &read);
    const OwnedRegion owned(read);
    EXPECT_TRUE(EqualRgn(read, pair.region.get()));
  }
  // The first pixel inside: a run of length 0 first.
  const OwnedRegion region(NewRgn());
  GL_AddPtToRgn({0, 0}, region.get());
  GL_AddPtToRgn({1, 1}, region.get());
  UInt32* flat = nullptr;
  UInt32 size = 0;
  ASSERT_EQ(GL_FlattenRgnBitMap(region.get(), &flat, &size), noErr);
  EXPECT_EQ(std::vector<UInt32>(flat, flat + size / 4), (std::vector<UInt32>{4, 0, 1, 2, 1}));
  std::free(flat);
  RgnHandle untouched = region.get();
  const quillmere::Owned<CFDictionaryRef> empty(CFDictionaryCreateMutable(kCFAllocatorDefault));
  CF_GetRgnFromDict(empty.get(), &untouched);
  EXPECT_EQ(untouched, region.get());
}

TEST(Regions, AreScaledByTheCentresOfPixels) {
  std::mt19937 random(13);
  for (int round = 0; round < 100; ++round) {
    Pair pair = RandomPair(&random);
    if (EmptyRgn(pair.region.get())) continue;
    Rect from;
    GetRegionBounds(pair.region.get(), &from);
    const Rect to = {3, -4, static_cast<SInt16>(3 + random() % 60),
                     static_cast<SInt16>(-4 + static_cast<int>(random() % 60))};
    const OwnedRegion scaled(NewRgn());
    GL_ScaleRgn(pair.region.get(), &to, scaled.get());
    const int width = from.right - from.left, height = from.bottom - from.top;
    for (int y = to.top; y < to.bottom; ++y) {
      for (int x = to.left; x < to.right; ++x) {
        const Point source = {
            static_cast<SInt16>((2 * (y - to.top) + 1) * height / (2 * (to.bottom - to.top))),
            static_cast<SInt16>((2 * (x - to.left) + 1) * width / (2 * (to.right - to.left)))};
        ASSERT_EQ(PtInRgn({static_cast<SInt16>(y), static_cast<SInt16>(x)}, scaled.get()),
                  PtInRgn(source, pair.region.get()));
      }
    }
    const OwnedRegion all(NewRgn());
    RectRgn(all.get(), &to);
    EXPECT_TRUE(GL_IsRgnInRgn(scaled.get(), all.get()));
  }
}

}  // namespace
