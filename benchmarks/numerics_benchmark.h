/// Pairs of timed runs, one after the other, of the project's figure and of its peers'.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

/// The median time of a call, in nanoseconds, of each of several bodies, which run in turn.
template <class... Bodies>
std::vector<double> MedianTimes(int calls, Bodies... bodies) {
  constexpr int kRounds = 21;
  std::vector<std::vector<double>> times(sizeof...(bodies));
  const auto time = [calls](auto& body) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i)
      body();
    const std::chrono::duration<double, std::nano> span = std::chrono::steady_clock::now() - start;
    return span.count() / calls;
  };
  for (int round = 0; round < kRounds; ++round) {
    std::size_t i = 0;
    (times[i++].push_back(time(bodies)), ...);
  }
  std::vector<double> medians;
  for (auto& list : times) {
    std::nth_element(list.begin(), list.begin() + kRounds / 2, list.end());
    medians.push_back(list[kRounds / 2]);
  }
  return medians;
}

inline void PrintPeer(const char* what, double ours, const char* peer, double theirs) {
  std::printf("%-36s %10.1f ns   %-24s %10.1f ns   ratio %.2f\n", what, ours, peer, theirs,
              ours / theirs);
}
