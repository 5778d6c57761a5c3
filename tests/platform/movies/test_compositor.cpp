// Composing samples into a frame: placement rules, own size of masks, damaged and foreign samples.

#include <algorithm>
#include <memory>

#include "compositor.h"
#include "decoded_images.h"
#include "file_references.h"
#include "fixed_point.h"
#include "test_files.h"

namespace quillmere::movies {
namespace {

using namespace quillmere::test;

constexpr MatrixRecord kIdentity = {{{0x10000, 0, 0}, {0, 0x10000, 0}, {0, 0, 0x40000000}}};

/// A sample that is a whole file, its track as large as given.
VisibleSample SampleOf(const std::filesystem::path& path, OSType format, SInt32 width,
                       SInt32 height, SInt32 graphics_mode) {
  VisibleSample sample = {};
  sample.format = format;
  EXPECT_EQ(OpenDataSource(path, &sample.source), noErr);
  sample.size = sample.source->size();
  sample.track_width = Long2Fix(width);
  sample.track_height = Long2Fix(height);
  sample.matrix = kIdentity;
  sample.graphics_mode = graphics_mode;
  return sample;
}

/// Red, green and blue of a pixel of a composed frame; the frame's alpha has to be 255.
std::vector<int> ColorAt(const imaging::DecodedImage& frame, UInt32 x, UInt32 y) {
  const UInt8* const pixel = frame.block.Row(y) + std::size_t{x} * 4;
  EXPECT_EQ(pixel[0], 255);
  return {pixel[1], pixel[2], pixel[3]};
}

class Compositor : public ::testing::Test {
 protected:
  void SetUp() override {
    RunOrFail({"convert", "-size", "40x20", "xc:#808080", "-quality", "100",
               (folder_ / "grey.jpg").string()});
    RunOrFail({"convert", "-size", "10x30", "xc:#FF000080", "-define", "png:color-type=6",
               (folder_ / "mask.png").string()});
    ASSERT_EQ(imaging::AllocateImage(40, 20, &frame_), noErr);
  }

  const TemporaryFolder folder_;
  imaging::DecodedImage frame_;
};

TEST_F(Compositor, AMaskLiesAtItsOwnSizeHoweverWideItsTrackIs) {
  const std::vector<VisibleSample> samples = {
      SampleOf(folder_ / "grey.jpg", "jpeg"_4cc, 40, 20, 0),
      SampleOf(folder_ / "mask.png", "png "_4cc, 40, 30, 0x100)};
  ASSERT_EQ(ComposeSamples(samples, 0, 0, frame_.block, nullptr), noErr);
  // (255 x 128 + 128 x 127 + 127) / 255 and (0 x 128 + 128 x 127 + 127) / 255.
  EXPECT_EQ(ColorAt(frame_, 9, 19), (std::vector<int>{192, 64, 64}));
  EXPECT_EQ(ColorAt(frame_, 10, 0), (std::vector<int>{128, 128, 128}));
}

TEST_F(Compositor, OpaqueSamplesFillTheirTracksBoxAndTheRestIsBlack) {
  const std::vector<VisibleSample> samples = {
      SampleOf(folder_ / "grey.jpg", "jpeg"_4cc, 30, 20, 0)};
  ASSERT_EQ(ComposeSamples(samples, 0, 0, frame_.block, nullptr), noErr);
  EXPECT_EQ(ColorAt(frame_, 29, 19), (std::vector<int>{128, 128, 128}));
  EXPECT_EQ(ColorAt(frame_, 30, 0), (std::vector<int>{0, 0, 0}));
  // The frame's corner is the movie's point 5, 3.
  ASSERT_EQ(ComposeSamples(samples, 5, 3, frame_.block, nullptr), noErr);
  EXPECT_EQ(ColorAt(frame_, 24, 16), (std::vector<int>{128, 128, 128}));
  EXPECT_EQ(ColorAt(frame_, 25, 0), (std::vector<int>{0, 0, 0}));
}

TEST_F(Compositor, AMatrixThatRepeatsTheOrientationTagTurnsThePictureOnce) {
  RunOrFail({"convert", "-size", "20x20", "xc:red", "xc:blue", "+append", "-quality", "100",
             (folder_ / "half.jpg").string()});
  RunOrFail({"exiftool", "-q", "-overwrite_original", "-n", "-Orientation=6",
             (folder_ / "half.jpg").string()});
  VisibleSample sample = SampleOf(folder_ / "half.jpg", "jpeg"_4cc, 40, 20, 0);
  sample.matrix = {{{0, 0x10000, 0}, {-0x10000, 0, 0}, {Long2Fix(20), 0, 0x40000000}}};
  imaging::DecodedImage upright;
  ASSERT_EQ(imaging::AllocateImage(20, 40, &upright), noErr);
  // Decoded straight into the frame, and by way of a picture of its own.
  for (const SInt32 mode : {0, 0x24}) {
    ASSERT_EQ(ComposeSamples({sample}, 0, 0, upright.block, nullptr), noErr);
    EXPECT_GT(ColorAt(upright, 10, 5)[0], 250) << mode;
    EXPECT_GT(ColorAt(upright, 10, 35)[2], 250) << mode;
    sample.graphics_mode = 0x24;
  }
}

TEST_F(Compositor, WithNothingVisibleTheFrameIsBlack) {
  ASSERT_EQ(ComposeSamples({}, 0, 0, frame_.block, nullptr), noErr);
  EXPECT_EQ(ColorAt(frame_, 39, 19), (std::vector<int>{0, 0, 0}));
}

TEST_F(Compositor, FailuresHaveAStatusAndCutPicturesAWarning) {
  EXPECT_EQ(ComposeSamples({SampleOf(folder_ / "grey.jpg", "avc1"_4cc, 40, 20, 0)}, 0, 0,
                           frame_.block, nullptr),
            noCodecErr);
  VisibleSample beyond = SampleOf(folder_ / "grey.jpg", "jpeg"_4cc, 40, 20, 0);
  beyond.offset = 1;
  EXPECT_EQ(ComposeSamples({beyond}, 0, 0, frame_.block, nullptr), eofErr);
  VisibleSample cut = SampleOf(folder_ / "grey.jpg", "jpeg"_4cc, 40, 20, 0);
  cut.size -= 3;
  std::string warning;
  EXPECT_EQ(ComposeSamples({cut}, 0, 0, frame_.block, &warning), noErr);
  EXPECT_FALSE(warning.empty());
}

TEST_F(Compositor, AMaskIsDecodedOnceUntilItsFileChanges) {
  const auto decoded = [&] {
    const VisibleSample sample = SampleOf(folder_ / "mask.png", "png "_4cc, 10, 30, 0x100);
    std::shared_ptr<const imaging::DecodedImage> image;
    EXPECT_EQ(DecodedImageOf(*sample.source, 0, sample.size, &image), noErr);
    return image;
  };
  const auto first = decoded();
  EXPECT_EQ(decoded(), first);
  RunOrFail({"convert", "-size", "11x30", "xc:blue", "-define", "png:color-type=6",
             (folder_ / "mask.png").string()});
  EXPECT_EQ(decoded()->block.width, 11U);
  ForgetDecodedImages();
}

}  // namespace
}  // namespace quillmere::movies
