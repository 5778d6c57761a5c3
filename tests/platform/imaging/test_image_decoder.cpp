// Decoding PNG and JPEG, beside ImageMagick and lcms2.

#include <lcms2.h>

#include <jpeglib.h>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>

#include "image_file_info.h"
#include "orientation.h"
#include "test_pictures.h"

namespace quillmere::imaging {
namespace {

using namespace quillmere::test;

struct PictureKind {
  const char* name;
  std::vector<std::string> arguments;
};

TEST(JpegReader, EveryKindAgreesWithAnIndependentReader) {
  const TemporaryFolder folder;
  const PictureKind kinds[] = {
      {"full", {"-sampling-factor", "4:4:4"}},
      {"half", {"-sampling-factor", "4:2:2"}},
      {"tall", {"-sampling-factor", "4:4:0"}},
      {"quarter", {"-sampling-factor", "4:2:0"}},
      {"progressive", {"-interlace", "JPEG", "-sampling-factor", "4:2:0"}},
      {"grey", {"-colorspace", "Gray"}},
      {"grey_progressive", {"-colorspace", "Gray", "-interlace", "JPEG"}},
      {"inks", {"-colorspace", "CMYK"}},
  };
  for (const PictureKind& kind : kinds) {
    for (const char* size : {"67x41", "1x1", "16x33"}) {
      SCOPED_TRACE(std::string(kind.name) + " " + size);
      const auto path = folder / (std::string(kind.name) + size + ".jpg");
      MakePicture(size, kind.arguments, path.string());
      const DecodedImage image = Decode(path);
      EXPECT_TRUE(image.warning.empty());
      EXPECT_TRUE(image.opaque);
      EXPECT_LE(LargestDifference(PixelsOf(image.block), PeerPixels(path, {"-colorspace", "sRGB"})),
                1);
    }
  }
}

/// Writes noise in four inks, as `space`, with a restart marker every `restart_rows` rows of
/// blocks.
void WriteInks(const std::filesystem::path& path, J_COLOR_SPACE space, int restart_rows) {
  constexpr JDIMENSION kWidth = 50;
  constexpr JDIMENSION kHeight = 37;
  jpeg_compress_struct compress{};
  jpeg_error_mgr errors;
  compress.err = jpeg_std_error(&errors);
  jpeg_create_compress(&compress);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"),
                                                             std::fclose);
  ASSERT_TRUE(file);
  jpeg_stdio_dest(&compress, file.get());
  compress.image_width = kWidth;
  compress.image_height = kHeight;
  compress.input_components = 4;
  compress.in_color_space = JCS_CMYK;
  jpeg_set_defaults(&compress);
  jpeg_set_colorspace(&compress, space);
  compress.restart_in_rows = restart_rows;
  compress.write_Adobe_marker = TRUE;
  jpeg_start_compress(&compress, TRUE);
  UInt32 noise = 12345;
  std::array<JSAMPLE, std::size_t{kWidth} * 4> row;
  while (compress.next_scanline < kHeight) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      noise = noise * 1664525 + 1013904223;
      row[i] = static_cast<JSAMPLE>(compress.next_scanline * 5 + (noise >> 28));
    }
    JSAMPROW rows[] = {row.data()};
    jpeg_write_scanlines(&compress, rows, 1);
  }
  jpeg_finish_compress(&compress);
  jpeg_destroy_compress(&compress);
}

TEST(JpegReader, InksOfBothCodingsAndRestartMarkersAgreeWithAnIndependentReader) {
  const TemporaryFolder folder;
  const auto path = folder / "inks.jpg";
  for (J_COLOR_SPACE space : {JCS_CMYK, JCS_YCCK}) {
    for (int restart_rows : {0, 1, 3}) {
      SCOPED_TRACE(std::to_string(space) + " " + std::to_string(restart_rows));
      WriteInks(path, space, restart_rows);
      const DecodedImage image = Decode(path);
      EXPECT_TRUE(image.warning.empty());
      EXPECT_LE(LargestDifference(PixelsOf(image.block), PeerPixels(path, {"-colorspace", "sRGB"})),
                1);
    }
  }
}

TEST(JpegReader, ALostRestartIntervalIsReportedAndTheRestStands) {
  const TemporaryFolder folder;
  const auto path = folder / "inks.jpg";
  WriteInks(path, JCS_YCCK, 1);
  Bytes bytes = ReadFile(path);
  const UInt8 second[] = {0xFF, 0xD1};
  const auto marker = std::search(bytes.begin(), bytes.end(), std::begin(second), std::end(second));
  ASSERT_NE(marker, bytes.end());
  bytes.erase(marker - 20, marker);
  DecodedImage image;
  ASSERT_EQ(DecodeImage(bytes, Turn::kUpright, &image), noErr);
  EXPECT_FALSE(image.warning.empty());
  const Bytes expected = PixelsOf(Decode(path).block);
  const Bytes got = PixelsOf(image.block);
  // The damage ends at the next restart marker: the last rows of blocks are as they were.
  EXPECT_TRUE(std::equal(got.end() - 50 * 4 * 4, got.end(), expected.end() - 50 * 4 * 4));
}

TEST(JpegReader, OrientationTagsStandThePictureUpright) {
  const TemporaryFolder folder;
  const auto path = folder / "turned.jpg";
  for (int orientation = 1; orientation <= 8; ++orientation) {
    SCOPED_TRACE(orientation);
    MakePicture("37x22", {}, path.string());
    RunOrFail({"exiftool", "-q", "-overwrite_original", "-n",
               "-Orientation=" + std::to_string(orientation), path.string()});
    const DecodedImage image = Decode(path);
    EXPECT_EQ(image.block.width, orientation < 5 ? 37U : 22U);
    EXPECT_EQ(LargestDifference(PixelsOf(image.block), PeerPixels(path, {"-auto-orient"})), 0);
    ImageFileInfo info;
    ASSERT_EQ(ReadImageFileInfo(path, &info), noErr);
    EXPECT_EQ(info.orientation, orientation);
    EXPECT_EQ(info.width, 37U);
  }
}

/// Writes a profile with a wider green and the power 2.2 (563/256).
void WriteWideProfile(const std::filesystem::path& path) {
  const cmsCIExyY white = {0.3127, 0.3290, 1};
  const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1}, {0.21, 0.71, 1}, {0.15, 0.06, 1}};
  cmsToneCurve* const curve = cmsBuildGamma(nullptr, 563.0 / 256);
  cmsToneCurve* const curves[3] = {curve, curve, curve};
  const cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
  ASSERT_TRUE(cmsSaveProfileToFile(profile, path.c_str()));
  cmsCloseProfile(profile);
  cmsFreeToneCurve(curve);
}

TEST(Profiles, AreRenderedIntoSrgbAsLcmsDoes) {
  const TemporaryFolder folder;
  WriteWideProfile(folder / "wide.icc");
  const cmsHPROFILE wide = cmsOpenProfileFromFile((folder / "wide.icc").c_str(), "r");
  const cmsHPROFILE srgb = cmsCreate_sRGBProfile();
  const cmsHTRANSFORM transform = cmsCreateTransform(wide, TYPE_RGBA_16, srgb, TYPE_RGBA_16,
                                                     INTENT_PERCEPTUAL, cmsFLAGS_NOOPTIMIZE);
  for (const std::string name : {"picture.jpg", "picture.png"}) {
    SCOPED_TRACE(name);
    const auto plain = folder / ("plain-" + name);
    const auto tagged = folder / ("tagged-" + name);
    MakePicture("64x64", {"-strip", "-depth", "8"}, plain.string());
    RunOrFail({"convert", plain.string(), "-quality", "92", "-profile",
               (folder / "wide.icc").string(), tagged.string()});
    Bytes expected = PeerPixels(tagged, {"-strip"});
    std::vector<UInt16> wide16(expected.begin(), expected.end());
    for (UInt16& value : wide16)
      value = static_cast<UInt16>(value * 257);
    cmsDoTransform(transform, wide16.data(), wide16.data(), 64 * 64);
    for (std::size_t i = 0; i < expected.size(); ++i) {
      if (i % 4 != 3) expected[i] = static_cast<UInt8>((wide16[i] + 128) / 257);
    }
    EXPECT_LE(LargestDifference(PixelsOf(Decode(tagged).block), expected), 1);
  }
  cmsDeleteTransform(transform);
  cmsCloseProfile(srgb);
  cmsCloseProfile(wide);
}

TEST(Profiles, OfSrgbItselfAndDamagedOnesChangeNothing) {
  const TemporaryFolder folder;
  const cmsHPROFILE srgb = cmsCreate_sRGBProfile();
  ASSERT_TRUE(cmsSaveProfileToFile(srgb, (folder / "srgb.icc").c_str()));
  cmsCloseProfile(srgb);
  MakePicture("40x40", {"-strip"}, (folder / "plain.png").string());
  RunOrFail({"convert", (folder / "plain.png").string(), "-profile", (folder / "srgb.icc").string(),
             (folder / "tagged.png").string()});
  const Bytes plain = PixelsOf(Decode(folder / "plain.png").block);
  EXPECT_EQ(PixelsOf(Decode(folder / "tagged.png").block), plain);
}

TEST(PngReader, EveryKindAgreesWithAnIndependentReader) {
  const TemporaryFolder folder;
  const std::vector<std::string> fade = {"-alpha", "set", "-channel", "A",
                                         "-fx",    "i/w", "+channel"};
  const auto with_fade = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), fade.begin(), fade.end());
    return arguments;
  };
  const PictureKind kinds[] = {
      {"grey1",
       {"-colorspace", "Gray", "-define", "png:color-type=0", "-define", "png:bit-depth=1"}},
      {"grey4",
       {"-colorspace", "Gray", "-define", "png:color-type=0", "-define", "png:bit-depth=4"}},
      {"grey8",
       {"-colorspace", "Gray", "-define", "png:color-type=0", "-define", "png:bit-depth=8"}},
      {"grey16",
       {"-colorspace", "Gray", "-define", "png:color-type=0", "-define", "png:bit-depth=16"}},
      {"rgb8", {"-define", "png:color-type=2", "-define", "png:bit-depth=8"}},
      {"rgb16", {"-define", "png:color-type=2", "-define", "png:bit-depth=16"}},
      {"palette", {"-colors", "30", "-define", "png:color-type=3"}},
      {"palette2", {"-colors", "4", "-define", "png:color-type=3", "-define", "png:bit-depth=2"}},
      {"palette_alpha",
       {"-colors", "9", "-fuzz", "20%", "-transparent", "blue", "-define", "png:color-type=3"}},
      {"grey_alpha", with_fade({"-colorspace", "Gray", "-define", "png:color-type=4", "-define",
                                "png:bit-depth=8"})},
      {"rgba8", with_fade({"-define", "png:color-type=6", "-define", "png:bit-depth=8"})},
      {"rgba16", with_fade({"-define", "png:color-type=6", "-define", "png:bit-depth=16"})},
      {"interlaced", with_fade({"-interlace", "PNG", "-define", "png:color-type=6"})},
  };
  for (const PictureKind& kind : kinds) {
    for (const char* size : {"33x19", "1x1"}) {
      SCOPED_TRACE(std::string(kind.name) + " " + size);
      const auto path = folder / (std::string(kind.name) + size + ".png");
      MakePicture(size, kind.arguments, path.string());
      const DecodedImage image = Decode(path);
      const Bytes pixels = PixelsOf(image.block);
      EXPECT_LE(LargestDifference(pixels, PeerPixels(path)), 1);
      bool opaque = true;
      for (std::size_t i = 3; i < pixels.size(); i += 4)
        opaque = opaque && pixels[i] == 255;
      EXPECT_EQ(image.opaque, opaque);
    }
  }
}

/// CRC-32 of a PNG chunk (polynomial 0xEDB88320), bit by bit.
UInt32 ChunkSum(std::span<const UInt8> bytes) {
  UInt32 sum = 0xFFFFFFFF;
  for (const UInt8 byte : bytes) {
    sum ^= byte;
    for (int bit = 0; bit < 8; ++bit)
      sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xEDB88320 : 0);
  }
  return ~sum;
}

/// Puts a chunk right behind the header chunk.
Bytes WithChunk(const Bytes& png, const std::string& type, const Bytes& data) {
  Bytes body(type.begin(), type.end());
  body.insert(body.end(), data.begin(), data.end());
  const auto append32 = [](Bytes& bytes, std::size_t value) {
    for (unsigned shift = 32; shift > 0;)
      bytes.push_back(static_cast<UInt8>(value >> (shift -= 8)));
  };
  Bytes chunk;
  append32(chunk, data.size());
  chunk.insert(chunk.end(), body.begin(), body.end());
  append32(chunk, ChunkSum(body));
  Bytes result = png;
  result.insert(result.begin() + 33, chunk.begin(), chunk.end());
  return result;
}

TEST(PngReader, GammaBecomesThatOfSrgbUnlessTheFileSaysSrgb) {
  const TemporaryFolder folder;
  const Bytes linear_gamma = {0, 1, 0x86, 0xA0};  // 100000: codes are linear light
  const Bytes usual_gamma = {0, 0, 0xB1, 0x8F};   // 45455
  for (const char* depth : {"8", "16"}) {
    const auto path = folder / "plain.png";
    RunOrFail({"convert", "-size", "1x256", "gradient:white-black", "-depth", depth, "-define",
               std::string("png:bit-depth=") + depth, "-define", "png:color-type=2", "-define",
               "png:exclude-chunks=all", path.string()});
    const Bytes png = ReadFile(path);
    const Bytes plain = PixelsOf(Decode(path).block);
    const auto pixels = [](const Bytes& bytes) {
      DecodedImage image;
      EXPECT_EQ(DecodeImage(bytes, Turn::kUpright, &image), noErr);
      return PixelsOf(image.block);
    };
    Bytes expected = plain;
    for (std::size_t i = 0; i < plain.size(); ++i) {
      if (i % 4 == 3) continue;
      const double light = plain[i] / 255.0;
      const double code =
          light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
      expected[i] = static_cast<UInt8>(std::lround(code * 255));
    }
    EXPECT_LE(LargestDifference(pixels(WithChunk(png, "gAMA", linear_gamma)), expected), 1)
        << depth;
    EXPECT_EQ(pixels(WithChunk(png, "gAMA", usual_gamma)), plain);
    EXPECT_EQ(pixels(WithChunk(WithChunk(png, "gAMA", linear_gamma), "sRGB", {0})), plain);
  }
}

TEST(Decoding, ACutFileGivesItsBeginningOrAStatus) {
  const TemporaryFolder folder;
  for (const std::string name : {"baseline.jpg", "progressive.jpg", "mask.png"}) {
    MakePicture("120x90",
                name[0] == 'p' ? std::vector<std::string>{"-interlace", "JPEG"}
                               : std::vector<std::string>{},
                (folder / name).string());
    const Bytes whole = ReadFile(folder / name);
    DecodedImage full;
    ASSERT_EQ(DecodeImage(whole, Turn::kUpright, &full), noErr);
    for (std::size_t i = 0; i < 50; ++i) {
      SCOPED_TRACE(name + " " + std::to_string(i));
      const std::span<const UInt8> cut(whole.data(), whole.size() * i / 50);
      DecodedImage image;
      const OSStatus status = DecodeImage(cut, Turn::kUpright, &image);
      if (status == noErr) {
        EXPECT_NE(name, "mask.png");
        EXPECT_FALSE(image.warning.empty());
        EXPECT_EQ(image.block.height, 90U);
      } else {
        EXPECT_TRUE(status == kImageUnexpectedEnd || status == kImageInvalidData ||
                    (status == kImageUnknownType && cut.size() < 8));
      }
      if (name == "baseline.jpg" && i == 49) {
        ASSERT_EQ(status, noErr);
        const Bytes expected = PixelsOf(full.block);
        EXPECT_TRUE(std::equal(expected.begin(), expected.begin() + 64 * 120 * 4,
                               PixelsOf(image.block).begin()));
      }
    }
  }
}

TEST(Decoding, SidesThatTheBytesCannotHoldAreRefused) {
  const TemporaryFolder folder;
  MakePicture("32x32", {"-strip"}, (folder / "small.jpg").string());
  MakePicture("32x32", {"-strip"}, (folder / "small.png").string());
  Bytes jpeg = ReadFile(folder / "small.jpg");
  const std::array<UInt8, 3> frame = {0xFF, 0xC0, 0x00};
  const auto found = std::search(jpeg.begin(), jpeg.end(), frame.begin(), frame.end());
  ASSERT_NE(found, jpeg.end());
  std::fill(found + 5, found + 9, UInt8{0xF0});
  Bytes png = ReadFile(folder / "small.png");
  png[16] = png[17] = png[20] = png[21] = 0;
  png[18] = png[22] = 0xF0;
  const UInt32 sum = ChunkSum(std::span(png).subspan(12, 17));
  for (unsigned i = 0; i < 4; ++i)
    png[29 + i] = static_cast<UInt8>(sum >> (24 - 8 * i));
  for (const Bytes& bytes : {jpeg, png}) {
    DecodedImage image;
    EXPECT_NE(DecodeImage(bytes, Turn::kUpright, &image), noErr);
    EXPECT_FALSE(image.memory);
  }
}

TEST(Orientation, PlacesPixelsAsTheTagSays) {
  // Width 3, height 2; the letters of the encoded picture, and what is seen upright.
  const std::string encoded = "abcdef";
  const std::string upright[] = {"abcdef", "cbafed", "fedcba", "defabc",
                                 "adbecf", "daebfc", "fcebda", "cfbead"};
  for (UInt8 orientation = 1; orientation <= 8; ++orientation) {
    std::array<UInt8, 24> source{};
    std::array<UInt8, 24> target{};
    for (std::size_t i = 0; i < 6; ++i)
      source[i * 4] = static_cast<UInt8>(encoded[i]);
    const bool swap = SwapsSides(orientation);
    const PixelBlock to = {target.data(), swap ? 8U : 12U, swap ? 2U : 3U, swap ? 3U : 2U};
    for (UInt32 row = 0; row < 2; ++row) {
      PlaceRows({source.data() + row * 12, 12, 3, 1}, row, orientation, to);
    }
    std::string seen;
    for (std::size_t i = 0; i < 6; ++i)
      seen += static_cast<char>(target[i * 4]);
    EXPECT_EQ(seen, upright[orientation - 1]) << int{orientation};
  }
}

}  // namespace
}  // namespace quillmere::imaging
