/// The transfer function of ITU-R BT.709-6, 1.2, and its inverse, for tests to compare with.
#pragma once

#include <cmath>

inline double Decode709(double v) {
  return v < 0.081 ? v / 4.5 : std::pow((v + 0.099) / 1.099, 1 / 0.45);
}
inline double Encode709(double v) {
  return v < 0.018 ? v * 4.5 : 1.099 * std::pow(v, 0.45) - 0.099;
}
