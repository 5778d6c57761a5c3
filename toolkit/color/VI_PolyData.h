/// Piecewise polynomials in the place of transfer functions whose powers cost too much for whole
/// planes: four segments of a low order for each of two curves, both ways.
///
/// The curves are those of CO_Gamma.h over 0.0 to 1.0. The polynomials are off by at most 0.0001,
/// up to 0.00016 next to 0 and 0.00025 at 0.018, where the second curve has a gap.
#pragma once

#include "base_types.h"

/// A piecewise polynomial. Segment k covers boundaries[k] to boundaries[k + 1].
struct PolyData {
  float** coefficients;  ///< a row for each segment: order + 1 numbers, the constant first
  float* boundaries;     ///< one more than segments, rising from 0 to 1
  UInt32 order;
  UInt32 log2Segments;  ///< the binary logarithm of the number of segments
};

/// Fills a record that the caller has from malloc with the curve of transfer function 7
/// (SMPTE 240M) or 8 (BT.709 behind a power): from linear light to the coded value, or with
/// `decode` the other way. The rows and both arrays come from malloc. The record stays as it was
/// for any other index, or without memory.
void VI_FillPolyData(PolyData* data, UInt32 transferFunction, Boolean decode);
/// Frees the rows, the arrays and the record, and clears the pointer; null does nothing.
void VI_DisposePolyData(PolyData** data);
/// Repeats the fits that gave the tables (NR_FindPolyApprToFuncOnInterval_d, to 0.0001), which
/// shows what they cost.
void VI_CalcPolyData();
