#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "CO_Gamma.h"
#include "CO_Ranges.h"
#include "edit_lines_private.h"

// What is compiled for several processors, widest vectors first; see vector_clones.h.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define QUILLMERE_WIDE_CLONES __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define QUILLMERE_WIDE_CLONES
#endif

namespace quillmere::color {
namespace {

constexpr std::ptrdiff_t kBlock = kBlockPixels;
using Floats = float __attribute__((vector_size(64)));
using Ints = SInt32 __attribute__((vector_size(64)));

/// Three components of sixteen pixels.
struct Triple {
  Floats a, b, c;
};

[[gnu::always_inline]] inline Floats All(float value) {
  return Floats{} + value;
}
[[gnu::always_inline]] inline Floats Smaller(Floats a, Floats b) {
  return a < b ? a : b;
}
[[gnu::always_inline]] inline Floats Larger(Floats a, Floats b) {
  return a > b ? a : b;
}

/// Of places the last four bits count.
[[gnu::always_inline]] inline Floats LookUp(const float* table, Ints places) {
  Floats values;
  std::memcpy(&values, table, sizeof values);
#ifdef __clang__
  Floats found;
  for (int i = 0; i < kBlock; ++i)
    found[i] = values[places[i] & 15];
  return found;
#else
  return __builtin_shuffle(values, places);
#endif
}

[[gnu::always_inline]] inline Floats Power(const PowerTable& table, Floats x) {
  constexpr int kMantissaBits = 23;
  constexpr int kPieceBits = 4;
  constexpr SInt32 kMantissa = (1 << kMantissaBits) - 1;
  constexpr SInt32 kOne = 0x3F800000;
  Ints bits;
  std::memcpy(&bits, &x, sizeof bits);
  const Ints piece = bits >> (kMantissaBits - kPieceBits);
  const Ints mantissa_bits = (bits & kMantissa) | kOne;
  Floats mantissa;
  std::memcpy(&mantissa, &mantissa_bits, sizeof mantissa);
  const Floats square = LookUp(table.square, piece);
  const Floats linear = LookUp(table.linear, piece);
  const Floats constant = LookUp(table.constant, piece);
  const Floats power = (square * mantissa + linear) * mantissa + constant;
  return power * LookUp(table.octave, bits >> kMantissaBits);
}

[[gnu::always_inline]] inline Floats Decode(const VectorCurve& curve, Floats coded) {
  const Floats power = Power(curve.decoding, coded + curve.offset);
  return coded < curve.coded_break ? coded * curve.inverse_slope : power;
}

[[gnu::always_inline]] inline Floats Encode(const VectorCurve& curve, Floats light) {
  const Floats power = Power(curve.encoding, light) - curve.offset;
  return light < curve.linear_break ? light * curve.slope : power;
}

/// A matrix of its own, which no store to a line can change.
struct Matrix {
  explicit Matrix(const float* elements) { std::copy_n(elements, 9, m); }
  float m[9];
};

/// Row vectors times a matrix.
[[gnu::always_inline]] inline Triple Times(const Triple& in, const Matrix& matrix) {
  const float* const m = matrix.m;
  return {in.a * m[0] + in.b * m[3] + in.c * m[6], in.a * m[1] + in.b * m[4] + in.c * m[7],
          in.a * m[2] + in.b * m[5] + in.c * m[8]};
}

/// CO_SanitizeNormYCbCrF32 of each pixel.
[[gnu::always_inline]] inline Triple Sanitised(const Triple& in, const float* k) {
  constexpr float kLeast = 0.00001F;
  constexpr float kMost = 0.9999F;
  const Floats red = 2 * (1 - k[0]) * in.c;
  const Floats blue = 2 * (1 - k[2]) * in.b;
  const Floats green = -(k[0] / k[1] * red + k[2] / k[1] * blue);
  const Floats above = 1 - in.a;
  const Floats down = Larger(Larger(-red, -blue), -green);
  const Floats up = Larger(Larger(red, blue), green);
  // The smaller of in.a / most_down and above / most_up, both at least 0.
  const Floats most_down = Larger(in.a, down);
  const Floats most_up = Larger(above, up);
  const auto is_down = in.a * most_up < above * most_down;
  Floats factor = (is_down ? in.a : above) / (is_down ? most_down : most_up);
  factor = factor > kLeast ? factor - kLeast : factor;
  const Floats none = Floats{};
  factor = in.a > kMost ? none : factor;
  const auto is_dark = !(in.a >= kLeast);
  const Floats luma = Smaller(in.a, All(kMost));
  return {is_dark ? none : luma, is_dark ? none : in.b * factor, is_dark ? none : in.c * factor};
}

/// Where three components lie, a line each.
struct Lines {
  float* a;
  float* b;
  float* c;

  Lines From(std::ptrdiff_t at) const { return {a + at, b + at, c + at}; }
};

[[gnu::always_inline]] inline Floats Load(const float* line) {
  Floats values;
  std::memcpy(&values, line, sizeof values);
  return values;
}
[[gnu::always_inline]] inline void Store(Floats values, float* line) {
  std::memcpy(line, &values, sizeof values);
}
[[gnu::always_inline]] inline Triple Load(const Lines& lines) {
  return {Load(lines.a), Load(lines.b), Load(lines.c)};
}
[[gnu::always_inline]] inline void Store(const Triple& triple, const Lines& lines) {
  Store(triple.a, lines.a);
  Store(triple.b, lines.b);
  Store(triple.c, lines.c);
}

/// The largest sum of magnitudes in a column of three by three.
double LargestColumn(const float* matrix) {
  double most = 0;
  for (int column = 0; column < 3; ++column) {
    double sum = 0;
    for (int row = 0; row < 3; ++row)
      sum += std::abs(static_cast<double>(matrix[3 * row + column]));
    most = std::max(most, sum);
  }
  return most;
}

}  // namespace

PowerTable::PowerTable(double factor, double exponent) {
  constexpr int kPieces = 16;
  const double reach = std::sqrt(0.75);  // of Chebyshev's outer nodes from the middle one
  for (int i = 0; i < kPieces; ++i) {
    const double middle = 1 + (i + 0.5) / kPieces;
    const double step = reach * 0.5 / kPieces;
    const double low = std::pow(middle - step, exponent);
    const double centre = std::pow(middle, exponent);
    const double high = std::pow(middle + step, exponent);
    const double first = (high - low) / (2 * step);
    const double second = (high - 2 * centre + low) / (2 * step * step);
    square[i] = static_cast<float>(second);
    linear[i] = static_cast<float>(first - 2 * second * middle);
    constant[i] = static_cast<float>(centre - first * middle + second * middle * middle);
    // The exponent of a float is kept with 127 added, 15 in its last four bits.
    const int power_of_two = i >= 3 && i < 15 ? i - 15 : (i + 1) % 16;
    octave[i] = static_cast<float>(factor * std::exp2(exponent * power_of_two));
  }
}

VectorCurve::VectorCurve(double codedBreak, double linearBreak, double curveSlope,
                         double curveOffset, double exponent)
    : coded_break(static_cast<float>(codedBreak)),
      linear_break(static_cast<float>(linearBreak)),
      slope(static_cast<float>(curveSlope)),
      inverse_slope(static_cast<float>(1 / curveSlope)),
      offset(static_cast<float>(curveOffset)),
      decoding_power(exponent),
      decoding(std::pow(1 + curveOffset, -exponent), exponent),
      encoding(1 + curveOffset, 1 / exponent) {}

const VectorCurve* VectorCurveOf(SInt32 index) {
  static const VectorCurve bt709(0.081, 0.018, 4.5, 0.099, 1 / 0.45);
  static const VectorCurve smpte240m(0.0912, 0.0228, 4, 0.1115, 1 / 0.45);
  static const VectorCurve srgb(0.03928, 0.00304, 12.92, 0.055, 2.4);
  switch (index) {
    case kCO_TransferBT709:
      return &bt709;
    case kCO_TransferSMPTE240M:
      return &smpte240m;
    case kCO_TransferSRGB:
      return &srgb;
    default:
      return nullptr;
  }
}

bool CanEditBlocks(const VectorCurve& from, const EditData& edit) {
  constexpr double kEnd = 15;
  // Sanitised pixels are within 1 of 0; a curve takes at most 1 beyond 1 to its power.
  const double coded = std::max(1.0, LargestColumn(edit.yuvToRgb));
  const double light = std::pow(coded, from.decoding_power);
  return coded < kEnd && light * LargestColumn(edit.rgbToRgb) < kEnd;
}

QUILLMERE_WIDE_CLONES void EditBlocks(std::ptrdiff_t blocks, const VectorCurve& from,
                                      const VectorCurve& to, const float* luma, EditData* edit) {
  // A pass for each step over pixels that stay in the nearest cache: the steps of one pixel wait
  // for each other, those of many don't.
  constexpr std::ptrdiff_t kPass = 16 * kBlock;
  alignas(64) float work[3 * kPass];
  const Lines all = {edit->lineY, edit->lineCb, edit->lineCr};
  const Matrix to_rgb(edit->yuvToRgb);
  const Matrix primaries(edit->rgbToRgb);
  const Matrix to_yuv(edit->rgbToYuv);
  for (std::ptrdiff_t first = 0; first < blocks * kBlock; first += kPass) {
    const std::ptrdiff_t count = std::min(kPass, blocks * kBlock - first);
    const Lines lines = all.From(first);
    const Lines rgb = {work, work + count, work + 2 * count};
    for (std::ptrdiff_t i = 0; i < count; i += kBlock)
      Store(Times(Sanitised(Load(lines.From(i)), luma), to_rgb), rgb.From(i));
    for (std::ptrdiff_t i = 0; i < 3 * count; i += kBlock)
      Store(Decode(from, Load(work + i)), work + i);
    for (std::ptrdiff_t i = 0; i < count; i += kBlock)
      Store(Times(Load(rgb.From(i)), primaries), rgb.From(i));
    for (std::ptrdiff_t i = 0; i < 3 * count; i += kBlock)
      Store(Encode(to, Load(work + i)), work + i);
    for (std::ptrdiff_t i = 0; i < count; i += kBlock)
      Store(Times(Load(rgb.From(i)), to_yuv), lines.From(i));
  }
}

}  // namespace quillmere::color
