#include "png_writer.h"

#include <gtest/gtest.h>

#include <random>

#include "test_files.h"

namespace {

using quillmere::imaging::WritePngFile;
using quillmere::test::Bytes;

TEST(PngWriter, OtherProgramsReadThePixels) {
  const quillmere::test::TemporaryFolder folder;
  constexpr UInt32 kWidth = 37;
  constexpr UInt32 kHeight = 11;
  std::mt19937 random(1);
  Bytes rgb(3 * kWidth * kHeight);
  for (UInt8& byte : rgb)
    byte = static_cast<UInt8>(random());
  ASSERT_EQ(WritePngFile(rgb, kWidth, kHeight, folder / "a.png"), noErr);
  const auto read = quillmere::test::RunCommand({"ffmpeg", "-v", "error", "-i",
                                                 (folder / "a.png").string(), "-pix_fmt", "rgb24",
                                                 "-f", "rawvideo", (folder / "a.raw").string()});
  ASSERT_EQ(read.status, 0) << read.errors;
  EXPECT_EQ(quillmere::test::ReadFile(folder / "a.raw"), rgb);
  EXPECT_EQ(WritePngFile(rgb, kWidth, kHeight + 1, folder / "b.png"), paramErr);
  EXPECT_NE(WritePngFile(rgb, kWidth, kHeight, folder / "none/b.png"), noErr);
}

}  // namespace
