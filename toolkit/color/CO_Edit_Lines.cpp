#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "CO_Gamma.h"
#include "CO_Ranges.h"
#include "edit_lines_private.h"

#define QUILLMERE_EDIT_TARGET
#define QUILLMERE_EDIT_VECTOR 16
#include "edit_blocks.inc"

namespace quillmere::color {
namespace {

/// The cubic that goes through a power at Chebyshev's four nodes within `reach` of a middle, by
/// Newton's divided differences (Abramowitz and Stegun, 25.2.26).
struct CubicPiece {
  CubicPiece(double exponent, double middle, double reach) {
    double nodes[4];
    double differences[4];
    for (int i = 0; i < 4; ++i) {
      nodes[i] = middle + reach * std::cos((2 * i + 1) * std::numbers::pi / 8);
      differences[i] = std::pow(nodes[i], exponent);
    }
    for (int order = 1; order < 4; ++order)
      for (int i = 3; i >= order; --i)
        differences[i] = (differences[i] - differences[i - 1]) / (nodes[i] - nodes[i - order]);
    // Multiplied out from the innermost factor.
    for (int i = 3; i >= 0; --i) {
      for (int order = 3; order > 0; --order)
        coefficients[order] = coefficients[order - 1] - nodes[i] * coefficients[order];
      coefficients[0] = differences[i] - nodes[i] * coefficients[0];
    }
  }
  double coefficients[4] = {};
};

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
  constexpr int kPieces = 4;
  for (int i = 0; i < kPieces; ++i) {
    const double middle = 1 + (i + 0.5) / kPieces;
    const CubicPiece piece(exponent, middle, 0.5 / kPieces);
    for (int order = 0; order < 4; ++order)
      coefficients[order][i] = static_cast<float>(piece.coefficients[order]);
  }
  for (int i = 0; i < 16; ++i) {
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

EditPath EditPlain() {
  return {true, Edit};
}

void EditBlocks(std::ptrdiff_t blocks, const VectorCurve& from, const VectorCurve& to,
                const float* luma, EditData* edit) {
  static const EditPath best = EditAvx512().is_available ? EditAvx512()
                               : EditAvx2().is_available ? EditAvx2()
                                                         : EditPlain();
  best.edit(blocks, from, to, luma, edit);
}

}  // namespace quillmere::color
