// What the low-pass filters look for, of CO_filter.h.

#include <algorithm>
#include <cstdlib>

#include "CO_filter.h"

namespace {

constexpr SInt32 kTolerance = 20;  // of an outlier beyond what its neighbours lead to
constexpr double kTwoThirds = 0.666;

SInt32 TwoThirds(SInt32 step) {
  return static_cast<SInt32>(kTwoThirds * step);
}

void Propose(SInt32 line, SInt32 value, SInt32 weight, double* values, double* weights) {
  double& proposed = values[line % 5];
  double& sum = weights[line % 5];
  proposed = (sum * proposed + static_cast<double>(value) * weight) / (sum + weight);
  sum += weight;
}

}  // namespace

SInt32 CO_RemoveOutlier(SInt32 a, SInt32 b, SInt32 c, SInt32 d, SInt32 e) {
  const SInt32 from_above = 2 * b - a;
  const SInt32 from_below = 2 * d - e;
  const SInt32 most = std::max(from_above, from_below) + kTolerance;
  const SInt32 least = std::min(from_above, from_below) - kTolerance;
  if (c > most) return most - c;
  return c < least ? least - c : 0;
}

void CO_RemoveCrater(SInt32 a, SInt32 b, SInt32 c, SInt32 d, SInt32 e, SInt32* correctionB,
                     SInt32* correctionC, SInt32* correctionD) {
  const SInt32 sign = b <= a ? 1 : -1;
  const SInt32 amount = std::min({2 * sign * (e - d), 2 * sign * (a - b), TwoThirds(sign * (c - b)),
                                  TwoThirds(sign * (c - d))});
  *correctionB = sign * amount / 2;
  *correctionC = -sign * amount;
  *correctionD = *correctionB;
}

SInt32 CO_ReduceTwitter(SInt32 a, SInt32 b, SInt32 c, SInt32 d) {
  if (a > b && b < c && c > d) return std::min({a - b, c - d, (c - b) / 2});
  if (a < b && b > c && c < d) return std::min({b - a, d - c, (b - c) / 2});
  return 0;
}

SInt32 CO_ReduceLineDoubling(SInt32 a, SInt32 b, SInt32 c, SInt32 d) {
  const SInt32 rest = std::abs(c - b) - 3 * std::max(std::abs(b - a), std::abs(d - c));
  if (rest <= 0) return 0;
  const bool leads_across = a < d ? (b < a ? a - b > d - c : c > d && c - d > b - a)
                                  : (b > a ? b - a > c - d : c < d && d - c > a - b);
  return leads_across ? -rest : rest / 5;
}

void CO_UpdateNewValues(SInt32 i, SInt32 b, SInt32 c, SInt32 d, SInt32 correctionB,
                        SInt32 correctionC, SInt32 correctionD, double* values, double* weights,
                        SInt32* largest) {
  const SInt32 weight = std::abs(correctionC);
  if (weight == 0) return;
  if (largest != nullptr) *largest = std::max(*largest, weight);
  if (correctionB != 0) Propose(i - 3, b + correctionB, weight, values, weights);
  Propose(i - 2, c + correctionC, weight, values, weights);
  if (correctionD != 0) Propose(i - 1, d + correctionD, weight, values, weights);
}
