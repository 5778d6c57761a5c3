/// What the benchmark programs share: times of one piece of work, medians, and giving up.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace quillmere::benchmarks {

/// Seconds that `work` takes.
template <class Work>
double Seconds(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <class Work>
double Milliseconds(Work work) {
  return Seconds(work) * 1000;
}

/// The middle of at least one value.
inline double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                   values.end());
  return values[values.size() / 2];
}

/// The median of `runs` times in seconds.
template <class Work>
double MedianSeconds(int runs, Work work) {
  std::vector<double> times;
  for (int i = 0; i < runs; ++i)
    times.push_back(Seconds(work));
  return Median(times);
}

template <class Work>
double MedianMilliseconds(int runs, Work work) {
  return MedianSeconds(runs, work) * 1000;
}

/// Ends the program with a message; a benchmark that can't do its work has nothing to tell.
[[noreturn]] inline void Fail(const char* what) {
  std::fprintf(stderr, "benchmark: %s failed\n", what);
  std::exit(1);
}

}  // namespace quillmere::benchmarks
