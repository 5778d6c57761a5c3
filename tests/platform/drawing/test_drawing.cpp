/// Drawing in worlds, pixel by pixel.
#include "drawing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <thread>
#include <vector>

#include "fonts.h"
#include "text_style.h"
#include "worlds.h"

namespace {

using namespace quillmere::test;

constexpr Rect kBounds = {-3, -5, 17, 20};
constexpr UInt32 kRed = 0xFFFF0000;
constexpr UInt32 kBlack = 0xFF000000;

struct Dispose {
  void operator()(RgnHandle region) const { DisposeRgn(region); }
};
using OwnedRegion = std::unique_ptr<Region, Dispose>;

TEST(Worlds, BadArgumentsGetTheirStatus) {
  GWorldPtr world = nullptr;
  const Rect empty = {5, 5, 5, 9};
  EXPECT_EQ(NewGWorld(&world, 32, &empty, nullptr, nullptr, 0), paramErr);
  EXPECT_EQ(NewGWorld(&world, 16, &kBounds, nullptr, nullptr, 0), cDepthErr);
  UInt8 pixels[4 * 25 * 20];
  EXPECT_EQ(QTNewGWorldFromPtr(&world, 32, &kBounds, nullptr, nullptr, 0, pixels, 99), paramErr);
  EXPECT_EQ(world, nullptr);
  ASSERT_EQ(QTNewGWorldFromPtr(&world, 32, &kBounds, nullptr, nullptr, 0, pixels, 100), noErr);
  SetGWorld(world, nullptr);
  DisposeGWorld(world);
  GrafPtr port = nullptr;
  GetPort(&port);
  EXPECT_NE(port, world);
  PaintRect(&kBounds);  // into the port without pixels
}

TEST(Worlds, VideoIsLeftAloneByDrawing) {
  GWorldPtr world = nullptr;
  const Rect odd = {-1, 3, 4, 10};
  ASSERT_EQ(QTNewGWorld(&world, "2vuy"_4cc, &odd, nullptr, nullptr, 0), noErr);
  const PixMap& map = **GetGWorldPixMap(world);
  ASSERT_EQ(map.rowBytes, 16);  // whole pairs
  const World argb = MakeWorld(kBounds);
  SetGWorld(world, nullptr);
  PaintRect(&odd);
  CopyBits(GetPortBitMapForCopyBits(argb.get()), GetPortBitMapForCopyBits(world), &odd, &odd,
           srcCopy, nullptr);
  for (std::size_t i = 0; i < 5 * 16; ++i)
    ASSERT_EQ(map.baseAddr[i], i % 2 == 0 ? 128 : 16) << i;
  DisposeGWorld(world);
}

TEST(Worlds, EachThreadHasItsOwnPort) {
  const World world = MakeWorld(kBounds);
  GrafPtr here = nullptr;
  GetPort(&here);
  EXPECT_EQ(here, world.get());
  GrafPtr there = nullptr;
  std::thread([&there] { GetPort(&there); }).join();
  EXPECT_NE(there, here);
}

TEST(Drawing, ShapesStayWithinClipAndBounds) {
  for (const SInt16 depth : {SInt16{1}, SInt16{32}}) {
    const World world = MakeWorld(kBounds, depth);
    const Rect clip = {-10, 2, 9, 300};
    ClipRect(&clip);
    const Rect rect = {0, 0, 12, 40};
    ForeColor(depth == 1 ? 33 : 205);
    PenSize(2, 3);
    FrameRect(&rect);
    const UInt32 drawn = depth == 1 ? 1 : kRed;
    for (SInt32 v = kBounds.top; v < kBounds.bottom; ++v) {
      for (SInt32 h = kBounds.left; h < kBounds.right; ++h) {
        const bool is_in = v >= 0 && v < 9 && h >= 2;
        const bool is_edge = v < 3 || h >= 38;
        ASSERT_EQ(PixelAt(world, h, v), is_in && is_edge ? drawn : 0)
            << depth << ' ' << h << ' ' << v;
      }
    }
    PaintRect(&kBounds);
    EXPECT_EQ(PixelAt(world, 10, 8), drawn);
    EXPECT_EQ(PixelAt(world, 10, 9), 0U);
    EraseRect(&kBounds);
    EXPECT_EQ(PixelAt(world, 10, 8), depth == 1 ? 0 : 0xFFFFFFFF);
  }
}

TEST(Drawing, CopiedPixelsLieUnderTheirCentres) {
  const Rect bounds = {2, 3, 9, 14};
  const World from = MakeWorld(bounds);
  FillAtRandom(from, 1);
  std::mt19937 random(2);
  for (int round = 0; round < 200; ++round) {
    const World to = MakeWorld(kBounds);
    const auto any = [&](int low, int high) {
      return static_cast<SInt16>(low +
                                 static_cast<int>(random() % static_cast<UInt32>(high - low)));
    };
    Rect source = {any(0, 8), any(0, 13), 0, 0};
    source.bottom = any(source.top + 1, 12);
    source.right = any(source.left + 1, 17);
    Rect target = {any(-8, 10), any(-8, 12), 0, 0};
    target.bottom = any(target.top + 1, 24);
    target.right = any(target.left + 1, 24);
    CopyBits(GetPortBitMapForCopyBits(from.get()), GetPortBitMapForCopyBits(to.get()), &source,
             &target, srcCopy, nullptr);
    for (SInt32 v = kBounds.top; v < kBounds.bottom; ++v) {
      for (SInt32 h = kBounds.left; h < kBounds.right; ++h) {
        UInt32 expected = 0;
        if (v >= target.top && v < target.bottom && h >= target.left && h < target.right) {
          const double y = source.top + (v + 0.5 - target.top) * (source.bottom - source.top) /
                                            (target.bottom - target.top);
          const double x = source.left + (h + 0.5 - target.left) * (source.right - source.left) /
                                             (target.right - target.left);
          const bool is_there =
              y >= bounds.top && y < bounds.bottom && x >= bounds.left && x < bounds.right;
          if (is_there)
            expected = PixelAt(from, static_cast<SInt32>(x + 1e-9), static_cast<SInt32>(y + 1e-9));
        }
        ASSERT_EQ(PixelAt(to, h, v), expected) << round << ' ' << h << ' ' << v;
      }
    }
  }
}

TEST(Drawing, CopyingOntoItselfReadsTheOldPixels) {
  const World world = MakeWorld(kBounds);
  FillAtRandom(world, 3);
  std::vector<UInt32> old;
  for (SInt32 h = -5; h < 17; ++h)
    old.push_back(PixelAt(world, h, 4));
  const Rect source = {-3, -5, 17, 17}, target = {-3, -2, 17, 20};
  const BitMap* const map = GetPortBitMapForCopyBits(world.get());
  CopyBits(map, map, &source, &target, srcCopy, nullptr);
  for (SInt32 h = -2; h < 20; ++h)
    ASSERT_EQ(PixelAt(world, h, 4), old[static_cast<std::size_t>(h + 2)]);
}

TEST(Drawing, BitsBecomeRegionsAndBack) {
  const World bits = MakeWorld(kBounds, 1);
  const OwnedRegion region(NewRgn()), part(NewRgn()), back(NewRgn());
  std::mt19937 random(4);
  for (int i = 0; i < 12; ++i) {
    const auto place = [&] { return static_cast<SInt16>(random() % 15); };
    const Rect rect = {place(), place(), 16, static_cast<SInt16>(5 + place())};
    RectRgn(part.get(), &rect);
    XorRgn(region.get(), part.get(), region.get());
  }
  const Rect seen = kBounds;
  RectRgn(part.get(), &seen);
  SectRgn(region.get(), part.get(), region.get());
  PaintRgn(region.get());
  ASSERT_EQ(BitMapToRegion(back.get(), GetPortBitMapForCopyBits(bits.get())), noErr);
  EXPECT_TRUE(EqualRgn(region.get(), back.get()));
  // Through 32 bits and a mask.
  const World deep = MakeWorld(kBounds);
  const Rect all = kBounds;
  CopyBits(GetPortBitMapForCopyBits(bits.get()), GetPortBitMapForCopyBits(deep.get()), &all, &all,
           srcCopy, region.get());
  for (SInt16 v = kBounds.top; v < kBounds.bottom; ++v)
    for (SInt16 h = kBounds.left; h < kBounds.right; ++h)
      ASSERT_EQ(PixelAt(deep, h, v), PtInRgn({v, h}, region.get()) ? kBlack : 0);
  EXPECT_EQ(BitMapToRegion(back.get(), GetPortBitMapForCopyBits(deep.get())), pixmapTooDeepErr);
}

TEST(DrawnText, LiesBetweenAscentAndDescentAndMovesThePen) {
  const World world = MakeWorld({0, 0, 60, 200});
  TextFont(kFontIDHelvetica);
  TextSize(24);
  const UInt8 text[] = "\004Hxg\xC9";  // MacRoman's ellipsis
  FontInfo info = {};
  GetFontInfo(&info);
  EXPECT_GT(info.ascent, info.descent);
  EXPECT_GE(info.ascent + info.descent, 20);
  MoveTo(10, 40);
  ForeColor(205);
  DrawString(text);
  SInt32 left = 200, right = 0, top = 60, bottom = 0;
  for (SInt32 v = 0; v < 60; ++v) {
    for (SInt32 h = 0; h < 200; ++h) {
      if (PixelAt(world, h, v) >> 24 < 128) continue;
      left = std::min(left, h);
      right = std::max(right, h);
      top = std::min(top, v);
      bottom = std::max(bottom, v);
    }
  }
  EXPECT_NEAR(left, 12, 3);
  EXPECT_NEAR(right, 10 + StringWidth(text), 5);
  EXPECT_GE(top, 40 - info.ascent);
  EXPECT_LE(top, 28);
  EXPECT_GT(bottom, 40);
  EXPECT_LE(bottom, 40 + info.descent);
  // The pen stands behind the text: drawn again, the picture goes on there.
  DrawString(text);
  bool is_behind = false;
  for (SInt32 v = 0; v < 60; ++v)
    is_behind = is_behind || PixelAt(world, right + 8, v) != 0;
  EXPECT_TRUE(is_behind);
}

TEST(Fonts, NamesAndNumbersLeadToEachOther) {
  UInt8 name[256];
  GetFontName(kFontIDMonaco, name);
  EXPECT_EQ(std::string(name + 1, name + 1 + name[0]), "Monaco");
  SInt16 number = -1;
  GetFNum(reinterpret_cast<const UInt8*>("\006monaco"), &number);
  EXPECT_EQ(number, kFontIDMonaco);
  GetFontName(1024, name);
  if (name[0] > 0) {
    GetFNum(name, &number);
    EXPECT_EQ(number, 1024);
  }
  GetFNum(reinterpret_cast<const UInt8*>("\007no such"), &number);
  EXPECT_EQ(number, 0);
  GetFontName(-5, name);
  EXPECT_EQ(name[0], 0);
}

}  // namespace
