// Image files: headers, sources, destinations, and what a failure leaves.

#include <sys/stat.h>
#include <unistd.h>

#include "file_references.h"
#include "image_file_info.h"
#include "images.h"
#include "pixel_buffers.h"
#include "test_pictures.h"

namespace quillmere::imaging {
namespace {

using namespace quillmere::test;

TEST(ImageFileInfo, SaysWhatTheHeadersSay) {
  const TemporaryFolder folder;
  const struct {
    const char* name;
    std::vector<std::string> arguments;
    OSType format;
    UInt16 depth;
    double dots_per_inch;
  } cases[] = {
      {"rgb.png", {"-strip", "-define", "png:color-type=2"}, "png "_4cc, 24, 0},
      {"rgba.png", {"-alpha", "set", "-define", "png:color-type=6"}, "png "_4cc, 32, 0},
      {"grey.png",
       {"-strip", "-colorspace", "Gray", "-define", "png:color-type=0"},
       "png "_4cc,
       40,
       0},
      {"dense.png",
       {"-density", "300", "-units", "PixelsPerInch", "-define", "png:color-type=2"},
       "png "_4cc,
       24,
       300},
      {"rgb.jpg", {"-strip"}, "jpeg"_4cc, 24, 0},
      {"grey.jpg", {"-strip", "-colorspace", "Gray"}, "jpeg"_4cc, 40, 0},
      {"dense.jpg", {"-density", "240", "-units", "PixelsPerInch"}, "jpeg"_4cc, 24, 240},
      {"metric.jpg", {"-density", "118", "-units", "PixelsPerCentimeter"}, "jpeg"_4cc, 24, 299.72},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    MakePicture("31x17", one.arguments, (folder / one.name).string());
    ImageFileInfo info;
    ASSERT_EQ(ReadImageFileInfo(folder / one.name, &info), noErr);
    EXPECT_EQ(info.format, one.format);
    EXPECT_EQ(info.width, 31U);
    EXPECT_EQ(info.height, 17U);
    EXPECT_EQ(info.depth, one.depth);
    EXPECT_EQ(info.orientation, 1);
    EXPECT_EQ(info.data_offset, 0U);
    EXPECT_EQ(info.data_size, std::filesystem::file_size(folder / one.name));
    if (one.dots_per_inch > 0) {
      EXPECT_NEAR(info.dots_per_inch_x, one.dots_per_inch, 0.02);
    }
    if (std::string_view(one.name) == "rgb.jpg") {
      EXPECT_EQ(info.dots_per_inch_x, 0);
    }
  }
}

TEST(ImageFileInfo, DamagedAndForeignFilesHaveTheirStatus) {
  const TemporaryFolder folder;
  MakePicture("31x17", {}, (folder / "whole.jpg").string());
  MakePicture("31x17", {}, (folder / "whole.png").string());
  ImageFileInfo info;
  for (const char* name : {"whole.jpg", "whole.png"}) {
    Bytes bytes = ReadFile(folder / name);
    bytes.resize(20);
    WriteFile(folder / "cut", bytes);
    EXPECT_EQ(ReadImageFileInfo(folder / "cut", &info), kImageInvalidData);
  }
  WriteFile(folder / "text", "not a picture at all");
  WriteFile(folder / "empty", "");
  EXPECT_EQ(ReadImageFileInfo(folder / "text", &info), kImageUnknownType);
  EXPECT_EQ(ReadImageFileInfo(folder / "empty", &info), kImageUnknownType);
  EXPECT_EQ(ReadImageFileInfo(folder.path(), &info), kImageUnknownType);
  EXPECT_EQ(ReadImageFileInfo(folder / "missing", &info), fnfErr);
}

TEST(ImageFileInfo, TheDensityOfACameraIsReadWhereThereIsNoOther) {
  const TemporaryFolder folder;
  const auto path = folder / "camera.jpg";
  MakePicture("8x8", {"-strip"}, path.string());
  RunOrFail({"exiftool", "-q", "-overwrite_original", "-n", "-JFIF:all=", "-Exif:XResolution=180",
             "-Exif:YResolution=90", "-Exif:ResolutionUnit=3", path.string()});
  ImageFileInfo info;
  ASSERT_EQ(ReadImageFileInfo(path, &info), noErr);
  EXPECT_NEAR(info.dots_per_inch_x, 180 * 2.54, 0.01);
  EXPECT_NEAR(info.dots_per_inch_y, 90 * 2.54, 0.01);
}

/// Writes a frame of 33 by 21 pixels through a destination; its result.
Boolean WriteFrame(const std::filesystem::path& path, CVPixelBufferRef buffer,
                   double dots_per_inch) {
  const Owned<CGColorSpaceRef> space(CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB));
  const Owned<CGContextRef> context(CGBitmapContextCreate(
      CVPixelBufferGetBaseAddress(buffer), 33, 21, 8, CVPixelBufferGetBytesPerRow(buffer),
      space.get(), kCGImageAlphaPremultipliedFirst));
  const Owned<CGImageRef> image(CGBitmapContextCreateImage(context.get()));
  const Owned<CFURLRef> url(CreateUrlOfPath(path));
  const Owned<CGImageDestinationRef> destination(
      CGImageDestinationCreateWithURL(url.get(), kUTTypeJPEG, 1, nullptr));
  if (!destination) return false;
  const Owned<CFMutableDictionaryRef> options(CFDictionaryCreateMutable(nullptr));
  const float quality = 0.8F;
  const Owned<CFNumberRef> quality_number(CFNumberCreate(nullptr, kCFNumberFloat32Type, &quality));
  CFDictionarySetValue(options.get(), kCGImageDestinationLossyCompressionQuality,
                       quality_number.get());
  const Owned<CFNumberRef> density(CFNumberCreate(nullptr, kCFNumberFloat64Type, &dots_per_inch));
  CFDictionarySetValue(options.get(), kCGImagePropertyDPIWidth, density.get());
  CFDictionarySetValue(options.get(), kCGImagePropertyDPIHeight, density.get());
  CGImageDestinationAddImage(destination.get(), image.get(), options.get());
  return CGImageDestinationFinalize(destination.get());
}

Owned<CVPixelBufferRef> FlatFrame() {
  Owned<CVPixelBufferRef> buffer;
  EXPECT_EQ(CVPixelBufferCreate(nullptr, 33, 21, k32ARGBPixelFormat, nullptr, buffer.out()), 0);
  EXPECT_EQ(CVPixelBufferGetBytesPerRow(buffer.get()), 192U);
  auto* const pixels = static_cast<UInt8*>(CVPixelBufferGetBaseAddress(buffer.get()));
  for (std::size_t i = 0; i < 192 * 21; i += 4) {
    const UInt8 pixel[4] = {255, 200, 100, 30};
    std::copy(pixel, pixel + 4, pixels + i);
  }
  return buffer;
}

TEST(ImageDestination, WritesQualityColoursAndDensity) {
  const TemporaryFolder folder;
  const Owned<CVPixelBufferRef> buffer = FlatFrame();
  const auto path = folder / "out.jpg";
  for (const auto& [density, said] : {std::pair{300.0, "300 PixelsPerInch"},
                                      {299.72, "118 PixelsPerCentimeter"},
                                      {0.0, "1 Undefined"}}) {
    ASSERT_TRUE(WriteFrame(path, buffer.get(), density));
    const std::string seen =
        RunOrFail({"identify", "-format", "%Q %wx%h %[colorspace] %x %U", path.string()});
    if (density > 0) {
      EXPECT_EQ(seen, std::string("80 33x21 sRGB ") + said);
    }
    ImageFileInfo info;
    ASSERT_EQ(ReadImageFileInfo(path, &info), noErr);
    EXPECT_NEAR(info.dots_per_inch_x, density, 0.01);
  }
  const Bytes pixels = PeerPixels(path);
  Bytes expected;
  for (int i = 0; i < 33 * 21; ++i)
    expected.insert(expected.end(), {200, 100, 30, 255});
  EXPECT_LE(LargestDifference(pixels, expected), 3);
}

std::vector<std::string> NamesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.push_back(entry.path().filename());
  return names;
}

TEST(ImageDestination, AFailureLeavesNothingNew) {
  const TemporaryFolder folder;
  const Owned<CVPixelBufferRef> buffer = FlatFrame();
  // A folder that is not empty stands under the final name: the rename fails.
  std::filesystem::create_directories(folder / "out.jpg/inside");
  EXPECT_FALSE(WriteFrame(folder / "out.jpg", buffer.get(), 72));
  EXPECT_EQ(NamesIn(folder.path()), std::vector<std::string>{"out.jpg"});
  EXPECT_FALSE(WriteFrame(folder / "missing/out.jpg", buffer.get(), 72));
  EXPECT_FALSE(WriteFrame("/dev/full/out.jpg", buffer.get(), 72));
}

TEST(ImageSource, GivesStraightPixelsForDisplay) {
  const TemporaryFolder folder;
  MakePicture("19x9",
              {"-alpha", "set", "-channel", "A", "-fx", "i/w", "-define", "png:color-type=6",
               "-define", "png:bit-depth=8"},
              (folder / "mask.png").string());
  const Owned<CFURLRef> url(CreateUrlOfPath(folder / "mask.png"));
  const Owned<CGImageSourceRef> source(CGImageSourceCreateWithURL(url.get(), nullptr));
  ASSERT_TRUE(source);
  EXPECT_EQ(CGImageSourceGetStatus(source.get()), 0);
  EXPECT_EQ(CGImageSourceCreateImageAtIndex(source.get(), 1, nullptr), nullptr);
  const Owned<CGImageRef> image(CGImageSourceCreateImageAtIndex(source.get(), 0, nullptr));
  const PixelView view = StraightRgbaOf(image.get());
  ASSERT_EQ(view.width, 19U);
  const Bytes pixels(view.rgba, view.rgba + view.row_bytes * view.height);
  EXPECT_EQ(LargestDifference(pixels, PeerPixels(folder / "mask.png")), 0);

  WriteFile(folder / "text.png", "no picture");
  const Owned<CFURLRef> text(CreateUrlOfPath(folder / "text.png"));
  EXPECT_EQ(CGImageSourceCreateWithURL(text.get(), nullptr), nullptr);
}

TEST(PixelBuffers, RefuseWhatTheyDoNotServe) {
  CVPixelBufferRef buffer = nullptr;
  EXPECT_EQ(CVPixelBufferCreate(nullptr, 0, 5, k32ARGBPixelFormat, nullptr, &buffer),
            kCVReturnInvalidSize);
  EXPECT_EQ(CVPixelBufferCreate(nullptr, 65535, 65535, k32ARGBPixelFormat, nullptr, &buffer),
            kCVReturnInvalidSize);
  EXPECT_EQ(CVPixelBufferCreate(nullptr, 5, 5, "2vuy"_4cc, nullptr, &buffer),
            kCVReturnInvalidPixelFormat);
  EXPECT_EQ(buffer, nullptr);
  const Owned<CVPixelBufferRef> frame = FlatFrame();
  const double value = 42;
  const Owned<CFNumberRef> number(CFNumberCreate(nullptr, kCFNumberFloat64Type, &value));
  CVBufferSetAttachment(frame.get(), kCGImagePropertyDPIWidth, number.get());
  EXPECT_EQ(CVBufferGetAttachment(frame.get(), kCGImagePropertyDPIWidth), number.get());
  EXPECT_EQ(CVBufferGetAttachment(frame.get(), kCGImagePropertyDPIHeight), nullptr);
}

}  // namespace
}  // namespace quillmere::imaging
