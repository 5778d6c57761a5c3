/// The fits behind the tables of VI_PolyData.h.
#pragma once

#include "base_types.h"

namespace quillmere::color {

inline constexpr int kSegments = 4;
inline constexpr SInt32 kMostCoefficients = 12;
inline constexpr double kFitLimit = 0.0001;

/// A curve of which the first segment has a function of its own.
struct FittedCurve {
  UInt32 transfer_function;
  bool decode;
  double boundaries[kSegments + 1];
  SInt32 first_points;  ///< test points of the first segment
  double (*first)(double);
  double (*others)(double);
};

extern const FittedCurve kFittedCurves[4];

/// The polynomial of a segment: `coefficients` has room for kMostCoefficients. Statuses of
/// NR_FindPolyApprToFuncOnInterval_d.
SInt32 FitSegment(const FittedCurve& curve, int segment, SInt32* count, double* coefficients);

}  // namespace quillmere::color
