#include "QT_Codec_Families.h"

#include <algorithm>
#include <initializer_list>

namespace {

constexpr Boolean IsOneOf(OSType type, std::initializer_list<OSType> types) {
  return std::find(types.begin(), types.end(), type) != types.end();
}

}  // namespace

Boolean QT_IsYC_CodecType(OSType type) {
  return IsOneOf(
      type, {"yuv2"_4cc, "2vuy"_4cc, "myuv"_4cc, "y420"_4cc, "syv9"_4cc, "r408"_4cc, "v308"_4cc,
             "v408"_4cc, "v216"_4cc, "v210"_4cc, "yuvu"_4cc, "yuvs"_4cc, "v410"_4cc});
}

Boolean QT_IsRGB_CodecType(OSType type) {
  return IsOneOf(type, {"raw "_4cc, "rle "_4cc, "Mczm"_4cc, "png "_4cc, "b64a"_4cc, "b48r"_4cc,
                        "b32a"_4cc, "b16g"_4cc, "WRLE"_4cc, "WRAW"_4cc});
}

Boolean QT_IsDV_CodecType(OSType type) {
  return IsOneOf(type, {"dvc "_4cc, "dvcp"_4cc, "dvpp"_4cc, "dv5n"_4cc, "dv5p"_4cc});
}

Boolean QT_IsJPEG_CodecType(OSType type) {
  return IsOneOf(type, {"jpeg"_4cc, "mjpa"_4cc, "mjpb"_4cc, "avr "_4cc, "dmb1"_4cc});
}

Boolean QT_IsDVCProHD_CodecType(OSType type) {
  return IsOneOf(type, {"dvh5"_4cc, "dvh6"_4cc, "dvhp"_4cc, "dvhq"_4cc});
}

Boolean QT_IsHDV_CodecType(OSType type) {
  return type >= "hdv1"_4cc && type <= "hdv6"_4cc;
}

Boolean QT_IsXDCAM_CodecType(OSType type) {
  return IsOneOf(type, {"xdv2"_4cc, "xdv3"_4cc, "xdv6"_4cc, "xdv7"_4cc, "xdv8"_4cc});
}

Boolean QT_IsProRes422CodecType(OSType type) {
  return IsOneOf(type, {"apch"_4cc, "apcn"_4cc, "apcs"_4cc});
}

Boolean QT_IsAvidDNxHD_CodecType(OSType type) {
  return IsOneOf(type, {"AVdn"_4cc, "AVdh"_4cc, "AVds"_4cc});
}

Boolean QT_IsIMX_CodecType(OSType type) {
  return IsOneOf(type, {"mx3n"_4cc, "mx4n"_4cc, "mx5n"_4cc, "mx3p"_4cc, "mx4p"_4cc, "mx5p"_4cc});
}

Boolean QT_CTypeHasEnforcedDims(OSType type) {
  return IsOneOf(
      type, {"dvc "_4cc, "dvpp"_4cc, "dv5n"_4cc, "dv5p"_4cc, "dvhp"_4cc, "dvh6"_4cc, "dvh5"_4cc});
}

Boolean QT_IsFixedSizeCompressor(OSType type) {
  return QT_IsYC_CodecType(type) || type == "raw "_4cc || QT_IsDV_CodecType(type);
}

Boolean QT_CodecWantsY420_hardcoded(OSType type) {
  return type == "xdve"_4cc || QT_IsXDCAM_CodecType(type);
}

Boolean QT_Is_iDeviceSubType(OSType type) {
  return IsOneOf(type, {"M4V "_4cc, "M4VH"_4cc, "M4VP"_4cc, "iphE"_4cc});
}
