#include "QT_Codec_Tables.h"

#include <algorithm>
#include <iterator>

#include "GL_Math_Numbers.h"

namespace {

struct CodecName {
  OSType type;
  const char* name;
};
constexpr CodecName kNames[] = {{".SGI"_4cc, "SGI"},
                                {"2vuy"_4cc, "422 YCbCr 8"},
                                {"8BPS"_4cc, "Planar RGB"},
                                {"ap4h"_4cc, "Apple ProRes 444 hq"},
                                {"apch"_4cc, "Apple ProRes 422 hq"},
                                {"apcn"_4cc, "Apple ProRes 422"},
                                {"apcs"_4cc, "Apple ProRes 422 s"},
                                {"avc1"_4cc, "H264"},
                                {"avr "_4cc, "AVR JPEG"},
                                {"b16g"_4cc, "16 Gray"},
                                {"b32a"_4cc, "32 Alpha Gray"},
                                {"b48r"_4cc, "48 RGB"},
                                {"b64a"_4cc, "64 ARGB"},
                                {"base"_4cc, "Base Codec"},
                                {"cmyk"_4cc, "CMYK"},
                                {"cvid"_4cc, "Cinepak"},
                                {"dmb1"_4cc, "OpenDML JPEG"},
                                {"dv1n"_4cc, "DVCPro 100 NTSC"},
                                {"dv1p"_4cc, "DVCPro 100 PAL"},
                                {"dvc "_4cc, "DV NTSC"},
                                {"dvcp"_4cc, "DV PAL"},
                                {"dvh5"_4cc, "DVCProHD 1080i50"},
                                {"dvh6"_4cc, "DVCProHD 1080i60"},
                                {"dvhp"_4cc, "DVCProHD 720p60"},
                                {"dvhq"_4cc, "DVCProHD 720p50"},
                                {"dvpp"_4cc, "DVCPro PAL"},
                                {"flic"_4cc, "FLC"},
                                {"gif "_4cc, "GIF"},
                                {"h261"_4cc, "H261"},
                                {"h263"_4cc, "H263"},
                                {"hdv1"_4cc, "HDV 720p30"},
                                {"hdv2"_4cc, "HDV 1080i60,"},
                                {"hdv3"_4cc, "HDV 1080i50,"},
                                {"hdv4"_4cc, "HDV 720p24"},
                                {"hdv5"_4cc, "HDV 720p25"},
                                {"hdv6"_4cc, "HDV 1080p24"},
                                {"hdv7"_4cc, "HDV 1080p25"},
                                {"icod"_4cc, "Apple Intermediate"},
                                {"IV41"_4cc, "Indeo 4"},
                                {"jpeg"_4cc, "JPEG"},
                                {"kpcd"_4cc, "Photo CD"},
                                {"mjp2"_4cc, "JPEG2000"},
                                {"mjpa"_4cc, "Motion-JPEG A"},
                                {"mjpb"_4cc, "Motion-JPEG B"},
                                {"mp4v"_4cc, "MPEG4 video"},
                                {"msvc"_4cc, "MS Video 1"},
                                {"myuv"_4cc, "Mpeg YUV420"},
                                {"path"_4cc, "Vector Codec"},
                                {"png "_4cc, "PNG"},
                                {"PNTG"_4cc, "MacPaint"},
                                {"pxlt"_4cc, "Pixlet"},
                                {"qdgx"_4cc, "QuickDraw GX"},
                                {"qdrw"_4cc, "QuickDraw"},
                                {"r408"_4cc, "4444 YCbCrA 8 R"},
                                {"raw "_4cc, "Raw Codec"},
                                {"rle "_4cc, "Animation"},
                                {"rpza"_4cc, "Video Codec"},
                                {"smc "_4cc, "Graphics"},
                                {"SVQ1"_4cc, "Sorenson"},
                                {"SVQ3"_4cc, "Sorenson 3"},
                                {"syv9"_4cc, "Sorenson YUV9"},
                                {"tga "_4cc, "Targa"},
                                {"tiff"_4cc, "TIFF"},
                                {"v210"_4cc, "422 YCbCr 10"},
                                {"v216"_4cc, "422 YCbCr 16"},
                                {"v308"_4cc, "444 YCbCr 8"},
                                {"v408"_4cc, "4444 YCbCrA 8"},
                                {"v410"_4cc, "444 YCbCr 10"},
                                {"WRAW"_4cc, "Windows Raw"},
                                {"WRLE"_4cc, "BMP"},
                                {"xdv2"_4cc, "XDCAM 1080i60"},
                                {"xdv3"_4cc, "XDCAM 1080i50"},
                                {"xdv6"_4cc, "XDCAM 1080p24"},
                                {"xdv7"_4cc, "XDCAM 1080p25"},
                                {"xdv8"_4cc, "XDCAM 1080p30"},
                                {"y420"_4cc, "YUV420"},
                                {"yuv2"_4cc, "Component Video"},
                                {"yuvs"_4cc, "Component Video (unsigned)"},
                                {"yuvu"_4cc, "Component Video (signed)"}};

struct DVType {
  OSType codec;
  OSType dv;
  UInt8 pal;
};
constexpr DVType kDVTypes[] = {{"dvc "_4cc, "dv  "_4cc, 0},
                               {"dvcp"_4cc, "dv  "_4cc, 1},
                               {"dvpp"_4cc, "dvp "_4cc, 1},
                               {"dv5n"_4cc, "dvp5"_4cc, 0},
                               {"dv5p"_4cc, "dvp5"_4cc, 1}};
constexpr UInt8 kNeither = 2;  ///< not settled, or not applicable
constexpr UInt8 kNoVideoSystem = 255;

/// What a codec implies; `subtype` is 0 where it doesn't matter.
struct HardcodedCodec {
  OSType type;
  OSType subtype;
  SInt32 height;
  float rate;
  UInt8 progressive;
  UInt8 top_first;
};
constexpr OSType kIntermediate = "icod"_4cc;
constexpr float kNtsc = 29.97F;
constexpr HardcodedCodec kHardcoded[] = {{"dvc "_4cc, 0, 480, kNtsc, 0, 0},
                                         {"dv5n"_4cc, 0, 480, kNtsc, 0, 0},
                                         {"dvcp"_4cc, 0, 576, 25, 0, 0},
                                         {"dvpp"_4cc, 0, 576, 25, 0, 0},
                                         {"dv5p"_4cc, 0, 576, 25, 0, 0},
                                         {"dvh5"_4cc, 0, 1080, 25, 0, 1},
                                         {"dvh6"_4cc, 0, 1080, kNtsc, 0, 1},
                                         {"dvhp"_4cc, 0, 720, 60, 1, 2},
                                         {"dvhq"_4cc, 0, 720, 50, 1, 2},
                                         {"hdv1"_4cc, 0, 720, kNtsc, 1, 2},
                                         {"hdv2"_4cc, 0, 1080, kNtsc, 0, 1},
                                         {"hdv3"_4cc, 0, 1080, 25, 0, 1},
                                         {"hdv4"_4cc, 0, 720, 24, 1, 2},
                                         {"hdv5"_4cc, 0, 720, 25, 1, 2},
                                         {"hdv6"_4cc, 0, 1080, 24, 1, 2},
                                         {"mx3n"_4cc, 0, 486, kNtsc, 2, 2},
                                         {"mx4n"_4cc, 0, 486, kNtsc, 2, 2},
                                         {"mx5n"_4cc, 0, 486, kNtsc, 2, 2},
                                         {"mx3p"_4cc, 0, 576, 25, 2, 2},
                                         {"mx4p"_4cc, 0, 576, 25, 2, 2},
                                         {"mx5p"_4cc, 0, 576, 25, 2, 2},
                                         {"xdv2"_4cc, 0, 1080, kNtsc, 0, 1},
                                         {"xdv3"_4cc, 0, 1080, 25, 0, 1},
                                         {"xdv6"_4cc, 0, 1080, 24, 1, 2},
                                         {"xdv7"_4cc, 0, 1080, 25, 1, 2},
                                         {"xdv8"_4cc, 0, 1080, kNtsc, 1, 2},
                                         {kIntermediate, "108p"_4cc, 1080, 0, 1, 2},
                                         {kIntermediate, "720p"_4cc, 720, 0, 0, 1},
                                         {kIntermediate, "108i"_4cc, 1080, 0, 0, 1}};

using Family = Boolean (*)(OSType);
/// The compressor of a family for a height, a rate, and pictures with or without two fields.
struct Compressor {
  Family family;
  SInt32 height;
  float rate;
  bool is_progressive;
  OSType type;
};
constexpr Compressor kCompressors[] = {{QT_IsDVCProHD_CodecType, 1080, 25, false, "dvh5"_4cc},
                                       {QT_IsDVCProHD_CodecType, 1080, kNtsc, false, "dvh6"_4cc},
                                       {QT_IsDVCProHD_CodecType, 720, 50, true, "dvhq"_4cc},
                                       {QT_IsDVCProHD_CodecType, 720, 59.94F, true, "dvhp"_4cc},
                                       {QT_IsHDV_CodecType, 1080, 24, true, "hdv6"_4cc},
                                       {QT_IsHDV_CodecType, 1080, 25, true, "hdv7"_4cc},
                                       {QT_IsHDV_CodecType, 1080, 25, false, "hdv3"_4cc},
                                       {QT_IsHDV_CodecType, 1080, kNtsc, false, "hdv2"_4cc},
                                       {QT_IsHDV_CodecType, 720, 24, true, "hdv4"_4cc},
                                       {QT_IsHDV_CodecType, 720, 25, true, "hdv5"_4cc},
                                       {QT_IsHDV_CodecType, 720, kNtsc, true, "hdv1"_4cc},
                                       {QT_IsXDCAM_CodecType, 1080, 24, true, "xdv6"_4cc},
                                       {QT_IsXDCAM_CodecType, 1080, 25, true, "xdv7"_4cc},
                                       {QT_IsXDCAM_CodecType, 1080, kNtsc, true, "xdv8"_4cc},
                                       {QT_IsXDCAM_CodecType, 1080, 25, false, "xdv3"_4cc},
                                       {QT_IsXDCAM_CodecType, 1080, kNtsc, false, "xdv2"_4cc}};

/// Rates count as equal to a tenth.
bool IsRate(float rate, float wanted) {
  constexpr float kDistance = 0.1F;
  return GL_FloatsEqualByAbsDiff(rate, wanted, kDistance) != 0;
}

}  // namespace

const char* QT_GetComprFormatName(OSType codecType) {
  const auto* found = std::ranges::find(kNames, codecType, &CodecName::type);
  return found != std::end(kNames) ? found->name : "";
}

void QT_GetDV_Type(OSType codecType, OSType* dvType, UInt8* pal) {
  const auto* found = std::ranges::find(kDVTypes, codecType, &DVType::codec);
  const bool is_dv = found != std::end(kDVTypes);
  *dvType = is_dv ? found->dv : 0;
  *pal = is_dv ? found->pal : kNoVideoSystem;
}

OSType QT_GetDV_CodecType(OSType dvType, Boolean pal) {
  switch (dvType) {
    case "dv  "_4cc:
      return pal ? "dvcp"_4cc : "dvc "_4cc;
    case "dvp "_4cc:
      return pal ? "dvpp"_4cc : "dvc "_4cc;
    case "dvp5"_4cc:
      return pal ? "dv5p"_4cc : "dv5n"_4cc;
    default:
      return 0;
  }
}

void QT_GetHardcodedCodecProperties(OSType codecType, OSType aicSubtype, SInt32* height,
                                    float* frameRate, UInt8* progressive, UInt8* topFirst) {
  const auto* found = std::ranges::find_if(kHardcoded, [=](const HardcodedCodec& codec) {
    return codec.type == codecType && (codec.subtype == 0 || codec.subtype == aicSubtype);
  });
  constexpr HardcodedCodec kUnknown = {0, 0, 0, 0, kNeither, kNeither};
  const HardcodedCodec& codec = found != std::end(kHardcoded) ? *found : kUnknown;
  *height = codec.height;
  *frameRate = codec.rate;
  *progressive = codec.progressive;
  *topFirst = codec.top_first;
}

OSType QT_FindHardCodedCompressor(OSType familyMember, SInt32 height, float frameRate,
                                  Boolean progressive, Boolean interlaced) {
  for (const Compressor& compressor : kCompressors) {
    const bool has_fields =
        compressor.is_progressive ? progressive != 0 : interlaced != 0 && progressive == 0;
    if (has_fields && compressor.height == height && compressor.family(familyMember) &&
        IsRate(frameRate, compressor.rate))
      return compressor.type;
  }
  return 0;
}
