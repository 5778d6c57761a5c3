#include "CO_Basic.h"

#include <algorithm>

#include "CO_Ranges.h"
#include "CO_Sanitize.h"
#include "GL_CF.h"
#include "rounding_private.h"

namespace {

using namespace quillmere::color;

template <class Number>
struct Triple {
  Number x, y, z;
};

template <class Number>
Triple<Number> ToYCbCr(Number r, Number g, Number b, Number kr, Number kg, Number kb) {
  const Number y = kr * r + kg * g + kb * b;
  return {y, Number(0.5) / (1 - kb) * (b - y), Number(0.5) / (1 - kr) * (r - y)};
}

template <class Number>
Triple<Number> ToRGB(Number y, Number cb, Number cr, Number kr, Number kg, Number kb) {
  return {y + 2 * (1 - kr) * cr, y - 2 * (1 - kb) * (kb / kg) * cb - 2 * (1 - kr) * (kr / kg) * cr,
          y + 2 * (1 - kb) * cb};
}

bool IsFullRange(SInt32 range_type) {
  return range_type == kCO_FullRange || range_type == kCO_WideRange;
}

UInt8 Limited(SInt32 value) {
  return static_cast<UInt8>(std::clamp(value, 0, 255));
}

UInt8 Wrapped(SInt32 value) {
  return static_cast<UInt8>(value);
}

/// 250 times the luma of ITU-R BT.601.
SInt32 LumaTimes250(const CO_RGB8& rgb) {
  return (299 * rgb.r + 587 * rgb.g + 114 * rgb.b + 2) >> 2;
}

UInt8 VideoCode(double value) {
  return std::clamp<UInt8>(Cut<UInt8>(value), 1, 254);
}

UInt8 CutByte(float value) {
  return Cut<UInt8>(static_cast<double>(value));
}

}  // namespace

void CO_RGBToYCbCr(const double* rgb, const double* coefficients, double* yCbCr) {
  CO_RGBToYCbCrD(rgb[0], rgb[1], rgb[2], coefficients[0], coefficients[1], coefficients[2],
                 &yCbCr[0], &yCbCr[1], &yCbCr[2]);
}

void CO_RGBToYCbCrD(double r, double g, double b, double kr, double kg, double kb, double* y,
                    double* cb, double* cr) {
  const Triple<double> out = ToYCbCr(r, g, b, kr, kg, kb);
  *y = out.x;
  *cb = out.y;
  *cr = out.z;
}

void CO_RGB_F32toYCbCrF32(const CO_RGB_F32* rgb, const float* coefficients, CO_YCbCrF32* out) {
  const Triple<float> made =
      ToYCbCr(rgb->r, rgb->g, rgb->b, coefficients[0], coefficients[1], coefficients[2]);
  *out = {made.x, made.y, made.z};
}

void CO_YCbCrToRGB(const double* yCbCr, const double* coefficients, double* rgb) {
  CO_YCbCrToRGB_D(yCbCr[0], yCbCr[1], yCbCr[2], coefficients[0], coefficients[1], coefficients[2],
                  &rgb[0], &rgb[1], &rgb[2]);
}

void CO_YCbCrToRGB_D(double y, double cb, double cr, double kr, double kg, double kb, double* r,
                     double* g, double* b) {
  const Triple<double> out = ToRGB(y, cb, cr, kr, kg, kb);
  *r = out.x;
  *g = out.y;
  *b = out.z;
}

void CO_YCbCrF32toRGB_F32(const CO_YCbCrF32* yCbCr, const float* coefficients, CO_RGB_F32* out) {
  const Triple<float> made =
      ToRGB(yCbCr->y, yCbCr->cb, yCbCr->cr, coefficients[0], coefficients[1], coefficients[2]);
  *out = {made.x, made.y, made.z};
}

void CO_YCbCr8toRGB_F32(const CO_YCbCr8* yCbCr, const float* coefficients, CO_RGB_F32* out) {
  const CO_YCbCrF32 wide = {static_cast<float>(yCbCr->y), static_cast<float>(yCbCr->cb),
                            static_cast<float>(yCbCr->cr)};
  CO_YCbCrF32toRGB_F32(&wide, coefficients, out);
}

void CO_RGB8ToYCbCr8(const CO_RGB8* rgb, CO_YCbCr8* out) {
  const SInt32 t = LumaTimes250(*rgb);
  *out = {Wrapped((16777 * t + 2097152) >> 22),
          static_cast<SInt8>((18936 * (250 * rgb->b - t) + 4194304) >> 23),
          static_cast<SInt8>((23933 * (250 * rgb->r - t) + 4194304) >> 23)};
}

void CO_RGB8_ToYCbCrU8(const CO_RGB8* rgb, CO_YCbCrU8* out) {
  const SInt32 t = LumaTimes250(*rgb);
  *out = {Wrapped(((28817 * t + 4194304) >> 23) + 16),
          Wrapped(((16634 * (250 * rgb->b - t) + 4194304) >> 23) - 128),
          Wrapped(((21024 * (250 * rgb->r - t) + 4194304) >> 23) - 128)};
}

void CO_YCbCr8ToRGB8(const CO_YCbCr8* yCbCr, CO_RGB8* out) {
  const SInt32 y = yCbCr->y;
  const SInt32 cb = yCbCr->cb;
  const SInt32 cr = yCbCr->cr;
  const SInt32 red = (500 * y + 701 * cr + 4) >> 2;
  const SInt32 blue = (500 * y + 886 * cb + 4) >> 2;
  const SInt32 green = (293500 * y - 209599 * cr - 101004 * cb + 128) >> 12;
  *out = {Limited((red * 33554 + 2097152) >> 22), Limited((green * 29267 + 1048576) >> 21),
          Limited((blue * 33554 + 2097152) >> 22)};
}

void CO_YCbCrU8ToRGB8(const CO_YCbCrU8* yCbCr, CO_RGB8* out) {
  const SInt32 y = yCbCr->y;
  const SInt32 cb = yCbCr->cb;
  const SInt32 cr = yCbCr->cr;
  const SInt32 red = (1904000 * y + 2609823 * cr - 364513152) >> 14;
  const SInt32 blue = (952000 * y + 1649289 * cb - 226336896) >> 13;
  const SInt32 green = (4365812 * y - 3048192 * cr - 1468898 * cb + 508367296) >> 16;
  *out = {Limited((red * 21013 + 1048576) >> 21), Limited((green * 36656 + 1048576) >> 21),
          Limited((blue * 21013 + 1048576) >> 21)};
}

void CO_YCbCrToYCbCrU8(const CO_YCbCr8* in, CO_YCbCrU8* out) {
  const auto chroma = [](SInt8 c) {
    const SInt32 u = 224 * c;
    return Wrapped((((u >> 8) + u + 128) >> 8) - 128);
  };
  const SInt32 t = 219 * in->y;
  *out = {Wrapped(((t + (t >> 8) + 128) >> 8) + 16), chroma(in->cb), chroma(in->cr)};
}

void CO_YCbCrU8ToYCbCr(const CO_YCbCrU8* in, CO_YCbCr8* out) {
  *out = {CO_8bitUIntVRToFR(in->y), CO_8bitSIntVRToFR(in->cb), CO_8bitSIntVRToFR(in->cr)};
}

void CO_YCbCrToYCbCrU8_FR(const CO_YCbCr8* in, CO_YCbCrU8* out) {
  *out = {in->y, Wrapped(in->cb - 128), Wrapped(in->cr - 128)};
}

void CO_YCbCrU8_FRtoVR(const CO_YCbCrU8* in, CO_YCbCrU8* out) {
  const auto chroma = [](UInt8 c) { return Wrapped(((224 * c - 28672) >> 8) - 128); };
  *out = {Wrapped(((219 * in->y + 128) >> 8) + 16), chroma(in->cb), chroma(in->cr)};
}

void CO_YCbCrU8_VRtoFR(const CO_YCbCrU8* in, CO_YCbCrU8* out) {
  const auto chroma = [](UInt8 c) { return Limited((255 * c - 32640) / 224 + 128); };
  *out = {Limited((255 * in->y - 4080) / 219), chroma(in->cb), chroma(in->cr)};
}

void CO_YCbCrU8toYCbCrF32(const CO_YCbCrU8* in, CO_YCbCrF32* out) {
  const auto chroma = [](UInt8 c) { return static_cast<float>(c - 128) * 1.1383928F; };
  *out = {static_cast<float>(in->y - 16) * 1.1643835F + 16, chroma(in->cb), chroma(in->cr)};
}

void CO_YCbCrF32_StoU(const CO_YCbCrF32* in, SInt32 rangeType, CO_YCbCrF32* out) {
  if (IsFullRange(rangeType))
    *out = {in->y, in->cb + 128, in->cr + 128};
  else
    *out = {0.85882354F * in->y + 16, 0.8784314F * in->cb + 128, 0.8784314F * in->cr + 128};
}

void CO_YCbCrF32toU8(const CO_YCbCrF32* in, CO_YCbCrU8* out) {
  float color[] = {in->y, in->cb, in->cr};
  CO_PullInto255(color, 0);
  *out = {CutByte(color[0] + 0.499F), CutByte(color[1] + 0.499F), CutByte(color[2] + 0.499F)};
}

void CO_RGB_F32toYCbCrU8(const CO_RGB_F32* rgb, const float* coefficients, SInt32 rangeType,
                         CO_YCbCrU8* out) {
  CO_YCbCrF32 color;
  CO_RGB_F32toYCbCrF32(rgb, coefficients, &color);
  CO_YCbCrF32_StoU(&color, rangeType, &color);
  CO_YCbCrF32toU8(&color, out);
}

void CO_RGB_F32_NormTo8bit(CO_RGB_F32* rgb, SInt32 rangeType) {
  const bool is_full = rangeType == kCO_FullRange;
  for (float* component : {&rgb->r, &rgb->g, &rgb->b})
    *component = is_full ? *component * 255 : *component * 224 + 16;
}

void CO_RGB_F32toARGB8(UInt8 alpha, const CO_RGB_F32* rgb, CO_ARGB8* out) {
  const auto byte = [](float x) { return CutByte(std::clamp(x, 0.0F, 255.0F) + 0.499F); };
  *out = {alpha, byte(rgb->r), byte(rgb->g), byte(rgb->b)};
}

void CO_RGBColortoARGB8(UInt8 alpha, const RGBColor* rgb, CO_ARGB8* out) {
  *out = {alpha, CO_16bitUIntTo8bitUInt(rgb->red), CO_16bitUIntTo8bitUInt(rgb->green),
          CO_16bitUIntTo8bitUInt(rgb->blue)};
}

void CO_RGB16ToYCbCr8(RGBColor rgb, const double* coefficients, SInt32 rangeType, UInt8* out) {
  const double unit[] = {CO_UIntToUnitInterval(rgb.red, 16), CO_UIntToUnitInterval(rgb.green, 16),
                         CO_UIntToUnitInterval(rgb.blue, 16)};
  double color[3];
  CO_RGBToYCbCr(unit, coefficients, color);
  if (IsFullRange(rangeType)) {
    out[0] = Cut<UInt8>(std::clamp(color[0], 0.0, 1.0) * 255 + 0.5);
    for (int i = 1; i < 3; ++i)
      out[i] = static_cast<UInt8>(Cut<SInt8>(std::clamp(color[i], -0.5, 0.5) * 254 + 0.5));
  } else {
    out[0] = VideoCode(219 * color[0] + 0.5 + 16);
    for (int i = 1; i < 3; ++i)
      out[i] = VideoCode(224 * color[i] + 0.5 + 128);
  }
}

void CO_YCbCr8ToRGB16(UInt8 y, UInt8 cb, UInt8 cr, const double* coefficients, SInt32 rangeType,
                      RGBColor* out) {
  const bool is_full = IsFullRange(rangeType);
  const auto chroma = [=](UInt8 c) {
    return is_full ? CO_SIntToUnitInterval(static_cast<SInt8>(c), 8)
                   : CO_SIntVRToUnitInterval(c, 8, 1);
  };
  const double luma =
      is_full ? CO_UIntToUnitInterval(y, 8) : std::clamp((y - 16) / 219.0, 0.0, 1.0);
  const double color[] = {luma, chroma(cb), chroma(cr)};
  double rgb[3];
  CO_YCbCrToRGB(color, coefficients, rgb);
  const auto word = [](double x) { return Cut<UInt16>(std::clamp(x, 0.0, 1.0) * 65535 + 0.5); };
  *out = {word(rgb[0]), word(rgb[1]), word(rgb[2])};
}

void CO_AddRGB_F32(const CO_RGB_F32* a, const CO_RGB_F32* b, CO_RGB_F32* out) {
  *out = {a->r + b->r, a->g + b->g, a->b + b->b};
}

void CO_AddYCbCrF32(const CO_YCbCrF32* a, const CO_YCbCrF32* b, CO_YCbCrF32* out) {
  *out = {a->y + b->y, a->cb + b->cb, a->cr + b->cr};
}

void CO_SubRGB_F32(const CO_RGB_F32* a, const CO_RGB_F32* b, CO_RGB_F32* out) {
  *out = {a->r - b->r, a->g - b->g, a->b - b->b};
}

void CO_SubYCbCrF32(const CO_YCbCrF32* a, const CO_YCbCrF32* b, CO_YCbCrF32* out) {
  *out = {a->y - b->y, a->cb - b->cb, a->cr - b->cr};
}

void CO_ScaleRGB_F32(CO_RGB_F32* rgb, float factor) {
  *rgb = {rgb->r * factor, rgb->g * factor, rgb->b * factor};
}

void CO_ScaleYCbCrF32(CO_YCbCrF32* a, const CO_YCbCrF32* b) {
  *a = {a->y * b->y, a->cb * b->cb, a->cr * b->cr};
}

void CO_ScaleRGB(RGBColor* rgb, float factor) {
  for (UInt16* component : {&rgb->red, &rgb->green, &rgb->blue})
    *component = Cut<UInt16>(static_cast<double>(static_cast<float>(*component) * factor));
}

void CO_ScaleYCbCrU8(const CO_YCbCrU8* in, float factor, CO_YCbCrU8* out) {
  const auto scaled = [=](UInt8 value, int zero) {
    return CutByte(static_cast<float>(value - zero) * factor + static_cast<float>(zero));
  };
  *out = {scaled(in->y, 16), scaled(in->cb, 128), scaled(in->cr, 128)};
}

void CO_BlendYCbCrU8(const CO_YCbCrU8* a, const CO_YCbCrU8* b, float part, CO_YCbCrU8* out) {
  const auto mixed = [=](UInt8 x, UInt8 y, int zero) {
    return static_cast<float>(x - zero) * (1 - part) + static_cast<float>(y - zero) * part;
  };
  *out = {CutByte(mixed(a->y, b->y, 0) + 0.49F), CutByte(mixed(a->cb, b->cb, 128) + 128),
          CutByte(mixed(a->cr, b->cr, 128) + 128)};
}

void CO_InitRGB8_F32(CO_RGB_F32* out, float r, float g, float b) {
  *out = {r, g, b};
}

void CO_RGB_F32toARGB_F32(const CO_RGB_F32* rgb, float alpha, CO_ARGB_F32* out) {
  *out = {alpha, rgb->r, rgb->g, rgb->b};
}

void CO_ARGB_F32toRGB_F32(const CO_ARGB_F32* argb, CO_RGB_F32* out) {
  *out = {argb->r, argb->g, argb->b};
}

Boolean CO_EqualColor8(const CO_YCbCr8* a, const CO_YCbCr8* b) {
  return a->y == b->y && a->cb == b->cb && a->cr == b->cr;
}

Boolean CO_EqualColorU8(const CO_YCbCrU8* a, const CO_YCbCrU8* b) {
  return a->y == b->y && a->cb == b->cb && a->cr == b->cr;
}

UInt32 CO_ColorDiff(UInt32 a, UInt32 b) {
  UInt32 sum = 0;
  for (int shift = 0; shift < 24; shift += 8) {
    const UInt32 x = (a >> shift) & 0xFF;
    const UInt32 y = (b >> shift) & 0xFF;
    sum += x > y ? x - y : y - x;
  }
  return sum;
}

void CO_SetRGB8_Br(const CO_RGB8* rgb, UInt8 brightness, CO_RGB8* out) {
  const SInt32 luma = (299 * rgb->r + 587 * rgb->g + 114 * rgb->b + 500) / 1000;
  const UInt8 largest = std::max({rgb->r, rgb->g, rgb->b});
  if (luma == 0) {
    *out = {brightness, brightness, brightness};
    return;
  }
  const auto scaled = [&](float factor) {
    const auto byte = [=](UInt8 x) { return CutByte(static_cast<float>(x) * factor); };
    return CO_RGB8{byte(rgb->r), byte(rgb->g), byte(rgb->b)};
  };
  const float enough = static_cast<float>(brightness) / static_cast<float>(luma);
  if (static_cast<float>(largest) * enough <= 255) {
    *out = scaled(enough);
    return;
  }
  const float most = 255.0F / static_cast<float>(largest);
  const CO_RGB8 brightest = scaled(most);
  const SInt32 left = 255 - CutByte(static_cast<float>(luma) * most);
  const float u = left > 0 ? static_cast<float>(255 - brightness) / static_cast<float>(left) : 1;
  const auto mixed = [=](UInt8 x) { return CutByte(static_cast<float>(x) * u + (1 - u) * 255); };
  *out = {mixed(brightest.r), mixed(brightest.g), mixed(brightest.b)};
}

void CO_BrRGB8toYCbCrU8(const CO_RGB8* rgb, UInt8 brightness, CO_YCbCrU8* out) {
  CO_RGB8 color;
  CO_SetRGB8_Br(rgb, brightness, &color);
  CO_RGB8_ToYCbCrU8(&color, out);
}

CFDictionaryRef CO_CopyYCbCr8ToDict(const CO_YCbCr8* yCbCr) {
  CFNumberRef luma = CF_CreateUInt8Ref(yCbCr->y);
  if (luma == nullptr) return nullptr;
  CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(nullptr);
  if (dictionary != nullptr) {
    CFDictionarySetValue(dictionary, CFSTR("Y"), luma);
    CF_AddSInt8ToDict(dictionary, CFSTR("Cb"), yCbCr->cb);
    CF_AddSInt8ToDict(dictionary, CFSTR("Cr"), yCbCr->cr);
  }
  CFRelease(luma);
  return dictionary;
}

void CO_GetYCbCr8FromDict(CFDictionaryRef dictionary, CO_YCbCr8* out) {
  CF_GetUInt8FromDict(dictionary, CFSTR("Y"), &out->y);
  CF_GetSInt8FromDict(dictionary, CFSTR("Cb"), &out->cb);
  CF_GetSInt8FromDict(dictionary, CFSTR("Cr"), &out->cr);
}
