#include <cmath>

#include "ORW_NR_double.h"
#include "polynomial_fits_private.h"

namespace quillmere::color {

namespace {

constexpr SInt32 kPoints = 1024;
constexpr double kUpPower = 2.2222222222222223;
constexpr double kOnPower = 0.8181818181818181;
constexpr double kOffPower = 1.2222222222222223;

/// A place between the break of a curve and 1.
constexpr double Beyond(double first_boundary, double part) {
  return first_boundary + (1 - first_boundary) * part;
}

constexpr double kBreak7Coded = 0.0912;
constexpr double kBreak7Linear = 0.0228;
const double kBreak8Coded = std::pow(0.081, kOffPower);
constexpr double kBreak8Linear = 0.018;

}  // namespace

// Curves that bend near black have shorter segments there.
const FittedCurve kFittedCurves[4] = {
    {7,
     true,
     {0, kBreak7Coded, Beyond(kBreak7Coded, 1.0 / 3), Beyond(kBreak7Coded, 2.0 / 3), 1},
     kPoints,
     [](double x) { return x / 4; },
     [](double x) { return std::pow((x + 0.1115) / 1.1115, kUpPower); }},
    {8,
     true,
     {0, kBreak8Coded, Beyond(kBreak8Coded, 1.0 / 3), Beyond(kBreak8Coded, 2.0 / 3), 1},
     100,
     [](double x) { return std::pow(x, kOnPower) / 4.5; },
     [](double x) { return std::pow((std::pow(x, kOnPower) + 0.099) / 1.099, kUpPower); }},
    {7,
     false,
     {0, kBreak7Linear, Beyond(kBreak7Linear, 0.1), Beyond(kBreak7Linear, 0.4), 1},
     kPoints,
     [](double x) { return 4 * x; },
     [](double x) { return 1.1115 * std::pow(x, 0.45) - 0.1115; }},
    {8,
     false,
     {0, kBreak8Linear, Beyond(kBreak8Linear, 0.125), Beyond(kBreak8Linear, 5.0 / 12), 1},
     100,
     [](double x) { return std::pow(4.5 * x, kOffPower); },
     [](double x) { return std::pow(1.099 * std::pow(x, 0.45) - 0.099, kOffPower); }},
};

SInt32 FitSegment(const FittedCurve& curve, int segment, SInt32* count, double* coefficients) {
  return NR_FindPolyApprToFuncOnInterval_d(curve.boundaries[segment], curve.boundaries[segment + 1],
                                           segment == 0 ? curve.first : curve.others, 0, kFitLimit,
                                           segment == 0 ? curve.first_points : kPoints,
                                           kMostCoefficients, count, coefficients);
}

}  // namespace quillmere::color
