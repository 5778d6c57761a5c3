/// Pictures beside direct drawing and beside another reader of their format.
#include "pictures.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

#include "rectangles.h"
#include "test_files.h"
#include "text_style.h"
#include "worlds.h"

namespace {

using namespace quillmere::test;

struct Kill {
  void operator()(Ptr* picture) const { KillPicture(picture); }
};
using Picture = std::unique_ptr<Ptr, Kill>;

constexpr Rect kFrame = {0, 0, 40, 60};

Picture Record(const std::function<void()>& draw, const Rect& frame = kFrame) {
  const World world = MakeWorld(frame);
  const OpenCPicParams header = {frame, kPicture72Dpi, kPicture72Dpi, kOpenCPicVersion, 0, 0};
  Picture picture(OpenCPicture(&header));
  draw();
  EXPECT_EQ(OpenCPicture(&header), nullptr);  // one at a time
  ClosePicture();
  EXPECT_EQ(PixelAt(world, frame.left, frame.top), 0U);  // nothing is drawn meanwhile
  return picture;
}

void ExpectSame(const World& a, const World& b) {
  const Rect& bounds = (*GetGWorldPixMap(a.get()))->bounds;
  for (SInt32 v = bounds.top; v < bounds.bottom; ++v)
    for (SInt32 h = bounds.left; h < bounds.right; ++h)
      ASSERT_EQ(PixelAt(a, h, v), PixelAt(b, h, v)) << h << ' ' << v;
}

/// All kinds of operations, at a multiple of their size.
void DrawScene(SInt16 scale, const World& pixels) {
  const auto scaled = [scale](SInt32 t, SInt32 l, SInt32 b, SInt32 r) {
    return Rect{static_cast<SInt16>(t * scale), static_cast<SInt16>(l * scale),
                static_cast<SInt16>(b * scale), static_cast<SInt16>(r * scale)};
  };
  RgnHandle region = NewRgn();
  RgnHandle part = NewRgn();
  for (const Rect& rect : {scaled(2, 3, 20, 30), scaled(5, 8, 30, 20), scaled(25, 1, 27, 4)}) {
    RectRgn(part, &rect);
    XorRgn(region, part, region);
  }
  const Rect all = scaled(0, 0, 40, 60);
  BackColor(69);
  EraseRect(&all);
  ForeColor(273);
  PaintRgn(region);
  SetClip(region);
  const RGBColor own = {0x1234, 0x8765, 0xFEDC};
  RGBForeColor(&own);
  const Rect painted = scaled(10, 10, 16, 58);
  PaintRect(&painted);
  ClipRect(&all);
  PenSize(static_cast<SInt16>(3 * scale), static_cast<SInt16>(2 * scale));
  const Rect framed = scaled(22, 30, 38, 56);
  FrameRect(&framed);
  const Rect source = {1, 2, 9, 14}, target = scaled(28, 2, 36, 26);
  GrafPtr port = nullptr;
  GetPort(&port);
  CopyBits(GetPortBitMapForCopyBits(pixels.get()), GetPortBitMapForCopyBits(port), &source, &target,
           srcCopy, region);
  DisposeRgn(part);
  DisposeRgn(region);
}

TEST(Pictures, PlayedAtAnySizeTheyEqualDirectDrawing) {
  const World pixels = MakeWorld({0, 0, 10, 20});
  FillAtRandom(pixels, 1);
  const Picture picture = Record([&] { DrawScene(1, pixels); });
  for (const SInt16 scale : {SInt16{1}, SInt16{3}}) {
    const Rect size = {0, 0, static_cast<SInt16>(40 * scale), static_cast<SInt16>(60 * scale)};
    const World direct = MakeWorld(size);
    DrawScene(scale, pixels);
    const World played = MakeWorld(size);
    ForeColor(137);
    DrawPicture(picture.get(), &size);
    ExpectSame(direct, played);
    RGBColor color = {};
    GetForeColor(&color);  // the port's state comes back
    EXPECT_EQ(color.green, 0);
    EXPECT_EQ(color.blue, 65535);
    // A picture of the picture is the same again.
    const Picture again = Record([&] { DrawPicture(picture.get(), &kFrame); });
    const World twice = MakeWorld(size);
    DrawPicture(again.get(), &size);
    ExpectSame(direct, twice);
  }
}

TEST(Pictures, TextGrowsWithThem) {
  const Picture picture = Record([] {
    TextFont(kFontIDTimes);
    TextFace(kStyleBold);
    TextSize(20);
    MoveTo(5, 30);
    DrawString(reinterpret_cast<const UInt8*>("\002Mg"));
  });
  const World small = MakeWorld(kFrame);
  DrawPicture(picture.get(), &kFrame);
  const World direct = MakeWorld(kFrame);
  TextFont(kFontIDTimes);
  TextFace(kStyleBold);
  TextSize(20);
  MoveTo(5, 30);
  DrawString(reinterpret_cast<const UInt8*>("\002Mg"));
  ExpectSame(small, direct);
  const Rect twice = {0, 0, 80, 180};  // two times as high, three times as wide
  const World large = MakeWorld(twice);
  DrawPicture(picture.get(), &twice);
  const auto ink = [](const World& world) {
    const PixMap& map = **GetGWorldPixMap(world.get());
    double sum = 0;
    for (SInt32 v = 0; v < map.bounds.bottom; ++v)
      for (SInt32 h = 0; h < map.bounds.right; ++h)
        sum += PixelAt(world, h, v) >> 24;
    return sum;
  };
  EXPECT_NEAR(ink(large) / ink(small), 6, 0.6);
}

TEST(Pictures, WideOnesAreRecordedInStrips) {
  const Rect wide = {0, 0, 2, 9000};
  const World pixels = MakeWorld(wide);
  FillAtRandom(pixels, 2);
  const Picture picture = Record(
      [&] {
        GrafPtr port = nullptr;
        GetPort(&port);
        CopyBits(GetPortBitMapForCopyBits(pixels.get()), GetPortBitMapForCopyBits(port), &wide,
                 &wide, srcCopy, nullptr);
      },
      wide);
  const World played = MakeWorld(wide);
  DrawPicture(picture.get(), &wide);
  ExpectSame(pixels, played);
}

/// The picture's pixels as FFmpeg reads them, alpha first. It knows lines of more than 250 bytes.
Bytes ReadByPeer(PicHandle picture) {
  const TemporaryFolder folder;
  WriteFile(folder / "picture.pct",
            std::string_view(*picture, static_cast<std::size_t>(GetHandleSize(picture))));
  RunOrFail({"ffmpeg", "-v", "error", "-f", "image2", "-c:v", "qdraw", "-i",
             (folder / "picture.pct").string(), "-f", "rawvideo", "-pix_fmt", "argb",
             (folder / "pixels").string()});
  return ReadFile(folder / "pixels");
}

TEST(Pictures, AnotherReaderSeesTheirPixels) {
  for (const SInt16 width : {SInt16{63}, SInt16{200}}) {
    const Rect frame = {0, 0, 21, width};
    const World pixels = MakeWorld(frame);
    FillAtRandom(pixels, static_cast<UInt32>(width));
    const Picture picture = Record(
        [&] {
          GrafPtr port = nullptr;
          GetPort(&port);
          CopyBits(GetPortBitMapForCopyBits(pixels.get()), GetPortBitMapForCopyBits(port), &frame,
                   &frame, srcCopy, nullptr);
        },
        frame);
    const PixMap& map = **GetGWorldPixMap(pixels.get());
    const Bytes ours(map.baseAddr, map.baseAddr + std::ptrdiff_t{21} * map.rowBytes);
    ASSERT_EQ(ReadByPeer(picture.get()), ours);
  }
}

TEST(Pictures, TellTheirFrameAndResolution) {
  const World world = MakeWorld(kFrame);
  const Rect source = {10, 20, 110, 220};
  const OpenCPicParams header = {source, 2 * kPicture72Dpi, 2 * kPicture72Dpi, kOpenCPicVersion, 0,
                                 0};
  const Picture picture(OpenCPicture(&header));
  PaintRect(&source);
  ClosePicture();
  PictInfo info = {};
  ASSERT_EQ(GetPictInfo(picture.get(), &info), noErr);
  EXPECT_TRUE(EqualRect(&info.sourceRect, &source));
  EXPECT_EQ(info.hRes, 2 * kPicture72Dpi);
  Rect frame;
  QDGetPictureBounds(picture.get(), &frame);
  EXPECT_EQ(frame.right - frame.left, 100);
  EXPECT_EQ(frame.bottom - frame.top, 50);
  DrawPicture(picture.get(), &kFrame);  // the source fills the destination
  EXPECT_NE(PixelAt(world, 0, 0), 0U);
  EXPECT_NE(PixelAt(world, 59, 39), 0U);
  // Damage: every length, and a byte that is another.
  const std::vector<UInt8> bytes(reinterpret_cast<UInt8*>(*picture),
                                 reinterpret_cast<UInt8*>(*picture) + GetHandleSize(picture.get()));
  for (std::size_t size = 0; size < bytes.size(); ++size)
    EXPECT_EQ(quillmere::drawing::PlayPicture(bytes.data(), size, kFrame), pictureDataErr) << size;
  EXPECT_EQ(GetPictInfo(nullptr, &info), paramErr);
  const Picture none(NewHandle(0));
  EXPECT_EQ(GetPictInfo(none.get(), &info), pictureDataErr);
  DrawPicture(none.get(), &kFrame);
}

}  // namespace
