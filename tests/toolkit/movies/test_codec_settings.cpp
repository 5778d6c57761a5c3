/// Compressors of DV, what they enforce, and their settings.
#include <gtest/gtest.h>

#include <cstring>

#include "GL_CF.h"
#include "QT_Codec_Settings.h"
#include "QT_Codec_Tables.h"
#include "codec_settings.h"
#include "made_movie.h"
#include "reference_counted.h"

namespace quillmere::test {
namespace {

/// What the standards (SMPTE 314M, IEC 61834, SMPTE 370M) and the aspect ratio of BT.601's sampling
/// make of each type: size, pixel aspect in pictures of 4:3 and of 16:9, fields.
struct Standard {
  OSType type;
  SInt32 width, height;
  UInt32 h, v, wide_h, wide_v;
  UInt8 fields, detail;
  SInt32 frame_bytes;
};
constexpr Standard kStandards[] = {{"dvc "_4cc, 720, 480, 10, 11, 40, 33, 2, 14, 120000},
                                   {"dvcp"_4cc, 720, 576, 59, 54, 118, 81, 2, 14, 144000},
                                   {"dvpp"_4cc, 720, 576, 59, 54, 118, 81, 2, 14, 144000},
                                   {"dv5n"_4cc, 720, 480, 10, 11, 40, 33, 2, 14, 240000},
                                   {"dv5p"_4cc, 720, 576, 59, 54, 118, 81, 2, 14, 288000},
                                   {"dvh6"_4cc, 1280, 1080, 3, 2, 3, 2, 2, 9, 480000},
                                   {"dvh5"_4cc, 1440, 1080, 4, 3, 4, 3, 2, 9, 576000},
                                   {"dvhp"_4cc, 960, 720, 4, 3, 4, 3, 1, 0, 240000},
                                   {"dvhq"_4cc, 960, 720, 4, 3, 4, 3, 1, 0, 288000}};

TEST(CodecSettings, CompressorsEnforceWhatTheStandardsSay) {
  for (const Standard& standard : kStandards) {
    for (const Boolean is_wide : {Boolean{0}, Boolean{1}}) {
      const QT_DV_Settings dv = {0, 0, is_wide, 0, is_wide, 0};
      Handle settings = nullptr;
      const UInt8 chosen[2] = {0, is_wide};
      ASSERT_EQ(noErr, PtrToHand(chosen, &settings, sizeof chosen));
      QT_EnforcedProperties enforced{};
      // DV gets both kinds of settings, the handle last; DVCPRO HD the handle alone.
      ASSERT_EQ(noErr, QT_GetCompressorEnforcedProperties(standard.type, settings, &dv, &enforced));
      DisposeHandle(settings);
      EXPECT_EQ(standard.width, enforced.width);
      EXPECT_EQ(standard.height, enforced.height);
      EXPECT_EQ(is_wide ? standard.wide_h : standard.h, enforced.pasp.hSpacing);
      EXPECT_EQ(is_wide ? standard.wide_v : standard.v, enforced.pasp.vSpacing);
      EXPECT_EQ(standard.fields, enforced.fiel.fields);
      EXPECT_EQ(standard.detail, enforced.fiel.detail);
      EXPECT_GT(enforced.clap.cleanApertureWidthN, 0U);
    }
  }
  QT_EnforcedProperties none{};
  const QT_DV_Settings progressive = {0, 0, 0, 0, 1, 0};
  EXPECT_EQ(noErr, QT_GetCompressorEnforcedProperties("dvc "_4cc, nullptr, &progressive, &none));
  EXPECT_EQ(1, none.fiel.fields);
  EXPECT_EQ(noErr, QT_GetCompressorEnforcedProperties("jpeg"_4cc, nullptr, &progressive, &none));
  EXPECT_TRUE(none.width == 0 && none.pasp.hSpacing == 0 && none.fiel.fields == 0);
  EXPECT_EQ(-3000, QT_GetCompressorEnforcedProperties("icod"_4cc, nullptr, &progressive, &none));
  CompressorComponent jpeg = nullptr;
  ASSERT_EQ(noErr, OpenADefaultComponent("imco"_4cc, "jpeg"_4cc, &jpeg));
  EXPECT_EQ(-2195, QT_SetDV_SettingsAsProps(jpeg, &progressive));
  CloseComponent(jpeg);
  CompressorComponent dv = nullptr;
  ASSERT_EQ(noErr, OpenADefaultComponent("imco"_4cc, "dv5p"_4cc, &dv));
  QT_DV_Settings read{};
  EXPECT_EQ(noErr, QT_SetDV_SettingsAsProps(dv, &progressive));
  EXPECT_EQ(noErr, QT_GetDV_SettingsAsProps(dv, &read));
  EXPECT_TRUE(read.isProgressive == 1 && read.is16x9 == 0);
  CloseComponent(dv);
}

/// A stream of one frame as another program reads it.
std::string Probed(const std::filesystem::path& path) {
  return RunOrFail({"ffprobe", "-v", "error", "-select_streams", "v", "-show_entries",
                    "stream=codec_name,width,height,sample_aspect_ratio", "-of", "csv=p=0",
                    path.string()});
}

TEST_F(MadeMovie, OfDvIsReadByOtherPrograms) {
  for (const Standard& standard : kStandards) {
    const Rect rect = {0, 0, 24, 40};
    SInt32 size = 0;
    ASSERT_EQ(noErr,
              QT_GetMaxCompressionSize(&rect, "2vuy"_4cc, nullptr, 512, standard.type, &size));
    ASSERT_EQ(standard.frame_bytes, size);
  }
  AddDrawn({"dvc "_4cc});
  Boolean is_in_file = 0;
  ASSERT_EQ(noErr, QT_SaveMovie(movie_, &file_, &is_in_file));
  const std::string movie = (folder_ / "made.mov").string();
  EXPECT_EQ("dvvideo,720,480,10:11\n", Probed(movie));
  RunFfmpeg({"-i", movie, "-frames:v", "1", "-pix_fmt", "rgb24", "-f", "rawvideo",
             (folder_ / "frame").string()});
  const Bytes frame = ReadFile(folder_ / "frame");
  ASSERT_EQ(720U * 480 * 3, frame.size());
  for (std::size_t i = 0; i < frame.size(); i += 3)
    ASSERT_TRUE(frame[i] > 245 && frame[i + 1] < 12 && frame[i + 2] < 12) << i;
}

TEST_F(MadeMovie, OfWideDvIsMarkedInItsFrames) {
  GWorldPtr world = nullptr;
  const Rect rect = {0, 0, 60, 90};
  ASSERT_EQ(noErr, QTNewGWorld(&world, "2vuy"_4cc, &rect, nullptr, nullptr, 0));
  for (const char* ratio : {"59:54", "118:81"}) {
    CompressorComponent compressor = nullptr;
    ASSERT_EQ(noErr, OpenADefaultComponent("imco"_4cc, "dvcp"_4cc, &compressor));
    const QT_DV_Settings dv = {0, 1, static_cast<Boolean>(ratio[0] == '1'), 0, 0, 0};
    ASSERT_EQ(noErr, QT_SetDV_SettingsAsProps(compressor, &dv));
    Handle description = NewHandle(0);
    CompressionSequenceID sequence = nullptr;
    ASSERT_EQ(noErr, CompressSequenceBegin(&sequence, GetGWorldPixMap(world), &rect, 0, "dvcp"_4cc,
                                           compressor, 512, description));
    std::vector<UInt8> frame(144000);
    SInt32 size = 0;
    ASSERT_EQ(noErr, CompressSequenceFrame(sequence, GetGWorldPixMap(world), &rect, 0, frame.data(),
                                           &size));
    ASSERT_EQ(144000, size);
    CDSequenceEnd(sequence);
    CloseComponent(compressor);
    DisposeHandle(description);
    WriteFile(folder_ / "frame.dv", frame);
    // FFmpeg tells the sample aspect of DV's whole width, 720 samples.
    const bool is_wide = ratio[0] == '1';
    EXPECT_EQ(is_wide ? "dvvideo,720,576,64:45\n" : "dvvideo,720,576,16:15\n",
              Probed(folder_ / "frame.dv"));
  }
  DisposeGWorld(world);
}

TEST(CodecSettings, SessionsTakeOptions) {
  ICMCompressionSessionOptionsRef options = nullptr;
  ASSERT_EQ(noErr, ICMCompressionSessionOptionsCreate(nullptr, &options));
  Handle settings = nullptr;
  ASSERT_EQ(noErr, PtrToHand("abc", &settings, 3));
  EXPECT_EQ(noErr, QT_ICMCompressionSessionOptionsSetCodecSett(options, settings));
  DisposeHandle(settings);
  EXPECT_EQ(noErr, QT_ICMCompressionSessionOptionsSetComprQuality(options, 700));
  CompressorComponent compressor = nullptr;
  ASSERT_EQ(noErr, OpenADefaultComponent("imco"_4cc, "png "_4cc, &compressor));
  EXPECT_EQ(noErr, QT_ICMCompressionSessionOptionsSetComprComp(options, compressor));
  const auto get = [options](OSType property, auto* value) {
    return ICMCompressionSessionOptionsGetProperty(options, "icso"_4cc, property, sizeof *value,
                                                   value, nullptr);
  };
  CodecQ quality = 0;
  CompressorComponent read = nullptr;
  EXPECT_EQ(noErr, get("cost"_4cc, &settings));
  EXPECT_EQ(3, GetHandleSize(settings));
  EXPECT_EQ(0, std::memcmp(*settings, "abc", 3));
  EXPECT_EQ(noErr, get("imco"_4cc, &read));
  EXPECT_EQ(compressor, read);
  EXPECT_EQ(noErr, get("qual"_4cc, &quality));
  EXPECT_EQ(700U, quality);
  EXPECT_EQ(-2195, get("none"_4cc, &quality));
  EXPECT_EQ(paramErr, get("cost"_4cc, &quality)) << "too small";
  EXPECT_EQ(paramErr, QT_ICMCompressionSessionOptionsSetComprQuality(nullptr, 1));
  DisposeHandle(settings);
  CloseComponent(compressor);
  ICMCompressionSessionOptionsRelease(options);
}

TEST(CodecSettings, AreAskedOfTheUserAndWritten) {
  const TemporaryFolder folder;
  const FSRef reference = ReferenceTo(folder.path());
  quillmere::windows::QueueCodecChoices({1, 1});
  ASSERT_EQ(noErr, QT_WriteCodecUserSettToFile("dvcp"_4cc, &reference));
  const FSRef file = ReferenceTo(folder / "DV PAL settings.xml");
  const Owned<CFURLRef> url(CFURLCreateFromFSRef(kCFAllocatorDefault, &file));
  Owned<CFPropertyListRef> list;
  ASSERT_EQ(noErr, CF_ReadPropertyListFromXMLFile(url.get(), list.out()));
  const CFDataRef data = AsData(list.get());
  ASSERT_TRUE(data != nullptr && CFDataGetLength(data) == 2);
  EXPECT_TRUE(CFDataGetBytePtr(data)[0] == 1 && CFDataGetBytePtr(data)[1] == 1);

  Handle settings = nullptr;
  ASSERT_EQ(noErr, PtrToHand("\1\0", &settings, 2));
  const Handle before = settings;
  quillmere::windows::QueueCodecChoices({});
  EXPECT_EQ(-128, QT_GetImageCodecUserSett("dvc "_4cc, &settings));
  EXPECT_EQ(before, settings) << "cancelled";
  quillmere::windows::QueueCodecChoices({0, 1});
  EXPECT_EQ(noErr, QT_GetImageCodecUserSett("dvc "_4cc, &settings));
  EXPECT_TRUE((*settings)[0] == 0 && (*settings)[1] == 1);
  EXPECT_EQ(-8962, QT_GetImageCodecUserSett("jpeg"_4cc, &settings)) << "nothing to set";
  EXPECT_EQ(-3000, QT_GetImageCodecUserSett("none"_4cc, &settings));
  DisposeHandle(settings);
}

}  // namespace
}  // namespace quillmere::test
