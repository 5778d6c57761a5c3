/// What movies are asked beyond what ffprobe can tell too (the outside tests compare those): edge
/// cases, made movies, and what changes a movie.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "CA_Layouts.h"
#include "LL_Linked_Lists.h"
#include "QT_Compression.h"
#include "QT_Copy_Media.h"
#include "QT_Frame_Statistics.h"
#include "QT_Frames.h"
#include "QT_Media_Statistics.h"
#include "QT_Movie_Info.h"
#include "QT_Movie_Queries.h"
#include "QT_Movie_Storage.h"
#include "QT_New_Tracks.h"
#include "QT_Tracks.h"
#include "cf_strings.h"
#include "drawing.h"
#include "file_objects.h"
#include "image_descriptions.h"
#include "made_movie.h"
#include "media_editing.h"
#include "memory_handles.h"
#include "movie_geometry.h"
#include "movie_storage.h"
#include "test_files.h"
#include "track_editing.h"

namespace quillmere::test {
namespace {

TEST_F(MadeMovie, WithoutTracksHasNothing) {
  SInt32 start = 7;
  SInt32 end = 7;
  EXPECT_EQ(0, QT_CountTracks(movie_));
  EXPECT_EQ(0, QT_GetMovieSoundDuration(movie_, &start, &end));
  EXPECT_EQ(0, start + end);
  Boolean flag = 1;
  EXPECT_EQ(noErr, QT_MovieHasVideo(movie_, &flag));
  EXPECT_FALSE(flag);
  EXPECT_EQ(noErr, QT_MovieHasDualMonoSound(movie_, &flag));
  EXPECT_FALSE(flag);
  SInt32 count = 9;
  EXPECT_EQ(noErr, QT_CountMovieFrames(movie_, &count, nullptr));
  EXPECT_EQ(0, count);
  EXPECT_EQ(0, QT_GetLastMovieDuration(movie_));
  EXPECT_EQ(QT_GetFirstVideoTrack(movie_), nullptr);
  SInt32 frames[100];
  EXPECT_EQ(11011, QT_SelectMovieSamples(movie_, nullptr, 0, frames, 20, &count));
  const QT_ChapterRecord chapter = {0, "None"};
  EXPECT_EQ(11011, QT_CreateChapterTrack(movie_, &chapter, 1));
  EXPECT_EQ(invalidMovie, QT_MovieHasDualMonoSound(nullptr, &flag));
  EXPECT_TRUE(QT_IsQuickTimeInstalled());
  EXPECT_GT(QT_GetQTVersion(), 0x700);
}

TEST_F(MadeMovie, FramesAreCountedAndCompared) {
  const Track track = AddVideo("raw "_4cc, {20, 20, 20, 20, 21});
  SInt32 duration = 0;
  Float32 deviation = 0;
  EXPECT_EQ(noErr, QT_AllFrameDurationsEqual(movie_, &duration, &deviation));
  EXPECT_EQ(0, duration);
  EXPECT_NEAR((4 * 0.2 + 0.8) / 5 / 20.2, static_cast<double>(deviation), 1e-6);
  Boolean has_odd = 0;
  EXPECT_EQ(noErr, QT_MovieHasOddDurations(movie_, &has_odd));
  EXPECT_TRUE(has_odd);
  EXPECT_EQ(21, QT_GetLastMovieDuration(movie_));
  EXPECT_EQ(3, QT_CountFramesInTrackSelection(track, 20, 80));
  // Gaps of one unit belong to the frame before; longer ones are listed.
  EXPECT_EQ(noErr, InsertEmptyTrackSegment(track, 60, 9));
  EXPECT_EQ(noErr, InsertEmptyTrackSegment(track, 20, 1));
  SInt32 count = 0;
  QT_FrameGap* gaps = nullptr;
  EXPECT_EQ(noErr, QT_CountMovieFrames(movie_, &count, &gaps));
  EXPECT_EQ(5, count);
  ASSERT_NE(nullptr, gaps);
  EXPECT_EQ(20, gaps->time);
  ASSERT_NE(nullptr, gaps->next);
  EXPECT_EQ(2, gaps->next->frameNumber);
  EXPECT_EQ(61, gaps->next->time);
  EXPECT_EQ(9, gaps->next->duration);
  LL_DisposeLinkedList(ListHead(&gaps));
  EXPECT_EQ(3, QT_CountNonEmptyTrackEdits(track, 0, 0x7FFFFFFF));
  EXPECT_EQ(noErr, QT_GetNumVisualMovieSamples(movie_, 0, 1000, 41, &count));
  EXPECT_EQ(2, count);
  SInt32* const list = QT_MakeMovieTimeList(movie_, "raw "_4cc, 6, 0);
  EXPECT_EQ((std::vector<SInt32>{0, 21, 41, 70, 90, 111, 111}),
            std::vector<SInt32>(list, list + 7));
  EXPECT_EQ(1, QT_MovieFrameNumberFromTimeList(list, 6, 40));
  EXPECT_EQ(6, QT_MovieFrameNumberFromTimeList(list, 6, 111));
  std::free(list);
  EXPECT_NEAR(5 / (111 / 600.0), static_cast<double>(QT_NumberSamplesPerSecondInTrack(track)), 0.1);
  SInt32 frames[100];
  EXPECT_EQ(noErr, QT_SelectMovieSamples(movie_, nullptr, 0, frames, 1, &count));
  EXPECT_EQ(100, count);
  EXPECT_EQ(1, frames[0]);
  EXPECT_EQ(99 * 101 / 100 + 1, frames[99]);
  EXPECT_EQ(noErr, QT_SelectMovieSamples(movie_, nullptr, 3, frames, 20, &count));
  EXPECT_EQ(3, count);
}

TEST_F(MadeMovie, SamplesAreTold) {
  const Track track = AddVideo("raw "_4cc, {20, 20, 30});
  const Media media = GetTrackMedia(track);
  SInt32 smallest = 0;
  SInt32 largest = 0;
  SInt32 duration = 0;
  Boolean has_dependent = 1;
  EXPECT_EQ(noErr, QT_AnalyzeMedia(media, &smallest, &largest, &has_dependent, &duration, nullptr));
  EXPECT_EQ(17, smallest) << "the first stands for all of a codec of fixed size";
  EXPECT_EQ(17, largest);
  EXPECT_EQ(0, duration);
  EXPECT_FALSE(has_dependent);
  SInt32 number = 3;
  SInt32 time = 0;
  SInt32 size = 0;
  SInt32 index = 0;
  SInt64 offset = 0;
  EXPECT_EQ(noErr, QT_GetSampleInfo(media, &number, 0, &time, nullptr, nullptr, &index, nullptr,
                                    &size, &offset));
  EXPECT_EQ(40, time);
  EXPECT_EQ(16, size);
  EXPECT_EQ(1, index);
  number = 99;
  EXPECT_EQ(noErr, QT_GetSampleInfo(media, &number, 25, &time, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, nullptr));
  EXPECT_EQ(2, number);
  EXPECT_EQ(paramErr, QT_GetSampleInfo(media, nullptr, 70, &time, nullptr, nullptr, &index, nullptr,
                                       nullptr, &offset));
  EXPECT_EQ(-1, index);
  EXPECT_EQ(-1, offset);
  EXPECT_EQ(noErr, QT_GetSampleSize(track, 39, &size));
  EXPECT_EQ(18, size);
  EXPECT_TRUE(QT_IsDataOffsetMonotonousWithTrackTime(track));
  EXPECT_EQ(noErr, InsertTrackSegment(track, track, 0, 20, 40));
  EXPECT_FALSE(QT_IsDataOffsetMonotonousWithTrackTime(track));
  SampleDescriptionHandle description = nullptr;
  SetMovieTimeValue(movie_, 5);
  EXPECT_EQ(noErr, QT_GetCurrentMediaSampleDescription(track, &description, &index, &time));
  EXPECT_NE(nullptr, description);
  DisposeHandle(description);
  SetMovieTimeValue(movie_, 5000);
  EXPECT_EQ(noErr, QT_GetCurrentMediaSampleDescription(track, &description, &index, &time));
  EXPECT_EQ(nullptr, description);
}

TEST_F(MadeMovie, TracksAreCompared) {
  const Track first = AddVideo("raw "_4cc, {20, 20});
  const Track second = AddVideo("2vuy"_4cc, {20, 20}, 24);
  OSType type = 0;
  Boolean flag = 0;
  EXPECT_EQ(noErr, QT_GetMovieCType(movie_, 0, &type, &flag));
  EXPECT_EQ(0xFFFFFFFF, type);
  EXPECT_TRUE(flag);
  EXPECT_EQ(noErr, QT_DoEnabledVideoTracksUseOneCompressorType(movie_, &type));
  EXPECT_EQ(0U, type);
  EXPECT_EQ(noErr, QT_DoEnabledVideoTracksUseFixedSizeCompressorTypesOnly(movie_, &flag));
  EXPECT_TRUE(flag);
  Float32 gamma = 0;
  EXPECT_EQ(noErr, QT_GetMovieGamma1(movie_, &gamma));
  EXPECT_EQ(-1.0F, gamma) << "1.8 of RGB and 2.0";
  SInt32 depth = 0;
  EXPECT_EQ(noErr, QT_GetMaxDepth(movie_, &depth));
  EXPECT_EQ(32, depth);
  EXPECT_TRUE(QT_EnabledVideoTracksHaveSameMediaTimeScale(movie_));
  EXPECT_EQ(noErr, QT_MovieHasOneSimpleVideoTrack(movie_, &flag));
  EXPECT_FALSE(flag);
  SetTrackEnabled(second, 0);
  EXPECT_EQ(noErr, QT_MovieHasOneSimpleVideoTrack(movie_, &flag));
  EXPECT_TRUE(flag);
  SetTrackEnabled(second, 1);

  RgnHandle clip = nullptr;
  Fixed width = 0;
  EXPECT_EQ(noErr, QT_EnabledVideoTracksHaveEqualSpatialCharacteristics(movie_, &flag, &clip,
                                                                        nullptr, &width, nullptr));
  EXPECT_TRUE(flag);
  EXPECT_EQ(2 << 16, width);
  SetTrackDimensions(second, 3 << 16, 2 << 16);
  EXPECT_EQ(noErr, QT_EnabledVideoTracksHaveEqualSpatialCharacteristics(movie_, &flag, &clip,
                                                                        nullptr, &width, nullptr));
  EXPECT_FALSE(flag);
  EXPECT_EQ(0, width);

  EXPECT_TRUE(QT_TrackPairOverlapTemporally(first, second));
  EXPECT_EQ(noErr, InsertEmptyTrackSegment(second, 0, 40));
  EXPECT_FALSE(QT_TrackPairOverlapTemporally(first, second));
  EXPECT_FALSE(QT_AnyTracksOverlapTemporally(movie_, "vide"_4cc, 1, 1));
  EXPECT_EQ(noErr, QT_AnyEnabledVideoTrackIsComposited(movie_, &flag));
  const Boolean as_made = flag;
  EXPECT_EQ(noErr, MediaSetGraphicsMode(GetMediaHandler(GetTrackMedia(first)), 36, nullptr));
  EXPECT_EQ(noErr, QT_AnyEnabledVideoTrackIsComposited(movie_, &flag));
  EXPECT_TRUE(flag);
  EXPECT_FALSE(as_made);
  SInt32 start = 0;
  SInt32 end = 0;
  EXPECT_EQ(80, QT_GetMovieVideoDuration(movie_, &start, &end));
}

TEST_F(MadeMovie, DualMonoBecomesStereoAndSilenceIsAdded) {
  const Track left = AddSound(1);
  const Track right = AddSound(1);
  Boolean flag = 0;
  EXPECT_EQ(noErr, QT_MovieHasDualMonoSound(movie_, &flag));
  EXPECT_TRUE(flag);
  UInt32 rate = 0;
  EXPECT_EQ(noErr, QT_GetSoundTrackSampleRate(left, &rate));
  EXPECT_EQ(8000U << 16, rate);
  ASSERT_EQ(noErr, QT_ChangeDualMonoToStereo(movie_));
  AudioChannelLayout layout{};
  Handle description = NewHandle(4);
  GetMediaSampleDescription(GetTrackMedia(right), 1, description);
  EXPECT_EQ(noErr, QTSoundDescriptionGetProperty(description, "audi"_4cc, "clay"_4cc, sizeof layout,
                                                 &layout, nullptr));
  EXPECT_EQ(2U, layout.mChannelDescriptions[0].mChannelLabel);
  DisposeHandle(description);
  const Track both = AddSound(2);
  EXPECT_EQ(11026, QT_ChangeDualMonoToStereo(movie_));
  QT_EnableOneTrack(movie_, both);
  EXPECT_EQ(noErr, QT_MovieHasDualMonoSound(movie_, &flag));
  EXPECT_TRUE(flag) << "two channels that no layout tells of";
  ASSERT_EQ(noErr, QT_ChangeDualMonoToStereo(movie_));
  EXPECT_EQ(noErr, QT_MovieHasDualMonoSound(movie_, &flag));
  EXPECT_FALSE(flag);
  // Half a second of silence in the middle, which other programs hear.
  ASSERT_EQ(noErr, QT_AddEmptySoundToTrack(left, 300, 300));
  EXPECT_EQ(900, GetTrackDuration(left));
  Boolean is_in_file = 0;
  ASSERT_EQ(noErr, QT_SaveMovie(movie_, &file_, &is_in_file));
  const std::string told =
      RunOrFail({"ffprobe", "-v", "error", "-show_entries", "stream=channel_layout,channels", "-of",
                 "csv=p=0", (folder_ / "made.mov").string()});
  EXPECT_NE(std::string::npos, told.find("2,stereo")) << told;
}

TEST_F(MadeMovie, ChaptersAreReadByOtherPrograms) {
  AddVideo("raw "_4cc, {200, 200, 200});
  const QT_ChapterRecord chapters[] = {{0, "Begin"}, {250, "Ende \xC3\xBC"}};
  ASSERT_EQ(noErr, QT_CreateChapterTrack(movie_, chapters, 2));
  const QT_ChapterRecord late = {599, "Late"};
  EXPECT_EQ(invalidTime, QT_CreateChapterTrack(movie_, &late, 1));
  EXPECT_EQ(0, QT_CountEnabledTextTracks(movie_));
  Boolean is_in_file = 0;
  ASSERT_EQ(noErr, QT_SaveMovie(movie_, &file_, &is_in_file));
  EXPECT_EQ("0.000000,0.416667,Begin\n0.416667,1.000000,Ende \xC3\xBC\n",
            RunOrFail({"ffprobe", "-v", "error", "-show_entries",
                       "chapter=start_time,end_time:chapter_tags=title", "-of", "csv=p=0",
                       (folder_ / "made.mov").string()}));
}

TEST_F(MadeMovie, DrawnImagesAreCompressedIntoSamples) {
  AddDrawn({"png "_4cc, "jpeg"_4cc, "raw "_4cc});
  Track track = QT_GetFirstVideoTrack(movie_);
  Media media = GetTrackMedia(track);
  const auto nothing = [](Rect, SInt64, SInt64, SInt64) {};
  EXPECT_EQ(-8961, QT_AddCompressedTextImageToMedia(40 << 16, 24 << 16, nothing, 0, 0, 0, media,
                                                    "none"_4cc, 200, nullptr));
  EXPECT_EQ(3, GetMediaSampleDescriptionCount(media));
  EXPECT_EQ(600, GetMediaDuration(media));
  Boolean is_in_file = 0;
  ASSERT_EQ(noErr, QT_SaveMovie(movie_, &file_, &is_in_file));
  // FFmpeg sees the picture: all of it is red.
  RunFfmpeg({"-i", (folder_ / "made.mov").string(), "-frames:v", "1", "-pix_fmt", "rgb24", "-f",
             "rawvideo", (folder_ / "frame").string()});
  const Bytes frame = ReadFile(folder_ / "frame");
  ASSERT_EQ(40U * 24 * 3, frame.size());
  for (std::size_t i = 0; i < frame.size(); i += 3)
    ASSERT_TRUE(frame[i] == 255 && frame[i + 1] == 0 && frame[i + 2] == 0) << i;

  const Rect rect = {0, 0, 24, 40};
  SInt32 size = 0;
  EXPECT_EQ(noErr, QT_GetMaxCompressionSize(&rect, 32, nullptr, 512, "raw "_4cc, &size));
  EXPECT_EQ(40 * 24 * 4, size);
  EXPECT_EQ(noErr, QT_GetCSequenceMaxComprSize(&rect, 32, 512, "jpeg"_4cc, nullptr, &size));
  EXPECT_GT(size, 40 * 24);
  EXPECT_EQ(noErr, QT_GetMaxCompressionSizeFromMovieSimple(movie_, 512, "png "_4cc, &size));
  // Two of the pictures, drawn from the movie and compressed again.
  ASSERT_EQ(noErr, InsertMediaIntoTrack(track, 200, 200, 200, 0x10000));
  SetMovieTimeValue(movie_, 7);
  SInt32 mean = 0;
  SInt32 deviation = 0;
  EXPECT_EQ(noErr, QT_GetMaxCompressionSizeFromMovie(movie_, 0, 0, 0, 512, "raw "_4cc, 1, &size,
                                                     &mean, &deviation));
  EXPECT_EQ(40 * 24 * 4, mean);
  EXPECT_EQ(0, deviation);
  EXPECT_EQ(noErr, QT_GetMaxCompressionSizeFromMovie2(movie_, 1, 30, 10, 32, nullptr, 512,
                                                      "png "_4cc, 1, &size, &mean, &deviation));
  EXPECT_TRUE(mean > 50 && mean < size);
  EXPECT_EQ(7, GetMovieTime(movie_, nullptr));
  EXPECT_FALSE(GetMovieActive(movie_));
  Float32 gamma = 0;
  EXPECT_EQ(noErr, QT_GetMovieGamma2(movie_, nullptr, &gamma));
  EXPECT_NEAR(2.2, static_cast<double>(gamma), 1e-4);
  GWorldPtr world = nullptr;
  const Rect around = {-10, -10, 34, 50};
  ASSERT_EQ(noErr, NewGWorld(&world, 32, &around, nullptr, nullptr, 0));
  EXPECT_EQ(noErr, QT_GetMovieGamma2(movie_, world, &gamma));
  const PixMap& map = **GetGWorldPixMap(world);
  const UInt8* const inside = map.baseAddr + 10 * map.rowBytes + 10 * 4;
  EXPECT_TRUE(inside[0] == 255 && inside[1] == 255 && inside[2] == 0) << "drawn where it lies";
  EXPECT_EQ(0, map.baseAddr[0]) << "the rest stays";
  DisposeGWorld(world);
  testing::internal::CaptureStdout();
  EXPECT_EQ(noErr, QT_TestMovieGamma(movie_, "png "_4cc));
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(printed.starts_with(
      "cType = png , offscreen type = 32, reqGamma = 0.00, actGamma = 2.20\nARGB[4]: FF FF 00 "))
      << printed;
  EXPECT_NE(std::string::npos, printed.find("offscreen type = 2vuy, reqGamma = 2.20")) << printed;
  EXPECT_TRUE(printed.ends_with("Measured Y gamma change = 1.00\n")) << printed;
  EXPECT_EQ(noErr, QT_GetMaxCompressionSizeFromMovie2(movie_, 1, 30, 10, "2vuy"_4cc, nullptr, 512,
                                                      "jpeg"_4cc, 1, &size, &mean, &deviation));
  EXPECT_TRUE(mean > 50 && mean < size);
  AddVideo("none"_4cc, {400});
  EXPECT_EQ(-8961, QT_GetMovieGamma2(movie_, nullptr, &gamma)) << "no decoder";
  EXPECT_EQ(400, QT_MovieFrameNumberToTime(movie_, 2));
  EXPECT_EQ(200, QT_MovieFrameNumberToTime(movie_, 1));
  EXPECT_EQ(-1, QT_MovieFrameNumberToTime(movie_, 3));
  Point enforced = {1, 1};
  EXPECT_EQ(noErr, QT_GetQTMovieCompressorEnforcedSize("jpeg"_4cc, nullptr, &enforced));
  EXPECT_EQ(0, enforced.h);
  EXPECT_EQ(-3000, QT_GetQTMovieCompressorEnforcedSize("icod"_4cc, nullptr, &enforced));
  Boolean can = 1;
  EXPECT_EQ(noErr, QT_CanCodecChFieldDomLossless("jpeg"_4cc, &can));
  EXPECT_FALSE(can);
  EXPECT_EQ(11004, QT_CanCodecChFieldDomLossless("icod"_4cc, &can));
}

TEST(MpegMovies, RatesAndDimensionsAreGuessed) {
  const struct {
    OSType codec;
    Boolean pal;
    SInt32 height, width;
    Boolean is4to3;
    SInt32 real_height, real_width;
  } rows[] = {
      {"m2v "_4cc, 1, 576, 704, 0, 576, 720},     {"m2v "_4cc, 1, 404, 720, 0, 576, 720},
      {"m2s "_4cc, 0, 480, 853, 0, 480, 720},     {"mp4v"_4cc, 1, 480, 640, 0, 480, 720},
      {"m2v "_4cc, 0, 1080, 1920, 1, 1080, 1440}, {"m2v "_4cc, 0, 1080, 1920, 0, 1080, 1920},
      {"m2v "_4cc, 0, 810, 1440, 0, 1080, 1440}};
  for (const auto& row : rows) {
    SInt32 height = 0;
    SInt32 width = 0;
    QT_GuessRealMpegMediaDimensions(row.codec, row.pal, row.height, row.width, row.is4to3, &height,
                                    &width);
    EXPECT_EQ(row.real_height, height);
    EXPECT_EQ(row.real_width, width);
  }
  const TemporaryFolder folder;
  RunFfmpeg({"-f", "lavfi", "-i", "testsrc=s=32x24:r=25:d=1", "-c:v", "mpeg4", "-bf", "2",
             "-video_track_timescale", "90000", "-movie_timescale", "90000",
             (folder / "m.mp4").string()});
  const FSRef file = ReferenceTo(folder / "m.mp4");
  Movie movie = nullptr;
  ASSERT_EQ(noErr, QT_OpenMovieFile(&file, 0, &movie));
  Boolean pal = 0;
  SInt32 frames = 0;
  SInt32 duration = 0;
  double exact = 0;
  EXPECT_EQ(noErr, QT_GetMpegInfo(movie, &pal, &frames, &duration, &exact));
  EXPECT_TRUE(pal);
  EXPECT_EQ(25, frames);
  EXPECT_EQ(3600, duration);
  EXPECT_EQ(3600, exact);
  QT_DisposeMovie(&movie);
}

}  // namespace
}  // namespace quillmere::test
