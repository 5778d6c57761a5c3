/// Whole frames: conversion between 2vuy and 4:2:0 against a slow reference and another program,
/// and operations in place.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "CO_Frames.h"
#include "CO_Y420_Frames.h"
#include "CO_filter.h"
#include "ORW_NR_double.h"
#include "guarded.h"
#include "test_files.h"
#include "y420_private.h"

namespace {

using quillmere::test::Bytes;
using quillmere::test::Guarded;
using Frame = Guarded<UInt8>;

Frame RandomFrame(SInt32 width, SInt32 height, UInt32 seed) {
  return Frame(static_cast<std::size_t>(width * height * 2), seed);
}

/// A planar frame with its header.
struct Planar {
  Planar(SInt32 height, SInt32 width, UInt32 seed)
      : bytes(QT_GetY420_FrameSize(height, width), seed) {
    QT_SetY420_Header(header(), height, width);
    places = *header();
    QT_FlipPlanarPixmapInfoYUV420_BtoN(&places);
  }
  PlanarPixmapInfoYUV420* header() {
    return reinterpret_cast<PlanarPixmapInfoYUV420*>(bytes.data());
  }
  UInt8& Y(SInt32 row, SInt32 x) { return At(places.offsetY, places.rowBytesY, row, x); }
  UInt8& C(int component, SInt32 row, SInt32 x) {
    return component == 0 ? At(places.offsetCb, places.rowBytesCb, row, x)
                          : At(places.offsetCr, places.rowBytesCr, row, x);
  }
  UInt8& At(SInt32 offset, UInt32 stride, SInt32 row, SInt32 x) {
    return bytes[static_cast<std::size_t>(offset) + static_cast<std::size_t>(row) * stride +
                 static_cast<std::size_t>(x)];
  }
  Frame bytes;
  PlanarPixmapInfoYUV420 places;
};

/// The lines of a field, or of the frame.
struct Field {
  SInt32 first, step, lines;
};
std::vector<Field> FieldsOf(SInt32 height, bool interlaced) {
  if (!interlaced) return {{0, 1, height}};
  return {{0, 2, (height + 1) / 2}, {1, 2, height / 2}};
}

UInt8 ByteOf(const Frame& frame, SInt32 width, SInt32 line, SInt32 place) {
  return frame[static_cast<std::size_t>(line * width * 2 + place)];
}

constexpr SInt32 kWidths[] = {1, 2, 3, 4, 5, 16, 17, 33, 64};

TEST(Y420Frames, To2vuyFollowsTheRules) {
  for (const bool interlaced : {false, true}) {
    for (const SInt32 width : kWidths) {
      for (const SInt32 height : {1, 2, 3, 4, 5, 6, 7, 8, 9, 1080}) {
        Planar planar(height, width, 3);
        Frame frame = RandomFrame(width, height, 4);
        CO_Y420_FrameTo2vuy(height, width, planar.header(), frame.data(), interlaced);
        for (const Field& field : FieldsOf(height, interlaced)) {
          for (SInt32 l = 0; l < field.lines; ++l) {
            const SInt32 last = (field.lines + 1) / 2 - 1;
            const SInt32 near = l / 2;
            const SInt32 far = std::clamp(l % 2 == 1 ? near + 1 : near - 1, 0, last);
            const SInt32 line = field.first + l * field.step;
            for (SInt32 x = 0; x < width; ++x) {
              ASSERT_EQ(ByteOf(frame, width, line, 2 * x + 1), planar.Y(line, x));
              const bool is_extra = width % 2 == 1 && x == width - 1;
              if (is_extra && x >= 2) {
                ASSERT_EQ(ByteOf(frame, width, line, 2 * x), ByteOf(frame, width, line, 2 * x - 4));
                continue;
              }
              const auto row = [&](SInt32 r) {
                return planar.C(x % 2, field.first + r * field.step, x / 2);
              };
              ASSERT_EQ(ByteOf(frame, width, line, 2 * x), (3 * row(near) + row(far)) >> 2)
                  << width << 'x' << height << ' ' << line << ' ' << x;
            }
          }
        }
      }
    }
  }
}

TEST(Y420Frames, EachPathSplitsLinePairsAlike) {
  using namespace quillmere::color;
  constexpr std::ptrdiff_t kWidth = 13 * 64;
  const Guarded<UInt8> a(2 * kWidth, 11), b(2 * kWidth, 12);
  for (const SplitPath& path : {SplitPlain(), SplitAvx2(), SplitAvx512()}) {
    if (!path.is_available) continue;
    Guarded<UInt8> y_a(kWidth), y_b(kWidth), cb(kWidth / 2), cr(kWidth / 2);
    path.split(kWidth / path.pixels_at_once, a.data(), b.data(), y_a.data(), y_b.data(), cb.data(),
               cr.data());
    for (std::size_t i = 0; i < kWidth; ++i) {
      ASSERT_EQ(y_a[i], a[2 * i + 1]);
      ASSERT_EQ(y_b[i], b[2 * i + 1]);
      const Guarded<UInt8>& chroma = i % 2 == 0 ? cb : cr;
      ASSERT_EQ(chroma[i / 2], (a[2 * i] + b[2 * i]) / 2) << i;
    }
  }
}

TEST(Y420Frames, From2vuyFollowsTheRules) {
  for (const bool interlaced : {false, true}) {
    for (const SInt32 width : kWidths) {
      for (const SInt32 height : {1, 2, 3, 4, 5, 6, 7, 8, 9, 1080}) {
        const Frame frame = RandomFrame(width, height, 5);
        Planar simple(height, width, 6);
        Planar tent(height, width, 6);
        CO_2vuyFrameToY420(height, width, width * 2, frame.data(), simple.header(), interlaced);
        CO_2vuyFrameToY420_Tent(height, width, width * 2, frame.data(), tent.header(), interlaced);
        for (const Field& field : FieldsOf(height, interlaced)) {
          const auto line_of = [&](SInt32 l) { return field.first + l * field.step; };
          const SInt32 simple_lines = interlaced ? height / 2 : height;
          for (SInt32 pair = 0; pair < width / 2; ++pair) {
            for (const int c : {0, 1}) {
              std::vector<UInt8> column;
              for (SInt32 l = 0; l < field.lines; ++l)
                column.push_back(ByteOf(frame, width, line_of(l), 4 * pair + 2 * c));
              for (SInt32 row = 0; row < (simple_lines + 1) / 2; ++row) {
                const std::size_t a = static_cast<std::size_t>(row) * 2;
                const std::size_t b = std::min(a + 1, static_cast<std::size_t>(simple_lines) - 1);
                ASSERT_EQ(simple.C(c, line_of(row), pair), (column[a] + column[b]) >> 1);
              }
              std::vector<UInt8> halved(column.size() / 2 + 1, column.empty() ? 0 : column[0]);
              CO_SubsampleVertLineTent(static_cast<SInt32>(column.size()), column.data(), 1,
                                       halved.data(), 1);
              if (column.size() % 2 == 1 && column.size() > 1)
                halved[column.size() / 2] = halved[column.size() / 2 - 1];
              for (SInt32 row = 0; row < (field.lines + 1) / 2; ++row)
                ASSERT_EQ(tent.C(c, line_of(row), pair), halved[static_cast<std::size_t>(row)])
                    << width << 'x' << height << " row " << row;
            }
          }
          if (width > 1 && width % 2 == 1 && simple_lines > 0) {
            EXPECT_EQ(simple.C(0, field.first, width / 2), simple.C(0, field.first, width / 2 - 1));
          }
        }
        for (SInt32 line = 0; line < height; ++line) {
          for (SInt32 x = 0; x < width; ++x)
            ASSERT_EQ(tent.Y(line, x), ByteOf(frame, width, line, 2 * x + 1));
          ASSERT_EQ(tent.Y(line, (width + 31) / 32 * 32 - 1), tent.Y(line, width - 1));
        }
        const SInt32 padded = interlaced ? (height + 3) / 4 * 4 : (height + 1) / 2 * 2;
        for (SInt32 line = height; line < padded; ++line) {
          const SInt32 back = interlaced && (line - height) % 2 == 0 ? 2 : 1;
          ASSERT_EQ(tent.Y(line, 0), tent.Y(std::max(height - back, 0), 0)) << height;
        }
      }
    }
  }
}

TEST(Y420Frames, SimpleFormAgreesWithAnotherProgram) {
  constexpr SInt32 kWidth = 64;
  constexpr SInt32 kHeight = 32;
  const quillmere::test::TemporaryFolder folder;
  const Frame frame = RandomFrame(kWidth, kHeight, 7);
  quillmere::test::WriteFile(folder / "in.raw", Bytes(frame.data(), frame.data() + frame.size()));
  const auto made =
      quillmere::test::RunCommand({"ffmpeg", "-v", "error", "-f", "rawvideo", "-pix_fmt", "uyvy422",
                                   "-s", "64x32", "-i", (folder / "in.raw").string(), "-pix_fmt",
                                   "yuv420p", "-f", "rawvideo", (folder / "out.raw").string()});
  ASSERT_EQ(made.status, 0) << made.errors;
  const Bytes theirs = quillmere::test::ReadFile(folder / "out.raw");
  ASSERT_EQ(theirs.size(), 64U * 32 * 3 / 2);
  Planar ours(kHeight, kWidth, 8);
  CO_2vuyFrameToY420(kHeight, kWidth, kWidth * 2, frame.data(), ours.header(), 0);
  for (SInt32 row = 0; row < kHeight; ++row) {
    for (SInt32 x = 0; x < kWidth; ++x)
      ASSERT_EQ(ours.Y(row, x), theirs[static_cast<std::size_t>(row * kWidth + x)]);
  }
  for (const int c : {0, 1}) {
    for (SInt32 row = 0; row < kHeight / 2; ++row) {
      for (SInt32 x = 0; x < kWidth / 2; ++x) {
        const auto place = static_cast<std::size_t>(kWidth * kHeight + c * kWidth * kHeight / 4 +
                                                    row * kWidth / 2 + x);
        ASSERT_NEAR(ours.C(c, row, x), theirs[place], 1);
      }
    }
  }
}

TEST(FrameFilters, ManyColumnsGiveTheBytesOfEach) {
  double taps7[7], taps9[9];
  ASSERT_EQ(NR_MakeLowPassFilter7_d(taps7), noErr);
  ASSERT_EQ(NR_MakeLowPassFilter9_d(taps9), noErr);
  for (const SInt32 width : {0, 1, 2, 31, 32, 33, 70}) {
    for (const SInt32 height : {1, 4, 5, 6, 7, 8, 9, 10, 33}) {
      const Frame frame = RandomFrame(width, height, 9);
      Frame plain7 = frame, plain9 = frame, fast7 = frame, fast9 = frame;
      for (SInt32 column = 0; column < width * 2; ++column) {
        CO_LowPassFilterVertLine7(height, taps7, plain7.data() + column, width * 2);
        CO_LowPassFilterVertLine9(height, taps9, plain9.data() + column, width * 2);
      }
      CO_VertLowPassFilterFrame7(width, height, fast7.data());
      CO_VertLowPassFilterFrame9(width, height, fast9.data());
      ASSERT_EQ(fast7, plain7) << width << 'x' << height;
      ASSERT_EQ(fast9, plain9) << width << 'x' << height;
    }
  }
}

TEST(FramePainting, SharesPairsWithTheNeighbours) {
  const CO_YCbCrU8 color = {200, 10, 250};
  for (SInt32 width = 1; width <= 9; ++width) {
    for (SInt32 from = 0; from <= width; ++from) {
      for (SInt32 to = from; to <= width; ++to) {
        const Frame before = RandomFrame(width, 1, 10);
        Frame line = before;
        CO_PaintHorizLinePiece(&color, width, from, to, line.data());
        for (SInt32 i = 0; i < width; ++i) {
          const auto k = static_cast<std::size_t>(i) * 2;
          const bool is_in = i >= from && i < to;
          ASSERT_EQ(line[k + 1], is_in ? color.y : before[k + 1]);
          const UInt8 own = i % 2 == 0 ? color.cb : color.cr;
          UInt8 expected = is_in ? own : before[k];
          if (from < to && from % 2 == 1) {
            if (i == from && from > 2) expected = static_cast<UInt8>((before[k - 4] + own) >> 1);
            if (i == from - 1) expected = static_cast<UInt8>((before[k] + own) >> 1);
          }
          if (from < to && to % 2 == 1) {
            if (i == to - 1 && to < width - 1)
              expected = static_cast<UInt8>((before[k + 4] + own) >> 1);
            if (i == to) expected = static_cast<UInt8>((before[k] + own) >> 1);
          }
          ASSERT_EQ(line[k], expected) << width << ' ' << from << ' ' << to << ' ' << i;
        }
      }
    }
  }
  Frame frame = RandomFrame(6, 5, 11);
  const Rect rect = {1, 2, 4, 4};
  CO_PaintEdge(frame.data(), 6, 5, &rect, &color);
  for (SInt32 row = 0; row < 5; ++row) {
    const bool is_edge_row = row < 1 || row >= 4;
    EXPECT_EQ(ByteOf(frame, 6, row, 1), color.y);
    EXPECT_EQ(ByteOf(frame, 6, row, 11), color.y);
    EXPECT_EQ(ByteOf(frame, 6, row, 5) == color.y, is_edge_row);
  }
  CO_PaintHorizBarBlack(6, frame.data(), 2, 3);
  CO_PaintVerticalBarBlack(5, 6, frame.data(), -3, 1);
  EXPECT_EQ(ByteOf(frame, 6, 2, 4), 128);
  EXPECT_EQ(ByteOf(frame, 6, 4, 1), 0);
}

TEST(FrameMoves, ShiftsFlipsAndCopiesOfEverySize) {
  const CO_YCbCrU8 fill = {99, 1, 2};
  for (SInt32 width = 1; width <= 12; ++width) {
    constexpr SInt32 kHeight = 5;
    for (SInt32 shift = -14; shift <= 14; ++shift) {
      const Frame before = RandomFrame(width, kHeight, 12);
      Frame moved = before;
      CO_ShiftFrameHorizontal(moved.data(), kHeight, width, width * 2, shift, &fill);
      Frame down = before;
      CO_ShiftFrameVertical(down.data(), kHeight, width, width * 2, shift, &fill);
      for (SInt32 i = 0; i < width; ++i) {
        const SInt32 from = i - shift;
        const bool is_moved = from >= 0 && from < width;
        ASSERT_EQ(ByteOf(moved, width, 2, 2 * i + 1),
                  is_moved ? ByteOf(before, width, 2, 2 * from + 1) : fill.y);
        // Chroma of an even shift; of an odd one the painted pixels end in their places.
        if (shift % 2 == 0) {
          ASSERT_EQ(ByteOf(moved, width, 2, 2 * i), is_moved ? ByteOf(before, width, 2, 2 * from)
                                                             : (i % 2 == 0 ? fill.cb : fill.cr));
        } else if (width >= 3 && !is_moved && shift > 0 && i > 0) {
          ASSERT_EQ(ByteOf(moved, width, 2, 2 * i), i % 2 == 0 ? fill.cb : fill.cr);
        }
      }
      for (SInt32 row = 0; row < kHeight; ++row) {
        const SInt32 from = row - shift;
        const bool is_moved = from >= 0 && from < kHeight;
        ASSERT_EQ(ByteOf(down, width, row, 1), is_moved ? ByteOf(before, width, from, 1) : fill.y);
      }
    }
    const Frame before = RandomFrame(width, kHeight, 13);
    Frame flipped = before;
    std::vector<UInt8> temporary(static_cast<std::size_t>(width) * 2);
    CO_Flip2vuyLineHorizontal(width, flipped.data());
    EXPECT_EQ(flipped[1], before[static_cast<std::size_t>(width) * 2 - 1]);
    CO_Flip2vuyLineHorizontal(width, flipped.data());
    EXPECT_EQ(flipped, before);
    CO_FlipFrameVertical(kHeight, flipped.data(), temporary.data(), width * 2);
    const SInt32 places[] = {3, 2, 1, 0, 4};
    for (SInt32 row = 0; row < kHeight; ++row)
      EXPECT_EQ(ByteOf(flipped, width, row, 0), ByteOf(before, width, places[row], 0));
    for (SInt32 source = -2; source < width; ++source) {
      Frame bar = before;
      CO_CopyVertBar(kHeight, width, before.data(), bar.data(), source, 1, 4);
      for (SInt32 i = std::max(1, 1 - source); i < std::min(5, width) && source + i - 1 < width;
           ++i) {
        if (source + i - 1 >= 0) {
          ASSERT_EQ(ByteOf(bar, width, 1, 2 * i + 1),
                    ByteOf(before, width, 1, 2 * (source + i - 1) + 1));
        }
      }
    }
  }
}

TEST(FrameSizes, OddOnesAreCompleted) {
  for (const SInt32 width : {1, 3, 7}) {
    constexpr SInt32 kHeight = 5;
    const auto stride = static_cast<std::size_t>(width) * 2 + 2;
    Frame frame(stride * (kHeight + 1), 14);
    const Frame before = frame;
    CO_2vuyFrameMakeLinesEvenWidth(width, kHeight, frame.data(), frame.data());
    for (std::size_t row = 0; row < kHeight; ++row) {
      const UInt8* const line = frame.data() + row * stride;
      const UInt8* const old = before.data() + row * static_cast<std::size_t>(width) * 2;
      EXPECT_TRUE(std::equal(old, old + width * 2, line));
      EXPECT_EQ(line[width * 2], width > 1 ? old[width * 2 - 4] : old[0]);
      EXPECT_EQ(line[width * 2 + 1], old[width * 2 - 1]);
    }
    Frame again = frame;
    CO_2vuyFrameCopyLastPixelOnOddWidthLines(width, kHeight, again.data());
    EXPECT_EQ(again, frame);
    CO_2vuyFrameCopyLastInterlacedLine(width + 1, kHeight, frame.data());
    EXPECT_TRUE(std::equal(frame.data() + 3 * stride, frame.data() + 4 * stride,
                           frame.data() + 5 * stride));
  }
  const Frame source = RandomFrame(9, 10, 15);
  Frame half = RandomFrame(4, 4, 16);
  CO_Scale2vuyFrameToHalfSizeSimple(10, 9, source.data(), 18, half.data(), 8);
  EXPECT_EQ(ByteOf(half, 4, 1, 3), ByteOf(source, 9, 2, 5));
  EXPECT_EQ(ByteOf(half, 4, 3, 4), ByteOf(source, 9, 6, 8));

  Frame gamma = source;
  CO_Change2vuyFrameYGamma(gamma.data(), 10, 9, 0.5F);
  const double code = source[1];
  EXPECT_EQ(gamma[1], static_cast<UInt8>(std::sqrt(code / 235) * 235 + 0.49));
  Guarded<float> luma(9 * 10), chroma(4 * 10);
  CO_CopyYUV422_FrameCompToFloat(source.data(), 18, 10, 9, 1, 2, luma.data(), 36);
  CO_CopyYUV422_FrameCompToFloat(source.data(), 18, 10, 9, 2, 4, chroma.data(), 16);
  Frame back = RandomFrame(9, 10, 17);
  CO_CopyYUV422_FrameFloatToComp(luma.data(), 36, 10, 9, 1, 2, back.data(), 18);
  CO_CopyYUV422_FrameFloatToComp(chroma.data(), 16, 10, 9, 2, 4, back.data(), 18);
  EXPECT_EQ(back[1], source[1]);
  EXPECT_EQ(back[18 * 9 + 17], source[18 * 9 + 17]);
  EXPECT_EQ(back[18 * 9 + 14], source[18 * 9 + 14]);
}

}  // namespace
