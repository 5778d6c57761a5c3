// The nearest fraction to a number, beside the plain scan that tells which one it is.
//
// Usage: fraction_benchmark   Prints the median times of one search of a million tests.

#include <random>

#include "GL_Math_Ratios.h"
#include "numerics_benchmark.h"
#include "plain_fraction_scan.h"

int main() {
  constexpr UInt32 kMaxNumerator = 2147483647;
  constexpr UInt32 kMaxTests = 1000000;
  std::mt19937 random(1);
  std::uniform_real_distribution<double> range(0.001, 1000);
  std::vector<double> values(16);
  for (double& value : values)
    value = range(random);
  std::size_t next = 0;
  UInt32 sum = 0;  // so that no search can be left out
  const auto search = [&](auto call) {
    return [&, call] {
      SInt32 n = 0;
      UInt32 d = 0;
      call(values[next++ % values.size()], kMaxNumerator, kMaxTests, &n, &d);
      sum += d;
    };
  };
  const auto times = MedianTimes(1, search(GL_GetBestN_OverD), search(ScanForBestFraction));
  PrintPeer("GL_GetBestN_OverD", times[0], "plain scan", times[1]);
  std::printf("sum of the denominators %u\n", sum);
}
