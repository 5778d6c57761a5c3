/// Frames of movies of many codecs beside those that FFmpeg decodes from the same files.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "atom_builder.h"
#include "compositor.h"
#include "data_references.h"
#include "movie_storage.h"
#include "test_files.h"
#include "toolbox_records.h"
#include "visible_samples.h"

namespace quillmere::movies {
namespace {

using namespace quillmere::test;

constexpr UInt32 kWidth = 96;
constexpr UInt32 kHeight = 64;
constexpr int kFrames = 12;

struct MadeMovie {
  const char* name;
  const char* file;
  std::vector<std::string> encoder;
};

const MadeMovie kMovies[] = {
    {"H.264 with B frames", "a.mp4", {"-c:v", "libx264", "-bf", "3", "-g", "8"}},
    {"H.264 with open groups",
     "b.mov",
     {"-c:v", "libx264", "-bf", "2", "-g", "6", "-x264-params", "open-gop=1:scenecut=0"}},
    {"HEVC", "c.mp4", {"-c:v", "libx265", "-x265-params", "log-level=none", "-tag:v", "hvc1"}},
    {"MPEG-4", "d.mp4", {"-c:v", "mpeg4", "-bf", "2", "-q:v", "2"}},
    {"ProRes", "e.mov", {"-c:v", "prores_ks", "-pix_fmt", "yuv422p10le"}},
    {"Animation", "f.mov", {"-c:v", "qtrle", "-g", "5"}},
    {"Cinepak", "g.mov", {"-c:v", "cinepak"}},
    {"v210", "h.mov", {"-c:v", "v210"}},
    {"2vuy", "i.mov", {"-c:v", "rawvideo", "-pix_fmt", "uyvy422", "-tag:v", "2vuy"}},
    {"raw", "j.mov", {"-c:v", "rawvideo", "-pix_fmt", "rgb24"}},
    {"VP9", "k.mp4", {"-c:v", "libvpx-vp9"}},
    {"MPEG-2", "l.mov", {"-c:v", "mpeg2video", "-bf", "2", "-q:v", "2"}},
};

/// The mean difference of the colour bytes of a frame, which ARGB and RGB lines hold.
double MeanDifference(const std::vector<UInt8>& argb, const UInt8* rgb) {
  double sum = 0;
  for (std::size_t i = 0; i < std::size_t{kWidth} * kHeight; ++i)
    for (std::size_t k = 0; k < 3; ++k)
      sum += std::abs(argb[4 * i + 1 + k] - rgb[3 * i + k]);
  return sum / (3.0 * kWidth * kHeight);
}

TEST(DecodedVideo, IsWhatAnotherProgramDecodes) {
  const TemporaryFolder folder;
  for (const MadeMovie& made : kMovies) {
    const std::string path = (folder / made.file).string();
    std::vector<std::string> arguments = {"-f", "lavfi", "-i", "testsrc2=s=96x64:r=10:d=1.2"};
    arguments.insert(arguments.end(), made.encoder.begin(), made.encoder.end());
    arguments.push_back(path);
    RunFfmpeg(arguments);
    const std::filesystem::path frames = folder / "frames";
    RunFfmpeg({"-i", path, "-pix_fmt", "rgb24", "-sws_flags",
               "bicubic+accurate_rnd+full_chroma_int", "-fps_mode", "passthrough", "-f", "rawvideo",
               frames.string()});
    const Bytes expected = ReadFile(frames);
    constexpr std::size_t kFrameBytes = std::size_t{3} * kWidth * kHeight;
    ASSERT_EQ(kFrames * kFrameBytes, expected.size()) << made.name;

    std::unique_ptr<MovieRecord> movie;
    ASSERT_EQ(noErr, OpenMovieAt(path, &movie)) << made.name;
    const SInt32 scale = GetMovieTimeScale(movie.get());
    for (const int frame : {11, 0, 1, 2, 3, 6, 7, 8, 5}) {
      std::vector<VisibleSample> samples;
      ASSERT_EQ(noErr, VisibleSamplesAt(movie.get(), scale * (2 * frame + 1) / 20, &samples));
      ASSERT_EQ(1U, samples.size()) << made.name << ' ' << frame;
      std::vector<UInt8> argb(std::size_t{4} * kWidth * kHeight);
      const imaging::PixelBlock block = {argb.data(), std::size_t{4} * kWidth, kWidth, kHeight};
      ASSERT_EQ(noErr, ComposeSamples(samples, 0, 0, block, nullptr)) << made.name << ' ' << frame;
      const UInt8* const shown = expected.data() + static_cast<std::size_t>(frame) * kFrameBytes;
      const UInt8* const other = frame > 0 ? shown - kFrameBytes : shown + kFrameBytes;
      EXPECT_LT(MeanDifference(argb, shown), 1.5) << made.name << ' ' << frame;
      EXPECT_GT(MeanDifference(argb, other), 3) << made.name << ", another frame";
      EXPECT_EQ(255, argb[0]);
    }
  }
}

TEST(DecodedVideo, DamageGetsAStatus) {
  const TemporaryFolder folder;
  const std::string path = (folder / "a.mp4").string();
  RunFfmpeg({"-f", "lavfi", "-i", "testsrc2=s=96x64:r=10:d=1", "-c:v", "libx264", path});
  Bytes bytes = ReadFile(path);
  const auto place = FindAtom(bytes, {"mdat"});
  ASSERT_TRUE(place);
  for (std::size_t i = place->content(); i < place->end(); ++i)
    bytes[i] = static_cast<UInt8>(i * 37);
  WriteFile(path, bytes);
  std::unique_ptr<MovieRecord> movie;
  ASSERT_EQ(noErr, OpenMovieAt(path, &movie));
  std::vector<VisibleSample> samples;
  ASSERT_EQ(noErr, VisibleSamplesAt(movie.get(), 0, &samples));
  std::vector<UInt8> argb(std::size_t{4} * kWidth * kHeight);
  const imaging::PixelBlock block = {argb.data(), std::size_t{4} * kWidth, kWidth, kHeight};
  EXPECT_NE(noErr, ComposeSamples(samples, 0, 0, block, nullptr));
}

}  // namespace
}  // namespace quillmere::movies
