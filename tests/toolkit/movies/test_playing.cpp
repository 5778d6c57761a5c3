/// Movies that play under a controller, in windows, and as icons.
#include <gtest/gtest.h>

#include <cstdlib>

#include "GL_Memory.h"
#include "QT_Controllers.h"
#include "QT_Pictures.h"
#include "QT_Pixel_Formats.h"
#include "automation.h"
#include "carbon_events.h"
#include "cf_bundle.h"
#include "made_movie.h"
#include "movie_drawing.h"
#include "movie_geometry.h"
#include "movie_playing.h"
#include "nibs.h"
#include "reference_counted.h"
#include "track_editing.h"
#include "up_time.h"
#include "window_manager.h"
#include "window_ports.h"

namespace quillmere::test {
namespace {

/// The pixel of a port at a place; alpha in its upper byte.
UInt32 PixelAt(CGrafPtr port, SInt32 h, SInt32 v) {
  const PixMap& map = **GetGWorldPixMap(port);
  const UInt8* const pixel = map.baseAddr + std::ptrdiff_t{v - map.bounds.top} * map.rowBytes +
                             std::ptrdiff_t{h - map.bounds.left} * 4;
  return UInt32{pixel[0]} << 24 | UInt32{pixel[1]} << 16 | UInt32{pixel[2]} << 8 | pixel[3];
}
constexpr UInt32 kRed = 0xFFFF0000;

/// Waits, not longer than some seconds, until the movie stands.
void WaitUntilItStands(Movie movie) {
  for (int tries = 0; tries < 500 && GetMovieRate(movie) != 0; ++tries)
    Delay(1, nullptr);
}

TEST_F(MadeMovie, PlaysToItsEndsUnderAController) {
  AddDrawn({"png "_4cc});
  const Rect bounds = {10, 20, 58, 100};
  MovieController controller = NewMovieController(movie_, &bounds, mcScaleMovieToFit);
  ASSERT_NE(nullptr, controller);
  Rect box{};
  GetMovieBox(movie_, &box);
  EXPECT_TRUE(box.left == 20 && box.top == 10 && box.right == 100 && box.bottom == 58);
  EXPECT_EQ(noErr, QT_SetMCTimeValue(controller, 50));
  SInt32 time = 0;
  EXPECT_EQ(noErr, QT_GetMCTimeValue(controller, &time));
  EXPECT_EQ(50, time);
  EXPECT_EQ(noErr, QT_SetMCTimeValue(controller, 5000));
  EXPECT_EQ(200, GetMovieTime(movie_, nullptr)) << "held to the movie";
  EXPECT_EQ(noErr, QT_SetMCSelection(controller, 30, 40));
  TimeValue start = 0;
  TimeValue duration = 0;
  GetMovieSelection(movie_, &start, &duration);
  EXPECT_TRUE(start == 30 && duration == 40);

  EXPECT_EQ(noErr, QT_SetMCPlayRate(controller, -40 * 0x10000));
  Fixed rate = 0;
  EXPECT_EQ(noErr, QT_GetMCPlayRate(controller, &rate));
  EXPECT_TRUE(rate == -40 * 0x10000 || rate == 0);
  WaitUntilItStands(movie_);
  EXPECT_EQ(0, GetMovieTime(movie_, nullptr));
  StartMovie(movie_);  // at its own rate, 1
  EXPECT_EQ(0x10000, GetMovieRate(movie_));
  SetMovieTimeValue(movie_, 199);
  WaitUntilItStands(movie_);
  EXPECT_EQ(200, GetMovieTime(movie_, nullptr));
  EXPECT_EQ(paramErr, QT_SetMCPlayRate(nullptr, 0));
  EXPECT_EQ(-2099, MCDoAction(controller, 99, &rate));
  EXPECT_EQ(paramErr, MCDoAction(controller, mcActionPlay, nullptr));
  EXPECT_EQ(nullptr, NewMovieController(movie_, nullptr, 0));
  const Rect corner = {0, 0, 200, 200};
  DisposeMovieController(controller);
  DisposeMovieController(NewMovieController(movie_, &corner, mcTopLeftMovie));
  GetMovieBox(movie_, &box);
  EXPECT_TRUE(box.left == 0 && box.top == 0 && box.right == 80 && box.bottom == 48);
  DisposeMovieController(NewMovieController(movie_, &corner, 0));
  GetMovieBox(movie_, &box);
  EXPECT_TRUE(box.left == 60 && box.top == 76 && box.right == 140);
}

TEST_F(MadeMovie, IsShownInADialogItem) {
  constexpr OSType kSignature = "ORw1"_4cc;
  AddDrawn({"jpeg"_4cc});
  quillmere::windows::UseNoDisplay();
  quillmere::SetBundleResourceFolder(QUILLMERE_RESOURCES);
  IBNibRef nib = nullptr;
  WindowRef window = nullptr;
  ASSERT_EQ(noErr, CreateNibReference(CFSTR("main"), &nib));
  ASSERT_EQ(noErr, CreateWindowFromNib(nib, CFSTR("MainWindow"), &window));
  DisposeNibReference(nib);
  ShowWindow(window);

  void* element = nullptr;
  ASSERT_EQ(noErr, GL_NewPtrClear(sizeof(QT_MovieExt), &element));
  auto* list = static_cast<QT_MovieExt*>(element);
  list->movie = movie_;
  movie_ = nullptr;
  EXPECT_EQ(nullptr, QT_GetFirstPlayingMovie(list));
  EXPECT_EQ(-30588, QT_AttachMovieToDialogItem(list, window, {kSignature, 1}));
  ASSERT_EQ(noErr, QT_AttachMovieToDialogItem(list, window, {kSignature, 2001}));
  EXPECT_EQ(list, QT_FindMC_LE(list, list->controller));
  EXPECT_EQ(nullptr, QT_FindMC_LE(list, nullptr));
  EXPECT_EQ(noErr, MCDoAction(list->controller, mcActionIdle, nullptr));
  Rect box{};
  GetMovieBox(list->movie, &box);
  const UInt32 middle =
      PixelAt(GetWindowPort(window), (box.left + box.right) / 2, (box.top + box.bottom) / 2);
  EXPECT_GT(middle >> 16 & 0xFF, 250U);
  EXPECT_LT(middle & 0xFFFF, 0x0505U);
  EXPECT_EQ(noErr, QT_SetMCPlayRate(list->controller, 0x100));
  EXPECT_EQ(list, QT_GetFirstPlayingMovie(list));
  EXPECT_EQ(noErr, QT_ActivateMovies(list, 0));
  EXPECT_EQ(nullptr, QT_GetFirstPlayingMovie(list)) << "stopped";
  EXPECT_FALSE(GetMovieActive(list->movie));
  QT_DisposeMovieData(list);
  EXPECT_EQ(nullptr, list->movie);
  QT_DisposeMovieExt(&list, list);
  EXPECT_EQ(nullptr, list);
  DisposeWindow(window);
}

TEST_F(MadeMovie, BecomesAnIcon) {
  IconRef icon = nullptr;
  Boolean is_in_file = 0;
  ASSERT_EQ(noErr, QT_SaveMovie(movie_, &file_, &is_in_file));
  EXPECT_EQ(noErr, QT_MovieFileToIcon(&file_, &icon));
  EXPECT_EQ(nullptr, icon) << "nothing to be seen";
  AddDrawn({"png "_4cc});
  ASSERT_EQ(noErr, QT_SaveMovie(movie_, &file_, &is_in_file));
  ASSERT_EQ(noErr, QT_MovieFileToIcon(&file_, &icon));
  ASSERT_NE(nullptr, icon);
  GWorldPtr world = nullptr;
  const Rect bounds = {0, 0, 32, 32};
  ASSERT_EQ(noErr, NewGWorld(&world, 32, &bounds, nullptr, nullptr, 0));
  SetGWorld(world, nullptr);
  const Rect place = {4, 4, 28, 28};
  EXPECT_EQ(noErr, PlotIconRef(&place, icon));
  EXPECT_EQ(kRed, PixelAt(world, 4, 27));
  EXPECT_EQ(0U, PixelAt(world, 3, 10));
  EXPECT_EQ(noErr, ReleaseIconRef(icon));

  // Families: elements are replaced and taken away; what isn't one is refused.
  IconFamilyHandle family = NewIconFamily();
  Handle data = nullptr;
  ASSERT_EQ(noErr, PtrToHand("mask", &data, 4));
  EXPECT_EQ(noErr, SetIconFamilyData(family, "t8mk"_4cc, data));
  EXPECT_EQ(noErr, SetIconFamilyData(family, "ic08"_4cc, data));
  EXPECT_EQ(noErr, SetIconFamilyData(family, "t8mk"_4cc, nullptr));
  EXPECT_EQ(8 + 12, GetHandleSize(family));
  EXPECT_EQ(-1002, GetIconFamilyData(family, "t8mk"_4cc, data));
  EXPECT_EQ(noErr, GetIconFamilyData(family, "ic08"_4cc, data));
  ASSERT_EQ(noErr, GetIconRefFromIconFamilyPtr(*family, GetHandleSize(family), &icon));
  EXPECT_EQ(-1002, PlotIconRef(&place, icon)) << "too few pixels";
  ReleaseIconRef(icon);
  (*family)[12] = 3;  // an element smaller than its header
  EXPECT_EQ(paramErr, GetIconRefFromIconFamilyPtr(*family, GetHandleSize(family), &icon));
  EXPECT_EQ(paramErr, SetIconFamilyData(family, "t8mk"_4cc, data));
  DisposeHandle(data);
  DisposeHandle(family);
  DisposeGWorld(world);
}

TEST_F(MadeMovie, CanBeDrawnIntoPixelFormats) {
  Boolean can = 0;
  EXPECT_EQ(noErr, QT_CanRenderMovieToPixelFormat(movie_, 32, 1, &can));
  EXPECT_TRUE(can);
  EXPECT_EQ(noErr, QT_CanRenderMovieToPixelFormat(movie_, "2vuy"_4cc, 1, &can));
  EXPECT_FALSE(can) << "no track";
  AddDrawn({"png "_4cc, "jpeg"_4cc});
  EXPECT_EQ(noErr, QT_CanRenderMovieToPixelFormat(movie_, "2vuy"_4cc, 0, &can));
  EXPECT_TRUE(can);
  EXPECT_EQ(noErr, QT_CanRenderMovieToPixelFormat(movie_, "2vuy"_4cc, 1, &can));
  EXPECT_FALSE(can) << "two descriptions";
  EXPECT_EQ(noErr, QT_CanRenderMovieToPixelFormat(movie_, "y420"_4cc, 0, &can));
  EXPECT_FALSE(can);
  SetMovieActive(movie_, 1);
  EXPECT_EQ(noErr, QT_TryToRenderMovieToPixelFormat(movie_, "2vuy"_4cc));
  EXPECT_EQ(-157, QT_TryToRenderMovieToPixelFormat(movie_, "y420"_4cc));
  MatrixRecord turned{};
  turned.matrix[0][1] = 0x10000;
  turned.matrix[1][0] = -0x10000;
  turned.matrix[2][0] = 24 << 16;
  turned.matrix[2][2] = 0x40000000;
  SetMovieMatrix(movie_, &turned);
  EXPECT_EQ(noErr, QT_CanRenderMovieToPixelFormat(movie_, "2vuy"_4cc, 0, &can));
  EXPECT_FALSE(can);
}

}  // namespace
}  // namespace quillmere::test
