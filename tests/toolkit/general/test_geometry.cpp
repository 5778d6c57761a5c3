#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

#include "GL_QuickDraw.h"
#include "GL_QuickDraw_Fit.h"
#include "GL_QuickDraw_Fixed.h"
#include "GL_QuickDraw_Float.h"
#include "fixed_point.h"
#include "rectangles.h"

bool operator==(const Rect& a, const Rect& b) {
  return EqualRect(&a, &b) != 0;
}
std::ostream& operator<<(std::ostream& out, const Rect& r) {
  return out << r.top << "," << r.left << "," << r.bottom << "," << r.right;
}
bool operator==(const FixedRect& a, const FixedRect& b) {
  return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

namespace {

constexpr int kSide = 12;

Rect RandomRect(std::mt19937* random) {
  const auto edge = [&] { return static_cast<SInt16>((*random)() % kSide); };
  const SInt16 top = edge(), left = edge();
  return {top, left, static_cast<SInt16>(top + edge() / 2), static_cast<SInt16>(left + edge() / 2)};
}

/// Calls `visit` with every pixel that random rectangles may hold.
template <class Visit>
void ForEachPixel(Visit visit) {
  for (SInt16 v = 0; v < 2 * kSide; ++v)
    for (SInt16 h = 0; h < 2 * kSide; ++h)
      visit(Point{v, h});
}

TEST(Rectangles, AgreeWithTheirPixels) {
  std::mt19937 random(4);
  for (int round = 0; round < 2000; ++round) {
    const Rect a = RandomRect(&random), b = RandomRect(&random);
    SCOPED_TRACE(testing::Message() << "a " << a << " b " << b);
    int area = 0, common_area = 0;
    Rect common;
    const bool meets = GL_SectRect(&a, &b, &common) != 0;
    ForEachPixel([&](Point p) {
      const bool in_both = PtInRect(p, &a) && PtInRect(p, &b);
      area += PtInRect(p, &a);
      common_area += in_both;
      ASSERT_EQ(PtInRect(p, &common) != 0, in_both);
    });
    ASSERT_EQ(GL_GetRectArea(&a), area);
    ASSERT_EQ(meets, common_area > 0);
    ASSERT_EQ(GL_SectRect(&a, &b, nullptr) != 0, meets);
    ASSERT_EQ(GL_IsRectInRect(&a, &b) != 0, common_area == area);

    Rect moved = a;
    const bool fits = a.right - a.left <= b.right - b.left && a.bottom - a.top <= b.bottom - b.top;
    const bool has_area = area > 0;
    const bool did_move = GL_MoveRectInsideRect(&b, &moved) != 0;
    ASSERT_EQ(did_move, fits || !has_area);
    if (did_move && has_area) {
      ASSERT_TRUE(GL_IsRectInRect(&moved, &b));
      // The least shift: an axis that was inside stays.
      if (a.top >= b.top && a.bottom <= b.bottom) {
        ASSERT_EQ(moved.top, a.top);
      }
      if (a.left >= b.left && a.right <= b.right) {
        ASSERT_EQ(moved.left, a.left);
      }
    } else if (!did_move) {
      ASSERT_EQ(moved, a);
    }
    Rect borders, grown = b;
    GL_GetRectBorders(&a, &b, &borders);
    GL_AddRectBorders(&grown, &borders);
    ASSERT_EQ(grown, a);
    GL_RemoveRectBorders(&grown, &borders);
    ASSERT_EQ(grown, b);
    Rect quarters[4];
    GL_SplitRect(&a, &quarters[0], &quarters[1], &quarters[2], &quarters[3]);
    int covered = 0;
    for (const Rect& quarter : quarters)
      covered += GL_GetRectArea(&quarter);
    ASSERT_EQ(covered, area);
    ASSERT_GE(GL_GetRectArea(&quarters[0]), GL_GetRectArea(&quarters[3]));
  }
}

TEST(Rectangles, AreMadeMovedAndToldApart) {
  const Rect rect = {1, 2, 11, 32};
  Rect out = {};
  GL_SizeToRect(GL_GetRectSize(&rect), &out);
  EXPECT_EQ(out, (Rect{0, 0, 10, 30}));
  const struct {
    SInt32 corner;
    Rect moved;
  } corners[] = {
      {0, {50, 60, 60, 90}}, {1, {40, 60, 50, 90}}, {2, {40, 30, 50, 60}}, {7, {50, 30, 60, 60}}};
  for (const auto& c : corners) {
    out = rect;
    GL_MoveRectToPoint({50, 60}, c.corner, &out);
    EXPECT_EQ(out, c.moved) << c.corner;
  }
  const Rect meeting = {5, 0, 5, 0}, leaving = {4, 1, 5, 28};
  out = rect;
  GL_InsetRectByRect(&out, &meeting);
  EXPECT_EQ(out, (Rect{0, 0, 0, 0}));
  out = rect;
  GL_InsetRectByRect(&out, &leaving);
  EXPECT_EQ(out, (Rect{5, 3, 6, 4}));
  const Rect other = {-2, 4, 8, 40};
  GL_DiffRect(&rect, &other, &out);
  EXPECT_EQ(out, (Rect{0, 2, 3, 0}));
  GL_GetRectAbsDiff(&rect, &other, &out);
  EXPECT_EQ(out, (Rect{3, 2, 3, 8}));
  EXPECT_TRUE(GL_PointInRectInclusive({11, 32}, &rect));
  EXPECT_FALSE(GL_PointInRectInclusive({12, 32}, &rect));
  const Rect nothing = {100, 100, 100, 120};
  EXPECT_TRUE(GL_IsRectInRect(&nothing, &rect));
  const Rect wide = {-32768, -32768, 32767, 32767};
  EXPECT_EQ(GL_GetRectSize(&wide), 0xFFFFFFFF);
  Rect quarter = {9, 9, 9, 9};
  GL_SplitRect(&rect, nullptr, nullptr, nullptr, &quarter);
  EXPECT_EQ(quarter, (Rect{9, 9, 9, 9}));
  const Rect odd = {0, 0, 4, 5};
  GL_SplitRect(&odd, &out, nullptr, nullptr, &quarter);
  EXPECT_EQ(out, (Rect{0, 0, 2, 3}));
  EXPECT_EQ(quarter, (Rect{2, 3, 4, 5}));
}

TEST(Rectangles, FitAndCover) {
  const struct {
    Rect source, box, fitted, covering;
  } cases[] = {
      {{0, 0, 1, 3}, {0, 0, 10, 10}, {3, 0, 7, 10}, {0, -10, 10, 20}},
      {{0, 0, 100, 100}, {10, 20, 60, 120}, {10, 45, 60, 95}, {-15, 20, 85, 120}},
      {{0, 0, 30000, 32767},
       {0, 0, 32767, 32767},
       {1383, 0, 31384, 32767},
       {0, -1511, 32767, 34278 - 65536}},
      {{0, 0, 0, 5}, {1, 2, 3, 4}, {1, 2, 3, 4}, {1, 2, 3, 4}},
      {{5, 5, 15, 25}, {0, 0, 20, 40}, {0, 0, 20, 40}, {0, 0, 20, 40}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    Rect out;
    float scale = 0;
    LongRatio ratio;
    GL_FitRectInBox(&c.source, &c.box, &out, &scale, &ratio);
    EXPECT_EQ(out, c.fitted);
    EXPECT_FLOAT_EQ(scale, static_cast<float>(ratio.n) / static_cast<float>(ratio.d));
    GL_CoverBoxWithRect(&c.source, &c.box, &out, nullptr, nullptr);
    EXPECT_EQ(out, c.covering);
    FixedRect source, box, fixed;
    GL_RectToFixed(&c.source, &source);
    GL_RectToFixed(&c.box, &box);
    GL_FitFixedRectInBox(&source, &box, &fixed, &scale, nullptr);
    GL_FixedToRect(&fixed, &out);
    EXPECT_LE(std::abs(out.top - c.fitted.top), 1);
    EXPECT_LE(std::abs(out.right - c.fitted.right), 1);
  }
  Rect out;
  const Rect box = {10, 20, 110, 220};
  GL_GetScaledPictureLetterbox(400, 300, &box, &out);
  EXPECT_EQ(out, (Rect{10, 53, 110, 186}));
  GL_GetScaledPictureLetterbox(400, 100, &box, &out);
  EXPECT_EQ(out, (Rect{35, 20, 85, 220}));
  const Rect wide_box = {-20000, -20000, 20000, 20000}, flat_box = {5, 5, 5, 25};
  GL_GetScaledPictureLetterbox(7, 7, &wide_box, &out);
  EXPECT_EQ(out, wide_box);
  for (const SInt32 width : {0, -5, 5}) {
    GL_GetScaledPictureLetterbox(width, 0, &box, &out);
    EXPECT_TRUE(EmptyRect(&out)) << width;
    GL_GetScaledPictureLetterbox(0, 5, &box, &out);
    EXPECT_TRUE(EmptyRect(&out));
    GL_GetScaledPictureLetterbox(5, 5, &flat_box, &out);
    EXPECT_TRUE(EmptyRect(&out));
  }
  float scale = 0;
  LongRatio ratio;
  const Rect source = {0, 0, 30, 40}, target = {0, 0, 60, 60};
  GL_FitRectInBox(&source, &target, &out, &scale, &ratio);
  EXPECT_EQ(ratio.n, 3);
  EXPECT_EQ(ratio.d, 2U);
  EXPECT_EQ(scale, 1.5F);
  GL_CoverBoxWithRect(&source, &target, &out, &scale, &ratio);
  EXPECT_EQ(ratio.n, 2);
  EXPECT_EQ(ratio.d, 1U);
  EXPECT_EQ(scale, 2);
  out = {3, 4, 13, 24};
  GL_ScaleRect(&out, 0x18000, 0x8000);
  EXPECT_EQ(out, (Rect{3, 4, 8, 34}));
}

TEST(FixedRectangles, RoundAndMatchTheirTwins) {
  const FixedRect rect = {-0x8000, 0x8000, 0x17FFF, -0x18000};
  Rect pixels;
  GL_FixedToRect(&rect, &pixels);
  EXPECT_EQ(pixels, (Rect{1, 0, -1, 1}));
  const FixedPoint points[] = {{0x8000, -0x8000}, {0x7FFF, -0x7FFF}, {0x18000, -0x18000}};
  const Point rounded[] = {{-1, 1}, {0, 0}, {-2, 2}};
  for (int i = 0; i < 3; ++i) {
    Point point;
    GL_FixedToPoint(&points[i], &point);
    EXPECT_EQ(point.v, rounded[i].v);
    EXPECT_EQ(point.h, rounded[i].h);
  }
  std::mt19937 random(6);
  for (int round = 0; round < 500; ++round) {
    const Rect a = RandomRect(&random), b = RandomRect(&random);
    FixedRect fa, fb, fixed;
    GL_RectToFixed(&a, &fa);
    GL_RectToFixed(&b, &fb);
    GL_SectFixedRect(&fa, &fb, &fixed);
    Rect common, out;
    GL_FixedToRect(&fixed, &out);
    ASSERT_EQ(SectRect(&a, &b, &common), !EmptyRect(&out));
    if (!EmptyRect(&out)) {
      ASSERT_EQ(out, common);
    }
    GL_FloatRect float_a, float_b, float_out;
    GL_RectToFloat(&a, &float_a);
    GL_RectToFloat(&b, &float_b);
    GL_SectFloatRect(&float_a, &float_b, &float_out);
    ASSERT_EQ(float_out.right, Fix2X(fixed.right));
    ASSERT_EQ(float_out.top, Fix2X(fixed.top));
    FixedRect borders = {}, grown = fb;
    GL_GetFixedRectBorders(&fb, &fa, &borders);
    GL_InsetFixedRectByFixedRect(&grown, &borders);
    ASSERT_EQ(grown, fa);
  }
  FixedRect moved = {0x10000, 0x20000, 0x30000, 0x60000};
  GL_ScaleFixedRect(0x18000, -0x8000, &moved);
  EXPECT_EQ(moved, (FixedRect{0x18000, -0x30000, 0x48000, -0x10000}));
  GL_MoveFixedRectTopLeft(&moved, 5, 7);
  EXPECT_EQ(moved, (FixedRect{5, 7, 0x30005, 0x20007}));
  GL_OffsetFixedRect(&moved, 0x7FFFFFFF, 0);
  const Rect source = {0, 0, 10, 20};
  const MatrixRecord turn = {{{0, 0x10000, 0}, {-0x10000, 0, 0}, {0x50000, 0, 0x40000000}}};
  Rect turned;
  GL_TransformRect(&turn, &source, &turned);
  EXPECT_EQ(turned, (Rect{0, -5, 20, 5}));
  const MatrixRecord flat = {};
  GL_TransformRect(&flat, &source, &turned);
  EXPECT_EQ(turned, source);
}

TEST(FloatGeometry, FollowsItsFormulas) {
  const GL_DoubleRect fractions = {2.6, 2.5, -2.6, 1e9};
  Rect pixels;
  GL_DoubleToRect(&fractions, &pixels);
  EXPECT_EQ(pixels, (Rect{3, 2, -2, 32767}));
  const GL_FloatRect rect = {1, 2, 5, 10};
  const struct {
    GL_FloatPoint point;
    float distance_squared;
  } distances[] = {{{2, 3}, 0}, {{5, 5}, 0}, {{0, 3}, 4}, {{4, 8}, 9}, {{13, 9}, 25}, {{1, 0}, 2}};
  for (const auto& c : distances)
    EXPECT_EQ(GL_GetFloatPtRectDistSq(&c.point, &rect), c.distance_squared);
  float points[8];
  GL_FloatRectToPoints(&rect, points);
  const float corners[] = {2, 1, 10, 1, 10, 5, 2, 5};
  EXPECT_TRUE(std::equal(points, points + 8, corners));

  // Turning keeps areas, and the angle between a point and its turned self.
  const float angle = 0.7F;
  GL_FloatPoint turned[4];
  for (int i = 0; i < 4; ++i) {
    const GL_FloatPoint corner = {points[2 * i], points[2 * i + 1]};
    GL_RotatePt(&corner, std::cos(angle), std::sin(angle), &turned[i]);
    float cosine, sine;
    GL_GetFloatPtsAngle(&corner, &turned[i], &cosine, &sine);
    EXPECT_NEAR(std::atan2(sine, cosine), angle, 1e-6);
  }
  const GL_SlopedFloatRect sloped = {turned[0], turned[1], turned[2], turned[3]};
  EXPECT_NEAR(GL_GetSlopedFloatRectArea(&sloped), GL_GetFloatRectArea(&rect), 1e-4);

  const GL_DoubleRect up_a = {10, 0, 0, 5}, up_b = {8, 2, -3, 9}, up_c = {-1, 6, -9, 7};
  GL_DoubleRect out;
  GL_SectDoubleRectFlipped(&up_a, &up_b, &out);
  EXPECT_EQ(out.top + 10 * out.left + 100 * out.bottom + 1000 * out.right, 8 + 20 + 5000);
  GL_SectDoubleRectFlipped(&up_a, &up_c, &out);
  EXPECT_EQ(out.top, out.bottom);
  EXPECT_EQ(out.left, out.right);
}

TEST(GeometryTexts, HaveTheirForms) {
  const Rect rect = {-1, 2, 30, 400};
  testing::internal::CaptureStdout();
  GL_PrintRect(&rect);
  GL_PrintRectWithName(&rect, "a");
  GL_PrintPointWithName({3, -4}, "p");
  GL_PrintEdgeWithName(&rect, "e");
  const FixedRect fixed = {0x8000, 0, 0x20000, 0x14000};
  GL_PrintFixedRectWithName(&fixed, "f");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Rectangle: top -1, left 2, bottom 30, right 400, width 398, height 31\n"
            "a: {t,l,b,r = -1,2,30,400}, {w,h = 398,31}\n"
            "p: {h,v = -4,3}\n"
            "e: {t,l,b,r = -1,2,30,400}\n"
            "f: {t,l,b,r = 0.00,0.50,1.25,2.00}, {w,h = 1.50,1.25}\n");
  char text[200];
  GL_SPrintRectWithName(text, &rect, "a");
  EXPECT_STREQ(text, "a: {t,l,b,r = -1,2,30,400}, {w,h = 398,31}");
  GL_SPrintFixedRectWithName(text, &fixed, "f");
  EXPECT_STREQ(text, "f: {t,l,b,r = 0.00,0.50,1.25,2.00}, {w,h = 1.50,1.25}");
}

}  // namespace
