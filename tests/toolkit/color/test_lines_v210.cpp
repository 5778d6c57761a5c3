#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "CO_Lines_v210.h"
#include "CO_Packed_Formats.h"
#include "guarded.h"
#include "test_files.h"
#include "v210_private.h"

namespace {

using quillmere::test::Bytes;
using quillmere::test::Guarded;

std::vector<SInt32> Widths() {
  std::vector<SInt32> widths = {0, 1919, 1920};
  for (SInt32 width = 1; width <= 64; ++width)
    widths.push_back(width);
  return widths;
}

TEST(LinesOf_v210, AreThoseOfTheirBlocks) {
  for (const SInt32 width : Widths()) {
    const std::size_t blocks = (static_cast<std::size_t>(width) + 5) / 6;
    const std::size_t samples = static_cast<std::size_t>(width) * 2;
    const Guarded<UInt8> line(blocks * 16, static_cast<UInt32>(width) + 1);
    Guarded<UInt16> words(samples);
    CO_UnpackLine_v210(width, line.data(), words.data());
    std::vector<UInt16> expected(blocks * 12);
    for (std::size_t i = 0; i < blocks; ++i)
      CO_Unpack_v210(line.data() + i * 16, expected.data() + i * 12);
    ASSERT_TRUE(std::equal(words.data(), words.data() + samples, expected.begin())) << width;

    const Guarded<UInt16> any(samples, 5);
    std::vector<UInt16> padded(blocks * 12);
    std::copy_n(any.data(), samples, padded.begin());
    Guarded<UInt8> packed(static_cast<std::size_t>(CO_GetRowBytes_v210(width)), 6);
    CO_PackLine_v210(width, any.data(), packed.data());
    const std::size_t whole = static_cast<std::size_t>(width) / 6;
    for (std::size_t i = 0; i < whole; ++i) {
      UInt8 block[16];
      CO_Pack_v210(block, padded.data() + i * 12);
      ASSERT_TRUE(std::equal(block, block + 16, packed.data() + i * 16)) << width;
    }
    ASSERT_EQ(packed.size() % 128, 0U);
  }
}

TEST(LinesOf_v210, EachPathEqualsTheBlocks) {
  for (const auto& path : {quillmere::color::V210Avx2(), quillmere::color::V210Avx512()}) {
    if (!path.is_available) continue;
    constexpr std::ptrdiff_t kCount = 40;
    const auto blocks = static_cast<std::size_t>(kCount * path.blocks_at_once);
    const Guarded<UInt8> line(blocks * 16, 8);
    Guarded<UInt16> words(blocks * 12), any(blocks * 12, 9);
    path.unpack(kCount, line.data(), words.data());
    Guarded<UInt8> packed(blocks * 16);
    path.pack(kCount, any.data(), packed.data());
    for (std::size_t i = 0; i < blocks; ++i) {
      UInt16 expected[12];
      CO_Unpack_v210(line.data() + i * 16, expected);
      ASSERT_TRUE(std::equal(expected, expected + 12, words.data() + i * 12)) << i;
      UInt8 block[16];
      CO_Pack_v210(block, any.data() + i * 12);
      ASSERT_TRUE(std::equal(block, block + 16, packed.data() + i * 16)) << i;
    }
  }
}

/// Rows of samples that every reader takes as they are, written by another program: the same bytes,
/// padding included, for each width that it takes.
TEST(LinesOf_v210, AgreeWithAnotherProgramInEveryWidth) {
  const quillmere::test::TemporaryFolder folder;
  std::mt19937 random(7);
  for (const SInt32 width : Widths()) {
    if (width < 2 || width % 2 != 0) continue;
    const auto pixels = static_cast<std::size_t>(width);
    std::vector<UInt16> y(pixels), cb(pixels / 2), cr(pixels / 2), words;
    for (std::vector<UInt16>* plane : {&y, &cb, &cr})
      for (UInt16& code : *plane)
        code = static_cast<UInt16>(64 + random() % 877);
    for (std::size_t i = 0; i < pixels / 2; ++i)
      for (const UInt16 code : {cb[i], y[2 * i], cr[i], y[2 * i + 1]})
        words.push_back(static_cast<UInt16>(code << 6));
    Bytes planes;
    for (const std::vector<UInt16>* plane : {&y, &cb, &cr}) {
      const auto* bytes = reinterpret_cast<const UInt8*>(plane->data());
      planes.insert(planes.end(), bytes, bytes + plane->size() * 2);
    }
    quillmere::test::WriteFile(folder / "planes", planes);
    const auto made = quillmere::test::RunCommand(
        {"ffmpeg", "-v", "error", "-y", "-f", "rawvideo", "-pix_fmt", "yuv422p10le", "-s",
         std::to_string(width) + "x1", "-i", (folder / "planes").string(), "-c:v", "v210", "-f",
         "rawvideo", (folder / "v210").string()});
    ASSERT_EQ(made.status, 0) << made.errors;
    const Bytes theirs = quillmere::test::ReadFile(folder / "v210");
    Bytes ours(static_cast<std::size_t>(CO_GetRowBytes_v210(width)), 0xFF);
    CO_PackLine_v210(width, words.data(), ours.data());
    ASSERT_EQ(ours, theirs) << width;
    std::vector<UInt16> back(words.size());
    CO_UnpackLine_v210(width, theirs.data(), back.data());
    ASSERT_EQ(back, words) << width;
  }
}

}  // namespace
