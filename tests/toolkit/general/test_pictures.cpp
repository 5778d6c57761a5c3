/// Pictures, worlds and lines of text of the toolkit, by the pixels that they leave behind.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

#include "GL_QuickDraw_Pictures.h"
#include "GL_QuickDraw_Ports.h"
#include "drawing.h"
#include "file_objects.h"
#include "rectangles.h"
#include "test_files.h"
#include "text_style.h"

namespace {

using namespace quillmere::test;

constexpr UInt32 kRed = 0xFFFF0000, kBlue = 0xFF0000FF;

struct Kill {
  void operator()(Ptr* picture) const { KillPicture(picture); }
};
using Picture = std::unique_ptr<Ptr, Kill>;

/// The pixels of a picture, drawn by GL_PictureToPixmap, as 0xAARRGGBB.
struct Pixels {
  explicit Pixels(PicHandle picture) {
    GrafPtr saved = nullptr;
    GWorldPtr world = nullptr;
    PixMapHandle map = nullptr;
    EXPECT_EQ(GL_PictureToPixmap(picture, &saved, &world, &map), noErr);
    GrafPtr now = nullptr;
    GetPort(&now);
    EXPECT_EQ(now, world);
    bounds = (*map)->bounds;
    for (SInt32 v = 0; v < bounds.bottom - bounds.top; ++v)
      for (SInt32 h = 0; h < bounds.right - bounds.left; ++h) {
        const UInt8* p =
            (*map)->baseAddr + std::ptrdiff_t{v} * (*map)->rowBytes + std::ptrdiff_t{h} * 4;
        values.push_back(UInt32{p[0]} << 24 | UInt32{p[1]} << 16 | UInt32{p[2]} << 8 | p[3]);
      }
    SetPort(saved);
    DisposeGWorld(world);
  }
  UInt32 At(SInt32 h, SInt32 v) const {
    return values[static_cast<std::size_t>((v - bounds.top) * (bounds.right - bounds.left) + h -
                                           bounds.left)];
  }
  Rect bounds{};
  std::vector<UInt32> values;
};

Picture OneColor(SInt32 color, const Rect& rect) {
  PicHandle picture = nullptr;
  EXPECT_EQ(GL_MakeOneColorPicture(color, &rect, &picture), noErr);
  return Picture(picture);
}

TEST(ToolkitPictures, OneColorIsClippedEditedAndSaved) {
  GrafPtr before = nullptr, after = nullptr;
  GetPort(&before);
  const Picture red = OneColor(205, {2, 3, 22, 43});
  PicHandle picture = nullptr;
  const Rect frame = {0, 0, 30, 30};
  ASSERT_EQ(GL_ClipPicture(red.get(), &frame, &picture), noErr);
  ASSERT_EQ(GL_EditPictureTempl(&picture), noErr);
  const Picture clipped(picture);
  const Pixels pixels(clipped.get());
  EXPECT_TRUE(EqualRect(&pixels.bounds, &frame));
  for (SInt32 v = 0; v < 30; ++v)
    for (SInt32 h = 0; h < 30; ++h)
      ASSERT_EQ(pixels.At(h, v), v >= 2 && v < 22 && h >= 3 ? kRed : 0);
  GetPort(&after);
  EXPECT_EQ(before, after);
  const Rect empty = {5, 5, 5, 5};
  EXPECT_EQ(GL_MakeOneColorPicture(205, &empty, &picture), paramErr);
  PicHandle none = nullptr;
  EXPECT_EQ(GL_EditPictureTempl(&none), noErr);
}

TEST(ToolkitPictures, ScalingFitsShrinksOrLeavesBars) {
  const Picture red = OneColor(205, {0, 0, 10, 20});
  const Rect box = {7, 7, 47, 67};  // 60 wide, 40 high
  struct Case {
    Boolean keeps, fits;
    SInt32 width, height, top, bottom;
  };
  for (const Case& c :
       {Case{0, 0, 60, 40, 0, 40}, Case{1, 1, 60, 30, 0, 30}, Case{1, 0, 60, 40, 5, 35}}) {
    PicHandle made = nullptr;
    ASSERT_EQ(GL_ScalePicture(&box, red.get(), &made, c.keeps, c.fits, 409), noErr);
    const Picture scaled(made);
    const Pixels pixels(made);
    EXPECT_EQ(pixels.bounds.right, c.width);
    EXPECT_EQ(pixels.bounds.bottom, c.height);
    for (SInt32 v = 0; v < c.height; ++v)
      for (SInt32 h = 0; h < c.width; ++h)
        ASSERT_EQ(pixels.At(h, v), v >= c.top && v < c.bottom ? kRed : kBlue) << h << ' ' << v;
  }
  PicHandle made = nullptr;
  const Rect tall = {0, 0, 20, 20}, wide = {0, 0, 10, 50};
  ASSERT_EQ(GL_ScalePicture(&wide, red.get(), &made, 1, 0, 409), noErr);
  const Picture beside(made);
  EXPECT_EQ(Pixels(made).At(14, 5), kBlue);
  EXPECT_EQ(Pixels(made).At(15, 5), kRed);
  ASSERT_EQ(GL_ScalePicture(&tall, OneColor(30, {0, 0, 5, 5}).get(), &made, 1, 1, 33), noErr);
  KillPicture(made);
}

TEST(ToolkitPictures, SavedFilesTellTheirSize) {
  const TemporaryFolder folder;
  const FSRef place = ReferenceTo(folder.path());
  FSCatalogInfo info{};
  ASSERT_EQ(FSGetCatalogInfo(&place, kFSCatInfoVolume | kFSCatInfoNodeID, &info, nullptr, nullptr,
                             nullptr),
            noErr);
  const FSSpec spec = {info.volume, info.nodeID, "\010pic.qtif"};
  const Picture red = OneColor(205, {0, 0, 11, 23});
  ASSERT_EQ(QT_SavePictureToFile(red.get(), &spec, nullptr), noErr);
  EXPECT_EQ(QT_SavePictureToFile(red.get(), &spec, nullptr), dupFNErr);
  const Bytes bytes = ReadFile(folder / "pic.qtif");
  ASSERT_EQ(bytes.size(), 8U + 86 + 8 + 11 * 23 * 4);
  EXPECT_EQ(bytes[bytes.size() - 3], 255);  // red
  EXPECT_EQ(bytes[bytes.size() - 2], 0);
  const std::string told = RunOrFail({"exiftool", "-s", "-SourceImageWidth", "-SourceImageHeight",
                                      "-CompressorID", (folder / "pic.qtif").string()});
  EXPECT_NE(told.find(": 23"), std::string::npos) << told;
  EXPECT_NE(told.find(": 11"), std::string::npos) << told;
  HFSUniStr255 name = {3, u"a.b"};
  const Picture none(NewHandle(0));
  EXPECT_NE(QT_SavePictureToFile(none.get(), &spec, &name), noErr);
  EXPECT_FALSE(std::filesystem::exists(folder / "a.b"));
}

/// What text leaves in a world: the rectangle of all pixels of a colour.
Rect Ink(GWorldPtr world, UInt32 background) {
  const PixMap& map = **GetGWorldPixMap(world);
  Rect ink = {32767, 32767, 0, 0};
  for (SInt16 v = 0; v < map.bounds.bottom; ++v)
    for (SInt16 h = 0; h < map.bounds.right; ++h) {
      UInt32 pixel = 0;
      std::memcpy(&pixel, map.baseAddr + std::ptrdiff_t{v} * map.rowBytes + std::ptrdiff_t{h} * 4,
                  4);
      if (pixel == background) continue;
      ink = {std::min(ink.top, v), std::min(ink.left, h), std::max<SInt16>(ink.bottom, v + 1),
             std::max<SInt16>(ink.right, h + 1)};
    }
  return ink;
}

TEST(ToolkitText, LinesStandInTheMiddleOfTheirRectangle) {
  const Rect bounds = {0, 0, 60, 240};
  GWorldPtr world = nullptr;
  GrafPtr saved = nullptr;
  GetPort(&saved);
  ASSERT_EQ(NewGWorld(&world, 32, &bounds, nullptr, nullptr, 0), noErr);
  SetPort(world);
  GL_DrawTextLineScaled("HHHHHHHHHHHHHHHHHHHHHH", &bounds, 205, kFontIDHelvetica);
  const Rect ink = Ink(world, 0);
  EXPECT_NEAR(ink.left + ink.right, 240, 4);
  EXPECT_GE(ink.right - ink.left, 150);
  EXPECT_LE(ink.right - ink.left, 192);
  EXPECT_NEAR(ink.bottom, 30, 1);
  GL_StringElement lines[] = {{&lines[1], "one"}, {&lines[2], "two and more"}, {nullptr, "three"}};
  GL_DrawThreeLineImage(bounds, lines);
  const Rect three = Ink(world, 0x000000FF);  // opaque black, alpha first
  EXPECT_GE(three.left, 0);
  EXPECT_GT(three.bottom, 50);
  EXPECT_LT(three.top, 15);
  SetPort(saved);
  DisposeGWorld(world);
}

TEST(ToolkitText, FontsGoByNameAndNumber) {
  SInt16 font = 0;
  GL_FontNameToFontID("courier", &font);
  EXPECT_EQ(font, kFontIDCourier);
  std::array<char, 256> name{};
  GL_FontIDToFontName(font, name.data());
  EXPECT_STREQ(name.data(), "Courier");
  GL_SetAppFont();
  EXPECT_EQ(GetPortTextFont(), kFontIDApplication);
  EXPECT_EQ(GetPortTextSize(), 0);
}

TEST(ToolkitPorts, PlacesGoThroughAPort) {
  CGrafPtr port = quillmere::drawing::NewScreenPort(50, 40, {100, 200});
  Rect rect = {1, 2, 3, 4};
  GL_LocalRectToGlobal(&rect, port);
  const Rect moved = {101, 202, 103, 204};
  EXPECT_TRUE(EqualRect(&rect, &moved));
  RgnHandle region = NewRgn();
  RectRgn(region, &moved);
  GL_GlobalRegionToLocal(region, port);
  Rect bounds;
  EXPECT_EQ(GetRegionBounds(region, &bounds)->left, 2);
  GL_LocalRegionToGlobal(region, port);
  GL_GlobalRectToLocal(&rect, port);
  EXPECT_EQ(rect.top, 1);
  EXPECT_EQ(GetRegionBounds(region, &bounds)->top, 101);
  DisposeRgn(region);
  DisposeGWorld(port);
}

}  // namespace
