// The winner of GL_GetBestN_OverD's scan, found without scanning.
//
// A pass with step s tries, for every numerator n = k s, the two denominators around n / a.
// Fractions below a get nearer to it, or stay as near, as they rise, also after rounding, because
// rounding is monotone; those above a as they fall. So the least error of a pass is that of the
// greatest fraction k s / d <= a or that of the least one > a with k and d in range. Divided by s
// these are the neighbours of a / s among the fractions k / d of limited numerator and denominator,
// which stand in the Stern-Brocot tree where the descent to a / s leaves that range (Graham, Knuth,
// Patashnik, Concrete Mathematics, 1994, 4.5).
//
// The scan's winner is the first fraction tried that has the least error of all passes. On either
// side of a, the fractions of one pass that have it fill an interval next to a, and the fraction
// with the least numerator in an interval is the topmost of the tree within it. It is found by
// descending with rounded errors as the scales, which gives the scan's ties exactly.
//
// One fraction that belongs to the neighbours is not tried by the scan: n / d with d < n / a < d +
// 1 where the quotient rounds up to d + 1. Then n / (d + 1) lies within a unit in the last place of
// a, n / d about a / d >= a 2^-32 from it, and so it never has the least error.

#include <algorithm>
#include <cmath>
#include <limits>

#include "GL_Math_Ratios.h"

namespace {

__extension__ using Wide = __int128;

constexpr UInt64 kLargestDenominator = 4294967295;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Fraction {
  UInt64 n;
  UInt64 d;
};

/// base + times * step, the mediant taken so many times.
Fraction Mediant(Fraction base, UInt64 times, Fraction step) {
  return {base.n + times * step.n, base.d + times * step.d};
}

/// How often `step` can be added to `base` within the limits.
UInt64 RoomFor(Fraction base, Fraction step, Fraction limits) {
  UInt64 room = std::numeric_limits<UInt64>::max();
  if (step.n != 0) room = std::min(room, (limits.n - base.n) / step.n);
  if (step.d != 0) room = std::min(room, (limits.d - base.d) / step.d);
  return room;
}

/// One pass: fractions k step / d of a value from 2^-31 to 2^31.
class Pass {
 public:
  Pass(double value, UInt64 step, UInt64 max_numerator)
      : value_(value), step_(step), limits_{(max_numerator - 1) / step, kLargestDenominator} {
    int exponent = 0;
    mantissa_ = static_cast<SInt64>(std::ldexp(std::frexp(value, &exponent), 53));
    scaled_step_ = static_cast<Wide>(step) << (53 - exponent);
  }

  UInt64 Tests() const { return limits_.n + 1; }

  double Error(Fraction f) const {
    return std::fabs(value_ - static_cast<double>(f.n * step_) / static_cast<double>(f.d));
  }

  /// The least error of the pass; `below` tells whether a fraction up to the value has it, `above`
  /// whether one above the value has it.
  double LeastError(bool* below, bool* above) const {
    Fraction low = {0, 1};
    Fraction high = {1, 0};
    Wide low_gap = Gap(low);
    Wide high_gap = -Gap(high);
    while (low_gap != 0 && limits_.n != 0) {
      const UInt64 up = std::min(Quotient(low_gap, high_gap), RoomFor(low, high, limits_));
      low = Mediant(low, up, high);
      low_gap -= static_cast<Wide>(up) * high_gap;
      if (low_gap == 0) break;
      const UInt64 down = std::min(Quotient(high_gap - 1, low_gap), RoomFor(high, low, limits_));
      high = Mediant(high, down, low);
      high_gap -= static_cast<Wide>(down) * low_gap;
      if (up == 0 && down == 0) break;
    }
    const double low_error = Error(low);
    const double high_error = high.d == 0 ? kInfinity : Error(high);
    *below = low_error <= high_error;
    *above = high_error <= low_error;
    return std::min(low_error, high_error);
  }

  /// The least k of a fraction on the given side whose error is at most `error`; there is one.
  UInt64 FirstNumerator(double error, bool above) const {
    if (!above && Error({0, 1}) <= error) return 0;
    Fraction low = {0, 1};
    Fraction high = {1, 0};
    while (true) {
      const auto too_low = [&](Fraction f) { return Gap(f) >= 0 && (above || Error(f) > error); };
      const auto too_high = [&](Fraction f) { return Gap(f) < 0 && (!above || Error(f) > error); };
      low = Mediant(low, Run(low, high, too_low), high);
      const Fraction first = Mediant(low, 1, high);
      if (!too_high(first)) return first.n;
      high = Mediant(high, Run(high, low, too_high), low);
      const Fraction second = Mediant(low, 1, high);
      if (!too_low(second)) return second.n;
    }
  }

  /// The better of the two fractions that the scan tries for a numerator.
  Fraction Winner(UInt64 k) const {
    const double quotient = static_cast<double>(k * step_) / value_;
    const auto d = quotient >= static_cast<double>(kLargestDenominator)
                       ? kLargestDenominator
                       : static_cast<UInt64>(quotient);
    Fraction winner = {k, d};
    if (d == 0 || (d < kLargestDenominator && Error({k, d + 1}) < Error(winner))) ++winner.d;
    return {winner.n * step_, winner.d};
  }

 private:
  /// Positive for a fraction below the value, 0 for the value, negative above it.
  Wide Gap(Fraction f) const {
    return static_cast<Wide>(mantissa_) * static_cast<Wide>(f.d) -
           static_cast<Wide>(f.n) * scaled_step_;
  }

  static UInt64 Quotient(Wide dividend, Wide divisor) {
    const Wide quotient = dividend / divisor;
    return quotient > static_cast<Wide>(1) << 62 ? UInt64{1} << 62 : static_cast<UInt64>(quotient);
  }

  /// How often `step` can be added to `base` with `outside` still true, within the limits;
  /// `outside` stays false once it is.
  template <typename Outside>
  UInt64 Run(Fraction base, Fraction step, const Outside& outside) const {
    const UInt64 room = RoomFor(base, step, limits_);
    UInt64 inside = 1;  // doubled while outside, then the first that is not outside or has no room
    while (inside <= room && outside(Mediant(base, inside, step)))
      inside *= 2;
    UInt64 times = inside / 2;
    inside = std::min(inside, room + 1);
    while (inside - times > 1) {
      const UInt64 middle = times + (inside - times) / 2;
      if (outside(Mediant(base, middle, step))) {
        times = middle;
      } else {
        inside = middle;
      }
    }
    return times;
  }

  double value_;
  UInt64 step_;
  Fraction limits_;
  SInt64 mantissa_;   ///< value 2^(53 - exponent), so that fractions compare as whole numbers
  Wide scaled_step_;  ///< step 2^(53 - exponent), below 2^115
};

/// The first fraction with the least error that the scan would try.
Fraction FindBestFraction(double value, UInt64 max_numerator, UInt64 max_tests) {
  Fraction best = {0, 1};
  double best_error = kInfinity;
  UInt64 step = std::max<UInt64>(max_numerator / (max_tests / 10), 2);
  for (UInt64 tests = 0; tests < max_tests && step > 1;) {
    const Pass pass(value, --step, max_numerator);
    tests += pass.Tests();
    bool below = false;
    bool above = false;
    const double error = pass.LeastError(&below, &above);
    if (error >= best_error) continue;
    best_error = error;
    UInt64 k = std::numeric_limits<UInt64>::max();
    if (below) k = pass.FirstNumerator(error, false);
    if (above) k = std::min(k, pass.FirstNumerator(error, true));
    best = pass.Winner(k);
    if (error == 0) break;
  }
  return best;
}

}  // namespace

void GL_GetBestN_OverD(double value, UInt32 max_numerator, UInt32 max_tests, SInt32* n, UInt32* d) {
  const UInt32 ceiling = std::min<UInt32>(max_numerator, 2147483647);
  const double magnitude = std::fabs(value);
  LongRatio best = {0, 1};
  if (magnitude > ceiling) {
    best.n = static_cast<SInt32>(ceiling);
  } else if (1.0 / ceiling <= magnitude) {
    const Fraction found = FindBestFraction(magnitude, ceiling, std::max<UInt32>(max_tests, 10));
    best = {static_cast<SInt32>(found.n), static_cast<UInt32>(found.d)};
    GL_ReduceLongRatio(&best);
  }
  *n = value < 0 ? -best.n : best.n;
  *d = best.d;
}
