#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "CO_Packed_Formats.h"
#include "test_files.h"

namespace quillmere::test {
namespace {

/// The working form of a code of `depth` bits, from the levels of video.
int Working(int code, int depth, bool is_luma) {
  const double unit = std::ldexp(1.0, depth - 8);
  const double x = is_luma ? std::clamp((code - 16 * unit) / (219 * unit), 0.0, 1.0)
                           : std::clamp((code - 16 * unit) / (224 * unit) - 0.5, -0.5, 0.5);
  const double value = is_luma ? x * 56064 + 0.5 + 4096 : x * 57344 + 0.5 + 32768;
  return static_cast<int>(std::clamp(std::floor(value), 256.0, 65279.0));
}

/// The code of `depth` bits nearest to a word of the working form.
int Code(int word, int depth, bool is_luma) {
  const double unit = std::ldexp(1.0, depth - 8);
  const double x = is_luma ? std::clamp((word - 4096) / 56064.0, 0.0, 1.0)
                           : std::clamp((word - 4096) / 57344.0 - 0.5, -0.5, 0.5);
  return static_cast<int>(is_luma ? x * 219 * unit + 0.5 + 16 * unit
                                  : x * 224 * unit + 0.5 + 128 * unit);
}

TEST(PackedFormats, ConvertEveryCode) {
  for (const int depth : {10, 12, 14}) {
    SCOPED_TRACE(depth);
    for (int code = 0; code < 1 << depth; ++code) {
      const auto word = static_cast<UInt16>(code << (16 - depth));
      UInt8 bytes[8];
      for (int i = 0; i < 4; ++i)
        std::memcpy(bytes + 2 * i, &word, 2);
      UInt16 group[4];
      CO_Unpack_v216(bytes, group, depth);
      for (int i = 0; i < 4; ++i)
        ASSERT_EQ(group[i], Working(code, depth, i % 2 != 0)) << code;
    }
  }
  for (int word = 0; word < 65536; ++word) {
    CO_Group_v216 group;
    std::fill_n(group.words, 4, static_cast<UInt16>(word));
    UInt8 bytes[8];
    for (const int depth : {10, 12, 14, 16}) {
      CO_Pack_v216(group, bytes, depth);
      for (int i = 0; i < 4; ++i) {
        const int packed = bytes[2 * i] | bytes[2 * i + 1] << 8;
        ASSERT_EQ(packed, depth == 16 ? word : Code(word, depth, i % 2 != 0) << (16 - depth));
      }
    }
    UInt16 block[12], back[12];
    std::fill_n(block, 12, static_cast<UInt16>(word));
    UInt8 packed[16];
    CO_Pack_v210(packed, block);
    CO_Unpack_v210(packed, back);
    UInt16 pixel[3];
    UInt8 packed410[4];
    CO_Pack_v410({static_cast<UInt16>(word), static_cast<UInt16>(word), static_cast<UInt16>(word)},
                 packed410);
    CO_Unpack_v410(packed410, pixel);
    for (int i = 0; i < 12; ++i)
      ASSERT_EQ(back[i], Working(Code(word, 10, i % 2 != 0), 10, i % 2 != 0)) << word;
    ASSERT_EQ(pixel[0], back[1]);
    ASSERT_EQ(pixel[1], back[0]);
    ASSERT_EQ(pixel[2], back[0]);
  }
}

/// Random samples of 10 bits within video range: planes of `width` by `height`, then two of chroma.
std::vector<UInt16> RandomPlanes(std::size_t luma, std::size_t chroma, std::mt19937* random) {
  std::vector<UInt16> samples;
  for (std::size_t i = 0; i < luma; ++i)
    samples.push_back(static_cast<UInt16>(64 + (*random)() % 877));
  for (std::size_t i = 0; i < 2 * chroma; ++i)
    samples.push_back(static_cast<UInt16>(64 + (*random)() % 897));
  return samples;
}

Bytes EncodedByFfmpeg(const TemporaryFolder& folder, const std::vector<UInt16>& samples,
                      const std::string& format, const std::string& size,
                      const std::string& codec) {
  const auto* bytes = reinterpret_cast<const UInt8*>(samples.data());
  WriteFile(folder / "in.raw", std::span(bytes, samples.size() * 2));
  RunFfmpeg({"-f", "rawvideo", "-pix_fmt", format, "-s", size, "-i", (folder / "in.raw").string(),
             "-c:v", codec, "-f", "rawvideo", (folder / "out.raw").string()});
  return ReadFile(folder / "out.raw");
}

TEST(PackedFormats, MatchFfmpegByteForByte) {
  const TemporaryFolder folder;
  std::mt19937 random(1);
  constexpr std::size_t kWidth = 96, kHeight = 32, kPixels = kWidth * kHeight;
  const std::vector<UInt16> planes = RandomPlanes(kPixels, kPixels / 2, &random);
  const Bytes v210 = EncodedByFfmpeg(folder, planes, "yuv422p10le", "96x32", "v210");
  ASSERT_EQ(v210.size(), kPixels / 6 * 16);
  for (std::size_t block = 0; block < kPixels / 6; ++block) {
    UInt16 words[12];
    UInt8 packed[16];
    CO_Unpack_v210(v210.data() + block * 16, words);
    CO_Pack_v210(packed, words);
    ASSERT_TRUE(std::equal(packed, packed + 16, v210.begin() + static_cast<SInt64>(block * 16)));
    for (std::size_t i = 0; i < 3; ++i) {
      const std::size_t pair = block * 3 + i;
      ASSERT_EQ(words[4 * i], Working(planes[kPixels + pair], 10, false));
      ASSERT_EQ(words[4 * i + 1], Working(planes[2 * pair], 10, true));
      ASSERT_EQ(words[4 * i + 2], Working(planes[kPixels + kPixels / 2 + pair], 10, false));
      ASSERT_EQ(words[4 * i + 3], Working(planes[2 * pair + 1], 10, true));
    }
  }
  const std::vector<UInt16> full = RandomPlanes(kPixels, kPixels, &random);
  const Bytes v410 = EncodedByFfmpeg(folder, full, "yuv444p10le", "96x32", "v410");
  ASSERT_EQ(v410.size(), kPixels * 4);
  for (std::size_t i = 0; i < kPixels; ++i) {
    UInt16 pixel[3];
    UInt8 packed[4];
    CO_Unpack_v410(v410.data() + 4 * i, pixel);
    CO_Pack_v410({pixel[0], pixel[1], pixel[2]}, packed);
    ASSERT_TRUE(std::equal(packed, packed + 4, v410.begin() + static_cast<SInt64>(4 * i)));
    for (std::size_t k = 0; k < 3; ++k)
      ASSERT_EQ(pixel[k], Working(full[k * kPixels + i], 10, k == 0));
  }
}

TEST(PackedFormats, KeepTheirEnds) {
  UInt8 block[16];
  std::fill_n(block, 16, UInt8{0xFF});
  UInt16 words[12];
  CO_Unpack_v210(block, words);
  for (int i = 0; i < 12; ++i)
    EXPECT_EQ(words[i], i % 2 != 0 ? 60160 : 61440);
  UInt16 word = 0, alpha = 0;
  const UInt8 white[] = {255, 255, 255}, colours[] = {2, 130, 253};
  CO_PackRGB16(white, 32768, &word);
  EXPECT_EQ(word, 65535);
  CO_PackRGB16(colours, 0, &word);
  EXPECT_EQ(word, 0 << 10 | 16 << 5 | 31);
  for (UInt32 field = 0; field < 32; ++field) {
    UInt8 rgb[3];
    CO_UnpackRGB16(static_cast<UInt16>(0x8000 | field << 10 | (31 - field)), rgb, &alpha);
    EXPECT_EQ(alpha, 32768);
    EXPECT_EQ(rgb[1], 2);
    CO_PackRGB16(rgb, alpha, &word);
    EXPECT_EQ(word, 0x8000 | field << 10 | (31 - field));
  }
  const UInt8 group[] = {10, 20, 30, 40};
  UInt8 packed[4];
  CO_PackYCbCr8To422(group, packed);
  EXPECT_EQ(Bytes(packed, packed + 4), (Bytes{10, 20, 40, 30}));
  CO_PackYCbCrU8To422(group, packed);
  EXPECT_EQ(Bytes(packed, packed + 4), (Bytes{20, 10, 30, 40}));
  EXPECT_EQ(CO_UnpackGrey(3), 252);
}

}  // namespace
}  // namespace quillmere::test
