/// What is known of codecs.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "QT_Codec_Families.h"
#include "QT_Codec_Rates.h"
#include "QT_Codec_Tables.h"
#include "QT_Components.h"
#include "QT_Pixel_Formats.h"

namespace {

TEST(CodecTables, FamiliesAndTablesFitTogether) {
  EXPECT_STREQ(QT_GetComprFormatName("hdv2"_4cc), "HDV 1080i60,");
  EXPECT_STREQ(QT_GetComprFormatName("raw "_4cc), "Raw Codec");
  EXPECT_STREQ(QT_GetComprFormatName("none"_4cc), "");
  EXPECT_FALSE(QT_IsHDV_CodecType("hdv7"_4cc));
  EXPECT_TRUE(QT_IsFixedSizeCompressor("raw "_4cc) && !QT_IsFixedSizeCompressor("png "_4cc));
  EXPECT_FALSE(QT_CTypeHasEnforcedDims("dvcp"_4cc));
  for (const OSType type : {"dvc "_4cc, "dvcp"_4cc, "dvpp"_4cc, "dv5n"_4cc, "dv5p"_4cc}) {
    OSType dv = 0;
    UInt8 pal = 9;
    QT_GetDV_Type(type, &dv, &pal);
    EXPECT_EQ(QT_GetDV_CodecType(dv, pal), type);
    EXPECT_TRUE(QT_IsDV_CodecType(type));
  }
  EXPECT_EQ(QT_GetDV_CodecType("dvp "_4cc, 0), "dvc "_4cc);
  // The compressor of what a codec implies is that codec, but for the one whose rate is rounded.
  for (const OSType type : {"dvh5"_4cc, "dvh6"_4cc, "dvhp"_4cc, "dvhq"_4cc, "hdv1"_4cc, "hdv2"_4cc,
                            "hdv3"_4cc, "hdv4"_4cc, "hdv5"_4cc, "hdv6"_4cc, "xdv2"_4cc, "xdv3"_4cc,
                            "xdv6"_4cc, "xdv7"_4cc, "xdv8"_4cc}) {
    SInt32 height = 0;
    float rate = 0;
    UInt8 progressive = 0, top = 0;
    QT_GetHardcodedCodecProperties(type, 0, &height, &rate, &progressive, &top);
    EXPECT_EQ(QT_FindHardCodedCompressor(type, height, rate, progressive == 1, progressive == 0),
              type)
        << QT_GetComprFormatName(type);
    EXPECT_EQ(top, progressive == 1 ? 2 : 1);
    EXPECT_NE(std::string(QT_GetComprFormatName(type)).find(std::to_string(height)),
              std::string::npos);
  }
  EXPECT_EQ(QT_FindHardCodedCompressor("hdv1"_4cc, 1080, 29.97F, 1, 0), 0U);
  EXPECT_EQ(QT_FindHardCodedCompressor("mx3n"_4cc, 1080, 25, 1, 0), 0U);
  SInt32 height = 7;
  float rate = 7;
  UInt8 progressive = 7, top = 7;
  QT_GetHardcodedCodecProperties("icod"_4cc, "720p"_4cc, &height, &rate, &progressive, &top);
  EXPECT_TRUE(height == 720 && progressive == 0 && top == 1);
  QT_GetHardcodedCodecProperties("icod"_4cc, "none"_4cc, &height, &rate, &progressive, &top);
  EXPECT_TRUE(height == 0 && rate == 0 && progressive == 2 && top == 2);
}

TEST(CodecRates, FollowTheirFormulas) {
  const double rate = static_cast<double>(29.97F);
  EXPECT_EQ(QT_GetProRes422HQ_DataRate(29.97F, 1920, 1080),
            static_cast<UInt32>(3.5 * rate * 1920 * 1080 / 8));
  EXPECT_EQ(QT_GetProRes422HQ_DataRate(25, 720, 720), 8100000U);
  EXPECT_EQ(QT_GetProRes422DataRate(25, 720, 720), 5400000U);
  EXPECT_EQ(QT_GetProRes422LT_DataRate(25, 720, 720), 3780000U);
  EXPECT_EQ(QT_GetAvidDNxHD_DataRate("AVdn"_4cc, 23.976F, 1080), 15073280U);
  EXPECT_EQ(QT_GetAvidDNxHD_DataRate("AVds"_4cc, 25, 720), 7864320U);
  EXPECT_EQ(QT_GetAvidDNxHD_DataRate("AVdn"_4cc, 29.97F, 1080), 0U);
  EXPECT_EQ(QT_GetDVCProHD_DataRate(24), 6000000U);
  EXPECT_EQ(QT_GetDVCProHD_DataRate(50), 14000000U);
  EXPECT_EQ(QT_GetJPEG_DataRate(1023, -5, 5), 0U);
  EXPECT_EQ(QT_Get_iDeviceDataRate("M4V "_4cc, 320, 240), 112000U);
  EXPECT_EQ(QT_Get_iDeviceDataRate("M4V "_4cc, 640, 480), 203500U);
  EXPECT_EQ(QT_Get_iDeviceDataRate("M4VH"_4cc, 100, 100), 112000U);
  EXPECT_EQ(QT_Get_iDeviceDataRate("M4VH"_4cc, 1280, 720), 641000U);
  EXPECT_NEAR(QT_Get_iDeviceDataRate("M4VH"_4cc, 640, 480), 112000 + 279000 * 230400.0 / 330240, 2);
  EXPECT_EQ(QT_Get_iDeviceDataRate("none"_4cc, 1280, 720), 0U);
}

TEST(CodecRates, DevicesTakeWhatFits) {
  const Rect large = {0, 0, 1080, 1920}, tiny = {0, 0, 10, 20}, wide = {0, 0, 100, 640};
  Rect out = {1, 1, 1, 1};
  QT_ScaleTo_iDeviceBox("M4V "_4cc, 0, 25, &large, 0, &out);
  EXPECT_TRUE(out.right - out.left == 640 && out.bottom - out.top == 360);
  out = {1, 1, 1, 1};
  QT_ScaleTo_iDeviceBox("M4V "_4cc, 0, 25, &tiny, 0, &out);
  EXPECT_EQ(out.right, 1);
  QT_ScaleTo_iDeviceBox("M4V "_4cc, 0, 25, &tiny, 1, &out);
  EXPECT_EQ(out.right - out.left, 640);
  QT_ScaleTo_iDeviceBox("M4V "_4cc, 0, 25, &wide, 0, &out);
  EXPECT_TRUE(out.right == 640 && out.bottom == 100);
  EXPECT_EQ(QT_Get_iDeviceFrameRate("M4VH"_4cc, 720, 25), 24);
  EXPECT_EQ(QT_Get_iDeviceFrameRate("M4VP"_4cc, 720, 25), 25);
}

TEST(CodecNames, HashToFourLetters) {
  OSType code = GL_NameToFourCC("ab");  // sums 97, 98, 0, 98
  char letters[5] = {};
  std::memcpy(letters, &code, 4);
  EXPECT_STREQ(letters, "TUaU");
  code = GL_NameToFourCC("");
  std::memcpy(letters, &code, 4);
  EXPECT_STREQ(letters, "aaaa");
}

TEST(Components, AreFoundByTypeAndName) {
  const Component png = QT_GetComponentOfType("grip"_4cc, "PNGf"_4cc, 0);
  ASSERT_NE(nullptr, png);
  EXPECT_TRUE(QT_ComponentIsThreadSafe(png));
  EXPECT_FALSE(QT_ComponentIsThreadSafe(nullptr));
  EXPECT_EQ(nullptr, QT_GetComponentOfType("imco"_4cc, "none"_4cc, 0));
  char name[256];
  EXPECT_EQ(noErr, QT_GetComponentName("grip"_4cc, "JPEG"_4cc, 0, name));
  EXPECT_STREQ("JPEG", name);
  EXPECT_EQ(-3000, QT_GetComponentName("none"_4cc, 0, 0, name));
  EXPECT_STREQ("", name);
  Component found = nullptr;
  ComponentDescription description{};
  EXPECT_EQ(noErr, QT_GetComponentByNameAndType("Sound", "mhlr"_4cc, &found, &description));
  EXPECT_EQ("soun"_4cc, description.componentSubType);
  EXPECT_EQ(noErr, QT_GetComponentByNameAndType("sound", "mhlr"_4cc, &found, &description));
  EXPECT_EQ(nullptr, found);
  EXPECT_EQ("mhlr"_4cc, description.componentType);
  EXPECT_EQ(noErr, QT_WalkComponentList(0, 0, 0, 0));
  Boolean can = 1;
  EXPECT_EQ(noErr, QT_EncoderCanExportFiles("MooV"_4cc, 0, &can));
  EXPECT_FALSE(can);

  OSType codec = 0;
  EXPECT_EQ(noErr, QT_GetCodecType("Photo - JPEG", &codec));
  EXPECT_EQ("jpeg"_4cc, codec);
  EXPECT_EQ(noErr, QT_GetCodecName("png "_4cc, name));
  EXPECT_STREQ("PNG", name);
  EXPECT_EQ(noErr, QT_GetCodecName("none"_4cc, name));
  EXPECT_STREQ("", name);
  Boolean present = 0;
  EXPECT_EQ(noErr, QT_IsCodecPresent("none"_4cc, nullptr, &present));
  EXPECT_FALSE(present);
  EXPECT_EQ(noErr, QT_IsCodecPresent(0, "PNG", &present));
  EXPECT_TRUE(present);
}

TEST(PixelFormats, AreThoseOfTheComponents) {
  Boolean is = 0;
  for (const OSType type : {"png "_4cc, "rle "_4cc}) {
    EXPECT_EQ(noErr, QT_IsRGB_Codec(type, &is));
    EXPECT_TRUE(is);
  }
  for (const OSType type : {"dvc "_4cc, "avc1"_4cc}) {
    EXPECT_EQ(noErr, QT_IsRGB_Codec(type, &is));
    EXPECT_FALSE(is);
  }
  EXPECT_EQ(-8961, QT_IsRGB_Codec("none"_4cc, &is));
  OSType format = 7;
  EXPECT_EQ(noErr, QT_GetCodecFavoritePixelFormat("dvcp"_4cc, &format, 1));
  EXPECT_EQ("2vuy"_4cc, format);
  EXPECT_EQ(-8961, QT_GetCodecFavoritePixelFormat("avc1"_4cc, &format, 1)) << "no compressor";
  EXPECT_EQ(noErr, QT_CodecSuppPixelFormat("jpeg"_4cc, "2vuy"_4cc, &is, 0));
  EXPECT_TRUE(is);
  EXPECT_EQ(noErr, QT_PixelTypeSupports_y420("jpeg"_4cc, &is));
  EXPECT_FALSE(is);
  const Component sound = QT_GetComponentOfType("mhlr"_4cc, "soun"_4cc, 0);
  Handle list = nullptr;
  EXPECT_EQ(-8961, QT_GetCPixList("jpeg"_4cc, sound, &list, 0)) << "not a codec of the type";
  EXPECT_EQ(-192, GetComponentPublicResource(sound, "cpix"_4cc, 1, &list));
}

}  // namespace
