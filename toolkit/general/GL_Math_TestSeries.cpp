// The series of random test vectors of GL_Math_Random.h.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>

#include "GL_Math_Random.h"
#include "GL_Strings.h"

namespace {

constexpr int kMostDraws = 10000000;
constexpr std::size_t kSlots = 10000;
constexpr std::size_t kLeastSlots = 100;
constexpr double kLeastFrequency = 0.0001;

std::size_t Count(SInt32 count) {
  return static_cast<std::size_t>(std::max<SInt32>(count, 0));
}

/// Zeroed; null without memory.
template <typename T>
std::unique_ptr<T[]> NewBlock(std::size_t rows, std::size_t columns) {
  if (columns != 0 && rows > SIZE_MAX / sizeof(T) / columns) return nullptr;
  return std::unique_ptr<T[]>(new (std::nothrow) T[rows * columns]());
}

/// How many values of a position have a place in a row.
std::size_t NumValues(SInt32 low, SInt32 high, SInt32 row_length) {
  const SInt64 size = static_cast<SInt64>(high) - low;
  return static_cast<std::size_t>(std::clamp<SInt64>(size, 1, std::max<SInt32>(row_length, 1)));
}

/// Draws vectors with `draw(position)` until they pass the filter and all differ.
template <typename Draw>
void DrawDifferentVectors(SInt32 num_tests, SInt32 test_size, GL_TestFilter filter, SInt32* values,
                          const Draw& draw) {
  const std::size_t size = Count(test_size);
  for (SInt32* vector = values; vector < values + Count(num_tests) * size; vector += size) {
    bool fits = false;
    for (int draws = 0; !fits && draws < kMostDraws; ++draws) {
      for (std::size_t p = 0; p < size; ++p)
        vector[p] = draw(p);
      fits = filter == nullptr || filter(test_size, vector) != 0;
      for (const SInt32* earlier = values; fits && earlier < vector; earlier += size)
        fits = !std::equal(earlier, earlier + size, vector);
    }
    if (!fits) return;
  }
}

void PrintList(const char* title, SInt32 size, const auto& print) {
  std::printf("%s", title);
  for (SInt32 i = 0; i < size; ++i) {
    if (i > 0) std::printf(", ");
    print(i);
  }
  std::printf("\n");
}

/// Fills a position's look-up table: each value of the row gets slots in inverse proportion to its
/// frequency, the last one also those left over. The result is the least number of slots.
std::size_t FillSlots(std::span<const double> row, std::span<UInt16> slots) {
  double inverse_sum = 0;
  for (const double frequency : row)
    inverse_sum += 1 / frequency;
  std::size_t least = slots.size();
  std::size_t used = 0;
  for (std::size_t k = 0; k < row.size(); ++k) {
    const auto share =
        static_cast<std::size_t>(static_cast<double>(slots.size()) / (inverse_sum * row[k]));
    least = std::min(least, share);
    for (const std::size_t end = std::min(used + share, slots.size()); used < end; ++used)
      slots[used] = static_cast<UInt16>(k);
  }
  std::ranges::fill(slots.subspan(used), static_cast<UInt16>(row.size() - 1));
  return least;
}

/// Draws the frequencies towards the largest one. False if they stay as they are.
bool SoftenFrequencies(std::span<double> row) {
  const double largest = std::ranges::max(row);
  bool changed = false;
  for (double& frequency : row) {
    const double softened = (frequency - largest) * 0.9 + largest;
    changed = changed || softened != frequency;
    frequency = softened;
  }
  return changed;
}

void RaiseCorrection(std::span<const double> row, const double* frequencies, double* correction) {
  for (std::size_t k = 0; k < row.size(); ++k)
    *correction = std::max(*correction, row[k] / frequencies[k]);
}

}  // namespace

void GL_GenerateRandomTestSeries1(SInt32 num_tests, SInt32 test_size, const SInt32* lows,
                                  const SInt32* highs, SInt32* values) {
  for (SInt32 test = 0; test < num_tests; ++test) {
    for (SInt32 p = 0; p < test_size; ++p)
      *values++ = GL_RandModRange(lows[p], highs[p]);
  }
}

void GL_GenerateRandomTestSeries2(const char* name, SInt32 num_tests, SInt32 test_size,
                                  const OSType* types, const char* const* value_names,
                                  const SInt32* lows, const SInt32* highs, Boolean print_values,
                                  Boolean print_header, SInt32* values) {
  GL_GenerateRandomTestSeries1(num_tests, test_size, lows, highs, values);
  if (print_header != 0) {
    std::printf("Generating random values for test \"%s\"\n", name);
    std::printf("numTests = %ld, testSize = %ld\n", static_cast<long>(num_tests),
                static_cast<long>(test_size));
    if (types != nullptr) {
      PrintList("Test value types: ", test_size, [types](SInt32 i) {
        char code[7];
        GL_OSTypeToCStringWithQuo(types[i], code);
        std::printf("%s", code);
      });
    }
    if (value_names != nullptr) {
      PrintList("Test value names: ", test_size,
                [value_names](SInt32 i) { std::printf("%s", value_names[i]); });
    }
  }
  for (SInt32 test = 0; print_values != 0 && test < num_tests; ++test) {
    char title[32];
    std::snprintf(title, sizeof title, "Test %ld: ", static_cast<long>(test) + 1);
    const SInt32* vector = values + Count(test) * Count(test_size);
    PrintList(title, test_size,
              [vector](SInt32 i) { std::printf("%ld", static_cast<long>(vector[i])); });
  }
}

void GL_GenerateRandomTestSeries3(SInt32 num_tests, SInt32 test_size, const SInt32* lows,
                                  const SInt32* highs, GL_TestFilter filter, SInt32* values) {
  DrawDifferentVectors(num_tests, test_size, filter, values,
                       [=](std::size_t p) { return GL_RandModRange(lows[p], highs[p]); });
}

void GL_GenerateRandomTestSeries4(SInt32 num_tests, SInt32 test_size, const SInt32* lows,
                                  const SInt32* highs, GL_TestFilter filter,
                                  const double* frequencies, SInt32 row_length, SInt32* values,
                                  double* largest_correction) {
  *largest_correction = 1.0;
  const std::size_t size = Count(test_size);
  const std::size_t length = Count(row_length);
  const auto work = NewBlock<double>(1, length);
  const auto slots = NewBlock<UInt16>(size, kSlots);
  if (!work || !slots || length == 0) return;
  for (std::size_t p = 0; p < size; ++p) {
    // A table has more slots than any longer row could use.
    const std::size_t num_values =
        std::min(NumValues(lows[p], highs[p], row_length), std::size_t{UINT16_MAX});
    const double* const given = frequencies + p * length;
    const std::span row(work.get(), num_values);
    std::transform(given, given + num_values, row.begin(), [](double frequency) {
      return std::isfinite(frequency) ? std::max(frequency, kLeastFrequency) : kLeastFrequency;
    });
    const std::span table(slots.get() + p * kSlots, kSlots);
    RaiseCorrection(row, given, largest_correction);
    while (FillSlots(row, table) < kLeastSlots && SoftenFrequencies(row))
      RaiseCorrection(row, given, largest_correction);
  }
  DrawDifferentVectors(num_tests, test_size, filter, values, [&](std::size_t p) {
    return lows[p] + slots[p * kSlots + static_cast<std::size_t>(random()) % kSlots];
  });
}

void GL_CalcTestValueFrequencies(SInt32 num_draws, SInt32 test_size, const SInt32* lows,
                                 const SInt32* highs, GL_TestFilter filter, SInt32 row_length,
                                 double* frequencies) {
  const std::size_t size = Count(test_size);
  const std::size_t length = Count(row_length);
  const auto counts = NewBlock<UInt32>(size, length);
  const auto vector = NewBlock<SInt32>(1, size);
  if (!counts || !vector) return;
  for (SInt32 draw = 0; draw < num_draws; ++draw) {
    GL_GenerateRandomTestSeries3(1, test_size, lows, highs, filter, vector.get());
    for (std::size_t p = 0; p < size; ++p) {
      const auto value = static_cast<std::size_t>(static_cast<SInt64>(vector[p]) - lows[p]);
      if (value < length) ++counts[p * length + value];
    }
  }
  for (std::size_t p = 0; p < size && length > 0; ++p) {
    const std::span row(counts.get() + p * length, NumValues(lows[p], highs[p], row_length));
    double sum = 0;
    for (const UInt32 count : row)
      sum += count;
    std::ranges::transform(row, frequencies + p * length,
                           [sum](UInt32 count) { return sum > 0 ? count / sum : 0.0; });
  }
}
