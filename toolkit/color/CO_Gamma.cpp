#include "CO_Gamma.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "CO_Ranges.h"
#include "GL_Math_Numbers.h"

namespace {

constexpr float kLeastGamma = 0.001F;
constexpr int kChannels = 3;

/// A power with a straight piece near black.
struct BrokenCurve {
  double coded_break;   ///< below it a coded value is on the straight piece
  double linear_break;  ///< below it linear light is
  double slope;         ///< of the straight piece, coded over linear
  double offset;
  double scale;  ///< 1 + offset
  double decoding_power;
  double encoding_power;

  double Decode(double x) const {
    return x < coded_break ? x / slope : GL_PowExt((x + offset) / scale, decoding_power);
  }
  double Encode(double light) const {
    return light < linear_break ? slope * light : scale * GL_PowExt(light, encoding_power) - offset;
  }
};

constexpr BrokenCurve kBT709 = {0.081, 0.018, 4.5, 0.099, 1.099, 2.2222222222222223, 0.45};
constexpr BrokenCurve kSRGB = {0.03928, 0.00304, 12.92, 0.055, 1.055, 2.4, 0.4166666666666667};
constexpr BrokenCurve kSMPTE240M = {0.0912, 0.0228, 4, 0.1115, 1.1115, 2.2222222222222223, 0.45};

/// The curve of an index: a power of the coded value, then a broken curve; either may be none.
struct IndexedCurve {
  SInt32 index;
  const BrokenCurve* broken;
  double decoding_power;
  double encoding_power;

  double Decode(double x) const {
    if (decoding_power != 1) x = GL_PowExt(x, decoding_power);
    return broken != nullptr ? broken->Decode(x) : x;
  }
  double Encode(double light) const {
    const double x = broken != nullptr ? broken->Encode(light) : light;
    return encoding_power != 1 ? GL_PowExt(x, encoding_power) : x;
  }
};

constexpr IndexedCurve kIndexedCurves[] = {
    {kCO_TransferBT709, &kBT709, 1, 1},
    {kCO_TransferSRGB, &kSRGB, 1, 1},
    {kCO_TransferPower1_8, nullptr, 1.8, 0.5555555555555556},
    {kCO_TransferLinear, nullptr, 1, 1},
    {kCO_TransferSMPTE240M, &kSMPTE240M, 1, 1},
    {kCO_TransferBT709OnPower, &kBT709, 0.8181818181818181, 1.2222222222222223},
    {kCO_TransferPower2_2, nullptr, 2.2, 0.45454545454545453},
    {kCO_TransferPower1_961, nullptr, 1.961, 0.5099439061703213}};

const IndexedCurve* FindCurve(SInt32 index) {
  const auto* found = std::find_if(std::begin(kIndexedCurves), std::end(kIndexedCurves),
                                   [=](const IndexedCurve& curve) { return curve.index == index; });
  return found != std::end(kIndexedCurves) ? found : nullptr;
}

bool IsParametric(const GammaData& data) {
  return data.paraGamma > kLeastGamma;
}

bool IsTable(const GammaData& data) {
  return data.tableCount >= 2;
}

bool HasCurve(const GammaData& data) {
  if (IsParametric(data)) return data.paraType <= 4;
  return IsTable(data) ? data.table != nullptr : data.gamma > kLeastGamma;
}

/// A parametric curve in double precision.
struct Parameters {
  UInt32 type;
  double g, a, b, c, d, e, f;

  explicit Parameters(const GammaData& data)
      : type(data.paraType),
        g(static_cast<double>(data.paraGamma)),
        a(static_cast<double>(data.paraA)),
        b(static_cast<double>(data.paraB)),
        c(static_cast<double>(data.paraC)),
        d(static_cast<double>(data.paraD)),
        e(static_cast<double>(data.paraE)),
        f(static_cast<double>(data.paraF)) {}

  double Power(double x) const { return std::pow(a * x + b, g); }
  double Root(double light) const { return (std::pow(light, 1 / g) - b) / a; }

  double Decode(double x) const {
    switch (type) {
      case 0:
        return std::pow(x, g);
      case 1:
        return x > -b / a ? Power(x) : 0;
      case 2:
        return x > -b / a ? c + Power(x) : c;
      case 3:
        return x > d ? Power(x) : c * x;
      default:
        return x > d ? e + Power(x) : c * x + f;
    }
  }
  double Encode(double light) const {
    switch (type) {
      case 0:
        return std::pow(light, 1 / g);
      case 1:
        return Root(light);
      case 2:
        return Root(light - c);
      case 3:
        return light > Power(d) ? Root(light) : light / c;
      default:
        return light > e + Power(d) ? Root(light - e) : (light - f) / c;
    }
  }
};

float LookUp(const GammaData& data, float x) {
  const UInt32 last = data.tableCount - 1;
  const float place = x * static_cast<float>(last);
  if (!(place > 0)) return data.table[0];
  if (place >= static_cast<float>(last)) return data.table[last];
  return data.table[static_cast<UInt32>(place)];
}

float LookUpInverse(const GammaData& data, float light) {
  UInt32 low = 0;
  UInt32 high = data.tableCount - 1;
  while (high - low > 1) {
    const UInt32 middle = low + (high - low) / 2;
    (light > data.table[middle] ? low : high) = middle;
  }
  const float step = data.table[low + 1] - data.table[low];
  // A level piece has no inverse: its start stands for it.
  const float part = step != 0 ? (light - data.table[low]) / step : 0;
  return (static_cast<float>(low) + part) / static_cast<float>(data.tableCount - 1);
}

float Decode(const GammaData& data, float x) {
  if (IsParametric(data))
    return static_cast<float>(Parameters(data).Decode(static_cast<double>(x)));
  if (IsTable(data)) return LookUp(data, x);
  return static_cast<float>(std::pow(static_cast<double>(x), static_cast<double>(data.gamma)));
}

float Encode(const GammaData& data, float light) {
  const auto wide = static_cast<double>(light);
  if (IsParametric(data)) return static_cast<float>(Parameters(data).Encode(wide));
  if (IsTable(data)) return LookUpInverse(data, light);
  return static_cast<float>(std::pow(wide, 1 / static_cast<double>(data.gamma)));
}

bool IsByData(SInt32 index) {
  return index == kCO_TransferByData || index == kCO_TransferUnspecified;
}

const GammaData* ChannelOf(const GammaData* triple, int channel) {
  return triple != nullptr ? triple + channel : nullptr;
}

}  // namespace

SInt32 CO_ConvertGammaNormF32_indexed(float value, SInt32 sourceIndex, float* out,
                                      SInt32 destinationIndex) {
  if (sourceIndex == destinationIndex) {
    *out = value;
    return noErr;
  }
  const IndexedCurve* source = FindCurve(sourceIndex);
  const IndexedCurve* destination = FindCurve(destinationIndex);
  if (source == nullptr || destination == nullptr) return paramErr;
  const auto light = static_cast<float>(source->Decode(static_cast<double>(value)));
  *out = static_cast<float>(destination->Encode(static_cast<double>(light)));
  return noErr;
}

SInt32 CO_ConvertGammaNormRGB_F32_indexed(const float* in, SInt32 sourceIndex, float* out,
                                          SInt32 destinationIndex) {
  for (int i = 0; i < kChannels; ++i) {
    const SInt32 status =
        CO_ConvertGammaNormF32_indexed(in[i], sourceIndex, &out[i], destinationIndex);
    if (status != noErr) return status;
  }
  return noErr;
}

SInt32 CO_ConvertGammaNormF32_bydata(float value, const GammaData* source, float* out,
                                     const GammaData* destination) {
  if (source == nullptr || destination == nullptr || !HasCurve(*source) || !HasCurve(*destination))
    return paramErr;
  *out = Encode(*destination, Decode(*source, value));
  return noErr;
}

SInt32 CO_ConvertGammaNormRGB_F32_bydata(const float* in, const GammaData* source, float* out,
                                         const GammaData* destination) {
  for (int i = 0; i < kChannels; ++i) {
    const SInt32 status = CO_ConvertGammaNormF32_bydata(in[i], ChannelOf(source, i), &out[i],
                                                        ChannelOf(destination, i));
    if (status != noErr) return status;
  }
  return noErr;
}

SInt32 CO_ConvertGammaNormF32(float value, const GammaData* source, SInt32 sourceIndex,
                              const GammaData* destination, SInt32 destinationIndex, float* out) {
  constexpr GammaData kLinear = {1, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0};
  if (sourceIndex == destinationIndex && !IsByData(sourceIndex)) {
    *out = value;
    return noErr;
  }
  float light = 0;
  SInt32 status =
      IsByData(sourceIndex)
          ? CO_ConvertGammaNormF32_bydata(value, source, &light, &kLinear)
          : CO_ConvertGammaNormF32_indexed(value, sourceIndex, &light, kCO_TransferLinear);
  if (status != noErr) return status;
  return IsByData(destinationIndex)
             ? CO_ConvertGammaNormF32_bydata(light, &kLinear, out, destination)
             : CO_ConvertGammaNormF32_indexed(light, kCO_TransferLinear, out, destinationIndex);
}

SInt32 CO_ConvertGammaNormRGB_F32(const float* in, const GammaData* source, SInt32 sourceIndex,
                                  const GammaData* destination, SInt32 destinationIndex,
                                  float* out) {
  float converted[kChannels] = {};
  for (int i = 0; i < kChannels; ++i) {
    const SInt32 status =
        CO_ConvertGammaNormF32(in[i], ChannelOf(source, i), sourceIndex, ChannelOf(destination, i),
                               destinationIndex, &converted[i]);
    if (status != noErr) return status;
  }
  std::copy_n(converted, kChannels, out);
  return noErr;
}

void CO_SimpleGammaF32(float* rgb, float exponent) {
  for (int i = 0; i < kChannels; ++i)
    rgb[i] =
        static_cast<float>(std::pow(static_cast<double>(rgb[i]), static_cast<double>(exponent)));
}

void CO_ConvertRGBtoLinear(double r, double g, double b, double simpleGamma, SInt32 rangeType,
                           SInt32 gammaIndex, double* linearR, double* linearG, double* linearB) {
  const double peak = rangeType == kCO_VideoRange ? 219 : 255;
  const auto convert = [=](double component) {
    const double x = component / peak;
    if (gammaIndex == kCO_TransferUnspecified) return peak * std::pow(x, simpleGamma);
    auto light = static_cast<float>(x);
    CO_ConvertGammaNormF32_indexed(light, gammaIndex, &light, kCO_TransferLinear);
    return static_cast<double>(light) * peak;
  };
  *linearR = convert(r);
  *linearG = convert(g);
  *linearB = convert(b);
}

Boolean CO_EqualGamma(float a, float b) {
  const auto is_about_2_2 = [](float gamma) { return gamma > 2.19F && gamma < 2.23F; };
  return std::fabs(a - b) < 0.01F || (is_about_2_2(a) && is_about_2_2(b));
}

SInt32 CO_GetGammaTypeForSimpleGammaTransform(float source, float destination) {
  constexpr struct {
    float source;
    float destination;
    SInt32 type;
  } kTypes[] = {{1.0F, 1.8F, 2}, {1.8F, 1.0F, 3}, {1.0F, 2.2F, 4},
                {2.2F, 1.0F, 5}, {2.2F, 1.8F, 8}, {1.8F, 2.2F, 9}};
  for (const auto& known : kTypes) {
    if (CO_EqualGamma(source, known.source) && CO_EqualGamma(destination, known.destination))
      return known.type;
  }
  return 1;
}
