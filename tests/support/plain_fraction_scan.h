/// The scan that GL_GetBestN_OverD describes, carried out: the referee of its result and speed.
#pragma once

#include <cmath>
#include <limits>
#include <numeric>

#include "base_types.h"

/// For values other than not-a-number, at least 10 tests and a step that stays above 0.
inline void ScanForBestFraction(double value, UInt32 max_numerator, UInt32 max_tests, SInt32* n,
                                UInt32* d) {
  const double a = std::fabs(value);
  const double ceiling = max_numerator;
  UInt32 best_n = 0;
  UInt32 best_d = 1;
  if (a > ceiling) {
    best_n = max_numerator;
  } else if (1 / ceiling <= a) {
    double best_error = std::numeric_limits<double>::infinity();
    UInt32 tests = 0;
    UInt32 step = max_numerator / (max_tests / 10);
    while (tests < max_tests) {
      --step;
      for (UInt32 numerator = 0; numerator < max_numerator; numerator += step) {
        const double quotient = numerator / a;
        const UInt32 denominator =
            quotient >= 4294967295.0 ? 4294967295U : static_cast<UInt32>(quotient);
        if (denominator != 0) {
          const double error = std::fabs(a - static_cast<double>(numerator) / denominator);
          if (best_error > error) {
            best_n = numerator;
            best_d = denominator;
            best_error = error;
          }
        }
        const UInt32 next = denominator + 1;
        const double error = std::fabs(a - static_cast<double>(numerator) / next);
        if (best_error > error) {
          best_n = numerator;
          best_d = next;
          best_error = error;
        }
        ++tests;
      }
    }
    const UInt32 divisor = std::gcd(best_n, best_d);
    best_n /= divisor;
    best_d /= divisor;
  }
  *n = value < 0 ? -static_cast<SInt32>(best_n) : static_cast<SInt32>(best_n);
  *d = best_d;
}
