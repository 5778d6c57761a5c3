/// A line's change of colour space by vectors, for the transfer functions that are a power with a
/// straight piece.
#pragma once

#include <cstddef>

#include "CO_Edit_Data.h"
#include "base_types.h"

namespace quillmere::color {

/// A factor times a power of numbers from 2^-12 to below 16, to 2e-6 of its value: cubic pieces
/// over quarters of an octave, and the powers of the octaves.
struct PowerTable {
  PowerTable(double factor, double exponent);
  alignas(64) float coefficients[4][4];  ///< from constant to cubic, of each piece
  alignas(64) float octave[16];          ///< by the last four bits of a float's exponent field
};

/// A transfer function that is a power with an offset, and straight below a break, on both ways.
struct VectorCurve {
  VectorCurve(double codedBreak, double linearBreak, double curveSlope, double curveOffset,
              double exponent);
  float coded_break;
  float linear_break;
  float slope;  ///< of the straight piece, coded over linear
  float inverse_slope;
  float offset;
  double decoding_power;
  PowerTable decoding;  ///< of coded values with the offset added
  PowerTable encoding;  ///< gives coded values with the offset added
};

/// The curve of an index of CO_Gamma.h; null for those that aren't of this kind.
const VectorCurve* VectorCurveOf(SInt32 index);

/// Pixels of a block.
inline constexpr SInt32 kBlockPixels = 16;

/// Whether an edit's matrices keep all numbers where EditBlocks can take them to a power.
bool CanEditBlocks(const VectorCurve& from, const EditData& edit);

/// Sanitises the pixels of blocks of Y'CbCr, takes them to R'G'B' by the edit's matrix and to
/// linear light, changes their primaries, and takes them back. `luma` are the coefficients of the
/// source's matrix. The result is that of the steps one by one, to 4e-6; of what is no number, any.
void EditBlocks(std::ptrdiff_t blocks, const VectorCurve& from, const VectorCurve& to,
                const float* luma, EditData* edit);

/// The ways in which EditBlocks does that, which takes the fastest that the processor has.
struct EditPath {
  bool is_available;  ///< on this processor
  void (*edit)(std::ptrdiff_t blocks, const VectorCurve& from, const VectorCurve& to,
               const float* luma, EditData* edit);
};
EditPath EditPlain();
EditPath EditAvx2();
EditPath EditAvx512();

}  // namespace quillmere::color
