#include "QT_Codec_Rates.h"

#include <algorithm>
#include <cstring>

#include "GL_Math_Numbers.h"
#include "GL_QuickDraw.h"
#include "GL_QuickDraw_Fit.h"

namespace {

constexpr OSType kDevice = "M4V "_4cc;
constexpr OSType kDeviceLarge = "M4VH"_4cc;
constexpr OSType kDeviceWide = "M4VP"_4cc;
constexpr OSType kPhone = "iphE"_4cc;

/// Cut to unsigned 32 bits.
UInt32 Cut(double value) {
  return static_cast<UInt32>(std::clamp(value, 0.0, 4294967295.0));
}

double BitsPerPixel(SInt32 width, SInt32 height) {
  struct Size {
    SInt32 width, height;
    double bits;
  };
  constexpr Size kSizes[] = {{720, 480, 6},  {720, 486, 6},   {720, 576, 5.9},  {1280, 1080, 4.5},
                             {1280, 720, 4}, {1440, 1080, 4}, {1920, 1080, 3.5}};
  for (const Size& size : kSizes)
    if (size.width == width && size.height == height) return size.bits;
  constexpr double kOther = 5;
  return kOther;
}

/// Megabits a second of one rate; a height of 0 is any.
struct MegabitsRow {
  float rate;
  SInt32 height;
  UInt32 high, normal, small;
};
constexpr MegabitsRow kMegabits[] = {{59.94F, 0, 220, 145, 145}, {50, 0, 185, 120, 120},
                                     {25, 1080, 185, 120, 36},   {25, 0, 60, 60, 60},
                                     {24, 1080, 175, 115, 36},   {24, 0, 90, 60, 60}};

UInt32 MegabitsOf(const MegabitsRow& row, OSType type) {
  switch (type) {
    case "AVdh"_4cc:
      return row.high;
    case "AVdn"_4cc:
      return row.normal;
    case "AVds"_4cc:
      return row.small;
    default:
      return 0;
  }
}

/// A line from one rate to another over a span of pixels, and on.
struct RateLine {
  OSType subtype;
  UInt32 start;  ///< pixels
  float length;
  float from;
  float to;
};
constexpr RateLine kRateLines[] = {{kDevice, 76800, 230400, 112000, 203500},
                                   {kDeviceWide, 76800, 96000, 103500, 128500},
                                   {kDeviceLarge, 407040, 514560, 391000, 641000},
                                   {kDeviceLarge, 76800, 330240, 112000, 391000}};

}  // namespace

UInt32 QT_GetProRes422HQ_DataRate(float frameRate, SInt32 width, SInt32 height) {
  return Cut(BitsPerPixel(width, height) * static_cast<double>(frameRate) * width * height / 8);
}

UInt32 QT_GetProRes422DataRate(float frameRate, SInt32 width, SInt32 height) {
  return QT_GetProRes422HQ_DataRate(frameRate, width, height) * 2 / 3;
}

UInt32 QT_GetProRes422LT_DataRate(float frameRate, SInt32 width, SInt32 height) {
  return QT_GetProRes422HQ_DataRate(frameRate, width, height) * 14 / 30;
}

UInt32 QT_GetAvidDNxHD_DataRate(OSType codecType, float frameRate, SInt32 height) {
  constexpr float kDistance = 0.1F;
  constexpr UInt32 kBytesOfMegabit = 131072;
  for (const MegabitsRow& row : kMegabits) {
    if (row.height != 0 && row.height != height) continue;
    if (GL_FloatsEqualByAbsDiff(frameRate, row.rate, kDistance))
      return MegabitsOf(row, codecType) * kBytesOfMegabit;
  }
  return 0;
}

UInt32 QT_GetDVCProHD_DataRate(float frameRate) {
  if (frameRate <= 24) return 6000000;
  return frameRate < 50 ? 7000000 : 14000000;
}

UInt32 QT_GetAIC_DataRate(SInt32 width, SInt32 height) {
  return Cut(static_cast<double>(width) * height / 4);
}

UInt32 QT_GetJPEG_DataRate(UInt32 quality, SInt32 width, SInt32 height) {
  constexpr UInt32 kHighest = 1022;
  const float factor = quality <= kHighest ? 8.439429F : 14.949845F;
  return Cut(static_cast<double>(static_cast<float>(width) * static_cast<float>(height) * factor));
}

UInt32 QT_GetIMX_DataRate(SInt32 /*width*/, SInt32 /*height*/, OSType codecType) {
  switch (codecType) {
    case "mx3n"_4cc:
    case "mx3p"_4cc:
      return 3750000;
    case "mx4n"_4cc:
    case "mx4p"_4cc:
      return 5000000;
    case "mx5n"_4cc:
    case "mx5p"_4cc:
      return 7500000;
    default:
      return 0;
  }
}

void QT_Get_iDeviceBox(OSType subtype, Boolean small, float frameRate, Rect* box) {
  constexpr float kFilm = 24.999F;
  *box = {};
  if (subtype == kDevice)
    *box = small ? Rect{0, 0, 240, 320} : Rect{0, 0, 480, 640};
  else if (subtype == kPhone)
    *box = {0, 0, 144, 176};
  else if (subtype == kDeviceWide)
    *box = {0, 0, 360, 480};
  else if (subtype == kDeviceLarge)
    *box = frameRate < kFilm ? Rect{0, 0, 720, 1280} : Rect{0, 0, 540, 960};
}

void QT_ScaleTo_iDeviceBox(OSType subtype, Boolean small, float frameRate, const Rect* source,
                           Boolean scaleUp, Rect* out) {
  Rect box;
  QT_Get_iDeviceBox(subtype, small, frameRate, &box);
  const SInt32 width = source->right - source->left;
  const SInt32 height = source->bottom - source->top;
  const bool is_larger = width > box.right || height > box.bottom;
  const bool is_smaller = width < box.right && height < box.bottom;
  if (is_larger || (is_smaller && scaleUp))
    GL_FitRectInBox(source, &box, out, nullptr, nullptr);
  else if (!is_smaller)
    *out = *source;
}

UInt32 QT_Get_iDeviceDataRate(OSType subtype, SInt32 width, SInt32 height) {
  if (subtype == kPhone) return 10000;
  const SInt64 pixels = SInt64{width} * height;
  UInt32 below = 0;
  for (const RateLine& line : kRateLines) {
    if (line.subtype != subtype) continue;
    below = static_cast<UInt32>(line.from);
    if (pixels < line.start) continue;
    const float t = static_cast<float>(pixels - line.start) / line.length;
    return Cut(static_cast<double>(t * line.to + (1 - t) * line.from));
  }
  return below;
}

float QT_Get_iDeviceFrameRate(OSType subtype, SInt32 height, float frameRate) {
  if (subtype == kPhone) return 15;
  const bool is_hd = subtype == kDeviceLarge && height >= 720;
  return std::min(frameRate, is_hd ? 24.0F : 30.0F);
}

OSType GL_NameToFourCC(const char* name) {
  constexpr UInt32 kLetters = 52;
  UInt32 sums[4] = {};
  for (UInt32 i = 0; name[i] != 0; ++i) {
    const auto byte = static_cast<UInt32>(static_cast<SInt32>(static_cast<SInt8>(name[i])));
    sums[i % 2] += byte;
    sums[2 + i % 2] += byte * i;
  }
  char letters[4];
  for (int i = 0; i < 4; ++i) {
    const UInt32 letter = sums[i] % kLetters;
    letters[i] = static_cast<char>(letter < 26 ? 'a' + letter : 'A' + (letter - 26));
  }
  OSType code = 0;
  std::memcpy(&code, letters, sizeof code);
  return code;
}
