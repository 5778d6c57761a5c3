/// Tracks found, listed and placed, in a movie of another maker.
#include "QT_Tracks.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "LL_Linked_Lists.h"
#include "QT_Aperture.h"
#include "QT_Movie_File.h"
#include "QT_Movie_Info.h"
#include "QT_Track_Geometry.h"
#include "file_objects.h"
#include "fixed_point.h"
#include "matrices.h"
#include "memory_handles.h"
#include "movie_geometry.h"
#include "test_files.h"
#include "track_references.h"
#include "user_data.h"

namespace quillmere::test {
namespace {

/// Two video tracks, a sound track and a time code track for each of the videos.
class Tracks : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new TemporaryFolder;
    RunFfmpeg({"-f",
               "lavfi",
               "-i",
               "testsrc=s=64x48:d=0.4",
               "-f",
               "lavfi",
               "-i",
               "testsrc=s=32x24:d=0.2",
               "-f",
               "lavfi",
               "-i",
               "sine=d=0.4",
               "-map",
               "0",
               "-map",
               "1",
               "-map",
               "2",
               "-c:v",
               "mjpeg",
               "-c:a",
               "pcm_s16le",
               "-timecode",
               "01:00:00:00",
               (*folder_ / "m.mov").string()});
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }
  static Movie Open() {
    const FSRef file = ReferenceTo(*folder_ / "m.mov");
    Movie movie = nullptr;
    EXPECT_EQ(noErr, QT_OpenMovieFileFP(&file, 0, nullptr, &movie));
    return movie;
  }
  void TearDown() override {
    QT_DisposeMovie(&movie_);
    QT_DisposeMovie(&other_);
  }

  static inline TemporaryFolder* folder_ = nullptr;
  Movie movie_ = Open();
  Movie other_ = Open();
};

TEST_F(Tracks, AreCountedFoundAndListed) {
  EXPECT_EQ(5, QT_CountTracks(movie_));
  EXPECT_EQ(2, QT_CountVideoTracks(movie_));
  EXPECT_EQ(2, QT_CountVisualTracks(movie_));
  EXPECT_EQ(1, QT_CountAuralTracks(movie_));
  EXPECT_EQ(1, QT_CountEnabledSoundTracks(movie_));
  EXPECT_EQ(0, QT_CountTextTracks(movie_));
  SInt32 references = 0;
  QT_EnableAllTracks(movie_, "vide"_4cc, 1);
  EXPECT_EQ(noErr, QT_CountEnabledVideTracksTrackRefs(movie_, &references));
  EXPECT_EQ(2, references);

  const Track first = QT_GetFirstVideoTrack(movie_);
  const Track second = QT_GetLastEnabledVideoTrack(movie_);
  ASSERT_NE(first, second);
  EXPECT_EQ(first, QT_GetActiveVideoTrack(movie_, 0)) << "of two on a layer, the lower index";
  SetTrackLayer(second, -1);
  EXPECT_EQ(second, QT_GetActiveVideoTrack(movie_, 0));
  EXPECT_EQ(first, QT_GetActiveVisualTrack(movie_, GetMovieTimeScale(movie_) * 3 / 10));
  EXPECT_EQ(nullptr, QT_GetActiveVisualTrack(movie_, GetMovieDuration(movie_)));
  EXPECT_EQ(second, QT_GetTrackByID(movie_, GetTrackID(second)));
  EXPECT_EQ(nullptr, QT_GetTrackByID(movie_, 99));

  QT_TrackElement* list = nullptr;
  ASSERT_EQ(noErr, QT_GetTrackList(movie_, &list));
  SInt32 index = 0;
  QT_TrackElement* time_code = nullptr;
  for (QT_TrackElement* element = list; element != nullptr; element = element->next) {
    EXPECT_EQ(++index, element->index);
    const bool is_time_code = element->mediaType == "tmcd"_4cc;
    EXPECT_EQ(is_time_code, element->referenced != 0);
    EXPECT_EQ(is_time_code ? "tmcd"_4cc : 0, element->referenceType);
    if (is_time_code && time_code == nullptr) time_code = element;
  }
  EXPECT_EQ(5, index);
  ASSERT_NE(nullptr, time_code);
  EXPECT_EQ(first, QT_FindReferencingTrack(list, time_code)->track);
  EXPECT_TRUE(QT_TrackReferencedByAnyTrackOfType(list, time_code, 0, "eyes"_4cc));
  EXPECT_FALSE(QT_TrackReferencedByAnyTrackOfType(list, time_code, "soun"_4cc, 0));
  EXPECT_FALSE(QT_TrackReferencedByAnyTrackOfType(list, list, "vide"_4cc, 0));
  LL_DisposeLinkedList(ListHead(&list));

  OSType* types = nullptr;
  SInt32 count = 0;
  ASSERT_EQ(noErr, QT_GetMovieMediaTypes(movie_, &types, &count));
  EXPECT_EQ((std::vector<OSType>{"vide"_4cc, "soun"_4cc, "tmcd"_4cc}),
            std::vector<OSType>(types, types + count));
  std::free(types);
  ASSERT_EQ(noErr, QT_GetMovieRefTrackTypes(movie_, &types, &count));
  EXPECT_EQ(1, count);
  std::free(types);
}

TEST_F(Tracks, HaveNamesReferencesAndStates) {
  const Track video = QT_GetFirstVideoTrack(movie_);
  const Track sound = QT_GetFirstSoundTrack(movie_);
  char name[256];
  QT_GetTrackName(sound, name);
  EXPECT_STREQ("", name);
  Handle text = nullptr;
  ASSERT_EQ(noErr, PtrToHand("Dialogue", &text, 8));
  EXPECT_EQ(noErr, AddUserData(GetTrackUserData(sound), text, "name"_4cc));
  EXPECT_EQ(noErr, AddUserData(GetTrackUserData(sound), text, "name"_4cc));
  QT_GetTrackName(sound, name);
  EXPECT_STREQ("Dialogue", name);
  EXPECT_EQ(2, CountUserDataType(GetTrackUserData(sound), "name"_4cc));
  EXPECT_EQ(noErr, RemoveUserData(GetTrackUserData(sound), "name"_4cc, 1));
  EXPECT_EQ(userDataItemNotFound, RemoveUserData(GetTrackUserData(sound), "name"_4cc, 2));
  EXPECT_EQ(userDataItemNotFound, GetUserData(GetTrackUserData(video), text, "none"_4cc, 1));
  DisposeHandle(text);

  SInt32 index = 0;
  EXPECT_EQ(noErr, AddTrackReference(video, sound, "ssrc"_4cc, &index));
  EXPECT_EQ(noErr, AddTrackReference(video, video, "ssrc"_4cc, &index));
  EXPECT_EQ(2, index);
  EXPECT_EQ(video, GetTrackReference(video, "ssrc"_4cc, 2));
  EXPECT_EQ(nullptr, GetTrackReference(video, "ssrc"_4cc, 3));
  EXPECT_EQ("tmcd"_4cc, GetNextTrackReferenceType(video, 0));
  EXPECT_EQ("ssrc"_4cc, GetNextTrackReferenceType(video, "tmcd"_4cc));
  EXPECT_EQ(0U, GetNextTrackReferenceType(video, "ssrc"_4cc));
  EXPECT_EQ(invalidTrack,
            AddTrackReference(video, QT_GetFirstVideoTrack(other_), "ssrc"_4cc, nullptr));

  QT_DisableTextAndTimeCodeTracks(movie_);
  EXPECT_EQ(0, QT_CountEnabledTimeCodeTracks(movie_));
  QT_EnableAllTracks(movie_, "vide"_4cc, 0);
  EXPECT_EQ(nullptr, QT_GetFirstEnabledImageTrack(movie_));
  QT_TrackStateElement state = {nullptr, video, 1};
  QT_RestoreAllTracksEnabledState(movie_, &state, "eyes"_4cc, 2);
  EXPECT_EQ(video, QT_GetFirstEnabledImageTrack(movie_));
  EXPECT_EQ(1, QT_CountEnabledVisualTracks(movie_));
  OSType characteristic = 0;
  EXPECT_EQ(noErr, QT_GetMediaCharacteristic(sound, &characteristic));
  EXPECT_EQ("ears"_4cc, characteristic);
}

TEST_F(Tracks, KeepApertureDimensions) {
  const Track track = QT_GetFirstVideoTrack(movie_);
  Boolean has = 1;
  EXPECT_EQ(noErr, QT_TrackHasApertureModes(track, &has));
  EXPECT_FALSE(has);
  FixedPoint dimensions{};
  EXPECT_EQ(-2195, QT_GetTrackCleanApertureDimensions(track, &dimensions));
  const FixedPoint clean = {Long2Fix(768), Long2Fix(576)};
  const FixedPoint production = {FixDiv(720 * 16, 15), Long2Fix(576)};
  const FixedPoint encoded = {Long2Fix(720), Long2Fix(576)};
  EXPECT_EQ(noErr, QT_SetTrackCleanApertureDimensions(track, &clean));
  EXPECT_EQ(noErr, QT_SetTrackProductionApertureDimensions(track, &production));
  EXPECT_EQ(noErr, QT_SetTrackEncodedPixelDimensions(track, &encoded));
  EXPECT_EQ(noErr, QT_GetTrackCleanApertureDimensions(track, &dimensions));
  EXPECT_EQ(clean.x, dimensions.x);
  EXPECT_EQ(noErr, QT_MovieHasApertureModes(movie_, &has));
  EXPECT_TRUE(has);
  QT_EnableOneTrack(movie_, track);
  EXPECT_EQ(noErr, QT_AllVisualTracksHaveApertureModeDimensions(movie_, &has));
  EXPECT_TRUE(has);
  QT_EnableAllTracks(movie_, "vide"_4cc, 1);
  EXPECT_EQ(noErr, QT_AllVisualTracksHaveApertureModeDimensions(movie_, &has));
  EXPECT_FALSE(has);

  // The clean dimensions are all of the 768 pixels here: the whole picture fills them.
  FixedRect source{};
  FixedRect destination{};
  MatrixRecord matrix;
  ASSERT_EQ(noErr,
            QT_CalcMediaToTrackMatrix(track, 720, 576, 0, nullptr, &source, &destination, &matrix));
  EXPECT_NEAR(720, Fix2X(source.right - source.left), 1e-3);
  EXPECT_EQ(Long2Fix(768), destination.right);
  EXPECT_NEAR(768.0 / 720, Fix2X(matrix.matrix[0][0]), 2e-5);
  const QT_Clap clap = {640, 1, 576, 1, 0, 1, 0, 1};
  ASSERT_EQ(noErr, QT_CalcMediaToTrackMatrix(track, 720, 576, 1, &clap, &source, nullptr, nullptr));
  EXPECT_EQ(Long2Fix(40), source.left);
  // The production aperture, wider by 20, is centred on the clean one.
  const FixedPoint narrow = {Long2Fix(748), Long2Fix(576)};
  EXPECT_EQ(noErr, QT_SetTrackCleanApertureDimensions(track, &narrow));
  EXPECT_EQ(noErr, QT_GetMediaToTrackMatrix(track, 1, 0, nullptr, 576, 720, &matrix));
  EXPECT_EQ(Long2Fix(-10), matrix.matrix[2][0]);
}

TEST_F(Tracks, AreClippedShiftedAndScaled) {
  const Track track = QT_GetFirstVideoTrack(movie_);
  QT_EnableOneTrack(movie_, track);
  const Rect shown = {10, 20, 40, 50};
  const RgnHandle clip = NewRgn();
  RectRgn(clip, &shown);
  SetTrackClipRgn(track, clip);
  MatrixRecord matrix;
  SetIdentityMatrix(&matrix);
  ScaleMatrix(&matrix, Long2Fix(2), Long2Fix(2), 0, 0);
  SetTrackMatrix(track, &matrix);
  Rect bounds{};
  RgnHandle region = GetMovieDisplayBoundsRgn(movie_);
  GetRegionBounds(region, &bounds);
  EXPECT_EQ(20, bounds.top);
  EXPECT_EQ(100, bounds.right);
  DisposeRgn(region);
  Rect box{};
  EXPECT_EQ(noErr, QT_GetTrackBox(track, &box));
  EXPECT_EQ(128, box.right);

  // A matrix that turns by 45 degrees leaves a rhombus, half as large as its bounds.
  const Fixed half = X2Fix(0.70710678);
  const MatrixRecord turned = {{{half, half, 0}, {-half, half, 0}, {0, 0, 1 << 30}}};
  SetTrackClipRgn(track, nullptr);
  SetTrackMatrix(track, &turned);
  SetTrackDimensions(track, Long2Fix(60), Long2Fix(60));
  region = GetTrackDisplayBoundsRgn(track);
  EXPECT_FALSE(IsRegionRectangular(region));
  EXPECT_TRUE(PtInRgn({42, 0}, region));
  EXPECT_FALSE(PtInRgn({10, 30}, region));
  EXPECT_EQ(84, GetRegionBounds(region, &bounds)->bottom - bounds.top);
  SetTrackClipRgn(track, region);
  const RgnHandle kept = GetTrackClipRgn(track);
  EXPECT_TRUE(EqualRgn(region, kept)) << "a region of many corners is kept";
  DisposeRgn(kept);
  DisposeRgn(region);
  SetTrackClipRgn(track, nullptr);

  SetIdentityMatrix(&matrix);
  SetTrackMatrix(track, &matrix);
  SetMovieClipRgn(movie_, clip);
  EXPECT_EQ(track, QT_GetFirstVideoTrack(movie_));
  EXPECT_EQ("vide"_4cc, [&] {
    OSType type = 0;
    QT_GetTrackType(track, &type);
    return type;
  }());
  EXPECT_EQ(noErr, QT_ShiftMovieMatrixAndClipF(movie_, Long2Fix(8), X2Fix(3.25)));
  GetMovieMatrix(movie_, &matrix);
  EXPECT_EQ(Long2Fix(-8), matrix.matrix[2][0]);
  EXPECT_EQ(X2Fix(-3.25), matrix.matrix[2][1]);
  region = GetMovieClipRgn(movie_);
  EXPECT_EQ(28, GetRegionBounds(region, &bounds)->left);
  EXPECT_EQ(13, bounds.top);
  DisposeRgn(region);
  DisposeRgn(clip);

  const Rect wanted = {0, 0, 0, 333};
  EXPECT_TRUE(QT_ScaleMovieMatrixToNewMovieBox(movie_, &wanted, 1));
  GetMovieBox(movie_, &bounds);
  EXPECT_EQ(333, bounds.right - bounds.left);
  EXPECT_FALSE(QT_ScaleMovieMatrixToNewMovieBox(movie_, &wanted, 0));
}

TEST_F(Tracks, ArePlacedLikeInAnotherMovie) {
  const Track source = QT_GetLastEnabledVideoTrack(movie_) != QT_GetFirstVideoTrack(movie_)
                           ? QT_GetLastEnabledVideoTrack(movie_)
                           : GetMovieIndTrackType(movie_, 2, "vide"_4cc, 1);
  QT_EnableAllTracks(movie_, "vide"_4cc, 1);
  QT_EnableAllTracks(other_, "vide"_4cc, 1);
  MatrixRecord matrix;
  SetIdentityMatrix(&matrix);
  TranslateMatrix(&matrix, Long2Fix(32), Long2Fix(24));
  SetTrackMatrix(source, &matrix);
  SetTrackLayer(source, -3);
  // The other movie is twice as large.
  const Track large = QT_GetFirstVideoTrack(other_);
  SetTrackDimensions(large, Long2Fix(128), Long2Fix(96));
  const Track track = GetMovieIndTrackType(other_, 2, "vide"_4cc, 1);
  SetTrackEnabled(track, 0);
  ASSERT_EQ(noErr, QT_CopyTrackDisplayLocation(movie_, other_, source, track, 1, 0));
  Rect bounds{};
  const RgnHandle region = GetTrackDisplayBoundsRgn(track);
  GetRegionBounds(region, &bounds);
  DisposeRgn(region);
  EXPECT_EQ(64, bounds.left);
  EXPECT_EQ(48, bounds.top);
  EXPECT_EQ(128, bounds.right);
  EXPECT_EQ(96, bounds.bottom);
  EXPECT_EQ(-3, GetTrackLayer(track));
  EXPECT_TRUE(GetTrackEnabled(track));
  // Along the lower edge, it can keep its height instead.
  ASSERT_EQ(noErr, QT_CopyTrackDisplayLocation(movie_, other_, source, track, 1, 1));
  Rect box{};
  QT_GetTrackBox(track, &box);
  EXPECT_EQ(24, box.bottom);
  EXPECT_EQ(72, box.top);
}

}  // namespace
}  // namespace quillmere::test
